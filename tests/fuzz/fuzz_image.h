// Images for the image and filter harnesses: `h` rows of `rowBytes` bytes,
// `step` bytes apart, in a guarded block exactly as large as the rows reach
// (step * (h - 1) + rowBytes). The bytes between rows keep their contents
// through a call, which slack_intact checks.
#pragma once

#include <initializer_list>
#include <utility>

#include "fuzz_common.h"

namespace orvfuzz {

inline bool rare(FuzzedDataProvider& in) { return in.ConsumeIntegralInRange<int>(0, 23) == 0; }

// Region sizes: mostly 1..maxSide, sometimes zero or negative.
inline OrviSize roi_size(FuzzedDataProvider& in, int maxSide) {
    auto side = [&] {
        switch (in.ConsumeIntegralInRange<int>(0, 15)) {
        case 0: return in.ConsumeIntegralInRange<int>(-3, 0);
        case 1: return in.ConsumeBool() ? INT32_MIN : -in.ConsumeIntegralInRange<int>(1, 1 << 20);
        case 2: case 3: case 4: return in.ConsumeIntegralInRange<int>(1, 8);
        default: return in.ConsumeIntegralInRange<int>(1, maxSide);
        }
    };
    const int w = side();
    return {w, side()};
}

// The status must be the code of the first failed check; with none failed, a
// success, a warning or `alsoAllowed` (a failed allocation, say).
inline void expect(OrvStatus s, const char* n, std::initializer_list<std::pair<bool, OrvStatus>> checks,
                   OrvStatus alsoAllowed = 0) {
    check_status(s, n);
    for (const auto& c : checks)
        if (c.first) {
            if (s != c.second) {
                char msg[96];
                std::snprintf(msg, sizeof msg, "status %d where the first failed check gives %d", s, c.second);
                fail(msg, n);
            }
            return;
        }
    if (s < 0 && s != alsoAllowed) {
        char msg[64];
        std::snprintf(msg, sizeof msg, "good arguments refused with %d", s);
        fail(msg, n);
    }
}

struct Image {
    int w, h, rowBytes, step;
    Block blk;

    Image(int w_, int h_, int bpp, int step_, bool atStart, size_t misalign)
        : w(w_), h(h_), rowBytes(w_ > 0 ? w_ * bpp : 0), step(step_),
          blk(bytes_for(w_, h_, w_ > 0 ? w_ * bpp : 0, step_), atStart, misalign) {}

    static size_t bytes_for(int w, int h, int rowBytes, int step) {
        if (w <= 0 || h <= 0) return 0;
        if (step < 1) return static_cast<size_t>(rowBytes);  // a refusal must touch nothing else
        return static_cast<size_t>(step) * static_cast<size_t>(h - 1) + static_cast<size_t>(rowBytes);
    }
    static int unit(int bpp) { return bpp < 4 ? bpp : 4; }

    // A step of at least one row: dense, or with slack of whole elements.
    static Image dense_or_slack(FuzzedDataProvider& in, int w, int h, int bpp) {
        const int row = w > 0 ? w * bpp : bpp;
        const int slack = in.ConsumeBool() ? 0 : unit(bpp) * in.ConsumeIntegralInRange<int>(1, 40);
        const bool atStart = in.ConsumeBool();
        return Image(w, h, bpp, row + slack, atStart, unit(bpp) * in.ConsumeIntegralInRange<size_t>(0, 7));
    }
    // Also steps below one row (rows overlap), zero and negative ones.
    static Image any_step(FuzzedDataProvider& in, int w, int h, int bpp) {
        const int row = w > 0 ? w * bpp : bpp;
        int step;
        switch (in.ConsumeIntegralInRange<int>(0, 15)) {
        case 0: step = 0; break;
        case 1: step = -in.ConsumeIntegralInRange<int>(1, row); break;
        case 2: step = unit(bpp) * in.ConsumeIntegralInRange<int>(1, (row + unit(bpp) - 1) / unit(bpp)); break;
        default: step = row + (in.ConsumeBool() ? 0 : unit(bpp) * in.ConsumeIntegralInRange<int>(1, 40)); break;
        }
        const bool atStart = in.ConsumeBool();
        return Image(w, h, bpp, step, atStart, unit(bpp) * in.ConsumeIntegralInRange<size_t>(0, 7));
    }

    template <class T>
    T* p() const { return reinterpret_cast<T*>(blk.data()); }
    unsigned char* row(int y) const { return blk.data() + static_cast<size_t>(step) * y; }
    void fill(FuzzedDataProvider& in) { blk.fill(in); }
    void pattern(unsigned char seed) { blk.pattern(seed); }

    // Bytes between rows unchanged since `before`.
    void slack_intact(const std::vector<unsigned char>& before, const char* n) const {
        if (step < rowBytes || h <= 0 || w <= 0) return;
        for (int y = 0; y + 1 < h; ++y) {
            const size_t o = static_cast<size_t>(step) * y;
            if (std::memcmp(blk.data() + o + rowBytes, before.data() + o + rowBytes, step - rowBytes))
                fail("wrote between rows", n);
        }
    }
    // Channel `ch` of every pixel (of `channels` elements of `elem` bytes)
    // unchanged since `before`.
    void channel_intact(const std::vector<unsigned char>& before, int channels, int ch, int elem,
                        const char* n) const {
        if (step < rowBytes) return;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const size_t o = static_cast<size_t>(step) * y + static_cast<size_t>((x * channels + ch) * elem);
                if (std::memcmp(blk.data() + o, before.data() + o, elem)) fail("wrote the alpha channel", n);
            }
    }
};

}  // namespace orvfuzz
