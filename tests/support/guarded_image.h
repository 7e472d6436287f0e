// Images for the image and filter tests: `height` rows of `width` pixels of
// `channels` elements of T, `step` bytes apart, in a block that ends (or
// starts) flush against an inaccessible page. The bytes between rows (the
// step's slack) hold a pattern that `slack_intact` checks afterwards, so a
// write outside the region is caught whether it lands between rows or past
// either end.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>

#include "support/guarded.h"

namespace orv::test {

template <class T>
class GuardedImage {
public:
    static constexpr unsigned char kSlack = 0xA5;

    // step in bytes, at least width * channels * sizeof(T); `offset` shifts the
    // block away from the guard page (from its start with Flush::Start, from
    // its end with Flush::End), which is how a test picks the address.
    GuardedImage(int width, int height, int channels, int step, Flush flush = Flush::End, size_t offset = 0)
        : w_(width), h_(height), c_(channels), step_(step),
          mem_(bytes_for(width, height, channels, step), flush, offset) {
        std::memset(mem_.data(), kSlack, mem_.size());
    }

    static size_t bytes_for(int width, int height, int channels, int step) {
        if (width <= 0 || height <= 0) return 0;
        return static_cast<size_t>(step) * (height - 1) + static_cast<size_t>(width) * channels * sizeof(T);
    }

    T* data() const { return reinterpret_cast<T*>(mem_.data()); }
    unsigned char* bytes() const { return mem_.data(); }
    size_t size_bytes() const { return mem_.size(); }
    int width() const { return w_; }
    int height() const { return h_; }
    int channels() const { return c_; }
    int step() const { return step_; }
    T* row(int y) const { return reinterpret_cast<T*>(mem_.data() + static_cast<size_t>(step_) * y); }
    // Element c of pixel (x, y), read and written bytewise (any alignment).
    T get(int x, int y, int c = 0) const {
        T v;
        std::memcpy(&v, elem(x, y, c), sizeof v);
        return v;
    }
    void set(int x, int y, int c, T v) { std::memcpy(elem(x, y, c), &v, sizeof v); }
    // Fills every element from f(x, y, c).
    void fill(const std::function<T(int, int, int)>& f) {
        for (int y = 0; y < h_; ++y)
            for (int x = 0; x < w_; ++x)
                for (int c = 0; c < c_; ++c) set(x, y, c, f(x, y, c));
    }
    // True when every byte between the rows still holds the slack pattern.
    bool slack_intact() const {
        const size_t row_bytes = static_cast<size_t>(w_) * c_ * sizeof(T);
        for (int y = 0; y + 1 < h_; ++y)
            for (size_t b = row_bytes; b < static_cast<size_t>(step_); ++b)
                if (mem_.data()[static_cast<size_t>(step_) * y + b] != kSlack) return false;
        return true;
    }
    // True when the whole block still equals `before` (bytes() of a copy).
    bool unchanged_since(const unsigned char* before) const {
        return std::memcmp(before, mem_.data(), mem_.size()) == 0;
    }

private:
    unsigned char* elem(int x, int y, int c) const {
        return mem_.data() + static_cast<size_t>(step_) * y + (static_cast<size_t>(x) * c_ + c) * sizeof(T);
    }

    int w_, h_, c_, step_;
    GuardedBytes mem_;
};

}  // namespace orv::test
