// Fused double-precision radix-4/8 core (bit reversal in the first pass) and
// the split-complex forms of both cores, for the tiers that have them.
#include "fft/radix_64f.h"

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(orvs_cRadix4FwdNorm_64fc)(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                                 const Orv32u* pBitRev, Orv8u* pWork) {
    r64::norm_c<false>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_cRadix4InvNorm_64fc)(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd,
                                                 const Orv32u* pBitRev, Orv8u* pWork) {
    r64::norm_c<true>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_crRadix4FwdNorm_64f)(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe,
                                                 Orv64f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                 Orv8u* pWork) {
    r64::norm_split<false>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}

ORV_TIER_API void ORV_T(orvs_crRadix4InvNorm_64f)(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe,
                                                 Orv64f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                 Orv8u* pWork) {
    r64::norm_split<true>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}

// Split data are planar already, so `interleaved` changes nothing: the
// result is natural order in pRe and pIm.
ORV_TIER_API void ORV_T(orvs_crRadix4Fwd_64f)(Orv64f* pRe, Orv64f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                             int) {
    r64::plain_split<false>(pRe, pIm, len, pTwd, pWork);
}

ORV_TIER_API void ORV_T(orvs_crRadix4Inv_64f)(Orv64f* pRe, Orv64f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                             int) {
    r64::plain_split<true>(pRe, pIm, len, pTwd, pWork);
}
