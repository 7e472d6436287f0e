// Routes of the float column filters (C1 and AC4).
//
// Tier e9, from 8 elements of width: the kernel rows go in groups of 8 whose
// products are summed in registers; group 0 (window rows 0..7) is written,
// every further group of 8 rows is added to the destination row, and the
// kernelSize & 7 rows left are added last. An element thus holds a rounded
// single-precision partial sum from one group to the next. Columns go 8 per
// step, then 4, 2 and 1; AC4 goes 8 elements (two pixels) per step, then one
// pixel, and its stores leave the fourth channel as it is.
//
// Tiers m7, n8 and y8 (and e9's narrow AC4): the coefficients reversed, each
// replicated over a vector, and one running sum per element over the window
// rows from the top, stored once.
//
// Everything else runs the generic loop. Reads stay inside the window rows of
// the region's columns; writes cover exactly the region.
#pragma once

#include <immintrin.h>

#include <climits>
#include <cstddef>

#include "filter/column_frame.h"
#include "filter/row_lanes.h"

#define COLF_INLINE inline __attribute__((always_inline))

namespace orv::ORV_TIER_NS {
namespace {
namespace colf {

using rowf::byte_off;

// Two floats in the low half of a 128-bit register (one 64-bit access).
struct L2 {
    using R = __m128;
    static R loadf(const float* p) {
        return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p)));
    }
    static void store(float* p, R r) { _mm_storel_epi64(reinterpret_cast<__m128i_u*>(p), _mm_castps_si128(r)); }
    static R add(R a, R b) { return _mm_add_ps(a, b); }
    static R mul(R a, R b) { return _mm_mul_ps(a, b); }
};

// ---- Tier e9: groups of up to 8 kernel rows -------------------------------

// N coefficients, walked downward from the last one, broadcast once for all
// block sizes.
template <int N>
struct G9Coefs {
    __m256 k8[N];
    __m128 k4[N];
    float k1[N];
    explicit COLF_INLINE G9Coefs(const Orv32f* last) {
#pragma GCC unroll 8
        for (int i = 0; i < N; ++i) {
            k1[i] = last[-i];
            k8[i] = _mm256_set1_ps(k1[i]);
            k4[i] = _mm_set1_ps(k1[i]);
        }
    }
};

// One block of V::kN (or 2) columns: the N products summed as a tree, then
// written or added to what the destination holds.
template <class V, int N, bool kKeep, bool kWrite>
COLF_INLINE void g9_block(const float* s, ptrdiff_t step, float* d, const typename V::R* k) {
    typename V::R p[N];
#pragma GCC unroll 8
    for (int i = 0; i < N; ++i) p[i] = V::mul(V::loadf(byte_off(s, i * step)), k[i]);
    typename V::R sum = rowf::tree<V, 0, N>(p);
    if constexpr (!kWrite) sum = V::add(V::loadf(d), sum);
    if constexpr (kKeep) V::store_rgb(d, sum);
    else V::store(d, sum);
}

// One row of n elements (n a multiple of 4 for AC4).
template <int N, bool kAc4, bool kWrite>
COLF_INLINE void g9_row(const float* s, ptrdiff_t step, float* d, int n, const G9Coefs<N>& k) {
    int x = 0;
    for (; x + 8 <= n; x += 8) g9_block<rowf::L8T<>, N, kAc4, kWrite>(s + x, step, d + x, k.k8);
    if (x + 4 <= n) g9_block<rowf::L4, N, kAc4, kWrite>(s + x, step, d + x, k.k4), x += 4;
    if constexpr (!kAc4) {
        if (x + 2 <= n) g9_block<L2, N, false, kWrite>(s + x, step, d + x, k.k4), x += 2;
        if (x < n) g9_block<rowf::L1, N, false, kWrite>(s + x, step, d + x, k.k1);
    }
}

// Table entry N: N kernel rows over the region, written (write != 0) or added.
template <Layout L, int N>
void owniFilterColumn_32f_g9e9(const Orv32f* win, int srcStep, Orv32f* dst, int dstStep, int n, int height,
                               const Orv32f* coefLast, int write) {
    constexpr bool kAc4 = L == Layout::AC4;
    const G9Coefs<N> k(coefLast);
    for (int y = 0; y < height; ++y) {
        const float* s = byte_off(win, ptrdiff_t(y) * srcStep);
        float* d = byte_off(dst, ptrdiff_t(y) * dstStep);
        if (write) g9_row<N, kAc4, true>(s, srcStep, d, n, k);
        else g9_row<N, kAc4, false>(s, srcStep, d, n, k);
    }
}

using G9Entry = void (*)(const Orv32f*, int, Orv32f*, int, int, int, const Orv32f*, int);

// Entry N applies N kernel rows; entry 0 repeats entry 1.
template <Layout L>
inline constexpr G9Entry FilterColumnTable[8] = {
    &owniFilterColumn_32f_g9e9<L, 1>, &owniFilterColumn_32f_g9e9<L, 1>, &owniFilterColumn_32f_g9e9<L, 2>,
    &owniFilterColumn_32f_g9e9<L, 3>, &owniFilterColumn_32f_g9e9<L, 4>, &owniFilterColumn_32f_g9e9<L, 5>,
    &owniFilterColumn_32f_g9e9<L, 6>, &owniFilterColumn_32f_g9e9<L, 7>};

// The frame: below 8 kernel rows one table entry writes; otherwise, row by
// row, the groups of 8 (the first written, the others added), then the
// remaining kernelSize & 7 rows added by their table entry.
template <Layout L>
void ownFilterColumn_32f_g9e9(const ColCall<ColEntry<Orv32f, L>>& c) {
    constexpr bool kAc4 = L == Layout::AC4;
    const int n = c.width * (kAc4 ? 4 : 1);
    if (c.k < 8) {
        FilterColumnTable<L>[c.k](c.win, c.srcStep, c.dst, c.dstStep, n, c.height, c.coefLast, 1);
        return;
    }
    const int groups = c.k >> 3, rest = c.k & 7;
    const ptrdiff_t step = c.srcStep;
    for (int y = 0; y < c.height; ++y) {
        const float* s = byte_off(c.win, ptrdiff_t(y) * step);
        float* d = byte_off(c.dst, ptrdiff_t(y) * c.dstStep);
        g9_row<8, kAc4, true>(s, step, d, n, G9Coefs<8>(c.coefLast));
        for (int g = 1; g < groups; ++g)
            g9_row<8, kAc4, false>(byte_off(s, 8 * g * step), step, d, n, G9Coefs<8>(c.coefLast - 8 * g));
        if (rest)
            FilterColumnTable<L>[rest](byte_off(s, 8 * groups * step), c.srcStep, d, c.dstStep, n, 1,
                                       c.coefLast - 8 * groups, 0);
    }
}

// ---- Replicated coefficients: one running sum per element -----------------

// Four columns (C1) or one pixel (AC4) at s, summed over k window rows with
// the replicated coefficients rep (4 floats per kernel row).
template <int M>
COLF_INLINE void rep_sums(const float* s, ptrdiff_t step, const float* rep, int k, __m128 (&acc)[M]) {
    const __m128 k0 = _mm_loadu_ps(rep);
#pragma GCC unroll 4
    for (int j = 0; j < M; ++j) acc[j] = _mm_mul_ps(_mm_loadu_ps(s + 4 * j), k0);
    for (int i = 1; i < k; ++i) {
        const float* r = byte_off(s, i * step);
        const __m128 ki = _mm_loadu_ps(rep + 4 * i);
#pragma GCC unroll 4
        for (int j = 0; j < M; ++j) acc[j] = _mm_add_ps(acc[j], _mm_mul_ps(_mm_loadu_ps(r + 4 * j), ki));
    }
}

template <bool kAc4, int M>
COLF_INLINE void rep_block(const float* s, ptrdiff_t step, float* d, const float* rep, int k) {
    __m128 acc[M];
    rep_sums<M>(s, step, rep, k, acc);
#pragma GCC unroll 4
    for (int j = 0; j < M; ++j) {
        if constexpr (kAc4) rowf::L4::store_rgb(d + 4 * j, acc[j]);
        else _mm_storeu_ps(d + 4 * j, acc[j]);
    }
}

// C1: 16 columns per step, then 4, then single ones; AC4: 4 pixels per
// step, then single pixels. rep holds 4 * k floats. Returns true when done.
template <Layout L>
bool owniFilterColumn_32f(const ColCall<ColEntry<Orv32f, L>>& c, float* rep) {
    constexpr bool kAc4 = L == Layout::AC4;
    const int k = c.k;
    for (int i = 0; i < k; ++i) {
        const float v = c.coefLast[-i];
        rep[4 * i] = rep[4 * i + 1] = rep[4 * i + 2] = rep[4 * i + 3] = v;
    }
    const ptrdiff_t step = c.srcStep;
    const int n = c.width * (kAc4 ? 4 : 1);
    for (int y = 0; y < c.height; ++y) {
        const float* s = byte_off(c.win, ptrdiff_t(y) * step);
        float* d = byte_off(c.dst, ptrdiff_t(y) * c.dstStep);
        int x = 0;
        for (; x + 16 <= n; x += 16) rep_block<kAc4, 4>(s + x, step, d + x, rep, k);
        for (; x + 4 <= n; x += 4) rep_block<kAc4, 1>(s + x, step, d + x, rep, k);
        if constexpr (!kAc4) {
            for (; x < n; ++x) {
                float sum = rowf::L1::loadf(s + x) * rep[0];
                for (int i = 1; i < k; ++i) sum += rowf::L1::loadf(byte_off(s, i * step) + x) * rep[4 * i];
                rowf::L1::store(d + x, sum);
            }
        }
    }
    return true;
}

// The replicated form with its coefficient block: on the stack up to 64
// kernel rows, allocated beyond. False when there is no room.
template <Layout L>
bool replicated_route(const ColCall<ColEntry<Orv32f, L>>& c) {
    constexpr int kStackFloats = 256;
    if (c.k <= kStackFloats / 4) {
        alignas(1024) float rep[kStackFloats];
        return owniFilterColumn_32f<L>(c, rep);
    }
    if (c.k > INT_MAX / 4) return false;
    float* rep = ORV_T(orvsMalloc_32f)(c.k * 4);
    if (!rep) return false;
    const bool done = owniFilterColumn_32f<L>(c, rep);
    ORV_T(orvsFree)(rep);
    return done;
}

template <Layout L>
void column_route_32f(const ColCall<ColEntry<Orv32f, L>>& c) {
    constexpr bool kAc4 = L == Layout::AC4;
    if constexpr (kTier == Tier::e9) {
        if (c.width >= 8) return ownFilterColumn_32f_g9e9<L>(c);
        if constexpr (kAc4)
            if (c.k >= 3 && c.width >= 4 && replicated_route<L>(c)) return;
    } else {
        if (c.k >= 3 && c.width >= (kAc4 ? 4 : 16) && replicated_route<L>(c)) return;
    }
    column_generic(c);
}

}  // namespace colf
}  // namespace
}  // namespace orv::ORV_TIER_NS

#undef COLF_INLINE
