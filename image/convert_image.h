// Float images to integer images: the row kernels and the frame of the
// public functions, on the element rules of the vector conversions.
//
// Rounding modes 0 and 1 run under the rounding they set in MXCSR (towards
// zero, to nearest): every conversion in their kernels rounds by MXCSR. A
// value is limited by a minimum with the type's maximum (element first, so
// a NaN gives the maximum) and a maximum with the type's minimum, converted
// to 32 bits and saturated by the type's pack. Any other mode rounds half
// away from zero as the vector Fin kernels do, under round-towards-zero.
//
// AC4 kernels convert all four elements of a pixel, then put the fourth
// element of the destination, read before the store, back in its place:
// the destination's alpha is written, always with the value it had.
#pragma once

#include <climits>

#include "vector/convert_lanes.h"

namespace orv::ORV_TIER_NS {
namespace {

template <class D>
struct ClampRule {
    template <class L>
    static typename L::I apply(typename L::R x, float) {
        x = L::min(x, L::set1(D::kMax));
        x = L::max(x, L::set1(D::kMin));
        return L::cvt(x);
    }
};
template <class D>
using FinRule = ScaledRule<D, Round::HalfAway, false>;

// ---- Alpha: the fourth element of each pixel in a 16-byte vector.
template <class T>
inline __m128i alpha_mask() {
    if constexpr (sizeof(T) == 1)
        return _mm_set1_epi32(static_cast<int>(0xFF000000u));
    else
        return _mm_set1_epi64x(static_cast<long long>(0xFFFF000000000000ull));
}
// fresh where the mask is clear, old where it is set.
inline __m128i keep_alpha(__m128i fresh, __m128i old, __m128i mask) {
    if constexpr (kTier >= Tier::y8)
        return _mm_blendv_epi8(fresh, old, mask);
    else
        return _mm_or_si128(_mm_and_si128(mask, old), _mm_andnot_si128(mask, fresh));
}

// Four pixels (16 elements) with the tier's widest lane.
template <class D, class Rule, bool kSrcAligned>
inline void ac4_block(const float* s, typename D::T* d, __m128i mask) {
    const __m128i a = convert_eight<D, Rule, kSrcAligned>(s, 1.0f);
    const __m128i b = convert_eight<D, Rule, kSrcAligned>(s + 8, 1.0f);
    auto* q = reinterpret_cast<__m128i*>(d);
    if constexpr (sizeof(typename D::T) == 1) {
        const __m128i old = _mm_loadu_si128(q);
        _mm_storeu_si128(q, keep_alpha(_mm_unpacklo_epi64(a, b), old, mask));
    } else {
        const __m128i oldA = _mm_loadu_si128(q), oldB = _mm_loadu_si128(q + 1);
        _mm_storeu_si128(q, keep_alpha(a, oldA, mask));
        _mm_storeu_si128(q + 1, keep_alpha(b, oldB, mask));
    }
}

// One pixel, four lanes of 128 bits.
template <class D, class Rule>
inline void ac4_pixel(const float* s, typename D::T* d, __m128i mask) {
    using T = typename D::T;
    const __m128i v = Rule::template apply<simd::F4>(simd::F4::load<false>(s), 1.0f);
    const __m128i p = D::pack(v, v);
    if constexpr (sizeof(T) == 1) {
        auto* w = reinterpret_cast<Orv32s*>(d);
        store_elem(w, _mm_cvtsi128_si32(keep_alpha(p, _mm_cvtsi32_si128(load_elem(w)), mask)));
    } else {
        auto* q = reinterpret_cast<__m128i*>(d);
        _mm_storel_epi64(q, keep_alpha(p, _mm_loadl_epi64(q), mask));
    }
}

// len elements (four per pixel): one loop for a source aligned to the lane
// and a destination aligned to 4 bytes, one for anything else, four pixels
// a step in both; then single pixels.
template <class D, class Rule>
void convert_ac4(const float* s, typename D::T* d, int len) {
    const __m128i mask = alpha_mask<typename D::T>();
    int i = 0;
    if (address(s) % Wide::kBytes == 0 && address(d) % 4 == 0)
        for (; i + 16 <= len; i += 16) ac4_block<D, Rule, true>(s + i, d + i, mask);
    else
        for (; i + 16 <= len; i += 16) ac4_block<D, Rule, false>(s + i, d + i, mask);
    for (; i < len; i += 4) ac4_pixel<D, Rule>(s + i, d + i, mask);
}

// ---- Row kernels. Element counts; AC4 counts are multiples of 4.
inline void owniConvert_32f8u_M7(const Orv32f* pSrc, Orv8u* pDst, int len) {
    convert_all<To8u, ClampRule<To8u>>(pSrc, pDst, len, 1.0f);
}
inline void owniConvert_32f8u_AC4_M7(const Orv32f* pSrc, Orv8u* pDst, int len) {
    convert_ac4<To8u, ClampRule<To8u>>(pSrc, pDst, len);
}
inline void owniConvertFin_32f8u_AC4(const Orv32f* pSrc, Orv8u* pDst, int len) {
    convert_ac4<To8u, FinRule<To8u>>(pSrc, pDst, len);
}
inline void owniConvert_32f16s_AC4_M7(const Orv32f* pSrc, Orv16s* pDst, int len) {
    convert_ac4<To16s, ClampRule<To16s>>(pSrc, pDst, len);
}
inline void owniConvertFin_32f16s_AC4(const Orv32f* pSrc, Orv16s* pDst, int len) {
    convert_ac4<To16s, FinRule<To16s>>(pSrc, pDst, len);
}
inline void owniConvert_32f16u_AC4_M7(const Orv32f* pSrc, Orv16u* pDst, int len) {
    convert_ac4<To16u, ClampRule<To16u>>(pSrc, pDst, len);
}
inline void owniConvertFin_32f16u_AC4(const Orv32f* pSrc, Orv16u* pDst, int len) {
    convert_ac4<To16u, FinRule<To16u>>(pSrc, pDst, len);
}

// ---- The frame.
template <class T>
struct Region {
    const Orv32f* src;
    int srcStep;
    T* dst;
    int dstStep;
    int width, height;  // elements of a row, rows
    const Orv32f* src_row(int r) const {
        return reinterpret_cast<const Orv32f*>(reinterpret_cast<const Orv8u*>(src) +
                                               static_cast<ptrdiff_t>(srcStep) * r);
    }
    T* dst_row(int r) const {
        return reinterpret_cast<T*>(reinterpret_cast<Orv8u*>(dst) + static_cast<ptrdiff_t>(dstStep) * r);
    }
};

// A row kernel applied to each row of a region.
template <class T>
inline auto each_row(void (*kernel)(const Orv32f*, T*, int)) {
    return [kernel](const Region<T>& g) {
        for (int r = 0; r < g.height; ++r) kernel(g.src_row(r), g.dst_row(r), g.width);
    };
}

// Checks, then modes 0 and 1 by run01 under the rounding they set, which is
// taken back if it changed MXCSR; other modes by runFin under rounding
// towards zero, taken back unless the caller had it already. Images whose
// rows follow each other without a gap on both sides are one long row.
template <class T, int kChannels, class Run01, class RunFin>
OrvStatus convert_image(const Orv32f* pSrc, int srcStep, T* pDst, int dstStep, OrviSize roiSize, int rndMode,
                        Run01 run01, RunFin runFin) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return orvStsSizeErr;
    if (srcStep < 1 || dstStep < 1) return orvStsStepErr;

    const bool byMode = rndMode == orvRndNear || rndMode == orvRndZero;
    const Orv64u rc = rndMode == orvRndNear ? 0 : kRoundingBits;
    const Orv64u old = orv_set_rc_ssx(rc);

    long width = static_cast<long>(roiSize.width) * kChannels, height = roiSize.height;
    const long src = srcStep, dst = dstStep;
    const bool dense = sizeof(T) == 1 ? src == 4 * dst && dst == width : src == 2 * dst && dst == 2 * width;
    if (dense && width * height <= INT_MAX) width *= height, height = 1;
    const Region<T> g{pSrc, srcStep, pDst, dstStep, static_cast<int>(width), static_cast<int>(height)};

    if (byMode) {
        run01(g);
        if ((old & kRoundingBits) != rc) orv_set_cw_ssx(old);
    } else {
        runFin(g);
        if ((old & kRoundingBits) != kRoundingBits) orv_set_cw_ssx(old);
    }
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
