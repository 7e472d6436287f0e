// Row filters: every row convolved with one kernel of kernelSize taps,
//   dst(x) = sum over j < kernelSize of pKernel[j] * src(x + xAnchor - j),
// per channel, for 32f, 8u, 16u and 16s in C1, C3, C4 and AC4 (AC4 leaves the
// fourth channel of the destination as it was).
//
// Every route starts from the window origin, pSrc moved by xAnchor + 1 -
// kernelSize pixels, and walks the coefficients downward from the last
// stored one while it walks the source upward. Since a coefficient multiplies
// every channel of a pixel alike, a row of w pixels of C channels is worked
// as a row of w * C elements whose taps lie C elements apart.
//
// Routes:
// - e9, 32f: kernels of up to 7 taps run one table entry that writes the
//   destination; longer kernels run, per row, a group of 8 taps that writes
//   the row, further groups of 8 that add to it, and an adding entry for the
//   remaining taps. Each group's products and the destination sum as a tree
//   in registers, so the row holds a rounded partial sum between groups.
// - e9, integers: the same groups on a float row in scratch, then the last
//   entry converts the row, rounding half away from zero. Narrow images
//   (under 8 pixels) or no scratch: the generic loop.
// - y8, n8, m7: from 3 taps and 16 pixels on, the replicated-coefficient
//   design: the coefficients reversed, four copies each, one running sum per
//   element over all taps, 8 pixels at a time; integer results rounded to
//   nearest. Otherwise the generic loop.
// - Generic loop: one sum per element from zero, tap by tap from the last
//   stored coefficient, four pixels at once in C1; integer results by the
//   scalar rule (ties to even). The replicated design sums in exactly this
//   order, so in these tiers both routes give the same bits.
//
// Loads read exactly the source elements a block needs: the last vector of a
// row ends at the row's last needed column.
#include <climits>
#include <cstdint>
#include <cstring>

#include "filter/row_lanes.h"

ORV_TIER_DECLARE(orvsMalloc_32f)
ORV_TIER_DECLARE(orvsFree)

namespace orv::ORV_TIER_NS {
namespace {
namespace rowf {

using L8 = L8T<>;

// ---- Generic loop ----------------------------------------------------------

// Result of one element: a float as it is, an integer by the scalar rule.
template <class D>
inline void put1(D* p, float v) {
    if constexpr (std::is_same_v<D, float>)
        L1::store(p, v);
    else
        store1(p, filt::round_generic<D>(double(v)));
}

// Four lanes of results; with kKeep the fourth is not written.
template <class D, bool kKeep>
inline void put4(D* p, __m128 v) {
    if constexpr (std::is_same_v<D, float>) {
        if constexpr (kKeep) L4::store_rgb(p, v);
        else L4::store(p, v);
    } else {
        float t[4];
        _mm_storeu_ps(t, v);
        for (int i = 0; i < (kKeep ? 3 : 4); ++i) put1(p + i, t[i]);
    }
}

// Pixels x0 .. x1 - 1 of one row: each element one sum from zero over the
// taps, the last stored coefficient first. C1 four pixels at a time, C4 and
// AC4 one pixel per vector, C3 element by element.
template <class T, class D, Layout L>
void generic_pixels(const T* s, D* d, int x0, int x1, const float* coefLast, int k) {
    constexpr int ch = kChannels<L>;
    if constexpr (L == Layout::C1 || L == Layout::C4 || L == Layout::AC4) {
        constexpr int step = ch == 1 ? 4 : 1;
        for (; x0 + step <= x1; x0 += step) {
            const T* p = s + ptrdiff_t(x0) * ch;
            __m128 sum = _mm_setzero_ps();
            for (int c = 0; c < k; ++c) sum = _mm_add_ps(sum, _mm_mul_ps(L4::widen(p + ptrdiff_t(c) * ch), _mm_set1_ps(coefLast[-c])));
            put4<D, L == Layout::AC4>(d + ptrdiff_t(x0) * ch, sum);
        }
    }
    for (; x0 < x1; ++x0)
        for (int e = 0; e < ch; ++e) {
            const T* p = s + ptrdiff_t(x0) * ch + e;
            float sum = 0.0f;
            for (int c = 0; c < k; ++c) sum += L1::widen(p + ptrdiff_t(c) * ch) * coefLast[-c];
            put1(d + ptrdiff_t(x0) * ch + e, sum);
        }
}

template <class T, Layout L>
void generic_rows(const T* s, int srcStep, T* d, int dstStep, int width, int height, const float* coefLast, int k) {
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep))
        generic_pixels<T, T, L>(s, d, 0, width, coefLast, k);
}

// ---- e9: groups of up to 8 taps over one row ----------------------------

// One block of V::kN elements: N products (tap c at c * ch elements), plus the
// destination's partial sum when adding, summed as a tree.
template <class V, int N, bool kAdd, int ch, class T>
inline typename V::R group(const T* s, const typename V::R* cf, const float* d) {
    typename V::R o[N + kAdd];
    int n = 0;
    if constexpr (kAdd) o[n++] = V::loadf(d);
#pragma GCC unroll 8
    for (int c = 0; c < N; ++c) o[n++] = V::mul(V::widen(s + c * ch), cf[c]);
    return tree<V, 0, N + kAdd>(o);
}

template <class V, bool kKeep>
inline void put(float* d, typename V::R r) {
    if constexpr (kKeep) V::store_rgb(d, r);
    else V::store(d, r);
}

// N taps over `elems` elements of a row into the float row d: written, or
// added to what d holds. Blocks of 8 elements (two per step), then 4, then
// single elements; the adding form of 7 taps works in 128-bit blocks. With
// kKeep every fourth element of d is left alone (AC4 into a float image).
template <int N, bool kAdd, int ch, bool kKeep, class T>
void row_group(const T* s, float* d, int elems, const float* coefLast) {
    int e = 0;
    if constexpr (!(kAdd && N == 7)) {
        L8::R c8[N];
#pragma GCC unroll 8
        for (int c = 0; c < N; ++c) c8[c] = L8::set1(coefLast[-c]);
        for (; e + 16 <= elems; e += 16) {
            const L8::R r0 = group<L8, N, kAdd, ch>(s + e, c8, d + e);
            const L8::R r1 = group<L8, N, kAdd, ch>(s + e + 8, c8, d + e + 8);
            put<L8, kKeep>(d + e, r0);
            put<L8, kKeep>(d + e + 8, r1);
        }
        if (e + 8 <= elems) {
            put<L8, kKeep>(d + e, group<L8, N, kAdd, ch>(s + e, c8, d + e));
            e += 8;
        }
    }
    if (e + 4 <= elems) {
        L4::R c4[N];
        for (int c = 0; c < N; ++c) c4[c] = L4::set1(coefLast[-c]);
        for (; e + 4 <= elems; e += 4) put<L4, kKeep>(d + e, group<L4, N, kAdd, ch>(s + e, c4, d + e));
    }
    if constexpr (!kKeep) {
        if (e < elems) {
            float c1[N];
            for (int c = 0; c < N; ++c) c1[c] = coefLast[-c];
            for (; e < elems; ++e) L1::store(d + e, group<L1, N, kAdd, ch>(s + e, c1, d + e));
        }
    }
}

// ---- e9, 32f: the tables --------------------------------------------------

// Entries take the window origin, steps in bytes, the region, the last
// stored coefficient of the taps they apply, and the kernel's length (which
// only the entry for 8 or more reads).
using RowFn = void (*)(const Orv32f* s, int srcStep, Orv32f* d, int dstStep, int width, int height,
                       const Orv32f* coefLast, int kernelSize);

// _N writes the destination rows with N taps, _NAdd adds N taps to them.
template <int N, bool kAdd, Layout L>
void piFilterRow_32f_g9e9_N(const Orv32f* s, int srcStep, Orv32f* d, int dstStep, int width, int height,
                            const Orv32f* coefLast, int /*kernelSize*/) {
    constexpr int ch = kChannels<L>;
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep))
        row_group<N, kAdd, ch, L == Layout::AC4>(s, d, width * ch, coefLast);
}

template <Layout L>
void piFilterRow_32f_g9e9_8(const Orv32f* s, int srcStep, Orv32f* d, int dstStep, int width, int height,
                            const Orv32f* coefLast, int kernelSize);

template <Layout L>
[[maybe_unused]] constexpr RowFn ownFilterRowTab[9] = {
    piFilterRow_32f_g9e9_N<1, false, L>, piFilterRow_32f_g9e9_N<1, false, L>, piFilterRow_32f_g9e9_N<2, false, L>,
    piFilterRow_32f_g9e9_N<3, false, L>, piFilterRow_32f_g9e9_N<4, false, L>, piFilterRow_32f_g9e9_N<5, false, L>,
    piFilterRow_32f_g9e9_N<6, false, L>, piFilterRow_32f_g9e9_N<7, false, L>, piFilterRow_32f_g9e9_8<L>};

template <Layout L>
[[maybe_unused]] constexpr RowFn ownFilterRowAddTab[8] = {
    piFilterRow_32f_g9e9_N<1, true, L>, piFilterRow_32f_g9e9_N<1, true, L>, piFilterRow_32f_g9e9_N<2, true, L>,
    piFilterRow_32f_g9e9_N<3, true, L>, piFilterRow_32f_g9e9_N<4, true, L>, piFilterRow_32f_g9e9_N<5, true, L>,
    piFilterRow_32f_g9e9_N<6, true, L>, piFilterRow_32f_g9e9_N<7, true, L>};

// Kernels of 8 taps or more, row by row while the row is hot: the first group
// of 8 writes it, the further groups add, the remaining taps are added by the
// adding entry of their count.
template <Layout L>
void piFilterRow_32f_g9e9_8(const Orv32f* s, int srcStep, Orv32f* d, int dstStep, int width, int height,
                            const Orv32f* coefLast, int kernelSize) {
    constexpr int ch = kChannels<L>;
    constexpr bool keep = L == Layout::AC4;
    const int g = kernelSize & ~7, rem = kernelSize & 7, elems = width * ch;
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep)) {
        row_group<8, false, ch, keep>(s, d, elems, coefLast);
        for (int j = 8; j < g; j += 8) row_group<8, true, ch, keep>(s + ptrdiff_t(j) * ch, d, elems, coefLast - j);
        if (rem != 0) ownFilterRowAddTab<L>[rem](s + ptrdiff_t(g) * ch, srcStep, d, dstStep, width, 1, coefLast - g, kernelSize);
    }
}

// ---- e9, integers: float row in scratch, then conversion -----------------

// The float row `row` (elems elements) into T, rounding half away from zero;
// AC4 leaves every fourth element of d alone.
template <class T, Layout L>
void convert_row_fin(const float* row, T* d, int elems) {
    constexpr bool keep = L == Layout::AC4;
    int e = 0;
    for (; e + 8 <= elems; e += 8) {
        __m128i lo, hi;
        fin8<T>(L8::loadf(row + e), lo, hi);
        store8<T, keep>(d + e, lo, hi);
    }
    for (; e < elems; ++e)
        if (!keep || e % 4 != 3) store1(d + e, T(fin1<T>(row[e])));
}

template <class T>
using IntRowFn = void (*)(const T* s, int srcStep, T* d, int dstStep, int width, int height, const Orv32f* coefLast,
                          Orv32f* row, int first);

// Entry N: N taps written to the float row (first set) or added to it, then
// the row converted into the destination; entry 0 only converts.
template <int N, class T, Layout L>
void owniFilterRow32f_g9e9_N(const T* s, int srcStep, T* d, int dstStep, int width, int height,
                             const Orv32f* coefLast, Orv32f* row, int first) {
    constexpr int ch = kChannels<L>;
    const int elems = width * ch;
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep)) {
        if constexpr (N > 0) {
            if (first) row_group<N, false, ch, false>(s, row, elems, coefLast);
            else row_group<N, true, ch, false>(s, row, elems, coefLast);
        }
        convert_row_fin<T, L>(row, d, elems);
    }
}

template <class T, Layout L>
[[maybe_unused]] constexpr IntRowFn<T> FilterRowTable[8] = {owniFilterRow32f_g9e9_N<0, T, L>, owniFilterRow32f_g9e9_N<1, T, L>,
                                           owniFilterRow32f_g9e9_N<2, T, L>, owniFilterRow32f_g9e9_N<3, T, L>,
                                           owniFilterRow32f_g9e9_N<4, T, L>, owniFilterRow32f_g9e9_N<5, T, L>,
                                           owniFilterRow32f_g9e9_N<6, T, L>, owniFilterRow32f_g9e9_N<7, T, L>};

template <class T, Layout L>
void ownFilterRow32f_g9e9(const T* s, int srcStep, T* d, int dstStep, int width, int height,
                          const Orv32f* coefLast, int kernelSize, Orv32f* row) {
    if (kernelSize < 8) {
        FilterRowTable<T, L>[kernelSize](s, srcStep, d, dstStep, width, height, coefLast, row, 1);
        return;
    }
    constexpr int ch = kChannels<L>;
    const int g = kernelSize & ~7, elems = width * ch;
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep)) {
        row_group<8, false, ch, false>(s, row, elems, coefLast);
        for (int j = 8; j < g; j += 8) row_group<8, true, ch, false>(s + ptrdiff_t(j) * ch, row, elems, coefLast - j);
        FilterRowTable<T, L>[kernelSize & 7](s + ptrdiff_t(g) * ch, srcStep, d, dstStep, width, 1, coefLast - g, row, 0);
    }
}

// ---- y8, n8, m7: replicated coefficients ---------------------------------

// Pixels before the source reaches a 16-byte boundary (0 when it never does,
// as for a float row at an odd address), at most width.
template <class T, int ch>
inline int head_pixels(const T* s, int width) {
    const uintptr_t a = reinterpret_cast<uintptr_t>(s);
    for (int h = 0; h < 16 && h < width; ++h)
        if ((a + uintptr_t(h) * ch * sizeof(T)) % 16 == 0) return h;
    return 0;
}

// Taps c0 .. c0 + n - 1 (n a compile-time count) added to the sums of one
// block of NV vectors, tap by tap.
template <int n, int NV, int ch, class T>
inline void taps(__m128* sum, const T* p, const float* rep, int c0) {
#pragma GCC unroll 4
    for (int t = 0; t < n; ++t) {
        const __m128 cv = _mm_load_ps(rep + 4 * (c0 + t));
        const T* q = p + ptrdiff_t(c0 + t) * ch;
#pragma GCC unroll 8
        for (int v = 0; v < NV; ++v) sum[v] = _mm_add_ps(sum[v], _mm_mul_ps(L4::widen(q + 4 * v), cv));
    }
}

// The block of 8 pixels at p: 2 * ch vectors of four elements, each one
// running sum over all taps (in groups of 4, then 1 to 3; exactly 3 taps in
// a loop of their own), stored or converted to nearest.
template <class T, class D, Layout L>
inline void block8(const T* p, D* d, const float* rep, int k) {
    constexpr int ch = kChannels<L>, NV = 2 * ch;
    __m128 sum[NV];
    for (int v = 0; v < NV; ++v) sum[v] = _mm_setzero_ps();
    if (k == 3) {
        taps<3, NV, ch>(sum, p, rep, 0);
    } else {
        int c = 0;
        for (; c + 4 <= k; c += 4) taps<4, NV, ch>(sum, p, rep, c);
        switch (k - c) {
            case 3: taps<3, NV, ch>(sum, p, rep, c); break;
            case 2: taps<2, NV, ch>(sum, p, rep, c); break;
            case 1: taps<1, NV, ch>(sum, p, rep, c); break;
            default: break;
        }
    }
    constexpr bool keep = L == Layout::AC4;
    if constexpr (std::is_same_v<D, float>) {
        for (int v = 0; v < NV; ++v) put<L4, keep>(d + 4 * v, sum[v]);
    } else {
        for (int v = 0; v < NV; v += 2) store8<D, keep>(d + 4 * v, near4<D>(sum[v]), near4<D>(sum[v + 1]));
    }
}

// Declines (0) for fewer than 3 taps and for a float source at an address
// that a float can't have; otherwise does all rows and returns 1. `rep` has
// room for 4 * k floats, 16-byte aligned.
template <class T, Layout L>
int owniFilterRow(const T* s, int srcStep, T* d, int dstStep, int width, int height, const Orv32f* coefLast, int k,
                  Orv32f* rep) {
    constexpr int ch = kChannels<L>;
    if (k < 3) return 0;
    if constexpr (std::is_same_v<T, float>)
        if (reinterpret_cast<uintptr_t>(s) % sizeof(float) != 0) return 0;
    for (int c = 0; c < k; ++c) _mm_store_ps(rep + 4 * c, _mm_set1_ps(coefLast[-c]));
    for (int y = 0; y < height; ++y, s = byte_off(s, srcStep), d = byte_off(d, dstStep)) {
        const int head = head_pixels<T, ch>(s, width);
        generic_pixels<T, T, L>(s, d, 0, head, coefLast, k);
        int x = head;
        for (; x + 8 <= width; x += 8) block8<T, T, L>(s + ptrdiff_t(x) * ch, d + ptrdiff_t(x) * ch, rep, k);
        generic_pixels<T, T, L>(s, d, x, width, coefLast, k);
    }
    return 1;
}

// ---- Routes and the entry ---------------------------------------------------

template <Layout L>
void route_32f(const Orv32f* s, int srcStep, Orv32f* d, int dstStep, int width, int height, const Orv32f* coefLast,
               int k) {
    if constexpr (kTier == Tier::e9) {
        ownFilterRowTab<L>[k < 8 ? k : 8](s, srcStep, d, dstStep, width, height, coefLast, k);
    } else {
        if (k >= 3 && width >= 16) {
            // Replicated coefficients on the stack up to 64 taps, else allocated.
            alignas(32) Orv32f stack[256];
            const bool onStack = k <= 64;
            Orv32f* rep = onStack ? stack : k <= INT_MAX / 4 ? ORV_T(orvsMalloc_32f)(4 * k) : nullptr;
            if (rep != nullptr) {
                const int done = owniFilterRow<Orv32f, L>(s, srcStep, d, dstStep, width, height, coefLast, k, rep);
                if (!onStack) ORV_T(orvsFree)(rep);
                if (done) return;
            }
        }
        generic_rows<Orv32f, L>(s, srcStep, d, dstStep, width, height, coefLast, k);
    }
}

template <class T, Layout L>
void route_int(const T* s, int srcStep, T* d, int dstStep, int width, int height, const Orv32f* coefLast, int k,
               Orv32f* scratch) {
    if constexpr (kTier == Tier::e9) {
        if (width >= 8 && scratch != nullptr) {
            ownFilterRow32f_g9e9<T, L>(s, srcStep, d, dstStep, width, height, coefLast, k, scratch);
            return;
        }
    } else {
        if (k >= 3 && width >= 16 && scratch != nullptr &&
            owniFilterRow<T, L>(s, srcStep, d, dstStep, width, height, coefLast, k, scratch))
            return;
    }
    generic_rows<T, L>(s, srcStep, d, dstStep, width, height, coefLast, k);
}

template <class T, Layout L>
OrvStatus filter_row(const T* pSrc, int srcStep, T* pDst, int dstStep, OrviSize roi, const Orv32f* pKernel, int k,
                     int xAnchor) {
    constexpr bool kFloat = std::is_same_v<T, Orv32f>;
    constexpr int64_t pixel = int64_t(kChannels<L>) * int64_t(sizeof(T));
    if (pSrc == nullptr || pDst == nullptr || pKernel == nullptr) return orvStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1 || k < 1) return orvStsSizeErr;
    if constexpr (kFloat)
        if (srcStep < 1 || dstStep < 1) return orvStsStepErr;
    if (srcStep < (int64_t(roi.width) + k - 1) * pixel || dstStep < int64_t(roi.width) * pixel) return orvStsStepErr;

    const T* win = byte_off(pSrc, (int64_t(xAnchor) + 1 - k) * pixel);
    const Orv32f* coefLast = pKernel + (k - 1);
    if constexpr (kFloat) {
        route_32f<L>(win, srcStep, pDst, dstStep, roi.width, roi.height, coefLast, k);
    } else {
        // e9: a float row (with room to spare); the other tiers: the
        // replicated coefficients. A failed allocation closes the routes
        // that need it.
        const int64_t n = kTier == Tier::e9 ? 4 * int64_t(roi.width) * kChannels<L> : 4 * int64_t(k);
        Orv32f* scratch = n <= INT_MAX ? ORV_T(orvsMalloc_32f)(int(n)) : nullptr;
        route_int<T, L>(win, srcStep, pDst, dstStep, roi.width, roi.height, coefLast, k, scratch);
        if (scratch != nullptr) ORV_T(orvsFree)(scratch);
    }
    return orvStsNoErr;
}

}  // namespace rowf
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

#define ORV_FILTER_ROW(name, T, L)                                                                              \
    ORV_TIER_API OrvStatus ORV_T(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, OrviSize dstRoiSize,  \
                                       const Orv32f* pKernel, int kernelSize, int xAnchor) {                   \
        return rowf::filter_row<T, rowf::Layout::L>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, \
                                                    xAnchor);                                                  \
    }
ORV_FILTER_ROW(orviFilterRow_32f_C1R, Orv32f, C1)
ORV_FILTER_ROW(orviFilterRow_32f_C3R, Orv32f, C3)
ORV_FILTER_ROW(orviFilterRow_32f_C4R, Orv32f, C4)
ORV_FILTER_ROW(orviFilterRow_32f_AC4R, Orv32f, AC4)
ORV_FILTER_ROW(orviFilterRow32f_8u_C1R, Orv8u, C1)
ORV_FILTER_ROW(orviFilterRow32f_8u_C3R, Orv8u, C3)
ORV_FILTER_ROW(orviFilterRow32f_8u_C4R, Orv8u, C4)
ORV_FILTER_ROW(orviFilterRow32f_8u_AC4R, Orv8u, AC4)
ORV_FILTER_ROW(orviFilterRow32f_16u_C1R, Orv16u, C1)
ORV_FILTER_ROW(orviFilterRow32f_16u_C3R, Orv16u, C3)
ORV_FILTER_ROW(orviFilterRow32f_16u_C4R, Orv16u, C4)
ORV_FILTER_ROW(orviFilterRow32f_16u_AC4R, Orv16u, AC4)
ORV_FILTER_ROW(orviFilterRow32f_16s_C1R, Orv16s, C1)
ORV_FILTER_ROW(orviFilterRow32f_16s_C3R, Orv16s, C3)
ORV_FILTER_ROW(orviFilterRow32f_16s_C4R, Orv16s, C4)
ORV_FILTER_ROW(orviFilterRow32f_16s_AC4R, Orv16s, AC4)
#undef ORV_FILTER_ROW
