// cos and sin: three bodies each (.A baseline, .L high word from memory, .N
// rounding by roundsd) and the exported entries that pick one by the
// processor indicator word at every call.
//
// The argument is reduced by pi/32: x = k pi/32 + r, |r| <= pi/64 (slightly
// more where the reduction rounds half away from zero). With S and C the
// sine and cosine of j pi/32 (j = k mod 64, plus a quarter period for cos),
// sin x = S cos r + C sin r, the leading S + C r_hi computed exactly.
#include <immintrin.h>

#include "libm.h"
#include "tables.h"

namespace orv::libm {
namespace {

enum class Fn { Sin, Cos };

constexpr CTable Ctable = make_ctable();
constexpr PiInvTable PI_INV_TABLE = make_pi_inv_table();
constexpr DoubleDouble kPiOver32 = make_pi_over_32();

constexpr double PI32INV = from_bits(0x40245F306DC9C883);  // 32 / pi
// pi/32 in three parts: k P_1 and k P_2 are exact for |k| < 2^20.
constexpr double P_1 = from_bits(0x3FB921FB54400000);
constexpr double P_2 = from_bits(0x3D90B4611A600000);
constexpr double P_3 = from_bits(0x3B63198A2E037073);
// Taylor coefficients in pairs {odd series, even series}.
alignas(16) constexpr double SC_1[2] = {-1.0 / 6.0, -1.0 / 2.0};
alignas(16) constexpr double SC_2[2] = {1.0 / 120.0, 1.0 / 24.0};
alignas(16) constexpr double SC_3[2] = {-1.0 / 5040.0, -1.0 / 720.0};
alignas(16) constexpr double SC_4[2] = {1.0 / 362880.0, 1.0 / 40320.0};
constexpr uint64_t ONEHALF = 0x3FE0000000000000;
constexpr uint64_t SIGN_MASK = 0x8000000000000000;
constexpr double NEG_ZERO = -0.0;
constexpr double SHIFTER = from_bits(0x4338000000000000);  // 1.5 * 2^52
constexpr double ALL_ONES = from_bits(0x3FEFFFFFFFFFFFFF);
constexpr double TWO_POW_55 = 0x1p55;
constexpr double TWO_POW_M55 = 0x1p-55;

// |r| below 2^-40 with S = 0: x lies so close to a multiple of pi/2 that the
// three-part reduction's absolute error (about 2^-105) could show in the
// result, so the exact reduction redoes it.
constexpr double kNearMultiple = 0x1p-40;
constexpr double kSplit = 134217729.0;  // 2^27 + 1

// The reduced argument: x = k pi/32 + rh + rl.
struct Reduced {
    int k;
    double rh, rl;
};

// 2^e for a normal exponent.
inline double pow2(int e) { return from_bits(static_cast<uint64_t>(1023 + e) << 52); }

// a * b as an exact sum, by Dekker's splitting (no fused multiply-add).
Sum two_prod(double a, double b) {
    double p = a * b;
    double ca = kSplit * a, cb = kSplit * b;
    double ah = ca - (ca - a), al = a - ah;
    double bh = cb - (cb - b), bl = b - bh;
    return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

// Reduction of a finite |x| >= pi/64 by the bits of 1/pi: y = x 32/pi is
// formed exactly enough from the 192 bits of 1/pi that the exponent of x
// selects (higher bits give multiples of 64, lower ones less than 2^-133),
// its integer part modulo 64 is k and the fraction, rounded, gives r.
__attribute__((noinline)) Reduced reduce_large(double x) {
    using u128 = unsigned __int128;
    uint64_t bits = to_bits(x);
    int ex = static_cast<int>((bits >> 52) & 0x7FF) - 1075;  // x = M 2^ex
    uint64_t m = (bits & ((1ull << 52) - 1)) | (1ull << 52);
    // The window starts at bit ex of 1/pi; bit i of 1/pi is bit i + 63 of the
    // table read as one string (its first word is the integer part, 0).
    int start = ex + 63;
    int word = start / 64, shift = start % 64;
    uint64_t w[3];
    for (int i = 0; i < 3; ++i) {
        uint64_t a = PI_INV_TABLE.w[word + i], b = PI_INV_TABLE.w[word + i + 1];
        w[i] = shift ? (a << shift) | (b >> (64 - shift)) : a;
    }
    // P = M * W; y mod 64 = P 2^-186 mod 64.
    u128 p2w = static_cast<u128>(m) * w[2];
    u128 p1w = static_cast<u128>(m) * w[1];
    u128 p0w = static_cast<u128>(m) * w[0];
    uint64_t p0 = static_cast<uint64_t>(p2w);
    u128 mid = (p2w >> 64) + static_cast<uint64_t>(p1w);
    uint64_t p1 = static_cast<uint64_t>(mid);
    uint64_t p2 = static_cast<uint64_t>((mid >> 64) + (p1w >> 64) + static_cast<uint64_t>(p0w));
    // The top 128 bits of the fraction, read as a signed number: a fraction of
    // one half or more stands for fraction - 1, which rounds k to nearest.
    uint64_t fhi = (p2 << 6) | (p1 >> 58);
    uint64_t flo = (p1 << 6) | (p0 >> 58);
    __int128 f = static_cast<__int128>((static_cast<u128>(fhi) << 64) | flo);
    int k = static_cast<int>((p2 >> 58) + (fhi >> 63));
    // |f| 2^-128 as fh + fl: its leading 106 bits (the rest is below 2^-106 of
    // the value), each part a 53-bit integer times a power of two.
    bool negative = f < 0;
    u128 u = negative ? -static_cast<u128>(f) : static_cast<u128>(f);
    if (u == 0) return {bits >> 63 ? -k : k, 0.0, 0.0};
    uint64_t uh = static_cast<uint64_t>(u >> 64);
    int n = uh ? std::countl_zero(uh) : 64 + std::countl_zero(static_cast<uint64_t>(u));
    u128 v = u << n;
    double fh = static_cast<double>(static_cast<uint64_t>(v >> 75)) * pow2(-53 - n);
    double fl = static_cast<double>(static_cast<uint64_t>(v >> 22) & ((1ull << 53) - 1)) * pow2(-106 - n);
    if (negative) {
        fh = -fh;
        fl = -fl;
    }
    // r = f pi/32 in double-double.
    Sum p = two_prod(fh, kPiOver32.hi);
    Sum r = fast_two_sum(p.s, p.e + (fh * kPiOver32.lo + fl * kPiOver32.hi));
    if (bits >> 63) return {-k, -r.s, -r.e};
    return {k, r.s, r.e};
}

// roundsd to nearest, without the inexact flag. The instruction is spelled
// out so that the baseline-compiled template can hold it; only .N runs it.
inline double round_nearest(double y) {
    double r;
    __asm__("roundsd $8, %1, %0" : "=x"(r) : "x"(y));
    return r;
}

// Main-range reduction: k = round(x 32/pi), r = x - k P_1 - k P_2 - k P_3.
template <Body B>
inline Reduced reduce_main(double x) {
    double y = x * PI32INV;
    double kd;
    int k;
    if constexpr (B == Body::N) {
        kd = round_nearest(y);
        k = static_cast<int>(static_cast<uint32_t>(to_bits(kd + SHIFTER)));
    } else {
        // Add one half with the sign of x and truncate.
        k = static_cast<int>(y + from_bits(ONEHALF | (to_bits(x) & SIGN_MASK)));
        kd = k;
    }
    double t1 = x - kd * P_1;  // exact: k P_1 has at most 51 bits and lies near x
    Sum t = two_sum(t1, -(kd * P_2));
    return {k, t.s, t.e - kd * P_3};
}

// S cos r + C sin r with the table entry of j.
inline double finish(int j, double rh, double rl) {
    const CEntry& e = Ctable.e[j];
    // Both series at once: lanes {odd, even} over r^2.
    double r2 = rh * rh;
    __m128d w = _mm_set1_pd(r2);
    __m128d v = _mm_add_pd(_mm_mul_pd(_mm_load_pd(SC_4), w), _mm_load_pd(SC_3));
    v = _mm_add_pd(_mm_mul_pd(v, w), _mm_load_pd(SC_2));
    v = _mm_add_pd(_mm_mul_pd(v, w), _mm_load_pd(SC_1));
    v = _mm_mul_pd(v, w);
    double odd = _mm_cvtsd_f64(v) * rh;                   // sin r - r
    double even = _mm_cvtsd_f64(_mm_unpackhi_pd(v, v));  // cos r - 1
    // Leading part: S_hi + C_hi rhh, exact product (C_hi has 27 bits, rhh 26).
    double rhh = clear_low_bits(rh, 27);
    double rhl = rh - rhh;
    Sum lead = fast_two_sum(e.sin_hi, e.cos_hi * rhh);
    // The rest of C r with the full C (c is C rounded; its error times the
    // small rhl + rl is negligible), S's low part, and S's share of rl.
    double c = e.cos_hi + e.cos_lo;
    double tail = c * (rhl + rl) + e.cos_lo * rhh + e.sin_lo - e.sin_hi * (rh * rl);
    tail = (e.sin_hi * even + c * odd) + (tail + lead.e);
    return lead.s + tail;
}

template <Fn F>
constexpr int table_index(int k) {
    // cos is sin a quarter period on; 1865232 = 16 mod 64 keeps the sum positive.
    return (F == Fn::Sin ? k : k + 1865232) & 63;
}

template <Fn F, Body B>
inline double sincos_body(double x) {
    uint32_t t = top16_of<B>(x) & 0x7FFF;
    if (static_cast<uint16_t>(t - 0x3030) <= 0x10C5) {
        // 2^-252 <= |x| < 90112.
        Reduced r = reduce_main<B>(x);
        int j = table_index<F>(r.k);
        if ((j & 31) == 0 && r.k != 0 && __builtin_fabs(r.rh) < kNearMultiple) [[unlikely]] {
            r = reduce_large(x);
            j = table_index<F>(r.k);
        }
        return finish(j, r.rh, r.rl);
    }
    if (t < 0x3030) {
        if constexpr (F == Fn::Cos) return 1.0 - __builtin_fabs(x);
        if (t < 0x10) return x * ALL_ONES;  // zero or subnormal: keeps the sign
        return ((TWO_POW_55 * x) - x) * TWO_POW_M55;
    }
    if (t < 0x7FF0) {
        Reduced r = reduce_large(x);
        return finish(table_index<F>(r.k), r.rh, r.rl);
    }
    return x * NEG_ZERO;  // infinity or NaN: a NaN, no error call
}

}  // namespace
}  // namespace orv::libm

using orv::libm::Body;
using orv::libm::Fn;
using orv::libm::sincos_body;

ORV_LIBM_API double orv_cos_A(double x) noexcept { return sincos_body<Fn::Cos, Body::A>(x); }
ORV_LIBM_API double orv_sin_A(double x) noexcept { return sincos_body<Fn::Sin, Body::A>(x); }
ORV_LIBM_API double orv_cos_L(double x) noexcept { return sincos_body<Fn::Cos, Body::L>(x); }
ORV_LIBM_API double orv_sin_L(double x) noexcept { return sincos_body<Fn::Sin, Body::L>(x); }
ORV_LIBM_API double orv_cos_N(double x) noexcept { return sincos_body<Fn::Cos, Body::N>(x); }
ORV_LIBM_API double orv_sin_N(double x) noexcept { return sincos_body<Fn::Sin, Body::N>(x); }

ORV_LIBM_API double cos(double x) noexcept {
    return orv::libm::select_body<orv_cos_N, orv_cos_L, orv_cos_A, cos>(x);
}
ORV_LIBM_API double sin(double x) noexcept {
    return orv::libm::select_body<orv_sin_N, orv_sin_L, orv_sin_A, sin>(x);
}
