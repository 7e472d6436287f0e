// Complex transforms of length 64 (8 x 8), only on e9: four single- or two
// double-precision complex values per 256-bit register.
#include "fft/small_kernels.h"

using namespace orv::ORV_TIER_NS::small;
using orv::ORV_TIER_NS::simd::D4;
using orv::ORV_TIER_NS::simd::F8;

#define ORV_SMALL_C64(V, E, T, sfx)                                                                                 \
    ORV_TIER_API void ORV_T(orvs_cFFTfwd_64_##sfx)(const E* s, E* d) { cfft<V, 64, false, false>(s, d, T(1)); }    \
    ORV_TIER_API void ORV_T(orvs_cFFTinv_64_##sfx)(const E* s, E* d) { cfft<V, 64, true, false>(s, d, T(1)); }     \
    ORV_TIER_API void ORV_T(orvs_cFFTfwd_64_scale_##sfx)(const E* s, E* d, T scale) {                              \
        cfft<V, 64, false, true>(s, d, scale);                                                                      \
    }                                                                                                               \
    ORV_TIER_API void ORV_T(orvs_cFFTinv_64_scale_##sfx)(const E* s, E* d, T scale) { cfft<V, 64, true, true>(s, d, scale); }

ORV_SMALL_C64(F8, Orv32fc, Orv32f, 32fc)
ORV_SMALL_C64(D4, Orv64fc, Orv64f, 64fc)
