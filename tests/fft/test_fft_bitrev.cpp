// Bit-reversal kernels of every tier against a plain reversal of the index
// bits: both table forms, in place and out of place, every order 0..16 (below
// 2 with no table), element pointers at several misalignments, data and
// table against guard pages, the source of an out-of-place call untouched.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "fft/fft_testing.h"
#include "orvsfftk.h"

namespace orv::test {
namespace {

// One kernel in a uniform shape; in-place kernels ignore src.
using Run = std::function<void(const void* src, void* dst, int len, const Orv32u* tab)>;
struct Kernel {
    std::string name, tier;
    size_t elem;
    bool norm;
    Run run;
};

template <class S, class D>
Run wrap(void (*fn)(const S*, D*, int, const Orv32u*)) {
    return [fn](const void* s, void* d, int n, const Orv32u* t) { fn(static_cast<const S*>(s), static_cast<D*>(d), n, t); };
}
template <class D>
Run wrap(void (*fn)(D*, int, const Orv32u*)) {
    return [fn](const void*, void* d, int n, const Orv32u* t) { fn(static_cast<D*>(d), n, t); };
}

template <class Fn>
int add(std::vector<Kernel>& v, const char* name, size_t elem, bool norm) {
    for (const auto& t : tiers_of<Fn>(name)) v.push_back({name, t.tier, elem, norm, wrap(t.fn)});
    return 0;
}

std::vector<Kernel> all_kernels() {
    std::vector<Kernel> v;
#define ORV_BITREV(name, elem, norm) add<decltype(name)>(v, #name, elem, norm)
    ORV_BITREV(orvs_BitRev1_4, 4, false), ORV_BITREV(orvs_BitRev2_4, 4, false);
    ORV_BITREV(orvs_BitRev1_8, 8, false), ORV_BITREV(orvs_BitRev2_8, 8, false);
    ORV_BITREV(orvs_BitRev1_16, 16, false), ORV_BITREV(orvs_BitRev2_16, 16, false);
    ORV_BITREV(orvs_BitRev1_S, 4, true), ORV_BITREV(orvs_BitRev2_S, 4, true);
    ORV_BITREV(orvs_BitRev1_C, 8, true), ORV_BITREV(orvs_BitRev2_C, 8, true);
    ORV_BITREV(orvs_BitRev1_D, 8, true), ORV_BITREV(orvs_BitRev2_D, 8, true);
    ORV_BITREV(orvs_BitRev1_Z, 16, true), ORV_BITREV(orvs_BitRev2_Z, 16, true);
    ORV_BITREV(orvs_sBitRev1_Blk, 4, false), ORV_BITREV(orvs_cBitRev1_Blk, 8, false);
    ORV_BITREV(orvs_dBitRev1_Blk, 8, false), ORV_BITREV(orvs_zBitRev1_Blk, 16, false);
#undef ORV_BITREV
    return v;
}

class BitRev : public ::testing::TestWithParam<Kernel> {};

TEST_P(BitRev, MatchesIndexReversal) {
    const Kernel& k = GetParam();
    const bool inPlace = k.name.find("BitRev1") != std::string::npos;
    const size_t e = k.elem;
    unsigned trial = 0;
    for (int order = 0; order <= 16; ++order) {
        const size_t n = size_t{1} << order, bytes = n * e;
        const auto tabv = order < 2 ? std::vector<Orv32u>(1) : k.norm ? norm_table(order) : swap_list(order);
        const PlacedCopy<Orv32u> tab(tabv.data(), tabv.size(), Flush::End, 0);
        // Element i carries i in its first four bytes and noise in the rest.
        std::vector<unsigned char> src(bytes), want(bytes), junk(bytes, 0xEE);
        std::mt19937 rng(static_cast<unsigned>(order * 131 + e));
        for (auto& b : src) b = static_cast<unsigned char>(rng());
        for (std::uint32_t i = 0; i < n; ++i) std::memcpy(&src[i * e], &i, 4);
        for (size_t i = 0; i < n; ++i) std::memcpy(&want[i * e], &src[rev_bits(unsigned(i), order) * e], e);
        for (unsigned align : {0u, 4u, 8u, 3u}) {
            const Flush f = flush_of(trial++);
            SCOPED_TRACE(k.tier + " " + k.name + " order " + std::to_string(order) + " align " + std::to_string(align));
            PlacedCopy<unsigned char> in(src.data(), bytes, f == Flush::End ? Flush::Start : Flush::End, (align + 4) % 32);
            PlacedCopy<unsigned char> dst(inPlace ? src.data() : junk.data(), bytes, f, align);
            k.run(in.p(), dst.p(), int(n), order < 2 ? nullptr : tab.p());
            ASSERT_TRUE(same_bits(src, in.p()) && in.canary_intact() && dst.canary_intact()) << "source or guard";
            ASSERT_TRUE(same_bits(want, dst.p()));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, BitRev, ::testing::ValuesIn(all_kernels()),
                         [](const auto& info) { return info.param.name + "_" + info.param.tier; });

}  // namespace
}  // namespace orv::test
