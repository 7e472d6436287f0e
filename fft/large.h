// Blocked large transform, one body for both element types and directions.
//
// The data are a decimation in time on bit-reversed input. Step A reorders
// pDst into bit-reversed order (blocked through two cache blocks in the work
// buffer from the tier's blocked-reordering order). Step B transforms the
// 2^blk consecutive sub-arrays of length 2^sub with the plain radix core,
// leaving them in the working format and scaled; a sub-array above the
// medium range recurses one level deeper. Step C combines them: `cols`
// columns of all 2^blk rows are gathered into the work buffer, pass through
// the remaining radix-8 and radix-4 levels there and are scattered back, in
// interleaved form at the top level and in the working format below it.
//
// Passes in the buffer (layout of the level tables in tables_large.cpp): a
// pass with `cur` columns per block joins R consecutive blocks; block p holds
// the sub-transform Y_rev(p), and column u carries the twiddles W_M^(j k) of
// the table's lane group. The last radix-4 pass of a level reads W1, W2 for
// the first half of its columns and rotates them for the second half:
// W_M^(j + M/8) = W_M^j e^(-i pi/4), W_M^(2j + M/4) = -i W_M^2j.
//
// All passes use 128-bit lanes (4 floats, 2 doubles), the width of the
// tables' lane groups; a lane group lies inside one group of the working
// format on every tier, e9's wider groups included.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "fft/limits.h"
#include "fft/spec_record.h"
#include "fft/working_format.h"
#include "fft/working_format_64f.h"
#include "internal/orv_simd.h"
#include "orvs.h"
#include "orvsfftk.h"

ORV_TIER_DECLARE(orvs_cRadix4Fwd_32fc)
ORV_TIER_DECLARE(orvs_cRadix4Inv_32fc)
ORV_TIER_DECLARE(orvs_cRadix4Fwd_64fc)
ORV_TIER_DECLARE(orvs_cRadix4Inv_64fc)
ORV_TIER_DECLARE(orvs_BitRev1_C)
ORV_TIER_DECLARE(orvs_BitRev2_C)
ORV_TIER_DECLARE(orvs_BitRev1_Z)
ORV_TIER_DECLARE(orvs_BitRev2_Z)
ORV_TIER_DECLARE(orvs_cBitRev1_Blk)
ORV_TIER_DECLARE(orvs_zBitRev1_Blk)
ORV_TIER_DECLARE(orvsMulC_32f_I)
ORV_TIER_DECLARE(orvsMulC_64f_I)
ORV_TIER_DECLARE(orvsCopy_8u)

namespace orv::ORV_TIER_NS {
namespace {
namespace large {

using std::ptrdiff_t;

template <class T>
struct Elem;
template <>
struct Elem<float> {
    using C = Orv32fc;
    using V = simd::F4;
    static constexpr int kLanes = kLanes32f;  // working-format group
    static constexpr float kC = 0.70710677f;
};
template <>
struct Elem<double> {
    using C = Orv64fc;
    using V = simd::D2;
    static constexpr int kLanes = kLanes64f;
    static constexpr double kC = 0.70710678118654752440;
};

template <class T>
constexpr ptrdiff_t wf_re(ptrdiff_t e) {
    return 2 * e - e % Elem<T>::kLanes;
}

// A lane group of G consecutive columns in planar form.
template <class T>
struct Cx {
    using V = typename Elem<T>::V;
    using R = typename V::R;
    static constexpr int G = V::kN;
    R re, im;

    static R ld(const T* p) { return V::template load<false>(p); }
    static void st(T* p, R r) { V::template store<false>(p, r); }
    static Cx load(const T* p, ptrdiff_t imOff) { return {ld(p), ld(p + imOff)}; }

    friend Cx operator+(Cx a, Cx b) { return {V::add(a.re, b.re), V::add(a.im, b.im)}; }
    friend Cx operator-(Cx a, Cx b) { return {V::sub(a.re, b.re), V::sub(a.im, b.im)}; }
    // x * w (forward) or x * conj(w) (inverse).
    template <bool kInv>
    Cx mul(Cx w) const {
        Cx r;
        if constexpr (kInv) simd::cmul_conj<V>(re, im, w.re, w.im, r.re, r.im);
        else simd::cmul<V>(re, im, w.re, w.im, r.re, r.im);
        return r;
    }
    // x * (-i) forward, x * i inverse.
    template <bool kInv>
    Cx rot() const {
        if constexpr (kInv) return {V::sub(V::zero(), im), re};
        else return {im, V::sub(V::zero(), re)};
    }
    // x * e^(-i pi/4) forward, x * e^(i pi/4) inverse.
    template <bool kInv>
    Cx rot8() const {
        const R c = V::set1(Elem<T>::kC);
        if constexpr (kInv) return {V::mul(V::sub(re, im), c), V::mul(V::add(re, im), c)};
        else return {V::mul(V::add(re, im), c), V::mul(V::sub(im, re), c)};
    }
};

// Element layouts the passes read and write, by element index e (a multiple
// of G): the working format, split arrays, interleaved complex.
template <class T>
struct WorkIn {
    const T* p;
    Cx<T> operator()(ptrdiff_t e) const { return Cx<T>::load(p + wf_re<T>(e), Elem<T>::kLanes); }
};
template <class T>
struct WorkOut {
    T* p;
    void operator()(ptrdiff_t e, Cx<T> x) const {
        T* q = p + wf_re<T>(e);
        Cx<T>::st(q, x.re);
        Cx<T>::st(q + Elem<T>::kLanes, x.im);
    }
};
template <class T>
struct SplitIn {
    const T *re, *im;
    Cx<T> operator()(ptrdiff_t e) const { return {Cx<T>::ld(re + e), Cx<T>::ld(im + e)}; }
};
template <class T>
struct SplitOut {
    T *re, *im;
    void operator()(ptrdiff_t e, Cx<T> x) const {
        Cx<T>::st(re + e, x.re);
        Cx<T>::st(im + e, x.im);
    }
};
template <class T>
struct IlvOut {
    T* p;
    void operator()(ptrdiff_t e, Cx<T> x) const {
        T* q = p + 2 * e;
        if constexpr (sizeof(T) == 4) {
            Cx<T>::st(q, _mm_unpacklo_ps(x.re, x.im));
            Cx<T>::st(q + 4, _mm_unpackhi_ps(x.re, x.im));
        } else {
            Cx<T>::st(q, _mm_unpacklo_pd(x.re, x.im));
            Cx<T>::st(q + 2, _mm_unpackhi_pd(x.re, x.im));
        }
    }
};

// One radix-4 level: `count` groups of four blocks of `cur` columns. With
// count 1 it is the last level of its table (W1, W2 for half the columns).
template <class T, bool kInv, class In, class Out>
void pass4(In in, Out out, ptrdiff_t cur, ptrdiff_t count, const T* tw) {
    using X = Cx<T>;
    constexpr int G = X::G;
    if (count == 1) {
        const ptrdiff_t half = cur / 2;
        for (ptrdiff_t u = 0; u < cur; u += G) {
            const bool second = u >= half;
            const T* t = tw + (second ? u - half : u) * 4;
            X w1 = X::load(t, G), w2 = X::load(t + 2 * G, G);
            if (second) {
                w1 = w1.template rot8<false>();
                w2 = w2.template rot<false>();
            }
            const X y0 = in(u), y2 = in(cur + u), y1 = in(2 * cur + u), y3 = in(3 * cur + u);
            const X a = y2.template mul<kInv>(w2), b = y3.template mul<kInv>(w2);
            const X t0 = y0 + a, t1 = y0 - a;
            const X s = (y1 + b).template mul<kInv>(w1), v = (y1 - b).template mul<kInv>(w1).template rot<kInv>();
            out(u, t0 + s);
            out(cur + u, t1 + v);
            out(2 * cur + u, t0 - s);
            out(3 * cur + u, t1 - v);
        }
        return;
    }
    for (ptrdiff_t g = 0; g < count; ++g) {
        const ptrdiff_t base = g * 4 * cur;
        for (ptrdiff_t u = 0; u < cur; u += G) {
            const T* t = tw + u * 6;
            const X w1 = X::load(t, G), w2 = X::load(t + 2 * G, G), w3 = X::load(t + 4 * G, G);
            const ptrdiff_t e = base + u;
            const X a = in(e), c = in(e + cur).template mul<kInv>(w2);
            const X b = in(e + 2 * cur).template mul<kInv>(w1), d = in(e + 3 * cur).template mul<kInv>(w3);
            const X s0 = a + c, s1 = a - c, s2 = b + d, s3 = (b - d).template rot<kInv>();
            out(e, s0 + s2);
            out(e + cur, s1 + s3);
            out(e + 2 * cur, s0 - s2);
            out(e + 3 * cur, s1 - s3);
        }
    }
}

// One radix-8 level: `count` groups of eight blocks of `cur` columns, seven
// twiddles per lane group.
template <class T, bool kInv, class In, class Out>
void pass8(In in, Out out, ptrdiff_t cur, ptrdiff_t count, const T* tw) {
    using X = Cx<T>;
    constexpr int G = X::G;
    constexpr int kRev[8] = {0, 4, 2, 6, 1, 5, 3, 7};
    for (ptrdiff_t g = 0; g < count; ++g) {
        const ptrdiff_t base = g * 8 * cur;
        for (ptrdiff_t u = 0; u < cur; u += G) {
            const T* t = tw + u * 14;
            const ptrdiff_t e = base + u;
            X b[8];
            b[0] = in(e);
            for (int k = 1; k < 8; ++k) b[k] = in(e + kRev[k] * cur).template mul<kInv>(X::load(t + (k - 1) * 2 * G, G));
            // 8-point DFT: two 4-point DFTs of the even and odd inputs.
            X ev[4], od[4];
            for (int h = 0; h < 2; ++h) {
                X* r = h ? od : ev;
                const X s0 = b[h] + b[h + 4], s1 = b[h] - b[h + 4];
                const X s2 = b[h + 2] + b[h + 6], s3 = (b[h + 2] - b[h + 6]).template rot<kInv>();
                r[0] = s0 + s2, r[1] = s1 + s3, r[2] = s0 - s2, r[3] = s1 - s3;
            }
            od[1] = od[1].template rot8<kInv>();
            od[2] = od[2].template rot<kInv>();
            od[3] = od[3].template rot8<kInv>().template rot<kInv>();
            for (int q = 0; q < 4; ++q) {
                out(e + q * cur, ev[q] + od[q]);
                out(e + (q + 4) * cur, ev[q] - od[q]);
            }
        }
    }
}

// ---- Gather and scatter --------------------------------------------------------

template <class T>
void merge(const typename Elem<T>::C* src, typename Elem<T>::C* buf, ptrdiff_t stride, ptrdiff_t rows,
           ptrdiff_t cols) {
    for (ptrdiff_t r = 0; r < rows; ++r)
        std::memcpy(buf + r * cols, src + r * stride, static_cast<size_t>(cols) * sizeof(*buf));
}

// With interleave 1 the buffer is in the working format (relative to its
// start) and the rows come out interleaved.
template <class T>
void split(typename Elem<T>::C* dst, const typename Elem<T>::C* buf, ptrdiff_t stride, ptrdiff_t rows,
           ptrdiff_t cols, bool interleave) {
    if (!interleave) {
        for (ptrdiff_t r = 0; r < rows; ++r)
            std::memcpy(dst + r * stride, buf + r * cols, static_cast<size_t>(cols) * sizeof(*buf));
        return;
    }
    const T* b = reinterpret_cast<const T*>(buf);
    constexpr int G = Cx<T>::G;
    for (ptrdiff_t r = 0; r < rows; ++r) {
        T* d = reinterpret_cast<T*>(dst + r * stride);
        const ptrdiff_t e0 = r * cols;
        if (cols % G == 0) {
            const WorkIn<T> in{b};
            const IlvOut<T> out{d - 2 * e0};
            for (ptrdiff_t u = 0; u < cols; u += G) out(e0 + u, in(e0 + u));
        } else {
            for (ptrdiff_t u = 0; u < cols; ++u) {
                d[2 * u] = b[wf_re<T>(e0 + u)];
                d[2 * u + 1] = b[wf_re<T>(e0 + u) + Elem<T>::kLanes];
            }
        }
    }
}

// Split arrays to and from a buffer in the working format.
template <class T>
void merge_split(const T* re, const T* im, T* buf, ptrdiff_t stride, ptrdiff_t rows, ptrdiff_t cols) {
    for (ptrdiff_t r = 0; r < rows; ++r)
        for (ptrdiff_t u = 0; u < cols; ++u) {
            const ptrdiff_t o = wf_re<T>(r * cols + u);
            buf[o] = re[r * stride + u];
            buf[o + Elem<T>::kLanes] = im[r * stride + u];
        }
}
template <class T>
void split_split(T* re, T* im, const T* buf, ptrdiff_t stride, ptrdiff_t rows, ptrdiff_t cols) {
    for (ptrdiff_t r = 0; r < rows; ++r)
        for (ptrdiff_t u = 0; u < cols; ++u) {
            const ptrdiff_t o = wf_re<T>(r * cols + u);
            re[r * stride + u] = buf[o];
            im[r * stride + u] = buf[o + Elem<T>::kLanes];
        }
}

// Elements [0, n) of p from the working format to interleaved complex, in
// place, one group of the format at a time (n a multiple of its lanes).
template <class T>
void working_to_interleaved(T* p, ptrdiff_t n) {
    constexpr int kL = Elem<T>::kLanes;
    for (ptrdiff_t e = 0; e < n; e += kL) {
        T g[2 * kL];
        T* q = p + 2 * e;
        std::memcpy(g, q, sizeof(g));
        for (int l = 0; l < kL; ++l) q[2 * l] = g[l], q[2 * l + 1] = g[kL + l];
    }
}

// The exported level kernels: working format in and out, interleaved out
// (Fact8_Last), split arrays in and out (cr Fact8_Last).
template <class T, bool kInv, int kRadix>
void fact(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    const WorkIn<T> in{static_cast<const T*>(pIn)};
    const WorkOut<T> out{static_cast<T*>(pOut)};
    if constexpr (kRadix == 4) pass4<T, kInv>(in, out, cols, count, static_cast<const T*>(pTwd));
    else pass8<T, kInv>(in, out, cols, count, static_cast<const T*>(pTwd));
}
template <class T, bool kInv>
void fact8_last(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    fact<T, kInv, 8>(pIn, pOut, cols, count, pTwd);
    working_to_interleaved(static_cast<T*>(pOut), ptrdiff_t{8} * cols * count);
}
template <class T, bool kInv>
void fact8_last_split(const T* inRe, const T* inIm, T* outRe, T* outIm, int cols, int count, const void* pTwd) {
    pass8<T, kInv>(SplitIn<T>{inRe, inIm}, SplitOut<T>{outRe, outIm}, cols, count, static_cast<const T*>(pTwd));
}

// ---- The transform -----------------------------------------------------------------

template <class T, bool kInv>
struct Transform {
    using C = typename Elem<T>::C;
    static constexpr const FftLimits& L = fft_limits<T>();
    static constexpr bool kDouble = sizeof(T) == 8;

    const OrvFFTSpec* spec;
    Orv8u* work;
    bool scale;
    T factor;

    static int blk(int order) { return L.blk[order - 9]; }
    static int buf(int order) { return L.buf[order - 9]; }

    static void bitrev1(C* d, int n, const Orv32u* t) {
        if constexpr (kDouble) ORV_T(orvs_BitRev1_Z)(d, n, t);
        else ORV_T(orvs_BitRev1_C)(d, n, t);
    }
    static void bitrev2(const C* s, C* d, int n, const Orv32u* t) {
        if constexpr (kDouble) ORV_T(orvs_BitRev2_Z)(s, d, n, t);
        else ORV_T(orvs_BitRev2_C)(s, d, n, t);
    }
    static void bitrev_blk(C* b, int n, const Orv32u* t) {
        if constexpr (kDouble) ORV_T(orvs_zBitRev1_Blk)(b, n, t);
        else ORV_T(orvs_cBitRev1_Blk)(b, n, t);
    }
    static void copy(const C* s, C* d, int order) {
        const auto* src = reinterpret_cast<const Orv8u*>(s);
        auto* dst = reinterpret_cast<Orv8u*>(d);
        const long long bytes = static_cast<long long>(sizeof(C)) << order;
        for (long long o = 0; o < bytes; o += L.copyChunk)
            ORV_T(orvsCopy_8u)(src + o, dst + o, static_cast<int>(std::min<long long>(L.copyChunk, bytes - o)));
    }

    // Step A: pDst in bit-reversed order.
    void reorder(const C* src, C* dst, int order) const {
        const int n = 1 << order;
        const Orv32u* tab = spec->pBitRev;
        if (order < L.orderBlk) {
            // m7 copies first above these orders instead of reading with a stride.
            const bool copyFirst = kTier == Tier::m7 && order > (kDouble ? 17 : 18);
            if (src == dst) {
                bitrev1(dst, n, tab);
            } else if (copyFirst) {
                copy(src, dst, order);
                bitrev1(dst, n, tab);
            } else {
                bitrev2(src, dst, n, tab);
            }
            return;
        }
        const int b = L.blockOrder;
        const ptrdiff_t side = ptrdiff_t{1} << b, blkLen = side * side, stride = ptrdiff_t{n} >> b;
        const ptrdiff_t count = ptrdiff_t{n} >> (2 * b);
        const Orv32u* swaps = tab + count;
        C* b0 = reinterpret_cast<C*>(work);
        C* b1 = b0 + blkLen;
        if (src != dst && order < L.orderCopy) {
            for (ptrdiff_t i = 0; i < count; ++i) {
                merge<T>(src + tab[i], b0, stride, side, side);
                bitrev_blk(b0, static_cast<int>(blkLen), swaps);
                split<T>(dst + i * side, b0, stride, side, side, false);
            }
            return;
        }
        if (src != dst) copy(src, dst, order);
        for (ptrdiff_t i = 0; i < count; ++i) {
            const ptrdiff_t p = i * side, q = tab[i];
            if (p > q) continue;
            merge<T>(dst + p, b0, stride, side, side);
            bitrev_blk(b0, static_cast<int>(blkLen), swaps);
            if (p < q) {
                merge<T>(dst + q, b1, stride, side, side);
                bitrev_blk(b1, static_cast<int>(blkLen), swaps);
                split<T>(dst + p, b1, stride, side, side, false);
            }
            split<T>(dst + q, b0, stride, side, side, false);
        }
    }

    // A sub-array of the medium range: the plain core in the working format,
    // then the scale.
    void leaf(C* data, int order) const {
        const int n = 1 << order;
        if constexpr (kDouble) {
            if constexpr (kInv) ORV_T(orvs_cRadix4Inv_64fc)(data, n, spec->pTwd, work, 0);
            else ORV_T(orvs_cRadix4Fwd_64fc)(data, n, spec->pTwd, work, 0);
            if (scale) ORV_T(orvsMulC_64f_I)(factor, reinterpret_cast<T*>(data), 2 * n);
        } else {
            if constexpr (kInv) ORV_T(orvs_cRadix4Inv_32fc)(data, n, spec->pTwd, work, 0);
            else ORV_T(orvs_cRadix4Fwd_32fc)(data, n, spec->pTwd, work, 0);
            if (scale) ORV_T(orvsMulC_32f_I)(factor, reinterpret_cast<T*>(data), 2 * n);
        }
    }

    // Steps B and C for one array of this order at this level.
    void step(C* data, int order, int level) const {
        const int b = blk(order), sub = order - b;
        const ptrdiff_t len = ptrdiff_t{1} << sub, rows = ptrdiff_t{1} << b;
        const ptrdiff_t cols = ptrdiff_t{1} << (buf(order) - b);
        for (ptrdiff_t s = 0; s < rows; ++s) {
            if (sub < L.largeFrom) leaf(data + s * len, sub);
            else step(data + s * len, sub, level + 1);
        }
        const T* tw = static_cast<const T*>(spec->pTwdStep[level]);
        C* bufc = reinterpret_cast<C*>(work);
        T* bufT = reinterpret_cast<T*>(work);
        for (ptrdiff_t c = 0; c < len; c += cols) {
            merge<T>(data + c, bufc, len, rows, cols);
            ptrdiff_t cur = cols, count = rows;
            for (int done = 0; done < b;) {
                const int rem = b - done;
                if (rem == 2 || rem == 4 || rem == 6) {
                    count /= 4;
                    pass4<T, kInv>(WorkIn<T>{bufT}, WorkOut<T>{bufT}, cur, count, tw);
                    tw += (count == 1 ? 2 : 6) * cur;
                    cur *= 4;
                    done += 2;
                } else {
                    count /= 8;
                    pass8<T, kInv>(WorkIn<T>{bufT}, WorkOut<T>{bufT}, cur, count, tw);
                    tw += 14 * cur;
                    cur *= 8;
                    done += 3;
                }
            }
            split<T>(data + c, bufc, len, rows, cols, level == 0);
        }
    }

    // Radix-2 block path: pieces of 2^12 through the core, then radix-2
    // levels joining blocks of twice the length, the last one interleaving.
    // Twiddles: (cos, -sin) of 2 pi k / N for k < N/4 at pTwdR2Low.
    void radix2(C* data, int order) const {
        constexpr int kPiece = 12;
        const ptrdiff_t n = ptrdiff_t{1} << order;
        for (ptrdiff_t s = 0; s < n; s += ptrdiff_t{1} << kPiece) leaf(data + s, kPiece);
        const T* tw = static_cast<const T*>(spec->pTwdR2Low);
        T* x = reinterpret_cast<T*>(data);
        constexpr int kL = Elem<T>::kLanes;
        const ptrdiff_t q = n / 4;
        for (ptrdiff_t m = ptrdiff_t{1} << kPiece; m < n; m *= 2) {
            const bool last = 2 * m == n;
            const ptrdiff_t strideK = n / (2 * m);
            for (ptrdiff_t base = 0; base < n; base += 2 * m)
                for (ptrdiff_t j0 = 0; j0 < m; j0 += kL) {
                    T ar[kL], ai[kL], br[kL], bi[kL];
                    T* pa = x + 2 * (base + j0);
                    T* pb = pa + 2 * m;
                    for (int l = 0; l < kL; ++l) {
                        ar[l] = pa[l], ai[l] = pa[kL + l], br[l] = pb[l], bi[l] = pb[kL + l];
                    }
                    for (int l = 0; l < kL; ++l) {
                        const ptrdiff_t k = (j0 + l) * strideK;
                        T wr, wi;  // W_N^k
                        if (k < q) wr = tw[2 * k], wi = tw[2 * k + 1];
                        else wr = tw[2 * (k - q) + 1], wi = -tw[2 * (k - q)];
                        if constexpr (kInv) wi = -wi;
                        const T tr = br[l] * wr - bi[l] * wi, ti = br[l] * wi + bi[l] * wr;
                        const T yr = ar[l] + tr, yi = ai[l] + ti, zr = ar[l] - tr, zi = ai[l] - ti;
                        if (last) {
                            pa[2 * l] = yr, pa[2 * l + 1] = yi, pb[2 * l] = zr, pb[2 * l + 1] = zi;
                        } else {
                            pa[l] = yr, pa[kL + l] = yi, pb[l] = zr, pb[kL + l] = zi;
                        }
                    }
                }
        }
    }

    void run(const C* src, C* dst, int order) const {
        reorder(src, dst, order);
        if (blk(order) == 0) radix2(dst, order);
        else step(dst, order, 0);
    }
};

template <class T, bool kInv>
OrvStatus run_large(const OrvFFTSpec* s, const typename Elem<T>::C* src, typename Elem<T>::C* dst, int order,
                    Orv8u* work) {
    T factor;
    bool scale = kInv ? s->doInvScale != 0 : s->doFwdScale != 0;
    if constexpr (sizeof(T) == 8) factor = s->u.d.scale;
    else factor = s->u.f.scale;
    Transform<T, kInv>{s, work, scale, factor}.run(src, dst, order);
    return orvStsNoErr;
}

}  // namespace large
}  // namespace
}  // namespace orv::ORV_TIER_NS
