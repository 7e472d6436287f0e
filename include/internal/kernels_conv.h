/* Fixed-size cyclic convolution kernels: signatures only. The tier variants
 * (m7_..., e9_...) are declared from them in orv_kernels.h. Each computes
 * c[k] = sum over j of a[j] * b[(k - j) mod n] and checks nothing. */
#pragma once

#include "orvtypes.h"

ORV_EXTERN_C_BEGIN
void ownConvCyclic8x8_32f(const Orv32f* a, const Orv32f* b, Orv32f* c);
/* Real a, complex b and c: each a[j] scales both parts. */
void ownConvCyclic4x4_32f32fc(const Orv32f* a, const Orv32fc* b, Orv32fc* c);
/* Sum in wrapping 32-bit integers, shifted by scaleFactor without rounding
 * (right when positive, left when negative), saturated to 16 bits. */
void ownConvCyclic8x8_16s_Sfs(const Orv16s* a, const Orv16s* b, Orv16s* c, int scaleFactor);
ORV_EXTERN_C_END
