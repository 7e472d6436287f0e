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

template <class V>
long double exact_sum(const V& v, bool magnitudes = false) {
    long double s = 0;
    for (auto x : v) s += magnitudes ? std::fabs(static_cast<long double>(x)) : x;
    return s;
}

class SumTest : public ::testing::TestWithParam<orv::test::TierFn<decltype(orvsSum_64f)>> {};
class Sum32Test : public ::testing::TestWithParam<orv::test::TierFn<decltype(orvsSum_32f)>> {};
class MeanTest : public ::testing::TestWithParam<orv::test::TierFn<decltype(orvsMean_64f)>> {};

// Integer data sums exactly in any order. On mixed magnitudes the 128-bit
// body's order is modelled lane by lane; e9's order is its own, held to the
// error bound of any order and to reproducibility.
TEST_P(SumTest, ExactAndInTheTiersOrder) {
    each_case([&](int n, size_t off) {
        auto ints = small_ints<double>(n, n), v = mixed<double>(n, 1000 + n);
        Placed<double> a(ints, off), b(v, off), c(v, off);
        double s = -1, t, again;
        ASSERT_EQ(GetParam().fn(a.data(), n, &s), orvStsNoErr);
        ASSERT_EQ(s, static_cast<double>(exact_sum(ints)));
        GetParam().fn(b.data(), n, &t);
        if (GetParam().tier != "e9") {
            ASSERT_TRUE(same_bits(t, model_sum_64f(v, b.address())));
        } else {
            ASSERT_LE(std::fabs(t - exact_sum(v)), n * std::numeric_limits<double>::epsilon() * exact_sum(v, true));
            GetParam().fn(c.data(), n, &again);
            ASSERT_TRUE(same_bits(again, t));
        }
    });
    double x[2] = {1, 2}, keep = 7;
    EXPECT_EQ(GetParam().fn(nullptr, 0, &keep), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 2, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &keep), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, -5, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
}

TEST_P(MeanTest, IsTheTiersSumDividedOnce) {
    auto sums = orv::test::tiers_of<decltype(orvsSum_64f)>("orvsSum_64f");
    auto sum = std::find_if(sums.begin(), sums.end(), [&](auto& t) { return t.tier == GetParam().tier; });
    ASSERT_NE(sum, sums.end());
    each_case(
        [&](int n, size_t off) {
            Placed<double> a(mixed<double>(n, 77 + n), off);
            double s, m;
            sum->fn(a.data(), n, &s);
            ASSERT_EQ(GetParam().fn(a.data(), n, &m), orvStsNoErr);
            ASSERT_TRUE(same_bits(m, s / n));
        },
        {1, 2, 3, 7, 17, 33, 100, 1001});
    double two[2] = {1, 2}, m = 0, keep = 5;
    EXPECT_EQ(GetParam().fn(two, 2, &m), orvStsNoErr);
    EXPECT_EQ(m, 1.5);
    EXPECT_EQ(GetParam().fn(nullptr, 2, &keep), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(two, 0, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 5);
}

TEST_P(Sum32Test, ExactOnIntegersBothPaths) {
    each_case([&](int n, size_t off) {
        auto v = small_ints<float>(n, n);
        Placed<float> a(v, off);
        for (int hint : {0, 1, 2}) {
            float s = -1;
            ASSERT_EQ(GetParam().fn(a.data(), n, &s, hint), orvStsNoErr);
            ASSERT_EQ(s, static_cast<float>(exact_sum(v))) << "hint " << hint;
        }
    });
    float x[2] = {1, 2}, keep = 7;
    EXPECT_EQ(GetParam().fn(nullptr, 0, &keep, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 2, nullptr, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &keep, 1), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(x, -1, &keep, 0), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
}

// Fast and accurate orders at short lengths, and the join of the 32768-element
// single-precision blocks in double at long ones.
TEST_P(Sum32Test, FollowsTheTiersOrder) {
    auto check = [&](int n, size_t off) {
        auto v = mixed<float>(n, 2000 + n);
        Placed<float> a(v, off);
        float fast, accur;
        ASSERT_EQ(GetParam().fn(a.data(), n, &fast, orvAlgHintFast), orvStsNoErr);
        ASSERT_EQ(GetParam().fn(a.data(), n, &accur, 0), orvStsNoErr);
        if (GetParam().tier != "e9") {
            ASSERT_TRUE(same_bits(fast, static_cast<float>(model_sum_32f_fast(v, a.address()))));
            ASSERT_TRUE(same_bits(accur, static_cast<float>(model_sum_32f_accur(v, a.address()))));
            return;
        }
        // Single precision within a block of at most 32768 elements.
        long double e = exact_sum(v), scale = exact_sum(v, true);
        constexpr long double kF = std::numeric_limits<float>::epsilon(), kD = std::numeric_limits<double>::epsilon();
        EXPECT_LE(std::fabs(fast - e), std::min(n, 32768) * kF * scale + std::fabs(e) * kF);
        EXPECT_LE(std::fabs(accur - e), std::fabs(e) * kF + n * kD * scale);
    };
    each_case(check);
    each_case(check, {32767, 32768, 32769, 32771, 65536, 65537, 98304 + 13}, {0, 4, 8, 12, 1, 29});
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

ORV_INSTANTIATE_TIERS(SumTest, orvsSum_64f);
ORV_INSTANTIATE_TIERS(Sum32Test, orvsSum_32f);
ORV_INSTANTIATE_TIERS(MeanTest, orvsMean_64f);

}  // namespace
