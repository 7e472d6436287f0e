// Version records of the signal and image domains, one pair per tier. Only
// y8 decides at run time: with SSE4.2 in the enabled mask it reports the
// record whose name ends in "+".
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

#define ORV_STR2(x) #x
#define ORV_STR(x) ORV_STR2(x)
#define ORV_TIER_TEXT ORV_STR(ORV_TIER_PREFIX)

constexpr OrvLibVersion record(int buildNumber, const char* libName, const char* date) {
    return OrvLibVersion{7, 0, 205, buildNumber, ORV_TIER_TEXT, libName, "7.0 build 205.68", date};
}

constexpr const char* kSignalDate = "Jul 19 2011";
constexpr const char* kImageDate = "Jul 20 2011";

constexpr OrvLibVersion kSignal = record(1067, "orvs" ORV_TIER_TEXT "_l.a", kSignalDate);
constexpr OrvLibVersion kImage = record(1063, "orvi" ORV_TIER_TEXT "_l.a", kImageDate);
constexpr OrvLibVersion kSignalPlus = record(1067, "orvs" ORV_TIER_TEXT "_l.a+", kSignalDate);
constexpr OrvLibVersion kImagePlus = record(1063, "orvi" ORV_TIER_TEXT "_l.a+", kImageDate);

const OrvLibVersion* pick(const OrvLibVersion& plain, [[maybe_unused]] const OrvLibVersion& plus) {
    if constexpr (kTier == Tier::y8)
        if (ownGetFeature(orvFeatSSE42)) return &plus;
    return &plain;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API const OrvLibVersion* ORV_T(orvsGetLibVersion)(void) { return pick(kSignal, kSignalPlus); }
ORV_TIER_API const OrvLibVersion* ORV_T(orviGetLibVersion)(void) { return pick(kImage, kImagePlus); }
