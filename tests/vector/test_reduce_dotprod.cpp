// Dot products: exact results on integer data for every pair of sampled
// offsets; each tier's order bit for bit (the 128-bit body, which e9 keeps
// for doubles, and n8's scalar body); argument checks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvs.h"
#include "support/tier_registry.h"
#include "vector/reduce_models.h"
#include "vector/reduce_testing.h"

namespace {

using namespace orv::test::reduce;
using Dot64 = orv::test::TierFn<decltype(orvsDotProd_64f)>;
using Dot32 = orv::test::TierFn<decltype(orvsDotProd_32f64f)>;

template <class T>
long double exact_dot(const std::vector<T>& x, const std::vector<T>& y, long double* absSum = nullptr) {
    long double s = 0, a = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        long double p = static_cast<long double>(x[i]) * y[i];
        s += p;
        a += std::fabs(p);
    }
    if (absSum) *absSum = a;
    return s;
}

// Offsets of the two sources: equal, one behind the other by 8, one not a
// multiple of 8, both odd.
const std::vector<std::pair<size_t, size_t>>& offset_pairs() {
    static const std::vector<std::pair<size_t, size_t>> p = {
        {0, 0}, {8, 8}, {0, 8}, {8, 0}, {16, 24}, {0, 3}, {3, 0}, {8, 5}, {5, 8}, {1, 7}, {4, 12}, {31, 13}};
    return p;
}

class Dot64Test : public ::testing::TestWithParam<Dot64> {};
class Dot32Test : public ::testing::TestWithParam<Dot32> {};

TEST_P(Dot64Test, ExactOnIntegers) {
    for (int n : short_lengths()) {
        auto x = small_ints<double>(n, n), y = small_ints<double>(n, 500 + n);
        for (auto [ox, oy] : offset_pairs()) {
            Placed<double> a(x, ox), b(y, oy);
            double d = -1;
            ASSERT_EQ(GetParam().fn(a.data(), b.data(), n, &d), orvStsNoErr);
            ASSERT_EQ(d, static_cast<double>(exact_dot(x, y))) << "len " << n << " offsets " << ox << "," << oy;
        }
    }
}

TEST_P(Dot64Test, FollowsTheTiersOrder) {
    const bool scalar = GetParam().tier == "n8";
    for (int n : short_lengths()) {
        auto x = mixed<double>(n, 3000 + n), y = mixed<double>(n, 4000 + n);
        for (auto [ox, oy] : offset_pairs()) {
            Placed<double> a(x, ox), b(y, oy);
            double d;
            ASSERT_EQ(GetParam().fn(a.data(), b.data(), n, &d), orvStsNoErr);
            double want = scalar ? model_dot_scalar(x, y) : model_dot_64f(x, y, a.address(), b.address());
            ASSERT_TRUE(same_bits(d, want)) << "len " << n << " offsets " << ox << "," << oy;
        }
    }
}

TEST_P(Dot64Test, ChecksPointersThenLength) {
    double x[2] = {1, 2}, d = 7;
    EXPECT_EQ(GetParam().fn(nullptr, x, 0, &d), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, nullptr, 2, &d), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, x, 2, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, x, 0, &d), orvStsSizeErr);
    EXPECT_EQ(d, 7);
}

TEST_P(Dot32Test, ExactOnIntegers) {
    for (int n : short_lengths()) {
        auto x = small_ints<float>(n, n), y = small_ints<float>(n, 600 + n);
        for (auto [ox, oy] : offset_pairs()) {
            Placed<float> a(x, ox), b(y, oy);
            double d = -1;
            ASSERT_EQ(GetParam().fn(a.data(), b.data(), n, &d), orvStsNoErr);
            ASSERT_EQ(d, static_cast<double>(exact_dot(x, y))) << "len " << n << " offsets " << ox << "," << oy;
        }
    }
}

// Float products are exact in double, so only the order of the sum matters.
TEST_P(Dot32Test, FollowsTheTiersOrder) {
    const std::string& tier = GetParam().tier;
    for (int n : short_lengths()) {
        auto x = mixed<float>(n, 5000 + n), y = mixed<float>(n, 6000 + n);
        for (auto [ox, oy] : offset_pairs()) {
            Placed<float> a(x, ox), b(y, oy);
            double d;
            ASSERT_EQ(GetParam().fn(a.data(), b.data(), n, &d), orvStsNoErr);
            if (tier == "e9") {
                long double absSum, e = exact_dot(x, y, &absSum);
                ASSERT_LE(std::fabs(d - e), n * std::numeric_limits<double>::epsilon() * absSum) << "len " << n;
            } else {
                double want = tier == "n8" ? model_dot_scalar(x, y) : model_dot_32f64f(x, y);
                ASSERT_TRUE(same_bits(d, want)) << "len " << n << " offsets " << ox << "," << oy;
            }
        }
    }
}

TEST_P(Dot32Test, ChecksPointersThenLength) {
    float x[2] = {1, 2};
    double d = 7;
    EXPECT_EQ(GetParam().fn(nullptr, x, 0, &d), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, nullptr, 2, &d), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, x, 2, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, x, -1, &d), orvStsSizeErr);
    EXPECT_EQ(d, 7);
}

ORV_INSTANTIATE_TIERS(Dot64Test, orvsDotProd_64f);
ORV_INSTANTIATE_TIERS(Dot32Test, orvsDotProd_32f64f);

}  // namespace
