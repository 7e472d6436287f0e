// Integer 2-D filters: the rounding and saturation rule of each route, on a
// uniform source, so that every pixel's sum is one known value. The route
// follows from tier and width. 8u, 16s, 16u C1: in e9 the column groups from
// width 8 (half away from zero, a NaN gives the upper limit) and the pixel
// blocks below it (the rounding mode in force, a NaN gives the upper limit);
// in m7 n8 y8 the row pairs from width 16 with three kernel columns (ties to
// even) and the generic loop below it (ties to even, a NaN gives 0).
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "filter/filter_ref.h"
#include "orvi.h"

namespace orv::test {
namespace {

enum class Ty { u8, s16, u16, s8, s32 };

struct Rule {
    const char* what;
    Ty ty;
    const char* tiers;   // the tiers where the widths take the route named; "" for every tier
    int widths[2];       // 0: unused
    float k0, kRest;     // first coefficient of the 3 x 2 kernel, every other one
    double src;          // every source pixel
    bool down;           // rounding toward minus infinity in force around the call
    double want;
};

constexpr float kNaN = NAN;
const Rule kRules[] = {
    {"0.5, column groups", Ty::u8, "e9", {8, 16}, .1875f, .0625f, 1, false, 1},
    {"0.5, pixel blocks", Ty::u8, "e9", {4, 7}, .1875f, .0625f, 1, false, 0},
    {"0.5, row pairs", Ty::u8, "m7 n8 y8", {16, 0}, .1875f, .0625f, 1, false, 0},
    {"0.5, generic loop", Ty::u8, "m7 n8 y8", {4, 7}, .1875f, .0625f, 1, false, 0},
    {"-2.5, column groups", Ty::s16, "e9", {8, 16}, -2.5f, 0, 1, false, -3},
    {"-2.5, pixel blocks", Ty::s16, "e9", {3, 6}, -2.5f, 0, 1, false, -2},
    {"-2.5, generic loop and row pairs", Ty::s16, "m7 n8 y8", {3, 16}, -2.5f, 0, 1, false, -2},
    {"4.5, column groups", Ty::u16, "e9", {9, 0}, 4.5f, 0, 1, false, 5},
    {"4.5, pixel blocks", Ty::u16, "e9", {5, 0}, 4.5f, 0, 1, false, 4},
    {"4.5, generic loop and row pairs", Ty::u16, "m7 n8 y8", {5, 16}, 4.5f, 0, 1, false, 4},
    {"2.5 rounding down, column groups", Ty::u8, "e9", {16, 0}, 2.5f, 0, 1, true, 3},
    {"2.7 rounding down, column groups", Ty::u8, "e9", {16, 0}, 2.7f, 0, 1, true, 3},
    {"2.5 rounding down, pixel blocks", Ty::u8, "e9", {2, 7}, 2.5f, 0, 1, true, 2},
    {"2.7 rounding down, pixel blocks", Ty::u8, "e9", {1, 6}, 2.7f, 0, 1, true, 2},
    {"2.7 rounding down, generic loop", Ty::u8, "m7 n8 y8", {6, 0}, 2.7f, 0, 1, true, 3},
    {"-2.5 rounding down, pixel blocks", Ty::s16, "e9", {5, 0}, -2.5f, 0, 1, true, -3},
    {"-2.5 rounding down, generic loop", Ty::s16, "m7 n8 y8", {5, 0}, -2.5f, 0, 1, true, -2},
    {"NaN, column groups and pixel blocks", Ty::u8, "e9", {4, 16}, kNaN, 0, 1, false, 255},
    {"NaN, column groups and pixel blocks", Ty::s16, "e9", {7, 16}, kNaN, 0, 1, false, 32767},
    {"NaN, generic loop", Ty::u8, "m7 n8 y8", {4, 0}, kNaN, 0, 1, false, 0},
    {"NaN, generic loop", Ty::s16, "m7 n8 y8", {7, 0}, kNaN, 0, 1, false, 0},
    {"NaN, generic loop", Ty::s8, "", {4, 0}, kNaN, 0, 1, false, 0},
    {"256.02 saturates", Ty::u8, "", {5, 16}, 1.004f, 0, 255, false, 255},
    {"negative", Ty::u8, "", {5, 16}, -1, 0, 200, false, 0},
    {"far below the 32-bit range", Ty::u8, "", {5, 16}, -1e9f, 0, 200, false, 0},
    {"above", Ty::s16, "", {5, 16}, 2, 0, 30000, false, 32767},
    {"below", Ty::s16, "", {5, 16}, 2, 0, -30000, false, -32768},
    {"far below the 32-bit range", Ty::s16, "", {5, 16}, 1e6f, 0, -30000, false, -32768},
    {"above", Ty::u16, "", {5, 16}, 2, 0, 60000, false, 65535},
    {"negative", Ty::u16, "", {5, 16}, -1, 0, 60000, false, 0},
    {"far below the 32-bit range", Ty::u16, "", {5, 16}, -1e6f, 0, 60000, false, 0},
    {"above", Ty::s8, "", {5, 16}, 2, 0, 100, false, 127},
    {"below", Ty::s8, "", {5, 16}, 2, 0, -100, false, -128},
    {"above", Ty::s32, "", {5, 16}, 4, 0, 1e9, false, 2147483647},
    {"below", Ty::s32, "", {5, 16}, 4, 0, -1e9, false, -2147483648.0},
    {"zero kernel", Ty::u8, "", {5, 16}, 0, 0, 255, false, 0},
    {"zero kernel", Ty::s16, "", {5, 16}, 0, 0, -32768, false, 0},
    {"zero kernel", Ty::u16, "", {5, 16}, 0, 0, 65535, false, 0},
    {"zero kernel", Ty::s8, "", {5, 16}, 0, 0, -128, false, 0},
    {"zero kernel", Ty::s32, "", {5, 16}, 0, 0, 2147483647, false, 0},
};

// Runs one rule through every tier of `name` that it names; returns the
// number of calls made.
template <class T>
int run(const char* name, const Rule& r) {
    using Fn = OrvStatus(const T*, int, T*, int, OrviSize, const Orv32f*, OrviSize, OrviPoint);
    const int kW = 3, kH = 2, h = 3;
    std::vector<float> k(size_t(kW) * kH, r.kRest);
    k[0] = r.k0;
    int calls = 0;
    for (const auto& t : tiers_of<Fn>(name)) {
        if (*r.tiers && !std::strstr(r.tiers, t.tier.c_str())) continue;
        for (int w : r.widths) {
            if (w == 0) continue;
            FilterSource<T> src(w, h, 1, kW, kH, 1, 1, FilterSource<T>::min_step(w, 1, kW));
            src.fill([&](int, int, int) { return T(r.src); });
            std::vector<T> dst(size_t(w) * h, T(1));
            const unsigned csr = _mm_getcsr();
            if (r.down) _mm_setcsr((csr & ~_MM_ROUND_MASK) | _MM_ROUND_DOWN);
            const OrvStatus st = t.fn(src.roi(), src.step(), dst.data(), w * int(sizeof(T)), OrviSize{w, h}, k.data(),
                                      OrviSize{kW, kH}, OrviPoint{1, 1});
            _mm_setcsr(csr);
            ++calls;
            EXPECT_EQ(st, orvStsNoErr);
            for (size_t i = 0; i < dst.size(); ++i)
                if (double(dst[i]) != r.want) {
                    ADD_FAILURE() << t.tier << "_" << name << " width " << w << ", " << r.what << ": pixel " << i
                                  << " is " << double(dst[i]) << ", want " << r.want;
                    break;
                }
        }
    }
    return calls;
}

TEST(FilterIntRules, RoundingAndSaturationByRoute) {
    for (const Rule& r : kRules) {
        int calls = 0;
        switch (r.ty) {
            case Ty::u8: calls = run<Orv8u>("orviFilter32f_8u_C1R", r); break;
            case Ty::s16: calls = run<Orv16s>("orviFilter32f_16s_C1R", r); break;
            case Ty::u16: calls = run<Orv16u>("orviFilter32f_16u_C1R", r); break;
            case Ty::s8: calls = run<Orv8s>("orviFilter32f_8s_C1R", r); break;
            case Ty::s32: calls = run<Orv32s>("orviFilter32f_32s_C1R", r); break;
        }
        const char* named = *r.tiers ? r.tiers : "m7 n8 y8 e9";
        bool tested = false;
        for (const char* t : {"m7", "n8", "y8", "e9"}) tested = tested || (std::strstr(named, t) && tier_tested(t));
        if (tested) {
            EXPECT_GT(calls, 0) << r.what << ": no tier";
        }
    }
}

}  // namespace
}  // namespace orv::test
