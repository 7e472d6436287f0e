// Full linear convolution of two real sequences, one body for float and
// double: the checks, the choice of path by the two lengths, the direct
// path's chunk loop, the one-shot FFT product and the overlap-save loop.
// Everything a call needs (FFT specification, one block for two arrays of the
// FFT length and the work buffer) is made and released within the call.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include "direct.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace conv {

// The tier's functions by element type.
template <class T>
struct Ops;

// One specialisation per element type, spelled from the type's name suffix.
#define ORV_CONV_OPS(T, S, Spec_)                                                                                 \
    template <>                                                                                                   \
    struct Ops<T> {                                                                                               \
        using Spec = Spec_;                                                                                       \
        static void kernel(const T* x, int n, const T* h, int m, T* d) { ownConv_##S(x, n, h, m, d); }            \
        static void zero(T* p, int64_t len) {                                                                     \
            if (len > 0) ORV_T(orvsZero_##S)(p, static_cast<int>(len));                                           \
        }                                                                                                         \
        static void copy(const T* s, T* d, int64_t len) {                                                         \
            if (len > 0) ORV_T(orvsCopy_##S)(s, d, static_cast<int>(len));                                        \
        }                                                                                                         \
        static T* malloc(int len) { return ORV_T(orvsMalloc_##S)(len); }                                          \
        static OrvStatus init(Spec** s, int order) { return ORV_T(orvsFFTInitAlloc_R_##S)(s, order, 2, 0); }      \
        static OrvStatus buf_size(const Spec* s, int* size) { return ORV_T(orvsFFTGetBufSize_R_##S)(s, size); }   \
        static void free_spec(Spec* s) { ORV_T(orvsFFTFree_R_##S)(s); }                                           \
        static OrvStatus fwd(T* p, const Spec* s, Orv8u* w) { return ORV_T(orvsFFTFwd_RToPerm_##S)(p, p, s, w); } \
        static OrvStatus inv(T* p, const Spec* s, Orv8u* w) { return ORV_T(orvsFFTInv_PermToR_##S)(p, p, s, w); } \
        static void mul(const T* a, T* b, int len) { ORV_T(orvsMulPerm_##S##_I)(a, b, len); }                     \
    };
#if !defined(ORV_TIER_U8)  // u8 has no single-precision real FFT
ORV_CONV_OPS(float, 32f, OrvFFTSpec_R_32f)
#endif
ORV_CONV_OPS(double, 64f, OrvFFTSpec_R_64f)
#undef ORV_CONV_OPS

// Path thresholds, the same for every tier and both types.
constexpr int kDirectTotal = 512;  // direct when T is below this ...
constexpr int kDirectTaps = 64;    // ... or the shorter input is below this
constexpr int kChunk = 4096;       // direct path: samples of x per kernel call

// Direct path. A signal of kChunk samples or more goes in chunks; their
// outputs overlap by m - 1 samples, where an accumulating kernel sums the
// seam and the storing one (e9, float) keeps the later chunk's part.
template <class T>
void direct(const T* x, int n, const T* h, int m, T* pDst, int total) {
    using O = Ops<T>;
    if (n < kChunk) {
        O::zero(pDst, total);
        O::kernel(x, n, h, m, pDst);
        return;
    }
    O::zero(pDst, m - 1);
    while (n > 0) {
        const int c = std::min(n, kChunk);
        O::zero(pDst + m - 1, c);
        O::kernel(x, c, h, m, pDst);
        x += c, pDst += c, n -= c;
    }
}

// The FFT paths' specification (inverse scaled by 1/L) and one block of
// 2L + extra + w elements: A or H at 0, B at L, the work area at 2L (null
// when w < 1). w counts the buffer's bytes in units of wordBytes.
template <class T>
struct FftSetup {
    typename Ops<T>::Spec* spec = nullptr;
    T* block = nullptr;
    Orv8u* work = nullptr;

    OrvStatus make(int order, int extra, int wordBytes) {
        using O = Ops<T>;
        OrvStatus st = O::init(&spec, order);
        if (st < orvStsNoErr) return spec = nullptr, st;
        int bufSize = 0;
        if ((st = O::buf_size(spec, &bufSize)) < orvStsNoErr) return release(), st;
        const int64_t len = int64_t{2} << order;
        const int64_t w = (int64_t{bufSize} + wordBytes - 1) / wordBytes;
        // The allocator takes the byte count as an int: a larger block fails.
        const int64_t count = len + extra + w;
        if (count * int64_t{sizeof(T)} > INT_MAX || !(block = O::malloc(static_cast<int>(count))))
            return release(), orvStsMemAllocErr;
        if (w >= 1) work = reinterpret_cast<Orv8u*>(block + len);
        return orvStsNoErr;
    }
    void release() {
        if (block) ORV_T(orvsFree)(block);
        if (spec) Ops<T>::free_spec(spec);
        block = nullptr, spec = nullptr;
    }
};

// One FFT product of the whole signal: L the least power of two (order 2 or
// more) not below T. The inverse result is copied whatever its status.
template <class T>
OrvStatus one_shot(const T* x, int n, const T* h, int m, T* pDst, int total) {
    using O = Ops<T>;
    int order = 2;
    while ((int64_t{1} << order) < total) ++order;
    FftSetup<T> fs;
    // 4-byte words for both types: for double the block is larger than needed.
    if (const OrvStatus st = fs.make(order, 0, 4); st != orvStsNoErr) return st;
    const int L = 1 << order;
    T* a = fs.block;
    T* b = fs.block + L;
    O::copy(x, a, n), O::zero(a + n, L - n);
    O::copy(h, b, m), O::zero(b + m, L - m);
    OrvStatus st = O::fwd(a, fs.spec, fs.work);
    if (st >= orvStsNoErr) st = O::fwd(b, fs.spec, fs.work);
    if (st >= orvStsNoErr) {
        O::mul(a, b, L);
        st = O::inv(b, fs.spec, fs.work);
        O::copy(b, pDst, total);
    }
    fs.release();
    return st;
}

// Overlap-save over blocks of L (4m <= L < 8m): each block keeps S = L - m + 1
// outputs. The first block loads at most S samples and its zero tail stands
// for the missing history; each later one starts m - 1 samples back and drops
// its first m - 1 results.
template <class T>
OrvStatus overlap_save(const T* x, int n, const T* h, int m, T* pDst, int total) {
    using O = Ops<T>;
    int k = 2;
    while ((int64_t{1} << k) < int64_t{2} * m) ++k;
    const int order = k + 1;
    FftSetup<T> fs;
    if (const OrvStatus st = fs.make(order, 1, sizeof(T)); st != orvStsNoErr) return st;
    const int L = 1 << order, S = L - m + 1;  // the order was accepted, so L fits
    T* H = fs.block;
    T* B = fs.block + L;
    O::copy(h, H, m), O::zero(H + m, L - m);
    OrvStatus st = O::fwd(H, fs.spec, fs.work);
    int64_t produced = 0;
    int lead = 0;
    while (st >= orvStsNoErr) {
        const int v = static_cast<int>(std::min({n - produced + lead, int64_t{n}, int64_t{lead} + S}));
        O::copy(x + (produced - lead), B, v), O::zero(B + v, L - v);
        if ((st = O::fwd(B, fs.spec, fs.work)) < orvStsNoErr) break;
        O::mul(H, B, L);
        if ((st = O::inv(B, fs.spec, fs.work)) < orvStsNoErr) break;
        O::copy(B + lead, pDst + produced, std::min(total - produced, int64_t{S}));
        if ((produced += S) >= total) break;
        lead = m - 1;
    }
    fs.release();
    return st;
}

// The entry: x is the longer input (pSrc1 on equal lengths), h the shorter.
template <class T>
OrvStatus convolve(const T* pSrc1, int src1Len, const T* pSrc2, int src2Len, T* pDst) {
    if (!pSrc1 || !pSrc2 || !pDst) return orvStsNullPtrErr;
    if (src1Len < 1 || src2Len < 1) return orvStsSizeErr;
    const bool swap = src1Len < src2Len;
    const T* x = swap ? pSrc2 : pSrc1;
    const T* h = swap ? pSrc1 : pSrc2;
    const int n = swap ? src2Len : src1Len, m = swap ? src1Len : src2Len;
    const int64_t total = int64_t{n} + m - 1;
    if (total > INT_MAX) return orvStsSizeErr;  // the output length must be an int
    if (total < kDirectTotal || m < kDirectTaps) return direct(x, n, h, m, pDst, static_cast<int>(total)), orvStsNoErr;
    if (n < int64_t{3} * m) return one_shot(x, n, h, m, pDst, static_cast<int>(total));
    return overlap_save(x, n, h, m, pDst, static_cast<int>(total));
}

}  // namespace conv
}  // namespace
}  // namespace orv::ORV_TIER_NS
