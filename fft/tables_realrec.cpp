// Recombination tables of the real transforms, N the real length, Q = N/4,
// theta(k) = 2 pi k / N:
//
//   forward (RealRec)  A(k) = (0.5 cos theta, 0.5 - 0.5 sin theta)
//   inverse (CcsRec)   C(k) = (cos theta, -sin theta)
//
// Three layouts by N:
//   N < 9       slot k = entry k, k = 0 .. Q-1; room for two entries.
//   one level   entries k = 1 .. Q. 32f: each pair of slots holds k+1, then
//               k (k odd), which suits the reversed walk of the back half.
//               64f, planar by pairs: first components of k and k+1, then
//               their second components.
//   two levels  (from the tier's two-level order) a fine table of F entries
//               (cos, -sin) of theta(1 .. F), arranged in pairs as above,
//               then a coarse table of Q/F entries (cos, -sin) of
//               theta(F j), j = 0 .. Q/F - 1; F is 1024 (32f) or 512 (64f).
//               The recombination forms theta(F j + f) by one complex
//               product, and applies the 0.5 to the data, so both tables
//               are the same.
#include "fft/limits.h"
#include "fft/spec_tables.h"

namespace orv::ORV_TIER_NS {
namespace {

enum class Rec { Fwd, Inv };

template <class T, Rec kRec>
fftab::Twiddle<T> entry(const fftab::Base<T>& base, int order, int k) {
    const fftab::Twiddle<T> w = base.at(k, order);  // (cos, -sin)
    if constexpr (kRec == Rec::Fwd) return {T(0.5) * w.re, T(0.5) + T(0.5) * w.im};
    else return w;
}

// Entries first .. first+count-1 of f, in the pair arrangement of T.
template <class T, class F>
T* store_pairs(T* out, int first, int count, F f) {
    for (int k = first; k < first + count; k += 2) {
        const fftab::Twiddle<T> a = f(k), b = f(k + 1);
        if constexpr (sizeof(T) == 4) *out++ = b.re, *out++ = b.im, *out++ = a.re, *out++ = a.im;
        else *out++ = a.re, *out++ = b.re, *out++ = a.im, *out++ = b.im;
    }
    return out;
}

template <class T, Rec kRec>
Orv8u* init_rec(int order, const T* pBase, int baseOrder, T* t) {
    const fftab::Base<T> base{pBase, baseOrder};
    const int q = order >= 2 ? 1 << (order - 2) : 0;
    const int twoLevel = fft_limits<T>().twoLevelRec;
    if (order < 4) {
        for (int k = 0; k < q; ++k) {
            const fftab::Twiddle<T> w = entry<T, kRec>(base, order, k);
            t[2 * k] = w.re, t[2 * k + 1] = w.im;
        }
        return fftab::end_aligned(t + 4);
    }
    if (twoLevel == 0 || order < twoLevel)
        return fftab::end_aligned(
            store_pairs(t, 1, q, [&](int k) { return entry<T, kRec>(base, order, k); }));
    const int fine = sizeof(T) == 4 ? 1024 : 512;
    T* out = store_pairs(t, 1, fine, [&](int k) { return base.at(k, order); });
    for (int j = 0; j < q / fine; ++j) {
        const fftab::Twiddle<T> w = base.at(static_cast<std::int64_t>(j) * fine, order);
        *out++ = w.re, *out++ = w.im;
    }
    return fftab::end_aligned(out);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS

using namespace orv::ORV_TIER_NS;

ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdRealRec_32f)(int order, const Orv32f* pBase, int baseOrder, Orv32f* pTab) {
    return init_rec<Orv32f, Rec::Fwd>(order, pBase, baseOrder, pTab);
}
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdCcsRec_32f)(int order, const Orv32f* pBase, int baseOrder, Orv32f* pTab) {
    return init_rec<Orv32f, Rec::Inv>(order, pBase, baseOrder, pTab);
}
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdRealRec_64f)(int order, const Orv64f* pBase, int baseOrder, Orv64f* pTab) {
    return init_rec<Orv64f, Rec::Fwd>(order, pBase, baseOrder, pTab);
}
ORV_TIER_API Orv8u* ORV_T(orvs_initTabTwdCcsRec_64f)(int order, const Orv64f* pBase, int baseOrder, Orv64f* pTab) {
    return init_rec<Orv64f, Rec::Inv>(order, pBase, baseOrder, pTab);
}
