// Constant and wrapped borders on every tier against the element formula:
// borders of 0, 1, around the 16-element blocks and wider than the image,
// source widths of 1 and either side of a block (element-wise and blocked
// wrap), odd addresses and step slack between guard pages, words moved bit for
// bit, and the checks in order with nothing written on failure.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orvi.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::GuardedImage;
using orv::test::TierFn;
using ConstFn = decltype(orviCopyConstBorder_32s_C1R);
using WrapFn = decltype(orviCopyWrapBorder_32s_C1R);

struct Case { int sw, sh, top, left, right, bottom; };
const Case kCases[] = {
    {5, 4, 0, 0, 0, 0},      {37, 3, 0, 0, 0, 0},    // plain copies
    {6, 3, 1, 1, 1, 1},      {40, 2, 2, 16, 1, 0},   // right border of one
    {1, 1, 3, 5, 4, 2},      {1, 4, 2, 20, 33, 5},   // source of one column
    {3, 2, 7, 40, 50, 9},    {15, 3, 2, 31, 17, 4},  // borders wider than the image
    {16, 2, 1, 16, 16, 1},   {17, 3, 5, 40, 53, 4},  // blocked wrap, right border over the width
    {50, 5, 16, 16, 16, 16}, {33, 2, 0, 1, 2, 0},  {2, 9, 20, 3, 70, 21},
};

// Offsets from the guard page and extra step bytes (odd: rows at odd addresses).
struct Place { Flush flush; size_t srcOffset, dstOffset; int srcExtra, dstExtra; };
const Place kPlaces[] = {{Flush::End, 0, 0, 0, 0}, {Flush::Start, 4, 12, 12, 20}, {Flush::End, 1, 3, 3, 7}};

Orv32s src_value(int x, int y) { return static_cast<Orv32s>(0x7FC00000u + 1000u * y + x); }  // NaN payloads

// The destination of a case from the formula: the source at
// ((x - left) mod sw, (y - top) mod sh) for wrap; value outside it otherwise.
Orv32s expected(const Case& c, int x, int y, bool wrap, Orv32s value) {
    const int sx = x - c.left, sy = y - c.top;
    if (wrap) return src_value(((sx % c.sw) + c.sw) % c.sw, ((sy % c.sh) + c.sh) % c.sh);
    return sx >= 0 && sx < c.sw && sy >= 0 && sy < c.sh ? src_value(sx, sy) : value;
}

template <class Run>
void check_all(Run run, bool wrap, Orv32s value) {
    for (const Case& c : kCases) {
        const int dw = c.left + c.sw + c.right, dh = c.top + c.sh + c.bottom;
        for (const Place& p : kPlaces) {
            GuardedImage<Orv32s> src(c.sw, c.sh, 1, 4 * c.sw + p.srcExtra, p.flush, p.srcOffset);
            GuardedImage<Orv32s> dst(dw, dh, 1, 4 * dw + p.dstExtra, p.flush, p.dstOffset);
            src.fill([](int x, int y, int) { return src_value(x, y); });
            const std::vector<unsigned char> srcBefore(src.bytes(), src.bytes() + src.size_bytes());
            ASSERT_EQ(run(src.data(), src.step(), OrviSize{c.sw, c.sh}, dst.data(), dst.step(), OrviSize{dw, dh},
                          c.top, c.left),
                      orvStsNoErr);
            for (int y = 0; y < dh; ++y)
                for (int x = 0; x < dw; ++x)
                    ASSERT_EQ(dst.get(x, y), expected(c, x, y, wrap, value))
                        << "at " << x << "," << y << " case " << (&c - kCases) << " place " << (&p - kPlaces);
            EXPECT_TRUE(dst.slack_intact());
            EXPECT_TRUE(src.unchanged_since(srcBefore.data()));
        }
    }
}

class ConstBorder : public ::testing::TestWithParam<TierFn<ConstFn>> {};
class WrapBorder : public ::testing::TestWithParam<TierFn<WrapFn>> {};

TEST_P(ConstBorder, MatchesFormula) {
    const Orv32s value = static_cast<Orv32s>(0xFF812345u);
    check_all([f = GetParam().fn, value](auto... a) { return f(a..., value); }, false, value);
}

TEST_P(WrapBorder, MatchesModuloFormula) { check_all(GetParam().fn, true, 0); }

// The checks in order: pointers, steps, then sizes and borders; nothing is
// written when one fails.
struct BadArgs { bool nullSrc, nullDst; int srcStep, dstStep, sw, sh, dw, dh, top, left; OrvStatus want; };
const BadArgs kBad[] = {
    {true, false, 0, 0, 0, 0, 0, 0, -1, -1, orvStsNullPtrErr},
    {false, true, 0, 0, 0, 0, 0, 0, -1, -1, orvStsNullPtrErr},
    {false, false, 0, 64, 4, 4, 8, 8, -1, 0, orvStsStepErr},  // a negative border with step 0
    {false, false, 16, -64, 0, 4, 8, 8, 0, 0, orvStsStepErr},
    {false, false, 16, 64, 0, 4, 8, 8, 0, 0, orvStsSizeErr},
    {false, false, 16, 64, 4, 0, 8, 8, 0, 0, orvStsSizeErr},
    {false, false, 16, 64, 4, 4, 0, 8, 0, 0, orvStsSizeErr},
    {false, false, 16, 64, 4, 4, 8, 0, 0, 0, orvStsSizeErr},
    {false, false, 16, 64, 4, 4, 8, 8, -1, 0, orvStsSizeErr},
    {false, false, 16, 64, 4, 4, 8, 8, 0, -1, orvStsSizeErr},
    {false, false, 16, 64, 4, 4, 8, 8, 2, 5, orvStsSizeErr},  // one column short
    {false, false, 16, 64, 4, 4, 8, 8, 5, 2, orvStsSizeErr},  // one row short
    {false, false, 16, 64, 4, 4, 8, 8, 0, 0x7FFFFFFF, orvStsSizeErr},
};

template <class Run>
void check_bad(Run run) {
    std::vector<Orv32s> src(64, 1), dst(128, 7);
    for (const BadArgs& b : kBad) {
        EXPECT_EQ(run(b.nullSrc ? nullptr : src.data(), b.srcStep, OrviSize{b.sw, b.sh},
                      b.nullDst ? nullptr : dst.data(), b.dstStep, OrviSize{b.dw, b.dh}, b.top, b.left),
                  b.want)
            << "case " << (&b - kBad);
        EXPECT_EQ(dst, std::vector<Orv32s>(128, 7));
    }
}

TEST_P(ConstBorder, ChecksInOrderAndWritesNothing) {
    check_bad([f = GetParam().fn](auto... a) { return f(a..., 5); });
}
TEST_P(WrapBorder, ChecksInOrderAndWritesNothing) { check_bad(GetParam().fn); }

ORV_INSTANTIATE_TIERS(ConstBorder, orviCopyConstBorder_32s_C1R);
ORV_INSTANTIATE_TIERS(WrapBorder, orviCopyWrapBorder_32s_C1R);

// The 32f forms and their stubs move the same words: a NaN payload and -0.0
// as the constant, NaN payloads in the source.
TEST(BorderFloat, ForwardsBitsOnEveryTierAndStub) {
    auto consts = orv::test::tiers_of<decltype(orviCopyConstBorder_32f_C1R)>("orviCopyConstBorder_32f_C1R");
    auto wraps = orv::test::tiers_of<decltype(orviCopyWrapBorder_32f_C1R)>("orviCopyWrapBorder_32f_C1R");
    ASSERT_EQ(consts.size(), orv::test::count_tested({"m7", "u8", "y8", "e9"}));
    ASSERT_EQ(wraps.size(), consts.size());
    consts.push_back({"stub", orviCopyConstBorder_32f_C1R});
    wraps.push_back({"stub", orviCopyWrapBorder_32f_C1R});
    const Case c{3, 2, 1, 2, 1, 1};
    const int dw = 6, dh = 4;
    float src[6], dst[24];
    for (int i = 0; i < 6; ++i) src[i] = std::bit_cast<float>(src_value(i % 3, i / 3));
    for (const float value : {std::bit_cast<float>(0xFFA00001u), -0.0f})
        for (size_t k = 0; k < consts.size(); ++k) {
            const Orv32s v = std::bit_cast<Orv32s>(value);
            ASSERT_EQ(consts[k].fn(src, 12, {3, 2}, dst, 24, {dw, dh}, c.top, c.left, value), orvStsNoErr);
            for (int i = 0; i < 24; ++i)
                ASSERT_EQ(std::bit_cast<Orv32s>(dst[i]), expected(c, i % dw, i / dw, false, v)) << consts[k].tier;
            ASSERT_EQ(wraps[k].fn(src, 12, {3, 2}, dst, 24, {dw, dh}, c.top, c.left), orvStsNoErr);
            for (int i = 0; i < 24; ++i)
                ASSERT_EQ(std::bit_cast<Orv32s>(dst[i]), expected(c, i % dw, i / dw, true, 0)) << wraps[k].tier;
        }
}

}  // namespace
