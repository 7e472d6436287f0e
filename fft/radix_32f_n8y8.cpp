// The CoreMT kernels of the single-precision core: the fused core's
// arguments and results, run on the calling thread by the fused core itself.
#include "internal/orv_tier.h"
#include "orvsfftk.h"

ORV_TIER_DECLARE(orvs_cRadix4FwdNorm_32fc)
ORV_TIER_DECLARE(orvs_cRadix4InvNorm_32fc)
ORV_TIER_DECLARE(orvs_crRadix4FwdNorm_32f)
ORV_TIER_DECLARE(orvs_crRadix4InvNorm_32f)

ORV_TIER_API void ORV_T(orvs_cFftFwd_CoreMT_32fc)(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                                  const Orv32u* pBitRev, Orv8u* pWork) {
    ORV_T(orvs_cRadix4FwdNorm_32fc)(pSrc, pDst, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_CoreMT_32fc)(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                                  const Orv32u* pBitRev, Orv8u* pWork) {
    ORV_T(orvs_cRadix4InvNorm_32fc)(pSrc, pDst, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_crFftFwd_CoreMT_32f)(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe,
                                                  Orv32f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                  Orv8u* pWork) {
    ORV_T(orvs_crRadix4FwdNorm_32f)(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_crFftInv_CoreMT_32f)(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe,
                                                  Orv32f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                  Orv8u* pWork) {
    ORV_T(orvs_crRadix4InvNorm_32f)(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}
