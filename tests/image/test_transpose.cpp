// Transposes on every tier against one plain reference: words moved bit for
// bit (NaN payloads included) on both sides of each route's conditions (widths
// around 512, heights around multiples of 16 and the 32-row bands, rows on and
// off 16, 32 and 64 bytes by address or by step), wide steps whose slack must
// survive, guard pages before or after both images, and the checks in order.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "orvi.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::GuardedImage;
using Fn32s = decltype(orviTranspose_32s_C1R);
using Fn32f = decltype(orviTranspose_32f_C1R);

// First pixel `addr` bytes past a 64-byte boundary; the step is the row's
// bytes rounded up to `mult`, plus `extra`.
struct Layout { int addr, mult, extra; };
constexpr Layout kA64{0, 64, 0}, kA16{16, 16, 0}, kAt32{32, 64, 0}, kStep32{0, 32, 32}, kAt16{16, 64, 0},
    kAt4{4, 16, 0}, kStep4{0, 16, 4}, kOdd{1, 1, 3}, kWide{8, 4, 200};

struct Case { int w, h; Layout src, dst; };
const Case kCases[] = {
    // Blocked candidates and 256-bit bands: width around 512, heights around 16 and 32.
    {512, 16, kA16, kA64}, {513, 16, kA16, kA64}, {516, 16, kA16, kA64}, {516, 32, kA16, kA64},
    {516, 48, kA16, kA64}, {516, 15, kA16, kA64}, {516, 17, kA16, kA64}, {516, 33, kA16, kA64},
    {1032, 64, kA64, kA64}, {12, 48, kA16, kA64}, {4, 16, kA16, kA64},
    // One condition missed each: source address or step off 16, destination on 32 but not 64, or on 16 only.
    {516, 48, kAt4, kA64}, {516, 48, kStep4, kA64}, {516, 48, kA16, kAt32}, {516, 48, kA16, kStep32},
    {516, 48, kA16, kAt16},
    // Plain bands: the last one short, edges in both directions, odd addresses and wide steps.
    {513, 47, kOdd, kOdd}, {130, 33, kWide, kWide}, {1, 1, kOdd, kOdd}, {1, 37, kA16, kOdd}, {37, 1, kOdd, kA64},
    {7, 70, kWide, kA16}, {257, 257, kA16, kA64}, {256, 300, kOdd, kWide}, {300, 256, kA64, kA64}};

int step_of(int rowBytes, Layout l) { return (rowBytes + l.mult - 1) / l.mult * l.mult + l.extra; }

// An image of width x height in the layout, flush against the guard page
// before it or after it.
GuardedImage<Orv32s> image(int w, int h, Layout l, Flush flush) {
    const int step = step_of(4 * w, l);
    const size_t bytes = GuardedImage<Orv32s>::bytes_for(w, h, 1, step);
    const size_t offset = flush == Flush::Start ? l.addr : (128 - (bytes + l.addr) % 64) % 64;
    return GuardedImage<Orv32s>(w, h, 1, step, flush, offset);
}

// Quiet and signalling NaNs of both signs among ordinary bit patterns.
Orv32s word(int x, int y) {
    static const uint32_t kNaNs[] = {0x7F800001u, 0xFFBFFFFFu, 0x7FC00123u, 0xFF800ABCu};
    const uint32_t v = (x + y) % 3 == 0 ? kNaNs[(x ^ y) & 3] : (x * 2654435761u) ^ (y * 40503u + 0x9E3779B9u);
    return static_cast<Orv32s>(v);
}

template <class Fn>
void check(Fn* fn, const Case& c, Flush flush, const std::string& what) {
    SCOPED_TRACE(what + " " + std::to_string(c.w) + "x" + std::to_string(c.h));
    auto src = image(c.w, c.h, c.src, flush);
    auto dst = image(c.h, c.w, c.dst, flush);
    src.fill([](int x, int y, int) { return word(x, y); });
    const std::vector<unsigned char> before(src.bytes(), src.bytes() + src.size_bytes());
    using P = std::conditional_t<std::is_same_v<Fn, Fn32s>, Orv32s, Orv32f>;
    ASSERT_EQ(fn(reinterpret_cast<const P*>(src.data()), src.step(), reinterpret_cast<P*>(dst.data()), dst.step(),
                 {c.w, c.h}),
              orvStsNoErr);
    long bad = 0;
    for (int x = 0; x < c.w; ++x)
        for (int y = 0; y < c.h; ++y) bad += dst.get(y, x) != word(x, y);
    EXPECT_EQ(bad, 0);
    EXPECT_TRUE(dst.slack_intact());
    EXPECT_TRUE(src.unchanged_since(before.data()));
}

class Transpose : public ::testing::TestWithParam<orv::test::TierFn<Fn32s>> {};

TEST_P(Transpose, MovesEveryWordExactly) {
    int k = 0;
    for (const auto& c : kCases) check(GetParam().fn, c, k++ % 2 ? Flush::End : Flush::Start, GetParam().tier);
}

TEST_P(Transpose, ChecksPointersThenSizesAndWritesNothing) {
    auto src = image(4, 4, kA64, Flush::End), dst = image(4, 4, kA64, Flush::End);
    const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
    auto* f = GetParam().fn;
    EXPECT_EQ(f(nullptr, 16, nullptr, 16, {0, 0}), orvStsNullPtrErr);
    EXPECT_EQ(f(src.data(), 16, nullptr, 16, {-1, 4}), orvStsNullPtrErr);
    EXPECT_EQ(f(nullptr, 16, dst.data(), 16, {4, 4}), orvStsNullPtrErr);
    for (OrviSize s : {OrviSize{0, 4}, {4, 0}, {-3, 4}, {4, -1}, {0, 0}})
        EXPECT_EQ(f(src.data(), 16, dst.data(), 16, s), orvStsSizeErr);
    EXPECT_TRUE(dst.unchanged_since(before.data()));
}

ORV_INSTANTIATE_TIERS(Transpose, orviTranspose_32s_C1R);

// The float form, through each tier and through the stub: the same words,
// NaN payloads intact.
TEST(Transpose32f, ForwardsBitForBit) {
    auto tiers = orv::test::tiers_of<Fn32f>("orviTranspose_32f_C1R");
    ASSERT_EQ(tiers.size(), orv::test::count_tested({"m7", "u8", "y8", "e9"}));
    tiers.push_back({"stub", &orviTranspose_32f_C1R});
    for (const auto& t : tiers)
        for (const Case& c : {kCases[4], kCases[16]}) check(t.fn, c, Flush::End, t.tier);
    EXPECT_EQ(orviTranspose_32f_C1R(nullptr, 4, nullptr, 4, {1, 1}), orvStsNullPtrErr);
}

}  // namespace
