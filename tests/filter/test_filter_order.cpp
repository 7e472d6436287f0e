// Order of summation of the float 2-D filters against models of it, bit for
// bit, on a guarded window.
// Column-group kernels (tiers e9, y8, n8): every destination pixel takes
// kernel rows top to bottom, and within a row the 8-wide groups left to right;
// the columns beyond the last full group follow in a second pass over all
// rows. Inputs are small integers times a power of two per (kernel row,
// group), so that a group's sum is exact in any add tree while the sums across
// groups and rows round.
// Replicated-coefficient kernels (every tier, C1 from width 16 where the
// column-group frame leaves it, C3 from 6, C4 and AC4 from 4): one running
// float sum in window order (rows from the top, columns left to right), over
// aligned and unaligned addresses and steps; 2-byte rows and steps not a
// multiple of 4 go to the generic loop, which sums in the same order.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

using FilterFn = decltype(orviFilter_32f_C1R);

FilterFn* fn_of(const Layout& l, const std::string& tier) {
    return tier_fn<FilterFn>(std::string("orviFilter_32f_") + l.name, tier);
}

// Whether the entry routes this call to the column-group frame.
bool column_group_route(const std::string& tier, const Layout& l, int w, int kW) {
    if (tier == "e9") return l.ch == 1 ? (w >= 8 && kW > 3) : l.ch == 3 ? w >= 8 : true;
    if (l.ac4) return false;
    return l.ch == 1 ? w > kW + 8 : w > kW;
}

// Column groups of window columns: the 8-wide groups, then the rest.
int group_of(int wc, int kW) { return kW < 8 ? 0 : wc < (kW & ~7) ? wc / 8 : kW / 8; }

enum class Order { Groups, RowMajor, Running };

// One destination element: group sums exact, each addition to the running
// value rounded to float. Groups: rows outer over the 8-wide groups, then the
// remaining columns over all rows. RowMajor: each row's groups in turn.
// Running: every product rounded and added in window order, from +0.
float model(const FilterSource<float>& src, const std::vector<float>& k, int kW, int kH, int ax, int ay, int x,
            int y, int c, Order order) {
    const int nG = kW < 8 ? 1 : kW / 8 + (kW % 8 ? 1 : 0), full = kW < 8 ? 1 : kW / 8;
    auto group = [&](int r, int g) {
        // Exact: small integers at one scale. Starting from the first product
        // keeps the sign of a sum of negative zeros, as any add tree does.
        double s = 0;
        bool any = false;
        for (int wc = 0; wc < kW; ++wc)
            if (group_of(wc, kW) == g) {
                const double p = double(k[(kH - 1 - r) * kW + (kW - 1 - wc)]) *
                                 src.at(x + ax - (kW - 1 - wc), y + ay - (kH - 1 - r), c);
                s = any ? s + p : p, any = true;
            }
        return float(s);
    };
    float acc = 0;
    bool first = order != Order::Running;
    auto add = [&](float v) { acc = first ? v : acc + v, first = false; };
    if (order == Order::Running) {
        for (int r = 0; r < kH; ++r)
            for (int wc = 0; wc < kW; ++wc)
                add(k[(kH - 1 - r) * kW + (kW - 1 - wc)] * src.at(x + ax - (kW - 1 - wc), y + ay - (kH - 1 - r), c));
        return acc;
    }
    if (order == Order::RowMajor) {
        for (int r = 0; r < kH; ++r)
            for (int g = 0; g < nG; ++g) add(group(r, g));
        return acc;
    }
    for (int r = 0; r < kH; ++r)
        for (int g = 0; g < full; ++g) add(group(r, g));
    if (nG > full)
        for (int r = 0; r < kH; ++r) add(group(r, full));
    return acc;
}

// Kernel: small integers times 2^e, e drawn per (row, group) over a span wide
// enough that additions across groups round.
std::vector<float> order_kernel(int kW, int kH, std::mt19937& rng) {
    std::vector<float> k(size_t(kW) * kH);
    std::vector<int> e(size_t(kH) * 4);
    for (int& v : e) v = int(rng() % 29) - 14;
    for (int i = 0; i < kH; ++i)
        for (int j = 0; j < kW; ++j) {
            const int r = kH - 1 - i, g = group_of(kW - 1 - j, kW);
            k[size_t(i) * kW + j] = std::ldexp(float(int(rng() % 31) - 15), e[size_t(r) * 4 + g]);
        }
    return k;
}

struct Call {
    std::string tier;
    const Layout* l;
    int w, h, kW, kH;
    int srcMis, dstMis;  // first byte mod 16; -1: flush against the guard page
    Flush flush;
    int srcStep = 0, dstStep = 0;  // 0: whole 16 bytes, plus 4 where misaligned
    Flush dstFlush = Flush::Start;
};

// Offset from the guard page that puts the block's first byte at `mis` mod 16.
size_t offset_for(size_t bytes, int mis, Flush flush) {
    if (mis < 0) return 0;
    return flush == Flush::Start ? size_t(mis) : size_t((16 - (bytes + mis) % 16) % 16);
}

// Runs one call on a guarded window; returns the destination and checks that
// nothing outside the region (nor element 3 of AC4) changed.
using Fill = std::function<float(int, int, int)>;
struct Result {
    std::unique_ptr<FilterSource<float>> src;
    std::vector<float> dst;  // the region's elements, AC4 with element 3
};
Result run(const Call& c, const std::vector<float>& k, const Fill& fill) {
    const int ch = c.l->ch, ax = c.kW / 2, ay = c.kH - 1;
    const int srcStep =
        c.srcStep ? c.srcStep : (FilterSource<float>::min_step(c.w, ch, c.kW) + 15) / 16 * 16 + (c.srcMis ? 4 : 0);
    const size_t bytes = GuardedImage<float>::bytes_for(c.w + c.kW - 1, c.h + c.kH - 1, ch, srcStep);
    Result res{std::make_unique<FilterSource<float>>(c.w, c.h, ch, c.kW, c.kH, ax, ay, srcStep, c.flush,
                                                     offset_for(bytes, c.srcMis, c.flush)),
               {}};
    auto& src = *res.src;
    src.fill(fill);
    const int dstStep = c.dstStep ? c.dstStep : (c.w * ch * 4 + 31) / 16 * 16 + (c.dstMis ? 4 : 0);
    GuardedImage<float> dst(c.w, c.h, ch, dstStep, c.dstFlush,
                            offset_for(GuardedImage<float>::bytes_for(c.w, c.h, ch, dstStep), c.dstMis, c.dstFlush));
    dst.fill([](int x, int y, int e) { return float(-1000 - x - 7 * y - e); });
    FilterFn* fn = fn_of(*c.l, c.tier);
    EXPECT_EQ(fn(src.roi(), src.step(), dst.data(), dstStep, {c.w, c.h}, k.data(), {c.kW, c.kH}, {ax, ay}),
              orvStsNoErr);
    EXPECT_TRUE(dst.slack_intact());
    for (int y = 0; y < c.h; ++y)
        for (int x = 0; x < c.w; ++x)
            for (int e = 0; e < ch; ++e) {
                if (c.l->ac4 && e == 3) {
                    EXPECT_EQ(dst.get(x, y, 3), float(-1003 - x - 7 * y));
                }
                res.dst.push_back(dst.get(x, y, e));
            }
    return res;
}

// Source pixels: small integers.
Fill ints(std::mt19937& rng) {
    return [&rng](int, int, int) { return float(int(rng() % 31) - 15); };
}

// Elements whose bits differ from the model of `order` (reports the first
// three); `differs` counts those where the row-major model differs.
int mismatches(const Call& c, const Result& got, const std::vector<float>& k, int* differs = nullptr,
               Order order = Order::Groups) {
    int bad = 0;
    for (int y = 0; y < c.h; ++y)
        for (int x = 0; x < c.w; ++x)
            for (int e = 0; e < c.l->used(); ++e) {
                auto at = [&](Order o) { return model(*got.src, k, c.kW, c.kH, c.kW / 2, c.kH - 1, x, y, e, o); };
                const float m = at(order), v = got.dst[(size_t(y) * c.w + x) * c.l->ch + e];
                if (differs) *differs += m != at(Order::RowMajor);
                if (std::memcmp(&m, &v, 4) != 0 && bad++ < 3)
                    ADD_FAILURE() << c.tier << " " << c.l->name << " " << c.w << "x" << c.h << " k " << c.kW << "x"
                                  << c.kH << " mis " << c.srcMis << "/" << c.dstMis << " at " << x << "," << y << ","
                                  << e << ": " << v << " vs " << m;
            }
    return bad;
}

const char* kTiers[] = {"e9", "y8", "n8"};
const int kWidths[] = {1, 8, 16, 24, 11, 12, 13, 14, 15};

// Every kernel width, width around the block sizes and kW + 8, height below
// and above kH, aligned and misaligned source and destination.
TEST(FilterOrder, GroupOrderBitExact) {
    std::mt19937 rng(7);
    int runs = 0;
    for (const char* tier : kTiers)
        for (const Layout& l : kLayouts)
            for (int kW : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 17})
                for (int wi = 0; wi < 9 + 3; ++wi) {
                    const int w = wi < 9 ? kWidths[wi] : kW + 8 + (wi - 8) * 3 - 2;  // kW+9, +12, +15
                    if (!fn_of(l, tier) || !column_group_route(tier, l, w, kW)) continue;
                    for (int mis = 0; mis < 3; ++mis) {
                        const int kH = 1 + (runs % 5), h = 1 + (runs / 5) % 4;
                        Call c{tier, &l, w, h, kW, kH, mis == 1 ? 4 : 0, mis == 2 ? 4 : 0,
                               runs % 2 ? Flush::Start : Flush::End};
                        const auto k = order_kernel(kW, kH, rng);
                        mismatches(c, run(c, k, ints(rng)), k);
                        ++runs;
                    }
                }
    const size_t tested = count_tested({"e9", "y8", "n8"});
    if (tested == 0) GTEST_SKIP() << "e9, y8 and n8 are left out";
    EXPECT_GT(runs, tested == 3 ? 600 : 0);
}

// A 17-wide kernel: the last column's pass follows all rows of the first 16
// columns, which rounds differently from taking each row whole.
TEST(FilterOrder, TailPassFollowsAllRows) {
    static const Layout& l = kLayouts[0];
    for (const char* tier : {"e9", "y8"}) {
        if (!tier_tested(tier)) continue;
        std::mt19937 rng(11);
        const int w = 40, h = 6, kW = 17, kH = 9;
        Call c{tier, &l, w, h, kW, kH, 0, 0, Flush::End};
        const auto k = order_kernel(kW, kH, rng);
        int differs = 0;
        EXPECT_EQ(mismatches(c, run(c, k, ints(rng)), k, &differs), 0) << tier;
        EXPECT_GT(differs, w * h / 4) << tier;
    }
}

// Aligned and unaligned data run different kernels in y8 and n8, which must
// agree bit for bit; y8 and n8 run the same operations. Random coefficients.
TEST(FilterOrder, AlignedUnalignedAndTiersAgree) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> u(-1, 1);
    for (int li = 0; li < 3; ++li)
        for (int kW : {3, 5, 8, 12, 19}) {
            const Layout& l = kLayouts[li];
            const int w = kW + 8 + 13, h = 5, kH = 4;
            std::vector<float> k(size_t(kW) * kH);
            for (float& v : k) v = u(rng);
            auto noise = [](int x, int y, int e) { return std::sin(float(x * 131 + y * 71 + e * 17)); };
            std::vector<std::vector<float>> res;
            for (const char* tier : {"y8", "n8"})
                for (int mis = 0; mis < 3 && tier_tested(tier); ++mis) {
                    Call c{tier, &l, w, h, kW, kH, mis == 1 ? 4 : 0, mis == 2 ? 4 : 0, Flush::End};
                    res.push_back(run(c, k, noise).dst);
                }
            for (size_t i = 1; i < res.size(); ++i) EXPECT_EQ(res[i], res[0]) << l.name << " kW " << kW << " run " << i;
        }
}

// The aligned kernels of y8 and n8 read ahead by whole 16-byte vectors; a
// window whose last row ends inside such a vector, in a heap block of exactly
// its size, shows any read past it under AddressSanitizer. The result equals
// that of the guarded window.
TEST(FilterOrder, AlignedLookAheadStaysInWindow) {
    std::mt19937 rng(5);
    for (const char* tier : {"y8", "n8"})
        for (int li = 0; li < 3 && tier_tested(tier); ++li)
            for (int kW : {2, 3, 5, 6, 7, 10, 13})
                for (int w : {kW + 9, kW + 12, kW + 15, kW + 17}) {
                    const Layout& l = kLayouts[li];
                    const int kH = 2, h = 3, ch = l.ch, ax = kW / 2, ay = kH - 1;
                    Call c{tier, &l, w, h, kW, kH, 0, 0, Flush::End};
                    const auto k = order_kernel(kW, kH, rng);
                    const Result ref = run(c, k, ints(rng));
                    const int step = ref.src->step(), row = (w + kW - 1) * ch;
                    std::vector<float> win(size_t(step / 4) * (h + kH - 2) + row);  // 16-byte aligned
                    for (int y = 0; y < h + kH - 1; ++y)
                        for (int x = 0; x < w + kW - 1; ++x)
                            for (int e = 0; e < ch; ++e)
                                win[size_t(y) * (step / 4) + x * ch + e] =
                                    ref.src->at(x - (kW - 1 - ax), y - (kH - 1 - ay), e);
                    const int dstStep = (w * ch + 3) / 4 * 16;
                    std::vector<float> dst(size_t(dstStep / 4) * h);
                    fn_of(l, tier)(win.data() + (kW - 1 - ax) * ch + size_t(kH - 1 - ay) * (step / 4), step,
                                     dst.data(), dstStep, {w, h}, k.data(), {kW, kH}, {ax, ay});
                    for (int y = 0, bad = 0; y < h; ++y)
                        for (int x = 0; x < w * ch; ++x)
                            if (dst[size_t(y) * (dstStep / 4) + x] != ref.dst[size_t(y) * w * ch + x] && bad++ < 3)
                                ADD_FAILURE() << tier << " " << l.name << " kW " << kW << " w " << w;
                }
}

// Whether the call reaches the replicated-coefficient route in this tier.
bool replicated_route(const std::string& tier, const Layout& l, int w, int kW) {
    if (kW < 3) return false;
    if (tier == "e9") return (l.ch == 1 && kW == 3 && w >= 16) || (l.ch == 3 && w >= 6 && w < 8);
    return !(tier != "m7" && column_group_route(tier, l, w, kW)) && w >= (l.ch == 1 ? 16 : l.ch == 3 ? 6 : 4);
}

// Placements of the replicated-route calls: source step, first bytes mod 16.
struct Place {
    const char* what;
    bool round16;  // step: the least step rounded up to 16 bytes, or the least
    int stepAdd, srcMis;
    Flush srcFlush;
    int dstMis;
};
const Place kPlaces[] = {
    {"least step, flush", false, 0, -1, Flush::End, 0},
    {"aligned rows", true, 16, 0, Flush::End, 0},
    {"head of 3, dst 8-byte", true, 16, 4, Flush::End, 8},
    {"head of 1, start guarded", true, 16, 12, Flush::Start, 4},
    {"step 4 mod 16", true, 4, 8, Flush::End, 12},
    {"2-byte rows: generic", true, 16, 2, Flush::End, 0},
    {"odd step: generic", false, 2, 0, Flush::End, 0},
};

// Values of several magnitudes, so that another order of summation shows.
float value(std::mt19937& g) {
    std::uniform_real_distribution<float> u(-1.0f, 1.0f);
    std::uniform_int_distribution<int> e(-6, 6);
    return std::ldexp(u(g), e(g));
}

class FilterReplicated : public ::testing::TestWithParam<Layout> {};

TEST_P(FilterReplicated, OneRunningSumPerElementInWindowOrder) {
    const Layout& l = GetParam();
    const auto tiers = tiers_of<FilterFn>(std::string("orviFilter_32f_") + l.name);
    const bool all = count_tested({"m7", "n8", "y8", "e9"}) == 4;
    if (tiers.empty() && !all) GTEST_SKIP() << "the entry's tiers are left out";
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
                if (!replicated_route(t.tier, l, w, kW)) continue;
                for (const Place& p : kPlaces) {
                    SCOPED_TRACE(std::string(p.what));
                    const int least = FilterSource<float>::min_step(w, l.ch, kW);
                    Call c{t.tier, &l, w, 2 + w % 3, kW, 1 + kW % 3, p.srcMis, p.dstMis, p.srcFlush,
                           (p.round16 ? (least + 15) & ~15 : least) + p.stepAdd, w * l.ch * 4 + 8, Flush::End};
                    std::vector<float> k(size_t(kW) * c.kH);
                    for (float& v : k) v = value(g);
                    ++calls;
                    if (mismatches(c, run(c, k, [&](int, int, int) { return value(g); }), k, nullptr, Order::Running) ||
                        HasFailure())
                        return;
                }
            }
    if (calls == 0 && !all) GTEST_SKIP() << "no tested tier takes the route";
    EXPECT_GT(calls, 0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, FilterReplicated, ::testing::ValuesIn(kLayouts),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace orv::test
