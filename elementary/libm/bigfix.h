// Compile-time multi-word fixed-point arithmetic: enough to derive the scalar
// layer's tables (pi and 1/pi to over a thousand bits, sines, cosines and
// logarithms to a few hundred) from their definitions while the compiler
// builds the library, so no table is typed in and none needs a constructor.
#pragma once

#include <bit>
#include <cstdint>

namespace orv::libm::fix {

using u128 = unsigned __int128;

// An unsigned value with N 64-bit words: w[0] is the integer part, w[1..]
// the fraction from the most significant word down.
template <int N>
struct Fix {
    uint64_t w[N] = {};
};

template <int N>
constexpr Fix<N> from_int(uint64_t v) {
    Fix<N> r;
    r.w[0] = v;
    return r;
}

template <int N>
constexpr Fix<N> add(Fix<N> a, const Fix<N>& b) {
    uint64_t carry = 0;
    for (int i = N - 1; i >= 0; --i) {
        u128 s = static_cast<u128>(a.w[i]) + b.w[i] + carry;
        a.w[i] = static_cast<uint64_t>(s);
        carry = static_cast<uint64_t>(s >> 64);
    }
    return a;
}

template <int N>
constexpr Fix<N> sub(Fix<N> a, const Fix<N>& b) {
    uint64_t borrow = 0;
    for (int i = N - 1; i >= 0; --i) {
        uint64_t d = a.w[i] - b.w[i] - borrow;
        borrow = (a.w[i] < b.w[i]) || (a.w[i] == b.w[i] && borrow);
        a.w[i] = d;
    }
    return a;
}

template <int N>
constexpr bool less(const Fix<N>& a, const Fix<N>& b) {
    for (int i = 0; i < N; ++i)
        if (a.w[i] != b.w[i]) return a.w[i] < b.w[i];
    return false;
}

template <int N>
constexpr bool is_zero(const Fix<N>& a) {
    for (int i = 0; i < N; ++i)
        if (a.w[i]) return false;
    return true;
}

template <int N>
constexpr Fix<N> mul_small(Fix<N> a, uint64_t m) {
    u128 carry = 0;
    for (int i = N - 1; i >= 0; --i) {
        u128 p = static_cast<u128>(a.w[i]) * m + carry;
        a.w[i] = static_cast<uint64_t>(p);
        carry = p >> 64;
    }
    return a;
}

template <int N>
constexpr Fix<N> div_small(Fix<N> a, uint64_t d) {
    u128 rem = 0;
    for (int i = 0; i < N; ++i) {
        u128 cur = (rem << 64) | a.w[i];
        a.w[i] = static_cast<uint64_t>(cur / d);
        rem = cur % d;
    }
    return a;
}

// The product, truncated below the last word. Integer parts must be small
// enough for the product's integer part to fit one word.
template <int N>
constexpr Fix<N> mul(const Fix<N>& a, const Fix<N>& b) {
    // acc[p + 1] holds weight 2^(-64 p); acc[0] catches the integer carry.
    uint64_t acc[N + 1] = {};
    for (int i = 0; i < N; ++i) {
        for (int j = 0; i + j < N + 1 && j < N; ++j) {
            u128 p = static_cast<u128>(a.w[i]) * b.w[j];
            int pos = i + j + 1;
            uint64_t parts[2] = {static_cast<uint64_t>(p), static_cast<uint64_t>(p >> 64)};
            for (int h = 0; h < 2; ++h) {
                int q = pos - h;
                if (q > N) continue;  // below the kept words
                uint64_t carry = parts[h];
                while (carry && q >= 0) {
                    u128 s = static_cast<u128>(acc[q]) + carry;
                    acc[q] = static_cast<uint64_t>(s);
                    carry = static_cast<uint64_t>(s >> 64);
                    --q;
                }
            }
        }
    }
    Fix<N> r;
    for (int i = 0; i < N; ++i) r.w[i] = acc[i + 1];
    return r;
}

// atanh(p / q) = sum (p/q)^(2n+1) / (2n+1), for 0 <= p < q.
template <int N>
constexpr Fix<N> atanh_ratio(uint64_t p, uint64_t q) {
    Fix<N> power = div_small(from_int<N>(p), q);
    Fix<N> sum;
    for (uint64_t n = 1; !is_zero(power); n += 2) {
        sum = add(sum, div_small(power, n));
        power = div_small(mul_small(power, p * p), q * q);
    }
    return sum;
}

// atan(1 / q) with alternating signs; q >= 2.
template <int N>
constexpr Fix<N> atan_inv(uint64_t q) {
    Fix<N> power = div_small(from_int<N>(1), q);
    Fix<N> sum;
    bool negative = false;
    for (uint64_t n = 1; !is_zero(power); n += 2) {
        Fix<N> term = div_small(power, n);
        sum = negative ? sub(sum, term) : add(sum, term);
        negative = !negative;
        power = div_small(power, q * q);
    }
    return sum;
}

// pi = 16 atan(1/5) - 4 atan(1/239).
template <int N>
constexpr Fix<N> pi() {
    return sub(mul_small(atan_inv<N>(5), 16), mul_small(atan_inv<N>(239), 4));
}

// ln(a / b) for b <= a < 3b, as 2 atanh((a - b) / (a + b)).
template <int N>
constexpr Fix<N> log_ratio(uint64_t a, uint64_t b) {
    return mul_small(atanh_ratio<N>(a - b, a + b), 2);
}

// 1 / v by Newton's iteration y <- y (2 - v y) from a double seed; v in
// [1, 4) so the seed is within a part in 2^50 of the answer.
template <int N>
constexpr Fix<N> reciprocal(const Fix<N>& v, double seed) {
    Fix<N> y;
    uint64_t bits = static_cast<uint64_t>(seed * 0x1p60);
    y.w[1] = bits << 4;  // seed < 1: only fraction bits
    for (int it = 0; it < 12; ++it) y = mul(y, sub(from_int<N>(2), mul(v, y)));
    return y;
}

// sin and cos of t by their series, for 0 <= t <= 1.
template <int N>
constexpr Fix<N> sin_series(const Fix<N>& t, bool cosine) {
    Fix<N> t2 = mul(t, t);
    Fix<N> term = cosine ? from_int<N>(1) : t;
    Fix<N> sum;
    bool negative = false;
    for (uint64_t n = cosine ? 0 : 1; !is_zero(term); n += 2) {
        sum = negative ? sub(sum, term) : add(sum, term);
        negative = !negative;
        term = div_small(mul(term, t2), (n + 1) * (n + 2));
    }
    return sum;
}

// ---- Conversion to doubles --------------------------------------------------

// Index of the highest set bit, counted as the power of two it stands for
// (0 for the integer part's lowest bit, -1 for the first fraction bit).
template <int N>
constexpr int top_bit(const Fix<N>& a) {
    for (int i = 0; i < N; ++i)
        if (a.w[i]) return 63 - std::countl_zero(a.w[i]) - 64 * i;
    return -64 * N;
}

// Bit of weight 2^e (0 outside the stored words).
template <int N>
constexpr unsigned bit_at(const Fix<N>& a, int e) {
    int pos = -e + 63;  // bit position counted from the top of w[0]
    if (pos < 0 || pos >= 64 * N) return 0;
    return (a.w[pos / 64] >> (63 - pos % 64)) & 1u;
}

// a rounded to nearest (ties to even) at the bit of weight 2^lsb, as a double;
// the result must fit 53 bits.
template <int N>
constexpr double round_at(const Fix<N>& a, int lsb) {
    int top = top_bit(a);
    if (top < lsb) {
        // Below the kept bits: rounds to 0 or to 2^lsb.
        bool up = top == lsb - 1 && [&] {
            for (int e = top - 1; e >= -64 * N + 64; --e)
                if (bit_at(a, e)) return true;
            return false;
        }();
        return up ? std::bit_cast<double>(static_cast<uint64_t>(1023 + lsb) << 52) : 0.0;
    }
    uint64_t m = 0;
    for (int e = top; e >= lsb; --e) m = (m << 1) | bit_at(a, e);
    unsigned half = bit_at(a, lsb - 1);
    bool sticky = false;
    for (int e = lsb - 2; e >= -64 * N + 64; --e)
        if (bit_at(a, e)) { sticky = true; break; }
    if (half && (sticky || (m & 1))) ++m;
    // m * 2^lsb, with m < 2^54: exact in a double.
    double scale = 1.0;
    for (int e = 0; e < lsb; ++e) scale *= 2.0;
    for (int e = 0; e > lsb; --e) scale *= 0.5;
    return static_cast<double>(m) * scale;
}

// a rounded to the nearest double (53 significant bits).
template <int N>
constexpr double to_double(const Fix<N>& a) {
    return is_zero(a) ? 0.0 : round_at(a, top_bit(a) - 52);
}

// The exact value of a non-negative double below 2^64.
template <int N>
constexpr Fix<N> from_double(double d) {
    Fix<N> r;
    if (d == 0.0) return r;
    uint64_t bits = std::bit_cast<uint64_t>(d);
    int e = static_cast<int>(bits >> 52) - 1075;
    uint64_t m = (bits & ((1ull << 52) - 1)) | (1ull << 52);
    for (int b = 0; b < 53; ++b) {
        if (!((m >> b) & 1)) continue;
        int pos = -(e + b) + 63;
        r.w[pos / 64] |= 1ull << (63 - pos % 64);
    }
    return r;
}

// a - b as a double (either sign), rounded to nearest.
template <int N>
constexpr double diff_to_double(const Fix<N>& a, const Fix<N>& b) {
    return less(a, b) ? -to_double(sub(b, a)) : to_double(sub(a, b));
}

}  // namespace orv::libm::fix
