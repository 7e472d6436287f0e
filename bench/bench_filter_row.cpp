// Row filters beside OpenCV: a 1920x1080 32FC1 image (the ROI of a larger
// one, so both read the same neighbours) filtered with 1x3, 1x9 and 1x31
// kernels by every tier of orviFilterRow_32f_C1R, by cv::sepFilter2D with a
// one-tap column kernel and by cv::filter2D with a 1xN kernel. OpenCV
// correlates, so it gets the kernel reversed and the anchor N - 1 - xAnchor.
// Before the first timing each tier's result is compared with OpenCV's.
// Counter "Gpt/s": pixels times taps per second, in units of 1e9.
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;
using RowFn = decltype(orviFilterRow_32f_C1R);

constexpr int kW = 1920, kH = 1080;

struct Setup {
    cv::Mat src, dst;
    std::vector<float> kernel;  // orv order
    cv::Mat kernelCv;           // reversed, 1 x N
    int anchor;
};

const Setup& setup(int n) {
    static std::vector<Setup*> made(64, nullptr);
    if (!made[n]) {
        auto* s = new Setup;
        s->src = roi_image(kW, kH, CV_32FC1);
        s->dst = roi_image(kW, kH, CV_32FC1);
        s->kernel.resize(n);
        for (int j = 0; j < n; ++j) s->kernel[j] = float(std::cos(0.3 * j)) / float(n);
        s->kernelCv = cv::Mat(1, n, CV_32F);
        for (int j = 0; j < n; ++j) s->kernelCv.at<float>(0, j) = s->kernel[n - 1 - j];
        s->anchor = n / 2;
        made[n] = s;
    }
    return *made[n];
}

void run_orv(RowFn* fn, const Setup& s, int n, cv::Mat& dst) {
    fn(s.src.ptr<float>(), int(s.src.step), dst.ptr<float>(), int(dst.step), {kW, kH}, s.kernel.data(), n, s.anchor);
}
void run_sep(const Setup& s, int n, cv::Mat& dst) {
    static const cv::Mat one = cv::Mat::ones(1, 1, CV_32F);
    cv::sepFilter2D(s.src, dst, CV_32F, s.kernelCv, one, cv::Point(n - 1 - s.anchor, 0), 0, cv::BORDER_REPLICATE);
}
void run_f2d(const Setup& s, int n, cv::Mat& dst) {
    cv::filter2D(s.src, dst, CV_32F, s.kernelCv, cv::Point(n - 1 - s.anchor, 0), 0, cv::BORDER_REPLICATE);
}

// Largest difference from OpenCV's result relative to the largest |value|.
double disagreement(const cv::Mat& a, const cv::Mat& b) {
    double diff = cv::norm(a, b, cv::NORM_INF), scale = cv::norm(b, cv::NORM_INF);
    return scale > 0 ? diff / scale : diff;
}

void count(benchmark::State& state, int n) {
    state.counters["Gpt/s"] =
        benchmark::Counter(double(kW) * kH * n * 1e-9 * double(state.iterations()), benchmark::Counter::kIsRate);
}

void bench_orv(benchmark::State& state, RowFn* fn, const std::string& tier, int n) {
    const Setup& s = setup(n);
    cv::Mat dst = s.dst;
    run_orv(fn, s, n, dst);
    cv::Mat ref;
    run_sep(s, n, ref);
    const double d = disagreement(dst, ref);
    if (d > 1e-5) {
        state.SkipWithError(("orv " + tier + " disagrees with OpenCV: " + std::to_string(d)).c_str());
        return;
    }
    for (auto _ : state) {
        run_orv(fn, s, n, dst);
        benchmark::ClobberMemory();
    }
    count(state, n);
}

template <class Run>
void bench_cv(benchmark::State& state, Run run, int n) {
    opencv_one_thread();
    const Setup& s = setup(n);
    cv::Mat dst = s.dst;
    for (auto _ : state) {
        run(s, n, dst);
        benchmark::ClobberMemory();
    }
    count(state, n);
}

[[maybe_unused]] const bool kRegistered = [] {
    for (int n : {3, 9, 31}) {
        const std::string size = "1x" + std::to_string(n);
        benchmark::RegisterBenchmark(("filter_row/opencv/sepFilter2D/" + size).c_str(),
                                     [n](benchmark::State& st) { bench_cv(st, run_sep, n); })
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("filter_row/opencv/filter2D/" + size).c_str(),
                                     [n](benchmark::State& st) { bench_cv(st, run_f2d, n); })
            ->Unit(benchmark::kMillisecond);
        for (const auto& t : orv::test::tiers_of<RowFn>("orviFilterRow_32f_C1R"))
            benchmark::RegisterBenchmark(("filter_row/orv/" + t.tier + "/" + size).c_str(),
                                         [fn = t.fn, tier = t.tier, n](benchmark::State& st) {
                                             bench_orv(st, fn, tier, n);
                                         })
                ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
