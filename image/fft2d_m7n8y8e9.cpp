// The 2-D real FFT of a W x H float image (W = 2^orderX, H = 2^orderY), in
// the 2-D Pack layout, built on the tier's 1-D transforms:
//
//   forward: every row by the real transform into pDst (a 1-D Pack row);
//   then, in place in pDst, column 0 and column W-1 as real sequences (1-D
//   Pack down the column) and the column pairs (2k-1, 2k) between them as
//   complex sequences, in strips of 8, 4 or 1 complex columns gathered into
//   the work area, transformed there and scattered back.
//   inverse: the same columns, gathered from pSrc and scattered to pDst, then
//   every row of pDst in place; pSrc is only read.
//
// A single row (H = 1) or a single column (W = 1) is one 1-D transform.
// The work area holds one strip (K arrays of H complex values) with the 1-D
// transform's own work space behind it, or the work space of a row pass.
#include <climits>
#include <cstddef>
#include <cstdint>

#include "image/fft2d_strips.h"
#include "internal/orv_tier.h"
#include "orvsfft.h"

ORV_TIER_DECLARE(orvsMalloc_8u)
ORV_TIER_DECLARE(orvsFree)
ORV_TIER_DECLARE(orvsZero_8u)
ORV_TIER_DECLARE(orvsFFTInitAlloc_R_32f)
ORV_TIER_DECLARE(orvsFFTInitAlloc_C_32fc)
ORV_TIER_DECLARE(orvsFFTGetBufSize_R_32f)
ORV_TIER_DECLARE(orvsFFTGetBufSize_C_32fc)
ORV_TIER_DECLARE(orvsFFTFree_R_32f)
ORV_TIER_DECLARE(orvsFFTFree_C_32fc)
ORV_TIER_DECLARE(orvsFFTFwd_RToPack_32f)
ORV_TIER_DECLARE(orvsFFTInv_PackToR_32f)
ORV_TIER_DECLARE(orvsFFTFwd_CToC_32fc)
ORV_TIER_DECLARE(orvsFFTInv_CToC_32fc)
ORV_TIER_DECLARE(orvi_cDftMerge_32fc)
ORV_TIER_DECLARE(orvi_cDftSplit_32fc)

namespace orv::ORV_TIER_NS {
namespace {
namespace fft2d {

constexpr Orv32u kId = 26;
constexpr int kMaxOrder = 30;
// Both sides above this: strips of 8 complex columns (the strip then takes
// 16 H floats of the work area).
constexpr int kWideStrip = 450;

struct Record {
    Orv32u idCtx;
    Orv32s orderX;
    Orv32s orderY;
    Orv32s hint;
    Orv32u bufSize;
    OrvFFTSpec_C_32fc* specCReserved;  // never built here; freed if set
    OrvFFTSpec_C_32fc* specC;          // complex, order orderY
    OrvFFTSpec_R_32f* specRowR;        // real, order orderX
    OrvFFTSpec_R_32f* specColR;        // real, order orderY; null when W == H
};

const Record* record(const OrviFFTSpec_R_32f* p) { return reinterpret_cast<const Record*>(p); }

void free_parts(Record* rec) {
    if (rec->specRowR) ORV_T(orvsFFTFree_R_32f)(rec->specRowR);
    if (rec->specColR) ORV_T(orvsFFTFree_R_32f)(rec->specColR);
    if (rec->specCReserved) ORV_T(orvsFFTFree_C_32fc)(rec->specCReserved);
    if (rec->specC) ORV_T(orvsFFTFree_C_32fc)(rec->specC);
}

// The 1-D calls of one direction.
template <bool kInv>
OrvStatus real_1d(const float* src, float* dst, const OrvFFTSpec_R_32f* spec, void* work) {
    if constexpr (kInv)
        return ORV_T(orvsFFTInv_PackToR_32f)(src, dst, spec, static_cast<Orv8u*>(work));
    else
        return ORV_T(orvsFFTFwd_RToPack_32f)(src, dst, spec, static_cast<Orv8u*>(work));
}
template <bool kInv>
OrvStatus complex_1d(float* data, const OrvFFTSpec_C_32fc* spec, void* work) {
    auto* c = reinterpret_cast<Orv32fc*>(data);
    if constexpr (kInv)
        return ORV_T(orvsFFTInv_CToC_32fc)(c, c, spec, static_cast<Orv8u*>(work));
    else
        return ORV_T(orvsFFTFwd_CToC_32fc)(c, c, spec, static_cast<Orv8u*>(work));
}

// One real column `col` of src, transformed in the work area (work space H
// floats in) and scattered to the same column of dst when the call succeeds.
template <bool kInv>
OrvStatus real_column(const float* src, int srcStep, float* dst, int dstStep, int col, int h,
                      const OrvFFTSpec_R_32f* spec, float* work) {
    strips::gather_column(src + col, srcStep, work, h);
    const OrvStatus sts = real_1d<kInv>(work, work, spec, work + h);
    if (sts == orvStsNoErr) strips::scatter_column(dst + col, dstStep, work, h);
    return sts;
}

// Strips of K complex columns (2K floats) from float p while they end by
// float `last`: the first gathered alone, each scatter fused with the next
// strip's gather, the last scattered alone. The 1-D calls run strip by strip.
template <bool kInv, int K>
OrvStatus strip_run(const float* src, int srcStep, float* dst, int dstStep, int p, int last, int h,
                    const OrvFFTSpec_C_32fc* spec, float* work) {
    if (p + 2 * K - 1 > last) return orvStsNoErr;
    float* space = work + static_cast<ptrdiff_t>(2) * K * h;
    if constexpr (K == 8)
        ORV_T(orvi_cDftMerge_32fc)(src + p, srcStep, work, h);
    else
        strips::merge<K>(src + p, srcStep, work, h);
    for (;; p += 2 * K) {
        for (int k = 0; k < K; ++k)
            if (const OrvStatus sts = complex_1d<kInv>(work + static_cast<ptrdiff_t>(2) * k * h, spec, space))
                return sts;
        if (p + 4 * K - 1 > last) break;
        strips::split_merge<K>(dst + p, dstStep, src + p + 2 * K, srcStep, work, h);
    }
    if constexpr (K == 8)
        ORV_T(orvi_cDftSplit_32fc)(dst + p, dstStep, work, h);
    else
        strips::split<K>(dst + p, dstStep, work, h);
    return orvStsNoErr;
}

// Every column of a row-transformed image: column 0, the complex pairs in
// strips of 8 complex columns (both sides above kWideStrip), then 4, then
// single ones, and column W-1. src == dst for the forward transform.
template <bool kInv>
OrvStatus columns(const float* src, int srcStep, float* dst, int dstStep, int w, int h, const Record* rec,
                  float* work) {
    const OrvFFTSpec_R_32f* colSpec = rec->specColR ? rec->specColR : rec->specRowR;
    if (OrvStatus sts = real_column<kInv>(src, srcStep, dst, dstStep, 0, h, colSpec, work)) return sts;
    int p = 1;
    if (w > kWideStrip && h > kWideStrip) {
        const int last16 = (w - 1) & ~15;
        if (last16 > 0) {
            if (OrvStatus sts = strip_run<kInv, 8>(src, srcStep, dst, dstStep, p, last16, h, rec->specC, work))
                return sts;
            p = last16 + 1;
        }
    }
    const int last8 = (w - 1) & ~7;
    if (OrvStatus sts = strip_run<kInv, 4>(src, srcStep, dst, dstStep, p, last8, h, rec->specC, work)) return sts;
    if (OrvStatus sts = strip_run<kInv, 1>(src, srcStep, dst, dstStep, last8 + 1, w - 2, h, rec->specC, work))
        return sts;
    return real_column<kInv>(src, srcStep, dst, dstStep, w - 1, h, colSpec, work);
}

template <bool kInv>
OrvStatus rows(const float* src, int srcStep, float* dst, int dstStep, int h, const Record* rec, float* work) {
    for (int r = 0; r < h; ++r)
        if (OrvStatus sts =
                real_1d<kInv>(strips::row_at(src, srcStep, r), strips::row_at(dst, dstStep, r), rec->specRowR, work))
            return sts;
    return orvStsNoErr;
}

template <bool kInv>
OrvStatus transform(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, const OrviFFTSpec_R_32f* pSpec,
                    Orv8u* pBuffer) {
    if (pSpec == nullptr) return orvStsNullPtrErr;
    const Record* rec = record(pSpec);
    if (rec->idCtx != kId) return orvStsContextMatchErr;
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (srcStep < 1 || dstStep < 1) return orvStsStepErr;

    Orv8u* own = nullptr;
    float* work;
    if (pBuffer) {
        work = reinterpret_cast<float*>(pBuffer + ((16 - (reinterpret_cast<uintptr_t>(pBuffer) & 15)) & 15));
    } else {
        own = ORV_T(orvsMalloc_8u)(static_cast<int>(rec->bufSize));
        if (own == nullptr) return orvStsMemAllocErr;
        work = reinterpret_cast<float*>(own);
    }

    const int w = 1 << rec->orderX, h = 1 << rec->orderY;
    OrvStatus sts;
    if (h == 1) {
        sts = real_1d<kInv>(pSrc, pDst, rec->specRowR, work);
    } else if (w == 1) {
        // H > 1, so W != H and the column specification exists.
        if (srcStep == 4 && dstStep == 4)
            sts = real_1d<kInv>(pSrc, pDst, rec->specColR, work);
        else
            sts = real_column<kInv>(pSrc, srcStep, pDst, dstStep, 0, h, rec->specColR, work);
    } else if constexpr (kInv) {
        sts = columns<true>(pSrc, srcStep, pDst, dstStep, w, h, rec, work);
        if (sts == orvStsNoErr) sts = rows<true>(pDst, dstStep, pDst, dstStep, h, rec, work);
    } else {
        sts = rows<false>(pSrc, srcStep, pDst, dstStep, h, rec, work);
        if (sts == orvStsNoErr) sts = columns<false>(pDst, dstStep, pDst, dstStep, w, h, rec, work);
    }
    if (own) ORV_T(orvsFree)(own);
    return sts;
}

}  // namespace fft2d
}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;
using fft2d::Record;

ORV_TIER_API OrvStatus ORV_T(orviFFTInitAlloc_R_32f)(OrviFFTSpec_R_32f** ppSpec, int orderX, int orderY, int flag,
                                                     OrvHintAlgorithm hint) {
    if (ppSpec == nullptr) return orvStsNullPtrErr;
    if (orderX < 0 || orderX > fft2d::kMaxOrder || orderY < 0 || orderY > fft2d::kMaxOrder) return orvStsFftOrderErr;
    auto* rec = reinterpret_cast<Record*>(ORV_T(orvsMalloc_8u)(static_cast<int>(sizeof(Record))));
    if (rec == nullptr) return orvStsMemAllocErr;
    ORV_T(orvsZero_8u)(reinterpret_cast<Orv8u*>(rec), static_cast<int>(sizeof(Record)));
    rec->idCtx = fft2d::kId;
    rec->orderX = orderX, rec->orderY = orderY, rec->hint = hint;

    int rowBuf = 0, colBuf = 0, cBuf = 0;
    OrvStatus sts = ORV_T(orvsFFTInitAlloc_R_32f)(&rec->specRowR, orderX, flag, hint);
    if (sts == orvStsNoErr) {
        ORV_T(orvsFFTGetBufSize_R_32f)(rec->specRowR, &rowBuf);
        colBuf = rowBuf;
        if (orderX != orderY) {
            sts = ORV_T(orvsFFTInitAlloc_R_32f)(&rec->specColR, orderY, flag, hint);
            if (sts == orvStsNoErr) ORV_T(orvsFFTGetBufSize_R_32f)(rec->specColR, &colBuf);
        }
    }
    if (sts == orvStsNoErr) {
        sts = ORV_T(orvsFFTInitAlloc_C_32fc)(&rec->specC, orderY, flag, hint);
        if (sts == orvStsNoErr) ORV_T(orvsFFTGetBufSize_C_32fc)(rec->specC, &cBuf);
    }
    if (sts == orvStsNoErr) {
        const int64_t w = int64_t{1} << orderX, h = int64_t{1} << orderY;
        int64_t need = colBuf + 16 * h;
        if (cBuf + 64 * h > need) need = cBuf + 64 * h;
        if (rowBuf + 16 * w > need) need = rowBuf + 16 * w;
        // The size query answers bufSize + 16 as an int.
        if (need > INT_MAX - 16)
            sts = orvStsMemAllocErr;
        else
            rec->bufSize = static_cast<Orv32u>(need);
    }
    if (sts != orvStsNoErr) {
        rec->idCtx = 0;
        fft2d::free_parts(rec);
        ORV_T(orvsFree)(rec);
        return sts;
    }
    *ppSpec = reinterpret_cast<OrviFFTSpec_R_32f*>(rec);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orviFFTFree_R_32f)(OrviFFTSpec_R_32f* pSpec) {
    if (pSpec == nullptr) return orvStsNullPtrErr;
    auto* rec = reinterpret_cast<Record*>(pSpec);
    if (rec->idCtx != fft2d::kId) return orvStsContextMatchErr;
    rec->idCtx = 0;
    fft2d::free_parts(rec);
    ORV_T(orvsFree)(rec);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orviFFTGetBufSize_R_32f)(const OrviFFTSpec_R_32f* pSpec, int* pSize) {
    if (pSize == nullptr || pSpec == nullptr) return orvStsNullPtrErr;
    const Record* rec = fft2d::record(pSpec);
    if (rec->idCtx != fft2d::kId) return orvStsContextMatchErr;
    *pSize = static_cast<int>(rec->bufSize) + 16;
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orviFFTFwd_RToPack_32f_C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                                         const OrviFFTSpec_R_32f* pSpec, Orv8u* pBuffer) {
    return fft2d::transform<false>(pSrc, srcStep, pDst, dstStep, pSpec, pBuffer);
}

ORV_TIER_API OrvStatus ORV_T(orviFFTInv_PackToR_32f_C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                                         const OrviFFTSpec_R_32f* pSpec, Orv8u* pBuffer) {
    return fft2d::transform<true>(pSrc, srcStep, pDst, dstStep, pSpec, pBuffer);
}
