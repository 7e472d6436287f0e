// The integer 2-D filters: tier e9's pixel-block design for narrow C1 8u, 16s
// and 16u images (ownCFilter32f_<T>_C1R). For each destination row it holds
// the sums of 8 or 4 pixels in registers over the whole window and converts
// them straight to the destination: no float row, no scratch.
//
// Blocks: 8 pixels (ownDeploy8_*) for width & ~7, then 4 (ownDeploy4_*) when
// the width has the 4 bit, then the last 1..3 (ownLast*). The forms for 3, 5
// and 7 kernel columns (7 only for 8-pixel blocks) are unrolled over a kernel
// row; the general forms take a row in groups of 8 coefficients and a tail of
// 0..7. Each coefficient is broadcast. Window rows are taken from the top;
// within a row the products of one group are summed as a tree, left to right
// in the tree's order, and the group's sum is added to the running sum.
//
// Conversion: a minimum with the type's upper limit (a NaN gives the limit),
// rounding by the mode in force (ties to even by default), then saturation
// to the type through the packs. Every load reads exactly the block's pixels
// of the window, so nothing right of the window's last column is touched.
//
// Returns true: in tier e9 the generic loop never runs for these entries.
// Other tiers never send a call here and decline.
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
namespace pblk {

// The lanes of a block of N pixels: one 256-bit register for 8 (e9 only),
// one 128-bit register for 4 and for the last 1..3.
template <class T, int N>
struct Block {
    using V = std::conditional_t<N == 8, rowf::L8T<>, rowf::L4>;
    using R = typename V::R;

    // N pixels at p, widened to float; the other lanes are zero.
    static R load(const unsigned char* p) {
        if constexpr (N == 8 || N == 4) return V::widen(reinterpret_cast<const T*>(p));
        else return load_f<T, N>(p);
    }

    // Eight 32-bit results to eight elements of T in the low bytes. 16u packs
    // with unsigned saturation from 32 bits, so that a result below -2^31
    // + 2^15 can't wrap into the top of the range.
    static __m128i pack(__m128i lo, __m128i hi) {
        if constexpr (std::is_same_v<T, Orv8u>) {
            const __m128i w = _mm_packs_epi32(lo, hi);
            return _mm_packus_epi16(w, w);
        } else if constexpr (std::is_same_v<T, Orv16u>) {
            return _mm_packus_epi32(lo, hi);
        } else {
            static_assert(std::is_same_v<T, Orv16s>);
            return _mm_packs_epi32(lo, hi);
        }
    }

    // Converts the block's sums and writes its N elements at d.
    static void store(unsigned char* d, R sum) {
        if constexpr (N == 8) {
            const __m256i i = _mm256_cvtps_epi32(_mm256_min_ps(sum, _mm256_set1_ps(rowf::Lim<T>::kHi)));
            const __m128i v = pack(_mm256_castsi256_si128(i), _mm256_extractf128_si256(i, 1));
            if constexpr (sizeof(T) == 1) _mm_storel_epi64(reinterpret_cast<__m128i_u*>(d), v);
            else _mm_storeu_si128(reinterpret_cast<__m128i_u*>(d), v);
        } else {
            const __m128i i = _mm_cvtps_epi32(_mm_min_ps(sum, _mm_set1_ps(rowf::Lim<T>::kHi)));
            const __m128i v = pack(i, i);
            if constexpr (N == 4 && sizeof(T) == 1) {
                const int32_t b = _mm_cvtsi128_si32(v);
                std::memcpy(d, &b, sizeof b);
            } else if constexpr (N == 4) {
                _mm_storel_epi64(reinterpret_cast<__m128i_u*>(d), v);
            } else {
                unsigned char t[16];
                _mm_storeu_si128(reinterpret_cast<__m128i_u*>(t), v);
                std::memcpy(d, t, N * sizeof(T));
            }
        }
    }

    // G taps of one window row: pixels from p on, coefficients from k down.
    template <int G>
    static R taps(const unsigned char* p, const float* k) {
        R prod[G];
        for (int j = 0; j < G; ++j) prod[j] = V::mul(load(p + j * sizeof(T)), V::set1(k[-j]));
        return rowf::tree<V, 0, G>(prod);
    }

    // One block: window at s, the whole window's sum, converted into d. KW is
    // the kernel's width for the unrolled forms; 0 for the general form, which
    // takes kW >> 3 groups of 8 and then Tail (kW & 7) taps per row.
    template <int KW, int Tail>
    static void one(const unsigned char* s, ptrdiff_t srcStep, unsigned char* d, const float* coefLast, int kW,
                    int kH) {
        R sum = V::zero();
        const float* k = coefLast;
        for (int r = 0; r < kH; ++r, s += srcStep) {
            if constexpr (KW > 0) {
                sum = V::add(sum, taps<KW>(s, k));
                k -= KW;
            } else {
                const unsigned char* p = s;
                for (int g = kW >> 3; g > 0; --g, p += 8 * sizeof(T), k -= 8) sum = V::add(sum, taps<8>(p, k));
                if constexpr (Tail > 0) {
                    sum = V::add(sum, taps<Tail>(p, k));
                    k -= Tail;
                }
            }
        }
        store(d, sum);
    }
};

// Pixels x0 .. x0 + count - 1 of every row, in blocks of N (count a multiple
// of N).
template <class E, int N, int KW, int Tail>
void deploy(const Call<E>& c, int x0, int count) {
    using T = typename E::Src;
    const unsigned char* src = reinterpret_cast<const unsigned char*>(c.win) + ptrdiff_t(x0) * ptrdiff_t(sizeof(T));
    unsigned char* dst = reinterpret_cast<unsigned char*>(c.dst) + ptrdiff_t(x0) * ptrdiff_t(sizeof(T));
    for (int y = 0; y < c.height; ++y, src += c.srcStep, dst += c.dstStep)
        for (int x = 0; x < count; x += N)
            Block<T, N>::template one<KW, Tail>(src + x * sizeof(T), c.srcStep, dst + x * sizeof(T), c.coefLast,
                                                c.kW, c.kH);
}

// The block forms by name: 3, 5 and 7 kernel columns unrolled, the general
// form with its tail of kW & 7.
template <class E>
void ownDeploy8_3xX_C1R(const Call<E>& c, int x0, int n) { deploy<E, 8, 3, 0>(c, x0, n); }
template <class E>
void ownDeploy8_5xX_C1R(const Call<E>& c, int x0, int n) { deploy<E, 8, 5, 0>(c, x0, n); }
template <class E>
void ownDeploy8_7xX_C1R(const Call<E>& c, int x0, int n) { deploy<E, 8, 7, 0>(c, x0, n); }
template <class E, int Tail>
void ownDeploy8_C1R(const Call<E>& c, int x0, int n) { deploy<E, 8, 0, Tail>(c, x0, n); }
template <class E>
void ownDeploy4_3xX_C1R(const Call<E>& c, int x0) { deploy<E, 4, 3, 0>(c, x0, 4); }
template <class E>
void ownDeploy4_5xX_C1R(const Call<E>& c, int x0) { deploy<E, 4, 5, 0>(c, x0, 4); }
template <class E, int Tail>
void ownDeploy4_C1R(const Call<E>& c, int x0) { deploy<E, 4, 0, Tail>(c, x0, 4); }

// The last 1..3 pixels.
template <class E, int KW, int Tail>
void last(const Call<E>& c, int x0, int n) {
    switch (n) {
        case 1: deploy<E, 1, KW, Tail>(c, x0, 1); break;
        case 2: deploy<E, 2, KW, Tail>(c, x0, 2); break;
        default: deploy<E, 3, KW, Tail>(c, x0, 3); break;
    }
}
template <class E>
void ownLast3xX_C1R(const Call<E>& c, int x0, int n) { last<E, 3, 0>(c, x0, n); }
template <class E>
void ownLast5xX_C1R(const Call<E>& c, int x0, int n) { last<E, 5, 0>(c, x0, n); }
template <class E, int Tail>
void ownLast_C1R(const Call<E>& c, int x0, int n) { last<E, 0, Tail>(c, x0, n); }

// The whole region for a general kernel whose width has the tail Tail.
template <class E, int Tail>
void general(const Call<E>& c) {
    const int w8 = c.width & ~7;
    if (w8 > 0) ownDeploy8_C1R<E, Tail>(c, 0, w8);
    if (c.width & 4) ownDeploy4_C1R<E, Tail>(c, w8);
    if (c.width & 3) ownLast_C1R<E, Tail>(c, c.width & ~3, c.width & 3);
}

// ownCFilter32f_<T>_C1R: any width; the entry sends only widths under 8.
template <class E>
int ownCFilter32f_C1R(const Call<E>& c) {
    const int w8 = c.width & ~7, x4 = w8, x1 = c.width & ~3, n = c.width & 3;
    switch (c.kW) {
        case 3:
            if (w8 > 0) ownDeploy8_3xX_C1R(c, 0, w8);
            if (c.width & 4) ownDeploy4_3xX_C1R(c, x4);
            if (n) ownLast3xX_C1R(c, x1, n);
            return 0;
        case 5:
            if (w8 > 0) ownDeploy8_5xX_C1R(c, 0, w8);
            if (c.width & 4) ownDeploy4_5xX_C1R(c, x4);
            if (n) ownLast5xX_C1R(c, x1, n);
            return 0;
        case 7:
            if (w8 > 0) ownDeploy8_7xX_C1R(c, 0, w8);
            if (c.width & 4) ownDeploy4_C1R<E, 7>(c, x4);
            if (n) ownLast_C1R<E, 7>(c, x1, n);
            return 0;
        default: break;
    }
    switch (c.kW & 7) {
        case 0: general<E, 0>(c); break;
        case 1: general<E, 1>(c); break;
        case 2: general<E, 2>(c); break;
        case 3: general<E, 3>(c); break;
        case 4: general<E, 4>(c); break;
        case 5: general<E, 5>(c); break;
        case 6: general<E, 6>(c); break;
        default: general<E, 7>(c); break;
    }
    return 0;
}

}  // namespace pblk

template <class E>
bool int_pixel_block(const Call<E>& c) {
    static_assert(E::kLayout == Layout::C1 && std::is_same_v<typename E::Src, typename E::Dst>);
    if constexpr (kTier == Tier::e9) {
        pblk::ownCFilter32f_C1R(c);
        return true;
    } else {
        return false;
    }
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
