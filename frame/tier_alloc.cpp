// The typed allocators of each tier. The byte count is computed in 64 bits
// from the sign-extended len, but orvMalloc takes an int: only the low 32 bits
// arrive, so an oversized len yields null or a short block, as documented.
#include <cstdint>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

template <int kElemBytes>
void* typed_malloc(int len) {
    if (len < 1) return nullptr;
    int64_t bytes = static_cast<int64_t>(len) * kElemBytes;
    return orvMalloc(static_cast<int>(bytes));  // modulo 2^32
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvsMalloc_8u)(int len) { return static_cast<Orv8u*>(typed_malloc<1>(len)); }
ORV_TIER_API Orv32f* ORV_T(orvsMalloc_32f)(int len) { return static_cast<Orv32f*>(typed_malloc<4>(len)); }
ORV_TIER_API Orv64f* ORV_T(orvsMalloc_64f)(int len) { return static_cast<Orv64f*>(typed_malloc<8>(len)); }
ORV_TIER_API void ORV_T(orvsFree)(void* p) { orvFree(p); }
