// Sums and the mean: exact results on integer data at every sampled length
// and offset; the documented order of additions, bit for bit, on data whose
// sum depends on that order; the float block join; argument checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvs.h"
#include "support/tier_registry.h"
#include "vector/reduce_models.h"
#include "vector/reduce_testing.h"

namespace {

using namespace orv::test::reduce;
using Sum64 = orv::test::TierFn<decltype(orvsSum_64f)>;
using Sum32 = orv::test::TierFn<decltype(orvsSum_32f)>;
using Mean64 = orv::test::TierFn<decltype(orvsMean_64f)>;

long double exact_sum(const auto& v) {
    long double s = 0;
    for (auto x : v) s += x;
    return s;
}
long double abs_sum(const auto& v) {
    long double s = 0;
    for (auto x : v) s += std::fabs(static_cast<long double>(x));
    return s;
}

class SumTest : public ::testing::TestWithParam<Sum64> {};
class Sum32Test : public ::testing::TestWithParam<Sum32> {};
class MeanTest : public ::testing::TestWithParam<Mean64> {};

TEST_P(SumTest, ExactOnIntegersAtEveryLengthAndOffset) {
    for (int n : short_lengths()) {
        auto v = small_ints<double>(n, n);
        for (size_t off : offsets()) {
            Placed<double> a(v, off);
            double s = -1;
            ASSERT_EQ(GetParam().fn(a.data(), n, &s), orvStsNoErr);
            ASSERT_EQ(s, static_cast<double>(exact_sum(v))) << "len " << n << " offset " << off;
        }
    }
}

// The 128-bit body's order is modelled lane by lane; e9's order is its own,
// so it is held to the error bound of any order and to reproducibility.
TEST_P(SumTest, FollowsTheTiersOrder) {
    const bool modelled = GetParam().tier != "e9";
    for (int n : short_lengths()) {
        auto v = mixed<double>(n, 1000 + n);
        for (size_t off : offsets()) {
            Placed<double> a(v, off);
            double s;
            ASSERT_EQ(GetParam().fn(a.data(), n, &s), orvStsNoErr);
            if (modelled) {
                ASSERT_TRUE(same_bits(s, model_sum_64f(v, a.address()))) << "len " << n << " offset " << off;
            } else {
                long double bound = n * std::numeric_limits<double>::epsilon() * abs_sum(v);
                ASSERT_LE(std::fabs(s - exact_sum(v)), bound) << "len " << n << " offset " << off;
                Placed<double> b(v, off);
                double again;
                GetParam().fn(b.data(), n, &again);
                ASSERT_TRUE(same_bits(again, s));
            }
        }
    }
}

TEST_P(SumTest, ChecksPointersThenLength) {
    double x[2] = {1, 2}, s = 7;
    EXPECT_EQ(GetParam().fn(nullptr, 0, &s), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 2, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &s), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, -5, &s), orvStsSizeErr);
    EXPECT_EQ(s, 7);
}

TEST_P(MeanTest, IsTheTiersSumDividedOnce) {
    auto sum = orv::test::tiers_of<decltype(orvsSum_64f)>("orvsSum_64f");
    auto it = std::find_if(sum.begin(), sum.end(), [&](auto& t) { return t.tier == GetParam().tier; });
    ASSERT_NE(it, sum.end());
    for (int n : {1, 2, 3, 7, 17, 33, 100, 1001}) {
        auto v = mixed<double>(n, 77 + n);
        for (size_t off : offsets()) {
            Placed<double> a(v, off);
            double s, m;
            ASSERT_EQ(it->fn(a.data(), n, &s), orvStsNoErr);
            ASSERT_EQ(GetParam().fn(a.data(), n, &m), orvStsNoErr);
            ASSERT_TRUE(same_bits(m, s / n)) << "len " << n << " offset " << off;
        }
    }
    double two[2] = {1, 2}, m = 0, keep = 5;
    EXPECT_EQ(GetParam().fn(two, 2, &m), orvStsNoErr);
    EXPECT_EQ(m, 1.5);
    EXPECT_EQ(GetParam().fn(nullptr, 2, &keep), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(two, 0, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 5);
}

TEST_P(Sum32Test, ExactOnIntegersBothPaths) {
    for (int n : short_lengths()) {
        auto v = small_ints<float>(n, n);
        for (size_t off : offsets())
            for (int hint : {0, 1, 2}) {
                Placed<float> a(v, off);
                float s = -1;
                ASSERT_EQ(GetParam().fn(a.data(), n, &s, hint), orvStsNoErr);
                ASSERT_EQ(s, static_cast<float>(exact_sum(v))) << "len " << n << " offset " << off << " hint " << hint;
            }
    }
}

// Fast and accurate orders at short lengths, and the join of the 32768-element
// single-precision blocks in double at long ones.
TEST_P(Sum32Test, FollowsTheTiersOrder) {
    const bool modelled = GetParam().tier != "e9";
    std::vector<int> lengths = short_lengths();
    for (int n : {32767, 32768, 32769, 32771, 65536, 65537, 98304 + 13}) lengths.push_back(n);
    for (int n : lengths) {
        auto v = mixed<float>(n, 2000 + n);
        const std::vector<size_t> few = {0, 4, 8, 12, 1, 29};
        for (size_t off : n > 2000 ? few : offsets()) {
            Placed<float> a(v, off);
            float fast, accur;
            ASSERT_EQ(GetParam().fn(a.data(), n, &fast, orvAlgHintFast), orvStsNoErr);
            ASSERT_EQ(GetParam().fn(a.data(), n, &accur, 0), orvStsNoErr);
            if (modelled) {
                ASSERT_TRUE(same_bits(fast, static_cast<float>(model_sum_32f_fast(v, a.address()))))
                    << "len " << n << " offset " << off;
                ASSERT_TRUE(same_bits(accur, static_cast<float>(model_sum_32f_accur(v, a.address()))))
                    << "len " << n << " offset " << off;
            } else {
                // Single precision within a block of at most 32768 elements.
                long double e = exact_sum(v), scale = abs_sum(v);
                int per = n < 32768 ? n : 32768;
                EXPECT_LE(std::fabs(fast - e), per * std::numeric_limits<float>::epsilon() * scale + std::fabs(e) * 1e-7L)
                    << "len " << n << " offset " << off;
                EXPECT_LE(std::fabs(accur - e), std::fabs(e) * std::numeric_limits<float>::epsilon() +
                                                    n * std::numeric_limits<double>::epsilon() * scale)
                    << "len " << n << " offset " << off;
            }
        }
    }
}

TEST_P(Sum32Test, FastJoinsBlocksInDoubleAndOnlyHintOneIsFast) {
    std::vector<float> ones(32769, 1.0f);
    for (int hint : {1, 0, 2, -3}) {
        float s = 0;
        ASSERT_EQ(GetParam().fn(ones.data(), 32769, &s, hint), orvStsNoErr);
        EXPECT_EQ(s, 32769.0f) << "hint " << hint;
    }
    // 1e8, 1 and -1e8 in one lane: in float 1e8 + 1 is 1e8 and the 1 is
    // lost; summed in double it survives.
    alignas(32) float big[12] = {1e8f, 0, 0, 0, 1.0f, 0, 0, 0, -1e8f, 0, 0, 0};
    float fast, accur, other;
    GetParam().fn(big, 12, &fast, orvAlgHintFast);
    GetParam().fn(big, 12, &accur, orvAlgHintAccurate);
    GetParam().fn(big, 12, &other, 7);
    EXPECT_EQ(accur, 1.0f);
    EXPECT_EQ(other, 1.0f);
    EXPECT_NE(fast, accur);
}

TEST_P(Sum32Test, ChecksPointersThenLength) {
    float x[2] = {1, 2}, s = 7;
    EXPECT_EQ(GetParam().fn(nullptr, 0, &s, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 2, nullptr, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &s, 1), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, -1, &s, 0), orvStsSizeErr);
    EXPECT_EQ(s, 7);
}

ORV_INSTANTIATE_TIERS(SumTest, orvsSum_64f);
ORV_INSTANTIATE_TIERS(Sum32Test, orvsSum_32f);
ORV_INSTANTIATE_TIERS(MeanTest, orvsMean_64f);

}  // namespace
