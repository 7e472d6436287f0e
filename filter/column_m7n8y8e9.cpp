// Column filters: every column convolved with one kernel of kernelSize taps,
//   dst(x, y) = sum over i < kernelSize of pKernel[i] * src(x, y + yAnchor - i),
// for 32f, 8u, 16u and 16s in C1, C3, C4 and AC4. C3 and C4 call the C1
// entry of the same tier with the width multiplied; the routes are in
// column_32f.h and column_int.h, the checks and scratch in column_frame.h.
#include "filter/column_32f.h"
#include "filter/column_frame.h"
#include "filter/column_int.h"

using namespace orv::ORV_TIER_NS;

#define ORV_COL_ARGS(T)                                                                                   \
    const T *pSrc, int srcStep, T *pDst, int dstStep, OrviSize dstRoiSize, const Orv32f *pKernel, int kernelSize, \
        int yAnchor
#define ORV_COL_PASS pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, yAnchor

// C1 and AC4: the frame with the type's route; C3 and C4: forwarded to C1.
#define ORV_COL_ENTRY(name, T, L, ROUTE)                                                      \
    ORV_TIER_API OrvStatus ORV_T(name)(ORV_COL_ARGS(T)) {                                    \
        using E = colf::ColEntry<T, colf::Layout::L>;                                         \
        return colf::run_column<E>(ORV_COL_PASS, [](const colf::ColCall<E>& c) { ROUTE(c); }); \
    }
#define ORV_COL_FORWARD(name, T, CH, C1NAME)                                 \
    ORV_TIER_API OrvStatus ORV_T(name)(ORV_COL_ARGS(T)) {                   \
        return colf::forward_to_c1<CH>(&ORV_T(C1NAME), ORV_COL_PASS);        \
    }
#define ORV_COL_FAMILY(PREFIX, T, ROUTE_C1, ROUTE_AC4)            \
    ORV_COL_ENTRY(PREFIX##C1R, T, C1, ROUTE_C1)                   \
    ORV_COL_ENTRY(PREFIX##AC4R, T, AC4, ROUTE_AC4)                \
    ORV_COL_FORWARD(PREFIX##C3R, T, 3, PREFIX##C1R)               \
    ORV_COL_FORWARD(PREFIX##C4R, T, 4, PREFIX##C1R)

ORV_COL_FAMILY(orviFilterColumn_32f_, Orv32f, colf::column_route_32f<colf::Layout::C1>,
               colf::column_route_32f<colf::Layout::AC4>)
ORV_COL_FAMILY(orviFilterColumn32f_8u_, Orv8u, colf::column_route_int, colf::column_route_int)
ORV_COL_FAMILY(orviFilterColumn32f_16u_, Orv16u, colf::column_route_int, colf::column_route_int)
ORV_COL_FAMILY(orviFilterColumn32f_16s_, Orv16s, colf::column_route_int, colf::column_route_int)
