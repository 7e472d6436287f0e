// The cache-sized routes of the transposes over a scripted processor with a
// 256 KiB cache: the cache is asked exactly when a route depends on it (the
// blocked route's shape and alignment on e9, y8, u8; a smaller side of 257 or
// more on m7), and the blocked and streaming routes it opens, partial blocks
// included, move every word exactly. An unknown cache opens neither.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "fake_cpu.h"
#include "orvi.h"

namespace {

using orv::test::cpuid_calls;
using orv::test::FakeCpu;

void use_cpu(bool knownCache) {
    FakeCpu c;
    if (knownCache) c.tuned_vendor(4).set(4, 0, {0x21u, (7u << 22) | 63u, 511u, 0});  // 8 x 64 x 512 bytes
    else c.other_vendor();
    orv::test::use_cpu(c);
}

// Transposes a w x h image held `srcAt` bytes past a 64-byte boundary into
// one at `dstAt`, rows padded to 64 bytes; returns the CPUID queries made and
// checks the result and the slack past each destination row.
long run(decltype(orviTranspose_32s_C1R)* fn, int w, int h, int srcAt, int dstAt, bool knownCache) {
    const int ss = (4 * w + 63) / 64 * 64, ds = (4 * h + 63) / 64 * 64 + 64;
    std::vector<unsigned char> sb(size_t(ss) * h + 128), db(size_t(ds) * w + 128, 0xA5);
    auto at = [](std::vector<unsigned char>& b, int off) {
        return b.data() + ((64 - reinterpret_cast<uintptr_t>(b.data()) % 64) % 64) + off;
    };
    unsigned char *s = at(sb, srcAt), *d = at(db, dstAt);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const uint32_t v = y % 5 == 0 ? 0x7F800001u + x : uint32_t(y) << 16 | x;  // NaN payloads too
            std::memcpy(s + size_t(ss) * y + 4 * x, &v, 4);
        }
    use_cpu(knownCache);
    const long before = cpuid_calls();
    EXPECT_EQ(fn(reinterpret_cast<const Orv32s*>(s), ss, reinterpret_cast<Orv32s*>(d), ds, {w, h}), orvStsNoErr);
    const long asked = cpuid_calls() - before;
    long bad = 0;
    for (int x = 0; x < w; ++x) {
        for (int y = 0; y < h; ++y) bad += std::memcmp(d + size_t(ds) * x + 4 * y, s + size_t(ss) * y + 4 * x, 4) != 0;
        for (int b = 4 * h; b < ds; ++b) bad += d[size_t(ds) * x + b] != 0xA5;
    }
    EXPECT_EQ(bad, 0) << w << "x" << h << " at " << srcAt << "/" << dstAt;
    return asked;
}

// Whether the call asks for the cache: the blocked candidates on u8, y8, e9
// (width over 512 and a multiple of 4, height of 16, source rows on 16 bytes,
// destination rows on 64), a smaller side of 257 or more on m7.
struct Route {
    decltype(orviTranspose_32s_C1R)* fn;
    int w, h, srcAt, dstAt;
    bool knownCache, asks;
};
const Route kRoutes[] = {
    {e9_orviTranspose_32s_C1R, 516, 64, 16, 0, true, true},    // 264 KiB: blocked
    {y8_orviTranspose_32s_C1R, 644, 144, 0, 0, true, true},    // blocked, partial blocks on both edges
    {u8_orviTranspose_32s_C1R, 516, 64, 0, 0, true, true},     // blocked
    {e9_orviTranspose_32s_C1R, 516, 16, 0, 0, true, true},     // within the cache: bands
    {y8_orviTranspose_32s_C1R, 644, 144, 0, 0, false, true},   // unknown cache: bands
    {e9_orviTranspose_32s_C1R, 512, 64, 0, 0, true, false},    // not wider than 512
    {u8_orviTranspose_32s_C1R, 516, 72, 0, 0, true, false},    // height not a multiple of 16
    {e9_orviTranspose_32s_C1R, 518, 64, 0, 0, true, false},    // width not a multiple of 4
    {y8_orviTranspose_32s_C1R, 516, 64, 8, 0, true, false},    // source off 16
    {e9_orviTranspose_32s_C1R, 516, 64, 0, 32, true, false},   // destination off 64
    {m7_orviTranspose_32s_C1R, 300, 257, 4, 4, true, true},    // 602 KiB: streaming, unaligned
    {m7_orviTranspose_32s_C1R, 260, 260, 0, 0, true, true},    // streaming, aligned
    {m7_orviTranspose_32s_C1R, 300, 257, 0, 0, false, true},   // unknown cache: plain
    {m7_orviTranspose_32s_C1R, 2000, 256, 0, 0, true, false},  // smaller side under 257
};

TEST(TransposeRoutes, CacheAskedOnlyWhereItDecides) {
    for (const auto& r : kRoutes)
        EXPECT_EQ(run(r.fn, r.w, r.h, r.srcAt, r.dstAt, r.knownCache) > 0, r.asks) << r.w << "x" << r.h;
}

}  // namespace
