// Floating-point control of the calling thread: the x87 control and status
// words, MXCSR, and two classification helpers for doubles. No state: the
// state lives in the thread's registers.
#include <cstdint>
#include <cstring>

#include "orvcore.h"
#include "state.h"

namespace {

uint16_t x87_cw() {
    uint16_t cw;
    __asm__ volatile("fnstcw %0" : "=m"(cw));
    return cw;
}
void x87_load_cw(uint16_t cw) { __asm__ volatile("fldcw %0" : : "m"(cw)); }
uint16_t x87_sw() {
    uint16_t sw;
    __asm__ volatile("fnstsw %0" : "=m"(sw));
    return sw;
}
void x87_clear() { __asm__ volatile("fnclex"); }
uint32_t mxcsr() {
    uint32_t w;
    __asm__ volatile("stmxcsr %0" : "=m"(w));
    return w;
}
void load_mxcsr(uint32_t w) { __asm__ volatile("ldmxcsr %0" : : "m"(w)); }

// x87 exception bits 0..5 and their portable places, as masks (control word)
// or as flags (status word).
constexpr struct {
    uint16_t x87;
    uint32_t portable;
} kExceptionBits[] = {
    {0x01, 0x10},     // invalid
    {0x02, 0x80000},  // denormal
    {0x04, 0x08},     // zero divide
    {0x08, 0x04},     // overflow
    {0x10, 0x02},     // underflow
    {0x20, 0x01},     // inexact
};

uint32_t to_portable_exceptions(uint16_t x87) {
    uint32_t p = 0;
    for (const auto& b : kExceptionBits)
        if (x87 & b.x87) p |= b.portable;
    return p;
}

constexpr uint32_t kPrec53 = 0x10000, kPrec24 = 0x20000, kInfinity = 0x40000;

// Reading: rounding moves down by 6 (to 0x30), and 24-bit precision sets no
// bit, so it reads as 64-bit.
uint32_t cw_to_portable(uint16_t cw) {
    uint32_t p = to_portable_exceptions(cw);
    p |= (cw & 0xC00u) >> 6;
    if ((cw & 0x300u) == 0x200u) p |= kPrec53;
    if (cw & 0x1000u) p |= kInfinity;
    return p;
}

// Writing: rounding is taken from 0x300, moved up by 2. Not the inverse of
// cw_to_portable, on purpose.
uint16_t portable_to_cw(uint32_t p) {
    uint16_t cw = 0;
    for (const auto& b : kExceptionBits)
        if (p & b.portable) cw |= b.x87;
    cw |= static_cast<uint16_t>((p & 0x300u) << 2);
    switch (p & (kPrec53 | kPrec24)) {
        case 0: cw |= 0x300; break;
        case kPrec53: cw |= 0x200; break;
        default: break;  // 24-bit, or both bits
    }
    if (p & kInfinity) cw |= 0x1000;
    return cw;
}

uint64_t bits_of(double x) {
    uint64_t u;
    std::memcpy(&u, &x, sizeof u);
    return u;
}
constexpr uint64_t kExpMask = 0x7FF0000000000000ull, kFracMask = 0x000FFFFFFFFFFFFFull;

}  // namespace

ORV_FRAME_API Orv64u orv_control87(Orv64u newValue, Orv64u mask) {
    uint32_t p = cw_to_portable(x87_cw());
    uint32_t result = static_cast<uint32_t>((newValue & mask) | (p & ~mask));
    x87_load_cw(portable_to_cw(result));
    return result;
}

ORV_FRAME_API Orv64u orv_status87(void) { return to_portable_exceptions(x87_sw()); }

ORV_FRAME_API Orv64u orv_clear87(void) {
    uint16_t sw = x87_sw();
    x87_clear();
    return to_portable_exceptions(sw);
}

// Loads the control word only when the bits under mask change: the load is slow.
ORV_FRAME_API Orv64u orv_set_rcpc_fpu(Orv64u newBits, Orv64u mask) {
    uint16_t cw = x87_cw();
    if ((cw & mask) != newBits) x87_load_cw(static_cast<uint16_t>((cw & ~mask) | (newBits & mask)));
    return cw;
}

ORV_FRAME_API void orv_set_cw_fpu(Orv64u word) { x87_load_cw(static_cast<uint16_t>(word)); }

ORV_FRAME_API Orv64u ps_set_cw_fpu(Orv64u newBits, Orv64u mask) {
    uint16_t cw = x87_cw();
    x87_load_cw(static_cast<uint16_t>((cw & ~mask) | (newBits & mask)));
    return cw;
}

ORV_FRAME_API Orv64u ps_get_cw_fpu(void) { return x87_cw(); }
ORV_FRAME_API Orv64u ps_get_sw_fpu(void) { return x87_sw(); }

ORV_FRAME_API Orv64u ps_clear_fpu(void) {
    uint16_t sw = x87_sw();
    x87_clear();
    return sw;
}

ORV_FRAME_API Orv64u ps_set_ssx(Orv64u newBits, Orv64u mask) {
    uint32_t old = mxcsr();
    load_mxcsr(static_cast<uint32_t>((old & ~mask) | (newBits & mask)));
    return old;
}

ORV_FRAME_API Orv64u ps_get_ssx(void) { return mxcsr(); }

// rc is already in place: 0, 0x2000, 0x4000 or 0x6000. Writes nothing when
// the rounding bits already match.
ORV_FRAME_API Orv64u orv_set_rc_ssx(Orv64u rc) {
    uint32_t old = mxcsr();
    if ((old & 0x6000u) != rc) load_mxcsr(static_cast<uint32_t>((old & ~0x6000u) | (rc & 0x6000u)));
    return old;
}

ORV_FRAME_API void orv_set_cw_ssx(Orv64u word) { load_mxcsr(static_cast<uint32_t>(word)); }

// All exceptions masked, flags clear, round to nearest, no flush.
ORV_FRAME_API Orv64u orv_clear_ssx(void) {
    uint32_t old = mxcsr();
    load_mxcsr(0x1F80);
    return old;
}

// Denormals-are-zero is supported when bit 6 of the MXCSR mask field (byte
// 28 of the FXSAVE image) is set.
ORV_FRAME_API int orv_tst_daz_ssx(void) {
    alignas(16) unsigned char image[512];
    std::memset(image, 0, sizeof image);
    __asm__ volatile("fxsave %0" : "+m"(image));
    uint32_t maskField;
    std::memcpy(&maskField, image + 28, sizeof maskField);
    if (maskField == 0) return 0;
    return (maskField >> 6) & 1;
}

ORV_FRAME_API int orv_isnan(double x) {
    uint64_t u = bits_of(x);
    return (u & kExpMask) == kExpMask && (u & kFracMask) != 0;
}

ORV_FRAME_API int orv_finite(double x) { return (bits_of(x) & kExpMask) != kExpMask; }
