// Accuracy of cos, sin and log against long double references: random
// sweeps over the whole domain, the hard cases (arguments next to multiples
// of pi/2, huge, tiny and subnormal arguments, the boundaries between the
// reduction paths, logarithms next to 1), and agreement of the bodies.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "libm_access.h"

namespace orv::test {
namespace {

// Every result within this many units in the last place. The layer is
// designed for about half an ulp plus a few hundredths.
constexpr double kMaxUlp = 0.55;

struct Fn {
    const char* name;
    ScalarFn fn;
    long double (*ref)(long double);
};

// The entry and its bodies.
std::vector<Fn> fns(std::initializer_list<const char*> names, long double (*ref)(long double)) {
    std::vector<Fn> r;
    for (const char* n : names) {
        // The .N bodies round with SSE4.1; the library calls them only where it exists.
        if (std::strstr(n, ".N") && !__builtin_cpu_supports("sse4.1")) continue;
        r.push_back({n, orv_sym<ScalarFn>(n), ref});
    }
    return r;
}
std::vector<Fn> trig_fns() {
    std::vector<Fn> r = fns({"cos", "cos.A", "cos.L", "cos.N"}, cosl), s = fns({"sin", "sin.A", "sin.L", "sin.N"}, sinl);
    r.insert(r.end(), s.begin(), s.end());
    return r;
}
std::vector<Fn> log_fns() { return fns({"log", "log.A", "log.L"}, logl); }

double from_bits(uint64_t b) {
    double d;
    std::memcpy(&d, &b, 8);
    return d;
}

// Worst error of f over xs, with the argument where it occurs.
struct Worst {
    double ulp = 0, at = 0;
};
Worst worst_of(const Fn& f, const std::vector<double>& xs) {
    Worst w;
    for (double x : xs) {
        double e = ulp_error(f.fn(x), f.ref(x));
        if (!(e <= w.ulp)) w = {e, x};
    }
    return w;
}

void expect_accurate(const std::vector<Fn>& fns, const std::vector<double>& xs, const char* what) {
    for (const Fn& f : fns) {
        Worst w = worst_of(f, xs);
        EXPECT_LE(w.ulp, kMaxUlp) << f.name << " on " << what << ": at " << std::hexfloat << w.at;
    }
}

// Arguments with random mantissas and exponents spread over [lo, hi] (as
// powers of two), random signs if asked.
std::vector<double> spread(std::mt19937_64& g, size_t n, int lo, int hi, bool signs) {
    std::vector<double> xs(n);
    std::uniform_int_distribution<int> ex(lo, hi);
    for (double& x : xs) {
        uint64_t b = (g() & 0x000FFFFFFFFFFFFFull) | (static_cast<uint64_t>(ex(g) + 1023) << 52);
        if (signs && (g() & 1)) b |= 1ull << 63;
        x = from_bits(b);
    }
    return xs;
}

TEST(LibmAccuracy, SinCosRandomOverTheWholeDomain) {
    std::mt19937_64 g(20240601);
    // Half over the main range, where most arguments live, half over every
    // exponent up to the largest double.
    std::vector<double> xs = spread(g, 500000, -30, 16, true);
    std::uniform_real_distribution<double> u(-100, 100);
    for (int i = 0; i < 250000; ++i) xs.push_back(u(g));
    std::vector<double> big = spread(g, 250000, 17, 1023, true);
    xs.insert(xs.end(), big.begin(), big.end());
    expect_accurate({fns({"cos"}, cosl)[0], fns({"sin"}, sinl)[0]}, xs, "random arguments");
    // The bodies on a sample.
    xs.resize(200000);
    xs.insert(xs.end(), big.begin(), big.begin() + 50000);
    expect_accurate(trig_fns(), xs, "random arguments");
}

TEST(LibmAccuracy, LogRandomOverTheWholeDomain) {
    std::mt19937_64 g(7);
    std::vector<double> xs = spread(g, 700000, -1022, 1023, false);
    std::uniform_real_distribution<double> near1(0.9, 1.1);
    for (int i = 0; i < 200000; ++i) xs.push_back(near1(g));
    for (int i = 0; i < 100000; ++i) xs.push_back(from_bits(g() & 0x000FFFFFFFFFFFFFull));  // subnormals
    expect_accurate({log_fns()[0]}, xs, "random arguments");
    xs.resize(200000);
    expect_accurate(log_fns(), xs, "random arguments");
}

// The doubles nearest to n pi/2 and their neighbours: the reduced argument
// is tiny there, and sin or cos with it. n runs over the whole main range
// (below 90112) and a sample beyond.
TEST(LibmAccuracy, SinCosNextToMultiplesOfHalfPi) {
    const long double halfPi = 1.57079632679489661923132169163975144L;
    std::vector<double> xs;
    for (long n = 1; n < 60000; ++n) {
        double x = static_cast<double>(n * halfPi);
        xs.insert(xs.end(), {x, std::nextafter(x, 0.0), std::nextafter(x, 1e300), -x});
    }
    for (long n = 60000; n < 1L << 40; n = n * 5 / 4 + 7) xs.push_back(static_cast<double>(n * halfPi));
    // The closest approach of any double to a multiple of pi/2, and a few
    // known near misses of large arguments.
    xs.push_back(std::ldexp(6381956970095103.0, 797));
    xs.push_back(std::ldexp(-6381956970095103.0, 797));
    xs.push_back(std::ldexp(5261692873635770.0, 499));
    xs.push_back(std::ldexp(8248251512623010.0, -28));
    expect_accurate(trig_fns(), xs, "multiples of pi/2");
}

TEST(LibmAccuracy, SinCosPathBoundariesAndExtremes) {
    std::vector<double> xs = {
        0x1p-252, std::nextafter(0x1p-252, 0.0), 0x1.0p-251, 0x1p-30, 0x1p-27, 0x1p-26,  // tiny path edge
        90112.0, std::nextafter(90112.0, 0.0), std::nextafter(90112.0, 1e9),            // main/large edge
        0x1.921fb54442d18p-5, 0x1.921fb54442d19p-5,                                      // pi/64
        1e22, 1e300, 0x1.fffffffffffffp+1023, 0x1p+1023, 0x1p+1000, 0x1p+100, 0x1p+53, 0x1p+52,
        5e-324, 0x1p-1022, 0x1.fffffffffffffp-1023,
    };
    size_t n = xs.size();
    for (size_t i = 0; i < n; ++i) xs.push_back(-xs[i]);
    expect_accurate(trig_fns(), xs, "boundaries");
}

TEST(LibmAccuracy, LogHardCases) {
    std::vector<double> xs = {1.0, std::nextafter(1.0, 0.0), std::nextafter(1.0, 2.0), 2.0, 0.5, 0x1p-1022,
                              5e-324, 0x1.fffffffffffffp-1023, 0x1.fffffffffffffp+1023, 0x1p-1074 * 3,
                              M_E, 10.0, 0x1.fffffp-1, 0x1.00001p0};
    // Just below and above 1, where the result is as small as the argument's
    // distance from 1, and around every table point.
    std::mt19937_64 g(3);
    std::uniform_real_distribution<double> u(-1, 1);
    for (int k = 1; k < 60; ++k) {
        xs.push_back(1.0 - std::ldexp(1.0, -k));
        xs.push_back(1.0 + std::ldexp(1.0, -k));
        for (int j = 0; j < 50; ++j) xs.push_back(1.0 + std::ldexp(u(g), -k));
    }
    for (int i = 0; i <= 128; ++i) {
        double p = 256.0 / (128 + i);
        xs.insert(xs.end(), {p, std::nextafter(p, 0.0), std::nextafter(p, 4.0), p / 2, p * 1024});
    }
    // Both ends of each 1/256 step of the mantissa, where the table point
    // changes and z is largest, with exponents that cancel or dominate.
    for (int k = 0; k <= 256; ++k) {
        double m = 1.0 + k / 256.0;
        for (double s : {1.0, 0.5, 0x1p-600, 0x1p+700})
            xs.insert(xs.end(), {m * s, std::nextafter(m, 0.0) * s, std::nextafter(m, 4.0) * s});
    }
    expect_accurate(log_fns(), xs, "hard cases");
}

// Not worse than the C library on the same arguments: a coarse comparison of
// the worst errors, so a regression of either kind shows.
TEST(LibmAccuracy, AtLeastAsAccurateAsTheCLibrary) {
    std::mt19937_64 g(99);
    std::vector<double> xs = spread(g, 200000, -20, 60, true);
    for (const char* name : {"cos", "sin", "log"}) {
        auto ref = name[0] == 'c' ? cosl : name[0] == 's' ? sinl : logl;
        if (name[0] == 'l')
            for (double& x : xs) x = std::fabs(x);
        Worst a = worst_of({name, orv_sym<ScalarFn>(name), ref}, xs);
        Worst b = worst_of({name, reinterpret_cast<ScalarFn>(clibm_symbol(name)), ref}, xs);
        EXPECT_LE(a.ulp, std::max(b.ulp, 0.51) + 0.02) << name;
    }
}

}  // namespace
}  // namespace orv::test
