// Recombination of the real transforms and the moves between the two packed
// layouts, one body for both element types.
//
// A real signal x of N = 2H samples runs as the complex transform Z of its H
// pairs z[n] = x[2n] + i x[2n+1]. With k + m = H and theta = 2 pi k / N,
//   X[k] = (Z[k] + conj Z[m]) / 2 - i exp(-i theta) (Z[k] - conj Z[m]) / 2,
// and the inverse forms 2Z from X the same way with exp(+i theta). Each step
// takes the pair k, m = H - k and writes both, so front and back approach
// each other and meet at k = H/2; the work is in place (or from a source of
// the same shape). k = 0 (the edge pair R(0), R(N/2)) is the caller's.
//
// Tables (built by orvs_initTabTwdRealRec / CcsRec for the real order):
//   one level   entry k = 1 .. H/2. Forward (0.5 cos, 0.5 - 0.5 sin), inverse
//               (cos, -sin). 32f: the slot pair i, i+1 (i even) holds entries
//               i+2, i+1; 64f planar by pairs: first components of i+1, i+2,
//               then their second components.
//   two levels  from the tier's two-level order: F fine entries (cos, -sin)
//               of theta(1 .. F) arranged as above, then coarse entries
//               (cos, -sin) of theta(F j). Step k = F j + f takes the product
//               of fine f and coarse j; the forward halves the data instead
//               of the table. F is 1024 (32f) or 512 (64f).
#pragma once

#include <cstring>
#include <type_traits>

#include "fft/limits.h"
#include "internal/orv_simd.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace rec {

template <class T>
inline constexpr int kFine = sizeof(T) == 4 ? 1024 : 512;

// Components (a, b) of entry k (1-based) of a table in the pair arrangement.
template <class T>
inline void entry(const T* t, int k, T& a, T& b) {
    if constexpr (sizeof(T) == 4) {
        const int slot = (k & 1) ? k : k - 2;
        a = t[2 * slot], b = t[2 * slot + 1];
    } else {
        const int g = 4 * ((k - 1) >> 1), lane = (k - 1) & 1;
        a = t[g + lane], b = t[g + 2 + lane];
    }
}

template <class T>
inline bool two_level(int halfLen) {
    const int thr = fft_limits<T>().twoLevelRec;
    int order = 1;
    while ((1 << (order - 1)) < halfLen) ++order;
    return thr != 0 && order >= thr;
}

// One scalar lane, for the steps the vectors leave over.
template <class T>
struct One {
    using R = T;
    static constexpr int kN = 1;
    static R set1(T x) { return x; }
    static R add(R a, R b) { return a + b; }
    static R sub(R a, R b) { return a - b; }
    static R mul(R a, R b) { return a * b; }
};

// The steps k0 .. k0 + kN - 1 in planar registers: real and imaginary parts
// of the front values k, of the back values H - k, and the table components,
// all in the same lane order. 32f takes the lanes in descending k, the order
// in which the exchanged table pairs and the back values lie in memory;
// 64f in ascending k, as its planar table lies.
template <class T, class V>
struct Access;

template <class T>
struct Access<T, One<T>> {
    using R = T;
    static void load(const T* p, int i, R& re, R& im) { re = p[2 * i], im = p[2 * i + 1]; }
    static void store(T* p, int i, R re, R im) { p[2 * i] = re, p[2 * i + 1] = im; }
    static void front(const T* p, int k, R& re, R& im) { load(p, k, re, im); }
    static void back(const T* p, int m, R& re, R& im) { load(p, m, re, im); }
    static void put_front(T* p, int k, R re, R im) { store(p, k, re, im); }
    static void put_back(T* p, int m, R re, R im) { store(p, m, re, im); }
    static void table(const T* t, int f, R& a, R& b) { entry(t, f, a, b); }
};

template <>
struct Access<Orv32f, simd::F4> {
    using R = __m128;
    // p + 2k: values k .. k+3 -> lanes k+3, k+2, k+1, k.
    static void front(const float* p, int k, R& re, R& im) {
        const R f0 = _mm_loadu_ps(p + 2 * k), f1 = _mm_loadu_ps(p + 2 * k + 4);
        re = _mm_shuffle_ps(f1, f0, _MM_SHUFFLE(0, 2, 0, 2));
        im = _mm_shuffle_ps(f1, f0, _MM_SHUFFLE(1, 3, 1, 3));
    }
    static void put_front(float* p, int k, R re, R im) {
        const R lo = _mm_unpacklo_ps(re, im), hi = _mm_unpackhi_ps(re, im);  // k+3, k+2 | k+1, k
        _mm_storeu_ps(p + 2 * k, _mm_shuffle_ps(hi, hi, _MM_SHUFFLE(1, 0, 3, 2)));
        _mm_storeu_ps(p + 2 * k + 4, _mm_shuffle_ps(lo, lo, _MM_SHUFFLE(1, 0, 3, 2)));
    }
    // m = H - k: values m-3 .. m lie in lane order k+3 .. k already.
    static void back(const float* p, int m, R& re, R& im) {
        const R b0 = _mm_loadu_ps(p + 2 * (m - 3)), b1 = _mm_loadu_ps(p + 2 * (m - 1));
        re = _mm_shuffle_ps(b0, b1, _MM_SHUFFLE(2, 0, 2, 0));
        im = _mm_shuffle_ps(b0, b1, _MM_SHUFFLE(3, 1, 3, 1));
    }
    static void put_back(float* p, int m, R re, R im) {
        _mm_storeu_ps(p + 2 * (m - 3), _mm_unpacklo_ps(re, im));
        _mm_storeu_ps(p + 2 * (m - 1), _mm_unpackhi_ps(re, im));
    }
    // Slots f-1 .. f+2 hold entries f+1, f, f+3, f+2 (f odd).
    static void table(const float* t, int f, R& a, R& b) {
        const R t0 = _mm_loadu_ps(t + 2 * (f - 1)), t1 = _mm_loadu_ps(t + 2 * (f + 1));
        a = _mm_shuffle_ps(t1, t0, _MM_SHUFFLE(2, 0, 2, 0));
        b = _mm_shuffle_ps(t1, t0, _MM_SHUFFLE(3, 1, 3, 1));
    }
};

template <>
struct Access<Orv64f, simd::D2> {
    using R = __m128d;
    static void pair(const double* p, int i, int j, R& re, R& im) {
        const R x = _mm_loadu_pd(p + 2 * i), y = _mm_loadu_pd(p + 2 * j);
        re = _mm_unpacklo_pd(x, y), im = _mm_unpackhi_pd(x, y);
    }
    static void put_pair(double* p, int i, int j, R re, R im) {
        _mm_storeu_pd(p + 2 * i, _mm_unpacklo_pd(re, im));
        _mm_storeu_pd(p + 2 * j, _mm_unpackhi_pd(re, im));
    }
    static void front(const double* p, int k, R& re, R& im) { pair(p, k, k + 1, re, im); }
    static void put_front(double* p, int k, R re, R im) { put_pair(p, k, k + 1, re, im); }
    static void back(const double* p, int m, R& re, R& im) { pair(p, m, m - 1, re, im); }
    static void put_back(double* p, int m, R re, R im) { put_pair(p, m, m - 1, re, im); }
    // Entries f, f+1 (f odd): first components, then second components.
    static void table(const double* t, int f, R& a, R& b) {
        a = _mm_loadu_pd(t + 2 * (f - 1)), b = _mm_loadu_pd(t + 2 * (f - 1) + 2);
    }
};

template <class T>
using Wide = std::conditional_t<sizeof(T) == 4, simd::F4, simd::D2>;

enum class Kind { Fwd1, Fwd2, Inv };

// One step, lane-wise: (P, Q) is the table pair, (A, B) = (0.5 cos, 0.5 -
// 0.5 sin) for Fwd1, else (cos, -sin).
template <class V, Kind kKind>
inline void butterfly(typename V::R P, typename V::R Q, typename V::R& rk, typename V::R& ik, typename V::R& rm,
                      typename V::R& im) {
    using R = typename V::R;
    if constexpr (kKind == Kind::Fwd1) {
        const R td = V::sub(rk, rm), ts = V::add(ik, im);
        const R u = V::add(V::mul(P, ts), V::mul(Q, td)), v = V::sub(V::mul(Q, ts), V::mul(P, td));
        const R nrk = V::add(rm, u), nik = V::sub(v, im), nrm = V::sub(rk, u), nim = V::sub(v, ik);
        rk = nrk, ik = nik, rm = nrm, im = nim;
    } else if constexpr (kKind == Kind::Fwd2) {
        const R half = V::set1(0.5f);
        rk = V::mul(half, rk), ik = V::mul(half, ik), rm = V::mul(half, rm), im = V::mul(half, im);
        const R td = V::sub(rk, rm), ts = V::add(ik, im);
        const R u = V::add(V::mul(ts, P), V::mul(td, Q)), v = V::sub(V::mul(ts, Q), V::mul(td, P));
        const R sr = V::add(rk, rm), di = V::sub(ik, im);
        rk = V::add(sr, u), ik = V::add(di, v), rm = V::sub(sr, u), im = V::sub(v, di);
    } else {
        const R td = V::sub(rk, rm), ts = V::add(ik, im);
        const R f = V::add(V::mul(td, P), V::mul(ts, Q)), g = V::sub(V::mul(td, Q), V::mul(ts, P));
        const R sr = V::add(rk, rm), di = V::sub(ik, im);
        rk = V::add(sr, g), ik = V::add(di, f), rm = V::sub(sr, g), im = V::sub(f, di);
    }
}

// Steps k0 .. k0 + kN - 1: table pair of fine entry f (times the coarse
// (c, s) in two levels), the butterfly, the stores.
template <class T, class V, Kind kKind, bool kTwo>
inline void steps(const T* s, T* d, int h, int k0, const T* t, int f, T c, T sn) {
    using A = Access<T, V>;
    typename V::R P, Q, rk, ik, rm, im;
    A::table(t, f, P, Q);
    if constexpr (kTwo) {
        const typename V::R cv = V::set1(c), sv = V::set1(sn);
        const typename V::R C = V::sub(V::mul(P, cv), V::mul(Q, sv)), S = V::add(V::mul(P, sv), V::mul(Q, cv));
        P = C, Q = S;
    }
    A::front(s, k0, rk, ik);
    A::back(s, h - k0, rm, im);
    butterfly<V, kKind>(P, Q, rk, ik, rm, im);
    A::put_front(d, k0, rk, ik);
    A::put_back(d, h - k0, rm, im);
}

// Steps k = 1 .. H/2, vectors while all of a group lie below H/2 (so front
// and back never share a value within a group), one lane after that; the
// step k = H/2 meets itself and writes the same value twice.
template <class T, Kind kKind, bool kTwo>
void walk(const T* s, T* d, int h, const T* t) {
    using V = Wide<T>;
    constexpr int F = kFine<T>;
    const T* coarse = t + 2 * F;
    const int last = h / 2;
    auto twiddle = [&](int k, int& f, T& c, T& sn) {
        f = k, c = 1, sn = 0;
        if constexpr (kTwo) {
            const int j = (k - 1) / F;
            f = k - j * F, c = coarse[2 * j], sn = coarse[2 * j + 1];
        }
    };
    int k = 1;
    for (; k + V::kN <= last; k += V::kN) {
        int f;
        T c, sn;
        twiddle(k, f, c, sn);
        steps<T, V, kKind, kTwo>(s, d, h, k, t, f, c, sn);
    }
    for (; k <= last; ++k) {
        int f;
        T c, sn;
        twiddle(k, f, c, sn);
        steps<T, One<T>, kKind, kTwo>(s, d, h, k, t, f, c, sn);
    }
}

// Forward: the transform Z in d (H complex values) becomes X[1 .. H-1].
template <class T>
void forward(T* d, int halfLen, const T* t) {
    if (two_level<T>(halfLen)) walk<T, Kind::Fwd2, true>(d, d, halfLen, t);
    else walk<T, Kind::Fwd1, false>(d, d, halfLen, t);
}

// Inverse: X[1 .. H-1] in s becomes 2Z[1 .. H-1] in d (s may equal d).
template <class T>
void inverse(const T* s, T* d, int halfLen, const T* t) {
    if (two_level<T>(halfLen)) walk<T, Kind::Inv, true>(s, d, halfLen, t);
    else walk<T, Kind::Inv, false>(s, d, halfLen, t);
}

// Perm -> Pack in place: R(N/2) moves from index 1 to the end.
template <class T>
void perm_to_pack(T* d, int n) {
    if (n <= 2) return;
    const T last = d[1];
    std::memmove(d + 1, d + 2, sizeof(T) * static_cast<size_t>(n - 2));
    d[n - 1] = last;
}

// Pack in s -> Perm in d; s may equal d (the move runs from the end).
template <class T>
void pack_to_perm(const T* s, T* d, int n) {
    d[0] = s[0];
    if (n <= 1) return;
    const T last = s[n - 1];
    std::memmove(d + 2, s + 1, sizeof(T) * static_cast<size_t>(n - 2));
    d[1] = last;
}

}  // namespace rec
}  // namespace
}  // namespace orv::ORV_TIER_NS
