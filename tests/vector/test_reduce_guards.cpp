// Every reduction and the threshold, in every tier, with arrays flush against
// an inaccessible page before and after, at sampled byte offsets and
// lengths: any access outside the caller's arrays ends the test.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "orvs.h"
#include "support/guarded.h"
#include "support/tier_registry.h"

namespace {

using orv::test::Flush;
using orv::test::Guarded;
using orv::test::tiers_of;

constexpr int kMax = 300;
const int kLengths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                        21, 23, 25, 27, 29, 31, 32, 33, 34, 35, 37, 39, 47, 48, 63, 64, 65, 100, 257, 300};
const size_t kOffsets[] = {0, 1, 3, 4, 8, 12, 16, 20, 24, 28, 31};

// Two arrays of each element type, both flush the same way; the second at
// another offset so that the pair covers mixed alignments.
template <class T>
struct Arrays {
    Arrays(Flush f, size_t off) : flush(f), a(kMax, f, off), b(kMax, f, (off * 7 + 8) % 32) {
        for (int i = 0; i < kMax; ++i) {
            T x = static_cast<T>((i * 37) % 11 - 5), y = static_cast<T>((i * 13) % 7 - 3);
            std::memcpy(a.data() + i, &x, sizeof x);
            std::memcpy(b.data() + i, &y, sizeof y);
        }
    }
    // The n elements that touch the guard page.
    T* first(int n) const { return flush == Flush::Start ? a.data() : a.data() + (kMax - n); }
    T* second(int n) const { return flush == Flush::Start ? b.data() : b.data() + (kMax - n); }
    Flush flush;
    Guarded<T> a, b;
};

// Calls fn(arrays64, arrays32, n) for every flush side, offset and length.
void sweep(const std::function<void(const Arrays<double>&, const Arrays<float>&, int)>& fn) {
    for (Flush f : {Flush::Start, Flush::End})
        for (size_t off : kOffsets) {
            Arrays<double> d(f, off);
            Arrays<float> s(f, off);
            for (int n : kLengths) {
                SCOPED_TRACE(testing::Message() << (f == Flush::Start ? "start" : "end") << " offset " << off
                                                << " len " << n);
                fn(d, s, n);
            }
        }
}

TEST(ReduceGuards, SumsAndMean) {
    for (auto& t : tiers_of<decltype(orvsSum_64f)>("orvsSum_64f"))
        sweep([&](auto& d, auto&, int n) {
            double s;
            ASSERT_EQ(t.fn(d.first(n), n, &s), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsMean_64f)>("orvsMean_64f"))
        sweep([&](auto& d, auto&, int n) {
            double s;
            ASSERT_EQ(t.fn(d.first(n), n, &s), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsSum_32f)>("orvsSum_32f"))
        sweep([&](auto&, auto& f, int n) {
            float s;
            ASSERT_EQ(t.fn(f.first(n), n, &s, orvAlgHintFast), orvStsNoErr);
            ASSERT_EQ(t.fn(f.first(n), n, &s, orvAlgHintAccurate), orvStsNoErr);
        });
}

TEST(ReduceGuards, Extremes) {
    for (auto& t : tiers_of<decltype(orvsMax_64f)>("orvsMax_64f"))
        sweep([&](auto& d, auto&, int n) {
            double m;
            ASSERT_EQ(t.fn(d.first(n), n, &m), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsMaxIndx_64f)>("orvsMaxIndx_64f"))
        sweep([&](auto& d, auto&, int n) {
            double m;
            int i;
            ASSERT_EQ(t.fn(d.first(n), n, &m, &i), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsMinMax_64f)>("orvsMinMax_64f"))
        sweep([&](auto& d, auto&, int n) {
            double lo, hi;
            ASSERT_EQ(t.fn(d.first(n), n, &lo, &hi), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsMinMaxIndx_64f)>("orvsMinMaxIndx_64f"))
        sweep([&](auto& d, auto&, int n) {
            double lo, hi;
            int i, j;
            ASSERT_EQ(t.fn(d.first(n), n, &lo, &i, &hi, &j), orvStsNoErr);
        });
}

TEST(ReduceGuards, DotProductsAndThreshold) {
    for (auto& t : tiers_of<decltype(orvsDotProd_64f)>("orvsDotProd_64f"))
        sweep([&](auto& d, auto&, int n) {
            double r;
            ASSERT_EQ(t.fn(d.first(n), d.second(n), n, &r), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsDotProd_32f64f)>("orvsDotProd_32f64f"))
        sweep([&](auto&, auto& f, int n) {
            double r;
            ASSERT_EQ(t.fn(f.first(n), f.second(n), n, &r), orvStsNoErr);
        });
    for (auto& t : tiers_of<decltype(orvsThreshold_LTValGTVal_64f)>("orvsThreshold_LTValGTVal_64f"))
        sweep([&](auto& d, auto&, int n) {
            ASSERT_EQ(t.fn(d.first(n), d.second(n), n, -1, -9, 2, 9), orvStsNoErr);
            ASSERT_EQ(t.fn(d.second(n), d.second(n), n, -1, -9, 2, 9), orvStsNoErr);
        });
}

}  // namespace
