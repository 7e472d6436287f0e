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

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
