// Helpers of the reductions and thresholds. Their loops are written once
// over the lanes of internal/orv_simd.h and instantiated for 128-bit
// registers (all tiers) and 256-bit registers (e9 only, under if constexpr).
// Scalar element access goes through memcpy: arrays may sit at any byte
// offset, and a typed load from a misaligned pointer is undefined.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "internal/orv_simd.h"
#include "internal/orv_unaligned.h"

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

// The lanes of the loops below: D2 and F4 on every tier, D4 and F8 on e9
// only (templates that no other tier instantiates).
using simd::D2;
using simd::D4;
using simd::F4;
using simd::F8;

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
