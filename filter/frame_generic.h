// The generic loops of the 2-D filters: the route that serves every width,
// every alignment and a call without scratch, for all element types.
//
// Each destination element is one running sum, zeroed, then taking the
// window's rows from the top and in each row the columns from left to right,
// with the coefficients walked downward from the last stored one. 8-bit and
// 16-bit sources sum in single precision, 32s in double precision (the
// coefficient widened), float in single precision; each product is rounded
// before it is added (no contraction). The result is stored once.
//
// The loops work on four lanes: four pixels at once in C1 while at least four
// remain, then one pixel; one pixel of three or four channels in C3, C4 and
// AC4. Every lane is its own sum in the order above, so the lanes give the
// same bits as a one-element loop. All loads and stores go through byte
// pointers and memcpy or unaligned vector accesses: steps and addresses need
// no alignment, and nothing outside the window and the region is touched.
#pragma once

#include <emmintrin.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {

// ---- Integer results: the scalar rules of the generic loops ---------------
//
// Unsigned destinations (8u, 16u): v at least the upper limit saturates, v at
// most 0 gives 0, v over 0.5 rounds half up with a tie to even, and (0, 0.5]
// gives 0. Signed destinations (8s, 16s, 32s) round both signs the same way,
// symmetric, with ties to even. The tie test compares r - v with 0.5, with r
// first narrowed to single precision: exact for every 8-bit and 16-bit
// result, and for 32s above 2^24 it generally finds no tie (r stays rounded
// half away from zero there). A NaN gives 0.
template <class TD>
TD round_generic(double v) {
    constexpr double hi = double(std::numeric_limits<TD>::max());
    constexpr double lo = double(std::numeric_limits<TD>::min());
    if (v >= hi) return std::numeric_limits<TD>::max();
    if (v <= lo) return std::numeric_limits<TD>::min();
    if (v > 0.5) {
        int64_t r = int64_t(v + 0.5);  // truncation toward zero
        if (double(float(r)) - v == 0.5) r &= ~int64_t(1);
        return TD(r);
    }
    if constexpr (std::is_signed_v<TD>) {
        if (v < -0.5) {
            int64_t r = int64_t(v - 0.5);
            if (double(float(r)) - v == -0.5) r += r & 1;
            return TD(r);
        }
    }
    return TD(0);
}

// ---- Four-lane loads of N elements of TS, widened ------------------------

template <class T>
T load_elem(const unsigned char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// Sign or zero extension of the low four 8-bit or 16-bit elements (SSE2 only:
// every tier builds this).
template <class TS>
__m128i widen4(__m128i x) {
    if constexpr (std::is_same_v<TS, Orv8u>) {
        const __m128i z = _mm_setzero_si128();
        return _mm_unpacklo_epi16(_mm_unpacklo_epi8(x, z), z);
    } else if constexpr (std::is_same_v<TS, Orv8s>) {
        x = _mm_srai_epi16(_mm_unpacklo_epi8(x, x), 8);
        return _mm_srai_epi32(_mm_unpacklo_epi16(x, x), 16);
    } else if constexpr (std::is_same_v<TS, Orv16u>) {
        return _mm_unpacklo_epi16(x, _mm_setzero_si128());
    } else {
        static_assert(std::is_same_v<TS, Orv16s>);
        return _mm_srai_epi32(_mm_unpacklo_epi16(x, x), 16);
    }
}

// N (1, 3 or 4) consecutive elements at p into lanes 0..N-1 as float; the
// other lanes are zero.
template <class TS, int N>
__m128 load_f(const unsigned char* p) {
    if constexpr (N == 4 && std::is_same_v<TS, Orv32f>) {
        return _mm_loadu_ps(reinterpret_cast<const float*>(p));
    } else if constexpr (N == 4 && sizeof(TS) == 1) {
        return _mm_cvtepi32_ps(widen4<TS>(_mm_cvtsi32_si128(load_elem<int32_t>(p))));
    } else if constexpr (N == 4 && sizeof(TS) == 2) {
        return _mm_cvtepi32_ps(widen4<TS>(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
    } else if constexpr (std::is_same_v<TS, Orv32f>) {
        if constexpr (N == 1) return _mm_set_ss(load_elem<float>(p));
        else return _mm_set_ps(0.0f, load_elem<float>(p + 8), load_elem<float>(p + 4), load_elem<float>(p));
    } else {
        // Elements gathered in a register: a partial copy through the stack
        // would stall each load on store forwarding.
        using U = std::conditional_t<sizeof(TS) == 1, Orv8u, Orv16u>;
        uint64_t v = 0;
        for (int i = 0; i < N; ++i) v |= uint64_t(load_elem<U>(p + i * sizeof(TS))) << (8 * sizeof(TS) * i);
        if constexpr (sizeof(TS) == 1)
            return _mm_cvtepi32_ps(widen4<TS>(_mm_cvtsi32_si128(int(uint32_t(v)))));
        else
            return _mm_cvtepi32_ps(widen4<TS>(_mm_cvtsi64_si128(int64_t(v))));
    }
}

// The same for 32s into two double registers (lanes 0-1 and 2-3).
template <int N>
void load_d(const unsigned char* p, __m128d& lo, __m128d& hi) {
    if constexpr (N == 4) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        lo = _mm_cvtepi32_pd(x);
        hi = _mm_cvtepi32_pd(_mm_unpackhi_epi64(x, x));
    } else {
        double t[4] = {0, 0, 0, 0};
        for (int i = 0; i < N; ++i) t[i] = double(load_elem<Orv32s>(p + i * sizeof(Orv32s)));
        lo = _mm_loadu_pd(t);
        hi = _mm_loadu_pd(t + 2);
    }
}

// ---- Sums of four lanes ---------------------------------------------------

// Single-precision sum (every source type but 32s).
template <class TS, int N>
struct SumF {
    __m128 s = _mm_setzero_ps();
    void tap(const unsigned char* p, float k) { s = _mm_add_ps(s, _mm_mul_ps(load_f<TS, N>(p), _mm_set1_ps(k))); }
    void lanes(float* out) const { _mm_storeu_ps(out, s); }
};

// Double-precision sum of 32s pixels.
template <int N>
struct SumD {
    __m128d lo = _mm_setzero_pd(), hi = _mm_setzero_pd();
    void tap(const unsigned char* p, float k) {
        __m128d a, b;
        load_d<N>(p, a, b);
        const __m128d kk = _mm_set1_pd(double(k));
        lo = _mm_add_pd(lo, _mm_mul_pd(a, kk));
        if constexpr (N > 2) hi = _mm_add_pd(hi, _mm_mul_pd(b, kk));
    }
    void lanes(double* out) const {
        _mm_storeu_pd(out, lo);
        _mm_storeu_pd(out + 2, hi);
    }
};

template <class TS, int N>
using Sum = std::conditional_t<std::is_same_v<TS, Orv32s>, SumD<N>, SumF<TS, N>>;

// Stores lanes 0..N-1 of a finished sum as TD.
template <class TD, int N, class A>
void store_lanes(unsigned char* p, const A* lanes) {
    for (int i = 0; i < N; ++i) {
        TD v;
        if constexpr (std::is_same_v<TD, Orv32f>) v = lanes[i];
        else v = round_generic<TD>(double(lanes[i]));
        std::memcpy(p + i * sizeof(TD), &v, sizeof v);
    }
}

// ---- The loop ---------------------------------------------------------------

// One unit: N elements read per tap from `win` (the unit's window origin),
// kUsed of them stored to `dst`. Consecutive taps of a window row are kCh
// elements apart.
template <class TS, class TD, int kCh, int N, int kStore>
void generic_unit(const unsigned char* win, ptrdiff_t srcStep, unsigned char* dst, const Orv32f* coefLast, int kW,
                  int kH) {
    Sum<TS, N> sum;
    const Orv32f* k = coefLast;
    for (int r = 0; r < kH; ++r) {
        const unsigned char* s = win + r * srcStep;
        for (int c = 0; c < kW; ++c, s += kCh * sizeof(TS)) sum.tap(s, *k--);
    }
    std::conditional_t<std::is_same_v<TS, Orv32s>, double, float> lanes[4];
    sum.lanes(lanes);
    store_lanes<TD, kStore>(dst, lanes);
}

// The generic loop over a width x height region. kCh is the channel count of
// a pixel, kUsed the channels filtered and written (3 for AC4).
template <class TS, class TD, int kCh, int kUsed>
void generic_loop(const TS* pSrcWin, int srcStep, TD* pDst, int dstStep, int width, int height,
                  const Orv32f* pCoefLast, int kW, int kH) {
    constexpr size_t kSrcPix = kCh * sizeof(TS), kDstPix = kCh * sizeof(TD);
    for (int y = 0; y < height; ++y) {
        const unsigned char* s = reinterpret_cast<const unsigned char*>(pSrcWin) + ptrdiff_t(y) * srcStep;
        unsigned char* d = reinterpret_cast<unsigned char*>(pDst) + ptrdiff_t(y) * dstStep;
        int x = 0;
        if constexpr (kCh == 1) {
            for (; x + 4 <= width; x += 4)
                generic_unit<TS, TD, 1, 4, 4>(s + x * kSrcPix, srcStep, d + x * kDstPix, pCoefLast, kW, kH);
        }
        for (; x < width; ++x)
            generic_unit<TS, TD, kCh, kCh, kUsed>(s + x * kSrcPix, srcStep, d + x * kDstPix, pCoefLast, kW, kH);
    }
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
