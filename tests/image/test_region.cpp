// Region copy, fill and in-place addition on every tier against plain row
// loops: runs either side of 64 bytes and 1 MiB (rows and fused dense images),
// the fill's 512 KiB cache question, steps with and without slack, starts at
// 4-byte offsets mod 32 and odd ones, guard pages both sides, bad arguments.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <tuple>

#include "orvi.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::GuardedImage;
using orv::test::TierFn;

// Where an image lies: after the guard page before it, its first byte `at`
// bytes into the page (beyond 32 steers the copy's 4 KiB rule), or before the
// page after it, its first byte at `at` mod 32. Up to 64 bytes between its ends
// and the nearest page boundary must stay zero.
struct Place {
    Flush flush;
    unsigned at;
};

struct Image : GuardedImage<float> {
    Image(int w, int h, int step, Place p) : GuardedImage<float>(w, h, 1, step, p.flush, offset(w, h, step, p)) {}

    bool untouched_outside() const {
        if (!slack_intact()) return false;
        const unsigned char *first = bytes(), *last = first + size_bytes();
        for (const unsigned char* q = first; q-- > first - 64 && page_of(q) == page_of(first);)
            if (*q) return false;
        for (const unsigned char* q = last; q < last + 64 && page_of(q) == page_of(last - 1); ++q)
            if (*q) return false;
        return true;
    }
    static uintptr_t page_of(const void* p) { return reinterpret_cast<uintptr_t>(p) >> 12; }
    static size_t offset(int w, int h, int step, Place p) {
        if (p.flush == Flush::Start) return p.at;
        return (32 - (p.at + GuardedImage<float>::bytes_for(w, h, 1, step)) % 32) % 32;
    }
};

// Steps are the row's bytes plus a pad (0: dense rows, fused into one run).
// Every run below 64 bytes, rows and fused images either side of 64 bytes, a
// few hundred columns, plus each operation's own thresholds.
struct Geometry {
    int w, h, srcPad, dstPad;
};
std::vector<Geometry> geometries(std::initializer_list<Geometry> own) {
    std::vector<Geometry> g(own);
    for (int w = 1; w <= 17; ++w) g.push_back({w, 1 + 2 * (w % 2), 0, 0}), g.push_back({w, 3, 8, 36});
    for (int w : {3, 4, 5, 31, 33, 100, 255, 300})
        for (auto [h, sp, dp] : {std::tuple{1, 0, 0}, {5, 0, 0}, {7, 4, 4}, {5, 0, 64}, {3, 132, 12}})
            g.push_back({w, h, sp, dp});
    return g;
}

// Source and destination placements: against either guard page, 4-byte
// offsets mod 32, an odd one, and page offsets putting the source 16 bytes
// below the destination, 3936 above it (both copied backward) and 16 above.
std::vector<std::pair<Place, Place>> placements(long bytes) {
    const Place e0{Flush::End, 0}, s0{Flush::Start, 0};
    if (bytes > 0x40000) return {{e0, s0}, {{Flush::Start, 4}, {Flush::End, 12}}};
    return {{e0, e0}, {s0, s0}, {{Flush::Start, 4}, {Flush::Start, 12}}, {{Flush::End, 28}, {Flush::Start, 8}},
            {{Flush::End, 1}, {Flush::End, 6}}, {{Flush::Start, 32}, {Flush::Start, 48}},
            {{Flush::Start, 4000}, {Flush::Start, 64}}, {{Flush::Start, 48}, {Flush::Start, 32}}};
}

// Random bits (NaN patterns included) for the moves, finite values, signed
// zeros and infinities for the sums (no NaN: its payload order is not fixed).
float sample(std::mt19937& rng, bool anyBits) {
    if (anyBits) return std::bit_cast<float>(static_cast<uint32_t>(rng()));
    switch (rng() % 16) {
        case 0: return -0.0f;
        case 1: return INFINITY;
        case 2: return -INFINITY;
        default: return std::ldexp(float(int(rng() % 2000001) - 1000000), int(rng() % 40) - 30);
    }
}

// Runs `call(src, dst, size)` over geometries and placements: each destination
// pixel must hold the bits of want(src pixel, old dst pixel), nothing else change.
template <class Call, class Want>
void check_all(const std::vector<Geometry>& gs, bool anyBits, Call call, Want want) {
    std::mt19937 rng(11);
    for (const Geometry& g : gs)
        for (auto [ps, pd] : placements(4L * g.w * g.h)) {
            SCOPED_TRACE(::testing::Message() << g.w << "x" << g.h << " pads " << g.srcPad << "/" << g.dstPad << " at "
                                              << int(ps.flush) << ":" << ps.at << "/" << int(pd.flush) << ":" << pd.at);
            Image src(g.w, g.h, 4 * g.w + g.srcPad, ps), dst(g.w, g.h, 4 * g.w + g.dstPad, pd);
            std::vector<float> expect;
            for (int y = 0; y < g.h; ++y)
                for (int x = 0; x < g.w; ++x) {
                    const float a = sample(rng, anyBits), b = sample(rng, anyBits);
                    src.set(x, y, 0, a), dst.set(x, y, 0, b);
                    expect.push_back(want(a, b));
                }
            ASSERT_EQ(call(src, dst, OrviSize{g.w, g.h}), orvStsNoErr);
            for (int y = 0; y < g.h; ++y)
                ASSERT_EQ(std::memcmp(dst.row(y), &expect[size_t(y) * g.w], 4u * g.w), 0) << "row " << y;
            ASSERT_TRUE(dst.untouched_outside() && src.untouched_outside());
        }
}

using CopyFn = decltype(orviCopy_32f_C1R);
using SetFn = decltype(orviSet_32f_C1R);
using AddFn = decltype(orviAdd_32f_C1IR);
class RegionCopy : public ::testing::TestWithParam<TierFn<CopyFn>> {};
class RegionSet : public ::testing::TestWithParam<TierFn<SetFn>> {};
class RegionAdd : public ::testing::TestWithParam<TierFn<AddFn>> {};

// Copy: rows of 1 MiB less 4 and of 1 MiB, dense images just under and at
// 1 MiB, one of 1.2 MB (blocks of 256 KiB and a rest), and images above 1 MiB
// in short and medium rows (m7 streams them).
TEST_P(RegionCopy, MatchesTheSourceBits) {
    check_all(geometries({{262143, 2, 16, 4}, {262144, 2, 4, 16}, {1024, 255, 0, 0}, {1024, 256, 0, 0},
                          {1000, 300, 0, 0}, {300, 900, 16, 4}, {10, 30000, 4, 8}}),
              true,
              [&](Image& s, Image& d, OrviSize r) { return GetParam().fn(s.data(), s.step(), d.data(), d.step(), r); },
              [](float a, float) { return a; });
}

// Set: the cache is asked above 512 KiB of pixels: exactly that, dense and in
// rows, one pixel more, and a large image. A NaN payload arrives intact.
TEST_P(RegionSet, EveryPixelHoldsTheValueBits) {
    const float v = std::bit_cast<float>(0x7FC12345u);
    check_all(geometries({{256, 512, 0, 0}, {256, 512, 0, 36}, {131073, 1, 0, 0}, {1000, 300, 0, 0}}), true,
              [&](Image&, Image& d, OrviSize r) { return GetParam().fn(d.data(), d.step(), r, v); },
              [&](float, float) { return v; });
}

// Add: every row length to 40 (the 128-bit kernels vectorise from 11, e9 from
// 16 past its alignment prologue) and a large image.
TEST_P(RegionAdd, EachPixelGetsOneFloatSum) {
    std::vector<Geometry> own = {{1000, 300, 0, 0}, {1001, 40, 4, 0}};
    for (int w = 18; w <= 40; ++w) own.push_back({w, 2, 4, 12});
    auto gs = geometries({});
    gs.insert(gs.end(), own.begin(), own.end());
    check_all(gs, false,
              [&](Image& s, Image& d, OrviSize r) { return GetParam().fn(s.data(), s.step(), d.data(), d.step(), r); },
              [](float a, float b) { return b + a; });
}

// Aligned pointers with the source 16 to 160 bytes below the destination in
// the low 12 address bits copy rows from their end, so such an overlapping
// copy keeps its data: this shows the backward loop the sweep relies on runs
// (not promised to callers). m7 has no such choice.
TEST_P(RegionCopy, SourceJustBelowInItsPageRunsBackward) {
    if (GetParam().tier == "m7") GTEST_SKIP();
    std::vector<unsigned char> ref(3 * 4096);
    for (size_t i = 0; i < ref.size(); ++i) ref[i] = static_cast<unsigned char>(i * 31 + 7);
    auto buf = ref;
    auto* base = reinterpret_cast<unsigned char*>((reinterpret_cast<uintptr_t>(buf.data()) + 4095) & ~uintptr_t{4095});
    const long lead = base - buf.data();
    for (unsigned at : {0u, 1024u, 4000u})
        for (int up : {16, 160})
            for (int w : {16, 100, 300}) {
                buf = ref;
                const int step = 4 * w + 512;
                auto* s = reinterpret_cast<float*>(base + at);
                ASSERT_EQ(GetParam().fn(s, step, reinterpret_cast<float*>(base + at + up), step, {w, 2}), orvStsNoErr);
                for (int y = 0; y < 2; ++y)
                    ASSERT_EQ(std::memcmp(base + at + up + y * step, ref.data() + lead + at + y * step, 4 * w), 0)
                        << at << " +" << up << " w " << w << " row " << y;
            }
}

// Null pointers first (in argument order), then sizes; nothing is written.
// hasSrc false: one image only, so rows whose only null is the source go.
struct BadCase {
    bool srcNull, dstNull;
    int w, h;
    OrvStatus want;
};
constexpr BadCase kBad[] = {{true, true, 0, 0, orvStsNullPtrErr}, {true, false, 0, 5, orvStsNullPtrErr},
                            {false, true, -1, 5, orvStsNullPtrErr}, {false, false, 0, 5, orvStsSizeErr},
                            {false, false, 5, 0, orvStsSizeErr}, {false, false, -3, -3, orvStsSizeErr}};

template <class Call>
void bad_cases(bool hasSrc, Call call) {
    for (const BadCase& c : kBad) {
        if (!hasSrc && c.srcNull && !c.dstNull) continue;
        Image src(8, 4, 40, {Flush::End, 0}), dst(8, 4, 40, {Flush::End, 0});
        std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size_bytes());
        EXPECT_EQ(call(c.srcNull ? nullptr : src.data(), c.dstNull ? nullptr : dst.data(), OrviSize{c.w, c.h}), c.want)
            << (&c - kBad);
        EXPECT_TRUE(dst.unchanged_since(before.data()));
    }
}

TEST_P(RegionCopy, BadArgumentsInOrderWriteNothing) {
    bad_cases(true, [&](float* s, float* d, OrviSize r) { return GetParam().fn(s, 40, d, 40, r); });
}
TEST_P(RegionSet, BadArgumentsInOrderWriteNothing) {
    bad_cases(false, [&](float*, float* d, OrviSize r) { return GetParam().fn(d, 40, r, 1.0f); });
}
TEST_P(RegionAdd, BadArgumentsInOrderWriteNothing) {
    bad_cases(true, [&](float* s, float* d, OrviSize r) { return GetParam().fn(s, 40, d, 40, r); });
}

ORV_INSTANTIATE_TIERS(RegionCopy, orviCopy_32f_C1R);
ORV_INSTANTIATE_TIERS(RegionSet, orviSet_32f_C1R);
ORV_INSTANTIATE_TIERS(RegionAdd, orviAdd_32f_C1IR);

}  // namespace
