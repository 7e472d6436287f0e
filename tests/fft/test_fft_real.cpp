// The real transforms of every tier in both precisions and both packed
// layouts: accuracy of forward and inverse against the long double DFT for
// every order up to 17 (and at each tier's two-level recombination order),
// the scale flags, identical bits in place, without a buffer and between Perm
// and Pack, the recombination kernels on both sides of the two-level order,
// the spectrum product against the product of full spectra, the statuses
// with nothing written, and the short lengths written out.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "../../fft/spec_record.h"
#include "fft/fft_ref.h"
#include "fft/fft_testing.h"
#include "orvsfftk.h"
#include "support/guarded.h"

namespace {

using orv::test::cld;
using orv::test::expect_close_real;
using orv::test::Flush;
using orv::test::same_bits;
using orv::test::tier_fn;
using LD = long double;

// Per tier and element type: highest real-small order, inner order of the
// large transform, real order of two-level recombination (0: none).
struct Lim {
    int realSmall, largeFrom, twoLevel;
};
const std::map<std::string, Lim> kLim32 = {
    {"e9", {4, 19, 19}}, {"y8", {4, 18, 21}}, {"n8", {4, 16, 18}}, {"m7", {4, 17, 19}}};
const std::map<std::string, Lim> kLim64 = {
    {"e9", {4, 18, 17}}, {"y8", {5, 17, 19}}, {"n8", {5, 13, 18}}, {"u8", {5, 17, 17}}, {"m7", {5, 15, 18}}};

template <class T>
struct Api {
    using Elem = T;
    static constexpr bool kDbl = sizeof(T) == 8;
    using Spec = std::conditional_t<kDbl, OrvFFTSpec_R_64f, OrvFFTSpec_R_32f>;
    using Fn = OrvStatus(const T*, T*, const Spec*, Orv8u*);
    std::string tier;
    Lim lim;
    Fn *fwd[2], *inv[2];  // Perm, Pack (null for 64f)
    OrvStatus (*alloc)(Spec**, int, int, int);
    OrvStatus (*bufSize)(const Spec*, int*);
    OrvStatus (*free)(Spec*);
    OrvStatus (*mulPerm)(const T*, T*, int);
    void (*mpy2)(const T*, T*, int);
    void (*mpy3)(const T*, const T*, T*, int);
    void (*recF)(T*, int, int, const void*);
    void (*recI)(const T*, T*, int, int, const void*);
    const char* sfx() const { return kDbl ? "64f" : "32f"; }

    explicit Api(const std::string& t) : tier(t), lim((kDbl ? kLim64 : kLim32).at(t)) {
        const std::string s = sfx(), c = s + "c";
        fwd[0] = tier_fn<Fn>("orvsFFTFwd_RToPerm_" + s, t), inv[0] = tier_fn<Fn>("orvsFFTInv_PermToR_" + s, t);
        fwd[1] = tier_fn<Fn>("orvsFFTFwd_RToPack_" + s, t), inv[1] = tier_fn<Fn>("orvsFFTInv_PackToR_" + s, t);
        alloc = tier_fn<OrvStatus(Spec**, int, int, int)>("orvsFFTInitAlloc_R_" + s, t);
        bufSize = tier_fn<OrvStatus(const Spec*, int*)>("orvsFFTGetBufSize_R_" + s, t);
        free = tier_fn<OrvStatus(Spec*)>("orvsFFTFree_R_" + s, t);
        mulPerm = tier_fn<OrvStatus(const T*, T*, int)>("orvsMulPerm_" + s + "_I", t);
        mpy2 = tier_fn<void(const T*, T*, int)>("ownps_Mpy2_" + c, t);
        mpy3 = tier_fn<void(const T*, const T*, T*, int)>("ownps_Mpy3_" + c, t);
        recF = tier_fn<void(T*, int, int, const void*)>("orvs_cRealRecombine_" + s, t);
        recI = tier_fn<void(const T*, T*, int, int, const void*)>("orvs_cCcsRecombine_" + s, t);
    }
    // A specification, freed with the scope.
    struct Built {
        const Api& a;
        Spec* p = nullptr;
        Built(const Api& api, int order, int flag) : a(api) { EXPECT_EQ(orvStsNoErr, a.alloc(&p, order, flag, 0)); }
        ~Built() { a.free(p); }
        size_t buf() const {
            int n = -1;
            a.bufSize(p, &n);
            return size_t(n);
        }
        const OrvFFTSpec* rec() const { return reinterpret_cast<const OrvFFTSpec*>(p); }
    };
};

// Reference of one order: x, its spectrum in Perm layout and the transform
// of its pairs (H complex values), all in long double.
struct Ref {
    std::vector<LD> x, perm;
    std::vector<cld> pairs;
};
std::vector<LD> to_perm(const std::vector<cld>& X) {
    const size_t n = X.size();
    std::vector<LD> p(n);
    p[0] = X[0].real();
    if (n == 1) return p;
    p[1] = X[n / 2].real();
    for (size_t k = 1; k < n / 2; ++k) p[2 * k] = X[k].real(), p[2 * k + 1] = X[k].imag();
    return p;
}
// The full spectrum of a Perm array.
std::vector<cld> from_perm(const std::vector<LD>& p) {
    const size_t n = p.size();
    std::vector<cld> X(n);
    X[0] = p[0];
    if (n == 1) return X;
    X[n / 2] = p[1];
    for (size_t k = 1; k < n / 2; ++k) X[k] = cld(p[2 * k], p[2 * k + 1]), X[n - k] = std::conj(X[k]);
    return X;
}
const Ref& reference(int order) {
    static std::map<int, Ref> cache;
    if (auto it = cache.find(order); it != cache.end()) return it->second;
    const size_t n = size_t{1} << order;
    Ref r;
    // Values of float precision, so that both element types see the same x.
    for (const auto& c : orv::test::random_complex<Orv32fc>(n, 77u + unsigned(order))) r.x.push_back(c.re);
    std::vector<cld> xc(r.x.begin(), r.x.end());
    r.perm = to_perm(orv::test::dft_ref(xc, -1));
    if (n >= 2) {
        std::vector<cld> z(n / 2);
        for (size_t i = 0; i < n / 2; ++i) z[i] = cld(r.x[2 * i], r.x[2 * i + 1]);
        r.pairs = orv::test::dft_ref(z, -1);
    }
    return cache.emplace(order, std::move(r)).first->second;
}

template <class T>
std::vector<T> rounded(const std::vector<LD>& v, LD f = 1) {
    std::vector<T> o;
    for (LD e : v) o.push_back(static_cast<T>(e * f));
    return o;
}
template <class T>
std::vector<LD> widened(const T* p, size_t n) {
    return std::vector<LD>(p, p + n);
}

template <class T>
std::vector<T> perm_to_pack(std::vector<T> p) {
    if (p.size() > 2) p.push_back(p[1]), p.erase(p.begin() + 1);
    return p;
}

// Everything about one order: accuracy of both directions and the scaled
// forms, round trip, and identical bits in place, without buffer, by layout.
template <class T>
void check_order(const Api<T>& a, int order) {
    const Ref& r = reference(order);
    const size_t n = r.x.size();
    const std::string at = a.tier + " " + a.sfx();
    typename Api<T>::Built spec(a, order, OrvFftNoDiv), fwdDiv(a, order, OrvFftDivFwd),
        invDiv(a, order, OrvFftDivInv);
    ASSERT_TRUE(spec.p && fwdDiv.p && invDiv.p) << at << " order " << order;
    std::vector<Orv8u> buf(spec.buf() + 1);
    Orv8u* b = buf.data() + 1;  // misaligned on purpose

    // Out of place from and into guarded arrays against the reference, then
    // in place without a buffer to the same bits.
    orv::test::Guarded<T> src(n, Flush::Start), dst(n, Flush::End);
    const auto checked = [&](typename Api<T>::Fn* f, const std::vector<T>& in, const std::vector<LD>& ref,
                             const std::string& what) {
        std::copy(in.begin(), in.end(), src.data());
        EXPECT_EQ(orvStsNoErr, f(src.data(), dst.data(), spec.p, b));
        expect_close_real(dst.data(), ref, order, at + " " + what);
        std::vector<T> y = in;
        EXPECT_EQ(orvStsNoErr, f(y.data(), y.data(), spec.p, nullptr));
        EXPECT_TRUE(same_bits(y.data(), dst.data(), n)) << at << " " << what << " in place, order " << order;
        return std::vector<T>(dst.data(), dst.data() + n);
    };
    const std::vector<T> x = rounded<T>(r.x), perm = checked(a.fwd[0], x, r.perm, "forward");
    std::vector<T> y(n);
    ASSERT_EQ(orvStsNoErr, a.fwd[0](x.data(), y.data(), fwdDiv.p, b));
    expect_close_real(y.data(), r.perm, order, at + " forward scaled", 1, 1 / LD(n));
    // Inverse of a rounded spectrum against the long double inverse of it.
    const std::vector<T> spec_in = rounded<T>(r.perm);
    std::vector<LD> xinv;
    for (const cld& c : orv::test::dft_ref(from_perm(widened(spec_in.data(), n)), +1)) xinv.push_back(c.real());
    const std::vector<T> back = checked(a.inv[0], spec_in, xinv, "inverse");

    // Round trip with the inverse scaled.
    std::vector<T> s(n), t(n);
    ASSERT_EQ(orvStsNoErr, a.fwd[0](x.data(), s.data(), invDiv.p, b));
    ASSERT_EQ(orvStsNoErr, a.inv[0](s.data(), t.data(), invDiv.p, b));
    expect_close_real(t.data(), r.x, order, at + " round trip", 2);

    // Pack: the same numbers as Perm, out of place and in place both ways.
    if (!a.fwd[1]) return;
    const std::vector<T> pack = perm_to_pack(perm), packIn = perm_to_pack(spec_in);
    for (int inv = 0; inv < 2; ++inv) {
        const std::vector<T>&in = inv ? packIn : x, &want = inv ? back : pack;
        auto* f = inv ? a.inv[1] : a.fwd[1];
        t = in;
        ASSERT_EQ(orvStsNoErr, f(in.data(), s.data(), spec.p, b));
        ASSERT_EQ(orvStsNoErr, f(t.data(), t.data(), spec.p, nullptr));
        EXPECT_TRUE(same_bits(s.data(), want.data(), n) && same_bits(t.data(), want.data(), n))
            << at << (inv ? " PackToR vs PermToR" : " Pack vs Perm") << ", order " << order;
    }
}

class Real : public ::testing::TestWithParam<orv::test::TierPrec> {
protected:
    template <class F>
    void run(F f) {
        if (GetParam().dbl) f(Api<double>(GetParam().tier));
        else f(Api<float>(GetParam().tier));
    }
};

// Up to 17, so that the top medium order of m7 (bit reversal and the plain
// core) is reached, and where it is below 17 up to the first large order.
TEST_P(Real, EveryOrderUpTo17) {
    run([](const auto& a) {
        for (int order = 0; order <= std::min(17, a.lim.largeFrom + 1); ++order) check_order(a, order);
    });
}

// Both sides of the two-level order: the recombination kernels on the
// transform of the pairs, and the whole transform.
TEST_P(Real, TwoLevelRecombination) {
    run([](const auto& a) {
        using T = typename std::decay_t<decltype(a)>::Elem;
        if (a.lim.twoLevel == 0) return;
        for (int order : {a.lim.twoLevel - 1, a.lim.twoLevel}) {
            const Ref& r = reference(order);
            const size_t h = r.x.size() / 2;
            const std::string at = a.tier + " " + a.sfx() + " recombination";
            typename std::decay_t<decltype(a)>::Built spec(a, order, OrvFftNoDiv);
            ASSERT_TRUE(spec.p) << at << " order " << order;
            std::vector<LD> z(2 * h);
            for (size_t i = 0; i < h; ++i) z[2 * i] = r.pairs[i].real(), z[2 * i + 1] = r.pairs[i].imag();
            // The edge pair is the caller's; it is set to the reference here.
            std::vector<T> d = rounded<T>(z);
            a.recF(d.data(), int(h), 1, spec.rec()->pRealRec);
            d[0] = T(r.perm[0]), d[1] = T(r.perm[1]);
            expect_close_real(d.data(), r.perm, order, at + " forward");
            const std::vector<T> in = rounded<T>(r.perm);
            std::vector<T> out(2 * h);
            a.recI(in.data(), out.data(), int(h), -1, spec.rec()->pCcsRec);
            out[0] = T(2 * z[0]), out[1] = T(2 * z[1]);
            expect_close_real(out.data(), z, order, at + " inverse", 1, 2);
            check_order(a, order);
        }
    });
}

// Perm products against the product of the full spectra (the edge pair as
// two reals); odd lengths: one real value, then complex values. Each value
// within 2 eps |a| |b|. The three-operand kernel gives the same bits.
TEST_P(Real, MulPermIsTheProductOfFullSpectra) {
    run([](const auto& a) {
        using T = typename std::decay_t<decltype(a)>::Elem;
        const LD eps = sizeof(T) == 4 ? FLT_EPSILON : DBL_EPSILON;
        for (int len : {1, 2, 3, 4, 5, 7, 8, 9, 16, 31, 64, 255, 256}) {
            std::vector<T> va, vb;
            for (const auto& c : orv::test::random_complex<Orv64fc>(size_t(len), unsigned(len)))
                va.push_back(T(c.re)), vb.push_back(T(c.im));
            const std::vector<LD> la = widened(va.data(), va.size()), lb = widened(vb.data(), vb.size());
            std::vector<LD> want(static_cast<size_t>(len)), tol(static_cast<size_t>(len));
            if (len % 2 == 0) {
                const auto A = from_perm(la), B = from_perm(lb);
                std::vector<cld> P(A.size());
                for (size_t k = 0; k < P.size(); ++k) P[k] = A[k] * B[k];
                want = to_perm(P);
                tol[0] = eps * std::abs(A[0] * B[0]), tol[1] = eps * std::abs(A[len / 2] * B[len / 2]);
                for (int k = 1; k < len / 2; ++k) tol[2 * k] = tol[2 * k + 1] = 2 * eps * std::abs(A[k]) * std::abs(B[k]);
            } else {
                want[0] = la[0] * lb[0], tol[0] = eps * std::fabs(want[0]);
                for (int k = 1; k < len; k += 2) {
                    const cld p = cld(la[k], la[k + 1]) * cld(lb[k], lb[k + 1]);
                    want[k] = p.real(), want[k + 1] = p.imag();
                    tol[k] = tol[k + 1] = 2 * eps * std::abs(cld(la[k], la[k + 1])) * std::abs(cld(lb[k], lb[k + 1]));
                }
            }
            orv::test::Guarded<T> d(static_cast<size_t>(len), Flush::End), s(static_cast<size_t>(len), Flush::Start);
            std::copy(vb.begin(), vb.end(), d.data());
            std::copy(va.begin(), va.end(), s.data());
            ASSERT_EQ(orvStsNoErr, a.mulPerm(s.data(), d.data(), len));
            for (int i = 0; i < len; ++i)
                EXPECT_LE(std::fabs(LD(d[i]) - want[i]), tol[i]) << a.tier << " " << a.sfx() << " len " << len << " at " << i;
            const int c = (len - 1) / 2;
            if (!a.mpy3 || c == 0) continue;
            std::vector<T> m2(vb), m3(vb.size());
            a.mpy2(va.data() + 1, m2.data() + 1, c);
            a.mpy3(va.data() + 1, vb.data() + 1, m3.data() + 1, c);
            EXPECT_TRUE(same_bits(m2.data() + 1, m3.data() + 1, size_t(2 * c))) << a.tier << " Mpy3, len " << len;
        }
    });
}

// Checks in order: null spec, a record of another kind or a retired one,
// null arrays; nothing written on any failure.
TEST_P(Real, StatusesInOrderWithNothingWritten) {
    run([](const auto& a) {
        using A = std::decay_t<decltype(a)>;
        using T = typename A::Elem;
        using S = typename A::Spec;
        typename A::Built spec(a, 6, OrvFftNoDiv);
        // Records of the other kinds (complex, the other real one) and a
        // retired one: only their kind is read.
        alignas(32) static Orv8u kinds[3][256] = {};
        const Orv32s ids[3] = {orv::fft::kIdC32fc, A::kDbl ? orv::fft::kIdR32f : orv::fft::kIdR64f, 0};
        for (int i = 0; i < 3; ++i) std::memcpy(kinds[i], &ids[i], sizeof ids[i]);
        const S* foreign = reinterpret_cast<const S*>(kinds[1]);
        const S* complexRec = reinterpret_cast<const S*>(kinds[0]);
        const S* zero = reinterpret_cast<const S*>(kinds[2]);
        std::vector<T> src(64, T(1)), dst(64, T(7));
        const std::vector<T> keep = dst;
        struct Case {
            const S* spec;
            const T* src;
            T* dst;
            OrvStatus want;
        } cases[] = {{nullptr, src.data(), dst.data(), orvStsNullPtrErr},
                     {nullptr, nullptr, nullptr, orvStsNullPtrErr},
                     {foreign, nullptr, dst.data(), orvStsContextMatchErr},
                     {complexRec, src.data(), dst.data(), orvStsContextMatchErr},
                     {zero, src.data(), dst.data(), orvStsContextMatchErr},
                     {spec.p, nullptr, dst.data(), orvStsNullPtrErr},
                     {spec.p, src.data(), nullptr, orvStsNullPtrErr}};
        for (const auto& c : cases)
            for (auto* f : {a.fwd[0], a.fwd[1], a.inv[0], a.inv[1]})
                if (f) {
                    EXPECT_EQ(c.want, f(c.src, c.dst, c.spec, nullptr)) << a.tier << " " << a.sfx();
                }
        EXPECT_EQ(orvStsNullPtrErr, a.mulPerm(nullptr, dst.data(), 0));
        EXPECT_EQ(orvStsNullPtrErr, a.mulPerm(src.data(), nullptr, 4));
        EXPECT_EQ(orvStsSizeErr, a.mulPerm(src.data(), dst.data(), 0));
        EXPECT_EQ(orvStsSizeErr, a.mulPerm(src.data(), dst.data(), -1));
        EXPECT_TRUE(same_bits(dst.data(), keep.data(), dst.size())) << a.tier << " " << a.sfx();
    });
}

// N = 1, 2, 4 written out, exactly; the inverse (unscaled) returns N x, or x
// from a spectrum scaled by 1/N.
TEST_P(Real, ShortLengthsExactly) {
    struct Short {
        int order, flag;
        std::vector<double> x, perm, pack;
    } const table[] = {
        {0, OrvFftNoDiv, {3}, {3}, {3}},
        {0, OrvFftDivFwd, {3}, {3}, {3}},
        {1, OrvFftNoDiv, {1, 2}, {3, -1}, {3, -1}},
        {1, OrvFftDivFwd, {1, 2}, {1.5, -0.5}, {1.5, -0.5}},
        {2, OrvFftNoDiv, {1, 0, 0, 0}, {1, 1, 1, 0}, {1, 1, 0, 1}},
        {2, OrvFftDivFwd, {1, 0, 0, 0}, {.25, .25, .25, 0}, {.25, .25, 0, .25}},
        {2, OrvFftNoDiv, {1, 2, 3, 4}, {10, -2, -2, 2}, {10, -2, 2, -2}},
    };
    run([&](const auto& a) {
        using T = typename std::decay_t<decltype(a)>::Elem;
        for (const Short& c : table) {
            typename std::decay_t<decltype(a)>::Built spec(a, c.order, c.flag);
            const std::vector<T> x(c.x.begin(), c.x.end()), perm(c.perm.begin(), c.perm.end()),
                pack(c.pack.begin(), c.pack.end());
            const T n = T(c.flag == OrvFftNoDiv ? x.size() : 1);
            std::vector<T> y(x.size()), want(x.size());
            for (size_t i = 0; i < x.size(); ++i) want[i] = n * x[i];
            for (int l = 0; l < 2; ++l) {
                if (!a.fwd[l]) continue;
                const std::vector<T>& w = l ? pack : perm;
                ASSERT_EQ(orvStsNoErr, a.fwd[l](x.data(), y.data(), spec.p, nullptr));
                EXPECT_EQ(w, y) << a.tier << " " << a.sfx() << " order " << c.order << " layout " << l;
                ASSERT_EQ(orvStsNoErr, a.inv[l](w.data(), y.data(), spec.p, nullptr));
                EXPECT_EQ(want, y) << a.tier << " " << a.sfx() << " inverse, order " << c.order << " layout " << l;
            }
        }
    });
}

// The unpacking helpers: both layouts give X[0 .. N/2] of the full spectrum,
// also in place, and repack to the same bits.
template <class T, class C>
void check_unpack(OrvStatus (*unPerm)(const T*, C*, int), OrvStatus (*unPack)(const T*, C*, int),
                  OrvStatus (*rePerm)(const C*, T*, int), OrvStatus (*rePack)(const C*, T*, int)) {
    for (int n : {1, 2, 8, 64}) {
        std::vector<T> perm;
        for (const auto& c : orv::test::random_complex<Orv64fc>(size_t(n), 5u)) perm.push_back(T(c.re));
        const std::vector<T> pack = perm_to_pack(perm);
        const auto full = from_perm(widened(perm.data(), perm.size()));
        std::vector<C> c1(perm.size() / 2 + 1), c2(c1.size());
        ASSERT_EQ(orvStsNoErr, unPerm(perm.data(), c1.data(), n));
        ASSERT_EQ(orvStsNoErr, unPack(pack.data(), c2.data(), n));
        for (size_t k = 0; k < c1.size(); ++k)
            EXPECT_TRUE(LD(c1[k].re) == full[k].real() && LD(c1[k].im) == full[k].imag()) << "n " << n << " k " << k;
        EXPECT_TRUE(same_bits(c1.data(), c2.data(), c1.size())) << "n " << n;
        std::vector<T> inplace(pack);
        inplace.resize(2 * c1.size());
        ASSERT_EQ(orvStsNoErr, unPack(inplace.data(), reinterpret_cast<C*>(inplace.data()), n));
        EXPECT_TRUE(same_bits(reinterpret_cast<const C*>(inplace.data()), c1.data(), c1.size())) << "in place, n " << n;
        std::vector<T> p1(perm.size()), p2(perm.size());
        ASSERT_EQ(orvStsNoErr, rePerm(c1.data(), p1.data(), n));
        ASSERT_EQ(orvStsNoErr, rePack(c1.data(), p2.data(), n));
        EXPECT_EQ(perm, p1);
        EXPECT_EQ(pack, p2);
    }
    std::vector<T> p(4);
    std::vector<C> c(3);
    EXPECT_EQ(orvStsNullPtrErr, unPerm(nullptr, c.data(), 0));
    EXPECT_EQ(orvStsNullPtrErr, rePack(c.data(), nullptr, 4));
    EXPECT_EQ(orvStsSizeErr, unPack(p.data(), c.data(), 0));
    EXPECT_EQ(orvStsSizeErr, rePerm(c.data(), p.data(), 3));
}
TEST(RealUnpack, BothLayoutsToHalfSpectrumAndBack) {
    check_unpack(orvsFFTUnpack_Perm_32fc, orvsFFTUnpack_Pack_32fc, orvsFFTRepack_Perm_32fc, orvsFFTRepack_Pack_32fc);
    check_unpack(orvsFFTUnpack_Perm_64fc, orvsFFTUnpack_Pack_64fc, orvsFFTRepack_Perm_64fc, orvsFFTRepack_Pack_64fc);
}

}  // namespace

ORV_INSTANTIATE_TIER_PRECISIONS(Real, "orvsFFTFwd_RToPerm_32f", "orvsFFTFwd_RToPerm_64f");
