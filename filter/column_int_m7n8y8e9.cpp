// Integer column filters (8u, 16u, 16s in C1, C3, C4 and AC4): float sums of
// the column's taps, rounded and saturated to the element type. The routes
// are in column_int.h.
#include "filter/column_entries.h"
#include "filter/column_int.h"

using namespace orv::ORV_TIER_NS;

ORV_COL_FAMILY(orviFilterColumn32f_8u_, Orv8u, colf::column_route_int, colf::column_route_int)
ORV_COL_FAMILY(orviFilterColumn32f_16u_, Orv16u, colf::column_route_int, colf::column_route_int)
ORV_COL_FAMILY(orviFilterColumn32f_16s_, Orv16s, colf::column_route_int, colf::column_route_int)
