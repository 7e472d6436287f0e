// The integer 2-D filters: tier e9's column-group design
// (ownFilter32f_<T>_<C>R_g9e9). The sums of a destination row build up in a
// float row in scratch (a double row for 32s), kernel row by kernel row from
// the window's top, and the finished row is converted half away from zero.
//
// - kW < 8: table entry kW runs once over all destination rows: the window's
//   top row writes the float row with kW taps, each further row adds.
// - kW >= 8, per destination row: for each kernel row from the top, groups
//   of 8 kernel columns (the very first group writes the float row, the
//   others add); then the entry of the remaining kW & 7 columns adds those
//   over all kernel rows, source moved right and coefficients down by the
//   columns done, and converts. Entry 0 only converts.
//
// 8-bit and 16-bit sources: each window row a pass needs is widened once to
// float into a second row of scratch; the taps of a block are then unaligned
// loads of that row, so a tap costs a load, a product and a sum. Blocks of 8
// elements (two per step), then 4, then single elements; for C3, C4 and AC4 a
// row is a row of elements whose taps lie kCh elements apart. The
// coefficients are broadcast once per pass. Kernels under 8 columns keep a
// ring of widened window rows instead, in vertical strips, and hold a block's
// sum in a register across the kernel rows (same additions, same bits; see
// ring_rows). 32s sums in double (the coefficient widened) with no second
// row: each tap widens four pixels.
//
// Reads exactly the window; writes exactly the region (AC4 keeps the fourth
// channel). Declines, before writing, in tiers below e9, without scratch, or
// when the scratch can't hold the rows.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "filter/frame_filter.h"
#include "filter/row_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {
namespace cgroup {

template <class T>
inline T* at_bytes(T* p, ptrdiff_t bytes) {
    using B = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
    return reinterpret_cast<T*>(reinterpret_cast<B*>(p) + bytes);
}

template <class T>
inline T load1(const T* p) {
    T v;
    std::memcpy(&v, static_cast<const void*>(p), sizeof v);
    return v;
}

// ---- Lanes of the passes: In is what a tap reads (the widened float row, or
// the 32s source itself), A the sum's type.

// Float lanes of the shared row lanes, read from a float row.
template <class V>
struct FloatLanes : V {
    using In = float;
    using A = float;
    static typename V::R load(const float* p) { return V::loadf(p); }
    static typename V::R loadacc(const float* p) { return V::loadf(p); }
};
// Eight floats (only e9 instantiates it) and four.
template <class = void>
using F8 = FloatLanes<rowf::L8T<>>;
using F4 = FloatLanes<rowf::L4>;

template <class TIn, class TA>
struct S1 {
    using In = TIn;
    using A = TA;
    using R = TA;
    static constexpr int kN = 1;
    static R load(const In* p) { return R(load1(p)); }
    static R loadacc(const A* p) { return load1(p); }
    static void store(A* p, R r) { std::memcpy(static_cast<void*>(p), &r, sizeof r); }
    static R set1(float k) { return R(k); }
    static R add(R a, R b) { return a + b; }
    static R mul(R a, R b) { return a * b; }
};

// Four 32s pixels widened to double (only e9 instantiates it).
template <class = void>
struct D4 {
    using In = Orv32s;
    using A = double;
    using R = __m256d;
    static constexpr int kN = 4;
    static R load(const Orv32s* p) {
        return _mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(p)));
    }
    static R loadacc(const double* p) { return _mm256_loadu_pd(p); }
    static void store(double* p, R r) { _mm256_storeu_pd(p, r); }
    static R set1(float k) { return _mm256_set1_pd(double(k)); }
    static R add(R a, R b) { return _mm256_add_pd(a, b); }
    static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
};

// The lanes of a source type: wide blocks, a half block (none for 32s), single
// elements.
template <class TS>
struct LanesOf {
    using Wide = F8<>;
    using Half = F4;
    using One = S1<float, float>;
};
template <>
struct LanesOf<Orv32s> {
    using Wide = D4<>;
    using Half = void;
    using One = S1<Orv32s, double>;
};

// ---- A pass: N taps over `elems` elements of the sum row, tap c reading
// s[e + c * kCh] with the coefficient coef[-c]; written (kAdd false) or added
// to what the row holds. Each block's products add as a tree, and the tree's
// sum is added to the row's partial sum last.

template <class V, int N, bool kAdd, int kCh>
inline typename V::R block(const typename V::In* s, const typename V::A* row, const typename V::R* cf) {
    typename V::R o[N];
#pragma GCC unroll 8
    for (int c = 0; c < N; ++c) o[c] = V::mul(V::load(s + c * kCh), cf[c]);
    const typename V::R t = rowf::tree<V, 0, N>(o);
    if constexpr (kAdd) return V::add(V::loadacc(row), t);
    else return t;
}

template <class V, int N>
inline void broadcast(typename V::R* cf, const Orv32f* coef) {
#pragma GCC unroll 8
    for (int c = 0; c < N; ++c) cf[c] = V::set1(coef[-c]);
}

template <class TS, int N, bool kAdd, int kCh>
void pass(const typename LanesOf<TS>::Wide::In* s, typename LanesOf<TS>::Wide::A* row, int elems,
          const Orv32f* coef) {
    using W = typename LanesOf<TS>::Wide;
    using H = typename LanesOf<TS>::Half;
    using O = typename LanesOf<TS>::One;
    constexpr int kN = W::kN;
    int e = 0;
    if (elems >= kN) {
        typename W::R cf[N];
        broadcast<W, N>(cf, coef);
        for (; e + 2 * kN <= elems; e += 2 * kN) {
            const typename W::R r0 = block<W, N, kAdd, kCh>(s + e, row + e, cf);
            const typename W::R r1 = block<W, N, kAdd, kCh>(s + e + kN, row + e + kN, cf);
            W::store(row + e, r0);
            W::store(row + e + kN, r1);
        }
        if (e + kN <= elems) {
            W::store(row + e, block<W, N, kAdd, kCh>(s + e, row + e, cf));
            e += kN;
        }
    }
    if constexpr (!std::is_void_v<H>) {
        if (e + H::kN <= elems) {
            typename H::R cf[N];
            broadcast<H, N>(cf, coef);
            H::store(row + e, block<H, N, kAdd, kCh>(s + e, row + e, cf));
            e += H::kN;
        }
    }
    if (e < elems) {
        typename O::R cf[N];
        broadcast<O, N>(cf, coef);
        for (; e < elems; ++e) O::store(row + e, block<O, N, kAdd, kCh>(s + e, row + e, cf));
    }
}

// ---- Widening of a window row into the float row `out` (8-bit and 16-bit
// sources): exactly n elements read.

template <class TS>
inline __m128 widen4(const TS* p) {
    __m128i v;
    if constexpr (sizeof(TS) == 1) {
        int32_t b;
        std::memcpy(&b, static_cast<const void*>(p), sizeof b);
        v = _mm_cvtsi32_si128(b);
        v = std::is_signed_v<TS> ? _mm_cvtepi8_epi32(v) : _mm_cvtepu8_epi32(v);
    } else {
        v = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p));
        v = std::is_signed_v<TS> ? _mm_cvtepi16_epi32(v) : _mm_cvtepu16_epi32(v);
    }
    return _mm_cvtepi32_ps(v);
}

template <class TS>
void widen_row(const TS* s, float* out, int n) {
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128 lo = widen4(s + i), hi = widen4(s + i + 4);
        _mm256_storeu_ps(out + i, _mm256_insertf128_ps(_mm256_castps128_ps256(lo), hi, 1));
    }
    if (i + 4 <= n) {
        _mm_storeu_ps(out + i, widen4(s + i));
        i += 4;
    }
    for (; i < n; ++i) out[i] = float(load1(s + i));
}

// ---- Conversion of a finished row into the destination row.

// Float row: half away from zero with the saturation of the type.
template <class TD, bool kKeep>
void convert_row(const float* row, TD* d, int elems) {
    int e = 0;
    for (; e + 8 <= elems; e += 8) {
        __m128i lo, hi;
        rowf::fin8<TD>(_mm256_loadu_ps(row + e), lo, hi);
        rowf::store8<TD, kKeep>(d + e, lo, hi);
    }
    for (; e < elems; ++e)
        if (!kKeep || e % 4 != 3) rowf::store1(d + e, TD(rowf::fin1<TD>(row[e])));
}

// Double row to 32s: limited to the int32 range first (a NaN gives the upper
// limit), then half away from zero, exactly: v minus its truncation is exact.
inline Orv32s fin_32s(double v) {
    v = v < 2147483647.0 ? v : 2147483647.0;
    v = v > -2147483648.0 ? v : -2147483648.0;
    double t = double(int64_t(v));
    const double f = v - t;
    if (f >= 0.5) t += 1.0;
    else if (f <= -0.5) t -= 1.0;
    return Orv32s(t);
}

template <class TD, bool kKeep>
void convert_row(const double* row, Orv32s* d, int elems) {
    static_assert(std::is_same_v<TD, Orv32s> && !kKeep);
    const __m256d hiLim = _mm256_set1_pd(2147483647.0), loLim = _mm256_set1_pd(-2147483648.0);
    const __m256d half = _mm256_set1_pd(0.5), mhalf = _mm256_set1_pd(-0.5), one = _mm256_set1_pd(1.0);
    int e = 0;
    for (; e + 4 <= elems; e += 4) {
        __m256d v = _mm256_max_pd(_mm256_min_pd(_mm256_loadu_pd(row + e), hiLim), loLim);
        __m256d t = _mm256_round_pd(v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
        const __m256d f = _mm256_sub_pd(v, t);
        t = _mm256_add_pd(t, _mm256_and_pd(_mm256_cmp_pd(f, half, _CMP_GE_OQ), one));
        t = _mm256_sub_pd(t, _mm256_and_pd(_mm256_cmp_pd(f, mhalf, _CMP_LE_OQ), one));
        _mm_storeu_si128(reinterpret_cast<__m128i_u*>(d + e), _mm256_cvttpd_epi32(t));
    }
    for (; e < elems; ++e) rowf::store1(d + e, fin_32s(row[e]));
}

// ---- The kernels and their tables.

// The rows in scratch: the sum row, and for 8-bit and 16-bit sources the
// widened window row.
template <class E>
struct Rows {
    using A = typename LanesOf<typename E::Src>::Wide::A;
    A* sum;
    float* wide;
    float* base;   // the whole scratch block
    int64_t have;  // its length in floats
};

template <class E>
using KernelFn = void (*)(const typename E::Src* win, int srcStep, typename E::Dst* dst, int dstStep, int width,
                          int height, const Orv32f* coef, int kW, int kH, Rows<E> rows, int first);

// One kernel row of N taps: the window row s, the coefficient of its first
// column coef; first writes the sum row instead of adding.
template <class E, int N>
inline void kernel_row(const typename E::Src* s, const Orv32f* coef, int elems, Rows<E> rows, bool first) {
    using TS = typename E::Src;
    constexpr int ch = E::kCh;
    const typename LanesOf<TS>::Wide::In* in;
    if constexpr (std::is_same_v<TS, Orv32s>) {
        in = s;
    } else {
        widen_row(s, rows.wide, elems + (N - 1) * ch);
        in = rows.wide;
    }
    if (first) pass<TS, N, false, ch>(in, rows.sum, elems, coef);
    else pass<TS, N, true, ch>(in, rows.sum, elems, coef);
}

// ---- Entries under 8 columns with first set, 8-bit and 16-bit sources: a
// ring of the kH window rows that a destination row needs, each widened once,
// in vertical strips narrow enough for kH rows to fit the scratch. The sum of
// a block stays in a register over the kernel rows and takes, row by row, the
// same additions as the float row would (the row's tree of products, then the
// partial sum): the same bits, without the row's loads and stores and with no
// window row widened twice.

// B blocks of V::kN elements at `p` (window row 0 in the ring), summed over
// all kernel rows; the ring is `len` floats, rows `L` floats apart. Each
// coefficient is broadcast once for the B blocks.
template <class V, int B, int N, int kCh>
[[gnu::always_inline]] inline void ring_taps(typename V::R* sum, const float* p, const Orv32f* k) {
    typename V::R o[B][N];
#pragma GCC unroll 8
    for (int c = 0; c < N; ++c) {
        const typename V::R cf = V::set1(k[-c]);
#pragma GCC unroll 2
        for (int b = 0; b < B; ++b) o[b][c] = V::mul(V::load(p + b * V::kN + c * kCh), cf);
    }
#pragma GCC unroll 2
    for (int b = 0; b < B; ++b) sum[b] = rowf::tree<V, 0, N>(o[b]);
}

template <class V, int B, int N, int kCh>
[[gnu::always_inline]] inline void ring_block(typename V::R* acc, const float* p, const float* ringEnd, ptrdiff_t len, int L,
                       const Orv32f* coef, int kW, int kH) {
    ring_taps<V, B, N, kCh>(acc, p, coef);
    for (int r = 1; r < kH; ++r) {
        p += L;
        if (p >= ringEnd) p -= len;
        typename V::R t[B];
        ring_taps<V, B, N, kCh>(t, p, coef - ptrdiff_t(r) * kW);
#pragma GCC unroll 2
        for (int b = 0; b < B; ++b) acc[b] = V::add(acc[b], t[b]);
    }
}

// One destination row of `elems` elements from the ring (window row 0 at top).
template <class E, int N>
void ring_row(const float* top, const float* ringEnd, ptrdiff_t len, int L, int elems, const Orv32f* coef, int kW,
              int kH, typename E::Dst* d) {
    using TD = typename E::Dst;
    constexpr int ch = E::kCh;
    constexpr bool keep = E::kLayout == Layout::AC4;
    int e = 0;
    for (; e + 16 <= elems; e += 16) {
        F8<>::R acc[2];
        ring_block<F8<>, 2, N, ch>(acc, top + e, ringEnd, len, L, coef, kW, kH);
        __m128i lo, hi;
        rowf::fin8<TD>(acc[0], lo, hi);
        rowf::store8<TD, keep>(d + e, lo, hi);
        rowf::fin8<TD>(acc[1], lo, hi);
        rowf::store8<TD, keep>(d + e + 8, lo, hi);
    }
    if (e + 8 <= elems) {
        F8<>::R acc[1];
        ring_block<F8<>, 1, N, ch>(acc, top + e, ringEnd, len, L, coef, kW, kH);
        __m128i lo, hi;
        rowf::fin8<TD>(acc[0], lo, hi);
        rowf::store8<TD, keep>(d + e, lo, hi);
        e += 8;
    }
    float t[4];
    int n = 0;
    if (e + 4 <= elems) {
        F4::R acc[1];
        ring_block<F4, 1, N, ch>(acc, top + e, ringEnd, len, L, coef, kW, kH);
        _mm_storeu_ps(t, acc[0]);
        n = 4;
    }
    for (int i = 0; e < elems; ++e, ++i) {
        float v;
        if (i < n) v = t[i];
        else ring_block<S1<float, float>, 1, N, ch>(&v, top + e, ringEnd, len, L, coef, kW, kH);
        if (!keep || e % 4 != 3) rowf::store1(d + e, TD(rowf::fin1<TD>(v)));
    }
}

// All destination rows by strips; false (nothing done) when a strip of 16
// pixels does not fit. Strips are kept narrow enough for the ring to stay in
// the first cache level.
template <class E, int N>
bool ring_rows(const typename E::Src* win, int srcStep, typename E::Dst* dst, int dstStep, int width, int height,
               const Orv32f* coef, int kW, int kH, Rows<E> rows) {
    constexpr int ch = E::kCh;
    constexpr int64_t kCached = 4096;  // floats of ring that stay in the first cache level
    int64_t strip = (rows.have < kCached ? rows.have : kCached) / kH / ch - (N - 1);
    if (strip < 16) return false;
    strip = strip > width ? width : strip & ~int64_t(7);
    const int S = int(strip), L = (S + N - 1) * ch;
    const ptrdiff_t len = ptrdiff_t(L) * kH;
    float* const ring = rows.base;
    float* const ringEnd = ring + len;
    for (int x0 = 0; x0 < width; x0 += S) {
        const int elems = (width - x0 < S ? width - x0 : S) * ch, span = elems + (N - 1) * ch;
        const typename E::Src* next = win + ptrdiff_t(x0) * ch;
        float* slot = ring;
        for (int r = 0; r < kH - 1; ++r, next = at_bytes(next, srcStep), slot += L) widen_row(next, slot, span);
        const float* top = ring;
        typename E::Dst* d = dst + ptrdiff_t(x0) * ch;
        for (int y = 0; y < height; ++y, d = at_bytes(d, dstStep)) {
            widen_row(next, slot, span);
            next = at_bytes(next, srcStep);
            if ((slot += L) == ringEnd) slot = ring;
            ring_row<E, N>(top, ringEnd, len, L, elems, coef, kW, kH, d);
            if ((top += L) == ringEnd) top = ring;
        }
    }
    return true;
}

// Entry N: for each destination row, N taps of every kernel row from the
// window's top added to the sum row (the top one writing it when first is
// set), then the row converted. Entry 0 only converts.
template <class E, int N>
void owniFilter32f_g9e9(const typename E::Src* win, int srcStep, typename E::Dst* dst, int dstStep, int width,
                        int height, const Orv32f* coef, int kW, int kH, Rows<E> rows, int first) {
    if constexpr (N > 0 && !std::is_same_v<typename E::Src, Orv32s>) {
        if (first && ring_rows<E, N>(win, srcStep, dst, dstStep, width, height, coef, kW, kH, rows)) return;
    }
    const int elems = width * E::kCh;
    for (int y = 0; y < height; ++y, win = at_bytes(win, srcStep), dst = at_bytes(dst, dstStep)) {
        if constexpr (N > 0) {
            const typename E::Src* s = win;
            for (int r = 0; r < kH; ++r, s = at_bytes(s, srcStep))
                kernel_row<E, N>(s, coef - ptrdiff_t(r) * kW, elems, rows, first && r == 0);
        }
        convert_row<typename E::Dst, E::kLayout == Layout::AC4>(rows.sum, dst, elems);
    }
}

template <class E>
constexpr KernelFn<E> filterTable[8] = {owniFilter32f_g9e9<E, 0>, owniFilter32f_g9e9<E, 1>, owniFilter32f_g9e9<E, 2>,
                                        owniFilter32f_g9e9<E, 3>, owniFilter32f_g9e9<E, 4>, owniFilter32f_g9e9<E, 5>,
                                        owniFilter32f_g9e9<E, 6>, owniFilter32f_g9e9<E, 7>};

// The frame: kernels under 8 columns in one call of their entry; wider ones
// by destination row, groups of 8 columns, then the remaining columns' entry.
template <class E>
void ownFilter32f_g9e9(const Call<E>& c, Rows<E> rows) {
    if (c.kW < 8) {
        filterTable<E>[c.kW](c.win, c.srcStep, c.dst, c.dstStep, c.width, c.height, c.coefLast, c.kW, c.kH, rows, 1);
        return;
    }
    constexpr int ch = E::kCh;
    const int g = c.kW & ~7, elems = c.width * ch;
    const typename E::Src* win = c.win;
    typename E::Dst* dst = c.dst;
    for (int y = 0; y < c.height; ++y, win = at_bytes(win, c.srcStep), dst = at_bytes(dst, c.dstStep)) {
        const typename E::Src* s = win;
        for (int r = 0; r < c.kH; ++r, s = at_bytes(s, c.srcStep)) {
            const Orv32f* k = c.coefLast - ptrdiff_t(r) * c.kW;
            if constexpr (std::is_same_v<typename E::Src, Orv32s>) {
                for (int j = 0; j < g; j += 8)
                    kernel_row<E, 8>(s + ptrdiff_t(j) * ch, k - j, elems, rows, r == 0 && j == 0);
            } else {
                // The window row once; every group reads it.
                widen_row(s, rows.wide, elems + (g - 1) * ch);
                for (int j = 0; j < g; j += 8) {
                    if (r == 0 && j == 0) pass<typename E::Src, 8, false, ch>(rows.wide, rows.sum, elems, k);
                    else pass<typename E::Src, 8, true, ch>(rows.wide + ptrdiff_t(j) * ch, rows.sum, elems, k - j);
                }
            }
        }
        filterTable<E>[c.kW & 7](win + ptrdiff_t(g) * ch, c.srcStep, dst, c.dstStep, c.width, 1, c.coefLast - g, c.kW,
                                 c.kH, rows, 0);
    }
}

}  // namespace cgroup

template <class E>
bool int_column_group(const Call<E>& c) {
    if constexpr (kTier == Tier::e9) {
        if (c.scratch == nullptr) return false;
        // The sum row, and the widened window row after it (on a 32-byte
        // boundary when the scratch allows): checked against what the entry
        // asked for.
        using A = typename cgroup::Rows<E>::A;
        const int64_t elems = int64_t(c.width) * E::kCh;
        const int64_t have = scratch_len<E>(c.width, c.kW, c.kH);
        int64_t sumLen = elems * int64_t(sizeof(A) / sizeof(float)), need = sumLen;
        if constexpr (!std::is_same_v<typename E::Src, Orv32s>) {
            const int64_t wide = elems + int64_t(c.kW - 1) * E::kCh;
            if ((sumLen + 7) / 8 * 8 + wide <= have) sumLen = (sumLen + 7) / 8 * 8;
            need = sumLen + wide;
        }
        if (need > have) return false;
        cgroup::Rows<E> rows;
        rows.base = c.scratch;
        rows.have = have;
        rows.sum = reinterpret_cast<A*>(c.scratch);
        rows.wide = std::is_same_v<typename E::Src, Orv32s> ? nullptr : c.scratch + sumLen;
        cgroup::ownFilter32f_g9e9<E>(c, rows);
        return true;
    } else {
        return false;
    }
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
