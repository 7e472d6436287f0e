// The entry level of the column filters, shared by all 16 entries: argument
// checks, the scratch of the integer forms, the window's top row and the
// reversed coefficient pointer, and the generic loop behind every route.
//
// A column filter is a 2-D filter with a kernel one column wide: the result
// in row y is the sum over i < k of pKernel[i] * src(row y + yAnchor - i). The
// window starts k - yAnchor - 1 rows above the region's first row and meets
// the last stored coefficient first. Neighbouring elements of a row never
// interact, so C3 and C4 are C1 rows three or four times as wide; AC4 alone
// has forms of its own (it must leave the fourth channel as it was).
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "filter/frame_filter.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace colf {

using filt::Layout;

// One column entry as the routes see it: T is the element type of source and
// destination, L is C1 or AC4 (C3 and C4 arrive as C1).
template <class T, Layout L>
struct ColEntry {
    static_assert(L == Layout::C1 || L == Layout::AC4);
    using Elem = T;
    static constexpr Layout kLayout = L;
    static constexpr int kCh = L == Layout::C1 ? 1 : 4;
    static constexpr int kUsed = L == Layout::AC4 ? 3 : 1;
};

// What a route receives: the window's top row (the row that meets the last
// stored coefficient), steps in bytes, the region in pixels of E's layout,
// the last stored coefficient (walked downward), the kernel size and, for
// the integer forms, the scratch block (null when the allocation failed).
template <class E>
struct ColCall {
    const typename E::Elem* win;
    int srcStep;
    typename E::Elem* dst;
    int dstStep;
    int width, height;
    const Orv32f* coefLast;
    int k;
    Orv32f* scratch;
    int32_t scratchLen;  // Orv32f elements of scratch, 0 without
};

// The generic loop: per row four elements at once in C1 (then single ones),
// one pixel at a time in AC4; each element one single-precision sum from the
// window's top row, integers by the scalar rule of the generic loops.
template <class E>
void column_generic(const ColCall<E>& c) {
    using T = typename E::Elem;
    filt::generic_loop<T, T, E::kCh, E::kUsed>(c.win, c.srcStep, c.dst, c.dstStep, c.width, c.height, c.coefLast, 1,
                                                c.k);
}

// Orv32f elements of scratch of the integer forms, w the width in pixels of
// E's layout: 8u takes three float rows and the coefficients four times (in
// pairs of rows); 16u and 16s the same in tiers m7, n8 and y8, and in tier e9
// one float row and the coefficients. 0 when none is taken or the size does
// not fit an int (the routes that need scratch then decline).
template <class E>
constexpr int32_t column_scratch_len(int w, int k) {
    using T = typename E::Elem;
    if constexpr (std::is_same_v<T, Orv32f>) {
        return 0;
    } else {
        const int64_t rows = int64_t(w) * (E::kLayout == Layout::AC4 ? 4 : 1);
        int64_t n;
        if constexpr (sizeof(T) == 2 && kTier == Tier::e9) n = (4 * int64_t(k) + rows + 3) & ~int64_t(3);
        else n = (3 * rows + 8 * ((int64_t(k) + 1) / 2) + 14) & ~int64_t(3);
        return n <= INT_MAX ? int32_t(n) : 0;
    }
}

// The C1 and AC4 entry: checks in order (null pointers, sizes, steps against
// the region's row), scratch for the integer forms, the route, the release.
template <class E, class Route>
OrvStatus run_column(const typename E::Elem* pSrc, int srcStep, typename E::Elem* pDst, int dstStep, OrviSize roi,
                     const Orv32f* pKernel, int k, int yAnchor, Route route) {
    using T = typename E::Elem;
    if (!pSrc || !pDst || !pKernel) return orvStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1 || k < 1) return orvStsSizeErr;
    const int64_t row = int64_t(roi.width) * E::kCh * int64_t(sizeof(T));
    if (srcStep < row || dstStep < row) return orvStsStepErr;

    const int32_t len = column_scratch_len<E>(roi.width, k);
    Orv32f* scratch = len > 0 ? ORV_T(orvsMalloc_32f)(len) : nullptr;

    ColCall<E> c;
    c.win = reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(pSrc) -
                                       (ptrdiff_t(k) - yAnchor - 1) * ptrdiff_t(srcStep));
    c.srcStep = srcStep;
    c.dst = pDst;
    c.dstStep = dstStep;
    c.width = roi.width;
    c.height = roi.height;
    c.coefLast = pKernel + (k - 1);
    c.k = k;
    c.scratch = scratch;
    c.scratchLen = scratch ? len : 0;
    route(c);

    if (scratch) ORV_T(orvsFree)(scratch);
    return orvStsNoErr;
}

// C3 and C4: the width is checked first, before any pointer, then multiplied
// by the channel count for the C1 entry of the same tier. A product beyond
// an int is a size error.
template <int kCh, class T, class C1Fn>
OrvStatus forward_to_c1(C1Fn* c1, const T* pSrc, int srcStep, T* pDst, int dstStep, OrviSize roi,
                        const Orv32f* pKernel, int k, int yAnchor) {
    if (roi.width < 1 || int64_t(roi.width) * kCh > INT_MAX) return orvStsSizeErr;
    roi.width *= kCh;
    return c1(pSrc, srcStep, pDst, dstStep, roi, pKernel, k, yAnchor);
}

}  // namespace colf
}  // namespace
}  // namespace orv::ORV_TIER_NS
