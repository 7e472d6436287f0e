// Image bindings: the dense 2-D filter over a source the Python side has
// already padded, and the valid 2-D convolution.
#include <cstdint>
#include <string>

#include "common.h"

namespace orvpy {
namespace {

template <class T>
struct FilterFns;

#define ORVPY_FILTERS(T, stem)                                                                 \
    template <>                                                                                \
    struct FilterFns<T> {                                                                      \
        using Table = decltype(ORVPY_TIERS4(stem##_C1R));                                      \
        static const Table& get(int channels) {                                                \
            static const Table c1 = ORVPY_TIERS4(stem##_C1R), c3 = ORVPY_TIERS4(stem##_C3R),   \
                               c4 = ORVPY_TIERS4(stem##_C4R);                                  \
            return channels == 1 ? c1 : channels == 3 ? c3 : c4;                               \
        }                                                                                      \
        static constexpr const char* names[3] = {#stem "_C1R", #stem "_C3R", #stem "_C4R"};    \
    };
ORVPY_FILTERS(float, orviFilter_32f)
ORVPY_FILTERS(std::uint8_t, orviFilter32f_8u)
ORVPY_FILTERS(std::uint16_t, orviFilter32f_16u)
ORVPY_FILTERS(std::int16_t, orviFilter32f_16s)
#undef ORVPY_FILTERS

// src: (H + kH - 1, W + kW - 1, C) padded so that the pixel (x, y) of the
// result sits at (x + kW - 1 - ax, y + kH - 1 - ay); the result is (H, W, C).
template <class T>
py::array filter2d_t(const py::array& srcArg, const carray<float>& kernel, int ax, int ay) {
    const carray<T> src = carray<T>::ensure(srcArg);
    if (src.ndim() != 3 || kernel.ndim() != 2) throw py::value_error("internal: (H, W, C) image and 2-D kernel expected");
    const py::ssize_t C = src.shape(2);
    if (C != 1 && C != 3 && C != 4) throw py::value_error("filter2d: 1, 3 or 4 channels, got " + std::to_string(C));
    const int kH = as_int(kernel.shape(0), "filter2d: kernel height");
    const int kW = as_int(kernel.shape(1), "filter2d: kernel width");
    const py::ssize_t H = src.shape(0) - kH + 1, W = src.shape(1) - kW + 1;
    if (kH < 1 || kW < 1 || H < 1 || W < 1) throw py::value_error("filter2d: empty image or kernel");
    if (ax < 0 || ax >= kW || ay < 0 || ay >= kH) throw py::value_error("filter2d: anchor outside the kernel");
    const int srcStep = as_int(src.shape(1) * C * py::ssize_t(sizeof(T)), "filter2d: row");
    const int dstStep = as_int(W * C * py::ssize_t(sizeof(T)), "filter2d: row");
    const OrviSize roi{as_int(W, "filter2d: width"), as_int(H, "filter2d: height")};
    carray<T> out({H, W, C});
    const T* s = src.data() + ((kH - 1 - ay) * src.shape(1) + (kW - 1 - ax)) * C;
    T* d = out.mutable_data();
    const float* k = kernel.data();
    const int ci = C == 1 ? 0 : C == 3 ? 1 : 2;
    Status st;
    {
        py::gil_scoped_release nogil;
        const auto f = FilterFns<T>::get(static_cast<int>(C))[slot()];
        st.ok(f(s, srcStep, d, dstStep, roi, k, OrviSize{kW, kH}, OrviPoint{ax, ay}), FilterFns<T>::names[ci]);
    }
    st.raise();
    return out;
}

py::array filter2d(const py::array& src, const carray<float>& kernel, int ax, int ay) {
    const py::dtype dt = src.dtype();
    if (dt.is(py::dtype::of<float>())) return filter2d_t<float>(src, kernel, ax, ay);
    if (dt.is(py::dtype::of<std::uint8_t>())) return filter2d_t<std::uint8_t>(src, kernel, ax, ay);
    if (dt.is(py::dtype::of<std::uint16_t>())) return filter2d_t<std::uint16_t>(src, kernel, ax, ay);
    if (dt.is(py::dtype::of<std::int16_t>())) return filter2d_t<std::int16_t>(src, kernel, ax, ay);
    throw py::type_error("filter2d: float32, uint8, uint16 or int16 image expected");
}

carray<float> conv_valid_32f(const carray<float>& a, const carray<float>& b) {
    if (a.ndim() != 2 || b.ndim() != 2) throw py::value_error("convolve2d_valid: 2-D arrays expected");
    const py::ssize_t ah = a.shape(0), aw = a.shape(1), bh = b.shape(0), bw = b.shape(1);
    if (ah < 1 || aw < 1 || bh < 1 || bw < 1) throw py::value_error("convolve2d_valid: empty input");
    const bool aFits = ah >= bh && aw >= bw, bFits = bh >= ah && bw >= aw;
    if (!aFits && !bFits)
        throw py::value_error("convolve2d_valid: one input must be at least as large as the other in both axes");
    const py::ssize_t oh = aFits ? ah - bh + 1 : bh - ah + 1, ow = aFits ? aw - bw + 1 : bw - aw + 1;
    const OrviSize as{as_int(aw, "width"), as_int(ah, "height")}, bs{as_int(bw, "width"), as_int(bh, "height")};
    const int aStep = as_int(aw * 4, "convolve2d_valid: row"), bStep = as_int(bw * 4, "convolve2d_valid: row");
    const int dStep = as_int(ow * 4, "convolve2d_valid: row");
    carray<float> out({oh, ow});
    const float* pa = a.data();
    const float* pb = b.data();
    float* d = out.mutable_data();
    Status st;
    {
        py::gil_scoped_release nogil;
        st.ok(orviConvValid_32f_C1R(pa, aStep, as, pb, bStep, bs, d, dStep), "orviConvValid_32f_C1R");
    }
    st.raise();
    return out;
}

}  // namespace

void init_image(py::module_& m) {
    m.def("filter2d", &filter2d, py::arg("src"), py::arg("kernel"), py::arg("ax"), py::arg("ay"));
    m.def("conv_valid_32f", &conv_valid_32f, py::arg("a"), py::arg("b"));
}

}  // namespace orvpy
