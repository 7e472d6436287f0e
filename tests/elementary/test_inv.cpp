// The 26-bit reciprocal on every tier: relative error over the normal range,
// in blocks and tails; special values wherever they stand; the caller's
// MXCSR; argument checks; in place and in bounds.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "elementary/fp_util.h"
#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

class Inv : public ::testing::TestWithParam<TierFn<decltype(orvsInv_64f_A26)>> {
protected:
    bool e9() const { return GetParam().tier == "e9"; }
};
ORV_INSTANTIATE_TIERS(Inv, orvsInv_64f_A26);

// Normal doubles of either sign with exponents in [-range, range].
std::vector<double> normals(size_t n, int range, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_int_distribution<int> e(-range, range);
    std::uniform_real_distribution<double> m(1.0, 2.0);
    std::vector<double> x(n);
    for (double& v : x) v = std::ldexp(rng() & 1 ? -m(rng) : m(rng), e(rng));
    return x;
}

// Largest relative error, skipping the place `skip`.
double max_rel_error(const std::vector<double>& x, const std::vector<double>& y, size_t skip = SIZE_MAX) {
    double worst = 0;
    for (size_t i = 0; i < x.size(); ++i)
        if (i != skip) worst = std::max(worst, static_cast<double>(std::fabs((y[i] * (long double)x[i]) - 1)));
    return worst;
}

// Magnitudes within 2^+-250 (every tier's fast path), then the whole normal
// range; lengths leave tails of each design.
TEST_P(Inv, RelativeErrorWithinTwoToMinus26) {
    for (int range : {250, 1022})
        for (int len : {4096 + 15, 4096 + 7, 5}) {
            const auto x = normals(len, range, len + range);
            std::vector<double> y(len);
            ASSERT_EQ(GetParam().fn(x.data(), y.data(), len), orvStsNoErr);
            EXPECT_LE(max_rel_error(x, y), 0x1p-26);
        }
}

// Specials in a block and in the tail get the IEEE 1/x (within the bound for
// 1e-80, which e9 takes as in range); only zeros warn; neighbours stay right.
TEST_P(Inv, SpecialValuesInBlockAndTail) {
    for (double s : {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 4.9e-324, -2.5e-310, 1e-80, 1.7e308})
        for (size_t pos : {3, 33}) {
            SCOPED_TRACE(testing::Message() << s << " at " << pos);
            auto x = normals(34, 20, 1);
            x[pos] = s;
            std::vector<double> y(x.size());
            EXPECT_EQ(GetParam().fn(x.data(), y.data(), 34), s == 0.0 ? orvStsSingularity : orvStsNoErr);
            if (s == 1e-80)
                EXPECT_NEAR(y[pos] * s, 1.0, 0x1p-26);
            else
                EXPECT_TRUE(bits(y[pos]) == bits(1.0 / s) || (std::isnan(s) && std::isnan(y[pos])));
            EXPECT_LE(max_rel_error(x, y, pos), 0x1p-26);
        }
}

// m7 to y8 compute in round-to-nearest without flush to zero whatever the
// caller set, and reload the caller's whole MXCSR; e9 leaves its mode alone.
TEST_P(Inv, CallersMxcsrHasNoEffectAndIsRestored) {
    auto x = normals(4096 + 5, 1022, 3);
    x[10] = 1e-310;
    const int len = static_cast<int>(x.size());
    std::vector<double> nearest(len), y(len);
    GetParam().fn(x.data(), nearest.data(), len);
    const unsigned csr = _mm_getcsr();
    for (unsigned mode : {0x2000u, 0x4000u, 0xE040u}) {
        _mm_setcsr((csr & ~0xE07Fu) | mode);
        const unsigned before = _mm_getcsr();
        GetParam().fn(x.data(), y.data(), len);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(csr);
        EXPECT_EQ(after & ~(e9() ? 0x3Fu : 0u), before & ~(e9() ? 0x3Fu : 0u)) << std::hex << mode;
        if (!e9()) {
            EXPECT_EQ(std::memcmp(y.data(), nearest.data(), len * sizeof(double)), 0) << std::hex << mode;
        }
    }
}

// e9 checks the length first, the others the pointers; arrays at any byte
// offset, in place, against the page before or after them.
TEST_P(Inv, ChecksInPlaceAndBounds) {
    double v = 4.0, r = 0;
    EXPECT_EQ(GetParam().fn(&v, nullptr, 0), e9() ? orvStsSizeErr : orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, &r, -1), e9() ? orvStsSizeErr : orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, &r, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, &r, 0), orvStsSizeErr);
    EXPECT_EQ(GetParam().fn(&v, &r, 1), orvStsNoErr);
    EXPECT_EQ(r, 0.25);
    for (int len = 1; len <= 33; len += 4)
        for (Flush f : {Flush::Start, Flush::End}) {
            auto x = normals(len, 300, len);
            std::vector<double> y(len), z(len);
            Guarded<double> src(len, f, 4), dst(len, f, 4);
            std::memcpy(src.data(), x.data(), len * sizeof(double));
            GetParam().fn(src.data(), dst.data(), len);
            GetParam().fn(src.data(), src.data(), len);
            std::memcpy(y.data(), dst.data(), len * sizeof(double));
            std::memcpy(z.data(), src.data(), len * sizeof(double));
            EXPECT_EQ(y, z);
        }
}

}  // namespace
