// The feature word: detection (cached once per process), the enabled mask
// of the selected tier, and the public queries over both.
#include <cstring>

#include "cpuid.h"
#include "orvcore.h"
#include "state.h"

extern "C" {
uint64_t ownFeaturesMask = 7;
uint64_t ownFeatures = 0;
int32_t ownFeaturesAreValid = 0;
int32_t is_avx_cpu_enabled = 1;
}

namespace {

constexpr uint32_t bit(uint32_t word, int n) { return (word >> n) & 1u; }

// Leaf-1 bits that map one to one onto feature bits: {register bit, feature}.
struct FeatureBit {
    bool inEcx;
    int regBit;
    uint64_t feature;
};
constexpr FeatureBit kLeaf1Bits[] = {
    {false, 23, orvFeatMMX},   {false, 25, orvFeatSSE},  {false, 26, orvFeatSSE2},
    {true, 0, orvFeatSSE3},    {true, 9, orvFeatSSSE3},  {true, 22, orvFeatMOVBE},
    {true, 19, orvFeatSSE41},  {true, 20, orvFeatSSE42}, {true, 28, orvFeatAVX},
    {true, 25, orvFeatAES},    {true, 1, orvFeatCLMUL},
};

uint64_t detect() {
    auto r = orv::cpu::cpuid(1, 0);
    uint64_t f = 0;
    for (const auto& b : kLeaf1Bits)
        if (bit(b.inEcx ? r.ecx : r.edx, b.regBit)) f |= b.feature;
    // The OS-support test runs only where OSXSAVE and AVX are both reported.
    if (bit(r.ecx, 27) && bit(r.ecx, 28) && orv_is_avx_extension()) f |= orvFeatAVXOS;
    if (((r.eax >> 8) & 0xF) == 0xB && bit(orv::cpu::cpuid(0x20000001, 0).edx, 1))
        f |= orvFeatFamB;
    return f;
}

// The 8 bytes "queryreg" read as one little-endian word.
constexpr uint64_t kQueryRegMarker = 0x6765727972657571ull;

}  // namespace

ORV_FRAME_API void ownGetReg(Orv32u regs[4], int leaf, int subleaf) {
    auto r = orv::cpu::cpuid(leaf, subleaf);
    regs[0] = r.eax; regs[1] = r.ebx; regs[2] = r.ecx; regs[3] = r.edx;
}

ORV_FRAME_API int ownGetMaskFeatures(Orv64u* pFeatures) {
    if (!ownFeaturesAreValid) {
        if (!orv_has_cpuid()) return 0;
        ownFeatures = detect();  // word first, then the flag
        ownFeaturesAreValid = 1;
    }
    *pFeatures = ownFeatures;
    return 1;
}

ORV_FRAME_API int ownGetFeature(Orv64u mask) { return (ownFeaturesMask & mask) == mask; }

ORV_FRAME_API int ownSetFeatureMask(Orv64u mask) {
    ownFeaturesMask = mask;
    return 1;
}

// Detection comes before the null test, so a processor without CPUID answers
// 36 even for a null pointer. *pFeaturesMask is in-out: on entry it may hold
// the marker that asks for an arbitrary leaf in pCpuidInfoRegs.
ORV_FRAME_API OrvStatus orvGetCpuFeatures(Orv64u* pFeaturesMask, Orv32u* pCpuidInfoRegs) {
    Orv64u features;
    if (!ownGetMaskFeatures(&features)) return orvStsNotSupportedCpu;
    if (!pFeaturesMask) return orvStsNullPtrErr;
    Orv64u entry;
    std::memcpy(&entry, pFeaturesMask, sizeof entry);
    *pFeaturesMask = features;
    if (!pCpuidInfoRegs) return orvStsNoErr;
    if (entry == kQueryRegMarker)
        ownGetReg(pCpuidInfoRegs, static_cast<int>(pCpuidInfoRegs[0]), static_cast<int>(pCpuidInfoRegs[2]));
    else
        ownGetReg(pCpuidInfoRegs, 1, 0);
    return orvStsNoErr;
}

ORV_FRAME_API Orv64u orvGetEnabledCpuFeatures(void) { return ownFeaturesMask; }

ORV_FRAME_API OrvStatus orvSetCpuFeaturesMask(Orv64u mask) {
    ownSetFeatureMask(mask);
    return orvStsNoErr;
}

ORV_FRAME_API OrvStatus orvEnableCpu(int cpuType) {
    if (cpuType == orvCpuAVX) is_avx_cpu_enabled = 1;
    return orvStsNoErr;
}

ORV_FRAME_API int orvIsCpuEnabled(int cpuType) {
    return cpuType == orvCpuAVX ? is_avx_cpu_enabled : 1;
}
