// The single-precision 2-D filter entries, orviFilter_32f_<C>R, and their
// routes per tier. Three routes are tried in order:
//   1. the column-group frame (e9, and y8/n8 except AC4), by width alone;
//   2. the replicated-coefficient kernel, which needs scratch and kW >= 3 and
//      may decline (unusable alignment; e9's C1 kernel takes kW 3 and 5 only);
//   3. the generic loop, which takes everything.
// The routes sum in different orders, so their results differ in rounding.
#include "filter/frame_filter.h"
#include "filter/kernels.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

using GroupFrame = void (*)(const Orv32f*, int, OrviSize, const Orv32f*, int, OrviSize, Orv32f*, int);
using Replicated = int (*)(const Orv32f*, int, Orv32f*, int, int, int, const Orv32f*, int, int, Orv32f*);

// The flags say which routes exist, as constants: comparing a function's
// address with null is not a constant expression where the address may be
// interposed (as in sanitizer builds).
struct Kernels32f {
    GroupFrame group;       // first choice, null where the tier has none
    Replicated replicated;  // second choice, null where it is never reached
    bool hasGroup, hasReplicated;
};

// This tier's kernels by layout C1, C3, C4, AC4. In e9 the column-group frame
// takes every C4 and AC4 call, so no replicated kernel stands behind it.
#if defined(ORV_TIER_E9)
constexpr Kernels32f kKernels[4] = {
    {ORV_T(ownFilter_32f_C1R_g9e9), ORV_T(owniFilter_32f_C1R_gsh), true, true},
    {ORV_T(ownFilter_32f_C3R_g9e9), ORV_T(owniFilter_32f_C3R), true, true},
    {ORV_T(ownFilter_32f_C4R_g9e9), nullptr, true, false},
    {ORV_T(ownFilter_32f_AC4R_g9e9), nullptr, true, false},
};
#elif defined(ORV_TIER_Y8) || defined(ORV_TIER_N8)
constexpr Kernels32f kKernels[4] = {
    {ORV_T(ownFilter_32f_C1R_v8u8), ORV_T(owniFilter_32f_C1R), true, true},
    {ORV_T(ownFilter_32f_C3R_v8u8), ORV_T(owniFilter_32f_C3R), true, true},
    {ORV_T(ownFilter_32f_C4R_v8u8), ORV_T(owniFilter_32f_C4R), true, true},
    {nullptr, ORV_T(owniFilter_32f_AC4R), false, true},
};
#else
constexpr Kernels32f kKernels[4] = {
    {nullptr, ORV_T(owniFilter_32f_C1R), false, true},
    {nullptr, ORV_T(owniFilter_32f_C3R), false, true},
    {nullptr, ORV_T(owniFilter_32f_C4R), false, true},
    {nullptr, ORV_T(owniFilter_32f_AC4R), false, true},
};
#endif

// Whether the column-group frame takes the call. e9 keeps up to 8 columns in
// 256-bit registers from width 8 on (C1 leaves kW <= 3 to the replicated
// kernel); y8/n8 need the region wider than the kernel (C1: by more than 8).
template <Layout L>
bool group_takes(int64_t w, int64_t kW) {
    if constexpr (kTier == Tier::e9) {
        if constexpr (L == Layout::C1) return w >= 8 && kW > 3;
        else if constexpr (L == Layout::C3) return w >= 8;
        else return true;
    } else {
        if constexpr (L == Layout::C1) return w > kW + 8;
        else return w > kW;
    }
}

// Least width of the replicated-coefficient route: two vectors of pixels in C1,
// two pixels' worth of vectors in C3, one pixel a vector in C4 and AC4.
template <Layout L>
constexpr int kReplicatedMinWidth = L == Layout::C1 ? 16 : L == Layout::C3 ? 6 : 4;

template <Layout L>
void route_32f(const Call<Entry<Orv32f, Orv32f, L>>& c) {
    constexpr Kernels32f k = kKernels[int(L)];
    const OrviSize roi{c.width, c.height}, ks{c.kW, c.kH};
    if constexpr (k.hasGroup) {
        if (group_takes<L>(c.width, c.kW)) {
            // The y8/n8 frames load four coefficients ending at the current one.
            const Orv32f* coef = kTier == Tier::e9 ? c.coefLast : c.coefLast - 3;
            k.group(c.win, c.srcStep, roi, coef, c.kW, ks, c.dst, c.dstStep);
            return;
        }
    }
    if constexpr (k.hasReplicated) {
        if (c.kW >= 3 && c.width >= kReplicatedMinWidth<L> && c.scratch &&
            k.replicated(c.win, c.srcStep, c.dst, c.dstStep, c.width, c.height, c.coefLast, c.kW, c.kH, c.scratch))
            return;
    }
    run_generic(c);
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS::filt;

#define ORV_FILTER_32F(C)                                                                                    \
    ORV_TIER_API OrvStatus ORV_T(orviFilter_32f_##C##R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst,       \
                                                         int dstStep, OrviSize dstRoiSize, const Orv32f* pKernel, \
                                                         OrviSize kernelSize, OrviPoint anchor) {            \
        using E = Entry<Orv32f, Orv32f, Layout::C>;                                                          \
        return run_entry<E>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, anchor,           \
                            route_32f<Layout::C>);                                                           \
    }
ORV_FILTER_32F(C1)
ORV_FILTER_32F(C3)
ORV_FILTER_32F(C4)
ORV_FILTER_32F(AC4)
