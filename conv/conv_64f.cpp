// orvsConv_64f: full linear convolution in double precision.
#include "conv1d.h"

ORV_TIER_API OrvStatus ORV_T(orvsConv_64f)(const Orv64f* pSrc1, int src1Len, const Orv64f* pSrc2, int src2Len,
                                           Orv64f* pDst) {
    return orv::ORV_TIER_NS::conv::convolve(pSrc1, src1Len, pSrc2, src2Len, pDst);
}
