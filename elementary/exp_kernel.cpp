// The vector exponential kernels, double and float source. exp(x) = 2^k *
// exp(r) with k = round(x / ln 2), r = x - k ln 2 in two parts, and exp(r)
// from a rational approximation; no tables. Elements go in pairs; the pair
// and the last odd element screen out-of-range input in different ways, and
// both ways are part of the contract. e9 takes two pairs per step in 256-bit
// registers, lane for lane the same operations.
#include <immintrin.h>

#include <cstdint>

#include "internal/orv_unaligned.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

typedef double v2d __attribute__((vector_size(16)));
typedef double v4d __attribute__((vector_size(32)));
typedef int64_t v2l __attribute__((vector_size(16)));
typedef int64_t v4l __attribute__((vector_size(32)));
typedef int32_t v4i __attribute__((vector_size(16)));
typedef uint32_t v4u __attribute__((vector_size(16)));
typedef uint64_t v2u __attribute__((vector_size(16)));
typedef float v2f __attribute__((vector_size(8)));
typedef float v4f __attribute__((vector_size(16)));

// The integer and float views of a vector of doubles.
template <class D>
struct Lanes;
template <>
struct Lanes<v2d> {
    using L = v2l;
    using F = v2f;
};
template <>
struct Lanes<v4d> {
    using L = v4l;
    using F = v4f;
};

template <class D>
inline int movemask(typename Lanes<D>::L m) {
    if constexpr (sizeof(D) == 32)
        return _mm256_movemask_pd(reinterpret_cast<__m256d>(m));
    else
        return _mm_movemask_pd(reinterpret_cast<__m128d>(m));
}

inline constexpr double d(uint64_t bits) { return __builtin_bit_cast(double, bits); }

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

// 2^k: |k| from the low word of t, negated for negative t, moved into the
// exponent field of 1.0 by 32-bit addition. Nothing caps k = 1024, which
// gives infinity.
// AVX has no 256-bit integer operations: a vector of four goes by halves.
template <class D>
inline D scale_of(D t) {
    if constexpr (sizeof(D) == 32) {
        const __m256d v = reinterpret_cast<__m256d>(t);
        const v2d lo = scale_of(reinterpret_cast<v2d>(_mm256_castpd256_pd128(v)));
        const v2d hi = scale_of(reinterpret_cast<v2d>(_mm256_extractf128_pd(v, 1)));
        return reinterpret_cast<D>(_mm256_insertf128_pd(_mm256_castpd128_pd256(reinterpret_cast<__m128d>(lo)),
                                                        reinterpret_cast<__m128d>(hi), 1));
    } else {
        // Unsigned words: the arithmetic wraps, as the integer unit does.
        const v4i ti = reinterpret_cast<v4i>(t);
        const v4u neg = reinterpret_cast<v4u>(__builtin_shufflevector(ti >> 31, ti >> 31, 1, 1, 3, 3));
        const v4u k = (reinterpret_cast<v4u>(ti) ^ neg) - neg;
        const v4u one = reinterpret_cast<v4u>(v2u{} + kOne);
        return reinterpret_cast<D>(one + reinterpret_cast<v4u>(reinterpret_cast<v2u>(k) << 52));
    }
}

// exp of every lane, whatever its value; out-of-range lanes are fixed up by
// the callers.
template <class D>
inline D exp_lanes(D x) {
    using L = typename Lanes<D>::L;
    const L sign = L{} + static_cast<int64_t>(kSign), one = L{} + static_cast<int64_t>(kOne);
    // Adding +-2^52 rounds x / ln 2 to the integer k, left in the low bits of t.
    const D cs = reinterpret_cast<D>((reinterpret_cast<L>(x) & sign) | static_cast<int64_t>(kC0));
    const D t = x * d(kInvLn2) + cs;
    const D kd = t - cs;
    const D hi = x - kd * d(kLn2Hi);
    const D lo = kd * d(kLn2Lo);
    const D r = hi - lo;
    const D u = r * r;
    D p = d(kDp4) + u * d(kDp5);
    p = d(kDp3) + u * p;
    p = d(kDp2) + u * p;
    p = d(kDp1) + u * p;
    const D c = r - u * p;
    const D num = r * c;
    // num == 0 (x == 0, or r so small that r * c underflows): the result is
    // exactly 1; the OR keeps the division clear of 0 / 0.
    const L exact = num == D{};
    const D den = reinterpret_cast<D>(reinterpret_cast<L>(d(kTwo) - c) | (exact & one));
    const D q = num / den;
    const D m = d(kOne) + reinterpret_cast<D>(reinterpret_cast<L>((lo - q) - hi) ^ sign);
    const D res = m * scale_of(t);
    return reinterpret_cast<D>((exact & one) | (~exact & reinterpret_cast<L>(res)));
}

// What distinguishes the float-source kernel: the bit tests of the
// out-of-range fix-ups.
struct Src64 {
    using T = Orv64f;
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
    static uint32_t pair_word(T x) { return __builtin_bit_cast(uint32_t, x) & 0x7FC00000; }
    static constexpr uint32_t kPairInf = 0x7F800000, kPairQNaN = 0x7FC00000;
    static constexpr bool kNaNToFirstSlot = false;
    // The float's own bits against ln_max_T and ln_min_T; the NaN thresholds
    // stay those of a double's high word, so a float NaN counts as too large.
    static int32_t last_word(T x) { return static_cast<int32_t>(__builtin_bit_cast(uint32_t, x)); }
    static constexpr int32_t kLastMax = 0x44317218, kLastMin = 0x44311937;
};

// One step of the pair path: N / 2 pairs, screened by x < ln_min and
// !(x <= ln_max) and fixed up pair by pair, lane by lane.
template <class D, class Src>
inline void exp_step(const typename Src::T* pSrc, Orv64f* pDst) {
    using L = typename Lanes<D>::L;
    constexpr int kN = sizeof(D) / sizeof(double);
    D x;
    if constexpr (sizeof(typename Src::T) == sizeof(double)) {
        __builtin_memcpy(&x, pSrc, sizeof x);
    } else {
        typename Lanes<D>::F f;
        __builtin_memcpy(&f, pSrc, sizeof f);
        x = __builtin_convertvector(f, D);
    }
    const L below = x < d(kLnMin);
    const L above = ~(x <= d(kLnMax));  // NaN too
    D y = exp_lanes(x);
    if (movemask<D>(below | above)) {
        for (int l = 0; l < kN; l += 2) {
            const typename Src::T in[2] = {load_elem(pSrc + l), load_elem(pSrc + l + 1)};
            for (int j = 0; j < 2; ++j)
                if (below[l + j]) y[l + j] = Src::pair_word(in[j]) >= Src::kPairInf ? d(kQNaN) : 0.0;
            for (int j = 0; j < 2; ++j) {
                if (!above[l + j]) continue;
                if (Src::pair_word(in[j]) >= Src::kPairQNaN)
                    y[Src::kNaNToFirstSlot ? l : l + j] = d(kQNaN);
                else
                    y[l + j] = d(kInf);
            }
        }
    }
    __builtin_memcpy(pDst, &y, sizeof y);
}

template <class Src>
void exp_kernel(const typename Src::T* pSrc, Orv64f* pDst, int len) {
    int i = 0;
    if constexpr (kTier == Tier::e9)
        for (; i + 4 <= len; i += 4) exp_step<v4d, Src>(pSrc + i, pDst + i);
    for (; i + 2 <= len; i += 2) exp_step<v2d, Src>(pSrc + i, pDst + i);
    if (i < len) {
        const typename Src::T x = load_elem(pSrc + i);
        const int32_t h = Src::last_word(x);
        const int32_t a = h & 0x7FFFFFFF;
        double y;
        if (h >= Src::kLastMax)
            y = d(h >= static_cast<int32_t>(kQNaNHigh) ? kQNaN : kInf);
        else if (a >= Src::kLastMin)
            y = a >= static_cast<int32_t>(kQNaNHigh) ? d(kNegQNaN) : 0.0;
        else
            y = exp_lanes(v2d{static_cast<double>(x), 0.0})[0];
        store_elem(pDst + i, y);
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
