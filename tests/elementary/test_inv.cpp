// The 26-bit reciprocal on every tier: relative error over the whole normal
// range, in blocks and in the tail; special values wherever they stand; the
// caller's MXCSR; argument checks; bounds.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "elementary/fp_util.h"
#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

using InvFn = TierFn<decltype(orvsInv_64f_A26)>;
class Inv : public ::testing::TestWithParam<InvFn> {
protected:
    bool e9() const { return GetParam().tier == "e9"; }
};
ORV_INSTANTIATE_TIERS(Inv, orvsInv_64f_A26);

constexpr double kBound = 1.0 / (1 << 26);

// Normal doubles of either sign with exponents spread over [minExp, maxExp].
std::vector<double> random_normals(size_t n, int minExp, int maxExp, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_int_distribution<int> e(minExp, maxExp);
    std::uniform_real_distribution<double> m(1.0, 2.0);
    std::vector<double> x(n);
    for (double& v : x) v = std::ldexp(rng() & 1 ? -m(rng) : m(rng), e(rng));
    return x;
}

double max_rel_error(const std::vector<double>& x, const std::vector<double>& y) {
    double worst = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        const long double exact = 1.0L / x[i];
        worst = std::max(worst, static_cast<double>(std::fabs((y[i] - exact) / exact)));
    }
    return worst;
}

// In-range blocks (magnitudes within 2^+-250), then the whole normal range;
// lengths leave tails of every size below a block.
TEST_P(Inv, RelativeErrorWithinTwoToMinus26) {
    double worst = 0;
    for (int range : {250, 1022}) {
        for (int len : {4096 + 15, 4096 + 7, 5}) {
            const auto x = random_normals(len, -range, range, len + range);
            std::vector<double> y(len);
            ASSERT_EQ(GetParam().fn(x.data(), y.data(), len), orvStsNoErr);
            worst = std::max(worst, max_rel_error(x, y));
        }
    }
    EXPECT_LE(worst, kBound);
    RecordProperty("max_rel_error_ulps", std::to_string(worst * 0x1p52));
}

// Zeros, infinities, NaN and subnormals inside a full block and in the tail:
// the element gets the IEEE 1/x, only zeros raise the warning, and its
// neighbours stay accurate.
TEST_P(Inv, SpecialValuesInBlockAndTail) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    const double specials[] = {0.0, -0.0, inf, -inf, nan, 4.9e-324, -2.5e-310, 1e-309, 1e-80, 1.7e308};
    for (double s : specials) {
        for (int pos : {3, 33}) {
            SCOPED_TRACE(testing::Message() << s << " at " << pos);
            auto x = random_normals(34, -20, 20, 1);
            x[pos] = s;
            std::vector<double> y(x.size());
            const OrvStatus st = GetParam().fn(x.data(), y.data(), static_cast<int>(x.size()));
            EXPECT_EQ(st, s == 0.0 ? orvStsSingularity : orvStsNoErr);
            const double exact = 1.0 / s;
            if (std::isnan(s))
                EXPECT_TRUE(std::isnan(y[pos]));
            else if (std::fabs(s) < 1e-300 || std::isinf(s))
                EXPECT_EQ(bits(y[pos]), bits(exact));  // true division
            else
                EXPECT_LE(std::fabs(y[pos] - exact) / std::fabs(exact), kBound);
            y[pos] = x[pos] = 1.0;
            EXPECT_LE(max_rel_error(x, y), kBound);
        }
    }
}

// m7 to y8 compute in round-to-nearest without flush to zero whatever the
// caller set; e9 runs in the caller's mode. Either way MXCSR is as it was.
TEST_P(Inv, CallersMxcsrHasNoEffectAndIsRestored) {
    auto x = random_normals(4096 + 5, -1022, 1022, 3);
    x[10] = 1e-310;
    std::vector<double> nearest(x.size()), y(x.size());
    const int len = static_cast<int>(x.size());
    GetParam().fn(x.data(), nearest.data(), len);
    const unsigned csr = _mm_getcsr();
    for (unsigned mode : {0x2000u, 0x4000u, 0x6000u | 0x8040u}) {
        _mm_setcsr((csr & ~0xE07Fu) | mode);
        const unsigned before = _mm_getcsr();
        GetParam().fn(x.data(), y.data(), len);
        const unsigned after = _mm_getcsr();
        _mm_setcsr(csr);
        EXPECT_EQ(after & ~0x3Fu, before & ~0x3Fu) << std::hex << mode;
        if (e9()) continue;
        EXPECT_EQ(after, before) << std::hex << mode;  // flags too: the whole word is reloaded
        for (size_t i = 0; i < x.size(); ++i) ASSERT_EQ(bits(y[i]), bits(nearest[i])) << std::hex << mode << " " << i;
    }
}

TEST_P(Inv, ArgumentChecksInTheTiersOrder) {
    double v = 4.0, r = 0;
    EXPECT_EQ(GetParam().fn(&v, nullptr, 0), e9() ? orvStsSizeErr : orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, &r, -1), e9() ? orvStsSizeErr : orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(nullptr, &r, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, &r, 0), orvStsSizeErr);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(GetParam().fn(&v, &r, 1), orvStsNoErr);
    EXPECT_EQ(r, 0.25);
}

// Arrays at any byte offset, against the page before or after them.
TEST_P(Inv, InPlaceAndInsideTheArrays) {
    for (int len = 1; len <= 33; len += 4)
        for (Flush f : {Flush::Start, Flush::End})
            for (size_t off : {0, 4, 8}) {
                std::vector<double> x(len), y(len), z(len);
                for (int i = 0; i < len; ++i) x[i] = (i % 3 ? 1.5 : -1e-310) + i;
                Guarded<double> src(len, f, off), dst(len, f, off);
                std::memcpy(src.data(), x.data(), len * sizeof(double));
                GetParam().fn(src.data(), dst.data(), len);
                GetParam().fn(src.data(), src.data(), len);
                std::memcpy(y.data(), dst.data(), len * sizeof(double));
                std::memcpy(z.data(), src.data(), len * sizeof(double));
                for (int i = 0; i < len; ++i) EXPECT_EQ(bits(y[i]), bits(z[i]));
            }
}

}  // namespace
