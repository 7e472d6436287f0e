// Zero, Set and Copy on every tier: statuses, exact contents at every short
// length and around each size threshold, every start alignment mod 32 with
// guard pages on both sides, and the copy direction for arrays 4096 apart.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include "orvs.h"
#include "placed.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::Placed;
using orv::test::tiers_of;

// Byte counts at which some tier changes path: the n8 long path, the cache
// questions (128 KiB, 512 KiB, 1 MiB) and the e9 kernel splits (1 MiB copy,
// 2 MiB fills).
constexpr long kByteThresholds[] = {128, 256, 0x20000, 0x80001, 0x100000, 0x200000};

// Element counts for one element size: 1..100, then each threshold -1, 0, +1.
std::vector<long> lengths_for(long elemSize) {
    auto v = orv::test::short_lengths();
    for (long t : kByteThresholds)
        for (long d = -1; d <= 1; ++d) v.push_back(t / elemSize + d);
    return v;
}

// Alignments tried at one length. Short runs take eight, a + 4k for
// a = len mod 4: over the lengths every class mod 32 comes with both guard
// placements. Longer runs take a sample.
std::vector<unsigned> aligns_for(long n) {
    if (n <= 100) {
        std::vector<unsigned> v;
        for (unsigned k = 0; k < 8; ++k) v.push_back((n + 4 * k) % 32);
        return v;
    }
    if (n < 0x8000) return {0, 4, 8, 13, 16, 28};
    return {0, 13};
}

// Random bytes, made once: the copies read their sources from here.
const std::vector<unsigned char>& noise() {
    static const std::vector<unsigned char> v = [] {
        std::vector<unsigned char> b(0x200000 + 64);
        std::mt19937 rng(3);
        for (auto& x : b) x = static_cast<unsigned char>(rng());
        return b;
    }();
    return v;
}

std::string where(const std::string& tier, long n, unsigned a, unsigned b = 0) {
    return tier + " len " + std::to_string(n) + " align " + std::to_string(a) + "/" + std::to_string(b);
}

// Runs fill(tier, dst, n) over the lengths and alignments, each placement
// serving every tier in turn, and expects every element to hold `want`.
template <class T, class Bits, class Fill>
void fill_case(const std::string& name, Bits want, std::vector<long> lengths, Fill fill) {
    for (long n : lengths) {
        unsigned k = 0;
        for (unsigned a : aligns_for(n)) {
            Placed dst(n * sizeof(T), orv::test::flush_of(n + k++), a);
            for (const auto& tier : {"m7", "u8", "n8", "y8", "e9"}) {
                SCOPED_TRACE(name + " " + where(tier, n, a));
                std::memset(dst.bytes(), 0xA5, n * sizeof(T));
                OrvStatus st = orvStsNoErr;
                if (!fill(tier, dst.as<T>(), static_cast<int>(n), st)) continue;  // no such tier
                ASSERT_EQ(st, orvStsNoErr);
                long bad = 0;
                for (Bits got; bad < n; ++bad)
                    if (std::memcpy(&got, dst.bytes() + bad * sizeof(T), sizeof got), got != want) break;
                ASSERT_EQ(bad, n) << "first wrong element";
                ASSERT_TRUE(dst.canary_intact());
            }
        }
    }
}

// Calls the named tier's variant of a function if the lists export it.
template <class Fn, class... A>
bool call_tier(const std::string& name, const std::string& tier, OrvStatus& st, A... args) {
    for (auto [t, fn] : tiers_of<Fn>(name))
        if (t == tier) return st = fn(args...), true;
    return false;
}

TEST(Zero, EveryLengthAlignmentAndTier) {
    auto zero = [](const char* name, auto elem) {
        using T = decltype(elem);
        using Bits = std::conditional_t<sizeof(T) == 1, uint8_t, std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>>;
        fill_case<T>(name, Bits{0}, lengths_for(sizeof(T)), [&](const std::string& tier, T* d, int n, OrvStatus& st) {
            return call_tier<OrvStatus(T*, int)>(name, tier, st, d, n);
        });
    };
    zero("orvsZero_8u", Orv8u{});
    zero("orvsZero_32f", Orv32f{});
    zero("orvsZero_64f", Orv64f{});
}

// Bits with distinct bytes, so a fill that loses the pattern's phase on a
// shifted boundary shows; the 128-bit fills change path above 131072
// elements, counted after a shifted start has taken one away.
TEST(Set, PatternKeepsItsPhaseAtEveryAlignment) {
    auto set = [](const char* name, auto bits) {
        using Bits = decltype(bits);
        using T = std::conditional_t<sizeof(Bits) == 8, Orv64f, Orv32f>;
        auto lengths = lengths_for(sizeof(T));
        lengths.insert(lengths.end(), {131072, 131073, 131074});
        fill_case<T>(name, bits, lengths, [&](const std::string& tier, T* d, int n, OrvStatus& st) {
            return call_tier<OrvStatus(T, T*, int)>(name, tier, st, std::bit_cast<T>(bits), d, n);
        });
    };
    set("orvsSet_64f", uint64_t{0x0102030405060708});
    set("orvsSet_32f", uint32_t{0x01020304});
}

TEST(Set, SpecialValuesArriveBitForBit) {
    const Orv64f d[] = {-0.0, std::bit_cast<Orv64f>(uint64_t{0x7FF0000000000123}), -INFINITY};
    const Orv32f f[] = {-0.0f, std::bit_cast<Orv32f>(uint32_t{0x7F800123})};
    for (auto [tier, fn] : tiers_of<decltype(orvsSet_64f)>("orvsSet_64f"))
        for (Orv64f v : d) {
            Orv64f buf[5] = {};
            ASSERT_EQ(fn(v, buf + 1, 3), orvStsNoErr);
            EXPECT_EQ(std::bit_cast<uint64_t>(buf[2]), std::bit_cast<uint64_t>(v)) << tier;
            EXPECT_EQ(std::bit_cast<uint64_t>(buf[4]), 0u) << tier;
        }
    for (auto [tier, fn] : tiers_of<decltype(orvsSet_32f)>("orvsSet_32f"))
        for (Orv32f v : f) {
            Orv32f buf[5] = {};
            ASSERT_EQ(fn(v, buf + 1, 3), orvStsNoErr);
            EXPECT_EQ(std::bit_cast<uint32_t>(buf[3]), std::bit_cast<uint32_t>(v)) << tier;
            EXPECT_EQ(std::bit_cast<uint32_t>(buf[0]), 0u) << tier;
        }
}

template <class T>
void copy_case(const std::string& name) {
    using Fn = OrvStatus(const T*, T*, int);
    std::mt19937 rng(7);
    const auto tiers = tiers_of<Fn>(name);
    for (long n : lengths_for(sizeof(T))) {
        const long bytes = n * sizeof(T);
        // Source and destination alignments: a sample of pairs, including
        // equal ones (the aligned loops) and 4-byte shifts (joined blocks).
        std::vector<std::pair<unsigned, unsigned>> pairs = {{0, 0}, {4, 0}, {13, 8}};
        if (n <= 100)
            for (auto p : {std::pair{8u, 0u}, {12u, 0u}, {rng() % 32, rng() % 32}, {rng() % 32, rng() % 32}})
                pairs.push_back(p);
        for (auto [as, ad] : pairs) {
            Flush flush = orv::test::flush_of(as + ad + n + rng());
            Placed src(bytes, flush, as), dst(bytes, flush, ad);
            std::memcpy(src.bytes(), noise().data() + rng() % 64, bytes);
            for (auto [tier, fn] : tiers) {
                SCOPED_TRACE(name + " " + where(tier, n, as, ad));
                std::memset(dst.bytes(), 0xA5, bytes);
                ASSERT_EQ(fn(src.as<T>(), dst.as<T>(), static_cast<int>(n)), orvStsNoErr);
                ASSERT_EQ(std::memcmp(src.bytes(), dst.bytes(), bytes), 0);
                ASSERT_TRUE(src.canary_intact() && dst.canary_intact());
            }
        }
    }
}

TEST(Copy, EveryLengthAlignmentPairAndTier) {
    copy_case<Orv8u>("orvsCopy_8u");
    copy_case<Orv32f>("orvsCopy_32f");
    copy_case<Orv64f>("orvsCopy_64f");
}

// An exact alias leaves the data as it was, on every path.
TEST(Copy, OntoItselfKeepsTheData) {
    std::vector<unsigned char> ref(300000);
    for (size_t i = 0; i < ref.size(); ++i) ref[i] = static_cast<unsigned char>(i * 37 + 11);
    for (auto [tier, fn] : tiers_of<decltype(orvsCopy_8u)>("orvsCopy_8u"))
        for (int n : {1, 63, 64, 100, 1000, 299990}) {
            auto buf = ref;
            ASSERT_EQ(fn(buf.data() + 3, buf.data() + 3, n), orvStsNoErr);
            EXPECT_EQ(buf, ref) << tier << " " << n;
        }
}

// u8 and y8 copy aligned arrays whose addresses agree in their low 12 bits
// from the end backward; with the destination 4096 bytes above the source
// that is what keeps an overlapping copy intact.
TEST(Copy, ArraysFourKiBApartRunBackwardOnU8AndY8) {
    for (auto [tier, fn] : tiers_of<decltype(orvsCopy_8u)>("orvsCopy_8u")) {
        if (tier != "u8" && tier != "y8") continue;
        for (int n : {4096 + 64, 8192, 8192 + 45}) {
            Placed buf(4096 + n, Flush::End, 0);
            auto* p = buf.bytes();
            ASSERT_EQ(reinterpret_cast<uintptr_t>(p) % 16, 0u);
            for (int i = 0; i < 4096 + n; ++i) p[i] = static_cast<unsigned char>(i * 7 + i / 251);
            std::vector<unsigned char> want(p, p + 4096 + n);
            std::memmove(want.data() + 4096, want.data(), n);
            ASSERT_EQ(fn(p, p + 4096, n), orvStsNoErr);
            EXPECT_EQ(0, std::memcmp(p, want.data(), 4096 + n)) << tier << " " << n;
        }
    }
}

// Pointers first (any null gives -8, whatever len), then len < 1 gives -6;
// nothing is written either way.
TEST(FillChecks, NullPointersThenLength) {
    Orv64f d[2] = {1.5, 2.5};
    for (auto [t, fn] : tiers_of<decltype(orvsZero_64f)>("orvsZero_64f"))
        EXPECT_TRUE(fn(nullptr, 0) == orvStsNullPtrErr && fn(d, 0) == orvStsSizeErr && fn(d, -3) == orvStsSizeErr) << t;
    for (auto [t, fn] : tiers_of<decltype(orvsSet_64f)>("orvsSet_64f"))
        EXPECT_TRUE(fn(0.0, nullptr, -1) == orvStsNullPtrErr && fn(0.0, d, 0) == orvStsSizeErr) << t;
    for (auto [t, fn] : tiers_of<decltype(orvsCopy_64f)>("orvsCopy_64f"))
        EXPECT_TRUE(fn(nullptr, d, 0) == orvStsNullPtrErr && fn(d, nullptr, 0) == orvStsNullPtrErr &&
                    fn(d + 1, d, -7) == orvStsSizeErr) << t;
    for (auto [t, fn] : tiers_of<decltype(orvsZero_8u)>("orvsZero_8u")) EXPECT_EQ(fn(nullptr, 1), orvStsNullPtrErr);
    for (auto [t, fn] : tiers_of<decltype(orvsSet_32f)>("orvsSet_32f")) EXPECT_EQ(fn(1.f, nullptr, 1), orvStsNullPtrErr);
    for (auto [t, fn] : tiers_of<decltype(orvsCopy_8u)>("orvsCopy_8u")) EXPECT_EQ(fn(nullptr, nullptr, 0), orvStsNullPtrErr);
    EXPECT_TRUE(d[0] == 1.5 && d[1] == 2.5);
}

// Every stub reaches a tier that does the work.
TEST(FillStubs, CallThroughTheTables) {
    Orv64f d[3] = {1, 2, 3}, s[3] = {4, 5, 6};
    Orv32f f[3] = {1, 2, 3}, g[3] = {7, 8, 9};
    EXPECT_EQ(orvsZero_64f(d, 1), orvStsNoErr);
    EXPECT_EQ(orvsSet_64f(9.0, d + 1, 1), orvStsNoErr);
    EXPECT_EQ(orvsCopy_64f(s + 2, d + 2, 1), orvStsNoErr);
    EXPECT_EQ(orvsZero_32f(f, 1), orvStsNoErr);
    EXPECT_EQ(orvsSet_32f(5.f, f + 1, 1), orvStsNoErr);
    EXPECT_EQ(orvsCopy_32f(g + 2, f + 2, 1), orvStsNoErr);
    const Orv64f wantD[3] = {0, 9, 6};
    const Orv32f wantF[3] = {0, 5, 9};
    EXPECT_EQ(std::memcmp(d, wantD, sizeof d), 0);
    EXPECT_EQ(std::memcmp(f, wantF, sizeof f), 0);
}

}  // namespace
