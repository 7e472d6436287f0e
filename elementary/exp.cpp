// The vector exponential: argument checks in front of the kernel. The status
// says nothing about the values; the kernel handles every one of them.
#include "internal/orv_tier.h"

ORV_TIER_API OrvStatus ORV_T(orvsExp_64f)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    if (!pSrc || !pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    ORV_T(ownsExp64f_M7)(pSrc, pDst, len);
    return orvStsNoErr;
}

// No u8 form is exported: its slots name n8.
ORV_TIER_API OrvStatus ORV_T(orvsExp_64f_I)(Orv64f* pSrcDst, int len) {
    if (!pSrcDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    ORV_T(ownsExp64f_M7)(pSrcDst, pSrcDst, len);
    return orvStsNoErr;
}
