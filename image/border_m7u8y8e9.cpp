// Border copies of 32-bit images: the source goes into the interior of a
// larger destination at (leftBorderWidth, topBorderHeight) and the frame
// around it is filled with a constant or by wrapping the source around.
//
// Both fills run from the destination's first row to its last. Runs of
// elements that are copied use the tier's byte copy when source and
// destination cannot overlap; where they can (a wrapped border wider than
// the image it repeats), the copy goes element by element upwards, so that
// each element reads one written before it and the image repeats.
// The 32f forms move the same words and forward to the 32s forms.
#include <bit>
#include <cstddef>

#include "vector/mem_common.h"

ORV_TIER_DECLARE(ownsCopy_8u)
ORV_TIER_DECLARE(ownsCopy_8u_E9)

namespace orv::ORV_TIER_NS {
namespace {

using Elem = Orv32s;

// Rows longer than this go to the copy that may stream (e9).
constexpr long kCopySplit = 0x100000;
constexpr long kCopyPiece = 0x40000000;
// Runs shorter than this are copied element by element.
constexpr long kBlock = 16;

inline Elem* row_at(Elem* base, int step, long r) {
    return reinterpret_cast<Elem*>(reinterpret_cast<u8*>(base) + static_cast<std::ptrdiff_t>(step) * r);
}
inline const Elem* row_at(const Elem* base, int step, long r) {
    return reinterpret_cast<const Elem*>(reinterpret_cast<const u8*>(base) + static_cast<std::ptrdiff_t>(step) * r);
}

// n elements of value: single elements until the run is aligned to 32
// bytes, then 16 elements a step in 16-byte stores, then 4, then singles.
// A run not aligned to its element size is never aligned by single steps;
// it is stored unaligned throughout.
void fill_run(Elem* d, long n, Elem value) {
    long k = 0;
    if (address(d) % sizeof(Elem) == 0)
        for (; k < n && address(d + k) % 32 != 0; ++k) store_elem(d + k, value);
    const __m128i v = _mm_set1_epi32(value);
    for (; k + 16 <= n; k += 16) {
        auto* q = reinterpret_cast<__m128i*>(d + k);
        _mm_storeu_si128(q, v), _mm_storeu_si128(q + 1, v), _mm_storeu_si128(q + 2, v), _mm_storeu_si128(q + 3, v);
    }
    for (; k + 4 <= n; k += 4) _mm_storeu_si128(reinterpret_cast<__m128i*>(d + k), v);
    for (; k < n; ++k) store_elem(d + k, value);
}

// The tier's byte copy; e9 keeps runs up to kCopySplit on its 32-byte
// kernel, which asks nothing about the cache.
inline void copy_bytes(const Orv8u* s, Orv8u* d, int n) {
    if constexpr (kTier == Tier::e9) {
        if (n <= kCopySplit) return ORV_T(ownsCopy_8u_E9)(s, d, n);
    }
    ORV_T(ownsCopy_8u)(s, d, n);
}

// n elements from s to d. In blocks when the two ranges are apart; else, and
// for short runs, element by element from the first to the last.
void copy_run(const Elem* s, Elem* d, long n) {
    const long bytes = n * static_cast<long>(sizeof(Elem));
    const bool apart = address(s) + bytes <= address(d) || address(d) + bytes <= address(s);
    if (!apart || n < kBlock) {
        for (long k = 0; k < n; ++k) store_elem(d + k, load_elem(s + k));
        return;
    }
    const auto* sb = reinterpret_cast<const Orv8u*>(s);
    auto* db = reinterpret_cast<Orv8u*>(d);
    // The byte copies count in int: rows beyond that go in pieces.
    for (long done = 0; done < bytes;) {
        const int piece = static_cast<int>(bytes - done < kCopyPiece ? bytes - done : kCopyPiece);
        copy_bytes(sb + done, db + done, piece);
        done += piece;
    }
}

// Elements [from, to) of a row, each taken from `period` elements before
// it: in runs of at most `period` elements, which never overlap their
// source, once the period reaches a block; element by element below.
void repeat_right(Elem* row, long from, long to, long period) {
    if (period < kBlock) return copy_run(row + from - period, row + from, to - from);
    for (long x = from; x < to; x += period) copy_run(row + x - period, row + x, to - x < period ? to - x : period);
}

struct Geometry {
    const Elem* src;
    int srcStep;
    long sw, sh;
    Elem* dst;
    int dstStep;
    long dw, dh;
    long top, left;
};

// Pointers, then steps, then sizes and borders; sums in 64 bits.
OrvStatus check(const void* pSrc, int srcStep, OrviSize srcRoiSize, const void* pDst, int dstStep,
                OrviSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;
    if (srcStep < 1 || dstStep < 1) return orvStsStepErr;
    if (srcRoiSize.width < 1 || srcRoiSize.height < 1 || dstRoiSize.width < 1 || dstRoiSize.height < 1 ||
        topBorderHeight < 0 || leftBorderWidth < 0 ||
        dstRoiSize.width < static_cast<long>(leftBorderWidth) + srcRoiSize.width ||
        dstRoiSize.height < static_cast<long>(topBorderHeight) + srcRoiSize.height)
        return orvStsSizeErr;
    return orvStsNoErr;
}

// Top rows, then each source row with its left and right border, then the
// rows below, all with value outside the source.
void const_border(const Geometry& g, Elem value) {
    const long right = g.dw - g.left - g.sw;
    for (long r = 0; r < g.top; ++r) fill_run(row_at(g.dst, g.dstStep, r), g.dw, value);
    for (long r = 0; r < g.sh; ++r) {
        Elem* d = row_at(g.dst, g.dstStep, g.top + r);
        fill_run(d, g.left, value);
        copy_run(row_at(g.src, g.srcStep, r), d + g.left, g.sw);
        fill_run(d + g.left + g.sw, right, value);
    }
    for (long r = g.top + g.sh; r < g.dh; ++r) fill_run(row_at(g.dst, g.dstStep, r), g.dw, value);
}

// Element (x, y) of the destination gets source element
// ((x - left) mod sw, (y - top) mod sh). Each source row: its left border
// from the right end leftwards in whole copies of the source row and a
// partial one at the far end, the row itself, the right border from
// left to right. Then the rows below, each from sh rows above, downwards;
// then the rows above, each from sh rows below, upwards.
void wrap_border(const Geometry& g) {
    for (long r = 0; r < g.sh; ++r) {
        const Elem* s = row_at(g.src, g.srcStep, r);
        Elem* d = row_at(g.dst, g.dstStep, g.top + r);
        for (long end = g.left; end > 0;) {
            const long n = end < g.sw ? end : g.sw;
            copy_run(s + g.sw - n, d + end - n, n);
            end -= n;
        }
        copy_run(s, d + g.left, g.sw);
        repeat_right(d, g.left + g.sw, g.dw, g.sw);
    }
    for (long r = g.top + g.sh; r < g.dh; ++r)
        copy_run(row_at(g.dst, g.dstStep, r - g.sh), row_at(g.dst, g.dstStep, r), g.dw);
    for (long r = g.top - 1; r >= 0; --r)
        copy_run(row_at(g.dst, g.dstStep, r + g.sh), row_at(g.dst, g.dstStep, r), g.dw);
}

Geometry geometry(const Elem* pSrc, int srcStep, OrviSize srcRoiSize, Elem* pDst, int dstStep, OrviSize dstRoiSize,
                  int topBorderHeight, int leftBorderWidth) {
    return {pSrc, srcStep, srcRoiSize.width, srcRoiSize.height, pDst, dstStep, dstRoiSize.width, dstRoiSize.height,
            topBorderHeight, leftBorderWidth};
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviCopyConstBorder_32s_C1R)(const Orv32s* pSrc, int srcStep, OrviSize srcRoiSize,
                                                          Orv32s* pDst, int dstStep, OrviSize dstRoiSize,
                                                          int topBorderHeight, int leftBorderWidth, Orv32s value) {
    const OrvStatus st =
        check(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth);
    if (st != orvStsNoErr) return st;
    const_border(geometry(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth),
                 value);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orviCopyWrapBorder_32s_C1R)(const Orv32s* pSrc, int srcStep, OrviSize srcRoiSize,
                                                         Orv32s* pDst, int dstStep, OrviSize dstRoiSize,
                                                         int topBorderHeight, int leftBorderWidth) {
    const OrvStatus st =
        check(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth);
    if (st != orvStsNoErr) return st;
    wrap_border(geometry(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth));
    return orvStsNoErr;
}

// The value goes by its bits: NaN payloads and -0.0 arrive unchanged.
ORV_TIER_API OrvStatus ORV_T(orviCopyConstBorder_32f_C1R)(const Orv32f* pSrc, int srcStep, OrviSize srcRoiSize,
                                                          Orv32f* pDst, int dstStep, OrviSize dstRoiSize,
                                                          int topBorderHeight, int leftBorderWidth, Orv32f value) {
    return ORV_T(orviCopyConstBorder_32s_C1R)(reinterpret_cast<const Orv32s*>(pSrc), srcStep, srcRoiSize,
                                              reinterpret_cast<Orv32s*>(pDst), dstStep, dstRoiSize, topBorderHeight,
                                              leftBorderWidth, std::bit_cast<Orv32s>(value));
}

ORV_TIER_API OrvStatus ORV_T(orviCopyWrapBorder_32f_C1R)(const Orv32f* pSrc, int srcStep, OrviSize srcRoiSize,
                                                         Orv32f* pDst, int dstStep, OrviSize dstRoiSize,
                                                         int topBorderHeight, int leftBorderWidth) {
    return ORV_T(orviCopyWrapBorder_32s_C1R)(reinterpret_cast<const Orv32s*>(pSrc), srcStep, srcRoiSize,
                                             reinterpret_cast<Orv32s*>(pDst), dstStep, dstRoiSize, topBorderHeight,
                                             leftBorderWidth);
}
