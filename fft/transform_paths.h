// What the public transforms share: the work area of one call, the tier's
// complex kernels of each element type bound under one interface, and the
// medium range of a complex transform (the fused core, or bit reversal then
// the plain core, then the scale). Everything is a template, so a tier
// instantiates only the kernels it has: the 32f binding only in the tiers
// with single-precision transforms, the 64f fused core not on n8.
#pragma once

#include "fft/limits.h"
#include "fft/spec_record.h"
#include "internal/orv_tier.h"
#include "orvsfftk.h"

ORV_TIER_DECLARE(orvsMalloc_8u)
ORV_TIER_DECLARE(orvsFree)
ORV_TIER_DECLARE(orvsMulC_32f_I)
ORV_TIER_DECLARE(orvsMulC_64f_I)
ORV_TIER_DECLARE(orvs_cRadix4FwdNorm_32fc)
ORV_TIER_DECLARE(orvs_cRadix4InvNorm_32fc)
ORV_TIER_DECLARE(orvs_cRadix4Fwd_32fc)
ORV_TIER_DECLARE(orvs_cRadix4Inv_32fc)
ORV_TIER_DECLARE(orvs_cFftFwd_Large_32fc)
ORV_TIER_DECLARE(orvs_cFftInv_Large_32fc)
ORV_TIER_DECLARE(orvs_BitRev1_C)
ORV_TIER_DECLARE(orvs_BitRev2_C)
ORV_TIER_DECLARE(orvs_cRadix4FwdNorm_64fc)
ORV_TIER_DECLARE(orvs_cRadix4InvNorm_64fc)
ORV_TIER_DECLARE(orvs_cRadix4Fwd_64fc)
ORV_TIER_DECLARE(orvs_cRadix4Inv_64fc)
ORV_TIER_DECLARE(orvs_cFftFwd_Large_64fc)
ORV_TIER_DECLARE(orvs_cFftInv_Large_64fc)
ORV_TIER_DECLARE(orvs_BitRev1_16)
ORV_TIER_DECLARE(orvs_BitRev2_16)
ORV_TIER_DECLARE(orvs_BitRev1_Z)
ORV_TIER_DECLARE(orvs_BitRev2_Z)

namespace orv::ORV_TIER_NS {
namespace {

// The work area of one call: the caller's buffer aligned up to 32 (its size
// includes the slack), or a block of workSize bytes for this call only,
// released with the object.
struct WorkArea {
    Orv8u* area = nullptr;
    Orv8u* owned = nullptr;
    // False when an allocation was needed and failed.
    bool acquire(int workSize, Orv8u* pBuffer) {
        if (workSize <= 0) return true;
        if (pBuffer != nullptr) {
            area = fft::align_up32(pBuffer);
            return true;
        }
        owned = area = ORV_T(orvsMalloc_8u)(workSize);
        return owned != nullptr;
    }
    WorkArea() = default;
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;
    ~WorkArea() {
        if (owned != nullptr) ORV_T(orvsFree)(owned);
    }
};

// The complex kernels of one element type: the fused (Norm) core, the plain
// core on bit-reversed data, the reversal in place and out of place on the
// specification's table, the large transform, the scale.
template <class C, Tier kT = kTier>
struct Cores;

template <Tier kT>
struct Cores<Orv32fc, kT> {
    template <bool kInv>
    static void norm(const Orv32fc* s, Orv32fc* d, int n, const void* twd, const Orv32u* br, Orv8u* work) {
        if constexpr (kInv) ORV_T(orvs_cRadix4InvNorm_32fc)(s, d, n, twd, br, work);
        else ORV_T(orvs_cRadix4FwdNorm_32fc)(s, d, n, twd, br, work);
    }
    template <bool kInv>
    static void plain(Orv32fc* d, int n, const void* twd, Orv8u* work) {
        if constexpr (kInv) ORV_T(orvs_cRadix4Inv_32fc)(d, n, twd, work, 1);
        else ORV_T(orvs_cRadix4Fwd_32fc)(d, n, twd, work, 1);
    }
    template <bool kInv>
    static OrvStatus large(const OrvFFTSpec* spec, const Orv32fc* s, Orv32fc* d, int order, Orv8u* work) {
        if constexpr (kInv) return ORV_T(orvs_cFftInv_Large_32fc)(spec, s, d, order, work);
        else return ORV_T(orvs_cFftFwd_Large_32fc)(spec, s, d, order, work);
    }
    static void bit_rev1(Orv32fc* d, int n, const Orv32u* br) { ORV_T(orvs_BitRev1_C)(d, n, br); }
    static void bit_rev2(const Orv32fc* s, Orv32fc* d, int n, const Orv32u* br) { ORV_T(orvs_BitRev2_C)(s, d, n, br); }
    static void mul_c(Orv32f f, Orv32f* d, int n) { ORV_T(orvsMulC_32f_I)(f, d, n); }
};

// n8 has no fused 64f core: its table is the swap list of the 16-byte
// reversal, and every medium order takes the plain core.
template <Tier kT>
struct Cores<Orv64fc, kT> {
    template <bool kInv>
    static void norm(const Orv64fc* s, Orv64fc* d, int n, const void* twd, const Orv32u* br, Orv8u* work) {
        if constexpr (kT != Tier::n8) {
            if constexpr (kInv) ORV_T(orvs_cRadix4InvNorm_64fc)(s, d, n, twd, br, work);
            else ORV_T(orvs_cRadix4FwdNorm_64fc)(s, d, n, twd, br, work);
        }
    }
    template <bool kInv>
    static void plain(Orv64fc* d, int n, const void* twd, Orv8u* work) {
        if constexpr (kInv) ORV_T(orvs_cRadix4Inv_64fc)(d, n, twd, work, 1);
        else ORV_T(orvs_cRadix4Fwd_64fc)(d, n, twd, work, 1);
    }
    template <bool kInv>
    static OrvStatus large(const OrvFFTSpec* spec, const Orv64fc* s, Orv64fc* d, int order, Orv8u* work) {
        if constexpr (kInv) return ORV_T(orvs_cFftInv_Large_64fc)(spec, s, d, order, work);
        else return ORV_T(orvs_cFftFwd_Large_64fc)(spec, s, d, order, work);
    }
    static void bit_rev1(Orv64fc* d, int n, const Orv32u* br) {
        if constexpr (kT == Tier::n8) ORV_T(orvs_BitRev1_16)(d, n, br);
        else ORV_T(orvs_BitRev1_Z)(d, n, br);
    }
    static void bit_rev2(const Orv64fc* s, Orv64fc* d, int n, const Orv32u* br) {
        if constexpr (kT == Tier::n8) ORV_T(orvs_BitRev2_16)(s, d, n, br);
        else ORV_T(orvs_BitRev2_Z)(s, d, n, br);
    }
    static void mul_c(Orv64f f, Orv64f* d, int n) { ORV_T(orvsMulC_64f_I)(f, d, n); }
};

// Medium range, 2^order complex values from s into d (s may equal d): the
// fused core where the tier has it for this order, else bit reversal into d
// and the plain core in place; then the scale over d when asked for.
template <bool kInv, class C, class S>
void medium(const FftLimits& lim, const OrvFFTSpec* spec, int order, const C* s, C* d, Orv8u* work, bool scaled,
            S factor) {
    using K = Cores<C>;
    const int n = 1 << order;
    if (order >= lim.normFrom && order <= lim.normTo) {
        K::template norm<kInv>(s, d, n, spec->pTwd, spec->pBitRev, work);
    } else {
        if (s == d) K::bit_rev1(d, n, spec->pBitRev);
        else K::bit_rev2(s, d, n, spec->pBitRev);
        K::template plain<kInv>(d, n, spec->pTwd, work);
    }
    if (scaled) K::mul_c(factor, reinterpret_cast<S*>(d), 2 * n);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
