// Byte copy for the AVX tier: 32-byte stores with no cache question up to
// the size where the public functions call e9_ownsCopy_8u, which streams only
// when the frame reports a cache smaller than the run.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

inline __m256i ldu32(const u8* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

// Pieces of N bytes (any power of two up to 128) at any alignment; all loads
// of a piece come before its stores.
template <int N>
inline void copy_any(const u8* s, u8* d) {
    if constexpr (N >= 32) {
        __m256i v[N / 32];
        for (int k = 0; k < N / 32; ++k) v[k] = ldu32(s + 32 * k);
        for (int k = 0; k < N / 32; ++k) _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32 * k), v[k]);
    } else {
        copy_piece<N>(s, d);
    }
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsCopy_8u_E9)(const Orv8u* pSrc, Orv8u* pDst, int bytes) {
    const u8* s = pSrc;
    u8* d = pDst;
    long n = bytes;
    if (n >= 256) {
        // One unaligned piece, then 128-byte blocks stored aligned from the
        // next 32-byte boundary of the destination.
        copy_any<32>(s, d);
        unsigned skip = -address(d) & 31;
        s += skip, d += skip, n -= skip;
        for (; n >= 128; n -= 128, s += 128, d += 128) {
            __m256i a = ldu32(s), b = ldu32(s + 32), c = ldu32(s + 64), e = ldu32(s + 96);
            auto* q = reinterpret_cast<__m256i*>(d);
            _mm256_store_si256(q, a), _mm256_store_si256(q + 1, b), _mm256_store_si256(q + 2, c),
                _mm256_store_si256(q + 3, e);
        }
    }
    by_bits<128>(static_cast<unsigned long>(n), [&](auto size) {
        copy_any<size()>(s, d);
        s += size(), d += size();
    });
    _mm256_zeroupper();
}

ORV_TIER_API void ORV_T(ownsCopy_8u)(const Orv8u* pSrc, Orv8u* pDst, int bytes) {
    if (!frame_cache_below(bytes)) return ORV_T(ownsCopy_8u_E9)(pSrc, pDst, bytes);
    // Non-temporal: one unaligned 64-byte piece up to a 64-byte boundary of
    // the destination, streamed blocks, the rest by the bits, the fence.
    const u8* s = pSrc;
    u8* d = pDst;
    long n = bytes;
    copy_any<64>(s, d);
    unsigned skip = -address(d) & 63;
    s += skip, d += skip, n -= skip;
    for (; n >= 64; n -= 64, s += 64, d += 64) {
        __m256i a = ldu32(s), b = ldu32(s + 32);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(d), a);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(d + 32), b);
    }
    if (n & 32) _mm256_stream_si256(reinterpret_cast<__m256i*>(d), ldu32(s)), s += 32, d += 32;
    if (n & 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d), _mm_loadu_si128(reinterpret_cast<const __m128i*>(s))), s += 16,
            d += 16;
    if (n & 8) _mm_stream_si64(reinterpret_cast<long long*>(d), load_elem(reinterpret_cast<const long long*>(s))), s += 8, d += 8;
    if (n & 4) _mm_stream_si32(reinterpret_cast<int*>(d), load_elem(reinterpret_cast<const int*>(s))), s += 4, d += 4;
    if (n & 2) copy_piece<2>(s, d), s += 2, d += 2;
    if (n & 1) *d = *s;
    _mm_sfence();
    _mm256_zeroupper();
}
