// Sum and mean of doubles. The order of the additions is part of the result:
// four vector accumulators hide the latency of the add, and their number,
// the lead-in and the fold order are fixed per tier, so that a sum is
// reproducible for a tier, an input and an alignment, and the mean is
// exactly that sum divided once by len.
#include "vector/reduce_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

// lead is the sum of the lead-in elements, placed in the low lane of acc0.
// Main loop: 4 registers a step, one per accumulator; fold
// (acc0 + acc1) + (acc2 + acc3). e9 then adds whole 256-bit registers to
// acc0 and folds low + high. Tail: pairs into acc0, then the last element
// into its low lane; result high half + low half.
template <class V, bool kAligned>
double sum_lanes(const double* p, int n, double lead) {
    typename V::R a[4] = {V::first(lead), V::zero(), V::zero(), V::zero()};
    accumulate4<V, kAligned>(a, p, n, V::add);
    auto a0 = V::add(V::add(a[0], a[1]), V::add(a[2], a[3]));
    if constexpr (V::kN > 2)
        for (; n >= V::kN; n -= V::kN, p += V::kN) a0 = V::add(a0, V::template load<kAligned>(p));
    __m128d r = V::fold_add(a0);
    for (; n >= 2; n -= 2, p += 2) r = _mm_add_pd(r, D2::load<kAligned>(p));
    if (n) r = add_lo(r, load_elem(p));
    return hi(r) + lo(r);
}

double sum_64f(const double* p, int n) {
    if constexpr (kTier == Tier::e9) {
        // A pointer that is not a multiple of 8 never reaches a 32-byte
        // boundary: scalar path.
        if (address(p) & 7) return scalar_sum4(n, [p](int i) { return load_elem(p + i); });
        // Lead-in up to the 32-byte boundary, then 16 elements a step.
        unsigned a = address(p) & 31;
        int lead = min_int(n, a ? static_cast<int>((32 - a) >> 3) : 0);
        double l = 0.0;
        for (int i = 0; i < lead; ++i) l += load_elem(p + i);
        return sum_lanes<D4, true>(p + lead, n - lead, l);
    } else {
        // An odd multiple of 8 puts element 0 in the low lane of acc0; the
        // loops then run by whether the pointer is a multiple of 16.
        double l = 0.0;
        if (address(p) & 8) {
            l = load_elem(p);
            ++p;
            --n;
        }
        if (address(p) & 15) return sum_lanes<D2, false>(p, n, l);
        return sum_lanes<D2, true>(p, n, l);
    }
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using orv::Tier;

ORV_TIER_API Orv64f ORV_T(ownorvsSum_64f)(const Orv64f* pSrc, int len) { return sum_64f(pSrc, len); }

ORV_TIER_API Orv64f ORV_T(ownorvsMean_64f)(const Orv64f* pSrc, int len) {
    return ORV_T(ownorvsSum_64f)(pSrc, len) / static_cast<double>(len);
}

ORV_TIER_API OrvStatus ORV_T(orvsSum_64f)(const Orv64f* pSrc, int len, Orv64f* pSum) {
    if (!pSrc || !pSum) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    store_elem(pSum, ORV_T(ownorvsSum_64f)(pSrc, len));
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsMean_64f)(const Orv64f* pSrc, int len, Orv64f* pMean) {
    if (!pSrc || !pMean) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    store_elem(pMean, ORV_T(ownorvsMean_64f)(pSrc, len));
    return orvStsNoErr;
}
