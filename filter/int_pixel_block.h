// The integer 2-D filters: tier e9's pixel-block design for narrow C1 8u, 16s, 16u (ownCFilter32f_<T>_C1R): sums held in registers over the whole window, converted straight to the destination.
// Returns true when it wrote the whole region, false when it declined,
// before writing anything (the generic loop then runs).
#pragma once

#include "filter/frame_filter.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

template <class E>
bool int_pixel_block(const Call<E>&) {
    return false;
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
