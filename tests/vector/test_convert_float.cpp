// Single <-> double conversion, every tier against the reference: lengths,
// byte offsets and guard pages, special values, the NaN rule of each tier,
// MXCSR rounding, argument checks.
#include <gtest/gtest.h>

#include "internal/orv_kernels.h"
#include "support/tier_registry.h"
#include "vector/convert_ref.h"

namespace orv::test {
namespace {

using Widen = TierFn<decltype(orvsConvert_32f64f)>;
using Narrow = TierFn<decltype(orvsConvert_64f32f)>;

std::vector<double> mixed_doubles(size_t n, std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-1e6, 1e6);
    std::uniform_int_distribution<int> kind(0, 9);
    const double specials[] = {NAN, -NAN, INFINITY, -INFINITY, 1e300, -1e300, 3.4028235677973366e38,
                               -3.4028235677973366e38, 1e-320, 0.0, -0.0, 1.401298464324817e-45};
    std::vector<double> v(n);
    for (auto& x : v) {
        const int k = kind(rng);
        x = k < 2 ? specials[std::uniform_int_distribution<size_t>(0, std::size(specials) - 1)(rng)] : u(rng);
    }
    return v;
}

// Runs fn on every test length and offset pair, both arrays flush against
// a guard page on the same side, and compares all elements bit for bit.
template <class S, class D, class Fn, class Ref>
void sweep(Fn* fn, Ref ref, std::vector<S> (*data)(size_t, std::mt19937&)) {
    std::mt19937 rng(7);
    for (int len : test_lengths()) {
        for (int k = 0; k < 4; ++k) {
            const Flush side = k % 2 ? Flush::End : Flush::Start;
            Guarded<S> src(len, side, src_offset(len, k));
            Guarded<D> dst(len, side, dst_offset(len, k));
            const std::vector<S> in = data(len, rng);
            for (int i = 0; i < len; ++i) put(src.data(), i, in[i]);
            ASSERT_EQ(fn(src.data(), dst.data(), len), orvStsNoErr);
            for (int i = 0; i < len; ++i) {
                const D got = get(dst.data(), i), want = ref(in[i]);
                ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0)
                    << "len " << len << " offsets " << src_offset(len, k) << "/" << dst_offset(len, k) << " at " << i
                    << ": " << in[i] << " gave " << got << ", want " << want;
            }
        }
    }
}

std::vector<float> widen_data(size_t n, std::mt19937& rng) { return mixed_floats(n, -1e6, 1e6, rng, 0.2); }

class ConvertWiden : public ::testing::TestWithParam<Widen> {};

TEST_P(ConvertWiden, ExactAtEveryLengthAndOffset) {
    sweep<float, double>(GetParam().fn, [](float x) { return static_cast<double>(x); }, widen_data);
}

class ConvertNarrow : public ::testing::TestWithParam<Narrow> {
protected:
    bool nanToMax() const { return GetParam().tier != "e9"; }
};

TEST_P(ConvertNarrow, ClampedAtEveryLengthAndOffset) {
    const bool toMax = nanToMax();
    sweep<double, float>(GetParam().fn, [toMax](double x) { return ref_narrow(x, toMax); }, mixed_doubles);
}

TEST_P(ConvertNarrow, NeverAnInfinityAndNanByTier) {
    const double in[] = {INFINITY, -INFINITY, 1e39, -1e39, NAN, 1.0};
    float out[6];
    ASSERT_EQ(GetParam().fn(in, out, 6), orvStsNoErr);
    EXPECT_EQ(out[0], FLT_MAX);
    EXPECT_EQ(out[1], -FLT_MAX);
    EXPECT_EQ(out[2], FLT_MAX);
    EXPECT_EQ(out[3], -FLT_MAX);
    if (nanToMax())
        EXPECT_EQ(out[4], FLT_MAX);
    else
        EXPECT_TRUE(std::isnan(out[4]));
    EXPECT_EQ(out[5], 1.0f);
}

// The narrowing rounds by the caller's MXCSR, and the clamp keeps rounding
// upwards from reaching infinity. The word itself is left alone.
TEST_P(ConvertNarrow, RoundsByMxcsrAndLeavesIt) {
    std::vector<double> in(40);
    for (size_t i = 0; i < in.size(); ++i) in[i] = 1.0 + (i + 1) * 0x1p-30 * (i % 2 ? 1 : -1);
    in[7] = 3.4028234663852886e38 * (1 + 0x1p-40);  // just above FLT_MAX
    for (unsigned rc : {kRoundDown, kRoundUp, kRoundZero}) {
        std::vector<float> want(in.size()), got(in.size());
        unsigned after;
        {
            MxcsrScope mode(kMxcsrDefault | rc);
            for (size_t i = 0; i < in.size(); ++i) {
                volatile double x = in[i];
                want[i] = static_cast<float>(x > FLT_MAX ? FLT_MAX : x);
            }
            _mm_setcsr(kMxcsrDefault | rc);
            ASSERT_EQ(GetParam().fn(in.data(), got.data(), static_cast<int>(in.size())), orvStsNoErr);
            after = _mm_getcsr();
        }
        EXPECT_EQ(after & ~0x3Fu, kMxcsrDefault | rc);
        for (size_t i = 0; i < in.size(); ++i) EXPECT_EQ(got[i], want[i]) << "rc " << rc << " at " << i;
    }
}

// Null pointers first, then the length; nothing is written on failure.
template <class Fn, class S, class D>
void check_arguments(Fn* fn) {
    S src[4] = {};
    D dst[4] = {7, 7, 7, 7};
    EXPECT_EQ(fn(nullptr, dst, 4), orvStsNullPtrErr);
    EXPECT_EQ(fn(src, nullptr, 4), orvStsNullPtrErr);
    EXPECT_EQ(fn(nullptr, nullptr, 0), orvStsNullPtrErr);
    EXPECT_EQ(fn(src, dst, 0), orvStsSizeErr);
    EXPECT_EQ(fn(src, dst, -5), orvStsSizeErr);
    for (D d : dst) EXPECT_EQ(d, 7);
}

TEST_P(ConvertWiden, Arguments) { check_arguments<decltype(orvsConvert_32f64f), float, double>(GetParam().fn); }
TEST_P(ConvertNarrow, Arguments) { check_arguments<decltype(orvsConvert_64f32f), double, float>(GetParam().fn); }

ORV_INSTANTIATE_TIERS(ConvertWiden, orvsConvert_32f64f);
ORV_INSTANTIATE_TIERS(ConvertNarrow, orvsConvert_64f32f);

// The stubs reach a tier that gives the same results.
TEST(ConvertStubs, Convert) {
    const float f[3] = {1.5f, -0.25f, 3e38f};
    double d[3];
    float back[3];
    ASSERT_EQ(orvsConvert_32f64f(f, d, 3), orvStsNoErr);
    ASSERT_EQ(orvsConvert_64f32f(d, back, 3), orvStsNoErr);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(back[i], f[i]);
}

}  // namespace
}  // namespace orv::test
