// The entry level of the 2-D filters, shared by all 28 entries: argument
// checks, the least steps, the scratch each entry takes in each tier, the
// window origin and the reversed coefficient pointer. The entries differ only
// in their element types, layout and route (filter_entry_*.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "filter/frame_generic.h"
#include "internal/orv_tier.h"

ORV_TIER_DECLARE(orvsMalloc_32f)
ORV_TIER_DECLARE(orvsFree)

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

enum class Layout { C1, C3, C4, AC4 };

// One entry: source and destination element types and the pixel layout.
template <class TS, class TD, Layout L>
struct Entry {
    using Src = TS;
    using Dst = TD;
    static constexpr Layout kLayout = L;
    static constexpr int kCh = L == Layout::C1 ? 1 : L == Layout::C3 ? 3 : 4;
    static constexpr int kUsed = L == Layout::AC4 ? 3 : kCh;  // channels filtered and written
};

// What a route receives: the window origin (the source pixel that meets the
// last stored coefficient), steps in bytes, the region, the last stored
// coefficient (walked downward), the kernel's size and the scratch block,
// null when none was asked for or the allocation failed.
template <class E>
struct Call {
    const typename E::Src* win;
    int srcStep;
    typename E::Dst* dst;
    int dstStep;
    int width, height;
    const Orv32f* coefLast;
    int kW, kH;
    Orv32f* scratch;
};

// The generic loop for the call.
template <class E>
void run_generic(const Call<E>& c) {
    generic_loop<typename E::Src, typename E::Dst, E::kCh, E::kUsed>(c.win, c.srcStep, c.dst, c.dstStep, c.width,
                                                                      c.height, c.coefLast, c.kW, c.kH);
}

// The checks and sizes are 32-bit arithmetic with wrap-around: computed in 64
// bits and cut to the low 32, which gives the same bits without signed
// overflow.
constexpr int32_t wrap32(int64_t v) { return int32_t(uint32_t(uint64_t(v))); }

template <class E>
constexpr int32_t min_src_step(int w, int kW) {
    return wrap32((int64_t(w) + kW - 1) * int64_t(E::kCh * sizeof(typename E::Src)));
}
template <class E>
constexpr int32_t min_dst_step(int w) {
    return wrap32(int64_t(w) * int64_t(E::kCh * sizeof(typename E::Dst)));
}

// Orv32f elements of scratch. K is four copies of every coefficient: the
// replicated kernels' copy (tier e9's C1 kernel holds eight). The integer
// entries add float rows of the region's width; 32s sums in double, needs no
// coefficient copy and takes scratch in tier e9 only.
template <class E>
constexpr int32_t scratch_len(int w, int kW, int kH) {
    using TS = typename E::Src;
    constexpr Layout L = E::kLayout;
    const int64_t W = w, taps = int64_t(kW) * kH, K = 4 * taps;
    if constexpr (std::is_same_v<TS, Orv32f>) {
        if constexpr (L == Layout::C1 && kTier == Tier::e9) return wrap32(8 * taps);
        else return wrap32(K);
    } else if constexpr (std::is_same_v<TS, Orv32s>) {
        if constexpr (kTier != Tier::e9) {
            return 0;
        } else {
            const int32_t row = wrap32(2 * W + 7) & ~7;
            if constexpr (L == Layout::C1) return row;
            else if constexpr (L == Layout::C3) return wrap32(3 * int64_t(row));
            else {
                const int32_t t = wrap32(8 * W + 28);
                return t > 31 ? t & ~31 : 0;
            }
        }
    } else {
        if constexpr (L == Layout::C1) return wrap32(K + 2 * W + 10) & ~3;
        else if constexpr (L == Layout::C3) return wrap32(K + 6 * W + 10) & ~3;
        else return wrap32(K + 8 * W);
    }
}

// The entry: checks in order (null pointers, sizes, steps, compared signed),
// then scratch, the route, and the release of the scratch. The anchor is not
// checked; it only moves the window. A failed allocation is not an error:
// the route then runs without scratch.
template <class E, class Route>
OrvStatus run_entry(const typename E::Src* pSrc, int srcStep, typename E::Dst* pDst, int dstStep, OrviSize roi,
                    const Orv32f* pKernel, OrviSize ks, OrviPoint anchor, Route route) {
    if (!pSrc || !pDst || !pKernel) return orvStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1 || ks.width < 1 || ks.height < 1) return orvStsSizeErr;
    if (srcStep < min_src_step<E>(roi.width, ks.width) || dstStep < min_dst_step<E>(roi.width))
        return orvStsStepErr;

    const int32_t len = scratch_len<E>(roi.width, ks.width, ks.height);
    Orv32f* scratch = len != 0 ? ORV_T(orvsMalloc_32f)(len) : nullptr;

    // Window origin: anchor.x + 1 - kW pixels along the row, anchor.y + 1 - kH
    // rows; the window's top left pixel meets the last stored coefficient.
    const ptrdiff_t off = (ptrdiff_t(anchor.y) + 1 - ks.height) * srcStep +
                          (ptrdiff_t(anchor.x) + 1 - ks.width) * ptrdiff_t(E::kCh * sizeof(typename E::Src));
    Call<E> call;
    call.win = reinterpret_cast<const typename E::Src*>(reinterpret_cast<const unsigned char*>(pSrc) + off);
    call.srcStep = srcStep;
    call.dst = pDst;
    call.dstStep = dstStep;
    call.width = roi.width;
    call.height = roi.height;
    call.coefLast = pKernel + (ptrdiff_t(ks.width) * ks.height - 1);
    call.kW = ks.width;
    call.kH = ks.height;
    call.scratch = scratch;
    route(call);

    if (scratch) ORV_T(orvsFree)(scratch);
    return orvStsNoErr;
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
