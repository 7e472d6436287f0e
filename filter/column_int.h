// Routes of the integer column filters, 8u, 16u and 16s (C1 and AC4).
#pragma once

#include "filter/column_frame.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace colf {

template <class E>
void column_route_int(const ColCall<E>& c) {
    column_generic(c);
}

}  // namespace colf
}  // namespace
}  // namespace orv::ORV_TIER_NS
