// The vectorised AVX exponential of the SLEEF library (1-ulp variant), four
// elements at a time, as a peer of the e9 exponential. Built with -mavx, and
// only when the library is installed.
#include "sleef/exp_sleef.h"

#include <immintrin.h>
#include <sleef.h>

void sleef_exp_avx(const double* src, double* dst, int len) {
    int i = 0;
    for (; i + 4 <= len; i += 4) _mm256_storeu_pd(dst + i, Sleef_expd4_u10avx(_mm256_loadu_pd(src + i)));
    for (; i < len; ++i) dst[i] = Sleef_exp_u10(src[i]);
}
