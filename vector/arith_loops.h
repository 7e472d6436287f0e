// The two loop shapes of the element-wise arithmetic. Every element gets one
// IEEE operation, so the shapes differ only in how they walk the arrays:
//  - sse_loop: the 128-bit kernels of m7, u8, n8 and y8. Scalar below a
//    minimum length; a destination that cannot reach 16-byte alignment goes
//    through 64-bit halves; otherwise up to one (double) or three (float)
//    scalar elements align it, and groups of two vectors run in a loop chosen
//    by the 16-byte alignment of each source, with streaming stores or a
//    prefetch by the member's size rule.
//  - avx_loop: e9. Destination to 32 bytes, 16 elements an iteration, no
//    threshold, upper register halves cleared on the way out.
// An operation is a generic callable f(x, y) that works on scalars and on
// vectors alike (x from the first operand, y from the second or the constant).
#pragma once

#include "mem_common.h"

namespace orv::ORV_TIER_NS {
namespace {

// What the second operand is: another array or a constant.
enum class Second { array, constant };

// Large-size rule of a kernel.
enum class Large {
    none,
    stream,        // group count above threshold: streaming stores to pDst
    stream_both,   // the same, and only when the first operand is 16-aligned too
    prefetch_src,  // always: cached prefetch 64 bytes ahead on the first operand
    prefetch_nta,  // element count (whole groups) above threshold: NTA prefetch of the next 32 bytes of pDst
};

struct Rule {
    int minLen;  // shorter vectors are done in scalar code
    Large large;
    long threshold;
};

// 128-bit access by element type.
template <class T>
struct V128;
template <>
struct V128<double> {
    using V = __m128d;
    static constexpr int lanes = 2;
    static V load(const double* p) { return _mm_load_pd(p); }
    static V load_halves(const double* p) { return _mm_castps_pd(load_halves_ps(reinterpret_cast<const float*>(p))); }
    static void store(double* p, V v) { _mm_store_pd(p, v); }
    static void stream(double* p, V v) { _mm_stream_pd(p, v); }
    static void store_halves(double* p, V v) { store_halves_ps(reinterpret_cast<float*>(p), _mm_castpd_ps(v)); }
    static V set1(double x) { return _mm_set1_pd(x); }
    static __m128 load_halves_ps(const float* p) {
        __m128 lo = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p));
        return _mm_loadh_pi(lo, reinterpret_cast<const __m64*>(p + 2));
    }
    static void store_halves_ps(float* p, __m128 v) {
        _mm_storel_pi(reinterpret_cast<__m64*>(p), v);
        _mm_storeh_pi(reinterpret_cast<__m64*>(p + 2), v);
    }
};
template <>
struct V128<float> {
    using V = __m128;
    static constexpr int lanes = 4;
    static V load(const float* p) { return _mm_load_ps(p); }
    static V load_halves(const float* p) { return V128<double>::load_halves_ps(p); }
    static void store(float* p, V v) { _mm_store_ps(p, v); }
    static void stream(float* p, V v) { _mm_stream_ps(p, v); }
    static void store_halves(float* p, V v) { V128<double>::store_halves_ps(p, v); }
    static V set1(float x) { return _mm_set1_ps(x); }
};

template <bool B>
using Bool = std::integral_constant<bool, B>;

// Calls f(Bool<a>, Bool<b>): one instantiation per alignment combination.
template <class F>
inline void by_alignment(bool a, bool b, F&& f) {
    if (a)
        b ? f(Bool<true>{}, Bool<true>{}) : f(Bool<true>{}, Bool<false>{});
    else
        b ? f(Bool<false>{}, Bool<true>{}) : f(Bool<false>{}, Bool<false>{});
}

enum class Store { aligned, stream, halves };

inline bool aligned16(const void* p) { return (address(p) & 15) == 0; }

// The operands of one call: x from a, y from b (an array) or from c.
template <class T, Second S>
struct Operands {
    const T* a;
    const T* b;
    T c;
    T x(long i) const { return load_elem(a + i); }
    T y(long i) const {
        if constexpr (S == Second::constant)
            return c;
        else
            return load_elem(b + i);
    }
};

template <class T, Second S, class Op>
inline void scalar_run(Operands<T, S> in, T* d, long from, long to, Op op) {
    for (long i = from; i < to; ++i) store_elem(d + i, op(in.x(i), in.y(i)));
}

// Groups of two vectors from element i on. A1/A2: the operand is 16-aligned
// at i (else it is read in 64-bit halves). PfEnd: prefetch while the
// prefetched address stays below the array's end.
template <class T, Second S, Store ST, Large L, bool A1, bool A2, class Op>
void group_run(Operands<T, S> in, T* d, long i, long groups, long pfEnd, Op op) {
    using W = V128<T>;
    constexpr int n = W::lanes;
    auto load = [](const T* p, auto aligned) {
        if constexpr (decltype(aligned)::value)
            return W::load(p);
        else
            return W::load_halves(p);
    };
    const typename W::V yc = W::set1(in.c);
    for (; groups > 0; --groups, i += 2 * n) {
        if constexpr (L == Large::prefetch_src) {
            if (i + 64 / long(sizeof(T)) < pfEnd) _mm_prefetch(reinterpret_cast<const char*>(in.a + i) + 64, _MM_HINT_T0);
        } else if constexpr (L == Large::prefetch_nta) {
            if (i + 32 / long(sizeof(T)) < pfEnd) _mm_prefetch(reinterpret_cast<const char*>(d + i) + 32, _MM_HINT_NTA);
        }
        typename W::V x0 = load(in.a + i, Bool<A1>{}), x1 = load(in.a + i + n, Bool<A1>{});
        typename W::V y0 = yc, y1 = yc;
        if constexpr (S == Second::array) y0 = load(in.b + i, Bool<A2>{}), y1 = load(in.b + i + n, Bool<A2>{});
        typename W::V r0 = op(x0, y0), r1 = op(x1, y1);
        if constexpr (ST == Store::aligned) W::store(d + i, r0), W::store(d + i + n, r1);
        if constexpr (ST == Store::stream) W::stream(d + i, r0), W::stream(d + i + n, r1);
        if constexpr (ST == Store::halves) W::store_halves(d + i, r0), W::store_halves(d + i + n, r1);
    }
}

// The 128-bit kernel shape. An operand array equal to d is aligned with it
// and needs no test of its own; a constant has none.
template <Rule R, class T, Second S, class Op>
void sse_loop(Operands<T, S> in, T* d, long len, Op op) {
    constexpr long unit = 2 * V128<T>::lanes;  // elements per group
    if (len < R.minLen) return scalar_run(in, d, 0, len, op);
    auto run = [&](auto store, long i, long groups, long pfEnd) {
        bool a1 = aligned16(in.a + i), a2 = S == Second::constant || aligned16(in.b + i);
        by_alignment(a1, a2, [&](auto A1, auto A2) {
            group_run<T, S, decltype(store)::value, R.large, A1(), A2()>(in, d, i, groups, pfEnd, op);
        });
    };
    using SStore = std::integral_constant<Store, Store::aligned>;
    using SStream = std::integral_constant<Store, Store::stream>;
    using SHalves = std::integral_constant<Store, Store::halves>;
    // The prefetch rule: the NTA prefetch only above its threshold (whole
    // groups of elements); every prefetch stops before the array's end.
    auto pf_end = [&](long groups) {
        if constexpr (R.large == Large::prefetch_nta) return groups * unit > R.threshold ? len : 0L;
        return len;
    };
    if (address(d) % sizeof(T)) {
        // The destination never reaches 16-byte alignment: results in 64-bit
        // halves, never streamed.
        long groups = len / unit;
        run(SHalves{}, 0, groups, pf_end(groups));
        return scalar_run(in, d, groups * unit, len, op);
    }
    // Scalar elements up to the destination's 16-byte boundary.
    long i = static_cast<long>((0 - (address(d) & 15) / sizeof(T)) & (16 / sizeof(T) - 1));
    scalar_run(in, d, 0, i, op);
    long groups = (len - i) / unit;
    bool streaming = false;
    if constexpr (R.large == Large::stream) streaming = groups > R.threshold;
    if constexpr (R.large == Large::stream_both) streaming = groups > R.threshold && aligned16(in.a + i);
    if (streaming) {
        // Past the cache: streaming stores; no fence, as the caller orders
        // any hand-over to another thread.
        run(SStream{}, i, groups, len);
    } else {
        run(SStore{}, i, groups, pf_end(groups));
    }
    scalar_run(in, d, i + groups * unit, len, op);
}

// 256-bit access by element type, sources read as two joined 128-bit halves.
// Partial specialisations, so that the 128-bit tiers never instantiate them.
template <class T, int = 0>
struct V256;
template <int I>
struct V256<double, I> {
    using V = __m256d;
    static constexpr int lanes = 4;
    static V loadu(const double* p) {
        return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p)), _mm_loadu_pd(p + 2), 1);
    }
    static void store(double* p, V v) { _mm256_store_pd(p, v); }
    static V set1(double x) { return _mm256_set1_pd(x); }
};
template <int I>
struct V256<float, I> {
    using V = __m256;
    static constexpr int lanes = 8;
    static V loadu(const float* p) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)), _mm_loadu_ps(p + 4), 1);
    }
    static void store(float* p, V v) { _mm256_store_ps(p, v); }
    static V set1(float x) { return _mm256_set1_ps(x); }
};

// The e9 shape. a = pDst & 31; a destination off its element size, or a
// vector shorter than the prologue plus 16, goes all scalar. No streaming,
// no prefetch, no threshold; the source alignment is never tested.
template <class T, Second S, class Op>
void avx_loop(Operands<T, S> in, T* d, long len, Op op) {
    using W = V256<T>;
    constexpr long es = sizeof(T), step = 16;
    const unsigned a = address(d) & 31;
    if (a && (a & (es - 1))) return scalar_run(in, d, 0, len, op);
    const long p = a ? (32 - a) / es : 0;
    if (len < p + step) return scalar_run(in, d, 0, len, op);
    const long end = len - ((len - p) & (step - 1));
    scalar_run(in, d, 0, p, op);
    const typename W::V yc = W::set1(in.c);
    for (long i = p; i < end; i += step) {
#pragma GCC unroll 4
        for (int k = 0; k < step; k += W::lanes) {
            typename W::V y = yc;
            if constexpr (S == Second::array) y = W::loadu(in.b + i + k);
            W::store(d + i + k, op(W::loadu(in.a + i + k), y));
        }
    }
    scalar_run(in, d, end, len, op);
    _mm256_zeroupper();
}

// The operations, written once for scalars and vectors.
constexpr auto kAdd = [](auto x, auto y) { return x + y; };
constexpr auto kSubRev = [](auto x, auto y) { return y - x; };  // second minus first
constexpr auto kSub = [](auto x, auto y) { return x - y; };
constexpr auto kMul = [](auto x, auto y) { return x * y; };

}  // namespace
}  // namespace orv::ORV_TIER_NS
