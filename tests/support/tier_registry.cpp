// The registry, generated from the same lists as the build. The symbols are
// declared here only to take their addresses, so this file includes no
// library header.
#include "support/tier_registry.h"

#define ORV_TIER_FN(tier, name) extern "C" void tier##_##name();
#include "orv_tier_fns.inc"
#undef ORV_TIER_FN

namespace orv::test {

const std::vector<RegistryEntry>& registry() {
    static const std::vector<RegistryEntry> entries = {
#define ORV_TIER_FN(tier, name) {#tier, #name, reinterpret_cast<void*>(&tier##_##name)},
#include "orv_tier_fns.inc"
#undef ORV_TIER_FN
    };
    return entries;
}

}  // namespace orv::test
