// Per-tier order limits of the FFT engine: which orders go to the small
// kernels, the fused radix core, bit reversal plus the plain core, and the
// blocked large transform, and the constants of the large path. One table
// per element type; every tier compiles both (u8 has no single-precision
// exports, so its 32f row only has to compile).
//
// Complex limits count complex orders. For a real record they apply to the
// inner complex order, order - 1.
#pragma once

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

struct FftLimits {
    int realSmall;     // highest real order served by a real small kernel
    int complexSmall;  // highest complex order served by a small kernel
    int normFrom;      // fused (Norm) core from this order ...
    int normTo;        // ... up to this one; normTo < normFrom: no fused core
    int plainTop;      // bit reversal then the plain core up to this order; 0: none
    int largeFrom;     // blocked large transform from this order
    int highestReal;   // highest real order
    int twoLevelRec;   // real order from which the recombination tables have two levels; 0: never
    int blockOrder;    // B: blocks of 2^B x 2^B in the blocked reordering
    int orderBlk;      // blocked reordering from this order (below: BitRev on the Norm table)
    int orderCopy;     // out of place from this order: copy, then reorder in place
    int copyChunk;     // bytes per copy chunk
    int r2Work;        // work bytes of the radix-2 block path
    int reorderWork;   // least work bytes with blocked reordering (its two block buffers)
    int blk[24];       // tbl_blk_order[order - 9], orders 9..32
    int buf[24];       // tbl_buf_order[order - 9]
    // Highest medium order: the last one before the large transform.
    constexpr int mediumTop() const { return largeFrom - 1; }
};

// tbl_blk_order / tbl_buf_order from runs {first order, last order, value}.
struct Run {
    int from, to, value;
};
template <int N>
constexpr void fill_runs(int (&t)[24], const Run (&runs)[N]) {
    for (int& v : t) v = 0;
    for (const Run& r : runs)
        for (int o = r.from; o <= r.to; ++o) t[o - 9] = r.value;
}

constexpr FftLimits make32f() {
    FftLimits l{};
    l.realSmall = 4;
    l.highestReal = 29;
    switch (kTier) {
        case Tier::e9:
            l.complexSmall = 6, l.normFrom = 7, l.normTo = 18, l.plainTop = 0, l.largeFrom = 19;
            l.twoLevelRec = 19, l.blockOrder = 6, l.orderBlk = 19, l.orderCopy = 23, l.copyChunk = 0x4000000;
            l.r2Work = 1 << 21;
            fill_runs(l.blk, {Run{19, 22, 4}, Run{23, 30, 8}});
            fill_runs(l.buf, {Run{19, 22, 10}, Run{23, 30, 14}});
            break;
        case Tier::y8:
        case Tier::u8:
            l.complexSmall = 5, l.normFrom = 6, l.normTo = 17, l.plainTop = 0, l.largeFrom = 18;
            l.twoLevelRec = 21, l.blockOrder = 6, l.orderBlk = 19, l.orderCopy = 23, l.copyChunk = 0x4000000;
            l.r2Work = 1 << 20;
            fill_runs(l.blk, {Run{18, 19, 4}, Run{20, 30, 8}});
            fill_runs(l.buf, {Run{18, 19, 10}, Run{20, 30, 14}});
            break;
        case Tier::n8:
            l.complexSmall = 5, l.normFrom = 6, l.normTo = 14, l.plainTop = 15, l.largeFrom = 16;
            l.twoLevelRec = 18, l.blockOrder = 5, l.orderBlk = 17, l.orderCopy = 19, l.copyChunk = 0x400000;
            l.r2Work = 1 << 18;
            fill_runs(l.blk, {Run{16, 18, 4}, Run{19, 20, 6}, Run{21, 30, 8}});
            fill_runs(l.buf, {Run{16, 18, 10}, Run{19, 30, 14}});
            break;
        case Tier::m7:
            l.complexSmall = 5, l.normFrom = 6, l.normTo = 15, l.plainTop = 16, l.largeFrom = 17;
            l.twoLevelRec = 19, l.blockOrder = 6, l.orderBlk = 20, l.orderCopy = 20, l.copyChunk = 0x800000;
            l.r2Work = 1 << 19;
            fill_runs(l.blk, {Run{17, 20, 4}, Run{21, 21, 6}, Run{22, 30, 8}});
            fill_runs(l.buf, {Run{17, 17, 9}, Run{18, 20, 10}, Run{21, 21, 13}, Run{22, 30, 15}});
            break;
    }
    l.reorderWork = l.blockOrder == 5 ? 0x4000 : 0x10000;
    return l;
}

constexpr FftLimits make64f() {
    FftLimits l{};
    l.highestReal = 28;
    l.r2Work = 1 << 18;  // only 64f n8 takes the radix-2 block path (order 13)
    switch (kTier) {
        case Tier::e9:
            l.realSmall = 4, l.complexSmall = 6, l.normFrom = 7, l.normTo = 17, l.plainTop = 0, l.largeFrom = 18;
            l.twoLevelRec = 17, l.blockOrder = 5, l.orderBlk = 18, l.orderCopy = 23, l.copyChunk = 0x8000000;
            fill_runs(l.blk, {Run{18, 21, 4}, Run{22, 30, 8}});
            fill_runs(l.buf, {Run{18, 21, 9}, Run{22, 30, 13}});
            break;
        case Tier::y8:
            l.realSmall = 5, l.complexSmall = 5, l.normFrom = 6, l.normTo = 16, l.plainTop = 0, l.largeFrom = 17;
            l.twoLevelRec = 19, l.blockOrder = 5, l.orderBlk = 18, l.orderCopy = 23, l.copyChunk = 0x8000000;
            fill_runs(l.blk, {Run{17, 18, 6}, Run{19, 30, 8}});
            fill_runs(l.buf, {Run{17, 18, 10}, Run{19, 30, 13}});
            break;
        case Tier::n8:
            // No fused core: bit reversal on a swap list, then the plain core.
            l.realSmall = 5, l.complexSmall = 5, l.normFrom = 6, l.normTo = 5, l.plainTop = 12, l.largeFrom = 13;
            l.highestReal = 27;
            l.twoLevelRec = 18, l.blockOrder = 5, l.orderBlk = 14, l.orderCopy = 21, l.copyChunk = 0x2000000;
            fill_runs(l.blk, {Run{14, 14, 4}, Run{15, 18, 6}, Run{19, 19, 4}, Run{20, 30, 6}});
            fill_runs(l.buf, {Run{14, 21, 10}, Run{22, 30, 12}});
            break;
        case Tier::u8:
            l.realSmall = 5, l.complexSmall = 5, l.normFrom = 6, l.normTo = 16, l.plainTop = 0, l.largeFrom = 17;
            l.twoLevelRec = 17, l.blockOrder = 5, l.orderBlk = 18, l.orderCopy = 22, l.copyChunk = 0x4000000;
            fill_runs(l.blk, {Run{17, 19, 6}, Run{20, 20, 7}, Run{21, 30, 8}});
            fill_runs(l.buf, {Run{17, 19, 10}, Run{20, 20, 11}, Run{21, 30, 13}});
            break;
        case Tier::m7:
            l.realSmall = 5, l.complexSmall = 5, l.normFrom = 6, l.normTo = 14, l.plainTop = 0, l.largeFrom = 15;
            l.twoLevelRec = 18, l.blockOrder = 6, l.orderBlk = 19, l.orderCopy = 19, l.copyChunk = 0x800000;
            fill_runs(l.blk, {Run{15, 18, 4}, Run{19, 20, 6}, Run{21, 30, 8}});
            fill_runs(l.buf, {Run{15, 15, 8}, Run{16, 18, 10}, Run{19, 20, 13}, Run{21, 30, 14}});
            break;
    }
    l.reorderWork = l.blockOrder == 6 ? 0x20000 : 0x8000;
    return l;
}

inline constexpr FftLimits kLimits32f = make32f();
inline constexpr FftLimits kLimits64f = make64f();

template <class T>
constexpr const FftLimits& fft_limits() {
    if constexpr (sizeof(T) == 4) return kLimits32f;
    else return kLimits64f;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
