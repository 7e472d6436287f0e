// Transpose of 32FC1 frames beside cv::transpose, every tier of
// orviTranspose_32f_C1R. The source is a ROI of a larger image (rows 16-byte
// aligned, not dense); the destination is a dense Mat, as cv::transpose makes
// it. Before timing, each tier's result is compared with OpenCV's. Counter
// "GB/s": bytes read plus written.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

#include <map>
#include <string>

#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;
using Fn = decltype(orviTranspose_32f_C1R);

struct Images {
    cv::Mat src, dst;
};
Images& images(const Frame& f) {
    static std::map<std::string, Images> made;
    auto [it, fresh] = made.try_emplace(f.label);
    if (fresh) it->second = {roi_image(f.width, f.height, CV_32FC1), cv::Mat(f.width, f.height, CV_32FC1)};
    return it->second;
}

void run(benchmark::State& state, const Frame& f, Fn* fn) {
    Images& im = images(f);
    auto call = [&] {
        if (fn)
            fn(im.src.ptr<float>(), static_cast<int>(im.src.step[0]), im.dst.ptr<float>(),
               static_cast<int>(im.dst.step[0]), {f.width, f.height});
        else cv::transpose(im.src, im.dst);
    };
    if (fn) {
        cv::Mat want;
        cv::transpose(im.src, want);
        call();
        if (cv::norm(want, im.dst, cv::NORM_INF) != 0) state.SkipWithError("result differs from OpenCV");
    }
    for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
    }
    count_bytes(state, 8.0 * f.width * f.height);
}

int register_all() {
    opencv_one_thread();
    for (const Frame& f : frames()) {
        for (const auto& tf : orv::test::tiers_of<Fn>("orviTranspose_32f_C1R"))
            benchmark::RegisterBenchmark(("Transpose_32f/" + std::string(f.label) + "/" + tf.tier + "/orv").c_str(),
                                         [&f, fn = tf.fn](benchmark::State& s) { run(s, f, fn); });
        benchmark::RegisterBenchmark(("Transpose_32f/" + std::string(f.label) + "/opencv").c_str(),
                                     [&f](benchmark::State& s) { run(s, f, nullptr); });
    }
    return 0;
}
const int kRegistered = register_all();

}  // namespace
