// Transposes of 32-bit single-channel images: destination row x holds source
// column x, so pDst has width rows of height elements. Words are moved as bits
// (register shuffles and 4-byte copies, never arithmetic), so float NaN
// payloads survive and the 32f form is the 32s one.
//
// Routes, by tier (Routes below holds the rule):
//   e9, y8, u8  width > 512, width % 4 == 0, height % 16 == 0, source rows on
//               16 bytes, destination rows on 64 bytes, and source plus
//               destination larger than the largest cache: 128 x 128 blocks.
//   e9          width % 4 == 0, height % 16 == 0, source rows on 16 bytes,
//               destination rows on 32 bytes: 32-row bands, 256-bit stores.
//   all         otherwise 32-row bands of 4 x 4 register transposes, any
//               alignment, scalar edges.
//   m7          no blocked route; from a smaller side of 257 on, bands with
//               non-temporal stores once source plus destination exceed half
//               the largest cache (the other half is left to the caller's
//               data), closed by a store fence.
// An unknown cache size (the query failing) selects neither the blocked nor
// the streaming route.
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "internal/orv_tier.h"

// The 256-bit kernel is a template that only e9 instantiates.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace orv::ORV_TIER_NS {
namespace {

using Bytes = unsigned char;

struct Routes {
    static constexpr bool kBlocked = kTier != Tier::m7;  // 128 x 128 blocks beyond the cache
    static constexpr bool kAvxBands = kTier == Tier::e9;  // 256-bit bands for aligned data
    static constexpr bool kStreaming = kTier == Tier::m7;  // non-temporal bands beyond half the cache
};

constexpr int kBand = 32;              // source rows per band
constexpr int kBlock = 128;            // edge of a block of the blocked route
constexpr int kBlockedAbove = 512;     // the blocked route needs a wider image
constexpr int kSmallEdge = 257;        // m7: a smaller side below this never streams
constexpr int kStreamCacheShift = 1;   // m7: stream beyond cache >> 1

bool aligned(const void* p, int step, uintptr_t to) {
    return ((reinterpret_cast<uintptr_t>(p) | static_cast<uintptr_t>(static_cast<intptr_t>(step))) & (to - 1)) == 0;
}

// In place: four rows in, four columns out.
inline void transpose4(__m128& a, __m128& b, __m128& c, __m128& d) {
    const __m128 t0 = _mm_unpacklo_ps(a, b), t1 = _mm_unpacklo_ps(c, d);
    const __m128 t2 = _mm_unpackhi_ps(a, b), t3 = _mm_unpackhi_ps(c, d);
    a = _mm_movelh_ps(t0, t1);
    b = _mm_movehl_ps(t1, t0);
    c = _mm_movelh_ps(t2, t3);
    d = _mm_movehl_ps(t3, t2);
}

enum class Access { Any, Aligned, Stream };

template <Access kA>
inline __m128 load4(const Bytes* p) {
    if constexpr (kA == Access::Aligned) return _mm_load_ps(reinterpret_cast<const float*>(p));
    else return _mm_loadu_ps(reinterpret_cast<const float*>(p));
}

// Stream stores go non-temporal where the address allows it (16 bytes).
template <Access kA>
inline void store4(Bytes* p, __m128 v) {
    auto* f = reinterpret_cast<float*>(p);
    if constexpr (kA == Access::Aligned) _mm_store_ps(f, v);
    else if constexpr (kA == Access::Stream) {
        if ((reinterpret_cast<uintptr_t>(p) & 15) == 0) _mm_stream_ps(f, v);
        else _mm_storeu_ps(f, v);
    } else _mm_storeu_ps(f, v);
}

// `rows` source rows of `width` words: 4 x 4 register transposes, then the
// rows short of a multiple of 4 and the last width % 4 columns word by word.
// Access::Aligned needs width and rows multiples of 4 and rows on 16 bytes.
template <Access kA>
void band_sse(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width, int rows) {
    int x = 0;
    for (; x + 4 <= width; x += 4) {
        const Bytes* s = src + 4 * ptrdiff_t{x};
        Bytes* d = dst + x * dstStep;
        int y = 0;
        for (; y + 4 <= rows; y += 4) {
            const Bytes* r = s + y * srcStep;
            __m128 a = load4<kA>(r), b = load4<kA>(r + srcStep), c = load4<kA>(r + 2 * srcStep),
                   e = load4<kA>(r + 3 * srcStep);
            transpose4(a, b, c, e);
            Bytes* o = d + 4 * ptrdiff_t{y};
            store4<kA>(o, a);
            store4<kA>(o + dstStep, b);
            store4<kA>(o + 2 * dstStep, c);
            store4<kA>(o + 3 * dstStep, e);
        }
        for (; y < rows; ++y)
            for (int k = 0; k < 4; ++k) std::memcpy(d + k * dstStep + 4 * ptrdiff_t{y}, s + y * srcStep + 4 * k, 4);
    }
    for (; x < width; ++x)
        for (int y = 0; y < rows; ++y)
            std::memcpy(dst + x * dstStep + 4 * ptrdiff_t{y}, src + y * srcStep + 4 * ptrdiff_t{x}, 4);
}

void owniTranspose_32s_C1R_M7(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width,
                              int rows) {
    band_sse<Access::Any>(src, srcStep, dst, dstStep, width, rows);
}

// m7 only. The caller closes the non-temporal stores with a store fence.
template <class = void>
void owniTranspose_32s_C1R_M7_NT(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width,
                                 int rows) {
    band_sse<Access::Stream>(src, srcStep, dst, dstStep, width, rows);
}

// e9: width a multiple of 4, rows of 8, source rows on 16 bytes, destination
// rows on 32. Eight source rows by four columns become four destination rows
// of eight words: rows y..y+3 fill the low halves, y+4..y+7 the high halves,
// and one in-lane 4 x 4 transpose finishes both.
template <class = void>
void owniTranspose_32s_C1R_AVX(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width,
                               int rows) {
    auto pair = [srcStep](const Bytes* r) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_load_ps(reinterpret_cast<const float*>(r))),
                                    _mm_load_ps(reinterpret_cast<const float*>(r + 4 * srcStep)), 1);
    };
    for (int x = 0; x < width; x += 4) {
        const Bytes* s = src + 4 * ptrdiff_t{x};
        Bytes* d = dst + x * dstStep;
        for (int y = 0; y < rows; y += 8) {
            const Bytes* r = s + y * srcStep;
            const __m256 a = pair(r), b = pair(r + srcStep), c = pair(r + 2 * srcStep), e = pair(r + 3 * srcStep);
            const __m256 t0 = _mm256_unpacklo_ps(a, b), t1 = _mm256_unpacklo_ps(c, e);
            const __m256 t2 = _mm256_unpackhi_ps(a, b), t3 = _mm256_unpackhi_ps(c, e);
            auto* o = reinterpret_cast<float*>(d + 4 * ptrdiff_t{y});
            _mm256_store_ps(o, _mm256_shuffle_ps(t0, t1, 0x44));
            _mm256_store_ps(reinterpret_cast<float*>(reinterpret_cast<Bytes*>(o) + dstStep),
                            _mm256_shuffle_ps(t0, t1, 0xEE));
            _mm256_store_ps(reinterpret_cast<float*>(reinterpret_cast<Bytes*>(o) + 2 * dstStep),
                            _mm256_shuffle_ps(t2, t3, 0x44));
            _mm256_store_ps(reinterpret_cast<float*>(reinterpret_cast<Bytes*>(o) + 3 * dstStep),
                            _mm256_shuffle_ps(t2, t3, 0xEE));
        }
    }
}

// One block of the blocked route: width a multiple of 4, height of 16, rows
// aligned as that route demands, so no edges remain.
template <class Tr>
void owniTransposeWxH_32sC1(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width,
                            int height) {
    if constexpr (Tr::kAvxBands) owniTranspose_32s_C1R_AVX(src, srcStep, dst, dstStep, width, height);
    else band_sse<Access::Aligned>(src, srcStep, dst, dstStep, width, height);
}

// Blocks of kBlock x kBlock, a row of blocks at a time: each block's source
// and destination stay in the inner caches and touch few pages.
template <class Tr>
void owniTranspose32s_C1R_mk2(const Bytes* src, ptrdiff_t srcStep, Bytes* dst, ptrdiff_t dstStep, int width,
                              int height) {
    for (int y = 0; y < height; y += kBlock)
        for (int x = 0; x < width; x += kBlock)
            owniTransposeWxH_32sC1<Tr>(src + y * srcStep + 4 * ptrdiff_t{x}, srcStep,
                                       dst + x * dstStep + 4 * ptrdiff_t{y}, dstStep, std::min(kBlock, width - x),
                                       std::min(kBlock, height - y));
}

// The largest cache in bytes, or 0 when it is unknown.
int64_t cache_bytes() {
    int size = 0;
    return orvGetMaxCacheSizeB(&size) == orvStsNoErr && size > 0 ? size : 0;
}

template <class Tr>
OrvStatus transpose_32s(const Orv32s* pSrc, int srcStep, Orv32s* pDst, int dstStep, OrviSize roi) {
    if (!pSrc || !pDst) return orvStsNullPtrErr;
    if (roi.width < 1 || roi.height < 1) return orvStsSizeErr;
    const int width = roi.width, height = roi.height;
    const auto* src = reinterpret_cast<const Bytes*>(pSrc);
    auto* dst = reinterpret_cast<Bytes*>(pDst);
    const ptrdiff_t ss = srcStep, ds = dstStep;
    const int64_t footprint = int64_t{width} * 8 * height;  // bytes read plus written
    auto bands = [&](auto kernel) {
        for (int y = 0; y < height; y += kBand)
            kernel(src + y * ss, ss, dst + 4 * ptrdiff_t{y}, ds, width, std::min(kBand, height - y));
    };
    const bool whole4x16 = width % 4 == 0 && height % 16 == 0 && aligned(pSrc, srcStep, 16);

    if constexpr (Tr::kBlocked) {
        if (width > kBlockedAbove && whole4x16 && aligned(pDst, dstStep, 64)) {
            const int64_t cache = cache_bytes();
            if (cache > 0 && cache < footprint) {
                owniTranspose32s_C1R_mk2<Tr>(src, ss, dst, ds, width, height);
                return orvStsNoErr;
            }
        }
    }
    if constexpr (Tr::kAvxBands) {
        if (whole4x16 && aligned(pDst, dstStep, 32)) {
            bands(owniTranspose_32s_C1R_AVX<>);
            return orvStsNoErr;
        }
    }
    if constexpr (Tr::kStreaming) {
        if (std::min(width, height) >= kSmallEdge) {
            const int64_t cache = cache_bytes();
            if (cache > 0 && footprint > cache >> kStreamCacheShift) {
                bands(owniTranspose_32s_C1R_M7_NT<>);
                _mm_sfence();
                return orvStsNoErr;
            }
        }
    }
    bands(owniTranspose_32s_C1R_M7);
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviTranspose_32s_C1R)(const Orv32s* pSrc, int srcStep, Orv32s* pDst, int dstStep,
                                                     OrviSize srcRoiSize) {
    return transpose_32s<Routes>(pSrc, srcStep, pDst, dstStep, srcRoiSize);
}

// 32-bit words moved unseen: the float form is the integer one.
ORV_TIER_API OrvStatus ORV_T(orviTranspose_32f_C1R)(const Orv32f* pSrc, int srcStep, Orv32f* pDst, int dstStep,
                                                     OrviSize srcRoiSize) {
    return ORV_T(orviTranspose_32s_C1R)(reinterpret_cast<const Orv32s*>(pSrc), srcStep,
                                        reinterpret_cast<Orv32s*>(pDst), dstStep, srcRoiSize);
}
