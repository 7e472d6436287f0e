// Squaring kernel of tiers m7, u8 and y8: one scalar element when pDst sits
// 8 bytes off a 16-byte boundary, then groups of four in one of four loops by
// the alignment of pDst and pSrc, then a pair and an element.
#include "arith_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

enum class SrcKind { aligned, eight, any };  // 16-aligned, 8-aligned only, anything else

template <bool DstAligned, SrcKind K>
void square_groups(const double* s, double* d, long& i, long len) {
    auto load = [](const double* p) {
        if constexpr (K == SrcKind::aligned) return _mm_load_pd(p);
        if constexpr (K == SrcKind::eight) return V128<double>::load_halves(p);
        return _mm_loadu_pd(p);
    };
    for (; len - i >= 4; i += 4) {
        __m128d a = load(s + i), b = load(s + i + 2);
        a = _mm_mul_pd(a, a), b = _mm_mul_pd(b, b);
        if constexpr (DstAligned)
            _mm_store_pd(d + i, a), _mm_store_pd(d + i + 2, b);
        else
            _mm_storeu_pd(d + i, a), _mm_storeu_pd(d + i + 2, b);
    }
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownorvsSqr_64f)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    long i = 0;
    if (address(pDst) & 8) {
        double x = load_elem(pSrc);
        store_elem(pDst, x * x);
        if (++i == len) return;
    }
    if (address(pDst + i) & 15)
        square_groups<false, SrcKind::any>(pSrc, pDst, i, len);
    else if (!(address(pSrc + i) & 15))
        square_groups<true, SrcKind::aligned>(pSrc, pDst, i, len);
    else if (!(address(pSrc + i) & 7))
        square_groups<true, SrcKind::eight>(pSrc, pDst, i, len);
    else
        square_groups<true, SrcKind::any>(pSrc, pDst, i, len);
    if (len - i >= 2) {
        __m128d a = _mm_loadu_pd(pSrc + i);
        _mm_storeu_pd(pDst + i, _mm_mul_pd(a, a));
        i += 2;
    }
    if (i < len) {
        double x = load_elem(pSrc + i);
        store_elem(pDst + i, x * x);
    }
}
