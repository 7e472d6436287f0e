// Placeholder: replaced by the 2-D real FFT.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orviFFTInitAlloc_R_32f)(OrviFFTSpec_R_32f**, int, int, int, OrvHintAlgorithm) {
    return orvStsNoErr;
}
ORV_TIER_API OrvStatus ORV_T(orviFFTFree_R_32f)(OrviFFTSpec_R_32f*) { return orvStsNoErr; }
ORV_TIER_API OrvStatus ORV_T(orviFFTGetBufSize_R_32f)(const OrviFFTSpec_R_32f*, int*) { return orvStsNoErr; }
ORV_TIER_API OrvStatus ORV_T(orviFFTFwd_RToPack_32f_C1R)(const Orv32f*, int, Orv32f*, int, const OrviFFTSpec_R_32f*,
                                                         Orv8u*) {
    return orvStsNoErr;
}
ORV_TIER_API OrvStatus ORV_T(orviFFTInv_PackToR_32f_C1R)(const Orv32f*, int, Orv32f*, int, const OrviFFTSpec_R_32f*,
                                                         Orv8u*) {
    return orvStsNoErr;
}
