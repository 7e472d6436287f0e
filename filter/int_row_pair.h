// The integer 2-D filters: the row-pair design. Two destination rows are made
// per pass over the kH + 1 source rows between them, so every source row in
// the middle is widened to float once and serves both rows.
//
// Scratch (Orv32f, aligned by the allocator): the coefficients reversed, four
// copies of each (4 * kW * kH, one vector per tap, window row 0 first), then
// two float rows A and B of the row's element count rounded up to 4. Window
// row i with the reversed kernel row r adds to a float row:
//   A (accumulate 0/1): one float row, one kernel row;
//   B: one source row into row A with kernel row i and into row B with kernel
//      row i - 1.
// Rows go in blocks of four elements of any layout (tap j of element e is
// element e + j * channels), four blocks at once while they last, then single
// blocks, then single elements. Products and sums are single precision in
// the order: kernel rows from the window's top, taps from left to right.
// The float rows go to the destination by the tier's float-to-integer
// conversions with round to nearest (ties to even), scale 0; AC4 keeps the
// destination's fourth channel.
//
// Reads: exactly the window's elements (AC4 reads the fourth channel, which
// lies inside the window, and drops its sum). Writes: the region only.
// Returns true when it wrote the whole region, false when it declined,
// before writing anything (the generic loop then runs).
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "filter/frame_filter.h"

ORV_TIER_DECLARE(orvsConvert_32f8u_Sfs)
ORV_TIER_DECLARE(orvsConvert_32f16s_Sfs)
ORV_TIER_DECLARE(orvsConvert_32f16u_Sfs)
ORV_TIER_DECLARE(orviConvert_32f8u_AC4R)
ORV_TIER_DECLARE(orviConvert_32f16s_AC4R)
ORV_TIER_DECLARE(orviConvert_32f16u_AC4R)

namespace orv::ORV_TIER_NS {
namespace {
namespace filt {
namespace rowpair {

// Four consecutive elements widened exactly to float (SSE4.1 extensions
// where the tier has them).
template <class TS>
inline __m128 widen(const TS* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    if constexpr (kTier == Tier::y8 || kTier == Tier::e9) {
        if constexpr (std::is_same_v<TS, Orv8u>) {
            return _mm_cvtepi32_ps(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(load_elem<int32_t>(b))));
        } else {
            const __m128i w = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(b));
            if constexpr (std::is_same_v<TS, Orv16s>) return _mm_cvtepi32_ps(_mm_cvtepi16_epi32(w));
            else return _mm_cvtepi32_ps(_mm_cvtepu16_epi32(w));
        }
    } else {
        return load_f<TS, 4>(b);
    }
}

template <class TS>
inline float elem(const TS* p) {
    return float(load_elem<TS>(reinterpret_cast<const unsigned char*>(p)));
}

// The coefficient vectors of one kernel row: registers when the kernel width
// is fixed (the compiler cannot keep them across the float-row stores
// otherwise), the scratch itself when not.
template <int KW>
struct Coefs {
    __m128 k[KW];
    explicit Coefs(const float* k4, int) {
        for (int j = 0; j < KW; ++j) k[j] = _mm_load_ps(k4 + 4 * j);
    }
    static constexpr int width() { return KW; }
    __m128 operator[](int j) const { return k[j]; }
};
template <>
struct Coefs<0> {
    const float* k4;
    int kW;
    explicit Coefs(const float* p, int w) : k4(p), kW(w) {}
    int width() const { return kW; }
    __m128 operator[](int j) const { return _mm_load_ps(k4 + 4 * j); }
};

// A: float row f = (kAcc ? f : 0) + sum over taps of k[j] * s[e + j * CH].
template <class TS, int CH, int KW, bool kAcc>
void a_row(const TS* s, float* f, int n, const float* k4, int kW) {
    const Coefs<KW> k(k4, kW);
    const int kw = k.width();
    int e = 0;
    for (; e + 16 <= n; e += 16) {
        __m128 a0, a1, a2, a3;
        if constexpr (kAcc) {
            a0 = _mm_load_ps(f + e), a1 = _mm_load_ps(f + e + 4);
            a2 = _mm_load_ps(f + e + 8), a3 = _mm_load_ps(f + e + 12);
        } else {
            a0 = a1 = a2 = a3 = _mm_setzero_ps();
        }
        for (int j = 0; j < kw; ++j) {
            const TS* p = s + e + j * CH;
            const __m128 c = k[j];
            a0 = _mm_add_ps(a0, _mm_mul_ps(widen(p), c));
            a1 = _mm_add_ps(a1, _mm_mul_ps(widen(p + 4), c));
            a2 = _mm_add_ps(a2, _mm_mul_ps(widen(p + 8), c));
            a3 = _mm_add_ps(a3, _mm_mul_ps(widen(p + 12), c));
        }
        _mm_store_ps(f + e, a0), _mm_store_ps(f + e + 4, a1);
        _mm_store_ps(f + e + 8, a2), _mm_store_ps(f + e + 12, a3);
    }
    for (; e + 4 <= n; e += 4) {
        __m128 a0 = kAcc ? _mm_load_ps(f + e) : _mm_setzero_ps();
        for (int j = 0; j < kw; ++j) a0 = _mm_add_ps(a0, _mm_mul_ps(widen(s + e + j * CH), k[j]));
        _mm_store_ps(f + e, a0);
    }
    for (; e < n; ++e) {
        float a = kAcc ? f[e] : 0.0f;
        for (int j = 0; j < kw; ++j) a = a + elem(s + e + j * CH) * k4[4 * j];
        f[e] = a;
    }
}

// NB blocks of B at element e: kFirst starts row fb from 0.
template <class TS, int CH, bool kFirst, int NB, class K>
inline void b_blocks(const TS* s, float* fa, float* fb, int e, const K& ka, const K& kb) {
    __m128 a[NB], b[NB];
    for (int q = 0; q < NB; ++q) {
        a[q] = _mm_load_ps(fa + e + 4 * q);
        b[q] = kFirst ? _mm_setzero_ps() : _mm_load_ps(fb + e + 4 * q);
    }
    for (int j = 0; j < ka.width(); ++j) {
        const TS* p = s + e + j * CH;
        const __m128 ca = ka[j], cb = kb[j];
        for (int q = 0; q < NB; ++q) {
            const __m128 x = widen(p + 4 * q);
            a[q] = _mm_add_ps(a[q], _mm_mul_ps(x, ca));
            b[q] = _mm_add_ps(b[q], _mm_mul_ps(x, cb));
        }
    }
    for (int q = 0; q < NB; ++q) {
        _mm_store_ps(fa + e + 4 * q, a[q]);
        _mm_store_ps(fb + e + 4 * q, b[q]);
    }
}

// B: one source row into float row fa with kernel row ka and into float row
// fb with kernel row kb; kFirst starts row fb from 0. Four blocks at once
// give eight independent sums.
template <class TS, int CH, int KW, bool kFirst>
void b_row(const TS* s, float* fa, float* fb, int n, const float* ka4, const float* kb4, int kW) {
    const Coefs<KW> ka(ka4, kW), kb(kb4, kW);
    int e = 0;
    for (; e + 16 <= n; e += 16) b_blocks<TS, CH, kFirst, 4>(s, fa, fb, e, ka, kb);
    for (; e + 4 <= n; e += 4) b_blocks<TS, CH, kFirst, 1>(s, fa, fb, e, ka, kb);
    for (; e < n; ++e) {
        float a = fa[e], b = kFirst ? 0.0f : fb[e];
        for (int j = 0; j < kW; ++j) {
            const float x = elem(s + e + j * CH);
            a = a + x * ka4[4 * j];
            b = b + x * kb4[4 * j];
        }
        fa[e] = a, fb[e] = b;
    }
}

// Float rows to destination rows: `rows` (1 or 2) rows of n elements, the
// second float row `fstride` floats after the first.
template <class E>
void convert_rows(const float* f, int fstride, typename E::Dst* d, int dstStep, int width, int rows) {
    using TD = typename E::Dst;
    if constexpr (E::kLayout == Layout::AC4) {
        const int fs = fstride * int(sizeof(float));
        const OrviSize roi{width, rows};
        if constexpr (std::is_same_v<TD, Orv8u>) ORV_T(orviConvert_32f8u_AC4R)(f, fs, d, dstStep, roi, orvRndNear);
        else if constexpr (std::is_same_v<TD, Orv16s>) ORV_T(orviConvert_32f16s_AC4R)(f, fs, d, dstStep, roi, orvRndNear);
        else ORV_T(orviConvert_32f16u_AC4R)(f, fs, d, dstStep, roi, orvRndNear);
    } else {
        const int n = width * E::kCh;
        for (int r = 0; r < rows; ++r, f += fstride, d = reinterpret_cast<TD*>(reinterpret_cast<unsigned char*>(d) + dstStep)) {
            if constexpr (std::is_same_v<TD, Orv8u>) ORV_T(orvsConvert_32f8u_Sfs)(f, d, n, orvRndNear, 0);
            else if constexpr (std::is_same_v<TD, Orv16s>) ORV_T(orvsConvert_32f16s_Sfs)(f, d, n, orvRndNear, 0);
            else ORV_T(orvsConvert_32f16u_Sfs)(f, d, n, orvRndNear, 0);
        }
    }
}

template <class E, int KW>
void run(const Call<E>& c) {
    using TS = typename E::Src;
    constexpr int CH = E::kCh;
    const int n = c.width * CH, nr = (n + 3) & ~3, kW = c.kW, kH = c.kH;
    const ptrdiff_t taps = ptrdiff_t(kW) * kH, kRow = 4 * ptrdiff_t(kW);

    // Reversed, four copies: tap t of the window (row-major from its top
    // left) meets the coefficient t places below the last stored one.
    float* const k4 = c.scratch;
    for (ptrdiff_t t = 0; t < taps; ++t) _mm_store_ps(k4 + 4 * t, _mm_set1_ps(c.coefLast[-t]));
    float* const fa = k4 + 4 * taps;
    float* const fb = fa + nr;

    const auto* base = reinterpret_cast<const unsigned char*>(c.win);
    auto src = [&](int y) { return reinterpret_cast<const TS*>(base + ptrdiff_t(y) * c.srcStep); };
    auto dst = [&](int y) {
        return reinterpret_cast<typename E::Dst*>(reinterpret_cast<unsigned char*>(c.dst) + ptrdiff_t(y) * c.dstStep);
    };

    int y = 0;
    for (; y + 2 <= c.height; y += 2) {
        a_row<TS, CH, KW, false>(src(y), fa, n, k4, kW);
        if (kH > 1) {
            b_row<TS, CH, KW, true>(src(y + 1), fa, fb, n, k4 + kRow, k4, kW);
            for (int i = 2; i < kH; ++i)
                b_row<TS, CH, KW, false>(src(y + i), fa, fb, n, k4 + i * kRow, k4 + (i - 1) * kRow, kW);
            a_row<TS, CH, KW, true>(src(y + kH), fb, n, k4 + (kH - 1) * kRow, kW);
        } else {
            // One kernel row: row B has no earlier rows to add to.
            a_row<TS, CH, KW, false>(src(y + 1), fb, n, k4, kW);
        }
        convert_rows<E>(fa, nr, dst(y), c.dstStep, c.width, 2);
    }
    if (y < c.height) {
        a_row<TS, CH, KW, false>(src(y), fa, n, k4, kW);
        for (int i = 1; i < kH; ++i) a_row<TS, CH, KW, true>(src(y + i), fa, n, k4 + i * kRow, kW);
        convert_rows<E>(fa, nr, dst(y), c.dstStep, c.width, 1);
    }
}

}  // namespace rowpair

template <class E>
bool int_row_pair(const Call<E>& c) {
    using TS = typename E::Src;
    using TD = typename E::Dst;
    constexpr bool kKind = std::is_same_v<TS, Orv8u> || (std::is_same_v<TS, TD> && sizeof(TS) == 2);
    // Tier e9 has no 16-bit AC4 conversion, and its column groups take every
    // 16-bit AC4 region.
    constexpr bool kConvert = !(kTier == Tier::e9 && E::kLayout == Layout::AC4 && sizeof(TD) == 2);
    if constexpr (!kKind || !kConvert) {
        return false;
    } else {
        if (c.kW < 3 || c.scratch == nullptr) return false;
        // The entry sizes scratch in 32-bit arithmetic that wraps: decline
        // when that is less than the coefficient copy and the two rows.
        const int64_t n = int64_t(c.width) * E::kCh, taps = int64_t(c.kW) * c.kH;
        if (n > INT32_MAX - 3 || int64_t(scratch_len<E>(c.width, c.kW, c.kH)) < 4 * taps + 2 * ((n + 3) & ~int64_t(3)))
            return false;
        if (c.kW == 3) rowpair::run<E, 3>(c);
        else if (c.kW == 5) rowpair::run<E, 5>(c);
        else rowpair::run<E, 0>(c);
        return true;
    }
}

}  // namespace filt
}  // namespace
}  // namespace orv::ORV_TIER_NS
