// sqrt: the hardware instruction, and the error layer for arguments below
// zero (an ordered comparison: not for NaN, not for -0.0).
#include <emmintrin.h>

#include "libm.h"

ORV_LIBM_API double sqrt(double x) noexcept {
    __m128d v = _mm_set_sd(x);
    double r = _mm_cvtsd_f64(_mm_sqrt_sd(v, v));
    if (x < 0.0) __libm_error_support(&x, &x, &r, 49);
    return r;
}
