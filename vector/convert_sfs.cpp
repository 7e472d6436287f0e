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
#include "vector/convert_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

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
        convert_all<D, ScaledRule<D, R, true>>(s, d, len, factor);
    else
        convert_all<D, ScaledRule<D, R, false>>(s, d, len, factor);

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
