// Byte copy for tiers m7, u8 and y8 (one text; m7 leaves out the direction
// choice and the shifted-block loop). The destination is aligned to 16 first;
// runs of at least half the cache go non-temporal.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// u8 and y8 choose the direction of aligned copies and join aligned source
// blocks with PALIGNR; m7 does neither.
constexpr bool kFull = kTier != Tier::m7;
// Size from which the cache is asked (bytes left after the alignment step).
constexpr long kNtFrom = kFull ? 0x100000 : 0x80000;
// One byte read per this many bytes before a non-temporal block is copied.
constexpr long kTouchStep = kFull ? 64 : 128;
constexpr long kNtBlock = 0x40000;

inline __m128i ldu(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i lda(const u8* p) { return _mm_load_si128(reinterpret_cast<const __m128i*>(p)); }
inline void sta(u8* p, __m128i v) { _mm_store_si128(reinterpret_cast<__m128i*>(p), v); }

// Reads one byte per kTouchStep so that the lines are on their way before the
// streaming stores need them; forward over a block, from the end over the rest.
inline void touch_forward(const u8* p, long n) {
    for (long k = 0; k < n; k += kTouchStep) (void)*static_cast<const volatile u8*>(p + k);
}
inline void touch_backward(const u8* p, long n) {
    for (long k = (n - 1) / kTouchStep * kTouchStep; k >= 0; k -= kTouchStep)
        (void)*static_cast<const volatile u8*>(p + k);
}

// pDst is 16-aligned. Unaligned loads, streaming stores, one fence.
void copy_nt(const u8* s, u8* d, long n) {
    for (; n >= kNtBlock; n -= kNtBlock, s += kNtBlock, d += kNtBlock) {
        touch_forward(s, kNtBlock);
        for (long k = 0; k < kNtBlock; k += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(d + k), ldu(s + k));
    }
    if (n > 0) touch_backward(s, n);
    for (; n >= 16; n -= 16, s += 16, d += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(d), ldu(s));
    _mm_sfence();
    short_copy(s, d, static_cast<unsigned>(n));
}

// Both 16-aligned, 64 bytes a step upward.
void copy_forward(const u8* s, u8* d, long n) {
    for (; n >= 64; n -= 64, s += 64, d += 64) {
        __m128i a = lda(s), b = lda(s + 16), c = lda(s + 32), e = lda(s + 48);
        sta(d, a), sta(d + 16, b), sta(d + 32, c), sta(d + 48, e);
    }
    short_copy(s, d, static_cast<unsigned>(n));
}

// Both 16-aligned: the count's low bits from the end first (1, 2, 4, 8, 16,
// 32 bytes), then 64-byte blocks downward.
void copy_backward(const u8* s, u8* d, long n) {
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

// pDst 16-aligned, pSrc not.
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
        if (cache > 0 && n >= cache / 2) return copy_nt(s, d, n);
    }
    if (!(address(s) & 15)) return copy_aligned(s, d, n);
    copy_misaligned<kFull>(s, d, n);
}
