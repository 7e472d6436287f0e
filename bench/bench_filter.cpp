// 2-D filters against cv::filter2D, one thread, on a 1920x1080 region of a
// larger image (no isolated border: both read the parent's pixels around
// the region). orv convolves and OpenCV correlates, so OpenCV gets the
// kernel flipped in both axes and the anchor mirrored. Before timing, both
// results are compared; a mismatch skips the case with an error.
// Cases: 32FC1 with 3x3, 5x5, 7x7 and 17x17; 32FC3 and 32FC4 with 5x5;
// 8UC1, 8UC3, 8UC4 and 16SC1 with 3x3, 5x5 and 7x7. Every tier that builds
// the entry runs whatever route it has. Integer results are rounded to
// nearest and saturated by both, so they must agree within one unit.
// Counters: pixels times kernel taps per second; for orv, maxdiff, the
// largest difference from OpenCV's result.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fft_common.h"
#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;

template <class T>
using FilterFn = OrvStatus(const T*, int, T*, int, OrviSize, const Orv32f*, OrviSize, OrviPoint);

struct FilterCase {
    const char* entry;  // orv entry
    int cvType;
    int k;  // kernel k x k
    const char* label;
};
const FilterCase kCases[] = {
    {"orviFilter_32f_C1R", CV_32FC1, 3, "32FC1/3x3"},   {"orviFilter_32f_C1R", CV_32FC1, 5, "32FC1/5x5"},
    {"orviFilter_32f_C1R", CV_32FC1, 7, "32FC1/7x7"},   {"orviFilter_32f_C1R", CV_32FC1, 17, "32FC1/17x17"},
    {"orviFilter_32f_C3R", CV_32FC3, 5, "32FC3/5x5"},   {"orviFilter_32f_C4R", CV_32FC4, 5, "32FC4/5x5"},
    {"orviFilter32f_8u_C1R", CV_8UC1, 3, "8UC1/3x3"},   {"orviFilter32f_8u_C1R", CV_8UC1, 5, "8UC1/5x5"},
    {"orviFilter32f_8u_C1R", CV_8UC1, 7, "8UC1/7x7"},   {"orviFilter32f_8u_C3R", CV_8UC3, 3, "8UC3/3x3"},
    {"orviFilter32f_8u_C3R", CV_8UC3, 5, "8UC3/5x5"},   {"orviFilter32f_8u_C3R", CV_8UC3, 7, "8UC3/7x7"},
    {"orviFilter32f_8u_C4R", CV_8UC4, 3, "8UC4/3x3"},   {"orviFilter32f_8u_C4R", CV_8UC4, 5, "8UC4/5x5"},
    {"orviFilter32f_8u_C4R", CV_8UC4, 7, "8UC4/7x7"},   {"orviFilter32f_16s_C1R", CV_16SC1, 3, "16SC1/3x3"},
    {"orviFilter32f_16s_C1R", CV_16SC1, 5, "16SC1/5x5"}, {"orviFilter32f_16s_C1R", CV_16SC1, 7, "16SC1/7x7"},
};

// The kernel: positive and negative weights summing to about 1, asymmetric so
// that a missed flip shows.
std::vector<float> kernel_of(int k) {
    std::vector<float> w(size_t(k) * k);
    float sum = 0;
    for (int i = 0; i < k * k; ++i) sum += (w[i] = 1.0f + 0.5f * float((i * 7) % 5) - 0.8f * float(i % 3 == 0));
    for (auto& v : w) v /= sum;
    return w;
}

struct Setup {
    cv::Mat src, dstCv, dstOrv;
    std::vector<float> k;
    cv::Mat kFlipped;
    cv::Point cvAnchor;
    OrviPoint anchor;
};

Setup make_setup(const FilterCase& c) {
    const Frame& f = frames()[0];
    Setup s;
    s.src = roi_image(f.width, f.height, c.cvType, 16);
    // 16-bit data over most of the signed range: the rounding of large sums.
    if (CV_MAT_DEPTH(c.cvType) == CV_16S) {
        cv::Mat parent(f.height + 32, f.width + 32, c.cvType);
        cv::randu(parent, cv::Scalar::all(-20000), cv::Scalar::all(20000));
        s.src = parent(cv::Rect(16, 16, f.width, f.height));
    }
    s.dstCv = roi_image(f.width, f.height, c.cvType, 16);
    s.dstOrv = roi_image(f.width, f.height, c.cvType, 16);
    s.k = kernel_of(c.k);
    cv::Mat k(c.k, c.k, CV_32F, s.k.data());
    cv::flip(k, s.kFlipped, -1);
    s.anchor = OrviPoint{c.k / 2, c.k / 2};
    s.cvAnchor = cv::Point(c.k - 1 - s.anchor.x, c.k - 1 - s.anchor.y);
    return s;
}

void run_cv(Setup& s) { cv::filter2D(s.src, s.dstCv, -1, s.kFlipped, s.cvAnchor, 0, cv::BORDER_REPLICATE); }

template <class T>
OrvStatus run_orv(FilterFn<T>* fn, Setup& s, int k) {
    return fn(s.src.ptr<T>(), int(s.src.step), s.dstOrv.ptr<T>(), int(s.dstOrv.step),
              OrviSize{s.src.cols, s.src.rows}, s.k.data(), OrviSize{k, k}, s.anchor);
}

// Largest difference between the two results, and the tolerance: for float
// |k|1 * |x|max * taps * eps, for integers one unit (both round to nearest,
// but tie rules and the order of the float sums differ).
bool same_result(const Setup& s, const FilterCase& c, std::string& why, double& maxDiff) {
    cv::Mat a, b;
    s.dstOrv.convertTo(a, CV_64F);
    s.dstCv.convertTo(b, CV_64F);
    maxDiff = cv::norm(a, b, cv::NORM_INF);
    double tol = 1.0;
    if (CV_MAT_DEPTH(c.cvType) == CV_32F) {
        double k1 = 0;
        for (float v : s.k) k1 += std::fabs(v);
        tol = k1 * 255.0 * c.k * c.k * 1.2e-7;
    }
    if (maxDiff <= tol) return true;
    why = "orv and OpenCV differ by " + std::to_string(maxDiff) + " (tolerance " + std::to_string(tol) + ")";
    return false;
}

void count(benchmark::State& state, const FilterCase& c) {
    const Frame& f = frames()[0];
    state.counters["Gpix*tap/s"] = benchmark::Counter(
        double(f.width) * f.height * c.k * c.k * 1e-9 * double(state.iterations()), benchmark::Counter::kIsRate);
}

template <class T>
void register_case(const FilterCase& c) {
    const std::string base = std::string("filter2d/") + c.label;
    benchmark::RegisterBenchmark((base + "/opencv").c_str(), [c](benchmark::State& state) {
        opencv_one_thread();
        Setup s = make_setup(c);
        for (auto _ : state) {
            run_cv(s);
            benchmark::ClobberMemory();
        }
        count(state, c);
    })->Unit(benchmark::kMillisecond);
    for (const auto& t : orv::test::tiers_of<FilterFn<T>>(c.entry)) {
        FilterFn<T>* fn = t.fn;
        benchmark::RegisterBenchmark((base + "/orv/" + t.tier).c_str(), [c, fn](benchmark::State& state) {
            opencv_one_thread();
            Setup s = make_setup(c);
            run_cv(s);
            check_then_time(
                state, [&] { return run_orv<T>(fn, s, c.k); },
                [&](std::string& why, double& diff) { return same_result(s, c, why, diff); });
            count(state, c);
        })->Unit(benchmark::kMillisecond);
    }
}

const bool registered = [] {
    for (const auto& c : kCases) {
        switch (CV_MAT_DEPTH(c.cvType)) {
            case CV_32F: register_case<Orv32f>(c); break;
            case CV_16S: register_case<Orv16s>(c); break;
            default: register_case<Orv8u>(c); break;
        }
    }
    return true;
}();

}  // namespace
