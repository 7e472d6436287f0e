// The scalar layer's tables, derived at compile time from their definitions:
// the bits of 1/pi, sines and cosines of j pi / 32, and the logarithms of the
// reciprocal table points. Constant-initialised, so the library keeps no
// static constructor.
#pragma once

#include <cstdint>

#include "bigfix.h"

namespace orv::libm {

// ---- 1/pi ------------------------------------------------------------------
// PI_INV_TABLE[w] = floor(2^(64 w) / pi) mod 2^64: word 0 is the (zero)
// integer part, then the fraction bits of 1/pi, most significant first. The
// large-argument reduction needs a window of 192 bits starting just above
// the bit that the argument's exponent selects, which for the largest double
// ends within word 19.
inline constexpr int kPiInvWords = 20;

struct PiInvTable {
    uint64_t w[kPiInvWords];
};

constexpr PiInvTable make_pi_inv_table() {
    // Two guard words beyond the table.
    constexpr int N = kPiInvWords + 2;
    auto inv = fix::reciprocal(fix::pi<N>(), 0.3183098861837907);
    PiInvTable t{};
    for (int i = 0; i < kPiInvWords; ++i) t.w[i] = inv.w[i];
    return t;
}

// ---- pi / 32 and the sines and cosines of its multiples ---------------------
// One entry per j = 0..63: low part of cos(j pi/32), high part of sin, low
// part of sin, high part of cos. The high part of sin is the nearest double;
// the high part of cos has at most 27 significant bits, so that its product
// with a 26-bit part of the reduced argument is exact.
struct CEntry {
    double cos_lo, sin_hi, sin_lo, cos_hi;
};
struct CTable {
    CEntry e[64];
};

inline constexpr int kTrigWords = 5;  // 256 fraction bits
using TrigFix = fix::Fix<kTrigWords>;

constexpr TrigFix pi_over_32() { return fix::div_small(fix::pi<kTrigWords>(), 32); }

// sin and cos of j pi / 32 for 0 <= j <= 16 from the series (the argument
// is below 1 for j <= 8; the rest by the quarter-period identity).
constexpr void sin_cos_first_quadrant(int j, TrigFix& s, TrigFix& c) {
    if (j > 8) {
        sin_cos_first_quadrant(16 - j, c, s);
        return;
    }
    TrigFix t = fix::mul_small(pi_over_32(), static_cast<uint64_t>(j));
    s = fix::sin_series(t, false);
    c = fix::sin_series(t, true);
}

// x rounded toward zero to `bits` significant bits.
constexpr double truncate_bits(double x, int bits) {
    uint64_t b = std::bit_cast<uint64_t>(x);
    return std::bit_cast<double>(b & ~((1ull << (53 - bits)) - 1));
}

// -x when asked, keeping zeros positive (the entries for 0 and 16 hold +0).
constexpr double negate_if(bool neg, double x) { return neg && x != 0.0 ? -x : x; }

constexpr CTable make_ctable() {
    CTable t{};
    for (int j = 0; j < 64; ++j) {
        // Reduce to the first quadrant and track the signs.
        int q = j / 16, r = j % 16;
        TrigFix s, c;
        sin_cos_first_quadrant(r, s, c);
        // Rotation by q quarter turns: (s, c) -> (c, -s) -> (-s, -c) -> (-c, s).
        TrigFix sv = (q == 0 || q == 2) ? s : c;
        TrigFix cv = (q == 0 || q == 2) ? c : s;
        bool sneg = q >= 2;
        bool cneg = q == 1 || q == 2;
        double sh = fix::to_double(sv);
        double sl = fix::diff_to_double(sv, fix::from_double<kTrigWords>(sh));
        double ch = truncate_bits(fix::to_double(cv), 27);
        double cl = fix::diff_to_double(cv, fix::from_double<kTrigWords>(ch));
        t.e[j] = {negate_if(cneg, cl), negate_if(sneg, sh), negate_if(sneg, sl), negate_if(cneg, ch)};
    }
    return t;
}

// pi / 32 as a double-double, for the large-argument reduction.
struct DoubleDouble {
    double hi, lo;
};
constexpr DoubleDouble make_pi_over_32() {
    TrigFix p = pi_over_32();
    double hi = fix::to_double(p);
    return {hi, fix::diff_to_double(p, fix::from_double<kTrigWords>(hi))};
}

// ---- Logarithms of the reciprocal table points ------------------------------
// Point i = 0..128 stands for rc_i = (128 + i) / 256 in [1/2, 1]; the entry
// is -ln(rc_i) = ln(256 / (128 + i)) in a high part on the grid of 2^-42 (the
// grid of ln 2's high part, so that e ln2_hi + high part is exact) and a low
// part holding the rest to full precision.
inline constexpr int kLogEntries = 129;
struct LEntry {
    double hi, lo;
};
struct LTable {
    LEntry e[kLogEntries];
};

inline constexpr int kLogWords = 4;

constexpr LTable make_ltable() {
    using F = fix::Fix<kLogWords>;
    LTable t{};
    F ln2 = fix::log_ratio<kLogWords>(2, 1);
    for (int i = 0; i < kLogEntries; ++i) {
        // ln(256 / (128 + i)) = ln 2 - ln((128 + i) / 128).
        F v = fix::sub(ln2, fix::log_ratio<kLogWords>(128 + static_cast<uint64_t>(i), 128));
        double hi = fix::round_at(v, -42);
        t.e[i] = {hi, fix::diff_to_double(v, fix::from_double<kLogWords>(hi))};
    }
    return t;
}

// ---- Table points by mantissa cell --------------------------------------------
// A mantissa m = 1 + k / 256 + F 2^-52 (cell k from the top 8 fraction bits,
// F < 2^44 from the rest) is paired with the table point i whose rc_i =
// (128 + i) / 256 keeps |m rc_i - 1| smallest over the cell: the reciprocal
// of m rounded to 8 bits, fixed per cell, so that a lookup replaces a
// reciprocal estimate. The cells next to m = 1 and m = 2 get the points 1
// and 1/2, whose logarithms cancel e ln 2 exactly around x = 1.
//
// The entries are integers in fixed point, for exact sums in integer
// registers: z = m rc - 1 is
//   z 2^60 = zc + F rc,  zc = ((256 + k)(128 + i) - 2^16) 2^44,  rc = 128 + i
// and the point's logarithm -ln rc is hi 2^42 (exact: hi is on that grid)
// and lo 2^94.
inline constexpr int kLogCells = 256;
struct alignas(32) LogCell {
    int64_t zc, rc, hi, lo;
};
struct LogCells {
    LogCell c[kLogCells];
};

// z 2^60 at the start of cell k with point i.
constexpr int64_t log_cell_zc(int k, int i) { return ((256 + k) * (128 + i) - 65536) * (int64_t{1} << 44); }

// The largest |z 2^60| over cell k with point i: at F = 0 or F -> 2^44.
constexpr int64_t log_cell_max_z(int k, int i) {
    int64_t lo = log_cell_zc(k, i);
    int64_t hi = lo + (128 + i) * (int64_t{1} << 44);
    lo = lo < 0 ? -lo : lo;
    hi = hi < 0 ? -hi : hi;
    return lo > hi ? lo : hi;
}

// From rc = 1 down, keeping the first of equals: the first cell takes 1.
constexpr int log_cell_point(int k) {
    int best = kLogEntries - 1;
    for (int i = kLogEntries - 2; i >= 0; --i)
        if (log_cell_max_z(k, i) < log_cell_max_z(k, best)) best = i;
    return best;
}

constexpr int64_t log_cells_max_z() {
    int64_t m = 0;
    for (int k = 0; k < kLogCells; ++k) {
        int64_t z = log_cell_max_z(k, log_cell_point(k));
        m = z > m ? z : m;
    }
    return m;
}

// v rounded to the nearest integer, for |v| < 2^62.
constexpr int64_t round_to_int(double v) {
    int64_t t = static_cast<int64_t>(v);
    double r = v - static_cast<double>(t);
    return r > 0.5 ? t + 1 : r < -0.5 ? t - 1 : t;
}

constexpr LogCells make_log_cells(const LTable& l) {
    LogCells t{};
    for (int k = 0; k < kLogCells; ++k) {
        int i = log_cell_point(k);
        t.c[k] = {log_cell_zc(k, i), 128 + i,
                  static_cast<int64_t>(l.e[i].hi * 0x1p42), round_to_int(l.e[i].lo * 0x1p94)};
    }
    return t;
}

}  // namespace orv::libm
