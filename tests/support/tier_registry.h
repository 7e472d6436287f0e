// Every built tier function of the library, by name: the tests run each
// function's suite once per tier that exports it, against one reference.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

namespace orv::test {

struct RegistryEntry {
    const char* tier;
    const char* name;
    void* address;
};

// The entries of the tiers this processor can execute: on an older (or
// emulated) processor the tiers above it are left out, so no test calls an
// instruction the processor lacks. The environment variable ORV_TEST_TIERS,
// when set, restricts it further to the tiers it names. The first call reports
// what it left out.
const std::vector<RegistryEntry>& registry();

// Whether the registry holds `tier`: this processor executes it and
// ORV_TEST_TIERS, if set, names it.
bool tier_tested(const std::string& tier);

// Those of `tiers` the registry holds, in order, each followed by a space
// ("m7 n8 y8 e9 " when nothing is left out); and how many.
std::string tested_among(std::initializer_list<const char*> tiers);
std::size_t count_tested(std::initializer_list<const char*> tiers);

// Whether the registry holds all five tiers.
inline bool all_tiers_tested() { return count_tested({"m7", "u8", "n8", "y8", "e9"}) == 5; }

template <class Fn>
struct TierFn {
    std::string tier;
    Fn* fn;
};

// Test parameters print as their tier.
template <class Fn>
void PrintTo(const TierFn<Fn>& t, std::ostream* os) {
    *os << t.tier;
}

// The tier variants of one base name, in tier order m7 u8 n8 y8 e9. Fn is the
// function's type: tiers_of<decltype(orvsAdd_64f)>("orvsAdd_64f").
template <class Fn>
std::vector<TierFn<Fn>> tiers_of(const std::string& name) {
    std::vector<TierFn<Fn>> out;
    for (const auto& e : registry())
        if (name == e.name) out.push_back({e.tier, reinterpret_cast<Fn*>(e.address)});
    return out;
}

// The variant of `name` built for `tier`, or null.
template <class Fn>
Fn* tier_fn(const std::string& name, const std::string& tier) {
    for (const auto& t : tiers_of<Fn>(name))
        if (t.tier == tier) return t.fn;
    return nullptr;
}

// For INSTANTIATE_TEST_SUITE_P: names each instance by its tier.
struct TierName {
    template <class P>
    std::string operator()(const P& info) const {
        return info.param.tier;
    }
};

}  // namespace orv::test

// Parameterises a suite over the tiers of one function.
#define ORV_INSTANTIATE_TIERS(Suite, name) \
    INSTANTIATE_TEST_SUITE_P(Tiers, Suite, ::testing::ValuesIn(::orv::test::tiers_of<decltype(name)>(#name)), \
                             ::orv::test::TierName())
