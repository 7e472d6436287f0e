// Helpers shared by the table builders of the specifications: reading a
// twiddle off the base sine table, the reversed-counter walk of the
// bit-reversal tables, and 32-byte rounding of a table's end.
//
// The base table of order b holds T[i] = sin(2 pi i / 2^b), i = 0 .. 2^(b-2),
// with T[2^(b-2)] = 1. A table of a transform of order m <= b reads it with
// stride 2^(b-m).
#pragma once

#include <cstdint>

#include "fft/spec_record.h"
#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace fftab {

// A twiddle as the forward transform stores it: (cos a, -sin a).
template <class T>
struct Twiddle {
    T re, im;
};

// The base table and its order.
template <class T>
struct Base {
    const T* t;
    int order;
    // (cos, -sin) of 2 pi x / 2^m for 0 <= x < 2^m, m <= order: the angle is
    // folded onto the first quadrant by quarter; each quarter boundary
    // belongs to the quarter below it.
    Twiddle<T> at(std::int64_t x, int m) const {
        const std::int64_t M = std::int64_t{1} << m, q = M / 4;
        const int sh = order - m;
        auto T_ = [&](std::int64_t i) { return t[i << sh]; };
        if (x <= q) return {T_(q - x), -T_(x)};
        if (x <= 2 * q) return {-T_(x - q), -T_(2 * q - x)};
        if (x <= 3 * q) return {-T_(3 * q - x), T_(x - 2 * q)};
        return {T_(x - 3 * q), T_(M - x)};
    }
};

// Calls f(k, rev(k)) for k = 1 .. n-1, rev reversing the log2(n) low bits,
// advancing rev by the reversed carry: clear the leading ones from the top,
// then set the first zero.
template <class F>
void for_each_reversed(std::uint32_t n, F f) {
    std::uint32_t r = 0;
    for (std::uint32_t k = 1; k < n; ++k) {
        std::uint32_t h = n / 2;
        while (h <= r) r -= h, h /= 2;
        r += h;
        f(k, r);
    }
}

template <class T>
Orv8u* end_aligned(T* p) {
    return orv::fft::align_up32(reinterpret_cast<Orv8u*>(p));
}

}  // namespace fftab
}  // namespace
}  // namespace orv::ORV_TIER_NS
