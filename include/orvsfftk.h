/* FFT kernels and table builders, exported under tier prefixes only (see
 * orvtiers.h). They check nothing and cannot fail; the public transforms in
 * orvsfft.h are the supported interface. Declared here so that each tier's
 * variant has one signature. */
#ifndef ORVSFFTK_H
#define ORVSFFTK_H

#include "orvsfft.h"

ORV_EXTERN_C_BEGIN

/* ---- Small kernels: natural order in and out, in place allowed ---------- */
#define ORV_FFT_SMALL_C(n)                                                                         \
    ORV_API void orvs_cFFTfwd_##n##_32fc(const Orv32fc* pSrc, Orv32fc* pDst);                     \
    ORV_API void orvs_cFFTinv_##n##_32fc(const Orv32fc* pSrc, Orv32fc* pDst);                     \
    ORV_API void orvs_cFFTfwd_##n##_scale_32fc(const Orv32fc* pSrc, Orv32fc* pDst, Orv32f scale); \
    ORV_API void orvs_cFFTinv_##n##_scale_32fc(const Orv32fc* pSrc, Orv32fc* pDst, Orv32f scale); \
    ORV_API void orvs_cFFTfwd_##n##_64fc(const Orv64fc* pSrc, Orv64fc* pDst);                     \
    ORV_API void orvs_cFFTinv_##n##_64fc(const Orv64fc* pSrc, Orv64fc* pDst);                     \
    ORV_API void orvs_cFFTfwd_##n##_scale_64fc(const Orv64fc* pSrc, Orv64fc* pDst, Orv64f scale); \
    ORV_API void orvs_cFFTinv_##n##_scale_64fc(const Orv64fc* pSrc, Orv64fc* pDst, Orv64f scale);
#define ORV_FFT_SMALL_R(n)                                                                      \
    ORV_API void orvs_rFFTfwd_##n##_32f(const Orv32f* pSrc, Orv32f* pDst);                     \
    ORV_API void orvs_rFFTinv_##n##_32f(const Orv32f* pSrc, Orv32f* pDst);                     \
    ORV_API void orvs_rFFTfwd_##n##_scale_32f(const Orv32f* pSrc, Orv32f* pDst, Orv32f scale); \
    ORV_API void orvs_rFFTinv_##n##_scale_32f(const Orv32f* pSrc, Orv32f* pDst, Orv32f scale); \
    ORV_API void orvs_rFFTfwd_##n##_64f(const Orv64f* pSrc, Orv64f* pDst);                     \
    ORV_API void orvs_rFFTinv_##n##_64f(const Orv64f* pSrc, Orv64f* pDst);                     \
    ORV_API void orvs_rFFTfwd_##n##_scale_64f(const Orv64f* pSrc, Orv64f* pDst, Orv64f scale); \
    ORV_API void orvs_rFFTinv_##n##_scale_64f(const Orv64f* pSrc, Orv64f* pDst, Orv64f scale);
ORV_FFT_SMALL_C(4)
ORV_FFT_SMALL_C(8)
ORV_FFT_SMALL_C(16)
ORV_FFT_SMALL_C(32)
ORV_FFT_SMALL_C(64) /* e9 only */
ORV_FFT_SMALL_R(4)
ORV_FFT_SMALL_R(8)
ORV_FFT_SMALL_R(16)
ORV_FFT_SMALL_R(32)
#undef ORV_FFT_SMALL_C
#undef ORV_FFT_SMALL_R
/* Lengths 1 and 2 have no direction. */
ORV_API void orvs_cFFT_1_32fc(const Orv32fc* pSrc, Orv32fc* pDst);
ORV_API void orvs_cFFT_2_32fc(const Orv32fc* pSrc, Orv32fc* pDst);
ORV_API void orvs_cFFT_1_scale_32fc(const Orv32fc* pSrc, Orv32fc* pDst, Orv32f scale);
ORV_API void orvs_cFFT_2_scale_32fc(const Orv32fc* pSrc, Orv32fc* pDst, Orv32f scale);
ORV_API void orvs_cFFT_1_64fc(const Orv64fc* pSrc, Orv64fc* pDst);
ORV_API void orvs_cFFT_2_64fc(const Orv64fc* pSrc, Orv64fc* pDst);
ORV_API void orvs_cFFT_1_scale_64fc(const Orv64fc* pSrc, Orv64fc* pDst, Orv64f scale);
ORV_API void orvs_cFFT_2_scale_64fc(const Orv64fc* pSrc, Orv64fc* pDst, Orv64f scale);
ORV_API void orvs_rFFT_1_32f(const Orv32f* pSrc, Orv32f* pDst);
ORV_API void orvs_rFFT_2_32f(const Orv32f* pSrc, Orv32f* pDst);
ORV_API void orvs_rFFT_1_scale_32f(const Orv32f* pSrc, Orv32f* pDst, Orv32f scale);
ORV_API void orvs_rFFT_2_scale_32f(const Orv32f* pSrc, Orv32f* pDst, Orv32f scale);
ORV_API void orvs_rFFT_1_64f(const Orv64f* pSrc, Orv64f* pDst);
ORV_API void orvs_rFFT_2_64f(const Orv64f* pSrc, Orv64f* pDst);
ORV_API void orvs_rFFT_1_scale_64f(const Orv64f* pSrc, Orv64f* pDst, Orv64f scale);
ORV_API void orvs_rFFT_2_scale_64f(const Orv64f* pSrc, Orv64f* pDst, Orv64f scale);

/* ---- Radix-4/8 core ------------------------------------------------------
 * Norm: natural order in (read through the Norm bit-reversal table), natural
 * interleaved order out, pSrc and pDst may differ. Plain: bit-reversed data
 * in place; interleaved 1 ends in interleaved natural order, 0 leaves the
 * tier's working format for a later step of the large transform. pWork holds
 * 8N bytes (16N for 64f), 32-byte aligned. The cr forms take split real and
 * imaginary arrays; CoreMT forms have the Norm arguments and results. */
ORV_API void orvs_cRadix4FwdNorm_32fc(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cRadix4InvNorm_32fc(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cRadix4Fwd_32fc(Orv32fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved);
ORV_API void orvs_cRadix4Inv_32fc(Orv32fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved);
ORV_API void orvs_cRadix4FwdNorm_64fc(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cRadix4InvNorm_64fc(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cRadix4Fwd_64fc(Orv64fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved);
ORV_API void orvs_cRadix4Inv_64fc(Orv64fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved);
ORV_API void orvs_crRadix4FwdNorm_32f(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe, Orv32f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crRadix4InvNorm_32f(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe, Orv32f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crRadix4Fwd_32f(Orv32f* pRe, Orv32f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                  int interleaved);
ORV_API void orvs_crRadix4Inv_32f(Orv32f* pRe, Orv32f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                  int interleaved);
ORV_API void orvs_crRadix4FwdNorm_64f(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe, Orv64f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crRadix4InvNorm_64f(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe, Orv64f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crRadix4Fwd_64f(Orv64f* pRe, Orv64f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                  int interleaved);
ORV_API void orvs_crRadix4Inv_64f(Orv64f* pRe, Orv64f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                  int interleaved);
ORV_API void orvs_cFftFwd_CoreMT_32fc(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cFftInv_CoreMT_32fc(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cFftFwd_CoreMT_64fc(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_cFftInv_CoreMT_64fc(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                      const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crFftFwd_CoreMT_32f(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe, Orv32f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crFftInv_CoreMT_32f(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe, Orv32f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crFftFwd_CoreMT_64f(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe, Orv64f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);
ORV_API void orvs_crFftInv_CoreMT_64f(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe, Orv64f* pDstIm,
                                      int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork);

/* ---- Bit reversal --------------------------------------------------------
 * 1: in place, 2: out of place. _4, _8, _16 take the swap list of
 * orvs_initTabBitRev and elements of that many bytes; S, C, D, Z (float,
 * complex float, double, complex double) take the Norm table. The _Blk forms
 * permute one block of the large transform through a swap list. */
ORV_API void orvs_BitRev1_4(void* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_4(const void* pSrc, void* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_8(void* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_8(const void* pSrc, void* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_16(void* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_16(const void* pSrc, void* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_S(Orv32f* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_S(const Orv32f* pSrc, Orv32f* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_C(Orv32fc* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_C(const Orv32fc* pSrc, Orv32fc* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_D(Orv64f* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_D(const Orv64f* pSrc, Orv64f* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev1_Z(Orv64fc* pData, int len, const Orv32u* pTab);
ORV_API void orvs_BitRev2_Z(const Orv64fc* pSrc, Orv64fc* pDst, int len, const Orv32u* pTab);
ORV_API void orvs_sBitRev1_Blk(Orv32f* pBlock, int len, const Orv32u* pSwapList);
ORV_API void orvs_cBitRev1_Blk(Orv32fc* pBlock, int len, const Orv32u* pSwapList);
ORV_API void orvs_dBitRev1_Blk(Orv64f* pBlock, int len, const Orv32u* pSwapList);
ORV_API void orvs_zBitRev1_Blk(Orv64fc* pBlock, int len, const Orv32u* pSwapList);

/* ---- Table builders --------------------------------------------------------
 * Each writes at its table pointer and returns the next free address,
 * rounded up to 32 bytes. */
ORV_API Orv8u* orvs_initTabTwdBase_32f(int order, Orv32f* pTab);
ORV_API Orv8u* orvs_initTabTwdBase_64f(int order, Orv64f* pTab);
ORV_API Orv8u* orvs_initTabBitRevNorm(int order, Orv32u* pTab);
ORV_API Orv8u* orvs_initTabBitRev(int order, Orv32u* pTab);
ORV_API Orv8u* orvs_initTabBitRevLarge(int order, int blockOrder, Orv32u* pTab);
ORV_API Orv8u* orvs_initTabTwd_L1_32f(int order, const Orv32f* pBase, int baseOrder, Orv8u* pTab);
ORV_API Orv8u* orvs_initTabTwd_L1_64f(int order, const Orv64f* pBase, int baseOrder, Orv8u* pTab);
ORV_API Orv8u* orvs_initTabTwd_Large_32f(OrvFFTSpec* pSpec, int order, const Orv32f* pBase, int baseOrder,
                                         Orv32u* pBitRev, Orv8u* pFree);
ORV_API Orv8u* orvs_initTabTwd_Large_64f(OrvFFTSpec* pSpec, int order, const Orv64f* pBase, int baseOrder,
                                         Orv32u* pBitRev, Orv8u* pFree);
ORV_API Orv8u* orvs_initTabTwdRealRec_32f(int order, const Orv32f* pBase, int baseOrder, Orv32f* pTab);
ORV_API Orv8u* orvs_initTabTwdCcsRec_32f(int order, const Orv32f* pBase, int baseOrder, Orv32f* pTab);
ORV_API Orv8u* orvs_initTabTwdRealRec_64f(int order, const Orv64f* pBase, int baseOrder, Orv64f* pTab);
ORV_API Orv8u* orvs_initTabTwdCcsRec_64f(int order, const Orv64f* pBase, int baseOrder, Orv64f* pTab);
/* Twiddle, init and work bytes of a large order. */
ORV_API void orvs_getSizesTwd_Large_32f(int order, int* pTwd, int* pInit, int* pWork);
ORV_API void orvs_getSizeTwd_Large_64f(int order, int* pTwd, int* pInit, int* pWork);

ORV_EXTERN_C_END

#endif
