// Routes of the integer column filters, 8u, 16u and 16s (C1 and AC4).
//
// - e9: width of 8 elements (C1) or 8 pixels (AC4) and scratch: groups of 8
//   kernel rows summed as a tree, the first group writing a partial sum and
//   further groups adding to it, the table entry of kernelSize & 7 adding the
//   remaining rows and converting, rounding half away from zero (entry 0 only
//   converts). Blocks of 8 elements of four destination rows keep their
//   partial sums in registers and widen each window row once for the four;
//   the rows' last elements and the last rows keep theirs in a float row in
//   scratch, one destination row at a time. Both sum in the same order.
// - y8, n8, m7: from 3 kernel rows, 16 elements (C1) or 4 pixels (AC4) and
//   scratch: the three-row pipeline. Three float rows take three destination
//   rows at once, each source row being widened once and added with its
//   three coefficients (replicated four times in scratch); the rows are then
//   converted to nearest, ties to even. Rows left over (height % 3) take one
//   float row each.
// - Otherwise the generic loop.
//
// AC4 rows are worked as rows of 4 * width elements (the fourth channel is
// summed too, it lies within the region's pixels) and the conversions leave
// the destination's fourth channel as it was. Every load reads exactly the
// elements it widens, so nothing past the region's columns is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "filter/column_frame.h"
#include "filter/row_lanes.h"

ORV_TIER_DECLARE(orviConvert_32f8u_C1R)
ORV_TIER_DECLARE(orviConvert_32f8u_AC4R)
ORV_TIER_DECLARE(orviConvert_32f16s_AC4R)
ORV_TIER_DECLARE(orviConvert_32f16u_AC4R)
ORV_TIER_DECLARE(orvsConvert_32f16s_Sfs)
ORV_TIER_DECLARE(orvsConvert_32f16u_Sfs)

namespace orv::ORV_TIER_NS {
namespace {
namespace colf {

using rowf::byte_off;
using rowf::L1;
using rowf::L4;

// Source row i below p.
template <class T>
inline const T* row_at(const T* p, ptrdiff_t step, int i) {
    return byte_off(p, ptrdiff_t(i) * step);
}

// ---- e9: groups of kernel rows over a float row ----------------------------

// What a pass does with its sum: write the float row, add to it, or convert
// the sum (Out) or the row plus the sum (AddOut) into the destination.
enum class Pass { Write, Add, Out, AddOut };

// One block of V::kN elements: N rows' products (row i at i * step bytes),
// with the float row's partial sum first when the pass adds, as a tree.
template <class V, int N, bool kAdd, class T>
inline typename V::R col_sum(const T* s, ptrdiff_t step, const typename V::R* cf, const float* row) {
    typename V::R o[N + kAdd];
    int n = 0;
    if constexpr (kAdd) o[n++] = V::loadf(row);
#pragma GCC unroll 8
    for (int i = 0; i < N; ++i) o[n++] = V::mul(V::widen(row_at(s, step, i)), cf[i]);
    return rowf::tree<V, 0, N + kAdd>(o);
}

// Elements [e, e + n) of a finished sum held in `v` (n lanes), rounded half
// away from zero; with kKeep every fourth element (by its index) is skipped.
template <class T, bool kKeep>
inline void out_lanes(T* d, int e, const float* v, int n) {
    for (int j = 0; j < n; ++j)
        if (!kKeep || (e + j) % 4 != 3) rowf::store1(d + e + j, T(rowf::fin1<T>(v[j])));
}

// N kernel rows (N = 0 only for AddOut) over `elems` elements: blocks of 16
// (two vectors per step), 8, 4, then single elements.
template <class T, int N, Pass P, bool kKeep>
void col_pass(const T* s, ptrdiff_t step, float* row, T* d, int elems, const float* coefLast) {
    using L8 = rowf::L8T<>;
    constexpr bool kAdd = P == Pass::Add || P == Pass::AddOut;
    constexpr bool kOut = P == Pass::Out || P == Pass::AddOut;
    auto finish8 = [&](int e, L8::R r) {
        if constexpr (kOut) {
            __m128i lo, hi;
            rowf::fin8<T>(r, lo, hi);
            rowf::store8<T, kKeep>(d + e, lo, hi);
        } else {
            L8::store(row + e, r);
        }
    };
    L8::R c8[N > 0 ? N : 1];
    for (int i = 0; i < N; ++i) c8[i] = L8::set1(coefLast[-i]);
    int e = 0;
    for (; e + 16 <= elems; e += 16) {
        const L8::R r0 = col_sum<L8, N, kAdd>(s + e, step, c8, row + e);
        const L8::R r1 = col_sum<L8, N, kAdd>(s + e + 8, step, c8, row + e + 8);
        finish8(e, r0);
        finish8(e + 8, r1);
    }
    if (e + 8 <= elems) {
        finish8(e, col_sum<L8, N, kAdd>(s + e, step, c8, row + e));
        e += 8;
    }
    if (e + 4 <= elems) {
        L4::R c4[N > 0 ? N : 1];
        for (int i = 0; i < N; ++i) c4[i] = L4::set1(coefLast[-i]);
        const L4::R r = col_sum<L4, N, kAdd>(s + e, step, c4, row + e);
        if constexpr (kOut) {
            alignas(16) float v[4];
            L4::store(v, r);
            out_lanes<T, kKeep>(d, e, v, 4);
        } else {
            L4::store(row + e, r);
        }
        e += 4;
    }
    if (e < elems) {
        float c1[N > 0 ? N : 1];
        for (int i = 0; i < N; ++i) c1[i] = coefLast[-i];
        for (; e < elems; ++e) {
            const float r = col_sum<L1, N, kAdd>(s + e, step, c1, row + e);
            if constexpr (kOut) out_lanes<T, kKeep>(d, e, &r, 1);
            else L1::store(row + e, r);
        }
    }
}

// Table entries: N kernel rows, then the conversion, over `height` rows of
// `elems` elements. With `first` set the sum starts from zero and the float
// row isn't touched; otherwise the entry adds to the float row (one
// destination row, the rest of a long kernel). Entry 0 only converts.
template <class T>
using ColIntFn = void (*)(const T* s, int srcStep, T* d, int dstStep, int elems, int height, const Orv32f* coefLast,
                          Orv32f* row, int first);

// Blocks of 8 elements of kRows destination rows at once: the window rows
// the rows share are widened once per group, and each row's partial sum stays
// in a register where the one-row passes keep it in the float row. The sums
// are formed in the same order, so the results are the same.
constexpr int kRows = 4;

// N kernel rows (window rows from s, coefficients from cl downward) into the
// partial sums of the kRows rows: written, or added with the partial first.
template <int N, bool kAdd, class T>
inline void rows_group(const T* s, ptrdiff_t step, const float* cl, __m256* part) {
    using L8 = rowf::L8T<>;
    if constexpr (N > 0) {
        L8::R cf[N], w[N + kRows - 1];
#pragma GCC unroll 8
        for (int i = 0; i < N; ++i) cf[i] = L8::set1(cl[-i]);
#pragma GCC unroll 16
        for (int i = 0; i < N + kRows - 1; ++i) w[i] = L8::widen(row_at(s, step, i));
#pragma GCC unroll 4
        for (int r = 0; r < kRows; ++r) {
            L8::R o[N + kAdd];
            int n = 0;
            if constexpr (kAdd) o[n++] = part[r];
#pragma GCC unroll 8
            for (int i = 0; i < N; ++i) o[n++] = L8::mul(w[r + i], cf[i]);
            part[r] = rowf::tree<L8, 0, N + kAdd>(o);
        }
    }
}

// The kRows rows' blocks [0, elems & ~7) for a kernel of k rows, Rem = k & 7
// (k = Rem when k < 8).
template <int Rem, class T, bool kKeep>
void out_rows(const T* s, ptrdiff_t step, T* d, ptrdiff_t dstStep, int elems, const float* coefLast, int k) {
    const int g = k & ~7;
    for (int e = 0; e + 8 <= elems; e += 8) {
        __m256 part[kRows];
        if (g == 0) {
            rows_group<Rem, false>(s + e, step, coefLast, part);
        } else {
            rows_group<8, false>(s + e, step, coefLast, part);
            for (int j = 8; j < g; j += 8) rows_group<8, true>(row_at(s, step, j) + e, step, coefLast - j, part);
            rows_group<Rem, true>(row_at(s, step, g) + e, step, coefLast - g, part);
        }
#pragma GCC unroll 4
        for (int r = 0; r < kRows; ++r) {
            __m128i lo, hi;
            rowf::fin8<T>(part[r], lo, hi);
            rowf::store8<T, kKeep>(byte_off(d, r * dstStep) + e, lo, hi);
        }
    }
}

template <class T, bool kKeep>
using OutRowsFn = void (*)(const T*, ptrdiff_t, T*, ptrdiff_t, int, const float*, int);
template <class T, bool kKeep>
constexpr OutRowsFn<T, kKeep> OutRowsTable[8] = {out_rows<0, T, kKeep>, out_rows<1, T, kKeep>, out_rows<2, T, kKeep>,
                                                 out_rows<3, T, kKeep>, out_rows<4, T, kKeep>, out_rows<5, T, kKeep>,
                                                 out_rows<6, T, kKeep>, out_rows<7, T, kKeep>};

template <int N, class T, bool kKeep>
void owniFilterColumn32f_g9e9_N(const T* s, int srcStep, T* d, int dstStep, int elems, int height,
                                const Orv32f* coefLast, Orv32f* row, int first) {
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep)) {
        if constexpr (N > 0)
            if (first) {
                col_pass<T, N, Pass::Out, kKeep>(s, srcStep, row, d, elems, coefLast);
                continue;
            }
        col_pass<T, N, Pass::AddOut, kKeep>(s, srcStep, row, d, elems, coefLast);
    }
}

template <class T, bool kKeep>
constexpr ColIntFn<T> FilterColumnTable[8] = {
    owniFilterColumn32f_g9e9_N<0, T, kKeep>, owniFilterColumn32f_g9e9_N<1, T, kKeep>,
    owniFilterColumn32f_g9e9_N<2, T, kKeep>, owniFilterColumn32f_g9e9_N<3, T, kKeep>,
    owniFilterColumn32f_g9e9_N<4, T, kKeep>, owniFilterColumn32f_g9e9_N<5, T, kKeep>,
    owniFilterColumn32f_g9e9_N<6, T, kKeep>, owniFilterColumn32f_g9e9_N<7, T, kKeep>};

// The frame: four destination rows at a time in registers, their elements
// past the last block of 8 and the rows left over one row at a time.
template <class E>
void e9_ownFilterColumn32f_g9e9(const ColCall<E>& c) {
    using T = typename E::Elem;
    constexpr bool keep = E::kLayout == Layout::AC4;
    const int elems = c.width * E::kCh, k = c.k, g = k & ~7, done = elems & ~7;
    const ptrdiff_t step = c.srcStep;
    const T* s = c.win;
    T* d = c.dst;
    // One destination row: kernels under 8 rows by their table entry; longer
    // ones write the float row with the window's first 8 rows, add each
    // further group of 8, and finish with the entry of the rest. From `from`
    // (a multiple of 8) to the row's end.
    auto one_row = [&](const T* sr, T* dr, int from) {
        const int n = elems - from;
        if (n <= 0) return;
        if (k < 8) {
            FilterColumnTable<T, keep>[k](sr + from, c.srcStep, dr + from, c.dstStep, n, 1, c.coefLast, c.scratch, 1);
            return;
        }
        col_pass<T, 8, Pass::Write, keep>(sr + from, step, c.scratch, dr + from, n, c.coefLast);
        for (int j = 8; j < g; j += 8)
            col_pass<T, 8, Pass::Add, keep>(row_at(sr, step, j) + from, step, c.scratch, dr + from, n, c.coefLast - j);
        FilterColumnTable<T, keep>[k & 7](row_at(sr, step, g) + from, c.srcStep, dr + from, c.dstStep, n, 1,
                                          c.coefLast - g, c.scratch, 0);
    };
    int y = 0;
    for (; y + kRows <= c.height; y += kRows, s = row_at(s, step, kRows), d = byte_off(d, kRows * ptrdiff_t(c.dstStep))) {
        OutRowsTable<T, keep>[k & 7](s, step, d, c.dstStep, elems, c.coefLast, k);
        for (int r = 0; r < kRows; ++r) one_row(row_at(s, step, r), byte_off(d, r * ptrdiff_t(c.dstStep)), done);
    }
    for (; y < c.height; ++y, s = row_at(s, step, 1), d = byte_off(d, c.dstStep)) one_row(s, d, 0);
}

// ---- y8, n8, m7: the three-row pipeline -------------------------------------

// Eight elements as two four-float vectors, widened from one load (SSE2).
struct L4x2 {
    struct R {
        __m128 a, b;
    };
    static constexpr int kN = 8;
    template <class T>
    static R widen(const T* p) {
        __m128i lo, hi;
        if constexpr (sizeof(T) == 1) {
            const __m128i z = _mm_setzero_si128();
            const __m128i w = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p)), z);
            lo = _mm_unpacklo_epi16(w, z);
            hi = _mm_unpackhi_epi16(w, z);
        } else {
            const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(p));
            if constexpr (std::is_signed_v<T>) {
                lo = _mm_srai_epi32(_mm_unpacklo_epi16(w, w), 16);
                hi = _mm_srai_epi32(_mm_unpackhi_epi16(w, w), 16);
            } else {
                lo = _mm_unpacklo_epi16(w, _mm_setzero_si128());
                hi = _mm_unpackhi_epi16(w, _mm_setzero_si128());
            }
        }
        return {_mm_cvtepi32_ps(lo), _mm_cvtepi32_ps(hi)};
    }
    static R loadf(const float* p) { return {_mm_loadu_ps(p), _mm_loadu_ps(p + 4)}; }
    static void store(float* p, R r) {
        _mm_storeu_ps(p, r.a);
        _mm_storeu_ps(p + 4, r.b);
    }
    static R add(R x, R y) { return {_mm_add_ps(x.a, y.a), _mm_add_ps(x.b, y.b)}; }
    static R mul(R x, R y) { return {_mm_mul_ps(x.a, y.a), _mm_mul_ps(x.b, y.b)}; }
};

// A replicated coefficient (four copies) as a lane's operand.
template <class V>
inline typename V::R coef_of(__m128 c) {
    if constexpr (V::kN == 8) return {c, c};
    else if constexpr (V::kN == 4) return c;
    else return _mm_cvtss_f32(c);
}

// Calls f(lane, e) for blocks of eight elements, then four, then single ones.
// f is taken by value and inlined, so what it captures stays in registers
// across the float stores.
template <class F>
__attribute__((always_inline)) inline void each_block(int elems, F f) {
    int e = 0;
    for (; e + 8 <= elems; e += 8) f(L4x2{}, e);
    if (e + 4 <= elems) f(L4{}, e), e += 4;
    for (; e < elems; ++e) f(L1{}, e);
}

// Window rows 0 and 1 start two rows: r0 = s0 c0 + s1 c1, r1 = s1 c0.
template <class T>
void ownFirstFiltCol32f(const T* s0, const T* s1, float* r0, float* r1, int elems, const float* rep) {
    const __m128 c0 = _mm_loadu_ps(rep), c1 = _mm_loadu_ps(rep + 4);
    each_block(elems, [=](auto v, int e) {
        using V = decltype(v);
        const auto a = V::widen(s0 + e), b = V::widen(s1 + e);
        V::store(r0 + e, V::add(V::mul(a, coef_of<V>(c0)), V::mul(b, coef_of<V>(c1))));
        V::store(r1 + e, V::mul(b, coef_of<V>(c0)));
    });
}

// Window row i (2 <= i < k) added to the three rows with coefficients i,
// i - 1, i - 2; row 2 written when i is 2.
template <bool kWrite2, class T>
void ownBFilterColumn32f(const T* s, float* r0, float* r1, float* r2, int elems, const float* rep, int i) {
    const __m128 ca = _mm_loadu_ps(rep + 4 * i), cb = _mm_loadu_ps(rep + 4 * (i - 1)),
                 cc = _mm_loadu_ps(rep + 4 * (i - 2));
    each_block(elems, [=](auto v, int e) {
        using V = decltype(v);
        const auto x = V::widen(s + e);
        V::store(r0 + e, V::add(V::loadf(r0 + e), V::mul(x, coef_of<V>(ca))));
        V::store(r1 + e, V::add(V::loadf(r1 + e), V::mul(x, coef_of<V>(cb))));
        const auto p = V::mul(x, coef_of<V>(cc));
        if constexpr (kWrite2) V::store(r2 + e, p);
        else V::store(r2 + e, V::add(V::loadf(r2 + e), p));
    });
}

// Window rows k and k + 1 finish rows 1 and 2.
template <class T>
void ownLastFiltCol32f(const T* sk, const T* sk1, float* r1, float* r2, int elems, const float* rep, int k) {
    const __m128 cl = _mm_loadu_ps(rep + 4 * (k - 1)), cm = _mm_loadu_ps(rep + 4 * (k - 2));
    each_block(elems, [=](auto v, int e) {
        using V = decltype(v);
        const auto x = V::widen(sk + e), z = V::widen(sk1 + e);
        V::store(r1 + e, V::add(V::loadf(r1 + e), V::mul(x, coef_of<V>(cl))));
        const auto t = V::add(V::loadf(r2 + e), V::mul(x, coef_of<V>(cm)));
        V::store(r2 + e, V::add(t, V::mul(z, coef_of<V>(cl))));
    });
}

// Window row i added to one row with coefficient i (written when i is 0).
template <bool kWrite, class T>
void ownOneFiltCol32f(const T* s, float* r, int elems, const float* rep, int i) {
    const __m128 c = _mm_loadu_ps(rep + 4 * i);
    each_block(elems, [=](auto v, int e) {
        using V = decltype(v);
        const auto p = V::mul(V::widen(s + e), coef_of<V>(c));
        if constexpr (kWrite) V::store(r + e, p);
        else V::store(r + e, V::add(V::loadf(r + e), p));
    });
}

// `n` float rows, `stride` floats apart, into n destination rows, to nearest
// (ties to even) with saturation; AC4 keeps the fourth channel.
template <class E>
void convert_rows(const float* r, int stride, typename E::Elem* d, int dstStep, int width, int n) {
    using T = typename E::Elem;
    const int rs = stride * int(sizeof(float));
    const OrviSize roi = {width, n};
    if constexpr (E::kLayout == Layout::AC4) {
        if constexpr (std::is_same_v<T, Orv8u>) ORV_T(orviConvert_32f8u_AC4R)(r, rs, d, dstStep, roi, orvRndNear);
        else if constexpr (std::is_same_v<T, Orv16s>) ORV_T(orviConvert_32f16s_AC4R)(r, rs, d, dstStep, roi, orvRndNear);
        else ORV_T(orviConvert_32f16u_AC4R)(r, rs, d, dstStep, roi, orvRndNear);
    } else if constexpr (std::is_same_v<T, Orv8u>) {
        ORV_T(orviConvert_32f8u_C1R)(r, rs, d, dstStep, roi, orvRndNear);
    } else {
        for (int y = 0; y < n; ++y, r += stride, d = byte_off(d, dstStep)) {
            if constexpr (std::is_same_v<T, Orv16s>) ORV_T(orvsConvert_32f16s_Sfs)(r, d, width, orvRndNear, 0);
            else ORV_T(orvsConvert_32f16u_Sfs)(r, d, width, orvRndNear, 0);
        }
    }
}

// Scratch: the coefficients reversed, four copies each, in room for
// 8 * ((k + 1) / 2) floats, then three float rows of W elements (the row's
// element count rounded up to 4). Declines (false) when the scratch is short.
template <class E>
bool piFilterColumn32f_pipeline(const ColCall<E>& c) {
    using T = typename E::Elem;
    const int elems = c.width * E::kCh, k = c.k;
    const int64_t coefRoom = 8 * ((int64_t(k) + 1) / 2), W = (int64_t(elems) + 3) & ~int64_t(3);
    if (c.scratch == nullptr || coefRoom + 3 * W > c.scratchLen) return false;

    float* rep = c.scratch;
    for (int i = 0; i < k; ++i) _mm_storeu_ps(rep + 4 * i, _mm_set1_ps(c.coefLast[-i]));
    float* r0 = c.scratch + coefRoom;
    float* r1 = r0 + W;
    float* r2 = r1 + W;

    const ptrdiff_t step = c.srcStep;
    const T* s = c.win;
    T* d = c.dst;
    const int h3 = c.height / 3 * 3;
    int y = 0;
    for (; y < h3; y += 3, s = row_at(s, step, 3), d = byte_off(d, 3 * ptrdiff_t(c.dstStep))) {
        ownFirstFiltCol32f(s, row_at(s, step, 1), r0, r1, elems, rep);
        ownBFilterColumn32f<true>(row_at(s, step, 2), r0, r1, r2, elems, rep, 2);
        for (int i = 3; i < k; ++i) ownBFilterColumn32f<false>(row_at(s, step, i), r0, r1, r2, elems, rep, i);
        ownLastFiltCol32f(row_at(s, step, k), row_at(s, step, k + 1), r1, r2, elems, rep, k);
        convert_rows<E>(r0, int(W), d, c.dstStep, c.width, 3);
    }
    for (; y < c.height; ++y, s = row_at(s, step, 1), d = byte_off(d, c.dstStep)) {
        ownOneFiltCol32f<true>(s, r0, elems, rep, 0);
        for (int i = 1; i < k; ++i) ownOneFiltCol32f<false>(row_at(s, step, i), r0, elems, rep, i);
        convert_rows<E>(r0, int(W), d, c.dstStep, c.width, 1);
    }
    return true;
}

// ---- The route --------------------------------------------------------------

template <class E>
void column_route_int(const ColCall<E>& c) {
    constexpr bool ac4 = E::kLayout == Layout::AC4;
    if constexpr (kTier == Tier::e9) {
        if (c.width >= 8 && c.scratch != nullptr && c.scratchLen >= int64_t(c.width) * E::kCh) {
            e9_ownFilterColumn32f_g9e9(c);
            return;
        }
    } else {
        if (c.k >= 3 && c.width >= (ac4 ? 4 : 16) && piFilterColumn32f_pipeline(c)) return;
    }
    column_generic(c);
}

}  // namespace colf
}  // namespace
}  // namespace orv::ORV_TIER_NS
