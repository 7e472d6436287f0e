// The cache questions of the region copy and fill over a scripted processor:
// when each asks, and that the forms it chooses (copy: blocked or streaming
// by the leaf-2 descriptors; fill: streaming once the image reaches the
// cache) give the same bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fake_cpu.h"
#include "orvtiers.h"

namespace {

using orv::test::cpuid_calls;
using orv::test::FakeCpu;
using orv::test::use_cpu;

// The tuned vendor listing one cache in leaf 2 (descriptor 0x43: 512 KiB;
// 0xEC: 24 MiB) and a 256 KiB cache in leaf 4.
void use_cpu_with_cache(uint32_t descriptor) {
    FakeCpu c;
    c.tuned_vendor(4).set(2, 0, {descriptor << 16 | 1u, 0, 0, 0}).set(4, 0, {0x21u, (7u << 22) | 63u, 511u, 0});
    use_cpu(c);
}

template <class F>
long queries(F&& call) {
    use_cpu_with_cache(0x43);
    long before = cpuid_calls();
    call();
    return cpuid_calls() - before;
}

constexpr auto kCopies = {u8_orviCopy_32f_C1R, n8_orviCopy_32f_C1R, y8_orviCopy_32f_C1R, e9_orviCopy_32f_C1R};
constexpr auto kSets = {m7_orviSet_32f_C1R, n8_orviSet_32f_C1R, y8_orviSet_32f_C1R, e9_orviSet_32f_C1R};

// Dense images are one run; the cache is asked from a run of 1 MiB on (m7
// streams by the image's size alone and never asks).
TEST(RegionCache, CopyAsksFromARunOfOneMiB) {
    std::vector<float> a(1024 * 256 + 8), b(a.size());
    EXPECT_EQ(queries([&] { m7_orviCopy_32f_C1R(a.data(), 4096, b.data(), 4096, {1024, 256}); }), 0);
    for (auto copy : kCopies) {
        EXPECT_EQ(queries([&] { copy(a.data(), 4096, b.data(), 4096, {1024, 255}); }), 0);
        EXPECT_GT(queries([&] { copy(a.data(), 4096, b.data(), 4096, {1024, 256}); }), 0);
        // The same pixels in rows with slack: runs of 4 KiB, no question.
        EXPECT_EQ(queries([&] { copy(a.data(), 4100, b.data(), 4100, {1024, 255}); }), 0);
    }
}

// A 1.2 MB image takes more than half of 512 KiB (streaming) and less than
// half of 24 MiB (blocked); both forms copy the same bytes, from any start.
TEST(RegionCache, BlockedAndStreamingCopiesAgree) {
    const int w = 1000, h = 300;
    std::vector<uint32_t> src(w * h + 16), dst(src.size());
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint32_t>(i * 2654435761u);
    for (uint32_t descriptor : {0x43u, 0xECu})
        for (int shift : {0, 1, 3})
            for (auto copy : kCopies) {
                use_cpu_with_cache(descriptor);
                std::fill(dst.begin(), dst.end(), 0);
                auto* s = reinterpret_cast<const float*>(src.data() + shift);
                auto* d = reinterpret_cast<float*>(dst.data() + 2 * shift);
                ASSERT_EQ(copy(s, 4 * w, d, 4 * w, {w, h}), orvStsNoErr);
                EXPECT_EQ(std::memcmp(d, s, 4ul * w * h), 0) << descriptor << " " << shift;
                EXPECT_EQ(dst[2 * shift + w * h], 0u);
            }
}

// The fill asks only above 512 KiB of pixels and streams into an image of
// at least the cache's size (256 KiB by leaf 4).
TEST(RegionCache, SetAsksAboveHalfAMiBAndStreamsExactly) {
    std::vector<float> buf(257 * 512 + 64);
    for (auto set : kSets) {
        EXPECT_EQ(queries([&] { set(buf.data(), 1024, {256, 512}, 1.0f); }), 0);
        EXPECT_GT(queries([&] { set(buf.data(), 1024 + 4, {257, 511}, 1.0f); }), 0);
        for (int shift : {0, 1, 3}) {
            use_cpu_with_cache(0x43);
            std::fill(buf.begin(), buf.end(), 0.0f);
            ASSERT_EQ(set(buf.data() + shift, 4 * 257, {257, 511}, -3.5f), orvStsNoErr);
            for (size_t i = 0; i < buf.size(); ++i)
                ASSERT_EQ(buf[i], i >= size_t(shift) && i < size_t(shift) + 257 * 511 ? -3.5f : 0.0f) << i;
        }
    }
}

}  // namespace
