// Valid 2-D convolution against cv::filter2D, one thread. Cases, one per
// route: a 1024x1024 image with 31x31 and 101x101 kernels (FFT tiles), with
// 7x7 (the 2-D filter), and 40x40 with 37x37 (row filters). OpenCV correlates,
// so it gets the kernel flipped in both axes and the anchor at (0, 0), and runs
// twice: on the valid region as a ROI of the image (it reads the pixels right
// of and below the ROI, no border is made), and on the whole image, of which
// only the valid part counts. Before timing, orv's result is compared with
// OpenCV's; a mismatch skips the case with an error.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <string>

#include "fft_common.h"
#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;
using ConvFn = decltype(orviConvValid_32f_C1R);

struct ConvCase {
    int a, b;  // a x a image, b x b kernel
};
const ConvCase kCases[] = {{1024, 31}, {1024, 101}, {1024, 7}, {40, 37}};

struct Setup {
    cv::Mat a, b, bFlipped, dstOrv, dstCv;
    int out;
    explicit Setup(const ConvCase& c) : out(c.a - c.b + 1) {
        a = roi_image(c.a, c.a, CV_32F);
        b = roi_image(c.b, c.b, CV_32F);
        b /= 255.0 * c.b * c.b;
        cv::flip(b, bFlipped, -1);
        dstOrv = roi_image(out, out, CV_32F);
    }
    OrvStatus run_orv(ConvFn* fn) {
        return fn(a.ptr<float>(), int(a.step), {a.cols, a.rows}, b.ptr<float>(), int(b.step), {b.cols, b.rows},
                  dstOrv.ptr<float>(), int(dstOrv.step));
    }
    // The valid region of the result, filtered as a ROI or as the whole image.
    cv::Mat run_cv(bool whole) {
        if (whole) {
            cv::filter2D(a, dstCv, -1, bFlipped, cv::Point(0, 0), 0, cv::BORDER_CONSTANT);
            return dstCv(cv::Rect(0, 0, out, out));
        }
        cv::filter2D(a(cv::Rect(0, 0, out, out)), dstCv, -1, bFlipped, cv::Point(0, 0), 0, cv::BORDER_CONSTANT);
        return dstCv;
    }
};

void register_case(const ConvCase& c) {
    const std::string base =
        "conv_valid/" + std::to_string(c.a) + "x" + std::to_string(c.a) + "/k" + std::to_string(c.b);
    for (bool whole : {false, true})
        benchmark::RegisterBenchmark((base + (whole ? "/opencv_whole" : "/opencv_roi")).c_str(),
                                     [c, whole](benchmark::State& state) {
                                         opencv_one_thread();
                                         Setup s(c);
                                         for (auto _ : state) {
                                             s.run_cv(whole);
                                             benchmark::ClobberMemory();
                                         }
                                     })
            ->Unit(benchmark::kMillisecond);
    for (const char* tier : {"y8", "e9"}) {
        ConvFn* fn = tier_fn<ConvFn>("orviConvValid_32f_C1R", tier);
        if (!fn) continue;
        benchmark::RegisterBenchmark((base + "/orv/" + tier).c_str(), [c, fn](benchmark::State& state) {
            opencv_one_thread();
            Setup s(c);
            if (s.run_orv(fn) != orvStsNoErr) return state.SkipWithError("status");
            // Results are about 64 (pixels below 255, kernel sum about 0.5): allow 3e-5 of that.
            const double diff = cv::norm(s.dstOrv, s.run_cv(false), cv::NORM_INF);
            if (!(diff <= 2e-3)) return state.SkipWithError(("differs from OpenCV by " + std::to_string(diff)).c_str());
            for (auto _ : state) {
                s.run_orv(fn);
                benchmark::ClobberMemory();
            }
        })->Unit(benchmark::kMillisecond);
    }
}

const bool registered = [] {
    for (const auto& c : kCases) register_case(c);
    return true;
}();

}  // namespace
