// Dot products of doubles, and of floats widened to double. The
// accumulators and their fold order are fixed per tier. n8, built for an
// in-order core, takes scalar code with four accumulators on purpose; e9
// keeps the 128-bit body for doubles.
#include "vector/reduce_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

// Four accumulators of two doubles. If either array is not 16-aligned, the
// one that can reach alignment (a multiple of 8) is put second and stepped
// to 16 bytes by scalar products into the low lane of acc0; one that is not
// a multiple of 8 never gets there, so with neither a multiple of 8 every
// element goes that way. If the first array is then still unaligned: 6
// elements a step into acc0..acc2, reading it in 64-bit halves, the rest one
// by one into the low lane of acc0. Both aligned: 8 elements a step into the
// four accumulators, then pairs into acc0, then the low lane. Result
// (acc0 + acc1) + (acc2 + acc3), then high + low.
[[maybe_unused]] double dot_pairs(const double* x, const double* y, int n) {
    __m128d a0 = _mm_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
    if ((address(x) | address(y)) & 15) {
        if ((address(y) & 7) && !(address(x) & 7)) {
            const double* t = x;
            x = y;
            y = t;
        }
        for (; address(y) & 15; ++x, ++y) {
            a0 = add_lo(a0, load_elem(x) * load_elem(y));
            if (--n == 0) goto fold;
        }
        if (address(x) & 15) {
            auto halves = [](const double* p) { return _mm_loadh_pd(_mm_loadl_pd(_mm_setzero_pd(), p), p + 1); };
            for (; n >= 6; n -= 6, x += 6, y += 6) {
                a0 = _mm_add_pd(a0, _mm_mul_pd(halves(x), _mm_load_pd(y)));
                a1 = _mm_add_pd(a1, _mm_mul_pd(halves(x + 2), _mm_load_pd(y + 2)));
                a2 = _mm_add_pd(a2, _mm_mul_pd(halves(x + 4), _mm_load_pd(y + 4)));
            }
            for (; n > 0; --n, ++x, ++y) a0 = add_lo(a0, load_elem(x) * load_elem(y));
            goto fold;
        }
    }
    for (; n >= 8; n -= 8, x += 8, y += 8) {
        a0 = _mm_add_pd(a0, _mm_mul_pd(_mm_load_pd(x), _mm_load_pd(y)));
        a1 = _mm_add_pd(a1, _mm_mul_pd(_mm_load_pd(x + 2), _mm_load_pd(y + 2)));
        a2 = _mm_add_pd(a2, _mm_mul_pd(_mm_load_pd(x + 4), _mm_load_pd(y + 4)));
        a3 = _mm_add_pd(a3, _mm_mul_pd(_mm_load_pd(x + 6), _mm_load_pd(y + 6)));
    }
    for (; n >= 2; n -= 2, x += 2, y += 2) a0 = _mm_add_pd(a0, _mm_mul_pd(_mm_load_pd(x), _mm_load_pd(y)));
    if (n) a0 = add_lo(a0, load_elem(x) * load_elem(y));
fold:
    __m128d t = _mm_add_pd(_mm_add_pd(a0, a1), _mm_add_pd(a2, a3));
    return hi(t) + lo(t);
}

// Floats, no alignment step: two pair accumulators, 6 elements a step as
// three widened pairs to acc0, acc1, acc0; the rest one by one into the low
// lane of acc1; (acc0 + acc1), then high + low.
[[maybe_unused]] double dot32_pairs(const float* x, const float* y, int n) {
    __m128d a0 = _mm_setzero_pd(), a1 = a0;
    for (; n >= 6; n -= 6, x += 6, y += 6) {
        a0 = _mm_add_pd(a0, _mm_mul_pd(widen2(x), widen2(y)));
        a1 = _mm_add_pd(a1, _mm_mul_pd(widen2(x + 2), widen2(y + 2)));
        a0 = _mm_add_pd(a0, _mm_mul_pd(widen2(x + 4), widen2(y + 4)));
    }
    for (; n > 0; --n, ++x, ++y) a1 = add_lo(a1, static_cast<double>(load_elem(x)) * static_cast<double>(load_elem(y)));
    __m128d t = _mm_add_pd(a0, a1);
    return hi(t) + lo(t);
}

// e9 floats: four accumulators of four doubles, 16 elements a step, folded
// (a0 + a1) + (a2 + a3); then groups of 4 into it, folded low + high; the
// rest one by one into the low lane; high + low.
[[maybe_unused]] double dot32_wide(const float* x, const float* y, int n) {
    __m256d a0 = _mm256_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
    auto prod = [](const float* p, const float* q) {
        return _mm256_mul_pd(_mm256_cvtps_pd(_mm_loadu_ps(p)), _mm256_cvtps_pd(_mm_loadu_ps(q)));
    };
    for (; n >= 16; n -= 16, x += 16, y += 16) {
        a0 = _mm256_add_pd(a0, prod(x, y));
        a1 = _mm256_add_pd(a1, prod(x + 4, y + 4));
        a2 = _mm256_add_pd(a2, prod(x + 8, y + 8));
        a3 = _mm256_add_pd(a3, prod(x + 12, y + 12));
    }
    a0 = _mm256_add_pd(_mm256_add_pd(a0, a1), _mm256_add_pd(a2, a3));
    for (; n >= 4; n -= 4, x += 4, y += 4) a0 = _mm256_add_pd(a0, prod(x, y));
    __m128d r = D4::fold_add(a0);
    for (; n > 0; --n, ++x, ++y) r = add_lo(r, static_cast<double>(load_elem(x)) * static_cast<double>(load_elem(y)));
    return hi(r) + lo(r);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using orv::Tier;

ORV_TIER_API Orv64f ORV_T(DotProd_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, int len) {
    if constexpr (kTier == Tier::n8)
        return scalar_sum4(len, [pSrc1, pSrc2](int i) { return load_elem(pSrc1 + i) * load_elem(pSrc2 + i); });
    else return dot_pairs(pSrc1, pSrc2, len);
}

// Each tier exports the 32f x 32f -> 64f kernel under the name of its body.
#if defined(ORV_TIER_N8)
#define ORV_DOT32F64F_KERNEL ownsDotProd_32f64f_N8
#elif defined(ORV_TIER_E9)
#define ORV_DOT32F64F_KERNEL ownsDotProd_32f64f_E9
#else
#define ORV_DOT32F64F_KERNEL ownsDotProd_32f64f_M7
#endif

ORV_TIER_API Orv64f ORV_T(ORV_DOT32F64F_KERNEL)(const Orv32f* pSrc1, const Orv32f* pSrc2, int len) {
    if constexpr (kTier == Tier::n8)
        return scalar_sum4(len, [pSrc1, pSrc2](int i) {
            return static_cast<double>(load_elem(pSrc1 + i)) * static_cast<double>(load_elem(pSrc2 + i));
        });
    else if constexpr (kTier == Tier::e9) return dot32_wide(pSrc1, pSrc2, len);
    else return dot32_pairs(pSrc1, pSrc2, len);
}

ORV_TIER_API OrvStatus ORV_T(orvsDotProd_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, int len, Orv64f* pDp) {
    if (!pSrc1 || !pSrc2 || !pDp) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    store_elem(pDp, ORV_T(DotProd_64f)(pSrc1, pSrc2, len));
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsDotProd_32f64f)(const Orv32f* pSrc1, const Orv32f* pSrc2, int len, Orv64f* pDp) {
    if (!pSrc1 || !pSrc2 || !pDp) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    store_elem(pDp, ORV_T(ORV_DOT32F64F_KERNEL)(pSrc1, pSrc2, len));
    return orvStsNoErr;
}
