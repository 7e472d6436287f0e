// The aligned allocator over the replaceable allocator pointers, and the
// typed allocators of every tier with their 32-bit byte count.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "orvs.h"
#include "support/tier_registry.h"

namespace {

// Records what reaches the allocator hooks.
struct HookLog {
    std::vector<size_t> mallocs;
    std::vector<void*> returned, freed;
};
HookLog g_log;

void* logging_malloc(size_t n) {
    g_log.mallocs.push_back(n);
    void* p = std::malloc(n);
    g_log.returned.push_back(p);
    return p;
}
void logging_free(void* p) {
    g_log.freed.push_back(p);
    std::free(p);
}

class Memory : public ::testing::Test {
protected:
    void SetUp() override {
        g_log = {};
        saved_malloc_ = i_malloc;
        saved_free_ = i_free;
        i_malloc = logging_malloc;
        i_free = logging_free;
    }
    void TearDown() override {
        i_malloc = saved_malloc_;
        i_free = saved_free_;
    }

private:
    void* (*saved_malloc_)(size_t) = nullptr;
    void (*saved_free_)(void*) = nullptr;
};

TEST_F(Memory, BlockIsAlignedAndCarriesTheRawPointer) {
    for (int len : {1, 7, 32, 33, 1000}) {
        g_log = {};
        auto* p = static_cast<unsigned char*>(orvMalloc(len));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
        ASSERT_EQ(g_log.mallocs.size(), 1u);
        EXPECT_EQ(g_log.mallocs[0], static_cast<size_t>(len) + 40);
        void* raw = reinterpret_cast<void**>(p)[-1];
        EXPECT_EQ(raw, g_log.returned[0]);
        // The block lies inside the allocation, at least 8 bytes after raw.
        auto* r = static_cast<unsigned char*>(raw);
        EXPECT_GE(p - r, 8);
        EXPECT_LE(p + len, r + len + 40);
        orvFree(p);
        ASSERT_EQ(g_log.freed.size(), 1u);
        EXPECT_EQ(g_log.freed[0], raw);
    }
}

TEST_F(Memory, NonPositiveLengthsAndNullDoNotReachTheHooks) {
    EXPECT_EQ(orvMalloc(0), nullptr);
    EXPECT_EQ(orvMalloc(-1), nullptr);
    orvFree(nullptr);
    EXPECT_TRUE(g_log.mallocs.empty());
    EXPECT_TRUE(g_log.freed.empty());
}

TEST_F(Memory, OutOfMemoryIsNull) {
    i_malloc = [](size_t) -> void* { return nullptr; };
    EXPECT_EQ(orvMalloc(16), nullptr);
    EXPECT_EQ(orvsMalloc_64f(16), nullptr);
}

// The typed allocators of every tier: byte count len * size, truncated to
// the low 32 bits on the way into orvMalloc.
template <class Fn>
void check_typed(const char* name, size_t elem) {
    auto tiers = orv::test::tiers_of<Fn>(name);
    if (tiers.empty() && !orv::test::all_tiers_tested()) return;  // its tiers are left out
    ASSERT_FALSE(tiers.empty()) << name;
    for (const auto& t : tiers) {
        SCOPED_TRACE(std::string(name) + " " + t.tier);
        g_log = {};
        auto* p = t.fn(10);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
        EXPECT_EQ(g_log.mallocs.back(), 10 * elem + 40);
        orvsFree(p);
        EXPECT_EQ(t.fn(0), nullptr);
        EXPECT_EQ(t.fn(-5), nullptr);
        // A count whose low word is 0 or negative gives null; one whose low
        // word is small gives that small block.
        const int64_t wrap = int64_t{1} << 32;
        if (elem > 1) {
            EXPECT_EQ(t.fn(static_cast<int>(wrap / static_cast<int64_t>(elem))), nullptr);
            EXPECT_EQ(t.fn(static_cast<int>(wrap / static_cast<int64_t>(elem) / 2)), nullptr);
            g_log = {};
            p = t.fn(static_cast<int>(wrap / static_cast<int64_t>(elem) + 1));
            ASSERT_NE(p, nullptr);
            EXPECT_EQ(g_log.mallocs.back(), elem + 40);
            orvsFree(p);
        }
    }
}

TEST_F(Memory, TypedAllocatorsInEveryTier) {
    check_typed<decltype(orvsMalloc_8u)>("orvsMalloc_8u", 1);
    check_typed<decltype(orvsMalloc_32f)>("orvsMalloc_32f", 4);
    check_typed<decltype(orvsMalloc_64f)>("orvsMalloc_64f", 8);
}

TEST_F(Memory, FreeOfEveryTierReleasesTheRawPointer) {
    for (const auto& t : orv::test::tiers_of<decltype(orvsFree)>("orvsFree")) {
        SCOPED_TRACE(t.tier);
        g_log = {};
        void* p = orvMalloc(100);
        t.fn(p);
        ASSERT_EQ(g_log.freed.size(), 1u);
        EXPECT_EQ(g_log.freed[0], g_log.returned[0]);
        t.fn(nullptr);
        EXPECT_EQ(g_log.freed.size(), 1u);
    }
}

TEST(MemoryWords, VersionWordsAndDefaultHooks) {
    EXPECT_EQ(i_version, 1);
    EXPECT_EQ(i_min_version, 0);
    EXPECT_EQ(i_calloc, &calloc);
    EXPECT_EQ(i_realloc, &realloc);
}

}  // namespace
