// orvsConv_32f/64f on every tier: each path against a long double direct sum,
// the direct path bit for bit against a model of its kernels' order of
// additions (e9 float chunk seams included), both argument orders, inputs and
// an exactly sized destination flush against guard pages; statuses and
// failed allocations. The cyclic kernels against their sums.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "internal/kernels_conv.h"
#include "orvs.h"
#include "orvsfft.h"
#include "support/alloc_spy.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using namespace orv::test;

template <class T>
std::vector<T> random_vec(size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<T> v(n);
    for (auto& e : v) e = static_cast<T>(u(rng));
    return v;
}

// n the longer length, m the shorter; off the byte offset of x and the
// destination from their guard. Either side of T = 512, m = 64, n = 3m, the
// chunk of 4096 (last chunks of 1, 3, 9 samples), short and misplaced arrays.
struct Case {
    int n, m, off;
};
const Case kCases[] = {{1, 1, 0},     {5, 3, 0},     {7, 7, 0},     {8, 8, 0},     {448, 64, 0},   {449, 64, 0},
                       {256, 256, 0}, {1000, 63, 0}, {1000, 64, 0}, {599, 200, 0}, {600, 200, 0},  {300, 300, 0},
                       {4095, 63, 0}, {4096, 63, 0}, {4097, 63, 0}, {8191, 40, 0}, {8193, 63, 0},  {12289, 2, 0},
                       {4099, 10, 0}, {8201, 1, 0},  {9000, 700, 0}, {5000, 100, 0}, {1000, 50, 2}, {700, 300, 2}};

// The path the lengths select and its FFT order (0 for the direct path).
enum class Path { Direct, OneShot, OverlapSave };
std::pair<Path, int> plan(int n, int m) {
    if (n + m - 1 < 512 || m < 64) return {Path::Direct, 0};
    const bool one = n < 3 * m;
    int k = 2;
    while ((1 << k) < (one ? n + m - 1 : 2 * m)) ++k;
    return {one ? Path::OneShot : Path::OverlapSave, one ? k : k + 1};
}

// Long double sum and sum of |x||h| per output; `seams` (e9 float, chunked)
// leaves out of the first min(c, m - 1) outputs of each later chunk the
// products of samples before it.
template <class T>
void reference(const std::vector<T>& x, const std::vector<T>& h, bool seams, std::vector<long double>& y,
               std::vector<long double>& s) {
    const int n = static_cast<int>(x.size()), m = static_cast<int>(h.size());
    y.assign(n + m - 1, 0), s.assign(n + m - 1, 0);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < m; ++j) {
            const int p = i + j, start = p / 4096 * 4096;
            if (seams && start > 0 && p < start + std::min(n - start, m - 1) && i < start) continue;
            y[p] += static_cast<long double>(x[i]) * h[j];
            s[p] += std::fabs(static_cast<long double>(x[i]) * h[j]);
        }
}

// The direct path in T arithmetic, chunk by chunk. Storing (e9 float): each
// output's taps from the last down, groups added h[j+3], h[j+1], h[j+2], h[j],
// the rest highest first; samples from the chunk, the last m - 1 outputs
// reaching back m - 1 samples. Accumulating: per group of four taps
// ((x[i]g3 + d) + x[i+1]g2) + (x[i+2]g1 + x[i+3]g0), the m & 3 left as
// ((x[i]g2 + d) + x[i+1]g1) + x[i+2]g0 and shorter, missing samples left out;
// under 8 samples or a misplaced destination, tap by tap, sample by sample.
template <class T>
std::vector<T> direct_model(const std::vector<T>& x, const std::vector<T>& h, bool storing, bool dstOff) {
    const int n = static_cast<int>(x.size()), m = static_cast<int>(h.size());
    std::vector<T> y(n + m - 1, T(0));
    for (int s = 0; s < n; s += 4096) {
        const int c = n < 4096 ? n : std::min(4096, n - s);
        if (storing) {
            for (int p = 0; p < c + m - 1; ++p) {
                const int lo = p >= c ? s + c - m + 1 : s;
                T acc = 0;
                auto add = [&](int t) {
                    if (const int g = s + p - t; g >= lo && g < s + c) acc = acc + x[g] * h[t];
                };
                int j = m - 4;
                for (; j >= 0; j -= 4) add(j + 3), add(j + 1), add(j + 2), add(j);
                for (int t = j + 3; t >= 0; --t) add(t);
                y[s + p] = acc;
            }
        } else if (c < 8 || dstOff) {
            for (int j = 0; j < m; ++j)
                for (int i = 0; i < c; ++i) y[s + i + j] += x[s + i] * h[j];
        } else {
            for (int j = 0; j < m; j += 4) {
                const int r = std::min(4, m - j);
                for (int i = -(r - 1); i < c; ++i) {
                    T p[4];
                    bool in[4] = {};
                    for (int k = 0; k < r; ++k)
                        if ((in[k] = i + k >= 0 && i + k < c)) p[k] = x[s + i + k] * h[j + r - 1 - k];
                    T& d = y[s + i + j + r - 1];
                    T acc = in[0] ? p[0] + d : d;
                    if (r >= 2 && in[1]) acc = acc + p[1];
                    if (r == 4 && in[2] && in[3]) acc = acc + (p[2] + p[3]);
                    else if (r >= 3 && in[2]) acc = acc + p[2];
                    else if (r == 4 && in[3]) acc = acc + p[3];
                    d = acc;
                }
            }
        }
    }
    return y;
}

// Elements of the block an FFT path allocates: 2L + w, w the work buffer in
// 4-byte words for the one-shot path of both types, in elements plus one
// spare element for overlap-save.
template <class T>
int expected_block(const std::string& tier, Path path, int order) {
    using Spec = std::conditional_t<sizeof(T) == 4, OrvFFTSpec_R_32f, OrvFFTSpec_R_64f>;
    const std::string sfx = sizeof(T) == 4 ? "32f" : "64f";
    Spec* spec = nullptr;
    int bytes = 0;
    tier_fn<OrvStatus(Spec**, int, int, int)>("orvsFFTInitAlloc_R_" + sfx, tier)(&spec, order, 2, 0);
    tier_fn<OrvStatus(const Spec*, int*)>("orvsFFTGetBufSize_R_" + sfx, tier)(spec, &bytes);
    tier_fn<OrvStatus(Spec*)>("orvsFFTFree_R_" + sfx, tier)(spec);
    const int word = path == Path::OneShot ? 4 : static_cast<int>(sizeof(T));
    return (2 << order) + (path == Path::OverlapSave) + (bytes + word - 1) / word;
}

template <class T>
using ConvFn = std::conditional_t<sizeof(T) == 4, decltype(orvsConv_32f), decltype(orvsConv_64f)>;

template <class T>
class ConvTest : public ::testing::TestWithParam<TierFn<ConvFn<T>>> {
protected:
    void run_cases() {
        const auto& [tier, fn] = this->GetParam();
        const double eps = std::numeric_limits<T>::epsilon();
        const bool storing = tier == "e9" && sizeof(T) == 4;
        for (const Case& c : kCases) {
            SCOPED_TRACE(::testing::Message() << "n=" << c.n << " m=" << c.m << " off=" << c.off);
            const auto x = random_vec<T>(c.n, c.n * 31 + c.m), h = random_vec<T>(c.m, c.m * 7 + 1);
            const auto [path, order] = plan(c.n, c.m);
            const bool direct = path == Path::Direct;
            const int total = c.n + c.m - 1, block = direct ? 0 : expected_block<T>(tier, path, order);
            std::vector<long double> ry, rs;
            reference(x, h, storing && direct && c.n >= 4096, ry, rs);
            const long double fftBound = 2 * eps * order * *std::max_element(rs.begin(), rs.end());
            std::vector<T> first;
            for (int swap = 0; swap < 2; ++swap) {
                const bool roles = swap && c.n == c.m;  // on equal lengths the first argument is x
                const auto model = direct ? direct_model(roles ? h : x, roles ? x : h, storing, c.off % sizeof(T))
                                          : std::vector<T>();
                for (Flush flush : {Flush::Start, Flush::End}) {
                    Guarded<T> gx(c.n, flush, c.off), gh(c.m, flush), gd(total, flush, c.off);
                    std::memcpy(gx.data(), x.data(), c.n * sizeof(T));
                    std::memcpy(gh.data(), h.data(), c.m * sizeof(T));
                    std::memset(gd.data(), 0xff, total * sizeof(T));  // NaN: every output must be written
                    AllocSpy spy;
                    ASSERT_EQ(swap ? fn(gh.data(), c.m, gx.data(), c.n, gd.data())
                                   : fn(gx.data(), c.n, gh.data(), c.m, gd.data()),
                              orvStsNoErr);
                    EXPECT_EQ(spy.mallocs, spy.frees);
                    EXPECT_EQ(spy.mallocs ? spy.lastBytes : 0, direct ? 0 : block * sizeof(T) + 40);
                    std::vector<T> y(total);
                    std::memcpy(y.data(), gd.data(), total * sizeof(T));
                    for (int i = 0, bad = 0; i < total && bad < 3; ++i)
                        if (!(std::fabs(y[i] - ry[i]) <= (direct ? 4 * eps * rs[i] : fftBound)))
                            ++bad, ADD_FAILURE() << "i=" << i << " got " << y[i] << " want " << ry[i];
                    EXPECT_TRUE(!direct || std::memcmp(model.data(), y.data(), total * sizeof(T)) == 0);
                    // Unequal lengths: the same roles, the same bits, either order.
                    if (first.empty()) first = y;
                    EXPECT_TRUE(c.n == c.m || std::memcmp(first.data(), y.data(), total * sizeof(T)) == 0);
                }
            }
        }
    }

    void run_errors() {
        const auto& [tier, fn] = this->GetParam();
        T a[4] = {1, 2, 3, 4}, d[8];
        std::fill(d, d + 8, T(7));
        // Null pointers first, in argument order, then lengths.
        EXPECT_EQ(fn(nullptr, 0, a, 4, d), orvStsNullPtrErr);
        EXPECT_EQ(fn(a, 4, nullptr, -1, d), orvStsNullPtrErr);
        EXPECT_EQ(fn(a, 4, a, 4, nullptr), orvStsNullPtrErr);
        EXPECT_EQ(fn(a, 0, a, 4, d), orvStsSizeErr);
        EXPECT_EQ(fn(a, 4, a, -3, d), orvStsSizeErr);
        EXPECT_EQ(fn(a, INT_MIN, a, INT_MIN, d), orvStsSizeErr);
        EXPECT_EQ(std::count(d, d + 8, T(7)), 8);
        // Each allocation of each FFT path failing in turn: the status, an
        // untouched destination, nothing leaked.
        for (const Case c : {Case{300, 300, 0}, Case{1000, 64, 0}}) {
            const auto x = random_vec<T>(c.n, 1), h = random_vec<T>(c.m, 2);
            std::vector<T> y(c.n + c.m - 1, T(7));
            int allocs = 0;
            {
                AllocSpy spy;
                ASSERT_EQ(fn(x.data(), c.n, h.data(), c.m, y.data()), orvStsNoErr);
                allocs = spy.mallocs;
            }
            ASSERT_GE(allocs, 2);
            std::fill(y.begin(), y.end(), T(7));
            for (int f = 1; f <= allocs; ++f) {
                AllocSpy spy(f);
                EXPECT_EQ(fn(x.data(), c.n, h.data(), c.m, y.data()), orvStsMemAllocErr) << "fail from " << f;
                EXPECT_EQ(spy.frees, spy.mallocs - 1);
                EXPECT_EQ(std::count(y.begin(), y.end(), T(7)), static_cast<long>(y.size()));
            }
        }
    }
};

using Conv32f = ConvTest<float>;
using Conv64f = ConvTest<double>;
TEST_P(Conv32f, PathsAgainstDirectSum) { run_cases(); }
TEST_P(Conv64f, PathsAgainstDirectSum) { run_cases(); }
TEST_P(Conv32f, StatusesAndAllocationFailures) { run_errors(); }
TEST_P(Conv64f, StatusesAndAllocationFailures) { run_errors(); }
ORV_INSTANTIATE_TIERS(Conv32f, orvsConv_32f);
ORV_INSTANTIATE_TIERS(Conv64f, orvsConv_64f);

// The three cyclic kernels of one tier.
class Cyclic : public ::testing::TestWithParam<TierFn<decltype(ownConvCyclic8x8_32f)>> {};
TEST_P(Cyclic, MatchCyclicSums) {
    const std::string& tier = GetParam().tier;
    // 8x8 float: bit for bit against the stated grouping of the terms t_j,
    // with b and c on 16 bytes and on 4 mod 16.
    alignas(16) float buf[2][12];
    for (int off : {0, 1})
        for (unsigned seed = 0; seed < 20; ++seed) {
            const auto a = random_vec<float>(8, seed), b = random_vec<float>(8, seed + 100);
            std::copy(b.begin(), b.end(), buf[0] + off);
            GetParam().fn(a.data(), buf[0] + off, buf[1] + off);
            for (int k = 0; k < 8; ++k) {
                float t[8];
                for (int j = 0; j < 8; ++j) t[j] = a[j] * b[(k - j) & 7];
                EXPECT_EQ(buf[1][off + k], k < 4 ? (((t[0] + t[1]) + (t[5] + t[4])) + (t[3] + t[2])) + (t[7] + t[6])
                                                 : (((t[4] + t[5]) + (t[1] + t[0])) + (t[7] + t[6])) + (t[3] + t[2]))
                    << "k=" << k << " off=" << off;
            }
        }
    // 4x4 real by complex: within a few eps of the long double sum.
    auto* c4 = tier_fn<decltype(ownConvCyclic4x4_32f32fc)>("ownConvCyclic4x4_32f32fc", tier);
    for (unsigned seed = 0; seed < 20; ++seed) {
        const auto a = random_vec<float>(4, seed), bv = random_vec<float>(8, seed + 50);
        Orv32fc b[4], c[4];
        std::memcpy(b, bv.data(), sizeof b);
        c4(a.data(), b, c);
        for (int k = 0; k < 4; ++k) {
            long double re = 0, im = 0, s = 0;
            for (int j = 0; j < 4; ++j) {
                const long double aj = a[j], qr = b[(k - j) & 3].re, qi = b[(k - j) & 3].im;
                re += aj * qr, im += aj * qi, s += std::fabs(aj) * (std::fabs(qr) + std::fabs(qi));
            }
            EXPECT_LE(std::fabs(c[k].re - re) + std::fabs(c[k].im - im), 4 * FLT_EPSILON * s) << k;
        }
    }
    // 8x8 16-bit: exact; wrapped 32-bit sums, shifts either way, saturation.
    auto* c16 = tier_fn<decltype(ownConvCyclic8x8_16s_Sfs)>("ownConvCyclic8x8_16s_Sfs", tier);
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> u(-32768, 32767);
    std::vector<std::vector<Orv16s>> in = {std::vector<Orv16s>(8, -32768), std::vector<Orv16s>(8, 32767),
                                           {1, -1, 2, -2, 3, -3, 4, -4}};
    for (int r = 0; r < 8; ++r) {
        in.emplace_back(8);
        for (auto& v : in.back()) v = static_cast<Orv16s>(r < 4 ? u(rng) : u(rng) >> 12);
    }
    for (int sf : {INT_MIN, -40, -32, -31, -17, -3, -1, 0, 1, 3, 16, 30, 31, 32, 99})
        for (size_t ia = 0; ia < in.size(); ++ia) {
            const auto &a = in[ia], &b = in[(ia + 1) % in.size()];
            Orv16s c[8];
            c16(a.data(), b.data(), c, sf);
            for (int k = 0; k < 8; ++k) {
                uint32_t acc = 0;
                for (int j = 0; j < 8; ++j) acc += static_cast<uint32_t>(int32_t{a[j]} * b[(k - j) & 7]);
                int64_t v = static_cast<int32_t>(acc);
                if (sf > 0) v >>= std::min(sf, 31);
                else if (sf < 0) v = sf <= -32 ? 0 : static_cast<int32_t>(acc << -sf);
                EXPECT_EQ(c[k], std::clamp<int64_t>(v, -32768, 32767)) << "sf=" << sf << " set " << ia << " k=" << k;
            }
        }
}
ORV_INSTANTIATE_TIERS(Cyclic, ownConvCyclic8x8_32f);

}  // namespace
