// Reciprocal to 26 bits, SSE design: one division per block of 8. The product
// of the 8 elements is inverted once and each reciprocal follows by
// multiplications, which is why every element must lie where a product of
// four stays normal. Runs in round-to-nearest without flush to zero whatever
// the caller set, and restores the caller's MXCSR.
#include <emmintrin.h>

#include <cstdint>

#include "internal/orv_unaligned.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

// |x| from about 2^-255.5 up to just below 2^256, by the high word of |x|.
constexpr int32_t kLowWord = 0x2FF6A09F;
constexpr int32_t kHighWord = 0x4FEFFFFF;

inline bool in_range(double x) {
    const int32_t a = static_cast<int32_t>(__builtin_bit_cast(uint64_t, x) >> 32) & 0x7FFFFFFF;
    return a >= kLowWord && a < kHighWord;
}

// One element, alone: x^4 keeps to the same magnitudes as a block's product.
inline double inv_one(double x, OrvStatus& status) {
    double r;
    if (in_range(x)) {
        const double s = x * x;
        r = ((1.0 / (s * s)) * s) * x;
    } else {
        r = 1.0 / x;
        if ((__builtin_bit_cast(uint64_t, x) << 1) == 0) status = orvStsSingularity;
    }
    return r;
}

// Whether all 8 elements are in range: the high words of their magnitudes,
// gathered four to a register.
inline bool block_in_range(const __m128d v[4]) {
    const __m128i absMask = _mm_set1_epi32(0x7FFFFFFF);
    const __m128i low = _mm_set1_epi32(kLowWord), highM1 = _mm_set1_epi32(kHighWord - 1);
    int bad = 0;
    for (int j = 0; j < 4; j += 2) {
        const __m128 hi = _mm_shuffle_ps(_mm_castpd_ps(v[j]), _mm_castpd_ps(v[j + 1]), _MM_SHUFFLE(3, 1, 3, 1));
        const __m128i a = _mm_and_si128(_mm_castps_si128(hi), absMask);
        // Signed compares serve: the words are non-negative.
        bad |= _mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi32(low, a), _mm_cmpgt_epi32(a, highM1)));
    }
    return bad == 0;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsInv_64f_A26)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    if (!pDst) return orvStsNullPtrErr;
    if (!pSrc) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;

    // Rounding control, flush-to-zero and denormals-are-zero off for the call.
    const Orv64u saved = ps_get_ssx();
    const bool changed = (saved & 0xE040) != 0;
    if (changed) orv_set_cw_ssx(saved & 0xFFFF1FBF);

    OrvStatus status = orvStsNoErr;
    const __m128d one = _mm_set1_pd(1.0);
    const int blocks = len & ~7;
    int i = 0;
    for (; i < blocks; i += 8) {
        const __m128d v[4] = {_mm_loadu_pd(pSrc + i), _mm_loadu_pd(pSrc + i + 2), _mm_loadu_pd(pSrc + i + 4),
                              _mm_loadu_pd(pSrc + i + 6)};
        if (!block_in_range(v)) {
            for (int j = i; j < i + 8; ++j) store_elem(pDst + j, inv_one(load_elem(pSrc + j), status));
            continue;
        }
        // A = v0, B = v1, C = v2, D = v3: 1/A = B / (AB), and so on.
        const __m128d p = _mm_mul_pd(v[0], v[1]), q = _mm_mul_pd(v[2], v[3]);
        const __m128d r = _mm_div_pd(one, _mm_mul_pd(p, q));
        const __m128d invP = _mm_mul_pd(q, r), invQ = _mm_mul_pd(p, r);
        _mm_storeu_pd(pDst + i, _mm_mul_pd(v[1], invP));
        _mm_storeu_pd(pDst + i + 2, _mm_mul_pd(v[0], invP));
        _mm_storeu_pd(pDst + i + 4, _mm_mul_pd(v[3], invQ));
        _mm_storeu_pd(pDst + i + 6, _mm_mul_pd(v[2], invQ));
    }
    for (; i < len; ++i) store_elem(pDst + i, inv_one(load_elem(pSrc + i), status));

    if (changed) orv_set_cw_ssx(saved);
    return status;
}
