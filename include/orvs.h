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

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
