// Tier selection over scripted processors: every row of the automatic table
// and of the forced table, the vendor warning and the failed-detection path.
#include <gtest/gtest.h>

#include "fake_cpu.h"
#include "orvcore.h"
#include "state.h"

namespace orv::test {
namespace {

struct Selected {
    OrvStatus status;
    Orv32u index, lp;
    Orv64u mask;
};

Selected select_on(const FakeCpu& cpu) {
    use_cpu(cpu);
    OrvStatus st = orvInit();
    return {st, orvJumpIndexForMergedLibs, orvJumpIndexForMergedLibsLP, orvGetEnabledCpuFeatures()};
}

FakeCpu with_ecx(uint32_t ecxBits, bool tuned = true) {
    FakeCpu c;
    if (tuned) c.tuned_vendor(); else c.other_vendor();
    c.leaf1(0x000506E3, 0x00100800, ecxBits, edx::BASE);
    return c;
}

constexpr Orv64u kBase = orvFeatMMX | orvFeatSSE | orvFeatSSE2;

TEST(Selection, AutomaticTableRows) {
    struct Row {
        const char* what;
        uint32_t ecx;
        uint64_t xcr0;
        Orv32u index, lp;
        Orv64u mask;
    } rows[] = {
        {"SSE2 only", 0, 0, 0, 0, kBase & 7},
        {"SSE3", ecx::SSE3, 0, 1, 0, kBase | orvFeatSSE3},
        {"MOVBE without SSSE3", ecx::SSE3 | ecx::MOVBE, 0, 1, 0, kBase | orvFeatSSE3},
        {"SSSE3", ecx::SSE3 | ecx::SSSE3, 0, 2, 0, kBase | orvFeatSSE3 | orvFeatSSSE3},
        {"SSSE3 with MOVBE", ecx::SSE3 | ecx::SSSE3 | ecx::MOVBE, 0, 3, 1,
         kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatMOVBE},
        {"SSE4.1 with MOVBE", ecx::SSE3 | ecx::SSSE3 | ecx::MOVBE | ecx::SSE41, 0, 4, 0,
         kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41},
        {"SSE4.2", ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::SSE42, 0, 4, 0,
         kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41 | orvFeatSSE42},
        {"AVX without OS support", ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::AVX | ecx::OSXSAVE, 0x3, 4, 0,
         kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41},
        {"AVX without OSXSAVE", ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::AVX, 0x7, 4, 0,
         kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41},
        {"AVX saved by the OS", ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::MOVBE | ecx::AVX | ecx::OSXSAVE, 0x7, 5,
         0, kBase | orvFeatSSE3 | orvFeatSSSE3 | orvFeatSSE41 | orvFeatAVX | orvFeatAVXOS},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.what);
        FakeCpu c = with_ecx(r.ecx);
        c.xcr0 = r.xcr0;
        Selected s = select_on(c);
        EXPECT_EQ(s.status, r.index == 0 ? orvStsNotSupportedCpu : orvStsNoErr);
        EXPECT_EQ(s.index, r.index);
        EXPECT_EQ(s.lp, r.lp);
        EXPECT_EQ(s.mask, r.mask);
    }
}

TEST(Selection, OtherVendorWarnsButKeepsTheTierOfItsFeatures) {
    FakeCpu c = with_ecx(ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::AVX | ecx::OSXSAVE, false);
    c.xcr0 = 7;
    Selected s = select_on(c);
    EXPECT_EQ(s.status, orvStsNonVeltaCpu);
    EXPECT_EQ(s.index, 5u);
    // The vendor warning replaces the no-SSE3 status too.
    s = select_on(with_ecx(0, false));
    EXPECT_EQ(s.status, orvStsNonVeltaCpu);
    EXPECT_EQ(s.index, 0u);
}

TEST(Selection, FamilyBBitNeedsFamilyB) {
    FakeCpu c = with_ecx(ecx::SSE3);
    c.set(0x20000001, 0, {0, 0, 0, 2});
    use_cpu(c);
    Orv64u f = 0;
    ASSERT_EQ(orvGetCpuFeatures(&f, nullptr), orvStsNoErr);
    EXPECT_EQ(f & orvFeatFamB, 0u);
    c.leaf1(0x00000B00, 0, ecx::SSE3, edx::BASE);
    use_cpu(c);
    ASSERT_EQ(orvGetCpuFeatures(&f, nullptr), orvStsNoErr);
    EXPECT_EQ(f & orvFeatFamB, orvFeatFamB);
}

TEST(Selection, ForcedCodesSetTheConstantMaskWithoutAskingTheProcessor) {
    // A processor with nothing above SSE2: forcing ignores it.
    use_cpu(with_ecx(0));
    struct Row {
        int cpu;
        Orv32u index, lp;
        Orv64u mask;
    } rows[] = {
        {0, 1, 0, 0xF},    {32, 1, 0, 0xF},   {66, 1, 0, 0xF},   {33, 2, 0, 0x1F},  {34, 2, 0, 0x1F},
        {67, 2, 0, 0x1F},  {36, 3, 1, 0x3F},  {35, 4, 0, 0x5F},  {68, 4, 0, 0x5F},  {37, 4, 0, 0xDF},
        {69, 4, 0, 0xDF},  {38, 4, 0, 0xCDF}, {71, 4, 0, 0xCDF}, {70, 5, 0, 0xFDF},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.cpu);
        orvJumpIndexForMergedLibsLP = 7;  // every path that sets the index writes LP
        EXPECT_EQ(orvInitCpu(r.cpu), orvStsNoErr);
        EXPECT_EQ(orvJumpIndexForMergedLibs, r.index);
        EXPECT_EQ(orvJumpIndexForMergedLibsLP, r.lp);
        EXPECT_EQ(orvGetEnabledCpuFeatures(), r.mask);
    }
}

TEST(Selection, RefusedCodesLeaveEverythingAsItWas) {
    use_cpu(with_ecx(ecx::SSE3 | ecx::SSSE3));
    ASSERT_EQ(orvInitCpu(36), orvStsNoErr);
    ownFeaturesMask = 0x1234;
    std::vector<std::pair<int, OrvStatus>> cases = {{64, orvStsNotSupportedCpu}, {65, orvStsNotSupportedCpu},
                                                    {96, orvStsNotSupportedCpu}, {97, orvStsCpuMismatch},
                                                    {-2, orvStsCpuMismatch},     {12, orvStsCpuMismatch},
                                                    {72, orvStsCpuMismatch},     {1000, orvStsCpuMismatch}};
    for (int c = 1; c <= 11; ++c) cases.push_back({c, orvStsNotSupportedCpu});
    for (auto [code, expected] : cases) {
        SCOPED_TRACE(code);
        EXPECT_EQ(orvStaticInitCpu(code), expected);
        EXPECT_EQ(orvJumpIndexForMergedLibs, 3u);
        EXPECT_EQ(orvJumpIndexForMergedLibsLP, 1u);
        EXPECT_EQ(orvGetEnabledCpuFeatures(), 0x1234u);
    }
}

TEST(Selection, MinusOneIsAutomaticSelection) {
    FakeCpu c = with_ecx(ecx::SSE3 | ecx::SSSE3, false);
    use_cpu(c);
    ASSERT_EQ(orvInitCpu(70), orvStsNoErr);  // forcing AVX on a processor without it
    EXPECT_EQ(orvJumpIndexForMergedLibs, 5u);
    EXPECT_EQ(orvInitCpu(-1), orvStsNonVeltaCpu);
    EXPECT_EQ(orvJumpIndexForMergedLibs, 2u);
    EXPECT_EQ(orvGetEnabledCpuFeatures(), kBase | orvFeatSSE3 | orvFeatSSSE3);
}

TEST(Selection, DetectionIsCachedOncePerProcess) {
    use_cpu(with_ecx(ecx::SSE3 | ecx::SSSE3 | ecx::SSE41));
    ASSERT_EQ(orvInit(), orvStsNoErr);
    ASSERT_EQ(orvJumpIndexForMergedLibs, 4u);
    // A new processor behind the layer is not seen while the cache is valid.
    FakeCpu c = with_ecx(ecx::SSE3);
    ownFeaturesAreValid = 1;
    Orv64u keep = ownFeatures;
    use_cpu(c);
    ownFeaturesAreValid = 1;
    ownFeatures = keep;
    ASSERT_EQ(orvInit(), orvStsNoErr);
    EXPECT_EQ(orvJumpIndexForMergedLibs, 4u);
}

TEST(Selection, EnableCpuAndEnabledQueries) {
    EXPECT_EQ(orvIsCpuEnabled(69), 1);
    EXPECT_EQ(orvIsCpuEnabled(70), 1);
    EXPECT_EQ(orvEnableCpu(70), orvStsNoErr);
    EXPECT_EQ(orvEnableCpu(5), orvStsNoErr);
    EXPECT_EQ(is_avx_cpu_enabled, 1);
    // The AVX tier needs the permission flag as well as the features.
    FakeCpu c = with_ecx(ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::AVX | ecx::OSXSAVE);
    c.xcr0 = 7;
    is_avx_cpu_enabled = 0;
    EXPECT_EQ(orvIsCpuEnabled(70), 0);
    EXPECT_EQ(select_on(c).index, 4u);
    is_avx_cpu_enabled = 1;
    EXPECT_EQ(select_on(c).index, 5u);
    EXPECT_EQ(ownGetFeature(0), 1);
    EXPECT_EQ(orvSetCpuFeaturesMask(0), orvStsNoErr);
    EXPECT_EQ(orvGetEnabledCpuFeatures(), 0u);
    EXPECT_EQ(orvJumpIndexForMergedLibs, 5u);  // the mask moves no tier
    EXPECT_EQ(ownGetFeature(orvFeatSSE), 0);
}

}  // namespace
}  // namespace orv::test
