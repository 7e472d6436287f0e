// log: two bodies (.A baseline, .L with SSE3's movddup) and the exported
// entry that picks one by the processor indicator word at every call.
//
// x = 2^e m with m in [1, 2). The hardware reciprocal estimate of m, rounded
// to 8 significant bits, is a table point rc = (128 + i) / 256, so that
// z = m rc - 1 is small and exact and
//   log x = e ln2 - ln rc + log(1 + z),
// with -ln rc from L_tbl and log(1 + z) a polynomial of degree 7.
#include <emmintrin.h>
#include <xmmintrin.h>

#include "libm.h"
#include "tables.h"

namespace orv::libm {
namespace {

constexpr LTable L_tbl = make_ltable();

// ln 2 / 16 in two parts; the high part has 42 bits, so 16 e times it is
// exact, and so is its sum with a table entry's high part.
constexpr double log2_hi = from_bits(0x3FA62E42FEFA3800);
constexpr double log2_lo = from_bits(0x3CEEF35793C76730);
static_assert(16 * log2_hi == L_tbl.e[0].hi && 16 * log2_lo == L_tbl.e[0].lo,
              "the first entry, ln 2, must cancel e ln 2 exactly for x just below 1");

// Coefficients in pairs {z^5 group, z^2 group}, evaluated by Horner in z:
// lane 0 gives 1/5 - c6 z + z^2/7, lane 1 gives -1/2 + z/3 - z^2/4. The z^6
// coefficient is tuned for the truncation of the series.
alignas(16) constexpr double coeff[6] = {1.0 / 7.0, -1.0 / 4.0, -0.16666772842235003,
                                         1.0 / 3.0, 1.0 / 5.0,  -1.0 / 2.0};

constexpr double kTwoPow128 = from_bits(0x47F0000000000000);
// e16 = 16 e = (top 16 bits & 0x7FF0) - bias.
constexpr int kBias = 0x3FF0;
constexpr int kBiasScaled = 0x47F0;  // after scaling a subnormal by 2^128

template <Body B>
inline __m128d dup(double z) {
    __m128d v = _mm_set_sd(z);
    if constexpr (B == Body::L) {
        __asm__("movddup %1, %0" : "=x"(v) : "x"(v));
        return v;
    } else {
        return _mm_unpacklo_pd(v, v);
    }
}

// A value the compiler cannot fold, so that the special results raise
// their floating-point exceptions at run time.
inline double opaque(double v) {
    __asm__("" : "+x"(v));
    return v;
}

template <Body B>
inline double log_normal(double x, uint32_t t, int bias) {
    // Bit work stays in the vector registers: m = mantissa of x in [1, 2),
    // mh its high 45 bits.
    __m128d vx = _mm_set_sd(x);
    __m128d m = _mm_or_pd(_mm_and_pd(vx, _mm_castsi128_pd(_mm_set_epi64x(0, 0x000FFFFFFFFFFFFF))),
                          _mm_set_sd(1.0));
    __m128d mh = _mm_and_pd(m, _mm_castsi128_pd(_mm_set_epi64x(0, -256)));
    double e16 = static_cast<double>(static_cast<int>(t & 0x7FF0) - bias);
    // m as a single, its reciprocal estimate, and that rounded to 8
    // significant bits by adding half of the last kept bit and cutting the
    // rest. Bits 16 to 23 (7 mantissa bits and the exponent's lowest bit)
    // give the table point: 0 for 1/2, 128 for 1.
    __m128i rb = _mm_and_si128(_mm_add_epi32(_mm_castps_si128(_mm_rcp_ss(_mm_cvtpd_ps(m))), _mm_cvtsi32_si128(0x8000)),
                               _mm_cvtsi32_si128(static_cast<int>(0xFFFF0000u)));
    // The entry's byte offset: the point times 16.
    uint32_t offset = (static_cast<uint32_t>(_mm_cvtsi128_si32(rb)) >> 12) & 0xFF0;
    const LEntry& l = *reinterpret_cast<const LEntry*>(reinterpret_cast<const char*>(L_tbl.e) + offset);
    __m128d rc = _mm_cvtss_sd(vx, _mm_castsi128_ps(rb));
    // z = m rc - 1 exactly: mh rc has at most 53 bits and lies near 1, and
    // (m - mh) rc at most 16.
    double zh = _mm_cvtsd_f64(_mm_sub_sd(_mm_mul_sd(mh, rc), _mm_set_sd(1.0)));
    double zl = _mm_cvtsd_f64(_mm_mul_sd(_mm_sub_sd(m, mh), rc));
    double z = zh + zl;  // exact: both are multiples of 2^-60 and |z| < 2^-8
    // log(1 + z) - z = z^2 (lane 1 + z^3 lane 0).
    __m128d w = dup<B>(z);
    __m128d v = _mm_add_pd(_mm_mul_pd(_mm_load_pd(coeff), w), _mm_load_pd(coeff + 2));
    v = _mm_add_pd(_mm_mul_pd(v, w), _mm_load_pd(coeff + 4));
    double z2 = z * z;
    double poly = (_mm_cvtsd_f64(v) * (z2 * z) + _mm_cvtsd_f64(_mm_unpackhi_pd(v, v))) * z2;
    // High terms first; e ln2_hi + table high + z last, its rounding error
    // carried into the tail.
    double a = e16 * log2_hi + l.hi;  // exact
    Sum lead = fast_two_sum(a, z);
    double tail = (poly + (e16 * log2_lo + l.lo)) + lead.e;
    return lead.s + tail;
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
        return log_normal<B>(xs, top16(xs), kBiasScaled);
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
    uint32_t t = top16_of<B>(x);
    if (static_cast<uint16_t>(t - 0x10) < 0x7FE0) [[likely]]
        return log_normal<B>(x, t, kBias);
    return log_special<B>(x);
}

}  // namespace
}  // namespace orv::libm

using orv::libm::Body;
using orv::libm::log_body;

ORV_LIBM_API double orv_log_A(double x) noexcept { return log_body<Body::A>(x); }
ORV_LIBM_API double orv_log_L(double x) noexcept { return log_body<Body::L>(x); }

ORV_LIBM_API double log(double x) noexcept {
    return orv::libm::select_body<orv_log_L, orv_log_L, orv_log_A, log>(x);
}
