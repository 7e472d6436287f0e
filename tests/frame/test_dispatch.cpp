// Dispatch through the exported stubs: every table of the dispatch list holds
// the tiers its line names, and with the index forced to each value a stub
// lands in the tier of its slot.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "internal/orv_kernels.h"
#include "orvs.h"
#include "support/tier_registry.h"

#define ORV_STUB(name, s0, s1, s2, s3, s4, s5) extern "C" const void* const name##_arraddr[6];
#include "dispatch.def"
#undef ORV_STUB

namespace {

struct Table {
    const char* name;
    const void* const* table;
    const void* slots[6];
};

const Table kTables[] = {
#define ORV_STUB(name, s0, s1, s2, s3, s4, s5)                                                       \
    {#name, name##_arraddr,                                                                          \
     {reinterpret_cast<const void*>(&s0##_##name), reinterpret_cast<const void*>(&s1##_##name),      \
      reinterpret_cast<const void*>(&s2##_##name), reinterpret_cast<const void*>(&s3##_##name),      \
      reinterpret_cast<const void*>(&s4##_##name), reinterpret_cast<const void*>(&s5##_##name)}},
#include "dispatch.def"
#undef ORV_STUB
};

// Restores automatic selection after a test that forces the index.
class Dispatch : public ::testing::Test {
protected:
    void TearDown() override { orvInit(); }
};

TEST_F(Dispatch, EveryTableNamesItsTiers) {
    for (const auto& t : kTables) {
        SCOPED_TRACE(t.name);
        for (int slot = 0; slot < 6; ++slot) EXPECT_EQ(t.table[slot], t.slots[slot]) << "slot " << slot;
        // Slots 0 and 1 are m7, 4 is y8 and 5 is e9 in every table.
        EXPECT_EQ(t.slots[0], t.slots[1]);
    }
}

TEST_F(Dispatch, StubsLandInTheTierOfTheForcedIndex) {
    const char* expected[6] = {"m7", "m7", "u8", "n8", "y8", "e9"};
    for (Orv32u index = 0; index < 6; ++index) {
        orvJumpIndexForMergedLibs = index;
        SCOPED_TRACE(index);
        EXPECT_STREQ(orvsGetLibVersion()->tierCode, expected[index]);
        EXPECT_STREQ(orviGetLibVersion()->tierCode, expected[index]);
        Orv64f* p = orvsMalloc_64f(3);
        ASSERT_NE(p, nullptr);
        p[2] = 1.0;
        orvsFree(p);
    }
}

TEST_F(Dispatch, StartUpSelectedTheBestTier) {
    // The library was loaded on a processor with AVX saved by the OS.
    Orv64u f = 0;
    ASSERT_EQ(orvGetCpuFeatures(&f, nullptr), orvStsNoErr);
    const bool avx = (f & (orvFeatAVX | orvFeatAVXOS)) == (orvFeatAVX | orvFeatAVXOS);
    EXPECT_EQ(orvJumpIndexForMergedLibs, avx ? 5u : orvJumpIndexForMergedLibs);
    EXPECT_EQ(orvInitCpu(0), orvStsNoErr);
    EXPECT_EQ(orvJumpIndexForMergedLibs, 1u);
    EXPECT_STREQ(orvsGetLibVersion()->tierCode, "m7");
}

TEST_F(Dispatch, VersionRecordsPerTier) {
    auto signal = orv::test::tiers_of<decltype(orvsGetLibVersion)>("orvsGetLibVersion");
    auto image = orv::test::tiers_of<decltype(orviGetLibVersion)>("orviGetLibVersion");
    const size_t runnable = orv::test::count_tested({"m7", "u8", "n8", "y8", "e9"});
    ASSERT_EQ(signal.size(), runnable);
    ASSERT_EQ(image.size(), runnable);
    for (size_t k = 0; k < signal.size(); ++k) {
        const std::string tier = signal[k].tier;
        SCOPED_TRACE(tier);
        ASSERT_EQ(image[k].tier, tier);
        orvSetCpuFeaturesMask(0);  // SSE4.2 not enabled: the plain records
        const OrvLibVersion* vs = signal[k].fn();
        const OrvLibVersion* vi = image[k].fn();
        EXPECT_EQ(std::string(vs->tierCode, 4), tier + std::string(2, '\0'));
        EXPECT_EQ(std::string(vi->tierCode, 4), tier + std::string(2, '\0'));
        EXPECT_EQ(vs->libName, "orvs" + tier + "_l.a");
        EXPECT_EQ(vi->libName, "orvi" + tier + "_l.a");
        EXPECT_EQ(vs->buildNumber, 1067);
        EXPECT_EQ(vi->buildNumber, 1063);
        EXPECT_STREQ(vs->buildDate, "Jul 19 2011");
        EXPECT_STREQ(vi->buildDate, "Jul 20 2011");
        for (const OrvLibVersion* v : {vs, vi}) {
            EXPECT_EQ(v->major, 7);
            EXPECT_EQ(v->minor, 0);
            EXPECT_EQ(v->buildMajor, 205);
            EXPECT_STREQ(v->versionText, "7.0 build 205.68");
        }
        // With SSE4.2 enabled only y8 answers with the "+" record, which
        // differs from its plain record in the name only.
        orvSetCpuFeaturesMask(orvFeatSSE42);
        const std::string plus = tier == "y8" ? "_l.a+" : "_l.a";
        const OrvLibVersion* ps = signal[k].fn();
        EXPECT_EQ(ps->libName, "orvs" + tier + plus);
        EXPECT_EQ(image[k].fn()->libName, "orvi" + tier + plus);
        EXPECT_STREQ(ps->tierCode, vs->tierCode);
        EXPECT_EQ(ps->buildNumber, vs->buildNumber);
        EXPECT_STREQ(ps->buildDate, vs->buildDate);
    }
}

}  // namespace
