// The double-precision real transforms (Perm) and their recombination
// kernels, instances of the bodies in real_transform.h and recombine.h.
#include "fft/real_transform.h"
#include "orvsfftk.h"

using namespace orv::ORV_TIER_NS;
using real::Layout;

ORV_TIER_API void ORV_T(orvs_cRealRecombine_64f)(Orv64f* pData, int halfLen, int, const void* pRec) {
    rec::forward(pData, halfLen, static_cast<const Orv64f*>(pRec));
}
ORV_TIER_API void ORV_T(orvs_cCcsRecombine_64f)(const Orv64f* pSrc, Orv64f* pDst, int halfLen, int,
                                                const void* pRec) {
    rec::inverse(pSrc, pDst, halfLen, static_cast<const Orv64f*>(pRec));
}

ORV_TIER_API OrvStatus ORV_T(orvsFFTFwd_RToPerm_64f)(const Orv64f* pSrc, Orv64f* pDst, const OrvFFTSpec_R_64f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::forward<Orv64f, Layout::Perm>(pSrc, pDst, pSpec, pBuffer);
}
ORV_TIER_API OrvStatus ORV_T(orvsFFTInv_PermToR_64f)(const Orv64f* pSrc, Orv64f* pDst, const OrvFFTSpec_R_64f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::inverse<Orv64f, Layout::Perm>(pSrc, pDst, pSpec, pBuffer);
}
