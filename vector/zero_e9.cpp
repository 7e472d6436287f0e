// Byte clearing for the AVX tier: 32-byte stores with no cache question up to
// the size where the public functions call e9_ownsZero_8u, which streams only
// when the frame reports a cache smaller than the run.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// Pieces of N bytes (any power of two up to 128) at any alignment.
template <int N>
inline void zero_any(u8* p) {
    if constexpr (N >= 32)
        for (int k = 0; k < N; k += 32) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + k), _mm256_setzero_si256());
    else
        zero_piece<N>(p);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsZero_8u_E9)(Orv8u* pDst, int bytes) {
    u8* p = pDst;
    long n = bytes;
    auto piece = [&p](auto size) { zero_any<size()>(p), p += size(); };
    if (n >= 256) {
        // One unaligned piece, then aligned 128-byte blocks from the next
        // 32-byte boundary; the rest by the count's bits.
        zero_any<32>(p);
        unsigned skip = -address(p) & 31;
        p += skip, n -= skip;
        const __m256i z = _mm256_setzero_si256();
        for (; n >= 128; n -= 128, p += 128) {
            auto* q = reinterpret_cast<__m256i*>(p);
            _mm256_store_si256(q, z), _mm256_store_si256(q + 1, z), _mm256_store_si256(q + 2, z),
                _mm256_store_si256(q + 3, z);
        }
    }
    by_bits<128>(static_cast<unsigned long>(n), piece);
    _mm256_zeroupper();
}

ORV_TIER_API void ORV_T(ownsZero_8u)(Orv8u* pDst, int bytes) {
    if (!frame_cache_below(bytes)) return ORV_T(ownsZero_8u_E9)(pDst, bytes);
    // Non-temporal: one unaligned 64-byte piece up to a 64-byte boundary,
    // streamed blocks, the rest by the count's bits, then the fence.
    u8* p = pDst;
    long n = bytes;
    zero_any<64>(p);
    unsigned skip = -address(p) & 63;
    p += skip, n -= skip;
    const __m256i z = _mm256_setzero_si256();
    for (; n >= 64; n -= 64, p += 64) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p), z);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p + 32), z);
    }
    if (n & 32) _mm256_stream_si256(reinterpret_cast<__m256i*>(p), z), p += 32;
    if (n & 16) _mm_stream_si128(reinterpret_cast<__m128i*>(p), _mm_setzero_si128()), p += 16;
    if (n & 8) _mm_stream_si64(reinterpret_cast<long long*>(p), 0), p += 8;
    if (n & 4) _mm_stream_si32(reinterpret_cast<int*>(p), 0), p += 4;
    if (n & 2) zero_piece<2>(p), p += 2;
    if (n & 1) *p = 0;
    _mm_sfence();
    _mm256_zeroupper();
}
