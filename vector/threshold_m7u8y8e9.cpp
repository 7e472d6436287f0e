// Band clamp of doubles. Selection is by comparison masks, with no NaN
// path: keep = levelLT <= x, high = levelGT < x, result valueGT if high,
// else x if keep, else valueLT. A NaN fails both comparisons and becomes
// valueLT; an element equal to a level is kept.
#include "vector/reduce_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

struct Band {
    __m128d levelLT, valueLT, levelGT, valueGT;

    __m128d operator()(__m128d x) const {
        __m128d keep = _mm_cmple_pd(levelLT, x);
        __m128d high = _mm_cmplt_pd(levelGT, x);
        return D2::select(high, valueGT, D2::select(keep, x, valueLT));
    }
    void one(const double* s, double* d) const { store_elem(d, lo((*this)(_mm_set_sd(load_elem(s))))); }
};

// Pairs from a 16-aligned destination unless the destination is not a
// multiple of 8; each pair is read before it is written, so pSrc == pDst
// works.
template <bool kDstAligned, bool kSrcAligned>
void band_pairs(const Band& band, const double* s, double* d, int pairs) {
    for (; pairs > 0; --pairs, s += 2, d += 2) {
        __m128d r = band(D2::load<kSrcAligned>(s));
        if constexpr (kDstAligned) _mm_store_pd(d, r);
        else _mm_storeu_pd(d, r);
    }
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using orv::Tier;

// An odd multiple of 8 takes one element first so that the destination is
// 16-aligned; then pairs by the three alignment cases; then the last odd
// element.
ORV_TIER_API void ORV_T(ownorvsThreshGTValLTVal_64f)(const Orv64f* pSrc, Orv64f* pDst, int len,
                                                     const Orv64f* pLevelLT, const Orv64f* pValueLT,
                                                     const Orv64f* pLevelGT, const Orv64f* pValueGT) {
    const Band band{_mm_set1_pd(*pLevelLT), _mm_set1_pd(*pValueLT), _mm_set1_pd(*pLevelGT), _mm_set1_pd(*pValueGT)};
    if ((address(pDst) & 15) == 8) {
        band.one(pSrc, pDst);
        if (--len == 0) return;
        ++pSrc;
        ++pDst;
    }
    int pairs = len >> 1;
    if (address(pDst) & 15) band_pairs<false, false>(band, pSrc, pDst, pairs);
    else if (address(pSrc) & 15) band_pairs<true, false>(band, pSrc, pDst, pairs);
    else band_pairs<true, true>(band, pSrc, pDst, pairs);
    if (len & 1) band.one(pSrc + len - 1, pDst + len - 1);
}

ORV_TIER_API OrvStatus ORV_T(orvsThreshold_LTValGTVal_64f)(const Orv64f* pSrc, Orv64f* pDst, int len,
                                                           Orv64f levelLT, Orv64f valueLT, Orv64f levelGT,
                                                           Orv64f valueGT) {
    if (!pSrc || !pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    // Equal levels are allowed; a NaN level passes this test.
    if (levelLT > levelGT) return orvStsThresholdErr;
    ORV_T(ownorvsThreshGTValLTVal_64f)(pSrc, pDst, len, &levelLT, &valueLT, &levelGT, &valueGT);
    return orvStsNoErr;
}
