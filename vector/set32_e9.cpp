// 32-bit fills of the AVX tier: 32-byte stores at any alignment, and for
// runs beyond 2 MiB non-temporal stores when the frame reports a smaller cache.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// The pattern as seen from k bytes past a point where it starts with v.
inline uint32_t rotated(uint32_t v, unsigned k) {
    unsigned bits = 8 * (k & 3);
    return bits ? (v >> bits | v << (32 - bits)) : v;
}

inline __m256i pattern(uint32_t v) { return _mm256_set1_epi32(static_cast<int>(v)); }

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsSet_32s_E9)(const Orv32s* pVal, Orv32s* pDst, int count) {
    const uint32_t v = static_cast<uint32_t>(load_elem(pVal));
    u8* p = reinterpret_cast<u8*>(pDst);
    long n = 4L * count;
    if (n < 32) {
        // Offsets are multiples of 4, so the pattern keeps its phase.
        if (count & 4) _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_set1_epi32(static_cast<int>(v))), p += 16;
        if (count & 2) store_elem(reinterpret_cast<uint64_t*>(p), uint64_t{v} << 32 | v), p += 8;
        if (count & 1) store_elem(reinterpret_cast<uint32_t*>(p), v);
        return;
    }
    // Unaligned first and last pieces; aligned stores between them carry the
    // pattern rotated to the phase of the first 32-byte boundary.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), pattern(v));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + n - 32), pattern(v));
    unsigned skip = -address(p) & 31;
    const __m256i pat = pattern(rotated(v, skip));
    p += skip, n -= skip;
    for (; n >= 128; n -= 128, p += 128) {
        auto* q = reinterpret_cast<__m256i*>(p);
        _mm256_store_si256(q, pat), _mm256_store_si256(q + 1, pat), _mm256_store_si256(q + 2, pat),
            _mm256_store_si256(q + 3, pat);
    }
    for (; n >= 32; n -= 32, p += 32) _mm256_store_si256(reinterpret_cast<__m256i*>(p), pat);
    _mm256_zeroupper();
}

ORV_TIER_API void ORV_T(ownsSet_32s)(Orv32s val, Orv32s* pDst, int count) {
    long n = 4L * count;
    if (!(n > 0x200000 && (address(pDst) & 3) == 0 && frame_cache_below(n))) return ORV_T(ownsSet_32s_E9)(&val, pDst, count);
    // Elements up to a 64-byte boundary, streamed 64-byte blocks, the rest by
    // elements, then the fence.
    const uint32_t v = static_cast<uint32_t>(val);
    u8* p = reinterpret_cast<u8*>(pDst);
    for (; address(p) & 63; n -= 4, p += 4) store_elem(reinterpret_cast<uint32_t*>(p), v);
    const __m256i pat = pattern(v);
    for (; n >= 64; n -= 64, p += 64) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p), pat);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p + 32), pat);
    }
    for (; n > 0; n -= 4, p += 4) _mm_stream_si32(reinterpret_cast<int*>(p), static_cast<int>(v));
    _mm_sfence();
    _mm256_zeroupper();
}
