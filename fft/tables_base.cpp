// The base sine table every other twiddle table is read from:
// T[k] = sin(2 pi k / N), k = 0 .. Q = N/4, with T[Q] = 1 exactly.
//
// Above order 10 each entry is its own call of the scalar layer's sin (first
// octant) or cos (second octant, as cos of the complementary angle), in
// double, with no recurrence, so every entry is as accurate as those
// functions; the 32f table rounds each double once. Up to order 10 the table
// is a subsample of the fixed order-10 table of the library.
#include <math.h>

#include "fft/spec_tables.h"

namespace orv::ORV_TIER_NS {
namespace {

template <class T>
const T* fixed_table() {
    if constexpr (sizeof(T) == 4) return fft_fix_twiddle_table_32f;
    else return fft_fix_twiddle_table_64f;
}

template <class T>
Orv8u* init_base(int order, T* t) {
    const int q = order >= 2 ? 1 << (order - 2) : 0;
    if (order <= 10) {
        const T* fixed = fixed_table<T>();
        const int s = 1 << (10 - order);
        for (int k = 0; k <= q; ++k) t[k] = fixed[k * s];
        if (q > 0) t[q] = T(1);
    } else {
        const int n = 1 << order;
        const double step = 6.283185307179586 / n;
        for (int k = 0; k <= n / 8; ++k) t[k] = static_cast<T>(sin(k * step));
        for (int k = n / 8 + 1; k <= q; ++k) t[k] = static_cast<T>(cos((q - k) * step));
    }
    return fftab::end_aligned(t + q + 1);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdBase_32f)(int order, Orv32f* pTab) { return init_base(order, pTab); }
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdBase_64f)(int order, Orv64f* pTab) { return init_base(order, pTab); }
