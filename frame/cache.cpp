// The largest cache of the processor, asked once and cached with its status
// (a failure is cached too). Kernels size their non-temporal paths by it.
#include <cstring>

#include "cpuid.h"
#include "orvcore.h"
#include "state.h"

using orv::cpu::cpuid;

extern "C" {
int32_t ownStatus = 1;  // 1: not asked yet
int32_t cacheSize = 0;
}

namespace {

// Leaf-2 descriptor bytes and their cache sizes, largest first: the search
// stops at the first hit, which is the largest cache reported.
constexpr uint32_t kMB = 1u << 20, kKB = 1u << 10;
constexpr Orv32u tableCache[][2] = {
    {0xEC, 24 * kMB}, {0xEB, 18 * kMB}, {0x4D, 16 * kMB}, {0xEA, 12 * kMB}, {0x4C, 12 * kMB},
    {0xE4, 8 * kMB},  {0xDE, 8 * kMB},  {0x4B, 8 * kMB},  {0x47, 8 * kMB},  {0x4E, 6 * kMB},
    {0x4A, 6 * kMB},  {0xE3, 4 * kMB},  {0xDD, 4 * kMB},  {0xD8, 4 * kMB},  {0x49, 4 * kMB},
    {0x29, 4 * kMB},  {0x46, 4 * kMB},  {0x48, 3 * kMB},  {0xE2, 2 * kMB},  {0xDC, 2 * kMB},
    {0xD7, 2 * kMB},  {0xD2, 2 * kMB},  {0x25, 2 * kMB},  {0x7D, 2 * kMB},  {0x85, 2 * kMB},
    {0x45, 2 * kMB},  {0xD6, 1 * kMB},  {0xD1, 1 * kMB},  {0x23, 1 * kMB},  {0x87, 1 * kMB},
    {0x7C, 1 * kMB},  {0x78, 1 * kMB},  {0x84, 1 * kMB},  {0x44, 1 * kMB},  {0xD0, 512 * kKB},
    {0x22, 512 * kKB}, {0x7B, 512 * kKB}, {0x80, 512 * kKB}, {0x86, 512 * kKB}, {0x3E, 512 * kKB},
    {0x7F, 512 * kKB}, {0x83, 512 * kKB}, {0x43, 512 * kKB}, {0x3D, 384 * kKB}, {0x21, 256 * kKB},
    {0x7A, 256 * kKB}, {0x82, 256 * kKB}, {0x3C, 256 * kKB}, {0x3F, 256 * kKB}, {0x42, 256 * kKB},
    {0x3A, 192 * kKB}, {0x79, 128 * kKB}, {0x39, 128 * kKB}, {0x3B, 128 * kKB}, {0x41, 128 * kKB},
    {0, 0},
};
static_assert(sizeof tableCache / sizeof tableCache[0] == 56);

// Leaf 4: the largest data or unified cache, or 0 when none is listed.
int32_t largest_deterministic_cache() {
    int32_t best = 0;
    for (int sub = 0; sub < 32; ++sub) {
        auto r = cpuid(4, sub);
        uint32_t type = r.eax & 0x1F;
        if (type == 0) break;
        if (type == 2) continue;  // instruction cache
        uint32_t ways = (r.ebx >> 22) + 1, parts = ((r.ebx >> 12) & 0x3FF) + 1, line = (r.ebx & 0xFFF) + 1;
        auto size = static_cast<int32_t>(ways * parts * line * (r.ecx + 1));
        if (size > best) best = size;  // signed comparison
    }
    return best;
}

}  // namespace

// Leaf-2 descriptor search. Only a single query round is handled. The bytes
// are compared from the position given by the count down to position 1;
// position 0 is the round count. When EAX held no descriptors the positions
// stand one off, and the top position lies one past the stored registers: the
// buffer is zero-filled, so that position never matches a descriptor.
ORV_FRAME_API int ownGetCacheSize(const Orv32u* table) {
    auto r = cpuid(2, 0);
    if ((r.eax & 0xFF) != 1) return -1;
    uint32_t regs[4] = {r.eax, r.ebx, r.ecx, r.edx};
    unsigned char buf[16] = {};
    int count = 0, stored = 0;
    for (int i = 0; i < 4; ++i) {
        if (regs[i] & 0x80000000u) continue;  // no descriptors in this register
        if (regs[i] == 0) continue;
        std::memcpy(buf + 4 * stored++, &regs[i], 4);
        count += i == 0 ? 3 : 4;
    }
    if (count == 0) return -1;
    for (const Orv32u* pair = table; pair[0] != 0; pair += 2)
        for (int pos = count; pos >= 1; --pos)
            if (buf[pos] == pair[0]) return static_cast<int>(pair[1]);
    return -1;
}

ORV_FRAME_API OrvStatus orvGetMaxCacheSizeB(int* pCacheSize) {
    if (!pCacheSize) return orvStsNullPtrErr;
    if (ownStatus != 1) {
        *pCacheSize = cacheSize;
        return ownStatus;
    }
    Orv64s top = orv_has_cpuid() ? orv_max_cpuid_input() : 0;
    if (!orv_has_cpuid() || top < 2 || !orv_is_GenuineVelta()) {
        ownStatus = orvStsNotSupportedCpu;
    } else if (top >= 4) {
        int32_t size = largest_deterministic_cache();
        ownStatus = size > 0 ? orvStsNoErr : orvStsUnknownCacheSize;  // status first, then size
        cacheSize = size > 0 ? size : 0;
    } else {
        int size = ownGetCacheSize(&tableCache[0][0]);
        cacheSize = size >= 0 ? size : 0;  // size first, then status
        ownStatus = size >= 0 ? orvStsNoErr : orvStsUnknownCacheSize;
    }
    *pCacheSize = cacheSize;
    return ownStatus;
}
