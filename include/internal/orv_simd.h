// Vector lanes for tier code: one struct per register width, with the
// intrinsics under plain names, so that a loop is written once and
// instantiated per width. F4/D2 are 128-bit (every tier), F8/D4 256-bit (e9
// only: a tier below e9 must not instantiate them). Where tiers differ in the
// instruction for one operation, the choice sits here under if constexpr.
//
// Complex data in planar form (real parts in one register, imaginary parts
// in another) multiply without shuffles: cmul and cmul_conj below.
#pragma once

#include <immintrin.h>

#include <type_traits>

#include "internal/orv_tier.h"

// The 256-bit types are used only by e9 code; below e9 they are never
// emitted, so the warning about their calling convention does not apply.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace orv::ORV_TIER_NS {
namespace {
namespace simd {

struct F4 {
    using T = float;
    using R = __m128;
    using I = __m128i;
    static constexpr int kN = 4;
    static constexpr int kBytes = 16;
    template <bool kAligned>
    static R load(const float* p) {
        if constexpr (kAligned) return _mm_load_ps(p);
        else return _mm_loadu_ps(p);
    }
    template <bool kAligned>
    static void store(float* p, R r) {
        if constexpr (kAligned) _mm_store_ps(p, r);
        else _mm_storeu_ps(p, r);
    }
    static R zero() { return _mm_setzero_ps(); }
    static R set1(float x) { return _mm_set1_ps(x); }
    static R add(R a, R b) { return _mm_add_ps(a, b); }
    static R sub(R a, R b) { return _mm_sub_ps(a, b); }
    static R mul(R a, R b) { return _mm_mul_ps(a, b); }
    static R min(R a, R b) { return _mm_min_ps(a, b); }
    static R max(R a, R b) { return _mm_max_ps(a, b); }
    static R bit_and(R a, R b) { return _mm_and_ps(a, b); }
    static R bit_andnot(R a, R b) { return _mm_andnot_ps(a, b); }
    static R bit_or(R a, R b) { return _mm_or_ps(a, b); }
    static R bit_xor(R a, R b) { return _mm_xor_ps(a, b); }
    static I cvt(R a) { return _mm_cvtps_epi32(a); }
    static I cvtt(R a) { return _mm_cvttps_epi32(a); }
    // Down to one 128-bit register.
    static __m128 fold_add(R r) { return r; }
};

struct D2 {
    using T = double;
    using R = __m128d;
    static constexpr int kN = 2;
    static constexpr int kBytes = 16;
    template <bool kAligned>
    static R load(const double* p) {
        if constexpr (kAligned) return _mm_load_pd(p);
        else return _mm_loadu_pd(p);
    }
    template <bool kAligned>
    static void store(double* p, R r) {
        if constexpr (kAligned) _mm_store_pd(p, r);
        else _mm_storeu_pd(p, r);
    }
    static R zero() { return _mm_setzero_pd(); }
    static R first(double x) { return _mm_set_sd(x); }
    static R set1(double x) { return _mm_set1_pd(x); }
    static R add(R a, R b) { return _mm_add_pd(a, b); }
    static R sub(R a, R b) { return _mm_sub_pd(a, b); }
    static R mul(R a, R b) { return _mm_mul_pd(a, b); }
    static R max(R a, R b) { return _mm_max_pd(a, b); }
    static R min(R a, R b) { return _mm_min_pd(a, b); }
    static R gt(R a, R b) { return _mm_cmpgt_pd(a, b); }
    static R bit_xor(R a, R b) { return _mm_xor_pd(a, b); }
    // A blend from SSE4.1 on, masks below.
    static R select(R mask, R yes, R no) {
        if constexpr (kTier >= Tier::y8) return _mm_blendv_pd(no, yes, mask);
        else return _mm_or_pd(_mm_and_pd(mask, yes), _mm_andnot_pd(mask, no));
    }
    static __m128d fold_add(R r) { return r; }
    static __m128d fold_max(R r) { return r; }
    static __m128d fold_min(R r) { return r; }
};

// 256-bit lanes are templates so that only an e9 instantiation emits them.
template <class = void>
struct F8T {
    using T = float;
    using R = __m256;
    using I = __m256i;
    static constexpr int kN = 8;
    static constexpr int kBytes = 32;
    template <bool kAligned>
    static R load(const float* p) {
        if constexpr (kAligned) return _mm256_load_ps(p);
        else return _mm256_loadu_ps(p);
    }
    template <bool kAligned>
    static void store(float* p, R r) {
        if constexpr (kAligned) _mm256_store_ps(p, r);
        else _mm256_storeu_ps(p, r);
    }
    static R zero() { return _mm256_setzero_ps(); }
    static R set1(float x) { return _mm256_set1_ps(x); }
    static R add(R a, R b) { return _mm256_add_ps(a, b); }
    static R sub(R a, R b) { return _mm256_sub_ps(a, b); }
    static R mul(R a, R b) { return _mm256_mul_ps(a, b); }
    static R min(R a, R b) { return _mm256_min_ps(a, b); }
    static R max(R a, R b) { return _mm256_max_ps(a, b); }
    static R bit_and(R a, R b) { return _mm256_and_ps(a, b); }
    static R bit_andnot(R a, R b) { return _mm256_andnot_ps(a, b); }
    static R bit_or(R a, R b) { return _mm256_or_ps(a, b); }
    static R bit_xor(R a, R b) { return _mm256_xor_ps(a, b); }
    static I cvt(R a) { return _mm256_cvtps_epi32(a); }
    static I cvtt(R a) { return _mm256_cvttps_epi32(a); }
    // Low 128 bits first, high second.
    static __m128 fold_add(R r) { return _mm_add_ps(_mm256_castps256_ps128(r), _mm256_extractf128_ps(r, 1)); }
};

template <class = void>
struct D4T {
    using T = double;
    using R = __m256d;
    static constexpr int kN = 4;
    static constexpr int kBytes = 32;
    template <bool kAligned>
    static R load(const double* p) {
        if constexpr (kAligned) return _mm256_load_pd(p);
        else return _mm256_loadu_pd(p);
    }
    template <bool kAligned>
    static void store(double* p, R r) {
        if constexpr (kAligned) _mm256_store_pd(p, r);
        else _mm256_storeu_pd(p, r);
    }
    static R zero() { return _mm256_setzero_pd(); }
    static R first(double x) { return _mm256_set_pd(0.0, 0.0, 0.0, x); }
    static R set1(double x) { return _mm256_set1_pd(x); }
    static R add(R a, R b) { return _mm256_add_pd(a, b); }
    static R sub(R a, R b) { return _mm256_sub_pd(a, b); }
    static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
    static R max(R a, R b) { return _mm256_max_pd(a, b); }
    static R min(R a, R b) { return _mm256_min_pd(a, b); }
    static R gt(R a, R b) { return _mm256_cmp_pd(a, b, _CMP_GT_OQ); }
    static R bit_xor(R a, R b) { return _mm256_xor_pd(a, b); }
    static R select(R mask, R yes, R no) { return _mm256_blendv_pd(no, yes, mask); }
    static __m128d fold_add(R r) { return _mm_add_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
    static __m128d fold_max(R r) { return _mm_max_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
    static __m128d fold_min(R r) { return _mm_min_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
};
using F8 = F8T<>;
using D4 = D4T<>;

// The widest float and double lanes of this tier.
using FWide = std::conditional_t<kTier == Tier::e9, F8, F4>;
using DWide = std::conditional_t<kTier == Tier::e9, D4, D2>;

// Planar complex product x*w: (xr wr - xi wi, xr wi + xi wr).
template <class V>
inline void cmul(typename V::R xr, typename V::R xi, typename V::R wr, typename V::R wi, typename V::R& re,
                 typename V::R& im) {
    re = V::sub(V::mul(xr, wr), V::mul(xi, wi));
    im = V::add(V::mul(xr, wi), V::mul(xi, wr));
}
// Planar complex product with the conjugate, x*conj(w): (xr wr + xi wi,
// xi wr - xr wi). Inverse passes read the forward tables through it.
template <class V>
inline void cmul_conj(typename V::R xr, typename V::R xi, typename V::R wr, typename V::R wi, typename V::R& re,
                      typename V::R& im) {
    re = V::add(V::mul(xr, wr), V::mul(xi, wi));
    im = V::sub(V::mul(xi, wr), V::mul(xr, wi));
}

}  // namespace simd
}  // namespace
}  // namespace orv::ORV_TIER_NS
