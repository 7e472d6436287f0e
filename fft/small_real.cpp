// Real transforms of lengths 1 to 32 in both precisions, Perm layout out of
// the forward and into the inverse kernels; the bodies are in
// small_kernels.h.
#include "fft/small_kernels.h"

using namespace orv::ORV_TIER_NS::small;

#define ORV_SMALL_R(n, T, sfx)                                                                                  \
    ORV_TIER_API void ORV_T(orvs_rFFTfwd_##n##_##sfx)(const T* s, T* d) { rfft<T, n, false, false>(s, d, T(1)); } \
    ORV_TIER_API void ORV_T(orvs_rFFTinv_##n##_##sfx)(const T* s, T* d) { rfft<T, n, true, false>(s, d, T(1)); }  \
    ORV_TIER_API void ORV_T(orvs_rFFTfwd_##n##_scale_##sfx)(const T* s, T* d, T scale) {                        \
        rfft<T, n, false, true>(s, d, scale);                                                                   \
    }                                                                                                           \
    ORV_TIER_API void ORV_T(orvs_rFFTinv_##n##_scale_##sfx)(const T* s, T* d, T scale) {                        \
        rfft<T, n, true, true>(s, d, scale);                                                                    \
    }

#define ORV_SMALL_R12(T, sfx)                                                                                   \
    ORV_TIER_API void ORV_T(orvs_rFFT_1_##sfx)(const T* s, T* d) { copy1<T, T, false>(s, d, T(1)); }            \
    ORV_TIER_API void ORV_T(orvs_rFFT_1_scale_##sfx)(const T* s, T* d, T scale) { copy1<T, T, true>(s, d, scale); } \
    ORV_TIER_API void ORV_T(orvs_rFFT_2_##sfx)(const T* s, T* d) { bfly2<T, T, false>(s, d, T(1)); }            \
    ORV_TIER_API void ORV_T(orvs_rFFT_2_scale_##sfx)(const T* s, T* d, T scale) { bfly2<T, T, true>(s, d, scale); }

ORV_SMALL_R12(Orv32f, 32f)
ORV_SMALL_R12(Orv64f, 64f)
ORV_SMALL_R(4, Orv32f, 32f)
ORV_SMALL_R(8, Orv32f, 32f)
ORV_SMALL_R(16, Orv32f, 32f)
ORV_SMALL_R(32, Orv32f, 32f)
ORV_SMALL_R(4, Orv64f, 64f)
ORV_SMALL_R(8, Orv64f, 64f)
ORV_SMALL_R(16, Orv64f, 64f)
ORV_SMALL_R(32, Orv64f, 64f)
