// Filling with a 32- or 64-bit pattern, 128-bit stores (the _M7 kernels, also
// kept by e9 for 64-bit elements). A destination at half the element's
// alignment is filled on a shifted boundary with the value's halves swapped.
#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// Element counts above this look for the cache before filling.
constexpr long kLargeCount = 0x20000;

template <class E>
inline __m128i broadcast(E v) {
    if constexpr (sizeof(E) == 8)
        return _mm_set1_epi64x(static_cast<long long>(v));
    else
        return _mm_set1_epi32(static_cast<int>(v));
}

// p is a multiple of the element size: one unaligned 16-byte store, then
// from the next 16-byte boundary blocks of 64, pieces of 16, and the last
// elements one by one.
template <class E>
void fill_from_aligned_element(u8* p, E v, long count) {
    long n = count * static_cast<long>(sizeof(E));
    if (n < 16) {
        for (; n > 0; n -= sizeof(E), p += sizeof(E)) store_elem(reinterpret_cast<E*>(p), v);
        return;
    }
    const __m128i pat = broadcast(v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), pat);
    unsigned skip = 16 - (address(p) & 15);
    p += skip, n -= skip;
    for (; n >= 64; n -= 64, p += 64) {
        auto* q = reinterpret_cast<__m128i*>(p);
        _mm_store_si128(q, pat), _mm_store_si128(q + 1, pat), _mm_store_si128(q + 2, pat), _mm_store_si128(q + 3, pat);
    }
    for (; n >= 16; n -= 16, p += 16) _mm_store_si128(reinterpret_cast<__m128i*>(p), pat);
    for (; n > 0; n -= sizeof(E), p += sizeof(E)) store_elem(reinterpret_cast<E*>(p), v);
}

template <class E>
void set_m7(const E* pVal, E* pDst, long count) {
    constexpr unsigned es = sizeof(E), half = es / 2;
    E v = load_elem(pVal);
    u8* p = reinterpret_cast<u8*>(pDst);
    if (address(p) % half) {
        // Never reaches a 16-byte boundary: element stores throughout.
        for (; count > 0; --count, p += es) store_elem(reinterpret_cast<E*>(p), v);
        return;
    }
    if (address(p) % es) {
        // First and last element, then the pattern from half an element on,
        // which reads as the value with its halves swapped.
        store_elem(reinterpret_cast<E*>(p), v);
        store_elem(reinterpret_cast<E*>(p + (count - 1) * es), v);
        v = static_cast<E>(v >> (4 * es) | v << (4 * es));
        p += half, count -= 1;
    }
    if (count > kLargeCount) {
        for (; address(p) & 15; --count, p += es) store_elem(reinterpret_cast<E*>(p), v);
        // A fill larger than the cache streams past it (counted in elements).
        long cache = cache_size_by_descriptors();
        if (cache > 0 && count > cache / static_cast<long>(es)) {
            const __m128i pat = broadcast(v);
            for (; count >= 16 / es; count -= 16 / es, p += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(p), pat);
            _mm_sfence();
        }
    }
    fill_from_aligned_element(p, v, count);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsSet_64s_M7)(const Orv64s* pVal, Orv64s* pDst, int count) {
    set_m7(reinterpret_cast<const uint64_t*>(pVal), reinterpret_cast<uint64_t*>(pDst), count);
}

ORV_TIER_API void ORV_T(ownsSet_32s_M7)(const Orv32s* pVal, Orv32s* pDst, int count) {
    set_m7(reinterpret_cast<const uint32_t*>(pVal), reinterpret_cast<uint32_t*>(pDst), count);
}

ORV_TIER_API void ORV_T(ownsSet_64s)(Orv64s val, Orv64s* pDst, int count) { ORV_T(ownsSet_64s_M7)(&val, pDst, count); }
