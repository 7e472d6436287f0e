// Float images to 8u (C1, AC4), 16s and 16u (AC4) on every tier against one
// element reference: three rounding rules with ties, saturation at both bounds,
// NaN, infinities; regions from 1x1 up at any byte address with step slack
// between guard pages, dense images, AC4's fourth element kept, MXCSR after
// the call for each mode and entry word, and the checks in order.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "orvi.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"
#include "vector/convert_ref.h"

namespace orv::test {
namespace {

// One public conversion of one tier behind a common signature; read and
// write move one destination element.
struct ConvCase {
    std::string tier, name;
    IntType limits;
    int channels;
    size_t elemSize;
    std::function<OrvStatus(const float*, int, void*, int, OrviSize, int)> run;
    std::function<int64_t(const unsigned char*)> read;
    std::function<void(unsigned char*, int64_t)> write;
};
void PrintTo(const ConvCase& c, std::ostream* os) { *os << c.name << " " << c.tier; }

template <class T>
void add(std::vector<ConvCase>& out, const char* name, IntType limits, int channels) {
    using Fn = OrvStatus(const Orv32f*, int, T*, int, OrviSize, int);
    for (const auto& tf : tiers_of<Fn>(name)) {
        Fn* fn = tf.fn;
        out.push_back({tf.tier, name, limits, channels, sizeof(T),
                       [fn](const float* s, int ss, void* d, int ds, OrviSize r, int m) {
                           return fn(s, ss, static_cast<T*>(d), ds, r, m);
                       },
                       [](const unsigned char* p) { return static_cast<int64_t>(get(reinterpret_cast<const T*>(p), 0)); },
                       [](unsigned char* p, int64_t v) { put(reinterpret_cast<T*>(p), 0, static_cast<T>(v)); }});
    }
}

std::vector<ConvCase> all_cases() {
    std::vector<ConvCase> v;
    add<Orv8u>(v, "orviConvert_32f8u_C1R", k8u, 1);
    add<Orv8u>(v, "orviConvert_32f8u_AC4R", k8u, 4);
    add<Orv16s>(v, "orviConvert_32f16s_AC4R", k16s, 4);
    add<Orv16u>(v, "orviConvert_32f16u_AC4R", k16u, 4);
    return v;
}

// One element: modes 0 and 1 give the type's maximum for a NaN and limit
// on both sides; any other mode rounds half away as the vector conversion.
int64_t reference(float x, const IntType& t, int mode) {
    if (mode == 0 || mode == 1) {
        if (std::isnan(x)) return t.hi;
        return ref_to_int(x, t, mode == 1 ? Rule::Near : Rule::Trunc, 0);
    }
    return ref_to_int(x, t, Rule::HalfAway, 0);
}

class Convert : public ::testing::TestWithParam<ConvCase> {
protected:
    // Converts a w x h region with the given placement and extra step bytes
    // and compares every element; the destination's fourth elements must be
    // as they were, the slack and everything outside untouched.
    void run_region(int w, int h, int mode, Flush flush, size_t srcOff, size_t dstOff, int srcExtra, int dstExtra,
                    std::mt19937& rng) {
        const ConvCase& c = GetParam();
        const int n = w * c.channels;
        GuardedImage<float> src(w, h, c.channels, 4 * n + srcExtra, flush, srcOff);
        GuardedImage<unsigned char> dst(w * c.channels * static_cast<int>(c.elemSize), h, 1,
                                        n * static_cast<int>(c.elemSize) + dstExtra, flush, dstOff);
        const std::vector<float> data = mixed_floats(static_cast<size_t>(n) * h, c.limits.lo, c.limits.hi, rng, 0.05);
        src.fill([&](int x, int y, int ch) { return data[static_cast<size_t>(y) * n + x * c.channels + ch]; });
        for (int y = 0; y < h; ++y)  // the fourth elements a pattern to keep
            for (int x = 0; x < n; ++x) c.write(elem(dst, x, y), (x * 7 + y * 3) % 200);
        ASSERT_EQ(c.run(src.data(), src.step(), dst.data(), dst.step(), {w, h}, mode), orvStsNoErr);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < n; ++x) {
                const float in = data[static_cast<size_t>(y) * n + x];
                const bool alpha = c.channels == 4 && x % 4 == 3;
                const int64_t want = alpha ? (x * 7 + y * 3) % 200 : reference(in, c.limits, mode);
                ASSERT_EQ(c.read(elem(dst, x, y)), want)
                    << "element " << x << " row " << y << " of " << w << "x" << h << " mode " << mode << ": " << in;
            }
        EXPECT_TRUE(dst.slack_intact());
    }
    unsigned char* elem(const GuardedImage<unsigned char>& img, int x, int y) const {
        return img.row(y) + static_cast<size_t>(x) * GetParam().elemSize;
    }
};

TEST_P(Convert, RegionsAtAnyPlacementEveryMode) {
    std::mt19937 rng(11);
    struct Size { int w, h; };
    const Size sizes[] = {{1, 1}, {2, 1}, {3, 2}, {4, 3}, {5, 2}, {7, 1}, {8, 2}, {9, 3}, {15, 2}, {16, 2}, {17, 3},
                          {31, 2}, {33, 4}, {64, 2}, {100, 3}};
    int k = 0;
    for (const Size& s : sizes)
        for (int mode : {0, 1, 2, -7}) {
            ++k;
            const Flush flush = k % 2 ? Flush::End : Flush::Start;
            // Source at every 4-byte offset mod 32 and sometimes an odd one;
            // destination at any byte offset; steps with and without slack.
            const size_t srcOff = k % 5 == 0 ? 2 : (4 * k) % 32, dstOff = (3 * k) % 32;
            run_region(s.w, s.h, mode, flush, srcOff, dstOff, (k % 3) * 4 + (k % 7 == 0), (k % 4) * 3, rng);
        }
}

// Rows that follow each other without a gap on both sides are done as one.
TEST_P(Convert, DenseImages) {
    std::mt19937 rng(5);
    for (int mode : {0, 1, 2})
        for (const int w : {1, 3, 16, 37}) run_region(w, 5, mode, Flush::End, 0, 0, 0, 0, rng);
}

// Ties and both bounds of the type under each rule, spot values that pin
// the reference itself.
TEST_P(Convert, KnownResults) {
    const ConvCase& c = GetParam();
    struct Known { float x; int64_t zero, nearest, away; };  // modes 0, 1, 2
    const int64_t lo = c.limits.lo, hi = c.limits.hi;
    const float flo = static_cast<float>(lo), fhi = static_cast<float>(hi);
    std::vector<Known> known = {{2.5f, 2, 2, 3},         {3.5f, 3, 4, 4},           {2.4f, 2, 2, 2},
                                {0.5f, 0, 0, 1},         {fhi - 0.5f, hi - 1, hi - 1, hi},
                                {fhi + 0.5f, hi, hi, hi}, {flo - 0.5f, lo, lo, lo}, {1e10f, hi, hi, hi},
                                {INFINITY, hi, hi, hi},  {-1e10f, lo, lo, lo},     {-INFINITY, lo, lo, lo},
                                {NAN, hi, hi, c.limits.floorAtZero ? 0 : hi}};
    if (lo < 0) known.push_back({-2.5f, -2, -2, -3});
    for (const Known& k : known)
        for (int mode : {0, 1, 2}) {
            const float px[4] = {k.x, k.x, k.x, k.x};
            unsigned char out[16] = {};
            ASSERT_EQ(c.run(px, 16, out, 16, {1, 1}, mode), orvStsNoErr);
            EXPECT_EQ(c.read(out), mode == 0 ? k.zero : mode == 1 ? k.nearest : k.away)
                << k.x << " mode " << mode;
        }
}

// The rounding control before and after: taken back when the call changed
// it, left alone (with the flags the conversion raised) when the caller's
// word already had the mode's rounding.
TEST_P(Convert, MxcsrAfterTheCall) {
    const ConvCase& c = GetParam();
    struct Word { unsigned before; int mode; bool restored; int64_t of2p7; };  // of2p7: 2.7 converted under it
    const unsigned d = kMxcsrDefault;
    const Word words[] = {{d, 1, false, 3}, {d | kRoundUp, 1, true, 3}, {d | kRoundZero, 1, true, 3},
                          {d, 0, true, 2},  {d | kRoundDown, 0, true, 2},
                          {d | kRoundZero, 0, false, 2},  // already truncating: nothing restored
                          {d, 2, true, 3},  {d | kRoundUp, 2, true, 3}, {d | kRoundZero, 2, false, 3}};
    for (const Word& w : words) {
        const float px[8] = {2.7f, 2.7f, 2.7f, 1.0f, 2.7f, 2.7f, 2.7f, 1.0f};
        unsigned char out[16] = {};
        unsigned after;
        {
            MxcsrScope scope(w.before);
            ASSERT_EQ(c.run(px, 32, out, 16, {8 / c.channels, 1}, w.mode), orvStsNoErr);
            after = _mm_getcsr();
        }
        EXPECT_EQ(c.read(out), w.of2p7) << std::hex << w.before << " mode " << w.mode;
        // Not restored: the entry word with the conversion's inexact flag.
        EXPECT_EQ(after, w.restored ? w.before : (w.before | kInexact)) << std::hex << w.before << " mode " << w.mode;
    }
}

TEST_P(Convert, ChecksInOrderAndWritesNothing) {
    const ConvCase& c = GetParam();
    const float src[16] = {};
    unsigned char dst[64];
    std::memset(dst, 0x33, sizeof dst);
    struct Bad { bool nullSrc, nullDst; int srcStep, dstStep, w, h; OrvStatus want; };
    const Bad bad[] = {{true, false, 0, 0, 0, 0, orvStsNullPtrErr}, {false, true, 0, 0, 0, 0, orvStsNullPtrErr},
                       {false, false, 0, 0, 0, 1, orvStsSizeErr},     {false, false, 0, 0, 1, -1, orvStsSizeErr},
                       {false, false, 0, 16, 1, 1, orvStsStepErr},    {false, false, 16, 0, 1, 1, orvStsStepErr},
                       {false, false, -16, 16, 1, 1, orvStsStepErr},  {false, false, 16, -8, 1, 1, orvStsStepErr}};
    for (const Bad& b : bad) {
        EXPECT_EQ(c.run(b.nullSrc ? nullptr : src, b.srcStep, b.nullDst ? nullptr : dst, b.dstStep, {b.w, b.h}, 1),
                  b.want);
        for (unsigned char v : dst) ASSERT_EQ(v, 0x33);
    }
}

INSTANTIATE_TEST_SUITE_P(Tiers, Convert, ::testing::ValuesIn(all_cases()),
                         [](const auto& info) { return info.param.name.substr(12) + "_" + info.param.tier; });

}  // namespace
}  // namespace orv::test
