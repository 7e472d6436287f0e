// One complex specification shared by four threads, each with its own arrays
// and work buffer (one of them passes none and allocates per call): every
// result equals the single-threaded one. Built also under ThreadSanitizer,
// which then checks that a transform writes nothing the threads share.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fft/fft_testing.h"
#include "orvsfft.h"

namespace orv::test {
namespace {

using Fwd = decltype(orvsFFTFwd_CToC_32fc);
class SharedSpec : public ::testing::TestWithParam<TierFn<Fwd>> {};

TEST_P(SharedSpec, FourThreadsMatchOneThread) {
    const std::string& tier = GetParam().tier;
    Fwd* const transforms[2] = {GetParam().fn, ORV_TIER_FN(orvsFFTInv_CToC_32fc, tier)};
    auto* initAlloc = ORV_TIER_FN(orvsFFTInitAlloc_C_32fc, tier);
    auto* getBufSize = ORV_TIER_FN(orvsFFTGetBufSize_C_32fc, tier);
    auto* freeSpec = ORV_TIER_FN(orvsFFTFree_C_32fc, tier);
    ASSERT_TRUE(transforms[1] && initAlloc && getBufSize && freeSpec);

    constexpr int kThreads = 4, kRounds = 3;
    // A small kernel, the fused core, and the top medium order of m7 and n8
    // (bit reversal then the plain core).
    for (int order : {4, 11, tier == "m7" ? 16 : tier == "n8" ? 15 : 13}) {
        const size_t n = size_t{1} << order;
        OrvFFTSpec_C_32fc* spec = nullptr;
        ASSERT_EQ(orvStsNoErr, initAlloc(&spec, order, OrvFftDivSqrt, 0));
        int bufSize = 0;
        ASSERT_EQ(orvStsNoErr, getBufSize(spec, &bufSize));

        // Inputs per thread and their single-threaded results.
        std::vector<std::vector<Orv32fc>> in(kThreads), want[2];
        std::mt19937 rng{static_cast<unsigned>(order)};
        std::uniform_real_distribution<float> u(-1, 1);
        for (auto& v : in) {
            v.resize(n);
            for (auto& c : v) c = {u(rng), u(rng)};
        }
        for (int dir = 0; dir < 2; ++dir)
            for (int t = 0; t < kThreads; ++t) {
                want[dir].emplace_back(n);
                ASSERT_EQ(orvStsNoErr, transforms[dir](in[t].data(), want[dir][t].data(), spec, nullptr));
            }

        std::vector<int> mismatches(kThreads, 0);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                std::vector<Orv8u> buf(size_t(bufSize) + 1);
                std::vector<Orv32fc> out(n), inPlace(n);
                Orv8u* b = t == kThreads - 1 ? nullptr : buf.data();
                for (int r = 0; r < kRounds; ++r)
                    for (int dir = 0; dir < 2; ++dir) {
                        inPlace = in[t];
                        if (transforms[dir](in[t].data(), out.data(), spec, b) != orvStsNoErr ||
                            transforms[dir](inPlace.data(), inPlace.data(), spec, b) != orvStsNoErr ||
                            !same_bits(want[dir][t], out.data()) || !same_bits(want[dir][t], inPlace.data()))
                            ++mismatches[t];
                    }
            });
        for (auto& th : threads) th.join();
        for (int t = 0; t < kThreads; ++t) EXPECT_EQ(0, mismatches[t]) << tier << " order " << order << " thread " << t;
        EXPECT_EQ(orvStsNoErr, freeSpec(spec));
    }
}

ORV_INSTANTIATE_TIERS(SharedSpec, orvsFFTFwd_CToC_32fc);

}  // namespace
}  // namespace orv::test
