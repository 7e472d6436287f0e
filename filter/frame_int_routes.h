// The integer 2-D filter kernels that the entries try before the generic
// loop: tier e9's column-group frames, tier e9's pixel-block design for narrow
// C1 images, and the row-pair design of every tier. Each takes the entry's
// call and returns true when it wrote the whole region, false when it
// declined, before writing anything. Until their kernels exist they decline,
// and the generic loop serves every call.
#pragma once

#include "filter/frame_filter.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

// ownFilter32f_<T>_<C>R_g9e9: float rows in scratch, by destination row.
template <class E>
bool int_column_group(const Call<E>&) {
    return false;
}

// ownCFilter32f_<T>_C1R (8u, 16s, 16u): sums held in registers over the whole
// window, converted straight to the destination.
template <class E>
bool int_pixel_block(const Call<E>&) {
    return false;
}

// Row-pair design: two destination rows per pass over the source rows
// between them, float rows and a reversed coefficient copy in scratch.
template <class E>
bool int_row_pair(const Call<E>&) {
    return false;
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
