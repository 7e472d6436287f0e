/* orv one-dimensional FFT: specifications and transforms of power-of-two
 * length N = 2^order.
 *
 * None of these has a dispatch stub: call a tier's name (e9_, y8_, n8_, u8_,
 * m7_, declared in orvtiers.h), and use a specification only with the tier
 * that built it. Single-precision forms exist in e9, y8, n8, m7; the
 * double-precision real forms in all five tiers.
 *
 * Forward is X[k] = sum x[n] exp(-2 pi i nk/N), inverse x[n] = sum X[k]
 * exp(+2 pi i nk/N), each multiplied only by the factor the flag asks for. */
#ifndef ORVSFFT_H
#define ORVSFFT_H

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

/* A built specification. Callers hold only pointers; the memory behind one
 * is a 136-byte record followed by the transform's tables. */
typedef struct OrvFFTSpec OrvFFTSpec;
typedef struct OrvFFTSpec_C_32fc OrvFFTSpec_C_32fc;
typedef struct OrvFFTSpec_R_32f OrvFFTSpec_R_32f;
typedef struct OrvFFTSpec_R_64f OrvFFTSpec_R_64f;

/* Normalisation flags; exactly these four values are accepted. */
enum {
    OrvFftDivFwd = 1,  /* forward multiplies by 1/N */
    OrvFftDivInv = 2,  /* inverse multiplies by 1/N */
    OrvFftDivSqrt = 4, /* both multiply by 1/sqrt(N) */
    OrvFftNoDiv = 8    /* neither multiplies */
};

/* Sizes in bytes of the specification block, of the init buffer needed only
 * while Init runs (0: none), and of the work buffer a transform wants (0:
 * none). Checks, in order: order outside 0..30 (orvStsFftOrderErr), a null
 * size pointer (orvStsNullPtrErr), a flag not listed above
 * (orvStsFftFlagErr), an order above the kind's highest (orvStsFftOrderErr).
 * Highest orders: 28 complex, 29 real single, 28 real double (27 on n8).
 * hint is stored and otherwise ignored. Nothing is written on failure. */
ORV_API OrvStatus orvsFFTGetSize_C_32fc(int order, int flag, int hint, int* pSpecSize, int* pSpecBufferSize,
                                        int* pBufferSize);
ORV_API OrvStatus orvsFFTGetSize_R_32f(int order, int flag, int hint, int* pSpecSize, int* pSpecBufferSize,
                                       int* pBufferSize);
ORV_API OrvStatus orvsFFTGetSize_R_64f(int order, int flag, int hint, int* pSpecSize, int* pSpecBufferSize,
                                       int* pBufferSize);

/* Builds a specification in caller memory: pMemSpec of the spec size and,
 * for orders above 10, pMemInit of the init size (any alignment; pMemInit may
 * be freed when Init returns). Checks: null ppSpec, order, null pMemSpec,
 * then the flag (the record is then marked unbuilt), then null pMemInit
 * where one is needed; *ppSpec is written only on success. */
ORV_API OrvStatus orvsFFTInit_C_32fc(OrvFFTSpec_C_32fc** ppSpec, int order, int flag, int hint, Orv8u* pMemSpec,
                                     Orv8u* pMemInit);
ORV_API OrvStatus orvsFFTInit_R_32f(OrvFFTSpec_R_32f** ppSpec, int order, int flag, int hint, Orv8u* pMemSpec,
                                    Orv8u* pMemInit);
ORV_API OrvStatus orvsFFTInit_R_64f(OrvFFTSpec_R_64f** ppSpec, int order, int flag, int hint, Orv8u* pMemSpec,
                                    Orv8u* pMemInit);

/* Builds a specification in library memory (orvStsMemAllocErr when that
 * fails); release it with the matching Free. */
ORV_API OrvStatus orvsFFTInitAlloc_C_32fc(OrvFFTSpec_C_32fc** ppSpec, int order, int flag, int hint);
ORV_API OrvStatus orvsFFTInitAlloc_R_32f(OrvFFTSpec_R_32f** ppSpec, int order, int flag, int hint);
ORV_API OrvStatus orvsFFTInitAlloc_R_64f(OrvFFTSpec_R_64f** ppSpec, int order, int flag, int hint);

/* Work-buffer bytes a transform wants, 32 bytes of alignment slack included
 * (0: none). A record of another kind, freed or never built answers
 * orvStsContextMatchErr. */
ORV_API OrvStatus orvsFFTGetBufSize_C_32fc(const OrvFFTSpec_C_32fc* pSpec, int* pSize);
ORV_API OrvStatus orvsFFTGetBufSize_R_32f(const OrvFFTSpec_R_32f* pSpec, int* pSize);
ORV_API OrvStatus orvsFFTGetBufSize_R_64f(const OrvFFTSpec_R_64f* pSpec, int* pSize);

/* Retires a specification; frees it when InitAlloc built it. A second Free
 * answers orvStsContextMatchErr and releases nothing. */
ORV_API OrvStatus orvsFFTFree_C_32fc(OrvFFTSpec_C_32fc* pSpec);
ORV_API OrvStatus orvsFFTFree_R_32f(OrvFFTSpec_R_32f* pSpec);
ORV_API OrvStatus orvsFFTFree_R_64f(OrvFFTSpec_R_64f* pSpec);

/* Complex transforms of 2^order values. pSrc and pDst may be the same array
 * and need no alignment. pBuffer: at least the GetBufSize bytes, any
 * alignment, or null (the transform then allocates and frees its own; one
 * allocation per call). Checks: null pSpec (orvStsNullPtrErr), a spec that
 * is not a built complex one (orvStsContextMatchErr), null pSrc or pDst
 * (orvStsNullPtrErr), a failed allocation (orvStsMemAllocErr); nothing is
 * written on failure. A specification may be shared by threads that use
 * separate buffers. */
ORV_API OrvStatus orvsFFTFwd_CToC_32fc(const Orv32fc* pSrc, Orv32fc* pDst, const OrvFFTSpec_C_32fc* pSpec,
                                       Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTInv_CToC_32fc(const Orv32fc* pSrc, Orv32fc* pDst, const OrvFFTSpec_C_32fc* pSpec,
                                       Orv8u* pBuffer);

/* The base sine table of order 10: T[k] = sin(2 pi k/1024), k = 0..256,
 * T[256] = 1 exactly, then zero padding. */
extern ORV_API const Orv32f fft_fix_twiddle_table_32f[264];
extern ORV_API const Orv64f fft_fix_twiddle_table_64f[260];

/* ---- Real transforms and packed spectra ----------------------------------
 * A real signal of N = 2^order samples has a conjugate-symmetric spectrum
 * X[k] = R(k) + i I(k); X[0] and X[N/2] are real, so N numbers hold it:
 *   Perm: R(0) R(N/2) R(1) I(1) R(2) I(2) ... R(N/2-1) I(N/2-1)
 *   Pack: R(0) R(1) I(1) R(2) I(2) ... R(N/2-1) I(N/2-1) R(N/2)
 * (N = 1: R(0); N = 2: R(0) R(1) in both). docs/fft-packed-layouts.md draws
 * them out. pSrc and pDst may be the same array, any alignment; pBuffer as
 * for the complex transforms (GetBufSize_R bytes, or null). Checks: null
 * pSpec (orvStsNullPtrErr), a spec that is not a built real one of the
 * element type (orvStsContextMatchErr), null pSrc or pDst
 * (orvStsNullPtrErr), a failed allocation (orvStsMemAllocErr); nothing is
 * written on failure. The scale flag of the specification applies with
 * the full length N. */
ORV_API OrvStatus orvsFFTFwd_RToPerm_32f(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                         Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTFwd_RToPerm_64f(const Orv64f* pSrc, Orv64f* pDst, const OrvFFTSpec_R_64f* pSpec,
                                         Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTInv_PermToR_32f(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                         Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTInv_PermToR_64f(const Orv64f* pSrc, Orv64f* pDst, const OrvFFTSpec_R_64f* pSpec,
                                         Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTFwd_RToPack_32f(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                         Orv8u* pBuffer);
ORV_API OrvStatus orvsFFTInv_PackToR_32f(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                         Orv8u* pBuffer);

/* Product of two spectra in Perm layout, in place: pSrcDst[0] *= pSrc[0];
 * for even len also pSrcDst[1] *= pSrc[1], then (len-2)/2 complex products
 * from index 2; for odd len (len-1)/2 complex products from index 1.
 * Checks: a null pointer (orvStsNullPtrErr), len below 1 (orvStsSizeErr). */
ORV_API OrvStatus orvsMulPerm_32f_I(const Orv32f* pSrc, Orv32f* pSrcDst, int len);
ORV_API OrvStatus orvsMulPerm_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);

/* This library's addition, without a tier prefix: the packed spectrum of N =
 * len reals (Perm or Pack) as the len/2 + 1 complex values X[0 .. len/2],
 * and back (the imaginary parts of X[0] and X[len/2] are dropped). len is 1
 * or even. pDst may overlay pSrc when it has room for the complex values.
 * Checks: a null pointer (orvStsNullPtrErr), len below 1 or odd above 1
 * (orvStsSizeErr). */
ORV_API OrvStatus orvsFFTUnpack_Perm_32fc(const Orv32f* pSrc, Orv32fc* pDst, int len);
ORV_API OrvStatus orvsFFTUnpack_Pack_32fc(const Orv32f* pSrc, Orv32fc* pDst, int len);
ORV_API OrvStatus orvsFFTUnpack_Perm_64fc(const Orv64f* pSrc, Orv64fc* pDst, int len);
ORV_API OrvStatus orvsFFTUnpack_Pack_64fc(const Orv64f* pSrc, Orv64fc* pDst, int len);
ORV_API OrvStatus orvsFFTRepack_Perm_32fc(const Orv32fc* pSrc, Orv32f* pDst, int len);
ORV_API OrvStatus orvsFFTRepack_Pack_32fc(const Orv32fc* pSrc, Orv32f* pDst, int len);
ORV_API OrvStatus orvsFFTRepack_Perm_64fc(const Orv64fc* pSrc, Orv64f* pDst, int len);
ORV_API OrvStatus orvsFFTRepack_Pack_64fc(const Orv64fc* pSrc, Orv64f* pDst, int len);

ORV_EXTERN_C_END

#endif
