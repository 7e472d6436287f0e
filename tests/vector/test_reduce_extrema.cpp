// Extremes and their indices: values and lowest indices on data with many
// ties at every sampled length and offset; NaN and signed zeros through each
// path, bit for bit against the documented lane order where it is fixed;
// the null-index rule and argument checks.
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
using Max = orv::test::TierFn<decltype(orvsMax_64f)>;
using MaxIndx = orv::test::TierFn<decltype(orvsMaxIndx_64f)>;
using MinMax = orv::test::TierFn<decltype(orvsMinMax_64f)>;
using MinMaxIndx = orv::test::TierFn<decltype(orvsMinMaxIndx_64f)>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Data with NaNs and both zeros among small integers.
std::vector<double> with_specials(int n, unsigned seed) {
    auto v = small_ints<double>(n, seed);
    std::mt19937 g(seed);
    for (auto& x : v) {
        unsigned r = g() % 16;
        if (r == 0) x = kNaN;
        else if (r == 1) x = -0.0;
        else if (r == 2) x = 0.0;
    }
    return v;
}

// The maximum as a plain forward loop finds it: a later element wins only if
// greater.
void first_max(const std::vector<double>& v, double& best, int& index) {
    best = v[0];
    index = 0;
    for (size_t i = 1; i < v.size(); ++i)
        if (v[i] > best) best = v[i], index = static_cast<int>(i);
}

int first_bits(const std::vector<double>& v, double m) {
    for (size_t i = 0; i < v.size(); ++i)
        if (bits(v[i]) == bits(m)) return static_cast<int>(i);
    return -1;
}

// The two-pass kernel of m7, n8 and y8: packed maximum over two pair
// accumulators, then the first element with the same bits.
void model_maxindx_kernel(const std::vector<double>& x, uintptr_t a, double& m, int& index) {
    int n = static_cast<int>(x.size()), i = 0;
    double a0[2] = {x[0], x[0]}, a1[2] = {x[0], x[0]};
    if (a & 8) a0[0] = pmax(a0[0], x[i++]);
    for (; n - i >= 4; i += 4)
        for (int j = 0; j < 2; ++j) {
            a0[j] = pmax(a0[j], x[i + j]);
            a1[j] = pmax(a1[j], x[i + 2 + j]);
        }
    for (; i < n; ++i) a0[0] = pmax(a0[0], x[i]);
    m = pmax(pmax(a0[0], a1[0]), pmax(a0[1], a1[1]));
    index = first_bits(x, m);
}

class MaxTest : public ::testing::TestWithParam<Max> {};
class MaxIndxTest : public ::testing::TestWithParam<MaxIndx> {};
class MinMaxTest : public ::testing::TestWithParam<MinMax> {};
class MinMaxIndxTest : public ::testing::TestWithParam<MinMaxIndx> {};

// A NaN is not treated specially: the 128-bit body is modelled lane by lane,
// and on every tier a NaN only at index 0 is dropped once each lane has seen
// another element.
TEST_P(MaxTest, LargestElementAndNaNByPosition) {
    each_case([&](int n, size_t off) {
        auto v = mixed<double>(n, n), s = with_specials(n, 90 + n);
        Placed<double> a(v, off), b(s, off);
        double m;
        ASSERT_EQ(GetParam().fn(a.data(), n, &m), orvStsNoErr);
        ASSERT_EQ(m, *std::max_element(v.begin(), v.end()));
        GetParam().fn(b.data(), n, &m);
        if (GetParam().tier != "e9") {
            ASSERT_TRUE(same_bits(m, model_max_64f(s, b.address())));
        }
        if (n < 40) return;
        v[0] = kNaN;
        Placed<double> c(v, off);
        GetParam().fn(c.data(), n, &m);
        ASSERT_EQ(m, *std::max_element(v.begin() + 1, v.end()));
    });
    double x[1] = {1}, keep = 7;
    EXPECT_EQ(GetParam().fn(nullptr, 0, &keep), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
}

// In place (below 32 elements or off a multiple of 8) the result is a plain
// loop's: the lowest index among equal maxima, +0.0 and -0.0 tying, and a
// NaN winning only at index 0, where it stays. The two-pass kernel takes a
// packed maximum and then the first element with its bits.
TEST_P(MaxIndxTest, LowestIndexNaNAndSignedZerosByPath) {
    each_case([&](int n, size_t off) {
        for (unsigned seed : {1u, 2u, 3u}) {
            auto v = seed == 1 ? small_ints<double>(n, 40 + n) : with_specials(n, seed * 1000 + n);
            if (seed == 3) v[0] = kNaN;
            Placed<double> a(v, off);
            double m, want;
            int index = -1, wantIndex;
            ASSERT_EQ(GetParam().fn(a.data(), n, &m, &index), orvStsNoErr);
            if (off % 8 != 0 || n < 32 || seed == 1) {
                first_max(v, want, wantIndex);
            } else if (GetParam().tier != "e9") {
                model_maxindx_kernel(v, a.address(), want, wantIndex);
            } else {
                want = m;
                wantIndex = first_bits(v, m);
            }
            ASSERT_TRUE(same_bits(m, want)) << "seed " << seed;
            ASSERT_EQ(index, wantIndex) << "seed " << seed;
        }
    });
    for (int n : {4, 31, 32, 33}) {
        std::vector<double> v(n, 0.5);
        v[0] = 1, v[1] = 3, v[2] = 3, v[3] = 2;
        for (size_t off : {0, 8, 1}) {
            Placed<double> a(v, off);
            double m;
            int index;
            GetParam().fn(a.data(), n, &m, &index);
            EXPECT_EQ(index, 1) << "len " << n << " offset " << off;
        }
    }
}

TEST_P(MaxIndxTest, NullIndexMeansMax) {
    auto max = orv::test::tiers_of<decltype(orvsMax_64f)>("orvsMax_64f");
    auto it = std::find_if(max.begin(), max.end(), [&](auto& t) { return t.tier == GetParam().tier; });
    ASSERT_NE(it, max.end());
    auto v = with_specials(77, 5);
    double m, want;
    EXPECT_EQ(GetParam().fn(v.data(), 77, &m, nullptr), orvStsNoErr);
    it->fn(v.data(), 77, &want);
    EXPECT_TRUE(same_bits(m, want));
    int index = 9;
    double keep = 7;
    EXPECT_EQ(GetParam().fn(v.data(), 0, &keep, nullptr), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(v.data(), 3, nullptr, &index), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, 3, &keep, &index), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(v.data(), 0, &keep, &index), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
    EXPECT_EQ(index, 9);
}

TEST_P(MinMaxTest, BothExtremes) {
    each_case([&](int n, size_t off) {
        auto v = mixed<double>(n, 7 * n), s = with_specials(n, 11 * n);
        Placed<double> a(v, off), b(s, off);
        double mn, mx, wantMin, wantMax;
        ASSERT_EQ(GetParam().fn(a.data(), n, &mn, &mx), orvStsNoErr);
        ASSERT_EQ(mn, *std::min_element(v.begin(), v.end()));
        ASSERT_EQ(mx, *std::max_element(v.begin(), v.end()));
        if (GetParam().tier == "e9") return;
        GetParam().fn(b.data(), n, &mn, &mx);
        model_minmax_64f(s, wantMin, wantMax);
        ASSERT_TRUE(same_bits(mn, wantMin));
        ASSERT_TRUE(same_bits(mx, wantMax));
    });
    double x[1] = {1}, keep = 7;
    EXPECT_EQ(GetParam().fn(x, 1, nullptr, &keep), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, &keep, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &keep, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
}

// Indices are the first elements comparing equal to the extremes found; a NaN
// extreme is never found and gives 0.
TEST_P(MinMaxIndxTest, FirstIndicesOfTheExtremes) {
    auto minmax = orv::test::tiers_of<decltype(orvsMinMax_64f)>("orvsMinMax_64f");
    auto it = std::find_if(minmax.begin(), minmax.end(), [&](auto& t) { return t.tier == GetParam().tier; });
    ASSERT_NE(it, minmax.end());
    auto first_equal = [](const std::vector<double>& v, double x) {
        for (size_t i = 0; i < v.size(); ++i)
            if (v[i] == x) return static_cast<int>(i);
        return 0;
    };
    each_case([&](int n, size_t off) {
        auto v = with_specials(n, 13 * n);
        Placed<double> a(v, off);
        double mn, mx, wantMin, wantMax;
        int iMin = -1, iMax = -1;
        ASSERT_EQ(GetParam().fn(a.data(), n, &mn, &iMin, &mx, &iMax), orvStsNoErr);
        it->fn(a.data(), n, &wantMin, &wantMax);
        ASSERT_TRUE(same_bits(mn, wantMin));
        ASSERT_TRUE(same_bits(mx, wantMax));
        ASSERT_EQ(iMin, first_equal(v, mn));
        ASSERT_EQ(iMax, first_equal(v, mx));
    });
    // The last lane's NaN survives both the maximum and the minimum.
    double nan4[4] = {1, 2, 3, kNaN}, mn, mx;
    int iMin = -1, iMax = -1;
    GetParam().fn(nan4, 4, &mn, &iMin, &mx, &iMax);
    EXPECT_TRUE(std::isnan(mn) && std::isnan(mx));
    EXPECT_EQ(iMin, 0);
    EXPECT_EQ(iMax, 0);
    double zeros[2] = {0.0, -0.0};
    GetParam().fn(zeros, 2, &mn, &iMin, &mx, &iMax);
    EXPECT_EQ(iMin, 0);
    EXPECT_EQ(iMax, 0);
    double one[1] = {-4};
    GetParam().fn(one, 1, &mn, &iMin, &mx, &iMax);
    EXPECT_EQ(mn, -4);
    EXPECT_EQ(mx, -4);
    EXPECT_EQ(iMin + iMax, 0);
}

TEST_P(MinMaxIndxTest, ChecksPointersThenLength) {
    double x[1] = {1}, d = 7;
    int i = 9;
    EXPECT_EQ(GetParam().fn(nullptr, 1, &d, &i, &d, &i), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, nullptr, &i, &d, &i), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, &d, nullptr, &d, &i), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, &d, &i, nullptr, &i), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 1, &d, &i, &d, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, 0, &d, &i, &d, &i), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(x, 0, &d, &i, &d, &i), orvStsSizeErr);
    EXPECT_EQ(d, 7);
    EXPECT_EQ(i, 9);
}

ORV_INSTANTIATE_TIERS(MaxTest, orvsMax_64f);
ORV_INSTANTIATE_TIERS(MaxIndxTest, orvsMaxIndx_64f);
ORV_INSTANTIATE_TIERS(MinMaxTest, orvsMinMax_64f);
ORV_INSTANTIATE_TIERS(MinMaxIndxTest, orvsMinMaxIndx_64f);

}  // namespace
