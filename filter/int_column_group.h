// The integer 2-D filters: tier e9's column-group design (ownFilter32f_<T>_<C>R_g9e9): float rows in scratch, by destination row, converted half away from zero.
// Returns true when it wrote the whole region, false when it declined,
// before writing anything (the generic loop then runs).
#pragma once

#include "filter/frame_filter.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

template <class E>
bool int_column_group(const Call<E>&) {
    return false;
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
