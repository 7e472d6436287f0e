// The column filter entries, spelled once for every type: C1 and AC4 run the
// frame with the type's route; C3 and C4 call C1 of the same tier with the
// width multiplied (column_frame.h).
#pragma once

#include "filter/column_frame.h"

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
