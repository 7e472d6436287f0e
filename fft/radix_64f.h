// Double-precision radix-4/8 decimation-in-time core, one body for every
// tier and both directions. The pass plan (first pass of 2 or 3 bits, then
// radix 8 or 4 per the tier's rule) is shared with the twiddle table builder,
// which lays the twiddles out in the order the passes read them.
//
// Pass structure: after `bits` bits the data hold 2^(order-bits) transforms of
// length m = 2^bits in consecutive blocks. A radix-R pass joins R consecutive
// blocks: the input of twiddle W_M^(j*k) (M = R*m, column j) is block rev(k),
// since the input is in binary bit-reversed order. The first pass needs no
// twiddles and works on one complex value per 128-bit register; the other
// passes are planar (see working_format_64f.h) on the tier's widest lanes.
// n8 reads one flat table, records j = 0..N/4 of W^j, W^2j, W^3j, with the
// stride N/M, and runs radix 4 after a first pass of 3 bits for odd orders.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/working_format_64f.h"
#include "internal/orv_simd.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace r64 {

using simd::D2;
using DV = simd::DWide;  // D4 on e9, D2 below
static_assert(DV::kN == kLanes64f);

inline constexpr double kSqrt1_2 = 0.70710678118654752440084436210485;

// ---- Pass plan --------------------------------------------------------------

// Bits of the first pass (it has no twiddles): 2 (radix 4) or 3 (radix 8).
constexpr int first_bits(int order) {
    if (order <= 3) return order;
    if constexpr (kTier == Tier::n8) return order % 2 ? 3 : 2;
    if constexpr (kTier == Tier::m7) return order == 4 || order == 6 ? 2 : 3;
    if constexpr (kTier == Tier::y8 || kTier == Tier::u8)
        return order == 4 || order == 5 || order == 7 || order == 8 || order == 10 ? 2 : 3;
    return order == 4 || order >= 11 ? 2 : 3;
}

// Radix of the pass that follows `bits` done bits.
constexpr int next_radix(int order, int bits) {
    const int r = order - bits;
    if (r < 3 || r == 4) return 4;
    bool eight = true;
    if constexpr (kTier == Tier::n8) eight = false;
    else if constexpr (kTier == Tier::y8 || kTier == Tier::u8) eight = r != 5 && r != 7;
    else if constexpr (kTier == Tier::e9)
        eight = order < 11 || (order == 11 && bits < 5) || (order > 11 && order % 2 == 1 && !(order >= 15 && bits == 8));
    return eight ? 8 : 4;
}

constexpr int log2_of(int len) {
    int o = 0;
    while ((1 << o) < len) ++o;
    return o;
}

// ---- Butterflies --------------------------------------------------------------
// pmi(a, b) = a + w*b and mmi(a, b) = a - w*b with w = -i forward, +i
// inverse; w8(b) = b times exp(-+i pi/4) without the factor, then times c.

template <class V>
struct Cx {
    typename V::R re, im;
};

// Planar: real parts and imaginary parts of kN elements in two registers.
template <class V, bool kInv>
struct Planar {
    using R = typename V::R;
    using C = Cx<V>;
    static C add(C a, C b) { return {V::add(a.re, b.re), V::add(a.im, b.im)}; }
    static C sub(C a, C b) { return {V::sub(a.re, b.re), V::sub(a.im, b.im)}; }
    static C pmi(C a, C b) {
        if constexpr (kInv) return {V::sub(a.re, b.im), V::add(a.im, b.re)};
        else return {V::add(a.re, b.im), V::sub(a.im, b.re)};
    }
    static C mmi(C a, C b) { return Planar<V, !kInv>::pmi(a, b); }
    static C w8(C b, R c) {
        if constexpr (kInv) return {V::mul(V::sub(b.re, b.im), c), V::mul(V::add(b.im, b.re), c)};
        else return {V::mul(V::add(b.re, b.im), c), V::mul(V::sub(b.im, b.re), c)};
    }
    static C twiddle(C x, R wr, R wi) {
        C y;
        if constexpr (kInv) simd::cmul_conj<V>(x.re, x.im, wr, wi, y.re, y.im);
        else simd::cmul<V>(x.re, x.im, wr, wi, y.re, y.im);
        return y;
    }
};

// Packed: one complex value (re, im) per register, for the first pass.
template <bool kInv>
struct Packed {
    using R = __m128d;
    using C = __m128d;
    static C swap(C b) { return _mm_shuffle_pd(b, b, 1); }
    static C neg_hi(C b) { return _mm_xor_pd(b, _mm_set_pd(-0.0, 0.0)); }
    static C add(C a, C b) { return _mm_add_pd(a, b); }
    static C sub(C a, C b) { return _mm_sub_pd(a, b); }
    // (a.re + b.im, a.im - b.re) and (a.re - b.im, a.im + b.re).
    static C plus_rot(C a, C b) { return _mm_add_pd(a, neg_hi(swap(b))); }
    static C minus_rot(C a, C b) { return _mm_addsub_pd(a, swap(b)); }
    static C pmi(C a, C b) { return kInv ? minus_rot(a, b) : plus_rot(a, b); }
    static C mmi(C a, C b) { return kInv ? plus_rot(a, b) : minus_rot(a, b); }
    static C w8(C b, R c) {
        if constexpr (kInv) return _mm_mul_pd(_mm_addsub_pd(b, swap(b)), c);
        else return _mm_mul_pd(_mm_add_pd(b, neg_hi(swap(b))), c);
    }
};

template <class O>
inline void dft4(typename O::C* x) {
    const auto a = O::add(x[0], x[2]), b = O::sub(x[0], x[2]);
    const auto c = O::add(x[1], x[3]), d = O::sub(x[1], x[3]);
    x[0] = O::add(a, c);
    x[2] = O::sub(a, c);
    x[1] = O::pmi(b, d);
    x[3] = O::mmi(b, d);
}

template <class O>
inline void dft8(typename O::C* x, typename O::R c) {
    typename O::C e[4] = {x[0], x[2], x[4], x[6]}, o[4] = {x[1], x[3], x[5], x[7]};
    dft4<O>(e);
    dft4<O>(o);
    x[0] = O::add(e[0], o[0]);
    x[4] = O::sub(e[0], o[0]);
    auto t = O::w8(o[1], c);
    x[1] = O::add(e[1], t);
    x[5] = O::sub(e[1], t);
    x[2] = O::pmi(e[2], o[2]);
    x[6] = O::mmi(e[2], o[2]);
    t = O::w8(o[3], c);
    x[3] = O::pmi(e[3], t);
    x[7] = O::mmi(e[3], t);
}

template <int R>
constexpr int rev_digit(int k) {
    if constexpr (R == 4) return ((k & 1) << 1) | (k >> 1);
    else return ((k & 1) << 2) | (k & 2) | (k >> 2);
}

// ---- Data access ------------------------------------------------------------

// A planar view: group-start element e has its real parts at re + s*e and its
// imaginary parts at im + s*e; s = 2 for the working format (im = re + lanes),
// s = 1 for split arrays. Pairs (e even) lie at re + s*e - e%lanes.
template <bool kA>
struct PlanarIO {
    double* re;
    double* im;
    std::ptrdiff_t s;
    std::ptrdiff_t off(std::ptrdiff_t e) const { return s * e - (s - 1) * (e % DV::kN); }
    // 256-bit lanes are only 16-byte aligned here: they never use aligned moves.
    template <class V>
    Cx<V> load(std::ptrdiff_t e) const {
        constexpr bool a = kA && V::kBytes == 16;
        return {V::template load<a>(re + s * e), V::template load<a>(im + s * e)};
    }
    template <class V>
    void store(std::ptrdiff_t e, Cx<V> x) const {
        constexpr bool a = kA && V::kBytes == 16;
        V::template store<a>(re + s * e, x.re);
        V::template store<a>(im + s * e, x.im);
    }
    void store_pair(std::ptrdiff_t e, __m128d y0, __m128d y1) const {
        D2::store<kA>(re + off(e), _mm_unpacklo_pd(y0, y1));
        D2::store<kA>(im + off(e), _mm_unpackhi_pd(y0, y1));
    }
};

inline PlanarIO<true> work_view(double* p) { return {p, p + DV::kN, 2}; }

// Interleaved complex output (natural order).
template <bool kA>
struct InterleavedOut {
    double* p;
    template <class V>
    void store(std::ptrdiff_t e, Cx<V> x) const {
        if constexpr (V::kN == 2) {
            D2::store<kA>(p + 2 * e, _mm_unpacklo_pd(x.re, x.im));
            D2::store<kA>(p + 2 * e + 2, _mm_unpackhi_pd(x.re, x.im));
        } else {
            const __m256d lo = _mm256_unpacklo_pd(x.re, x.im), hi = _mm256_unpackhi_pd(x.re, x.im);
            V::template store<false>(p + 2 * e, _mm256_permute2f128_pd(lo, hi, 0x20));
            V::template store<false>(p + 2 * e + 4, _mm256_permute2f128_pd(lo, hi, 0x31));
        }
    }
    void store_pair(std::ptrdiff_t e, __m128d y0, __m128d y1) const {
        D2::store<kA>(p + 2 * e, y0);
        D2::store<kA>(p + 2 * e + 2, y1);
    }
};

// Complex element e of an input, interleaved or split.
template <bool kA>
struct InterleavedIn {
    const double* p;
    __m128d get(std::ptrdiff_t e) const { return D2::load<kA>(p + 2 * e); }
};
struct SplitIn {
    const double* re;
    const double* im;
    __m128d get(std::ptrdiff_t e) const { return _mm_unpacklo_pd(_mm_load_sd(re + e), _mm_load_sd(im + e)); }
};

// First-pass sources: bit-reversed data read in blocks (plain form), or
// natural-order data read through the Norm table, whose entry k holds
// 2*rev(k) over order-2 bits (fused form).
template <class Src>
struct PlainSrc {
    Src src;
    template <int R>
    __m128d get(int b, int q, int) const {
        return src.get(static_cast<std::ptrdiff_t>(R) * b + rev_digit<R>(q));
    }
};
template <class Src>
struct NormSrc {
    Src src;
    const Orv32u* tab;
    template <int R>
    __m128d get(int b, int q, int n) const {
        const std::ptrdiff_t j = tab[R == 4 ? b : 2 * b] >> 1;
        return src.get(j + static_cast<std::ptrdiff_t>(q) * (n / R));
    }
};

// ---- Passes -----------------------------------------------------------------

// First pass: R-point transforms of the blocks, no twiddles.
template <bool kInv, int R, class In, class Out>
void first_pass(const In& in, const Out& out, int n) {
    using O = Packed<kInv>;
    const __m128d c = _mm_set1_pd(kSqrt1_2);
    for (int b = 0; b < n / R; ++b) {
        __m128d x[R];
        #pragma GCC unroll 8
        for (int q = 0; q < R; ++q) x[q] = in.template get<R>(b, q, n);
        if constexpr (R == 4) dft4<O>(x);
        else dft8<O>(x, c);
        #pragma GCC unroll 8
        for (int q = 0; q < R; q += 2) out.store_pair(static_cast<std::ptrdiff_t>(R) * b + q, x[q], x[q + 1]);
    }
}

// Twiddles of one column group for k = 1..R-1.
template <int R>
struct Twiddles {
    DV::R wr[R - 1], wi[R - 1];
};

// Sequential planar table: R-1 pairs of groups per column group.
template <int R>
inline void load_twiddles(Twiddles<R>& w, const double*& t) {
    constexpr bool kA = DV::kBytes == 16;
    #pragma GCC unroll 8
    for (int k = 0; k < R - 1; ++k) {
        w.wr[k] = DV::load<kA>(t + 2 * DV::kN * k);
        w.wi[k] = DV::load<kA>(t + 2 * DV::kN * k + DV::kN);
    }
    t += 2 * DV::kN * (R - 1);
}
// Flat table (n8): record r holds W^r, W^2r, W^3r interleaved; columns j and
// j+1 read records j*stride and (j+1)*stride.
template <class V = DV>
inline void load_flat(Twiddles<4>& w, const double* flat, std::ptrdiff_t j, std::ptrdiff_t stride) {
    const double* r0 = flat + 6 * j * stride;
    const double* r1 = r0 + 6 * stride;
    #pragma GCC unroll 8
    for (int k = 0; k < 3; ++k) {
        const __m128d a = _mm_load_pd(r0 + 2 * k), b = _mm_load_pd(r1 + 2 * k);
        if constexpr (V::kN == 2) {
            w.wr[k] = typename V::R(_mm_unpacklo_pd(a, b));
            w.wi[k] = typename V::R(_mm_unpackhi_pd(a, b));
        }
    }
}

// One radix-R pass from blocks of m to blocks of R*m, in place in `st`,
// results through `out` (the same view, or the last pass's destination).
template <bool kInv, int R, class Out>
void pass(const PlanarIO<true>& st, const Out& out, int n, int m, const double*& tw,
          std::ptrdiff_t flatStride) {
    using O = Planar<DV, kInv>;
    constexpr int G = DV::kN;
    const DV::R c = DV::set1(kSqrt1_2);
    const int M = R * m;
    for (int base = 0; base < n; base += M) {
        const double* t = tw;
        for (int j = 0; j < m; j += G) {
            Twiddles<R> w;
            if constexpr (kTier == Tier::n8 && R == 4) load_flat(w, tw, j, flatStride);
            else load_twiddles<R>(w, t);
            Cx<DV> x[R];
            x[0] = st.template load<DV>(base + j);
            #pragma GCC unroll 8
            for (int k = 1; k < R; ++k)
                x[k] = O::twiddle(st.template load<DV>(base + rev_digit<R>(k) * m + j), w.wr[k - 1], w.wi[k - 1]);
            if constexpr (R == 4) dft4<O>(x);
            else dft8<O>(x, c);
            #pragma GCC unroll 8
            for (int q = 0; q < R; ++q) out.template store<DV>(base + q * m + j, x[q]);
        }
    }
    if constexpr (kTier != Tier::n8) tw += 2 * (R - 1) * m;
}

// The whole transform: first pass from `in` into the working view `st`
// (or straight to `fin` when it is the only pass), then the passes of the
// plan, the last of which writes through `fin`.
template <bool kInv, class In, class Fin>
void transform(const In& in, const PlanarIO<true>& st, const Fin& fin, int order, const void* pTwd) {
    const int n = 1 << order;
    const int f = first_bits(order);
    if (f >= order) {
        if (f == 2) first_pass<kInv, 4>(in, fin, n);
        else first_pass<kInv, 8>(in, fin, n);
        return;
    }
    if (f == 2) first_pass<kInv, 4>(in, st, n);
    else first_pass<kInv, 8>(in, st, n);
    const double* tw = static_cast<const double*>(pTwd);
    for (int bits = f; bits < order;) {
        const int r = next_radix(order, bits);
        const int nb = r == 8 ? 3 : 2;
        const int m = 1 << bits;
        const std::ptrdiff_t stride = n / (r * m);
        const bool last = bits + nb >= order;
        if (r == 8) {
            if (last) pass<kInv, 8>(st, fin, n, m, tw, stride);
            else pass<kInv, 8>(st, st, n, m, tw, stride);
        } else {
            if (last) pass<kInv, 4>(st, fin, n, m, tw, stride);
            else pass<kInv, 4>(st, st, n, m, tw, stride);
        }
        bits += nb;
    }
}

inline bool aligned16(const void* p) { return (reinterpret_cast<std::uintptr_t>(p) & 15) == 0; }

// Runs f with the compile-time flag b.
template <class F>
inline void with_flag(bool b, F&& f) {
    if (b) f(std::true_type{});
    else f(std::false_type{});
}

// ---- Entries ---------------------------------------------------------------

using WorkIO = PlanarIO<true>;

// Fused form, interleaved: works in pDst when it differs from pSrc and is
// 16-byte aligned, else in pWork; only the last pass writes pDst.
template <bool kInv>
void norm_c(const Orv64fc* pSrc, Orv64fc* pDst, int len, const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork) {
    auto* dst = reinterpret_cast<double*>(pDst);
    const auto* src = reinterpret_cast<const double*>(pSrc);
    const bool inDst = pDst != pSrc && aligned16(pDst);
    const WorkIO st = work_view(inDst ? dst : reinterpret_cast<double*>(pWork));
    with_flag(aligned16(pSrc), [&](auto sa) {
        with_flag(aligned16(pDst), [&](auto da) {
            const NormSrc<InterleavedIn<decltype(sa)::value>> in{{src}, pBitRev};
            transform<kInv>(in, st, InterleavedOut<decltype(da)::value>{dst}, log2_of(len), pTwd);
        });
    });
}

// Plain form, interleaved: works in pData when it is 16-byte aligned, else in
// pWork. interleaved 0 leaves the working format in pData.
template <bool kInv>
void plain_c(Orv64fc* pData, int len, const void* pTwd, Orv8u* pWork, int interleaved) {
    auto* data = reinterpret_cast<double*>(pData);
    const bool inPlace = aligned16(pData);
    const WorkIO st = work_view(inPlace ? data : reinterpret_cast<double*>(pWork));
    with_flag(inPlace, [&](auto a) {
        constexpr bool kA = decltype(a)::value;
        const PlainSrc<InterleavedIn<kA>> in{{data}};
        if (interleaved) transform<kInv>(in, st, InterleavedOut<kA>{data}, log2_of(len), pTwd);
        else transform<kInv>(in, st, PlanarIO<kA>{data, data + DV::kN, 2}, log2_of(len), pTwd);
    });
}

// Split forms: the destination arrays are the planar view when both are
// 16-byte aligned (and, fused, differ from the sources); else pWork holds the
// working format. The result is natural order in the arrays either way.
template <bool kInv>
void norm_split(const Orv64f* pSrcRe, const Orv64f* pSrcIm, Orv64f* pDstRe, Orv64f* pDstIm, int len,
                const void* pTwd, const Orv32u* pBitRev, Orv8u* pWork) {
    const bool da = aligned16(pDstRe) && aligned16(pDstIm);
    const bool inDst = da && pDstRe != pSrcRe && pDstIm != pSrcIm && pDstRe != pSrcIm && pDstIm != pSrcRe;
    const WorkIO st = inDst ? WorkIO{pDstRe, pDstIm, 1} : work_view(reinterpret_cast<double*>(pWork));
    const NormSrc<SplitIn> in{{pSrcRe, pSrcIm}, pBitRev};
    with_flag(da, [&](auto a) {
        transform<kInv>(in, st, PlanarIO<decltype(a)::value>{pDstRe, pDstIm, 1}, log2_of(len), pTwd);
    });
}

template <bool kInv>
void plain_split(Orv64f* pRe, Orv64f* pIm, int len, const void* pTwd, Orv8u* pWork) {
    const bool a16 = aligned16(pRe) && aligned16(pIm);
    const WorkIO st = a16 ? WorkIO{pRe, pIm, 1} : work_view(reinterpret_cast<double*>(pWork));
    const PlainSrc<SplitIn> in{{pRe, pIm}};
    with_flag(a16, [&](auto a) {
        transform<kInv>(in, st, PlanarIO<decltype(a)::value>{pRe, pIm, 1}, log2_of(len), pTwd);
    });
}

}  // namespace r64
}  // namespace
}  // namespace orv::ORV_TIER_NS
