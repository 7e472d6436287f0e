// orvsConv_32f: full linear convolution in single precision (no u8 form).
#include "conv1d.h"

ORV_TIER_API OrvStatus ORV_T(orvsConv_32f)(const Orv32f* pSrc1, int src1Len, const Orv32f* pSrc2, int src2Len,
                                           Orv32f* pDst) {
    return orv::ORV_TIER_NS::conv::convolve(pSrc1, src1Len, pSrc2, src2Len, pDst);
}
