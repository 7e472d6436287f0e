// Helpers shared by the image and filter benchmarks: the two frame sizes, a
// float image as the ROI of a larger one (so that OpenCV and orv read the same
// neighbours and rows are not dense), the bandwidth counter, the check before
// timing, and OpenCV held to one thread.
#pragma once

#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

#include <string>
#include <vector>

#include "fft_common.h"
#include "orvcore.h"

namespace orv::bench {

struct Frame {
    int width, height;
    const char* label;
};
inline const std::vector<Frame>& frames() {
    static const std::vector<Frame> f = {{1920, 1080, "1920x1080"}, {4096, 4096, "4096x4096"}};
    return f;
}

// A `type` image of width x height inside a parent with `margin` pixels on
// every side; filled with a fixed pseudo-random pattern in [0, 255).
inline cv::Mat roi_image(int width, int height, int type, int margin = 16) {
    cv::Mat parent(height + 2 * margin, width + 2 * margin, type);
    cv::randu(parent, cv::Scalar::all(0), cv::Scalar::all(255));
    return parent(cv::Rect(margin, margin, width, height));
}

// Bytes read plus written per iteration, reported as a rate.
inline void count_bytes(benchmark::State& state, double bytesPerIteration) {
    state.counters["GB/s"] = benchmark::Counter(bytesPerIteration * 1e-9 * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

// One orv call checked against the peer's result, then timed: run() makes the
// call and returns its status, check(why, diff) compares the results (false
// skips the case with `why`); the largest difference goes into "maxdiff".
template <class Run, class Check>
void check_then_time(benchmark::State& state, Run run, Check check) {
    if (run() != orvStsNoErr) {
        state.SkipWithError("status");
        return;
    }
    std::string why;
    double diff = 0;
    if (!check(why, diff)) {
        state.SkipWithError(why.c_str());
        return;
    }
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.counters["maxdiff"] = diff;
}

// OpenCV runs single-threaded in every comparison.
inline void opencv_one_thread() {
    static const bool once = (cv::setNumThreads(1), true);
    (void)once;
}

inline const std::vector<std::string>& tiers() {
    static const std::vector<std::string> t = {"m7", "u8", "n8", "y8", "e9"};
    return t;
}

}  // namespace orv::bench
