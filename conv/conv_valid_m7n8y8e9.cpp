// Placeholder: replaced by the valid 2-D convolution.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orviConvValid_32f_C1R)(const Orv32f*, int, OrviSize, const Orv32f*, int, OrviSize,
                                                    Orv32f*, int) {
    return orvStsNoErr;
}
