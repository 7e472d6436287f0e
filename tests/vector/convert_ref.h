// Reference models of the conversions, element by element in double
// precision, and the pieces the conversion tests share: MXCSR control,
// placement of arrays against guard pages, test data.
#pragma once

#include <xmmintrin.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "support/guarded.h"

namespace orv::test {

// ---- MXCSR ------------------------------------------------------------
constexpr unsigned kMxcsrDefault = 0x1F80;
constexpr unsigned kRoundDown = 0x2000, kRoundUp = 0x4000, kRoundZero = 0x6000;
constexpr unsigned kDaz = 0x40, kInvalid = 0x1, kInexact = 0x20;

// Sets MXCSR for the scope and puts the test's own word back after it.
class MxcsrScope {
public:
    explicit MxcsrScope(unsigned word) : saved_(_mm_getcsr()) { _mm_setcsr(word); }
    ~MxcsrScope() { _mm_setcsr(saved_); }
    MxcsrScope(const MxcsrScope&) = delete;
    MxcsrScope& operator=(const MxcsrScope&) = delete;

private:
    unsigned saved_;
};

// ---- Elements at any byte offset -----------------------------------------
template <class T>
T get(const T* p, size_t i) {
    T v;
    std::memcpy(&v, p + i, sizeof v);
    return v;
}
template <class T>
void put(T* p, size_t i, T v) {
    std::memcpy(p + i, &v, sizeof v);
}

inline float bits_to_float(uint32_t b) {
    float f;
    std::memcpy(&f, &b, sizeof f);
    return f;
}

// ---- Single <-> double ----------------------------------------------------
// Narrowing by the current rounding mode after the clamp to +-FLT_MAX; a NaN
// becomes +FLT_MAX or stays a NaN, by tier.
inline float ref_narrow(double x, bool nanToMax) {
    if (std::isnan(x)) return nanToMax ? FLT_MAX : static_cast<float>(x);
    if (x > FLT_MAX) x = FLT_MAX;
    if (x < -FLT_MAX) x = -FLT_MAX;
    return static_cast<float>(x);
}

// ---- Float to integer ------------------------------------------------------
enum class Rule { Near, Trunc, HalfAway };

struct IntType {
    int64_t lo, hi;
    bool floorAtZero;  // 16u: a maximum with 0 instead of a minimum with hi
    bool isSigned;
};
inline constexpr IntType k8u{0, 255, false, false};
inline constexpr IntType k8s{-128, 127, false, true};
inline constexpr IntType k16s{-32768, 32767, false, true};
inline constexpr IntType k16u{0, 65535, true, false};

// Rounds a double to float towards zero.
inline float to_float_rz(double d) {
    float f = static_cast<float>(d);
    if (std::fabs(static_cast<double>(f)) > std::fabs(d)) f = std::nextafter(f, 0.0f);
    return f;
}

// x * 2^-sf as the conversion computes it: the factor by repeated halving
// or doubling in single precision, the product in single precision; both
// round to nearest, or towards zero for the half-away rule.
inline float ref_scaled(float x, int sf, Rule rule) {
    if (sf == 0) return x;
    const bool rz = rule == Rule::HalfAway;
    double factor;
    if (sf > 0) factor = sf <= 149 ? std::ldexp(1.0, -sf) : 0.0;
    else factor = sf >= -127 ? std::ldexp(1.0, -sf) : (rz ? FLT_MAX : INFINITY);
    const double p = static_cast<double>(x) * factor;  // exact, or NaN for 0 * inf
    if (std::isnan(p)) return std::numeric_limits<float>::quiet_NaN();
    return rz ? to_float_rz(p) : static_cast<float>(p);
}

// One element, without the pass that zeroes NaNs afterwards.
inline int64_t ref_to_int(float x, const IntType& t, Rule rule, int sf) {
    double m = ref_scaled(x, sf, rule);
    if (t.floorAtZero) m = std::isnan(m) || m < 0 ? 0.0 : m;
    else m = std::isnan(m) || m > t.hi ? static_cast<double>(t.hi) : m;
    double r;
    switch (rule) {
        case Rule::Near: r = std::nearbyint(m); break;  // the tests run with round to nearest
        case Rule::Trunc: r = std::trunc(m); break;
        default: r = t.isSigned ? std::copysign(std::trunc(std::fabs(m) + 0.5), m) : std::trunc(m + 0.5); break;
    }
    // The 32-bit conversion gives 0x80000000 out of range.
    int32_t i = r >= -2147483648.0 && r < 2147483648.0 ? static_cast<int32_t>(r) : INT32_MIN;
    if (t.floorAtZero) {  // moved down by 32768 in 32 bits, packed signed, top bit flipped
        const int32_t moved = static_cast<int32_t>(static_cast<uint32_t>(i) - 32768u);
        return (moved < -32768 ? -32768 : moved > 32767 ? 32767 : moved) + 32768;
    }
    return i < t.lo ? t.lo : i > t.hi ? t.hi : i;
}

// A whole vector, with the NaN pass of the two rules that have one.
// nanZeroes: how many elements from a NaN's position the pass clears.
inline std::vector<int64_t> ref_convert(const std::vector<float>& src, const IntType& t, Rule rule, int sf,
                                        int nanZeroes) {
    std::vector<int64_t> out(src.size());
    for (size_t i = 0; i < src.size(); ++i) out[i] = ref_to_int(src[i], t, rule, sf);
    if (rule != Rule::HalfAway && !t.floorAtZero)
        for (size_t i = 0; i < src.size(); ++i)
            if (std::isnan(src[i]))
                for (size_t k = i; k < i + nanZeroes && k < src.size(); ++k) out[k] = 0;
    return out;
}

// ---- Test data ------------------------------------------------------------
// Values around a range [lo, hi]: integers, halfway cases, fractions near
// them, the bounds and beyond, and, with the given odds, specials.
inline std::vector<float> mixed_floats(size_t n, double lo, double hi, std::mt19937& rng, double specialOdds) {
    std::uniform_real_distribution<double> u(lo - 0.1 * (hi - lo), hi + 0.1 * (hi - lo));
    std::uniform_int_distribution<int> kind(0, 5);
    std::bernoulli_distribution special(specialOdds);
    const float specials[] = {std::numeric_limits<float>::quiet_NaN(), bits_to_float(0xFFC00001u),
                              bits_to_float(0x7F800001u),  // signalling NaN
                              INFINITY, -INFINITY, FLT_MAX, -FLT_MAX, 3e9f, -3e9f, 2147483648.0f,
                              -2147483648.0f, 0.0f, -0.0f, FLT_MIN / 4, -FLT_MIN / 4};
    std::uniform_int_distribution<size_t> pick(0, std::size(specials) - 1);
    std::vector<float> v(n);
    for (auto& x : v) {
        if (special(rng)) {
            x = specials[pick(rng)];
            continue;
        }
        const double base = std::floor(u(rng));
        switch (kind(rng)) {
            case 0: x = static_cast<float>(base); break;
            case 1: x = static_cast<float>(base + 0.5); break;
            case 2: x = std::nextafter(static_cast<float>(base + 0.5), 0.0f); break;
            case 3: x = std::nextafter(static_cast<float>(base + 0.5), INFINITY); break;
            default: x = static_cast<float>(u(rng)); break;
        }
    }
    return v;
}

// Lengths 1 to 100, then either side of larger multiples of the block.
inline std::vector<int> test_lengths() {
    std::vector<int> v;
    for (int n = 1; n <= 100; ++n) v.push_back(n);
    for (int n : {127, 128, 129, 255, 256, 257, 1000, 1031}) v.push_back(n);
    return v;
}

// Byte offsets of source and destination for the k-th run of a length:
// over the lengths every offset from 0 to 31 occurs for both arrays, in
// varying pairs.
inline size_t src_offset(int len, int k) { return static_cast<size_t>(len * 7 + k * 13) % 32; }
inline size_t dst_offset(int len, int k) { return static_cast<size_t>(len * 11 + k * 5 + 3 * (len & 1)) % 32; }

}  // namespace orv::test
