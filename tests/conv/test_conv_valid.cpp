// Valid 2-D convolution on every tier against a long double sum: each route
// either side of its threshold (kernel area 225, output area 144), the kernel
// given first, padded steps, FFT tiles cut at the right and lower edges and
// their sizes, all images between guard pages; argument checks in order;
// failed allocations.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "orvi.h"
#include "support/alloc_spy.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;
using ConvFn = decltype(orviConvValid_32f_C1R);
using Img = GuardedImage<float>;

enum class Route { filter, rows, fft };

struct Case {
    int aw, ah, bw, bh;
    Route route;
    bool kernelFirst;  // B passed as pSrc1
    int pad;           // slack bytes of every step
    int tileW = 0, tileH = 0;
};

const Case kCases[] = {
    {40, 30, 15, 14, Route::filter, false, 0},         // 210 kernel elements
    {50, 45, 7, 7, Route::filter, true, 12},           // padded kernel: dense copy
    {12, 220, 1, 200, Route::filter, false, 4},
    {25, 27, 15, 15, Route::rows, false, 0},           // 11 x 13 = 143 outputs
    {15, 15, 15, 15, Route::rows, false, 0},           // equal sizes: image 2 is B
    {45, 50, 40, 40, Route::rows, false, 8},
    {26, 26, 15, 15, Route::fft, false, 0, 32, 32},    // 12 x 12 = 144 outputs
    {150, 90, 20, 20, Route::fft, true, 20, 128, 128}, // right tile cut, rows below A zeroed
    {400, 40, 100, 3, Route::fft, false, 4, 256, 16},  // order 8 not doubled; lower tiles cut
    {20, 320, 1, 300, Route::fft, true, 0, 4, 1024},   // tile width 2 doubled
};

float uniform(std::mt19937& rng) { return float(int(rng() % 2001) - 1000) / 1000.0f; }

struct Images {
    Img a, b, dst;
    int ow, oh;
    Images(const Case& c, Flush f)
        : a(c.aw, c.ah, 1, 4 * c.aw + c.pad, f), b(c.bw, c.bh, 1, 4 * c.bw + c.pad, f),
          dst(c.aw - c.bw + 1, c.ah - c.bh + 1, 1, 4 * (c.aw - c.bw + 1) + c.pad, f),
          ow(dst.width()), oh(dst.height()) {
        std::mt19937 rng(c.aw * 7 + c.bh);
        a.fill([&](int, int, int) { return uniform(rng); });
        b.fill([&](int, int, int) { return uniform(rng); });
    }
    OrvStatus run(ConvFn* fn, const Case& c) {
        const OrviSize as{c.aw, c.ah}, bs{c.bw, c.bh};
        return c.kernelFirst ? fn(b.data(), b.step(), bs, a.data(), a.step(), as, dst.data(), dst.step())
                             : fn(a.data(), a.step(), as, b.data(), b.step(), bs, dst.data(), dst.step());
    }
};

class ConvValid : public ::testing::TestWithParam<TierFn<ConvFn>> {
protected:
    template <class F>
    F* same_tier(const char* name) {
        return tier_fn<F>(name, GetParam().tier);
    }
    // The direct routes give the bits of the filter with the anchor at the
    // kernel's last cell, or of the row filters summed from the kernel's last row.
    std::vector<float> model(const Images& m, Route r) {
        std::vector<float> out(size_t(m.ow) * m.oh, 0.0f), kern, row(out.size());
        const OrviSize os{m.ow, m.oh};
        if (r == Route::filter) {
            for (int y = 0; y < m.b.height(); ++y)
                for (int x = 0; x < m.b.width(); ++x) kern.push_back(m.b.get(x, y));
            same_tier<decltype(orviFilter_32f_C1R)>("orviFilter_32f_C1R")(
                m.a.data(), m.a.step(), out.data(), 4 * m.ow, os, kern.data(), {m.b.width(), m.b.height()},
                {m.b.width() - 1, m.b.height() - 1});
        } else {
            for (int i = 0; i < m.b.height(); ++i) {
                same_tier<decltype(orviFilterRow_32f_C1R)>("orviFilterRow_32f_C1R")(
                    m.a.row(i), m.a.step(), row.data(), 4 * m.ow, os, m.b.row(m.b.height() - 1 - i), m.b.width(),
                    m.b.width() - 1);
                for (size_t k = 0; k < out.size(); ++k) out[k] += row[k];
            }
        }
        return out;
    }
    // Bytes of the FFT route's block for a tile, from this tier's work-area size.
    size_t tile_block_bytes(int tw, int th) {
        OrviFFTSpec_R_32f* spec = nullptr;
        int buf = 0;
        same_tier<decltype(orviFFTInitAlloc_R_32f)>("orviFFTInitAlloc_R_32f")(&spec, std::countr_zero(unsigned(tw)),
                                                                              std::countr_zero(unsigned(th)), 2, 0);
        same_tier<decltype(orviFFTGetBufSize_R_32f)>("orviFFTGetBufSize_R_32f")(spec, &buf);
        same_tier<decltype(orviFFTFree_R_32f)>("orviFFTFree_R_32f")(spec);
        return 4 * (2 * size_t(tw) * th + size_t((buf + 15) & ~15) / 4);
    }
};

TEST_P(ConvValid, RoutesMatchTheSum) {
    int n = 0;
    for (const Case& c : kCases) {
        SCOPED_TRACE(::testing::Message() << "A " << c.aw << "x" << c.ah << " B " << c.bw << "x" << c.bh);
        Images m(c, ++n % 2 ? Flush::End : Flush::Start);
        AllocSpy spy;
        ASSERT_EQ(m.run(GetParam().fn, c), orvStsNoErr);
        EXPECT_EQ(spy.mallocs, spy.frees);
        if (c.route == Route::fft) {
            const size_t got = spy.lastBytes, want = tile_block_bytes(c.tileW, c.tileH);
            EXPECT_TRUE(got >= want && got < want + 64) << got << " bytes for " << want;
        }
        ASSERT_TRUE(m.dst.slack_intact());
        std::vector<float> bits = c.route == Route::fft ? std::vector<float>() : model(m, c.route);
        const long double eps = 0x1p-23L;
        const long double scale = c.route == Route::fft ? std::log2(double(c.tileW) * c.tileH) : 4;
        for (int y = 0; y < m.oh; ++y)
            for (int x = 0; x < m.ow; ++x) {
                long double sum = 0, mag = 0;
                for (int j = 0; j < c.bh; ++j)
                    for (int i = 0; i < c.bw; ++i) {
                        const long double p = (long double)m.a.get(x + i, y + j) * m.b.get(c.bw - 1 - i, c.bh - 1 - j);
                        sum += p, mag += std::fabs(p);
                    }
                const float got = m.dst.get(x, y);
                ASSERT_LE(std::fabs(got - sum), scale * eps * mag) << "at " << x << "," << y;
                if (!bits.empty()) {
                    ASSERT_EQ(std::bit_cast<uint32_t>(got), std::bit_cast<uint32_t>(bits[y * m.ow + x]));
                }
            }
    }
}

// A failed allocation gives orvStsMemAllocErr and leaks nothing; the filter
// and FFT routes leave the destination as it was when the first fails.
TEST_P(ConvValid, FailedAllocationsLeakNothing) {
    for (const Case& c : {kCases[1], kCases[3], kCases[7]})
        for (int fail = 1;; ++fail) {
            Images m(c, Flush::End);
            const std::vector<unsigned char> before(m.dst.bytes(), m.dst.bytes() + m.dst.size_bytes());
            AllocSpy spy(fail);
            const OrvStatus st = m.run(GetParam().fn, c);
            EXPECT_EQ(spy.frees, std::min(spy.mallocs, fail - 1)) << "failing allocation " << fail;
            if (spy.mallocs < fail) break;
            // Later failures of the direct routes are the filters' own; they may fall back.
            if (fail == 1 || c.route == Route::fft) EXPECT_EQ(st, orvStsMemAllocErr) << "failing allocation " << fail;
            else EXPECT_TRUE(st == orvStsMemAllocErr || st == orvStsNoErr) << "failing allocation " << fail;
            if (fail == 1 && c.route != Route::rows) {
                EXPECT_TRUE(m.dst.unchanged_since(before.data()));
            }
        }
}

// Null pointers, then sizes, then steps, then images that do not nest; the
// first failing check decides and nothing is written.
TEST_P(ConvValid, ChecksInOrderWriteNothing) {
    struct Args {
        const float *p1, *p2;
        float* d;
        int s1, s2, ds;
        OrviSize z1, z2;
    };
    Img a(5, 5, 1, 20), b(4, 4, 1, 16), dst(2, 2, 1, 8);
    a.fill([](int, int, int) { return 1.0f; });
    b.fill([](int, int, int) { return 1.0f; });
    const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
    const std::pair<std::function<void(Args&)>, OrvStatus> bad[] = {
        {[](Args& g) { g.p1 = nullptr, g.z1 = {0, 5}, g.s2 = 0; }, orvStsNullPtrErr},
        {[](Args& g) { g.p2 = nullptr, g.z2 = {4, -1}; }, orvStsNullPtrErr},
        {[](Args& g) { g.d = nullptr, g.ds = 0; }, orvStsNullPtrErr},
        {[](Args& g) { g.z1 = {5, 0}, g.s1 = 0; }, orvStsSizeErr},
        {[](Args& g) { g.z2 = {0, 4}, g.ds = -4; }, orvStsSizeErr},
        {[](Args& g) { g.s1 = 0, g.z2 = {6, 1}; }, orvStsStepErr},
        {[](Args& g) { g.s2 = -16; }, orvStsStepErr},
        {[](Args& g) { g.ds = 0; }, orvStsStepErr},
        {[](Args& g) { g.z2 = {6, 1}; }, orvStsSizeErr},  // wider and lower: outH < 1
        {[](Args& g) { g.z2 = {1, 6}; }, orvStsSizeErr},  // narrower and higher: outW < 1
    };
    for (const auto& [mutate, want] : bad) {
        Args g{a.data(), b.data(), dst.data(), 20, 16, 8, {5, 5}, {4, 4}};
        mutate(g);
        EXPECT_EQ(GetParam().fn(g.p1, g.s1, g.z1, g.p2, g.s2, g.z2, g.d, g.ds), want);
        EXPECT_TRUE(dst.unchanged_since(before.data()));
    }
}

ORV_INSTANTIATE_TIERS(ConvValid, orviConvValid_32f_C1R);

}  // namespace
