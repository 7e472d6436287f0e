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

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
