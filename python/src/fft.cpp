// FFT bindings. Specifications are built once per (kind, orders, flag, tier
// slot) and kept until the module is unloaded; the library allows threads to
// share them, each call bringing its own work buffer.
#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <mutex>
#include <type_traits>
#include <vector>

#include "common.h"

namespace orvpy {
namespace {

using c64 = std::complex<float>;
using c128 = std::complex<double>;

const auto cInit = ORVPY_TIERS4(orvsFFTInitAlloc_C_32fc);
const auto cFree = ORVPY_TIERS4(orvsFFTFree_C_32fc);
const auto cBuf = ORVPY_TIERS4(orvsFFTGetBufSize_C_32fc);
const auto cFwd = ORVPY_TIERS4(orvsFFTFwd_CToC_32fc);
const auto cInv = ORVPY_TIERS4(orvsFFTInv_CToC_32fc);

const auto rInit = ORVPY_TIERS4(orvsFFTInitAlloc_R_32f);
const auto rFree = ORVPY_TIERS4(orvsFFTFree_R_32f);
const auto rBuf = ORVPY_TIERS4(orvsFFTGetBufSize_R_32f);
const auto rFwd = ORVPY_TIERS4(orvsFFTFwd_RToPack_32f);
const auto rInv = ORVPY_TIERS4(orvsFFTInv_PackToR_32f);

const auto dInit = ORVPY_TIERS5(orvsFFTInitAlloc_R_64f);
const auto dFree = ORVPY_TIERS5(orvsFFTFree_R_64f);
const auto dBuf = ORVPY_TIERS5(orvsFFTGetBufSize_R_64f);
const auto dFwd = ORVPY_TIERS5(orvsFFTFwd_RToPerm_64f);
const auto dInv = ORVPY_TIERS5(orvsFFTInv_PermToR_64f);

const auto iInit = ORVPY_TIERS4(orviFFTInitAlloc_R_32f);
const auto iFree = ORVPY_TIERS4(orviFFTFree_R_32f);
const auto iBuf = ORVPY_TIERS4(orviFFTGetBufSize_R_32f);
const auto iFwd = ORVPY_TIERS4(orviFFTFwd_RToPack_32f_C1R);
const auto iInv = ORVPY_TIERS4(orviFFTInv_PackToR_32f_C1R);

enum Kind { kComplex32, kReal32, kReal64, kImage32 };

struct Key {
    int kind, orderX, orderY, flag, slot;
    auto operator<=>(const Key&) const = default;
};

struct Spec {
    void* p = nullptr;
    int bufSize = 0;
};

class SpecCache {
public:
    SpecCache() = default;
    SpecCache(const SpecCache&) = delete;
    SpecCache& operator=(const SpecCache&) = delete;
    ~SpecCache() {
        for (auto& [k, s] : specs_) release(k, s.p);
    }

    // The specification for k, built on first use. Returns the library's
    // status; out is valid only when it is not negative.
    int get(const Key& k, Spec& out) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (auto it = specs_.find(k); it != specs_.end()) {
            out = it->second;
            return 0;
        }
        Spec s;
        int st = build(k, s);
        if (st < 0) return st;
        specs_.emplace(k, s);
        out = s;
        return st;
    }

private:
    template <class S, class I, class B>
    static int make(S** pp, Spec& s, I init, B bufsize, const Key& k) {
        int st;
        if constexpr (std::is_same_v<S, OrviFFTSpec_R_32f>)
            st = init[k.slot](pp, k.orderX, k.orderY, k.flag, orvAlgHintNone);
        else
            st = init[k.slot](pp, k.orderX, k.flag, orvAlgHintNone);
        if (st < 0) return st;
        s.p = *pp;
        const int sb = bufsize[k.slot](*pp, &s.bufSize);
        return sb < 0 ? sb : st;
    }
    static int build(const Key& k, Spec& s) {
        switch (k.kind) {
        case kComplex32: {
            OrvFFTSpec_C_32fc* p = nullptr;
            return make(&p, s, cInit, cBuf, k);
        }
        case kReal32: {
            OrvFFTSpec_R_32f* p = nullptr;
            return make(&p, s, rInit, rBuf, k);
        }
        case kReal64: {
            OrvFFTSpec_R_64f* p = nullptr;
            return make(&p, s, dInit, dBuf, k);
        }
        default: {
            OrviFFTSpec_R_32f* p = nullptr;
            return make(&p, s, iInit, iBuf, k);
        }
        }
    }
    static void release(const Key& k, void* p) {
        switch (k.kind) {
        case kComplex32: cFree[k.slot](static_cast<OrvFFTSpec_C_32fc*>(p)); break;
        case kReal32: rFree[k.slot](static_cast<OrvFFTSpec_R_32f*>(p)); break;
        case kReal64: dFree[k.slot](static_cast<OrvFFTSpec_R_64f*>(p)); break;
        default: iFree[k.slot](static_cast<OrviFFTSpec_R_32f*>(p)); break;
        }
    }

    std::mutex mutex_;
    std::map<Key, Spec> specs_;
};

SpecCache cache;

template <class T>
T* spec_as(const Spec& s) {
    return static_cast<T*>(s.p);
}

// Scratch of the calling thread, kept between calls and grown on demand:
// repeated transforms reuse pages already mapped instead of faulting fresh
// ones in on every call (and the contents are not cleared). A thread keeps
// the largest block it needed until it ends.
class Scratch {
public:
    Orv8u* get(std::size_t bytes) {
        if (bytes > size_) {
            mem_.reset();
            size_ = 0;
            mem_.reset(static_cast<Orv8u*>(::operator new[](bytes, std::align_val_t{64})));
            size_ = bytes;
        }
        return mem_.get();
    }

private:
    struct Free {
        void operator()(Orv8u* p) const { ::operator delete[](p, std::align_val_t{64}); }
    };
    std::unique_ptr<Orv8u, Free> mem_;
    std::size_t size_ = 0;
};
thread_local Scratch tlsWork, tlsPacked;

struct Work {
    Orv8u* p;
    Orv8u* data() const { return p; }
};

Work work(const Spec& s) {
    return {tlsWork.get(static_cast<std::size_t>(std::max(s.bufSize, 1)))};
}

// Leading axes of a form the batch; the last `core` are transformed.
py::ssize_t batch_of(const py::array& a, int core) {
    if (a.ndim() < core) throw py::value_error("FFT: at least " + std::to_string(core) + " dimensions expected");
    py::ssize_t b = 1;
    for (py::ssize_t i = 0; i + core < a.ndim(); ++i) b *= a.shape(i);
    return b;
}

// a's shape with the last len(last) extents replaced.
std::vector<py::ssize_t> shape_with(const py::array& a, std::initializer_list<py::ssize_t> last) {
    std::vector<py::ssize_t> s(a.shape(), a.shape() + a.ndim());
    std::copy(last.begin(), last.end(), s.end() - static_cast<std::ptrdiff_t>(last.size()));
    return s;
}

// ---- Complex, single precision: (batch, n) complex64 ----------------------

carray<c64> fft_c64(const carray<c64>& a, bool inverse, int flag) {
    const py::ssize_t batch = batch_of(a, 1), n = a.shape(a.ndim() - 1);
    const int order = order_of(n, "FFT length");
    carray<c64> out(shape_with(a, {n}));
    const auto* src = reinterpret_cast<const Orv32fc*>(a.data());
    auto* dst = reinterpret_cast<Orv32fc*>(out.mutable_data());
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({kComplex32, order, 0, flag, t}, s), "orvsFFTInitAlloc_C_32fc")) {
            auto buf = work(s);
            auto f = inverse ? cInv[t] : cFwd[t];
            for (py::ssize_t i = 0; i < batch; ++i)
                if (!st.ok(f(src + i * n, dst + i * n, spec_as<OrvFFTSpec_C_32fc>(s), buf.data()),
                           inverse ? "orvsFFTInv_CToC_32fc" : "orvsFFTFwd_CToC_32fc"))
                    break;
        }
    }
    st.raise();
    return out;
}

// ---- Complex, double precision, from two real transforms -------------------
// z = x + iy: Z = X + iY with X, Y the spectra of the real x and y. Back:
// split Z into the Hermitian spectra H = (Z[k] + conj Z[-k]) / 2 and
// G = (Z[k] - conj Z[-k]) / 2i, whose inverses are x and y.

carray<c128> fft_c128(const carray<c128>& a, bool inverse, int flag) {
    const py::ssize_t batch = batch_of(a, 1), n = a.shape(a.ndim() - 1);
    const int order = order_of(n, "FFT length");
    carray<c128> out(shape_with(a, {n}));
    const c128* src = a.data();
    c128* dst = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({kReal64, order, 0, flag, t}, s), "orvsFFTInitAlloc_R_64f")) {
            auto buf = work(s);
            const auto* spec = spec_as<OrvFFTSpec_R_64f>(s);
            const py::ssize_t h = n / 2 + 1;
            // x and y (n each, later Perm), then their unpacked spectra.
            std::vector<double> xy(2 * n);
            std::vector<c128> XY(2 * h);
            double* x = xy.data();
            double* y = x + n;
            auto* X = reinterpret_cast<Orv64fc*>(XY.data());
            auto* Y = X + h;
            const int len = static_cast<int>(n);
            for (py::ssize_t b = 0; b < batch; ++b) {
                const c128* z = src + b * n;
                c128* o = dst + b * n;
                if (!inverse) {
                    for (py::ssize_t i = 0; i < n; ++i) {
                        x[i] = z[i].real();
                        y[i] = z[i].imag();
                    }
                    if (!st.ok(dFwd[t](x, x, spec, buf.data()), "orvsFFTFwd_RToPerm_64f") ||
                        !st.ok(dFwd[t](y, y, spec, buf.data()), "orvsFFTFwd_RToPerm_64f") ||
                        !st.ok(orvsFFTUnpack_Perm_64fc(x, X, len), "orvsFFTUnpack_Perm_64fc") ||
                        !st.ok(orvsFFTUnpack_Perm_64fc(y, Y, len), "orvsFFTUnpack_Perm_64fc"))
                        break;
                    const c128* Xc = XY.data();
                    const c128* Yc = Xc + h;
                    for (py::ssize_t k = 0; k < h; ++k) o[k] = Xc[k] + c128(0, 1) * Yc[k];
                    for (py::ssize_t k = h; k < n; ++k)
                        o[k] = std::conj(Xc[n - k]) + c128(0, 1) * std::conj(Yc[n - k]);
                } else {
                    c128* Hc = XY.data();
                    c128* Gc = Hc + h;
                    for (py::ssize_t k = 0; k < h; ++k) {
                        const c128 p = z[k], q = std::conj(z[(n - k) % n]);
                        Hc[k] = 0.5 * (p + q);
                        Gc[k] = c128(0, -0.5) * (p - q);
                    }
                    if (!st.ok(orvsFFTRepack_Perm_64fc(X, x, len), "orvsFFTRepack_Perm_64fc") ||
                        !st.ok(orvsFFTRepack_Perm_64fc(Y, y, len), "orvsFFTRepack_Perm_64fc") ||
                        !st.ok(dInv[t](x, x, spec, buf.data()), "orvsFFTInv_PermToR_64f") ||
                        !st.ok(dInv[t](y, y, spec, buf.data()), "orvsFFTInv_PermToR_64f"))
                        break;
                    for (py::ssize_t i = 0; i < n; ++i) o[i] = c128(x[i], y[i]);
                }
            }
        }
    }
    st.raise();
    return out;
}

// ---- Real 1-D: (batch, n) real <-> (batch, n/2 + 1) complex ----------------
// The forward transform writes the packed spectrum into the output row, which
// the library's unpacker then spreads in place (it allows the overlay).

// The two real kinds: single precision in Pack, double in Perm.
template <class T>
struct RealKind;
template <>
struct RealKind<float> {
    using C = c64;
    using LibC = Orv32fc;
    using SpecT = OrvFFTSpec_R_32f;
    static constexpr int kKind = kReal32;
    static constexpr const auto& fwd = rFwd;
    static constexpr const auto& inv = rInv;
    static constexpr auto unpack = orvsFFTUnpack_Pack_32fc;
    static constexpr auto repack = orvsFFTRepack_Pack_32fc;
    static constexpr const char* kInit = "orvsFFTInitAlloc_R_32f";
    static constexpr const char* kFwd = "orvsFFTFwd_RToPack_32f";
    static constexpr const char* kInv = "orvsFFTInv_PackToR_32f";
    static constexpr const char* kUnpack = "orvsFFTUnpack_Pack_32fc";
    static constexpr const char* kRepack = "orvsFFTRepack_Pack_32fc";
};
template <>
struct RealKind<double> {
    using C = c128;
    using LibC = Orv64fc;
    using SpecT = OrvFFTSpec_R_64f;
    static constexpr int kKind = kReal64;
    static constexpr const auto& fwd = dFwd;
    static constexpr const auto& inv = dInv;
    static constexpr auto unpack = orvsFFTUnpack_Perm_64fc;
    static constexpr auto repack = orvsFFTRepack_Perm_64fc;
    static constexpr const char* kInit = "orvsFFTInitAlloc_R_64f";
    static constexpr const char* kFwd = "orvsFFTFwd_RToPerm_64f";
    static constexpr const char* kInv = "orvsFFTInv_PermToR_64f";
    static constexpr const char* kUnpack = "orvsFFTUnpack_Perm_64fc";
    static constexpr const char* kRepack = "orvsFFTRepack_Perm_64fc";
};

template <class T>
carray<typename RealKind<T>::C> rfft(const carray<T>& a, int flag) {
    using K = RealKind<T>;
    const py::ssize_t batch = batch_of(a, 1), n = a.shape(a.ndim() - 1), h = n / 2 + 1;
    const int order = order_of(n, "FFT length");
    carray<typename K::C> out(shape_with(a, {h}));
    const T* src = a.data();
    auto* dst = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({K::kKind, order, 0, flag, t}, s), K::kInit)) {
            auto buf = work(s);
            for (py::ssize_t b = 0; b < batch; ++b) {
                auto* o = reinterpret_cast<typename K::LibC*>(dst + b * h);
                auto* packed = reinterpret_cast<T*>(o);
                if (!st.ok(K::fwd[t](src + b * n, packed, spec_as<typename K::SpecT>(s), buf.data()), K::kFwd) ||
                    !st.ok(K::unpack(packed, o, static_cast<int>(n)), K::kUnpack))
                    break;
            }
        }
    }
    st.raise();
    return out;
}

template <class T>
carray<T> irfft(const carray<typename RealKind<T>::C>& a, py::ssize_t n, int flag) {
    using K = RealKind<T>;
    const py::ssize_t batch = batch_of(a, 1), h = n / 2 + 1;
    const int order = order_of(n, "FFT length");
    if (a.shape(a.ndim() - 1) != h) throw py::value_error("internal: irfft input of n/2 + 1 values expected");
    carray<T> out(shape_with(a, {n}));
    const auto* src = reinterpret_cast<const typename K::LibC*>(a.data());
    T* dst = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({K::kKind, order, 0, flag, t}, s), K::kInit)) {
            auto buf = work(s);
            for (py::ssize_t b = 0; b < batch; ++b) {
                T* o = dst + b * n;
                if (!st.ok(K::repack(src + b * h, o, static_cast<int>(n)), K::kRepack) ||
                    !st.ok(K::inv[t](o, o, spec_as<typename K::SpecT>(s), buf.data()), K::kInv))
                    break;
            }
        }
    }
    st.raise();
    return out;
}

// ---- Real 2-D: (batch, H, W) float32 <-> (batch, H, W/2 + 1) complex64 ----

// Half spectrum F (H x (W/2 + 1)) to the 2-D Pack layout P (H x W): columns
// 0 and W - 1 hold the 1-D Pack sequences of columns u = 0 and u = W/2 (their
// Hermitian parts, so that a spectrum that is not one of a real image is
// treated as an inverse over rows and then real columns would treat it),
// column pairs (2k - 1, 2k) the complex columns k = 1 .. W/2 - 1.
void repack_2d(const c64* F, py::ssize_t H, py::ssize_t W, float* P) {
    const py::ssize_t M = W / 2 + 1;
    auto real_column = [&](py::ssize_t u, py::ssize_t c) {
        P[c] = F[u].real();
        for (py::ssize_t l = 1; l < H / 2; ++l) {
            const c64 v = 0.5f * (F[l * M + u] + std::conj(F[(H - l) * M + u]));
            P[(2 * l - 1) * W + c] = v.real();
            P[2 * l * W + c] = v.imag();
        }
        if (H > 1) P[(H - 1) * W + c] = F[(H / 2) * M + u].real();
    };
    real_column(0, 0);
    if (W > 1) real_column(W / 2, W - 1);
    for (py::ssize_t v = 0; v < H; ++v)
        for (py::ssize_t k = 1; k < W / 2; ++k) {
            P[v * W + 2 * k - 1] = F[v * M + k].real();
            P[v * W + 2 * k] = F[v * M + k].imag();
        }
}

carray<c64> rfft2_32f(const carray<float>& a, int flag) {
    const py::ssize_t batch = batch_of(a, 2), H = a.shape(a.ndim() - 2), W = a.shape(a.ndim() - 1), M = W / 2 + 1;
    const int oy = order_of(H, "FFT height"), ox = order_of(W, "FFT width");
    const int step = as_int(W * 4, "FFT row");
    as_int(H * W, "FFT image size");
    carray<c64> out(shape_with(a, {M}));
    const float* src = a.data();
    c64* dst = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({kImage32, ox, oy, flag, t}, s), "orviFFTInitAlloc_R_32f")) {
            auto buf = work(s);
            float* packed = reinterpret_cast<float*>(tlsPacked.get(static_cast<std::size_t>(H * W) * sizeof(float)));
            for (py::ssize_t b = 0; b < batch; ++b) {
                if (!st.ok(iFwd[t](src + b * H * W, step, packed, step, spec_as<OrviFFTSpec_R_32f>(s),
                                   buf.data()),
                           "orviFFTFwd_RToPack_32f_C1R") ||
                    !st.ok(orviFFTUnpack_Pack_32fc(packed, step, reinterpret_cast<Orv32fc*>(dst + b * H * M),
                                                   static_cast<int>(M * 8),
                                                   OrviSize{static_cast<int>(W), static_cast<int>(H)}),
                           "orviFFTUnpack_Pack_32fc"))
                    break;
            }
        }
    }
    st.raise();
    return out;
}

carray<float> irfft2_32f(const carray<c64>& a, py::ssize_t W, int flag) {
    const py::ssize_t batch = batch_of(a, 2), H = a.shape(a.ndim() - 2), M = W / 2 + 1;
    const int oy = order_of(H, "FFT height"), ox = order_of(W, "FFT width");
    if (a.shape(a.ndim() - 1) != M) throw py::value_error("internal: irfft2 input of W/2 + 1 columns expected");
    const int step = as_int(W * 4, "FFT row");
    as_int(H * W, "FFT image size");
    carray<float> out(shape_with(a, {W}));
    const c64* src = a.data();
    float* dst = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        const int t = slot();
        Spec s;
        if (st.ok(cache.get({kImage32, ox, oy, flag, t}, s), "orviFFTInitAlloc_R_32f")) {
            auto buf = work(s);
            for (py::ssize_t b = 0; b < batch; ++b) {
                float* o = dst + b * H * W;
                repack_2d(src + b * H * M, H, W, o);
                if (!st.ok(iInv[t](o, step, o, step, spec_as<OrviFFTSpec_R_32f>(s), buf.data()),
                           "orviFFTInv_PackToR_32f_C1R"))
                    break;
            }
        }
    }
    st.raise();
    return out;
}

}  // namespace

void init_fft(py::module_& m) {
    m.attr("FFT_DIV_FWD") = static_cast<int>(OrvFftDivFwd);
    m.attr("FFT_DIV_INV") = static_cast<int>(OrvFftDivInv);
    m.attr("FFT_DIV_SQRT") = static_cast<int>(OrvFftDivSqrt);
    m.def("fft_c64", &fft_c64, py::arg("a"), py::arg("inverse"), py::arg("flag"));
    m.def("fft_c128", &fft_c128, py::arg("a"), py::arg("inverse"), py::arg("flag"));
    m.def("rfft_32f", &rfft<float>, py::arg("a"), py::arg("flag"));
    m.def("rfft_64f", &rfft<double>, py::arg("a"), py::arg("flag"));
    m.def("irfft_32f", &irfft<float>, py::arg("a"), py::arg("n"), py::arg("flag"));
    m.def("irfft_64f", &irfft<double>, py::arg("a"), py::arg("n"), py::arg("flag"));
    m.def("rfft2_32f", &rfft2_32f, py::arg("a"), py::arg("flag"));
    m.def("irfft2_32f", &irfft2_32f, py::arg("a"), py::arg("w"), py::arg("flag"));
}

}  // namespace orvpy
