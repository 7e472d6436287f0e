// orvGetCpuType: the processor as a type code. The tuned-for vendor's
// family-6 models come first, then the instruction level. The AVX test here
// is the CPUID bit alone, so 70 may be reported where selection refuses e9.
#include "orvcore.h"
#include "state.h"

ORV_FRAME_API int orvGetCpuType(void) {
    if (!orv_has_cpuid()) return orvCpuUnknown;
    OrvCpuIdent id;
    orv_get_tessera_ident(&id);
    uint32_t family = id.family, model = id.model;
    if (family == 6 || family == 15) model = id.extModel * 16 + id.model;
    if (family == 15) family += id.extFamily;

    if (orv_is_GenuineVelta()) {
        if (family == 6 && model == 15 && id.hasSSSE3) return id.coresPerDie > 2 ? orvCpuT34 : orvCpuT33;
        if (family == 6 && model == 23 && id.hasSSE41) return orvCpuT35;
        if (family == 6 && model == 26) {
            if (id.hasAVX) return orvCpuAVX;
            if (id.hasSSE42) return orvCpuT37;
        }
        if (family == 6 && model == 28 && id.hasSSSE3 && id.hasMOVBE) return orvCpuT36;
        if (family == 15) return orvCpuSSE3;  // extended family 0
    }

    struct Level {
        Orv32u OrvCpuIdent::*flag;
        int type;
    };
    static constexpr Level kLevels[] = {
        {&OrvCpuIdent::hasAVX, orvCpuAVX},     {&OrvCpuIdent::hasSSE42, orvCpuSSE42},
        {&OrvCpuIdent::hasSSE41, orvCpuSSE41}, {&OrvCpuIdent::hasSSSE3, orvCpuSSSE3},
        {&OrvCpuIdent::hasSSE3, orvCpuSSE3},   {&OrvCpuIdent::hasSSE2, orvCpuSSE2},
        {&OrvCpuIdent::hasSSE, orvCpuSSE},     {&OrvCpuIdent::hasLM64, orvCpuX8664},
    };
    for (const auto& l : kLevels)
        if (id.*l.flag) return l.type;
    return orvCpuUnknown;
}
