// Straight-line transforms of lengths 1 to 64: one body per family, compiled
// per tier and instantiated per precision and lane width.
//
// Complex kernels run N = N1 x N2 on interleaved data, kC complex values per
// register. Input element n2 + N2*n1 sits in register n1*NB + n2/kC (NB =
// N2/kC); a length-N1 butterfly across registers (stride N2) is followed by
// the twiddles W_N^(n2*k1) per lane, a kC x kC transpose of complex values
// that turns rows k1 into lanes, and a length-N2 butterfly across registers
// whose outputs X[k1 + N1*k2] land in natural order. No loop survives: every
// index is a template constant, so the register arrays become registers.
// Inverse kernels are the forward ones with the signs of the odd lanes of
// every rotation exchanged (conjugated twiddles).
//
// Real kernels produce (forward) or consume (inverse) the Perm layout and
// split sums and differences of samples N/2 apart: the sums form the real
// transform of half the length, the differences a complex transform of a
// quarter of the length after a rotation by W_N^n.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "internal/orv_simd.h"
#include "orvsfftk.h"

#define ORV_SMALL_INLINE inline __attribute__((always_inline))
#define ORV_SMALL_LAMBDA __attribute__((always_inline))

namespace orv::ORV_TIER_NS {
namespace {
namespace small {

// ---- Twiddle constants ----------------------------------------------------------

// cos(2 pi k / 64), k = 0..16: every twiddle of lengths up to 64 is one of
// these up to sign.
inline constexpr long double kCos64[17] = {
    1.000000000000000000000e+00L, 9.951847266721968862310e-01L, 9.807852804032304491191e-01L,
    9.569403357322088649311e-01L, 9.238795325112867561014e-01L, 8.819212643483550297151e-01L,
    8.314696123025452370809e-01L, 7.730104533627369607965e-01L, 7.071067811865475243819e-01L,
    6.343932841636454982026e-01L, 5.555702330196022247573e-01L, 4.713967368259976485720e-01L,
    3.826834323650897716962e-01L, 2.902846772544623676177e-01L, 1.950903220161282678705e-01L,
    9.801714032956060193471e-02L, 0.0L};

constexpr long double cos64(int k) {
    k &= 63;
    if (k <= 16) return kCos64[k];
    if (k <= 32) return -kCos64[32 - k];
    if (k <= 48) return -kCos64[k - 32];
    return kCos64[64 - k];
}

// W_N^e: exp(-2 pi i e/N) forward, exp(+2 pi i e/N) inverse.
template <class T, bool kInv>
struct Tw {
    static constexpr T re(int e, int n) { return static_cast<T>(cos64(e * (64 / n))); }
    static constexpr T im(int e, int n) {
        const long double s = cos64(e * (64 / n) - 16);  // sin
        return static_cast<T>(kInv ? s : -s);
    }
};

template <class T>
inline constexpr T kSqrt1_2 = static_cast<T>(kCos64[8]);

// ---- Complex lanes ----------------------------------------------------------------
// kC interleaved complex values per register; swap exchanges real and
// imaginary parts, swap_sel only in the lanes of a bit mask, transpose turns
// kC registers of kC values into their transpose.

template <class V>
struct CL;

template <>
struct CL<simd::F4> : simd::F4 {
    using E = Orv32fc;
    static constexpr int kC = 2;
    static R swap(R x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(2, 3, 0, 1)); }
    template <unsigned kMask>
    static R swap_sel(R x) {
        constexpr int lo = kMask & 1 ? 1 | 0 << 2 : 0 | 1 << 2;
        constexpr int hi = kMask & 2 ? 3 | 2 << 2 : 2 | 3 << 2;
        return _mm_shuffle_ps(x, x, lo | hi << 4);
    }
    static void transpose(R* r) {
        const R a = r[0], b = r[1];
        r[0] = _mm_movelh_ps(a, b);
        r[1] = _mm_movehl_ps(b, a);
    }
};

template <>
struct CL<simd::D2> : simd::D2 {
    using E = Orv64fc;
    static constexpr int kC = 1;
    static R swap(R x) { return _mm_shuffle_pd(x, x, 1); }
    template <unsigned kMask>
    static R swap_sel(R x) {
        if constexpr (kMask & 1) return swap(x);
        else return x;
    }
    static void transpose(R*) {}
};

// 256-bit lanes: templates, so that only e9 code instantiates them.
template <class X>
struct CL<simd::F8T<X>> : simd::F8T<X> {
    using R = __m256;
    using E = Orv32fc;
    static constexpr int kC = 4;
    static R swap(R x) { return _mm256_permute_ps(x, _MM_SHUFFLE(2, 3, 0, 1)); }
    template <unsigned kMask>
    static R swap_sel(R x) {
        auto i = [](int l, int odd) { return (kMask >> l & 1 ? 1 - odd : odd) + 2 * (l & 1); };
        return _mm256_permutevar_ps(
            x, _mm256_setr_epi32(i(0, 0), i(0, 1), i(1, 0), i(1, 1), i(2, 0), i(2, 1), i(3, 0), i(3, 1)));
    }
    // Each complex value moves as one double.
    static void transpose(R* r) {
        const __m256d r0 = _mm256_castps_pd(r[0]), r1 = _mm256_castps_pd(r[1]);
        const __m256d r2 = _mm256_castps_pd(r[2]), r3 = _mm256_castps_pd(r[3]);
        const __m256d t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
        const __m256d t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
        r[0] = _mm256_castpd_ps(_mm256_permute2f128_pd(t0, t2, 0x20));
        r[1] = _mm256_castpd_ps(_mm256_permute2f128_pd(t1, t3, 0x20));
        r[2] = _mm256_castpd_ps(_mm256_permute2f128_pd(t0, t2, 0x31));
        r[3] = _mm256_castpd_ps(_mm256_permute2f128_pd(t1, t3, 0x31));
    }
};

template <class X>
struct CL<simd::D4T<X>> : simd::D4T<X> {
    using R = __m256d;
    using E = Orv64fc;
    static constexpr int kC = 2;
    static R swap(R x) { return _mm256_permute_pd(x, 0x5); }
    template <unsigned kMask>
    static R swap_sel(R x) {
        return _mm256_permute_pd(x, (kMask & 1 ? 0x1 : 0x2) | (kMask & 2 ? 0x4 : 0x8));
    }
    static void transpose(R* r) {
        const R a = r[0], b = r[1];
        r[0] = _mm256_permute2f128_pd(a, b, 0x20);
        r[1] = _mm256_permute2f128_pd(a, b, 0x31);
    }
};

// ---- Rotations and butterflies ------------------------------------------------------

// Per-lane constants: 2*kC values f(lane, imaginary part?).
template <class T, int kC, class F>
constexpr std::array<T, 2 * kC> lanes(F f) {
    std::array<T, 2 * kC> a{};
    for (int i = 0; i < 2 * kC; ++i) a[i] = f(i / 2, i % 2);
    return a;
}

// Exponent of lane l of a twiddle register, and its quarter turns.
constexpr int tw_exp(int N, int k1, int n2, int l) { return ((n2 + l) * k1) % N; }
constexpr bool tw_none(int N, int k1, int n2, int kC) {
    for (int l = 0; l < kC; ++l)
        if (tw_exp(N, k1, n2, l) != 0) return false;
    return true;
}
constexpr bool tw_quarter(int N, int k1, int n2, int kC) {
    for (int l = 0; l < kC; ++l)
        if (4 * tw_exp(N, k1, n2, l) % N != 0) return false;
    return true;
}

template <class L, bool kInv>
struct Ops {
    using R = typename L::R;
    using T = typename L::T;
    static constexpr int kC = L::kC;

    template <const auto& kArr>
    static R cst() {
        return L::template load<true>(kArr.data());
    }

    // x times -i (forward) or +i (inverse): swap, then negate the imaginary
    // (forward) or the real (inverse) part.
    alignas(32) static constexpr std::array<T, 2 * kC> kRotSign =
        lanes<T, kC>([](int, int odd) { return (odd != 0) != kInv ? T(-0.0) : T(0.0); });
    static R rot(R x) { return L::bit_xor(L::swap(x), cst<kRotSign>()); }

    // Twiddles of lane l: W_N^((n2 + l) * k1).
    template <int N, int k1, int n2>
    struct Twiddle {
        static constexpr unsigned kSwapMask = [] {
            unsigned m = 0;
            for (int l = 0; l < kC; ++l) m |= (4 * tw_exp(N, k1, n2, l) / N & 1u) << l;
            return m;
        }();
        // Quarter turns: multiply lane l by (-i)^q forward, i^q inverse.
        alignas(32) static constexpr std::array<T, 2 * kC> kQSign = lanes<T, kC>([](int l, int odd) {
            const int q = 4 * tw_exp(N, k1, n2, l) / N;
            const int qq = kInv ? (4 - q) % 4 : q;  // as a power of -i
            const bool neg = qq == 2 || (qq == 1 && odd) || (qq == 3 && !odd);
            return neg ? T(-0.0) : T(0.0);
        });
        // x*w = x*(wr, wr) + swap(x)*(-wi, wi).
        alignas(32) static constexpr std::array<T, 2 * kC> kRe =
            lanes<T, kC>([](int l, int) { return Tw<T, kInv>::re(tw_exp(N, k1, n2, l), N); });
        alignas(32) static constexpr std::array<T, 2 * kC> kIm = lanes<T, kC>([](int l, int odd) {
            const T w = Tw<T, kInv>::im(tw_exp(N, k1, n2, l), N);
            return odd ? w : -w;
        });
        static ORV_SMALL_INLINE R apply(R x) {
            if constexpr (tw_none(N, k1, n2, kC)) return x;
            else if constexpr (tw_quarter(N, k1, n2, kC))
                return L::bit_xor(L::template swap_sel<kSwapMask>(x), cst<kQSign>());
            else return L::add(L::mul(x, cst<kRe>()), L::mul(L::swap(x), cst<kIm>()));
        }
    };

    static ORV_SMALL_INLINE void dft2(R& a, R& b) {
        const R t = a;
        a = L::add(t, b);
        b = L::sub(t, b);
    }
    static ORV_SMALL_INLINE void dft4(R& a0, R& a1, R& a2, R& a3) {
        const R s0 = L::add(a0, a2), d0 = L::sub(a0, a2);
        const R s1 = L::add(a1, a3), d1 = rot(L::sub(a1, a3));
        a0 = L::add(s0, s1);
        a2 = L::sub(s0, s1);
        a1 = L::add(d0, d1);
        a3 = L::sub(d0, d1);
    }
    // Radix 2 across stride 4, the W8 rotations, radix 4 in each half.
    static ORV_SMALL_INLINE void dft8(R& a0, R& a1, R& a2, R& a3, R& a4, R& a5, R& a6, R& a7) {
        const R h = L::set1(kSqrt1_2<T>);
        R b0 = L::add(a0, a4), b1 = L::add(a1, a5), b2 = L::add(a2, a6), b3 = L::add(a3, a7);
        R c0 = L::sub(a0, a4), c1 = L::sub(a1, a5), c2 = L::sub(a2, a6), c3 = L::sub(a3, a7);
        c1 = L::mul(L::add(c1, rot(c1)), h);
        c2 = rot(c2);
        c3 = L::mul(L::sub(rot(c3), c3), h);
        dft4(b0, b1, b2, b3);
        dft4(c0, c1, c2, c3);
        a0 = b0, a2 = b1, a4 = b2, a6 = b3;
        a1 = c0, a3 = c1, a5 = c2, a7 = c3;
    }
    // Length-n butterfly over x[o], x[o + s], ... in place, natural order.
    template <int n, int o, int s, size_t M>
    static ORV_SMALL_INLINE void dft(R (&x)[M]) {
        if constexpr (n == 2) dft2(x[o], x[o + s]);
        else if constexpr (n == 4) dft4(x[o], x[o + s], x[o + 2 * s], x[o + 3 * s]);
        else {
            static_assert(n == 8);
            dft8(x[o], x[o + s], x[o + 2 * s], x[o + 3 * s], x[o + 4 * s], x[o + 5 * s], x[o + 6 * s],
                 x[o + 7 * s]);
        }
    }
};

template <int N, class F>
ORV_SMALL_INLINE void static_for(F&& f) {
    [&]<int... I>(std::integer_sequence<int, I...>) ORV_SMALL_LAMBDA {
        (f(std::integral_constant<int, I>{}), ...);
    }(std::make_integer_sequence<int, N>{});
}

// Factor of a length: N1 of N = N1 x N2.
constexpr int across(int n) { return n <= 8 ? 2 : n == 64 ? 8 : 4; }

// Complex length-N transform on lanes V. Aligned and unaligned paths differ
// only in their loads and stores.
template <class V, int N, bool kInv, bool kScale, bool kAligned>
ORV_SMALL_INLINE void cfft_body(const typename CL<V>::E* pSrc, typename CL<V>::E* pDst, typename V::T scale) {
    using L = CL<V>;
    using O = Ops<L, kInv>;
    using R = typename L::R;
    using T = typename L::T;
    constexpr int kC = L::kC, N1 = across(N), N2 = N / N1, NB = N2 / kC;
    static_assert(N1 % kC == 0 && N2 % kC == 0);
    const T* src = reinterpret_cast<const T*>(pSrc);
    T* dst = reinterpret_cast<T*>(pDst);

    R x[N / kC];
    static_for<N / kC>([&](auto r) ORV_SMALL_LAMBDA { x[r] = L::template load<kAligned>(src + 2 * kC * r); });
    static_for<NB>([&](auto b) ORV_SMALL_LAMBDA { O::template dft<N1, b, NB>(x); });
    static_for<N1>([&](auto k1) ORV_SMALL_LAMBDA {
        static_for<NB>([&](auto b) ORV_SMALL_LAMBDA {
            x[k1 * NB + b] = O::template Twiddle<N, k1, b * kC>::apply(x[k1 * NB + b]);
        });
    });
    static_for<N1 / kC>([&](auto g) ORV_SMALL_LAMBDA {
        R t[N2];
        static_for<NB>([&](auto b) ORV_SMALL_LAMBDA {
            R blk[kC];
            static_for<kC>([&](auto i) ORV_SMALL_LAMBDA { blk[i] = x[(g * kC + i) * NB + b]; });
            L::transpose(blk);
            static_for<kC>([&](auto l) ORV_SMALL_LAMBDA { t[b * kC + l] = blk[l]; });
        });
        O::template dft<N2, 0, 1>(t);
        static_for<N2>([&](auto k2) ORV_SMALL_LAMBDA {
            R y = t[k2];
            if constexpr (kScale) y = L::mul(y, L::set1(scale));
            L::template store<kAligned>(dst + 2 * (g * kC + N1 * k2), y);
        });
    });
}

// Lengths 16 and up take the aligned path when both pointers are aligned to
// the register width.
template <class V, int N, bool kInv, bool kScale>
ORV_SMALL_INLINE void cfft(const typename CL<V>::E* pSrc, typename CL<V>::E* pDst, typename V::T scale) {
    if constexpr (N >= 16) {
        const auto bits = reinterpret_cast<uintptr_t>(pSrc) | reinterpret_cast<uintptr_t>(pDst);
        if (bits % V::kBytes == 0) return cfft_body<V, N, kInv, kScale, true>(pSrc, pDst, scale);
    }
    cfft_body<V, N, kInv, kScale, false>(pSrc, pDst, scale);
}

// Lengths 1 and 2, complex or real elements.
template <class E, class T, bool kScale>
ORV_SMALL_INLINE void copy1(const E* pSrc, E* pDst, T scale) {
    E v = *pSrc;
    if constexpr (kScale) {
        if constexpr (std::is_same_v<E, T>) v *= scale;
        else v.re *= scale, v.im *= scale;
    }
    *pDst = v;
}
template <class E, class T, bool kScale>
ORV_SMALL_INLINE void bfly2(const E* pSrc, E* pDst, T scale) {
    const E a = pSrc[0], b = pSrc[1];
    E s, d;
    if constexpr (std::is_same_v<E, T>) s = a + b, d = a - b;
    else s = {a.re + b.re, a.im + b.im}, d = {a.re - b.re, a.im - b.im};
    if constexpr (kScale) {
        if constexpr (std::is_same_v<E, T>) s *= scale, d *= scale;
        else s.re *= scale, s.im *= scale, d.re *= scale, d.im *= scale;
    }
    pDst[0] = s;
    pDst[1] = d;
}

// ---- Real kernels ---------------------------------------------------------------------
// Scalar complex lanes for the quarter-length complex step.

template <class T>
struct Cs {
    T re, im;
};
template <class T, bool kInv>
struct SOps {
    using C = Cs<T>;
    static ORV_SMALL_INLINE C add(C a, C b) { return {a.re + b.re, a.im + b.im}; }
    static ORV_SMALL_INLINE C sub(C a, C b) { return {a.re - b.re, a.im - b.im}; }
    static ORV_SMALL_INLINE C rot(C x) {  // -i x forward, +i x inverse
        if constexpr (kInv) return {-x.im, x.re};
        else return {x.im, -x.re};
    }
    // x times W_N^e; the eighth turns as (x +- rot x) * sqrt(1/2).
    template <int N, int e>
    static ORV_SMALL_INLINE C twiddle(C x) {
        constexpr int oct = 8 * e % N == 0 ? 8 * e / N : -1;
        if constexpr (e == 0) return x;
        else if constexpr (oct == 1) return mulr(add(x, rot(x)), kSqrt1_2<T>);
        else if constexpr (oct == 2) return rot(x);
        else if constexpr (oct == 3) return mulr(sub(rot(x), x), kSqrt1_2<T>);
        else {
            constexpr T wr = Tw<T, kInv>::re(e, N), wi = Tw<T, kInv>::im(e, N);
            return {x.re * wr - x.im * wi, x.re * wi + x.im * wr};
        }
    }
    static ORV_SMALL_INLINE C mulr(C x, T s) { return {x.re * s, x.im * s}; }
    static ORV_SMALL_INLINE void dft(C* x, std::integral_constant<int, 1>) { (void)x; }
    static ORV_SMALL_INLINE void dft(C* x, std::integral_constant<int, 2>) {
        const C a = x[0];
        x[0] = add(a, x[1]);
        x[1] = sub(a, x[1]);
    }
    static ORV_SMALL_INLINE void dft(C* x, std::integral_constant<int, 4>) {
        const C s0 = add(x[0], x[2]), d0 = sub(x[0], x[2]);
        const C s1 = add(x[1], x[3]), d1 = rot(sub(x[1], x[3]));
        x[0] = add(s0, s1), x[2] = sub(s0, s1), x[1] = add(d0, d1), x[3] = sub(d0, d1);
    }
    static ORV_SMALL_INLINE void dft(C* x, std::integral_constant<int, 8>) {
        C b[4], c[4];
        #pragma GCC unroll 32
        for (int j = 0; j < 4; ++j) b[j] = add(x[j], x[j + 4]), c[j] = sub(x[j], x[j + 4]);
        c[1] = twiddle<8, 1>(c[1]), c[2] = twiddle<8, 2>(c[2]), c[3] = twiddle<8, 3>(c[3]);
        dft(b, std::integral_constant<int, 4>{});
        dft(c, std::integral_constant<int, 4>{});
        #pragma GCC unroll 32
        for (int j = 0; j < 4; ++j) x[2 * j] = b[j], x[2 * j + 1] = c[j];
    }
};

// Forward: N real samples to Perm. X[2j] is the transform of x[n] + x[n+N/2];
// X[4j+1] the quarter-length transform of (z[n] - i z[n+N/4]) W_N^n with
// z[n] = x[n] - x[n+N/2]; X[4j+3] is the conjugate of X[N-4j-3].
template <class T, int N>
ORV_SMALL_INLINE void rfwd(const T* x, T* y) {
    if constexpr (N == 2) {
        y[0] = x[0] + x[1];
        y[1] = x[0] - x[1];
    } else {
        using S = SOps<T, false>;
        constexpr int M = N / 2, Q = N / 4;
        T a[M], e[M];
        Cs<T> u[Q];
        #pragma GCC unroll 32
        for (int n = 0; n < M; ++n) a[n] = x[n] + x[n + M];
        static_for<Q>([&](auto n) ORV_SMALL_LAMBDA {
            u[n] = S::template twiddle<N, n>(Cs<T>{x[n] - x[n + M], -(x[n + Q] - x[n + Q + M])});
        });
        rfwd<T, M>(a, e);
        S::dft(u, std::integral_constant<int, Q>{});
        y[0] = e[0], y[1] = e[1];
        #pragma GCC unroll 32
        for (int j = 1; j < Q; ++j) y[4 * j] = e[2 * j], y[4 * j + 1] = e[2 * j + 1];
        #pragma GCC unroll 32
        for (int j = 0; j < Q; ++j) {
            const int k = 4 * j + 1;
            if (k < M) y[2 * k] = u[j].re, y[2 * k + 1] = u[j].im;
            else y[2 * (N - k)] = u[j].re, y[2 * (N - k) + 1] = -u[j].im;
        }
    }
}

// Inverse, unnormalised: Perm to N samples. e = inverse of the even
// spectrum (half length); v = quarter-length inverse of X[4j+1], rotated by
// W_N^-m; o[m] = 2 Re, o[m+N/4] = -2 Im; x[n] = e[n] + o[n], x[n+N/2] = e[n] - o[n].
template <class T, int N>
ORV_SMALL_INLINE void rinv(const T* y, T* x) {
    if constexpr (N == 2) {
        x[0] = y[0] + y[1];
        x[1] = y[0] - y[1];
    } else {
        using S = SOps<T, true>;
        constexpr int M = N / 2, Q = N / 4;
        T ep[M], e[M], o[M];
        Cs<T> v[Q];
        ep[0] = y[0], ep[1] = y[1];
        #pragma GCC unroll 32
        for (int j = 1; j < Q; ++j) ep[2 * j] = y[4 * j], ep[2 * j + 1] = y[4 * j + 1];
        #pragma GCC unroll 32
        for (int j = 0; j < Q; ++j) {
            const int k = 4 * j + 1;
            if (k < M) v[j] = {y[2 * k], y[2 * k + 1]};
            else v[j] = {y[2 * (N - k)], -y[2 * (N - k) + 1]};
        }
        rinv<T, M>(ep, e);
        S::dft(v, std::integral_constant<int, Q>{});
        static_for<Q>([&](auto m) ORV_SMALL_LAMBDA {
            const Cs<T> w = S::template twiddle<N, m>(v[m]);
            o[m] = 2 * w.re;
            o[m + Q] = -2 * w.im;
        });
        #pragma GCC unroll 32
        for (int n = 0; n < M; ++n) x[n] = e[n] + o[n], x[n + M] = e[n] - o[n];
    }
}

// All loads precede the stores, so pSrc may equal pDst. The scale is the
// last multiplication before each store, except in the length-4 forward
// form, which scales the two partial sums of its edge pair.
template <class T, int N, bool kInv, bool kScale>
ORV_SMALL_INLINE void rfft(const T* pSrc, T* pDst, T scale) {
    T x[N], y[N];
    std::memcpy(x, pSrc, sizeof x);
    if constexpr (!kInv && kScale && N == 4) {
        const T s0 = (x[0] + x[2]) * scale, s1 = (x[1] + x[3]) * scale;
        y[0] = s0 + s1;
        y[1] = s0 - s1;
        y[2] = (x[0] - x[2]) * scale;
        y[3] = (x[3] - x[1]) * scale;
    } else {
        if constexpr (kInv) rinv<T, N>(x, y);
        else rfwd<T, N>(x, y);
        if constexpr (kScale)
            #pragma GCC unroll 32
            for (int i = 0; i < N; ++i) y[i] *= scale;
    }
    std::memcpy(pDst, y, sizeof y);
}

}  // namespace small
}  // namespace
}  // namespace orv::ORV_TIER_NS
