// Helpers shared by the FFT benchmarks: aligned blocks kept for the run, a
// tier's function by name from the registry, benchmark names and the flop
// counter.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/tier_registry.h"

namespace orv::bench {

// A 32-byte aligned block of bytes, released with the program.
template <class T>
inline T* aligned(size_t bytes) {
    static std::vector<void*> keep;
    void* p = std::aligned_alloc(32, (bytes + 31) / 32 * 32);
    if (!p) std::abort();
    keep.push_back(p);
    return static_cast<T*>(p);
}

// The variant of one tier, or null when that tier does not build it.
using orv::test::tier_fn;
inline std::string name(const char* kind, const std::string& who, const std::string& tier, int order) {
    return std::string(kind) + "/" + who + "/" + tier + "/" + std::to_string(1 << order);
}

// mflops as a rate: flopsPerPointLog * N * log2 N per transform.
inline void count_flops(benchmark::State& state, double flopsPerPointLog, int order) {
    const double n = std::ldexp(1.0, order);
    state.counters["mflops"] = benchmark::Counter(flopsPerPointLog * n * order * 1e-6 * double(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}

}  // namespace orv::bench
