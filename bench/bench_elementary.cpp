// The elementary functions of every tier against their peers, at 1,000 and
// 100,000 elements: the exponential against the C library's exp in a loop
// (compiled per tier) and SLEEF's AVX exp where installed; the reciprocal
// against a division loop; the Gaussian generator against
// std::normal_distribution over std::mt19937_64.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "orvs.h"
#include "support/tier_registry.h"
#ifdef ORV_BENCH_SLEEF
#include "sleef/exp_sleef.h"
#endif

#define PLAIN_DECLARE(name)                            \
    void plain_m7_##name(const double*, double*, int); \
    void plain_u8_##name(const double*, double*, int); \
    void plain_n8_##name(const double*, double*, int); \
    void plain_y8_##name(const double*, double*, int); \
    void plain_e9_##name(const double*, double*, int);
PLAIN_DECLARE(exp_64f)
PLAIN_DECLARE(inv_64f)

namespace {

std::vector<double> uniform(int len, double lo, double hi) {
    std::mt19937_64 rng(1);
    std::uniform_real_distribution<double> d(lo, hi);
    std::vector<double> v(len);
    for (double& x : v) x = d(rng);
    return v;
}

// Source to destination, len elements in [lo, hi]; bytes read and written.
template <class Fn>
void run_map(benchmark::State& state, Fn fn, double lo, double hi) {
    const int len = static_cast<int>(state.range(0));
    const auto src = uniform(len, lo, hi);
    std::vector<double> dst(len);
    for (auto _ : state) {
        fn(src.data(), dst.data(), len);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * len * 2 * int64_t(sizeof(double)));
}

void gauss_std(benchmark::State& state) {
    const int len = static_cast<int>(state.range(0));
    std::vector<double> dst(len);
    std::mt19937_64 rng(1);
    std::normal_distribution<double> d(0.0, 1.0);
    for (auto _ : state) {
        for (double& x : dst) x = d(rng);
        benchmark::DoNotOptimize(dst.data());
    }
    state.SetBytesProcessed(state.iterations() * len * int64_t(sizeof(double)));
}

template <class Fn>
void add_map(const std::string& name, Fn* fn, double lo, double hi) {
    benchmark::RegisterBenchmark(name.c_str(), [fn, lo, hi](benchmark::State& s) { run_map(s, fn, lo, hi); })
        ->Arg(1000)
        ->Arg(100000);
}

void gauss_orv(benchmark::State& state, decltype(orvsRandGauss_Direct_64f)* fn) {
    const int len = static_cast<int>(state.range(0));
    std::vector<double> dst(len);
    unsigned seed = 1;
    for (auto _ : state) {
        fn(dst.data(), len, 0.0, 1.0, &seed);
        benchmark::DoNotOptimize(dst.data());
    }
    state.SetBytesProcessed(state.iterations() * len * int64_t(sizeof(double)));
}

bool register_all() {
    using Plain = void(const double*, double*, int);
    Plain* const plainExp[] = {plain_m7_exp_64f, plain_u8_exp_64f, plain_n8_exp_64f, plain_y8_exp_64f,
                               plain_e9_exp_64f};
    Plain* const plainInv[] = {plain_m7_inv_64f, plain_u8_inv_64f, plain_n8_inv_64f, plain_y8_inv_64f,
                               plain_e9_inv_64f};
    const char* tiers[] = {"m7", "u8", "n8", "y8", "e9"};
    // exp over most of its finite range; the reciprocal inside the range that
    // every tier's fast path takes.
    for (const auto& t : orv::test::tiers_of<decltype(orvsExp_64f)>("orvsExp_64f"))
        add_map("Exp/" + t.tier, t.fn, -700, 700);
    for (int i = 0; i < 5; ++i) add_map(std::string("Exp/plain_") + tiers[i], plainExp[i], -700, 700);
#ifdef ORV_BENCH_SLEEF
    add_map("Exp/sleef_avx", sleef_exp_avx, -700, 700);
#endif
    for (const auto& t : orv::test::tiers_of<decltype(orvsInv_64f_A26)>("orvsInv_64f_A26"))
        add_map("Inv/" + t.tier, t.fn, 1e-3, 1e3);
    for (int i = 0; i < 5; ++i) add_map(std::string("Inv/plain_") + tiers[i], plainInv[i], 1e-3, 1e3);
    for (const auto& t : orv::test::tiers_of<decltype(orvsRandGauss_Direct_64f)>("orvsRandGauss_Direct_64f"))
        benchmark::RegisterBenchmark(("Gauss/" + t.tier).c_str(), gauss_orv, t.fn)->Arg(1000)->Arg(100000);
    benchmark::RegisterBenchmark("Gauss/std_mt19937_64", gauss_std)->Arg(1000)->Arg(100000);
    return true;
}

const bool registered = register_all();

}  // namespace
