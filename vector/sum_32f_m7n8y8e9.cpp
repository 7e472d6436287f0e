// Sum of floats by two paths that the caller chooses with the hint. Fast
// sums in single precision within blocks of 32768 elements, so that the
// rounding error of float is bounded per block, and joins the blocks in
// double. Accurate widens every element and sums in double. Both keep a
// fixed order per tier.
#include "vector/reduce_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr int kBlock = 32768;

// One block in single precision: four accumulators, one register each a
// step, folded (a0 + a2) + (a1 + a3); e9 then adds whole 8-float registers
// and folds low + high. Then groups of 4, a pair and one element into the
// first accumulator; the upper two lanes are added to the lower two, and the
// two floats come back widened to double.
template <class V, bool kAligned>
__m128d sum_block(const float* p, int n) {
    typename V::R a[4] = {V::zero(), V::zero(), V::zero(), V::zero()};
    accumulate4<V, kAligned>(a, p, n, V::add);
    auto a0 = V::add(V::add(a[0], a[2]), V::add(a[1], a[3]));
    if constexpr (V::kN > 4)
        for (; n >= V::kN; n -= V::kN, p += V::kN) a0 = V::add(a0, V::template load<kAligned>(p));
    __m128 r = V::fold_add(a0);
    for (; n >= 4; n -= 4, p += 4) r = _mm_add_ps(r, F4::load<kAligned>(p));
    if (n >= 2) {
        r = _mm_add_ps(r, _mm_castpd_ps(_mm_loadl_pd(_mm_setzero_pd(), reinterpret_cast<const double*>(p))));
        n -= 2;
        p += 2;
    }
    if (n) r = _mm_add_ss(r, _mm_set_ss(load_elem(p)));
    return _mm_cvtps_pd(_mm_add_ps(r, _mm_movehl_ps(r, r)));
}

// Blocks of kBlock after the lead-in, joined in a pair of doubles whose low
// lane already holds the lead-in; the last block may be partial.
template <class V, bool kAligned>
double sum_blocks(const float* p, int n, __m128d pair) {
    do {
        int b = min_int(n, kBlock);
        pair = _mm_add_pd(pair, sum_block<V, kAligned>(p, b));
        p += b;
        n -= b;
    } while (n > 0);
    return lo(pair) + hi(pair);
}

double sum_fast(const float* p, int n) {
    __m128d pair = _mm_setzero_pd();
    if constexpr (kTier == Tier::e9) {
        // A pointer that is not a multiple of 4 cannot be aligned: scalar path.
        if (address(p) & 3) return scalar_sum4(n, [p](int i) { return static_cast<double>(load_elem(p + i)); });
        unsigned a = address(p) & 31;
        int lead = min_int(n, a ? static_cast<int>((32 - a) >> 2) : 0);
        for (int i = 0; i < lead; ++i) pair = add_lo(pair, load_elem(p + i));
        if (lead == n) return lo(pair) + hi(pair);
        return sum_blocks<F8, true>(p + lead, n - lead, pair);
    } else {
        // The block routine is chosen before the lead-in: aligned loads if the
        // pointer is a multiple of 4 (then 16-aligned after the lead-in).
        // The lead-in steps while address bits 2 and 3 are not both clear,
        // which a pointer that is not a multiple of 4 leaves early.
        bool aligned = (address(p) & 3) == 0;
        for (; address(p) & 12; ++p) {
            pair = add_lo(pair, load_elem(p));
            if (--n == 0) return lo(pair) + hi(pair);
        }
        if (aligned) return sum_blocks<F4, true>(p, n, pair);
        return sum_blocks<F4, false>(p, n, pair);
    }
}

// Four pair accumulators, 8 elements a step; acc0 += acc2, acc1 += acc3;
// a group of 4 as two pairs to acc0 and acc1, a pair to acc0, one element to
// its low lane; total acc0 + acc1, then low + high.
[[maybe_unused]] double sum_accur_pairs(const float* p, int n) {
    __m128d a0 = _mm_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
    if (address(p) & 4) {
        a0 = _mm_set_sd(load_elem(p));
        ++p;
        --n;
    }
    for (; n >= 8; n -= 8, p += 8) {
        __m128 v = _mm_loadu_ps(p), w = _mm_loadu_ps(p + 4);
        a0 = _mm_add_pd(a0, _mm_cvtps_pd(v));
        a1 = _mm_add_pd(a1, _mm_cvtps_pd(_mm_movehl_ps(v, v)));
        a2 = _mm_add_pd(a2, _mm_cvtps_pd(w));
        a3 = _mm_add_pd(a3, _mm_cvtps_pd(_mm_movehl_ps(w, w)));
    }
    a0 = _mm_add_pd(a0, a2);
    a1 = _mm_add_pd(a1, a3);
    if (n >= 4) {
        a0 = _mm_add_pd(a0, widen2(p));
        a1 = _mm_add_pd(a1, widen2(p + 2));
        n -= 4;
        p += 4;
    }
    if (n >= 2) {
        a0 = _mm_add_pd(a0, widen2(p));
        n -= 2;
        p += 2;
    }
    if (n) a0 = add_lo(a0, load_elem(p));
    __m128d t = _mm_add_pd(a0, a1);
    return lo(t) + hi(t);
}

// e9: lead-in to the 32-byte boundary into the low lane of acc0, then 8
// elements a step widened to two registers of four doubles, two steps a loop
// over four accumulators; acc0 += acc2, acc1 += acc3, remaining steps to
// acc0 and acc1, total acc0 + acc1, a group of 4 to it, folded low + high,
// then a pair and one element as on the other tiers.
[[maybe_unused]] double sum_accur_wide(const float* p, int n) {
    if (address(p) & 3) return scalar_sum4(n, [p](int i) { return static_cast<double>(load_elem(p + i)); });
    unsigned a = address(p) & 31;
    int lead = min_int(n, a ? static_cast<int>((32 - a) >> 2) : 0);
    double l = 0.0;
    for (int i = 0; i < lead; ++i) l += load_elem(p + i);
    p += lead;
    n -= lead;
    __m256d a0 = D4::first(l), a1 = D4::zero(), a2 = a1, a3 = a1;
    for (; n >= 16; n -= 16, p += 16) {
        __m256 v = _mm256_load_ps(p), w = _mm256_load_ps(p + 8);
        a0 = _mm256_add_pd(a0, _mm256_cvtps_pd(_mm256_castps256_ps128(v)));
        a1 = _mm256_add_pd(a1, _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)));
        a2 = _mm256_add_pd(a2, _mm256_cvtps_pd(_mm256_castps256_ps128(w)));
        a3 = _mm256_add_pd(a3, _mm256_cvtps_pd(_mm256_extractf128_ps(w, 1)));
    }
    a0 = _mm256_add_pd(a0, a2);
    a1 = _mm256_add_pd(a1, a3);
    if (n >= 8) {
        __m256 v = _mm256_load_ps(p);
        a0 = _mm256_add_pd(a0, _mm256_cvtps_pd(_mm256_castps256_ps128(v)));
        a1 = _mm256_add_pd(a1, _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)));
        n -= 8;
        p += 8;
    }
    __m256d t = _mm256_add_pd(a0, a1);
    if (n >= 4) {
        t = _mm256_add_pd(t, _mm256_cvtps_pd(_mm_load_ps(p)));
        n -= 4;
        p += 4;
    }
    __m128d r = D4::fold_add(t);
    if (n >= 2) {
        r = _mm_add_pd(r, widen2(p));
        n -= 2;
        p += 2;
    }
    if (n) r = add_lo(r, load_elem(p));
    return lo(r) + hi(r);
}

double sum_accur(const float* p, int n) {
    if constexpr (kTier == Tier::e9) return sum_accur_wide(p, n);
    else return sum_accur_pairs(p, n);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using orv::Tier;

ORV_TIER_API Orv64f ORV_T(ownorvsSum_32f_Fast)(const Orv32f* pSrc, int len) { return sum_fast(pSrc, len); }
ORV_TIER_API Orv64f ORV_T(ownorvsSum_32f_Accur)(const Orv32f* pSrc, int len) { return sum_accur(pSrc, len); }

// Only hint 1 selects the fast path; every other value, valid or not, the
// accurate one.
ORV_TIER_API Orv32f ORV_T(ownorvsSum_32f)(const Orv32f* pSrc, int len, OrvHintAlgorithm hint) {
    double s = hint == orvAlgHintFast ? ORV_T(ownorvsSum_32f_Fast)(pSrc, len) : ORV_T(ownorvsSum_32f_Accur)(pSrc, len);
    return static_cast<Orv32f>(s);
}

ORV_TIER_API OrvStatus ORV_T(orvsSum_32f)(const Orv32f* pSrc, int len, Orv32f* pSum, OrvHintAlgorithm hint) {
    if (!pSrc || !pSum) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    Orv32f s = ORV_T(ownorvsSum_32f)(pSrc, len, hint);
    std::memcpy(pSum, &s, sizeof s);
    return orvStsNoErr;
}
