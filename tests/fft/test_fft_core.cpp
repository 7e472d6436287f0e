// The radix-4/8 core of every tier in both precisions, every order of the
// tier's medium range: the plain form on bit-reversed data against the long
// double DFT, and every other form bit for bit against it: plain at other
// alignments and in the working format, fused Norm and CoreMT out of place,
// in place and misaligned, the split forms. Data, tables and work buffer sit
// against guard pages.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "fft/fft_ref.h"
#include "fft/fft_testing.h"
#include "fft/spec_model.h"
#include "orvsfftk.h"

namespace orv::test {
namespace {

template <bool kDbl, class F32, class F64>
using Pick = std::conditional_t<kDbl, F64, F32>;

template <class T>
void check_core(const std::string& tier) {
    constexpr bool dbl = sizeof(T) == 8;
    using C = Pick<dbl, Orv32fc, Orv64fc>;
    using Plain = Pick<dbl, decltype(orvs_cRadix4Fwd_32fc), decltype(orvs_cRadix4Fwd_64fc)>;
    using Norm = Pick<dbl, decltype(orvs_cRadix4FwdNorm_32fc), decltype(orvs_cRadix4FwdNorm_64fc)>;
    using SplitNorm = Pick<dbl, decltype(orvs_crRadix4FwdNorm_32f), decltype(orvs_crRadix4FwdNorm_64f)>;
    using SplitPlain = Pick<dbl, decltype(orvs_crRadix4Fwd_32f), decltype(orvs_crRadix4Fwd_64f)>;
    using L1 = Pick<dbl, decltype(orvs_initTabTwd_L1_32f), decltype(orvs_initTabTwd_L1_64f)>;
    const std::string ty = dbl ? "_64f" : "_32f";
    // Elements may sit at any multiple of the scalar size; the working format
    // holds groups of one vector of real, then of imaginary parts.
    std::vector<unsigned> offs = {0, 8, 16};
    if (!dbl) offs.push_back(4);
    const size_t lanes = (tier == "e9" ? 32 : 16) / sizeof(T);
    auto* l1 = tier_fn<L1>("orvs_initTabTwd_L1" + ty, tier);
    ASSERT_TRUE(l1);
    for (int order = dbl ? 2 : 4; order < fftspec::row(dbl, tier).largeFrom; ++order) {
        const size_t n = size_t{1} << order;
        const int len = static_cast<int>(n);
        // Norm table; L1 twiddles from a base table of order max(order, 10)
        // (sines to N/8, cosines beyond) in the bytes the core reserves.
        const auto normv = norm_table(order);
        const PlacedCopy<Orv32u> bitrev(normv.data(), normv.size(), Flush::End, 0);
        const int bo = std::max(order, 10);
        const long nb = 1L << bo, qb = nb / 4;
        std::vector<T> base(qb + 1);
        for (long k = 0; k <= qb; ++k)
            base[k] = static_cast<T>(k <= nb / 8 ? std::sin(k * 6.283185307179586 / nb)
                                                 : std::cos((qb - k) * 6.283185307179586 / nb));
        Guarded<Orv8u> twd(sizeof(C) << order, Flush::End), work(sizeof(C) << order, Flush::End);
        ASSERT_EQ(l1(order, base.data(), bo, twd.data()), twd.data() + (order < 4 ? 0 : sizeof(C) << order));

        const auto x = random_complex<C>(n, 7u * order);
        std::vector<C> xr(n);
        std::vector<T> re(n), im(n), rre(n), rim(n);
        for (size_t i = 0; i < n; ++i) {
            xr[i] = x[rev_bits(unsigned(i), order)];
            re[i] = x[i].re, im[i] = x[i].im, rre[i] = xr[i].re, rim[i] = xr[i].im;
        }
        for (const std::string dir : {"Fwd", "Inv"}) {
            SCOPED_TRACE(tier + ty + " " + dir + " order " + std::to_string(order));
            auto* plain = tier_fn<Plain>("orvs_cRadix4" + dir + ty + "c", tier);
            auto* norm = tier_fn<Norm>("orvs_cRadix4" + dir + "Norm" + ty + "c", tier);
            auto* coreMT = tier_fn<Norm>("orvs_cFft" + dir + "_CoreMT" + ty + "c", tier);
            auto* splitNorm = tier_fn<SplitNorm>("orvs_crRadix4" + dir + "Norm" + ty, tier);
            auto* splitMT = tier_fn<SplitNorm>("orvs_crFft" + dir + "_CoreMT" + ty, tier);
            auto* splitPlain = tier_fn<SplitPlain>("orvs_crRadix4" + dir + ty, tier);
            // 64f n8 runs bit reversal and the plain core only.
            const bool full = !(dbl && tier == "n8");
            ASSERT_TRUE(plain && !norm == !full && !splitNorm == !full && !splitPlain == !full);

            const PlacedCopy<C> ref(xr.data(), n, Flush::End, 0);
            plain(ref.p(), len, twd.data(), work.data(), 1);
            const std::vector<C> y(ref.p(), ref.p() + n);
            const FftError e = fft_error(y.data(), dft_ref(to_cld(x.data(), n), dir == "Inv" ? 1 : -1));
            EXPECT_LE(e.rms, rms_bound(dbl ? DBL_EPSILON : FLT_EPSILON, order));
            EXPECT_LE(e.max, max_bound(dbl ? DBL_EPSILON : FLT_EPSILON, order));
            auto split_is_y = [&](const T* r, const T* i) {
                for (size_t k = 0; k < n; ++k)
                    if (!same_bits(&r[k], &y[k].re, 1) || !same_bits(&i[k], &y[k].im, 1)) return false;
                return true;
            };

            for (size_t j = 0; j < offs.size(); ++j) {
                const unsigned off = offs[j], off2 = offs[(j + 1) % offs.size()];
                // Plain elsewhere (unaligned data run in pWork), ending
                // interleaved or in the working format.
                for (int il = 0; il < 2; ++il) {
                    PlacedCopy<C> d(xr.data(), n, flush_of(j), off);
                    plain(d.p(), len, twd.data(), work.data(), il);
                    std::vector<T> f(2 * n);
                    std::memcpy(f.data(), d.p(), n * sizeof(C));
                    std::vector<C> got(n);
                    for (size_t i = 0; i < n; ++i) {
                        const size_t r = il ? 2 * i : 2 * i - i % lanes;
                        got[i] = {f[r], f[r + (il ? 1 : lanes)]};
                    }
                    EXPECT_TRUE(same_bits(y, got.data()) && d.canary_intact()) << "plain +" << off << " il " << il;
                }
                // Fused: every source and destination offset, and in place.
                for (auto* fused : {norm, coreMT}) {
                    if (!fused) continue;
                    for (unsigned dof : offs) {
                        PlacedCopy<C> s(x.data(), n, flush_of(j), off), d(xr.data(), n, Flush::End, dof);
                        fused(s.p(), d.p(), len, twd.data(), bitrev.p(), work.data());
                        EXPECT_TRUE(same_bits(y, d.p()) && same_bits(x, s.p()) && d.canary_intact())
                            << (fused == norm ? "Norm +" : "CoreMT +") << off << " -> +" << dof;
                    }
                    PlacedCopy<C> io(x.data(), n, Flush::End, off);
                    fused(io.p(), io.p(), len, twd.data(), bitrev.p(), work.data());
                    EXPECT_TRUE(same_bits(y, io.p()) && io.canary_intact()) << "in place +" << off;
                }
                // Split forms, fused out of place and in place, and plain
                // (whose result does not depend on `interleaved`).
                for (auto* sn : {splitNorm, splitMT}) {
                    if (!sn) continue;
                    PlacedCopy<T> sr(re.data(), n, flush_of(j), off), si(im.data(), n, flush_of(j + 1), off2);
                    PlacedCopy<T> dr(re.data(), n, Flush::End, off2), di(im.data(), n, Flush::End, off);
                    sn(sr.p(), si.p(), dr.p(), di.p(), len, twd.data(), bitrev.p(), work.data());
                    EXPECT_TRUE(split_is_y(dr.p(), di.p()) && dr.canary_intact() && di.canary_intact())
                        << "split fused +" << off;
                    sn(sr.p(), si.p(), sr.p(), si.p(), len, twd.data(), bitrev.p(), work.data());
                    EXPECT_TRUE(split_is_y(sr.p(), si.p())) << "split fused in place +" << off;
                }
                for (int il = 0; il < 2 && splitPlain; ++il) {
                    PlacedCopy<T> pr(rre.data(), n, flush_of(j), off), pi(rim.data(), n, Flush::End, off2);
                    splitPlain(pr.p(), pi.p(), len, twd.data(), work.data(), il);
                    EXPECT_TRUE(split_is_y(pr.p(), pi.p()) && pi.canary_intact()) << "split plain +" << off;
                }
            }
        }
    }
}

class Core : public ::testing::TestWithParam<TierPrec> {};

TEST_P(Core, EveryFormMatchesThePlainCore) {
    if (GetParam().dbl) check_core<Orv64f>(GetParam().tier);
    else check_core<Orv32f>(GetParam().tier);
}

ORV_INSTANTIATE_TIER_PRECISIONS(Core, "orvs_cRadix4Fwd_32fc", "orvs_cRadix4Fwd_64fc");

}  // namespace
}  // namespace orv::test
