// FFT specifications of the three kinds on every tier: the sizes GetSize
// reports at every order against an independent model of the documented
// formulas and thresholds, the order of the checks of every entry with nothing
// written on failure, building into blocks of exactly the reported sizes at
// every misalignment against guard pages, the record's fields, and the
// context checks of GetBufSize and Free.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "../../fft/spec_record.h"
#include "fft/fft_testing.h"
#include "fft/spec_model.h"
#include "orvsfft.h"

namespace orv::test {
namespace {

using namespace fftspec;

// ---- The five entries of one kind on one tier ------------------------------
struct Api {
    std::string tier;
    Kind kind;
    std::function<OrvStatus(int, int, int, int*, int*, int*)> getSize;
    std::function<OrvStatus(void**, int, int, int, Orv8u*, Orv8u*)> init;
    std::function<OrvStatus(void**, int, int, int)> initAlloc;
    std::function<OrvStatus(const void*, int*)> getBufSize;
    std::function<OrvStatus(void*)> free;
};
void PrintTo(const Api& a, std::ostream* os) { *os << kKindName[a.kind] << "_" << a.tier; }

template <class S, class GS, class I, class IA, class GB>
Api make_api(const std::string& tier, Kind kind, GS* gs, I* init, IA* ia, GB* gb, OrvStatus (*fr)(S*)) {
    return {tier, kind, gs,
            [=](void** pp, int o, int f, int h, Orv8u* m, Orv8u* mi) { return init(reinterpret_cast<S**>(pp), o, f, h, m, mi); },
            [=](void** pp, int o, int f, int h) { return ia(reinterpret_cast<S**>(pp), o, f, h); },
            [=](const void* p, int* n) { return gb(static_cast<const S*>(p), n); },
            [=](void* p) { return fr(static_cast<S*>(p)); }};
}

std::vector<Api> all_apis() {
    std::vector<Api> v;
#define ORV_ADD_KIND(kind, sfx)                                                                                      \
    for (auto& t : tiers_of<decltype(orvsFFTGetSize_##sfx)>("orvsFFTGetSize_" #sfx))                                \
    v.push_back(make_api(t.tier, kind, t.fn, ORV_TIER_FN(orvsFFTInit_##sfx, t.tier),                                 \
                         ORV_TIER_FN(orvsFFTInitAlloc_##sfx, t.tier), ORV_TIER_FN(orvsFFTGetBufSize_##sfx, t.tier), \
                         ORV_TIER_FN(orvsFFTFree_##sfx, t.tier)))
    ORV_ADD_KIND(C32, C_32fc);
    ORV_ADD_KIND(R32, R_32f);
    ORV_ADD_KIND(R64, R_64f);
#undef ORV_ADD_KIND
    return v;
}

class FftSpec : public ::testing::TestWithParam<Api> {};

const int kFlags[] = {OrvFftDivFwd, OrvFftDivInv, OrvFftDivSqrt, OrvFftNoDiv};

// ---- GetSize ---------------------------------------------------------------
TEST_P(FftSpec, SizesOfEveryOrder) {
    const Api& a = GetParam();
    const int top = highest(a.kind, a.tier);
    for (int order = 0; order <= 30; ++order) {
        SCOPED_TRACE("order " + std::to_string(order));
        int s = -777, i = -777, w = -777;
        const OrvStatus st = a.getSize(order, OrvFftDivInv, 99, &s, &i, &w);
        if (order > top) {
            EXPECT_EQ(st, orvStsFftOrderErr);
            EXPECT_EQ((std::array<int, 3>{s, i, w}), (std::array<int, 3>{-777, -777, -777}));
            continue;
        }
        ASSERT_EQ(st, orvStsNoErr);
        EXPECT_EQ((Sizes{s, i, w}), expected(a.kind, a.tier, order))
            << "got " << s << "/" << i << "/" << w;
    }
}

// The model against the published figures of complex 32f on y8.
TEST(FftSpecSizes, PinnedComplexY8) {
    const long long pinned[][4] = {{5, 168, 0, 0},           {6, 832, 0, 544},
                                   {10, 9472, 0, 8224},      {11, 18688, 2112, 16416},
                                   {17, 1179904, 131136, 1048608}, {18, 1442048, 262208, 131104},
                                   {20, 4232448, 1048640, 131104}, {24, 67653888, 16777280, 524320},
                                   {28, 1078235392, 268435520, 131104}};
    for (auto& p : pinned)
        EXPECT_EQ(expected(C32, "y8", static_cast<int>(p[0])), (Sizes{p[1], p[2], p[3]})) << p[0];
}

TEST_P(FftSpec, GetSizeCheckOrder) {
    const Api& a = GetParam();
    int s = -777, i = -777, w = -777;
    const int top = highest(a.kind, a.tier);
    // Range first, then each null pointer, then the flag, then the kind's top.
    for (int o : {-1, 31, 1 << 30}) EXPECT_EQ(a.getSize(o, 0, 0, nullptr, nullptr, nullptr), orvStsFftOrderErr);
    EXPECT_EQ(a.getSize(5, 1, 0, nullptr, &i, &w), orvStsNullPtrErr);
    EXPECT_EQ(a.getSize(5, 1, 0, &s, nullptr, &w), orvStsNullPtrErr);
    EXPECT_EQ(a.getSize(5, 1, 0, &s, &i, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(a.getSize(30, 1, 0, &s, nullptr, &w), orvStsNullPtrErr);
    for (int f : {0, 3, 5, 16, -1}) {
        EXPECT_EQ(a.getSize(5, f, 0, &s, &i, &w), orvStsFftFlagErr);
        EXPECT_EQ(a.getSize(top + 1, f, 0, &s, &i, &w), top + 1 <= 30 ? orvStsFftFlagErr : orvStsFftOrderErr);
    }
    EXPECT_EQ(a.getSize(top + 1, 8, 0, &s, &i, &w), orvStsFftOrderErr);
    EXPECT_EQ((std::array<int, 3>{s, i, w}), (std::array<int, 3>{-777, -777, -777}));
    for (int f : kFlags) EXPECT_EQ(a.getSize(top, f, -5, &s, &i, &w), orvStsNoErr);
}

// ---- Init and InitAlloc statuses -------------------------------------------
TEST_P(FftSpec, InitCheckOrder) {
    const Api& a = GetParam();
    std::vector<Orv8u> mem(70000, 0xA5), initMem(70000, 0xA5);
    const std::vector<Orv8u> fresh = mem;
    void* const kUntouched = &mem;
    void* p = kUntouched;
    const int top = highest(a.kind, a.tier);
    EXPECT_EQ(a.init(nullptr, 31, 3, 0, nullptr, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(a.init(&p, -1, 3, 0, nullptr, nullptr), orvStsFftOrderErr);
    EXPECT_EQ(a.init(&p, top + 1, 3, 0, mem.data(), initMem.data()), orvStsFftOrderErr);
    EXPECT_EQ(a.init(&p, 3, 3, 0, nullptr, initMem.data()), orvStsNullPtrErr);
    EXPECT_EQ(p, kUntouched);
    EXPECT_TRUE(mem == fresh);
    // A bad flag writes the record (zeroed, order and hint kept) and marks it
    // unbuilt; nothing else.
    Orv8u* base = mem.data() + 5;
    auto* rec = orv::fft::align_up32(reinterpret_cast<OrvFFTSpec*>(base));
    EXPECT_EQ(a.init(&p, 12, 3, 0, base, nullptr), orvStsFftFlagErr);
    EXPECT_EQ(p, kUntouched);
    EXPECT_EQ(rec->idCtx, 0);
    EXPECT_EQ(rec->order, 12);
    const size_t recEnd = reinterpret_cast<Orv8u*>(rec) - mem.data() + 136;
    EXPECT_TRUE(std::equal(mem.begin() + recEnd, mem.end(), fresh.begin() + recEnd));
    EXPECT_TRUE(std::equal(mem.begin(), mem.begin() + 5, fresh.begin()));
    int n = -1;
    EXPECT_EQ(a.getBufSize(rec, &n), orvStsContextMatchErr);
    EXPECT_EQ(a.free(rec), orvStsContextMatchErr);
    // Orders up to 10 read the fixed table and need no init block; above 10
    // a null one fails before any table is written.
    EXPECT_EQ(a.init(&p, 10, 1, 0, base, nullptr), orvStsNoErr);
    EXPECT_EQ(p, rec);
    p = kUntouched;
    std::fill(mem.begin(), mem.end(), 0xA5);
    EXPECT_EQ(a.init(&p, 11, 1, 0, base, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(p, kUntouched);
    EXPECT_TRUE(std::equal(mem.begin() + recEnd, mem.end(), fresh.begin() + recEnd));
    EXPECT_EQ(a.getBufSize(rec, &n), orvStsContextMatchErr);
}

TEST_P(FftSpec, InitAllocStatuses) {
    const Api& a = GetParam();
    static int marker;
    void* const kUntouched = &marker;
    void* p = kUntouched;
    EXPECT_EQ(a.initAlloc(nullptr, 31, 3, 0), orvStsNullPtrErr);
    EXPECT_EQ(a.initAlloc(&p, 31, 1, 0), orvStsFftOrderErr);
    EXPECT_EQ(a.initAlloc(&p, highest(a.kind, a.tier) + 1, 1, 0), orvStsFftOrderErr);
    EXPECT_EQ(a.initAlloc(&p, 8, 7, 0), orvStsFftFlagErr);
    // The first (spec) and the second (init) allocation failing.
    for (int failFrom : {1, 2}) {
        FailingMalloc fail(failFrom);
        EXPECT_EQ(a.initAlloc(&p, 12, 1, 0), orvStsMemAllocErr);
    }
    EXPECT_EQ(p, kUntouched);
    // Built, queried and freed; a small order too.
    for (int order : {0, small_limit(a.kind, a.tier) + 1, 12}) {
        ASSERT_EQ(a.initAlloc(&p, order, OrvFftDivSqrt, 0), orvStsNoErr);
        int s, i, w, n = -1;
        ASSERT_EQ(a.getSize(order, OrvFftDivSqrt, 0, &s, &i, &w), orvStsNoErr);
        EXPECT_EQ(a.getBufSize(p, &n), orvStsNoErr);
        EXPECT_EQ(n, w);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
        EXPECT_EQ(a.free(p), orvStsNoErr);
    }
}

// ---- Building in caller memory ---------------------------------------------
// Builds order into blocks of exactly the reported sizes at misalignment
// `align`, flush against guard pages, and checks the record.
void build_checked(const Api& a, int order, unsigned align, int flag = OrvFftDivFwd, int hint = 0) {
    SCOPED_TRACE("order " + std::to_string(order) + " align " + std::to_string(align));
    int s, i, w;
    ASSERT_EQ(a.getSize(order, flag, hint, &s, &i, &w), orvStsNoErr);
    Placed spec(s, Flush::End, align), init(std::max(i, 1), Flush::End, (align * 7) % 32);
    void* p = nullptr;
    ASSERT_EQ(a.init(&p, order, flag, hint, spec.bytes(), i > 0 ? init.bytes() : nullptr), orvStsNoErr);
    EXPECT_TRUE(spec.canary_intact());
    EXPECT_TRUE(init.canary_intact());
    auto* r = static_cast<OrvFFTSpec*>(p);
    EXPECT_EQ(reinterpret_cast<Orv8u*>(r), orv::fft::align_up32(spec.bytes()));
    const bool dbl = a.kind == R64;
    EXPECT_EQ(r->order, order);
    EXPECT_EQ(r->doFwdScale, flag == OrvFftDivFwd || flag == OrvFftDivSqrt);
    EXPECT_EQ(r->doInvScale, flag == OrvFftDivInv || flag == OrvFftDivSqrt);
    const double len = std::ldexp(1.0, order);
    const double scale = flag == OrvFftNoDiv ? 0.0 : flag == OrvFftDivSqrt ? 1.0 / std::sqrt(len) : 1.0 / len;
    EXPECT_EQ(dbl ? r->u.d.scale : r->u.f.scale, dbl ? scale : static_cast<float>(scale));
    int n = -1;
    EXPECT_EQ(a.getBufSize(r, &n), orvStsNoErr);
    EXPECT_EQ(n, w);
    // Tables lie inside the block, the first directly behind the record.
    const Orv8u *lo = spec.bytes(), *hi = lo + s;
    for (const void* t : std::initializer_list<const void*>{r->pBitRev, r->pTwd, r->pTwdR2Low, r->pRealRec,
                                                            r->pCcsRec, r->pTwdStep[0], r->pTwdStep[1], r->pTwdStep[2]})
        EXPECT_TRUE(!t || (t >= lo + 136 && t < hi));
    EXPECT_TRUE(!r->pBitRev || reinterpret_cast<Orv8u*>(r->pBitRev) == reinterpret_cast<Orv8u*>(r) + 136);
    if (order <= small_limit(a.kind, a.tier)) {
        EXPECT_TRUE(!r->pBitRev && !r->pTwd && !r->pRealRec && !r->pCcsRec);
    } else if (a.kind == C32) {
        EXPECT_TRUE(r->pBitRev && r->pTwd);
    } else {
        EXPECT_TRUE(r->pRealRec && r->pCcsRec && r->pCcsRec > r->pRealRec);
    }
}

// Every order up to 21 with every flag, and at every misalignment: the last
// small order, the first table order, the first built base table and the
// first large inner order.
TEST_P(FftSpec, BuildsWithinReportedBlocks) {
    const Api& a = GetParam();
    for (int order = 0; order <= std::min(highest(a.kind, a.tier), 21); ++order)
        build_checked(a, order, (order * 13) % 32, kFlags[order % 4]);
    const int small = small_limit(a.kind, a.tier), large = row(a.kind == R64, a.tier).largeFrom + (a.kind != C32);
    for (int order : {small, small + 1, 11, large})
        for (unsigned align = 0; align < 32; ++align) build_checked(a, order, align);
}

// The hint is stored and changes nothing else; Init rebuilds in place.
TEST_P(FftSpec, HintChangesNothing) {
    const Api& a = GetParam();
    for (int order : {small_limit(a.kind, a.tier) + 2, 12}) {
        int s, i, w;
        ASSERT_EQ(a.getSize(order, OrvFftDivInv, 0, &s, &i, &w), orvStsNoErr);
        std::vector<Orv8u> mem(s), init(std::max(i, 1));
        void* p;
        ASSERT_EQ(a.init(&p, order, OrvFftDivInv, 0, mem.data(), init.data()), orvStsNoErr);
        const std::vector<Orv8u> first = mem;
        ASSERT_EQ(a.init(&p, order, OrvFftDivInv, -123456, mem.data(), init.data()), orvStsNoErr);
        const size_t hintAt = reinterpret_cast<Orv8u*>(p) - mem.data() + (a.kind == R64 ? 24 : 20);
        Orv32s hint;
        std::memcpy(&hint, mem.data() + hintAt, 4);
        EXPECT_EQ(hint, -123456);
        std::memset(mem.data() + hintAt, 0, 4);
        EXPECT_TRUE(mem == first) << "order " << order;
    }
}

// Free retires; afterwards, or with a record of another kind, every use
// answers a context mismatch, and the foreign record is left as it was.
TEST_P(FftSpec, ContextChecks) {
    const Api& a = GetParam();
    int n = -1;
    EXPECT_EQ(a.getBufSize(nullptr, &n), orvStsNullPtrErr);
    EXPECT_EQ(a.free(nullptr), orvStsNullPtrErr);
    std::vector<Orv8u> mem(4096);
    void* p;
    ASSERT_EQ(a.init(&p, 7, OrvFftDivFwd, 0, mem.data(), nullptr), orvStsNoErr);
    EXPECT_EQ(a.getBufSize(p, nullptr), orvStsNullPtrErr);
    EXPECT_EQ(a.free(p), orvStsNoErr);
    EXPECT_EQ(static_cast<OrvFFTSpec*>(p)->idCtx, 0);
    EXPECT_EQ(a.free(p), orvStsContextMatchErr);
    EXPECT_EQ(a.getBufSize(p, &n), orvStsContextMatchErr);
    EXPECT_EQ(n, -1);
    for (const Api& other : all_apis()) {
        if (other.tier != a.tier || other.kind == a.kind) continue;
        ASSERT_EQ(other.init(&p, 7, OrvFftDivFwd, 0, mem.data(), nullptr), orvStsNoErr);
        const std::vector<Orv8u> before = mem;
        EXPECT_EQ(a.free(p), orvStsContextMatchErr);
        EXPECT_EQ(a.getBufSize(p, &n), orvStsContextMatchErr);
        EXPECT_TRUE(mem == before);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, FftSpec, ::testing::ValuesIn(all_apis()), [](const auto& info) {
    return std::string(kKindName[info.param.kind]) + "_" + info.param.tier;
});

}  // namespace
}  // namespace orv::test
