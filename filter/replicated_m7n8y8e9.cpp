// Replicated-coefficient float filter kernels: every destination element is
// one running single-precision sum, zeroed, then taking the window's rows from
// the top and in each row the columns from left to right. The coefficients
// are first copied to scratch in that order (the last stored one first), each
// replicated over a vector, so the inner loops multiply by an aligned memory
// operand with no broadcast.
//
// C1 and C3 work on the row's elements: a tap of window column c reads the
// source S * c elements ahead (S = 1 for C1, 3 for C3), with the same
// coefficient for every channel. A block of 8 elements takes aligned vectors
// of the window row and builds the shifted vectors of each tap from two of
// them (byte-align from SSSE3 on, shuffles in m7). Those loads may read up to
// three elements past the last one a block needs, so the main run stops
// before its loads would leave the window row; the head up to the first
// 16-byte boundary and the rest of the row go through the point loops.
// C4 and AC4 take one pixel per vector and need no shifted vectors.
//
// All tiers give every pixel the same bits, except e9's C1 kernel for kW 5,
// which adds the five products of a kernel row in a tree before adding them
// to the running sum (its edge pixels keep the plain order).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "filter/kernels.h"
#include "internal/orv_simd.h"

namespace orv::ORV_TIER_NS {
namespace {

using simd::F4;

// One call's geometry; steps in elements.
struct Win {
    const float* src;  // window origin of the first row
    std::ptrdiff_t ss;
    float* dst;
    std::ptrdiff_t ds;
    int width;
    int height;
    int kW;
    int kH;
    const float* coef;  // replicated coefficients, window order
};

inline std::uintptr_t addr(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

// Common declines, then the reversed replicated copy. kCopies lanes per
// coefficient; the scratch must hold kCopies * kW * kH floats aligned to
// 4 * kCopies bytes.
template <int kCopies>
bool prepare(Win& w, const Orv32f* pSrcWin, int srcStep, Orv32f* pDst, int dstStep, int width, int height,
             const Orv32f* pCoefLast, int kW, int kH, Orv32f* pScratch) {
    if (kW < 3 || kH < 1 || width < 1 || height < 1) return false;
    if (!pSrcWin || !pDst || !pCoefLast || !pScratch) return false;
    if (srcStep % 4 != 0 || dstStep % 4 != 0) return false;
    if (addr(pSrcWin) % 4 != 0 || addr(pDst) % 4 != 0) return false;
    if (addr(pScratch) % (4 * kCopies) != 0) return false;
    const std::ptrdiff_t n = std::ptrdiff_t(kW) * kH;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const float c = pCoefLast[-i];
        for (int k = 0; k < kCopies; ++k) pScratch[i * kCopies + k] = c;
    }
    w = {pSrcWin, srcStep / 4, pDst, dstStep / 4, width, height, kW, kH, pScratch};
    return true;
}

// ---- Point loops -----------------------------------------------------------

// Element e of a row: one sum in window order. kCopies is the coefficient
// stride in scratch.
template <int S, int kCopies>
inline float point1(const Win& w, const float* srow, int e) {
    const float* c = w.coef;
    float sum = 0.0f;
    for (int r = 0; r < w.kH; ++r) {
        const float* q = srow + r * w.ss + e;
        for (int j = 0; j < w.kW; ++j, c += kCopies) sum += q[S * j] * *c;
    }
    return sum;
}

// Elements e..e+3 of a row, each its own sum in window order.
template <int S, int kCopies>
inline __m128 point4(const Win& w, const float* srow, int e) {
    const float* c = w.coef;
    __m128 sum = _mm_setzero_ps();
    for (int r = 0; r < w.kH; ++r) {
        const float* q = srow + r * w.ss + e;
        for (int j = 0; j < w.kW; ++j, c += kCopies)
            sum = _mm_add_ps(sum, _mm_mul_ps(_mm_loadu_ps(q + S * j), _mm_load_ps(c)));
    }
    return sum;
}

// Elements [from, to) of a row: four at a time while four remain, then one.
template <int S, int kCopies>
inline void points(const Win& w, const float* srow, float* drow, int from, int to) {
    int e = from;
    for (; e + 4 <= to; e += 4) _mm_storeu_ps(drow + e, point4<S, kCopies>(w, srow, e));
    for (; e < to; ++e) drow[e] = point1<S, kCopies>(w, srow, e);
}

// ---- Shifted vectors -------------------------------------------------------

// Elements k..k+3 of the eight elements lo:hi.
template <int k>
inline __m128 shifted(__m128 lo, [[maybe_unused]] __m128 hi) {
    if constexpr (k == 0) {
        return lo;
    } else if constexpr (kTier == Tier::m7) {
        if constexpr (k == 2) return _mm_shuffle_ps(lo, hi, _MM_SHUFFLE(1, 0, 3, 2));
        const __m128 t = _mm_shuffle_ps(lo, hi, _MM_SHUFFLE(0, 0, 3, 3));  // lo3 lo3 hi0 hi0
        if constexpr (k == 1) return _mm_shuffle_ps(lo, t, _MM_SHUFFLE(2, 0, 2, 1));
        else return _mm_shuffle_ps(t, hi, _MM_SHUFFLE(2, 1, 2, 0));
    } else {
        return _mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(hi), _mm_castps_si128(lo), 4 * k));
    }
}

// Vectors a group of n taps at stride S needs, counted from its first
// element (which is aligned when the row is).
template <int S>
constexpr int vectors_for(int n) {
    const int off = S * (n - 1);
    return (off + 3) / 4 + 2;
}

// n taps (n <= 4) of an 8-element block: q is the source at the group's first
// tap, c its first replicated coefficient. Sums take the products one after
// another in tap order.
template <int S, int n, bool kAligned>
inline void taps(const float* q, const float* c, __m128& s0, __m128& s1) {
    constexpr int nv = vectors_for<S>(n);
    __m128 a[6];
    [&]<int... i>(std::integer_sequence<int, i...>) {
        ((a[i] = F4::load<kAligned>(q + 4 * i)), ...);
    }(std::make_integer_sequence<int, nv>{});
    [&]<int... j>(std::integer_sequence<int, j...>) {
        (
            [&] {
                constexpr int off = S * j, v = off / 4, k = off % 4;
                const __m128 cj = _mm_load_ps(c + 4 * j);
                s0 = _mm_add_ps(s0, _mm_mul_ps(shifted<k>(a[v], a[k ? v + 1 : v]), cj));
                s1 = _mm_add_ps(s1, _mm_mul_ps(shifted<k>(a[v + 1], a[k ? v + 2 : v + 1]), cj));
            }(),
            ...);
    }(std::make_integer_sequence<int, n>{});
}

// One 8-element block at q (the first row's source of the block's first
// element): the sums of all kernel rows.
template <int S, bool kAligned, bool kThree>
inline void block8(const Win& w, const float* q, float* d) {
    __m128 s0 = _mm_setzero_ps(), s1 = _mm_setzero_ps();
    const float* c = w.coef;
    if constexpr (kThree) {
        for (int r = 0; r < w.kH; ++r, q += w.ss, c += 12) taps<S, 3, kAligned>(q, c, s0, s1);
    } else {
        const int g4 = w.kW & ~3, tail = w.kW - g4;
        for (int r = 0; r < w.kH; ++r, q += w.ss) {
            int g = 0;
            for (; g < g4; g += 4, c += 16) taps<S, 4, kAligned>(q + S * g, c, s0, s1);
            switch (tail) {
                case 1: taps<S, 1, kAligned>(q + S * g, c, s0, s1); break;
                case 2: taps<S, 2, kAligned>(q + S * g, c, s0, s1); break;
                case 3: taps<S, 3, kAligned>(q + S * g, c, s0, s1); break;
                default: break;
            }
            c += 4 * tail;
        }
    }
    if (addr(d) % 16 == 0) {
        _mm_store_ps(d, s0);
        _mm_store_ps(d + 4, s1);
    } else {
        __m64* p = reinterpret_cast<__m64*>(d);
        _mm_storel_pi(p, s0);
        _mm_storeh_pi(p + 1, s0);
        _mm_storel_pi(p + 2, s1);
        _mm_storeh_pi(p + 3, s1);
    }
}

// C1 and C3 with four copies per coefficient: head to the source row's
// 16-byte boundary (none in the unaligned variant), main run of 8-element
// blocks whose loads stay inside the window row, tail.
template <int S, bool kAligned, bool kThree>
void rows_elems(const Win& w) {
    const int n = w.width * S;                 // destination elements of a row
    const int rowE = (w.width + w.kW - 1) * S;  // window elements of a row
    // Last element the block's loads reach, counted from its first.
    const int reach = 4 * ((S * (w.kW - 1) + 3) / 4) + 7;
    for (int y = 0; y < w.height; ++y) {
        const float* srow = w.src + y * w.ss;
        float* drow = w.dst + y * w.ds;
        int head = 0;
        if constexpr (kAligned) head = int((16 - addr(srow) % 16) % 16 / 4);
        if (head > n) head = n;
        points<S, 4>(w, srow, drow, 0, head);
        int x = head;
        for (; x + 8 <= n && x + reach < rowE; x += 8) block8<S, kAligned, kThree>(w, srow + x, drow + x);
        points<S, 4>(w, srow, drow, x, n);
    }
}

template <int S>
int run_elems(const Win& w, int srcStep) {
    const bool aligned = srcStep % 16 == 0;
    const bool three = w.kW == 3;
    if (aligned) three ? rows_elems<S, true, true>(w) : rows_elems<S, true, false>(w);
    else three ? rows_elems<S, false, true>(w) : rows_elems<S, false, false>(w);
    return 1;
}

// ---- C4 and AC4: one pixel per vector -------------------------------------

template <bool kAlpha>
inline void store_pixel(float* d, __m128 v) {
    const bool aligned = addr(d) % 16 == 0;
    if constexpr (kAlpha) {
        // Element 3 of the destination stays as it was.
        const __m128 mask = _mm_castsi128_ps(_mm_set_epi32(0, -1, -1, -1));
        const __m128 old = aligned ? _mm_load_ps(d) : _mm_loadu_ps(d);
        v = _mm_or_ps(_mm_and_ps(mask, v), _mm_andnot_ps(mask, old));
    }
    if (aligned) _mm_store_ps(d, v);
    else _mm_storeu_ps(d, v);
}

template <bool kAligned, bool kAlpha>
void rows_pixels(const Win& w) {
    for (int y = 0; y < w.height; ++y) {
        const float* srow = w.src + y * w.ss;
        float* drow = w.dst + y * w.ds;
        int x = 0;
        for (; x + 2 <= w.width; x += 2) {
            __m128 s0 = _mm_setzero_ps(), s1 = _mm_setzero_ps();
            const float* c = w.coef;
            for (int r = 0; r < w.kH; ++r) {
                const float* q = srow + r * w.ss + 4 * x;
                for (int j = 0; j < w.kW; ++j, c += 4, q += 4) {
                    const __m128 cj = _mm_load_ps(c);
                    s0 = _mm_add_ps(s0, _mm_mul_ps(F4::load<kAligned>(q), cj));
                    s1 = _mm_add_ps(s1, _mm_mul_ps(F4::load<kAligned>(q + 4), cj));
                }
            }
            store_pixel<kAlpha>(drow + 4 * x, s0);
            store_pixel<kAlpha>(drow + 4 * x + 4, s1);
        }
        if (x < w.width) {
            __m128 s = _mm_setzero_ps();
            const float* c = w.coef;
            for (int r = 0; r < w.kH; ++r) {
                const float* q = srow + r * w.ss + 4 * x;
                for (int j = 0; j < w.kW; ++j, c += 4, q += 4)
                    s = _mm_add_ps(s, _mm_mul_ps(F4::load<kAligned>(q), _mm_load_ps(c)));
            }
            store_pixel<kAlpha>(drow + 4 * x, s);
        }
    }
}

template <bool kAlpha>
int run_pixels(const Win& w, int srcStep) {
    if (srcStep % 16 == 0 && addr(w.src) % 16 == 0) rows_pixels<true, kAlpha>(w);
    else rows_pixels<false, kAlpha>(w);
    return 1;
}

// ---- e9 C1: eight copies, 256-bit blocks of 16 pixels ----------------------

#if defined(ORV_TIER_E9)
using simd::F8;

// Products of one kernel row for 8 pixels at q, columns 0..kW-1 (kW 3: the
// running sum; kW 5: ((c0 + (c2 + c1)) + c4) + c3 added to it).
template <int kW>
inline __m256 row_taps8(__m256 s, const float* q, const float* c) {
    auto p = [&](int j) { return _mm256_mul_ps(_mm256_loadu_ps(q + j), _mm256_load_ps(c + 8 * j)); };
    if constexpr (kW == 3) {
        s = _mm256_add_ps(s, p(0));
        s = _mm256_add_ps(s, p(1));
        return _mm256_add_ps(s, p(2));
    } else {
        const __m256 t = _mm256_add_ps(_mm256_add_ps(_mm256_add_ps(p(0), _mm256_add_ps(p(2), p(1))), p(4)), p(3));
        return _mm256_add_ps(s, t);
    }
}

template <int kW>
void rows_gsh(const Win& w) {
    constexpr int kAlign = kW == 5 ? 32 : 16;
    constexpr int kLeave = kW == 5 ? 16 : 0;  // pixels left to the tail
    const int n = w.width;
    for (int y = 0; y < w.height; ++y) {
        const float* srow = w.src + y * w.ss;
        float* drow = w.dst + y * w.ds;
        int head = int((kAlign - addr(srow) % kAlign) % kAlign / 4);
        if (head > n) head = n;
        points<1, 8>(w, srow, drow, 0, head);
        int x = head;
        for (; x + 16 + kLeave <= n; x += 16) {
            __m256 s0 = _mm256_setzero_ps(), s1 = _mm256_setzero_ps();
            const float* q = srow + x;
            const float* c = w.coef;
            for (int r = 0; r < w.kH; ++r, q += w.ss, c += 8 * kW) {
                s0 = row_taps8<kW>(s0, q, c);
                s1 = row_taps8<kW>(s1, q + 8, c);
            }
            float* d = drow + x;
            if (addr(d) % 32 == 0) {
                _mm256_store_ps(d, s0);
                _mm256_store_ps(d + 8, s1);
            } else {
                _mm256_storeu_ps(d, s0);
                _mm256_storeu_ps(d + 8, s1);
            }
        }
        points<1, 8>(w, srow, drow, x, n);
    }
}
#endif

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

#define ORV_REPL_ARGS                                                                                      \
    const Orv32f *pSrcWin, int srcStep, Orv32f *pDst, int dstStep, int width, int height,                   \
        const Orv32f *pCoefLast, int kW, int kH, Orv32f *pScratch
#define ORV_REPL_PASS pSrcWin, srcStep, pDst, dstStep, width, height, pCoefLast, kW, kH, pScratch

#if defined(ORV_TIER_E9)
ORV_TIER_API int ORV_T(owniFilter_32f_C1R_gsh)(ORV_REPL_ARGS) {
    Win w;
    if (kW != 3 && kW != 5) return 0;
    if (!prepare<8>(w, ORV_REPL_PASS)) return 0;
    if (kW == 3) rows_gsh<3>(w);
    else rows_gsh<5>(w);
    return 1;
}
#else
ORV_TIER_API int ORV_T(owniFilter_32f_C1R)(ORV_REPL_ARGS) {
    Win w;
    return prepare<4>(w, ORV_REPL_PASS) ? run_elems<1>(w, srcStep) : 0;
}
ORV_TIER_API int ORV_T(owniFilter_32f_C4R)(ORV_REPL_ARGS) {
    Win w;
    return prepare<4>(w, ORV_REPL_PASS) ? run_pixels<false>(w, srcStep) : 0;
}
ORV_TIER_API int ORV_T(owniFilter_32f_AC4R)(ORV_REPL_ARGS) {
    Win w;
    return prepare<4>(w, ORV_REPL_PASS) ? run_pixels<true>(w, srcStep) : 0;
}
#endif

ORV_TIER_API int ORV_T(owniFilter_32f_C3R)(ORV_REPL_ARGS) {
    Win w;
    return prepare<4>(w, ORV_REPL_PASS) ? run_elems<3>(w, srcStep) : 0;
}
