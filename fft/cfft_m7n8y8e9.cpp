// The public complex single-precision transforms. Each checks its arguments,
// picks the path by the specification's order against this tier's limits
// (small kernel, fused core, bit reversal then the plain core at the top
// medium order of m7 and n8, or the blocked large transform), provides the
// work buffer and scales where the path does not. Forward and inverse share
// one body.
#include "fft/limits.h"
#include "fft/small_tables.h"
#include "fft/spec_record.h"
#include "fft/transform_paths.h"
#include "internal/orv_tier.h"
#include "orvsfftk.h"

namespace orv::ORV_TIER_NS {
namespace {

using Tables = SmallTables<Orv32fc>;

// What differs between the directions: the small kernels and the scale flag.
struct Forward {
    static constexpr bool kInv = false;
    static bool scaled(const OrvFFTSpec* s) { return s->doFwdScale != 0; }
    static void small(int order, const Orv32fc* src, Orv32fc* dst, bool scale, Orv32f factor) {
        if (scale) Tables::fwd_scale[order](src, dst, factor);
        else Tables::fwd[order](src, dst);
    }
};
struct Inverse {
    static constexpr bool kInv = true;
    static bool scaled(const OrvFFTSpec* s) { return s->doInvScale != 0; }
    static void small(int order, const Orv32fc* src, Orv32fc* dst, bool scale, Orv32f factor) {
        if (scale) Tables::inv_scale[order](src, dst, factor);
        else Tables::inv[order](src, dst);
    }
};

template <class Dir>
OrvStatus transform(const Orv32fc* pSrc, Orv32fc* pDst, const OrvFFTSpec_C_32fc* pSpecC, Orv8u* pBuffer) {
    if (pSpecC == nullptr) return orvStsNullPtrErr;
    const auto* spec = reinterpret_cast<const OrvFFTSpec*>(pSpecC);
    if (spec->idCtx != fft::kIdC32fc) return orvStsContextMatchErr;
    if (pSrc == nullptr || pDst == nullptr) return orvStsNullPtrErr;

    constexpr const FftLimits& lim = kLimits32f;
    const int order = spec->order;
    const bool scale = Dir::scaled(spec);
    const Orv32f factor = spec->u.f.scale;
    if (order <= lim.complexSmall) {
        Dir::small(order, pSrc, pDst, scale, factor);
        return orvStsNoErr;
    }
    // Work area: the caller's buffer aligned up to 32, or a block for this
    // call only.
    WorkArea work;
    if (!work.acquire(spec->u.f.workSize, pBuffer)) return orvStsMemAllocErr;
    // The blocked large transform scales inside its innermost blocks.
    if (order >= lim.largeFrom) return Cores<Orv32fc>::large<Dir::kInv>(spec, pSrc, pDst, order, work.area);
    // Fused core, or at the top medium order of m7 and n8 reordering in pDst
    // and the plain core; then the scale.
    medium<Dir::kInv>(lim, spec, order, pSrc, pDst, work.area, scale, factor);
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsFFTFwd_CToC_32fc)(const Orv32fc* pSrc, Orv32fc* pDst,
                                                   const OrvFFTSpec_C_32fc* pSpec, Orv8u* pBuffer) {
    return transform<Forward>(pSrc, pDst, pSpec, pBuffer);
}

ORV_TIER_API OrvStatus ORV_T(orvsFFTInv_CToC_32fc)(const Orv32fc* pSrc, Orv32fc* pDst,
                                                   const OrvFFTSpec_C_32fc* pSpec, Orv8u* pBuffer) {
    return transform<Inverse>(pSrc, pDst, pSpec, pBuffer);
}
