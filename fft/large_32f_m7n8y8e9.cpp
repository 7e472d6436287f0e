// Single-precision large transform and its block kernels: gather and
// scatter of column groups, the radix-4 and radix-8 levels in the work
// buffer, and the split-complex and interleaving forms kept as kernels.
#include "fft/large.h"

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvs_cFftFwd_Large_32fc)(const OrvFFTSpec* pSpec, const Orv32fc* pSrc, Orv32fc* pDst,
                                                      int order, Orv8u* pWork) {
    return large::run_large<float, false>(pSpec, pSrc, pDst, order, pWork);
}
ORV_TIER_API OrvStatus ORV_T(orvs_cFftInv_Large_32fc)(const OrvFFTSpec* pSpec, const Orv32fc* pSrc, Orv32fc* pDst,
                                                      int order, Orv8u* pWork) {
    return large::run_large<float, true>(pSpec, pSrc, pDst, order, pWork);
}

ORV_TIER_API void ORV_T(orvs_cFft_BlkMerge_32fc)(const Orv32fc* pSrc, Orv32fc* pBuf, int stride, int rows, int cols) {
    large::merge<float>(pSrc, pBuf, stride, rows, cols);
}
ORV_TIER_API void ORV_T(orvs_cFft_BlkSplit_32fc)(Orv32fc* pDst, const Orv32fc* pBuf, int stride, int rows, int cols,
                                                 int interleave) {
    large::split<float>(pDst, pBuf, stride, rows, cols, interleave != 0);
}
ORV_TIER_API void ORV_T(orvs_crFft_BlkMerge_32f)(const Orv32f* pRe, const Orv32f* pIm, Orv8u* pBuf, int stride,
                                                 int rows, int cols) {
    large::merge_split<float>(pRe, pIm, reinterpret_cast<float*>(pBuf), stride, rows, cols);
}
ORV_TIER_API void ORV_T(orvs_crFft_BlkSplit_32f)(Orv32f* pRe, Orv32f* pIm, const Orv8u* pBuf, int stride, int rows,
                                                 int cols) {
    large::split_split<float>(pRe, pIm, reinterpret_cast<const float*>(pBuf), stride, rows, cols);
}

ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact4_32fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<float, false, 4>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact4_32fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<float, true, 4>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact8_32fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<float, false, 8>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact8_32fc)(const void* pIn, void* pOut, int cols, int count, const void* pTwd) {
    large::fact<float, true, 8>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftFwd_Fact8_Last_32fc)(const void* pIn, void* pOut, int cols, int count,
                                                      const void* pTwd) {
    large::fact8_last<float, false>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_cFftInv_Fact8_Last_32fc)(const void* pIn, void* pOut, int cols, int count,
                                                      const void* pTwd) {
    large::fact8_last<float, true>(pIn, pOut, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_crFftFwd_Fact8_Last_32f)(const Orv32f* pInRe, const Orv32f* pInIm, Orv32f* pOutRe,
                                                      Orv32f* pOutIm, int cols, int count, const void* pTwd) {
    large::fact8_last_split<float, false>(pInRe, pInIm, pOutRe, pOutIm, cols, count, pTwd);
}
ORV_TIER_API void ORV_T(orvs_crFftInv_Fact8_Last_32f)(const Orv32f* pInRe, const Orv32f* pInIm, Orv32f* pOutRe,
                                                      Orv32f* pOutIm, int cols, int count, const void* pTwd) {
    large::fact8_last_split<float, true>(pInRe, pInIm, pOutRe, pOutIm, cols, count, pTwd);
}
