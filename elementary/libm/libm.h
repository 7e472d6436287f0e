// Internal declarations of the scalar math layer: the exported functions and
// data, the processor indicator word that selects a body, and the small
// floating-point helpers the bodies share. The layer is compiled once, with
// the baseline instruction set; a body that needs more says so with a target
// attribute and is only reached when the indicator word allows it.
#pragma once

#include <bit>
#include <cstdint>

#define ORV_LIBM_API extern "C" __attribute__((visibility("default")))

// The C names. The declarations match the C library's (noexcept), so a
// translation unit may see both.
ORV_LIBM_API double cos(double) noexcept;
ORV_LIBM_API double sin(double) noexcept;
ORV_LIBM_API double log(double) noexcept;
ORV_LIBM_API double sqrt(double) noexcept;

// The bodies, under their dotted symbol names.
ORV_LIBM_API double orv_cos_A(double) noexcept __asm__("cos.A");
ORV_LIBM_API double orv_cos_L(double) noexcept __asm__("cos.L");
ORV_LIBM_API double orv_cos_N(double) noexcept __asm__("cos.N");
ORV_LIBM_API double orv_sin_A(double) noexcept __asm__("sin.A");
ORV_LIBM_API double orv_sin_L(double) noexcept __asm__("sin.L");
ORV_LIBM_API double orv_sin_N(double) noexcept __asm__("sin.N");
ORV_LIBM_API double orv_log_A(double) noexcept __asm__("log.A");
ORV_LIBM_API double orv_log_L(double) noexcept __asm__("log.L");

// The error layer (declared in orvmath.h).
ORV_LIBM_API void __libm_error_support(const void* arg1, const void* arg2, void* retval, int code);

// The processor indicator word (see orv::libm below) and its filling from
// CPUID, called when a selection finds the word zero.
extern "C" __attribute__((visibility("hidden"))) uint32_t orv_libm_indicator;
extern "C" __attribute__((visibility("hidden"))) void orv_libm_init_indicator();

namespace orv::libm {

// ---- Processor indicator --------------------------------------------------
// A word of feature bits, 0 until first use. Bit 0: the baseline (SSE2);
// bit 11: SSE3; bit 13: SSE4.1 (set only together with SSE3). The bodies are
// chosen by masks over it: cos and sin take .N for any bit of 0xFFFFA000,
// .L for any bit of 0xFFFFF800, .A for any other non-zero word; log has .L
// and .A.
inline constexpr uint32_t kIndicatorBase = 1u << 0;
inline constexpr uint32_t kIndicatorSse3 = 1u << 11;
inline constexpr uint32_t kIndicatorSse41 = 1u << 13;
inline constexpr uint32_t kSelectN = 0xFFFFA000u;
inline constexpr uint32_t kSelectL = 0xFFFFF800u;

using Body_fn = double (*)(double) noexcept;

// First call: fill the indicator word, then select again through entry.
__attribute__((cold)) double select_first_call(Body_fn entry, double x);

// Selection at every call: .N for any bit of kSelectN, .L for any of
// kSelectL, .A for any other non-zero word; a zero word is filled first.
// log, which has no .N body, passes its .L body twice.
template <Body_fn N, Body_fn L, Body_fn A, Body_fn Entry>
inline double select_body(double x) {
    uint32_t w = orv_libm_indicator;
    if (w & kSelectN) return N(x);
    if (w & kSelectL) return L(x);
    if (w) return A(x);
    return select_first_call(Entry, x);
}

// ---- Bit helpers --------------------------------------------------------------
constexpr double from_bits(uint64_t b) { return std::bit_cast<double>(b); }
constexpr uint64_t to_bits(double d) { return std::bit_cast<uint64_t>(d); }
// The top 16 bits: sign, exponent and four mantissa bits.
constexpr uint32_t top16(double d) { return static_cast<uint32_t>(to_bits(d) >> 48); }

// x with its low `bits` mantissa bits cleared.
constexpr double clear_low_bits(double x, int bits) { return from_bits(to_bits(x) & ~((1ull << bits) - 1)); }

// The bodies: .A needs SSE2 only, .L reads the argument's high word from
// memory in cos and sin and duplicates with movddup in log, .N rounds with
// roundsd.
enum class Body { A, L, N };

// The top 16 bits of x: shifted out of the whole value for .A and .N, read
// from x's bytes for .L.
template <Body B>
inline uint32_t top16_of(const double& x) {
    if constexpr (B == Body::L) {
        uint16_t hi;
        __builtin_memcpy(&hi, reinterpret_cast<const char*>(&x) + 6, 2);
        return hi;
    } else {
        return top16(x);
    }
}

// s + e == a + b exactly, for |a| >= |b| or a == 0.
struct Sum {
    double s, e;
};
inline Sum fast_two_sum(double a, double b) {
    double s = a + b;
    return {s, b - (s - a)};
}
// s + e == a + b exactly, for any a and b.
inline Sum two_sum(double a, double b) {
    double s = a + b;
    double bb = s - a;
    return {s, (a - (s - bb)) + (b - bb)};
}

}  // namespace orv::libm
