// The vector exponential on every tier: accuracy against expl in the pair
// path and the last-odd-element path, the special values of each path, the
// MXCSR flags after a call, in-place use, and bounds.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "elementary/fp_util.h"
#include "internal/orv_kernels.h"
#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

using ExpFn = TierFn<decltype(orvsExp_64f)>;
using Exp32Fn = TierFn<decltype(ownsExp32f64f_M7)>;

constexpr double kMaxUlp = 1.0;
constexpr double kPairTop = 709.43;          // k stays at most 1023 below this
constexpr double kLastTop = 708.3935546875;  // magnitude from which the last element gives 0
const double kLnMin = from_bits(0xC0862326D6B1DE07);
const double kInf = std::numeric_limits<double>::infinity();

// Worst error over random arguments in [lo, hi] and a log-spread of small
// ones, through pairs (even length) or as the single last element.
template <class T, class Fn>
double max_ulp(Fn* fn, double lo, double hi, bool pairs) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> wide(lo, hi), expo(-60.0, 3.0);
    std::vector<T> x(4000);
    for (size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<T>(i % 4 ? wide(rng) : std::copysign(std::exp2(expo(rng)), wide(rng)));
    std::vector<double> y(x.size());
    if (pairs)
        fn(x.data(), y.data(), static_cast<int>(x.size()));
    else
        for (size_t i = 0; i < x.size(); ++i) fn(&x[i], &y[i], 1);
    double worst = 0;
    for (size_t i = 0; i < x.size(); ++i)
        worst = std::max(worst, ulp_error(y[i], expl(static_cast<long double>(x[i]))));
    return worst;
}

// Expected result of a special argument: exact bits, any NaN, or exp(x).
struct Expect {
    enum Kind { Bits, NaN, Ref } kind;
    uint64_t b = 0;
};
constexpr Expect bitsOf(uint64_t b) { return {Expect::Bits, b}; }
constexpr Expect kNaN{Expect::NaN}, kRef{Expect::Ref};
constexpr uint64_t kOneB = 0x3FF0000000000000, kInfB = 0x7FF0000000000000, kQNaNB = 0x7FF8000000000000,
                   kNegQNaNB = 0xFFF8000000000000;

void check(double y, double x, Expect e) {
    switch (e.kind) {
        case Expect::Bits:
            EXPECT_EQ(bits(y), e.b) << y;
            break;
        case Expect::NaN:
            EXPECT_TRUE(std::isnan(y)) << y;
            break;
        case Expect::Ref:
            EXPECT_LE(ulp_error(y, expl(static_cast<long double>(x))), kMaxUlp) << y;
            break;
    }
}

struct Special {
    uint64_t x;
    Expect pair, last;
};
// The pair screens x < ln_min and !(x <= ln_max); the last element screens the
// high word of x and of |x|, and so differs for large positive x, -inf and
// NaNs.
const Special kSpecials[] = {
    {0x0000000000000000, bitsOf(kOneB), bitsOf(kOneB)},       // 0
    {0x8000000000000000, bitsOf(kOneB), bitsOf(kOneB)},       // -0
    {0x16687e92154ef7ac, bitsOf(kOneB), bitsOf(kOneB)},       // 1e-200: r * c underflows
    {0x4086300000000000, bitsOf(kInfB), bitsOf(kInfB)},       // 710
    {0x40862c0000000000, bitsOf(kInfB), bitsOf(0)},           // 709.5: k = 1024 in a pair
    {0x4086280000000000, kRef, bitsOf(0)},                    // 709.0
    {0x4086233333333333, kRef, bitsOf(0)},                    // 708.4
    {0xc086226666666666, kRef, kRef},                         // -708.3: near the least normal
    {0xc086233333333333, bitsOf(0), bitsOf(0)},               // -708.4
    {0xc086232617c1bda5, kRef, bitsOf(0)},                    // -708.3936
    {0x7FF0000000000000, bitsOf(kInfB), bitsOf(kInfB)},       // +inf
    {0xFFF0000000000000, bitsOf(kQNaNB), bitsOf(0)},          // -inf
    {0x7FF8000000000000, bitsOf(kQNaNB), bitsOf(kQNaNB)},     // quiet NaN
    {0xFFF8000000000001, bitsOf(kQNaNB), bitsOf(kNegQNaNB)},  // negative quiet NaN
    {0x7FF0000000000001, bitsOf(kInfB), bitsOf(kInfB)},       // signalling NaN
    {0xFFF0000000000001, bitsOf(kInfB), bitsOf(0)},           // negative signalling NaN
};

class Exp : public ::testing::TestWithParam<ExpFn> {};
ORV_INSTANTIATE_TIERS(Exp, orvsExp_64f);

TEST_P(Exp, AccuracyInBothPaths) {
    const double pairUlp = max_ulp<double>(GetParam().fn, kLnMin, kPairTop, true);
    const double lastUlp = max_ulp<double>(GetParam().fn, -kLastTop, kLastTop, false);
    EXPECT_LE(pairUlp, kMaxUlp);
    EXPECT_LE(lastUlp, kMaxUlp);
    RecordProperty("max_ulp_pair", std::to_string(pairUlp));
    RecordProperty("max_ulp_last", std::to_string(lastUlp));
}

// x at every place of a length-7 array of partners: places 0 to 5 are pairs
// (on e9 places 0 to 3 go four at a time), place 6 the last odd element. A
// quiet NaN second in a pair turns the first into NaN too where
// nanSpreads.
template <class T, class Fn>
void check_places(Fn* fn, T x, Expect pair, Expect last, bool nanSpreads) {
    const T partner = 0.5;
    // Signalling NaNs give +inf in a pair and spread nothing.
    const bool spread = nanSpreads && std::isnan(x) && !(pair.kind == Expect::Bits && pair.b == kInfB);
    for (int q = 0; q < 7; ++q) {
        SCOPED_TRACE(testing::Message() << x << " at " << q);
        T in[7];
        double out[7];
        std::fill(in, in + 7, partner);
        in[q] = x;
        fn(in, out, 7);
        for (int i = 0; i < 7; ++i) {
            if (i == q)
                check(out[i], x, q == 6 ? last : q % 2 && spread ? kNaN : pair);
            else
                check(out[i], partner, i == q - 1 && q % 2 && spread ? kNaN : kRef);
        }
    }
}

TEST_P(Exp, SpecialValuesInEachPath) {
    for (const Special& s : kSpecials) {
        SCOPED_TRACE(testing::Message() << std::hex << s.x);
        check_places(GetParam().fn, from_bits(s.x), s.pair, s.last, true);
    }
}

TEST_P(Exp, ClearsInvalidAndUnderflowOnly) {
    const double raising[5] = {-kInf, 1e-300, 710.0, std::nan(""), -745.0}, benign[2] = {0.5, 1.0};
    double out[5];
    const unsigned csr = _mm_getcsr();
    for (unsigned flags : {0x00u, 0x01u, 0x10u, 0x3Fu})
        for (const double* in : {raising, benign}) {
            _mm_setcsr((csr & ~0x3Fu) | flags);
            GetParam().fn(in, out, in == benign ? 2 : 5);
            const unsigned after = _mm_getcsr();
            _mm_setcsr(csr);
            EXPECT_EQ(after & 0x11u, 0u) << std::hex << flags << " " << after;
            EXPECT_EQ(after & flags & 0x2Eu, flags & 0x2Eu) << std::hex << after;  // the others stay
        }
}

// Every tier runs the same instruction sequence: results agree with m7 bit
// for bit (NaNs as a class), in place or not.
TEST_P(Exp, SameOnEveryTierAndInPlace) {
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> d(-800.0, 800.0);
    auto* m7 = tiers_of<decltype(orvsExp_64f)>("orvsExp_64f").front().fn;
    auto inPlace = tiers_of<decltype(orvsExp_64f_I)>("orvsExp_64f_I");
    for (int len : {1, 2, 3, 8, 33}) {
        std::vector<double> x(len), ref(len), y(len);
        for (double& v : x) v = d(rng);
        x[len / 2] = std::nan("");
        m7(x.data(), ref.data(), len);
        GetParam().fn(x.data(), y.data(), len);
        for (const auto& t : inPlace) {
            if (t.tier != GetParam().tier) continue;
            std::vector<double> z = x;
            EXPECT_EQ(t.fn(z.data(), len), orvStsNoErr);
            for (int i = 0; i < len; ++i) EXPECT_TRUE(bits(z[i]) == bits(y[i]) || std::isnan(z[i] + y[i])) << i;
        }
        for (int i = 0; i < len; ++i) EXPECT_TRUE(bits(ref[i]) == bits(y[i]) || std::isnan(ref[i] + y[i])) << i;
    }
}

TEST_P(Exp, ArgumentChecks) {
    double v = 1.0;
    EXPECT_EQ(GetParam().fn(nullptr, &v, 0), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, nullptr, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, &v, 0), orvStsSizeErr);
    for (const auto& t : tiers_of<decltype(orvsExp_64f_I)>("orvsExp_64f_I")) {
        EXPECT_EQ(t.fn(nullptr, 0), orvStsNullPtrErr);
        EXPECT_EQ(t.fn(&v, -1), orvStsSizeErr);
        EXPECT_EQ(v, 1.0);
    }
}

TEST_P(Exp, StaysInsideTheArrays) {
    for (int len = 1; len <= 9; ++len)
        for (Flush f : {Flush::Start, Flush::End})
            for (size_t off : {0, 4}) {
                Guarded<double> src(len, f, off), dst(len, f, off);
                GetParam().fn(src.data(), dst.data(), len);
                for (const auto& t : tiers_of<decltype(orvsExp_64f_I)>("orvsExp_64f_I")) t.fn(dst.data(), len);
            }
}

// The float-source kernel: the same algorithm on widened input, with its own
// fix-ups: a NaN in the second lane keeps to its own slot, and float NaNs as
// the last element count as too large.
class Exp32f : public ::testing::TestWithParam<Exp32Fn> {};
ORV_INSTANTIATE_TIERS(Exp32f, ownsExp32f64f_M7);

TEST_P(Exp32f, AccuracyAndSpecials) {
    auto* fn = GetParam().fn;
    EXPECT_LE(max_ulp<float>(fn, -708.39f, 709.43f, true), kMaxUlp);
    EXPECT_LE(max_ulp<float>(fn, -708.39f, 708.39f, false), kMaxUlp);

    const float qnan = float_from_bits(0x7FC00000), negQnan = float_from_bits(0xFFC00000);
    const float snan = float_from_bits(0x7F800001), inf = std::numeric_limits<float>::infinity();
    struct {
        float x;
        Expect pair, last;
    } cases[] = {
        {0.0f, bitsOf(kOneB), bitsOf(kOneB)},  {709.5f, bitsOf(kInfB), bitsOf(0)},
        {-inf, bitsOf(kQNaNB), bitsOf(0)},     {inf, bitsOf(kInfB), bitsOf(kInfB)},
        {qnan, bitsOf(kQNaNB), bitsOf(kInfB)}, {negQnan, bitsOf(kQNaNB), bitsOf(0)},
        {snan, bitsOf(kInfB), bitsOf(kInfB)},
    };
    for (const auto& c : cases) check_places(fn, c.x, c.pair, c.last, false);
    for (int len = 1; len <= 5; ++len) {
        Guarded<float> src(len, Flush::End, 0), src2(len, Flush::Start, 0);
        Guarded<double> dst(len, Flush::End, 0), dst2(len, Flush::Start, 0);
        fn(src.data(), dst.data(), len);
        fn(src2.data(), dst2.data(), len);
    }
}

}  // namespace
