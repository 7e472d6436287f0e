// Per-order tables of the small kernels of this tier, row = order (row 0 is
// length 1). Complex tables have rows 0..5, on e9 also row 6 (length 64);
// real tables rows 0..5. Callers index a row only up to their tier's small
// limit: table[order](pSrc, pDst) or table[order](pSrc, pDst, scale).
#pragma once

#include "internal/orv_tier.h"
#include "orvsfftk.h"

#define ORV_SMALL_DECLARE_C(sfx)                                                                    \
    ORV_TIER_DECLARE(orvs_cFFT_1_##sfx)                                                             \
    ORV_TIER_DECLARE(orvs_cFFT_2_##sfx)                                                             \
    ORV_TIER_DECLARE(orvs_cFFT_1_scale_##sfx)                                                       \
    ORV_TIER_DECLARE(orvs_cFFT_2_scale_##sfx)                                                       \
    ORV_SMALL_DECLARE_N(c, 4, sfx)                                                                  \
    ORV_SMALL_DECLARE_N(c, 8, sfx)                                                                  \
    ORV_SMALL_DECLARE_N(c, 16, sfx)                                                                 \
    ORV_SMALL_DECLARE_N(c, 32, sfx)                                                                 \
    ORV_SMALL_DECLARE_N(c, 64, sfx)
#define ORV_SMALL_DECLARE_R(sfx)                                                                    \
    ORV_TIER_DECLARE(orvs_rFFT_1_##sfx)                                                             \
    ORV_TIER_DECLARE(orvs_rFFT_2_##sfx)                                                             \
    ORV_TIER_DECLARE(orvs_rFFT_1_scale_##sfx)                                                       \
    ORV_TIER_DECLARE(orvs_rFFT_2_scale_##sfx)                                                       \
    ORV_SMALL_DECLARE_N(r, 4, sfx)                                                                  \
    ORV_SMALL_DECLARE_N(r, 8, sfx)                                                                  \
    ORV_SMALL_DECLARE_N(r, 16, sfx)                                                                 \
    ORV_SMALL_DECLARE_N(r, 32, sfx)
#define ORV_SMALL_DECLARE_N(k, n, sfx)                                                              \
    ORV_TIER_DECLARE(orvs_##k##FFTfwd_##n##_##sfx)                                                  \
    ORV_TIER_DECLARE(orvs_##k##FFTinv_##n##_##sfx)                                                  \
    ORV_TIER_DECLARE(orvs_##k##FFTfwd_##n##_scale_##sfx)                                            \
    ORV_TIER_DECLARE(orvs_##k##FFTinv_##n##_scale_##sfx)

ORV_SMALL_DECLARE_C(32fc)
ORV_SMALL_DECLARE_C(64fc)
ORV_SMALL_DECLARE_R(32f)
ORV_SMALL_DECLARE_R(64f)

#undef ORV_SMALL_DECLARE_C
#undef ORV_SMALL_DECLARE_R
#undef ORV_SMALL_DECLARE_N

namespace orv::ORV_TIER_NS {
namespace {

template <class E>
using SmallFn = void (*)(const E*, E*);
template <class E, class S>
using SmallScaleFn = void (*)(const E*, E*, S);

// The length-64 complex row exists only on e9.
#if defined(ORV_TIER_E9)
#define ORV_SMALL_ROW6(name) , ORV_T(name)
#else
#define ORV_SMALL_ROW6(name)
#endif

#define ORV_SMALL_TABLES(k, E, S, sfx, row6)                                                             \
    inline constexpr SmallFn<E> tbl_##k##FFTfwd_small_##sfx[] = {                                        \
        ORV_T(orvs_##k##FFT_1_##sfx),        ORV_T(orvs_##k##FFT_2_##sfx),                              \
        ORV_T(orvs_##k##FFTfwd_4_##sfx),     ORV_T(orvs_##k##FFTfwd_8_##sfx),                           \
        ORV_T(orvs_##k##FFTfwd_16_##sfx),    ORV_T(orvs_##k##FFTfwd_32_##sfx) row6(orvs_##k##FFTfwd_64_##sfx)}; \
    inline constexpr SmallFn<E> tbl_##k##FFTinv_small_##sfx[] = {                                        \
        ORV_T(orvs_##k##FFT_1_##sfx),        ORV_T(orvs_##k##FFT_2_##sfx),                              \
        ORV_T(orvs_##k##FFTinv_4_##sfx),     ORV_T(orvs_##k##FFTinv_8_##sfx),                           \
        ORV_T(orvs_##k##FFTinv_16_##sfx),    ORV_T(orvs_##k##FFTinv_32_##sfx) row6(orvs_##k##FFTinv_64_##sfx)}; \
    inline constexpr SmallScaleFn<E, S> tbl_##k##FFTfwd_small_scale_##sfx[] = {                          \
        ORV_T(orvs_##k##FFT_1_scale_##sfx),     ORV_T(orvs_##k##FFT_2_scale_##sfx),                     \
        ORV_T(orvs_##k##FFTfwd_4_scale_##sfx),  ORV_T(orvs_##k##FFTfwd_8_scale_##sfx),                  \
        ORV_T(orvs_##k##FFTfwd_16_scale_##sfx), ORV_T(orvs_##k##FFTfwd_32_scale_##sfx)                  \
            row6(orvs_##k##FFTfwd_64_scale_##sfx)};                                                      \
    inline constexpr SmallScaleFn<E, S> tbl_##k##FFTinv_small_scale_##sfx[] = {                          \
        ORV_T(orvs_##k##FFT_1_scale_##sfx),     ORV_T(orvs_##k##FFT_2_scale_##sfx),                     \
        ORV_T(orvs_##k##FFTinv_4_scale_##sfx),  ORV_T(orvs_##k##FFTinv_8_scale_##sfx),                  \
        ORV_T(orvs_##k##FFTinv_16_scale_##sfx), ORV_T(orvs_##k##FFTinv_32_scale_##sfx)                  \
            row6(orvs_##k##FFTinv_64_scale_##sfx)};

#define ORV_SMALL_NO_ROW6(name)
ORV_SMALL_TABLES(c, Orv32fc, Orv32f, 32fc, ORV_SMALL_ROW6)
ORV_SMALL_TABLES(c, Orv64fc, Orv64f, 64fc, ORV_SMALL_ROW6)
ORV_SMALL_TABLES(r, Orv32f, Orv32f, 32f, ORV_SMALL_NO_ROW6)
ORV_SMALL_TABLES(r, Orv64f, Orv64f, 64f, ORV_SMALL_NO_ROW6)
#undef ORV_SMALL_TABLES
#undef ORV_SMALL_ROW6
#undef ORV_SMALL_NO_ROW6

// The four tables of one element type: SmallTables<Orv32fc>::fwd[order] ...
template <class E>
struct SmallTables;
#define ORV_SMALL_BIND(k, E, S, sfx)                                                  \
    template <>                                                                      \
    struct SmallTables<E> {                                                          \
        using Scale = S;                                                             \
        static constexpr const SmallFn<E>* fwd = tbl_##k##FFTfwd_small_##sfx;        \
        static constexpr const SmallFn<E>* inv = tbl_##k##FFTinv_small_##sfx;        \
        static constexpr const SmallScaleFn<E, S>* fwd_scale = tbl_##k##FFTfwd_small_scale_##sfx; \
        static constexpr const SmallScaleFn<E, S>* inv_scale = tbl_##k##FFTinv_small_scale_##sfx; \
        static constexpr int rows = sizeof tbl_##k##FFTfwd_small_##sfx / sizeof(SmallFn<E>);      \
    };
ORV_SMALL_BIND(c, Orv32fc, Orv32f, 32fc)
ORV_SMALL_BIND(c, Orv64fc, Orv64f, 64fc)
ORV_SMALL_BIND(r, Orv32f, Orv32f, 32f)
ORV_SMALL_BIND(r, Orv64f, Orv64f, 64f)
#undef ORV_SMALL_BIND

}  // namespace
}  // namespace orv::ORV_TIER_NS
