// Helpers shared by the FFT tests: the two bit-reversal tables written from
// their definition, guarded copies, bitwise comparison and a failing allocator.
#pragma once

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "orvcore.h"
#include "support/alloc_spy.h"
#include "support/tier_registry.h"
#include "vector/placed.h"

namespace orv::test {

#define ORV_TIER_FN(name, tier) ::orv::test::tier_fn<decltype(name)>(#name, tier)

inline unsigned rev_bits(unsigned v, int bits) {
    unsigned r = 0;
    for (int b = 0; b < bits; ++b) r |= ((v >> b) & 1u) << (bits - 1 - b);
    return r;
}

// Norm table: t[k] = 2 rev(k) for k < N/4, a zero at N/4.
inline std::vector<Orv32u> norm_table(int order) {
    const unsigned q = 1u << (order - 2);
    std::vector<Orv32u> t(q + 1, 0);
    for (unsigned k = 0; k < q; ++k) t[k] = 2 * rev_bits(k, order - 2);
    return t;
}

// Swap list: the pairs (4k, 4 rev k), k < rev k, ascending from the front; a
// zero; the self-reversed 4k, k > 0, from entry N/4 - 1 downwards in
// ascending k; a zero at N/4.
inline std::vector<Orv32u> swap_list(int order) {
    const unsigned q = 1u << (order - 2);
    std::vector<Orv32u> t(q + 1, 0);
    unsigned front = 0, back = q - 1;
    for (unsigned k = 1; k < q; ++k) {
        const unsigned r = rev_bits(k, order - 2);
        if (k < r) t[front++] = 4 * k, t[front++] = 4 * r;
        else if (k == r) t[back--] = 4 * k;
    }
    return t;
}

template <class T>
bool same_bits(const T* a, const T* b, size_t n) {
    return std::memcmp(a, b, n * sizeof(T)) == 0;
}
template <class T>
bool same_bits(const std::vector<T>& a, const T* b) {
    return same_bits(a.data(), b, a.size());
}

// A copy of n values placed against a guard page.
template <class T>
struct PlacedCopy : Placed {
    PlacedCopy(const T* src, size_t n, Flush f, unsigned align) : Placed(n * sizeof(T), f, align) {
        std::memcpy(bytes(), src, n * sizeof(T));
    }
    T* p() const { return as<T>(); }
};

// While in scope, every allocation through i_malloc from the k-th on fails.
struct FailingMalloc : AllocSpy {
    explicit FailingMalloc(int from = 1) : AllocSpy(from) {}
};

// A tier and a precision: suites run once per tier of each element type.
struct TierPrec {
    std::string tier;
    bool dbl;
    std::string name() const { return tier + (dbl ? "_64f" : "_32f"); }
};
inline void PrintTo(const TierPrec& p, std::ostream* os) { *os << p.name(); }
// The tiers exporting `name32`, then those exporting `name64`.
inline std::vector<TierPrec> tier_precisions(const std::string& name32, const std::string& name64) {
    std::vector<TierPrec> v;
    for (bool dbl : {false, true})
        for (const auto& t : tiers_of<void()>(dbl ? name64 : name32)) v.push_back({t.tier, dbl});
    return v;
}
#define ORV_INSTANTIATE_TIER_PRECISIONS(Suite, name32, name64)                                   \
    INSTANTIATE_TEST_SUITE_P(Tiers, Suite, ::testing::ValuesIn(::orv::test::tier_precisions(name32, name64)), \
                             [](const auto& info) { return info.param.name(); })

}  // namespace orv::test
