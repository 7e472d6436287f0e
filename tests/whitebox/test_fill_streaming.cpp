// The size rules of the fills and copies over a scripted processor that
// reports its caches: the processor is asked only from each kernel's
// threshold on (bytes for Zero and Copy, elements for the 128-bit Set), and
// the non-temporal paths it opens give exact results.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fake_cpu.h"
#include "internal/orv_kernels.h"
#include "orvs.h"

namespace {

using orv::test::cpuid_calls;
using orv::test::FakeCpu;
using orv::test::use_cpu;

// The tuned vendor with a 512 KiB cache in the leaf-2 descriptors (one round,
// descriptor 0x43) and a 256 KiB data cache in leaf 4, one core.
void use_cpu_with_small_cache() {
    FakeCpu c;
    c.tuned_vendor(4).set(2, 0, {0x00430001u, 0, 0, 0}).set(4, 0, {0x21u, (7u << 22) | 63u, 511u, 0});
    use_cpu(c);
}

// A block of `bytes` at `offset` past a 64-byte boundary, with guard bytes on
// both sides that must survive.
class Block {
public:
    Block(size_t bytes, unsigned offset) : raw_(bytes + 256, kGuard), bytes_(bytes) {
        auto base = (reinterpret_cast<uintptr_t>(raw_.data()) + 127) & ~uintptr_t{63};
        p_ = reinterpret_cast<unsigned char*>(base) + offset;
    }
    unsigned char* data() const { return p_; }
    bool guards_intact() const {
        for (const unsigned char* q = raw_.data(); q < p_; ++q)
            if (*q != kGuard) return false;
        for (const unsigned char* q = p_ + bytes_; q < raw_.data() + raw_.size(); ++q)
            if (*q != kGuard) return false;
        return true;
    }

private:
    static constexpr unsigned char kGuard = 0xC3;
    std::vector<unsigned char> raw_;
    size_t bytes_;
    unsigned char* p_;
};

// CPUID queries made by one call.
template <class F>
long queries(F&& call) {
    use_cpu_with_small_cache();
    long before = cpuid_calls();
    call();
    return cpuid_calls() - before;
}

TEST(FillThresholds, ZeroAsksFromItsByteCount) {
    Block b(0x200001, 0);
    for (auto [zero, from] : {std::pair{&m7_orvsZero_8u, 0x80001}, {u8_orvsZero_8u, 0x80001}, {n8_orvsZero_8u, 0x80001},
                              {y8_orvsZero_8u, 0x80001}, {e9_orvsZero_8u, 0x200001}}) {
        EXPECT_EQ(queries([&] { zero(b.data(), from - 1); }), 0) << from;
        EXPECT_GT(queries([&] { zero(b.data(), from); }), 0) << from;
    }
}

TEST(FillThresholds, CopyAsksFromItsByteCount) {
    Block s(0x100001, 0), d(0x100001, 0);
    for (auto [copy, from] : {std::pair{&m7_orvsCopy_8u, 0x80000}, {u8_orvsCopy_8u, 0x100000},
                              {n8_orvsCopy_8u, 0x20001}, {y8_orvsCopy_8u, 0x100000}, {e9_orvsCopy_8u, 0x100001}}) {
        EXPECT_EQ(queries([&] { copy(s.data(), d.data(), from - 1); }), 0) << from;
        EXPECT_GT(queries([&] { copy(s.data(), d.data(), from); }), 0) << from;
    }
}

// A destination off 16 whose source lands on 16 after the first piece skips
// the size test: such a copy never streams.
TEST(FillThresholds, CopyAlignedByItsFirstPieceNeverAsks) {
    Block s(0x200000 + 16, 5), d(0x200000 + 16, 5);
    for (auto copy : {m7_orvsCopy_8u, u8_orvsCopy_8u, y8_orvsCopy_8u})
        EXPECT_EQ(queries([&] { copy(s.data(), d.data(), 0x200000); }), 0);
}

TEST(FillThresholds, SetAsksFromItsElementCount) {
    Block b(8 * 0x80001, 0);
    auto* d = reinterpret_cast<Orv64f*>(b.data());
    for (auto set : {m7_orvsSet_64f, u8_orvsSet_64f, y8_orvsSet_64f, e9_orvsSet_64f}) {
        EXPECT_EQ(queries([&] { set(1.0, d, 0x20000); }), 0);
        EXPECT_GT(queries([&] { set(1.0, d, 0x20001); }), 0);
    }
    auto* f = reinterpret_cast<Orv32f*>(b.data());
    for (auto set : {m7_orvsSet_32f, n8_orvsSet_32f, y8_orvsSet_32f}) {
        EXPECT_EQ(queries([&] { set(1.0f, f, 0x20000); }), 0);
        EXPECT_GT(queries([&] { set(1.0f, f, 0x20001); }), 0);
    }
    EXPECT_EQ(queries([&] { e9_orvsSet_32f(1.0f, f, 0x80000); }), 0);  // 2 MiB
    EXPECT_GT(queries([&] { e9_orvsSet_32f(1.0f, f, 0x80001); }), 0);
}

// With a small cache reported, large runs take the streaming paths.
TEST(FillStreaming, ZeroCopyAndSetAreExact) {
    const size_t n = 0x200000 + 37;
    std::vector<unsigned char> src(n + 64);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i * 131 + (i >> 9));
    use_cpu_with_small_cache();
    auto zeros = {m7_orvsZero_8u, u8_orvsZero_8u, n8_orvsZero_8u, y8_orvsZero_8u, e9_orvsZero_8u};
    for (unsigned off : {0u, 5u, 24u})
        for (auto zero : zeros) {
            Block d(n, off);
            std::memset(d.data(), 0x77, n);
            ASSERT_EQ(zero(d.data(), static_cast<int>(n)), orvStsNoErr);
            EXPECT_EQ(std::vector<unsigned char>(d.data(), d.data() + n), std::vector<unsigned char>(n, 0)) << off;
            EXPECT_TRUE(d.guards_intact());
        }
    auto copies = {m7_orvsCopy_8u, u8_orvsCopy_8u, n8_orvsCopy_8u, y8_orvsCopy_8u, e9_orvsCopy_8u};
    for (auto [so, dof] : {std::pair{0u, 0u}, {4u, 0u}, {9u, 3u}, {0u, 40u}})
        for (auto copy : copies) {
            Block s(n, so), d(n, dof);
            std::memcpy(s.data(), src.data(), n);
            ASSERT_EQ(copy(s.data(), d.data(), static_cast<int>(n)), orvStsNoErr);
            EXPECT_EQ(std::memcmp(d.data(), src.data(), n), 0) << so << "/" << dof;
            EXPECT_TRUE(d.guards_intact() && s.guards_intact());
        }
    auto sets = [](auto fns, auto val, int count, std::initializer_list<unsigned> offsets) {
        using T = decltype(val);
        for (unsigned off : offsets)
            for (auto set : fns) {
                Block d(sizeof(T) * count, off);
                ASSERT_EQ(set(val, reinterpret_cast<T*>(d.data()), count), orvStsNoErr);
                std::vector<T> got(count);
                std::memcpy(got.data(), d.data(), sizeof(T) * count);
                EXPECT_EQ(got, std::vector<T>(count, val)) << off;
                EXPECT_TRUE(d.guards_intact());
            }
    };
    sets(std::initializer_list{m7_orvsSet_64f, u8_orvsSet_64f, y8_orvsSet_64f, e9_orvsSet_64f}, -2.5, 300001, {0, 4, 3});
    sets(std::initializer_list{m7_orvsSet_32f, n8_orvsSet_32f, y8_orvsSet_32f, e9_orvsSet_32f}, 7.25f, 600002, {0, 2, 1});
}

}  // namespace
