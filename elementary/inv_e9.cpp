// Reciprocal to 26 bits, AVX design: one division per block of 16. Each
// element is split into its mantissa with sign, scaled into [1, 2), and its
// exponent; the 16 mantissas share one division, and the exponent comes back
// as an exact power of two. Only the outermost binades need a true division.
// Runs in the caller's rounding mode.
#include <immintrin.h>

#include <cstdint>

#include "internal/orv_unaligned.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr uint64_t kSignMantissa = 0x800FFFFFFFFFFFFF;
constexpr uint64_t kOne = 0x3FF0000000000000;
constexpr uint64_t kExponent = 0x7FF0000000000000;
constexpr uint64_t kScaleBase = 0x7FE0000000000000;  // minus x's exponent field: 2^-(unbiased exponent)
constexpr uint64_t kGoodLow = 0x0020000000000000;    // exponent field 2
constexpr uint64_t kGoodEnd = 0x7FE0000000000000;    // exponent field 0x7FE

// The name slot handed to the error hook; nothing fills it.
constexpr char kThisFuncName[8] = {};

inline __m256d splat(uint64_t bits) { return _mm256_castsi256_pd(_mm256_set1_epi64x(static_cast<long long>(bits))); }

inline __m256d mantissa(__m256d v) { return _mm256_or_pd(_mm256_and_pd(v, splat(kSignMantissa)), splat(kOne)); }

// 2^-(unbiased exponent), by integer subtraction on the two halves.
inline __m256d scale(__m256d v) {
    const __m256i e = _mm256_castpd_si256(_mm256_and_pd(v, splat(kExponent)));
    const __m128i base = _mm_set1_epi64x(static_cast<long long>(kScaleBase));
    const __m128i lo = _mm_sub_epi64(base, _mm256_castsi256_si128(e));
    const __m128i hi = _mm_sub_epi64(base, _mm256_extractf128_si256(e, 1));
    return _mm256_castsi256_pd(_mm256_insertf128_si256(_mm256_castsi128_si256(lo), hi, 1));
}

// Exponent fields 0, 1, 0x7FE, 0x7FF: zeros, subnormals, the smallest and
// largest normal binades, infinities and NaNs. The exponent bits alone read as
// a double are never NaN, so ordered compares serve.
inline int bad_lanes(__m256d v) {
    const __m256d e = _mm256_and_pd(v, splat(kExponent));
    return _mm256_movemask_pd(
        _mm256_or_pd(_mm256_cmp_pd(e, splat(kGoodLow), _CMP_LT_OQ), _mm256_cmp_pd(e, splat(kGoodEnd), _CMP_GE_OQ)));
}

inline bool bad_one(double x) {
    const uint64_t e = __builtin_bit_cast(uint64_t, x) & kExponent;
    return e < kGoodLow || e >= kGoodEnd;
}

// True division for a bad element; a zero goes past the error hook, which may
// replace the stored infinity.
inline double inv_bad(const Orv64f* pSrc, Orv64f* pDst, int pos, OrvStatus& status) {
    const double x = load_elem(pSrc + pos);
    double r = 1.0 / x;
    if (x == 0.0) {
        store_elem(pDst + pos, r);
        ORV_T(vqkdError)(orvStsSingularity, pos, pSrc, pSrc, pDst, pDst, kThisFuncName);
        r = load_elem(pDst + pos);
        status = orvStsSingularity;
    }
    return r;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsInv_64f_A26)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    if (len < 1) return orvStsSizeErr;
    if (!pSrc || !pDst) return orvStsNullPtrErr;

    OrvStatus status = orvStsNoErr;
    const int blocks = len & ~15;
    int i = 0;
    for (; i < blocks; i += 16) {
        const double* src = pSrc + i;
        const __m256d v0 = _mm256_loadu_pd(src), v1 = _mm256_loadu_pd(src + 4);
        const __m256d v2 = _mm256_loadu_pd(src + 8), v3 = _mm256_loadu_pd(src + 12);
        const int bad = bad_lanes(v0) | bad_lanes(v1) << 4 | bad_lanes(v2) << 8 | bad_lanes(v3) << 12;
        const __m256d m0 = mantissa(v0), m1 = mantissa(v1), m2 = mantissa(v2), m3 = mantissa(v3);
        // 1/M0 = M1 M2 M3 / (M0 M1 M2 M3), and so on.
        const __m256d p01 = _mm256_mul_pd(m0, m1), p23 = _mm256_mul_pd(m2, m3);
        const __m256d p012 = _mm256_mul_pd(p01, m2), pAll = _mm256_mul_pd(p01, p23);
        const __m256d p123 = _mm256_mul_pd(p23, m1), p023 = _mm256_mul_pd(p23, m0);
        const __m256d p013 = _mm256_mul_pd(p01, m3);
        const __m256d r = _mm256_div_pd(splat(kOne), pAll);
        const __m256d r0 = _mm256_mul_pd(scale(v0), _mm256_mul_pd(p123, r));
        const __m256d r1 = _mm256_mul_pd(scale(v1), _mm256_mul_pd(p023, r));
        const __m256d r2 = _mm256_mul_pd(scale(v2), _mm256_mul_pd(p013, r));
        const __m256d r3 = _mm256_mul_pd(scale(v3), _mm256_mul_pd(p012, r));
        double* dst = pDst + i;
        if (!bad) {
            _mm256_storeu_pd(dst, r0);
            _mm256_storeu_pd(dst + 4, r1);
            _mm256_storeu_pd(dst + 8, r2);
            _mm256_storeu_pd(dst + 12, r3);
            continue;
        }
        // The bad elements in ascending order, before the block is stored.
        alignas(32) double out[16];
        _mm256_store_pd(out, r0);
        _mm256_store_pd(out + 4, r1);
        _mm256_store_pd(out + 8, r2);
        _mm256_store_pd(out + 12, r3);
        for (int k = 0; k < 16; ++k)
            if (bad >> k & 1) out[k] = inv_bad(pSrc, pDst, i + k, status);
        __builtin_memcpy(dst, out, sizeof out);
    }
    for (; i < len; ++i) {
        const double x = load_elem(pSrc + i);
        if (bad_one(x)) {
            store_elem(pDst + i, inv_bad(pSrc, pDst, i, status));
            continue;
        }
        const double m = __builtin_bit_cast(double, (__builtin_bit_cast(uint64_t, x) & kSignMantissa) | kOne);
        const double m2 = m * m, m4 = m2 * m2, m3 = m * m2;
        const double s = __builtin_bit_cast(double, kScaleBase - (__builtin_bit_cast(uint64_t, x) & kExponent));
        store_elem(pDst + i, s * ((1.0 / m4) * m3));
    }
    return status;
}
