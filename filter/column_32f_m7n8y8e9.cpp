// Float column filters: every column convolved with one kernel of kernelSize
// taps, dst(x, y) = sum over i < kernelSize of pKernel[i] * src(x, y + yAnchor - i),
// in C1, C3, C4 and AC4. The routes are in column_32f.h.
#include "filter/column_32f.h"
#include "filter/column_entries.h"

using namespace orv::ORV_TIER_NS;

ORV_COL_FAMILY(orviFilterColumn_32f_, Orv32f, colf::column_route_32f<colf::Layout::C1>,
               colf::column_route_32f<colf::Layout::AC4>)
