// The FFT specification record: 136 bytes at the first 32-byte boundary of
// the specification block, followed by the tables the transform reads. The
// three kinds share the layout; only the R_64f record holds scale as a
// double, which moves hint, workSize and allocated by four bytes while the
// pointers stay where they are.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvsfft.h"

struct OrvFFTSpec {
    Orv32s idCtx;       // kind while built: kIdC32fc, kIdR32f, kIdR64f; 0 when retired
    Orv32s order;       // as given (the real length's order for a real record)
    Orv32s doFwdScale;  // forward transforms multiply by scale
    Orv32s doInvScale;  // inverse transforms multiply by scale
    union {
        struct {
            Orv32f scale;
            Orv32s hint;
            Orv32s workSize;   // work bytes without the 32 of slack; 0: none
            Orv32s allocated;  // 1: built by InitAlloc, freed by Free
        } f;                   // C_32fc, R_32f
        struct {
            Orv64f scale;
            Orv32s hint;
            Orv32s workSize;
            Orv32s allocated;
        } d;  // R_64f
    } u;
    Orv32u* pBitRev;      // bit-reversal table; null where none is needed
    void* pTwd;           // innermost twiddles of the radix core
    void* pTwdR2Low;      // radix-2 block path
    void* pTwdR2High;
    void* pRealRec;       // forward recombination (real records)
    void* pCcsRec;        // inverse recombination (real records)
    void* pTwdStep[3];    // per level of the large transform, 0 outermost
    Orv8u reserved[24];
};

namespace orv::fft {

inline constexpr Orv32s kIdC32fc = 4;
inline constexpr Orv32s kIdR32f = 6;
inline constexpr Orv32s kIdR64f = 9;
inline constexpr int kRecordBytes = 136;
inline constexpr int kMaxOrder = 30;

// L(x): x rounded down to a multiple of 32.
constexpr int round_down32(long long x) { return static_cast<int>(x & ~31LL); }
template <class T>
T* align_up32(T* p) {
    return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(p) + 31) & ~std::uintptr_t{31});
}

// Fields that sit at another offset in the double record.
inline Orv32s& work_size(OrvFFTSpec* s, bool dbl) { return dbl ? s->u.d.workSize : s->u.f.workSize; }
inline Orv32s work_size(const OrvFFTSpec* s, bool dbl) { return dbl ? s->u.d.workSize : s->u.f.workSize; }

}  // namespace orv::fft

static_assert(sizeof(OrvFFTSpec) == orv::fft::kRecordBytes);
static_assert(offsetof(OrvFFTSpec, u.f.scale) == 16 && offsetof(OrvFFTSpec, u.f.allocated) == 28);
static_assert(offsetof(OrvFFTSpec, u.d.hint) == 24 && offsetof(OrvFFTSpec, u.d.allocated) == 32);
static_assert(offsetof(OrvFFTSpec, pBitRev) == 40 && offsetof(OrvFFTSpec, pTwdStep) == 88);
