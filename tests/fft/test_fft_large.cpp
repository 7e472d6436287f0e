// The blocked large transforms of every tier. Single precision runs on
// complex records from each tier's first large order to 20 against the long
// double DFT; double precision runs as the inner complex transform of a real
// record of one order more. Every call goes out of place, in place and into
// an 8-byte aligned destination, which must all give the same bits, with the
// work buffer of exactly the reported size flush against a guard page. Two
// higher orders are checked algebraically (impulse, linearity, time shift),
// and the block kernels without a caller by their relations to those with one.
//
// The sweep of every order up to 28 is disabled in CI; run it with
//   test_fft --gtest_filter='*LargeSweep*' --gtest_also_run_disabled_tests
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "fft/fft_ref.h"
#include "orvsfft.h"
#include "orvsfftk.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using orv::test::cld;
using orv::test::Flush;
using orv::test::Guarded;
using orv::test::GuardedBytes;

constexpr long double kTwoPi = 6.283185307179586476925286766559L;

using orv::test::tier_fn;
#define ORV_FN(name, tier) tier_fn<decltype(name)>(#name, tier)

// Per element type: the entries, and the record whose inner complex
// transform has the order under test (C_32fc of it, R_64f of one more).
template <class C>
struct Kind {
    static constexpr bool kDbl = sizeof(C) == 16;
    using T = decltype(C::re);
    using Large = OrvStatus(const OrvFFTSpec*, const C*, C*, int, Orv8u*);
    using Spec = std::conditional_t<kDbl, OrvFFTSpec_R_64f, OrvFFTSpec_C_32fc>;
    static constexpr double kEps = kDbl ? DBL_EPSILON : FLT_EPSILON;
    static constexpr int kExtra = kDbl;
    static constexpr const char* kFwd = kDbl ? "orvs_cFftFwd_Large_64fc" : "orvs_cFftFwd_Large_32fc";
    static constexpr const char* kInv = kDbl ? "orvs_cFftInv_Large_64fc" : "orvs_cFftInv_Large_32fc";
    static constexpr const char* kRec = kDbl ? "R_64f" : "C_32fc";
    static inline const std::map<std::string, int> kFirst =
        kDbl ? std::map<std::string, int>{{"m7", 15}, {"u8", 17}, {"n8", 13}, {"y8", 17}, {"e9", 18}}
             : std::map<std::string, int>{{"m7", 17}, {"n8", 16}, {"y8", 18}, {"e9", 19}};
    static auto init(const std::string& t) {
        return tier_fn<OrvStatus(Spec**, int, int, int)>(std::string("orvsFFTInitAlloc_") + kRec, t);
    }
    static auto buf(const std::string& t) {
        return tier_fn<OrvStatus(const Spec*, int*)>(std::string("orvsFFTGetBufSize_") + kRec, t);
    }
    static auto release(const std::string& t) {
        return tier_fn<OrvStatus(Spec*)>(std::string("orvsFFTFree_") + kRec, t);
    }
};

// One tier's large transforms of one order and flag.
template <class C>
struct Runner {
    using K = Kind<C>;
    std::string tier;
    int order;
    typename K::Large* fwd = tier_fn<typename K::Large>(K::kFwd, tier);
    typename K::Large* inv = tier_fn<typename K::Large>(K::kInv, tier);
    typename K::Spec* spec = nullptr;
    int bufSize = 0;
    Runner(const std::string& t, int o, int flag) : tier(t), order(o) {
        EXPECT_EQ(orvStsNoErr, K::init(t)(&spec, o + K::kExtra, flag, 0));
        EXPECT_EQ(orvStsNoErr, K::buf(t)(spec, &bufSize));
    }
    ~Runner() { K::release(tier)(spec); }
    // The record's scale counts its own length.
    long double factor() const { return 1.0L / static_cast<long double>(1LL << (order + K::kExtra)); }
    size_t n() const { return size_t{1} << order; }
    // One call with a work buffer of exactly the reported size.
    void run(bool forward, const C* src, C* dst) const {
        GuardedBytes work(static_cast<size_t>(bufSize), Flush::End);
        Orv8u* w = reinterpret_cast<Orv8u*>((reinterpret_cast<std::uintptr_t>(work.data()) + 31) & ~std::uintptr_t{31});
        ASSERT_EQ(orvStsNoErr, (forward ? fwd : inv)(reinterpret_cast<const OrvFFTSpec*>(spec), src, dst, order, w));
    }
    // Out of place into a guarded array; in place and into an 8-byte
    // aligned array must give the same bits, and the source stays as it was.
    std::vector<C> checked_run(bool forward, const std::vector<C>& x) const {
        Guarded<C> src(n(), Flush::Start), dst(n(), Flush::End), same(n(), Flush::End), odd(n(), Flush::End, 8);
        std::memcpy(src.data(), x.data(), n() * sizeof(C));
        std::memcpy(same.data(), x.data(), n() * sizeof(C));
        run(forward, src.data(), dst.data());
        run(forward, same.data(), same.data());
        run(forward, src.data(), odd.data());
        EXPECT_EQ(0, std::memcmp(src.data(), x.data(), n() * sizeof(C))) << tier << " " << order << ": source written";
        EXPECT_EQ(0, std::memcmp(dst.data(), same.data(), n() * sizeof(C))) << tier << " " << order << ": in place";
        EXPECT_EQ(0, std::memcmp(dst.data(), odd.data(), n() * sizeof(C))) << tier << " " << order << ": unaligned";
        return std::vector<C>(dst.data(), dst.data() + n());
    }
};

// Error of y against ref(i) scaled by `factor`, streamed (no copy of the
// reference), checked against the stated bounds.
template <class C, class Ref>
void expect_close(const C* y, size_t n, Ref ref, int order, const std::string& what) {
    long double e2 = 0, r2 = 0, emax = 0;
    for (size_t i = 0; i < n; ++i) {
        const cld r = ref(i);
        const long double d2 = std::norm(cld(y[i].re, y[i].im) - r);
        e2 += d2, r2 += std::norm(r), emax = std::max(emax, d2);
    }
    const double rms = static_cast<double>(sqrtl(e2 / r2)), mx = static_cast<double>(sqrtl(emax / (r2 / n)));
    EXPECT_LE(rms, orv::test::rms_bound(Kind<C>::kEps, order)) << what;
    EXPECT_LE(mx, orv::test::max_bound(Kind<C>::kEps, order)) << what;
}

template <class C>
std::vector<C> input(int order) {
    return orv::test::random_complex<C>(size_t{1} << order, 500u + unsigned(order) + 50u * sizeof(C));
}

// DFT of the seeded input of an order, per sign, computed once for all tiers.
template <class C>
const std::vector<cld>& reference(int order, int sign) {
    static std::map<std::pair<int, int>, std::vector<cld>> cache;
    auto& r = cache[{order, sign}];
    if (r.empty()) {
        const auto x = input<C>(order);
        r = orv::test::dft_ref(orv::test::to_cld(x.data(), x.size()), sign);
    }
    return r;
}

// Both directions against the reference, once without a scale and once
// with the inverse scaled: the forward must keep its bits and the inverse
// carry the factor exactly once.
template <class C>
void check_order(const std::string& tier, int order, bool scaled) {
    const auto x = input<C>(order);
    const std::string at = tier + " order " + std::to_string(order);
    Runner<C> r(tier, order, OrvFftNoDiv);
    const auto f = r.checked_run(true, x);
    expect_close(f.data(), f.size(), [&](size_t i) { return reference<C>(order, -1)[i]; }, order, at + " fwd");
    const auto b = r.checked_run(false, x);
    expect_close(b.data(), b.size(), [&](size_t i) { return reference<C>(order, 1)[i]; }, order, at + " inv");
    if (!scaled) return;
    Runner<C> s(tier, order, OrvFftDivInv);
    EXPECT_EQ(0, std::memcmp(s.checked_run(true, x).data(), f.data(), f.size() * sizeof(C))) << at << " fwd scaled";
    const auto bs = s.checked_run(false, x);
    const long double k = s.factor();
    expect_close(bs.data(), bs.size(), [&](size_t i) { return reference<C>(order, 1)[i] * k; }, order, at + " inv /N");
}

template <class C>
std::vector<std::string> tiers() {
    std::vector<std::string> v;
    for (const auto& t : orv::test::tiers_of<typename Kind<C>::Large>(Kind<C>::kFwd)) v.push_back(t.tier);
    return v;
}

TEST(Large32, MatchesReferenceFromFirstLargeOrderTo20) {
    for (const auto& t : tiers<Orv32fc>())
        for (int o = Kind<Orv32fc>::kFirst.at(t); o <= 20; ++o)
            check_order<Orv32fc>(t, o, o == 20 || o == Kind<Orv32fc>::kFirst.at(t));
}

// The public transforms take the large path from the first large order,
// with the caller's buffer at any alignment or one of their own.
TEST(Large32, PublicTransformTakesTheLargePath) {
    for (const auto& t : tiers<Orv32fc>()) {
        const int o = Kind<Orv32fc>::kFirst.at(t);
        const Runner<Orv32fc> r(t, o, OrvFftDivFwd);
        const auto x = input<Orv32fc>(o);
        std::vector<Orv32fc> want(r.n()), got(r.n());
        std::vector<Orv8u> buf(static_cast<size_t>(r.bufSize) + 1);
        for (bool fwd : {true, false}) {
            r.run(fwd, x.data(), want.data());
            for (Orv8u* b : {buf.data() + 1, static_cast<Orv8u*>(nullptr)}) {
                auto* f = fwd ? ORV_FN(orvsFFTFwd_CToC_32fc, t) : ORV_FN(orvsFFTInv_CToC_32fc, t);
                EXPECT_EQ(orvStsNoErr, f(x.data(), got.data(), r.spec, b)) << t;
                EXPECT_EQ(0, std::memcmp(want.data(), got.data(), r.n() * sizeof(Orv32fc))) << t << " " << fwd;
            }
        }
    }
}

// The double-precision kernels at the first large orders of each tier, and
// on n8 at orders whose sub-arrays recurse a level deeper (19, 20) or take
// the radix-2 block path (13).
TEST(Large64, InnerTransformOfRealRecordMatchesReference) {
    for (const auto& t : tiers<Orv64fc>()) {
        const int f = Kind<Orv64fc>::kFirst.at(t);
        for (int o = f; o <= f + 2; ++o) check_order<Orv64fc>(t, o, o == f + 1);
        if (t == "n8") check_order<Orv64fc>(t, 19, true), check_order<Orv64fc>(t, 20, false);
    }
}

// Orders too long for a reference DFT: the transform of an impulse is a
// known phase ramp, the transform is linear, and a circular shift of the
// input multiplies the spectrum by a phase ramp.
template <class C>
void check_algebra(const std::string& tier, int order, unsigned seed) {
    using T = typename Kind<C>::T;
    const std::string at = tier + " order " + std::to_string(order);
    Runner<C> r(tier, order, OrvFftNoDiv);
    const size_t n = r.n();
    std::mt19937 rng(seed);
    const size_t p = rng() % n, shift = rng() % n;
    // exp(sign 2 pi i m / n) as the product of a coarse and a fine root.
    constexpr int kFine = 12;
    std::vector<cld> fine(size_t{1} << kFine), coarse(n >> kFine);
    for (size_t m = 0; m < fine.size(); ++m) fine[m] = std::polar(1.0L, kTwoPi * m / n);
    for (size_t m = 0; m < coarse.size(); ++m) coarse[m] = std::polar(1.0L, kTwoPi * (m << kFine) / n);
    const auto phase = [&](size_t m, long double sign) {
        const cld w = coarse[m >> kFine] * fine[m & ((size_t{1} << kFine) - 1)];
        return sign < 0 ? std::conj(w) : w;
    };
    Guarded<C> a(n, Flush::End), b(n, Flush::End), ab(n, Flush::End);
    // Impulse, in place.
    std::memset(a.data(), 0, n * sizeof(C));
    a[p] = C{T(1), T(0)};
    r.run(true, a.data(), a.data());
    expect_close(a.data(), n, [&](size_t k) { return phase((p * k) % n, -1); }, order, at + " impulse");
    // Linearity with random complex coefficients, out of place.
    const auto x = input<C>(order), y = orv::test::random_complex<C>(n, seed + 1);
    const cld ca(0.75L, -0.5L), cb(-0.25L, 1.0L);
    for (size_t i = 0; i < n; ++i) {
        const cld v = ca * cld(x[i].re, x[i].im) + cb * cld(y[i].re, y[i].im);
        ab[i] = C{T(v.real()), T(v.imag())};
    }
    r.run(true, x.data(), a.data());
    r.run(true, y.data(), b.data());
    r.run(true, ab.data(), ab.data());
    expect_close(ab.data(), n,
                 [&](size_t k) { return ca * cld(a[k].re, a[k].im) + cb * cld(b[k].re, b[k].im); }, order,
                 at + " linearity");
    // Circular shift by `shift` <-> phase ramp, inverse direction.
    for (size_t i = 0; i < n; ++i) b[(i + shift) % n] = x[i];
    r.run(false, x.data(), a.data());
    r.run(false, b.data(), b.data());
    expect_close(b.data(), n, [&](size_t k) { return cld(a[k].re, a[k].im) * phase((shift * k) % n, 1); }, order,
                 at + " shift");
}

TEST(Large32, AlgebraAtOrders23And24) {
    for (const auto& t : tiers<Orv32fc>()) {
        if (t == "y8") check_algebra<Orv32fc>(t, 23, 7);  // copy, then blocked reordering in place
        if (t == "n8") check_algebra<Orv32fc>(t, 24, 8);  // sub-arrays of order 16 recurse
    }
}

TEST(DISABLED_LargeSweep, EveryOrderTo28) {
    for (const auto& t : tiers<Orv32fc>())
        for (int o = Kind<Orv32fc>::kFirst.at(t); o <= 28; ++o)
            if (o <= 20) check_order<Orv32fc>(t, o, true);
            else check_algebra<Orv32fc>(t, o, unsigned(o));
    for (const auto& t : tiers<Orv64fc>())
        for (int o = Kind<Orv64fc>::kFirst.at(t); o <= 26; ++o)
            if (o <= 20) check_order<Orv64fc>(t, o, true);
            else check_algebra<Orv64fc>(t, o, unsigned(o));
}

// ---- Block kernels -------------------------------------------------------------

// Split arrays gathered into the working format come back interleaved from
// the complex scatter and unchanged from the split scatter; the complex
// gather and plain scatter move rows unchanged; Fact8_Last is Fact8 with its
// result interleaved.
template <class C>
void check_kernels(const std::string& t, const std::string& sfx) {
    using T = typename Kind<C>::T;
    using Merge = void(const C*, C*, int, int, int);
    using Split = void(C*, const C*, int, int, int, int);
    using CrMerge = void(const T*, const T*, Orv8u*, int, int, int);
    using CrSplit = void(T*, T*, const Orv8u*, int, int, int);
    using Fact = decltype(orvs_cFftFwd_Fact8_32fc);
    const std::string cr = sfx.substr(0, 3);
    auto* merge = tier_fn<Merge>(("orvs_cFft_BlkMerge_" + sfx).c_str(), t);
    auto* split = tier_fn<Split>(("orvs_cFft_BlkSplit_" + sfx).c_str(), t);
    auto* crMerge = tier_fn<CrMerge>(("orvs_crFft_BlkMerge_" + cr).c_str(), t);
    auto* crSplit = tier_fn<CrSplit>(("orvs_crFft_BlkSplit_" + cr).c_str(), t);
    ASSERT_TRUE(merge && split) << t;
    constexpr int kRows = 8, kCols = 32, kStride = 40, kN = kRows * kStride;
    const auto x = orv::test::random_complex<C>(kN, 3);
    std::vector<T> re(kN), im(kN);
    for (int i = 0; i < kN; ++i) re[i] = x[i].re, im[i] = x[i].im;
    std::vector<C> buf(kRows * kCols), back(x), ilv(x);
    merge(x.data(), buf.data(), kStride, kRows, kCols);
    split(back.data(), buf.data(), kStride, kRows, kCols, 0);
    EXPECT_EQ(0, std::memcmp(back.data(), x.data(), kN * sizeof(C))) << t;
    if (crMerge && crSplit) {
        std::vector<T> re2(re), im2(im);
        std::fill(re.begin(), re.end(), T(0)), std::fill(ilv.begin(), ilv.end(), C{});
        crMerge(re2.data(), im2.data(), reinterpret_cast<Orv8u*>(buf.data()), kStride, kRows, kCols);
        split(ilv.data(), buf.data(), kStride, kRows, kCols, 1);
        crSplit(re.data(), im2.data(), reinterpret_cast<const Orv8u*>(buf.data()), kStride, kRows, kCols);
        for (int i = 0; i < kN; ++i) {
            if (i % kStride >= kCols) continue;
            EXPECT_TRUE(ilv[i].re == x[i].re && ilv[i].im == x[i].im && re[i] == x[i].re) << t << " " << i;
        }
    }
    auto* fact8 = tier_fn<Fact>(("orvs_cFftFwd_Fact8_" + sfx).c_str(), t);
    auto* last = tier_fn<Fact>(("orvs_cFftFwd_Fact8_Last_" + sfx).c_str(), t);
    if (!fact8 || !last) return;
    // Two groups of eight blocks of 16 columns, any table.
    constexpr int kC = 16, kLen = 8 * kC * 2;
    const auto in = orv::test::random_complex<C>(kLen, 4), tw = orv::test::random_complex<C>(7 * kC, 5);
    std::vector<C> w(kLen), l(kLen), il(kLen);
    fact8(in.data(), w.data(), kC, 2, tw.data());
    last(in.data(), l.data(), kC, 2, tw.data());
    split(il.data(), w.data(), kLen, 1, kLen, 1);
    EXPECT_EQ(0, std::memcmp(il.data(), l.data(), kLen * sizeof(C))) << t << " Fact8_Last";
}

TEST(LargeKernels, GatherScatterAndLastLevel) {
    for (const auto& t : tiers<Orv32fc>()) check_kernels<Orv32fc>(t, "32fc");
    for (const auto& t : tiers<Orv64fc>()) check_kernels<Orv64fc>(t, "64fc");
}

}  // namespace
