// Placeholder: replaced by the 1-D convolution.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orvsConv_32f)(const Orv32f*, int, const Orv32f*, int, Orv32f*) { return orvStsNoErr; }
