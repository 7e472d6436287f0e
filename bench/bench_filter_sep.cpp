// Separable filters against cv::sepFilter2D, one thread, on a 1920x1080
// region of a larger image (no isolated border: both read the parent's pixels
// around the region). orv runs the row filter over the h + k - 1 source rows
// the column pass needs, into an intermediate image of the source's element
// type, then the column filter from the intermediate to the destination; the
// timing holds both passes (the intermediate is allocated once). OpenCV
// correlates, so it gets both kernels reversed and the anchors mirrored.
//
// Kinds: 32FC1 and 8UC1 with k = 3, 7, 17, each with two kernel pairs:
// "gauss", symmetric Gaussians in multiples of 1/256 (OpenCV's smoothing
// path, fixed point for 8-bit, exact with such weights), and "skew",
// off-centre Gaussians (its general path; a missed flip or swapped axes
// shows). Row and column kernels differ. orv rounds the 8-bit intermediate
// while OpenCV keeps it wider: with positive kernels of sum 1 the two stay
// within 2; each tier's result is checked against that before timing.
// Counters: pixels times (row + column) taps per second; for orv, maxdiff,
// the largest difference from OpenCV's result.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;

template <class T>
using RowFn = OrvStatus(const T*, int, T*, int, OrviSize, const Orv32f*, int, int);
template <class T>
using ColFn = RowFn<T>;  // same signature, yAnchor last

constexpr int kMargin = 16;  // room for k up to 33 around the region

// A normalised Gaussian of k taps centred at `centre` (tap index). With
// `grid256` the weights are multiples of 1/256 summing to exactly 1 (the
// rounding remainder goes to the largest tap).
std::vector<float> gaussian(int k, double sigma, double centre, bool grid256) {
    std::vector<double> g(size_t(k), 0.0);
    double sum = 0;
    for (int j = 0; j < k; ++j) sum += (g[j] = std::exp(-(j - centre) * (j - centre) / (2 * sigma * sigma)));
    std::vector<float> w(static_cast<size_t>(k));
    if (!grid256) {
        for (int j = 0; j < k; ++j) w[j] = float(g[j] / sum);
        return w;
    }
    int total = 0, peak = 0;
    std::vector<int> q(static_cast<size_t>(k));
    for (int j = 0; j < k; ++j) {
        q[j] = std::max(1, int(std::lround(256.0 * g[j] / sum)));
        total += q[j];
        if (q[j] > q[peak]) peak = j;
    }
    q[peak] += 256 - total;
    for (int j = 0; j < k; ++j) w[j] = float(q[j]) / 256.0f;
    return w;
}

struct SepCase {
    int cvType;
    bool skew;
    int k;
};

std::string label_of(const SepCase& c) {
    return std::string(CV_MAT_DEPTH(c.cvType) == CV_32F ? "32FC1" : "8UC1") + (c.skew ? "/skew" : "/gauss") + "/k" +
           std::to_string(c.k);
}

struct Setup {
    cv::Mat src, dstCv, dstOrv, mid;      // mid: the h + k - 1 intermediate rows
    std::vector<float> rowK, colK;        // orv order
    cv::Mat rowKCv, colKCv;               // reversed
    int xAnchor, yAnchor;
    cv::Point cvAnchor;
};

cv::Mat reversed(const std::vector<float>& w) {
    cv::Mat m(1, int(w.size()), CV_32F);
    for (size_t j = 0; j < w.size(); ++j) m.at<float>(0, int(j)) = w[w.size() - 1 - j];
    return m;
}

Setup make_setup(const SepCase& c) {
    const Frame& f = frames()[0];
    const int k = c.k;
    Setup s;
    s.src = roi_image(f.width, f.height, c.cvType, kMargin);
    s.dstCv = roi_image(f.width, f.height, c.cvType, kMargin);
    s.dstOrv = roi_image(f.width, f.height, c.cvType, kMargin);
    s.mid = cv::Mat(f.height + k - 1, f.width, c.cvType, cv::Scalar::all(0));
    const double sigma = 0.3 * ((k - 1) * 0.5 - 1) + 0.8;  // the usual sigma for a k-tap smoothing kernel
    const double mid = (k - 1) * 0.5;
    if (c.skew) {
        s.rowK = gaussian(k, sigma, mid + 0.35 * mid, false);
        s.colK = gaussian(k, 1.2 * sigma, mid - 0.25 * mid, false);
    } else {
        s.rowK = gaussian(k, sigma, mid, true);
        s.colK = gaussian(k, 1.25 * sigma, mid, true);
    }
    s.rowKCv = reversed(s.rowK);
    s.colKCv = reversed(s.colK);
    s.xAnchor = k / 2;
    s.yAnchor = k / 2;
    s.cvAnchor = cv::Point(k - 1 - s.xAnchor, k - 1 - s.yAnchor);
    return s;
}

void run_cv(Setup& s) {
    cv::sepFilter2D(s.src, s.dstCv, -1, s.rowKCv, s.colKCv, s.cvAnchor, 0, cv::BORDER_REPLICATE);
}

// Row pass over source rows -(k - 1 - yAnchor) .. h - 1 + yAnchor into `mid`,
// then the column pass from mid's row k - 1 - yAnchor.
template <class T>
OrvStatus run_orv(RowFn<T>* row, ColFn<T>* col, Setup& s, int k) {
    const int w = s.src.cols, h = s.src.rows, above = k - 1 - s.yAnchor;
    const T* first = reinterpret_cast<const T*>(s.src.data - ptrdiff_t(above) * ptrdiff_t(s.src.step));
    OrvStatus st = row(first, int(s.src.step), s.mid.ptr<T>(), int(s.mid.step), OrviSize{w, h + k - 1},
                       s.rowK.data(), k, s.xAnchor);
    if (st != orvStsNoErr) return st;
    return col(s.mid.ptr<T>(above), int(s.mid.step), s.dstOrv.ptr<T>(), int(s.dstOrv.step), OrviSize{w, h},
               s.colK.data(), k, s.yAnchor);
}

// Float: |x|max * taps * eps with some room; 8-bit: 2 units (the rounded
// intermediate, then the final rounding).
bool same_result(const Setup& s, const SepCase& c, std::string& why, double& maxDiff) {
    cv::Mat a, b;
    s.dstOrv.convertTo(a, CV_64F);
    s.dstCv.convertTo(b, CV_64F);
    maxDiff = cv::norm(a, b, cv::NORM_INF);
    const double tol = CV_MAT_DEPTH(c.cvType) == CV_32F ? 255.0 * 2 * c.k * 1.2e-7 : 2.0;
    if (maxDiff <= tol) return true;
    why = "orv and OpenCV differ by " + std::to_string(maxDiff) + " (tolerance " + std::to_string(tol) + ")";
    return false;
}

void count(benchmark::State& state, const SepCase& c) {
    const Frame& f = frames()[0];
    state.counters["Gpix*tap/s"] = benchmark::Counter(
        double(f.width) * f.height * 2 * c.k * 1e-9 * double(state.iterations()), benchmark::Counter::kIsRate);
}

template <class T>
void register_case(const SepCase& c, const char* rowName, const char* colName) {
    const std::string base = "filter_sep/" + label_of(c);
    benchmark::RegisterBenchmark((base + "/opencv").c_str(), [c](benchmark::State& state) {
        opencv_one_thread();
        Setup s = make_setup(c);
        for (auto _ : state) {
            run_cv(s);
            benchmark::ClobberMemory();
        }
        count(state, c);
    })->Unit(benchmark::kMillisecond);
    for (const auto& r : orv::test::tiers_of<RowFn<T>>(rowName)) {
        ColFn<T>* col = orv::test::tier_fn<ColFn<T>>(colName, r.tier);
        if (!col) continue;
        benchmark::RegisterBenchmark((base + "/orv/" + r.tier).c_str(), [c, row = r.fn, col](benchmark::State& state) {
            opencv_one_thread();
            Setup s = make_setup(c);
            run_cv(s);
            check_then_time(
                state, [&] { return run_orv<T>(row, col, s, c.k); },
                [&](std::string& why, double& diff) { return same_result(s, c, why, diff); });
            count(state, c);
        })->Unit(benchmark::kMillisecond);
    }
}

const bool registered = [] {
    for (int type : {CV_32FC1, CV_8UC1})
        for (bool skew : {false, true})
            for (int k : {3, 7, 17}) {
                const SepCase c{type, skew, k};
                if (type == CV_32FC1) register_case<Orv32f>(c, "orviFilterRow_32f_C1R", "orviFilterColumn_32f_C1R");
                else register_case<Orv8u>(c, "orviFilterRow32f_8u_C1R", "orviFilterColumn32f_8u_C1R");
            }
    return true;
}();

}  // namespace
