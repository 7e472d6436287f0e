// Column-group filter kernels: one pass over the image applies up to 8 kernel
// columns held as broadcast coefficients, and the destination carries the
// rounded partial sums from one kernel row and one group to the next.
//
// Pass order (this decides the float result): source rows s ascending from
// the window origin's row; for each s, j ascending over the kernel rows that
// reach a destination row, destination row s - j takes window row j. With
// `first` set, j == 0 overwrites, every other contribution is added. Inside a
// row, pixel blocks of 8, then at most one of 4, 2 and 1.
//
// Tiers: e9 works in 256-bit lanes with unaligned accesses; y8 and n8 have an
// aligned form (aligned loads, shifted vectors by byte-align, aligned stores)
// and an NA form (unaligned loads) that compute exactly the same: both use the
// same add tree for each block size, only the loads differ.
//
// Source reads stay inside the window a pass is owed: pixel columns 0 to
// w + N - 2 from the pass origin, all channels. The aligned form's look-ahead
// loads fall back to the NA block near the row's end.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "filter/kernels.h"
#include "internal/orv_simd.h"

#define CG_INLINE inline __attribute__((always_inline))
#define CG_LAMBDA __attribute__((always_inline))

namespace orv::ORV_TIER_NS {
namespace {
namespace colgroup {

constexpr bool kWide = kTier == Tier::e9;

// Channel layouts. AC4 computes all four lanes and keeps element 3 of the
// destination by a masked store (tier e9 only).
struct C1 { [[maybe_unused]] static constexpr int ch = 1; [[maybe_unused]] static constexpr bool ac4 = false; };
struct C3 { [[maybe_unused]] static constexpr int ch = 3; [[maybe_unused]] static constexpr bool ac4 = false; };
struct C4 { [[maybe_unused]] static constexpr int ch = 4; [[maybe_unused]] static constexpr bool ac4 = false; };
struct AC4 { [[maybe_unused]] static constexpr int ch = 4; [[maybe_unused]] static constexpr bool ac4 = true; };

template <int N, class F>
CG_INLINE void static_for(F&& f) {
    [&]<int... I>(std::integer_sequence<int, I...>) CG_LAMBDA {
        (f(std::integral_constant<int, I>{}), ...);
    }(std::make_integer_sequence<int, N>{});
}

// ---- Pieces of a pixel block: 8 (e9), 4, 2 or 1 elements, in one register.
// Narrow pieces live in the low lanes of a 128-bit register.
template <int S, class = void>
struct Piece;

template <class Void>
struct Piece<8, Void> {
    using R = __m256;
    template <bool kA>
    static CG_INLINE R load(const float* p) { return simd::F8T<Void>::template load<kA>(p); }
    template <bool kA, bool kAc4>
    static CG_INLINE void store(float* p, R r) {
        if constexpr (kAc4) _mm256_maskstore_ps(p, _mm256_setr_epi32(-1, -1, -1, 0, -1, -1, -1, 0), r);
        else simd::F8T<Void>::template store<kA>(p, r);
    }
    static CG_INLINE R add(R a, R b) { return _mm256_add_ps(a, b); }
    static CG_INLINE R mul(R a, R b) { return _mm256_mul_ps(a, b); }
    template <class K>
    static CG_INLINE R coef(const K& k) { return k; }
};

template <class Void>
struct Piece<4, Void> {
    using R = __m128;
    template <bool kA>
    static CG_INLINE R load(const float* p) { return simd::F4::load<kA>(p); }
    template <bool kA, bool kAc4>
    static CG_INLINE void store(float* p, R r) {
        if constexpr (kAc4) {
            if constexpr (kWide) _mm_maskstore_ps(p, _mm_setr_epi32(-1, -1, -1, 0), r);
            else static_assert(!kAc4, "AC4 is a tier e9 layout");
        } else {
            simd::F4::store<kA>(p, r);
        }
    }
    static CG_INLINE R add(R a, R b) { return _mm_add_ps(a, b); }
    static CG_INLINE R mul(R a, R b) { return _mm_mul_ps(a, b); }
    template <class K>
    static CG_INLINE R coef(const K& k) {
        if constexpr (kWide) return _mm256_castps256_ps128(k);
        else return k;
    }
};

template <class Void>
struct Piece<2, Void> : Piece<4, Void> {
    using R = __m128;
    template <bool>
    static CG_INLINE R load(const float* p) { return _mm_castsi128_ps(_mm_loadu_si64(p)); }
    template <bool, bool>
    static CG_INLINE void store(float* p, R r) { _mm_storeu_si64(p, _mm_castps_si128(r)); }
};

template <class Void>
struct Piece<1, Void> : Piece<4, Void> {
    using R = __m128;
    template <bool>
    static CG_INLINE R load(const float* p) { return _mm_load_ss(p); }
    template <bool, bool>
    static CG_INLINE void store(float* p, R r) { _mm_store_ss(p, r); }
};

// Broadcast coefficients of one group and kernel row: the register width of
// the tier, narrowed by Piece::coef where a piece is narrower.
#if defined(ORV_TIER_E9)
using KReg = __m256;
#else
using KReg = __m128;
#endif

template <int N>
struct Coefs {
    KReg k[N];
};

// Balanced add tree over the products of columns [Lo, Hi) of one piece.
template <class P, int Lo, int Hi, class Get>
CG_INLINE typename P::R tree(const Get& get) {
    if constexpr (Hi - Lo == 1) {
        return get(std::integral_constant<int, Lo>{});
    } else {
        constexpr int M = Lo + (Hi - Lo) / 2;
        return P::add(tree<P, Lo, M>(get), tree<P, M, Hi>(get));
    }
}

// Adds a piece's group sum to the destination (or writes it).
template <class P, class L, bool kOver, bool kA>
CG_INLINE void put(float* d, typename P::R sum) {
    if constexpr (!kOver) sum = P::add(P::template load<kA>(d), sum);
    P::template store<kA, L::ac4>(d, sum);
}

// One pixel block of E elements from unaligned source loads: the piece at
// element O takes column c from s + O + c * ch.
template <class L, int N, int O, int E, bool kOver>
CG_INLINE void block_u(const float* s, float* d, const Coefs<N>& k) {
    if constexpr (O < E) {
        constexpr int rest = E - O;
        constexpr int S = (kWide && rest >= 8) ? 8 : rest >= 4 ? 4 : rest >= 2 ? 2 : 1;
        using P = Piece<S>;
        auto get = [&](auto c) CG_LAMBDA {
            return P::mul(P::coef(k.k[c]), P::template load<false>(s + O + c * L::ch));
        };
        put<P, L, kOver, false>(d + O, tree<P, 0, N>(get));
        block_u<L, N, O + S, E, kOver>(s, d, k);
    }
}

#if !defined(ORV_TIER_E9)
// Elements Sh to Sh + 3 of a row held in aligned vectors v[0], v[1], ...
template <int Sh>
CG_INLINE __m128 shifted(const __m128* v) {
    if constexpr (Sh % 4 == 0) {
        return v[Sh / 4];
    } else {
        return _mm_castsi128_ps(
            _mm_alignr_epi8(_mm_castps_si128(v[Sh / 4 + 1]), _mm_castps_si128(v[Sh / 4]), (Sh % 4) * 4));
    }
}

// Aligned blocks of P pixels from x on (x * ch a multiple of 4 elements) while
// the block's aligned loads stay below `lim` elements; the vectors that the
// next block shares are carried over, so each source vector is loaded once
// per kernel row. Returns the first pixel not done.
template <class L, int N, int P, bool kOver>
CG_INLINE int blocks_a(const float* s, float* d, int x, int w, int lim, const Coefs<N>& k) {
    constexpr int ch = L::ch;
    constexpr int E = P * ch;                      // elements of a block
    constexpr int K = (E - 1 + ch * (N - 1)) / 4 + 1;  // aligned vectors it reads
    constexpr int A = E / 4;                       // vectors it advances
    constexpr int C = K - A;                       // vectors shared with the next
    __m128 v[K];
    if (x + P > w || x * ch + 4 * K > lim) return x;
    static_for<C>([&](auto i) CG_LAMBDA { v[i] = _mm_load_ps(s + x * ch + 4 * i); });
    do {
        const float* b = s + x * ch;
        float* o = d + x * ch;
        static_for<A>([&](auto i) CG_LAMBDA { v[C + i] = _mm_load_ps(b + 4 * (C + i)); });
        static_for<A>([&](auto q) CG_LAMBDA {
            using Pc = Piece<4>;
            auto get = [&](auto c) CG_LAMBDA {
                return Pc::mul(k.k[c], shifted<4 * q + c * ch>(v));
            };
            put<Pc, L, kOver, true>(o + 4 * q, tree<Pc, 0, N>(get));
        });
        static_for<C>([&](auto i) CG_LAMBDA { v[i] = v[i + A]; });
        x += P;
    } while (P == 8 && x + P <= w && x * ch + 4 * K <= lim);
    return x;
}
#endif

// One row of the destination takes one group of N columns of one kernel row.
// lim: source elements the pass may read from s, (w + N - 1) * ch.
template <class L, int N, bool kA, bool kOver>
void sweep(const float* __restrict s, float* __restrict d, int w, const Coefs<N>& k) {
    constexpr int ch = L::ch;
    int x = 0;
#if !defined(ORV_TIER_E9)
    const int lim = (w + N - 1) * ch;
    if constexpr (kA) x = blocks_a<L, N, 8, kOver>(s, d, x, w, lim, k);
#endif
    for (; x + 8 <= w; x += 8) block_u<L, N, 0, 8 * ch, kOver>(s + x * ch, d + x * ch, k);
    if (x + 4 <= w) {
#if !defined(ORV_TIER_E9)
        if constexpr (kA) {
            const int x4 = blocks_a<L, N, 4, kOver>(s, d, x, w, lim, k);
            if (x4 == x) block_u<L, N, 0, 4 * ch, kOver>(s + x * ch, d + x * ch, k);
        } else
#endif
        {
            block_u<L, N, 0, 4 * ch, kOver>(s + x * ch, d + x * ch, k);
        }
        x += 4;
    }
    if (x + 2 <= w) {
        block_u<L, N, 0, 2 * ch, kOver>(s + x * ch, d + x * ch, k);
        x += 2;
    }
    if (x < w) block_u<L, N, 0, ch, kOver>(s + x * ch, d + x * ch, k);
}

// A pass of `groups` consecutive groups of N columns over the whole image, in
// the row-scatter order. coef: the coefficient of window column 0, top row.
template <class L, int N, bool kA>
void pass(const float* src, ptrdiff_t ss, float* dst, ptrdiff_t ds, OrviSize roi, const float* coef, int kW,
          int kH, int groups, bool first) {
    const int w = roi.width, h = roi.height;
    for (int s = 0; s <= h + kH - 2; ++s) {
        const int jlo = s - h + 1 > 0 ? s - h + 1 : 0;
        const int jhi = s < kH - 1 ? s : kH - 1;
        const float* srow = src + s * ss;
        for (int j = jlo; j <= jhi; ++j) {
            float* drow = dst + (s - j) * ds;
            for (int g = 0; g < groups; ++g) {
                const float* cg = coef - static_cast<ptrdiff_t>(j) * kW - N * g;
                Coefs<N> k;
                static_for<N>([&](auto c) CG_LAMBDA {
                    if constexpr (kWide) k.k[c] = _mm256_broadcast_ss(cg - c);
                    else k.k[c] = _mm_set1_ps(cg[-c]);
                });
                const float* sg = srow + N * g * L::ch;
                if (first && j == 0 && g == 0) sweep<L, N, kA, true>(sg, drow, w, k);
                else sweep<L, N, kA, false>(sg, drow, w, k);
            }
        }
    }
}

// Kernel N of a table (steps in elements). All table entries share this
// signature; entry 0 repeats entry 1.
using KernelFn = void (*)(const Orv32f* pSrcWin, int srcStepElems, int dstStepElems, Orv32f* pDst,
                          OrviSize dstRoiSize, const Orv32f* pCoefLast, int kW, OrviSize kernelSize, int first);

// owniFilter_32f_<C>R_g9e9_N (e9), owniFilter_32f_<C>R_v8u8_N (kA) and
// owniFilter_32f_<C>R_v8u8_NNA (y8, n8).
template <class L, int N, bool kA>
void owniFilter_32f_N(const Orv32f* pSrcWin, int srcStepElems, int dstStepElems, Orv32f* pDst, OrviSize dstRoiSize,
                      const Orv32f* pCoefLast, int kW, OrviSize kernelSize, int first) {
    pass<L, N, kA>(pSrcWin, srcStepElems, pDst, dstStepElems, dstRoiSize, pCoefLast, kW, kernelSize.height, 1,
                   first != 0);
}

template <class L, bool kA>
constexpr KernelFn filterTable[8] = {
    owniFilter_32f_N<L, 1, kA>, owniFilter_32f_N<L, 1, kA>, owniFilter_32f_N<L, 2, kA>,
    owniFilter_32f_N<L, 3, kA>, owniFilter_32f_N<L, 4, kA>, owniFilter_32f_N<L, 5, kA>,
    owniFilter_32f_N<L, 6, kA>, owniFilter_32f_N<L, 7, kA>,
};

// The 8-wide groups of a kernel of width 8 or more (kW & ~7 columns) in one
// pass; owniFilter_32f_<C>R_v8u8_8NA for the NA side of y8 and n8.
template <class L, bool kA>
void owniFilter_32f_8(const Orv32f* pSrcWin, ptrdiff_t ss, Orv32f* pDst, ptrdiff_t ds, OrviSize roi,
                      const Orv32f* pCoefLast, int kW, int kH) {
    pass<L, 8, kA>(pSrcWin, ss, pDst, ds, roi, pCoefLast, kW, kH, kW >> 3, true);
}

// ownFilter_32f_<C>R_g9e9 / _v8u8 with the real last coefficient.
template <class L>
void frame(const Orv32f* pSrcWin, int srcStep, OrviSize roi, const Orv32f* pCoefLast, int kW, OrviSize ks,
           Orv32f* pDst, int dstStep) {
    const int ss = srcStep >> 2, ds = dstStep >> 2;
    bool aligned = false;
    if constexpr (!kWide) {
        aligned = ((reinterpret_cast<uintptr_t>(pSrcWin) | reinterpret_cast<uintptr_t>(pDst) |
                    static_cast<uintptr_t>(srcStep) | static_cast<uintptr_t>(dstStep)) &
                   15) == 0;
    }
    const KernelFn* table = aligned ? filterTable<L, true> : filterTable<L, false>;
    if (kW < 8) {
        table[kW](pSrcWin, ss, ds, pDst, roi, pCoefLast, kW, ks, 1);
        return;
    }
    if (aligned) owniFilter_32f_8<L, true>(pSrcWin, ss, pDst, ds, roi, pCoefLast, kW, ks.height);
    else owniFilter_32f_8<L, false>(pSrcWin, ss, pDst, ds, roi, pCoefLast, kW, ks.height);
    const int G = kW & ~7;
    if (kW & 7) table[kW & 7](pSrcWin + G * L::ch, ss, ds, pDst, roi, pCoefLast - G, kW, ks, 0);
}

}  // namespace colgroup
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS::colgroup;

#define ORV_GROUP_FRAME(name, layout, coefOffset)                                                       \
    ORV_TIER_API void ORV_T(name)(const Orv32f* pSrcWin, int srcStep, OrviSize dstRoiSize,              \
                                  const Orv32f* pCoefLast, int kW, OrviSize kernelSize, Orv32f* pDst,   \
                                  int dstStep) {                                                        \
        frame<layout>(pSrcWin, srcStep, dstRoiSize, pCoefLast + (coefOffset), kW, kernelSize, pDst, dstStep); \
    }

#if defined(ORV_TIER_E9)
ORV_GROUP_FRAME(ownFilter_32f_C1R_g9e9, C1, 0)
ORV_GROUP_FRAME(ownFilter_32f_C3R_g9e9, C3, 0)
ORV_GROUP_FRAME(ownFilter_32f_C4R_g9e9, C4, 0)
ORV_GROUP_FRAME(ownFilter_32f_AC4R_g9e9, AC4, 0)
#else
// The y8 and n8 frames take pCoefLast three elements lower.
ORV_GROUP_FRAME(ownFilter_32f_C1R_v8u8, C1, 3)
ORV_GROUP_FRAME(ownFilter_32f_C3R_v8u8, C3, 3)
ORV_GROUP_FRAME(ownFilter_32f_C4R_v8u8, C4, 3)
#endif
