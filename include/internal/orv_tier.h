// Tier naming for code compiled once per instruction-set tier.
//
// The build defines exactly one ORV_TIER_<XX>. ORV_T(name) spells the tier's
// C name (ORV_T(orvsAdd_64f) -> y8_orvsAdd_64f); definitions and same-tier
// calls both go through it, so tier code cannot name another tier. kTier
// carries the tier into `if constexpr`, and every helper with linkage lives in
// the tier's own namespace, so that five compilations of one source never
// merge into one copy at link time.
#pragma once

#include "orvs.h"
#include "orvi.h"
#include "internal/orv_kernels.h"

#define ORV_CAT2(a, b) a##_##b
#define ORV_CAT(a, b) ORV_CAT2(a, b)

#if defined(ORV_TIER_M7)
#define ORV_TIER_PREFIX m7
#define ORV_TIER_NS tier_m7
#elif defined(ORV_TIER_U8)
#define ORV_TIER_PREFIX u8
#define ORV_TIER_NS tier_u8
#elif defined(ORV_TIER_N8)
#define ORV_TIER_PREFIX n8
#define ORV_TIER_NS tier_n8
#elif defined(ORV_TIER_Y8)
#define ORV_TIER_PREFIX y8
#define ORV_TIER_NS tier_y8
#elif defined(ORV_TIER_E9)
#define ORV_TIER_PREFIX e9
#define ORV_TIER_NS tier_e9
#else
#error "tier code needs one ORV_TIER_<XX> define"
#endif

#define ORV_T(name) ORV_CAT(ORV_TIER_PREFIX, name)

// Defines an exported tier function: extern "C", default visibility. The
// linker's version script keeps it exported only in the tiers its list names.
#define ORV_TIER_API extern "C" __attribute__((visibility("default")))

// Declares this tier's variant of a public-style name or kernel, for a call
// from another source file of the same tier.
#define ORV_TIER_DECLARE(name) ORV_TIER_API __typeof__(name) ORV_T(name);

namespace orv {

enum class Tier { m7, u8, n8, y8, e9 };

namespace ORV_TIER_NS {
#if defined(ORV_TIER_M7)
inline constexpr Tier kTier = Tier::m7;
#elif defined(ORV_TIER_U8)
inline constexpr Tier kTier = Tier::u8;
#elif defined(ORV_TIER_N8)
inline constexpr Tier kTier = Tier::n8;
#elif defined(ORV_TIER_Y8)
inline constexpr Tier kTier = Tier::y8;
#else
inline constexpr Tier kTier = Tier::e9;
#endif
}  // namespace ORV_TIER_NS

}  // namespace orv
