// Conversion between single and double precision vectors.
//
// Widening is exact. Narrowing clamps every element to +-FLT_MAX before the
// conversion, so that overflow and infinities give the largest finite value
// and never an infinity; the conversion itself rounds by MXCSR. The clamp is
// a minimum with the upper limit, then a maximum with the lower one, and
// minpd/maxpd return their second operand when either is NaN: the operand
// order decides what a NaN becomes, and it is a tier difference (see
// kNanPassesClamp).
//
// Tiers m7 to y8 convert in the kernels ownsConvert_*_M7; e9 converts in the
// public functions with 256-bit stores aligned on the destination.
#include <immintrin.h>

#include "internal/orv_tier.h"
#include "vector/elem_access.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr double kFltMax = 3.4028234663852886e38;

// The SSE tiers take the element as the first operand of the clamp, so a NaN
// becomes +FLT_MAX; e9 takes the limit first, and a NaN stays a NaN.
constexpr bool kNanPassesClamp = kTier == Tier::e9;

// Lane operations for the clamp: one lane (the _sd forms, which leave the
// upper lane alone), two lanes, four lanes. The AVX code is made of templates
// that only e9 instantiates, so no other tier compiles a function that takes
// or returns a 256-bit vector.
struct Lane1d {
    using V = __m128d;
    static V min(V a, V b) { return _mm_min_sd(a, b); }
    static V max(V a, V b) { return _mm_max_sd(a, b); }
    static V set1(double x) { return _mm_set1_pd(x); }
};
struct Lane2d {
    using V = __m128d;
    static V min(V a, V b) { return _mm_min_pd(a, b); }
    static V max(V a, V b) { return _mm_max_pd(a, b); }
    static V set1(double x) { return _mm_set1_pd(x); }
};
template <class = void>
struct Lane4d {
    using V = __m256d;
    static V min(V a, V b) { return _mm256_min_pd(a, b); }
    static V max(V a, V b) { return _mm256_max_pd(a, b); }
    static V set1(double x) { return _mm256_set1_pd(x); }
};

template <class L>
inline typename L::V clamp_to_float_range(typename L::V x) {
    const typename L::V hi = L::set1(kFltMax), lo = L::set1(-kFltMax);
    if constexpr (kNanPassesClamp)
        return L::max(lo, L::min(hi, x));
    else
        return L::max(L::min(x, hi), lo);
}

inline void widen_scalar(const float* s, double* d, int from, int to) {
    for (int i = from; i < to; ++i) store_elem(d + i, static_cast<double>(load_elem(s + i)));
}

inline void narrow_scalar(const double* s, float* d, int from, int to) {
    for (int i = from; i < to; ++i) {
        const __m128d x = clamp_to_float_range<Lane1d>(_mm_set_sd(load_elem(s + i)));
        store_elem(d + i, _mm_cvtss_f32(_mm_cvtsd_ss(_mm_setzero_ps(), x)));
    }
}

// Eight elements of the SSE tiers. The source is 16-byte aligned when
// kSrcAligned; a destination that is a multiple of 8 bytes gets naturally
// aligned 8-byte stores, any other one unaligned 16-byte stores.
template <bool kSrcAligned, bool kDst8>
inline void narrow8_sse(const double* s, float* d) {
    __m128 q[2];
    for (int h = 0; h < 2; ++h) {
        __m128d a, b;
        if constexpr (kSrcAligned) {
            a = _mm_load_pd(s + 4 * h);
            b = _mm_load_pd(s + 4 * h + 2);
        } else {
            a = _mm_loadu_pd(s + 4 * h);
            b = _mm_loadu_pd(s + 4 * h + 2);
        }
        q[h] = _mm_movelh_ps(_mm_cvtpd_ps(clamp_to_float_range<Lane2d>(a)),
                             _mm_cvtpd_ps(clamp_to_float_range<Lane2d>(b)));
    }
    for (int h = 0; h < 2; ++h) {
        if constexpr (kDst8) {
            _mm_storel_pi(reinterpret_cast<__m64*>(d + 4 * h), q[h]);
            _mm_storeh_pi(reinterpret_cast<__m64*>(d + 4 * h + 2), q[h]);
        } else {
            _mm_storeu_ps(d + 4 * h, q[h]);
        }
    }
}

template <bool kSrcAligned, bool kDst8>
inline int narrow_blocks_sse(const double* s, float* d, int i, int len) {
    for (; i + 8 <= len; i += 8) narrow8_sse<kSrcAligned, kDst8>(s + i, d + i);
    return i;
}

// e9, widening: a destination that is not a multiple of 8 bytes goes
// element by element; otherwise single elements up to a 32-byte boundary of
// the destination, 16 elements a step while 16 remain, then single ones.
template <class = void>
void widen_avx(const float* s, double* d, int len) {
    int i = 0;
    if (address(d) % 8 == 0) {
        i = steps_to_align(d, 8, 32, len);
        widen_scalar(s, d, 0, i);
        for (; i + 16 <= len; i += 16)
            for (int k = 0; k < 16; k += 4) _mm256_store_pd(d + i + k, _mm256_cvtps_pd(_mm_loadu_ps(s + i + k)));
    }
    widen_scalar(s, d, i, len);
}

// e9, narrowing: as widening, with the destination a multiple of 4 bytes
// and 8 elements a step.
template <class L = Lane4d<>>
void narrow_avx(const double* s, float* d, int len) {
    int i = 0;
    if (address(d) % 4 == 0) {
        i = steps_to_align(d, 4, 32, len);
        narrow_scalar(s, d, 0, i);
        for (; i + 8 <= len; i += 8) {
            const __m128 lo = _mm256_cvtpd_ps(clamp_to_float_range<L>(_mm256_loadu_pd(s + i)));
            const __m128 hi = _mm256_cvtpd_ps(clamp_to_float_range<L>(_mm256_loadu_pd(s + i + 4)));
            _mm256_store_ps(d + i, _mm256_set_m128(hi, lo));
        }
    }
    narrow_scalar(s, d, i, len);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

// Widens the elements one after the other.
ORV_TIER_API void ORV_T(ownsConvert_32f64f_M7)(const Orv32f* pSrc, Orv64f* pDst, int len) {
    widen_scalar(pSrc, pDst, 0, len);
}

// Single elements until the source is a multiple of 16 bytes, then 8 a step
// in one of two loops by whether the destination is a multiple of 8 bytes,
// then the tail. A source that is not a multiple of 8 bytes never aligns and
// is read unaligned.
ORV_TIER_API void ORV_T(ownsConvert_64f32f_M7)(const Orv64f* pSrc, Orv32f* pDst, int len) {
    int i = steps_to_align(pSrc, 8, 16, len);
    narrow_scalar(pSrc, pDst, 0, i);
    const bool dst8 = address(pDst) % 8 == 0;
    if (address(pSrc + i) % 16 != 0)
        i = dst8 ? narrow_blocks_sse<false, true>(pSrc, pDst, i, len) : narrow_blocks_sse<false, false>(pSrc, pDst, i, len);
    else
        i = dst8 ? narrow_blocks_sse<true, true>(pSrc, pDst, i, len) : narrow_blocks_sse<true, false>(pSrc, pDst, i, len);
    narrow_scalar(pSrc, pDst, i, len);
}

ORV_TIER_API OrvStatus ORV_T(orvsConvert_32f64f)(const Orv32f* pSrc, Orv64f* pDst, int len) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    if constexpr (kTier == orv::Tier::e9)
        widen_avx(pSrc, pDst, len);
    else
        ORV_T(ownsConvert_32f64f_M7)(pSrc, pDst, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsConvert_64f32f)(const Orv64f* pSrc, Orv32f* pDst, int len) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    if constexpr (kTier == orv::Tier::e9)
        narrow_avx(pSrc, pDst, len);
    else
        ORV_T(ownsConvert_64f32f_M7)(pSrc, pDst, len);
    return orvStsNoErr;
}
