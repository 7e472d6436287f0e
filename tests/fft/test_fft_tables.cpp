// The tables of the FFT specifications on every tier: base sine tables and
// the fixed order-10 tables against long double sines, the bit-reversal
// tables against a plain bit reversal, the recombination tables and the
// large transform's per-level tables against long double twiddles in the
// documented layouts. Every table is written into memory of exactly its
// documented size, flush against a guard page.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "../../fft/spec_record.h"
#include "fft/fft_testing.h"
#include "fft/spec_model.h"
#include "orvsfftk.h"

namespace orv::test {
namespace {

using namespace fftspec;

constexpr long double kTwoPi = 6.283185307179586476925286766559005768L;

template <class T>
long double ulp(long double x) {
    const int e = std::ilogb(std::max(std::fabs(x), static_cast<long double>(std::numeric_limits<T>::min())));
    return std::ldexp(1.0L, e - std::numeric_limits<T>::digits + 1);
}
// |got - want| within `units` units in the last place of T at want, or,
// near zero, of T at `scale`.
template <class T>
::testing::AssertionResult near(T got, long double want, long double scale = 0, int units = 1) {
    const long double d = std::fabs(got - want), tol = units * ulp<T>(std::max(std::fabs(want), scale));
    if (d <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << got << " vs " << static_cast<double>(want) << " (off " << d / tol
                                         << " ulp)";
}

Orv8u* align32(const void* p) { return orv::fft::align_up32(static_cast<Orv8u*>(const_cast<void*>(p))); }

// ---- Fixed and base tables --------------------------------------------------
TEST(FftTables, FixedTables) {
    for (int k = 0; k <= 256; ++k) {
        SCOPED_TRACE(k);
        EXPECT_TRUE(near<double>(fft_fix_twiddle_table_64f[k], sinl(kTwoPi * k / 1024), 1.0L / 1024));
        EXPECT_EQ(fft_fix_twiddle_table_32f[k], static_cast<float>(fft_fix_twiddle_table_64f[k]));
    }
    EXPECT_EQ(fft_fix_twiddle_table_64f[0], 0.0);
    EXPECT_EQ(fft_fix_twiddle_table_64f[256], 1.0);
    for (int k = 257; k < 264; ++k) EXPECT_EQ(fft_fix_twiddle_table_32f[k], 0.0f);
    for (int k = 257; k < 260; ++k) EXPECT_EQ(fft_fix_twiddle_table_64f[k], 0.0);
}

template <class T, class Fn>
void check_base(const std::string& tier, Fn* fn, const T* fixed) {
    for (int order = 2; order <= 18; ++order) {
        SCOPED_TRACE(tier + " order " + std::to_string(order));
        const int q = 1 << (order - 2);
        Placed mem((q + 1) * sizeof(T), Flush::End, 0);
        T* t = mem.as<T>();
        EXPECT_EQ(fn(order, t), align32(t + q + 1));
        EXPECT_TRUE(mem.canary_intact());
        EXPECT_EQ(t[0], T(0));
        EXPECT_EQ(t[q], T(1));
        // Each entry is one call of sin or cos at k 2pi/N formed in double:
        // the rounded angle costs up to one more unit in double precision.
        const int units = sizeof(T) == 8 && order > 10 ? 2 : 1;
        for (int k = 0; k <= q; ++k) {
            ASSERT_TRUE(near<T>(t[k], sinl(kTwoPi * k / (4.0L * q)), 1.0L / q, units)) << k;
            ASSERT_TRUE(order > 10 || k == q || t[k] == fixed[k << (10 - order)]) << k;
        }
    }
}
TEST(FftTables, Base) {
    for (auto& v : tiers_of<decltype(orvs_initTabTwdBase_32f)>("orvs_initTabTwdBase_32f"))
        check_base<Orv32f>(v.tier, v.fn, fft_fix_twiddle_table_32f);
    for (auto& v : tiers_of<decltype(orvs_initTabTwdBase_64f)>("orvs_initTabTwdBase_64f"))
        check_base<Orv64f>(v.tier, v.fn, fft_fix_twiddle_table_64f);
}

// ---- Bit reversal -------------------------------------------------------------
// Orders up to 2 write nothing; above, Q + 1 entries flush against a guard
// page, equal to the table written from its definition.
TEST(FftTables, BitRev) {
    using Ref = std::pair<const char*, std::vector<Orv32u> (*)(int)>;
    for (auto [name, want] : {Ref{"orvs_initTabBitRevNorm", norm_table}, Ref{"orvs_initTabBitRev", swap_list}})
        for (auto& v : tiers_of<decltype(orvs_initTabBitRevNorm)>(name))
            for (int order = 0; order <= 18; ++order) {
                SCOPED_TRACE(std::string(name) + " " + v.tier + " order " + std::to_string(order));
                const size_t q = order > 2 ? size_t{1} << (order - 2) : 0;
                Placed mem(std::max<size_t>(4 * q + 4, 16), Flush::End, 0);
                std::memset(mem.bytes(), 7, 16);
                Orv32u* t = mem.as<Orv32u>();
                EXPECT_EQ(v.fn(order, t), q ? align32(t + q + 1) : mem.bytes());
                EXPECT_TRUE(mem.canary_intact());
                EXPECT_EQ(std::vector<Orv32u>(t, t + (q ? q + 1 : 4)), q ? want(order) : std::vector<Orv32u>(4, 0x07070707u));
            }
}

TEST(FftTables, BitRevLarge) {
    for (auto& v : tiers_of<decltype(orvs_initTabBitRevLarge)>("orvs_initTabBitRevLarge"))
        for (int b : {5, 6})
            for (int order = 2 * b; order <= 2 * b + 8; ++order) {
                SCOPED_TRACE(v.tier + " B " + std::to_string(b) + " order " + std::to_string(order));
                const int r = 1 << (order - 2 * b), q = 1 << (2 * b - 2);
                Placed mem((r + q + 1) * 4, Flush::End, 0);
                Orv32u* t = mem.as<Orv32u>();
                EXPECT_EQ(v.fn(order, b, t), align32(t + r + q + 1));
                EXPECT_TRUE(mem.canary_intact());
                for (int k = 0; k < r; ++k) ASSERT_EQ(t[k], rev_bits(k, order - 2 * b) << b) << k;
                EXPECT_EQ(std::vector<Orv32u>(t + r, t + r + q + 1), swap_list(2 * b));
            }
}

// ---- Recombination tables -------------------------------------------------
template <class T>
using RecFn = Orv8u*(int, const T*, int, T*);

// (cos, -sin) of 2 pi k / N, halved and offset for the forward table.
template <class T>
std::pair<long double, long double> rec_value(bool fwd, long double k, long double n) {
    const long double c = cosl(kTwoPi * k / n), s = sinl(kTwoPi * k / n);
    return fwd ? std::pair{0.5L * c, 0.5L - 0.5L * s} : std::pair{c, -s};
}

template <class T, class BaseFn>
void check_rec(const std::string& tier, bool fwd, RecFn<T>* rec, BaseFn* base) {
    const bool dbl = sizeof(T) == 8;
    const int twoLevel = row(dbl, tier).twoLevel;
    for (int order = 2; order <= std::min(twoLevel + 1, 21); ++order) {
        SCOPED_TRACE(tier + (fwd ? " fwd" : " inv") + " order " + std::to_string(order));
        const long long N = 1LL << order, Q = N / 4;
        // The base table the specification would use: the fixed one up to
        // order 10, else one of this order.
        std::vector<T> own(Q + 8);
        const T* baseTab = reinterpret_cast<const T*>(dbl ? static_cast<const void*>(fft_fix_twiddle_table_64f)
                                                          : static_cast<const void*>(fft_fix_twiddle_table_32f));
        const int baseOrder = std::max(order, 10);
        if (order > 10) base(order, own.data()), baseTab = own.data();
        const long long bytes = order < 4 ? 32 : rec_bytes(dbl, tier, order);
        Placed mem(bytes, Flush::End, 0);
        T* t = mem.as<T>();
        ASSERT_EQ(rec(order, baseTab, baseOrder, t), reinterpret_cast<Orv8u*>(t) + bytes);
        EXPECT_TRUE(mem.canary_intact());
        // Entry k of a table of pairs arranged as documented: 32f exchanges
        // the two entries of a pair, 64f stores them planar.
        auto paired = [&](const T* p, long long k) {  // k >= 1
            const long long i = (k - 1) & ~1LL, second = (k - 1) & 1;
            if (dbl) return std::pair<T, T>{p[2 * i + second], p[2 * i + 2 + second]};
            return std::pair<T, T>{p[2 * (i + 1 - second)], p[2 * (i + 1 - second) + 1]};
        };
        auto expect_entry = [&](std::pair<T, T> got, std::pair<long double, long double> want, long long k) {
            ASSERT_TRUE(near<T>(got.first, want.first, 1)) << "k " << k;
            ASSERT_TRUE(near<T>(got.second, want.second, 1)) << "k " << k;
        };
        if (order < 4) {
            for (long long k = 0; k < Q; ++k) expect_entry({t[2 * k], t[2 * k + 1]}, rec_value<T>(fwd, k, N), k);
        } else if (order < twoLevel) {
            for (long long k = 1; k <= Q; ++k) expect_entry(paired(t, k), rec_value<T>(fwd, k, N), k);
        } else {
            const long long fine = dbl ? 512 : 1024;
            for (long long f = 1; f <= fine; ++f) expect_entry(paired(t, f), rec_value<T>(false, f, N), f);
            const T* coarse = t + 2 * fine;
            for (long long j = 0; j < Q / fine; ++j)
                expect_entry({coarse[2 * j], coarse[2 * j + 1]}, rec_value<T>(false, j * fine, N), j);
        }
    }
}

TEST(FftTables, Recombination) {
    for (bool fwd : {true, false}) {
        for (auto& v : tiers_of<RecFn<Orv32f>>(fwd ? "orvs_initTabTwdRealRec_32f" : "orvs_initTabTwdCcsRec_32f"))
            check_rec<Orv32f>(v.tier, fwd, v.fn, ORV_TIER_FN(orvs_initTabTwdBase_32f, v.tier));
        for (auto& v : tiers_of<RecFn<Orv64f>>(fwd ? "orvs_initTabTwdRealRec_64f" : "orvs_initTabTwdCcsRec_64f"))
            check_rec<Orv64f>(v.tier, fwd, v.fn, ORV_TIER_FN(orvs_initTabTwdBase_64f, v.tier));
    }
}

// ---- Large transform tables ---------------------------------------------------
// Checks one level's table at p against the documented layout; returns the
// bytes it spans.
template <class T>
long long check_level(const TierRow& r, int order, const T* p) {
    const int blk = lookup(r.blk, order), sub = order - blk, cols = 1 << (lookup(r.buf, order) - blk);
    const int G = sizeof(T) == 4 ? 4 : 2;
    const T* q = p;
    for (long long c = 0; c < (1LL << sub); c += cols) {
        long long mult = 1;
        for (int bits = sub; bits < order;) {
            const int rem = order - bits, radix = rem == 2 || rem == 4 || rem == 6 ? 4 : 8;
            const long double M = std::ldexp(1.0L, bits) * radix;
            const int ks = radix == 8 ? 7 : rem == 2 ? 2 : 3;
            const long long ncols = rem == 2 ? cols * mult / 2 : cols * mult;
            for (long long u0 = 0; u0 < ncols; u0 += G)
                for (int k = 1; k <= ks; ++k, q += 2 * G)
                    for (int g = 0; g < G; ++g) {
                        const long long u = u0 + g, j = c + u % cols + (u / cols << sub);
                        const long double a = kTwoPi * k * j / M;
                        if (!near<T>(q[g], cosl(a), 1) || !near<T>(q[G + g], -sinl(a), 1)) {
                            ADD_FAILURE() << "order " << order << " column group " << c << " pass bits " << bits
                                          << " column " << u << " k " << k;
                            return -1;
                        }
                    }
            mult *= radix;
            bits += radix == 4 ? 2 : 3;
        }
    }
    return (q - p) * static_cast<long long>(sizeof(T));
}

template <class T, class LargeFn, class SizeFn, class BaseFn>
void check_large(const std::string& tier, LargeFn* large, SizeFn* sizes, BaseFn* base) {
    const bool dbl = sizeof(T) == 8;
    const TierRow& r = row(dbl, tier);
    // 64f n8: order 13 takes the radix-2 block path, 19 has a second level.
    std::vector<int> orders = {r.largeFrom, r.orderBlk, 20};
    if (tier == "n8" && dbl) orders.push_back(19);
    for (int order : orders) {
        SCOPED_TRACE(tier + " order " + std::to_string(order));
        const long long E = 2 * sizeof(T);
        int twd, init, work;
        sizes(order, &twd, &init, &work);
        long long wantTwd, wantWork;
        fftspec::large(r, dbl, tier, order, wantTwd, wantWork);
        EXPECT_EQ(twd, wantTwd);
        EXPECT_EQ(work, wantWork);
        EXPECT_EQ(init, 0);
        std::vector<T> b((1 << (order - 2)) + 8);
        base(order, b.data());
        // A record and the least room a specification block leaves behind it.
        Placed mem(twd + 161, Flush::End, 0);
        auto* spec = reinterpret_cast<OrvFFTSpec*>(mem.bytes());
        std::memset(spec, 0, sizeof(OrvFFTSpec));
        auto* bitRev = reinterpret_cast<Orv32u*>(mem.bytes() + 136);
        Orv8u* end = large(spec, order, b.data(), order, bitRev, nullptr);
        EXPECT_TRUE(mem.canary_intact());
        EXPECT_LE(end, mem.bytes() + twd + 161);
        EXPECT_EQ(dbl ? spec->u.d.workSize : spec->u.f.workSize, work);
        const int blk = lookup(r.blk, order);
        if (blk == 0) {  // radix-2 block path: Q pairs behind the core's table
            const T* p = static_cast<const T*>(spec->pTwdR2Low);
            for (int k = 0; k < (1 << (order - 2)); ++k) {
                ASSERT_TRUE(near<T>(p[2 * k], cosl(kTwoPi * k / std::ldexp(1.0L, order)), 1)) << k;
                ASSERT_TRUE(near<T>(p[2 * k + 1], -sinl(kTwoPi * k / std::ldexp(1.0L, order)), 1)) << k;
            }
            continue;
        }
        // Levels from the outside in, each behind the one below it.
        int o = order, level = 0;
        while (true) {
            ASSERT_LT(level, 3);
            const T* p = static_cast<const T*>(spec->pTwdStep[level]);
            ASSERT_TRUE(p);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 32, 0u);
            const long long bytes = check_level<T>(r, o, p);
            EXPECT_LE(bytes, E << (o - 1));
            EXPECT_TRUE(level > 0 || end == reinterpret_cast<const Orv8u*>(p) + (E << (o - 1)));
            const int sub = o - lookup(r.blk, o);
            if (sub < r.largeFrom) {
                EXPECT_EQ(reinterpret_cast<const Orv8u*>(p), static_cast<Orv8u*>(spec->pTwd) + (E << sub));
                break;
            }
            EXPECT_EQ(reinterpret_cast<const Orv8u*>(spec->pTwdStep[level + 1]) + (E << (sub - 1)),
                      reinterpret_cast<const Orv8u*>(p));
            o = sub, ++level;
        }
    }
}

TEST(FftTables, Large) {
    for (auto& v : tiers_of<decltype(orvs_initTabTwd_Large_32f)>("orvs_initTabTwd_Large_32f"))
        check_large<Orv32f>(v.tier, v.fn, ORV_TIER_FN(orvs_getSizesTwd_Large_32f, v.tier),
                            ORV_TIER_FN(orvs_initTabTwdBase_32f, v.tier));
    for (auto& v : tiers_of<decltype(orvs_initTabTwd_Large_64f)>("orvs_initTabTwd_Large_64f"))
        check_large<Orv64f>(v.tier, v.fn, ORV_TIER_FN(orvs_getSizeTwd_Large_64f, v.tier),
                            ORV_TIER_FN(orvs_initTabTwdBase_64f, v.tier));
}

}  // namespace
}  // namespace orv::test
