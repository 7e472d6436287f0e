// Squaring kernel of tier n8, kept scalar for the in-order core: blocks of
// eight independent loads, products and stores with no alignment test, a
// prefetch 512 bytes ahead from 2048 elements on, then 4, 2 and 1.
#include <utility>

#include "arith_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

// N elements: all loads, then all products (scalar mulsd), then all stores,
// each element in its own register.
template <size_t... K>
inline void square_block(const double* s, double* d, std::index_sequence<K...>) {
    __m128d v[] = {_mm_set_sd(load_elem(s + K))...};
    ((v[K] = _mm_mul_sd(v[K], v[K])), ...);
    (store_elem(d + K, _mm_cvtsd_f64(v[K])), ...);
}
template <int N>
inline void square_block(const double* s, double* d) {
    square_block(s, d, std::make_index_sequence<N>{});
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownorvsSqr_64f)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    long i = 0;
    // len - 8 >= 2040: the same loop with a prefetch, stopped before the end
    // of the source.
    const bool prefetch = len - 8 >= 2040;
    for (; len - i >= 8; i += 8) {
        if (prefetch && i + 64 < len) _mm_prefetch(reinterpret_cast<const char*>(pSrc + i) + 512, _MM_HINT_T0);
        square_block<8>(pSrc + i, pDst + i);
    }
    if (len - i >= 4) square_block<4>(pSrc + i, pDst + i), i += 4;
    if (len - i >= 2) square_block<2>(pSrc + i, pDst + i), i += 2;
    if (i < len) square_block<1>(pSrc + i, pDst + i);
}
