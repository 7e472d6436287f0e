// Tier selection: the jump index that every stub reads, the LP word, and the
// automatic and forced selection functions.
#include "orvcore.h"
#include "state.h"

extern "C" {
ORV_API Orv32u orvJumpIndexForMergedLibs = 0;
ORV_API Orv32u orvJumpIndexForMergedLibsLP = 0;
}

namespace {

void set_tier(Orv32u index, Orv64u mask) {
    orvJumpIndexForMergedLibs = index;
    orvJumpIndexForMergedLibsLP = index == 3 ? 1 : 0;  // written on every path
    ownFeaturesMask = mask;
}

// Forced selection by type code. The mask is the constant itself, not ANDed
// with the processor's features.
struct Forced {
    int cpu;
    Orv32u index;
    Orv64u mask;
};
constexpr Forced kForced[] = {
    {0, 1, 0xF},     {32, 1, 0xF},    {66, 1, 0xF},    {33, 2, 0x1F},  {34, 2, 0x1F},
    {67, 2, 0x1F},   {36, 3, 0x3F},   {35, 4, 0x5F},   {68, 4, 0x5F},  {37, 4, 0xDF},
    {69, 4, 0xDF},   {38, 4, 0xCDF},  {71, 4, 0xCDF},  {70, 5, 0xFDF},
};

}  // namespace

// Tiers from the feature bits alone; the vendor test only changes the status.
ORV_FRAME_API OrvStatus orvStaticInit(void) {
    Orv64u f = 0;
    OrvStatus st = orvGetCpuFeatures(&f, nullptr);
    auto has = [&f](Orv64u bits) { return (f & bits) == bits; };
    if (st != orvStsNoErr) {
        set_tier(0, 7);  // exactly 7 after failed detection
    } else if (has(orvFeatAVX | orvFeatAVXOS) && orvIsCpuEnabled(orvCpuAVX)) {
        set_tier(5, f & 0xFDF);
    } else if (has(orvFeatSSE41)) {  // before MOVBE: SSE4.1 with MOVBE is y8
        set_tier(4, f & 0xCDF);
    } else if (has(orvFeatMOVBE | orvFeatSSSE3)) {
        set_tier(3, f & 0x3F);
    } else if (has(orvFeatSSSE3)) {
        set_tier(2, f & 0x1F);
    } else if (has(orvFeatSSE3)) {  // also MOVBE without SSSE3
        set_tier(1, f & 0xF);
    } else {
        set_tier(0, f & 0x7);
        st = orvStsNotSupportedCpu;
    }
    if (!orv_has_cpuid() || !orv_is_GenuineVelta()) st = orvStsNonVeltaCpu;
    return st;
}

ORV_FRAME_API OrvStatus orvInit(void) { return orvStaticInit(); }

// The range test is unsigned with 96 as upper bound, so -1 falls outside it
// and is caught by its own comparison; code 0 selects index 1, and index 0
// cannot be forced.
ORV_FRAME_API OrvStatus orvStaticInitCpu(int cpu) {
    if (static_cast<unsigned>(cpu) <= 96u) {
        for (const auto& row : kForced)
            if (row.cpu == cpu) {
                set_tier(row.index, row.mask);
                return orvStsNoErr;
            }
        if ((cpu >= 1 && cpu <= 11) || cpu == 64 || cpu == 65 || cpu == 96) return orvStsNotSupportedCpu;
    }
    if (cpu == -1) return orvStaticInit();
    return orvStsCpuMismatch;
}

ORV_FRAME_API OrvStatus orvInitCpu(int cpu) { return orvStaticInitCpu(cpu); }
