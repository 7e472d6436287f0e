// Placeholder: replaced by the 1-D convolution.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orvsConv_64f)(const Orv64f*, int, const Orv64f*, int, Orv64f*) { return orvStsNoErr; }
