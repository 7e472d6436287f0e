// Bit views of doubles and floats, and the error of a result in units in the
// last place of the exact value.
#pragma once

#include <cmath>
#include <cstdint>

namespace orv::test {

inline uint64_t bits(double x) { return __builtin_bit_cast(uint64_t, x); }
inline double from_bits(uint64_t b) { return __builtin_bit_cast(double, b); }
inline float float_from_bits(uint32_t b) { return __builtin_bit_cast(float, b); }

// |y - exact| in ulps of the exact value as a double (subnormal spacing below
// the normal range).
inline double ulp_error(double y, long double exact) {
    int e;
    std::frexp(static_cast<double>(exact), &e);
    const int ulpExp = (e - 1 < -1022 ? -1022 : e - 1) - 52;
    return static_cast<double>(std::fabs(static_cast<long double>(y) - exact) / std::ldexp(1.0L, ulpExp));
}

}  // namespace orv::test
