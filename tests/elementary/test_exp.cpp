// The vector exponential on every tier: accuracy against expl in the pair
// path and the last-odd-element path, the special values of each path, the
// MXCSR flags after a call, agreement across tiers and in place, bounds.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "elementary/fp_util.h"
#include "internal/orv_kernels.h"
#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

constexpr double kMaxUlp = 1.0;

// Worst error over random arguments in [lo, hi] and a log-spread of small
// ones, through pairs (one call) or each as a single last element.
template <class T, class Fn>
double max_ulp(Fn* fn, double lo, double hi, bool pairs) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> wide(lo, hi), expo(-60.0, 3.0);
    std::vector<T> x(4000);
    std::vector<double> y(x.size());
    for (size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<T>(i % 4 ? wide(rng) : std::copysign(std::exp2(expo(rng)), wide(rng)));
    if (pairs) fn(x.data(), y.data(), static_cast<int>(x.size()));
    double worst = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        if (!pairs) fn(&x[i], &y[i], 1);
        worst = std::max(worst, ulp_error(y[i], expl(static_cast<long double>(x[i]))));
    }
    return worst;
}

// Expected results: exact bits, or one of two patterns that no case yields
// exactly, standing for exp(x) within kMaxUlp and for any NaN.
constexpr uint64_t kRef = 1, kNaN = 2, kOne = 0x3FF0000000000000, kInf = 0x7FF0000000000000, kQNaN = 0x7FF8000000000000,
                   kNegQNaN = 0xFFF8000000000000;

void check(double y, double x, uint64_t want) {
    if (want == kRef)
        EXPECT_LE(ulp_error(y, expl(static_cast<long double>(x))), kMaxUlp) << y;
    else if (want == kNaN)
        EXPECT_TRUE(std::isnan(y)) << y;
    else
        EXPECT_EQ(bits(y), want) << y;
}

// x at every place of a length-7 array: places 0 to 5 are pairs (on e9, 0 to
// 3 go four at a time), place 6 the last odd element. With `spread`, a NaN
// second in a pair (other than one the pair turns into +inf) makes the first
// a NaN too.
template <class T, class Fn>
void check_places(Fn* fn, T x, uint64_t pair, uint64_t last, bool spread) {
    spread = spread && std::isnan(x) && pair != kInf;
    for (int q = 0; q < 7; ++q) {
        SCOPED_TRACE(testing::Message() << x << " at " << q);
        T in[7];
        double out[7];
        std::fill(in, in + 7, T(0.5));
        in[q] = x;
        fn(in, out, 7);
        for (int i = 0; i < 7; ++i) {
            const bool hit = q % 2 && spread && (i == q || i == q - 1);
            check(out[i], in[i], hit ? kNaN : i != q ? kRef : q == 6 ? last : pair);
        }
    }
}

// The pair screens x < ln_min and !(x <= ln_max); the last element screens the
// high words of x and |x|, and so differs for large x, -inf and NaNs.
const struct {
    uint64_t x, pair, last;
} kSpecials[] = {
    {0x0000000000000000, kOne, kOne},   {0x8000000000000000, kOne, kOne},       // +-0
    {0x16687e92154ef7ac, kOne, kOne},                                           // 1e-200: r * c underflows
    {0x4086300000000000, kInf, kInf},                                           // 710
    {0x40862c0000000000, kInf, 0},                                              // 709.5: k = 1024 in a pair
    {0x40862E4200000000, kInf, kInf},   {0x4086232600000000, kRef, 0},          // last-element thresholds
    {0x4086280000000000, kRef, 0},      {0x4086233333333333, kRef, 0},          // 709, 708.4
    {0xc086226666666666, kRef, kRef},   {0xc086233333333333, 0, 0},             // -708.3, -708.4
    {0xc086232617c1bda5, kRef, 0},                                              // -708.3936
    {0x7FF0000000000000, kInf, kInf},   {0xFFF0000000000000, kQNaN, 0},         // +-inf
    {0x7FF8000000000000, kQNaN, kQNaN}, {0xFFF8000000000001, kQNaN, kNegQNaN},  // quiet NaNs
    {0x7FF0000000000001, kInf, kInf},   {0xFFF0000000000001, kInf, 0},          // signalling NaNs
};

class Exp : public ::testing::TestWithParam<TierFn<decltype(orvsExp_64f)>> {};
ORV_INSTANTIATE_TIERS(Exp, orvsExp_64f);

TEST_P(Exp, AccuracyAndSpecialsInBothPaths) {
    EXPECT_LE(max_ulp<double>(GetParam().fn, from_bits(0xC0862326D6B1DE07), 709.43, true), kMaxUlp);
    EXPECT_LE(max_ulp<double>(GetParam().fn, -708.39, 708.39, false), kMaxUlp);
    for (const auto& s : kSpecials) check_places(GetParam().fn, from_bits(s.x), s.pair, s.last, true);
}

TEST_P(Exp, ClearsInvalidAndUnderflowOnly) {
    const double raising[5] = {-HUGE_VAL, 1e-300, 710.0, NAN, -745.0}, benign[2] = {0.5, 1.0};
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

// Results agree with m7 bit for bit (NaNs as a class), in place too; no
// access outside the arrays; checks.
TEST_P(Exp, SameEverywhereInPlaceAndInBounds) {
    auto* m7 = tiers_of<decltype(orvsExp_64f)>("orvsExp_64f").front().fn;
    decltype(orvsExp_64f_I)* inPlace = nullptr;
    for (const auto& t : tiers_of<decltype(orvsExp_64f_I)>("orvsExp_64f_I"))
        if (t.tier == GetParam().tier) inPlace = t.fn;
    const auto same = [](double a, double b) { return bits(a) == bits(b) || std::isnan(a + b); };
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> d(-800.0, 800.0);
    for (int len = 1; len <= 13; ++len) {
        std::vector<double> x(len), ref(len), y(len);
        for (double& v : x) v = d(rng);
        x[len / 2] = NAN;
        m7(x.data(), ref.data(), len);
        GetParam().fn(x.data(), y.data(), len);
        if (inPlace) inPlace(x.data(), len);
        for (int i = 0; i < len; ++i) EXPECT_TRUE(same(ref[i], y[i]) && (!inPlace || same(x[i], y[i]))) << i;
        for (Flush f : {Flush::Start, Flush::End}) {
            Guarded<double> src(len, f, 4), dst(len, f, 4);
            GetParam().fn(src.data(), dst.data(), len);
            if (inPlace) inPlace(dst.data(), len);
        }
    }
    double v = 1.0;
    EXPECT_EQ(GetParam().fn(nullptr, &v, 0), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, nullptr, 1), orvStsNullPtrErr);
    EXPECT_EQ(GetParam().fn(&v, &v, 0), orvStsSizeErr);
    if (inPlace) {
        EXPECT_EQ(inPlace(nullptr, 0), orvStsNullPtrErr);
        EXPECT_EQ(inPlace(&v, -1), orvStsSizeErr);
    }
    EXPECT_EQ(v, 1.0);
}

// The float-source kernel: its fix-ups test float bits, a NaN second in a
// pair keeps to its own slot, and float NaNs as the last element count as
// too large.
class Exp32f : public ::testing::TestWithParam<TierFn<decltype(ownsExp32f64f_M7)>> {};
ORV_INSTANTIATE_TIERS(Exp32f, ownsExp32f64f_M7);

TEST_P(Exp32f, AccuracySpecialsAndBounds) {
    auto* fn = GetParam().fn;
    EXPECT_LE(max_ulp<float>(fn, -708.39f, 709.43f, true), kMaxUlp);
    EXPECT_LE(max_ulp<float>(fn, -708.39f, 708.39f, false), kMaxUlp);
    const struct {
        uint32_t x;
        uint64_t pair, last;
    } cases[] = {{0x00000000, kOne, kOne}, {0x44316000, kInf, 0},     {0xFF800000, kQNaN, 0},
                 {0x7F800000, kInf, kInf}, {0x7FC00000, kQNaN, kInf}, {0xFFC00000, kQNaN, 0},
                 {0x7F800001, kInf, kInf}, {0x44317218, kInf, kInf}};  // 0, 709.5, -inf, +inf, NaNs, ln_max_T
    for (const auto& c : cases) check_places(fn, float_from_bits(c.x), c.pair, c.last, false);
    for (int len = 1; len <= 5; ++len)
        for (Flush f : {Flush::Start, Flush::End}) {
            Guarded<float> src(len, f, 0);
            Guarded<double> dst(len, f, 0);
            fn(src.data(), dst.data(), len);
        }
}

}  // namespace
