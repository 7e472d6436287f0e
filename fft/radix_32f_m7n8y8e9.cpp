// Single-precision radix-4/8 core: the fused form (natural order in through
// the Norm bit-reversal table, natural interleaved order out), the plain form
// (bit-reversed data in place, ending interleaved or in the working format),
// and their split-complex twins. One body serves every tier and direction;
// the pass plan and butterflies are in radix_passes.h.
//
// The passes run in place in one working buffer: the destination when it can
// hold the working format (16-byte aligned and, in the fused form, not the
// source), otherwise pWork. Only the last pass writes the destination, so a
// fused call with pDst == pSrc reads all of its input before writing.
#include <cstdint>

#include "fft/radix_passes.h"
#include "orvsfftk.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace r32 {

using simd::F4;

inline bool aligned16(const void* p) { return (reinterpret_cast<std::uintptr_t>(p) & 15) == 0; }

// Offset of element e's real part, e a multiple of L, in the working format.
template <int L>
R32_INLINE std::ptrdiff_t wf_off(std::ptrdiff_t e) {
    if constexpr (L == kLanes32f) return 2 * e;
    else return wf32_re(e);
}

// The working buffer is 16-byte aligned; 256-bit accesses do not rely on 32.
template <class V>
inline constexpr bool kAlignedLoad = V::kN == 4;

template <class V>
R32_INLINE Cx<V> load_cx(const float* p) {
    return {V::template load<kAlignedLoad<V>>(p), V::template load<kAlignedLoad<V>>(p + kLanes32f)};
}

// ---- Where a pass puts its outputs: put(e, y) stores elements e .. e+L-1 ------

// Working format; kA: the array is 16-byte aligned.
template <bool kA>
struct ToWorking {
    float* d;
    template <class V>
    R32_INLINE void put(std::ptrdiff_t e, Cx<V> y) const {
        constexpr bool a = kA && V::kN == 4;
        float* p = d + wf_off<V::kN>(e);
        V::template store<a>(p, y.re);
        V::template store<a>(p + kLanes32f, y.im);
    }
};

// Interleaved natural order.
template <bool kA>
struct ToInterleaved {
    float* d;
    template <class V>
    R32_INLINE void put(std::ptrdiff_t e, Cx<V> y) const {
        float* p = d + 2 * e;
        const auto lo = unpacklo(y.re, y.im), hi = unpackhi(y.re, y.im);
        if constexpr (V::kN == 4) {
            F4::store<kA>(p, lo);
            F4::store<kA>(p + 4, hi);
        } else {
            V::template store<false>(p, _mm256_permute2f128_ps(lo, hi, 0x20));
            V::template store<false>(p + 8, _mm256_permute2f128_ps(lo, hi, 0x31));
        }
    }
};

// Split arrays, natural order.
struct ToSplit {
    float* re;
    float* im;
    template <class V>
    R32_INLINE void put(std::ptrdiff_t e, Cx<V> y) const {
        V::template store<false>(re + e, y.re);
        V::template store<false>(im + e, y.im);
    }
};

// ---- Passes ---------------------------------------------------------------------

// e9: the second pass (radix 4 over four columns, one fixed twiddle row)
// joined to the first while its results are in registers. g0 = [u0 | u1] and
// g1 = [u2 | u3] hold the four blocks of four of one block of sixteen; the
// rows are spread over both 128-bit lanes, with the twiddles of the upper
// lane negated where a difference is formed, and the results are the two
// groups [y0 | y1], [y2 | y3] of that block. The operations are those of the
// separate pass.
struct Second4 {
    Cx<FV> t1, t2, t3;  // [W1 | W1], [W2 | -W2], [W3 | -W3]
};
template <class V = FV>
R32_INLINE Second4 second4_twiddles(const float* tw) {
    const __m256 neg = _mm256_insertf128_ps(_mm256_setzero_ps(), _mm_set1_ps(-0.0f), 1);
    auto b = [](const float* p) __attribute__((always_inline)) { return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(p)); };
    return {{b(tw), b(tw + 4)},
            {V::bit_xor(b(tw + 8), neg), V::bit_xor(b(tw + 12), neg)},
            {V::bit_xor(b(tw + 16), neg), V::bit_xor(b(tw + 20), neg)}};
}
template <bool kInv, class V = FV>
R32_INLINE void second4(Cx<V> g0, Cx<V> g1, const Second4& s, float* out) {
    const __m256 neg = _mm256_insertf128_ps(_mm256_setzero_ps(), _mm_set1_ps(-0.0f), 1);
    auto lo = [](__m256 a) __attribute__((always_inline)) { return _mm256_permute2f128_ps(a, a, 0x00); };
    auto hi = [](__m256 a) __attribute__((always_inline)) { return _mm256_permute2f128_ps(a, a, 0x11); };
    const Cx<V> u0{lo(g0.re), lo(g0.im)}, u1{hi(g0.re), hi(g0.im)};
    const Cx<V> u2{lo(g1.re), lo(g1.im)}, u3{hi(g1.re), hi(g1.im)};
    const Cx<V> a = cadd(u0, twiddle<V, kInv>(u1, s.t2));                               // [a0 | a1]
    const Cx<V> b = cadd(twiddle<V, kInv>(u2, s.t1), twiddle<V, kInv>(u3, s.t3));   // [a2 | a3]
    // [a2 | -i a3] forward, [a2 | i a3] inverse.
    Cx<V> r;
    if constexpr (kInv) r = {_mm256_blend_ps(b.re, V::bit_xor(b.im, neg), 0xF0), _mm256_blend_ps(b.im, b.re, 0xF0)};
    else r = {_mm256_blend_ps(b.re, b.im, 0xF0), _mm256_blend_ps(b.im, V::bit_xor(b.re, neg), 0xF0)};
    const Cx<V> y01 = cadd(a, r), y23 = csub(a, r);
    V::template store<false>(out, y01.re);
    V::template store<false>(out + 8, y01.im);
    V::template store<false>(out + 16, y23.re);
    V::template store<false>(out + 24, y23.im);
}


// First pass of the fused form: table entries 2i (holding 2 rev(2i)) name the
// columns j, j+1 of rows j, j+N/2, j+N/4, j+3N/4; column j's butterfly is
// block i, column j+1's block i + N/8. rows(j0, j1) loads the pairs at j0 (and
// at j1 into the upper 128-bit lane on e9, which takes two entries at once).
template <class V, bool kInv, class Rows>
void first_norm(float* w, int n, const Orv32u* tab, Rows rows, [[maybe_unused]] const float* tw2) {
    constexpr int K = V::kN / 4;
    const int q = n / 4, h = n / 2;
    auto one = [&](int p, Cx<V>& ya, Cx<V>& yb) __attribute__((always_inline)) {
        const int j0 = static_cast<int>(tab[p]);
        int j1 = j0;
        if constexpr (K == 2) j1 = static_cast<int>(tab[p + 2]);
        first_bfly<V, kInv>(rows(j0, j1), rows(j0 + h, j1 + h), rows(j0 + q, j1 + q), rows(j0 + 3 * q, j1 + 3 * q), ya,
                            yb);
    };
    if constexpr (kTier == Tier::e9) {
        if (tw2) {
            const Second4 s = second4_twiddles(tw2);
            for (int p = 0; p < q; p += 8) {
                Cx<V> ya0, yb0, ya1, yb1;
                one(p, ya0, yb0);
                one(p + 4, ya1, yb1);
                second4<kInv>(ya0, ya1, s, w + 4 * p);
                second4<kInv>(yb0, yb1, s, w + 4 * p + n);
            }
            return;
        }
    }
    for (int p = 0; p < q; p += 2 * K) {
        Cx<V> ya, yb;
        one(p, ya, yb);
        float* out = w + 4 * p;
        V::template store<kAlignedLoad<V>>(out, ya.re);
        V::template store<kAlignedLoad<V>>(out + kLanes32f, ya.im);
        V::template store<kAlignedLoad<V>>(out + n, yb.re);
        V::template store<kAlignedLoad<V>>(out + n + kLanes32f, yb.im);
    }
}

// First pass of the plain form: 4K consecutive blocks of four bit-reversed
// values; pairs(g0, g1) loads elements g0, g0+1 (and g1, g1+1 above on e9).
// Lane h takes blocks h and h+K as its columns A and B.
template <class V, bool kInv, class Pairs>
void first_plain(float* w, int n, Pairs pairs, [[maybe_unused]] const float* tw2) {
    constexpr int K = V::kN / 4;
    [[maybe_unused]] Second4 s;
    if constexpr (kTier == Tier::e9)
        if (tw2) s = second4_twiddles(tw2);
    for (int g = 0; g < n; g += 8 * K) {
        const auto l0 = pairs(g, g + 4), l1 = pairs(g + 2, g + 6);
        const auto l2 = pairs(g + 4 * K, g + 4 * K + 4), l3 = pairs(g + 4 * K + 2, g + 4 * K + 6);
        Cx<V> ya, yb;
        first_bfly<V, kInv>(lows(l0, l2), highs(l0, l2), lows(l1, l3), highs(l1, l3), ya, yb);
        float* out = w + 2 * g;
        if constexpr (kTier == Tier::e9) {
            if (tw2) {
                second4<kInv>(ya, yb, s, out);
                continue;
            }
        }
        V::template store<kAlignedLoad<V>>(out, ya.re);
        V::template store<kAlignedLoad<V>>(out + kLanes32f, ya.im);
        V::template store<kAlignedLoad<V>>(out + 8 * K, yb.re);
        V::template store<kAlignedLoad<V>>(out + 8 * K + kLanes32f, yb.im);
    }
}

template <class V, int R>
R32_INLINE void load_twiddles(Cx<V>* t, const float* p) {
    constexpr int L = V::kN;
#pragma GCC unroll 8
    for (int k = 0; k < R - 1; ++k)
        t[k] = {V::template load<L == 4>(p + 2 * L * k), V::template load<L == 4>(p + 2 * L * k + L)};
}

// One radix-R butterfly on columns e0 .. e0+L-1 of its block.
template <class V, int R, bool kInv, class Out>
R32_INLINE void butterfly(const float* w, std::ptrdiff_t e0, std::ptrdiff_t cols, const Cx<V>* t, const Out& out) {
    constexpr int L = V::kN;
    Cx<V> x[R];
    x[0] = load_cx<V>(w + wf_off<L>(e0));
#pragma GCC unroll 8
    for (int k = 1; k < R; ++k)
        x[k] = twiddle<V, kInv>(load_cx<V>(w + wf_off<L>(e0 + rev_digit<R>(k) * cols)), t[k - 1]);
    if constexpr (R == 4) dft4<V, kInv>(x);
    else dft8<V, kInv>(x);
#pragma GCC unroll 8
    for (int q = 0; q < R; ++q) out.template put<V>(e0 + q * cols, x[q]);
}

// A radix-R pass over blocks of `cols` columns, reading its twiddle rows from
// tw; returns the next pass's rows. With one column group (cols == L) the row
// stays in registers for the whole pass.
template <class V, int R, bool kInv, class Out>
const float* pass(const float* w, int n, int cols, const float* tw, Out out) {
    constexpr int L = V::kN;
    constexpr int kRow = (R - 1) * 2 * L;
    Cx<V> t[R - 1];
    const int span = R * cols;
    if (cols == L) {
        load_twiddles<V, R>(t, tw);
        for (int b = 0; b < n; b += span) butterfly<V, R, kInv>(w, b, cols, t, out);
    } else {
        for (int b = 0; b < n; b += span) {
            const float* p = tw;
            for (int j = 0; j < cols; j += L, p += kRow) {
                load_twiddles<V, R>(t, p);
                butterfly<V, R, kInv>(w, b + j, cols, t, out);
            }
        }
    }
    return tw + (cols / L) * kRow;
}

// Two radix-4 passes in one sweep: the first (cols columns, rows tw) joins
// four blocks four times over, the second (4 cols columns, its rows behind)
// joins those results; sixteen rows are held between the two, so the data
// cross memory once. The arithmetic is that of the two passes.
template <class V, bool kInv, class Out>
const float* pass44(const float* w, int n, int cols, const float* tw, Out out) {
    constexpr int L = V::kN;
    constexpr int kRow = 3 * 2 * L;
    const float* tw2 = tw + (cols / L) * kRow;
    const std::ptrdiff_t c = cols;
    for (int b = 0; b < n; b += 16 * cols) {
        const float* p = tw;
        for (int j = 0; j < cols; j += L, p += kRow) {
            Cx<V> t[3], x[16];
            load_twiddles<V, 4>(t, p);
#pragma GCC unroll 4
            for (int a = 0; a < 4; ++a) {
                Cx<V>* y = x + 4 * a;
                const std::ptrdiff_t e0 = b + j + 4 * a * c;
                y[0] = load_cx<V>(w + wf_off<L>(e0));
#pragma GCC unroll 4
                for (int k = 1; k < 4; ++k)
                    y[k] = twiddle<V, kInv>(load_cx<V>(w + wf_off<L>(e0 + rev_digit<4>(k) * c)), t[k - 1]);
                dft4<V, kInv>(y);
            }
#pragma GCC unroll 4
            for (int q = 0; q < 4; ++q) {
                const std::ptrdiff_t jq = j + q * c;
                load_twiddles<V, 4>(t, tw2 + (jq / L) * kRow);
                Cx<V> y[4];
                y[0] = x[q];
#pragma GCC unroll 4
                for (int k = 1; k < 4; ++k) y[k] = twiddle<V, kInv>(x[q + 4 * rev_digit<4>(k)], t[k - 1]);
                dft4<V, kInv>(y);
#pragma GCC unroll 4
                for (int r = 0; r < 4; ++r) out.template put<V>(b + jq + 4 * r * c, y[r]);
            }
        }
    }
    return tw2 + (4 * cols / L) * kRow;
}

template <bool kInv, class Out>
const float* run_pass(int radix, int cols, const float* w, int n, const float* tw, Out out) {
    if constexpr (kTier == Tier::e9) {
        if (cols >= 8)
            return radix == 8 ? pass<FV, 8, kInv>(w, n, cols, tw, out) : pass<FV, 4, kInv>(w, n, cols, tw, out);
    }
    return radix == 8 ? pass<F4, 8, kInv>(w, n, cols, tw, out) : pass<F4, 4, kInv>(w, n, cols, tw, out);
}

template <bool kInv, class Out>
const float* run_pass44(int cols, const float* w, int n, const float* tw, Out out) {
    if constexpr (kTier == Tier::e9) {
        if (cols >= 8) return pass44<FV, kInv>(w, n, cols, tw, out);
    }
    return pass44<F4, kInv>(w, n, cols, tw, out);
}

inline int order_of(int n) { return 31 - __builtin_clz(static_cast<unsigned>(n)); }

// First pass by `first(w)`, then the passes of the plan in place in w; the
// last one puts its outputs through `out`.
template <bool kInv, class First, class Out>
void core(float* w, int n, const void* pTwd, First first, Out out) {
    const int order = order_of(n);
    const float* tw = static_cast<const float*>(pTwd);
    int cols = 4, bits = 2;
    // e9 joins a radix-4 second pass that is not the last to the first.
    if (kTier == Tier::e9 && order >= 6 && next_radix(order, 2) == 4) {
        first(w, tw);
        tw += 24;
        cols = 16, bits = 4;
    } else {
        first(w, nullptr);
    }
    while (bits < order) {
        const int radix = next_radix(order, bits);
        bits += radix == 8 ? 3 : 2;
        // Two radix-4 passes in a row share a sweep (on e9 from eight columns).
        const bool pair = radix == 4 && bits < order && next_radix(order, bits) == 4 &&
                          (kTier != Tier::e9 || cols >= kLanes32f);
        if (pair) bits += 2;
        if (bits == order) tw = pair ? run_pass44<kInv>(cols, w, n, tw, out) : run_pass<kInv>(radix, cols, w, n, tw, out);
        else if (pair) tw = run_pass44<kInv>(cols, w, n, tw, ToWorking<true>{w});
        else tw = run_pass<kInv>(radix, cols, w, n, tw, ToWorking<true>{w});
        cols *= pair ? 16 : radix;
    }
}

template <bool kInv>
void norm(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork) {
    const float* src = reinterpret_cast<const float*>(pSrc);
    float* dst = reinterpret_cast<float*>(pDst);
    const bool dstAligned = aligned16(dst);
    float* w = pDst != pSrc && dstAligned ? dst : reinterpret_cast<float*>(pWork);
    auto first = [&](float* wb, const float* tw2) {
        if (aligned16(src))
            first_norm<FV, kInv>(wb, len, pBitRev,
                                 [src](int j0, int j1) __attribute__((always_inline)) { return load2<FV, true>(src + 2 * j0, src + 2 * j1); }, tw2);
        else
            first_norm<FV, kInv>(wb, len, pBitRev,
                                 [src](int j0, int j1) __attribute__((always_inline)) { return load2<FV, false>(src + 2 * j0, src + 2 * j1); }, tw2);
    };
    if (dstAligned) core<kInv>(w, len, pTwd, first, ToInterleaved<true>{dst});
    else core<kInv>(w, len, pTwd, first, ToInterleaved<false>{dst});
}

template <bool kInv>
void plain(Orv32fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved) {
    float* x = reinterpret_cast<float*>(pData);
    const bool al = aligned16(x);
    float* w = al ? x : reinterpret_cast<float*>(pWork);
    auto first = [&](float* wb, const float* tw2) {
        if (al) first_plain<FV, kInv>(wb, len, [x](int g0, int g1) __attribute__((always_inline)) { return load2<FV, true>(x + 2 * g0, x + 2 * g1); }, tw2);
        else first_plain<FV, kInv>(wb, len, [x](int g0, int g1) __attribute__((always_inline)) { return load2<FV, false>(x + 2 * g0, x + 2 * g1); }, tw2);
    };
    if (interleaved) {
        if (al) core<kInv>(w, len, pTwd, first, ToInterleaved<true>{x});
        else core<kInv>(w, len, pTwd, first, ToInterleaved<false>{x});
    } else {
        if (al) core<kInv>(w, len, pTwd, first, ToWorking<true>{x});
        else core<kInv>(w, len, pTwd, first, ToWorking<false>{x});
    }
}

// Split forms: the passes always run in pWork, the arrays being too short to
// hold the working format.
template <bool kInv>
void norm_split(const Orv32f* sr, const Orv32f* si, Orv32f* dr, Orv32f* di, int len, const void* pTwd,
                const Orv32u* pBitRev, Orv8u* pWork) {
    auto first = [&](float* wb, const float* tw2) {
        first_norm<FV, kInv>(wb, len, pBitRev,
                             [sr, si](int j0, int j1) __attribute__((always_inline)) { return split_pair2<FV>(sr + j0, si + j0, j1 - j0); }, tw2);
    };
    core<kInv>(reinterpret_cast<float*>(pWork), len, pTwd, first, ToSplit{dr, di});
}

template <bool kInv>
void plain_split(Orv32f* re, Orv32f* im, int len, const void* pTwd, Orv8u* pWork) {
    auto first = [&](float* wb, const float* tw2) {
        first_plain<FV, kInv>(wb, len,
                              [re, im](int g0, int g1) __attribute__((always_inline)) { return split_pair2<FV>(re + g0, im + g0, g1 - g0); }, tw2);
    };
    core<kInv>(reinterpret_cast<float*>(pWork), len, pTwd, first, ToSplit{re, im});
}

}  // namespace r32
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(orvs_cRadix4FwdNorm_32fc)(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                                  const Orv32u* pBitRev, Orv8u* pWork) {
    r32::norm<false>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_cRadix4InvNorm_32fc)(const Orv32fc* pSrc, Orv32fc* pDst, int len, const void* pTwd,
                                                  const Orv32u* pBitRev, Orv8u* pWork) {
    r32::norm<true>(pSrc, pDst, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_cRadix4Fwd_32fc)(Orv32fc* pData, int len, const void* pTwd, Orv8u* pWork,
                                              int interleaved) {
    r32::plain<false>(pData, len, pTwd, pWork, interleaved);
}
ORV_TIER_API void ORV_T(orvs_cRadix4Inv_32fc)(Orv32fc* pData, int len, const void* pTwd, Orv8u* pWork,
                                              int interleaved) {
    r32::plain<true>(pData, len, pTwd, pWork, interleaved);
}
ORV_TIER_API void ORV_T(orvs_crRadix4FwdNorm_32f)(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe,
                                                  Orv32f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                  Orv8u* pWork) {
    r32::norm_split<false>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_crRadix4InvNorm_32f)(const Orv32f* pSrcRe, const Orv32f* pSrcIm, Orv32f* pDstRe,
                                                  Orv32f* pDstIm, int len, const void* pTwd, const Orv32u* pBitRev,
                                                  Orv8u* pWork) {
    r32::norm_split<true>(pSrcRe, pSrcIm, pDstRe, pDstIm, len, pTwd, pBitRev, pWork);
}
ORV_TIER_API void ORV_T(orvs_crRadix4Fwd_32f)(Orv32f* pRe, Orv32f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                              int) {
    r32::plain_split<false>(pRe, pIm, len, pTwd, pWork);
}
ORV_TIER_API void ORV_T(orvs_crRadix4Inv_32f)(Orv32f* pRe, Orv32f* pIm, int len, const void* pTwd, Orv8u* pWork,
                                              int) {
    r32::plain_split<true>(pRe, pIm, len, pTwd, pWork);
}
