// The vector exponential kernels, double and float source. exp(x) = 2^k *
// exp(r) with k = round(x / ln 2), r = x - k ln 2 in two parts, and exp(r)
// from a rational approximation; no tables. Elements go in pairs; the pair
// and the last odd element screen out-of-range input in different ways, and
// both ways are part of the contract.
#include <emmintrin.h>

#include <cstdint>

#include "elementary/unaligned.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

inline __m128d splat(uint64_t bits) { return _mm_castsi128_pd(_mm_set1_epi64x(static_cast<long long>(bits))); }

constexpr uint64_t kInvLn2 = 0x3FF71547652B82FE;
constexpr uint64_t kLn2Hi = 0x3FE62E42FEE00000;
constexpr uint64_t kLn2Lo = 0x3DEA39EF35793C76;
constexpr uint64_t kDp1 = 0x3FC555555555553E;
constexpr uint64_t kDp2 = 0xBF66C16C16BEBD93;
constexpr uint64_t kDp3 = 0x3F11566AAF25DE2C;
constexpr uint64_t kDp4 = 0xBEBBBD41C5D26BF1;
constexpr uint64_t kDp5 = 0x3E66376972BEA4D0;
constexpr uint64_t kLnMax = 0x40862E42FEFA39E6;  // 709.782712893383
constexpr uint64_t kLnMin = 0xC0862326D6B1DE07;  // -708.393964185322
constexpr uint64_t kC0 = 0x4330000000000000;     // 2^52
constexpr uint64_t kTwo = 0x4000000000000000;
constexpr uint64_t kOne = 0x3FF0000000000000;
constexpr uint64_t kSign = 0x8000000000000000;
constexpr uint64_t kQNaN = 0x7FF8000000000000;
constexpr uint64_t kNegQNaN = 0xFFF8000000000000;
constexpr uint64_t kInf = 0x7FF0000000000000;
constexpr uint32_t kQNaNHigh = 0x7FF80000;  // quiet-NaN threshold of the last-element test

// exp of both lanes, whatever their values; out-of-range lanes are fixed up by
// the callers.
inline __m128d exp_pair(__m128d x) {
    const __m128d sign = splat(kSign), one = splat(kOne);
    // Adding +-2^52 rounds x / ln 2 to the integer k, left in the low bits of t.
    const __m128d cs = _mm_or_pd(_mm_and_pd(x, sign), splat(kC0));
    const __m128d t = _mm_add_pd(_mm_mul_pd(x, splat(kInvLn2)), cs);
    const __m128d kd = _mm_sub_pd(t, cs);
    const __m128d hi = _mm_sub_pd(x, _mm_mul_pd(kd, splat(kLn2Hi)));
    const __m128d lo = _mm_mul_pd(kd, splat(kLn2Lo));
    const __m128d r = _mm_sub_pd(hi, lo);
    const __m128d u = _mm_mul_pd(r, r);
    __m128d p = splat(kDp5);
    p = _mm_add_pd(splat(kDp4), _mm_mul_pd(u, p));
    p = _mm_add_pd(splat(kDp3), _mm_mul_pd(u, p));
    p = _mm_add_pd(splat(kDp2), _mm_mul_pd(u, p));
    p = _mm_add_pd(splat(kDp1), _mm_mul_pd(u, p));
    const __m128d c = _mm_sub_pd(r, _mm_mul_pd(u, p));
    const __m128d num = _mm_mul_pd(r, c);
    // num == 0 (x == 0, or r so small that r * c underflows): the result is
    // exactly 1; the OR keeps the division clear of 0 / 0.
    const __m128d exact = _mm_cmpeq_pd(num, _mm_setzero_pd());
    const __m128d den = _mm_or_pd(_mm_sub_pd(splat(kTwo), c), _mm_and_pd(exact, one));
    const __m128d q = _mm_div_pd(num, den);
    const __m128d m = _mm_add_pd(one, _mm_xor_pd(_mm_sub_pd(_mm_sub_pd(lo, q), hi), sign));
    // 2^k: |k| from the low word of t, negated for negative t, moved into the
    // exponent field of 1.0. Nothing caps k = 1024, which gives infinity.
    const __m128i ti = _mm_castpd_si128(t);
    const __m128i neg = _mm_shuffle_epi32(_mm_srai_epi32(ti, 31), _MM_SHUFFLE(3, 3, 1, 1));
    const __m128i k = _mm_sub_epi32(_mm_xor_si128(ti, neg), neg);
    const __m128i scale = _mm_add_epi32(_mm_castpd_si128(one), _mm_slli_epi64(k, 52));
    const __m128d res = _mm_mul_pd(m, _mm_castsi128_pd(scale));
    return _mm_or_pd(_mm_and_pd(exact, one), _mm_andnot_pd(exact, res));
}

// What distinguishes the float-source kernel: how elements load, and the bit
// tests of the out-of-range fix-ups.
struct Src64 {
    using T = Orv64f;
    static __m128d load2(const T* p) { return _mm_loadu_pd(p); }
    // The word that the pair fix-ups test: high word, masked.
    static uint32_t pair_word(T x) { return static_cast<uint32_t>(__builtin_bit_cast(uint64_t, x) >> 32) & 0x7FF80000; }
    static constexpr uint32_t kPairInf = 0x7FF00000, kPairQNaN = 0x7FF80000;
    // A quiet NaN in the second lane writes its NaN into the first lane's slot.
    static constexpr bool kNaNToFirstSlot = true;
    // The last element's test reads the high word against those of ln_max and
    // ln_min's magnitude.
    static int32_t last_word(T x) { return static_cast<int32_t>(__builtin_bit_cast(uint64_t, x) >> 32); }
    static constexpr int32_t kLastMax = 0x40862E42, kLastMin = 0x40862326;
};

struct Src32 {
    using T = Orv32f;
    static __m128d load2(const T* p) {
        return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
    }
    static uint32_t pair_word(T x) { return __builtin_bit_cast(uint32_t, x) & 0x7FC00000; }
    static constexpr uint32_t kPairInf = 0x7F800000, kPairQNaN = 0x7FC00000;
    static constexpr bool kNaNToFirstSlot = false;
    // The float's own bits against ln_max_T and ln_min_T; the NaN thresholds
    // stay those of a double's high word, so a float NaN counts as too large.
    static int32_t last_word(T x) { return static_cast<int32_t>(__builtin_bit_cast(uint32_t, x)); }
    static constexpr int32_t kLastMax = 0x44317218, kLastMin = 0x44311937;
};

template <class Src>
void exp_kernel(const typename Src::T* pSrc, Orv64f* pDst, int len) {
    const __m128d lnMin = splat(kLnMin), lnMax = splat(kLnMax);
    int i = 0;
    for (; i + 2 <= len; i += 2) {
        const __m128d x = Src::load2(pSrc + i);
        const int below = _mm_movemask_pd(_mm_cmplt_pd(x, lnMin));
        const int above = _mm_movemask_pd(_mm_cmpnle_pd(x, lnMax));  // NaN too
        const __m128d y = exp_pair(x);
        if ((below | above) == 0) {
            _mm_storeu_pd(pDst + i, y);
            continue;
        }
        const typename Src::T in[2] = {load(pSrc + i), load(pSrc + i + 1)};
        double out[2];
        _mm_storeu_pd(out, y);
        for (int l = 0; l < 2; ++l)
            if (below >> l & 1)
                out[l] = Src::pair_word(in[l]) >= Src::kPairInf ? __builtin_bit_cast(double, kQNaN) : 0.0;
        for (int l = 0; l < 2; ++l) {
            if (!(above >> l & 1)) continue;
            if (Src::pair_word(in[l]) >= Src::kPairQNaN)
                out[Src::kNaNToFirstSlot ? 0 : l] = __builtin_bit_cast(double, kQNaN);
            else
                out[l] = __builtin_bit_cast(double, kInf);
        }
        _mm_storeu_pd(pDst + i, _mm_loadu_pd(out));
    }
    if (i < len) {
        const typename Src::T x = load(pSrc + i);
        const int32_t h = Src::last_word(x);
        const int32_t a = h & 0x7FFFFFFF;
        double y;
        if (h >= Src::kLastMax)
            y = __builtin_bit_cast(double, h >= static_cast<int32_t>(kQNaNHigh) ? kQNaN : kInf);
        else if (a >= Src::kLastMin)
            y = a >= static_cast<int32_t>(kQNaNHigh) ? __builtin_bit_cast(double, kNegQNaN) : 0.0;
        else
            y = _mm_cvtsd_f64(exp_pair(_mm_set_sd(static_cast<double>(x))));
        store(pDst + i, y);
    }
    // Invalid and underflow arise from out-of-range lanes and tiny r; the
    // kernel never leaves them set, even if they were set on entry.
    __asm__ volatile("" ::: "memory");
    const unsigned csr = _mm_getcsr();
    if (csr & 0x11) _mm_setcsr(csr & 0xFFEE);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsExp64f_M7)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    exp_kernel<Src64>(pSrc, pDst, len);
}

ORV_TIER_API void ORV_T(ownsExp32f64f_M7)(const Orv32f* pSrc, Orv64f* pDst, int len) {
    exp_kernel<Src32>(pSrc, pDst, len);
}
