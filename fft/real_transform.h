// The public real transforms, one body for both element types and both
// packed layouts; a source file per element type instantiates forward and
// inverse:
//
//   forward: small orders by the real small kernels; otherwise the complex
//   transform of the N/2 pairs (small complex kernel, fused core, bit
//   reversal then the plain core, or the blocked large transform, per the
//   tier's limits of the inner order), scaled there, then the edge pair and
//   the recombination in place.
//   inverse: the edge pair and the inverse recombination into pDst, then the
//   inverse complex transform in place, scaled there. Scaling before or after
//   the linear recombination gives the same result.
//
// Pack runs as Perm plus a move of R(N/2): after the forward transform, and
// into pDst before the inverse one (from the end, so pSrc may equal pDst).
#pragma once

#include "fft/limits.h"
#include "fft/recombine.h"
#include "fft/small_tables.h"
#include "fft/spec_record.h"
#include "fft/transform_paths.h"
#include "internal/orv_tier.h"

ORV_TIER_DECLARE(orvs_cRealRecombine_32f)
ORV_TIER_DECLARE(orvs_cCcsRecombine_32f)
ORV_TIER_DECLARE(orvs_cRealRecombine_64f)
ORV_TIER_DECLARE(orvs_cCcsRecombine_64f)

namespace orv::ORV_TIER_NS {
namespace {
namespace real {

enum class Layout { Perm, Pack };

// Element type facts: the complex type, the record's kind and fields.
template <class T>
struct Elem;
template <>
struct Elem<Orv32f> {
    using C = Orv32fc;
    static constexpr Orv32s kId = fft::kIdR32f;
    static Orv32f scale(const OrvFFTSpec* s) { return s->u.f.scale; }
    static int work_size(const OrvFFTSpec* s) { return s->u.f.workSize; }
};
template <>
struct Elem<Orv64f> {
    using C = Orv64fc;
    static constexpr Orv32s kId = fft::kIdR64f;
    static Orv64f scale(const OrvFFTSpec* s) { return s->u.d.scale; }
    static int work_size(const OrvFFTSpec* s) { return s->u.d.workSize; }
};

// The recombination kernels of the element type.
template <class T>
void recombine(T* d, int h, const void* t) {
    if constexpr (sizeof(T) == 4) ORV_T(orvs_cRealRecombine_32f)(d, h, 1, t);
    else ORV_T(orvs_cRealRecombine_64f)(d, h, 1, t);
}
template <class T>
void ccs_recombine(const T* s, T* d, int h, const void* t) {
    if constexpr (sizeof(T) == 4) ORV_T(orvs_cCcsRecombine_32f)(s, d, h, -1, t);
    else ORV_T(orvs_cCcsRecombine_64f)(s, d, h, -1, t);
}

// Validates the arguments; the record on success, else null and *sts set.
template <class T, class SpecT>
const OrvFFTSpec* check(const T* pSrc, const T* pDst, const SpecT* pSpec, OrvStatus* sts) {
    if (pSpec == nullptr) return *sts = orvStsNullPtrErr, nullptr;
    const auto* spec = reinterpret_cast<const OrvFFTSpec*>(pSpec);
    if (spec->idCtx != Elem<T>::kId) return *sts = orvStsContextMatchErr, nullptr;
    if (pSrc == nullptr || pDst == nullptr) return *sts = orvStsNullPtrErr, nullptr;
    return spec;
}

// The complex transform of the inner order, by its range. Forward reads src
// (pairs of reals), inverse runs in place on dst (src == dst). Only the large
// transform can fail; it then has written nothing.
template <class T, bool kInv>
OrvStatus complex_transform(const OrvFFTSpec* spec, const T* src, T* dst, Orv8u* work, bool scaled) {
    using C = typename Elem<T>::C;
    using Small = SmallTables<C>;
    constexpr const FftLimits& lim = fft_limits<T>();
    const int inner = spec->order - 1;
    const auto factor = Elem<T>::scale(spec);
    const C* s = reinterpret_cast<const C*>(src);
    C* z = reinterpret_cast<C*>(dst);
    if (inner <= lim.complexSmall) {
        if (scaled) (kInv ? Small::inv_scale : Small::fwd_scale)[inner](s, z, factor);
        else (kInv ? Small::inv : Small::fwd)[inner](s, z);
        return orvStsNoErr;
    }
    // The large transform scales inside its innermost blocks.
    if (inner >= lim.largeFrom) return Cores<C>::template large<kInv>(spec, s, z, inner, work);
    medium<kInv>(lim, spec, inner, s, z, work, scaled, factor);
    return orvStsNoErr;
}

template <class T, Layout kLayout, class SpecT>
OrvStatus forward(const T* pSrc, T* pDst, const SpecT* pSpec, Orv8u* pBuffer) {
    OrvStatus sts = orvStsNoErr;
    const OrvFFTSpec* spec = check(pSrc, pDst, pSpec, &sts);
    if (spec == nullptr) return sts;

    using Small = SmallTables<T>;
    constexpr const FftLimits& lim = fft_limits<T>();
    const int order = spec->order;
    const int n = 1 << order;
    const bool scaled = spec->doFwdScale != 0;
    if (order <= lim.realSmall) {
        if (scaled) Small::fwd_scale[order](pSrc, pDst, Elem<T>::scale(spec));
        else Small::fwd[order](pSrc, pDst);
        if constexpr (kLayout == Layout::Pack) rec::perm_to_pack(pDst, n);
        return orvStsNoErr;
    }
    WorkArea work;
    if (!work.acquire(Elem<T>::work_size(spec), pBuffer)) return orvStsMemAllocErr;
    if (const OrvStatus st = complex_transform<T, false>(spec, pSrc, pDst, work.area, scaled); st != orvStsNoErr)
        return st;

    // Edge pair: Z[0] = (a, b) gives R(0) = a + b and R(N/2) = a - b.
    const T a = pDst[0], b = pDst[1];
    pDst[0] = a + b, pDst[1] = a - b;
    recombine(pDst, n / 2, spec->pRealRec);
    if constexpr (kLayout == Layout::Pack) rec::perm_to_pack(pDst, n);
    return orvStsNoErr;
}

template <class T, Layout kLayout, class SpecT>
OrvStatus inverse(const T* pSrc, T* pDst, const SpecT* pSpec, Orv8u* pBuffer) {
    OrvStatus sts = orvStsNoErr;
    const OrvFFTSpec* spec = check(pSrc, pDst, pSpec, &sts);
    if (spec == nullptr) return sts;

    using Small = SmallTables<T>;
    constexpr const FftLimits& lim = fft_limits<T>();
    const int order = spec->order;
    const int n = 1 << order;
    const bool scaled = spec->doInvScale != 0;
    if (order <= lim.realSmall) {
        if constexpr (kLayout == Layout::Pack) rec::pack_to_perm(pSrc, pDst, n), pSrc = pDst;
        if (scaled) Small::inv_scale[order](pSrc, pDst, Elem<T>::scale(spec));
        else Small::inv[order](pSrc, pDst);
        return orvStsNoErr;
    }
    WorkArea work;
    if (!work.acquire(Elem<T>::work_size(spec), pBuffer)) return orvStsMemAllocErr;
    if constexpr (kLayout == Layout::Pack) rec::pack_to_perm(pSrc, pDst, n), pSrc = pDst;

    // Edge pair without the factor 0.5: the unscaled inverse of length N/2
    // then yields N x, as the complex inverse does.
    const T a = pSrc[0], b = pSrc[1];
    pDst[0] = a + b, pDst[1] = a - b;
    ccs_recombine(pSrc, pDst, n / 2, spec->pCcsRec);
    return complex_transform<T, true>(spec, pDst, pDst, work.area, scaled);
}

}  // namespace real
}  // namespace
}  // namespace orv::ORV_TIER_NS
