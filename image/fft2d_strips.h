// Column strips of the 2-D real FFT: K complex columns (2K floats) of a
// height-row image gathered into K contiguous arrays of `height` complex
// values, array k at k * height complex values from the buffer, and scattered
// back. Pure moves: both forms give the same bits.
//
// Fast form (strip, buffer and step on 16 bytes, even height, K of 2 or
// more): two rows per pass, 16-byte loads of a row's complex pairs, and one
// 16-byte store of (row r, row r+1) per array; since the height is even,
// every array position r is then on 16 bytes too. General form: row by row,
// one 8-byte complex value to or from each array (a row's pairs load and
// store unaligned).
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {
namespace strips {

inline const float* row_at(const float* p, int step, int r) {
    return reinterpret_cast<const float*>(reinterpret_cast<const char*>(p) + static_cast<ptrdiff_t>(step) * r);
}
inline float* row_at(float* p, int step, int r) {
    return reinterpret_cast<float*>(reinterpret_cast<char*>(p) + static_cast<ptrdiff_t>(step) * r);
}

template <int K>
bool fast_form(const void* strip, int step, const void* buf, int height) {
    const auto s = reinterpret_cast<uintptr_t>(strip), b = reinterpret_cast<uintptr_t>(buf);
    return K >= 2 && ((s | b | static_cast<uintptr_t>(step)) & 15) == 0 && (height & 1) == 0;
}

template <int K>
void merge(const float* strip, int step, float* buf, int height) {
    const ptrdiff_t arr = static_cast<ptrdiff_t>(2) * height;  // floats from one array to the next
    if (fast_form<K>(strip, step, buf, height)) {
        for (int r = 0; r < height; r += 2) {
            const float* a = row_at(strip, step, r);
            const float* b = row_at(strip, step, r + 1);
            float* out = buf + 2 * r;
            for (int j = 0; j < K; j += 2) {
                const __m128d ra = _mm_castps_pd(_mm_load_ps(a + 2 * j));
                const __m128d rb = _mm_castps_pd(_mm_load_ps(b + 2 * j));
                _mm_store_pd(reinterpret_cast<double*>(out + j * arr), _mm_unpacklo_pd(ra, rb));
                _mm_store_pd(reinterpret_cast<double*>(out + (j + 1) * arr), _mm_unpackhi_pd(ra, rb));
            }
        }
        return;
    }
    for (int r = 0; r < height; ++r) {
        const float* a = row_at(strip, step, r);
        float* out = buf + 2 * r;
        if constexpr (K == 1) {
            std::memcpy(out, a, 8);
        } else {
            for (int j = 0; j < K; j += 2) {
                const __m128 v = _mm_loadu_ps(a + 2 * j);
                _mm_storel_pi(reinterpret_cast<__m64*>(out + j * arr), v);
                _mm_storeh_pi(reinterpret_cast<__m64*>(out + (j + 1) * arr), v);
            }
        }
    }
}

template <int K>
void split(float* strip, int step, const float* buf, int height) {
    const ptrdiff_t arr = static_cast<ptrdiff_t>(2) * height;
    if (fast_form<K>(strip, step, buf, height)) {
        for (int r = 0; r < height; r += 2) {
            float* a = row_at(strip, step, r);
            float* b = row_at(strip, step, r + 1);
            const float* in = buf + 2 * r;
            for (int j = 0; j < K; j += 2) {
                const __m128d c0 = _mm_load_pd(reinterpret_cast<const double*>(in + j * arr));
                const __m128d c1 = _mm_load_pd(reinterpret_cast<const double*>(in + (j + 1) * arr));
                _mm_store_ps(a + 2 * j, _mm_castpd_ps(_mm_unpacklo_pd(c0, c1)));
                _mm_store_ps(b + 2 * j, _mm_castpd_ps(_mm_unpackhi_pd(c0, c1)));
            }
        }
        return;
    }
    for (int r = 0; r < height; ++r) {
        float* a = row_at(strip, step, r);
        const float* in = buf + 2 * r;
        if constexpr (K == 1) {
            std::memcpy(a, in, 8);
        } else {
            for (int j = 0; j < K; j += 2) {
                __m128 v = _mm_setzero_ps();
                v = _mm_loadl_pi(v, reinterpret_cast<const __m64*>(in + j * arr));
                v = _mm_loadh_pi(v, reinterpret_cast<const __m64*>(in + (j + 1) * arr));
                _mm_storeu_ps(a + 2 * j, v);
            }
        }
    }
}

// The scatter of a transformed strip at `out` fused with the gather of the
// next strip at `in` (a different set of columns), through the same buffer:
// each buffer position is scattered before the next strip's value takes it.
// One sweep down the rows instead of two, which matters when the row step is
// a power of two and the rows' lines compete for the same cache sets. Row by
// row: two rows per pass measured slower at such steps.
template <int K>
void split_merge(float* out, int outStep, const float* in, int inStep, float* buf, int height) {
    const ptrdiff_t arr = static_cast<ptrdiff_t>(2) * height;
    for (int r = 0; r < height; ++r) {
        float* o = row_at(out, outStep, r);
        const float* i = row_at(in, inStep, r);
        float* b = buf + 2 * r;
        if constexpr (K == 1) {
            uint64_t v, n;
            std::memcpy(&v, b, 8);
            std::memcpy(&n, i, 8);
            std::memcpy(o, &v, 8);
            std::memcpy(b, &n, 8);
        } else {
            // The next strip's loads first: they miss more often than the
            // buffer's, and should not wait behind the stores.
            __m128 n[K / 2];
            for (int j = 0; j < K; j += 2) n[j / 2] = _mm_loadu_ps(i + 2 * j);
            for (int j = 0; j < K; j += 2) {
                __m128 v = _mm_setzero_ps();
                v = _mm_loadl_pi(v, reinterpret_cast<const __m64*>(b + j * arr));
                v = _mm_loadh_pi(v, reinterpret_cast<const __m64*>(b + (j + 1) * arr));
                _mm_storeu_ps(o + 2 * j, v);
                _mm_storel_pi(reinterpret_cast<__m64*>(b + j * arr), n[j / 2]);
                _mm_storeh_pi(reinterpret_cast<__m64*>(b + (j + 1) * arr), n[j / 2]);
            }
        }
    }
}

// One real column: `height` floats down column 0 of `img`.
inline void gather_column(const float* img, int step, float* buf, int height) {
    for (int r = 0; r < height; ++r) std::memcpy(buf + r, row_at(img, step, r), sizeof(float));
}
inline void scatter_column(float* img, int step, const float* buf, int height) {
    for (int r = 0; r < height; ++r) std::memcpy(row_at(img, step, r), buf + r, sizeof(float));
}

}  // namespace strips
}  // namespace
}  // namespace orv::ORV_TIER_NS
