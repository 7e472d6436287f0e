// Normal deviates by the polar method from a uniform source that adds a
// subtract-with-borrow sequence (modulus 2^32 - 18) to a linear congruential
// one. The caller's seed word is the only state: the borrow generator starts
// from it and the congruential word from a constant at every call, and only
// the most recent term goes back into the seed. Scalar, so every tier yields
// the same numbers.
#include <cmath>
#include <cstdint>

#include "internal/orv_unaligned.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

constexpr uint32_t kLcgMul = 69069;
constexpr uint32_t kLcgAdd = 1013904243;
constexpr uint32_t kLcgInit = 1131199209;
constexpr uint32_t kSwbFix = 18;
constexpr double kToUnit = 4.656612873077e-10;  // bits 0x3DFFFFFFFFFFFD09: int32 to (-1, 1)
struct Source {
    uint32_t x, y, z;  // the last three terms, x the most recent
    int32_t c;         // borrow, 0 or -1
    uint32_t l;        // congruential word

    explicit Source(uint32_t seed)
        : x(seed), y(seed * kLcgMul + kLcgAdd), z(y * kLcgMul + kLcgAdd), c(-1), l(kLcgInit) {}

    // Two further terms of s[n] = s[n-2] - s[n-3] + c[n-1]; a term that comes
    // out negative loses 18 and leaves a borrow.
    void next(double& u1, double& u2) {
        const int32_t t = static_cast<int32_t>(c + y - z);
        const int32_t b = t >> 31;
        const uint32_t newY = static_cast<uint32_t>(t) - (b & kSwbFix);
        const int32_t t2 = static_cast<int32_t>(b + x - y);
        c = t2 >> 31;
        const uint32_t newX = static_cast<uint32_t>(t2) - (c & kSwbFix);
        z = x;
        y = newY;
        x = newX;
        l = l * kLcgMul + kLcgAdd;
        u1 = static_cast<double>(static_cast<int32_t>(newY + l)) * kToUnit;
        l = l * kLcgMul + kLcgAdd;
        u2 = static_cast<double>(static_cast<int32_t>(newX + l)) * kToUnit;
    }

    // A pair inside the unit circle, and its factor sqrt(-2 ln S / S).
    double accepted(double& u1, double& u2) {
        double s;
        do {
            next(u1, u2);
            s = u1 * u1 + u2 * u2;
        } while (s >= 1.0 || s == 0.0);
        return sqrt(log(s) * -2.0 / s);
    }
};

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orvsRandGauss_Direct_64f)(Orv64f* pDst, int len, Orv64f mean, Orv64f stdev,
                                                       unsigned int* pSeed) {
    if (!pDst || !pSeed) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    Source src(load_elem(pSeed));
    double u1, u2;
    double f = src.accepted(u1, u2);
    for (; len > 1; len -= 2, pDst += 2) {
        store_elem(pDst, u2 * stdev * f + mean);
        store_elem(pDst + 1, u1 * stdev * f + mean);
        f = src.accepted(u1, u2);
    }
    // The pair made last is written in part or not at all; its state stays.
    if (len == 1) store_elem(pDst, u2 * stdev * f + mean);
    store_elem(pSeed, src.x);
    return orvStsNoErr;
}
