// Plain double-precision radix-4/8 core: bit-reversed data in, in place;
// every tier (n8 reaches its transforms only through it, after a bit
// reversal on the swap list).
#include "fft/radix_64f.h"

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(orvs_cRadix4Fwd_64fc)(Orv64fc* pData, int len, const void* pTwd, Orv8u* pWork,
                                             int interleaved) {
    r64::plain_c<false>(pData, len, pTwd, pWork, interleaved);
}

ORV_TIER_API void ORV_T(orvs_cRadix4Inv_64fc)(Orv64fc* pData, int len, const void* pTwd, Orv8u* pWork,
                                             int interleaved) {
    r64::plain_c<true>(pData, len, pTwd, pWork, interleaved);
}
