// The arithmetic kernels of the 128-bit tiers: each member is the shared
// loop shape with its operation, operands and size rule.
#include "arith_loops.h"

namespace orv::ORV_TIER_NS {
namespace {

using Two = Operands<double, Second::array>;
using OneC = Operands<double, Second::constant>;

// Two sources to a third array: streaming stores above 10922 (0x2AAA) groups
// of four, i.e. from 43,692 elements after alignment, where the three arrays
// together pass 1 MiB.
constexpr Rule kThreeArrays{5, Large::stream, 0x2AAA};
// In place with a second array: always a cached prefetch of the source.
constexpr Rule kInPlaceArray{5, Large::prefetch_src, 0};
// In place with a constant: the array is read and written, so no streaming;
// above 131072 (0x20000) elements a non-temporal prefetch.
constexpr Rule kInPlaceConst{5, Large::prefetch_nta, 0x20000};
// Constant minus source: streams only with source and destination both
// aligned and more than 16384 (0x4000) groups.
constexpr Rule kRevConst{5, Large::stream_both, 0x4000};
// Source times constant to another array: no size rule.
constexpr Rule kScaled{5, Large::none, 0};
// Single precision in place: groups of eight, NTA prefetch above 262144
// (0x40000) elements.
constexpr Rule kInPlaceConst32{11, Large::prefetch_nta, 0x40000};

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownsAdd_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len) {
    sse_loop<kThreeArrays>(Two{pSrc1, pSrc2, 0}, pDst, len, kAdd);
}
ORV_TIER_API void ORV_T(ownsSub_64f)(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len) {
    sse_loop<kThreeArrays>(Two{pSrc1, pSrc2, 0}, pDst, len, kSubRev);
}
ORV_TIER_API void ORV_T(ownsAdd_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    sse_loop<kInPlaceArray>(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kAdd);
}
ORV_TIER_API void ORV_T(ownsSub_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    sse_loop<kInPlaceArray>(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kSubRev);
}
ORV_TIER_API void ORV_T(ownsMul_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    sse_loop<kInPlaceArray>(Two{pSrc, pSrcDst, 0}, pSrcDst, len, kMul);
}
ORV_TIER_API void ORV_T(ownsAddC_64f_I)(Orv64f* pSrcDst, int len, Orv64f val) {
    sse_loop<kInPlaceConst>(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kAdd);
}
ORV_TIER_API void ORV_T(ownsSubC_64f_I)(Orv64f* pSrcDst, int len, Orv64f val) {
    sse_loop<kInPlaceConst>(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kSub);
}
ORV_TIER_API void ORV_T(ownsMulC_64f_I)(Orv64f* pSrcDst, int len, Orv64f val) {
    sse_loop<kInPlaceConst>(OneC{pSrcDst, nullptr, val}, pSrcDst, len, kMul);
}
ORV_TIER_API void ORV_T(ownsSubCRev_64f)(const Orv64f* pSrc, Orv64f* pDst, int len, Orv64f val) {
    sse_loop<kRevConst>(OneC{pSrc, nullptr, val}, pDst, len, kSubRev);
}
ORV_TIER_API void ORV_T(ownsMulC_64f)(const Orv64f* pSrc, Orv64f* pDst, int len, Orv64f val) {
    sse_loop<kScaled>(OneC{pSrc, nullptr, val}, pDst, len, kMul);
}
ORV_TIER_API void ORV_T(ownsMulC_32f_I)(Orv32f* pSrcDst, int len, Orv32f val) {
    sse_loop<kInPlaceConst32>(Operands<float, Second::constant>{pSrcDst, nullptr, val}, pSrcDst, len, kMul);
}
