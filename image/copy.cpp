// Region copy of 32-bit pixels, moved as bytes. Rows whose length equals both
// steps form one run. m7 copies each run with its own kernel and streams when
// the image passes 1 MiB; the other tiers take owniCopy8uas: pieces below 64
// bytes, 16-byte vectors below 1 MiB, and from there a blocked or a streaming
// form chosen by the cache the processor describes.
#include "vector/copy_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr long kShortRun = 64;         // shorter runs go by pieces
constexpr long kLongRun = 0x100000;    // longer runs go blocked or streaming
constexpr long kM7Streaming = 0x100000;  // m7: an image above this streams
constexpr long kTouchStep = 64;        // one byte read per line before a block is copied
constexpr bool kM7 = kTier == Tier::m7;

// Fewer than 64 bytes: 32, 16, 8, 4, 2, 1 as the count's bits say.
inline void copy_pieces(const u8* s, u8* d, long n) {
    by_bits<32>(static_cast<unsigned long>(n), [&](auto size) {
        if constexpr (size() == 32) copy_piece<16>(s, d), copy_piece<16>(s + 16, d + 16);
        else copy_piece<size()>(s, d);
        s += size(), d += size();
    });
}

// At least 64 bytes: 16 bytes unaligned, then on from the destination's next
// 16-byte boundary (the overlap is written twice).
inline void align_destination(const u8*& s, u8*& d, long& n) {
    if (unsigned mis = address(d) & 15) {
        copy_piece<16>(s, d);
        s += 16 - mis, d += 16 - mis, n -= 16 - mis;
    }
}

// A run of 64 bytes up to 1 MiB, 64 bytes a round. With both pointers
// aligned, a source 1 to 160 bytes below the destination in the low 12
// address bits would have each load wait on a store just issued to the same
// offset in another 4 KiB page; such runs are copied from the end, where
// those stores come after the loads.
void copy_run(const u8* s, u8* d, long n) {
    align_destination(s, d, n);
    if (address(s) & 15) return copy_misaligned<false>(s, d, n);
    const long dist = static_cast<long>(address(s) & 4095) - static_cast<long>(address(d) & 4095);
    if (dist >= 3936 || (dist >= -160 && dist <= -1)) return copy_backward(s, d, n);
    copy_forward(s, d, n);
}

// Runs of 1 MiB or more: streamed past the cache when the image takes at
// least half of the largest cache that the leaf-2 descriptors list, else
// copied by blocks whose lines are read ahead (also when the processor lists
// no size), which leaves the result in the cache for the next step.
bool streams_past_cache(long totalBytes) {
    const long cache = cache_size_by_descriptors();
    return cache > 0 && totalBytes >= cache / 2;
}

void copy_long(const u8* s, u8* d, long n, bool streaming) {
    align_destination(s, d, n);
    if (streaming) copy_blocks<true, kTouchStep>(s, d, n);
    else copy_blocks<false, kTouchStep>(s, d, n);
}

// The 128-bit tiers' and e9's region kernel over `rows` runs of n bytes.
[[maybe_unused]] void owniCopy8uas(const u8* s, long srcStep, u8* d, long dstStep, long n, long rows) {
    if (n < kShortRun) {
        for (long y = 0; y < rows; ++y) copy_pieces(s + y * srcStep, d + y * dstStep, n);
    } else if (n < kLongRun) {
        for (long y = 0; y < rows; ++y) copy_run(s + y * srcStep, d + y * dstStep, n);
    } else {
        const bool streaming = streams_past_cache(n * rows);
        for (long y = 0; y < rows; ++y) copy_long(s + y * srcStep, d + y * dstStep, n, streaming);
    }
}

// m7's run copy: streaming stores when the caller says so, each streamed run
// closed by a fence.
[[maybe_unused]] void owniCopy_8u_C1_M7(const u8* s, u8* d, long n, bool streaming) {
    if (n < kShortRun) return copy_pieces(s, d, n);
    align_destination(s, d, n);
    if (streaming) return copy_blocks<true, 2 * kTouchStep>(s, d, n);
    if (address(s) & 15) return copy_misaligned<false>(s, d, n);
    copy_forward(s, d, n);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviCopy_32f_C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                              OrviSize roiSize) {
    if (!pSrc || !pDst) return orvStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return orvStsSizeErr;
    const long total = 4L * roiSize.width * roiSize.height;
    long run = 4L * roiSize.width, rows = roiSize.height;
    if (run == srcStep && run == dstStep) run = total, rows = 1;
    const u8* s = reinterpret_cast<const u8*>(pSrc);
    u8* d = reinterpret_cast<u8*>(pDst);
    if constexpr (kM7) {
        const bool streaming = total > kM7Streaming;
        for (long y = 0; y < rows; ++y) owniCopy_8u_C1_M7(s + y * srcStep, d + y * dstStep, run, streaming);
    } else {
        owniCopy8uas(s, srcStep, d, dstStep, run, rows);
    }
    return orvStsNoErr;
}
