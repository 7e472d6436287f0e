// The single-precision real transforms (Perm and Pack) and their
// recombination kernels, instances of the bodies in real_transform.h and
// recombine.h.
#include "fft/real_transform.h"
#include "orvsfftk.h"

using namespace orv::ORV_TIER_NS;
using real::Layout;

ORV_TIER_API void ORV_T(orvs_cRealRecombine_32f)(Orv32f* pData, int halfLen, int, const void* pRec) {
    rec::forward(pData, halfLen, static_cast<const Orv32f*>(pRec));
}
ORV_TIER_API void ORV_T(orvs_cCcsRecombine_32f)(const Orv32f* pSrc, Orv32f* pDst, int halfLen, int,
                                                const void* pRec) {
    rec::inverse(pSrc, pDst, halfLen, static_cast<const Orv32f*>(pRec));
}

ORV_TIER_API OrvStatus ORV_T(orvsFFTFwd_RToPerm_32f)(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::forward<Orv32f, Layout::Perm>(pSrc, pDst, pSpec, pBuffer);
}
ORV_TIER_API OrvStatus ORV_T(orvsFFTFwd_RToPack_32f)(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::forward<Orv32f, Layout::Pack>(pSrc, pDst, pSpec, pBuffer);
}
ORV_TIER_API OrvStatus ORV_T(orvsFFTInv_PermToR_32f)(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::inverse<Orv32f, Layout::Perm>(pSrc, pDst, pSpec, pBuffer);
}
ORV_TIER_API OrvStatus ORV_T(orvsFFTInv_PackToR_32f)(const Orv32f* pSrc, Orv32f* pDst, const OrvFFTSpec_R_32f* pSpec,
                                                     Orv8u* pBuffer) {
    return real::inverse<Orv32f, Layout::Pack>(pSrc, pDst, pSpec, pBuffer);
}
