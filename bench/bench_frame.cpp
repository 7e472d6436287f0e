// The cost of a dispatched call: the stub against a direct call of the tier.
#include <benchmark/benchmark.h>

#include "orvs.h"

namespace {

void BM_StubCall(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(orvsGetLibVersion());
}
BENCHMARK(BM_StubCall);

void BM_DirectCall(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(e9_orvsGetLibVersion());
}
BENCHMARK(BM_DirectCall);

void BM_MallocFree(benchmark::State& state) {
    for (auto _ : state) {
        Orv64f* p = orvsMalloc_64f(static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(p);
        orvsFree(p);
    }
}
BENCHMARK(BM_MallocFree)->Arg(1000)->Arg(100000);

}  // namespace
