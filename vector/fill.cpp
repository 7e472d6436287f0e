// Public clear, fill and copy: check the arguments, turn the element count
// into bytes (32-bit arithmetic, unguarded) and call the tier's kernel. On
// e9 the size picks the kernel: below the split the 32-byte kernels run with
// no cache question.
#include <bit>

#include "mem_common.h"

ORV_TIER_DECLARE(ownsZero_8u)
ORV_TIER_DECLARE(ownsZero_8u_E9)
ORV_TIER_DECLARE(ownsCopy_8u)
ORV_TIER_DECLARE(ownsCopy_8u_E9)
ORV_TIER_DECLARE(ownsSet_32s)
ORV_TIER_DECLARE(ownsSet_32s_E9)
ORV_TIER_DECLARE(ownsSet_64s)

namespace orv::ORV_TIER_NS {
namespace {

constexpr bool kAvx = kTier == Tier::e9;
// e9: byte counts above these go to the kernels that may stream.
constexpr int kZeroSplit = 0x200000, kSetSplit = 0x200000, kCopySplit = 0x100000;

inline int byte_count(int len, int size) { return static_cast<int>(static_cast<unsigned>(len) * size); }

OrvStatus zero(void* pDst, int len, int size) {
    if (!pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    auto* d = static_cast<Orv8u*>(pDst);
    int bytes = byte_count(len, size);
    if constexpr (kAvx) {
        if (bytes <= kZeroSplit) return ORV_T(ownsZero_8u_E9)(d, bytes), orvStsNoErr;
    }
    ORV_T(ownsZero_8u)(d, bytes);
    return orvStsNoErr;
}

OrvStatus copy(const void* pSrc, void* pDst, int len, int size) {
    if (!pSrc || !pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    auto* s = static_cast<const Orv8u*>(pSrc);
    auto* d = static_cast<Orv8u*>(pDst);
    int bytes = byte_count(len, size);
    if constexpr (kAvx) {
        if (bytes <= kCopySplit) return ORV_T(ownsCopy_8u_E9)(s, d, bytes), orvStsNoErr;
    }
    ORV_T(ownsCopy_8u)(s, d, bytes);
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsZero_8u)(Orv8u* pDst, int len) { return zero(pDst, len, 1); }
ORV_TIER_API OrvStatus ORV_T(orvsZero_32f)(Orv32f* pDst, int len) { return zero(pDst, len, 4); }
ORV_TIER_API OrvStatus ORV_T(orvsZero_64f)(Orv64f* pDst, int len) { return zero(pDst, len, 8); }

ORV_TIER_API OrvStatus ORV_T(orvsCopy_8u)(const Orv8u* pSrc, Orv8u* pDst, int len) { return copy(pSrc, pDst, len, 1); }
ORV_TIER_API OrvStatus ORV_T(orvsCopy_32f)(const Orv32f* pSrc, Orv32f* pDst, int len) {
    return copy(pSrc, pDst, len, 4);
}
ORV_TIER_API OrvStatus ORV_T(orvsCopy_64f)(const Orv64f* pSrc, Orv64f* pDst, int len) {
    return copy(pSrc, pDst, len, 8);
}

// The value is stored by its bits: NaN payloads and -0.0 arrive unchanged.
ORV_TIER_API OrvStatus ORV_T(orvsSet_32f)(Orv32f val, Orv32f* pDst, int len) {
    if (!pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    auto bits = std::bit_cast<Orv32s>(val);
    auto* d = reinterpret_cast<Orv32s*>(pDst);
    if constexpr (kAvx) {
        if (byte_count(len, 4) <= kSetSplit) return ORV_T(ownsSet_32s_E9)(&bits, d, len), orvStsNoErr;
    }
    ORV_T(ownsSet_32s)(bits, d, len);
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orvsSet_64f)(Orv64f val, Orv64f* pDst, int len) {
    if (!pDst) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    ORV_T(ownsSet_64s)(std::bit_cast<Orv64s>(val), reinterpret_cast<Orv64s*>(pDst), len);
    return orvStsNoErr;
}
