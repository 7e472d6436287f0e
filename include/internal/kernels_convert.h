/* Conversion kernels: signatures only. The tier variants (m7_..., e9_...)
 * are declared from these; no unprefixed definition exists. Kernels check
 * nothing: pointers are valid and len is at least 1. */
#ifndef ORV_KERNELS_CONVERT_H
#define ORV_KERNELS_CONVERT_H

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

void ownsConvert_32f64f_M7(const Orv32f* pSrc, Orv64f* pDst, int len);
void ownsConvert_64f32f_M7(const Orv64f* pSrc, Orv32f* pDst, int len);

/* Float to integer with the result x * 2^-scaleFactor saturated to the type.
 * rndFlag 1 rounds to nearest, ties to even (the kernel sets that rounding
 * if MXCSR holds another one); 0 truncates. NaN gives 0 except where noted
 * in the source. */
void ownorvsCnvrt_32f8u_Sfs(const Orv32f* pSrc, Orv8u* pDst, int len, int rndFlag, int scaleFactor);
void ownorvsCnvrt_32f8s_Sfs(const Orv32f* pSrc, Orv8s* pDst, int len, int rndFlag, int scaleFactor);
void ownorvsCnvrt_32f16s_Sfs(const Orv32f* pSrc, Orv16s* pDst, int len, int rndFlag, int scaleFactor);
void ownorvsCnvrt_32f16u_Sfs(const Orv32f* pSrc, Orv16u* pDst, int len, int rndFlag, int scaleFactor);

/* The same, rounding half away from zero; the caller has set MXCSR to round
 * towards zero. NaN gives the type's upper limit (0 for 16u). */
void ownorvsCnvrtFin_32f8u_Sfs(const Orv32f* pSrc, Orv8u* pDst, int len, int scaleFactor);
void ownorvsCnvrtFin_32f8s_Sfs(const Orv32f* pSrc, Orv8s* pDst, int len, int scaleFactor);
void ownorvsCnvrtFin_32f16s_Sfs(const Orv32f* pSrc, Orv16s* pDst, int len, int scaleFactor);
void ownorvsCnvrtFin_32f16u_Sfs(const Orv32f* pSrc, Orv16u* pDst, int len, int scaleFactor);

ORV_EXTERN_C_END

#endif
