// Helpers shared by the fill, copy and arithmetic sources of one tier:
// unaligned scalar access, fixed-size pieces, and the cache-size questions
// that choose non-temporal stores. Everything lives in the tier's anonymous
// namespace, so each tier object has its own copy.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "internal/orv_unaligned.h"

namespace orv::ORV_TIER_NS {
namespace {

using u8 = unsigned char;

// A fixed piece of N bytes (N up to 16) moved or written with one access.
template <int N>
inline void copy_piece(const u8* s, u8* d) {
    if constexpr (N == 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_loadu_si128(reinterpret_cast<const __m128i*>(s)));
    else
        std::memcpy(d, s, N);
}
template <int N>
inline void zero_piece(u8* d) {
    if constexpr (N == 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_setzero_si128());
    else
        std::memset(d, 0, N);
}

// Calls piece(size) for each bit of n set from Top down to 1, largest first:
// how the tails of the fills and copies are taken.
template <int Top, class F>
inline void by_bits(unsigned long n, F&& piece) {
    if (n & Top) piece(std::integral_constant<int, Top>{});
    if constexpr (Top > 1) by_bits<Top / 2>(n, piece);
}

// Copies of fewer than 64 bytes: 32, 16, 8 and 4 bytes as the count's bits
// say, then up to three single bytes taken from the end.
inline void short_copy(const u8* s, u8* d, unsigned n) {
    if (n & 32) copy_piece<16>(s, d), copy_piece<16>(s + 16, d + 16), s += 32, d += 32;
    if (n & 16) copy_piece<16>(s, d), s += 16, d += 16;
    if (n & 8) copy_piece<8>(s, d), s += 8, d += 8;
    if (n & 4) copy_piece<4>(s, d), s += 4, d += 4;
    for (unsigned k = n & 3; k; --k) d[k - 1] = s[k - 1];
}

// Leaf-2 descriptor bytes and size codes, largest cache first, so that the
// first hit is the largest cache the processor lists. A code gives
// (code >> 4) << ((code & 15) + 18) bytes.
struct CacheRow {
    u8 desc, code;
};
constexpr u8 size_code(uint32_t kib) {
    for (int shift = 0; shift < 16; ++shift)
        for (uint32_t m = 1; m < 16; ++m)
            if ((static_cast<uint64_t>(m) << (shift + 18)) == static_cast<uint64_t>(kib) * 1024)
                return static_cast<u8>(m << 4 | shift);
    return 0;
}
constexpr CacheRow kTableCacheSize[] = {
    {0xEC, size_code(24576)}, {0xEB, size_code(18432)}, {0x4D, size_code(16384)}, {0xEA, size_code(12288)},
    {0x4C, size_code(12288)}, {0xE4, size_code(8192)},  {0xDE, size_code(8192)},  {0x4B, size_code(8192)},
    {0x47, size_code(8192)},  {0x4E, size_code(6144)},  {0x4A, size_code(6144)},  {0xE3, size_code(4096)},
    {0xDD, size_code(4096)},  {0xD8, size_code(4096)},  {0x49, size_code(4096)},  {0x29, size_code(4096)},
    {0x46, size_code(4096)},  {0x48, size_code(3072)},  {0xE2, size_code(2048)},  {0xDC, size_code(2048)},
    {0xD7, size_code(2048)},  {0xD2, size_code(2048)},  {0x25, size_code(2048)},  {0x7D, size_code(2048)},
    {0x85, size_code(2048)},  {0x45, size_code(2048)},  {0xD6, size_code(1024)},  {0xD1, size_code(1024)},
    {0x23, size_code(1024)},  {0x87, size_code(1024)},  {0x7C, size_code(1024)},  {0x78, size_code(1024)},
    {0x84, size_code(1024)},  {0x44, size_code(1024)},  {0xD0, size_code(512)},   {0x22, size_code(512)},
    {0x7B, size_code(512)},   {0x80, size_code(512)},   {0x86, size_code(512)},   {0x3E, size_code(512)},
    {0x7F, size_code(512)},   {0x83, size_code(512)},   {0x43, size_code(512)},   {0, 0},
};
static_assert(sizeof kTableCacheSize / sizeof kTableCacheSize[0] == 44);
constexpr long size_of_code(u8 code) { return static_cast<long>(code >> 4) << ((code & 15) + 18); }
static_assert(size_of_code(size_code(24576)) == 24576L * 1024 && size_of_code(size_code(512)) == 512L * 1024);

// The largest cache by the leaf-2 descriptors, or -1 when unknown. Only the
// vendor whose descriptors the table decodes is asked; any other answers
// "unknown". Bytes are compared from the stored count down to position 1
// (position 0 is the round count of EAX); when EAX held nothing the top
// position lies one past the stored registers, in the zeroed buffer, and
// never matches. The m7 tier divides the size by the cores of leaf 4. Asked
// afresh on every call: only large fills and copies get here.
inline long cache_size_by_descriptors() {
    Orv32u r[4];
    ownGetReg(r, 0, 0);
    if (r[1] != 0x756e6547u || r[3] != 0x49656e69u || r[2] != 0x6c65746eu) return -1;
    long cores = 1;
    if constexpr (kTier == Tier::m7) {
        if (static_cast<int32_t>(r[0]) >= 4) {
            Orv32u c[4];
            ownGetReg(c, 4, 0);
            cores = (c[0] >> 26) + 1;
        }
    }
    ownGetReg(r, 2, 0);
    if ((r[0] & 0xFF) != 1) return -1;
    u8 buf[16] = {};
    int count = 0, stored = 0;
    for (int i = 0; i < 4; ++i) {
        if (r[i] == 0 || (r[i] & 0x80000000u)) continue;
        std::memcpy(buf + 4 * stored++, &r[i], 4);
        count += i == 0 ? 3 : 4;
    }
    if (count == 0) return -1;
    for (const CacheRow* row = kTableCacheSize; row->desc != 0; ++row)
        for (int pos = count; pos >= 1; --pos)
            if (buf[pos] == row->desc) return size_of_code(row->code) / cores;
    return -1;
}

// The e9 kernels ask the frame instead: a positive size smaller than the
// byte count sends them non-temporal; any failure keeps ordinary stores.
inline bool frame_cache_below(long bytes) {
    int size = 0;
    return orvGetMaxCacheSizeB(&size) == orvStsNoErr && size > 0 && size < bytes;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
