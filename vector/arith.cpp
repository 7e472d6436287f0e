// Public element-wise arithmetic: argument checks (pointers in argument
// order, then the length), the constant shortcuts, then the tier's loop: the
// e9 loop stands here, the other tiers call their kernel.
#include "arith_loops.h"

ORV_TIER_DECLARE(ownsAdd_64f)
ORV_TIER_DECLARE(ownsAdd_64f_I)
ORV_TIER_DECLARE(ownsAddC_64f_I)
ORV_TIER_DECLARE(ownsSub_64f)
ORV_TIER_DECLARE(ownsSub_64f_I)
ORV_TIER_DECLARE(ownsSubC_64f_I)
ORV_TIER_DECLARE(ownsSubCRev_64f)
ORV_TIER_DECLARE(ownsMul_64f_I)
ORV_TIER_DECLARE(ownsMulC_64f)
ORV_TIER_DECLARE(ownsMulC_64f_I)
ORV_TIER_DECLARE(ownsMulC_32f_I)
ORV_TIER_DECLARE(ownorvsSqr_64f)

namespace orv::ORV_TIER_NS {
namespace {

constexpr bool kAvx = kTier == Tier::e9;

template <class... P>
inline OrvStatus check(int len, P... ptrs) {
    if ((!ptrs || ...)) return orvStsNullPtrErr;
    return len < 1 ? orvStsSizeErr : orvStsNoErr;
}

using Two = Operands<double, Second::array>;
using OneC = Operands<double, Second::constant>;

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsAdd_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len) {
    if (OrvStatus st = check(len, pSrc1, pSrc2, pDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrc1, pSrc2, 0}, pDst, len, kAdd);
    else ORV_T(ownsAdd_64f)(pSrc1, pSrc2, pDst, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsSub_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len) {
    if (OrvStatus st = check(len, pSrc1, pSrc2, pDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrc1, pSrc2, 0}, pDst, len, kSubRev);
    else ORV_T(ownsSub_64f)(pSrc1, pSrc2, pDst, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsAdd_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrc, pSrcDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kAdd);
    else ORV_T(ownsAdd_64f_I)(pSrc, pSrcDst, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsSub_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrc, pSrcDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kSubRev);
    else ORV_T(ownsSub_64f_I)(pSrc, pSrcDst, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsMul_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrc, pSrcDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kMul);
    else ORV_T(ownsMul_64f_I)(pSrc, pSrcDst, len);
    return orvStsNoErr;
}

// Adding or subtracting zero (either sign) returns at once: the array is not
// touched, so even signalling NaNs stay as they are.
ORV_TIER_API OrvStatus ORV_T(orvsAddC_64f_I)(Orv64f val, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrcDst)) return st;
    if (val == 0.0) return orvStsNoErr;
    if constexpr (kAvx) avx_loop(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kAdd);
    else ORV_T(ownsAddC_64f_I)(pSrcDst, len, val);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsSubC_64f_I)(Orv64f val, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrcDst)) return st;
    if (val == 0.0) return orvStsNoErr;
    if constexpr (kAvx) avx_loop(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kSub);
    else ORV_T(ownsSubC_64f_I)(pSrcDst, len, val);
    return orvStsNoErr;
}

// No shortcut: val - x is computed for every element.
ORV_TIER_API OrvStatus ORV_T(orvsSubCRev_64f)(const Orv64f* pSrc, Orv64f val, Orv64f* pDst, int len) {
    if (OrvStatus st = check(len, pSrc, pDst)) return st;
    if constexpr (kAvx) avx_loop(OneC{pSrc, nullptr, val}, pDst, len, kSubRev);
    else ORV_T(ownsSubCRev_64f)(pSrc, pDst, len, val);
    return orvStsNoErr;
}

// 1.0 is tested before 0.0. Both shortcuts are real calls of this tier's
// Copy or Zero, whose status is returned: 0.0 writes +0.0 even over NaN,
// infinities and negative numbers.
ORV_TIER_API OrvStatus ORV_T(orvsMulC_64f)(const Orv64f* pSrc, Orv64f val, Orv64f* pDst, int len) {
    if (OrvStatus st = check(len, pSrc, pDst)) return st;
    if (val == 1.0) return ORV_T(orvsCopy_64f)(pSrc, pDst, len);
    if (val == 0.0) return ORV_T(orvsZero_64f)(pDst, len);
    if constexpr (kAvx) avx_loop(OneC{pSrc, nullptr, val}, pDst, len, kMul);
    else ORV_T(ownsMulC_64f)(pSrc, pDst, len, val);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsMulC_64f_I)(Orv64f val, Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrcDst)) return st;
    if (val == 1.0) return orvStsNoErr;
    if (val == 0.0) return ORV_T(orvsZero_64f)(pSrcDst, len);
    if constexpr (kAvx) avx_loop(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kMul);
    else ORV_T(ownsMulC_64f_I)(pSrcDst, len, val);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsMulC_32f_I)(Orv32f val, Orv32f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrcDst)) return st;
    if (val == 1.0f) return orvStsNoErr;
    if (val == 0.0f) return ORV_T(orvsZero_32f)(pSrcDst, len);
    if constexpr (kAvx) avx_loop(Operands<float, Second::constant>{pSrcDst, nullptr, val}, pSrcDst, len, kMul);
    else ORV_T(ownsMulC_32f_I)(pSrcDst, len, val);
    return orvStsNoErr;
}

// The kernel takes source and destination; squaring in place passes the
// array as both.
ORV_TIER_API OrvStatus ORV_T(orvsSqr_64f_I)(Orv64f* pSrcDst, int len) {
    if (OrvStatus st = check(len, pSrcDst)) return st;
    if constexpr (kAvx) avx_loop(Two{pSrcDst, pSrcDst, 0}, pSrcDst, len, kMul);
    else ORV_T(ownorvsSqr_64f)(pSrcDst, pSrcDst, len);
    return orvStsNoErr;
}
