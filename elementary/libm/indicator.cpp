// The processor indicator word that selects the bodies of cos, sin and log.
// It is the scalar layer's own: filled from CPUID on first use, independent
// of the library's tier selection.
#include "cpuid.h"
#include "libm.h"

extern "C" {

uint32_t orv_libm_indicator = 0;

void orv_libm_init_indicator() {
    using namespace orv::libm;
    orv::cpu::Regs r = orv::cpu::cpuid(1, 0);
    uint32_t w = kIndicatorBase;  // x86-64 always has SSE2
    bool sse3 = r.ecx & 1u, sse41 = (r.ecx >> 19) & 1u;
    if (sse3) w |= kIndicatorSse3;
    // The .N bodies also count on SSE3, which every SSE4.1 processor has.
    if (sse3 && sse41) w |= kIndicatorSse41;
    orv_libm_indicator = w;
}
}

namespace orv::libm {
double select_first_call(Body_fn entry, double x) {
    orv_libm_init_indicator();
    return entry(x);
}
}  // namespace orv::libm
