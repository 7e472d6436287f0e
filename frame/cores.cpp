// Cores on the die, for the tuned-for vendor (leaf 11, else leaf 4) and for
// the other vendor (leaf 0x80000008); anything else counts as one core.
#include "cpuid.h"
#include "orvcore.h"
#include "state.h"

using orv::cpu::cpuid;

namespace {
constexpr uint32_t kOtherVendorEcx = 0x444d4163u;  // the other vendor's leaf-0 ECX word
}

ORV_FRAME_API int orvGetNumCoresOnDie(void) {
    if (!orv_has_cpuid()) return 1;
    if (orv_is_GenuineVelta()) {
        auto top = cpuid(0, 0).eax;
        if (top < 4) return 1;
        if (top >= 11) {
            auto level0 = cpuid(11, 0);
            if (level0.ebx != 0) {
                // A level-0 count of 2 or 3 (bit 1 set) means two threads a core.
                bool smt = (level0.ebx >> 1) & 1;
                auto count = cpuid(11, 1).ebx;
                return static_cast<int>(smt ? count >> 1 : count);
            }
        }
        return static_cast<int>(((cpuid(4, 0).eax >> 26) & 0x3F) + 1);
    }
    if (cpuid(0, 0).ecx == kOtherVendorEcx) {
        // Only the low 4 bits of the highest extended leaf are compared, and
        // ECX of 0x80000008 is used whole, as the count rule stands.
        if ((cpuid(static_cast<int>(0x80000000u), 0).eax & 0xF) < 8) return 1;
        return static_cast<int>(cpuid(static_cast<int>(0x80000008u), 0).ecx + 1);
    }
    return 1;
}

// One more than the highest core ID of leaf 4: a maximum for the package,
// with no vendor test.
ORV_FRAME_API int orv_get_cores_on_die(void) {
    if (static_cast<int32_t>(cpuid(0, 0).eax) < 4) return 1;
    return static_cast<int>(((cpuid(4, 0).eax >> 26) & 0x3F) + 1);
}
