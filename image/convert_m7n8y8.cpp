// Float to 8u single-channel images, float to 16s and 16u four-channel
// images with the alpha kept (tiers m7, n8, y8).
#include "image/convert_image.h"

ORV_TIER_DECLARE(ownorvsCnvrtFin_32f8u_Sfs)

using namespace orv::ORV_TIER_NS;

// Modes other than 0 and 1 take the vector Fin kernel, unscaled.
ORV_TIER_API OrvStatus ORV_T(orviConvert_32f8u_C1R)(const Orv32f* pSrc, int srcStep, Orv8u* pDst, int dstStep,
                                                    OrviSize roiSize, int rndMode) {
    return convert_image<Orv8u, 1>(pSrc, srcStep, pDst, dstStep, roiSize, rndMode, each_row(owniConvert_32f8u_M7),
                                   each_row<Orv8u>([](const Orv32f* s, Orv8u* d, int len) {
                                       ORV_T(ownorvsCnvrtFin_32f8u_Sfs)(s, d, len, 0);
                                   }));
}

ORV_TIER_API OrvStatus ORV_T(orviConvert_32f16s_AC4R)(const Orv32f* pSrc, int srcStep, Orv16s* pDst, int dstStep,
                                                      OrviSize roiSize, int rndMode) {
    return convert_image<Orv16s, 4>(pSrc, srcStep, pDst, dstStep, roiSize, rndMode,
                                    each_row(owniConvert_32f16s_AC4_M7), each_row(owniConvertFin_32f16s_AC4));
}

ORV_TIER_API OrvStatus ORV_T(orviConvert_32f16u_AC4R)(const Orv32f* pSrc, int srcStep, Orv16u* pDst, int dstStep,
                                                      OrviSize roiSize, int rndMode) {
    return convert_image<Orv16u, 4>(pSrc, srcStep, pDst, dstStep, roiSize, rndMode,
                                    each_row(owniConvert_32f16u_AC4_M7), each_row(owniConvertFin_32f16u_AC4));
}
