// The small complex and real kernels of every tier, both precisions, plain
// and scale forms: accuracy against the long double DFT (real kernels in the
// Perm layout), the scale form as the factor times the plain result, the
// fixed rounding of the length-4 and length-8 real formulas, and identical
// bits in place and at every alignment, with arrays against guard pages.
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
#include "fft/fft_testing.h"
#include "orvsfftk.h"

namespace orv::test {
namespace {

struct Kernel {
    std::string tier, name;
    int n;
    bool real, inv, dbl, scaled;
    void *fn, *plain;  // plain: the unscaled sibling
};

void PrintTo(const Kernel& k, std::ostream* os) { *os << k.tier << "_" << k.name; }

// Every small kernel name, looked up for every tier that exports it.
std::vector<Kernel> kernels() {
    std::vector<Kernel> v;
    for (bool real : {false, true})
        for (bool dbl : {false, true})
            for (int n : {1, 2, 4, 8, 16, 32, 64})
                for (bool inv : {false, true}) {
                    if (n <= 2 && inv) continue;  // one kernel serves both directions
                    const std::string stem = std::string(real ? "rFFT" : "cFFT") + (n <= 2 ? "" : inv ? "inv" : "fwd") +
                                             "_" + std::to_string(n),
                                      type = dbl ? (real ? "_64f" : "_64fc") : (real ? "_32f" : "_32fc");
                    for (const auto& e : registry())
                        for (bool scaled : {false, true})
                            if ("orvs_" + stem + (scaled ? "_scale" : "") + type == e.name)
                                v.push_back({e.tier, stem + (scaled ? "_scale" : "") + type, n, real, inv, dbl, scaled,
                                             e.address, reinterpret_cast<void*>(tier_fn<void()>("orvs_" + stem + type, e.tier))});
                }
    return v;
}

template <class T>
struct Run {
    const Kernel& k;
    // Values per transform: n complex values are 2n scalars.
    size_t count() const { return size_t(k.n) * (k.real ? 1 : 2); }
    void operator()(const T* src, T* dst, T scale) const {
        if (k.scaled) reinterpret_cast<void (*)(const T*, T*, T)>(k.fn)(src, dst, scale);
        else reinterpret_cast<void (*)(const T*, T*)>(k.fn)(src, dst);
    }
    // Into a buffer of `count` scalars at `offset` bytes from a guard page.
    std::vector<T> placed(const std::vector<T>& x, T scale, Flush fs, size_t os, Flush fd, size_t od,
                          bool inPlace) const {
        Guarded<T> src(count(), fs, os), dst(count(), fd, od);
        std::memcpy((inPlace ? dst : src).data(), x.data(), count() * sizeof(T));
        (*this)(inPlace ? dst.data() : src.data(), dst.data(), scale);
        return std::vector<T>(dst.data(), dst.data() + count());
    }
};

// The expected result in long double, as complex values: the spectrum, the
// Perm layout of the spectrum of real samples, or the real samples of the
// inverse of a Perm spectrum.
template <class T>
std::vector<cld> reference(const Kernel& k, const std::vector<T>& x) {
    const int n = k.n;
    std::vector<cld> in(n);
    if (!k.real) {
        for (int i = 0; i < n; ++i) in[i] = cld(x[2 * i], x[2 * i + 1]);
        return dft_ref(in, k.inv ? +1 : -1);
    }
    if (!k.inv) {
        for (int i = 0; i < n; ++i) in[i] = x[i];
        const auto X = dft_ref(in, -1);
        std::vector<cld> perm(n);
        perm[0] = X[0].real();
        if (n > 1) perm[1] = X[n / 2].real();
        for (int j = 1; j < n / 2; ++j) perm[2 * j] = X[j].real(), perm[2 * j + 1] = X[j].imag();
        return perm;
    }
    in[0] = x[0];
    if (n > 1) in[n / 2] = x[1];
    for (int j = 1; j < n / 2; ++j) in[j] = cld(x[2 * j], x[2 * j + 1]), in[n - j] = std::conj(in[j]);
    auto y = dft_ref(in, +1);
    for (auto& v : y) v = v.real();
    return y;
}

// The real length-4 and length-8 kernels have their rounding fixed: their
// outputs are these expressions, evaluated in T. Empty where none is fixed.
template <class T>
std::vector<T> fixed_formula(const Kernel& k, const std::vector<T>& x, T s) {
    if (!k.real || k.n < 4 || k.n > 8 || (k.inv && k.n == 8)) return {};
    std::vector<T> y;
    if (k.inv) {
        const T a = x[0] + x[1], b = x[0] - x[1];
        y = {a + 2 * x[2], b - 2 * x[3], a - 2 * x[2], b + 2 * x[3]};
    } else if (k.n == 4) {
        const T p = (x[0] + x[2]) * (k.scaled ? s : 1), q = (x[1] + x[3]) * (k.scaled ? s : 1);
        return {p + q, p - q, (x[0] - x[2]) * (k.scaled ? s : 1), (x[3] - x[1]) * (k.scaled ? s : 1)};
    } else {
        const T c = static_cast<T>(0.70710678118654752440L), t1 = x[1] - x[5], t2 = x[3] - x[7];
        const T nan = static_cast<T>(std::nan(""));  // the edge pair's order of sums is not fixed
        y = {nan, nan, (x[0] - x[4]) + (t1 - t2) * c, -(t1 + t2) * c - (x[2] - x[6]), (x[0] + x[4]) - (x[2] + x[6]),
             (x[3] + x[7]) - (x[1] + x[5]), (x[0] - x[4]) - (t1 - t2) * c, (x[2] - x[6]) - (t1 + t2) * c};
    }
    for (T& v : y) v *= k.scaled ? s : 1;
    return y;
}

class SmallKernel : public ::testing::TestWithParam<Kernel> {};

template <class T>
void check(const Kernel& k) {
    const Run<T> run{k};
    const double eps = std::is_same_v<T, float> ? FLT_EPSILON : DBL_EPSILON;
    const int order = static_cast<int>(std::log2(k.n));
    const T s = static_cast<T>(1 / std::sqrt(3.0L * k.n));
    std::mt19937 rng(1234u + unsigned(k.n));
    std::uniform_real_distribution<double> u(-1, 1);
    for (int trial = 0; trial < 2; ++trial) {
        std::vector<T> x(run.count());
        for (T& v : x) v = static_cast<T>(u(rng));
        const std::vector<T> y = run.placed(x, s, Flush::Start, 0, Flush::Start, 0, false);

        // Accuracy of the plain result (the scale form of the plain kernel's
        // sibling is checked against it below).
        if (!k.scaled) {
            std::vector<Orv64fc> c(k.n);  // real results with zero imaginary parts
            for (int i = 0; i < k.n; ++i) c[i] = k.real ? Orv64fc{y[i], 0} : Orv64fc{y[2 * i], y[2 * i + 1]};
            const auto err = fft_error(c.data(), reference(k, x));
            EXPECT_LE(err.rms, rms_bound(eps, order)) << "trial " << trial;
            EXPECT_LE(err.max, max_bound(eps, order)) << "trial " << trial;
        } else {
            // The plain result from the unscaled sibling, then the factor.
            ASSERT_NE(k.plain, nullptr);
            Kernel sib = k;
            sib.scaled = false, sib.fn = k.plain;
            const auto p = Run<T>{sib}.placed(x, T(1), Flush::Start, 0, Flush::Start, 0, false);
            const bool early = k.real && !k.inv && k.n == 4;  // scales the partial sums instead
            for (size_t i = 0; i < y.size() && !early; ++i) EXPECT_EQ(y[i], static_cast<T>(p[i] * s)) << "index " << i;
        }

        const std::vector<T> f = fixed_formula(k, x, s);
        for (size_t i = 0; i < f.size(); ++i) EXPECT_TRUE(std::isnan(f[i]) || y[i] == f[i]) << "fixed rounding, index " << i;

        // Same bits in place and wherever the arrays sit: 8-byte aligned only
        // (and 4 for single precision), flush with a guard page at either end.
        EXPECT_TRUE(same_bits(y, run.placed(x, s, Flush::Start, 0, Flush::Start, 0, true).data())) << "in place";
        EXPECT_TRUE(same_bits(y, run.placed(x, s, Flush::End, 0, Flush::End, 0, false).data())) << "both at the end";
        for (size_t o : {8, 16, 24, std::is_same_v<T, float> ? 4 : 8}) {
            EXPECT_TRUE(same_bits(y, run.placed(x, s, Flush::Start, o, Flush::Start, 0, false).data())) << "src +" << o;
            EXPECT_TRUE(same_bits(y, run.placed(x, s, Flush::Start, 0, Flush::End, o, false).data())) << "dst end -" << o;
            EXPECT_TRUE(same_bits(y, run.placed(x, s, Flush::End, o, Flush::Start, o, true).data())) << "in place +" << o;
        }
    }
}

TEST_P(SmallKernel, AgainstReferenceScaleAndPlacement) {
    const Kernel& k = GetParam();
    if (k.dbl) check<double>(k);
    else check<float>(k);
}

INSTANTIATE_TEST_SUITE_P(Kernels, SmallKernel, ::testing::ValuesIn(kernels()),
                         [](const auto& info) { return info.param.tier + "_" + info.param.name; });

// Every tier has the whole family; e9 alone has the length-64 complex kernels.
TEST(SmallKernelSet, EveryTierHasItsKernels) {
    std::map<std::string, int> perTier;
    for (const Kernel& k : kernels()) ++perTier[k.tier];
    for (const auto& [tier, count] : perTier) {
        const int singles = tier == "u8" ? 0 : 40 + (tier == "e9" ? 4 : 0);
        EXPECT_EQ(count, singles + 40 + (tier == "e9" ? 4 : 0)) << tier;
    }
    EXPECT_EQ(perTier.size(), count_tested({"m7", "u8", "n8", "y8", "e9"}));
}

}  // namespace
}  // namespace orv::test
