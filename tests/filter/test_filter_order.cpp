// Order of summation of the column-group float filters (tiers e9, y8, n8):
// every destination pixel takes kernel rows top to bottom, and within a row
// the 8-wide groups left to right; the columns beyond the last full group
// follow in a second pass over all rows. Inputs are small integers times a
// power of two per (kernel row, group), so that a group's sum is exact in any
// add tree while the sums across groups and rows round: the result then
// equals a model of that order bit for bit.
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

enum class Order { Groups, RowMajor };

// One destination element: group sums exact, each addition to the running
// value rounded to float. Groups: rows outer over the 8-wide groups, then the
// remaining columns over all rows. RowMajor: each row's groups in turn.
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
    bool first = true;
    auto add = [&](float v) { acc = first ? v : acc + v, first = false; };
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
    int srcMis, dstMis;  // byte offsets from 16-byte alignment
    Flush flush;
};

// Runs one call on a guarded window; returns the destination and checks that
// nothing outside the region (nor element 3 of AC4) changed.
using Fill = std::function<float(int, int, int)>;
struct Result {
    std::unique_ptr<FilterSource<float>> src;
    std::vector<float> dst;  // the region's elements, AC4 with element 3
};
Result run(const Call& c, const std::vector<float>& k, const Fill& fill) {
    const int ch = c.l->ch, ax = c.kW / 2, ay = c.kH - 1;
    const int srcStep = (FilterSource<float>::min_step(c.w, ch, c.kW) + 15) / 16 * 16 + (c.srcMis ? 4 : 0);
    const size_t bytes = GuardedImage<float>::bytes_for(c.w + c.kW - 1, c.h + c.kH - 1, ch, srcStep);
    const size_t off = c.flush == Flush::End ? (64 - (bytes + c.srcMis) % 16) % 16 : size_t(c.srcMis);
    Result res{std::make_unique<FilterSource<float>>(c.w, c.h, ch, c.kW, c.kH, ax, ay, srcStep, c.flush, off), {}};
    auto& src = *res.src;
    src.fill(fill);
    const int dstStep = (c.w * ch * 4 + 31) / 16 * 16 + (c.dstMis ? 4 : 0);
    GuardedImage<float> dst(c.w, c.h, ch, dstStep, Flush::Start, size_t(c.dstMis));
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

// Elements whose bits differ from the model of the group order (reports the
// first three); `differs` counts those where the row-major model differs.
int mismatches(const Call& c, const Result& got, const std::vector<float>& k, int* differs = nullptr) {
    int bad = 0;
    for (int y = 0; y < c.h; ++y)
        for (int x = 0; x < c.w; ++x)
            for (int e = 0; e < c.l->used(); ++e) {
                auto at = [&](Order o) { return model(*got.src, k, c.kW, c.kH, c.kW / 2, c.kH - 1, x, y, e, o); };
                const float m = at(Order::Groups), v = got.dst[(size_t(y) * c.w + x) * c.l->ch + e];
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
    EXPECT_GT(runs, 600);
}

// A 17-wide kernel: the last column's pass follows all rows of the first 16
// columns, which rounds differently from taking each row whole.
TEST(FilterOrder, TailPassFollowsAllRows) {
    static const Layout& l = kLayouts[0];
    for (const char* tier : {"e9", "y8"}) {
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
                for (int mis = 0; mis < 3; ++mis) {
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
        for (int li = 0; li < 3; ++li)
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

}  // namespace
}  // namespace orv::test
