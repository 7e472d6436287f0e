// Region fill with one float value and in-place region addition. The fill
// goes row by row (one run for dense rows) through a 128-bit pattern kernel,
// streaming when the image reaches the size of the cache; the addition runs
// the element-wise loop of the tier on each row.
#include "vector/arith_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

// The cache size is asked only for fills above this many bytes.
constexpr long kAskCacheAbove = 0x80000;
// e9 adds by its 256-bit loop inline; the other tiers call their row kernel.
constexpr bool kInlineAdd = kTier == Tier::e9;

inline __m128i ldu16(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// Fills n bytes (a multiple of 4) from p with a 4-byte pattern. `pattern`
// holds it eight times, so its 16 bytes from offset k are the pattern as seen
// k bytes past a point where it starts. One unaligned store, aligned 16-byte
// stores from the next boundary (streamed if asked; the caller fences), and
// an unaligned store ending at the run's end for what is left.
void owniSet_8u_C4_M7(const u8* pattern, u8* p, long n, bool streaming) {
    if (n < 16) {
        for (; n > 0; n -= 4, p += 4) copy_piece<4>(pattern, p);
        return;
    }
    u8* const end = p + n;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), ldu16(pattern));
    const unsigned skip = -address(p) & 15;
    const __m128i v = ldu16(pattern + (skip & 3));
    p += skip, n -= skip;
    auto fill = [&](auto put) {
        for (; n >= 64; n -= 64, p += 64) put(p, v), put(p + 16, v), put(p + 32, v), put(p + 48, v);
        for (; n >= 16; n -= 16, p += 16) put(p, v);
    };
    if (streaming) fill([](u8* q, __m128i x) { _mm_stream_si128(reinterpret_cast<__m128i*>(q), x); });
    else fill([](u8* q, __m128i x) { _mm_store_si128(reinterpret_cast<__m128i*>(q), x); });
    // The run's length is a multiple of 4, so its last 16 bytes start in phase.
    if (n > 0) _mm_storeu_si128(reinterpret_cast<__m128i*>(end - 16), ldu16(pattern));
}

// pSrcDst[x] = pSrcDst[x] + pSrc[x], the source taken as the first operand
// of the loop, which prefetches it.
constexpr auto kAddTo = [](auto src, auto dst) { return dst + src; };

// The 128-bit tiers' row kernel: vector path from 11 elements, groups of
// eight, a cached prefetch of the source 64 bytes ahead, no threshold.
constexpr Rule kAddRows{11, Large::prefetch_src, 0};
[[maybe_unused]] void ownsAdd_32f_I(const Orv32f* pSrc, Orv32f* pSrcDst, int len) {
    sse_loop<kAddRows>(Operands<float, Second::array>{pSrc, pSrcDst, 0}, pSrcDst, len, kAddTo);
}

template <class T, class Byte>
inline T* row(T* base, long step, long y) {
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + step * y);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API OrvStatus ORV_T(orviSet_32f_C1R)(Orv32f* pDst, int dstStep, OrviSize roiSize, Orv32f value) {
    if (!pDst) return orvStsNullPtrErr;
    if (roiSize.width < 1 || roiSize.height < 1) return orvStsSizeErr;
    const long total = 4L * roiSize.width * roiSize.height;
    long run = 4L * roiSize.width, rows = roiSize.height;
    if (run == dstStep) run = total, rows = 1;
    // Streaming only for an image at least as large as the cache; when the
    // size cannot be had, ordinary stores.
    bool streaming = false;
    if (total > kAskCacheAbove) {
        int cache = 0;
        streaming = orvGetMaxCacheSizeB(&cache) == orvStsNoErr && cache > 0 && total >= cache;
    }
    alignas(32) u8 pattern[32];
    for (int k = 0; k < 32; k += 4) std::memcpy(pattern + k, &value, 4);
    u8* d = reinterpret_cast<u8*>(pDst);
    for (long y = 0; y < rows; ++y) owniSet_8u_C4_M7(pattern, d + y * dstStep, run, streaming);
    if (streaming) _mm_sfence();
    return orvStsNoErr;
}

ORV_TIER_API OrvStatus ORV_T(orviAdd_32f_C1IR)(const Orv32f* pSrc, int srcStep, Orv32f* pSrcDst, int srcDstStep,
                                              OrviSize roiSize) {
    if (!pSrc || !pSrcDst) return orvStsNullPtrErr;
    if (roiSize.height < 1 || roiSize.width < 1) return orvStsSizeErr;
    for (long y = 0; y < roiSize.height; ++y) {
        const Orv32f* s = row<const Orv32f, const u8>(pSrc, srcStep, y);
        Orv32f* d = row<Orv32f, u8>(pSrcDst, srcDstStep, y);
        if constexpr (kInlineAdd) avx_loop(Operands<float, Second::array>{s, d, 0}, d, roiSize.width, kAddTo);
        else ownsAdd_32f_I(s, d, roiSize.width);
    }
    return orvStsNoErr;
}
