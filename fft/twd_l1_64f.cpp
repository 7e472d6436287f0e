// Twiddle table of the double-precision radix-4/8 core. Every value is read
// from the base sine table (quarter circle, stride 2^(baseOrder-order) per
// step of 2*pi/N) and stored as the forward twiddle (cos, -sin), in the order
// in which the passes of the tier's plan read them: for each pass after the
// first, for each group of columns, the planar pairs k = 1..R-1. n8 instead
// holds one flat table of records j = 0..N/4, each W^j, W^2j, W^3j
// interleaved, that its radix-4 passes read with a stride.
#include "fft/radix_64f.h"
#include "fft/spec_record.h"

namespace orv::ORV_TIER_NS {
namespace {

// Forward twiddle exp(-2 pi i x / 2^mOrder), x below 2^mOrder, folded onto
// the quarter-circle base table.
struct Fold {
    const Orv64f* T;
    int baseOrder;
    void operator()(long x, int mOrder, double& c, double& s) const {
        const long M = 1L << mOrder;
        const long st = 1L << (baseOrder - mOrder);
        if (x <= M / 4) c = T[(M / 4 - x) * st], s = -T[x * st];
        else if (x <= M / 2) c = -T[(x - M / 4) * st], s = -T[(M / 2 - x) * st];
        else if (x <= 3 * M / 4) c = -T[(3 * M / 4 - x) * st], s = T[(x - M / 2) * st];
        else c = T[(x - 3 * M / 4) * st], s = T[(M - x) * st];
    }
};

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwd_L1_64f)(int order, const Orv64f* pBase, int baseOrder, Orv8u* pTab) {
    if (order < 4) return pTab;
    const long n = 1L << order;
    const Fold fold{pBase, baseOrder};
    double* t = reinterpret_cast<double*>(pTab);
    if constexpr (kTier == orv::Tier::n8) {
        for (long j = 0; j <= n / 4; ++j)
            for (int k = 1; k <= 3; ++k, t += 2) fold(j * k, order, t[0], t[1]);
    } else {
        constexpr int G = r64::DV::kN;
        for (int bits = r64::first_bits(order); bits < order;) {
            const int r = r64::next_radix(order, bits);
            const int nb = r == 8 ? 3 : 2;
            const long m = 1L << bits;
            for (long j = 0; j < m; j += G)
                for (int k = 1; k < r; ++k, t += 2 * G)
                    for (int l = 0; l < G; ++l) fold((j + l) * k, bits + nb, t[l], t[G + l]);
            bits += nb;
        }
    }
    return orv::fft::align_up32(pTab + 16 * n);
}
