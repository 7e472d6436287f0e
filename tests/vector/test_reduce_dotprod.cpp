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

// Calls fn(n, offset of pSrc1, offset of pSrc2) for every length and pair.
template <class Fn>
void each_pair(Fn fn) {
    for (int n : short_lengths())
        for (auto [ox, oy] : offset_pairs()) {
            SCOPED_TRACE(::testing::Message() << "len " << n << " offsets " << ox << "," << oy);
            fn(n, ox, oy);
            if (::testing::Test::HasFatalFailure()) return;
        }
}

// Integer data gives the exact product in any order (seeds s[0] + n against
// n); `order(t, u, w, c, d, n)` checks the result t on mixed magnitudes u, w
// (seeds s[1] + n, s[2] + n) placed as c, d. Then the argument checks.
template <class T, class Fn, class Order>
void exact_and_ordered(Fn* fn, const unsigned (&s)[3], Order order) {
    each_pair([&](int n, size_t ox, size_t oy) {
        auto x = small_ints<T>(n, n), y = small_ints<T>(n, s[0] + n);
        auto u = mixed<T>(n, s[1] + n), w = mixed<T>(n, s[2] + n);
        Placed<T> a(x, ox), b(y, oy), c(u, ox), d(w, oy);
        double r = -1, t;
        ASSERT_EQ(fn(a.data(), b.data(), n, &r), orvStsNoErr);
        ASSERT_EQ(r, static_cast<double>(exact_dot(x, y)));
        fn(c.data(), d.data(), n, &t);
        order(t, u, w, c, d, n);
    });
    T x[2] = {1, 2};
    double keep = 7;
    EXPECT_EQ(fn(nullptr, x, 0, &keep), orvStsNullPtrErr);
    EXPECT_EQ(fn(x, nullptr, 2, &keep), orvStsNullPtrErr);
    EXPECT_EQ(fn(x, x, 2, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(fn(x, x, 0, &keep), orvStsSizeErr);
    EXPECT_EQ(fn(x, x, -1, &keep), orvStsSizeErr);
    EXPECT_EQ(keep, 7);
}

// Mixed magnitudes follow the 128-bit body (kept by e9) or n8's scalar one
// bit for bit.
TEST_P(Dot64Test, ExactAndInTheTiersOrder) {
    exact_and_ordered<double>(GetParam().fn, {500, 3000, 4000}, [&](double t, auto& u, auto& w, auto& c, auto& d, int) {
        ASSERT_TRUE(same_bits(t, GetParam().tier == "n8" ? model_dot_scalar(u, w)
                                                         : model_dot_64f(u, w, c.address(), d.address())));
    });
}

// Float products are exact in double, so only the order of the sum matters;
// e9's order is its own and held to the error bound.
TEST_P(Dot32Test, ExactAndInTheTiersOrder) {
    const std::string& tier = GetParam().tier;
    exact_and_ordered<float>(GetParam().fn, {600, 5000, 6000}, [&](double t, auto& u, auto& w, auto&, auto&, int n) {
        if (tier == "e9") {
            long double absSum, e = exact_dot(u, w, &absSum);
            ASSERT_LE(std::fabs(t - e), n * std::numeric_limits<double>::epsilon() * absSum);
        } else {
            ASSERT_TRUE(same_bits(t, tier == "n8" ? model_dot_scalar(u, w) : model_dot_32f64f(u, w)));
        }
    });
}

ORV_INSTANTIATE_TIERS(Dot64Test, orvsDotProd_64f);
ORV_INSTANTIATE_TIERS(Dot32Test, orvsDotProd_32f64f);

}  // namespace
