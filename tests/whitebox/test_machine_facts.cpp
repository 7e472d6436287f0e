// Cache size, cores on the die, processor type and the probes over scripted
// processors of both vendors and of neither.
#include <gtest/gtest.h>

#include "fake_cpu.h"
#include "orvcore.h"
#include "state.h"

namespace orv::test {
namespace {

// Leaf-4 registers of one cache.
cpu::Regs cache4(uint32_t type, uint32_t ways, uint32_t parts, uint32_t line, uint32_t sets, uint32_t cores = 1) {
    return {type | ((cores - 1) << 26), ((ways - 1) << 22) | ((parts - 1) << 12) | (line - 1), sets - 1, 0};
}

std::pair<OrvStatus, int> cache_of(const FakeCpu& c) {
    use_cpu(c);
    int size = -1;
    OrvStatus st = orvGetMaxCacheSizeB(&size);
    return {st, size};
}

TEST(CacheSize, LargestDataOrUnifiedCacheOfLeaf4) {
    FakeCpu c;
    c.tuned_vendor(11)
        .set(4, 0, cache4(1, 8, 1, 64, 64))     // 32 KiB data
        .set(4, 1, cache4(2, 8, 1, 64, 16384))  // 8 MiB instruction: not counted
        .set(4, 2, cache4(3, 16, 1, 64, 2048))  // 2 MiB unified
        .set(4, 3, cache4(3, 12, 1, 64, 1024)); // 768 KiB unified, smaller
    EXPECT_EQ(cache_of(c), std::make_pair(OrvStatus{orvStsNoErr}, 2 << 20));
    // The answer is cached: a new processor is not asked.
    int size = 0;
    EXPECT_EQ(orvGetMaxCacheSizeB(&size), orvStsNoErr);
    EXPECT_EQ(size, 2 << 20);
    EXPECT_EQ(orvGetMaxCacheSizeB(nullptr), orvStsNullPtrErr);
    EXPECT_EQ(ownStatus, orvStsNoErr);
}

TEST(CacheSize, NoCacheListedIsUnknownAndCached) {
    FakeCpu c;
    c.tuned_vendor(11).set(4, 0, cache4(2, 8, 1, 64, 64));  // instruction cache only
    EXPECT_EQ(cache_of(c), std::make_pair(OrvStatus{orvStsUnknownCacheSize}, 0));
    EXPECT_EQ(ownStatus, orvStsUnknownCacheSize);
}

TEST(CacheSize, OtherVendorsAndOldProcessorsAreNotSupported) {
    FakeCpu c;
    c.other_vendor(13).set(4, 0, cache4(3, 16, 1, 64, 2048));
    EXPECT_EQ(cache_of(c), std::make_pair(OrvStatus{orvStsNotSupportedCpu}, 0));
    FakeCpu old;
    old.tuned_vendor(1);
    EXPECT_EQ(cache_of(old), std::make_pair(OrvStatus{orvStsNotSupportedCpu}, 0));
}

TEST(CacheSize, Leaf2DescriptorsGiveTheLargestListedCache) {
    FakeCpu c;
    // Descriptors 0x7A (256 KiB) and 0x49 (4 MiB) and unknown bytes; round count 1.
    c.tuned_vendor(2).set(2, 0, {0x00490001, 0x00000000, 0x00007A00, 0x80FFFFFF});
    EXPECT_EQ(cache_of(c), std::make_pair(OrvStatus{orvStsNoErr}, 4 << 20));
    const Orv32u emptyTable[2] = {0, 0};
    EXPECT_EQ(ownGetCacheSize(emptyTable), -1);  // nothing listed
    // More than one query round is not handled.
    FakeCpu rounds;
    rounds.tuned_vendor(3).set(2, 0, {0x00490002, 0, 0, 0});
    EXPECT_EQ(cache_of(rounds), std::make_pair(OrvStatus{orvStsUnknownCacheSize}, 0));
    // EAX without descriptors (top bit set): the positions stand one off, so
    // byte 0 of EBX is never compared, while byte 1 is.
    FakeCpu shifted;
    shifted.tuned_vendor(2).set(2, 0, {0x80000001, 0x00000049, 0, 0});
    EXPECT_EQ(cache_of(shifted), std::make_pair(OrvStatus{orvStsUnknownCacheSize}, 0));
    shifted.set(2, 0, {0x80000001, 0x00004900, 0, 0});
    EXPECT_EQ(cache_of(shifted), std::make_pair(OrvStatus{orvStsNoErr}, 4 << 20));
    // No register with descriptors at all.
    FakeCpu empty;
    empty.tuned_vendor(2).set(2, 0, {0x80000001, 0x80000000, 0, 0});
    EXPECT_EQ(cache_of(empty), std::make_pair(OrvStatus{orvStsUnknownCacheSize}, 0));
}

TEST(Cores, TunedVendorFromLeaf11OrLeaf4) {
    FakeCpu c;
    c.tuned_vendor(11).set(11, 0, {1, 2, 0, 0}).set(11, 1, {4, 16, 1, 0}).set(4, 0, cache4(1, 8, 1, 64, 64, 4));
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 8);  // 16 logical, two threads a core
    c.set(11, 0, {1, 1, 0, 0});
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 16);  // one thread a core
    c.set(11, 0, {0, 0, 0, 0});
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 4);  // leaf 4
    EXPECT_EQ(orv_get_cores_on_die(), 4);
    FakeCpu old;
    old.tuned_vendor(3).set(4, 0, cache4(1, 8, 1, 64, 64, 4));
    use_cpu(old);
    EXPECT_EQ(orvGetNumCoresOnDie(), 1);
    EXPECT_EQ(orv_get_cores_on_die(), 1);
}

TEST(Cores, OtherVendorFromItsExtendedLeaf) {
    FakeCpu c;
    c.other_vendor(13).set(0x80000000, 0, {0x80000008, 0, 0, 0}).set(0x80000008, 0, {0, 0, 0x0000400F, 0});
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 0x4010);  // ECX used whole
    c.set(0x80000000, 0, {0x80000007, 0, 0, 0});
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 1);
    // Only the low 4 bits are compared: 0x80000018 reads as 8.
    c.set(0x80000000, 0, {0x80000018, 0, 0, 0});
    use_cpu(c);
    EXPECT_EQ(orvGetNumCoresOnDie(), 0x4010);
    FakeCpu neither;
    neither.unknown_vendor(13).set(4, 0, cache4(1, 8, 1, 64, 64, 4));
    use_cpu(neither);
    EXPECT_EQ(orvGetNumCoresOnDie(), 1);
    EXPECT_EQ(orv_get_cores_on_die(), 4);  // no vendor test
}

int type_of(FakeCpu c, uint32_t eax, uint32_t ecx, uint32_t ebx = 0) {
    c.leaf1(eax, ebx, ecx, edx::BASE);
    use_cpu(c);
    return orvGetCpuType();
}

TEST(CpuType, TunedVendorModelsComeFirst) {
    FakeCpu c;
    c.tuned_vendor(11).set(4, 0, cache4(1, 8, 1, 64, 64, 2));
    const uint32_t ssse3 = ecx::SSE3 | ecx::SSSE3;
    EXPECT_EQ(type_of(c, 0x000006F0, ssse3), orvCpuT33);
    c.set(4, 0, cache4(1, 8, 1, 64, 64, 4));
    EXPECT_EQ(type_of(c, 0x000006F0, ssse3), orvCpuT34);
    EXPECT_EQ(type_of(c, 0x00010670, ssse3 | ecx::SSE41), orvCpuT35);
    EXPECT_EQ(type_of(c, 0x000106A0, ssse3 | ecx::SSE41 | ecx::SSE42), orvCpuT37);
    EXPECT_EQ(type_of(c, 0x000106A0, ssse3 | ecx::SSE41 | ecx::AVX), orvCpuAVX);
    EXPECT_EQ(type_of(c, 0x000106A0, ssse3 | ecx::SSE41), orvCpuSSE41);  // no row applies
    EXPECT_EQ(type_of(c, 0x000106C0, ssse3 | ecx::MOVBE), orvCpuT36);
    EXPECT_EQ(type_of(c, 0x000106C0, ssse3), orvCpuSSSE3);
    EXPECT_EQ(type_of(c, 0x00000F40, 0), orvCpuSSE3);           // family 15, extended family 0
    EXPECT_EQ(type_of(c, 0x00100F40, ecx::SSE3), orvCpuSSE3);   // family 16: by level
    EXPECT_EQ(type_of(c, 0x00100F40, 0), orvCpuSSE2);
}

TEST(CpuType, OtherVendorsByInstructionLevel) {
    FakeCpu c;
    c.other_vendor(13);
    EXPECT_EQ(type_of(c, 0x000006F0, ecx::SSE3 | ecx::SSSE3), orvCpuSSSE3);  // no model table
    EXPECT_EQ(type_of(c, 0x00A00F10, ecx::SSE3 | ecx::SSE41 | ecx::SSE42 | ecx::AVX), orvCpuAVX);  // no XGETBV test
    EXPECT_EQ(type_of(c, 0x00A00F10, ecx::SSE3 | ecx::SSE41 | ecx::SSE42), orvCpuSSE42);
    EXPECT_EQ(type_of(c, 0x00A00F10, ecx::SSE3 | ecx::SSE41), orvCpuSSE41);
    FakeCpu bare;
    bare.unknown_vendor(1).leaf1(0x600, 0, 0, 0);
    use_cpu(bare);
    EXPECT_EQ(orvGetCpuType(), orvCpuUnknown);
    bare.set(0x80000000, 0, {0x80000001, 0, 0, 0}).set(0x80000001, 0, {0, 0, 0, 1u << 29});
    use_cpu(bare);
    EXPECT_EQ(orvGetCpuType(), orvCpuX8664);
}

TEST(Probes, EachReadsItsBit) {
    FakeCpu c;
    c.tuned_vendor(11).leaf1(0x000506E3, 0x00040800, ecx::SSE3 | ecx::SSSE3 | ecx::SSE41 | ecx::MOVBE,
                             edx::BASE | edx::HTT | (1u << 4));
    use_cpu(c);
    EXPECT_EQ(orv_max_cpuid_input(), 11);
    EXPECT_EQ(orv_is_GenuineVelta(), 1);
    EXPECT_EQ(orv_has_rdtsc(), 1);
    EXPECT_EQ(orv_is_mmx_extension(), 1);
    EXPECT_EQ(orv_is_ssx_extension(), 1);
    EXPECT_EQ(orv_is_wni_extension(), 1);
    EXPECT_EQ(orv_is_htt_extension(), 1);  // HTT with 4 logical processors
    EXPECT_EQ(orv_is_pni_extension(), 1);
    EXPECT_EQ(orv_is_mni_extension(), 1);
    EXPECT_EQ(orv_is_sse41_extension(), 1);
    EXPECT_EQ(orv_is_sse42_extension(), 0);
    EXPECT_EQ(orv_is_movbe(), 1);
    EXPECT_EQ(orv_is_avx_extension(), 0);
    // Without leaf 0x80000001 the highest extended leaf comes back as is.
    c.set(0x80000000, 0, {0x80000000, 0, 0, 0});
    use_cpu(c);
    EXPECT_EQ(orv_is_lm64_extension(), 0x80000000);
    c.set(0x80000000, 0, {0x80000008, 0, 0, 0}).set(0x80000001, 0, {0, 0, 0, 1u << 29});
    use_cpu(c);
    EXPECT_EQ(orv_is_lm64_extension(), 1);
    // HTT needs more than one logical processor in EBX.
    c.leaf1(0x000506E3, 0x00010800, 0, edx::BASE | edx::HTT);
    use_cpu(c);
    EXPECT_EQ(orv_is_htt_extension(), 0);
    c.other_vendor(11);
    use_cpu(c);
    EXPECT_EQ(orv_is_GenuineVelta(), 0);
}

TEST(Probes, IdentRecord) {
    FakeCpu c;
    c.tuned_vendor(11)
        .leaf1(0x000206A7, 0x00100800, ecx::SSE3 | ecx::AVX | ecx::OSXSAVE, edx::BASE | edx::HTT)
        .set(2, 0, {0x76036301, 0, 0, 0x00F0B5FF})
        .set(4, 0, cache4(1, 8, 1, 64, 64, 8))
        .set(0x80000000, 0, {0x80000008, 0, 0, 0})
        .set(0x80000001, 0, {0, 0, 0, 1u << 29});
    use_cpu(c);
    OrvCpuIdent id;
    orv_get_tessera_ident(&id);
    EXPECT_EQ(id.family, 6u);
    EXPECT_EQ(id.model, 0xAu);
    EXPECT_EQ(id.extModel, 2u);
    EXPECT_EQ(id.stepping, 7u);
    EXPECT_EQ(id.cacheEax, 0x76036301u);
    EXPECT_EQ(id.cacheEdx, 0x00F0B5FFu);
    EXPECT_EQ(id.coresPerDie, 8u);
    EXPECT_EQ(id.hasHTT, 1u);
    EXPECT_EQ(id.hasLM64, 1u);
    EXPECT_EQ(id.hasAVX, 1u);
    EXPECT_EQ(id.hasOSXSAVE, 1u);
    EXPECT_EQ(id.hasSSE3, 1u);
    EXPECT_EQ(id.hasSSSE3, 0u);
}

}  // namespace
}  // namespace orv::test
