// Complex single-precision FFTs of every tier beside FFTW 3 (single thread),
// N = 2^4 .. 2^22 (medium and large paths): forward and
// inverse, out of place and in place. orv runs with a specification from the
// same tier's InitAlloc (no scaling) and a caller work buffer; FFTW with a
// plan made by FFTW_MEASURE before timing and executed on the same arrays
// through fftwf_execute_dft. Arrays are 32-byte aligned for both.
//
// Names: <transform>/<orv|fftw>/<tier|measure>/<N>; time per iteration is one
// transform (CPU time); the counter mflops is 5 N log2 N / us. Then the
// set-up cost: InitAlloc plus Free of a specification against planning plus
// destroying an FFTW plan with FFTW_ESTIMATE and with FFTW_MEASURE, wisdom
// forgotten before each plan. bench/report.py prints the ratios orv/FFTW.
//
// In place, the data are not refreshed between calls: unscaled transforms
// grow them by about sqrt(N) a call until they overflow to infinity and NaN,
// which cost no extra time in SSE and AVX arithmetic (only denormals would).
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "orvs.h"
#include "fft_common.h"

namespace {

using namespace orv::bench;
using orv::test::tiers_of;
using Transform = decltype(orvsFFTFwd_CToC_32fc);
using InitAlloc = decltype(orvsFFTInitAlloc_C_32fc);
using Free = decltype(orvsFFTFree_C_32fc);
using GetBufSize = decltype(orvsFFTGetBufSize_C_32fc);

constexpr int kLowOrder = 4;
// Up to 2^16 the medium paths (and the first large orders of n8 and m7);
// to 2^22 the blocked large transforms of every tier.
constexpr int kHighestTop = 22;

// Source, destination and in-place arrays of N complex values, one set per
// order and kept for the run: the source uniform in [-1, 1).
struct Arrays {
    fftwf_complex* src;
    fftwf_complex* dst;
    fftwf_complex* buf;
};
const Arrays& arrays(int order) {
    static std::map<int, Arrays> cache;
    auto it = cache.find(order);
    if (it != cache.end()) return it->second;
    const size_t n = size_t(1) << order, bytes = n * sizeof(fftwf_complex);
    Arrays a{aligned<fftwf_complex>(bytes), aligned<fftwf_complex>(bytes), aligned<fftwf_complex>(bytes)};
    std::mt19937 rng(order);
    std::uniform_real_distribution<float> d(-1.0f, 1.0f);
    for (size_t i = 0; i < n; ++i) a.src[i][0] = d(rng), a.src[i][1] = d(rng);
    std::memcpy(a.dst, a.src, bytes);
    std::memcpy(a.buf, a.src, bytes);
    return cache.emplace(order, a).first->second;
}

struct Kind {
    const char* name;
    bool forward, inPlace;
};
constexpr Kind kKinds[] = {
    {"fft_fwd_oop", true, false}, {"fft_fwd_ip", true, true}, {"fft_inv_oop", false, false}, {"fft_inv_ip", false, true}};

void count(benchmark::State& state, int order) { count_flops(state, 5.0, order); }

// FFTW: one MEASURE plan per order, direction and placement, made on scratch
// arrays (measuring overwrites them) of the same alignment.
fftwf_plan fftw_plan(int order, bool forward, bool inPlace) {
    static std::map<std::tuple<int, bool, bool>, fftwf_plan> cache;
    const auto key = std::make_tuple(order, forward, inPlace);
    auto it = cache.find(key);
    if (it != cache.end()) return it->second;
    const int n = 1 << order;
    fftwf_complex* in = aligned<fftwf_complex>(n * sizeof(fftwf_complex));
    fftwf_complex* out = inPlace ? in : aligned<fftwf_complex>(n * sizeof(fftwf_complex));
    fftwf_plan p = fftwf_plan_dft_1d(n, in, out, forward ? FFTW_FORWARD : FFTW_BACKWARD, FFTW_MEASURE);
    if (!p) std::abort();
    return cache.emplace(key, p).first->second;
}

void run_fftw(benchmark::State& state, Kind k, int order) {
    const fftwf_plan p = fftw_plan(order, k.forward, k.inPlace);
    const Arrays& a = arrays(order);
    fftwf_complex* in = k.inPlace ? a.buf : a.src;
    fftwf_complex* out = k.inPlace ? a.buf : a.dst;
    for (auto _ : state) {
        fftwf_execute_dft(p, in, out);
        benchmark::ClobberMemory();
    }
    count(state, order);
}

// The functions of one tier, looked up by name in the registry of built
// tier functions: a tier whose transforms are not built yet is left out.
struct OrvTier {
    std::string tier;
    Transform* fwd;
    Transform* inv;
    InitAlloc* initAlloc;
    Free* free;
    GetBufSize* bufSize;
};
std::vector<OrvTier> orv_tiers() {
    std::vector<OrvTier> out;
    for (const auto& t : tiers_of<Transform>("orvsFFTFwd_CToC_32fc")) {
        OrvTier o{t.tier,
                  t.fn,
                  tier_fn<Transform>("orvsFFTInv_CToC_32fc", t.tier),
                  tier_fn<InitAlloc>("orvsFFTInitAlloc_C_32fc", t.tier),
                  tier_fn<Free>("orvsFFTFree_C_32fc", t.tier),
                  tier_fn<GetBufSize>("orvsFFTGetBufSize_C_32fc", t.tier)};
        if (o.inv && o.initAlloc && o.free && o.bufSize) out.push_back(o);
    }
    return out;
}

// A specification of the tier (no scaling) and its work buffer, one per
// tier and order, kept for the run.
struct OrvSpec {
    OrvFFTSpec_C_32fc* spec;
    Orv8u* work;
};
const OrvSpec& orv_spec(const OrvTier& t, int order) {
    static std::map<std::pair<std::string, int>, OrvSpec> cache;
    const auto key = std::make_pair(t.tier, order);
    auto it = cache.find(key);
    if (it != cache.end()) return it->second;
    OrvSpec s{};
    int size = 0;
    if (t.initAlloc(&s.spec, order, OrvFftNoDiv, orvAlgHintNone) != orvStsNoErr) std::abort();
    if (t.bufSize(s.spec, &size) != orvStsNoErr) std::abort();
    s.work = size > 0 ? aligned<Orv8u>(size) : nullptr;
    return cache.emplace(key, s).first->second;
}

void run_orv(benchmark::State& state, const OrvTier& t, Kind k, int order) {
    const OrvSpec& s = orv_spec(t, order);
    const Arrays& a = arrays(order);
    const auto* in = reinterpret_cast<const Orv32fc*>(k.inPlace ? a.buf : a.src);
    auto* out = reinterpret_cast<Orv32fc*>(k.inPlace ? a.buf : a.dst);
    Transform* f = k.forward ? t.fwd : t.inv;
    if (const OrvStatus st = f(in, out, s.spec, s.work); st != orvStsNoErr) {
        state.SkipWithError(("transform failed, status " + std::to_string(st)).c_str());
        return;
    }
    for (auto _ : state) {
        f(in, out, s.spec, s.work);
        benchmark::ClobberMemory();
    }
    count(state, order);
}

// Set-up: a specification built and freed, against a plan made and
// destroyed; FFTW's wisdom is forgotten (untimed) before each plan.
void init_orv(benchmark::State& state, InitAlloc* initAlloc, Free* free, int order) {
    for (auto _ : state) {
        OrvFFTSpec_C_32fc* spec = nullptr;
        if (initAlloc(&spec, order, OrvFftNoDiv, orvAlgHintNone) != orvStsNoErr) {
            state.SkipWithError("InitAlloc failed");
            break;
        }
        free(spec);
    }
}
void init_fftw(benchmark::State& state, unsigned flags, int order) {
    const int n = 1 << order;
    fftwf_complex* in = aligned<fftwf_complex>(n * sizeof(fftwf_complex));
    fftwf_complex* out = aligned<fftwf_complex>(n * sizeof(fftwf_complex));
    for (auto _ : state) {
        state.PauseTiming();
        fftwf_forget_wisdom();
        state.ResumeTiming();
        fftwf_plan p = fftwf_plan_dft_1d(n, in, out, FFTW_FORWARD, flags);
        fftwf_destroy_plan(p);
    }
}

[[maybe_unused]] const bool kRegistered = [] {
    const std::vector<OrvTier> tiers = orv_tiers();
    for (const Kind& k : kKinds)
        for (int order = kLowOrder; order <= kHighestTop; ++order) {
            benchmark::RegisterBenchmark(name(k.name, "fftw", "measure", order).c_str(),
                                         [k, order](benchmark::State& s) { run_fftw(s, k, order); });
            for (const OrvTier& t : tiers)
                benchmark::RegisterBenchmark(name(k.name, "orv", t.tier, order).c_str(),
                                                 [t, k, order](benchmark::State& s) { run_orv(s, t, k, order); });
        }
    for (int order : {6, 10, 14}) {
        benchmark::RegisterBenchmark(name("fft_init", "fftw", "estimate", order).c_str(),
                                     [order](benchmark::State& s) { init_fftw(s, FFTW_ESTIMATE, order); });
        benchmark::RegisterBenchmark(name("fft_init", "fftw", "measure", order).c_str(),
                                     [order](benchmark::State& s) { init_fftw(s, FFTW_MEASURE, order); });
        for (const auto& t : tiers_of<InitAlloc>("orvsFFTInitAlloc_C_32fc")) {
            Free* free = tier_fn<Free>("orvsFFTFree_C_32fc", t.tier);
            if (!free) continue;
            benchmark::RegisterBenchmark(name("fft_init", "orv", t.tier, order).c_str(),
                                         [f = t.fn, free, order](benchmark::State& s) { init_orv(s, f, free, order); });
        }
    }
    return true;
}();

}  // namespace
