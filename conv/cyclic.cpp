// Placeholder: replaced by the cyclic kernels.
#include "internal/orv_tier.h"

ORV_TIER_API void ORV_T(ownConvCyclic8x8_32f)(const Orv32f*, const Orv32f*, Orv32f*) {}
ORV_TIER_API void ORV_T(ownConvCyclic4x4_32f32fc)(const Orv32f*, const Orv32fc*, Orv32fc*) {}
ORV_TIER_API void ORV_T(ownConvCyclic8x8_16s_Sfs)(const Orv16s*, const Orv16s*, Orv16s*, int) {}
