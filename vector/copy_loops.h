// The 128-bit copy loops shared by the byte copy of the 128-bit tiers and the
// region copy: 64 bytes a round to a 16-aligned destination, forward or
// backward, from an aligned, misaligned or shifted source, and the blocked
// form for long runs that touches a block's lines before copying it.
#pragma once

#include "vector/mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// Unaligned loads: m7 takes LDDQU, its one SSE3 addition to the loops.
inline __m128i ldu(const u8* p) {
    if constexpr (kTier == Tier::m7) return _mm_lddqu_si128(reinterpret_cast<const __m128i*>(p));
    else return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline __m128i lda(const u8* p) { return _mm_load_si128(reinterpret_cast<const __m128i*>(p)); }
inline void sta(u8* p, __m128i v) { _mm_store_si128(reinterpret_cast<__m128i*>(p), v); }

// Reads one byte per Step so that the lines are on their way before the
// stores need them; forward over a block, from the end over the rest.
template <long Step>
inline void touch_forward(const u8* p, long n) {
    for (long k = 0; k < n; k += Step) (void)*static_cast<const volatile u8*>(p + k);
}
template <long Step>
inline void touch_backward(const u8* p, long n) {
    for (long k = (n - 1) / Step * Step; k >= 0; k -= Step) (void)*static_cast<const volatile u8*>(p + k);
}

// Both 16-aligned, 64 bytes a step upward.
inline void copy_forward(const u8* s, u8* d, long n) {
    for (; n >= 64; n -= 64, s += 64, d += 64) {
        __m128i a = lda(s), b = lda(s + 16), c = lda(s + 32), e = lda(s + 48);
        sta(d, a), sta(d + 16, b), sta(d + 32, c), sta(d + 48, e);
    }
    short_copy(s, d, static_cast<unsigned>(n));
}

// Both 16-aligned: the count's low bits from the end first (1, 2, 4, 8, 16,
// 32 bytes), then 64-byte blocks downward.
inline void copy_backward(const u8* s, u8* d, long n) {
    long pos = n;
    if (n & 1) pos -= 1, d[pos] = s[pos];
    if (n & 2) pos -= 2, copy_piece<2>(s + pos, d + pos);
    if (n & 4) pos -= 4, copy_piece<4>(s + pos, d + pos);
    if (n & 8) pos -= 8, copy_piece<8>(s + pos, d + pos);
    if (n & 16) pos -= 16, copy_piece<16>(s + pos, d + pos);
    if (n & 32) {
        pos -= 32;
        __m128i a = ldu(s + pos), b = ldu(s + pos + 16);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + pos), a);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + pos + 16), b);
    }
    for (pos -= 64; pos >= 0; pos -= 64) {
        __m128i a = lda(s + pos), b = lda(s + pos + 16), c = lda(s + pos + 32), e = lda(s + pos + 48);
        sta(d + pos, a), sta(d + pos + 16, b), sta(d + pos + 32, c), sta(d + pos + 48, e);
    }
}

// pDst 16-aligned, pSrc 16-aligned plus R (4, 8 or 12). The first 16 bytes go
// unaligned, so the aligned blocks read afterwards start inside the source;
// the loop stops while the last block it reads still ends inside it.
template <int R>
void copy_shifted(const u8*& s, u8*& d, long& n) {
    copy_piece<16>(s, d);
    s += 16, d += 16, n -= 16;
    const u8* a = s - R;
    __m128i lo = lda(a);
    for (; n >= 80 - R; n -= 64, s += 64, d += 64, a += 64) {
        __m128i b1 = lda(a + 16), b2 = lda(a + 32), b3 = lda(a + 48), b4 = lda(a + 64);
        sta(d, _mm_alignr_epi8(b1, lo, R));
        sta(d + 16, _mm_alignr_epi8(b2, b1, R));
        sta(d + 32, _mm_alignr_epi8(b3, b2, R));
        sta(d + 48, _mm_alignr_epi8(b4, b3, R));
        lo = b4;
    }
}

// pDst 16-aligned, pSrc not: unaligned loads, aligned stores; with Shift a
// source at 4, 8 or 12 past a boundary first runs the PALIGNR loop.
template <bool Shift>
void copy_misaligned(const u8* s, u8* d, long n) {
    if constexpr (Shift) {
        switch (address(s) & 15) {
            case 4: copy_shifted<4>(s, d, n); break;
            case 8: copy_shifted<8>(s, d, n); break;
            case 12: copy_shifted<12>(s, d, n); break;
            default: break;
        }
    }
    for (; n >= 64; n -= 64, s += 64, d += 64) {
        __m128i a = ldu(s), b = ldu(s + 16), c = ldu(s + 32), e = ldu(s + 48);
        sta(d, a), sta(d + 16, b), sta(d + 32, c), sta(d + 48, e);
    }
    short_copy(s, d, static_cast<unsigned>(n));
}

// pDst 16-aligned. Blocks of 0x40000 bytes: every TouchStep-th byte of the
// block is read first, then the block is copied, by streaming stores closed
// with a fence (Stream) or by ordinary ones. The rest is touched from its end
// and copied 16 bytes at a time, the last bytes by the short copy.
template <bool Stream, long TouchStep>
void copy_blocks(const u8* s, u8* d, long n) {
    constexpr long kBlock = 0x40000;
    auto put = [](u8* q, __m128i v) {
        if constexpr (Stream) _mm_stream_si128(reinterpret_cast<__m128i*>(q), v);
        else sta(q, v);
    };
    for (; n >= kBlock; n -= kBlock, s += kBlock, d += kBlock) {
        touch_forward<TouchStep>(s, kBlock);
        for (long k = 0; k < kBlock; k += 64) {
            __m128i a = ldu(s + k), b = ldu(s + k + 16), c = ldu(s + k + 32), e = ldu(s + k + 48);
            put(d + k, a), put(d + k + 16, b), put(d + k + 32, c), put(d + k + 48, e);
        }
    }
    if (n > 0) touch_backward<TouchStep>(s, n);
    for (; n >= 16; n -= 16, s += 16, d += 16) put(d, ldu(s));
    if constexpr (Stream) _mm_sfence();
    short_copy(s, d, static_cast<unsigned>(n));
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
