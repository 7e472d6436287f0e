// Maximum, minimum and their indices. The packed maximum returns its second
// operand when either is a NaN, and the new element is always the second
// operand here, so a NaN survives or is dropped according to its position;
// no path tests for NaN. The index searches give the lowest index among
// equal maxima on every path.
#include "vector/reduce_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr bool kWide = kTier == Tier::e9;

// Maximum: all accumulators seeded with element 0; four registers a step,
// folded max(max(a0, a1), max(a2, a3)); e9 then takes whole 256-bit
// registers and folds low and high; pairs, the last element in the low
// lane, then the maximum of the halves.
template <class V, bool kAligned>
double max_lanes(const double* p, int n, double seed) {
    typename V::R a[4] = {V::set1(seed), V::set1(seed), V::set1(seed), V::set1(seed)};
    accumulate4<V, kAligned>(a, p, n, V::max);
    auto a0 = V::max(V::max(a[0], a[1]), V::max(a[2], a[3]));
    if constexpr (V::kN > 2)
        for (; n >= V::kN; n -= V::kN, p += V::kN) a0 = V::max(a0, V::template load<kAligned>(p));
    __m128d r = V::fold_max(a0);
    for (; n >= 2; n -= 2, p += 2) r = _mm_max_pd(r, D2::load<kAligned>(p));
    if (n) r = max_lo(r, load_elem(p));
    return max_halves(r);
}

double max_64f(const double* p, int n) {
    double seed = load_elem(p);
    // e9 loads unaligned from element 0.
    if constexpr (kWide) return max_lanes<D4, false>(p, n, seed);
    // Element 0 is the seed; an odd multiple of 8 steps past it.
    if (address(p) & 8) {
        ++p;
        --n;
    }
    if (address(p) & 15) return max_lanes<D2, false>(p, n, seed);
    return max_lanes<D2, true>(p, n, seed);
}

// Minimum and maximum together, one accumulator each seeded with element 0,
// from element 0 on with no lead-in: two registers a step, each through a
// maximum and a minimum; e9 folds its 256-bit registers to 128 bits and goes
// on with pairs; then single elements in the low lane; then the halves.
template <class V, bool kAligned>
void minmax_lanes(const double* p, int n, double* pMin, double* pMax) {
    using R = typename V::R;
    R mx = V::set1(load_elem(p)), mn = mx;
    for (; n >= 2 * V::kN; n -= 2 * V::kN, p += 2 * V::kN) {
        R v = V::template load<kAligned>(p), w = V::template load<kAligned>(p + V::kN);
        mx = V::max(mx, v);
        mn = V::min(mn, v);
        mx = V::max(mx, w);
        mn = V::min(mn, w);
    }
    __m128d hx = V::fold_max(mx), hn = V::fold_min(mn);
    if constexpr (V::kN > 2)
        for (; n >= 4; n -= 4, p += 4) {
            __m128d v = D2::load<kAligned>(p), w = D2::load<kAligned>(p + 2);
            hx = _mm_max_pd(hx, v);
            hn = _mm_min_pd(hn, v);
            hx = _mm_max_pd(hx, w);
            hn = _mm_min_pd(hn, w);
        }
    for (; n > 0; --n, ++p) {
        double x = load_elem(p);
        hx = max_lo(hx, x);
        hn = min_lo(hn, x);
    }
    store_elem(pMax, max_halves(hx));
    store_elem(pMin, min_halves(hn));
}

// First index of the maximum, as a plain loop would find it: a later element
// wins only if greater, so equal maxima keep the lowest index and a NaN wins
// only at index 0, where it stays. start/best/index carry a scan begun by
// the lane version.
void maxindx_scalar(const double* p, int start, int n, double& best, int& index) {
    for (int i = start; i < n; ++i) {
        double x = load_elem(p + i);
        if (x > best) {
            best = x;
            index = i;
        }
    }
}

// The same result with four registers of lanes, each lane keeping its
// greatest element and that element's index (as a double, exact below
// 2^53); all lanes start at element 0. The lanes are then merged in order,
// a lane winning if greater or equal with a lower index, and the rest of the
// array is scanned one element at a time.
template <class V>
void maxindx_lanes(const double* p, int n, double* pMax, int* pIndx) {
    using R = typename V::R;
    constexpr int kStep = 4 * V::kN;
    double seed = load_elem(p);
    R best[4], index[4], at[4];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        best[k] = V::set1(seed);
        index[k] = V::zero();
        alignas(32) double first[V::kN];
        for (int j = 0; j < V::kN; ++j) first[j] = k * V::kN + j;
        at[k] = V::template load<true>(first);
    }
    const R step = V::set1(kStep);
    int i = 0;
    for (; n - i >= kStep; i += kStep) {
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) {
            R x = V::template load<false>(p + i + k * V::kN);
            R gt = V::gt(x, best[k]);
            best[k] = V::select(gt, x, best[k]);
            index[k] = V::select(gt, at[k], index[k]);
            at[k] = V::add(at[k], step);
        }
    }
    double bestValue = seed;
    int bestIndex = 0;
    for (int k = 0; k < 4; ++k) {
        alignas(32) double v[V::kN], ix[V::kN];
        V::template store<false>(v, best[k]);
        V::template store<false>(ix, index[k]);
        for (int j = 0; j < V::kN; ++j) {
            int lane = static_cast<int>(ix[j]);
            if (v[j] > bestValue || (v[j] == bestValue && lane < bestIndex)) {
                bestValue = v[j];
                bestIndex = lane;
            }
        }
    }
    maxindx_scalar(p, i, n, bestValue, bestIndex);
    store_elem(pMax, bestValue);
    *pIndx = bestIndex;
}

// Kernel pass 2: the first element whose 64-bit pattern equals m, compared
// in 32-bit halves two elements a step. m came from the array, so it is
// there; the last element of an odd length is taken without a comparison
// rather than read as part of a pair past the end.
int find_bits(const double* p, int n, double m) {
    const __m128i want = _mm_castpd_si128(_mm_set1_pd(m));
    int i = 0;
    for (; n - i >= 2; i += 2) {
        __m128i eq = _mm_cmpeq_epi32(_mm_castpd_si128(_mm_loadu_pd(p + i)), want);
        eq = _mm_and_si128(eq, _mm_shuffle_epi32(eq, _MM_SHUFFLE(2, 3, 0, 1)));
        int mask = _mm_movemask_pd(_mm_castsi128_pd(eq));
        if (mask) return i + ((mask & 1) ? 0 : 1);
    }
    return i;
}

// Kernel pass 1: the maximum by packed operations, seeded with element 0.
// m7 body: an odd multiple of 8 takes element 0 by a scalar maximum, then
// two accumulators of two doubles, 4 elements a step, then single elements.
// e9 body: scalar maxima up to the 32-byte boundary, then two accumulators
// of four doubles, 8 elements a step. Folded max(a0, a1), then the halves.
template <class V>
void maxindx_kernel(const double* p, int n, double* pMax, int* pIndx) {
    using R = typename V::R;
    constexpr int kAlign = 8 * V::kN;
    double seed = load_elem(p);
    R a0 = V::set1(seed), a1 = a0;
    __m128d s = _mm_set1_pd(seed);
    int i = 0;
    for (; i < n && (address(p + i) & (kAlign - 1)); ++i) s = max_lo(s, load_elem(p + i));
    a0 = V::max(a0, V::set1(_mm_cvtsd_f64(s)));
    for (; n - i >= 2 * V::kN; i += 2 * V::kN) {
        a0 = V::max(a0, V::template load<true>(p + i));
        a1 = V::max(a1, V::template load<true>(p + i + V::kN));
    }
    // The single elements go to the low lane of acc0 before the fold; e9
    // folds first and takes them in the low lane of the result.
    __m128d r;
    if constexpr (V::kN == 2) {
        for (; i < n; ++i) a0 = max_lo(a0, load_elem(p + i));
        r = V::max(a0, a1);
    } else {
        r = V::fold_max(V::max(a0, a1));
        for (; i < n; ++i) r = max_lo(r, load_elem(p + i));
    }
    double m = max_halves(r);
    store_elem(pMax, m);
    *pIndx = find_bits(p, n, m);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using orv::Tier;

// The two-pass kernel is one body; e9 exports it under its own name.
#if defined(ORV_TIER_E9)
#define ORV_MAXINDX_KERNEL ownsMaxIndx_64f_AVX
#else
#define ORV_MAXINDX_KERNEL ownsMaxIndx_64f_M7
#endif

ORV_TIER_API void ORV_T(ORV_MAXINDX_KERNEL)(const Orv64f* pSrc, int len, Orv64f* pMax, int* pIndx) {
    if constexpr (kWide) maxindx_kernel<D4>(pSrc, len, pMax, pIndx);
    else maxindx_kernel<D2>(pSrc, len, pMax, pIndx);
}

ORV_TIER_API Orv64f ORV_T(ownorvsMax_64f)(const Orv64f* pSrc, int len) { return max_64f(pSrc, len); }

ORV_TIER_API void ORV_T(MiniMax_64f_M7)(const Orv64f* pSrc, int len, Orv64f* pMin, Orv64f* pMax) {
    if constexpr (kWide) minmax_lanes<D4, false>(pSrc, len, pMin, pMax);
    else if (address(pSrc) & 15) minmax_lanes<D2, false>(pSrc, len, pMin, pMax);
    else minmax_lanes<D2, true>(pSrc, len, pMin, pMax);
}

ORV_TIER_API OrvStatus ORV_T(orvsMax_64f)(const Orv64f* pSrc, int len, Orv64f* pMax) {
    if (!pSrc || !pMax) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    store_elem(pMax, ORV_T(ownorvsMax_64f)(pSrc, len));
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsMinMax_64f)(const Orv64f* pSrc, int len, Orv64f* pMin, Orv64f* pMax) {
    if (!pSrc || !pMin || !pMax) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    ORV_T(MiniMax_64f_M7)(pSrc, len, pMin, pMax);
    return orvStsNoErr;
}

// A null pIndx is no error: the call is orvsMax_64f, with its status.
ORV_TIER_API OrvStatus ORV_T(orvsMaxIndx_64f)(const Orv64f* pSrc, int len, Orv64f* pMax, int* pIndx) {
    if (!pSrc || !pMax) return orvStsNullPtrErr;
    if (!pIndx) return ORV_T(orvsMax_64f)(pSrc, len, pMax);
    if (len < 1) return orvStsSizeErr;
    // A multiple of 8 with at least 32 elements: the two-pass kernel.
    if ((address(pSrc) & 7) == 0 && len >= 32) {
        ORV_T(ORV_MAXINDX_KERNEL)(pSrc, len, pMax, pIndx);
        return orvStsNoErr;
    }
    // Otherwise in place: n8 by a plain loop, the others by lanes, 8 elements
    // a step (16 on e9), with the same result.
    if constexpr (kTier == Tier::n8) {
        double best = load_elem(pSrc);
        int index = 0;
        maxindx_scalar(pSrc, 1, len, best, index);
        store_elem(pMax, best);
        *pIndx = index;
    } else if constexpr (kWide) {
        maxindx_lanes<D4>(pSrc, len, pMax, pIndx);
    } else {
        maxindx_lanes<D2>(pSrc, len, pMax, pIndx);
    }
    return orvStsNoErr;
}

// Extremes from MiniMax_64f_M7, stored at once; then the first element
// comparing equal to each, by double comparison (+0.0 equals -0.0; a NaN
// extreme is never found and gives index 0).
ORV_TIER_API OrvStatus ORV_T(orvsMinMaxIndx_64f)(const Orv64f* pSrc, int len, Orv64f* pMin, int* pMinIndx,
                                                 Orv64f* pMax, int* pMaxIndx) {
    if (!pSrc || !pMin || !pMax || !pMinIndx || !pMaxIndx) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    double mn, mx;
    ORV_T(MiniMax_64f_M7)(pSrc, len, &mn, &mx);
    store_elem(pMin, mn);
    store_elem(pMax, mx);
    int minIndex = 0, maxIndex = 0;
    for (int i = 0; i < len; ++i)
        if (load_elem(pSrc + i) == mn) {
            minIndex = i;
            break;
        }
    for (int i = 0; i < len; ++i)
        if (load_elem(pSrc + i) == mx) {
            maxIndex = i;
            break;
        }
    *pMinIndx = minIndex;
    *pMaxIndx = maxIndex;
    return orvStsNoErr;
}
