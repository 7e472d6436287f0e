// Bit-reversal permutations of power-of-two arrays, for every element size
// the FFT engine moves: 4, 8 and 16 bytes (float, complex float or double,
// complex double).
//
// An element index of an array of N = 2^n elements has the bit form (h, m, l):
// h the top bit, l the lowest, m the n-2 bits between. Its reversal is
// (l, rev(m), h). Both table forms list m by rev(m), so every step of a
// kernel moves the four elements (0,m,0) (0,m,1) (1,m,0) (1,m,1), i.e. the
// adjacent pairs at 2m and N/2 + 2m, and the reversed index turns into a 2x2
// transpose of two such pairs: the pair at 2m receives element 0 of the pairs
// at 2rev(m) and N/2 + 2rev(m), the pair at N/2 + 2m their elements 1.
//
// Norm table (orvs_initTabBitRevNorm): t[m] = 2 rev(m) for m < N/4.
// Swap list (orvs_initTabBitRev): pairs (4m, 4 rev(m)) for m < rev(m) up to a
// zero, the self-reversed 4m (m > 0) from entry N/4 - 1 downwards up to that
// zero; m = 0 is self-reversed and implied. An entry e names element e/2.
//
// In-place kernels load the pairs of one step before storing any. The
// out-of-place kernels read every source element once and write only
// pDst[0, N). Arrays may have any alignment.
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "internal/orv_tier.h"
#include "orvsfftk.h"

namespace orv::ORV_TIER_NS {
namespace {

using Byte = unsigned char;

// A pair of adjacent elements and the two halves of a 2x2 transpose:
// lo(A, B) = (A0, B0), hi(A, B) = (A1, B1). One traits type per element size;
// the 4-byte one comes in a packed form (8-byte moves, for 8-byte aligned
// arrays) and a split one (single values).
struct Pair4Packed {
    static constexpr int kElem = 4;
    using P = std::uint64_t;
    static P load(const Byte* p) {
        P v;
        std::memcpy(&v, p, 8);
        return v;
    }
    static void store(Byte* p, P v) { std::memcpy(p, &v, 8); }
    static P lo(P a, P b) { return (a & 0xffffffffu) | (b << 32); }
    static P hi(P a, P b) { return (a >> 32) | (b & ~std::uint64_t{0xffffffffu}); }
};

struct Pair4Split {
    static constexpr int kElem = 4;
    struct P {
        std::uint32_t e0, e1;
    };
    static P load(const Byte* p) {
        P v;
        std::memcpy(&v.e0, p, 4);
        std::memcpy(&v.e1, p + 4, 4);
        return v;
    }
    static void store(Byte* p, P v) {
        std::memcpy(p, &v.e0, 4);
        std::memcpy(p + 4, &v.e1, 4);
    }
    static P lo(P a, P b) { return {a.e0, b.e0}; }
    static P hi(P a, P b) { return {a.e1, b.e1}; }
};

struct Pair8 {
    static constexpr int kElem = 8;
    using P = __m128d;
    static P load(const Byte* p) { return _mm_loadu_pd(reinterpret_cast<const double*>(p)); }
    static void store(Byte* p, P v) { _mm_storeu_pd(reinterpret_cast<double*>(p), v); }
    static P lo(P a, P b) { return _mm_unpacklo_pd(a, b); }
    static P hi(P a, P b) { return _mm_unpackhi_pd(a, b); }
};

struct Pair16 {
    static constexpr int kElem = 16;
    struct P {
        __m128d e0, e1;
    };
    static P load(const Byte* p) {
        return {_mm_loadu_pd(reinterpret_cast<const double*>(p)),
                _mm_loadu_pd(reinterpret_cast<const double*>(p + 16))};
    }
    static void store(Byte* p, P v) {
        _mm_storeu_pd(reinterpret_cast<double*>(p), v.e0);
        _mm_storeu_pd(reinterpret_cast<double*>(p + 16), v.e1);
    }
    static P lo(P a, P b) { return {a.e0, b.e0}; }
    static P hi(P a, P b) { return {a.e1, b.e1}; }
};

// One step on the elements at pair indices a and b (even): in place, exchange
// the quadruples of m = a/2 and m' = b/2; with a == b, transpose the one
// quadruple.
template <class T>
inline void swap_step(Byte* x, size_t half, size_t a, size_t b) {
    constexpr size_t S = T::kElem;
    Byte* p0 = x + a * S;
    Byte* p1 = x + (half + a) * S;
    if (a == b) {
        const auto u = T::load(p0), v = T::load(p1);
        T::store(p0, T::lo(u, v));
        T::store(p1, T::hi(u, v));
        return;
    }
    Byte* q0 = x + b * S;
    Byte* q1 = x + (half + b) * S;
    const auto u0 = T::load(p0), u1 = T::load(p1), v0 = T::load(q0), v1 = T::load(q1);
    T::store(p0, T::lo(v0, v1));
    T::store(p1, T::hi(v0, v1));
    T::store(q0, T::lo(u0, u1));
    T::store(q1, T::hi(u0, u1));
}

// Out of place: the quadruple of m = a/2 in dst from that of rev(m) = b/2 in src.
template <class T>
inline void copy_step(const Byte* src, Byte* dst, size_t half, size_t a, size_t b) {
    constexpr size_t S = T::kElem;
    const auto v0 = T::load(src + b * S), v1 = T::load(src + (half + b) * S);
    T::store(dst + a * S, T::lo(v0, v1));
    T::store(dst + (half + a) * S, T::hi(v0, v1));
}

template <class T>
void swaplist_inplace(Byte* x, size_t len, const Orv32u* tab) {
    const size_t half = len / 2;
    swap_step<T>(x, half, 0, 0);
    size_t k = 0;
    for (; tab[k] != 0; k += 2) swap_step<T>(x, half, tab[k] / 2, tab[k + 1] / 2);
    for (size_t j = len / 4 - 1; j > k; --j) swap_step<T>(x, half, tab[j] / 2, tab[j] / 2);
}

template <class T>
void swaplist_copy(const Byte* src, Byte* dst, size_t len, const Orv32u* tab) {
    const size_t half = len / 2;
    copy_step<T>(src, dst, half, 0, 0);
    size_t k = 0;
    for (; tab[k] != 0; k += 2) {
        copy_step<T>(src, dst, half, tab[k] / 2, tab[k + 1] / 2);
        copy_step<T>(src, dst, half, tab[k + 1] / 2, tab[k] / 2);
    }
    for (size_t j = len / 4 - 1; j > k; --j) copy_step<T>(src, dst, half, tab[j] / 2, tab[j] / 2);
}

// Norm table: each m with 2m <= t[m] handles its pair of quadruples once.
template <class T>
void norm_inplace(Byte* x, size_t len, const Orv32u* tab) {
    const size_t half = len / 2;
    for (size_t m = len / 4; m-- > 0;)
        if (2 * m <= tab[m]) swap_step<T>(x, half, 2 * m, tab[m]);
}

template <class T>
void norm_copy(const Byte* src, Byte* dst, size_t len, const Orv32u* tab) {
    const size_t half = len / 2;
    for (size_t m = 0; m < len / 4; ++m) copy_step<T>(src, dst, half, 2 * m, tab[m]);
}

enum class Table { SwapList, Norm };

// Entry points for one element size. Below four elements the reversal is the
// identity (and no table exists).
template <int kBytes>
struct PairOf;
template <>
struct PairOf<8> {
    using T = Pair8;
};
template <>
struct PairOf<16> {
    using T = Pair16;
};

template <int kBytes, Table kTable>
void bitrev_inplace(void* data, int len, const Orv32u* tab) {
    if (len < 4) return;
    Byte* x = static_cast<Byte*>(data);
    const auto run = [&]<class T>() {
        if constexpr (kTable == Table::Norm) norm_inplace<T>(x, static_cast<size_t>(len), tab);
        else swaplist_inplace<T>(x, static_cast<size_t>(len), tab);
    };
    if constexpr (kBytes == 4) {
        if (reinterpret_cast<std::uintptr_t>(x) % 8 == 0) run.template operator()<Pair4Packed>();
        else run.template operator()<Pair4Split>();
    } else {
        run.template operator()<typename PairOf<kBytes>::T>();
    }
}

template <int kBytes, Table kTable>
void bitrev_copy(const void* src, void* dst, int len, const Orv32u* tab) {
    const Byte* s = static_cast<const Byte*>(src);
    Byte* d = static_cast<Byte*>(dst);
    if (len < 4) {
        if (len > 0) std::memmove(d, s, static_cast<size_t>(len) * kBytes);
        return;
    }
    const auto run = [&]<class T>() {
        if constexpr (kTable == Table::Norm) norm_copy<T>(s, d, static_cast<size_t>(len), tab);
        else swaplist_copy<T>(s, d, static_cast<size_t>(len), tab);
    };
    if constexpr (kBytes == 4) {
        if ((reinterpret_cast<std::uintptr_t>(s) | reinterpret_cast<std::uintptr_t>(d)) % 8 == 0)
            run.template operator()<Pair4Packed>();
        else
            run.template operator()<Pair4Split>();
    } else {
        run.template operator()<typename PairOf<kBytes>::T>();
    }
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

// Swap-list forms by element size.
ORV_TIER_API void ORV_T(orvs_BitRev1_4)(void* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<4, Table::SwapList>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_4)(const void* pSrc, void* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<4, Table::SwapList>(pSrc, pDst, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev1_8)(void* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<8, Table::SwapList>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_8)(const void* pSrc, void* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<8, Table::SwapList>(pSrc, pDst, len, pTab);
}
// Exported by n8 only (the double-precision path without the fused core);
// elsewhere the version script keeps it local and the linker drops it.
ORV_TIER_API void ORV_T(orvs_BitRev1_16)(void* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<16, Table::SwapList>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_16)(const void* pSrc, void* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<16, Table::SwapList>(pSrc, pDst, len, pTab);
}

// Norm-table forms by element type.
ORV_TIER_API void ORV_T(orvs_BitRev1_S)(Orv32f* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<4, Table::Norm>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_S)(const Orv32f* pSrc, Orv32f* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<4, Table::Norm>(pSrc, pDst, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev1_C)(Orv32fc* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<8, Table::Norm>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_C)(const Orv32fc* pSrc, Orv32fc* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<8, Table::Norm>(pSrc, pDst, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev1_D)(Orv64f* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<8, Table::Norm>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_D)(const Orv64f* pSrc, Orv64f* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<8, Table::Norm>(pSrc, pDst, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev1_Z)(Orv64fc* pData, int len, const Orv32u* pTab) {
    bitrev_inplace<16, Table::Norm>(pData, len, pTab);
}
ORV_TIER_API void ORV_T(orvs_BitRev2_Z)(const Orv64fc* pSrc, Orv64fc* pDst, int len, const Orv32u* pTab) {
    bitrev_copy<16, Table::Norm>(pSrc, pDst, len, pTab);
}

// One block of the large transform's reordering, in place through the swap
// list of its 2^(2B) elements.
ORV_TIER_API void ORV_T(orvs_sBitRev1_Blk)(Orv32f* pBlock, int len, const Orv32u* pSwapList) {
    bitrev_inplace<4, Table::SwapList>(pBlock, len, pSwapList);
}
ORV_TIER_API void ORV_T(orvs_cBitRev1_Blk)(Orv32fc* pBlock, int len, const Orv32u* pSwapList) {
    bitrev_inplace<8, Table::SwapList>(pBlock, len, pSwapList);
}
ORV_TIER_API void ORV_T(orvs_dBitRev1_Blk)(Orv64f* pBlock, int len, const Orv32u* pSwapList) {
    bitrev_inplace<8, Table::SwapList>(pBlock, len, pSwapList);
}
ORV_TIER_API void ORV_T(orvs_zBitRev1_Blk)(Orv64fc* pBlock, int len, const Orv32u* pSwapList) {
    bitrev_inplace<16, Table::SwapList>(pBlock, len, pSwapList);
}
