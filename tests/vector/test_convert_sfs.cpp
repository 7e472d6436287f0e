// Float to 8u, 8s, 16s, 16u with scale factor and rounding mode, every tier
// against the reference: lengths, byte offsets and guard pages, special
// values, halfway cases, scale factors, the NaN pass and its per-tier
// width, the MXCSR the conversion leaves behind, argument checks. 8s has no
// public function: its kernels are driven as the public functions drive
// the others.
#include <gtest/gtest.h>

#include <functional>

#include "internal/orv_kernels.h"
#include "support/tier_registry.h"
#include "vector/convert_ref.h"

namespace orv::test {
namespace {

// One conversion of one tier, behind a common signature.
struct SfsCase {
    std::string tier, type;
    IntType limits;
    size_t elemSize;
    std::function<OrvStatus(const float*, void*, int, int, int)> run;
    std::function<int64_t(const void*, size_t)> read;
    int nanZeroes() const { return tier == "y8" && type == "8u" ? 2 : 1; }
    Rule rule(int mode) const { return mode == 1 ? Rule::Near : mode == 0 ? Rule::Trunc : Rule::HalfAway; }
};

void PrintTo(const SfsCase& c, std::ostream* os) { *os << c.type << " " << c.tier; }

template <class T>
int64_t read_as(const void* p, size_t i) {
    return get(static_cast<const T*>(p), i);
}

template <class T>
void add_public(std::vector<SfsCase>& out, const char* type, IntType lim, const char* name) {
    using Fn = OrvStatus(const Orv32f*, T*, int, int, int);
    for (const auto& tf : tiers_of<Fn>(name)) {
        Fn* fn = tf.fn;
        out.push_back({tf.tier, type, lim, sizeof(T),
                       [fn](const float* s, void* d, int n, int mode, int sf) {
                           return fn(s, static_cast<T*>(d), n, mode, sf);
                       },
                       read_as<T>});
    }
}

// The 8s kernels, called in the order and under the rounding the public
// functions use.
void add_8s_kernels(std::vector<SfsCase>& out) {
    const auto cnvrt = tiers_of<decltype(ownorvsCnvrt_32f8s_Sfs)>("ownorvsCnvrt_32f8s_Sfs");
    const auto fin = tiers_of<decltype(ownorvsCnvrtFin_32f8s_Sfs)>("ownorvsCnvrtFin_32f8s_Sfs");
    for (size_t k = 0; k < cnvrt.size() && k < fin.size(); ++k) {
        auto* c = cnvrt[k].fn;
        auto* f = fin[k].fn;
        out.push_back({cnvrt[k].tier, "8s", k8s, 1,
                       [c, f](const float* s, void* d, int n, int mode, int sf) {
                           Orv8s* dst = static_cast<Orv8s*>(d);
                           if (mode == 0 || mode == 1) {
                               c(s, dst, n, mode, sf);
                           } else {
                               const unsigned old = _mm_getcsr();
                               _mm_setcsr(old | kRoundZero);
                               f(s, dst, n, sf);
                               _mm_setcsr((_mm_getcsr() & ~kRoundZero) | (old & kRoundZero));
                           }
                           return orvStsNoErr;
                       },
                       read_as<Orv8s>});
    }
}

std::vector<SfsCase> all_cases() {
    std::vector<SfsCase> v;
    add_public<Orv8u>(v, "8u", k8u, "orvsConvert_32f8u_Sfs");
    add_public<Orv16s>(v, "16s", k16s, "orvsConvert_32f16s_Sfs");
    add_public<Orv16u>(v, "16u", k16u, "orvsConvert_32f16u_Sfs");
    add_8s_kernels(v);
    return v;
}

class ConvertSfs : public ::testing::TestWithParam<SfsCase> {
protected:
    // Converts `in` placed at the given offsets against guard pages and
    // compares every element with the reference.
    void check(const std::vector<float>& in, int mode, int sf, size_t srcOff, size_t dstOff, Flush side) {
        const SfsCase& c = GetParam();
        const int len = static_cast<int>(in.size());
        Guarded<float> src(len, side, srcOff);
        GuardedBytes dst(len * c.elemSize, side, dstOff);
        for (int i = 0; i < len; ++i) put(src.data(), i, in[i]);
        ASSERT_EQ(c.run(src.data(), dst.data(), len, mode, sf), orvStsNoErr);
        const auto want = ref_convert(in, c.limits, c.rule(mode), sf, c.nanZeroes());
        for (int i = 0; i < len; ++i)
            ASSERT_EQ(c.read(dst.data(), i), want[i])
                << "mode " << mode << " scale " << sf << " len " << len << " offsets " << srcOff << "/" << dstOff
                << " at " << i << " x=" << in[i];
    }
    std::vector<float> data(size_t n, int sf, std::mt19937& rng, double specialOdds = 0.05) const {
        const IntType& t = GetParam().limits;
        return mixed_floats(n, std::ldexp(t.lo - 2.0, sf), std::ldexp(t.hi + 2.0, sf), rng, specialOdds);
    }
};

// Any mode other than 0 and 1 rounds half away from zero: 2, 7 and -1 take
// turns as the third mode.
TEST_P(ConvertSfs, EveryLengthOffsetAndMode) {
    std::mt19937 rng(11);
    for (int len : test_lengths())
        for (int k = 0; k < 3; ++k) {
            const int mode = k < 2 ? k : (len % 3 == 0 ? 2 : len % 3 == 1 ? 7 : -1);
            check(data(len, 0, rng), mode, 0, src_offset(len, k), dst_offset(len, k),
                  (len + k) % 2 ? Flush::End : Flush::Start);
        }
}

TEST_P(ConvertSfs, ScaleFactors) {
    std::mt19937 rng(12);
    for (int sf : {1, -1, 3, -5, 10, 24, -24})
        for (int mode : {0, 1, 2})
            for (int len : {1, 7, 8, 9, 33, 100})
                check(data(len, sf, rng), mode, sf, src_offset(len, mode), dst_offset(len, sf & 31), Flush::End);
}

// Factors that overflow or underflow in single precision; the largest
// magnitudes must not take long.
TEST_P(ConvertSfs, ExtremeScaleFactors) {
    const std::vector<float> in = {0.0f, 1.0f, -1.0f, 1e-38f, -1e-38f, 1e-42f, 3e38f, INFINITY, -INFINITY, 0.75f};
    for (int sf : {126, 127, 149, 150, 200, INT32_MAX, -126, -127, -128, -200, INT32_MIN})
        for (int mode : {0, 1, 2}) check(in, mode, sf, 0, 0, Flush::End);
}

TEST_P(ConvertSfs, HalfwayCases) {
    const SfsCase& c = GetParam();
    const float in[] = {2.5f, 3.5f, -2.5f, -3.5f, 0.5f, -0.5f, 0.49999997f, 1.4999999f};
    const int64_t near[] = {2, 4, -2, -4, 0, 0, 0, 1}, trunc[] = {2, 3, -2, -3, 0, 0, 0, 1},
                  away[] = {3, 4, -3, -4, 1, -1, 0, 1};
    const int64_t* want[] = {trunc, near, away};
    unsigned char dst[16 * 2];
    for (int mode : {0, 1, 2}) {
        ASSERT_EQ(c.run(in, dst, 8, mode, 0), orvStsNoErr);
        for (int i = 0; i < 8; ++i) {
            const int64_t w = want[mode][i] < c.limits.lo ? c.limits.lo : want[mode][i];
            EXPECT_EQ(c.read(dst, i), w) << "mode " << mode << " x=" << in[i];
        }
    }
}

// A NaN gives 0 under modes 0 and 1 (on y8's 8u the next element too, but
// never past the array), and the upper bound (0 for 16u) under the third.
TEST_P(ConvertSfs, NanByModeAndTier) {
    const SfsCase& c = GetParam();
    for (int len : {1, 2, 9, 16, 17}) {
        for (int at : {0, len / 2, len - 1}) {
            std::vector<float> in(len, 5.0f);
            in[at] = std::numeric_limits<float>::quiet_NaN();
            for (int mode : {0, 1, 2}) {
                Guarded<float> src(len, Flush::End);
                GuardedBytes dst(len * c.elemSize, Flush::End);
                for (int i = 0; i < len; ++i) put(src.data(), i, in[i]);
                ASSERT_EQ(c.run(src.data(), dst.data(), len, mode, 0), orvStsNoErr);
                for (int i = 0; i < len; ++i) {
                    int64_t w = 5;
                    if (i == at) w = mode == 2 && c.type != "16u" ? c.limits.hi : 0;
                    if (i == at + 1 && mode != 2 && c.nanZeroes() == 2) w = 0;
                    EXPECT_EQ(c.read(dst.data(), i), w) << "len " << len << " NaN at " << at << " mode " << mode;
                }
            }
        }
    }
}

// The MXCSR left behind: the caller's rounding comes back; the word is
// reloaded, with denormals-are-zero cleared and the caller's flags, exactly
// when rounding to nearest had to be set or an invalid operation occurred.
TEST_P(ConvertSfs, ControlWordOnReturn) {
    const SfsCase& c = GetParam();
    const float whole[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    const float frac[] = {1.25f, 2.5f, 3.75f, 4, 5, 6.5f, 7, 8, 9, 10, 11.5f};
    float nan[11];
    std::copy(std::begin(whole), std::end(whole), nan);
    nan[4] = std::numeric_limits<float>::quiet_NaN();
    float low[11];
    std::copy(std::begin(whole), std::end(whole), low);
    low[3] = -1e10f;  // below the 32-bit range: the conversion signals invalid
    struct Step {
        const char* what;
        int mode;
        const float* in;
        unsigned before, after;
    };
    const unsigned def = kMxcsrDefault;
    const Step steps[] = {
        {"nearest kept, exact values", 1, whole, def | kDaz, def | kDaz},
        {"nearest set", 1, frac, def | kDaz | kRoundDown, def | kRoundDown},
        {"nearest, NaN", 1, nan, def | kDaz, def},
        // 16u bounds below by 0 first, so nothing leaves the 32-bit range.
        {"nearest, below range", 1, low, def | kDaz, c.type == "16u" ? def | kDaz : def},
        {"truncation, word kept", 0, frac, def | kDaz | kRoundUp, def | kDaz | kRoundUp | kInexact},
        {"truncation, NaN", 0, nan, def | kDaz | kRoundUp, def | kRoundUp},
        {"half away", 2, whole, def | kDaz, def | kDaz | kInexact},
        {"half away, caller rounds to zero", 2, whole, def | kDaz | kRoundZero, def | kDaz | kRoundZero | kInexact},
        {"half away, NaN", 2, nan, def | kDaz | kRoundUp, def | kRoundUp},
        {"invalid already set", 1, nan, def | kDaz | kInvalid, def | kDaz | kInvalid},
    };
    unsigned char dst[11 * 2];
    for (const Step& s : steps) {
        unsigned after;
        {
            MxcsrScope scope(s.before);
            ASSERT_EQ(c.run(s.in, dst, 11, s.mode, 0), orvStsNoErr);
            after = _mm_getcsr();
        }
        EXPECT_EQ(after, s.after) << s.what << std::hex << ": before 0x" << s.before << " after 0x" << after;
        // The results follow the mode, not the caller's rounding.
        std::vector<float> in(s.in, s.in + 11);
        const auto want = ref_convert(in, c.limits, c.rule(s.mode), 0, c.nanZeroes());
        for (int i = 0; i < 11; ++i) EXPECT_EQ(c.read(dst, i), want[i]) << s.what << " at " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Tiers, ConvertSfs, ::testing::ValuesIn(all_cases()),
                         [](const ::testing::TestParamInfo<SfsCase>& info) {
                             return info.param.type + "_" + info.param.tier;
                         });

// Null pointers first, then the length; nothing written on failure. (The 8s
// kernels check nothing.)
TEST(ConvertSfsArguments, CheckedInOrder) {
    for (const SfsCase& c : all_cases()) {
        if (c.type == "8s") continue;
        SCOPED_TRACE(c.type + " " + c.tier);
        const float src[4] = {1, 2, 3, 4};
        unsigned char dst[8] = {9, 9, 9, 9, 9, 9, 9, 9};
        EXPECT_EQ(c.run(nullptr, dst, 4, 1, 0), orvStsNullPtrErr);
        EXPECT_EQ(c.run(src, nullptr, 4, 1, 0), orvStsNullPtrErr);
        EXPECT_EQ(c.run(nullptr, nullptr, -1, 1, 0), orvStsNullPtrErr);
        EXPECT_EQ(c.run(src, dst, 0, 1, 0), orvStsSizeErr);
        EXPECT_EQ(c.run(src, dst, -3, 2, 0), orvStsSizeErr);
        for (unsigned char b : dst) EXPECT_EQ(b, 9);
    }
}

}  // namespace
}  // namespace orv::test
