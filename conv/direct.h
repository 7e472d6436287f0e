// Direct linear convolution kernels: pDst[i + j] gets x[i] * h[j] for i < n,
// j < m. Two designs, one body each for both element types:
//  - the accumulating kernel (every tier for double, below e9 for float):
//    adds into pDst, so the caller clears the range first. Taps go in groups
//    of four; each group adds its four products to an output in one
//    read-modify-write;
//  - the storing kernel (e9, float): three regions (left triangle, full
//    middle, right triangle), each output computed whole and stored.
// The order of additions is fixed per output and the same in the vector
// lanes and the scalar edges, so alignment never changes a result. Scalar
// accesses go through load_elem/store_elem: arrays may have any address.
#pragma once

#include <algorithm>
#include <type_traits>

#include "internal/orv_simd.h"
#include "internal/orv_unaligned.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace conv {

// ---------------------------------------------------------------------------
// Accumulating kernel.

// One output of a walk of R taps g[0..R-1] (ascending tap index), for the
// output whose first product uses x[i]:
//   R = 4: ((x[i] g3 + d) + x[i+1] g2) + (x[i+2] g1 + x[i+3] g0)
//   R = 3: ((x[i] g2 + d) + x[i+1] g1) + x[i+2] g0
//   R = 2:  (x[i] g1 + d) + x[i+1] g0
//   R = 1:   x[i] g0 + d
// Products whose sample lies outside x[0..n-1] are left out (the edges).
template <int R, class T>
inline T walk_edge(const T* x, int n, int i, const T* g, T d) {
    auto in = [&](int k) { return i + k >= 0 && i + k < n; };
    auto p = [&](int k) { return load_elem(x + i + k) * g[R - 1 - k]; };
    T acc = in(0) ? p(0) + d : d;
    if constexpr (R >= 2)
        if (in(1)) acc = acc + p(1);
    if constexpr (R == 3)
        if (in(2)) acc = acc + p(2);
    if constexpr (R == 4) {
        if (in(2) && in(3)) acc = acc + (p(2) + p(3));
        else if (in(2)) acc = acc + p(2);
        else if (in(3)) acc = acc + p(3);
    }
    return acc;
}

// The same step on V::kN outputs whose samples are all inside x.
template <int R, class V>
inline typename V::R walk_vec(const typename V::T* x, const typename V::R* g, typename V::R d) {
    using Vec = typename V::R;
    Vec acc = V::add(V::mul(V::template load<false>(x), g[R - 1]), d);
    if constexpr (R >= 2) acc = V::add(acc, V::mul(V::template load<false>(x + 1), g[R - 2]));
    if constexpr (R == 3) acc = V::add(acc, V::mul(V::template load<false>(x + 2), g[0]));
    if constexpr (R == 4)
        acc = V::add(acc, V::add(V::mul(V::template load<false>(x + 2), g[1]),
                                 V::mul(V::template load<false>(x + 3), g[0])));
    return acc;
}

// Adds the products of taps h[0..R-1] into out, where out[i + R - 1] is the
// output whose first product uses x[i], for i in [lo, hi) within
// [-(R-1), n). The interior (all R samples inside x) runs in vectors, two per
// pass, with the destination aligned first; the rest is scalar.
template <int R, class V>
void walk(const typename V::T* x, int n, const typename V::T* h, typename V::T* out, int lo, int hi) {
    using T = typename V::T;
    using Vec = typename V::R;
    constexpr int kN = V::kN;
    T* d = out + (R - 1);  // d[i]: first product x[i]
    auto scalar = [&](int i) { store_elem(d + i, walk_edge<R>(x, n, i, h, load_elem(d + i))); };
    hi = std::min(hi, n);
    int i = std::max(lo, -(R - 1));
    for (; i < std::min(hi, 0); ++i) scalar(i);
    const int end = std::min(hi, n - (R - 1));  // interior: i < end
    for (; i < end && (address(d + i) & (V::kBytes - 1)) != 0; ++i) scalar(i);
    Vec g[R];
    for (int k = 0; k < R; ++k) g[k] = V::set1(h[k]);
    for (; i + 2 * kN <= end; i += 2 * kN) {
        const Vec a = walk_vec<R, V>(x + i, g, V::template load<true>(d + i));
        const Vec b = walk_vec<R, V>(x + i + kN, g, V::template load<true>(d + i + kN));
        V::template store<true>(d + i, a);
        V::template store<true>(d + i + kN, b);
    }
    for (; i < hi; ++i) scalar(i);
}

// Plain form: for each tap ascending, for each sample ascending.
template <class T>
void conv_plain(const T* x, int n, const T* h, int m, T* pDst) {
    for (int j = 0; j < m; ++j) {
        const T g = load_elem(h + j);
        for (int i = 0; i < n; ++i) store_elem(pDst + i + j, load_elem(pDst + i + j) + load_elem(x + i) * g);
    }
}

// Accumulating kernel, V the lanes of T. A destination that is not a
// multiple of the element size, or fewer than 8 samples, takes the plain
// form; otherwise groups of four taps, then a walk of the m & 3 left over.
// The walks go tile by tile of the output, so that a tile and its samples
// stay in the first-level cache across the groups; each output still takes
// its groups in ascending order.
template <class V>
void conv_accumulate(const typename V::T* x, int n, const typename V::T* h, int m, typename V::T* pDst) {
    using T = typename V::T;
    if (n < 8 || (address(pDst) & (sizeof(T) - 1)) != 0) return conv_plain(x, n, h, m, pDst);
    constexpr int kTile = 512;
    const int total = n + m - 1;
    for (int k0 = 0; k0 < total; k0 += kTile) {
        const int k1 = std::min(total, k0 + kTile);
        T g[4];
        int j = 0;
        for (; j + 4 <= m; j += 4) {
            for (int k = 0; k < 4; ++k) g[k] = load_elem(h + j + k);
            walk<4, V>(x, n, g, pDst + j, k0 - j - 3, k1 - j - 3);
        }
        for (int k = 0; j + k < m; ++k) g[k] = load_elem(h + j + k);
        const int r = m & 3, first = k0 - j - (r - 1), last = k1 - j - (r - 1);
        switch (r) {
            case 3: walk<3, V>(x, n, g, pDst + j, first, last); break;
            case 2: walk<2, V>(x, n, g, pDst + j, first, last); break;
            case 1: walk<1, V>(x, n, g, pDst + j, first, last); break;
            default: break;
        }
    }
}

// ---------------------------------------------------------------------------
// Storing kernel (e9, float). Every output is
//   y[p] = sum over k of w[p + k] * h[m - 1 - k]
// over a window w, with the taps from the last towards the first: four at a
// time while four remain, each group added to the running sum (which starts
// at 0) in the order h[j+3], h[j+1], h[j+2], h[j]; then the m & 3 lowest
// taps one at a time, highest first.

// U independent sums of V::kN outputs each, tap by tap. The sums stay in
// registers: the loops over them are unrolled.
template <int U, class V>
inline void filter_block(const typename V::T* w, const typename V::T* h, int m, typename V::T* y) {
    using Vec = typename V::R;
    constexpr int kN = V::kN;
    Vec acc[U];
#pragma GCC unroll 8
    for (int u = 0; u < U; ++u) acc[u] = V::zero();
    auto step = [&](int t) __attribute__((always_inline)) {
        const Vec g = V::set1(load_elem(h + t));
        const typename V::T* src = w + (m - 1 - t);
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) {
            acc[u] = V::add(acc[u], V::mul(V::template load<false>(src + u * kN), g));
            asm("" : "+x"(acc[u]));  // one tap at a time: no loads hoisted into spills
        }
    };
    int j = m - 4;
    for (; j >= 0; j -= 4) step(j + 3), step(j + 1), step(j + 2), step(j);
    for (int t = j + 3; t >= 0; --t) step(t);
#pragma GCC unroll 8
    for (int u = 0; u < U; ++u) V::template store<false>(y + u * kN, acc[u]);
}

// The middle: count outputs from the window w, in blocks of 64, 32, 16, 8 and
// 4 outputs, then one at a time (the 1 to 3 left). Eight independent sums
// keep both adders busy through the add latency.
template <class V8, class V4>
void ownconvFilter_32f(const float* w, const float* h, float* y, int count, int m) {
    int p = 0;
    for (; p + 64 <= count; p += 64) filter_block<8, V8>(w + p, h, m, y + p);
    for (; p + 32 <= count; p += 32) filter_block<4, V8>(w + p, h, m, y + p);
    for (; p + 16 <= count; p += 16) filter_block<2, V8>(w + p, h, m, y + p);
    for (; p + 8 <= count; p += 8) filter_block<1, V8>(w + p, h, m, y + p);
    for (; p + 4 <= count; p += 4) filter_block<1, V4>(w + p, h, m, y + p);
    for (; p < count; ++p) {
        float acc = 0.0f;
        int j = m - 4;
        auto term = [&](int t) { return load_elem(w + p + (m - 1 - t)) * load_elem(h + t); };
        for (; j >= 0; j -= 4) {
            acc = acc + term(j + 3);
            acc = acc + term(j + 1);
            acc = acc + term(j + 2);
            acc = acc + term(j);
        }
        for (int t = j + 3; t >= 0; --t) acc = acc + term(t);
        store_elem(y + p, acc);
    }
}

// A triangle: count outputs whose windows run partly over zeros. Window
// position t holds src[t - lo] for lo <= t < lo + avail, else 0. Pieces of up
// to 64 outputs are staged with their window on the stack; the direct path
// passes m <= 256 (it serves T < 512 or m < 64), which the stage is sized for.
template <class V8, class V4>
void triangle(const float* src, int lo, int avail, const float* h, int m, float* y, int count) {
    constexpr int kPiece = 64, kMaxTaps = 256;
    alignas(32) float win[kPiece + kMaxTaps];
    for (int a = 0; a < count; a += kPiece) {
        const int c = std::min(kPiece, count - a);
        for (int t = 0; t < c + m - 1; ++t)
            win[t] = a + t >= lo && a + t < lo + avail ? load_elem(src + (a + t - lo)) : 0.0f;
        ownconvFilter_32f<V8, V4>(win, h, y + a, c, m);
    }
}

// The first m - 1 outputs: output j from x[0 .. j]. Reads stop at x[n - 1]
// (n is short of m - 1 only in a last chunk, whose right triangle rewrites
// the outputs that would use more).
template <class V8, class V4>
void ownconvLTriangle_32f(const float* x, int n, const float* h, float* pDst, int count) {
    triangle<V8, V4>(x, count, std::min(n, count), h, count + 1, pDst, count);
}

// The last m - 1 outputs, from the m - 1 samples at xTail.
template <class V8, class V4>
void ownconvRTriangle_32f(const float* xTail, const float* h, float* pDst, int count) {
    triangle<V8, V4>(xTail, 0, count, h, count + 1, pDst, count);
}

// Storing kernel: left triangle, middle (n - m + 1 full sums, none when
// n < m), right triangle, each stored. A chunk shorter than m - 1 has its
// right triangle read back into the chunk before it, within the caller's
// signal.
template <class V8, class V4>
void conv_store(const float* x, int n, const float* h, int m, float* pDst) {
    ownconvLTriangle_32f<V8, V4>(x, n, h, pDst, m - 1);
    if (n - m + 1 > 0) ownconvFilter_32f<V8, V4>(x, h, pDst + m - 1, n - m + 1, m);
    ownconvRTriangle_32f<V8, V4>(x + n - (m - 1), h, pDst + n, m - 1);
}

}  // namespace conv

// The tier's direct kernels under their names.
inline void ownConv_32f(const Orv32f* x, int n, const Orv32f* h, int m, Orv32f* pDst) {
    if constexpr (kTier == Tier::e9) conv::conv_store<simd::F8, simd::F4>(x, n, h, m, pDst);
    else conv::conv_accumulate<simd::F4>(x, n, h, m, pDst);
}
inline void ownConv_64f(const Orv64f* x, int n, const Orv64f* h, int m, Orv64f* pDst) {
    conv::conv_accumulate<simd::DWide>(x, n, h, m, pDst);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
