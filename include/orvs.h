/* orv signal domain: one-dimensional arrays.
 *
 * Names with a dispatch stub are callable as declared; the others exist only
 * under tier prefixes (m7_, u8_, n8_, y8_, e9_), declared in orvtiers.h. */
#ifndef ORVS_H
#define ORVS_H

#include "orvcore.h"
#include "orvsfft.h"

ORV_EXTERN_C_BEGIN

/* Version record of the signal domain for the tier that serves the call. */
ORV_API const OrvLibVersion* orvsGetLibVersion(void);

/* Blocks of len elements aligned to 32 bytes; null when len < 1 or out of
 * memory. The byte count is taken modulo 2^32 as an int: a len whose byte
 * count does not fit in 31 bits yields null or a short block. Release with
 * orvsFree. orvsMalloc_8u has no stub. */
ORV_API Orv8u* orvsMalloc_8u(int len);
ORV_API Orv32f* orvsMalloc_32f(int len);
ORV_API Orv64f* orvsMalloc_64f(int len);
ORV_API void orvsFree(void* p);

/* ---- Type conversion ---------------------------------------------------
 * Each returns orvStsNullPtrErr (-8) for a null pointer, else
 * orvStsSizeErr (-6) for len < 1, else 0; overflow and NaN are not reported.
 *
 * 32f64f is exact. 64f32f rounds by MXCSR and clamps to the largest finite
 * single value, so overflow and infinities never give an infinity; a NaN
 * becomes +FLT_MAX on tiers m7 to y8 and stays NaN on e9. */
ORV_API OrvStatus orvsConvert_32f64f(const Orv32f* pSrc, Orv64f* pDst, int len);
ORV_API OrvStatus orvsConvert_64f32f(const Orv64f* pSrc, Orv32f* pDst, int len);

/* Float to integer of x * 2^-scaleFactor, saturated to the type. rndMode
 * orvRndNear rounds to nearest (ties to even), orvRndZero truncates, any
 * other value rounds half away from zero. No stub: call a tier's name.
 * A NaN gives 0 under orvRndNear and orvRndZero (on tier y8 the 8u form also
 * zeroes the element after it) and, under the third mode, the type's upper
 * limit (0 for 16u).
 * MXCSR: its rounding control is as before on return. Its denormals-are-zero
 * bit is cleared, and the exception flags put back to the caller's, when
 * rounding to nearest had to be set or when an invalid operation (a NaN, a
 * value below the 32-bit range) occurred; otherwise flags raised by the
 * conversion stay raised. */
ORV_API OrvStatus orvsConvert_32f8u_Sfs(const Orv32f* pSrc, Orv8u* pDst, int len, int rndMode, int scaleFactor);
ORV_API OrvStatus orvsConvert_32f16s_Sfs(const Orv32f* pSrc, Orv16s* pDst, int len, int rndMode, int scaleFactor);
ORV_API OrvStatus orvsConvert_32f16u_Sfs(const Orv32f* pSrc, Orv16u* pDst, int len, int rndMode, int scaleFactor);

/* ---- Reductions ----------------------------------------------------------
 * Pointers are checked in argument order (null: orvStsNullPtrErr), then
 * len < 1 gives orvStsSizeErr; nothing is written on failure. The order of
 * summation is fixed per tier, so results are reproducible bit for bit for
 * a tier, an input and an alignment, and may differ between tiers in the
 * last bits. */

/* Sum of len floats, returned as float. hint orvAlgHintFast sums in single
 * precision within blocks of 32768 elements joined in double; any other
 * value sums in double. */
ORV_API OrvStatus orvsSum_32f(const Orv32f* pSrc, int len, Orv32f* pSum, OrvHintAlgorithm hint);
ORV_API OrvStatus orvsSum_64f(const Orv64f* pSrc, int len, Orv64f* pSum);
/* The tier's sum divided once by len. */
ORV_API OrvStatus orvsMean_64f(const Orv64f* pSrc, int len, Orv64f* pMean);
/* Extremes by packed maximum and minimum: a NaN is not treated specially
 * and survives or is dropped by its position. */
ORV_API OrvStatus orvsMax_64f(const Orv64f* pSrc, int len, Orv64f* pMax);
ORV_API OrvStatus orvsMinMax_64f(const Orv64f* pSrc, int len, Orv64f* pMin, Orv64f* pMax);
/* Largest element and its lowest index. A null pIndx makes the call
 * orvsMax_64f. */
ORV_API OrvStatus orvsMaxIndx_64f(const Orv64f* pSrc, int len, Orv64f* pMax, int* pIndx);
/* Extremes and the first index comparing equal to each (0 if none, as for a
 * NaN extreme). Pointers are checked in the order pSrc, pMin, pMax,
 * pMinIndx, pMaxIndx. */
ORV_API OrvStatus orvsMinMaxIndx_64f(const Orv64f* pSrc, int len, Orv64f* pMin, int* pMinIndx, Orv64f* pMax,
                                     int* pMaxIndx);
ORV_API OrvStatus orvsDotProd_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, int len, Orv64f* pDp);
/* Float sources widened to double before each product; the sum is in
 * double. */
ORV_API OrvStatus orvsDotProd_32f64f(const Orv32f* pSrc1, const Orv32f* pSrc2, int len, Orv64f* pDp);

/* ---- Thresholds ------------------------------------------------------------
 * pDst[n] = valueGT if levelGT < x, else x if levelLT <= x, else valueLT
 * (so a NaN becomes valueLT). Checks: null pointers, len < 1, then
 * levelLT > levelGT (orvStsThresholdErr). pSrc may equal pDst. */
ORV_API OrvStatus orvsThreshold_LTValGTVal_64f(const Orv64f* pSrc, Orv64f* pDst, int len, Orv64f levelLT,
                                               Orv64f valueLT, Orv64f levelGT, Orv64f valueGT);

/* ---- Elementary functions ----------------------------------------------
 * pDst[i] = exp(pSrc[i]) (orvsExp_64f_I in place). Null pointer:
 * orvStsNullPtrErr; len < 1: orvStsSizeErr; otherwise orvStsNoErr whatever
 * the values. Elements go in pairs, and a last odd element screens
 * out-of-range input its own way:
 *   in a pair: x < -708.39396 gives 0 but -inf NaN; x from about 709.436 on
 *              gives +inf; a quiet NaN gives NaN and, second in a pair, makes
 *              the first NaN too; a signalling NaN gives +inf.
 *   last odd:  |x| >= 708.3935546875 gives 0, x >= 709.7822265625 +inf;
 *              quiet NaNs keep their sign.
 * The invalid and underflow flags of MXCSR are clear after every call. */
ORV_API OrvStatus orvsExp_64f(const Orv64f* pSrc, Orv64f* pDst, int len);
ORV_API OrvStatus orvsExp_64f_I(Orv64f* pSrcDst, int len);

/* pDst[i] = 1 / pSrc[i] with a relative error below 2^-26; one division is
 * shared by blocks of elements. A zero gives the infinity of its sign and the
 * warning orvStsSingularity; all elements are processed. Tiers m7 to y8 check
 * pDst, pSrc, then len and compute in round-to-nearest without flush to zero
 * whatever the caller's MXCSR, which they restore; e9 checks len first and
 * runs in the caller's mode. */
ORV_API OrvStatus orvsInv_64f_A26(const Orv64f* pSrc, Orv64f* pDst, int len);

/* Fills pDst with normal deviates of the given mean and standard deviation.
 * *pSeed is the only state: it is read at entry and the generator's state
 * written back, so restoring it repeats a sequence. Every call makes one pair
 * of deviates more than it writes. Null pDst or pSeed: orvStsNullPtrErr;
 * len < 1: orvStsSizeErr; the seed is then left as it was. */
ORV_API OrvStatus orvsRandGauss_Direct_64f(Orv64f* pDst, int len, Orv64f mean, Orv64f stdev, unsigned int* pSeed);

/* Fill and copy. len counts elements; the byte count is len times the
 * element size in 32-bit arithmetic, unguarded. Checks: a null pointer gives
 * orvStsNullPtrErr (pointers in argument order), then len < 1 gives
 * orvStsSizeErr; nothing is written on failure. Any alignment is accepted.
 * Overlapping source and destination of a copy give no defined result, except
 * that an exact alias leaves the data as it was. The 8u forms have no stub. */
ORV_API OrvStatus orvsZero_8u(Orv8u* pDst, int len);
ORV_API OrvStatus orvsZero_32f(Orv32f* pDst, int len);
ORV_API OrvStatus orvsZero_64f(Orv64f* pDst, int len);
ORV_API OrvStatus orvsSet_32f(Orv32f val, Orv32f* pDst, int len);
ORV_API OrvStatus orvsSet_64f(Orv64f val, Orv64f* pDst, int len);
ORV_API OrvStatus orvsCopy_8u(const Orv8u* pSrc, Orv8u* pDst, int len);
ORV_API OrvStatus orvsCopy_32f(const Orv32f* pSrc, Orv32f* pDst, int len);
ORV_API OrvStatus orvsCopy_64f(const Orv64f* pSrc, Orv64f* pDst, int len);

/* Element-wise arithmetic: one IEEE operation per element in the current
 * rounding mode, the same result on every tier. Checks as for the fills:
 * null pointers in argument order, then len < 1. Shortcuts, taken after the
 * checks (exact comparison; -0.0 counts as 0.0, NaN takes the loop):
 * AddC/SubC with val 0 return at once; MulC_I with val 1 returns at once and
 * with val 0 zeroes the array (+0.0 everywhere); MulC with val 1 copies and
 * with val 0 zeroes pDst. A destination equal to a source is allowed; partly
 * overlapping arrays are not. orvsMulC_32f_I has no stub. */
ORV_API OrvStatus orvsAdd_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len); /* s1 + s2 */
ORV_API OrvStatus orvsAdd_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
ORV_API OrvStatus orvsAddC_64f_I(Orv64f val, Orv64f* pSrcDst, int len);
ORV_API OrvStatus orvsSub_64f(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len); /* s2 - s1 */
ORV_API OrvStatus orvsSub_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);                  /* sd - s */
ORV_API OrvStatus orvsSubC_64f_I(Orv64f val, Orv64f* pSrcDst, int len);
ORV_API OrvStatus orvsSubCRev_64f(const Orv64f* pSrc, Orv64f val, Orv64f* pDst, int len);       /* val - s */
ORV_API OrvStatus orvsMul_64f_I(const Orv64f* pSrc, Orv64f* pSrcDst, int len);
ORV_API OrvStatus orvsMulC_64f(const Orv64f* pSrc, Orv64f val, Orv64f* pDst, int len);
ORV_API OrvStatus orvsMulC_64f_I(Orv64f val, Orv64f* pSrcDst, int len);
ORV_API OrvStatus orvsMulC_32f_I(Orv32f val, Orv32f* pSrcDst, int len);
ORV_API OrvStatus orvsSqr_64f_I(Orv64f* pSrcDst, int len);

/* ---- Convolution ---------------------------------------------------------
 * Full linear convolution: pDst[k] = sum over i + j = k of a[i] * b[j] for k
 * from 0 to src1Len + src2Len - 2; pDst holds exactly that many samples. The
 * shorter input is the filter (pSrc2 on equal lengths). The path depends only
 * on the lengths, n the longer and m the shorter, T = n + m - 1: direct sums
 * when T < 512 or m < 64 (in chunks of 4096 samples of the longer input),
 * one real FFT product of the whole signal when n < 3m, otherwise overlap-save
 * blocks of real FFTs. Checks: a null pointer (orvStsNullPtrErr), then a
 * length below 1 (orvStsSizeErr); nothing is written on failure. An FFT path
 * returns what its last transform returned, and orvStsMemAllocErr when its
 * block cannot be allocated. On e9 the 32f direct path of a signal of 4096
 * samples or more keeps, at each seam between chunks, only the later chunk's
 * part of the m - 1 seam samples. */
ORV_API OrvStatus orvsConv_32f(const Orv32f* pSrc1, int src1Len, const Orv32f* pSrc2, int src2Len, Orv32f* pDst);
ORV_API OrvStatus orvsConv_64f(const Orv64f* pSrc1, int src1Len, const Orv64f* pSrc2, int src2Len, Orv64f* pDst);

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
