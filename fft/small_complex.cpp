// Complex transforms of lengths 1 to 32 in both precisions; the bodies are
// in small_kernels.h. Lengths up to 8 run on 128-bit lanes (two single- or
// one double-precision complex value per register); from 16 on, e9 takes
// 256-bit lanes, which halves the instruction count.
#include "fft/small_kernels.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace small {

template <class E, int N>
using LaneOf = std::conditional_t<kTier == Tier::e9 && N >= 16,
                                  std::conditional_t<std::is_same_v<E, Orv32fc>, simd::F8, simd::D4>,
                                  std::conditional_t<std::is_same_v<E, Orv32fc>, simd::F4, simd::D2>>;

}  // namespace small
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS::small;

#define ORV_SMALL_C(n, E, T, sfx)                                                                         \
    ORV_TIER_API void ORV_T(orvs_cFFTfwd_##n##_##sfx)(const E* s, E* d) {                                \
        cfft<LaneOf<E, n>, n, false, false>(s, d, T(1));                                                    \
    }                                                                                                     \
    ORV_TIER_API void ORV_T(orvs_cFFTinv_##n##_##sfx)(const E* s, E* d) {                                \
        cfft<LaneOf<E, n>, n, true, false>(s, d, T(1));                                                     \
    }                                                                                                     \
    ORV_TIER_API void ORV_T(orvs_cFFTfwd_##n##_scale_##sfx)(const E* s, E* d, T scale) {                 \
        cfft<LaneOf<E, n>, n, false, true>(s, d, scale);                                                    \
    }                                                                                                     \
    ORV_TIER_API void ORV_T(orvs_cFFTinv_##n##_scale_##sfx)(const E* s, E* d, T scale) {                 \
        cfft<LaneOf<E, n>, n, true, true>(s, d, scale);                                                     \
    }

#define ORV_SMALL_C12(E, T, sfx)                                                                              \
    ORV_TIER_API void ORV_T(orvs_cFFT_1_##sfx)(const E* s, E* d) { copy1<E, T, false>(s, d, T(1)); }          \
    ORV_TIER_API void ORV_T(orvs_cFFT_1_scale_##sfx)(const E* s, E* d, T scale) { copy1<E, T, true>(s, d, scale); } \
    ORV_TIER_API void ORV_T(orvs_cFFT_2_##sfx)(const E* s, E* d) { bfly2<E, T, false>(s, d, T(1)); }          \
    ORV_TIER_API void ORV_T(orvs_cFFT_2_scale_##sfx)(const E* s, E* d, T scale) { bfly2<E, T, true>(s, d, scale); }

ORV_SMALL_C12(Orv32fc, Orv32f, 32fc)
ORV_SMALL_C12(Orv64fc, Orv64f, 64fc)
ORV_SMALL_C(4, Orv32fc, Orv32f, 32fc)
ORV_SMALL_C(8, Orv32fc, Orv32f, 32fc)
ORV_SMALL_C(16, Orv32fc, Orv32f, 32fc)
ORV_SMALL_C(32, Orv32fc, Orv32f, 32fc)
ORV_SMALL_C(4, Orv64fc, Orv64f, 64fc)
ORV_SMALL_C(8, Orv64fc, Orv64f, 64fc)
ORV_SMALL_C(16, Orv64fc, Orv64f, 64fc)
ORV_SMALL_C(32, Orv64fc, Orv64f, 64fc)
