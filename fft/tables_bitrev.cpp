// Bit-reversal tables of the radix core and the blocked reordering, shared by
// both element types. An array of N = 2^order elements is reversed quadruple
// by quadruple: with Q = N/4, entry m stands for the elements whose middle
// order-2 index bits are m (see the BitRev kernels).
//
// Norm table: t[m] = 2 rev(m) for m < Q, t[Q] = 0 as the sentinel at which
// the fused first pass stops.
// Swap list: the pairs (4m, 4 rev(m)) with m < rev(m) from the front, a zero
// behind the last pair, the self-reversed 4m (m > 0) from entry Q-1
// downwards, and t[Q] = 0; the pairs and the self-reversed entries fill
// entries 0 .. Q-1 exactly.
// Large table: R = 2^(order - 2B) block offsets rev(i) << B, then the swap
// list of one block of 2^B x 2^B elements.
//
// Orders up to 2 have no table: nothing is written and pTab comes back.
#include "fft/spec_tables.h"

namespace orv::ORV_TIER_NS {
namespace {

void fill_norm(int order, Orv32u* t) {
    const std::uint32_t q = std::uint32_t{1} << (order - 2);
    t[0] = 0;
    t[q] = 0;
    fftab::for_each_reversed(q, [&](std::uint32_t k, std::uint32_t r) { t[k] = 2 * r; });
}

void fill_swap_list(int order, Orv32u* t) {
    const std::uint32_t q = std::uint32_t{1} << (order - 2);
    std::uint32_t front = 0, back = q - 1;
    fftab::for_each_reversed(q, [&](std::uint32_t k, std::uint32_t r) {
        if (k < r) t[front++] = 4 * k, t[front++] = 4 * r;
        else if (k == r) t[back--] = 4 * k;
    });
    t[front] = 0;  // the one entry left between the two runs
    t[q] = 0;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvs_initTabBitRevNorm)(int order, Orv32u* pTab) {
    if (order <= 2) return reinterpret_cast<Orv8u*>(pTab);
    fill_norm(order, pTab);
    return fftab::end_aligned(pTab + (1u << (order - 2)) + 1);
}

ORV_TIER_API Orv8u* ORV_T(orvs_initTabBitRev)(int order, Orv32u* pTab) {
    if (order <= 2) return reinterpret_cast<Orv8u*>(pTab);
    fill_swap_list(order, pTab);
    return fftab::end_aligned(pTab + (1u << (order - 2)) + 1);
}

ORV_TIER_API Orv8u* ORV_T(orvs_initTabBitRevLarge)(int order, int blockOrder, Orv32u* pTab) {
    const std::uint32_t r = std::uint32_t{1} << (order - 2 * blockOrder);
    pTab[0] = 0;
    fftab::for_each_reversed(r, [&](std::uint32_t k, std::uint32_t rev) { pTab[k] = rev << blockOrder; });
    return ORV_T(orvs_initTabBitRev)(2 * blockOrder, pTab + r);
}
