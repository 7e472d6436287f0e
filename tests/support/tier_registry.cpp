// The registry, generated from the same lists as the build. The symbols are
// declared here only to take their addresses, so this file includes no
// library header.
#include "support/tier_registry.h"

#include <cpuid.h>

#include <cstdio>
#include <cstdlib>

#define ORV_TIER_FN(tier, name) extern "C" void tier##_##name();
#include "orv_tier_fns.inc"
#undef ORV_TIER_FN

namespace orv::test {

namespace {

// Leaf-1 ECX: SSE3, SSSE3, SSE4.1, and AVX with its state enabled by the OS
// (OSXSAVE, then XCR0 saving XMM and YMM).
bool processor_runs(const std::string& tier) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return false;
    auto has = [c](int bit) { return (c >> bit) & 1u; };
    if (tier == "m7") return has(0);
    if (tier == "u8" || tier == "n8") return has(9);
    if (tier == "y8") return has(19);
    if (tier == "e9") {
        if (!has(27) || !has(28)) return false;
        unsigned lo, hi;
        __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
        return (lo & 6u) == 6u;
    }
    return false;
}

// ORV_TEST_TIERS, when set, names the only tiers to test ("y8" or "m7,u8"):
// a run on an emulated processor tests the tier it selects and no other.
bool requested(const std::string& tier) {
    const char* env = std::getenv("ORV_TEST_TIERS");
    return env == nullptr || *env == '\0' || std::string(env).find(tier) != std::string::npos;
}

// Detected once.
bool tier_runs(const std::string& tier) {
    static const bool runs[5] = {processor_runs("m7"), processor_runs("u8"), processor_runs("n8"),
                                 processor_runs("y8"), processor_runs("e9")};
    static const char* names[5] = {"m7", "u8", "n8", "y8", "e9"};
    for (int k = 0; k < 5; ++k)
        if (tier == names[k]) return runs[k];
    return false;
}

std::vector<RegistryEntry> tested_entries() {
    static const RegistryEntry all[] = {
#define ORV_TIER_FN(tier, name) {#tier, #name, reinterpret_cast<void*>(&tier##_##name)},
#include "orv_tier_fns.inc"
#undef ORV_TIER_FN
    };
    std::vector<RegistryEntry> out;
    std::string absent, unasked;
    for (const char* t : {"m7", "u8", "n8", "y8", "e9"}) {
        if (!tier_runs(t)) absent += std::string(" ") + t;
        else if (!requested(t)) unasked += std::string(" ") + t;
    }
    for (const auto& e : all)
        if (tier_tested(e.tier)) out.push_back(e);
    if (!absent.empty()) std::fprintf(stderr, "[ orv    ] tiers left out, not executable on this processor:%s\n", absent.c_str());
    if (!unasked.empty()) std::fprintf(stderr, "[ orv    ] tiers left out by ORV_TEST_TIERS:%s\n", unasked.c_str());
    return out;
}

}  // namespace

bool tier_tested(const std::string& tier) { return tier_runs(tier) && requested(tier); }

std::string tested_among(std::initializer_list<const char*> tiers) {
    std::string out;
    for (const char* t : tiers)
        if (tier_tested(t)) out += std::string(t) + " ";
    return out;
}

std::size_t count_tested(std::initializer_list<const char*> tiers) {
    std::size_t n = 0;
    for (const char* t : tiers) n += tier_tested(t);
    return n;
}

const std::vector<RegistryEntry>& registry() {
    static const std::vector<RegistryEntry> entries = tested_entries();
    return entries;
}

}  // namespace orv::test
