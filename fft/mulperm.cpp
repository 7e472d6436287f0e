// Products of real spectra in Perm layout, and the complex products under
// them. One body for both element types.
#include "internal/orv_tier.h"
#include "orvsfftk.h"

ORV_TIER_DECLARE(ownps_Mpy2_32fc)
ORV_TIER_DECLARE(ownps_Mpy2_64fc)

namespace orv::ORV_TIER_NS {
namespace {

// d[i] = a[i] * b[i] for len complex values stored as (re, im) pairs, as
// re = a.re b.re - a.im b.im, im = a.im b.re + a.re b.im. Four products per
// step; d may equal a (the values of one step are read before it writes).
template <class T>
void mpy(const T* a, const T* b, T* d, int len) {
    int i = 0;
    for (; i + 4 <= len; i += 4) {
        T re[4], im[4];
        for (int j = 0; j < 4; ++j) {
            const T ar = a[2 * (i + j)], ai = a[2 * (i + j) + 1];
            const T br = b[2 * (i + j)], bi = b[2 * (i + j) + 1];
            re[j] = ar * br - ai * bi;
            im[j] = ai * br + ar * bi;
        }
        for (int j = 0; j < 4; ++j) d[2 * (i + j)] = re[j], d[2 * (i + j) + 1] = im[j];
    }
    for (; i < len; ++i) {
        const T ar = a[2 * i], ai = a[2 * i + 1], br = b[2 * i], bi = b[2 * i + 1];
        d[2 * i] = ar * br - ai * bi;
        d[2 * i + 1] = ai * br + ar * bi;
    }
}

// pSrcDst[0] *= pSrc[0]; even len: the real pair R(0), R(N/2), then complex
// values from index 2; odd len: complex values from index 1.
template <class T, class Mpy2>
OrvStatus mul_perm(const T* pSrc, T* pSrcDst, int len, Mpy2 mpy2) {
    if (pSrc == nullptr || pSrcDst == nullptr) return orvStsNullPtrErr;
    if (len < 1) return orvStsSizeErr;
    pSrcDst[0] *= pSrc[0];
    int first = 1;
    if (len % 2 == 0) pSrcDst[1] *= pSrc[1], first = 2;
    const int rest = (len - first) / 2;
    if (rest > 0) mpy2(pSrc + first, pSrcDst + first, rest);
    return orvStsNoErr;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API void ORV_T(ownps_Mpy2_32fc)(const Orv32f* pSrc, Orv32f* pSrcDst, int len) {
    mpy(pSrcDst, pSrc, pSrcDst, len);
}
ORV_TIER_API void ORV_T(ownps_Mpy2_64fc)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    mpy(pSrcDst, pSrc, pSrcDst, len);
}
ORV_TIER_API void ORV_T(ownps_Mpy3_32fc)(const Orv32f* pSrc1, const Orv32f* pSrc2, Orv32f* pDst, int len) {
    mpy(pSrc2, pSrc1, pDst, len);
}
ORV_TIER_API void ORV_T(ownps_Mpy3_64fc)(const Orv64f* pSrc1, const Orv64f* pSrc2, Orv64f* pDst, int len) {
    mpy(pSrc2, pSrc1, pDst, len);
}

ORV_TIER_API OrvStatus ORV_T(orvsMulPerm_32f_I)(const Orv32f* pSrc, Orv32f* pSrcDst, int len) {
    return mul_perm(pSrc, pSrcDst, len, ORV_T(ownps_Mpy2_32fc));
}
ORV_TIER_API OrvStatus ORV_T(orvsMulPerm_64f_I)(const Orv64f* pSrc, Orv64f* pSrcDst, int len) {
    return mul_perm(pSrc, pSrcDst, len, ORV_T(ownps_Mpy2_64fc));
}
