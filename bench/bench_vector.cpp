// Fill, copy and arithmetic on every tier, side by side with a plain loop
// compiled with the same tier's flags and with memcpy / memset, at 1,000,
// 100,000 and 10,000,000 elements. Bytes counted are those read plus those
// written; time is CPU time, steadier than wall time on a shared machine.
// bench/report.py turns the JSON output into medians and ratios.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <string>

#include "orvs.h"
#include "support/tier_registry.h"

#define ORV_PLAIN_DECLS(t)                                                              \
    extern "C" void plain_##t##_add_64f(const double*, const double*, double*, int); \
    extern "C" void plain_##t##_addc_64f_I(double, double*, int);                     \
    extern "C" void plain_##t##_mulc_64f(const double*, double, double*, int);        \
    extern "C" void plain_##t##_copy_64f(const double*, double*, int);                \
    extern "C" void plain_##t##_set_64f(double, double*, int);                        \
    extern "C" void plain_##t##_zero_64f(double*, int);
ORV_PLAIN_DECLS(m7)
ORV_PLAIN_DECLS(u8)
ORV_PLAIN_DECLS(n8)
ORV_PLAIN_DECLS(y8)
ORV_PLAIN_DECLS(e9)

namespace {

using orv::test::tiers_of;

// One operation on arrays a (read), b (read) and d (written).
using Kernel = std::function<void(const double* a, const double* b, double* d, int n)>;

struct Plain {
    const char* tier;
    decltype(&plain_m7_add_64f) add;
    decltype(&plain_m7_addc_64f_I) addc;
    decltype(&plain_m7_mulc_64f) mulc;
    decltype(&plain_m7_copy_64f) copy;
    decltype(&plain_m7_set_64f) set;
    decltype(&plain_m7_zero_64f) zero;
};
#define ORV_PLAIN_ROW(t) \
    {#t, plain_##t##_add_64f, plain_##t##_addc_64f_I, plain_##t##_mulc_64f, plain_##t##_copy_64f, plain_##t##_set_64f, plain_##t##_zero_64f}
const Plain kPlain[] = {ORV_PLAIN_ROW(m7), ORV_PLAIN_ROW(u8), ORV_PLAIN_ROW(n8), ORV_PLAIN_ROW(y8), ORV_PLAIN_ROW(e9)};

void run(benchmark::State& state, const Kernel& k, int arraysTouched) {
    const int n = static_cast<int>(state.range(0));
    Orv64f *a = orvsMalloc_64f(n), *b = orvsMalloc_64f(n), *d = orvsMalloc_64f(n);
    for (int i = 0; i < n; ++i) a[i] = 1.0 + i % 7, b[i] = 2.0 - i % 5, d[i] = 0.5;
    for (auto _ : state) {
        k(a, b, d, n);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * n * 8 * arraysTouched);
    orvsFree(a), orvsFree(b), orvsFree(d);
}

void add(const std::string& name, Kernel k, int arraysTouched) {
    benchmark::RegisterBenchmark(name.c_str(), [k, arraysTouched](benchmark::State& s) { run(s, k, arraysTouched); })
        ->Arg(1000)
        ->Arg(100000)
        ->Arg(10000000);
}

// Registered at start-up: for each function, each library tier, then each
// plain loop, then the C library peer.
const bool registered = [] {
    for (auto [t, f] : tiers_of<decltype(orvsAdd_64f)>("orvsAdd_64f"))
        add("Add/orv/" + t, [f](auto a, auto b, auto d, int n) { f(a, b, d, n); }, 3);
    for (const auto& p : kPlain) add(std::string("Add/plain/") + p.tier, [f = p.add](auto a, auto b, auto d, int n) { f(a, b, d, n); }, 3);

    for (auto [t, f] : tiers_of<decltype(orvsAddC_64f_I)>("orvsAddC_64f_I"))
        add("AddC_I/orv/" + t, [f](auto, auto, auto d, int n) { f(1e-300, d, n); }, 2);
    for (const auto& p : kPlain) add(std::string("AddC_I/plain/") + p.tier, [f = p.addc](auto, auto, auto d, int n) { f(1e-300, d, n); }, 2);

    for (auto [t, f] : tiers_of<decltype(orvsMulC_64f)>("orvsMulC_64f"))
        add("MulC/orv/" + t, [f](auto a, auto, auto d, int n) { f(a, 1.5, d, n); }, 2);
    for (const auto& p : kPlain) add(std::string("MulC/plain/") + p.tier, [f = p.mulc](auto a, auto, auto d, int n) { f(a, 1.5, d, n); }, 2);

    for (auto [t, f] : tiers_of<decltype(orvsCopy_64f)>("orvsCopy_64f"))
        add("Copy/orv/" + t, [f](auto a, auto, auto d, int n) { f(a, d, n); }, 2);
    for (const auto& p : kPlain) add(std::string("Copy/plain/") + p.tier, [f = p.copy](auto a, auto, auto d, int n) { f(a, d, n); }, 2);
    add("Copy/libc/memcpy", [](auto a, auto, auto d, int n) { std::memcpy(d, a, 8 * size_t(n)); }, 2);

    for (auto [t, f] : tiers_of<decltype(orvsSet_64f)>("orvsSet_64f"))
        add("Set/orv/" + t, [f](auto, auto, auto d, int n) { f(0.25, d, n); }, 1);
    for (const auto& p : kPlain) add(std::string("Set/plain/") + p.tier, [f = p.set](auto, auto, auto d, int n) { f(0.25, d, n); }, 1);
    add("Set/libc/memset", [](auto, auto, auto d, int n) { std::memset(d, 0x3F, 8 * size_t(n)); }, 1);

    for (auto [t, f] : tiers_of<decltype(orvsZero_64f)>("orvsZero_64f"))
        add("Zero/orv/" + t, [f](auto, auto, auto d, int n) { f(d, n); }, 1);
    for (const auto& p : kPlain) add(std::string("Zero/plain/") + p.tier, [f = p.zero](auto, auto, auto d, int n) { f(d, n); }, 1);
    add("Zero/libc/memset", [](auto, auto, auto d, int n) { std::memset(d, 0, 8 * size_t(n)); }, 1);
    return true;
}();

}  // namespace
