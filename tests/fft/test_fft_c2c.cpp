// The complex transforms of every tier, for every order up to the tier's
// medium limit: accuracy against the long double DFT, identical bits for
// every placement of source, destination and work buffer, the scale where
// (and only where) the flag asks for it, and the statuses of bad calls with
// nothing written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "../../fft/spec_record.h"
#include "fft/fft_ref.h"
#include "fft/fft_testing.h"
#include "fft/spec_model.h"
#include "orvsfft.h"

namespace orv::test {
namespace {

struct Api {
    std::string tier;
    decltype(orvsFFTFwd_CToC_32fc)* dir[2];  // inverse, forward
    decltype(orvsFFTInitAlloc_C_32fc)* initAlloc;
    decltype(orvsFFTInit_C_32fc)* init;
    decltype(orvsFFTGetSize_C_32fc)* getSize;
    decltype(orvsFFTGetBufSize_C_32fc)* getBufSize;
    decltype(orvsFFTFree_C_32fc)* free;
    decltype(orvsFFTInitAlloc_R_32f)* initAllocR;
    decltype(orvsFFTFree_R_32f)* freeR;
    int smallTop, mediumTop;  // beyond the latter the large transform takes over
    OrvStatus run(bool fwd, const Orv32fc* s, Orv32fc* d, const OrvFFTSpec_C_32fc* spec, Orv8u* buf) const {
        return dir[fwd](s, d, spec, buf);
    }
};
void PrintTo(const Api& a, std::ostream* os) { *os << a.tier; }

std::vector<Api> apis() {
    std::vector<Api> v;
    for (const auto& t : tiers_of<decltype(orvsFFTFwd_CToC_32fc)>("orvsFFTFwd_CToC_32fc")) {
        const std::string& tr = t.tier;
        const fftspec::TierRow& r = fftspec::row(false, tr);
        v.push_back({tr, {ORV_TIER_FN(orvsFFTInv_CToC_32fc, tr), t.fn}, ORV_TIER_FN(orvsFFTInitAlloc_C_32fc, tr),
                     ORV_TIER_FN(orvsFFTInit_C_32fc, tr), ORV_TIER_FN(orvsFFTGetSize_C_32fc, tr),
                     ORV_TIER_FN(orvsFFTGetBufSize_C_32fc, tr), ORV_TIER_FN(orvsFFTFree_C_32fc, tr),
                     ORV_TIER_FN(orvsFFTInitAlloc_R_32f, tr), ORV_TIER_FN(orvsFFTFree_R_32f, tr), r.cplxSmall,
                     r.largeFrom - 1});
    }
    return v;
}

// A specification from InitAlloc, freed at the end of the scope.
struct Spec {
    const Api& api;
    OrvFFTSpec_C_32fc* p = nullptr;
    Spec(const Api& a, int order, int flag) : api(a) { EXPECT_EQ(orvStsNoErr, a.initAlloc(&p, order, flag, 0)); }
    ~Spec() {
        if (p) api.free(p);
    }
    int buf_size() const {
        int n = -1;
        return api.getBufSize(p, &n) == orvStsNoErr ? n : -1;
    }
};

std::vector<Orv32fc> input(int order, unsigned salt) {
    return random_complex<Orv32fc>(size_t{1} << order, 1000u * salt + unsigned(order));
}
std::string trace(const Api& a, bool fwd, int order) {
    return a.tier + (fwd ? " forward" : " inverse") + " order " + std::to_string(order);
}

class CToC : public ::testing::TestWithParam<Api> {};

// Forward scaled, inverse not: each direction against the long double DFT
// with an aligned destination and the caller's buffer; every other
// placement reproduces that result bit for bit.
TEST_P(CToC, AccurateAndSameBitsForEveryPlacement) {
    const Api& a = GetParam();
    for (int order = 0; order <= a.mediumTop; ++order) {
        const size_t n = size_t{1} << order;
        const auto x = input(order, 1);
        const auto xl = to_cld(x.data(), n);
        Spec spec(a, order, OrvFftDivFwd);
        ASSERT_NE(spec.p, nullptr);
        const int bs = spec.buf_size();
        std::vector<Orv8u> buf(size_t(bs) + 1);
        for (bool fwd : {true, false}) {
            SCOPED_TRACE(trace(a, fwd, order));
            std::vector<Orv32fc> base(n), d = x;
            ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), base.data(), spec.p, buf.data()));
            const auto e = fft_error(base.data(), dft_ref(xl, fwd ? -1 : 1), fwd ? 1.0L / n : 1.0L);
            EXPECT_LE(e.rms, rms_bound(FLT_EPSILON, order));
            EXPECT_LE(e.max, max_bound(FLT_EPSILON, order));

            ASSERT_EQ(orvStsNoErr, a.run(fwd, d.data(), d.data(), spec.p, buf.data()));
            EXPECT_TRUE(same_bits(base, d.data())) << "in place";
            ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), d.data(), spec.p, nullptr));
            EXPECT_TRUE(same_bits(base, d.data())) << "null buffer";
            {  // 8-byte aligned only, against guard pages, apart and in place
                PlacedCopy<Orv32fc> s(x.data(), n, Flush::Start, 8), t(d.data(), n, Flush::End, 24);
                ASSERT_EQ(orvStsNoErr, a.run(fwd, s.p(), t.p(), spec.p, buf.data()));
                EXPECT_TRUE(same_bits(base, t.p()) && same_bits(x, s.p()) && t.canary_intact()) << "8-byte aligned";
                ASSERT_EQ(orvStsNoErr, a.run(fwd, s.p(), s.p(), spec.p, buf.data()));
                EXPECT_TRUE(same_bits(base, s.p())) << "8-byte aligned, in place";
            }
            if (bs == 0) {  // small orders leave a given buffer alone
                const std::vector<Orv8u> fill(64, 0xA7);
                PlacedCopy<Orv8u> b(fill.data(), 64, Flush::End, 0);
                ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), d.data(), spec.p, b.p()));
                EXPECT_TRUE(same_bits(fill, b.p())) << "buffer written";
                continue;
            }
            for (unsigned al = 0; al < 32; ++al) {  // a buffer of exactly the reported size
                Placed b(size_t(bs), flush_of(al), al);
                ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), d.data(), spec.p, b.bytes()));
                EXPECT_TRUE(same_bits(base, d.data()) && b.canary_intact()) << "buffer at " << al << " mod 32";
            }
        }
    }
}

// Each flag scales exactly the directions it names, by 1/N or 1/sqrt(N) in
// single precision; the unscaled direction is the NoDiv result bit for bit,
// and past the small kernels the scaled one is that result times the factor.
TEST_P(CToC, ScaleFollowsTheFlag) {
    const Api& a = GetParam();
    for (int order : {0, 1, 2, a.smallTop, a.smallTop + 1, 10, a.mediumTop}) {
        const size_t n = size_t{1} << order;
        const auto x = input(order, 2);
        Spec plainSpec(a, order, OrvFftNoDiv);
        ASSERT_NE(plainSpec.p, nullptr);
        std::vector<Orv32fc> plain[2] = {std::vector<Orv32fc>(n), std::vector<Orv32fc>(n)}, y(n);
        for (bool fwd : {false, true}) ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), plain[fwd].data(), plainSpec.p, nullptr));
        for (int flag : {OrvFftDivFwd, OrvFftDivInv, OrvFftDivSqrt}) {
            Spec spec(a, order, flag);
            ASSERT_NE(spec.p, nullptr);
            const float factor = flag == OrvFftDivSqrt ? float(1.0 / std::sqrt(double(n))) : 1.0f / float(n);
            for (bool fwd : {true, false}) {
                SCOPED_TRACE(trace(a, fwd, order) + " flag " + std::to_string(flag));
                ASSERT_EQ(orvStsNoErr, a.run(fwd, x.data(), y.data(), spec.p, nullptr));
                if (flag == (fwd ? OrvFftDivInv : OrvFftDivFwd)) {
                    EXPECT_TRUE(same_bits(plain[fwd], y.data()));
                    continue;
                }
                double mag = 0;
                for (const auto& c : plain[fwd]) mag = std::max({mag, std::fabs(double(c.re)), std::fabs(double(c.im))});
                const double tol = order > a.smallTop ? 0 : 4 * FLT_EPSILON * mag * factor;
                for (size_t i = 0; i < n; ++i) {
                    ASSERT_NEAR(y[i].re, plain[fwd][i].re * factor, tol) << "element " << i;
                    ASSERT_NEAR(y[i].im, plain[fwd][i].im * factor, tol) << "element " << i;
                }
            }
        }
    }
}

// Destination and buffer hold a pattern every failing call leaves as it was.
struct Untouched {
    std::vector<Orv32fc> dst;
    std::vector<Orv8u> buf;
    Untouched(size_t n, size_t b) : dst(n), buf(b, 0x3E) { std::memset(dst.data(), 0x6B, n * sizeof(Orv32fc)); }
    bool intact() const {
        const auto* d = reinterpret_cast<const Orv8u*>(dst.data());
        return std::all_of(d, d + dst.size() * sizeof(Orv32fc), [](Orv8u v) { return v == 0x6B; }) &&
               std::all_of(buf.begin(), buf.end(), [](Orv8u v) { return v == 0x3E; });
    }
};

TEST_P(CToC, BadCallsAnswerInOrderAndWriteNothing) {
    const Api& a = GetParam();
    const OrvStatus kNull = orvStsNullPtrErr, kCtx = orvStsContextMatchErr;
    for (int order : {3, a.smallTop + 1, a.mediumTop}) {
        const size_t n = size_t{1} << order;
        const auto x = input(order, 3);
        Spec spec(a, order, OrvFftDivFwd);
        ASSERT_NE(spec.p, nullptr);
        Untouched u(n, size_t(spec.buf_size()) + 64);
        // A record retired by Free (built by Init, so its memory stays), one
        // never built, and one of another kind.
        int specSize = 0, initSize = 0, bufSize = 0;
        ASSERT_EQ(orvStsNoErr, a.getSize(order, OrvFftDivFwd, 0, &specSize, &initSize, &bufSize));
        std::vector<Orv8u> mem(specSize + 0u), initMem(initSize + 1u), zeros(specSize + 32u);
        OrvFFTSpec_C_32fc* retired = nullptr;
        ASSERT_EQ(orvStsNoErr, a.init(&retired, order, OrvFftDivFwd, 0, mem.data(), initMem.data()));
        ASSERT_EQ(orvStsNoErr, a.free(retired));
        auto* unbuilt = reinterpret_cast<OrvFFTSpec_C_32fc*>(orv::fft::align_up32(zeros.data()));
        OrvFFTSpec_R_32f* real = nullptr;
        ASSERT_EQ(orvStsNoErr, a.initAllocR(&real, 8, OrvFftDivFwd, 0));
        const auto* foreign = reinterpret_cast<const OrvFFTSpec_C_32fc*>(real);
        for (bool fwd : {true, false}) {
            SCOPED_TRACE(trace(a, fwd, order));
            Orv32fc* d = u.dst.data();
            Orv8u* b = u.buf.data();
            EXPECT_EQ(kNull, a.run(fwd, nullptr, nullptr, nullptr, nullptr));
            EXPECT_EQ(kNull, a.run(fwd, x.data(), d, nullptr, b));
            EXPECT_EQ(kCtx, a.run(fwd, nullptr, nullptr, retired, b));
            EXPECT_EQ(kCtx, a.run(fwd, x.data(), d, retired, b));
            EXPECT_EQ(kCtx, a.run(fwd, x.data(), d, unbuilt, b));
            EXPECT_EQ(kCtx, a.run(fwd, nullptr, d, foreign, b));
            EXPECT_EQ(kCtx, a.run(fwd, x.data(), d, foreign, b));
            EXPECT_EQ(kNull, a.run(fwd, nullptr, d, spec.p, b));
            EXPECT_EQ(kNull, a.run(fwd, x.data(), nullptr, spec.p, b));
            EXPECT_TRUE(u.intact());
            // With no buffer and a failing allocator, only orders that need a
            // work area allocate, and then nothing is computed.
            OrvStatus st;
            {
                FailingMalloc fail;
                st = a.run(fwd, x.data(), d, spec.p, nullptr);
            }
            EXPECT_EQ(st, order <= a.smallTop ? orvStsNoErr : orvStsMemAllocErr);
            EXPECT_TRUE(order <= a.smallTop || u.intact()) << "written after a failed allocation";
            u = Untouched(n, u.buf.size());
        }
        a.freeR(real);
    }

    // Orders of the large transform run, with a work block of their own.
    Spec large(a, a.mediumTop + 1, OrvFftNoDiv);
    Untouched u(size_t{1} << (a.mediumTop + 1), 256);
    EXPECT_EQ(orvStsNoErr, a.run(true, u.dst.data(), u.dst.data(), large.p, nullptr));
    EXPECT_EQ(orvStsNoErr, a.run(false, u.dst.data(), u.dst.data(), large.p, nullptr));
}

INSTANTIATE_TEST_SUITE_P(Tiers, CToC, ::testing::ValuesIn(apis()), TierName());

}  // namespace
}  // namespace orv::test
