// The product of two spectra in the 2-D Pack layout, and the 8-column strip
// gather and scatter of the 2-D FFT.
//
// Pack product, for any width W and height H: row 0 (and the last row when H
// is even) holds a real value in column 0, a real value in column W-1 when W
// is even, and complex pairs along the row between them; each following row
// pair (r, r+1) holds one complex value down column 0 (real part in row r,
// imaginary part in row r+1), one down column W-1 when W is even, and complex
// pairs along both rows between them.
//
// Complex pairs along a row multiply in registers of interleaved values:
// (a.re b.re - a.im b.im, a.im b.re + a.re b.im) by duplicated real and
// imaginary parts of b, a swapped copy of a and one add-subtract, the same
// bits as the plain product since each sum has just two terms.
#include <pmmintrin.h>

#include <cstddef>
#include <cstring>

#include "image/fft2d_strips.h"
#include "internal/orv_simd.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace mulpack {

// Interleaved complex product a * b on one register of either width.
template <class V>
typename V::R cx_mul(typename V::R a, typename V::R b) {
    if constexpr (V::kN == 8) {
        const __m256 t1 = _mm256_mul_ps(a, _mm256_moveldup_ps(b));
        const __m256 t2 = _mm256_mul_ps(_mm256_permute_ps(a, 0xB1), _mm256_movehdup_ps(b));
        return _mm256_addsub_ps(t1, t2);
    } else {
        const __m128 t1 = _mm_mul_ps(a, _mm_moveldup_ps(b));
        const __m128 t2 = _mm_mul_ps(_mm_shuffle_ps(a, a, 0xB1), _mm_movehdup_ps(b));
        return _mm_addsub_ps(t1, t2);
    }
}

// d *= s for one complex value, real and imaginary parts at their own
// addresses. Scalars move by memcpy: rows need not be on 4 bytes.
inline float ld(const float* p) {
    float v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void st(float* p, float v) { std::memcpy(p, &v, sizeof v); }
inline void cmul1(const float* sRe, const float* sIm, float* dRe, float* dIm) {
    const float sr = ld(sRe), si = ld(sIm), dr = ld(dRe), di = ld(dIm);
    st(dRe, dr * sr - di * si);
    st(dIm, dr * si + di * sr);
}
inline void rmul1(const float* s, float* d) { st(d, ld(d) * ld(s)); }

// `pairs` complex products along a row, d *= s.
template <class V>
void cmul_row(const float* s, float* d, int pairs) {
    const int n = 2 * pairs;
    int i = 0;
    for (; i + V::kN <= n; i += V::kN)
        V::template store<false>(d + i, cx_mul<V>(V::template load<false>(d + i), V::template load<false>(s + i)));
    for (; i < n; i += 2) cmul1(s + i, s + i + 1, d + i, d + i + 1);
}

// A row of real ends: column 0, column W-1 for even W, pairs between.
template <class V>
void end_row(const float* s, float* d, int w) {
    rmul1(s, d);
    if (w % 2 == 0 && w > 1) rmul1(s + w - 1, d + w - 1);
    cmul_row<V>(s + 1, d + 1, (w - 1) / 2);
}

template <class V>
void mul_pack(const float* pSrc, int srcStep, float* pSrcDst, int dstStep, int w, int h) {
    end_row<V>(pSrc, pSrcDst, w);
    const int pairs = (w - 1) / 2;
    const int rowsEnd = h % 2 ? h - 1 : h - 2;
    for (int r = 1; r < rowsEnd; r += 2) {
        const float* s0 = strips::row_at(pSrc, srcStep, r);
        const float* s1 = strips::row_at(pSrc, srcStep, r + 1);
        float* d0 = strips::row_at(pSrcDst, dstStep, r);
        float* d1 = strips::row_at(pSrcDst, dstStep, r + 1);
        // Down a column: row r real, row r+1 imaginary.
        cmul1(s0, s1, d0, d1);
        if (w % 2 == 0 && w > 1) cmul1(s0 + w - 1, s1 + w - 1, d0 + w - 1, d1 + w - 1);
        cmul_row<V>(s0 + 1, d0 + 1, pairs);
        cmul_row<V>(s1 + 1, d1 + 1, pairs);
    }
    if (h % 2 == 0 && h > 1)
        end_row<V>(strips::row_at(pSrc, srcStep, h - 1), strips::row_at(pSrcDst, dstStep, h - 1), w);
}

}  // namespace mulpack
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviMulPack_32f_C1IR)(const Orv32f* pSrc, int srcStep, Orv32f* pSrcDst, int srcDstStep,
                                                   OrviSize roiSize) {
    if (pSrc == nullptr || pSrcDst == nullptr) return orvStsNullPtrErr;
    if (srcStep < 1 || srcDstStep < 1) return orvStsStepErr;
    if (roiSize.width < 1 || roiSize.height < 1) return orvStsSizeErr;
    if constexpr (kTier == orv::Tier::e9)
        mulpack::mul_pack<simd::F8>(pSrc, srcStep, pSrcDst, srcDstStep, roiSize.width, roiSize.height);
    else
        mulpack::mul_pack<simd::F4>(pSrc, srcStep, pSrcDst, srcDstStep, roiSize.width, roiSize.height);
    return orvStsNoErr;
}

ORV_TIER_API void ORV_T(orvi_cDftMerge_32fc)(const Orv32f* pStrip, int step, Orv32f* pBuf, int height) {
    strips::merge<8>(pStrip, step, pBuf, height);
}

ORV_TIER_API void ORV_T(orvi_cDftSplit_32fc)(Orv32f* pStrip, int step, const Orv32f* pBuf, int height) {
    strips::split<8>(pStrip, step, pBuf, height);
}
