// Float to 8u four-channel images with the alpha kept. Tier e9 converts the
// whole region in one call of its AVX kernel for modes 0 and 1, and rows by
// its AVX Fin kernel otherwise; the others go row by row.
#include "image/convert_image.h"

namespace orv::ORV_TIER_NS {
namespace {

// The AVX kernels: the same row bodies on 256-bit lanes.
[[maybe_unused]] inline void owniConvert_32f8uA_AVX(const Region<Orv8u>& g) {
    for (int r = 0; r < g.height; ++r) convert_ac4<To8u, ClampRule<To8u>>(g.src_row(r), g.dst_row(r), g.width);
    _mm256_zeroupper();
}
[[maybe_unused]] inline void ownorvsCnvrtFin_32f8uA_AVX(const Orv32f* pSrc, Orv8u* pDst, int len) {
    convert_ac4<To8u, FinRule<To8u>>(pSrc, pDst, len);
    _mm256_zeroupper();
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviConvert_32f8u_AC4R)(const Orv32f* pSrc, int srcStep, Orv8u* pDst, int dstStep,
                                                     OrviSize roiSize, int rndMode) {
    if constexpr (kTier == orv::Tier::e9)
        return convert_image<Orv8u, 4>(pSrc, srcStep, pDst, dstStep, roiSize, rndMode, owniConvert_32f8uA_AVX,
                                       each_row(ownorvsCnvrtFin_32f8uA_AVX));
    else
        return convert_image<Orv8u, 4>(pSrc, srcStep, pDst, dstStep, roiSize, rndMode,
                                       each_row(owniConvert_32f8u_AC4_M7), each_row(owniConvertFin_32f8u_AC4));
}
