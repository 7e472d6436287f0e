// Double-precision large transform and its block kernels: gather and
// scatter of column groups, the radix-4 and radix-8 levels in the work
// buffer, and the split-complex and interleaving forms kept as kernels.
// Built for every tier: the real transforms of each run their inner complex
// transform through it.
#include "fft/large.h"

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvs_cFftFwd_Large_64fc)(const OrvFFTSpec* pSpec, const Orv64fc* pSrc, Orv64fc* pDst,
                                                      int order, Orv8u* pWork) {
    return large::run_large<double, false>(pSpec, pSrc, pDst, order, pWork);
}
ORV_TIER_API OrvStatus ORV_T(orvs_cFftInv_Large_64fc)(const OrvFFTSpec* pSpec, const Orv64fc* pSrc, Orv64fc* pDst,
                                                      int order, Orv8u* pWork) {
    return large::run_large<double, true>(pSpec, pSrc, pDst, order, pWork);
}

ORV_TIER_API void ORV_T(orvs_cFft_BlkMerge_64fc)(const Orv64fc* pSrc, Orv64fc* pBuf, int stride, int rows, int cols) {
    large::merge<double>(pSrc, pBuf, stride, rows, cols);
}
ORV_TIER_API void ORV_T(orvs_cFft_BlkSplit_64fc)(Orv64fc* pDst, const Orv64fc* pBuf, int stride, int rows, int cols,
                                                 int interleave) {
    large::split<double>(pDst, pBuf, stride, rows, cols, interleave != 0);
}
ORV_TIER_API void ORV_T(orvs_crFft_BlkMerge_64f)(const Orv64f* pRe, const Orv64f* pIm, Orv8u* pBuf, int stride,
                                                 int rows, int cols) {
    large::merge_split<double>(pRe, pIm, reinterpret_cast<double*>(pBuf), stride, rows, cols);
}
ORV_TIER_API void ORV_T(orvs_crFft_BlkSplit_64f)(Orv64f* pRe, Orv64f* pIm, const Orv8u* pBuf, int stride, int rows,
                                                 int cols) {
    large::split_split<double>(pRe, pIm, reinterpret_cast<const double*>(pBuf), stride, rows, cols);
}

ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact4_64fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<double, false, 4>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact4_64fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<double, true, 4>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact8_64fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<double, false, 8>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact8_64fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<double, true, 8>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact8_Last_64fc)(const void* pIn, void* pOut, int cols, int count,
                                                      const void* pTwd) {
    large::fact8_last<double, false>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact8_Last_64fc)(const void* pIn, void* pOut, int cols, int count,
                                                      const void* pTwd) {
    large::fact8_last<double, true>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_crFftFwd_Fact8_Last_64f)(const Orv64f* pInRe, const Orv64f* pInIm, Orv64f* pOutRe,
                                                      Orv64f* pOutIm, int cols, int count, const void* pTwd) {
    large::fact8_last_split<double, false>(pInRe, pInIm, pOutRe, pOutIm, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_crFftInv_Fact8_Last_64f)(const Orv64f* pInRe, const Orv64f* pInIm, Orv64f* pOutRe,
                                                      Orv64f* pOutIm, int cols, int count, const void* pTwd) {
    large::fact8_last_split<double, true>(pInRe, pInIm, pOutRe, pOutIm, cols, count, pTwd);
}
