// Float to 8u, 8s, 16s and 16u, element rules and loops shared by the vector
// conversions and the image conversions of one tier.
//
// A rule turns floats into 32-bit integers on any lane type; the destination
// type packs eight such results into eight elements (the low half of a
// vector for 8-bit types, all of it for 16-bit ones), saturating as the pack
// does. convert_all runs a rule over a whole vector: single elements up to
// an aligned address, eight a step, single elements at the end.
#pragma once

#include <immintrin.h>

#include "internal/orv_simd.h"
#include "internal/orv_tier.h"
#include "vector/elem_access.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr Orv64u kRoundingBits = 0x6000;
constexpr Orv64u kDenormalsAreZero = 0x40;
constexpr Orv64u kInvalidFlag = 0x1;

enum class Round { ByMxcsr, Truncate, HalfAway };

// ---- Lanes: one lane for the head and tail, below; for the blocks the
// widest float lane of the tier (internal/orv_simd.h), so e9 converts eight
// elements in one 256-bit vector and the other tiers in two. The one-lane
// forms are the _ss instructions, so the unused lanes never raise a
// floating-point flag.
struct Lane1 {
    using R = __m128;
    using I = __m128i;
    static R load(const float* p) { return _mm_set_ss(load_elem(p)); }
    static R set1(float x) { return _mm_set1_ps(x); }
    static R mul(R a, R b) { return _mm_mul_ss(a, b); }
    static R add(R a, R b) { return _mm_add_ss(a, b); }
    static R min(R a, R b) { return _mm_min_ss(a, b); }
    static R max(R a, R b) { return _mm_max_ss(a, b); }
    static R bit_and(R a, R b) { return _mm_and_ps(a, b); }
    static R bit_andnot(R a, R b) { return _mm_andnot_ps(a, b); }
    static R bit_or(R a, R b) { return _mm_or_ps(a, b); }
    static I cvt(R a) { return _mm_cvtsi32_si128(_mm_cvtss_si32(a)); }
    static I cvtt(R a) { return _mm_cvtsi32_si128(_mm_cvttss_si32(a)); }
};
using Wide = simd::FWide;

// ---- Destination types: range, packing of eight 32-bit results to eight
// elements in the low half (8-bit) or all (16-bit) of a vector, stores.
struct To8u {
    using T = Orv8u;
    static constexpr float kMin = 0.0f, kMax = 255.0f;
    static constexpr bool kFloorAtZero = false, kSigned = false, kNanPass = true;
    // Tier y8 writes the zero for a NaN as 16 bits at the element's byte,
    // which also clears the next element (stopped at the array's end here).
    static constexpr int kNanZeroes = kTier == Tier::y8 ? 2 : 1;
    static __m128i pack(__m128i lo, __m128i hi) {
        const __m128i w = _mm_packs_epi32(lo, hi);
        return _mm_packus_epi16(w, w);
    }
    static void store8(T* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
    static T lane0(__m128i v) { return static_cast<T>(_mm_cvtsi128_si32(v)); }
};
struct To8s {
    using T = Orv8s;
    static constexpr float kMin = -128.0f, kMax = 127.0f;
    static constexpr bool kFloorAtZero = false, kSigned = true, kNanPass = true;
    static constexpr int kNanZeroes = 1;
    static __m128i pack(__m128i lo, __m128i hi) {
        const __m128i w = _mm_packs_epi32(lo, hi);
        return _mm_packs_epi16(w, w);
    }
    static void store8(T* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
    static T lane0(__m128i v) { return static_cast<T>(_mm_cvtsi128_si32(v)); }
};
struct To16s {
    using T = Orv16s;
    static constexpr float kMin = -32768.0f, kMax = 32767.0f;
    static constexpr bool kFloorAtZero = false, kSigned = true, kNanPass = true;
    static constexpr int kNanZeroes = 1;
    static __m128i pack(__m128i lo, __m128i hi) { return _mm_packs_epi32(lo, hi); }
    static void store8(T* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static T lane0(__m128i v) { return static_cast<T>(_mm_cvtsi128_si32(v)); }
};
// The signed pack on values moved down by 32768, with the top bit flipped
// after: results in 0 to 65535 without the SSE4.1 unsigned pack.
struct To16u {
    using T = Orv16u;
    static constexpr float kMin = 0.0f, kMax = 65535.0f;
    static constexpr bool kFloorAtZero = true, kSigned = false, kNanPass = false;
    static constexpr int kNanZeroes = 0;
    static __m128i pack(__m128i lo, __m128i hi) {
        const __m128i bias = _mm_set1_epi32(-32768);
        const __m128i w = _mm_packs_epi32(_mm_add_epi32(lo, bias), _mm_add_epi32(hi, bias));
        return _mm_xor_si128(w, _mm_set1_epi16(static_cast<short>(0x8000)));
    }
    static void store8(T* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static T lane0(__m128i v) { return static_cast<T>(_mm_cvtsi128_si32(v)); }
};

// ---- The rule of the scaled conversions. Multiply by the factor when
// there is one, then limit: a minimum with the type's maximum, element
// first, so a NaN gives the maximum; for 16u a maximum with 0 instead, which
// maps a NaN to 0. Below the type's minimum the conversion's overflow value
// 0x80000000 saturates to the minimum in the pack. Rounding by MXCSR, by
// truncation, or half away from zero: 0.5 added to the magnitude and
// truncated, under a round-towards-zero mode that keeps the sum itself from
// rounding up to the next integer.
template <class D, Round R, bool kScaled>
struct ScaledRule {
    template <class L>
    static typename L::I apply(typename L::R x, float factor) {
        if constexpr (kScaled) x = L::mul(x, L::set1(factor));
        if constexpr (D::kFloorAtZero)
            x = L::max(x, L::set1(0.0f));
        else
            x = L::min(x, L::set1(D::kMax));
        if constexpr (R == Round::ByMxcsr) {
            return L::cvt(x);
        } else if constexpr (R == Round::Truncate) {
            return L::cvtt(x);
        } else {
            const typename L::R half = L::set1(0.5f);
            if constexpr (D::kSigned) {
                const typename L::R signBit = L::set1(-0.0f);
                const typename L::R sign = L::bit_and(x, signBit);
                x = L::bit_or(L::add(L::bit_andnot(signBit, x), half), sign);
            } else {
                x = L::add(x, half);
            }
            return L::cvtt(x);
        }
    }
};

// ---- Loops over a rule.
template <class D, class Rule>
inline void convert_one(const float* s, typename D::T* d, float factor) {
    const __m128i v = Rule::template apply<Lane1>(Lane1::load(s), factor);
    store_elem(d, D::lane0(D::pack(v, v)));
}

// Eight elements with the tier's widest lane, packed.
template <class D, class Rule, bool kSrcAligned>
inline __m128i convert_eight(const float* s, float factor) {
    using W = Wide;
    if constexpr (W::kBytes == 32) {
        const __m256i v = Rule::template apply<W>(W::template load<kSrcAligned>(s), factor);
        return D::pack(_mm256_castsi256_si128(v), _mm256_extractf128_si256(v, 1));
    } else {
        const __m128i lo = Rule::template apply<W>(W::template load<kSrcAligned>(s), factor);
        const __m128i hi = Rule::template apply<W>(W::template load<kSrcAligned>(s + 4), factor);
        return D::pack(lo, hi);
    }
}

template <class D, class Rule, bool kSrcAligned>
inline int convert_blocks(const float* s, typename D::T* d, int i, int len, float factor) {
    for (; i + 8 <= len; i += 8) {
        // The next cache line of the source, never past the array.
        if (i + 16 < len) _mm_prefetch(reinterpret_cast<const char*>(s + i + 16), _MM_HINT_T0);
        D::store8(d + i, convert_eight<D, Rule, kSrcAligned>(s + i, factor));
    }
    return i;
}

// Single elements until the source is aligned to the vector (for 16-bit
// results: until the destination is a multiple of 16 bytes), 8 elements a
// step in one of two loops for an aligned or unaligned source, then the tail.
template <class D, class Rule>
void convert_all(const float* s, typename D::T* d, int len, float factor) {
    using T = typename D::T;
    int i = sizeof(T) == 2 ? steps_to_align(d, sizeof(T), 16, len) : steps_to_align(s, 4, Wide::kBytes, len);
    for (int k = 0; k < i; ++k) convert_one<D, Rule>(s + k, d + k, factor);
    if (address(s + i) % Wide::kBytes == 0)
        i = convert_blocks<D, Rule, true>(s, d, i, len, factor);
    else
        i = convert_blocks<D, Rule, false>(s, d, i, len, factor);
    for (; i < len; ++i) convert_one<D, Rule>(s + i, d + i, factor);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
