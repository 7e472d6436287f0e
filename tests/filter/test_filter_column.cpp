// Column filters: every entry in every tier against the long double
// reference over kernel sizes, widths either side of the route thresholds,
// heights, anchors in and outside the kernel and steps at and above the
// minimum, with the window flush against guard pages; C3 and C4 against C1
// on the widened image; statuses in order; the scratch each call takes and
// failed allocations.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

template <class T>
using ColumnFn = OrvStatus(const T*, int, T*, int, OrviSize, const Orv32f*, int, int);

uint32_t mix(uint32_t a, uint32_t b, uint32_t c) {
    uint32_t h = 0x9E3779B9u ^ a * 0x85EBCA6Bu ^ b * 0xC2B2AE35u ^ c * 0x27D4EB2Fu;
    h ^= h >> 15, h *= 0x2C1B3C6Du, h ^= h >> 12, h *= 0x297A2D39u, h ^= h >> 15;
    return h;
}

// Float data in [-1, 1). Integer data are dyadic: coefficients j / 16 with
// |j| <= 24 and pixels small enough that every partial sum is exact, so the
// route's rounding rule alone decides each result.
template <class T>
T pixel(int x, int y, int c, int k) {
    const uint32_t h = mix(uint32_t(x), uint32_t(y), uint32_t(c));
    if constexpr (std::is_same_v<T, Orv32f>) {
        return float(h >> 8) * 0x1p-23f - 1.0f;
    } else {
        const int64_t hi = std::min<int64_t>(std::numeric_limits<T>::max(), (int64_t(1) << 24) / (24 * k));
        const int64_t lo = std::is_signed_v<T> ? -hi : 0;
        return T(lo + int64_t(h % uint64_t(hi - lo + 1)));
    }
}

template <class T>
std::vector<float> make_kernel(int k) {
    std::vector<float> out(static_cast<size_t>(k));
    for (int i = 0; i < k; ++i) {
        const uint32_t h = mix(uint32_t(i), uint32_t(k), 99);
        out[size_t(i)] = std::is_same_v<T, Orv32f> ? float(h >> 8) * 0x1p-23f - 1.0f : float(int(h % 49) - 24) / 16;
    }
    return out;
}

struct Case {
    int w, h, k, ay;
    int srcExtra = 0, dstExtra = 0;  // step above the minimum, in elements
    Flush flush = Flush::End;
    bool noScratch = false;  // every allocation fails
    std::string str() const {
        std::ostringstream o;
        o << w << "x" << h << " k " << k << " @" << ay << " +" << srcExtra << "/+" << dstExtra << " " << int(flush);
        return o.str();
    }
};

// Kernel sizes 1..9, 15, 16, 17 against widths either side of 4, 8 and 16
// elements as C1 sees them (pixels for AC4), heights 1..5, anchors at the
// centre, both ends and outside the kernel; then height 4 with k = 3.
std::vector<Case> sweep(const Layout& lay) {
    std::vector<int> widths;
    for (int e : {1, 3, 4, 5, 7, 8, 9, 15, 16, 17, 33})
        widths.push_back(lay.ac4 || lay.ch == 1 ? e : (e + lay.ch - 1) / lay.ch);
    widths.erase(std::unique(widths.begin(), widths.end()), widths.end());
    std::vector<Case> out;
    int n = 0;
    for (int k : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17})
        for (int w : widths) {
            const int anchors[] = {k / 2, 0, k - 1, -2, k + 1};
            Case c{w, 1 + n % 5, k, anchors[n % 5]};
            c.srcExtra = n % 3 == 1 ? 1 : n % 3 == 2 ? 9 : 0;
            c.dstExtra = n % 4 == 3 ? 3 : 0;
            c.flush = n % 2 ? Flush::Start : Flush::End;
            out.push_back(c), ++n;
        }
    for (int w : widths) out.push_back(Case{w, 4, 3, 1});
    return out;
}

struct Target {
    Target(std::string e, std::string t, Layout l) : entry(std::move(e)), tier(std::move(t)), lay(l) {}
    virtual ~Target() = default;
    // withC1: C3 and C4 also compared with C1 on the widened image.
    virtual testing::AssertionResult check(const Case& c, bool withC1 = true) const = 0;
    virtual testing::AssertionResult statuses() const = 0;
    // Orv32f elements of scratch a call takes, 0 for none.
    virtual int64_t scratch_len(int w, int k) const = 0;
    const std::string entry, tier;
    const Layout lay;
};

template <class T>
struct TargetOf : Target {
    using Fn = ColumnFn<T>;
    TargetOf(std::string e, std::string t, Layout l, Fn* fn, Fn* c1)
        : Target(std::move(e), std::move(t), l), fn_(fn), c1_(c1) {}

    // Tier e9's integer route from 8 elements of width (pixels in AC4) rounds
    // half away from zero; the three-row pipelines and the generic loop round
    // half to even.
    bool rounds_away(int w) const { return tier == "e9" && (lay.ac4 ? w : w * lay.ch) >= 8; }

    testing::AssertionResult check(const Case& c, bool withC1) const override {
        const int ch = lay.ch;
        const int srcStep = FilterSource<T>::min_step(c.w, ch, 1) + c.srcExtra * int(sizeof(T));
        const Flush other = c.flush == Flush::End ? Flush::Start : Flush::End;
        FilterSource<T> src(c.w, c.h, ch, 1, c.k, 0, c.ay, srcStep, c.flush);
        src.fill([&](int x, int y, int e) { return pixel<T>(x, y, e, c.k); });
        const int dstStep = (c.w * ch + c.dstExtra) * int(sizeof(T));
        GuardedImage<T> dst(c.w, c.h, ch, dstStep, other);
        Guarded<float> kg(size_t(c.k), c.flush);
        const std::vector<float> kv = make_kernel<T>(c.k);
        std::copy(kv.begin(), kv.end(), kg.data());
        const OrvStatus st = fn_(src.roi(), src.step(), dst.data(), dstStep, OrviSize{c.w, c.h}, kg.data(), c.k, c.ay);
        if (st != orvStsNoErr) return testing::AssertionFailure() << "status " << st;
        if (!dst.slack_intact()) return testing::AssertionFailure() << "row slack written";
        const FilterRef ref = filter_ref(src, c.w, c.h, lay.used(), kg.data(), 1, c.k, 0, c.ay);
        const bool away = rounds_away(c.w) && !c.noScratch;
        for (int y = 0; y < c.h; ++y)
            for (int x = 0; x < c.w; ++x) {
                for (int e = 0; e < lay.used(); ++e) {
                    const T got = dst.get(x, y, e);
                    const long double v = ref.at(x, y, e);
                    bool ok;
                    if constexpr (std::is_same_v<T, Orv32f>)
                        ok = std::fabs(got - v) <= ref.mag(x, y, e) * c.k * std::numeric_limits<float>::epsilon();
                    else
                        ok = got == (away ? round_away_sat<T>(v) : round_even_sat<T>(v));
                    if (!ok)
                        return testing::AssertionFailure() << "(" << x << "," << y << ") element " << e << ": got "
                                                           << double(got) << ", want " << double(v);
                }
                if (lay.ac4 && dst.bytes()[size_t(dstStep) * y + (size_t(x) * 4 + 3) * sizeof(T)] != dst.kSlack)
                    return testing::AssertionFailure() << "fourth channel of (" << x << "," << y << ") written";
            }
        if (c1_ && withC1) {  // C3 and C4 are C1 on the widened image, bit for bit
            GuardedImage<T> wide(c.w * ch, c.h, 1, dstStep, other);
            if (c1_(src.roi(), src.step(), wide.data(), dstStep, OrviSize{c.w * ch, c.h}, kg.data(), c.k, c.ay) !=
                    orvStsNoErr ||
                !std::equal(wide.bytes(), wide.bytes() + wide.size_bytes(), dst.bytes()))
                return testing::AssertionFailure() << "differs from C1 on the widened image";
        }
        return testing::AssertionSuccess();
    }

    // Null pointers, then sizes, then steps; nothing written, nothing
    // allocated. C3 and C4 look at the width before the pointers.
    testing::AssertionResult statuses() const override {
        const int w = 5, h = 3, k = 9, ch = lay.ch, row = w * ch * int(sizeof(T));
        FilterSource<T> src(w, h, ch, 1, k, 0, 4, row);
        GuardedImage<T> dst(w, h, ch, row);
        const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
        const std::vector<float> kv(size_t(k), 1.0f);
        const OrvStatus zeroWidthNull = lay.ch == 1 || lay.ac4 ? orvStsNullPtrErr : orvStsSizeErr;
        struct Row {
            const char* what;
            bool nullSrc, nullDst, nullKernel;
            int w, h, k, srcStep, dstStep;
            OrvStatus want;
        };
        const Row rows[] = {
            {"null source", true, false, false, w, h, k, row, row, orvStsNullPtrErr},
            {"null destination", false, true, false, w, h, k, row, row, orvStsNullPtrErr},
            {"null kernel, zero size, bad step", false, false, true, w, h, 0, -1, row, orvStsNullPtrErr},
            {"null source, zero width", true, false, false, 0, h, k, row, row, zeroWidthNull},
            {"zero width", false, false, false, 0, h, k, row, row, orvStsSizeErr},
            {"zero height", false, false, false, w, 0, k, row, row, orvStsSizeErr},
            {"zero kernel, bad step", false, false, false, w, h, 0, row - 1, -row, orvStsSizeErr},
            {"negative kernel", false, false, false, w, h, -3, row, row, orvStsSizeErr},
            {"source step one below", false, false, false, w, h, k, row - 1, row, orvStsStepErr},
            {"destination step one below", false, false, false, w, h, k, row, row - 1, orvStsStepErr},
            {"negative source step", false, false, false, w, h, k, -row, row, orvStsStepErr},
        };
        for (const Row& r : rows) {
            AllocSpy spy;
            const OrvStatus st = fn_(r.nullSrc ? nullptr : src.roi(), r.srcStep, r.nullDst ? nullptr : dst.data(),
                                     r.dstStep, OrviSize{r.w, r.h}, r.nullKernel ? nullptr : kv.data(), r.k, 4);
            if (st != r.want) return testing::AssertionFailure() << r.what << ": status " << st;
            if (!dst.unchanged_since(before.data())) return testing::AssertionFailure() << r.what << ": written";
            if (AllocSpy::mallocs != 0) return testing::AssertionFailure() << r.what << ": allocated";
        }
        return testing::AssertionSuccess();
    }

    // Float: only the replicated coefficients of more than 64 kernel rows,
    // where that route runs. Integer: float rows and coefficients.
    int64_t scratch_len(int w, int k) const override {
        const int64_t e = int64_t(w) * lay.ch;  // C1 elements; AC4 float rows hold all four
        if constexpr (std::is_same_v<T, Orv32f>) {
            const bool rep = k >= 3 && (tier == "e9" ? lay.ac4 && w >= 4 && w < 8 : lay.ac4 ? w >= 4 : e >= 16);
            return rep && k > 64 ? 4 * int64_t(k) : 0;
        } else {
            if (sizeof(T) == 2 && tier == "e9") return (4 * int64_t(k) + e + 3) & ~int64_t(3);
            return (3 * e + 8 * ((int64_t(k) + 1) / 2) + 14) & ~int64_t(3);
        }
    }

    Fn* fn_;
    Fn* c1_;
};

using TargetPtr = std::shared_ptr<const Target>;
void PrintTo(const TargetPtr& t, std::ostream* os) { *os << t->entry << " " << t->tier; }

const std::vector<TargetPtr>& targets() {
    static const std::vector<TargetPtr> all = [] {
        std::vector<TargetPtr> out;
        auto family = [&]<class T>(const std::string& prefix) {
            for (const Layout& lay : kLayouts)
                for (const auto& t : tiers_of<ColumnFn<T>>(prefix + lay.name)) {
                    ColumnFn<T>* c1 = lay.ch == 1 || lay.ac4 ? nullptr : tier_fn<ColumnFn<T>>(prefix + "C1R", t.tier);
                    out.push_back(std::make_shared<TargetOf<T>>(prefix + lay.name, t.tier, lay, t.fn, c1));
                }
        };
        family.template operator()<Orv32f>("orviFilterColumn_32f_");
        family.template operator()<Orv8u>("orviFilterColumn32f_8u_");
        family.template operator()<Orv16u>("orviFilterColumn32f_16u_");
        family.template operator()<Orv16s>("orviFilterColumn32f_16s_");
        return out;
    }();
    return all;
}

class FilterColumn : public testing::TestWithParam<TargetPtr> {};

TEST(FilterColumnRegistry, SixteenEntriesInTiersM7N8Y8E9) {
    std::map<std::string, std::string> tiers;
    for (const auto& t : targets()) tiers[t->entry] += t->tier + " ";
    const std::string want = tested_among({"m7", "n8", "y8", "e9"});
    if (want.empty()) GTEST_SKIP() << "no tier of the entries is tested";
    EXPECT_EQ(tiers.size(), 16u);
    for (const auto& [entry, list] : tiers) EXPECT_EQ(list, want) << entry;
}

TEST_P(FilterColumn, MatchesReference) {
    const Target& t = *GetParam();
    for (const Case& c : sweep(t.lay)) ASSERT_TRUE(t.check(c)) << c.str();
}

TEST_P(FilterColumn, StatusesInOrder) { EXPECT_TRUE(GetParam()->statuses()); }

// One allocation of the route's size per call, freed; with every allocation
// failing the call still succeeds, through the generic loop.
TEST_P(FilterColumn, ScratchTakenReleasedAndOptional) {
    const Target& t = *GetParam();
    const int dims[][2] = {{5, 3}, {20, 3}, {6, 70}, {20, 70}, {2, 1}};
    for (const auto& d : dims) {
        Case c{d[0], 3, d[1], d[1] / 2};
        const int64_t len = t.scratch_len(d[0], d[1]);
        {
            AllocSpy spy;
            ASSERT_TRUE(t.check(c, false)) << c.str();
            EXPECT_EQ(AllocSpy::mallocs, len > 0 ? 1 : 0) << c.str();
            EXPECT_EQ(AllocSpy::lastBytes, len > 0 ? size_t(len) * 4 + 40 : 0) << c.str();
            EXPECT_EQ(AllocSpy::frees, AllocSpy::mallocs) << c.str();
        }
        c.noScratch = true;
        AllocSpy spy(1);
        ASSERT_TRUE(t.check(c, false)) << c.str() << " without scratch";
        EXPECT_EQ(AllocSpy::frees, 0) << c.str();
    }
}

INSTANTIATE_TEST_SUITE_P(Entries, FilterColumn, testing::ValuesIn(targets()),
                         [](const testing::TestParamInfo<TargetPtr>& info) {
                             return info.param->entry + "_" + info.param->tier;
                         });

}  // namespace
}  // namespace orv::test
