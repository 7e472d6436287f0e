// Lanes of the row filters: loads of source elements of any type widened to
// float, stores that keep the fourth channel, the conversions of float sums
// to 8u, 16u and 16s, and the addition tree of one group of taps.
//
// Every load reads exactly the elements it converts (never a byte past the
// last one), at any address; stores write exactly the elements of the block.
// The 256-bit lane is a template that only e9 code instantiates.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "filter/frame_generic.h"
#include "internal/orv_simd.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace rowf {

enum class Layout { C1, C3, C4, AC4 };
template <Layout L>
inline constexpr int kChannels = L == Layout::C1 ? 1 : L == Layout::C3 ? 3 : 4;

template <class T>
inline T* byte_off(T* p, ptrdiff_t bytes) {
    using B = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
    return reinterpret_cast<T*>(reinterpret_cast<B*>(p) + bytes);
}
template <class T>
inline const unsigned char* bytes_of(const T* p) {
    return reinterpret_cast<const unsigned char*>(p);
}

// Integer destinations: limits of the saturation.
template <class T>
struct Lim {
    static constexpr float kLo = float(std::numeric_limits<T>::min());
    static constexpr float kHi = float(std::numeric_limits<T>::max());
};

// ---- Lanes: R (register), kN floats, widened loads, float loads and stores,
// the store that leaves element 3 of every four as it is (AC4).

struct L1 {
    using R = float;
    static constexpr int kN = 1;
    template <class T>
    static R widen(const T* p) {
        T v;
        std::memcpy(&v, static_cast<const void*>(p), sizeof v);
        return float(v);
    }
    static R loadf(const float* p) { return widen(p); }
    static void store(float* p, R r) { std::memcpy(static_cast<void*>(p), &r, sizeof r); }
    static R set1(float x) { return x; }
    static R zero() { return 0.0f; }
    static R add(R a, R b) { return a + b; }
    static R mul(R a, R b) { return a * b; }
};

struct L4 {
    using R = __m128;
    static constexpr int kN = 4;
    template <class T>
    static R widen(const T* p) {
        return filt::load_f<T, 4>(bytes_of(p));
    }
    static R loadf(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, R r) { _mm_storeu_ps(p, r); }
    static void store_rgb(float* p, R r) {
        if constexpr (kTier == Tier::e9) {
            _mm_maskstore_ps(p, _mm_setr_epi32(-1, -1, -1, 0), r);
        } else {
            const R keep = _mm_castsi128_ps(_mm_setr_epi32(0, 0, 0, -1));
            _mm_storeu_ps(p, _mm_or_ps(_mm_and_ps(keep, _mm_loadu_ps(p)), _mm_andnot_ps(keep, r)));
        }
    }
    static R set1(float x) { return _mm_set1_ps(x); }
    static R zero() { return _mm_setzero_ps(); }
    static R add(R a, R b) { return _mm_add_ps(a, b); }
    static R mul(R a, R b) { return _mm_mul_ps(a, b); }
};

template <class = void>
struct L8T {
    using R = __m256;
    static constexpr int kN = 8;
    template <class T>
    static R widen(const T* p) {
        if constexpr (std::is_same_v<T, float>) {
            return _mm256_loadu_ps(p);
        } else {
            __m128i lo, hi;
            if constexpr (sizeof(T) == 1) {
                const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p));
                if constexpr (std::is_signed_v<T>) {
                    lo = _mm_cvtepi8_epi32(b);
                    hi = _mm_cvtepi8_epi32(_mm_srli_si128(b, 4));
                } else {
                    lo = _mm_cvtepu8_epi32(b);
                    hi = _mm_cvtepu8_epi32(_mm_srli_si128(b, 4));
                }
            } else {
                const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(p));
                if constexpr (std::is_signed_v<T>) {
                    lo = _mm_cvtepi16_epi32(w);
                    hi = _mm_cvtepi16_epi32(_mm_srli_si128(w, 8));
                } else {
                    lo = _mm_cvtepu16_epi32(w);
                    hi = _mm_cvtepu16_epi32(_mm_srli_si128(w, 8));
                }
            }
            return _mm256_cvtepi32_ps(_mm256_insertf128_si256(_mm256_castsi128_si256(lo), hi, 1));
        }
    }
    static R loadf(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, R r) { _mm256_storeu_ps(p, r); }
    static void store_rgb(float* p, R r) { _mm256_maskstore_ps(p, _mm256_setr_epi32(-1, -1, -1, 0, -1, -1, -1, 0), r); }
    static R set1(float x) { return _mm256_set1_ps(x); }
    static R zero() { return _mm256_setzero_ps(); }
    static R add(R a, R b) { return _mm256_add_ps(a, b); }
    static R mul(R a, R b) { return _mm256_mul_ps(a, b); }
};

// Sum of the operands o[Lo..Hi) as a tree: the largest power-of-two prefix
// first, so eight operands pair as ((0+1)+(2+3))+((4+5)+(6+7)).
template <class V, int Lo, int Hi>
inline typename V::R tree(const typename V::R* o) {
    if constexpr (Hi - Lo == 1) {
        return o[Lo];
    } else {
        constexpr int half = int(std::bit_floor(unsigned(Hi - Lo - 1)));
        return V::add(tree<V, Lo, Lo + half>(o), tree<V, Lo + half, Hi>(o));
    }
}

// ---- Integer stores: eight 32-bit results, already within T's range, packed
// and written to p; with kKeep elements 3 and 7 keep what p holds.
template <class T, bool kKeep>
inline void store8(T* p, __m128i lo, __m128i hi) {
    __m128i v;
    if constexpr (std::is_same_v<T, Orv16u>) {
        const __m128i bias = _mm_set1_epi32(-32768);
        v = _mm_xor_si128(_mm_packs_epi32(_mm_add_epi32(lo, bias), _mm_add_epi32(hi, bias)),
                          _mm_set1_epi16(static_cast<short>(0x8000)));
    } else {
        v = _mm_packs_epi32(lo, hi);
    }
    if constexpr (sizeof(T) == 1) {
        v = std::is_signed_v<T> ? _mm_packs_epi16(v, v) : _mm_packus_epi16(v, v);
        if constexpr (kKeep) {
            const __m128i keep = _mm_setr_epi8(0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0);
            const __m128i old = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p));
            v = _mm_or_si128(_mm_and_si128(keep, old), _mm_andnot_si128(keep, v));
        }
        _mm_storel_epi64(reinterpret_cast<__m128i_u*>(p), v);
    } else {
        if constexpr (kKeep) {
            const __m128i keep = _mm_setr_epi16(0, 0, 0, -1, 0, 0, 0, -1);
            const __m128i old = _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(p));
            v = _mm_or_si128(_mm_and_si128(keep, old), _mm_andnot_si128(keep, v));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i_u*>(p), v);
    }
}

template <class T>
inline void store1(T* p, T v) {
    std::memcpy(static_cast<void*>(p), &v, sizeof v);
}

// Round to nearest by the mode in force (ties to even by default) with
// saturation; a NaN gives 0. For finite values and the default mode this is
// the generic loops' scalar rule.
template <class T>
inline __m128i near4(__m128 x) {
    x = _mm_and_ps(x, _mm_cmpord_ps(x, x));
    x = _mm_min_ps(_mm_max_ps(x, _mm_set1_ps(Lim<T>::kLo)), _mm_set1_ps(Lim<T>::kHi));
    return _mm_cvtps_epi32(x);
}

// Round half away from zero with saturation (the rule of the Fin
// conversions): limited by a minimum with the upper bound first, so a NaN
// gives the upper bound; for 16u a maximum with 0 first, so a NaN gives 0.
// The rounding is exact in any rounding mode: x minus its truncation is
// exact, and one is added or taken away when that fraction reaches a half.
template <class T>
inline float fin1(float x) {
    if constexpr (std::is_same_v<T, Orv16u>) {
        x = x > 0.0f ? x : 0.0f;  // NaN -> 0
        x = x < Lim<T>::kHi ? x : Lim<T>::kHi;
    } else {
        x = x < Lim<T>::kHi ? x : Lim<T>::kHi;  // NaN -> upper bound
        x = x > Lim<T>::kLo ? x : Lim<T>::kLo;
    }
    float t = float(int32_t(x));
    const float d = x - t;
    if (d >= 0.5f) t += 1.0f;
    else if (d <= -0.5f) t -= 1.0f;
    return t;
}

// The same for eight lanes (e9 only), as two halves of 32-bit integers.
template <class T, class V = L8T<>>
inline void fin8(typename V::R x, __m128i& lo, __m128i& hi) {
    const __m256 upper = _mm256_set1_ps(Lim<T>::kHi), lower = _mm256_set1_ps(Lim<T>::kLo);
    if constexpr (std::is_same_v<T, Orv16u>)
        x = _mm256_min_ps(_mm256_max_ps(x, lower), upper);
    else
        x = _mm256_max_ps(_mm256_min_ps(x, upper), lower);
    __m256 t = _mm256_round_ps(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    const __m256 d = _mm256_sub_ps(x, t), one = _mm256_set1_ps(1.0f);
    t = _mm256_add_ps(t, _mm256_and_ps(_mm256_cmp_ps(d, _mm256_set1_ps(0.5f), _CMP_GE_OQ), one));
    t = _mm256_sub_ps(t, _mm256_and_ps(_mm256_cmp_ps(d, _mm256_set1_ps(-0.5f), _CMP_LE_OQ), one));
    const __m256i i = _mm256_cvttps_epi32(t);
    lo = _mm256_castsi256_si128(i);
    hi = _mm256_extractf128_si256(i, 1);
}

}  // namespace rowf
}  // namespace
}  // namespace orv::ORV_TIER_NS
