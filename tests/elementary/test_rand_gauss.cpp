// The Gaussian generator on every tier: the sequence against an independent
// model with the pairs each length makes, bit-identical output across tiers,
// and the distribution of 10^6 deviates.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "elementary/fp_util.h"
#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

class Gauss : public ::testing::TestWithParam<TierFn<decltype(orvsRandGauss_Direct_64f)>> {};
ORV_INSTANTIATE_TIERS(Gauss, orvsRandGauss_Direct_64f);

// The source in sequence terms: s[n] = s[n-2] - s[n-3] + c[n-1], less 18 and
// with a borrow where negative, plus a congruential sequence.
struct Model {
    std::vector<uint32_t> s;  // oldest first
    int c = -1;
    uint32_t l = 1131199209;

    explicit Model(uint32_t seed)
        : s{(seed * 69069u + 1013904243u) * 69069u + 1013904243u, seed * 69069u + 1013904243u, seed} {}
    double term() {
        const size_t n = s.size();
        const int32_t t = static_cast<int32_t>(s[n - 2] - s[n - 3] + c);
        c = t < 0 ? -1 : 0;
        s.push_back(static_cast<uint32_t>(t) - (t < 0 ? 18 : 0));
        l = l * 69069u + 1013904243u;
        return static_cast<int32_t>(s.back() + l) * 0x1.ffffffffffd09p-32;
    }
    // The next pair inside the unit circle, and its factor.
    double pair(double& u1, double& u2) {
        for (;;) {
            u1 = term();
            u2 = term();
            const double r = u1 * u1 + u2 * u2;
            if (r < 1.0 && r != 0.0) return std::sqrt(-2.0 * std::log(r) / r);
        }
    }
};

// Each call makes one pair more than it writes in full: the seed that comes
// back is the newest term after that pair.
TEST_P(Gauss, FollowsTheModelPairByPair) {
    for (uint32_t seed : {0u, 1u, 0x80000000u, 0xFFFFFFFFu, 123456789u})
        for (int len : {1, 2, 3, 10}) {
            SCOPED_TRACE(testing::Message() << seed << " len " << len);
            Model m(seed);
            std::vector<double> want;
            double u1, u2, f = m.pair(u1, u2);
            for (; static_cast<int>(want.size()) + 1 < len; f = m.pair(u1, u2))
                want.insert(want.end(), {u2 * 2.0 * f + 3.0, u1 * 2.0 * f + 3.0});
            if (len % 2) want.push_back(u2 * 2.0 * f + 3.0);
            std::vector<double> y(len);
            unsigned s = seed;
            ASSERT_EQ(GetParam().fn(y.data(), len, 3.0, 2.0, &s), orvStsNoErr);
            EXPECT_EQ(s, m.s.back());
            for (int i = 0; i < len; ++i) EXPECT_NEAR(y[i], want[i], 1e-12) << i;
        }
}

TEST_P(Gauss, SameBitsOnEveryTierAndForTheShorterEvenCall) {
    std::vector<double> ref(1001), y(1001), shorter(1000);
    unsigned s0 = 42, s1 = 42, s2 = 42;
    tiers_of<decltype(orvsRandGauss_Direct_64f)>("orvsRandGauss_Direct_64f").front().fn(ref.data(), 1001, -1, .5, &s0);
    GetParam().fn(y.data(), 1001, -1.0, 0.5, &s1);
    GetParam().fn(shorter.data(), 1000, -1.0, 0.5, &s2);
    EXPECT_TRUE(s0 == s1 && s1 == s2);
    for (size_t i = 0; i < y.size(); ++i) ASSERT_EQ(bits(y[i]), bits(ref[i])) << i;
    EXPECT_TRUE(std::equal(shorter.begin(), shorter.end(), y.begin()));
}

// Mean, variance and the Kolmogorov-Smirnov distance to N(5, 9).
TEST_P(Gauss, DistributionOfAMillion) {
    const int n = 1000000;
    std::vector<double> y(n);
    unsigned seed = 2024;
    GetParam().fn(y.data(), n, 5.0, 3.0, &seed);
    double sum = 0, sq = 0;
    for (double v : y) sum += v, sq += (v - 5) * (v - 5);
    EXPECT_NEAR(sum / n, 5.0, 5 * 3.0 / std::sqrt(n));
    EXPECT_NEAR(sq / n / 9.0, 1.0, 5 * std::sqrt(2.0 / n));
    std::sort(y.begin(), y.end());
    double d = 0;
    for (int i = 0; i < n; ++i) {
        const double cdf = 0.5 * std::erfc(-(y[i] - 5.0) / (3.0 * std::sqrt(2.0)));
        d = std::max({d, cdf - double(i) / n, double(i + 1) / n - cdf});
    }
    EXPECT_LT(d, 1.63 / std::sqrt(n));  // 1% level
}

TEST_P(Gauss, ChecksAndBounds) {
    double v = 7.0;
    unsigned s = 5;
    EXPECT_EQ(GetParam().fn(nullptr, 1, 0, 1, &s), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, 1, 0, 1, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, 0, 0, 1, &s), orvStsSizeErr);
    EXPECT_TRUE(s == 5 && v == 7.0);
    EXPECT_EQ(GetParam().fn(&v, 1, 7.5, 0.0, &s), orvStsNoErr);
    EXPECT_EQ(v, 7.5);
    for (int len = 1; len <= 6; ++len)
        for (Flush f : {Flush::Start, Flush::End}) {
            Guarded<double> dst(len, f, 4);
            Guarded<unsigned> seed(1, f, 1);
            GetParam().fn(dst.data(), len, 0.0, 1.0, seed.data());
        }
}

}  // namespace
