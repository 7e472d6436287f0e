// Element-wise arithmetic on every tier against one IEEE operation per
// element: every short length and the lengths around each member's size
// rule, sampled pointer alignments mod 32 between guard pages, special
// values, the constant shortcuts, in-place and aliased arrays, statuses.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <type_traits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "orvs.h"
#include "placed.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::Placed;
using orv::test::tiers_of;

// How a member takes its operands.
enum class Form {
    two,      // f(a, b, dst, len)
    inplace,  // f(a, dst, len), dst holding b
    constI,   // f(val, dst, len), dst holding a
    constTo,  // f(a, val, dst, len)
    sqr,      // f(dst, len), dst holding a
};

template <class T>
using Call = std::function<OrvStatus(const T* a, const T* b, T* d, int len, T val)>;

template <class T>
struct Member {
    std::string name;
    Form form;
    T (*ref)(T x, T y);       // y: the second array's element or the constant
    std::vector<long> large;  // lengths around the member's size rules
};

template <class T>
std::vector<std::pair<std::string, Call<T>>> calls_of(const Member<T>& m) {
    std::vector<std::pair<std::string, Call<T>>> out;
    switch (m.form) {
        case Form::two:
            for (auto [t, f] : tiers_of<OrvStatus(const T*, const T*, T*, int)>(m.name))
                out.push_back({t, [f](const T* a, const T* b, T* d, int n, T) { return f(a, b, d, n); }});
            break;
        case Form::inplace:
            for (auto [t, f] : tiers_of<OrvStatus(const T*, T*, int)>(m.name))
                out.push_back({t, [f](const T* a, const T*, T* d, int n, T) { return f(a, d, n); }});
            break;
        case Form::constI:
            for (auto [t, f] : tiers_of<OrvStatus(T, T*, int)>(m.name))
                out.push_back({t, [f](const T*, const T*, T* d, int n, T v) { return f(v, d, n); }});
            break;
        case Form::constTo:
            for (auto [t, f] : tiers_of<OrvStatus(const T*, T, T*, int)>(m.name))
                out.push_back({t, [f](const T* a, const T*, T* d, int n, T v) { return f(a, v, d, n); }});
            break;
        case Form::sqr:
            for (auto [t, f] : tiers_of<OrvStatus(T*, int)>(m.name))
                out.push_back({t, [f](const T*, const T*, T* d, int n, T) { return f(d, n); }});
            break;
    }
    return out;
}

// Operands: wide random values with special ones sprinkled in.
template <class T>
std::vector<T> operands(size_t n, unsigned seed) {
    using L = std::numeric_limits<T>;
    const T special[] = {L::infinity(), -L::infinity(), L::quiet_NaN(), T(-0.0), T(0.0), L::denorm_min(),
                         L::max(),      -L::min(),      T(1.0),       T(-1.0)};
    std::mt19937 rng(seed);
    std::uniform_real_distribution<T> mant(-2, 2);
    std::uniform_int_distribution<int> expo(-60, 60);
    std::vector<T> v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = i % 37 == 5 ? special[(i / 37) % 10] : std::ldexp(mant(rng), expo(rng));
    return v;
}

template <class T>
bool same(T got, T want) {
    return (std::isnan(got) && std::isnan(want)) || std::memcmp(&got, &want, sizeof got) == 0;
}

// One member on every tier at one length and one alignment triple (first
// source, second source, destination). Arrays the form does not use are not
// placed.
template <class T>
void run_case(const Member<T>& m, const std::vector<std::pair<std::string, Call<T>>>& calls, long n,
              const unsigned (&al)[3], Flush flush, T val) {
    static const std::vector<T> A = operands<T>(300000, 1), B = operands<T>(300000, 2);
    const size_t bytes = n * sizeof(T);
    const bool usesA = m.form == Form::two || m.form == Form::inplace || m.form == Form::constTo;
    Placed pa(usesA ? bytes : 0, flush, al[0]), pb(m.form == Form::two ? bytes : 0, flush, al[1]), pd(bytes, flush, al[2]);
    if (usesA) std::memcpy(pa.bytes(), A.data(), bytes);
    if (m.form == Form::two) std::memcpy(pb.bytes(), B.data(), bytes);
    std::vector<T> want(n);
    for (long i = 0; i < n; ++i) {
        T x = A[i], y = B[i];
        if (m.form == Form::constI || m.form == Form::constTo) y = val;
        if (m.form == Form::sqr) y = x;
        want[i] = m.ref(x, y);
    }
    for (const auto& [tier, call] : calls) {
        SCOPED_TRACE(m.name + " " + tier + " len " + std::to_string(n) + " align " + std::to_string(al[0]) + "/" +
                     std::to_string(al[1]) + "/" + std::to_string(al[2]));
        // The destination starts as the operand an in-place form reads.
        const T* init = m.form == Form::inplace ? B.data() : m.form == Form::constTo || m.form == Form::two ? nullptr : A.data();
        if (init) {
            std::memcpy(pd.bytes(), init, bytes);
        } else {
            std::memset(pd.bytes(), 0xA5, bytes);
        }
        ASSERT_EQ(call(pa.as<T>(), pb.as<T>(), pd.as<T>(), static_cast<int>(n), val), orvStsNoErr);
        long bad = 0;
        for (T got; bad < n; ++bad)
            if (std::memcpy(&got, pd.bytes() + bad * sizeof(T), sizeof got), !same(got, want[bad])) break;
        ASSERT_EQ(bad, n) << "first wrong element";
        if (usesA) {
            ASSERT_EQ(std::memcmp(pa.bytes(), A.data(), bytes), 0) << "source changed";
        }
        ASSERT_TRUE(pa.canary_intact() && pb.canary_intact() && pd.canary_intact());
    }
}

template <class T>
void run_member(const Member<T>& m, T val) {
    const auto calls = calls_of(m);
    if (calls.empty() && !orv::test::all_tiers_tested()) return;  // its tiers are left out
    ASSERT_FALSE(calls.empty()) << m.name;
    std::mt19937 rng(11);
    // Short lengths: fixed triples for the aligned, one-step and odd paths,
    // plus random ones; the flush alternates.
    for (long n = 1; n <= 100; ++n) {
        std::vector<std::array<unsigned, 3>> triples = {{0, 0, 0}, {8, 24, 8}, {16, 8, 0}, {4, 4, 4}};
        for (int k = 0; k < 4; ++k) triples.push_back({unsigned(rng() % 32), unsigned(rng() % 32), unsigned(rng() % 32)});
        for (size_t k = 0; k < triples.size(); ++k) {
            const unsigned al[3] = {triples[k][0], triples[k][1], triples[k][2]};
            run_case(m, calls, n, al, orv::test::flush_of(n + k), val);
        }
    }
    // Around the size rules: aligned, destination one element off 16, sources
    // off 16, everything odd.
    for (long n : m.large) {
        const unsigned triples[][3] = {{0, 0, 0}, {8, 8, 8}, {0, 16, 24}, {8, 0, 0}, {3, 5, 7}};
        for (size_t k = 0; k < std::size(triples); ++k) run_case(m, calls, n, triples[k], orv::test::flush_of(n + k), val);
    }
}

double add(double x, double y) { return x + y; }
double sub(double x, double y) { return x - y; }
double rsub(double x, double y) { return y - x; }
double mul(double x, double y) { return x * y; }
float mulf(float x, float y) { return x * y; }

// Streaming above 10922 groups of four; the e9 loop's 16-element blocks.
const std::vector<long> kStream = {15, 16, 17, 18, 19, 43691, 43692, 43693, 43694};
const std::vector<long> kPrefetchSrc = {1000, 1001, 4099};
const std::vector<long> kPrefetchNta = {131072, 131073, 131076, 131077};
const std::vector<long> kRevStream = {65536, 65539, 65540, 65541};

TEST(Arith, TwoSources) {
    run_member<double>({"orvsAdd_64f", Form::two, add, kStream}, 0);
    run_member<double>({"orvsSub_64f", Form::two, rsub, kStream}, 0);
}

TEST(Arith, InPlaceWithASource) {
    run_member<double>({"orvsAdd_64f_I", Form::inplace, add, kPrefetchSrc}, 0);
    run_member<double>({"orvsSub_64f_I", Form::inplace, rsub, kPrefetchSrc}, 0);
    run_member<double>({"orvsMul_64f_I", Form::inplace, mul, kPrefetchSrc}, 0);
}

TEST(Arith, InPlaceWithAConstant) {
    for (double v : {-0.7, 3.0e10, std::numeric_limits<double>::infinity()}) {
        run_member<double>({"orvsAddC_64f_I", Form::constI, add, kPrefetchNta}, v);
        run_member<double>({"orvsSubC_64f_I", Form::constI, sub, kPrefetchNta}, v);
        run_member<double>({"orvsMulC_64f_I", Form::constI, mul, kPrefetchNta}, v);
    }
}

TEST(Arith, SourceAndConstantToADestination) {
    for (double v : {-0.7, 0.0, 1.0, 1e300}) run_member<double>({"orvsSubCRev_64f", Form::constTo, rsub, kRevStream}, v);
    run_member<double>({"orvsMulC_64f", Form::constTo, mul, {5000}}, 2.5);
}

// n8 squares in scalar code, with a prefetch from 2048 elements on.
TEST(Arith, Square) { run_member<double>({"orvsSqr_64f_I", Form::sqr, mul, {2047, 2048, 2049, 2056}}, 0); }

TEST(Arith, SinglePrecisionScale) {
    run_member<float>({"orvsMulC_32f_I", Form::constI, mulf, {262144, 262151, 262152, 262156}}, -1.25f);
}

// A destination equal to a source gives the element-wise result: each
// element is read before it is written.
TEST(Arith, DestinationEqualToASource) {
    const auto A = operands<double>(2000, 5), B = operands<double>(2000, 6);
    const double* b = B.data();
    for (int n : {1, 5, 17, 33, 1999})
        for (unsigned off : {0u, 8u, 3u}) {
            auto check = [&](const std::string& name, auto fn, auto call, auto ref) {
                for (auto [tier, f] : tiers_of<std::remove_pointer_t<decltype(fn)>>(name)) {
                    std::vector<unsigned char> raw(n * 8 + 64);
                    auto* d = reinterpret_cast<double*>(raw.data() + off);
                    std::memcpy(d, A.data(), n * 8);
                    ASSERT_EQ(call(f, d), orvStsNoErr);
                    for (int i = 0; i < n; ++i) {
                        double got;
                        std::memcpy(&got, raw.data() + off + 8 * i, 8);
                        ASSERT_TRUE(same(got, ref(i))) << name << " " << tier << " len " << n << " element " << i;
                    }
                }
            };
            auto a = [&](int i) { return A[i]; };
            check("orvsAdd_64f", orvsAdd_64f, [&](auto f, double* d) { return f(d, b, d, n); }, [&](int i) { return a(i) + b[i]; });
            check("orvsAdd_64f", orvsAdd_64f, [&](auto f, double* d) { return f(b, d, d, n); }, [&](int i) { return b[i] + a(i); });
            check("orvsAdd_64f", orvsAdd_64f, [&](auto f, double* d) { return f(d, d, d, n); }, [&](int i) { return a(i) + a(i); });
            check("orvsSub_64f", orvsSub_64f, [&](auto f, double* d) { return f(d, b, d, n); }, [&](int i) { return b[i] - a(i); });
            check("orvsSub_64f", orvsSub_64f, [&](auto f, double* d) { return f(b, d, d, n); }, [&](int i) { return a(i) - b[i]; });
            check("orvsAdd_64f_I", orvsAdd_64f_I, [&](auto f, double* d) { return f(d, d, n); }, [&](int i) { return a(i) + a(i); });
            check("orvsMul_64f_I", orvsMul_64f_I, [&](auto f, double* d) { return f(d, d, n); }, [&](int i) { return a(i) * a(i); });
            check("orvsMulC_64f", orvsMulC_64f, [&](auto f, double* d) { return f(d, -3.5, d, n); }, [&](int i) { return a(i) * -3.5; });
            check("orvsSubCRev_64f", orvsSubCRev_64f, [&](auto f, double* d) { return f(d, 2.0, d, n); }, [&](int i) { return 2.0 - a(i); });
        }
}

// Data whose bits any arithmetic would change: a signalling NaN is quieted by
// every operation, -0.0 turns into +0.0 when zero is added.
std::vector<double> fragile() {
    return {std::bit_cast<double>(uint64_t{0x7FF0000000000001}), -0.0, 0.0, -5.0, -INFINITY, NAN, 1e-310, 7.0, -0.0};
}
bool bits_equal(const std::vector<double>& x, const std::vector<double>& y) {
    return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * 8) == 0;
}
bool all_plus_zero(const std::vector<double>& x) {
    for (double v : x)
        if (std::bit_cast<uint64_t>(v) != 0) return false;
    return true;
}

TEST(Shortcuts, AddingOrSubtractingZeroTouchesNothing) {
    for (const char* name : {"orvsAddC_64f_I", "orvsSubC_64f_I"})
        for (auto [tier, f] : tiers_of<decltype(orvsAddC_64f_I)>(name))
            for (double v : {0.0, -0.0}) {
                auto d = fragile();
                ASSERT_EQ(f(v, d.data(), static_cast<int>(d.size())), orvStsNoErr);
                EXPECT_TRUE(bits_equal(d, fragile())) << name << " " << tier << " " << v;
            }
    // A NaN constant and 1.0 take the loop.
    for (auto [tier, f] : tiers_of<decltype(orvsAddC_64f_I)>("orvsAddC_64f_I")) {
        auto d = fragile();
        ASSERT_EQ(f(NAN, d.data(), static_cast<int>(d.size())), orvStsNoErr);
        for (double x : d) EXPECT_TRUE(std::isnan(x)) << tier;
        d = fragile();
        ASSERT_EQ(f(1.0, d.data(), static_cast<int>(d.size())), orvStsNoErr);
        EXPECT_EQ(d[3], -4.0) << tier;
    }
}

TEST(Shortcuts, ScalingByOneOrZero) {
    const int n = static_cast<int>(fragile().size());
    for (auto [tier, f] : tiers_of<decltype(orvsMulC_64f_I)>("orvsMulC_64f_I")) {
        auto d = fragile();
        ASSERT_EQ(f(1.0, d.data(), n), orvStsNoErr);
        EXPECT_TRUE(bits_equal(d, fragile())) << tier;
        for (double z : {0.0, -0.0}) {
            d = fragile();
            ASSERT_EQ(f(z, d.data(), n), orvStsNoErr);
            EXPECT_TRUE(all_plus_zero(d)) << tier;
        }
    }
    for (auto [tier, f] : tiers_of<decltype(orvsMulC_64f)>("orvsMulC_64f")) {
        const auto src = fragile();
        std::vector<double> d(n, 9.0);
        ASSERT_EQ(f(src.data(), 1.0, d.data(), n), orvStsNoErr);
        EXPECT_TRUE(bits_equal(d, src)) << tier;  // a copy: the signalling NaN survives
        auto same_array = fragile();
        ASSERT_EQ(f(same_array.data(), 1.0, same_array.data(), n), orvStsNoErr);
        EXPECT_TRUE(bits_equal(same_array, src)) << tier;
        for (double z : {0.0, -0.0}) {
            d.assign(n, 9.0);
            ASSERT_EQ(f(src.data(), z, d.data(), n), orvStsNoErr);
            EXPECT_TRUE(all_plus_zero(d)) << tier;
        }
        ASSERT_EQ(f(src.data(), NAN, d.data(), n), orvStsNoErr);
        for (double x : d) EXPECT_TRUE(std::isnan(x)) << tier;
    }
    for (auto [tier, f] : tiers_of<decltype(orvsMulC_32f_I)>("orvsMulC_32f_I")) {
        const float keep[3] = {std::bit_cast<float>(uint32_t{0x7F800001}), -0.0f, -INFINITY};
        float d[3];
        std::memcpy(d, keep, sizeof d);
        ASSERT_EQ(f(1.0f, d, 3), orvStsNoErr);
        EXPECT_EQ(std::memcmp(d, keep, sizeof d), 0) << tier;
        ASSERT_EQ(f(-0.0f, d, 3), orvStsNoErr);
        for (float x : d) EXPECT_EQ(std::bit_cast<uint32_t>(x), 0u) << tier;
    }
}

// Pointers in argument order (null wins over a bad len), then len < 1;
// nothing is written, and the checks come before any shortcut.
TEST(ArithChecks, NullPointersThenLength) {
    double s[4] = {1, 2, 3, 4}, d[4] = {5, 6, 7, 8};
    const OrvStatus N = orvStsNullPtrErr, Z = orvStsSizeErr;
    for (const char* name : {"orvsAdd_64f", "orvsSub_64f"})
        for (auto [t, f] : tiers_of<decltype(orvsAdd_64f)>(name))
            EXPECT_TRUE(f(nullptr, s, d, 0) == N && f(s, nullptr, d, -1) == N && f(s, s, nullptr, 4) == N &&
                        f(s, s, d, 0) == Z && f(s, s, d, -4) == Z) << t << name;
    for (const char* name : {"orvsAdd_64f_I", "orvsSub_64f_I", "orvsMul_64f_I"})
        for (auto [t, f] : tiers_of<decltype(orvsAdd_64f_I)>(name))
            EXPECT_TRUE(f(nullptr, d, 0) == N && f(s, nullptr, 0) == N && f(s, d, 0) == Z) << t << name;
    for (const char* name : {"orvsAddC_64f_I", "orvsSubC_64f_I", "orvsMulC_64f_I"})
        for (auto [t, f] : tiers_of<decltype(orvsAddC_64f_I)>(name))
            EXPECT_TRUE(f(2.0, nullptr, 0) == N && f(0.0, d, 0) == Z && f(1.0, d, -2) == Z) << t << name;
    for (const char* name : {"orvsSubCRev_64f", "orvsMulC_64f"})
        for (auto [t, f] : tiers_of<decltype(orvsMulC_64f)>(name))
            EXPECT_TRUE(f(nullptr, 1.0, d, 0) == N && f(s, 0.0, nullptr, 0) == N && f(s, 1.0, d, 0) == Z) << t << name;
    for (auto [t, f] : tiers_of<decltype(orvsSqr_64f_I)>("orvsSqr_64f_I")) EXPECT_TRUE(f(nullptr, 0) == N && f(d, 0) == Z) << t;
    float x = 3;
    for (auto [t, f] : tiers_of<decltype(orvsMulC_32f_I)>("orvsMulC_32f_I"))
        EXPECT_TRUE(f(0.0f, nullptr, 0) == N && f(0.0f, &x, 0) == Z) << t;
    const double keepS[4] = {1, 2, 3, 4}, keepD[4] = {5, 6, 7, 8};
    EXPECT_TRUE(!std::memcmp(s, keepS, sizeof s) && !std::memcmp(d, keepD, sizeof d) && x == 3.0f);
}

// Each stub reaches a tier that computes the member.
TEST(ArithStubs, CallThroughTheTables) {
    double a[5] = {1, 2, 3, 4, 5}, b[5] = {10, 20, 30, 40, 50}, d[5];
    const std::pair<std::function<OrvStatus()>, double> steps[] = {
        {[&] { return orvsAdd_64f(a, b, d, 5); }, 55},      {[&] { return orvsSub_64f(a, b, d, 5); }, 45},
        {[&] { return orvsSubCRev_64f(a, 1, d, 5); }, -4},  {[&] { return orvsMulC_64f(a, 3, d, 5); }, 15},
        {[&] { return orvsAdd_64f_I(a, d, 5); }, 20},       {[&] { return orvsSub_64f_I(a, d, 5); }, 15},
        {[&] { return orvsMul_64f_I(a, d, 5); }, 75},       {[&] { return orvsAddC_64f_I(5, d, 5); }, 80},
        {[&] { return orvsSubC_64f_I(40, d, 5); }, 40},     {[&] { return orvsMulC_64f_I(0.5, d, 5); }, 20},
        {[&] { return orvsSqr_64f_I(d, 5); }, 400},
    };
    for (const auto& [call, last] : steps) {
        ASSERT_EQ(call(), orvStsNoErr);
        EXPECT_EQ(d[4], last);
    }
}

}  // namespace
