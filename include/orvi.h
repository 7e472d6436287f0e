/* orv image domain: rectangles of pixels given by first pixel, row step in
 * bytes and size. Names without a stub exist only under tier prefixes,
 * declared in orvtiers.h. */
#ifndef ORVI_H
#define ORVI_H

#include "orvcore.h"

ORV_EXTERN_C_BEGIN

/* Version record of the image domain for the tier that serves the call. */
ORV_API const OrvLibVersion* orviGetLibVersion(void);

/* ---- Region operations ---------------------------------------------------
 * Steps are in bytes and are not checked: the caller vouches for them. A null
 * pointer gives orvStsNullPtrErr, a width or height below 1 orvStsSizeErr;
 * nothing is written on failure. Orv32f data are moved as 32-bit words, bit
 * for bit. orviSet_32f_C1R, orviAdd_32f_C1IR and orviTranspose_32s_C1R have
 * no stub: call a tier's name. */
ORV_API OrvStatus orviCopy_32f_C1R(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep, OrviSize roiSize);
ORV_API OrvStatus orviSet_32f_C1R(Orv32f* pDst, int dstStep, OrviSize roiSize, Orv32f value);
/* pSrcDst[x] += pSrc[x] over the region. */
ORV_API OrvStatus orviAdd_32f_C1IR(const Orv32f* pSrc, int srcStep, Orv32f* pSrcDst, int srcDstStep,
                                   OrviSize roiSize);
/* pDst has srcRoiSize.width rows of srcRoiSize.height elements:
 * pDst[x][y] = pSrc[y][x]. */
ORV_API OrvStatus orviTranspose_32s_C1R(const Orv32s* pSrc, int srcStep, Orv32s* pDst, int dstStep,
                                        OrviSize srcRoiSize);
ORV_API OrvStatus orviTranspose_32f_C1R(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                        OrviSize srcRoiSize);

/* ---- Border copies -------------------------------------------------------
 * The source goes to the destination at (leftBorderWidth, topBorderHeight);
 * the frame around it is filled with value, or by wrapping the source
 * periodically. Checks in order: null pointers (orvStsNullPtrErr), a step
 * below 1 (orvStsStepErr), then sizes below 1, negative borders or a
 * destination too small for border plus source (orvStsSizeErr). The 32s forms
 * have no stub. pDst must not overlap pSrc. */
ORV_API OrvStatus orviCopyConstBorder_32s_C1R(const Orv32s* pSrc, int srcStep, OrviSize srcRoiSize, Orv32s* pDst,
                                              int dstStep, OrviSize dstRoiSize, int topBorderHeight,
                                              int leftBorderWidth, Orv32s value);
ORV_API OrvStatus orviCopyConstBorder_32f_C1R(const Orv32f* pSrc, int srcStep, OrviSize srcRoiSize, Orv32f* pDst,
                                              int dstStep, OrviSize dstRoiSize, int topBorderHeight,
                                              int leftBorderWidth, Orv32f value);
ORV_API OrvStatus orviCopyWrapBorder_32s_C1R(const Orv32s* pSrc, int srcStep, OrviSize srcRoiSize, Orv32s* pDst,
                                             int dstStep, OrviSize dstRoiSize, int topBorderHeight,
                                             int leftBorderWidth);
ORV_API OrvStatus orviCopyWrapBorder_32f_C1R(const Orv32f* pSrc, int srcStep, OrviSize srcRoiSize, Orv32f* pDst,
                                             int dstStep, OrviSize dstRoiSize, int topBorderHeight,
                                             int leftBorderWidth);

/* ---- Float to integer images ---------------------------------------------
 * Round by rndMode (orvRndNear: to nearest even, orvRndZero: towards zero,
 * any other value: half away from zero) and saturate to the type. AC4 forms
 * convert three channels and leave the destination's fourth element as it
 * was. Checks: null pointers (orvStsNullPtrErr), sizes below 1
 * (orvStsSizeErr), steps below 1 (orvStsStepErr). MXCSR's rounding control is
 * as before on return. No stubs: call a tier's name. */
ORV_API OrvStatus orviConvert_32f8u_C1R(const Orv32f* pSrc, int srcStep, Orv8u* pDst, int dstStep, OrviSize roiSize,
                                        int rndMode);
ORV_API OrvStatus orviConvert_32f8u_AC4R(const Orv32f* pSrc, int srcStep, Orv8u* pDst, int dstStep, OrviSize roiSize,
                                         int rndMode);
ORV_API OrvStatus orviConvert_32f16s_AC4R(const Orv32f* pSrc, int srcStep, Orv16s* pDst, int dstStep,
                                          OrviSize roiSize, int rndMode);
ORV_API OrvStatus orviConvert_32f16u_AC4R(const Orv32f* pSrc, int srcStep, Orv16u* pDst, int dstStep,
                                          OrviSize roiSize, int rndMode);

/* ---- 2-D filters ---------------------------------------------------------
 * True convolution with a dense kW x kH kernel (row-major, row 0 first):
 *   dst(x, y) = sum over i < kH, j < kW of pKernel[i * kW + j] *
 *               src(x + anchor.x - j, y + anchor.y - i)
 * per channel. The caller guarantees that the source pixels the sum reads
 * exist (columns x + anchor.x - kW + 1 .. x + anchor.x, rows likewise); no
 * border is made. Checks in order: null pointers (orvStsNullPtrErr), sizes
 * below 1 (orvStsSizeErr), srcStep below (width + kW - 1) pixels or dstStep
 * below width pixels, compared signed (orvStsStepErr). The anchor is not
 * checked. Sums are single precision; integer results are rounded and
 * saturated. AC4 forms leave the destination's fourth channel. Source and
 * destination must not overlap. No stubs: call a tier's name (m7, n8, y8,
 * e9). */
#define ORV_FILTER_DECL(name, TS, TD)                                                                       \
    ORV_API OrvStatus name(const TS* pSrc, int srcStep, TD* pDst, int dstStep, OrviSize dstRoiSize,          \
                           const Orv32f* pKernel, OrviSize kernelSize, OrviPoint anchor);
ORV_FILTER_DECL(orviFilter_32f_C1R, Orv32f, Orv32f)
ORV_FILTER_DECL(orviFilter_32f_C3R, Orv32f, Orv32f)
ORV_FILTER_DECL(orviFilter_32f_C4R, Orv32f, Orv32f)
ORV_FILTER_DECL(orviFilter_32f_AC4R, Orv32f, Orv32f)
ORV_FILTER_DECL(orviFilter32f_8u_C1R, Orv8u, Orv8u)
ORV_FILTER_DECL(orviFilter32f_8u_C3R, Orv8u, Orv8u)
ORV_FILTER_DECL(orviFilter32f_8u_C4R, Orv8u, Orv8u)
ORV_FILTER_DECL(orviFilter32f_8u_AC4R, Orv8u, Orv8u)
ORV_FILTER_DECL(orviFilter32f_16s_C1R, Orv16s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_16s_C3R, Orv16s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_16s_C4R, Orv16s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_16s_AC4R, Orv16s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_16u_C1R, Orv16u, Orv16u)
ORV_FILTER_DECL(orviFilter32f_16u_C3R, Orv16u, Orv16u)
ORV_FILTER_DECL(orviFilter32f_16u_C4R, Orv16u, Orv16u)
ORV_FILTER_DECL(orviFilter32f_16u_AC4R, Orv16u, Orv16u)
ORV_FILTER_DECL(orviFilter32f_8u16s_C1R, Orv8u, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8u16s_C3R, Orv8u, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8u16s_C4R, Orv8u, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8s16s_C1R, Orv8s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8s16s_C3R, Orv8s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8s16s_C4R, Orv8s, Orv16s)
ORV_FILTER_DECL(orviFilter32f_8s_C1R, Orv8s, Orv8s)
ORV_FILTER_DECL(orviFilter32f_8s_C3R, Orv8s, Orv8s)
ORV_FILTER_DECL(orviFilter32f_8s_C4R, Orv8s, Orv8s)
ORV_FILTER_DECL(orviFilter32f_32s_C1R, Orv32s, Orv32s)
ORV_FILTER_DECL(orviFilter32f_32s_C3R, Orv32s, Orv32s)
ORV_FILTER_DECL(orviFilter32f_32s_C4R, Orv32s, Orv32s)
#undef ORV_FILTER_DECL

/* ---- Row filters ---------------------------------------------------------
 * Each row convolved with kernelSize taps:
 *   dst(x) = sum over j < kernelSize of pKernel[j] * src(x + xAnchor - j)
 * per channel; source pixels x + xAnchor - kernelSize + 1 .. x + xAnchor must
 * exist. Checks as for the 2-D filters, with the minimum srcStep
 * (width + kernelSize - 1) pixels; the 32f forms also refuse a step below 1.
 * No stubs: call a tier's name (m7, n8, y8, e9). */
#define ORV_FILTER_ROW_DECL(name, T)                                                                          \
    ORV_API OrvStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, OrviSize dstRoiSize,             \
                           const Orv32f* pKernel, int kernelSize, int xAnchor);
ORV_FILTER_ROW_DECL(orviFilterRow_32f_C1R, Orv32f)
ORV_FILTER_ROW_DECL(orviFilterRow_32f_C3R, Orv32f)
ORV_FILTER_ROW_DECL(orviFilterRow_32f_C4R, Orv32f)
ORV_FILTER_ROW_DECL(orviFilterRow_32f_AC4R, Orv32f)
ORV_FILTER_ROW_DECL(orviFilterRow32f_8u_C1R, Orv8u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_8u_C3R, Orv8u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_8u_C4R, Orv8u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_8u_AC4R, Orv8u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16u_C1R, Orv16u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16u_C3R, Orv16u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16u_C4R, Orv16u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16u_AC4R, Orv16u)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16s_C1R, Orv16s)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16s_C3R, Orv16s)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16s_C4R, Orv16s)
ORV_FILTER_ROW_DECL(orviFilterRow32f_16s_AC4R, Orv16s)
#undef ORV_FILTER_ROW_DECL

/* ---- Column filters --------------------------------------------------------
 * Each column convolved with kernelSize taps:
 *   dst(x, y) = sum over i < kernelSize of pKernel[i] * src(x, y + yAnchor - i)
 * per channel; source rows y + yAnchor - kernelSize + 1 .. y + yAnchor must
 * exist. Both steps must be at least the region's row in bytes. Checks in
 * order: null pointers, sizes (width, height, kernelSize below 1), steps. The
 * C3 and C4 forms work the row's elements as a C1 row three or four times as
 * wide, and check the width first: a width below 1 gives orvStsSizeErr even
 * with a null pointer. AC4 leaves the fourth channel as it was. Integer forms
 * round and saturate; a failed scratch allocation only changes the route.
 * No stubs: call a tier's name (m7, n8, y8, e9). */
#define ORV_FILTER_COL_DECL(name, T)                                                                          \
    ORV_API OrvStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, OrviSize dstRoiSize,             \
                           const Orv32f* pKernel, int kernelSize, int yAnchor);
ORV_FILTER_COL_DECL(orviFilterColumn_32f_C1R, Orv32f)
ORV_FILTER_COL_DECL(orviFilterColumn_32f_C3R, Orv32f)
ORV_FILTER_COL_DECL(orviFilterColumn_32f_C4R, Orv32f)
ORV_FILTER_COL_DECL(orviFilterColumn_32f_AC4R, Orv32f)
ORV_FILTER_COL_DECL(orviFilterColumn32f_8u_C1R, Orv8u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_8u_C3R, Orv8u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_8u_C4R, Orv8u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_8u_AC4R, Orv8u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16u_C1R, Orv16u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16u_C3R, Orv16u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16u_C4R, Orv16u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16u_AC4R, Orv16u)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16s_C1R, Orv16s)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16s_C3R, Orv16s)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16s_C4R, Orv16s)
ORV_FILTER_COL_DECL(orviFilterColumn32f_16s_AC4R, Orv16s)
#undef ORV_FILTER_COL_DECL

/* ---- 2-D real FFT --------------------------------------------------------
 * Forward and inverse transforms of a W x H single-plane float image, W =
 * 2^orderX and H = 2^orderY (orders 0..30), in the 2-D Pack layout: every
 * row transformed to a 1-D Pack row, then columns 0 and W - 1 transformed as
 * real sequences (stored down the column in Pack order) and each column pair
 * (2k - 1, 2k) as a complex sequence (one complex value per row). The layout
 * takes the image's own storage, W x H floats (docs/fft-packed-layouts.md).
 * The flag (OrvFftDiv*) applies to each 1-D pass: with OrvFftDivInv a forward
 * and inverse pair returns the image. Steps are in bytes. pBuffer: null, or
 * at least orviFFTGetBufSize_R_32f bytes (any alignment). Transforms check a
 * null spec (orvStsNullPtrErr), a spec not made by orviFFTInitAlloc_R_32f
 * (orvStsContextMatchErr), null images (orvStsNullPtrErr), steps below 1
 * (orvStsStepErr); a 1-D pass's non-zero status stops the transform and is
 * returned. In place (pSrc == pDst with equal steps) is allowed; the inverse
 * leaves pSrc unchanged otherwise. No stubs: call a tier's name (m7, n8, y8,
 * e9) and use a spec only with the tier that made it. */
typedef struct OrviFFTSpec_R_32f OrviFFTSpec_R_32f;
ORV_API OrvStatus orviFFTInitAlloc_R_32f(OrviFFTSpec_R_32f** ppSpec, int orderX, int orderY, int flag,
                                         OrvHintAlgorithm hint);
ORV_API OrvStatus orviFFTFree_R_32f(OrviFFTSpec_R_32f* pSpec);
ORV_API OrvStatus orviFFTGetBufSize_R_32f(const OrviFFTSpec_R_32f* pSpec, int* pSize);
ORV_API OrvStatus orviFFTFwd_RToPack_32f_C1R(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                             const OrviFFTSpec_R_32f* pSpec, Orv8u* pBuffer);
ORV_API OrvStatus orviFFTInv_PackToR_32f_C1R(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                             const OrviFFTSpec_R_32f* pSpec, Orv8u* pBuffer);
/* pSrcDst *= pSrc element by element in the 2-D Pack layout, for any width
 * and height (odd ones too). Checks: null pointers, steps below 1
 * (orvStsStepErr), sizes below 1 (orvStsSizeErr). */
ORV_API OrvStatus orviMulPack_32f_C1IR(const Orv32f* pSrc, int srcStep, Orv32f* pSrcDst, int srcDstStep,
                                       OrviSize roiSize);
/* Gather and scatter of a strip of 8 complex columns: value k of row r of the
 * strip is complex element k * height + r of pBuf. */
ORV_API void orvi_cDftMerge_32fc(const Orv32f* pStrip, int step, Orv32f* pBuf, int height);
ORV_API void orvi_cDftSplit_32fc(Orv32f* pStrip, int step, const Orv32f* pBuf, int height);
/* Unpacks a 2-D Pack spectrum of a W x H image (W, H powers of two) into the
 * H x (W/2 + 1) complex half spectrum F[v][u], u = 0 .. W/2, row v at pDst +
 * v * dstStep bytes: the layout of a real-input 2-D transform in most array
 * libraries. Checks: null pointers, sizes below 1 or not powers of two
 * (orvStsSizeErr), srcStep below 4W or dstStep below 8(W/2 + 1) bytes
 * (orvStsStepErr). Compiled once, no tier prefix. */
ORV_API OrvStatus orviFFTUnpack_Pack_32fc(const Orv32f* pSrc, int srcStep, Orv32fc* pDst, int dstStep,
                                          OrviSize roiSize);

/* ---- Valid 2-D convolution -----------------------------------------------
 * The smaller image B (the kernel; the other if pSrc1 is smaller in either
 * direction) slid over the larger A where it fits wholly:
 *   dst[y][x] = sum over j < Bh, i < Bw of A[y + j][x + i] * B[Bh-1-j][Bw-1-i]
 * for an (Aw - Bw + 1) x (Ah - Bh + 1) result. Kernels of fewer than 225
 * elements go to orviFilter_32f_C1R, results of fewer than 144 pixels to a
 * sum of row filters, everything else to tiled 2-D FFT products (error
 * relative to sum |A||B| of the order of the float epsilon times log2 of the
 * tile). Checks in order: null pointers (orvStsNullPtrErr), a size below 1
 * (orvStsSizeErr), a step below 1 (orvStsStepErr), neither image fitting in
 * the other (orvStsSizeErr); scratch that cannot be allocated gives
 * orvStsMemAllocErr. */
ORV_API OrvStatus orviConvValid_32f_C1R(const Orv32f* pSrc1, int src1Step, OrviSize src1Size, const Orv32f* pSrc2,
                                        int src2Step, OrviSize src2Size, Orv32f* pDst, int dstStep);

ORV_EXTERN_C_END

#include "orvtiers.h"

#endif
