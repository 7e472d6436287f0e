// The integer 2-D filter entries, orviFilter32f_<T>_<C>R: integer pixels,
// single-precision coefficients, results rounded and saturated to the
// destination type. Routes, tried in order; the last always applies:
//   e9:        the column-group frame by width; then, for narrow images, the
//              pixel-block design (8u, 16s, 16u C1) or the row-pair design
//              (8u, 16s, 16u, 8u16s); then the generic loop.
//   y8 n8 m7:  the row-pair design (8u, 16s, 16u, 8u16s); then the generic loop.
// Each route rounds by its own rule (see frame_generic.h for the generic
// loop's), so the same pixel may differ by one between routes.
#include <cmath>

#include "filter/frame_filter.h"
#include "filter/frame_int_routes.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

// The sources and destinations that have the row-pair design (and in e9 the
// narrow C1 designs): 8u, 16s, 16u onto themselves, and 8u onto 16s. 8s,
// 8s16s and 32s have the generic loop beside tier e9's column groups.
template <class E>
constexpr bool kRowPairKind = std::is_same_v<typename E::Src, typename E::Dst>
                                  ? (std::is_same_v<typename E::Src, Orv8u> || std::is_same_v<typename E::Src, Orv16s> ||
                                     std::is_same_v<typename E::Src, Orv16u>)
                                  : std::is_same_v<typename E::Src, Orv8u>;

// Whether tier e9's column-group frame takes the call: from width 8 on, C4 of
// 8-bit sources only above 8; C4 and AC4 of 16-bit and 32-bit sources always.
template <class E>
bool int_group_takes(int w) {
    if constexpr (E::kLayout == Layout::C1 || E::kLayout == Layout::C3) return w >= 8;
    else if constexpr (sizeof(typename E::Src) == 1) return w > 8;
    else return true;
}

// The row-pair design needs three kernel columns, a least width per layout
// and its scratch.
template <class E>
bool row_pair_fits(const Call<E>& c) {
    constexpr int kMinWidth = E::kLayout == Layout::C1 ? 16 : E::kLayout == Layout::C3 ? 6 : 4;
    return c.kW >= 3 && c.width >= kMinWidth && c.scratch != nullptr;
}

// Single-precision sum of |k| over the whole kernel. 16-bit C1 sums in y8, n8
// and m7 take the row-pair route only up to 32767.
template <class E>
float abs_coef_sum(const Call<E>& c) {
    float s = 0.0f;
    const Orv32f* k = c.coefLast;
    for (int64_t i = int64_t(c.kW) * c.kH; i > 0; --i) s += std::fabs(*k--);
    return s;
}

template <class E>
void route_int(const Call<E>& c) {
    if constexpr (kTier == Tier::e9) {
        if (int_group_takes<E>(c.width)) {
            if (int_column_group(c)) return;
        } else if constexpr (kRowPairKind<E>) {
            if constexpr (E::kLayout == Layout::C1 && sizeof(typename E::Dst) == sizeof(typename E::Src)) {
                if (int_pixel_block(c)) return;
            } else {
                if (row_pair_fits(c) && int_row_pair(c)) return;
            }
        }
    } else if constexpr (kRowPairKind<E>) {
        bool fits = row_pair_fits(c);
        if constexpr (E::kLayout == Layout::C1 && sizeof(typename E::Src) == 2)
            fits = fits && !(abs_coef_sum(c) > 32767.0f);
        if (fits && int_row_pair(c)) return;
    }
    run_generic(c);
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS::filt;

#define ORV_FILTER_INT(T, TS, TD, C)                                                                              \
    ORV_TIER_API OrvStatus ORV_T(orviFilter32f_##T##_##C##R)(const TS* pSrc, int srcStep, TD* pDst, int dstStep, \
                                                              OrviSize dstRoiSize, const Orv32f* pKernel,       \
                                                              OrviSize kernelSize, OrviPoint anchor) {          \
        using E = Entry<TS, TD, Layout::C>;                                                                      \
        return run_entry<E>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, anchor, route_int<E>); \
    }
ORV_FILTER_INT(8u, Orv8u, Orv8u, C1)
ORV_FILTER_INT(8u, Orv8u, Orv8u, C3)
ORV_FILTER_INT(8u, Orv8u, Orv8u, C4)
ORV_FILTER_INT(8u, Orv8u, Orv8u, AC4)
ORV_FILTER_INT(16s, Orv16s, Orv16s, C1)
ORV_FILTER_INT(16s, Orv16s, Orv16s, C3)
ORV_FILTER_INT(16s, Orv16s, Orv16s, C4)
ORV_FILTER_INT(16s, Orv16s, Orv16s, AC4)
ORV_FILTER_INT(16u, Orv16u, Orv16u, C1)
ORV_FILTER_INT(16u, Orv16u, Orv16u, C3)
ORV_FILTER_INT(16u, Orv16u, Orv16u, C4)
ORV_FILTER_INT(16u, Orv16u, Orv16u, AC4)
ORV_FILTER_INT(8u16s, Orv8u, Orv16s, C1)
ORV_FILTER_INT(8u16s, Orv8u, Orv16s, C3)
ORV_FILTER_INT(8u16s, Orv8u, Orv16s, C4)
ORV_FILTER_INT(8s16s, Orv8s, Orv16s, C1)
ORV_FILTER_INT(8s16s, Orv8s, Orv16s, C3)
ORV_FILTER_INT(8s16s, Orv8s, Orv16s, C4)
ORV_FILTER_INT(8s, Orv8s, Orv8s, C1)
ORV_FILTER_INT(8s, Orv8s, Orv8s, C3)
ORV_FILTER_INT(8s, Orv8s, Orv8s, C4)
ORV_FILTER_INT(32s, Orv32s, Orv32s, C1)
ORV_FILTER_INT(32s, Orv32s, Orv32s, C3)
ORV_FILTER_INT(32s, Orv32s, Orv32s, C4)
