// Routes of the float column filters (C1 and AC4).
#pragma once

#include "filter/column_frame.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace colf {

template <Layout L>
void column_route_32f(const ColCall<ColEntry<Orv32f, L>>& c) {
    column_generic(c);
}

}  // namespace colf
}  // namespace
}  // namespace orv::ORV_TIER_NS
