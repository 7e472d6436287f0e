// Single-precision radix-4/8 decimation-in-time core: the pass plan shared
// with the twiddle table builder, and the butterflies on planar lanes.
//
// After `bits` bits the data hold 2^(order-bits) transforms of length
// m = 2^bits in consecutive blocks. A radix-R pass joins R consecutive blocks
// into one of length M = R*m; column j of the block (j < m) takes the inputs
// of twiddle W_M^(j*k) from block rev(k), k < R, because the input is in
// binary bit-reversed order. The first pass (radix 4, no twiddles) reads
// interleaved data; all other passes are planar (working_format.h), so a
// complex product of a whole register of columns is four multiplications and
// two additions without a shuffle.
//
// Inverse butterflies are the forward ones with the twiddles conjugated
// (cmul_conj) and the outputs q and R-q exchanged, which is the forward
// butterfly with the roles of +i and -i swapped.
#pragma once

#include <utility>

#include "fft/working_format.h"
#include "internal/orv_simd.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace r32 {

// The butterflies must inline into their pass loops to stay in registers.
#define R32_INLINE inline __attribute__((always_inline))

using simd::F4;
using FV = simd::FWide;  // F8 on e9, F4 below
static_assert(FV::kN == kLanes32f);

inline constexpr float kSqrt1_2 = 0.70710677f;

// ---- Pass plan --------------------------------------------------------------

// Radix of the pass that follows `bits` done bits (the first pass does 2).
constexpr int next_radix(int order, int bits) {
    const int r = order - bits;
    if (r < 3) return 4;
    bool eight;
    if constexpr (kTier == Tier::e9)
        eight = r == 3 || (bits >= 3 && r >= 5 && order < 12) || (bits == 4 && order % 2 == 1);
    else if constexpr (kTier == Tier::m7)
        eight = r == 3 || (r >= 5 && bits >= 3) ||
                (bits == 2 && (order == 7 || order == 10 || order == 11 || order == 13 || order == 14));
    else
        eight = r % 3 == 0;
    return eight ? 8 : 4;
}

// Lanes of the planar groups of a pass with C columns: e9 takes eight where
// the columns fill them.
constexpr int pass_lanes(int columns) { return columns >= kLanes32f ? kLanes32f : 4; }

// ---- Lane helpers -------------------------------------------------------------
// In-lane shuffles on either width; the 256-bit branch is only instantiated by
// e9 code.

template <class R>
R32_INLINE R unpacklo(R a, R b) {
    if constexpr (sizeof(R) == 16) return _mm_unpacklo_ps(a, b);
    else return _mm256_unpacklo_ps(a, b);
}
template <class R>
R32_INLINE R unpackhi(R a, R b) {
    if constexpr (sizeof(R) == 16) return _mm_unpackhi_ps(a, b);
    else return _mm256_unpackhi_ps(a, b);
}
// (a0 a1 b0 b1) and (a2 a3 b2 b3) per 128-bit lane.
template <class R>
R32_INLINE R lows(R a, R b) {
    if constexpr (sizeof(R) == 16) return _mm_movelh_ps(a, b);
    else return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 1, 0));
}
template <class R>
R32_INLINE R highs(R a, R b) {
    if constexpr (sizeof(R) == 16) return _mm_movehl_ps(b, a);
    else return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 2, 3, 2));
}
// (x1 x0 x3 x2) per lane: real and imaginary parts of interleaved pairs exchanged.
template <class R>
R32_INLINE R swap_pairs(R a) {
    if constexpr (sizeof(R) == 16) return _mm_shuffle_ps(a, a, _MM_SHUFFLE(2, 3, 0, 1));
    else return _mm256_permute_ps(a, _MM_SHUFFLE(2, 3, 0, 1));
}
// Two 128-bit halves from two addresses (one address for F4).
template <class V, bool kAligned>
R32_INLINE typename V::R load2(const float* lo, [[maybe_unused]] const float* hi) {
    if constexpr (V::kN == 4) return F4::load<kAligned>(lo);
    else return _mm256_insertf128_ps(_mm256_castps128_ps256(F4::load<kAligned>(lo)), F4::load<kAligned>(hi), 1);
}
// Two complex values as (re0 im0 re1 im1) from split arrays, at any alignment.
R32_INLINE __m128 load_split_pair(const float* re, const float* im) {
    const __m128 r = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(re)));
    const __m128 i = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(im)));
    return _mm_unpacklo_ps(r, i);
}
template <class V>
R32_INLINE typename V::R split_pair2(const float* re, const float* im, [[maybe_unused]] int hiOff) {
    if constexpr (V::kN == 4) return load_split_pair(re, im);
    else
        return _mm256_insertf128_ps(_mm256_castps128_ps256(load_split_pair(re, im)),
                                    load_split_pair(re + hiOff, im + hiOff), 1);
}

// ---- Butterflies ----------------------------------------------------------------

template <class V>
struct Cx {
    typename V::R re, im;
};
template <class V>
R32_INLINE Cx<V> cadd(Cx<V> a, Cx<V> b) {
    return {V::add(a.re, b.re), V::add(a.im, b.im)};
}
template <class V>
R32_INLINE Cx<V> csub(Cx<V> a, Cx<V> b) {
    return {V::sub(a.re, b.re), V::sub(a.im, b.im)};
}
// a - i*b and a + i*b.
template <class V>
R32_INLINE Cx<V> csub_i(Cx<V> a, Cx<V> b) {
    return {V::add(a.re, b.im), V::sub(a.im, b.re)};
}
template <class V>
R32_INLINE Cx<V> cadd_i(Cx<V> a, Cx<V> b) {
    return {V::sub(a.re, b.im), V::add(a.im, b.re)};
}
template <class V, bool kInv>
R32_INLINE Cx<V> twiddle(Cx<V> x, Cx<V> w) {
    Cx<V> y;
    if constexpr (kInv) simd::cmul_conj<V>(x.re, x.im, w.re, w.im, y.re, y.im);
    else simd::cmul<V>(x.re, x.im, w.re, w.im, y.re, y.im);
    return y;
}

// Bit reversal of a radix digit: the block of input k.
template <int R>
constexpr int rev_digit(int k) {
    if constexpr (R == 4) return (k >> 1) | ((k & 1) << 1);
    else return ((k & 1) << 2) | (k & 2) | (k >> 2);
}

// In place: x[k] (natural input order) -> forward DFT_4 in natural output
// order; the inverse exchanges outputs 1 and 3.
template <class V, bool kInv>
R32_INLINE void dft4(Cx<V>* x) {
    const Cx<V> a0 = cadd(x[0], x[2]), a1 = csub(x[0], x[2]);
    const Cx<V> a2 = cadd(x[1], x[3]), a3 = csub(x[1], x[3]);
    x[0] = cadd(a0, a2);
    x[2] = csub(a0, a2);
    x[1] = csub_i(a1, a3);
    x[3] = cadd_i(a1, a3);
    if constexpr (kInv) std::swap(x[1], x[3]);
}

// DFT_8 as two DFT_4 of the even and odd inputs joined by W8^q; the inverse
// exchanges outputs q and 8-q.
template <class V, bool kInv>
R32_INLINE void dft8(Cx<V>* x) {
    const typename V::R c = V::set1(kSqrt1_2);
    const Cx<V> e0 = cadd(x[0], x[4]), e1 = csub(x[0], x[4]), e2 = cadd(x[2], x[6]), e3 = csub(x[2], x[6]);
    const Cx<V> o0 = cadd(x[1], x[5]), o1 = csub(x[1], x[5]), o2 = cadd(x[3], x[7]), o3 = csub(x[3], x[7]);
    const Cx<V> E0 = cadd(e0, e2), E2 = csub(e0, e2), E1 = csub_i(e1, e3), E3 = cadd_i(e1, e3);
    const Cx<V> O0 = cadd(o0, o2), O2 = csub(o0, o2), O1 = csub_i(o1, o3), O3 = cadd_i(o1, o3);
    // t1 = W8 O1 = ((re + im) c, (im - re) c); t3 = -W8^3 O3 = ((re - im) c, (re + im) c).
    const Cx<V> t1{V::mul(V::add(O1.re, O1.im), c), V::mul(V::sub(O1.im, O1.re), c)};
    const Cx<V> t3{V::mul(V::sub(O3.re, O3.im), c), V::mul(V::add(O3.re, O3.im), c)};
    x[0] = cadd(E0, O0);
    x[4] = csub(E0, O0);
    x[1] = cadd(E1, t1);
    x[5] = csub(E1, t1);
    x[2] = csub_i(E2, O2);
    x[6] = cadd_i(E2, O2);
    x[3] = csub(E3, t3);
    x[7] = cadd(E3, t3);
    if constexpr (kInv) {
        std::swap(x[1], x[7]);
        std::swap(x[2], x[6]);
        std::swap(x[3], x[5]);
    }
}

// First pass: four rows of interleaved pairs (two columns A, B per 128-bit
// lane), rows holding the inputs 0, 2, 1, 3 of each column's radix-4
// butterfly (bit-reversed order). Returns each column's four outputs as one
// planar group of four: lane by lane, ya for column A, yb for column B.
template <class V, bool kInv>
R32_INLINE void first_bfly(typename V::R a, typename V::R b, typename V::R c, typename V::R d, Cx<V>& ya, Cx<V>& yb) {
    using R = typename V::R;
    const R s02 = V::add(a, b), d02 = V::sub(a, b), s13 = V::add(c, d), d13 = V::sub(c, d);
    R y0 = V::add(s02, s13), y2 = V::sub(s02, s13);
    // -i * d13 = (im, -re) per pair.
    const R m = V::bit_xor(swap_pairs(d13), unpacklo(V::zero(), V::set1(-0.0f)));
    R y1 = V::add(d02, m), y3 = V::sub(d02, m);
    if constexpr (kInv) std::swap(y1, y3);
    const R t0 = unpacklo(y0, y1), t1 = unpacklo(y2, y3), t2 = unpackhi(y0, y1), t3 = unpackhi(y2, y3);
    ya = {lows(t0, t1), highs(t0, t1)};
    yb = {lows(t2, t3), highs(t2, t3)};
}

}  // namespace r32
}  // namespace
}  // namespace orv::ORV_TIER_NS
