// Byte copy for tier n8, written for an in-order core that splits unaligned
// 16-byte loads: a misaligned source is read in paired 8-byte halves, never
// with one unaligned 16-byte load; no touching pass before streaming.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// 16 bytes: aligned when the source allows, else two 8-byte halves.
template <bool Aligned>
inline __m128i load16(const u8* p) {
    if constexpr (Aligned) return _mm_load_si128(reinterpret_cast<const __m128i*>(p));
    __m128d lo = _mm_castsi128_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    return _mm_castpd_si128(_mm_loadh_pd(lo, reinterpret_cast<const double*>(p + 8)));
}

// pDst 16-aligned: 128 bytes a step, then 64, 32, 16, 8, 4, 2, 1 by the bits.
template <bool Aligned>
void copy_long(const u8* s, u8* d, long n) {
    for (; n >= 128; n -= 128, s += 128, d += 128)
        for (int k = 0; k < 128; k += 16) _mm_store_si128(reinterpret_cast<__m128i*>(d + k), load16<Aligned>(s + k));
    by_bits<64>(static_cast<unsigned long>(n), [&](auto size) {
        if constexpr (size() >= 16)
            for (int k = 0; k < size(); k += 16) _mm_store_si128(reinterpret_cast<__m128i*>(d + k), load16<Aligned>(s + k));
        else
            copy_piece<size()>(s, d);
        s += size(), d += size();
    });
}

// pDst 16-aligned: streaming stores from paired 8-byte loads, one fence.
void copy_nt(const u8* s, u8* d, long n) {
    for (; n >= 16; n -= 16, s += 16, d += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(d), load16<false>(s));
    _mm_sfence();
    short_copy(s, d, static_cast<unsigned>(n));
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsCopy_8u)(const Orv8u* pSrc, Orv8u* pDst, int bytes) {
    const u8* s = pSrc;
    u8* d = pDst;
    long n = bytes;
    if (n < 16) return short_copy(s, d, static_cast<unsigned>(n));
    // Destination to 16 bytes by 1, 2, 4 and 8-byte steps.
    if (unsigned mis = -address(d) & 15) {
        if (mis & 1) *d++ = *s++;
        if (mis & 2) copy_piece<2>(s, d), s += 2, d += 2;
        if (mis & 4) copy_piece<4>(s, d), s += 4, d += 4;
        if (mis & 8) copy_piece<8>(s, d), s += 8, d += 8;
        n -= mis;
    }
    // Above 128 KiB the cache is asked; more than half of it streams.
    if (n > 0x20000) {
        long cache = cache_size_by_descriptors();
        if (cache > 0 && n > cache / 2) return copy_nt(s, d, n);
    }
    if (address(s) & 15)
        copy_long<false>(s, d, n);
    else
        copy_long<true>(s, d, n);
}
