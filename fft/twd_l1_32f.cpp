// Twiddle table of the single-precision radix-4/8 core, laid out in the
// order in which the passes read it: pass by pass (the plan of
// radix_passes.h), column group by column group, for each group the R-1
// planar pairs of W_M^(k*j), k = 1 .. R-1: the cosines of the group's columns,
// then the negated sines. Values are read from the base sine table, folded
// onto its quarter circle, so that every entry is exact to the last bit of
// the base table.
#include <cstdint>

#include "fft/radix_passes.h"
#include "fft/spec_record.h"
#include "internal/orv_tier.h"
#include "orvsfftk.h"

namespace orv::ORV_TIER_NS {
namespace {

// (cos, -sin) of 2*pi*x/M, 0 <= x < M, from T[k] = sin(2*pi*k/2^baseOrder)
// with stride s = 2^baseOrder / M.
struct Folded {
    float c, s;
};
inline Folded fold(const Orv32f* t, long x, long m, long stride) {
    const long q = m / 4;
    if (x <= q) return {t[(q - x) * stride], -t[x * stride]};
    if (x <= 2 * q) return {-t[(x - q) * stride], -t[(2 * q - x) * stride]};
    if (x <= 3 * q) return {-t[(3 * q - x) * stride], t[(x - 2 * q) * stride]};
    return {t[(x - 3 * q) * stride], t[(m - x) * stride]};
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwd_L1_32f)(int order, const Orv32f* pBase, int baseOrder, Orv8u* pTab) {
    if (order < 4) return pTab;
    float* out = reinterpret_cast<float*>(pTab);
    for (int bits = 2; bits < order;) {
        const int radix = r32::next_radix(order, bits);
        bits += radix == 8 ? 3 : 2;
        const long m = 1L << bits, cols = m / radix, stride = 1L << (baseOrder - bits);
        const int lanes = r32::pass_lanes(static_cast<int>(cols));
        for (long j = 0; j < cols; j += lanes)
            for (int k = 1; k < radix; ++k, out += 2 * lanes)
                for (int l = 0; l < lanes; ++l) {
                    const Folded w = fold(pBase, k * (j + l), m, stride);
                    out[l] = w.c;
                    out[lanes + l] = w.s;
                }
    }
    return orv::fft::align_up32(pTab + 8 * (std::size_t{1} << order));
}
