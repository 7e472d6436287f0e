/* Conversion kernels: signatures only. The tier variants (m7_..., e9_...)
 * are declared from these; no unprefixed definition exists. Kernels check
 * nothing: pointers are valid and len is at least 1. */
#ifndef ORV_KERNELS_CONVERT_H
#define ORV_KERNELS_CONVERT_H

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN

void ownsConvert_32f64f_M7(const Orv32f* pSrc, Orv64f* pDst, int len);
void ownsConvert_64f32f_M7(const Orv64f* pSrc, Orv32f* pDst, int len);

ORV_EXTERN_C_END

#endif
