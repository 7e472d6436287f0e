// Byte copy for tiers m7, u8 and y8 (one text; m7 leaves out the direction
// choice and the shifted-block loop). The destination is aligned to 16 first;
// runs of at least half the cache go non-temporal.
#include "copy_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

// u8 and y8 choose the direction of aligned copies and join aligned source
// blocks with PALIGNR; m7 does neither.
constexpr bool kFull = kTier != Tier::m7;
// Size from which the cache is asked (bytes left after the alignment step).
constexpr long kNtFrom = kFull ? 0x100000 : 0x80000;
// One byte read per this many bytes before a non-temporal block is copied.
constexpr long kTouchStep = kFull ? 64 : 128;

// Both 16-aligned. The direction keeps the two streams apart in the low 12
// address bits: with d = (pSrc mod 4096) - (pDst mod 4096), forward when
// 0 < d <= 160 or d < -3936, else backward (also for d = 0). A choice of
// speed; it promises nothing for overlapping arrays.
void copy_aligned(const u8* s, u8* d, long n) {
    if constexpr (kFull) {
        long dist = static_cast<long>(address(s) & 4095) - static_cast<long>(address(d) & 4095);
        if (!((dist > 0 && dist <= 160) || dist < -3936)) return copy_backward(s, d, n);
    }
    copy_forward(s, d, n);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsCopy_8u)(const Orv8u* pSrc, Orv8u* pDst, int bytes) {
    const u8* s = pSrc;
    u8* d = pDst;
    long n = bytes;
    if (n < 64) return short_copy(s, d, static_cast<unsigned>(n));
    if (unsigned mis = address(d) & 15) {
        // 16 bytes unaligned, then on from the boundary: the overlap is
        // written twice.
        copy_piece<16>(s, d);
        s += 16 - mis, d += 16 - mis, n -= 16 - mis;
        if (n < 64) return short_copy(s, d, static_cast<unsigned>(n));
        // A source that became aligned skips the size test: such a copy
        // never goes non-temporal.
        if (!(address(s) & 15)) return copy_aligned(s, d, n);
    }
    if (n >= kNtFrom) {
        long cache = cache_size_by_descriptors();
        if (cache > 0 && n >= cache / 2) return copy_blocks<true, kTouchStep>(s, d, n);
    }
    if (!(address(s) & 15)) return copy_aligned(s, d, n);
    copy_misaligned<kFull>(s, d, n);
}
