// Processor queries and machine facts on the real machine: the calls that do
// not depend on which processor this is.
#include <gtest/gtest.h>

#include <cstring>

#include "orvcore.h"

namespace {

TEST(Machine, FeaturesNullChecksAndRegisterQuery) {
    EXPECT_EQ(orvGetCpuFeatures(nullptr, nullptr), orvStsNullPtrErr);
    Orv64u f = 0;
    EXPECT_EQ(orvGetCpuFeatures(&f, nullptr), orvStsNoErr);
    EXPECT_NE(f & orvFeatSSE2, 0u);
    // With the marker, any leaf: leaf 0 gives the vendor words.
    Orv32u regs[4] = {0, 0, 0, 0};
    std::memcpy(&f, "queryreg", 8);
    ASSERT_EQ(orvGetCpuFeatures(&f, regs), orvStsNoErr);
    Orv32u leaf0[4];
    ownGetReg(leaf0, 0, 0);
    EXPECT_EQ(std::memcmp(regs, leaf0, sizeof regs), 0);
    // Without it, leaf 1 whatever the array held.
    Orv32u leaf1[4];
    ownGetReg(leaf1, 1, 0);
    regs[0] = 0;
    regs[2] = 0;
    f = 0;
    ASSERT_EQ(orvGetCpuFeatures(&f, regs), orvStsNoErr);
    EXPECT_EQ(regs[0], leaf1[0]);
    EXPECT_EQ(regs[2], leaf1[2]);
    EXPECT_EQ(regs[3], leaf1[3]);
}

TEST(Machine, CacheSizeIsCachedAndNullIsRefused) {
    EXPECT_EQ(orvGetMaxCacheSizeB(nullptr), orvStsNullPtrErr);
    int a = -1, b = -2;
    OrvStatus s1 = orvGetMaxCacheSizeB(&a);
    OrvStatus s2 = orvGetMaxCacheSizeB(&b);
    EXPECT_EQ(s1, s2);
    EXPECT_EQ(a, b);
    if (!orv_is_GenuineVelta()) {
        EXPECT_EQ(s1, orvStsNotSupportedCpu);
        EXPECT_EQ(a, 0);
    } else {
        EXPECT_TRUE(s1 == orvStsNoErr || s1 == orvStsUnknownCacheSize);
    }
}

TEST(Machine, ThreadsAreInert) {
    int n = 0;
    EXPECT_EQ(orvGetNumThreads(&n), orvStsNoOperation);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(orvSetNumThreads(8), orvStsNoOperation);
    n = 0;
    EXPECT_EQ(orvGetNumThreads(&n), orvStsNoOperation);
    EXPECT_EQ(n, 1);
}

TEST(Machine, ClocksAndFrequency) {
    EXPECT_EQ(orvGetCpuFreqMhz(nullptr), orvStsNullPtrErr);  // at once, no wait
    Orv64u t0 = orvGetCpuClocks();
    Orv64u t1 = orvGetCpuClocks();
    EXPECT_GE(t1, t0);
    EXPECT_GE(orvGetNumCoresOnDie(), 1);
    EXPECT_GE(orv_get_cores_on_die(), 1);
    EXPECT_EQ(orv_has_cpuid(), 1);
    EXPECT_EQ(orv_has_rdtsc(), 1);
    EXPECT_EQ(orv_is_wni_extension(), 1);
}

}  // namespace
