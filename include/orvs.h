/* orv signal domain: one-dimensional arrays.
 *
 * Names with a dispatch stub are callable as declared; the others exist only
 * under tier prefixes (m7_, u8_, n8_, y8_, e9_), declared in orvtiers.h. */
#ifndef ORVS_H
#define ORVS_H

#include "orvcore.h"

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

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
