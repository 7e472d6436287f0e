// Error hooks of the AVX vector functions. A function calls the hook with a
// status code (orvStsDomain, orvStsSingularity, orvStsOverflow,
// orvStsUnderflow) for an element whose result it has already stored, and
// reads that result back afterwards. These hooks accept every code and leave
// the stored result as it is.
#include "internal/orv_tier.h"

ORV_TIER_API void ORV_T(vqkdError)(int code, int index, const Orv64f* pArg1, const Orv64f* pArg2, Orv64f* pRes1,
                                   Orv64f* pRes2, const char* pFuncName) {
    (void)code, (void)index, (void)pArg1, (void)pArg2, (void)pRes1, (void)pRes2, (void)pFuncName;
}

ORV_TIER_API void ORV_T(vqksError)(int code) { (void)code; }
