// Register types of the reductions and thresholds, one traits type per
// vector width, so that a loop is written once and instantiated for 128-bit
// registers (all tiers) and 256-bit registers (e9 only, under if constexpr).
// Scalar element access goes through memcpy: arrays may sit at any byte
// offset, and a typed load from a misaligned pointer is undefined.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "internal/orv_unaligned.h"

// The 256-bit types below are used only by e9 code; below e9 they are never
// emitted, so the warning about their calling convention does not apply.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace orv::ORV_TIER_NS {
namespace {

inline int min_int(int a, int b) { return a < b ? a : b; }

inline double lo(__m128d r) { return _mm_cvtsd_f64(r); }
inline double hi(__m128d r) { return _mm_cvtsd_f64(_mm_unpackhi_pd(r, r)); }
// The low lane of a with the low lane of b added, or compared as the packed
// operation would: the new element is the second operand.
inline __m128d add_lo(__m128d a, double x) { return _mm_add_sd(a, _mm_set_sd(x)); }
inline __m128d max_lo(__m128d a, double x) { return _mm_max_sd(a, _mm_set_sd(x)); }
inline __m128d min_lo(__m128d a, double x) { return _mm_min_sd(a, _mm_set_sd(x)); }
// Maximum and minimum of the two halves: low half first.
inline double max_halves(__m128d r) { return _mm_cvtsd_f64(_mm_max_sd(r, _mm_unpackhi_pd(r, r))); }
inline double min_halves(__m128d r) { return _mm_cvtsd_f64(_mm_min_sd(r, _mm_unpackhi_pd(r, r))); }

// Two doubles. select() is a blend from SSE4.1 on, and masks below.
struct D2 {
    using R = __m128d;
    static constexpr int kN = 2;
    template <bool kAligned>
    static R load(const double* p) {
        if constexpr (kAligned) return _mm_load_pd(p);
        else return _mm_loadu_pd(p);
    }
    static R zero() { return _mm_setzero_pd(); }
    static R first(double x) { return _mm_set_sd(x); }
    static R all(double x) { return _mm_set1_pd(x); }
    static R add(R a, R b) { return _mm_add_pd(a, b); }
    static R mul(R a, R b) { return _mm_mul_pd(a, b); }
    static R max(R a, R b) { return _mm_max_pd(a, b); }
    static R min(R a, R b) { return _mm_min_pd(a, b); }
    static R gt(R a, R b) { return _mm_cmpgt_pd(a, b); }
    static R select(R mask, R yes, R no) {
        if constexpr (kTier >= Tier::y8) return _mm_blendv_pd(no, yes, mask);
        else return _mm_or_pd(_mm_and_pd(mask, yes), _mm_andnot_pd(mask, no));
    }
    static void store(double* p, R r) { _mm_storeu_pd(p, r); }
    // Down to one 128-bit register: nothing to do at this width.
    static __m128d fold_add(R r) { return r; }
    static __m128d fold_max(R r) { return r; }
    static __m128d fold_min(R r) { return r; }
};

// Four doubles (e9).
struct D4 {
    using R = __m256d;
    static constexpr int kN = 4;
    template <bool kAligned>
    static R load(const double* p) {
        if constexpr (kAligned) return _mm256_load_pd(p);
        else return _mm256_loadu_pd(p);
    }
    static R zero() { return _mm256_setzero_pd(); }
    static R first(double x) { return _mm256_set_pd(0.0, 0.0, 0.0, x); }
    static R all(double x) { return _mm256_set1_pd(x); }
    static R add(R a, R b) { return _mm256_add_pd(a, b); }
    static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
    static R max(R a, R b) { return _mm256_max_pd(a, b); }
    static R min(R a, R b) { return _mm256_min_pd(a, b); }
    static R gt(R a, R b) { return _mm256_cmp_pd(a, b, _CMP_GT_OQ); }
    static R select(R mask, R yes, R no) { return _mm256_blendv_pd(no, yes, mask); }
    static void store(double* p, R r) { _mm256_storeu_pd(p, r); }
    // Low 128 bits first, high second.
    static __m128d fold_add(R r) { return _mm_add_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
    static __m128d fold_max(R r) { return _mm_max_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
    static __m128d fold_min(R r) { return _mm_min_pd(_mm256_castpd256_pd128(r), _mm256_extractf128_pd(r, 1)); }
};

// Four floats.
struct F4 {
    using R = __m128;
    static constexpr int kN = 4;
    template <bool kAligned>
    static R load(const float* p) {
        if constexpr (kAligned) return _mm_load_ps(p);
        else return _mm_loadu_ps(p);
    }
    static R zero() { return _mm_setzero_ps(); }
    static R add(R a, R b) { return _mm_add_ps(a, b); }
    static __m128 fold_add(R r) { return r; }
};

// Eight floats (e9).
struct F8 {
    using R = __m256;
    static constexpr int kN = 8;
    template <bool kAligned>
    static R load(const float* p) {
        if constexpr (kAligned) return _mm256_load_ps(p);
        else return _mm256_loadu_ps(p);
    }
    static R zero() { return _mm256_setzero_ps(); }
    static R add(R a, R b) { return _mm256_add_ps(a, b); }
    static __m128 fold_add(R r) { return _mm_add_ps(_mm256_castps256_ps128(r), _mm256_extractf128_ps(r, 1)); }
};

// Two floats widened to two doubles; reads exactly 8 bytes.
inline __m128d widen2(const float* p) {
    return _mm_cvtps_pd(_mm_castpd_ps(_mm_loadl_pd(_mm_setzero_pd(), reinterpret_cast<const double*>(p))));
}

// The main loop of the vector reductions: four accumulators, one register
// each a step, a[k] = op(a[k], register k). Leaves p and n after the last
// whole step.
template <class V, bool kAligned, class T, class Op>
void accumulate4(typename V::R (&a)[4], const T*& p, int& n, Op op) {
    constexpr int kStep = 4 * V::kN;
    for (; n >= kStep; n -= kStep, p += kStep) {
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) a[k] = op(a[k], V::template load<kAligned>(p + k * V::kN));
    }
}

// Four scalar accumulators, 8 terms a step with term k to accumulator
// k mod 4 (each accumulator's two terms added in sequence), then groups of
// 4, 2 and 1 in the same pattern; result (s0 + s1) + (s2 + s3).
template <class Term>
double scalar_sum4(int n, Term t) {
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
    int i = 0;
    for (; n - i >= 8; i += 8) {
        s0 += t(i);
        s1 += t(i + 1);
        s2 += t(i + 2);
        s3 += t(i + 3);
        s0 += t(i + 4);
        s1 += t(i + 5);
        s2 += t(i + 6);
        s3 += t(i + 7);
    }
    if (n - i >= 4) {
        s0 += t(i);
        s1 += t(i + 1);
        s2 += t(i + 2);
        s3 += t(i + 3);
        i += 4;
    }
    if (n - i >= 2) {
        s0 += t(i);
        s1 += t(i + 1);
        i += 2;
    }
    if (n - i >= 1) s0 += t(i);
    return (s0 + s1) + (s2 + s3);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
