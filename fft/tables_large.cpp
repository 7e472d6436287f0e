// Tables of the blocked large transform and their sizes.
//
// A large order splits into 2^blk sub-transforms of order sub = order - blk
// (the tier's blk table), themselves large again or run by the radix core
// with its own L1 table. The level then combines them column group by column
// group: cols = 2^(buf - blk) columns of all 2^blk rows are gathered into the
// work buffer and pass through radix-8 and radix-4 steps there (radix 4 when
// 2, 4 or 6 index bits remain, else radix 8).
//
// Level table, in the order the transform reads it: for each column group
// c = 0, cols, 2 cols, ... below 2^sub, for each pass, for each lane group of
// G consecutive buffer columns (G = 4 for 32f, 2 for 64f), for k = 1 .. r-1:
// G values cos(2 pi k j / M), then G values -sin(2 pi k j / M). M is the
// butterfly length after the pass; before the pass the buffer holds
// cols * mult columns, mult the product of the radices so far, and buffer
// column u = q cols + t (t < cols) carries j = c + t + q 2^sub. The last
// radix-4 pass of a level stores only k = 1, 2 and only for the first half
// of its columns: the second half is W1 e^(-i pi/4), W2 (-i), which the
// butterfly forms itself. A level takes at most E 2^(order-1) bytes, E the
// bytes of one complex value.
//
// pTwdStep[level] is the start of a level's table (level 0 outermost);
// pTwd is the innermost radix-core table, directly ahead of the deepest
// level's table.
#include <algorithm>

#include "fft/limits.h"
#include "fft/spec_tables.h"

ORV_TIER_DECLARE(orvs_initTabTwd_L1_32f)
ORV_TIER_DECLARE(orvs_initTabTwd_L1_64f)
ORV_TIER_DECLARE(orvs_initTabBitRevNorm)
ORV_TIER_DECLARE(orvs_initTabBitRevLarge)

namespace orv::ORV_TIER_NS {
namespace {

// Pieces of the radix-2 block path: 2^12 elements through the radix core.
constexpr int kR2PieceOrder = 12;

template <class T>
struct Large {
    static constexpr const FftLimits& L = fft_limits<T>();
    static constexpr long long E = 2 * sizeof(T);   // bytes of one complex value
    static constexpr int G = sizeof(T) == 4 ? 4 : 2;  // lanes of a planar group
    static constexpr bool kDouble = sizeof(T) == 8;

    static int blk(int order) { return order >= 9 && order < 33 ? L.blk[order - 9] : 0; }
    static int buf(int order) { return order >= 9 && order < 33 ? L.buf[order - 9] : 0; }

    static Orv8u* l1(int order, const T* base, int baseOrder, Orv8u* p) {
        if constexpr (kDouble) return ORV_T(orvs_initTabTwd_L1_64f)(order, base, baseOrder, p);
        else return ORV_T(orvs_initTabTwd_L1_32f)(order, base, baseOrder, p);
    }

    // Bit-reversal bytes: the blocked table (offsets and one block's swap
    // list) from the tier's blocked-reordering order, else the Norm table.
    static long long bitrev_bytes(int order) {
        const int b = L.blockOrder;
        if (order < L.orderBlk) return orv::fft::round_down32((4LL << (order - 2)) + 35);
        return (4LL << (order - 2 * b)) + (4LL << (2 * b - 2)) + 32;
    }

    // Twiddle and work bytes of one level and everything below it.
    static void step_sizes(int order, long long& twd, long long& work) {
        const int sub = order - blk(order);
        if (sub < L.largeFrom) {
            twd = orv::fft::round_down32((E << sub) + E + 31);
            work = orv::fft::round_down32((E << sub) + 31);
        } else {
            step_sizes(sub, twd, work);
        }
        twd += E << (order - 1);
        work = std::max(work, E << buf(order));
    }

    static void sizes(int order, int* pTwd, int* pInit, int* pWork) {
        long long twd, work;
        if (blk(order) == 0) {
            twd = orv::fft::round_down32((E << (order - 2)) + 31) + L.r2Work + 32;
            work = L.r2Work;
        } else {
            step_sizes(order, twd, work);
        }
        twd += bitrev_bytes(order);
        if (order >= L.orderBlk) work = std::max<long long>(work, L.reorderWork);
        *pTwd = static_cast<int>(twd);
        *pInit = 0;
        *pWork = static_cast<int>(work);
    }

    // One level's table at out (layout above).
    static void fill_level(const fftab::Base<T>& base, int order, int sub, int cols, T* out) {
        for (std::int64_t c = 0; c < (std::int64_t{1} << sub); c += cols) {
            int mult = 1;
            for (int bits = sub; bits < order;) {
                const int rem = order - bits;
                const int lg = rem == 2 || rem == 4 || rem == 6 ? 2 : 3;
                const int m = bits + lg;
                const bool last = rem == 2;
                const int nk = lg == 3 ? 7 : last ? 2 : 3;
                const int ncol = last ? cols * mult / 2 : cols * mult;
                for (int u0 = 0; u0 < ncol; u0 += G)
                    for (int k = 1; k <= nk; ++k, out += 2 * G)
                        for (int g = 0; g < G; ++g) {
                            const int u = u0 + g;
                            const std::int64_t j = c + u % cols + (static_cast<std::int64_t>(u / cols) << sub);
                            const fftab::Twiddle<T> w = base.at(k * j, m);
                            out[g] = w.re, out[G + g] = w.im;
                        }
                mult <<= lg;
                bits = m;
            }
        }
    }

    static Orv32s& work_size(OrvFFTSpec* s) { return orv::fft::work_size(s, kDouble); }

    static Orv8u* step(OrvFFTSpec* s, int order, const fftab::Base<T>& base, int level, Orv8u* pTab) {
        const int b = blk(order), sub = order - b;
        Orv8u* p;
        if (sub < L.largeFrom) {
            s->pTwd = pTab;
            p = l1(sub, base.t, base.order, pTab);
            work_size(s) = orv::fft::round_down32((E << sub) + 31);
        } else {
            p = step(s, sub, base, level + 1, pTab);
        }
        s->pTwdStep[level] = p;
        fill_level(base, order, sub, 1 << (buf(order) - b), reinterpret_cast<T*>(p));
        work_size(s) = static_cast<Orv32s>(std::max<long long>(work_size(s), E << buf(order)));
        return p + (E << (order - 1));
    }

    static Orv8u* init(OrvFFTSpec* s, int order, const T* pBase, int baseOrder, Orv32u* pBitRev) {
        const fftab::Base<T> base{pBase, baseOrder};
        const bool blocked = order >= L.orderBlk;
        Orv8u* next = blocked ? ORV_T(orvs_initTabBitRevLarge)(order, L.blockOrder, pBitRev)
                              : ORV_T(orvs_initTabBitRevNorm)(order, pBitRev);
        Orv8u* end;
        if (blk(order) != 0) {
            end = step(s, order, base, 0, next);
        } else {
            // Radix-2 block path: the core's table for the pieces, then
            // (cos, -sin) of 2 pi k / N, k < N/4, for the joining passes.
            s->pTwd = next;
            T* out = reinterpret_cast<T*>(l1(kR2PieceOrder, pBase, baseOrder, next));
            s->pTwdR2Low = out;
            for (int k = 0; k < (1 << (order - 2)); ++k) {
                const fftab::Twiddle<T> w = base.at(k, order);
                *out++ = w.re, *out++ = w.im;
            }
            end = fftab::end_aligned(out);
            work_size(s) = L.r2Work;
        }
        if (blocked) work_size(s) = std::max(work_size(s), L.reorderWork);
        return end;
    }
};

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(orvs_getSizesTwd_Large_32f)(int order, int* pTwd, int* pInit, int* pWork) {
    Large<Orv32f>::sizes(order, pTwd, pInit, pWork);
}
ORV_TIER_API void ORV_T(orvs_getSizeTwd_Large_64f)(int order, int* pTwd, int* pInit, int* pWork) {
    Large<Orv64f>::sizes(order, pTwd, pInit, pWork);
}

// pFree (the end of the base table) is not needed: no table is built there.
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwd_Large_32f)(OrvFFTSpec* pSpec, int order, const Orv32f* pBase,
                                                     int baseOrder, Orv32u* pBitRev, Orv8u* /*pFree*/) {
    return Large<Orv32f>::init(pSpec, order, pBase, baseOrder, pBitRev);
}
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwd_Large_64f)(OrvFFTSpec* pSpec, int order, const Orv64f* pBase,
                                                     int baseOrder, Orv32u* pBitRev, Orv8u* /*pFree*/) {
    return Large<Orv64f>::init(pSpec, order, pBase, baseOrder, pBitRev);
}
