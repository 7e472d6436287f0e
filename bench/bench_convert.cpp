// Conversions against plain loops compiled with the same tier's flags:
// orvsConvert_64f32f, and orvsConvert_32f8u_Sfs rounding to nearest and
// truncating, at 1e3, 1e5 and 1e7 elements. Bytes processed count the
// source read and the destination written.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "orvs.h"
#include "support/tier_registry.h"

#define ORV_DECLARE_PLAIN(t)                                          \
    void plain_##t##_convert_64f32f(const double*, float*, int);      \
    void plain_##t##_convert_32f8u_near(const float*, uint8_t*, int); \
    void plain_##t##_convert_32f8u_trunc(const float*, uint8_t*, int);
ORV_DECLARE_PLAIN(m7)
ORV_DECLARE_PLAIN(u8)
ORV_DECLARE_PLAIN(n8)
ORV_DECLARE_PLAIN(y8)
ORV_DECLARE_PLAIN(e9)
#undef ORV_DECLARE_PLAIN

namespace {

struct PlainSet {
    const char* tier;
    void (*narrow)(const double*, float*, int);
    void (*near)(const float*, uint8_t*, int);
    void (*trunc)(const float*, uint8_t*, int);
};
#define ORV_PLAIN_SET(t) {#t, plain_##t##_convert_64f32f, plain_##t##_convert_32f8u_near, plain_##t##_convert_32f8u_trunc}
const PlainSet kPlain[] = {ORV_PLAIN_SET(m7), ORV_PLAIN_SET(u8), ORV_PLAIN_SET(n8), ORV_PLAIN_SET(y8),
                           ORV_PLAIN_SET(e9)};
#undef ORV_PLAIN_SET

const PlainSet& plain_of(const std::string& tier) {
    for (const auto& p : kPlain)
        if (tier == p.tier) return p;
    return kPlain[0];
}

// Uniform values in [lo, hi], made once per element type and grown on demand.
template <class T>
const std::vector<T>& values(size_t n, T lo, T hi) {
    static std::vector<T> v;
    if (v.size() < n) {
        std::mt19937 rng(1);
        std::uniform_real_distribution<T> u(lo, hi);
        v.resize(n);
        for (auto& x : v) x = u(rng);
    }
    return v;
}
const std::vector<double>& doubles(size_t n) { return values<double>(n, -1e6, 1e6); }
const std::vector<float>& floats(size_t n) { return values<float>(n, -50.0f, 300.0f); }

template <class S, class D, class Run>
void run_conversion(benchmark::State& state, const std::vector<S>& all, Run run) {
    const int n = static_cast<int>(state.range(0));
    std::vector<D> dst(n);
    for (auto _ : state) {
        run(all.data(), dst.data(), n);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * n * (sizeof(S) + sizeof(D)));
}

void args(benchmark::internal::Benchmark* b) { b->Arg(1000)->Arg(100000)->Arg(10000000)->MinTime(0.2); }

// Library and plain loop of each tier, registered next to each other.
int register_all() {
    using Narrow = decltype(orvsConvert_64f32f);
    using ToU8 = OrvStatus(const Orv32f*, Orv8u*, int, int, int);
    for (const auto& tf : orv::test::tiers_of<Narrow>("orvsConvert_64f32f")) {
        const PlainSet& p = plain_of(tf.tier);
        Narrow* fn = tf.fn;
        benchmark::RegisterBenchmark(("64f32f/" + tf.tier + "/orv").c_str(), [fn](benchmark::State& s) {
            run_conversion<double, float>(s, doubles(s.range(0)), [fn](auto a, auto b, int n) { fn(a, b, n); });
        })->Apply(args);
        benchmark::RegisterBenchmark(("64f32f/" + tf.tier + "/plain").c_str(), [p](benchmark::State& s) {
            run_conversion<double, float>(s, doubles(s.range(0)), p.narrow);
        })->Apply(args);
    }
    for (int mode : {1, 0}) {
        const std::string m = mode == 1 ? "near" : "trunc";
        for (const auto& tf : orv::test::tiers_of<ToU8>("orvsConvert_32f8u_Sfs")) {
            const PlainSet& p = plain_of(tf.tier);
            ToU8* fn = tf.fn;
            benchmark::RegisterBenchmark(("32f8u_" + m + "/" + tf.tier + "/orv").c_str(), [fn, mode](benchmark::State& s) {
                run_conversion<float, Orv8u>(s, floats(s.range(0)), [fn, mode](auto a, auto b, int n) { fn(a, b, n, mode, 0); });
            })->Apply(args);
            benchmark::RegisterBenchmark(("32f8u_" + m + "/" + tf.tier + "/plain").c_str(), [p, mode](benchmark::State& s) {
                run_conversion<float, Orv8u>(s, floats(s.range(0)), mode == 1 ? p.near : p.trunc);
            })->Apply(args);
        }
    }
    return 0;
}
const int kRegistered = register_all();

}  // namespace
