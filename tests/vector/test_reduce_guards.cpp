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

// Runs the statements with `fn` each tier's variant of `name`, d and f the
// double and float arrays, over the sweep.
#define ORV_GUARDED(name, ...)                                                                 \
    for (auto& t : tiers_of<decltype(name)>(#name))                                            \
        sweep([&, fn = t.fn]([[maybe_unused]] auto& d, [[maybe_unused]] auto& f, int n) {      \
            [[maybe_unused]] double r, lo, hi;                                                 \
            [[maybe_unused]] int i, j;                                                         \
            __VA_ARGS__;                                                                       \
        })

TEST(ReduceGuards, SumsAndMean) {
    ORV_GUARDED(orvsSum_64f, ASSERT_EQ(fn(d.first(n), n, &r), orvStsNoErr));
    ORV_GUARDED(orvsMean_64f, ASSERT_EQ(fn(d.first(n), n, &r), orvStsNoErr));
    ORV_GUARDED(orvsSum_32f, float s; ASSERT_EQ(fn(f.first(n), n, &s, orvAlgHintFast), orvStsNoErr);
                ASSERT_EQ(fn(f.first(n), n, &s, orvAlgHintAccurate), orvStsNoErr));
}

TEST(ReduceGuards, Extremes) {
    ORV_GUARDED(orvsMax_64f, ASSERT_EQ(fn(d.first(n), n, &r), orvStsNoErr));
    ORV_GUARDED(orvsMaxIndx_64f, ASSERT_EQ(fn(d.first(n), n, &r, &i), orvStsNoErr));
    ORV_GUARDED(orvsMinMax_64f, ASSERT_EQ(fn(d.first(n), n, &lo, &hi), orvStsNoErr));
    ORV_GUARDED(orvsMinMaxIndx_64f, ASSERT_EQ(fn(d.first(n), n, &lo, &i, &hi, &j), orvStsNoErr));
}

TEST(ReduceGuards, DotProductsAndThreshold) {
    ORV_GUARDED(orvsDotProd_64f, ASSERT_EQ(fn(d.first(n), d.second(n), n, &r), orvStsNoErr));
    ORV_GUARDED(orvsDotProd_32f64f, ASSERT_EQ(fn(f.first(n), f.second(n), n, &r), orvStsNoErr));
    ORV_GUARDED(orvsThreshold_LTValGTVal_64f, ASSERT_EQ(fn(d.first(n), d.second(n), n, -1, -9, 2, 9), orvStsNoErr);
                ASSERT_EQ(fn(d.second(n), d.second(n), n, -1, -9, 2, 9), orvStsNoErr));
}

}  // namespace
