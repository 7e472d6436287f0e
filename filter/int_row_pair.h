// The integer 2-D filters: the row-pair design: two destination rows per pass over the source rows between them, float rows and a reversed coefficient copy in scratch.
// Returns true when it wrote the whole region, false when it declined,
// before writing anything (the generic loop then runs).
#pragma once

#include "filter/frame_filter.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

template <class E>
bool int_row_pair(const Call<E>&) {
    return false;
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
