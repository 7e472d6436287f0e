// Placeholder: replaced by the 2-D Pack product and the strip moves.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orviMulPack_32f_C1IR)(const Orv32f*, int, Orv32f*, int, OrviSize) { return orvStsNoErr; }
ORV_TIER_API void ORV_T(orvi_cDftMerge_32fc)(const Orv32f*, int, Orv32f*, int) {}
ORV_TIER_API void ORV_T(orvi_cDftSplit_32fc)(Orv32f*, int, const Orv32f*, int) {}
