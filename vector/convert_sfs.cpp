// Float to 8u, 8s, 16s and 16u with a scale factor and three rounding rules.
//
// Per element: multiply by 2^-scaleFactor (when it is not 0), limit, convert
// to 32-bit integers, saturate by packing. The limit is a minimum with the
// type's upper bound, element first, so a NaN gives the bound; for 16u it is
// a maximum with 0 instead, which also maps a NaN to 0, and the pack is the
// signed one on values moved down by 32768 with the top bit flipped after.
// Below the lower bound the conversion's overflow value 0x80000000 saturates
// to the type's minimum in the pack.
//
// Rounding: the Cnvrt kernels either truncate or round by MXCSR after setting
// it to nearest; the Fin kernels add 0.5 to the magnitude and truncate, under
// the round-towards-zero mode that the public function sets, so that the sum
// itself never rounds up to the next integer.
//
// MXCSR is read on entry and checked on exit: if the rounding bits or the
// invalid flag differ, the entry word is loaded back with denormals-are-zero
// cleared. A set invalid flag also sends the Cnvrt kernels over the source
// again to write 0 for each NaN, which until then gave the upper bound.
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

// ---- Destination types: bounds, packing of eight 32-bit results to eight
// elements in the low half (8-bit) or all (16-bit) of a vector, stores.
struct To8u {
    using T = Orv8u;
    static constexpr float kUpper = 255.0f;
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
    static constexpr float kUpper = 127.0f;
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
    static constexpr float kUpper = 32767.0f;
    static constexpr bool kFloorAtZero = false, kSigned = true, kNanPass = true;
    static constexpr int kNanZeroes = 1;
    static __m128i pack(__m128i lo, __m128i hi) { return _mm_packs_epi32(lo, hi); }
    static void store8(T* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static T lane0(__m128i v) { return static_cast<T>(_mm_cvtsi128_si32(v)); }
};
struct To16u {
    using T = Orv16u;
    static constexpr float kUpper = 0.0f;  // unused: bounded below by 0 instead
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

// ---- The per-element rule, on any lane type.
template <class D, Round R, bool kScaled, class L>
inline typename L::I to_int32(typename L::R x, float factor) {
    if constexpr (kScaled) x = L::mul(x, L::set1(factor));
    if constexpr (D::kFloorAtZero)
        x = L::max(x, L::set1(0.0f));
    else
        x = L::min(x, L::set1(D::kUpper));
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

template <class D, Round R, bool kScaled>
inline void convert_one(const float* s, typename D::T* d, float factor) {
    const __m128i v = to_int32<D, R, kScaled, Lane1>(Lane1::load(s), factor);
    store_elem(d, D::lane0(D::pack(v, v)));
}

template <class D, Round R, bool kScaled, bool kSrcAligned>
inline __m128i convert_eight(const float* s, float factor) {
    using W = Wide;
    if constexpr (W::kBytes == 32) {
        const __m256i v = to_int32<D, R, kScaled, W>(W::template load<kSrcAligned>(s), factor);
        return D::pack(_mm256_castsi256_si128(v), _mm256_extractf128_si256(v, 1));
    } else {
        const __m128i lo = to_int32<D, R, kScaled, W>(W::template load<kSrcAligned>(s), factor);
        const __m128i hi = to_int32<D, R, kScaled, W>(W::template load<kSrcAligned>(s + 4), factor);
        return D::pack(lo, hi);
    }
}

template <class D, Round R, bool kScaled, bool kSrcAligned>
inline int convert_blocks(const float* s, typename D::T* d, int i, int len, float factor) {
    for (; i + 8 <= len; i += 8) {
        // The next cache line of the source, never past the array.
        if (i + 16 < len) _mm_prefetch(reinterpret_cast<const char*>(s + i + 16), _MM_HINT_T0);
        D::store8(d + i, convert_eight<D, R, kScaled, kSrcAligned>(s + i, factor));
    }
    return i;
}

// Single elements until the source is aligned to the vector (for 16-bit
// results: until the destination is a multiple of 16 bytes), 8 elements a
// step in one of two loops for an aligned or unaligned source, then the tail.
template <class D, Round R, bool kScaled>
void convert_all(const float* s, typename D::T* d, int len, float factor) {
    using T = typename D::T;
    int i = sizeof(T) == 2 ? steps_to_align(d, sizeof(T), 16, len) : steps_to_align(s, 4, Wide::kBytes, len);
    for (int k = 0; k < i; ++k) convert_one<D, R, kScaled>(s + k, d + k, factor);
    if (address(s + i) % Wide::kBytes == 0)
        i = convert_blocks<D, R, kScaled, true>(s, d, i, len, factor);
    else
        i = convert_blocks<D, R, kScaled, false>(s, d, i, len, factor);
    for (; i < len; ++i) convert_one<D, R, kScaled>(s + i, d + i, factor);
}

// 2^-sf built by repeated multiplication in single precision, under the
// rounding in force: overflow gives infinity, or the largest finite value
// when rounding towards zero, and FTZ/DAZ act on the denormal steps. Once a
// step leaves the factor unchanged no later one can change it, so the loop
// stops there instead of running up to 2^31 times.
inline float scale_factor(int sf) {
    const float m = sf > 0 ? 0.5f : 2.0f;
    int64_t n = sf > 0 ? sf : -static_cast<int64_t>(sf);
    float f = 1.0f;
    while (n-- > 0) {
        const float g = f * m;
        if (g == f) break;
        f = g;
    }
    // Keep the multiplications before any later change of MXCSR.
    __asm__ volatile("" : "+x"(f));
    return f;
}

// Writes 0 for each NaN of the source: at its element and, where
// D::kNanZeroes is 2, at the next one too, as long as that lies in the array.
template <class D>
void zero_nans(const float* s, typename D::T* d, int len) {
    const auto zero_at = [d, len](int i) {
        for (int k = 0; k < D::kNanZeroes && i + k < len; ++k) store_elem(d + i + k, typename D::T{0});
    };
    const __m128i magnitude = _mm_set1_epi32(0x7FFFFFFF), infinity = _mm_set1_epi32(0x7F800000);
    int i = 0;
    for (; i + 4 <= len; i += 4) {
        const __m128i bits = _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)), magnitude);
        for (int m = _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(bits, infinity))); m != 0; m &= m - 1)
            zero_at(i + __builtin_ctz(static_cast<unsigned>(m)));
    }
    for (; i < len; ++i)
        if ((load_elem(reinterpret_cast<const uint32_t*>(s + i)) & 0x7FFFFFFFu) > 0x7F800000u) zero_at(i);
}

// Entry and exit handling of MXCSR around a conversion.
template <class D, Round R>
void convert_kernel(const float* s, typename D::T* d, int len, int scaleFactor) {
    const Orv64u saved = ps_get_ssx();
    const float factor = scaleFactor != 0 ? scale_factor(scaleFactor) : 1.0f;
    // Rounding to nearest by MXCSR: loaded only when another mode is set,
    // and then with denormals-are-zero cleared as well.
    if constexpr (R == Round::ByMxcsr)
        if ((saved & kRoundingBits) != 0) orv_set_cw_ssx(saved & ~(kRoundingBits | kDenormalsAreZero));

    if (scaleFactor != 0)
        convert_all<D, R, true>(s, d, len, factor);
    else
        convert_all<D, R, false>(s, d, len, factor);

    // A caller's denormals-are-zero is lost whenever the word had to change
    // or an invalid operation occurred; the flags go back to the entry's.
    const Orv64u now = ps_get_ssx();
    if (((now ^ saved) & (kRoundingBits | kInvalidFlag)) != 0) orv_set_cw_ssx(saved & ~kDenormalsAreZero);

    // Invalid set (now, or already on entry): each NaN gave the upper bound
    // so far and becomes 0.
    if constexpr (D::kNanPass && R != Round::HalfAway)
        if ((now & kInvalidFlag) != 0) zero_nans<D>(s, d, len);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

// The kernels. rndFlag 1 rounds to nearest, anything else truncates.
#define ORV_CONVERT_KERNELS(suffix, D)                                                                        \
    ORV_TIER_API void ORV_T(ownorvsCnvrt_32f##suffix##_Sfs)(const Orv32f* pSrc, D::T* pDst, int len, int rndFlag, \
                                                            int scaleFactor) {                               \
        if (rndFlag == 1)                                                                                     \
            convert_kernel<D, Round::ByMxcsr>(pSrc, pDst, len, scaleFactor);                                  \
        else                                                                                                  \
            convert_kernel<D, Round::Truncate>(pSrc, pDst, len, scaleFactor);                                 \
    }                                                                                                         \
    ORV_TIER_API void ORV_T(ownorvsCnvrtFin_32f##suffix##_Sfs)(const Orv32f* pSrc, D::T* pDst, int len,          \
                                                               int scaleFactor) {                             \
        convert_kernel<D, Round::HalfAway>(pSrc, pDst, len, scaleFactor);                                     \
    }
ORV_CONVERT_KERNELS(8u, To8u)
ORV_CONVERT_KERNELS(8s, To8s)
ORV_CONVERT_KERNELS(16s, To16s)
ORV_CONVERT_KERNELS(16u, To16u)
#undef ORV_CONVERT_KERNELS

namespace orv::ORV_TIER_NS {
namespace {

// Modes 0 and 1 go to the Cnvrt kernel. Any other mode rounds half away from
// zero under round-towards-zero, which is then taken back unless it was the
// caller's mode already.
template <class T>
OrvStatus convert_checked(const Orv32f* pSrc, T* pDst, int len, int rndMode, int scaleFactor,
                          void (*cnvrt)(const Orv32f*, T*, int, int, int), void (*fin)(const Orv32f*, T*, int, int)) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    if (rndMode == orvRndNear || rndMode == orvRndZero) {
        cnvrt(pSrc, pDst, len, rndMode, scaleFactor);
    } else {
        const Orv64u old = orv_set_rc_ssx(kRoundingBits);
        fin(pSrc, pDst, len, scaleFactor);
        if ((old & kRoundingBits) != kRoundingBits) orv_set_rc_ssx(old);
    }
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

ORV_TIER_API OrvStatus ORV_T(orvsConvert_32f8u_Sfs)(const Orv32f* pSrc, Orv8u* pDst, int len, int rndMode,
                                                    int scaleFactor) {
    return convert_checked(pSrc, pDst, len, rndMode, scaleFactor, ORV_T(ownorvsCnvrt_32f8u_Sfs),
                           ORV_T(ownorvsCnvrtFin_32f8u_Sfs));
}

ORV_TIER_API OrvStatus ORV_T(orvsConvert_32f16s_Sfs)(const Orv32f* pSrc, Orv16s* pDst, int len, int rndMode,
                                                     int scaleFactor) {
    return convert_checked(pSrc, pDst, len, rndMode, scaleFactor, ORV_T(ownorvsCnvrt_32f16s_Sfs),
                           ORV_T(ownorvsCnvrtFin_32f16s_Sfs));
}

ORV_TIER_API OrvStatus ORV_T(orvsConvert_32f16u_Sfs)(const Orv32f* pSrc, Orv16u* pDst, int len, int rndMode,
                                                     int scaleFactor) {
    return convert_checked(pSrc, pDst, len, rndMode, scaleFactor, ORV_T(ownorvsCnvrt_32f16u_Sfs),
                           ORV_T(ownorvsCnvrtFin_32f16u_Sfs));
}
