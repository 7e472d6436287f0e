// The 2-D real FFT against FFTW's single-precision 2-D real plans (made with
// FFTW_MEASURE before timing): forward to the Pack layout and inverse from
// it, W x H = 256 x 256, 1024 x 1024 and 2048 x 1024, tiers e9 and y8.
// Neither side scales. Names: fft2d_{fwd,inv}/{orv/<tier>,fftw/measure}/WxH.
#include <fftw3.h>

#include <cstring>
#include <random>
#include <string>

#include "fft_common.h"
#include "orvi.h"

namespace {

using orv::bench::aligned;
using orv::test::tier_fn;

struct Size {
    int w, h;
};
constexpr Size kSizes[] = {{256, 256}, {1024, 1024}, {2048, 1024}};
const char* const kTiers[] = {"e9", "y8"};

std::string bench_name(bool fwd, const std::string& who, Size s) {
    return std::string(fwd ? "fft2d_fwd/" : "fft2d_inv/") + who + "/" + std::to_string(s.w) + "x" + std::to_string(s.h);
}

float* random_image(Size s) {
    float* p = aligned<float>(sizeof(float) * s.w * s.h);
    std::mt19937 rng(s.w + s.h);
    std::uniform_real_distribution<float> u(-1, 1);
    for (int i = 0; i < s.w * s.h; ++i) p[i] = u(rng);
    return p;
}

void run_fftw(benchmark::State& state, bool fwd, Size s) {
    const size_t half = static_cast<size_t>(s.h) * (s.w / 2 + 1);
    auto* spectrum = aligned<fftwf_complex>(sizeof(fftwf_complex) * half);
    float* real = aligned<float>(sizeof(float) * s.w * s.h);
    fftwf_plan p = fwd ? fftwf_plan_dft_r2c_2d(s.h, s.w, real, spectrum, FFTW_MEASURE)
                       : fftwf_plan_dft_c2r_2d(s.h, s.w, spectrum, real, FFTW_MEASURE);
    if (!p) {
        state.SkipWithError("no plan");
        return;
    }
    std::memcpy(real, random_image(s), sizeof(float) * s.w * s.h);
    if (!fwd) {  // a real spectrum to invert
        fftwf_plan f = fftwf_plan_dft_r2c_2d(s.h, s.w, real, spectrum, FFTW_ESTIMATE);
        fftwf_execute(f);
        fftwf_destroy_plan(f);
    }
    for (auto _ : state) {
        fftwf_execute(p);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(p);
}

void run_orv(benchmark::State& state, bool fwd, const std::string& tier, Size s) {
    auto* init = tier_fn<decltype(orviFFTInitAlloc_R_32f)>("orviFFTInitAlloc_R_32f", tier);
    auto* bufSize = tier_fn<decltype(orviFFTGetBufSize_R_32f)>("orviFFTGetBufSize_R_32f", tier);
    auto* release = tier_fn<decltype(orviFFTFree_R_32f)>("orviFFTFree_R_32f", tier);
    auto* tfwd = tier_fn<decltype(orviFFTFwd_RToPack_32f_C1R)>("orviFFTFwd_RToPack_32f_C1R", tier);
    auto* tinv = tier_fn<decltype(orviFFTInv_PackToR_32f_C1R)>("orviFFTInv_PackToR_32f_C1R", tier);
    OrviFFTSpec_R_32f* spec = nullptr;
    int size = 0;
    int ox = 0, oy = 0;
    while ((1 << ox) < s.w) ++ox;
    while ((1 << oy) < s.h) ++oy;
    if (!init || init(&spec, ox, oy, OrvFftNoDiv, 0) != orvStsNoErr || bufSize(spec, &size) != orvStsNoErr) {
        state.SkipWithError("no specification");
        return;
    }
    Orv8u* work = aligned<Orv8u>(size);
    const float* src = random_image(s);
    float* pack = aligned<float>(sizeof(float) * s.w * s.h);
    float* out = aligned<float>(sizeof(float) * s.w * s.h);
    const int step = 4 * s.w;
    tfwd(src, step, pack, step, spec, work);
    for (auto _ : state) {
        if (fwd)
            tfwd(src, step, out, step, spec, work);
        else
            tinv(pack, step, out, step, spec, work);
        benchmark::ClobberMemory();
    }
    release(spec);
}

[[maybe_unused]] const bool kRegistered = [] {
    for (bool fwd : {true, false})
        for (Size s : kSizes) {
            benchmark::RegisterBenchmark(bench_name(fwd, "fftw/measure", s).c_str(), [fwd, s](benchmark::State& st) {
                run_fftw(st, fwd, s);
            })->Unit(benchmark::kMicrosecond);
            for (const char* t : kTiers)
                benchmark::RegisterBenchmark(
                    bench_name(fwd, std::string("orv/") + t, s).c_str(),
                    [fwd, s, tier = std::string(t)](benchmark::State& st) { run_orv(st, fwd, tier, s); })
                    ->Unit(benchmark::kMicrosecond);
        }
    return true;
}();

}  // namespace
