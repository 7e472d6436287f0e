// Shared by the filter tests: the source window of a call between guard pages,
// exactly as large as the filters may read, and a long double reference.
// The filters compute, per channel,
//   dst(x, y) = sum over i < kH, j < kW of k[i * kW + j] * src(x + ax - j, y + ay - i)
// so the pixels they may read are columns x + ax - kW + 1 .. x + ax and rows
// y + ay - kH + 1 .. y + ay: a window of (w + kW - 1) x (h + kH - 1) pixels
// whose top left pixel lies kW - 1 - ax columns left of and kH - 1 - ay rows
// above the region's first pixel.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "support/alloc_spy.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace orv::test {

// The pixel layouts of the filter entries: name suffix, elements per pixel,
// and whether the fourth element is kept (AC4).
struct Layout {
    const char* name;
    int ch;
    bool ac4;
    int used() const { return ac4 ? 3 : ch; }
};
inline constexpr Layout kLayouts[] = {{"C1R", 1, false}, {"C3R", 3, false}, {"C4R", 4, false}, {"AC4R", 4, true}};

// The source of one call. The window is a GuardedImage of (w + kW - 1) x
// (h + kH - 1) pixels with row step `step` bytes (at least the window row),
// flush against a guard page at one end; roi() is the pSrc to pass. Pixels
// are addressed in region coordinates: at(0, 0, c) is the region's first
// pixel, at(-kW + 1 + ax, ...) the window's left column. An anchor outside
// the kernel puts roi() outside the window, which is fine: the filter moves
// back into it before reading.
template <class T>
class FilterSource {
public:
    FilterSource(int w, int h, int channels, int kW, int kH, int ax, int ay, int step, Flush flush = Flush::End,
                 size_t offset = 0)
        : left_(kW - 1 - ax), top_(kH - 1 - ay), win_(w + kW - 1, h + kH - 1, channels, step, flush, offset) {}

    // The least step the filters accept: the window's row.
    static int min_step(int w, int channels, int kW) { return (w + kW - 1) * channels * int(sizeof(T)); }

    int step() const { return win_.step(); }
    const T* roi() const {
        // Integer arithmetic: the region's first pixel may lie outside the block.
        const intptr_t p = reinterpret_cast<intptr_t>(win_.bytes()) + intptr_t(top_) * win_.step() +
                           intptr_t(left_) * win_.channels() * intptr_t(sizeof(T));
        return reinterpret_cast<const T*>(p);
    }
    T at(int x, int y, int c) const { return win_.get(x + left_, y + top_, c); }
    // Fills the window from f(x, y, c) in region coordinates.
    template <class F>
    void fill(F f) {
        for (int y = 0; y < win_.height(); ++y)
            for (int x = 0; x < win_.width(); ++x)
                for (int c = 0; c < win_.channels(); ++c) win_.set(x, y, c, f(x - left_, y - top_, c));
    }

private:
    int left_, top_;
    GuardedImage<T> win_;
};

// Reference result: value and sum of |k * x| (the scale of the rounding
// error of any summation order) per element, `channels` per pixel.
struct FilterRef {
    int w = 0, h = 0, channels = 0;
    std::vector<long double> value, magnitude;
    long double at(int x, int y, int c) const { return value[(size_t(y) * w + x) * channels + c]; }
    long double mag(int x, int y, int c) const { return magnitude[(size_t(y) * w + x) * channels + c]; }
};

// Convolution of the first `channels` channels of `src` with the kW x kH
// kernel k and anchor (ax, ay), for a w x h region.
template <class T>
FilterRef filter_ref(const FilterSource<T>& src, int w, int h, int channels, const float* k, int kW, int kH, int ax,
                     int ay) {
    FilterRef r;
    r.w = w, r.h = h, r.channels = channels;
    r.value.assign(size_t(w) * h * channels, 0.0L);
    r.magnitude.assign(r.value.size(), 0.0L);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < channels; ++c) {
                long double s = 0, m = 0;
                for (int i = 0; i < kH; ++i)
                    for (int j = 0; j < kW; ++j) {
                        const long double t = (long double)k[i * kW + j] * src.at(x + ax - j, y + ay - i, c);
                        s += t, m += std::fabs(t);
                    }
                const size_t o = (size_t(y) * w + x) * channels + c;
                r.value[o] = s, r.magnitude[o] = m;
            }
    return r;
}

// An exact value rounded to nearest, ties to even, and saturated to T.
template <class T>
T round_even_sat(long double v) {
    static_assert(std::is_integral_v<T>);
    const long double lo = (long double)std::numeric_limits<T>::min();
    const long double hi = (long double)std::numeric_limits<T>::max();
    if (std::isnan(v)) return T(0);
    if (v <= lo) return std::numeric_limits<T>::min();
    if (v >= hi) return std::numeric_limits<T>::max();
    return T(std::nearbyintl(v));  // default rounding mode: ties to even
}

// Half away from zero, saturated.
template <class T>
T round_away_sat(long double v) {
    return round_even_sat<T>(std::trunc(v + std::copysign(0.5L, v)));
}

}  // namespace orv::test
