// Long double references for the FFT tests and the error measures the
// accuracy bounds are stated in.
#pragma once

#include <fftw3.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cfloat>
#include <complex>
#include <random>
#include <string>
#include <vector>

#include "orvtypes.h"

namespace orv::test {

using cld = std::complex<long double>;

// Unnormalised DFT in long double, sign -1 forward, +1 inverse, from FFTW's
// long double build (its error, ~1e-19 log2 n, is far below the single- and
// double-precision bounds).
inline std::vector<cld> dft_ref(const std::vector<cld>& x, int sign) {
    const size_t n = x.size();
    std::vector<cld> y(n);
    auto* in = static_cast<fftwl_complex*>(fftwl_malloc(sizeof(fftwl_complex) * n));
    auto* out = static_cast<fftwl_complex*>(fftwl_malloc(sizeof(fftwl_complex) * n));
    fftwl_plan p = fftwl_plan_dft_1d(static_cast<int>(n), in, out, sign < 0 ? FFTW_FORWARD : FFTW_BACKWARD,
                                     FFTW_ESTIMATE);
    for (size_t i = 0; i < n; ++i) in[i][0] = x[i].real(), in[i][1] = x[i].imag();
    fftwl_execute(p);
    for (size_t i = 0; i < n; ++i) y[i] = cld(out[i][0], out[i][1]);
    fftwl_destroy_plan(p);
    fftwl_free(in);
    fftwl_free(out);
    return y;
}

// Uniform random complex values in [-1, 1).
template <class C>
std::vector<C> random_complex(size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<C> v(n);
    for (auto& c : v) c = C{static_cast<decltype(c.re)>(u(rng)), static_cast<decltype(c.re)>(u(rng))};
    return v;
}

template <class C>
std::vector<cld> to_cld(const C* x, size_t n) {
    std::vector<cld> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = cld(x[i].re, x[i].im);
    return v;
}

// Relative RMS error sqrt(sum |y - r|^2 / sum |r|^2), and the largest error
// relative to the reference's RMS magnitude.
struct FftError {
    double rms = 0, max = 0;
};
template <class C>
FftError fft_error(const C* y, const std::vector<cld>& ref, long double factor = 1) {
    long double e2 = 0, r2 = 0, emax = 0;
    for (size_t i = 0; i < ref.size(); ++i) {
        const cld r = ref[i] * factor;
        const long double d = std::abs(cld(y[i].re, y[i].im) - r);
        e2 += d * d;
        r2 += std::norm(r);
        emax = std::max(emax, d);
    }
    if (r2 == 0) return {static_cast<double>(e2), static_cast<double>(emax)};
    return {static_cast<double>(sqrtl(e2 / r2)), static_cast<double>(emax / sqrtl(r2 / ref.size()))};
}

// The stated bounds for an element type with epsilon eps and order m.
inline double rms_bound(double eps, int order) { return 2 * eps * std::sqrt(std::max(1, order)); }
inline double max_bound(double eps, int order) { return 10 * eps * std::max(1, order); }

// The same measures over real arrays, checked against the bounds for order m
// (times `widen`, e.g. 2 for a round trip); y against ref times `factor`.
template <class T>
void expect_close_real(const T* y, const std::vector<long double>& ref, int m, const std::string& what,
                       double widen = 1, long double factor = 1) {
    long double e2 = 0, r2 = 0, emax = 0;
    for (size_t i = 0; i < ref.size(); ++i) {
        const long double d = std::fabs((long double)y[i] - factor * ref[i]);
        e2 += d * d, r2 += factor * ref[i] * factor * ref[i], emax = std::max(emax, d);
    }
    const double eps = sizeof(T) == 4 ? FLT_EPSILON : DBL_EPSILON;
    const double rms = double(r2 > 0 ? sqrtl(e2 / r2) : sqrtl(e2));
    const double mx = double(r2 > 0 ? emax / sqrtl(r2 / ref.size()) : emax);
    EXPECT_LE(rms, widen * rms_bound(eps, m)) << what << " order " << m;
    EXPECT_LE(mx, widen * max_bound(eps, m)) << what << " order " << m;
}

}  // namespace orv::test
