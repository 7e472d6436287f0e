// 2-D filters: every entry in every tier against the long double reference,
// over kernel shapes, widths either side of the route thresholds, anchors in
// and outside the kernel, steps at and above the minimum; source window and
// kernel between guard pages, destination slack and AC4's fourth channel kept.
// Then statuses in order, the scratch each call takes, and failed allocations.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <numeric>
#include <sstream>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

template <class TS, class TD>
using FilterFn = OrvStatus(const TS*, int, TD*, int, OrviSize, const Orv32f*, OrviSize, OrviPoint);

enum class Lay { C1, C3, C4, AC4 };

uint32_t mix(uint32_t a, uint32_t b, uint32_t c, uint32_t seed) {
    uint32_t h = seed * 0x9E3779B9u ^ a * 0x85EBCA6Bu ^ b * 0xC2B2AE35u ^ c * 0x27D4EB2Fu;
    h ^= h >> 15, h *= 0x2C1B3C6Du, h ^= h >> 12, h *= 0x297A2D39u, h ^= h >> 15;
    return h;
}

// Float data in [-1, 1). Integer data are dyadic: coefficients k / 16 with
// |k| <= 24 and pixels small enough that every partial sum is exact in single
// precision, so the exact sum decides the rounding, whatever the route's order.
constexpr int kCoefUnits = 24;

template <class T>
T pixel(int x, int y, int c, int taps) {
    const uint32_t h = mix(uint32_t(x), uint32_t(y), uint32_t(c), 7);
    if constexpr (std::is_same_v<T, Orv32f>) {
        return float(h >> 8) * 0x1p-23f - 1.0f;
    } else {
        const int64_t exact = (int64_t(1) << 24) / (16 * (kCoefUnits / 16.0) * taps);
        const int64_t hi = std::min<int64_t>(std::numeric_limits<T>::max(), exact), lo = std::is_signed_v<T> ? -hi : 0;
        return T(lo + int64_t(h % uint64_t(hi - lo + 1)));
    }
}

template <class TS>
std::vector<float> make_kernel(int kW, int kH, uint32_t seed) {
    std::vector<float> k(size_t(kW) * kH);
    for (size_t i = 0; i < k.size(); ++i) {
        const uint32_t h = mix(uint32_t(i), 0, 0, seed);
        if constexpr (std::is_same_v<TS, Orv32f>) k[i] = float(h >> 8) * 0x1p-23f - 1.0f;
        else k[i] = float(int(h % (2 * kCoefUnits + 1)) - kCoefUnits) / 16.0f;
    }
    return k;
}

struct Case {
    int w, h, kW, kH, ax, ay;
    int srcExtra = 0, dstExtra = 0;  // step above the minimum, in elements
    Flush flush = Flush::End;         // source; destination and kernel take the other side in turn
    size_t offset = 0;                // elements between the block and its guard page
    bool noScratch = false;           // every allocation fails: routes without scratch
    std::string str() const {
        std::ostringstream o;
        o << w << "x" << h << " k " << kW << "x" << kH << " @" << ax << "," << ay << " +" << srcExtra << "/+"
          << dstExtra << " " << int(flush) << "+" << offset;
        return o.str();
    }
};

// Anchors: centre, corners, and outside the kernel on either side.
void anchor_of(int variant, int kW, int kH, int& ax, int& ay) {
    switch (variant % 5) {
        case 0: ax = kW / 2, ay = kH / 2; break;
        case 1: ax = 0, ay = 0; break;
        case 2: ax = kW - 1, ay = kH - 1; break;
        case 3: ax = -2, ay = kH + 1; break;
        default: ax = kW + 3, ay = -1; break;
    }
}

// The sweep: kernel shapes 1x1..9x9, 16x16, 17x17, 1xN, Nx1 and some oblong
// (kW, kH, and whether the float entries take every width 1..40); otherwise
// widths either side of the route thresholds 8, 16 and kW + 8.
std::vector<Case> sweep(bool allWidths) {
    static const int shapes[][3] = {{1, 1, 1}, {2, 2, 0},   {3, 3, 1},   {4, 4, 0}, {5, 5, 1}, {6, 6, 0},  {7, 7, 0},
                                    {8, 8, 0}, {9, 9, 0},   {16, 16, 0}, {17, 17, 0}, {1, 7, 0}, {7, 1, 0}, {1, 17, 0},
                                    {17, 1, 0}, {3, 5, 0}, {8, 3, 1},   {10, 2, 0}, {5, 9, 0}};
    std::vector<Case> out;
    int n = 0;
    for (const auto& s : shapes) {
        const int kW = s[0], kH = s[1];
        std::vector<int> widths = allWidths ? std::vector<int>{1, 3, 4, 5, 7, 8, 9, 15, 16, 17, kW + 8, kW + 9, 33}
                                            : std::vector<int>{1, 4, 5, 7, 8, 9, 16, 17, kW + 9};
        if (allWidths && s[2]) widths.resize(40), std::iota(widths.begin(), widths.end(), 1);
        for (int w : widths) {
            Case c{w, 1 + n % 3 + (n % 7 == 0 ? kH : 0), kW, kH, 0, 0};  // regions shorter and taller than the kernel
            anchor_of(n, kW, kH, c.ax, c.ay);
            c.srcExtra = (n % 4 == 1) ? 1 : (n % 4 == 3) ? 9 : 0;
            c.dstExtra = (n % 3 == 1) ? 4 : 0;
            c.flush = n % 2 ? Flush::Start : Flush::End;
            c.offset = size_t(n % 5 == 4 ? 1 : 0) + size_t(n % 6 == 5 ? 4 : 0);
            out.push_back(c);
            ++n;
        }
    }
    return out;
}

struct Target {
    Target(std::string e, std::string t) : entry(std::move(e)), tier(std::move(t)) {}
    virtual ~Target() = default;
    // Filters a case (with its own kernel unless one is given) and compares
    // with the reference; `exact`: float results without rounding error too.
    virtual testing::AssertionResult check(const Case& c, const float* kernel = nullptr, bool exact = false) const = 0;
    virtual testing::AssertionResult statuses() const = 0;
    // Orv32f elements of scratch this entry asks for, 0 for none.
    virtual int64_t scratch_len(int w, int kW, int kH) const = 0;
    const std::string entry, tier;
};

template <class TS, class TD, Lay L>
struct TargetOf : Target {
    static constexpr int kCh = L == Lay::C1 ? 1 : L == Lay::C3 ? 3 : 4;
    static constexpr int kUsed = L == Lay::AC4 ? 3 : kCh;
    using Fn = FilterFn<TS, TD>;

    TargetOf(std::string entry, std::string tier, Fn* fn) : Target(std::move(entry), std::move(tier)), fn_(fn) {}

    // Tier e9's integer column-group route rounds half away from zero; every
    // other route of the integer entries (row pair, pixel block, generic loop)
    // rounds half to even. The sums here are exact, so the rule decides.
    bool rounds_away(int w) const {
        if (tier != "e9") return false;
        if constexpr (L == Lay::C1 || L == Lay::C3) return w >= 8;
        else if constexpr (sizeof(TS) == 1) return w > 8;
        else return true;
    }

    // Places source, destination and kernel between guard pages, calls and
    // compares with the reference.
    testing::AssertionResult check(const Case& c, const float* kernel, bool exact) const override {
        const std::vector<float> own = make_kernel<TS>(c.kW, c.kH, uint32_t(c.kW * 31 + c.kH));
        const int taps = c.kW * c.kH;
        const int srcStep = FilterSource<TS>::min_step(c.w, kCh, c.kW) + c.srcExtra * int(sizeof(TS));
        const Flush other = c.flush == Flush::End ? Flush::Start : Flush::End;
        FilterSource<TS> src(c.w, c.h, kCh, c.kW, c.kH, c.ax, c.ay, srcStep, c.flush, c.offset * sizeof(TS));
        src.fill([&](int x, int y, int ch) { return pixel<TS>(x, y, ch, taps); });
        GuardedImage<TD> dst(c.w, c.h, kCh, (c.w * kCh + c.dstExtra) * int(sizeof(TD)), other, c.offset * sizeof(TD));
        Guarded<float> kg(size_t(taps), c.offset % 2 ? c.flush : other);
        const float* k = kg.data();
        std::memcpy(kg.data(), kernel ? kernel : own.data(), size_t(taps) * sizeof(float));
        const OrvStatus st = fn_(src.roi(), src.step(), dst.data(), dst.step(), OrviSize{c.w, c.h}, k,
                                 OrviSize{c.kW, c.kH}, OrviPoint{c.ax, c.ay});
        if (st != orvStsNoErr) return testing::AssertionFailure() << "status " << st;
        if (!dst.slack_intact()) return testing::AssertionFailure() << "row slack written";
        const FilterRef ref = filter_ref(src, c.w, c.h, kUsed, k, c.kW, c.kH, c.ax, c.ay);
        const long double eps = exact ? 0 : std::numeric_limits<float>::epsilon();
        for (int y = 0; y < c.h; ++y)
            for (int x = 0; x < c.w; ++x) {
                for (int ch = 0; ch < kUsed; ++ch) {
                    const TD got = dst.get(x, y, ch);
                    const long double v = ref.at(x, y, ch);
                    bool ok = std::fabs((long double)got - v) <= ref.mag(x, y, ch) * taps * eps;
                    if constexpr (!std::is_same_v<TD, Orv32f>)
                        ok = got == (rounds_away(c.w) && !c.noScratch ? round_away_sat<TD>(v) : round_even_sat<TD>(v));
                    if (!ok)
                        return testing::AssertionFailure() << "pixel (" << x << "," << y << ") channel " << ch
                                                           << ": got " << double(got) << ", want " << double(v);
                }
                if constexpr (L == Lay::AC4) {
                    TD pattern;
                    std::memset(&pattern, GuardedImage<TD>::kSlack, sizeof pattern);
                    const TD a = dst.get(x, y, 3);
                    if (std::memcmp(&a, &pattern, sizeof a) != 0)
                        return testing::AssertionFailure() << "fourth channel of (" << x << "," << y << ") written";
                }
            }
        return testing::AssertionSuccess();
    }

    // Statuses in order: null pointers, then sizes, then steps. A failing call
    // writes nothing and allocates nothing.
    testing::AssertionResult statuses() const override {
        const int w = 5, h = 3, kW = 3, kH = 2;
        FilterSource<TS> src(w, h, kCh, kW, kH, 1, 1, FilterSource<TS>::min_step(w, kCh, kW));
        GuardedImage<TD> dst(w, h, kCh, w * kCh * int(sizeof(TD)));
        std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
        const std::vector<float> k(size_t(kW) * kH, 1.0f);
        const int ss = src.step(), ds = dst.step();
        struct Row {
            const char* what;
            bool nullSrc, nullDst, nullKernel;
            int w, h, kW, kH, srcStep, dstStep;
            OrvStatus want;
        };
        const Row rows[] = {
            {"null source", true, false, false, w, h, kW, kH, ss, ds, orvStsNullPtrErr},
            {"null destination", false, true, false, w, h, kW, kH, ss, ds, orvStsNullPtrErr},
            {"null kernel", false, false, true, w, h, kW, kH, ss, ds, orvStsNullPtrErr},
            {"null kernel, zero kernel width", false, false, true, w, h, 0, kH, ss, ds, orvStsNullPtrErr},
            {"null kernel, zero width, bad step", false, false, true, 0, h, kW, kH, -1, ds, orvStsNullPtrErr},
            {"zero width", false, false, false, 0, h, kW, kH, ss, ds, orvStsSizeErr},
            {"zero height", false, false, false, w, 0, kW, kH, ss, ds, orvStsSizeErr},
            {"zero kernel width", false, false, false, w, h, 0, kH, ss, ds, orvStsSizeErr},
            {"negative kernel height", false, false, false, w, h, kW, -1, ss, ds, orvStsSizeErr},
            {"zero kernel width, bad step", false, false, false, w, h, 0, kH, ss - 1, -ds, orvStsSizeErr},
            {"source step one below", false, false, false, w, h, kW, kH, ss - 1, ds, orvStsStepErr},
            {"destination step one below", false, false, false, w, h, kW, kH, ss, ds - 1, orvStsStepErr},
            {"negative source step", false, false, false, w, h, kW, kH, -ss, ds, orvStsStepErr},
            {"negative destination step", false, false, false, w, h, kW, kH, ss, -ds, orvStsStepErr},
        };
        for (const Row& row : rows) {
            AllocSpy spy;
            const OrvStatus st = fn_(row.nullSrc ? nullptr : src.roi(), row.srcStep, row.nullDst ? nullptr : dst.data(),
                                     row.dstStep, OrviSize{row.w, row.h}, row.nullKernel ? nullptr : k.data(),
                                     OrviSize{row.kW, row.kH}, OrviPoint{1, 1});
            if (st != row.want) return testing::AssertionFailure() << row.what << ": status " << st;
            if (!dst.unchanged_since(before.data())) return testing::AssertionFailure() << row.what << ": written";
            if (AllocSpy::mallocs != 0) return testing::AssertionFailure() << row.what << ": allocated";
        }
        return testing::AssertionSuccess();
    }

    // The scratch of the table: K = 4 * kW * kH coefficient copies (eight in
    // e9's float C1), and float rows for the integer entries; 32s only in e9.
    int64_t scratch_len(int w, int kW, int kH) const override {
        const int64_t K = 4 * int64_t(kW) * kH;
        if constexpr (std::is_same_v<TS, Orv32f>) {
            return L == Lay::C1 && tier == "e9" ? 2 * K : K;
        } else if constexpr (std::is_same_v<TS, Orv32s>) {
            if (tier != "e9") return 0;
            const int64_t row = (2 * int64_t(w) + 7) & ~7;
            if constexpr (L == Lay::C1) return row;
            else if constexpr (L == Lay::C3) return 3 * row;
            else return 8 * w + 28 > 31 ? (8 * w + 28) & ~31 : 0;
        } else {
            if constexpr (L == Lay::C1) return (K + 2 * w + 10) & ~3;
            else if constexpr (L == Lay::C3) return (K + 6 * w + 10) & ~3;
            else return K + 8 * w;
        }
    }

    Fn* fn_;
};

using TargetPtr = std::shared_ptr<const Target>;

const std::vector<TargetPtr>& targets() {
    static const std::vector<TargetPtr> all = [] {
        std::vector<TargetPtr> out;
        auto add = [&]<class TS, class TD, Lay L>(const std::string& name) {
            for (const auto& t : tiers_of<FilterFn<TS, TD>>(name))
                out.push_back(std::make_shared<TargetOf<TS, TD, L>>(name, t.tier, t.fn));
        };
        // Every layout of one type pair; the 8u16s, 8s16s, 8s and 32s forms have no AC4.
        auto addAll = [&]<class TS, class TD>(const std::string& prefix, bool ac4) {
            add.template operator()<TS, TD, Lay::C1>(prefix + "C1R");
            add.template operator()<TS, TD, Lay::C3>(prefix + "C3R");
            add.template operator()<TS, TD, Lay::C4>(prefix + "C4R");
            if (ac4) add.template operator()<TS, TD, Lay::AC4>(prefix + "AC4R");
        };
        addAll.template operator()<Orv32f, Orv32f>("orviFilter_32f_", true);
        addAll.template operator()<Orv8u, Orv8u>("orviFilter32f_8u_", true);
        addAll.template operator()<Orv16s, Orv16s>("orviFilter32f_16s_", true);
        addAll.template operator()<Orv16u, Orv16u>("orviFilter32f_16u_", true);
        addAll.template operator()<Orv8u, Orv16s>("orviFilter32f_8u16s_", false);
        addAll.template operator()<Orv8s, Orv16s>("orviFilter32f_8s16s_", false);
        addAll.template operator()<Orv8s, Orv8s>("orviFilter32f_8s_", false);
        addAll.template operator()<Orv32s, Orv32s>("orviFilter32f_32s_", false);
        return out;
    }();
    return all;
}

bool is_float(const Target& t) { return t.entry.rfind("orviFilter_32f", 0) == 0; }

class Filter2D : public testing::TestWithParam<TargetPtr> {};

TEST(Filter2DRegistry, EveryEntryInTiersM7N8Y8E9) {
    std::map<std::string, std::string> tiers;
    for (const auto& t : targets()) tiers[t->entry] += t->tier + " ";
    const std::string want = tested_among({"m7", "n8", "y8", "e9"});
    if (want.empty()) GTEST_SKIP() << "no tier of the entries is tested";
    EXPECT_EQ(tiers.size(), 28u);
    for (const auto& [entry, list] : tiers) EXPECT_EQ(list, want) << entry;
}

TEST_P(Filter2D, MatchesReference) {
    const Target& t = *GetParam();
    for (const Case& c : sweep(is_float(t))) ASSERT_TRUE(t.check(c)) << c.str();
}

// A single 1 in the kernel, at corners and inside, with anchors inside and
// outside: exact copies, which pins the flip and the anchor in every route.
TEST_P(Filter2D, DeltaKernelShiftsExactly) {
    const Target& t = *GetParam();
    const int shapes[][2] = {{2, 1}, {1, 2}, {3, 3}, {5, 4}, {9, 2}, {17, 3}};
    for (const auto& s : shapes)
        for (int w : {3, 8, 30}) {
            Case c{w, 3, s[0], s[1], 0, 0};
            for (int v : {0, 3, 4}) {
                anchor_of(v, c.kW, c.kH, c.ax, c.ay);
                const int pos[][2] = {{0, 0}, {c.kH - 1, c.kW - 1}, {c.kH / 2, c.kW - 1}, {c.kH - 1, 0}};
                for (const auto& p : pos) {
                    std::vector<float> k(size_t(c.kW) * c.kH, 0.0f);
                    k[size_t(p[0]) * c.kW + p[1]] = 1.0f;
                    ASSERT_TRUE(t.check(c, k.data(), true)) << c.str() << " at " << p[0] << "," << p[1];
                }
            }
        }
}

TEST_P(Filter2D, StatusesInOrder) { EXPECT_TRUE(GetParam()->statuses()); }

// Each call takes its scratch once, with the tier's allocator, and frees it.
TEST_P(Filter2D, ScratchTakenAndReleased) {
    const Target& t = *GetParam();
    const int dims[][3] = {{1, 1, 1}, {5, 3, 3}, {20, 17, 2}, {40, 5, 5}, {2, 1, 7}};
    for (const auto& d : dims) {
        AllocSpy spy;
        Case c{d[0], 2, d[1], d[2], 0, 0};
        ASSERT_TRUE(t.check(c)) << c.str();
        const int64_t len = t.scratch_len(d[0], d[1], d[2]);
        EXPECT_EQ(AllocSpy::mallocs, len > 0 ? 1 : 0) << c.str();
        EXPECT_EQ(AllocSpy::lastBytes, len > 0 ? size_t(len) * 4 + 40 : 0) << c.str();
        EXPECT_EQ(AllocSpy::frees, AllocSpy::mallocs) << c.str();
    }
}

// With the allocator failing, the call still succeeds through a route that
// needs no scratch. The shapes would otherwise take the replicated or
// row-pair routes (e.g. width 20 with a 17-wide kernel in y8 and n8 C1).
TEST_P(Filter2D, FailedScratchFallsBack) {
    const Target& t = *GetParam();
    const int dims[][3] = {{20, 17, 3}, {16, 3, 3}, {6, 7, 2}, {4, 5, 5}, {17, 9, 1}};
    for (const auto& d : dims) {
        Case c{d[0], 3, d[1], d[2], d[1] / 2, d[2] / 2};
        c.noScratch = true;
        AllocSpy spy(1);
        ASSERT_TRUE(t.check(c)) << c.str();
        EXPECT_EQ(AllocSpy::mallocs, t.scratch_len(d[0], d[1], d[2]) > 0 ? 1 : 0);
        EXPECT_EQ(AllocSpy::frees, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Entries, Filter2D, testing::ValuesIn(targets()),
                         [](const testing::TestParamInfo<TargetPtr>& info) {
                             return info.param->entry + "_" + info.param->tier;
                         });

// 32s sums in double and rounds ties to even by a test that narrows r to
// single precision first: above 2^24 an r that float cannot hold finds no
// tie and stays rounded half away from zero. Width 4 keeps every tier on
// the generic loop.
TEST(Filter2D32s, GenericRoundingAndSaturation) {
    struct Row { Orv32s src; float k; Orv32s want; };
    const Row rows[] = {
        {5, 0.5f, 2}, {7, 0.5f, 4}, {-5, 0.5f, -2}, {-7, 0.5f, -4}, {1, 0.5f, 0}, {-1, 0.5f, 0}, {3, 0.25f, 1},
        {(1 << 25) + 1, 0.5f, (1 << 24) + 1},  // r = 2^24 + 1 narrows to 2^24: no tie
        {(1 << 25) + 3, 0.5f, (1 << 24) + 2},  // r = 2^24 + 2 is exact: tie to even
        {-((1 << 25) + 1), 0.5f, -((1 << 24) + 1)},
        {(1 << 24) + 1, 0.5f, 1 << 23},  // below 2^24: ties to even
        {2147483647, 2.0f, 2147483647}, {-2147483647 - 1, 2.0f, -2147483647 - 1}, {2147483647, -1.0f, -2147483647},
    };
    for (const auto& t : tiers_of<FilterFn<Orv32s, Orv32s>>("orviFilter32f_32s_C1R"))
        for (const Row& r : rows) {
            Orv32s src[4] = {r.src, r.src, r.src, r.src}, dst[4] = {};
            ASSERT_EQ(t.fn(src, 16, dst, 16, OrviSize{4, 1}, &r.k, OrviSize{1, 1}, OrviPoint{0, 0}), orvStsNoErr);
            for (int x = 0; x < 4; ++x) EXPECT_EQ(dst[x], r.want) << t.tier << " " << r.src << " * " << r.k;
        }
}

}  // namespace
}  // namespace orv::test
