// The float filter kernels that the entries of one tier call across source
// files. Each is a tier function (ORV_T spells the tier's name); none is in
// the export lists, so they stay inside the library.
//
// Window origin: pSrcWin is the source pixel that meets the last stored
// coefficient, pSrc moved by anchor.x + 1 - kW pixels and anchor.y + 1 - kH
// rows; pCoefLast is pKernel + kW * kH - 1 (the y8/n8 column-group frames
// take it three elements lower, pKernel + kW * kH - 4, for four-element
// loads ending at the last coefficient). Window column c of window row r
// meets pKernel[(kH - 1 - r) * kW + (kW - 1 - c)].
#pragma once

#include "internal/orv_tier.h"
#include "orvi.h"

// ---- Column-group design: the destination carries the partial sums between
// kernel rows, groups of up to 8 columns per pass (e9: C1, C3, C4, AC4;
// y8, n8: C1, C3, C4). Steps in bytes.
#define ORV_FILTER_GROUP_FRAME(name)                                                                      \
    ORV_TIER_API void ORV_T(name)(const Orv32f* pSrcWin, int srcStep, OrviSize dstRoiSize,                \
                                  const Orv32f* pCoefLast, int kW, OrviSize kernelSize, Orv32f* pDst,     \
                                  int dstStep);
#if defined(ORV_TIER_E9)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C1R_g9e9)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C3R_g9e9)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C4R_g9e9)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_AC4R_g9e9)
#elif defined(ORV_TIER_Y8) || defined(ORV_TIER_N8)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C1R_v8u8)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C3R_v8u8)
ORV_FILTER_GROUP_FRAME(ownFilter_32f_C4R_v8u8)
#endif
#undef ORV_FILTER_GROUP_FRAME

// ---- Replicated-coefficient design: one running sum per pixel, coefficients
// copied reversed into pScratch with 4 (e9: 8) copies each. Steps in bytes.
// Returns 1 when done, 0 when declined (before anything is written).
#define ORV_FILTER_REPLICATED(name)                                                                       \
    ORV_TIER_API int ORV_T(name)(const Orv32f* pSrcWin, int srcStep, Orv32f* pDst, int dstStep, int width, \
                                 int height, const Orv32f* pCoefLast, int kW, int kH, Orv32f* pScratch);
#if defined(ORV_TIER_E9)
ORV_FILTER_REPLICATED(owniFilter_32f_C1R_gsh)
ORV_FILTER_REPLICATED(owniFilter_32f_C3R)
#elif defined(ORV_TIER_Y8) || defined(ORV_TIER_N8) || defined(ORV_TIER_M7)
ORV_FILTER_REPLICATED(owniFilter_32f_C1R)
ORV_FILTER_REPLICATED(owniFilter_32f_C3R)
ORV_FILTER_REPLICATED(owniFilter_32f_C4R)
ORV_FILTER_REPLICATED(owniFilter_32f_AC4R)
#endif
#undef ORV_FILTER_REPLICATED
