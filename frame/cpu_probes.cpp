// Low-level processor probes: each runs its own CPUID sequence and is not
// cached; they are meant for occasional use. Also the identification record.
#include "cpuid.h"
#include "orvcore.h"
#include "state.h"

using orv::cpu::cpuid;

namespace {

constexpr uint32_t bit(uint32_t word, int n) { return (word >> n) & 1u; }

// Leaf-0 vendor words (EBX, EDX, ECX) of the family the tiers are tuned for.
constexpr uint32_t kVendorEbx = 0x756e6547u;
constexpr uint32_t kVendorEdx = 0x49656e69u;
constexpr uint32_t kVendorEcx = 0x6c65746eu;

}  // namespace

ORV_FRAME_API Orv64s orv_has_cpuid(void) { return 1; }  // always there on x86-64

ORV_FRAME_API Orv64s orv_max_cpuid_input(void) { return cpuid(0, 0).eax; }

ORV_FRAME_API Orv64s orv_has_rdtsc(void) { return bit(cpuid(1, 0).edx, 4); }
ORV_FRAME_API Orv64s orv_is_mmx_extension(void) { return bit(cpuid(1, 0).edx, 23); }
ORV_FRAME_API Orv64s orv_is_ssx_extension(void) { return bit(cpuid(1, 0).edx, 25); }
ORV_FRAME_API Orv64s orv_is_wni_extension(void) { return bit(cpuid(1, 0).edx, 26); }

ORV_FRAME_API Orv64s orv_is_htt_extension(void) {
    auto r = cpuid(1, 0);
    return bit(r.edx, 28) && ((r.ebx >> 16) & 0xFF) > 1;
}

ORV_FRAME_API Orv64s orv_is_pni_extension(void) { return bit(cpuid(1, 0).ecx, 0); }

// Without leaf 0x80000001 this returns the highest extended leaf itself,
// which is usually not 0; callers take it as it stands.
ORV_FRAME_API Orv64s orv_is_lm64_extension(void) {
    uint32_t top = cpuid(static_cast<int>(0x80000000u), 0).eax;
    if (top < 0x80000001u) return top;
    return bit(cpuid(static_cast<int>(0x80000001u), 0).edx, 29);
}

ORV_FRAME_API Orv64s orv_is_mni_extension(void) { return bit(cpuid(1, 0).ecx, 9); }
ORV_FRAME_API Orv64s orv_is_sse41_extension(void) { return bit(cpuid(1, 0).ecx, 19); }
ORV_FRAME_API Orv64s orv_is_sse42_extension(void) { return bit(cpuid(1, 0).ecx, 20); }
ORV_FRAME_API Orv64s orv_is_movbe(void) { return bit(cpuid(1, 0).ecx, 22); }

// AVX is usable when the processor has it (ECX 28), the OS enabled XSAVE
// (ECX 27) and XCR0 has both the SSE and the AVX state bits set.
ORV_FRAME_API Orv64s orv_is_avx_extension(void) {
    auto r = cpuid(1, 0);
    if (!(bit(r.ecx, 27) && bit(r.ecx, 28))) return 0;
    return (orv::cpu::xgetbv(0) & 6u) == 6u;
}

ORV_FRAME_API Orv64s orv_is_GenuineVelta(void) {
    auto r = cpuid(0, 0);
    return r.ebx == kVendorEbx && r.edx == kVendorEdx && r.ecx == kVendorEcx;
}

ORV_FRAME_API void orv_get_tessera_ident(OrvCpuIdent* id) {
    auto top = cpuid(0, 0).eax;
    auto r1 = cpuid(1, 0);
    auto r2 = cpuid(2, 0);
    id->family = (r1.eax >> 8) & 0xF;
    id->stepping = r1.eax & 0xF;
    id->model = (r1.eax >> 4) & 0xF;
    id->typeBits = (r1.eax >> 11) & 0x3;  // bits 11 and 12, as they stand
    id->featureEdx = r1.edx;
    id->cacheEax = r2.eax;
    id->cacheEdx = r2.edx;
    id->hasMMX = bit(r1.edx, 23);
    id->hasSSE = bit(r1.edx, 25);
    id->hasSSE2 = bit(r1.edx, 26);
    id->hasHTT = bit(r1.edx, 28) && ((r1.ebx >> 16) & 0xFF) > 1;
    id->hasSSE3 = bit(r1.ecx, 0);
    uint32_t extTop = cpuid(static_cast<int>(0x80000000u), 0).eax;
    id->hasLM64 = extTop >= 0x80000001u ? bit(cpuid(static_cast<int>(0x80000001u), 0).edx, 29) : 0;
    id->hasSSSE3 = bit(r1.ecx, 9);
    id->coresPerDie = top >= 4 ? ((cpuid(4, 0).eax >> 26) & 0x3F) + 1 : 1;
    id->hasSSE41 = bit(r1.ecx, 19);
    id->hasSSE42 = bit(r1.ecx, 20);
    id->extFamily = (r1.eax >> 20) & 0xFF;
    id->extModel = (r1.eax >> 16) & 0xF;
    id->hasMOVBE = bit(r1.ecx, 22);
    id->hasAVX = bit(r1.ecx, 28);
    id->hasOSXSAVE = bit(r1.ecx, 27);
}

ORV_FRAME_API Orv64u orv_get_tessera_counter(void) { return orv::cpu::rdtsc(); }
