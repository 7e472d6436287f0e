// Conversions between the packed real spectra (Perm, Pack) and the N/2 + 1
// complex values X[0 .. N/2]. Plain moves, compiled once for every tier.
#include "orvsfft.h"

namespace {

template <class T>
struct Cx;
template <>
struct Cx<Orv32f> {
    using C = Orv32fc;
};
template <>
struct Cx<Orv64f> {
    using C = Orv64fc;
};

enum class Layout { Perm, Pack };

// Index of R(N/2) and the offset of R(k), I(k) (k >= 1) in the layout.
template <Layout L>
constexpr int nyquist(int n) {
    return L == Layout::Perm ? 1 : n - 1;
}
template <Layout L>
constexpr int first(int k) {
    return L == Layout::Perm ? 2 * k : 2 * k - 1;
}

// len = N, a power of two or not; N = 1 gives X[0] alone.
template <Layout L, class T>
OrvStatus unpack(const T* p, typename Cx<T>::C* c, int len) {
    if (p == nullptr || c == nullptr) return orvStsNullPtrErr;
    if (len < 1 || (len % 2 == 1 && len != 1)) return orvStsSizeErr;
    const T r0 = p[0];
    if (len == 1) return c[0] = {r0, 0}, orvStsNoErr;
    const int h = len / 2;
    const T rh = p[nyquist<L>(len)];
    // In place (c over p), Pack values move up by one real: the walk from the
    // back reads each before a store reaches it. Perm values stay put.
    for (int k = h - 1; k >= 1; --k) c[k] = {p[first<L>(k)], p[first<L>(k) + 1]};
    c[0] = {r0, 0}, c[h] = {rh, 0};
    return orvStsNoErr;
}

template <Layout L, class T>
OrvStatus repack(const typename Cx<T>::C* c, T* p, int len) {
    if (p == nullptr || c == nullptr) return orvStsNullPtrErr;
    if (len < 1 || (len % 2 == 1 && len != 1)) return orvStsSizeErr;
    const T r0 = c[0].re;
    if (len == 1) return p[0] = r0, orvStsNoErr;
    const int h = len / 2;
    const T rh = c[h].re;
    // In place, Pack values move down by one real: front to back.
    for (int k = 1; k < h; ++k) {
        const auto v = c[k];
        p[first<L>(k)] = v.re, p[first<L>(k) + 1] = v.im;
    }
    p[0] = r0, p[nyquist<L>(len)] = rh;
    return orvStsNoErr;
}

}  // namespace

extern "C" {
ORV_API OrvStatus orvsFFTUnpack_Perm_32fc(const Orv32f* pSrc, Orv32fc* pDst, int len) {
    return unpack<Layout::Perm>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTUnpack_Pack_32fc(const Orv32f* pSrc, Orv32fc* pDst, int len) {
    return unpack<Layout::Pack>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTUnpack_Perm_64fc(const Orv64f* pSrc, Orv64fc* pDst, int len) {
    return unpack<Layout::Perm>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTUnpack_Pack_64fc(const Orv64f* pSrc, Orv64fc* pDst, int len) {
    return unpack<Layout::Pack>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTRepack_Perm_32fc(const Orv32fc* pSrc, Orv32f* pDst, int len) {
    return repack<Layout::Perm>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTRepack_Pack_32fc(const Orv32fc* pSrc, Orv32f* pDst, int len) {
    return repack<Layout::Pack>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTRepack_Perm_64fc(const Orv64fc* pSrc, Orv64f* pDst, int len) {
    return repack<Layout::Perm>(pSrc, pDst, len);
}
ORV_API OrvStatus orvsFFTRepack_Pack_64fc(const Orv64fc* pSrc, Orv64f* pDst, int len) {
    return repack<Layout::Pack>(pSrc, pDst, len);
}
}
