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

/* ---- Large transform ---------------------------------------------------
 * Blocked transform of a large order (complex order; for a real record the
 * real order minus 1) through the specification's level tables; scales with
 * the specification's flag. pWork: the specification's workSize bytes,
 * 32-byte aligned. BlkMerge gathers `rows` rows of `cols` elements, `stride`
 * elements apart, into a contiguous buffer; BlkSplit scatters them back, with
 * interleave 1 turning the tier's working format into interleaved complex.
 * Fact4/Fact8 run one radix-4/8 level on `count` groups of 4 or 8 blocks of
 * `cols` columns in the working format (Fact4 with count 1: the last level,
 * half table); Fact8_Last is Fact8 with interleaved output. The cr forms take
 * split real and imaginary arrays (the buffer in the working format). */
ORV_API OrvStatus orvs_cFftFwd_Large_32fc(const OrvFFTSpec* pSpec, const Orv32fc* pSrc, Orv32fc* pDst, int order,
                                          Orv8u* pWork);
ORV_API OrvStatus orvs_cFftInv_Large_32fc(const OrvFFTSpec* pSpec, const Orv32fc* pSrc, Orv32fc* pDst, int order,
                                          Orv8u* pWork);
ORV_API OrvStatus orvs_cFftFwd_Large_64fc(const OrvFFTSpec* pSpec, const Orv64fc* pSrc, Orv64fc* pDst, int order,
                                          Orv8u* pWork);
ORV_API OrvStatus orvs_cFftInv_Large_64fc(const OrvFFTSpec* pSpec, const Orv64fc* pSrc, Orv64fc* pDst, int order,
                                          Orv8u* pWork);
ORV_API void orvs_cFft_BlkMerge_32fc(const Orv32fc* pSrc, Orv32fc* pBuf, int stride, int rows, int cols);
ORV_API void orvs_cFft_BlkSplit_32fc(Orv32fc* pDst, const Orv32fc* pBuf, int stride, int rows, int cols,
                                     int interleave);
ORV_API void orvs_cFft_BlkMerge_64fc(const Orv64fc* pSrc, Orv64fc* pBuf, int stride, int rows, int cols);
ORV_API void orvs_cFft_BlkSplit_64fc(Orv64fc* pDst, const Orv64fc* pBuf, int stride, int rows, int cols,
                                     int interleave);
ORV_API void orvs_crFft_BlkMerge_32f(const Orv32f* pRe, const Orv32f* pIm, Orv8u* pBuf, int stride, int rows,
                                     int cols);
ORV_API void orvs_crFft_BlkSplit_32f(Orv32f* pRe, Orv32f* pIm, const Orv8u* pBuf, int stride, int rows, int cols);
ORV_API void orvs_crFft_BlkMerge_64f(const Orv64f* pRe, const Orv64f* pIm, Orv8u* pBuf, int stride, int rows,
                                     int cols);
ORV_API void orvs_crFft_BlkSplit_64f(Orv64f* pRe, Orv64f* pIm, const Orv8u* pBuf, int stride, int rows, int cols);
#define ORV_FFT_FACT(name) ORV_API void name(const void* pIn, void* pOut, int cols, int count, const void* pTwd);
ORV_FFT_FACT(orvs_cFftFwd_Fact4_32fc)
ORV_FFT_FACT(orvs_cFftInv_Fact4_32fc)
ORV_FFT_FACT(orvs_cFftFwd_Fact8_32fc)
ORV_FFT_FACT(orvs_cFftInv_Fact8_32fc)
ORV_FFT_FACT(orvs_cFftFwd_Fact4_64fc)
ORV_FFT_FACT(orvs_cFftInv_Fact4_64fc)
ORV_FFT_FACT(orvs_cFftFwd_Fact8_64fc)
ORV_FFT_FACT(orvs_cFftInv_Fact8_64fc)
ORV_FFT_FACT(orvs_cFftFwd_Fact8_Last_32fc)
ORV_FFT_FACT(orvs_cFftInv_Fact8_Last_32fc)
ORV_FFT_FACT(orvs_cFftFwd_Fact8_Last_64fc)
ORV_FFT_FACT(orvs_cFftInv_Fact8_Last_64fc)
#undef ORV_FFT_FACT
ORV_API void orvs_crFftFwd_Fact8_Last_32f(const Orv32f* pInRe, const Orv32f* pInIm, Orv32f* pOutRe, Orv32f* pOutIm,
                                          int cols, int count, const void* pTwd);
ORV_API void orvs_crFftInv_Fact8_Last_32f(const Orv32f* pInRe, const Orv32f* pInIm, Orv32f* pOutRe, Orv32f* pOutIm,
                                          int cols, int count, const void* pTwd);
ORV_API void orvs_crFftFwd_Fact8_Last_64f(const Orv64f* pInRe, const Orv64f* pInIm, Orv64f* pOutRe, Orv64f* pOutIm,
                                          int cols, int count, const void* pTwd);
ORV_API void orvs_crFftInv_Fact8_Last_64f(const Orv64f* pInRe, const Orv64f* pInIm, Orv64f* pOutRe, Orv64f* pOutIm,
                                          int cols, int count, const void* pTwd);

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

/* ---- Real transforms: recombination and spectrum products -----------------
 * RealRecombine turns the complex transform Z of the H = halfLen pairs of a
 * real signal into complex values 1 .. H-1 of the Perm layout, in place;
 * CcsRecombine turns them back into 2Z (values 1 .. H-1 of pDst; pSrc may
 * equal pDst). pRec is the specification's table of that direction for the
 * real order log2(2 halfLen), halfLen 8 or more (the orders whose tables
 * have one or two levels); direction (1, -1) is not read. Mpy2 multiplies
 * len complex values of pSrcDst by those of pSrc; Mpy3 writes pSrc2 * pSrc1
 * to pDst. */
ORV_API void orvs_cRealRecombine_32f(Orv32f* pData, int halfLen, int direction, const void* pRec);
ORV_API void orvs_cCcsRecombine_32f(const Orv32f* pSrc, Orv32f* pDst, int halfLen, int direction, const void* pRec);
ORV_API void orvs_cRealRecombine_64f(Orv64f* pData, int halfLen, int direction, const void* pRec);
ORV_API void orvs_cCcsRecombine_64f(const Orv64f* pSrc, Orv64f* pDst, int halfLen, int direction, const void* pRec);
ORV_API void ownps_Mpy2_32fc(const Orv32f* pSrc, Orv32f* pSrcDst, int len);
ORV_API void ownps_Mpy3_32fc(const Orv32f* pSrc1, const Orv32f* pSrc2, Orv32f* pDst, int len);
ORV_API void ownps_Mpy2_64fc(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
ORV_API void ownps_Mpy3_64fc(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len);

ORV_EXTERN_C_END

#endif
