// The 32-bit fill entry of the 128-bit tiers: the value goes to memory for
// the _M7 kernel.
#include "internal/orv_tier.h"

ORV_TIER_DECLARE(ownsSet_32s_M7)

ORV_TIER_API void ORV_T(ownsSet_32s)(Orv32s val, Orv32s* pDst, int count) { ORV_T(ownsSet_32s_M7)(&val, pDst, count); }
