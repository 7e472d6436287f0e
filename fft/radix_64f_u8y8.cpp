// CoreMT forms of the double-precision core: the Norm arguments and results,
// on the calling thread.
#include "fft/radix_64f.h"

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(orvs_cFftFwd_CoreMT_64fc)(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                                 const Orv32u* pBitRev, Orv8u* pWork) {
    r64::norm_c<false>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_cFftInv_CoreMT_64fc)(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                                 const Orv32u* pBitRev, Orv8u* pWork) {
    r64::norm_c<true>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_crFftFwd_CoreMT_64f)(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe,
                                                 Orv64f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                 Orv8u* pWork) {
    r64::norm_split<false>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_crFftInv_CoreMT_64f)(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe,
                                                 Orv64f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                 Orv8u* pWork) {
    r64::norm_split<true>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}
