// Real FFTs of every tier beside FFTW 3 (single thread), N = 2^4 .. 2^22:
// forward to Perm and inverse from Perm in single and double precision, and
// forward to Pack in single precision, out of place. orv runs with a
// specification of the same tier (no scaling) and a caller work buffer;
// FFTW with r2c and c2r plans made by FFTW_MEASURE before timing. FFTW's c2r
// overwrites its input unless told otherwise: its plans carry
// FFTW_PRESERVE_INPUT, so every call transforms the same spectrum.
//
// Names: <transform>/<orv|fftw>/<tier|measure>/<N>; the counter mflops is
// 2.5 N log2 N / us. bench/report.py prints the ratios orv/FFTW.
#include <fftw3.h>

#include <cstring>
#include <map>
#include <random>

#include "fft_common.h"
#include "orvs.h"

namespace {

using namespace orv::bench;
constexpr int kLowOrder = 4, kHighOrder = 22;

// What differs between the precisions: element, specification and FFTW's
// names.
struct F32 {
    using T = Orv32f;
    using Spec = OrvFFTSpec_R_32f;
    using Fwd = decltype(orvsFFTFwd_RToPerm_32f);
    using Inv = decltype(orvsFFTInv_PermToR_32f);
    using InitAlloc = decltype(orvsFFTInitAlloc_R_32f);
    using BufSize = decltype(orvsFFTGetBufSize_R_32f);
    static constexpr const char* kInitAlloc = "orvsFFTInitAlloc_R_32f";
    static constexpr const char* kBufSize = "orvsFFTGetBufSize_R_32f";
    using Plan = fftwf_plan;
    using Cx = fftwf_complex;
    static Plan r2c(int n, T* in, Cx* out) { return fftwf_plan_dft_r2c_1d(n, in, out, FFTW_MEASURE); }
    static Plan c2r(int n, Cx* in, T* out) {
        return fftwf_plan_dft_c2r_1d(n, in, out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
    }
    static void run(Plan p) { fftwf_execute(p); }
};
struct F64 {
    using T = Orv64f;
    using Spec = OrvFFTSpec_R_64f;
    using Fwd = decltype(orvsFFTFwd_RToPerm_64f);
    using Inv = decltype(orvsFFTInv_PermToR_64f);
    using InitAlloc = decltype(orvsFFTInitAlloc_R_64f);
    using BufSize = decltype(orvsFFTGetBufSize_R_64f);
    static constexpr const char* kInitAlloc = "orvsFFTInitAlloc_R_64f";
    static constexpr const char* kBufSize = "orvsFFTGetBufSize_R_64f";
    using Plan = fftw_plan;
    using Cx = fftw_complex;
    static Plan r2c(int n, T* in, Cx* out) { return fftw_plan_dft_r2c_1d(n, in, out, FFTW_MEASURE); }
    static Plan c2r(int n, Cx* in, T* out) {
        return fftw_plan_dft_c2r_1d(n, in, out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
    }
    static void run(Plan p) { fftw_execute(p); }
};

// Random real samples, N of them (also read as a Perm spectrum by the
// inverse), and a destination.
template <class P>
std::pair<typename P::T*, typename P::T*> arrays(int order) {
    using T = typename P::T;
    static std::map<int, std::pair<T*, T*>> cache;
    auto it = cache.find(order);
    if (it != cache.end()) return it->second;
    const size_t n = size_t(1) << order;
    T* src = aligned<T>(n * sizeof(T));
    T* dst = aligned<T>((n + 2) * sizeof(T));
    std::mt19937 rng(order);
    std::uniform_real_distribution<T> d(-1, 1);
    for (size_t i = 0; i < n; ++i) src[i] = d(rng);
    return cache.emplace(order, std::make_pair(src, dst)).first->second;
}

template <class P>
void run_fftw(benchmark::State& state, bool forward, int order) {
    const int n = 1 << order;
    auto* spectrum = aligned<typename P::Cx>((n / 2 + 1) * sizeof(typename P::Cx));
    auto* real = aligned<typename P::T>(n * sizeof(typename P::T));
    typename P::Plan p = forward ? P::r2c(n, real, spectrum) : P::c2r(n, spectrum, real);
    if (!p) std::abort();
    std::memcpy(real, arrays<P>(order).first, n * sizeof(typename P::T));
    std::memset(spectrum, 0, (n / 2 + 1) * sizeof(typename P::Cx));
    for (auto _ : state) {
        P::run(p);
        benchmark::ClobberMemory();
    }
    count_flops(state, 2.5, order);
}

template <class P, class Fn>
void run_orv(benchmark::State& state, const std::string& tier, Fn* fn, int order) {
    auto* initAlloc = tier_fn<typename P::InitAlloc>(P::kInitAlloc, tier);
    auto* bufSize = tier_fn<typename P::BufSize>(P::kBufSize, tier);
    typename P::Spec* spec = nullptr;
    int size = 0;
    if (!initAlloc || !bufSize || initAlloc(&spec, order, OrvFftNoDiv, 0) != orvStsNoErr ||
        bufSize(spec, &size) != orvStsNoErr) {
        state.SkipWithError("no specification");
        return;
    }
    Orv8u* work = size > 0 ? aligned<Orv8u>(size) : nullptr;
    const auto [src, dst] = arrays<P>(order);
    for (auto _ : state) {
        fn(src, dst, spec, work);
        benchmark::ClobberMemory();
    }
    count_flops(state, 2.5, order);
    // The specification is kept: freeing needs the tier's Free, and the run
    // holds at most one per tier, order and transform.
}

template <class P, class Fn>
void register_kind(const char* kind, const char* orvName, bool forward) {
    for (int order = kLowOrder; order <= kHighOrder; ++order) {
        benchmark::RegisterBenchmark(name(kind, "fftw", "measure", order).c_str(),
                                     [forward, order](benchmark::State& s) { run_fftw<P>(s, forward, order); });
        for (const auto& t : orv::test::tiers_of<Fn>(orvName))
            benchmark::RegisterBenchmark(name(kind, "orv", t.tier, order).c_str(),
                                         [tier = t.tier, fn = t.fn, order](benchmark::State& s) {
                                             run_orv<P>(s, tier, fn, order);
                                         });
    }
}

[[maybe_unused]] const bool kRegistered = [] {
    register_kind<F32, F32::Fwd>("rfft_fwd_perm_32f", "orvsFFTFwd_RToPerm_32f", true);
    register_kind<F32, F32::Inv>("rfft_inv_perm_32f", "orvsFFTInv_PermToR_32f", false);
    register_kind<F32, F32::Fwd>("rfft_fwd_pack_32f", "orvsFFTFwd_RToPack_32f", true);
    register_kind<F64, F64::Fwd>("rfft_fwd_perm_64f", "orvsFFTFwd_RToPerm_64f", true);
    register_kind<F64, F64::Inv>("rfft_inv_perm_64f", "orvsFFTInv_PermToR_64f", false);
    return true;
}();

}  // namespace
