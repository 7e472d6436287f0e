// 1-D linear convolution, orv (e9, y8 for reference) beside three peers:
// FFTW 3 one-shot and overlap-save products written here (r2c/c2r plans made
// with FFTW_MEASURE before timing; the filter's spectrum is computed in every
// call, as orv does) and the plain direct loop built -O3 -mavx. A fourth kind
// times what orv spends on its FFT specification per call: InitAlloc and Free
// of the order its path uses.
//
// Names: conv_<32f|64f>/<n>x<m>/<orv-e9|orv-y8|fftw-oneshot|fftw-ols|direct>,
// conv_spec_<32f|64f>/<n>x<m>/e9.
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "fft_common.h"
#include "orvs.h"
#include "peer/conv_direct.h"

namespace {

using namespace orv::bench;

struct Size {
    int n, m;
};
constexpr Size kSizes[] = {{100000, 63}, {100000, 1000}, {1000000, 4096}, {300, 300}, {449, 64}};

struct F32 {
    using T = float;
    using Conv = decltype(orvsConv_32f);
    using InitAlloc = decltype(orvsFFTInitAlloc_R_32f);
    using Free = decltype(orvsFFTFree_R_32f);
    using Spec = OrvFFTSpec_R_32f;
    static constexpr const char *kConv = "orvsConv_32f", *kInit = "orvsFFTInitAlloc_R_32f",
                                *kFree = "orvsFFTFree_R_32f", *kType = "32f";
    using Plan = fftwf_plan;
    using Cx = fftwf_complex;
    static Plan r2c(int n, T* in, Cx* out) { return fftwf_plan_dft_r2c_1d(n, in, out, FFTW_MEASURE); }
    static Plan c2r(int n, Cx* in, T* out) { return fftwf_plan_dft_c2r_1d(n, in, out, FFTW_MEASURE); }
    static void run(Plan p) { fftwf_execute(p); }
    static void direct(const T* x, int n, const T* h, int m, T* y) { peer_conv_direct_32f(x, n, h, m, y); }
};
struct F64 {
    using T = double;
    using Conv = decltype(orvsConv_64f);
    using InitAlloc = decltype(orvsFFTInitAlloc_R_64f);
    using Free = decltype(orvsFFTFree_R_64f);
    using Spec = OrvFFTSpec_R_64f;
    static constexpr const char *kConv = "orvsConv_64f", *kInit = "orvsFFTInitAlloc_R_64f",
                                *kFree = "orvsFFTFree_R_64f", *kType = "64f";
    using Plan = fftw_plan;
    using Cx = fftw_complex;
    static Plan r2c(int n, T* in, Cx* out) { return fftw_plan_dft_r2c_1d(n, in, out, FFTW_MEASURE); }
    static Plan c2r(int n, Cx* in, T* out) { return fftw_plan_dft_c2r_1d(n, in, out, FFTW_MEASURE); }
    static void run(Plan p) { fftw_execute(p); }
    static void direct(const T* x, int n, const T* h, int m, T* y) { peer_conv_direct_64f(x, n, h, m, y); }
};

// Inputs (x of n, h of m) and a destination of n + m - 1, kept for the run.
template <class P>
struct Arrays {
    typename P::T *x, *h, *y;
};
template <class P>
Arrays<P> arrays(Size s) {
    using T = typename P::T;
    Arrays<P> a{aligned<T>(s.n * sizeof(T)), aligned<T>(s.m * sizeof(T)), aligned<T>((s.n + s.m) * sizeof(T))};
    std::mt19937 rng(s.n + s.m);
    std::uniform_real_distribution<T> d(-1, 1);
    std::generate(a.x, a.x + s.n, [&] { return d(rng); });
    std::generate(a.h, a.h + s.m, [&] { return d(rng); });
    return a;
}

// FFTW product over blocks of L: one block of the whole signal (one-shot,
// L the least 2^a 3^b 5^c not below n + m - 1) or overlap-save (L the power
// of two from 2m up with the least L log L per kept output L - m + 1).
template <class P>
struct FftwConv {
    using T = typename P::T;
    using Cx = typename P::Cx;
    int n, m, L, S;
    bool one;
    T *buf, *hbuf;
    Cx *spec, *hspec;
    typename P::Plan fwd, fwdH, inv;

    FftwConv(Size s, bool oneShot) : n(s.n), m(s.m), one(oneShot) {
        if (oneShot) {
            L = n + m - 1;
            auto smooth = [](int v) {
                for (int f : {2, 3, 5})
                    while (v % f == 0) v /= f;
                return v == 1;
            };
            while (!smooth(L)) ++L;
        } else {
            double best = 1e300;
            for (int l = 1; l < (1 << 24); l <<= 1) {
                if (l < 2 * m) continue;
                const double cost = l * std::log2(l) / (l - m + 1);
                if (cost < best) best = cost, L = l;
            }
        }
        S = L - m + 1;
        buf = aligned<T>(L * sizeof(T)), hbuf = aligned<T>(L * sizeof(T));
        spec = aligned<Cx>((L / 2 + 1) * sizeof(Cx)), hspec = aligned<Cx>((L / 2 + 1) * sizeof(Cx));
        fwd = P::r2c(L, buf, spec), fwdH = P::r2c(L, hbuf, hspec), inv = P::c2r(L, spec, buf);
    }
    void mul() {
        const T scale = T(1) / L;
        for (int k = 0; k <= L / 2; ++k) {
            const T re = spec[k][0] * hspec[k][0] - spec[k][1] * hspec[k][1];
            const T im = spec[k][0] * hspec[k][1] + spec[k][1] * hspec[k][0];
            spec[k][0] = re * scale, spec[k][1] = im * scale;
        }
    }
    void operator()(const T* x, const T* h, T* y) {
        const int total = n + m - 1;
        std::memcpy(hbuf, h, m * sizeof(T));
        std::memset(hbuf + m, 0, (L - m) * sizeof(T));
        P::run(fwdH);
        if (one) {
            std::memcpy(buf, x, n * sizeof(T));
            std::memset(buf + n, 0, (L - n) * sizeof(T));
            P::run(fwd), mul(), P::run(inv);
            std::memcpy(y, buf, total * sizeof(T));
            return;
        }
        // Block b keeps outputs [b S, b S + S) from samples starting m - 1 back.
        for (int out = 0; out < total; out += S) {
            const int first = out - (m - 1), lo = std::max(first, 0), hi = std::min(first + L, n);
            std::memset(buf, 0, L * sizeof(T));
            if (hi > lo) std::memcpy(buf + (lo - first), x + lo, (hi - lo) * sizeof(T));
            P::run(fwd);
            mul();
            P::run(inv);
            std::memcpy(y + out, buf + m - 1, std::min(S, total - out) * sizeof(T));
        }
    }
};

// A peer's result against orv's y8 (tested against a long double sum; e9's
// float direct path keeps only the later chunk's part at chunk seams).
template <class P, class Run>
bool agrees_with_orv(Size s, const Arrays<P>& a, Run run) {
    using T = typename P::T;
    auto* fn = tier_fn<typename P::Conv>(P::kConv, "y8");
    if (!fn) return true;
    const int total = s.n + s.m - 1;
    std::vector<T> ref(total);
    fn(a.x, s.n, a.h, s.m, ref.data());
    run();
    double err = 0, mag = 0;
    for (int i = 0; i < total; ++i) err = std::max(err, double(std::fabs(a.y[i] - ref[i]))), mag = std::max(mag, double(std::fabs(ref[i])));
    return err <= 1e-4 * mag;
}

template <class P>
void register_size(Size s) {
    const std::string base = std::string("conv_") + P::kType + "/" + std::to_string(s.n) + "x" + std::to_string(s.m);
    for (const char* tier : {"e9", "y8"})
        if (auto* fn = tier_fn<typename P::Conv>(P::kConv, tier))
            benchmark::RegisterBenchmark((base + "/orv-" + tier).c_str(), [s, fn](benchmark::State& st) {
                const auto a = arrays<P>(s);
                for (auto _ : st) fn(a.x, s.n, a.h, s.m, a.y), benchmark::ClobberMemory();
            });
    for (bool oneShot : {true, false}) {
        if (!oneShot && s.n < 3 * s.m) continue;  // the block would not be shorter than the signal
        benchmark::RegisterBenchmark((base + (oneShot ? "/fftw-oneshot" : "/fftw-ols")).c_str(),
                                     [s, oneShot](benchmark::State& st) {
                                         const auto a = arrays<P>(s);
                                         FftwConv<P> c(s, oneShot);
                                         if (!agrees_with_orv<P>(s, a, [&] { c(a.x, a.h, a.y); }))
                                             return st.SkipWithError("differs from orv");
                                         for (auto _ : st) c(a.x, a.h, a.y), benchmark::ClobberMemory();
                                     });
    }
    if (double(s.n) * s.m <= 2e8)  // 4e9 products per call would take seconds
        benchmark::RegisterBenchmark((base + "/direct").c_str(), [s](benchmark::State& st) {
            const auto a = arrays<P>(s);
            if (!agrees_with_orv<P>(s, a, [&] { P::direct(a.x, s.n, a.h, s.m, a.y); }))
                return st.SkipWithError("differs from orv");
            for (auto _ : st) P::direct(a.x, s.n, a.h, s.m, a.y), benchmark::ClobberMemory();
        });
    // orv's FFT specification per call, for the order of the path it takes.
    const int total = s.n + s.m - 1;
    int order = 0;
    if (total >= 512 && s.m >= 64) {
        if (s.n < 3 * s.m) {
            for (order = 2; (1 << order) < total;) ++order;
        } else {
            for (order = 2; (1 << order) < 2 * s.m;) ++order;
            ++order;
        }
    }
    auto* init = tier_fn<typename P::InitAlloc>(P::kInit, "e9");
    auto* fr = tier_fn<typename P::Free>(P::kFree, "e9");
    if (order > 0 && init && fr)
        benchmark::RegisterBenchmark((std::string("conv_spec_") + P::kType + "/" + std::to_string(s.n) + "x" +
                                      std::to_string(s.m) + "/e9-order" + std::to_string(order))
                                         .c_str(),
                                     [order, init, fr](benchmark::State& st) {
                                         for (auto _ : st) {
                                             typename P::Spec* spec = nullptr;
                                             init(&spec, order, 2, 0);
                                             fr(spec);
                                         }
                                     });
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const Size s : kSizes) register_size<F32>(s), register_size<F64>(s);
    return true;
}();

}  // namespace
