// Sums, the dot product and the band threshold of every tier, each beside
// the plain loop compiled with the same tier's flags, at 1,000, 100,000 and
// 10,000,000 elements. Names: <function>/<tier>/<lib|plain>/<len>; bytes/s
// counts every byte read and written; times are CPU time, steadier than wall
// time on a shared machine. bench/report.py pairs the medians.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "orvs.h"
#include "support/tier_registry.h"

#define ORV_PLAIN_DECLS(t)                                                                                   \
    double plain_##t##_sum_64f(const double*, int);                                                        \
    double plain_##t##_sum_32f(const float*, int);                                                         \
    double plain_##t##_dotprod_64f(const double*, const double*, int);                                     \
    void plain_##t##_threshold_64f(const double*, double*, int, double, double, double, double);
ORV_PLAIN_DECLS(m7)
ORV_PLAIN_DECLS(u8)
ORV_PLAIN_DECLS(n8)
ORV_PLAIN_DECLS(y8)
ORV_PLAIN_DECLS(e9)

namespace {

struct Plain {
    const char* tier;
    double (*sum64)(const double*, int);
    double (*sum32)(const float*, int);
    double (*dot64)(const double*, const double*, int);
    void (*thresh)(const double*, double*, int, double, double, double, double);
};
#define ORV_PLAIN_ROW(t) {#t, plain_##t##_sum_64f, plain_##t##_sum_32f, plain_##t##_dotprod_64f, plain_##t##_threshold_64f}
const Plain kPlain[] = {ORV_PLAIN_ROW(m7), ORV_PLAIN_ROW(u8), ORV_PLAIN_ROW(n8), ORV_PLAIN_ROW(y8), ORV_PLAIN_ROW(e9)};

const Plain& plain(const std::string& tier) {
    for (const Plain& p : kPlain)
        if (tier == p.tier) return p;
    std::abort();
}

constexpr int kLengths[] = {1000, 100000, 10000000};

// 64-byte aligned arrays, filled once per length and kept for the run.
template <class T>
T* data(int n, int which) {
    static std::vector<std::pair<std::pair<int, int>, T*>> cache;
    for (auto& [key, p] : cache)
        if (key == std::make_pair(n, which)) return p;
    T* p = static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
    for (int i = 0; i < n; ++i) p[i] = static_cast<T>(((i * 7919 + which * 31) % 2001) - 1000) / 256;
    cache.push_back({{n, which}, p});
    return p;
}

// Registers the library variant and the plain loop of one tier at each length.
void add(const std::string& fn, const std::string& tier, size_t bytesPerElement,
         const std::function<void(int)>& lib, const std::function<void(int)>& plainLoop) {
    for (int n : kLengths)
        for (bool isLib : {true, false}) {
            std::string name = fn + "/" + tier + "/" + (isLib ? "lib" : "plain") + "/" + std::to_string(n);
            auto body = isLib ? lib : plainLoop;
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                for (auto _ : state) body(n);
                state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * n * bytesPerElement);
            });
        }
}

[[maybe_unused]] const bool kRegistered = [] {
    using orv::test::tiers_of;
    for (int n : kLengths) {
        data<double>(n, 0), data<double>(n, 1), data<double>(n, 2);
        data<float>(n, 0);
    }
    for (auto& t : tiers_of<decltype(orvsSum_64f)>("orvsSum_64f")) {
        auto p = plain(t.tier);
        add("sum_64f", t.tier, 8,
            [f = t.fn](int n) {
                double s;
                f(data<double>(n, 0), n, &s);
                benchmark::DoNotOptimize(s);
            },
            [p](int n) { benchmark::DoNotOptimize(p.sum64(data<double>(n, 0), n)); });
    }
    for (int hint : {orvAlgHintFast, orvAlgHintAccurate})
        for (auto& t : tiers_of<decltype(orvsSum_32f)>("orvsSum_32f")) {
            auto p = plain(t.tier);
            add(hint == orvAlgHintFast ? "sum_32f_fast" : "sum_32f_accurate", t.tier, 4,
                [f = t.fn, hint](int n) {
                    float s;
                    f(data<float>(n, 0), n, &s, hint);
                    benchmark::DoNotOptimize(s);
                },
                [p](int n) { benchmark::DoNotOptimize(p.sum32(data<float>(n, 0), n)); });
        }
    for (auto& t : tiers_of<decltype(orvsDotProd_64f)>("orvsDotProd_64f")) {
        auto p = plain(t.tier);
        add("dotprod_64f", t.tier, 16,
            [f = t.fn](int n) {
                double s;
                f(data<double>(n, 0), data<double>(n, 1), n, &s);
                benchmark::DoNotOptimize(s);
            },
            [p](int n) { benchmark::DoNotOptimize(p.dot64(data<double>(n, 0), data<double>(n, 1), n)); });
    }
    for (auto& t : tiers_of<decltype(orvsThreshold_LTValGTVal_64f)>("orvsThreshold_LTValGTVal_64f")) {
        auto p = plain(t.tier);
        add("threshold_64f", t.tier, 16,
            [f = t.fn](int n) {
                f(data<double>(n, 0), data<double>(n, 2), n, -1.0, -2.0, 1.0, 2.0);
                benchmark::ClobberMemory();
            },
            [p](int n) {
                p.thresh(data<double>(n, 0), data<double>(n, 2), n, -1.0, -2.0, 1.0, 2.0);
                benchmark::ClobberMemory();
            });
    }
    return true;
}();

}  // namespace
