// Row filters (the 2-D filter with one kernel row), every tier against the
// long double reference: kernel lengths 1..9, 16, 17, 31, 64, 65, widths
// 1..40, two anchors, the window flush against a guard page at its end, or at
// its start with an odd address and step. Floats lie within k * eps * sum|k x|
// of the exact value; integers are a value within that bound rounded by the
// route's rule (half away from zero on e9's wide route, to even elsewhere).
// Everything outside the region and AC4's fourth channel keep their values,
// and a pixel's result does not depend on the width of the call.
#include <gtest/gtest.h>

#include <cfloat>
#include <random>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

template <class T>
using RowFn = OrvStatus(const T*, int, T*, int, OrviSize, const Orv32f*, int, int);

// The rounding rule of the route that a call takes.
template <class T>
long double round_rule(long double v, bool awayFromZero) {
    if constexpr (std::is_same_v<T, Orv32f>) return v;
    else return awayFromZero ? round_away_sat<T>(v) : round_even_sat<T>(v);
}

// Checks every element of dst: the region (columns off .. off + w - 1, not
// AC4's fourth channel) against ref, all else against `before`; returns the
// number of mismatches and reports the first few.
template <class T>
int check(const GuardedImage<T>& dst, const std::vector<unsigned char>& before, const FilterRef& ref, int off, int w,
          int k, bool ac4, bool away, const char* what) {
    int bad = 0;
    const int ch = dst.channels();
    for (int y = 0; y < dst.height(); ++y)
        for (int x = 0; x < dst.width(); ++x)
            for (int c = 0; c < ch; ++c) {
                const bool in = x >= off && x < off + w && !(ac4 && c == 3);
                const T got = dst.get(x, y, c);
                const long double want = in ? ref.at(x, y, c) : 0, err = in ? ref.mag(x, y, c) * k * FLT_EPSILON : 0;
                bool ok = got >= round_rule<T>(want - err, away) && got <= round_rule<T>(want + err, away);
                if (!in)
                    ok = !std::memcmp(&got, before.data() + size_t(dst.step()) * y + (size_t(x) * ch + c) * sizeof(T),
                                      sizeof got);
                if (!ok && ++bad <= 3)
                    ADD_FAILURE() << what << " k=" << k << " w=" << w << " at " << x << "," << y << "," << c << ": "
                                  << double(got) << " vs " << double(want) << (in ? "" : " (outside)");
            }
    return bad;
}

constexpr int kKernelSizes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 17, 31, 64, 65};
constexpr int kMaxW = 40, kH = 3;

template <class T>
T random_pixel(std::mt19937& rng) {
    if constexpr (std::is_same_v<T, Orv32f>)
        return std::uniform_real_distribution<float>(-100.0f, 100.0f)(rng);
    else
        return T(std::uniform_int_distribution<int>(std::numeric_limits<T>::min(), std::numeric_limits<T>::max())(rng));
}

// Coefficients of magnitude about 2/k (integer results cover the range and
// saturate at both ends); odd k: multiples of 1/8, so many sums are exact.
std::vector<float> random_kernel(std::mt19937& rng, int k) {
    std::vector<float> v(k);
    for (auto& x : v) {
        x = std::uniform_real_distribution<float>(-1.0f, 3.0f)(rng) / float(k);
        if (k % 2 == 1) x = std::round(x * 8.0f) / 8.0f;
    }
    return v;
}

class FilterRow : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (!tier_tested(GetParam())) GTEST_SKIP() << GetParam() << " is left out";
    }
};

template <class T>
void sweep(const std::string& tier, const std::string& prefix) {
    std::mt19937 rng(7);
    for (const Layout& l : kLayouts) {
        const std::string name = prefix + l.name;
        RowFn<T>* fn = tier_fn<RowFn<T>>(name, tier);
        ASSERT_NE(fn, nullptr) << name << " " << tier;
        const int pixel = l.ch * int(sizeof(T));
        for (int k : kKernelSizes)
            for (int variant = 0; variant < 2; ++variant) {
                // 0: anchor 0, flush at the end, least steps; 1: anchor k/2,
                // flush at the start, odd addresses and steps.
                const int ax = variant ? k / 2 : 0, slack = variant ? 7 : 0;
                const Flush flush = variant ? Flush::Start : Flush::End;
                const size_t addr = variant ? 3 : 0;
                const std::vector<float> kern = random_kernel(rng, k);
                FilterSource<T> src(kMaxW, kH, l.ch, k, 1, ax, 0, FilterSource<T>::min_step(kMaxW, l.ch, k) + slack,
                                    flush, addr);
                src.fill([&](int, int, int) { return random_pixel<T>(rng); });
                const FilterRef ref = filter_ref(src, kMaxW, kH, l.ch, kern.data(), k, 1, ax, 0);
                GuardedImage<T> dst(kMaxW, kH, l.ch, kMaxW * pixel + slack, flush, addr);
                dst.fill([&](int, int, int) { return random_pixel<T>(rng); });
                const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
                std::vector<unsigned char> full;  // result of the full width
                for (int w = kMaxW; w >= 1; --w) {
                    // The region sits at the flush end of both images.
                    const int off = flush == Flush::End ? kMaxW - w : 0;
                    std::memcpy(dst.bytes(), before.data(), before.size());
                    const OrvStatus st = fn(reinterpret_cast<const T*>(reinterpret_cast<const char*>(src.roi()) +
                                                                       ptrdiff_t(off) * pixel),
                                            src.step(), dst.row(0) + ptrdiff_t(off) * l.ch, dst.step(), {w, kH},
                                            kern.data(), k, ax);
                    ASSERT_EQ(st, orvStsNoErr);
                    const bool away = !std::is_same_v<T, Orv32f> && tier == "e9" && w >= 8;
                    if (check(dst, before, ref, off, w, k, l.ac4, away, name.c_str()) > 0) return;
                    if (w == kMaxW) full.assign(dst.bytes(), dst.bytes() + dst.size_bytes());
                    // Same bits for a pixel whichever width (so blocks and route) the call has.
                    const bool sameRule = std::is_same_v<T, Orv32f> || tier != "e9" || w >= 8;
                    for (int y = 0; w < kMaxW && sameRule && y < kH; ++y)
                            ASSERT_EQ(0, std::memcmp(dst.row(y) + ptrdiff_t(off) * l.ch,
                                                     full.data() + size_t(dst.step()) * y + size_t(off) * pixel,
                                                     size_t(w) * pixel))
                                << name << " k=" << k << " w=" << w << " row " << y;
                }
                EXPECT_TRUE(dst.slack_intact());
            }
    }
}

TEST_P(FilterRow, Sweep32f) { sweep<Orv32f>(GetParam(), "orviFilterRow_32f_"); }
TEST_P(FilterRow, Sweep8u) { sweep<Orv8u>(GetParam(), "orviFilterRow32f_8u_"); }
TEST_P(FilterRow, Sweep16u) { sweep<Orv16u>(GetParam(), "orviFilterRow32f_16u_"); }
TEST_P(FilterRow, Sweep16s) { sweep<Orv16s>(GetParam(), "orviFilterRow32f_16s_"); }

// Checks in order: null pointers, then sizes, then steps (the 32f forms also
// refuse a step below 1); nothing written on a failure; the least steps pass.
template <class T>
void statuses(const std::string& tier, const std::string& prefix) {
    for (const Layout& l : kLayouts) {
        const std::string name = prefix + l.name;
        RowFn<T>* fn = tier_fn<RowFn<T>>(name, tier);
        ASSERT_NE(fn, nullptr);
        const int w = 5, k = 3, pixel = l.ch * int(sizeof(T));
        const int sMin = (w + k - 1) * pixel, dMin = w * pixel;
        FilterSource<T> src(w, 2, l.ch, k, 1, 1, 0, sMin);
        GuardedImage<T> dst(w, 2, l.ch, dMin);
        std::memset(dst.bytes(), 0x5A, dst.size_bytes());
        const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
        const float kern[3] = {1, 2, 3};
        const T* s = src.roi();
        T* d = dst.data();
        struct Case { const T* s; int ss; T* d; int ds; OrviSize roi; const float* kp; int k; OrvStatus want; };
        const Case cases[] = {
            {nullptr, sMin, d, dMin, {w, 2}, kern, k, orvStsNullPtrErr},
            {s, sMin, nullptr, dMin, {w, 2}, kern, k, orvStsNullPtrErr},
            {s, sMin, d, dMin, {0, 2}, nullptr, 0, orvStsNullPtrErr},  // pointers before sizes
            {s, sMin, d, dMin, {0, 2}, kern, k, orvStsSizeErr},
            {s, sMin, d, dMin, {w, 0}, kern, k, orvStsSizeErr},
            {s, sMin, d, dMin, {w, 2}, kern, 0, orvStsSizeErr},
            {s, -1, d, -1, {w, 2}, kern, -1, orvStsSizeErr},  // sizes before steps
            {s, sMin - 1, d, dMin, {w, 2}, kern, k, orvStsStepErr},
            {s, sMin, d, dMin - 1, {w, 2}, kern, k, orvStsStepErr},
            {s, -sMin, d, dMin, {w, 2}, kern, k, orvStsStepErr},
            {s, sMin, d, 0, {w, 2}, kern, k, orvStsStepErr},
            {s, 0, d, pixel, {1, 2}, kern, 1, orvStsStepErr},
        };
        for (const Case& c : cases) {
            EXPECT_EQ(fn(c.s, c.ss, c.d, c.ds, c.roi, c.kp, c.k, 1), c.want) << name;
            EXPECT_TRUE(dst.unchanged_since(before.data())) << name;
        }
        EXPECT_EQ(fn(s, sMin, d, dMin, {w, 2}, kern, k, 1), orvStsNoErr) << name;
    }
}

TEST_P(FilterRow, Statuses32f) { statuses<Orv32f>(GetParam(), "orviFilterRow_32f_"); }
TEST_P(FilterRow, Statuses8u) { statuses<Orv8u>(GetParam(), "orviFilterRow32f_8u_"); }
TEST_P(FilterRow, Statuses16u) { statuses<Orv16u>(GetParam(), "orviFilterRow32f_16u_"); }
TEST_P(FilterRow, Statuses16s) { statuses<Orv16s>(GetParam(), "orviFilterRow32f_16s_"); }

// Tap counts around the stack buffer of replicated coefficients (64 taps fit,
// 65 are allocated) and the routes with scratch, with the allocator failing:
// the result stays right and, where the route only changes the order of a
// float sum, the same bits. e9's integer forms then round to nearest even.

template <class T>
void no_scratch(const std::string& tier, const std::string& prefix) {
    std::mt19937 rng(11);
    for (const Layout& l : kLayouts) {
        const std::string name = prefix + l.name;
        RowFn<T>* fn = tier_fn<RowFn<T>>(name, tier);
        ASSERT_NE(fn, nullptr);
        for (int k : {17, 64, 65})
            for (int w : {7, 20}) {
                const std::vector<float> kern = random_kernel(rng, k);
                FilterSource<T> src(w, 2, l.ch, k, 1, 3, 0, FilterSource<T>::min_step(w, l.ch, k));
                src.fill([&](int, int, int) { return random_pixel<T>(rng); });
                const FilterRef ref = filter_ref(src, w, 2, l.ch, kern.data(), k, 1, 3, 0);
                GuardedImage<T> a(w, 2, l.ch, w * l.ch * int(sizeof(T))), b(w, 2, l.ch, w * l.ch * int(sizeof(T)));
                const std::vector<unsigned char> before(a.bytes(), a.bytes() + a.size_bytes());
                ASSERT_EQ(fn(src.roi(), src.step(), a.data(), a.step(), {w, 2}, kern.data(), k, 3), orvStsNoErr);
                {
                    AllocSpy fail(1);
                    ASSERT_EQ(fn(src.roi(), src.step(), b.data(), b.step(), {w, 2}, kern.data(), k, 3), orvStsNoErr);
                }
                const bool wide = !std::is_same_v<T, Orv32f> && tier == "e9" && w >= 8;
                EXPECT_EQ(check(a, before, ref, 0, w, k, l.ac4, wide, name.c_str()), 0);
                EXPECT_EQ(check(b, before, ref, 0, w, k, l.ac4, false, name.c_str()), 0);
                EXPECT_TRUE(wide || b.unchanged_since(a.bytes())) << name << " k=" << k << " w=" << w;
            }
    }
}

TEST_P(FilterRow, NoScratch32f) { no_scratch<Orv32f>(GetParam(), "orviFilterRow_32f_"); }
TEST_P(FilterRow, NoScratch8u) { no_scratch<Orv8u>(GetParam(), "orviFilterRow32f_8u_"); }
TEST_P(FilterRow, NoScratch16s) { no_scratch<Orv16s>(GetParam(), "orviFilterRow32f_16s_"); }

// 2.5 exactly: e9's wide route rounds half away from zero (3, and -3 for
// 16s), its narrow route and the other tiers' routes to even (2, -2); the
// same holds for 3.5 -> 4 on both. A one-pixel-per-tap copy (kernel 1) is
// exact everywhere.
TEST_P(FilterRow, RoundingByRoute) {
    const std::string tier = GetParam();
    auto* f8 = tier_fn<RowFn<Orv8u>>("orviFilterRow32f_8u_C1R", tier);
    auto* f16 = tier_fn<RowFn<Orv16s>>("orviFilterRow32f_16s_C1R", tier);
    ASSERT_TRUE(f8 && f16);
    const float half[3] = {0.25f, 0.0f, 0.25f}, one[1] = {1.0f};
    for (int w : {4, 20}) {
        const bool away = tier == "e9" && w >= 8;
        std::vector<Orv8u> s8(w + 2, 5), d8(w);
        std::vector<Orv16s> s16(w + 2, -5), d16(w);
        s8[w + 1] = 7;  // the last pixel sums (5 + 7) / 4 = 3: no tie
        ASSERT_EQ(f8(s8.data(), w + 2, d8.data(), w, {w, 1}, half, 3, 2), orvStsNoErr);
        ASSERT_EQ(f16(s16.data(), 2 * (w + 2), d16.data(), 2 * w, {w, 1}, half, 3, 2), orvStsNoErr);
        for (int x = 0; x + 1 < w; ++x) {
            EXPECT_EQ(d8[x], away ? 3 : 2) << tier << " w=" << w << " x=" << x;
            EXPECT_EQ(d16[x], away ? -3 : -2) << tier << " w=" << w << " x=" << x;
        }
        EXPECT_EQ(d8[w - 1], 3);
        ASSERT_EQ(f8(s8.data(), w + 2, d8.data(), w, {w, 1}, one, 1, 0), orvStsNoErr);
        for (int x = 0; x < w; ++x) EXPECT_EQ(d8[x], s8[x]);
    }
}

INSTANTIATE_TEST_SUITE_P(Tiers, FilterRow, ::testing::Values("m7", "n8", "y8", "e9"),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace orv::test
