// FFT specifications: sizing, building, querying and retiring the three
// kinds (complex 32fc, real 32f, real 64f) with one body and a traits type
// per kind.
//
// Block layout: the 136-byte record at the block's first 32-byte boundary,
// then at once (unaligned) the bit-reversal table of the complex transform
// (for a real kind: of the inner complex transform of order - 1), its
// twiddles (radix core, or the large transform's levels), then for a real
// kind the forward and inverse recombination tables, each on a 32-byte
// boundary. Small orders have no tables. The base sine table lives in the
// init block (orders above 10) or is the library's fixed order-10 table.
#include <math.h>

#include <algorithm>

#include "fft/limits.h"
#include "fft/spec_tables.h"

ORV_TIER_DECLARE(orvsZero_8u)
ORV_TIER_DECLARE(orvsMalloc_8u)
ORV_TIER_DECLARE(orvsFree)
ORV_TIER_DECLARE(orvs_initTabTwdBase_32f)
ORV_TIER_DECLARE(orvs_initTabTwdBase_64f)
ORV_TIER_DECLARE(orvs_initTabBitRevNorm)
ORV_TIER_DECLARE(orvs_initTabBitRev)
ORV_TIER_DECLARE(orvs_initTabTwd_L1_32f)
ORV_TIER_DECLARE(orvs_initTabTwd_L1_64f)
ORV_TIER_DECLARE(orvs_initTabTwd_Large_32f)
ORV_TIER_DECLARE(orvs_initTabTwd_Large_64f)
ORV_TIER_DECLARE(orvs_getSizesTwd_Large_32f)
ORV_TIER_DECLARE(orvs_getSizeTwd_Large_64f)
ORV_TIER_DECLARE(orvs_initTabTwdRealRec_32f)
ORV_TIER_DECLARE(orvs_initTabTwdCcsRec_32f)
ORV_TIER_DECLARE(orvs_initTabTwdRealRec_64f)
ORV_TIER_DECLARE(orvs_initTabTwdCcsRec_64f)

namespace orv::ORV_TIER_NS {
namespace {

using orv::fft::align_up32;
using orv::fft::kRecordBytes;
using orv::fft::round_down32;

// The table builders of one element type.
template <class T>
struct Tables;
template <>
struct Tables<Orv32f> {
    static const Orv32f* fixed() { return fft_fix_twiddle_table_32f; }
    static Orv8u* base(int o, Orv32f* p) { return ORV_T(orvs_initTabTwdBase_32f)(o, p); }
    static Orv8u* l1(int o, const Orv32f* b, int bo, Orv8u* p) { return ORV_T(orvs_initTabTwd_L1_32f)(o, b, bo, p); }
    static Orv8u* large(OrvFFTSpec* s, int o, const Orv32f* b, int bo, Orv32u* br, Orv8u* f) {
        return ORV_T(orvs_initTabTwd_Large_32f)(s, o, b, bo, br, f);
    }
    static void large_sizes(int o, int* t, int* i, int* w) { ORV_T(orvs_getSizesTwd_Large_32f)(o, t, i, w); }
    static Orv8u* real_rec(int o, const Orv32f* b, int bo, Orv32f* p) {
        return ORV_T(orvs_initTabTwdRealRec_32f)(o, b, bo, p);
    }
    static Orv8u* ccs_rec(int o, const Orv32f* b, int bo, Orv32f* p) {
        return ORV_T(orvs_initTabTwdCcsRec_32f)(o, b, bo, p);
    }
};
template <>
struct Tables<Orv64f> {
    static const Orv64f* fixed() { return fft_fix_twiddle_table_64f; }
    static Orv8u* base(int o, Orv64f* p) { return ORV_T(orvs_initTabTwdBase_64f)(o, p); }
    static Orv8u* l1(int o, const Orv64f* b, int bo, Orv8u* p) { return ORV_T(orvs_initTabTwd_L1_64f)(o, b, bo, p); }
    static Orv8u* large(OrvFFTSpec* s, int o, const Orv64f* b, int bo, Orv32u* br, Orv8u* f) {
        return ORV_T(orvs_initTabTwd_Large_64f)(s, o, b, bo, br, f);
    }
    static void large_sizes(int o, int* t, int* i, int* w) { ORV_T(orvs_getSizeTwd_Large_64f)(o, t, i, w); }
    static Orv8u* real_rec(int o, const Orv64f* b, int bo, Orv64f* p) {
        return ORV_T(orvs_initTabTwdRealRec_64f)(o, b, bo, p);
    }
    static Orv8u* ccs_rec(int o, const Orv64f* b, int bo, Orv64f* p) {
        return ORV_T(orvs_initTabTwdCcsRec_64f)(o, b, bo, p);
    }
};

// One kind of specification.
template <class T, bool kReal_, Orv32s kId_>
struct Kind {
    using Elem = T;
    static constexpr bool kReal = kReal_;
    static constexpr Orv32s kId = kId_;
    static constexpr const FftLimits& L = fft_limits<T>();
    static constexpr int kSmall = kReal ? L.realSmall : L.complexSmall;
    static constexpr int kHighest = kReal ? L.highestReal : 28;
    static constexpr long long E = 2 * sizeof(T);  // bytes of one complex value
    // The fields behind scale, which sit 4 bytes further in the double record.
    static auto& fields(OrvFFTSpec* s) {
        if constexpr (sizeof(T) == 8) return s->u.d;
        else return s->u.f;
    }
};
using KindC32 = Kind<Orv32f, false, orv::fft::kIdC32fc>;
using KindR32 = Kind<Orv32f, true, orv::fft::kIdR32f>;
using KindR64 = Kind<Orv64f, true, orv::fft::kIdR64f>;

bool valid_flag(int flag) { return flag == OrvFftDivFwd || flag == OrvFftDivInv || flag == OrvFftDivSqrt || flag == OrvFftNoDiv; }

// Table and work bytes of a complex transform of order m above the small
// limit, bit-reversal table included.
template <class K>
void complex_sizes(int m, long long& twd, long long& work) {
    if (m < K::L.largeFrom) {
        twd = round_down32((K::E << m) + K::E + 31) + round_down32((1LL << m) + 35);
        work = round_down32((K::E << m) + 31);
    } else {
        int t, i, w;
        Tables<typename K::Elem>::large_sizes(m, &t, &i, &w);
        twd = t, work = w;
    }
}

// Bytes of each recombination table of a real kind.
template <class K>
long long rec_bytes(int order) {
    const long long q = 1LL << (order - 2);
    const int twoLevel = K::L.twoLevelRec;
    if (twoLevel == 0 || order < twoLevel) return round_down32(K::E * q + 31);
    const long long fine = sizeof(typename K::Elem) == 4 ? 1024 : 512;
    return round_down32(K::E * (q / fine) + K::E * fine + 31);
}

struct Sizes {
    long long spec, init, work;
};

template <class K>
Sizes sizes(int order) {
    if (order <= K::kSmall) return {kRecordBytes + 32, 0, 0};
    long long twd = 0, work = 0;
    if constexpr (!K::kReal) complex_sizes<K>(order, twd, work);
    else if (order - 1 > K::L.complexSmall) complex_sizes<K>(order - 1, twd, work);
    long long spec = twd + 192;
    if constexpr (K::kReal) spec += 2 * rec_bytes<K>(order);
    // The init block holds the base table of this order: Q + 1 values.
    const long long baseBytes = static_cast<long long>(sizeof(typename K::Elem)) * ((1LL << (order - 2)) + 1);
    const long long init = order >= 11 ? round_down32(baseBytes + 31) + 32 : 0;
    return {spec, init, work > 0 ? work + 32 : 0};
}

template <class K>
OrvStatus get_size(int order, int flag, int* pSpecSize, int* pSpecBufferSize, int* pBufferSize) {
    if (order < 0 || order > orv::fft::kMaxOrder) return orvStsFftOrderErr;
    if (!pSpecSize || !pSpecBufferSize || !pBufferSize) return orvStsNullPtrErr;
    if (!valid_flag(flag)) return orvStsFftFlagErr;
    if (order > K::kHighest) return orvStsFftOrderErr;
    const Sizes z = sizes<K>(order);
    *pSpecSize = static_cast<int>(z.spec);
    *pSpecBufferSize = static_cast<int>(z.init);
    *pBufferSize = static_cast<int>(z.work);
    return orvStsNoErr;
}

// Scale and directions from the flag; false for a flag not in the table.
// 32f: 1/N in float, 1/sqrt(N) in double then rounded; 64f: both in double.
template <class K>
bool set_flag(OrvFFTSpec* s, int flag, int order) {
    using T = typename K::Elem;
    const double n = static_cast<double>(1LL << order);
    T inv;
    if constexpr (sizeof(T) == 4) inv = 1.0f / static_cast<float>(n);
    else inv = 1.0 / n;
    const T invSqrt = static_cast<T>(1.0 / sqrt(n));
    switch (flag) {
        case OrvFftDivFwd: s->doFwdScale = 1, s->doInvScale = 0, K::fields(s).scale = inv; break;
        case OrvFftDivInv: s->doFwdScale = 0, s->doInvScale = 1, K::fields(s).scale = inv; break;
        case OrvFftDivSqrt: s->doFwdScale = 1, s->doInvScale = 1, K::fields(s).scale = invSqrt; break;
        case OrvFftNoDiv: s->doFwdScale = 0, s->doInvScale = 0; break;
        default: return false;
    }
    s->idCtx = K::kId;
    return true;
}

// The complex transform of order m: bit reversal behind the record, then the
// radix core's twiddles or the large transform's tables. A tier whose core
// has no fused bit reversal for this element type permutes in place through
// a swap list instead of the Norm table. Returns the end of the tables.
template <class K>
Orv8u* build_complex(OrvFFTSpec* s, int m, const typename K::Elem* base, int baseOrder, Orv8u* baseEnd) {
    using Tab = Tables<typename K::Elem>;
    auto* bitRev = reinterpret_cast<Orv32u*>(reinterpret_cast<Orv8u*>(s) + kRecordBytes);
    s->pBitRev = bitRev;
    if (m >= K::L.largeFrom) return Tab::large(s, m, base, baseOrder, bitRev, baseEnd);
    const bool fused = K::L.normFrom <= K::L.normTo;
    Orv8u* twd = fused ? ORV_T(orvs_initTabBitRevNorm)(m, bitRev) : ORV_T(orvs_initTabBitRev)(m, bitRev);
    s->pTwd = twd;
    K::fields(s).workSize = round_down32((K::E << m) + 31);
    return Tab::l1(m, base, baseOrder, twd);
}

template <class K>
OrvStatus init(OrvFFTSpec** ppSpec, int order, int flag, int hint, Orv8u* pMemSpec, Orv8u* pMemInit) {
    using T = typename K::Elem;
    using Tab = Tables<T>;
    if (!ppSpec) return orvStsNullPtrErr;
    if (order < 0 || order > orv::fft::kMaxOrder || order > K::kHighest) return orvStsFftOrderErr;
    if (!pMemSpec) return orvStsNullPtrErr;
    Orv8u* rec = align_up32(pMemSpec);
    auto* s = reinterpret_cast<OrvFFTSpec*>(rec);
    ORV_T(orvsZero_8u)(rec, kRecordBytes);
    s->order = order;
    K::fields(s).hint = hint;
    K::fields(s).allocated = 0;
    if (!set_flag<K>(s, flag, order)) return orvStsFftFlagErr;  // idCtx stays 0
    if (order <= K::kSmall) {
        K::fields(s).workSize = 0;
        *ppSpec = s;
        return orvStsNoErr;
    }
    // Base table: the fixed one up to order 10, else built for this order.
    const T* base = Tab::fixed();
    int baseOrder = 10;
    Orv8u* baseEnd = nullptr;
    if (order > 10) {
        if (!pMemInit) {
            s->idCtx = 0;  // no tables: the record must not pass as built
            return orvStsNullPtrErr;
        }
        T* b = reinterpret_cast<T*>(align_up32(pMemInit));
        baseEnd = Tab::base(order, b);
        base = b, baseOrder = order;
    }
    if constexpr (!K::kReal) {
        build_complex<K>(s, order, base, baseOrder, baseEnd);
    } else {
        Orv8u* next;
        if (order - 1 > K::L.complexSmall) {
            next = build_complex<K>(s, order - 1, base, baseOrder, baseEnd);
        } else {
            K::fields(s).workSize = 0;
            next = align_up32(rec + kRecordBytes);
        }
        s->pRealRec = next;
        next = Tab::real_rec(order, base, baseOrder, reinterpret_cast<T*>(next));
        s->pCcsRec = next;
        Tab::ccs_rec(order, base, baseOrder, reinterpret_cast<T*>(next));
    }
    *ppSpec = s;
    return orvStsNoErr;
}

template <class K>
OrvStatus init_alloc(OrvFFTSpec** ppSpec, int order, int flag, int hint) {
    if (!ppSpec) return orvStsNullPtrErr;
    int specSize, initSize, bufSize;
    const OrvStatus st = get_size<K>(order, flag, &specSize, &initSize, &bufSize);
    if (st != orvStsNoErr) return st;
    Orv8u* mem = ORV_T(orvsMalloc_8u)(specSize);
    if (!mem) return orvStsMemAllocErr;
    Orv8u* initMem = nullptr;
    if (initSize > 0 && !(initMem = ORV_T(orvsMalloc_8u)(initSize))) {
        ORV_T(orvsFree)(mem);
        return orvStsMemAllocErr;
    }
    OrvFFTSpec* s = nullptr;
    const OrvStatus bst = init<K>(&s, order, flag, hint, mem, initMem);
    if (initMem) ORV_T(orvsFree)(initMem);
    if (bst != orvStsNoErr) {
        ORV_T(orvsFree)(mem);
        return bst;
    }
    K::fields(s).allocated = 1;
    *ppSpec = s;
    return orvStsNoErr;
}

template <class K>
OrvStatus get_buf_size(const OrvFFTSpec* pSpec, int* pSize) {
    if (!pSpec || !pSize) return orvStsNullPtrErr;
    if (pSpec->idCtx != K::kId) return orvStsContextMatchErr;
    const Orv32s w = K::fields(const_cast<OrvFFTSpec*>(pSpec)).workSize;
    *pSize = w >= 1 ? w + 32 : 0;
    return orvStsNoErr;
}

// Retires the record; one that InitAlloc built starts its own block.
template <class K>
OrvStatus free_spec(OrvFFTSpec* pSpec) {
    if (!pSpec) return orvStsNullPtrErr;
    if (pSpec->idCtx != K::kId) return orvStsContextMatchErr;
    pSpec->idCtx = 0;
    if (K::fields(pSpec).allocated == 1) ORV_T(orvsFree)(pSpec);
    return orvStsNoErr;
}

template <class P>
OrvFFTSpec* rec(P* p) {
    return reinterpret_cast<OrvFFTSpec*>(p);
}
template <class P>
OrvFFTSpec** rec(P** p) {
    return reinterpret_cast<OrvFFTSpec**>(p);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

#define ORV_FFT_SPEC_API(SUFFIX, KIND)                                                                          \
    ORV_TIER_API OrvStatus ORV_T(orvsFFTGetSize_##SUFFIX)(int order, int flag, int /*hint*/, int* pSpecSize,     \
                                                          int* pSpecBufferSize, int* pBufferSize) {             \
        return get_size<KIND>(order, flag, pSpecSize, pSpecBufferSize, pBufferSize);                            \
    }                                                                                                           \
    ORV_TIER_API OrvStatus ORV_T(orvsFFTInit_##SUFFIX)(OrvFFTSpec_##SUFFIX * *ppSpec, int order, int flag,       \
                                                       int hint, Orv8u* pMemSpec, Orv8u* pMemInit) {            \
        return init<KIND>(rec(ppSpec), order, flag, hint, pMemSpec, pMemInit);                                  \
    }                                                                                                           \
    ORV_TIER_API OrvStatus ORV_T(orvsFFTInitAlloc_##SUFFIX)(OrvFFTSpec_##SUFFIX * *ppSpec, int order, int flag,  \
                                                            int hint) {                                         \
        return init_alloc<KIND>(rec(ppSpec), order, flag, hint);                                                \
    }                                                                                                           \
    ORV_TIER_API OrvStatus ORV_T(orvsFFTGetBufSize_##SUFFIX)(const OrvFFTSpec_##SUFFIX* pSpec, int* pSize) {     \
        return get_buf_size<KIND>(reinterpret_cast<const OrvFFTSpec*>(pSpec), pSize);                          \
    }                                                                                                           \
    ORV_TIER_API OrvStatus ORV_T(orvsFFTFree_##SUFFIX)(OrvFFTSpec_##SUFFIX * pSpec) { return free_spec<KIND>(rec(pSpec)); }

ORV_FFT_SPEC_API(C_32fc, KindC32)
ORV_FFT_SPEC_API(R_32f, KindR32)
ORV_FFT_SPEC_API(R_64f, KindR64)
