// The scalar cos, sin and log against the C library's: a loop calling each
// over 1,000 and 100,000 arguments. Both are called through pointers taken
// from their own libraries, so link order plays no part.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cmath>
#include <random>
#include <vector>

#include "orvcore.h"

namespace {

using Fn = double (*)(double);

void* orv_handle() {
    Dl_info info{};
    dladdr(reinterpret_cast<void*>(&orvGetCpuType), &info);
    return dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
}

Fn resolve(bool ours, const char* name) {
    static void* orv = orv_handle();
    static void* m = dlopen("libm.so.6", RTLD_NOW);
    return reinterpret_cast<Fn>(dlsym(ours ? orv : m, name));
}

// cos and sin over [-8 pi, 8 pi]; log over [2^-20, 2^20], log-uniform.
std::vector<double> arguments(bool forLog, size_t n) {
    std::mt19937_64 g(42);
    std::vector<double> xs(n);
    std::uniform_real_distribution<double> u(-8 * M_PI, 8 * M_PI), e(-20, 20);
    for (double& x : xs) x = forLog ? std::exp2(e(g)) : u(g);
    return xs;
}

void BM_Scalar(benchmark::State& state, bool ours, const char* name) {
    Fn f = resolve(ours, name);
    if (!f) {
        state.SkipWithError("function not found");
        return;
    }
    std::vector<double> xs = arguments(name[0] == 'l', static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        double sum = 0;
        for (double x : xs) sum += f(x);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<int64_t>(sizeof(double)));
}

BENCHMARK_CAPTURE(BM_Scalar, orv_cos, true, "cos")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Scalar, libm_cos, false, "cos")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Scalar, orv_sin, true, "sin")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Scalar, libm_sin, false, "sin")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Scalar, orv_log, true, "log")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Scalar, libm_log, false, "log")->Arg(1000)->Arg(100000);

}  // namespace
