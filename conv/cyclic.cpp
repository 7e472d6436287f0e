// Fixed-size cyclic convolutions c[k] = sum over j of a[j] * b[(k - j) mod n].
// Each product term j is one vector of the outputs k: a[j] times b rotated by
// j, read from a doubled copy of b on the stack.
#include "internal/orv_simd.h"
#include "internal/orv_unaligned.h"

namespace orv::ORV_TIER_NS {
namespace {

using simd::F4;

// Length 8, float. The terms t0..t7 of c[0..3] add as
// (t0 + t1) + (t5 + t4) + (t3 + t2) + (t7 + t6), those of c[4..7] with the
// roles of 0/4, 1/5, 2/6 and 3/7 exchanged. kAligned: b and c on 16 bytes.
template <bool kAligned>
void cyclic8(const float* a, const float* b, float* c) {
    alignas(16) float bb[16];
    const __m128 b0 = F4::load<kAligned>(b), b1 = F4::load<kAligned>(b + 4);
    F4::store<true>(bb, b0), F4::store<true>(bb + 4, b1), F4::store<true>(bb + 8, b0), F4::store<true>(bb + 12, b1);
    __m128 lo[8], hi[8];
    for (int j = 0; j < 8; ++j) {
        const __m128 aj = F4::set1(load_elem(a + j));
        lo[j] = F4::mul(aj, F4::load<false>(bb + 8 - j));
        hi[j] = F4::mul(aj, F4::load<false>(bb + 12 - j));
    }
    auto pair = [](const __m128* t, int u, int v) { return F4::add(t[u], t[v]); };
    const __m128 rlo = F4::add(F4::add(F4::add(pair(lo, 0, 1), pair(lo, 5, 4)), pair(lo, 3, 2)), pair(lo, 7, 6));
    const __m128 rhi = F4::add(F4::add(F4::add(pair(hi, 4, 5), pair(hi, 1, 0)), pair(hi, 7, 6)), pair(hi, 3, 2));
    F4::store<kAligned>(c, rlo);
    F4::store<kAligned>(c + 4, rhi);
}

// Length 4, real a and complex b, c (interleaved): (t0 + t1) + (t2 + t3).
void cyclic4c(const float* a, const float* b, float* c) {
    alignas(16) float bb[16];
    const __m128 b0 = F4::load<false>(b), b1 = F4::load<false>(b + 4);
    F4::store<true>(bb, b0), F4::store<true>(bb + 4, b1), F4::store<true>(bb + 8, b0), F4::store<true>(bb + 12, b1);
    __m128 lo[4], hi[4];
    for (int j = 0; j < 4; ++j) {
        const __m128 aj = F4::set1(load_elem(a + j));
        lo[j] = F4::mul(aj, F4::load<false>(bb + 8 - 2 * j));
        hi[j] = F4::mul(aj, F4::load<false>(bb + 12 - 2 * j));
    }
    F4::store<false>(c, F4::add(F4::add(lo[0], lo[1]), F4::add(lo[2], lo[3])));
    F4::store<false>(c + 4, F4::add(F4::add(hi[0], hi[1]), F4::add(hi[2], hi[3])));
}

// Length 8, 16-bit: pair products summed in wrapping 32-bit lanes, shifted
// without rounding, saturated to 16 bits.
void cyclic8_16s(const Orv16s* a, const Orv16s* b, Orv16s* c, int scaleFactor) {
    // Output k is the dot product of a with r[j] = b[(k - j) mod 8], a window
    // of b reversed and doubled: rr[8 - k + j].
    alignas(16) Orv16s rr[16];
    for (int t = 0; t < 8; ++t) rr[t] = rr[t + 8] = load_elem(b + ((8 - t) & 7));
    const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    __m128i dot[8];
    for (int k = 0; k < 8; ++k)
        dot[k] = _mm_madd_epi16(va, _mm_loadu_si128(reinterpret_cast<const __m128i*>(rr + 8 - k)));
    // Four pair sums each of four outputs to one lane per output.
    auto fold4 = [](const __m128i* d) {
        const __m128i s01 = _mm_add_epi32(_mm_unpacklo_epi32(d[0], d[1]), _mm_unpackhi_epi32(d[0], d[1]));
        const __m128i s23 = _mm_add_epi32(_mm_unpacklo_epi32(d[2], d[3]), _mm_unpackhi_epi32(d[2], d[3]));
        return _mm_add_epi32(_mm_unpacklo_epi64(s01, s23), _mm_unpackhi_epi64(s01, s23));
    };
    __m128i lo = fold4(dot), hi = fold4(dot + 4);
    if (scaleFactor > 0) {
        const __m128i s = _mm_cvtsi32_si128(scaleFactor < 31 ? scaleFactor : 31);
        lo = _mm_sra_epi32(lo, s), hi = _mm_sra_epi32(hi, s);
    } else if (scaleFactor < 0) {
        const __m128i s = _mm_cvtsi32_si128(scaleFactor > -32 ? -scaleFactor : 32);  // 32 and above clear
        lo = _mm_sll_epi32(lo, s), hi = _mm_sll_epi32(hi, s);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(c), _mm_packs_epi32(lo, hi));
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownConvCyclic8x8_32f)(const Orv32f* a, const Orv32f* b, Orv32f* c) {
    if (((address(b) | address(c)) & 15) == 0) cyclic8<true>(a, b, c);
    else cyclic8<false>(a, b, c);
}
ORV_TIER_API void ORV_T(ownConvCyclic4x4_32f32fc)(const Orv32f* a, const Orv32fc* b, Orv32fc* c) {
    cyclic4c(a, reinterpret_cast<const float*>(b), reinterpret_cast<float*>(c));
}
ORV_TIER_API void ORV_T(ownConvCyclic8x8_16s_Sfs)(const Orv16s* a, const Orv16s* b, Orv16s* c, int scaleFactor) {
    cyclic8_16s(a, b, c, scaleFactor);
}
