// Byte clearing for the 128-bit tiers (one text for m7, u8, n8 and y8):
// align the destination to 16, 64-byte blocks of ordinary stores, and
// non-temporal stores once the run is at least as large as the cache.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// Up to three 16-byte pieces, then 8, 4, 2 and 1 bytes by the count's bits.
inline void zero_tail(u8* p, unsigned n) {
    for (unsigned k = (n >> 4) & 3; k; --k, p += 16) zero_piece<16>(p);
    if (n & 8) zero_piece<8>(p), p += 8;
    if (n & 4) zero_piece<4>(p), p += 4;
    if (n & 2) zero_piece<2>(p), p += 2;
    if (n & 1) *p = 0;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsZero_8u)(Orv8u* pDst, int bytes) {
    u8* p = pDst;
    long n = bytes;
    const __m128i z = _mm_setzero_si128();
    if (n < 16) return zero_tail(p, static_cast<unsigned>(n));
    // Destination to 16 bytes by the missing bytes' bits.
    if (unsigned mis = -address(p) & 15) {
        if (mis & 1) zero_piece<1>(p), p += 1;
        if (mis & 2) zero_piece<2>(p), p += 2;
        if (mis & 4) zero_piece<4>(p), p += 4;
        if (mis & 8) zero_piece<8>(p), p += 8;
        n -= mis;
        if (n == 0) return;
    }
    if (n < 64) return zero_tail(p, static_cast<unsigned>(n));
    // From 512 KiB + 1 on, a run at least as large as the cache would only
    // evict it: stream it past the cache and fence the stores.
    if (n >= 0x80001) {
        long cache = cache_size_by_descriptors();
        if (cache > 0 && n >= cache) {
            for (; n >= 16; n -= 16, p += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(p), z);
            _mm_sfence();
            return zero_tail(p, static_cast<unsigned>(n));
        }
    }
    for (; n >= 64; n -= 64, p += 64) {
        auto* q = reinterpret_cast<__m128i*>(p);
        _mm_store_si128(q, z), _mm_store_si128(q + 1, z), _mm_store_si128(q + 2, z), _mm_store_si128(q + 3, z);
    }
    zero_tail(p, static_cast<unsigned>(n));
}
