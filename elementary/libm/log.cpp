// log: two bodies (.A baseline, .L with SSE3's movddup) and the exported
// entry that picks one by the processor indicator word at every call.
//
// x = 2^e m with m in [1, 2). The top 8 fraction bits of m select a table
// point rc = (128 + i) / 256 near 1 / m, so that z = m rc - 1 is small and
// exact and
//   log x = e ln2 - ln rc + log(1 + z),
// with -ln rc from L_tbl and log(1 + z) a polynomial of degree 7. The exact
// parts are summed in integers (see log_normal).
#include <emmintrin.h>

#include "libm.h"
#include "tables.h"

namespace orv::libm {
namespace {

constexpr LTable L_tbl = make_ltable();
alignas(64) constexpr LogCells cells = make_log_cells(L_tbl);
static_assert(log_cell_point(0) == kLogEntries - 1 && log_cell_point(kLogCells - 1) == 0,
              "the cells next to x = 1 must take the points 1 and 1/2");
static_assert(log_cells_max_z() < int64_t{1} << 53, "z 2^60 must convert exactly: |z| < 2^-7");

// ln 2 / 16 in two parts; the high part has 42 bits and lies on the grid of
// 2^-46, so 16 e times it is exact on the grid of 2^-42.
constexpr double log2_hi = from_bits(0x3FA62E42FEFA3800);
constexpr double log2_lo = from_bits(0x3CEEF35793C76730);
static_assert(16 * log2_hi == L_tbl.e[0].hi && 16 * log2_lo == L_tbl.e[0].lo,
              "the first entry, ln 2, must cancel e ln 2 exactly for x just below 1");
// ln 2 in the fixed points of the table: high part 2^42, low part 2^94.
constexpr int64_t kLn2Hi = static_cast<int64_t>(log2_hi * 0x1p46);
constexpr int64_t kLn2Lo = round_to_int(log2_lo * 0x1p98);
static_assert(kLn2Hi == cells.c[kLogCells - 1].hi && kLn2Lo == cells.c[kLogCells - 1].lo &&
                  cells.c[0].hi == 0 && cells.c[0].lo == 0,
              "the table's logarithms must cancel e ln 2 exactly next to x = 1");

// Coefficients in pairs {z^5 group, z^2 group}, evaluated by Horner in z:
// lane 0 gives 1/5 - c6 z + z^2/7, lane 1 gives -1/2 + z/3 - z^2/4. The z^6
// coefficient is tuned for the truncation of the series.
constexpr double coeff[6] = {1.0 / 7.0, -1.0 / 4.0, -0.16666772842235003, 1.0 / 3.0, 1.0 / 5.0, -1.0 / 2.0};
// The same for the argument Z = z 2^60: the coefficient of z^n times
// 2^(-60 n), exact scalings that leave every rounding as it was.
constexpr int kCoeffPower[6] = {7, 4, 6, 3, 5, 2};
struct Coeffs {
    alignas(16) double c[6];
};
constexpr Coeffs scale_coeffs() {
    Coeffs r{};
    for (int j = 0; j < 6; ++j) {
        r.c[j] = coeff[j];
        for (int n = 0; n < kCoeffPower[j]; ++n) r.c[j] *= 0x1p-60;
    }
    return r;
}
constexpr Coeffs coeffZ = scale_coeffs();

constexpr double kTwoPow128 = from_bits(0x47F0000000000000);
// e = exponent field - bias.
constexpr int kBias = 0x3FF;
constexpr int kBiasScaled = 0x47F;  // after scaling a subnormal by 2^128

template <Body B>
inline __m128d dup(double z) {
    if constexpr (B == Body::L) {
        __m128d v;
        __asm__("movddup %1, %0" : "=x"(v) : "x"(z));
        return v;
    } else {
        return _mm_set1_pd(z);
    }
}

// A value the compiler cannot fold, so that the special results raise
// their floating-point exceptions at run time.
inline double opaque(double v) {
    __asm__("" : "+x"(v));
    return v;
}

// x = 2^e (1 + k / 256 + F 2^-52) with cell k. In integers:
//   Z = z 2^60 = zc + F rc                                exact, |Z| < 2^53
//   S = (e ln2_hi + hi + z rounded down to 2^-42) 2^42     exact, |S| < 2^52
//   R = (the rest of z + e ln2_lo + lo) 2^94               |R| < 2^61
// and log x = S 2^-42 + (R 2^-94 + log(1 + z) - z): the leading sum is
// exact, so only the small tail and the result are rounded. Each of Z, S and
// R converts to a double in one instruction; the integer work runs beside
// the floating-point additions, which bound the throughput.
template <Body B>
inline double log_normal(double x, int64_t e) {
    uint64_t ix = to_bits(x);
    const LogCell& c = cells.c[(ix >> 44) & 0xFF];
    int64_t Z = c.zc + static_cast<int64_t>(ix & 0x00000FFFFFFFFFFF) * c.rc;
    int64_t A = e * kLn2Hi + c.hi;
    // log(1 + z) - z = z^2 (lane 1 + z^3 lane 0), on Z.
    double zz = static_cast<double>(Z);
    __m128d w = dup<B>(zz);
    __m128d v = _mm_add_pd(_mm_mul_pd(_mm_load_pd(coeffZ.c), w), _mm_load_pd(coeffZ.c + 2));
    v = _mm_add_pd(_mm_mul_pd(v, w), _mm_load_pd(coeffZ.c + 4));
    double zz2 = zz * zz;
    double poly = (_mm_cvtsd_f64(v) * (zz2 * zz) + _mm_cvtsd_f64(_mm_unpackhi_pd(v, v))) * zz2;
    // Next to x = 1, e ln 2 and -ln rc cancel in both parts and the result
    // is about z, which can be as small as the tail's part of z below
    // 2^-42; the tail's rounding would show. z itself is exact: take it whole.
    if (A == 0) [[unlikely]]
        return zz * 0x1p-60 + poly;
    int64_t S = A + (Z >> 18);
    int64_t R = static_cast<int64_t>(static_cast<uint64_t>(Z) << 46 >> 12) + (e * kLn2Lo + c.lo);
    double tail = poly + static_cast<double>(R) * 0x1p-94;
    return static_cast<double>(S) * 0x1p-42 + tail;
}

// Everything outside the positive normal numbers.
template <Body B>
__attribute__((noinline, cold)) double log_special(double x) {
    double result;
    if ((to_bits(x) << 1) == 0) {
        // Zero of either sign: a pole.
        result = -1.0 / opaque(0.0);
        __libm_error_support(&x, &x, &result, 2);
        return result;
    }
    uint32_t t = top16(x);
    if (t < 0x10) {
        double xs = x * kTwoPow128;  // positive subnormal
        return log_normal<B>(xs, static_cast<int64_t>(to_bits(xs) >> 52) - kBiasScaled);
    }
    if (t >= 0x8000 && !(x != x)) {
        // Negative number or minus infinity.
        result = opaque(0.0) * __builtin_inf();
        __libm_error_support(&x, &x, &result, 3);
        return result;
    }
    return x + x;  // plus infinity or a NaN
}

template <Body B>
inline double log_body(double x) {
    // Sign and exponent: positive, normal and finite when the exponent
    // field less 1 is below 0x7FE.
    int64_t se = static_cast<int64_t>(to_bits(x) >> 52);
    if (static_cast<uint64_t>(se - 1) < 0x7FE) [[likely]]
        return log_normal<B>(x, se - kBias);
    return log_special<B>(x);
}

}  // namespace
}  // namespace orv::libm

using orv::libm::Body;
using orv::libm::log_body;

ORV_LIBM_API double orv_log_A(double x) noexcept { return log_body<Body::A>(x); }
ORV_LIBM_API double orv_log_L(double x) noexcept { return log_body<Body::L>(x); }

// The .L body is inlined here, so that the usual selection costs a load and
// a test, without a second jump.
ORV_LIBM_API double log(double x) noexcept {
    uint32_t w = orv_libm_indicator;
    if (w & orv::libm::kSelectL) [[likely]]
        return log_body<Body::L>(x);
    if (w) return orv_log_A(x);
    return orv::libm::select_first_call(log, x);
}
