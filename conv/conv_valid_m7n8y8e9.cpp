// Valid 2-D convolution of two float images: the smaller image B (the kernel)
// slides over the larger A wherever it fits wholly,
//   dst[y][x] = sum over j < Bh, i < Bw of A[y + j][x + i] * B[Bh-1-j][Bw-1-i],
// for an (Aw - Bw + 1) x (Ah - Bh + 1) result.
//
// Three routes, chosen by 32-bit products of the sizes (kernel area first):
// - kernels of fewer than 225 elements: the 2-D filter, anchored at the
//   kernel's last cell so that it reads only inside A (a dense copy of the
//   kernel when its rows are padded);
// - fewer than 144 outputs: one row filter per kernel row, summed into the
//   zeroed destination, the kernel's rows taken from the last to the first;
// - otherwise tiles of A, each multiplied with the kernel's spectrum in the
//   2-D Pack layout. A tile's product is a cyclic convolution; its outputs
//   from (Bw - 1, Bh - 1) on are free of wrap-around, so tiles overlap by
//   Bw - 1 columns and Bh - 1 rows. The tile is at least twice the kernel in
//   each direction and, below order 8, doubled once when the output is larger
//   than a tile.
//
// Counts of floats are computed in 64 bits and refused (orvStsMemAllocErr)
// when the allocator cannot hold them; every path frees what it allocated.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <type_traits>

#include "internal/orv_tier.h"

ORV_TIER_DECLARE(orviFilter_32f_C1R)
ORV_TIER_DECLARE(orviFilterRow_32f_C1R)
ORV_TIER_DECLARE(orviAdd_32f_C1IR)
ORV_TIER_DECLARE(orviSet_32f_C1R)
ORV_TIER_DECLARE(orviCopy_32f_C1R)
ORV_TIER_DECLARE(orvsZero_32f)
ORV_TIER_DECLARE(orvsMalloc_32f)
ORV_TIER_DECLARE(orvsFree)
ORV_TIER_DECLARE(orviFFTInitAlloc_R_32f)
ORV_TIER_DECLARE(orviFFTGetBufSize_R_32f)
ORV_TIER_DECLARE(orviFFTFree_R_32f)
ORV_TIER_DECLARE(orviFFTFwd_RToPack_32f_C1R)
ORV_TIER_DECLARE(orviFFTInv_PackToR_32f_C1R)
ORV_TIER_DECLARE(orviMulPack_32f_C1IR)

namespace orv::ORV_TIER_NS {
namespace {

// Pixel (x, y) of an image with a step in bytes.
template <class T>
inline T* pixel(T* p, int step, int64_t x, int64_t y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(p) + y * step + x * int64_t(sizeof(float)));
}

// The size comparisons that choose a route use 32-bit products; they wrap as
// such (computed without signed overflow).
inline int32_t product32(int a, int b) { return int32_t(uint32_t(a) * uint32_t(b)); }

// n floats, or null when n is not positive or its byte count does not fit the
// allocator's 31 bits.
Orv32f* alloc_floats(int64_t n) {
    return n > 0 && n <= INT_MAX / int64_t(sizeof(float)) ? ORV_T(orvsMalloc_32f)(int(n)) : nullptr;
}

// Copies the clipSize rectangle to the head of a dense dstSize tile and zeroes
// the rest: the columns right of it in its rows, then the rows below in one run.
// The status is the last call's.
OrvStatus owniClipRectZeroTail_32f_C1R(const Orv32f* pSrc, int srcStep, OrviSize clipSize, Orv32f* pDst,
                                       OrviSize dstSize) {
    const int dstStep = dstSize.width * int(sizeof(float));
    OrvStatus st = ORV_T(orviCopy_32f_C1R)(pSrc, srcStep, pDst, dstStep, clipSize);
    if (dstSize.width > clipSize.width)
        st = ORV_T(orviSet_32f_C1R)(pDst + clipSize.width, dstStep,
                                    OrviSize{dstSize.width - clipSize.width, clipSize.height}, 0.0f);
    if (clipSize.height < dstSize.height)
        st = ORV_T(orvsZero_32f)(pDst + int64_t(clipSize.height) * dstSize.width,
                                 dstSize.width * (dstSize.height - clipSize.height));
    return st;
}

// Small kernels: the 2-D filter with the anchor at the kernel's last cell.
OrvStatus owniFirstValid_32f_C1R(const Orv32f* A, int Astep, OrviSize ASize, const Orv32f* B, int Bstep,
                                 OrviSize BSize, Orv32f* pDst, int dstStep) {
    const OrviSize out{ASize.width - BSize.width + 1, ASize.height - BSize.height + 1};
    const Orv32f* kernel = B;
    Orv32f* dense = nullptr;
    if (int64_t(Bstep) != int64_t(BSize.width) * int64_t(sizeof(float))) {
        dense = alloc_floats(int64_t(BSize.width) * BSize.height);
        if (dense == nullptr) return orvStsMemAllocErr;
        ORV_T(orviCopy_32f_C1R)(B, Bstep, dense, BSize.width * int(sizeof(float)), BSize);
        kernel = dense;
    }
    const OrvStatus st = ORV_T(orviFilter_32f_C1R)(A, Astep, pDst, dstStep, out, kernel, BSize,
                                                   OrviPoint{BSize.width - 1, BSize.height - 1});
    if (dense != nullptr) ORV_T(orvsFree)(dense);
    return st;
}

// Large kernels, few outputs: the destination is zeroed, then row i of A from
// row Bh - 1 - i of B is filtered into a scratch image and added to it.
OrvStatus owniLastValid_32f_C1R(const Orv32f* A, int Astep, OrviSize ASize, const Orv32f* B, int Bstep,
                                OrviSize BSize, Orv32f* pDst, int dstStep) {
    const int Bw = BSize.width, Bh = BSize.height;
    const OrviSize out{ASize.width - Bw + 1, ASize.height - Bh + 1};
    ORV_T(orviSet_32f_C1R)(pDst, dstStep, out, 0.0f);
    const int64_t rowLen = (int64_t(out.width) + 3) & ~int64_t(3);
    Orv32f* scratch = alloc_floats(rowLen * out.height);
    if (scratch == nullptr) return orvStsMemAllocErr;
    const int scratchStep = int(rowLen * int64_t(sizeof(float)));
    OrvStatus st = orvStsNoErr;
    for (int i = 0; i < Bh; ++i) {
        st = ORV_T(orviFilterRow_32f_C1R)(pixel(A, Astep, 0, i), Astep, scratch, scratchStep, out,
                                          pixel(B, Bstep, 0, Bh - 1 - i), Bw, Bw - 1);
        // A refusal depends on the arguments only, so every row would give it:
        // stop rather than add a scratch the filter did not write.
        if (st < 0) break;
        ORV_T(orviAdd_32f_C1IR)(scratch, scratchStep, pDst, dstStep, out);
    }
    ORV_T(orvsFree)(scratch);
    return st;
}

// One direction of the FFT tile: order and size, at least twice the kernel.
struct TileDim {
    int order;
    int64_t size;
};
TileDim tile_dim(int kernel, int out) {
    TileDim t{1, 2};
    if (2 * int64_t(kernel) > 2) {
        while ((int64_t(1) << t.order) < 2 * int64_t(kernel)) ++t.order;
        t.size = int64_t(1) << t.order;
    }
    if (t.order < 8 && out > t.size) ++t.order, t.size *= 2;
    return t;
}

// Everything else: tiles of A times the kernel's spectrum.
OrvStatus owniFFTValid_32f_C1R(const Orv32f* A, int Astep, OrviSize ASize, const Orv32f* B, int Bstep,
                               OrviSize BSize, Orv32f* pDst, int dstStep) {
    const int Bw = BSize.width, Bh = BSize.height;
    const int outW = ASize.width - Bw + 1, outH = ASize.height - Bh + 1;
    const TileDim tx = tile_dim(Bw, outW), ty = tile_dim(Bh, outH);
    const int64_t stepX = tx.size - Bw + 1, stepY = ty.size - Bh + 1;

    OrviFFTSpec_R_32f* spec = nullptr;
    OrvStatus st = ORV_T(orviFFTInitAlloc_R_32f)(&spec, tx.order, ty.order, OrvFftDivInv, orvAlgHintNone);
    if (st != orvStsNoErr) return st;
    int bufSize = 0;
    st = ORV_T(orviFFTGetBufSize_R_32f)(spec, &bufSize);
    if (st != orvStsNoErr) {
        ORV_T(orviFFTFree_R_32f)(spec);
        return st;
    }
    // Kernel tile, data tile and the transforms' work area in one block.
    const int64_t tile = tx.size * ty.size;
    const int64_t work = ((int64_t(bufSize) + 15) & ~int64_t(15)) >> 2;
    Orv32f* block = tile <= INT_MAX ? alloc_floats(2 * tile + work) : nullptr;
    if (block == nullptr) {
        ORV_T(orviFFTFree_R_32f)(spec);
        return orvStsMemAllocErr;
    }
    // The block holds 2 * tile floats, so the tile's sizes and step fit an int.
    const OrviSize tileSize{int(tx.size), int(ty.size)};
    const int tileStep = tileSize.width * int(sizeof(float));
    Orv32f* K = block;
    Orv32f* T = block + tile;
    Orv8u* buf = reinterpret_cast<Orv8u*>(block + 2 * tile);
    auto finish = [&](OrvStatus s) {
        ORV_T(orvsFree)(block);
        ORV_T(orviFFTFree_R_32f)(spec);
        return s;
    };

    owniClipRectZeroTail_32f_C1R(B, Bstep, BSize, K, tileSize);
    st = ORV_T(orviFFTFwd_RToPack_32f_C1R)(K, tileStep, K, tileStep, spec, buf);
    if (st < 0) return finish(st);

    const Orv32f* valid = T + int64_t(Bh - 1) * tileSize.width + (Bw - 1);
    for (int64_t rowsDone = 0; rowsDone < outH; rowsDone += stepY) {
        const int clipH = int(std::min<int64_t>(ty.size, ASize.height - rowsDone));
        const int copyH = int(std::min<int64_t>(stepY, outH - rowsDone));
        for (int64_t colsDone = 0; colsDone < outW; colsDone += stepX) {
            const int clipW = int(std::min<int64_t>(tx.size, ASize.width - colsDone));
            owniClipRectZeroTail_32f_C1R(pixel(A, Astep, colsDone, rowsDone), Astep, OrviSize{clipW, clipH}, T,
                                         tileSize);
            st = ORV_T(orviFFTFwd_RToPack_32f_C1R)(T, tileStep, T, tileStep, spec, buf);
            if (st < 0) return finish(st);
            ORV_T(orviMulPack_32f_C1IR)(K, tileStep, T, tileStep, tileSize);
            st = ORV_T(orviFFTInv_PackToR_32f_C1R)(T, tileStep, T, tileStep, spec, buf);
            if (st < 0) return finish(st);
            ORV_T(orviCopy_32f_C1R)(valid, tileStep, pixel(pDst, dstStep, colsDone, rowsDone), dstStep,
                                    OrviSize{int(std::min<int64_t>(stepX, outW - colsDone)), copyH});
        }
    }
    return finish(st);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviConvValid_32f_C1R)(const Orv32f* pSrc1, int src1Step, OrviSize src1Size,
                                                    const Orv32f* pSrc2, int src2Step, OrviSize src2Size,
                                                    Orv32f* pDst, int dstStep) {
    if (pSrc1 == nullptr || pSrc2 == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (src1Size.width < 1 || src1Size.height < 1 || src2Size.width < 1 || src2Size.height < 1)
        return orvStsSizeErr;
    if (src1Step < 1 || src2Step < 1 || dstStep < 1) return orvStsStepErr;

    // Image 2 is the larger one as soon as image 1 is narrower or lower; an
    // image wider but lower than the other then gives no valid output.
    const bool swap = src1Size.width < src2Size.width || src1Size.height < src2Size.height;
    const Orv32f* A = swap ? pSrc2 : pSrc1;
    const Orv32f* B = swap ? pSrc1 : pSrc2;
    const int Astep = swap ? src2Step : src1Step, Bstep = swap ? src1Step : src2Step;
    const OrviSize ASize = swap ? src2Size : src1Size, BSize = swap ? src1Size : src2Size;
    const int outW = ASize.width - BSize.width + 1, outH = ASize.height - BSize.height + 1;
    if (outW < 1 || outH < 1) return orvStsSizeErr;

    if (product32(BSize.width, BSize.height) < 225)
        return owniFirstValid_32f_C1R(A, Astep, ASize, B, Bstep, BSize, pDst, dstStep);
    if (product32(outW, outH) < 144) return owniLastValid_32f_C1R(A, Astep, ASize, B, Bstep, BSize, pDst, dstStep);
    return owniFFTValid_32f_C1R(A, Astep, ASize, B, Bstep, BSize, pDst, dstStep);
}
