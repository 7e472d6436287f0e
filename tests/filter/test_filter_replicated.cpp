// The replicated-coefficient kernels of the float 2-D filters, through every
// tier's entries where their route takes the call (C1 from width 16 where the
// column-group frame leaves it, C3 from 6, C4 and AC4 from 4): each element
// carries the bits of one running float sum in window order (rows from the
// top, columns left to right). Window against a guard page, destination slack
// checked, aligned and unaligned addresses and steps; 2-byte rows and steps
// not a multiple of 4 go to the generic loop, which sums in the same order.
#include <gtest/gtest.h>

#include <random>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

using Fn = decltype(orviFilter_32f_C1R);

// Whether the call reaches the replicated-coefficient route in this tier.
bool reaches(const std::string& tier, const Layout& l, int w, int kW) {
    if (kW < 3) return false;
    if (tier == "e9") return (l.ch == 1 && kW == 3 && w >= 16) || (l.ch == 3 && w >= 6 && w < 8);
    const bool group = tier != "m7" && !l.ac4 && (l.ch == 1 ? w > kW + 8 : w > kW);
    return !group && w >= (l.ch == 1 ? 16 : l.ch == 3 ? 6 : 4);
}

// Placement: alignments are of the window's and destination's first byte mod 16.
struct Place {
    const char* what;
    int srcStepMode;  // 0: least step, 1: multiple of 16 plus 16, 2: multiple of 16 plus 4, 3: least plus 2
    int srcAlign;     // -1: flush against the guard page wherever that puts it
    Flush srcFlush;
    int dstAlign;
};
const Place kPlaces[] = {
    {"least step, flush", 0, -1, Flush::End, 0},
    {"aligned rows", 1, 0, Flush::End, 0},
    {"head of 3, dst 8-byte", 1, 4, Flush::End, 8},
    {"head of 1, start guarded", 1, 12, Flush::Start, 4},
    {"step 4 mod 16", 2, 8, Flush::End, 12},
    {"2-byte rows: generic", 1, 2, Flush::End, 0},
    {"odd step: generic", 3, 0, Flush::End, 0},
};

int src_step(int mode, int least) {
    const int r16 = (least + 15) & ~15;
    return mode == 0 ? least : mode == 1 ? r16 + 16 : mode == 2 ? r16 + 4 : least + 2;
}

// Offset from the guard page that puts the block's first byte at `align` mod 16.
size_t offset_for(size_t bytes, int align, Flush flush) {
    if (align < 0) return 0;
    return flush == Flush::Start ? size_t(align) : size_t((16 - (bytes + align) % 16) % 16);
}

// Values of several magnitudes, so that another order of summation shows.
float value(std::mt19937& g) {
    std::uniform_real_distribution<float> u(-1.0f, 1.0f);
    std::uniform_int_distribution<int> e(-6, 6);
    return std::ldexp(u(g), e(g));
}

// One call against the running-sum model; returns false after the first
// differing element (reported).
bool check(Fn* fn, const Layout& l, int w, int kW, const Place& p, std::mt19937& g) {
    const int ch = l.ch, used = l.used();
    const int kH = 1 + kW % 3, h = 2 + w % 3, ax = kW / 2, ay = kH - 1;
    const int least = FilterSource<float>::min_step(w, ch, kW), step = src_step(p.srcStepMode, least);
    const size_t srcBytes = GuardedImage<float>::bytes_for(w + kW - 1, h + kH - 1, ch, step);
    FilterSource<float> src(w, h, ch, kW, kH, ax, ay, step, p.srcFlush, offset_for(srcBytes, p.srcAlign, p.srcFlush));
    src.fill([&](int, int, int) { return value(g); });
    const int dstStep = w * ch * 4 + 8;
    const size_t dstBytes = GuardedImage<float>::bytes_for(w, h, ch, dstStep);
    GuardedImage<float> dst(w, h, ch, dstStep, Flush::End, offset_for(dstBytes, p.dstAlign, Flush::End));
    dst.fill([&](int x, int y, int c) { return c == 3 ? float(x * 100 + y) : -7.0f; });
    std::vector<float> k(size_t(kW) * kH);
    for (float& v : k) v = value(g);
    EXPECT_EQ(fn(src.roi(), step, dst.data(), dstStep, {w, h}, k.data(), {kW, kH}, {ax, ay}), orvStsNoErr);
    EXPECT_TRUE(dst.slack_intact());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < ch; ++c) {
                float want = float(x * 100 + y);
                if (c < used) {
                    want = 0.0f;
                    for (int r = 0; r < kH; ++r)
                        for (int j = 0; j < kW; ++j)
                            want += k[size_t(kH - 1 - r) * kW + (kW - 1 - j)] *
                                    src.at(x + ax - (kW - 1) + j, y + ay - (kH - 1) + r, c);
                }
                const float got = dst.get(x, y, c);
                if (std::memcmp(&got, &want, sizeof got) != 0) {
                    ADD_FAILURE() << p.what << ": w " << w << " k " << kW << "x" << kH << " at " << x << "," << y
                                  << "," << c << ": " << got << " != " << want;
                    return false;
                }
            }
    return !::testing::Test::HasFailure();
}

class FilterReplicated : public ::testing::TestWithParam<Layout> {};

TEST_P(FilterReplicated, OneRunningSumPerElementInWindowOrder) {
    const Layout& l = GetParam();
    const auto tiers = tiers_of<Fn>(std::string("orviFilter_32f_") + l.name);
    ASSERT_FALSE(tiers.empty());
    // C1: every tail length and load bound from 16 on; the pixel layouts up
    // to the widths the column-group frames leave, and two wider ones for m7.
    std::vector<int> widths;
    for (int w = l.ch == 1 ? 16 : 4; w <= (l.ch == 1 ? 40 : 18); ++w) widths.push_back(w);
    if (l.ch != 1) widths.insert(widths.end(), {29, 40});
    std::mt19937 g(12345);
    int calls = 0;
    for (const auto& t : tiers)
        for (int kW : {3, 4, 5, 6, 7, 8, 9, 16, 17})
            for (int w : widths) {
                if (!reaches(t.tier, l, w, kW)) continue;
                for (const Place& p : kPlaces) {
                    SCOPED_TRACE(t.tier);
                    ++calls;
                    if (!check(t.fn, l, w, kW, p, g)) return;
                }
            }
    EXPECT_GT(calls, 0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, FilterReplicated, ::testing::ValuesIn(kLayouts),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace orv::test
