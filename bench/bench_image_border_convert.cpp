// Border copies and float-to-8u image conversion beside OpenCV, on the two
// frame sizes: a 16-pixel constant or wrapped frame around a 32FC1 image by
// every tier of orviCopyConstBorder_32f_C1R / orviCopyWrapBorder_32f_C1R and
// by cv::copyMakeBorder (BORDER_CONSTANT, BORDER_WRAP, both isolated from the
// source's parent image); 32FC1 to 8UC1 by
// orviConvert_32f8u_C1R and 32FC4 to 8UC4 by orviConvert_32f8u_AC4R, both
// rounding to nearest, and by convertTo (four channels for AC4). Before the
// first timing each tier's result is compared with OpenCV's (AC4: the first
// three channels). Counter "GB/s": bytes read plus written.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;
using ConstFn = decltype(orviCopyConstBorder_32f_C1R);
using WrapFn = decltype(orviCopyWrapBorder_32f_C1R);
using C1Fn = decltype(orviConvert_32f8u_C1R);
using AC4Fn = decltype(orviConvert_32f8u_AC4R);

constexpr int kFrame = 16;
constexpr float kValue = 7.5f;

enum class Op { Const, Wrap, C1, AC4 };

struct Setup {
    cv::Mat src, dst;
};

// Source as the ROI of a larger image; destination of the operation's size.
const Setup& setup(Op op, const Frame& f) {
    static std::vector<std::pair<std::string, Setup*>> made;
    const std::string key = std::to_string(int(op)) + f.label;
    for (auto& m : made)
        if (m.first == key) return *m.second;
    auto* s = new Setup;
    switch (op) {
        case Op::Const:
        case Op::Wrap:
            s->src = roi_image(f.width, f.height, CV_32FC1);
            s->dst = cv::Mat(f.height + 2 * kFrame, f.width + 2 * kFrame, CV_32FC1, cv::Scalar::all(0));
            break;
        case Op::C1:
            s->src = roi_image(f.width, f.height, CV_32FC1);
            s->dst = cv::Mat(f.height, f.width, CV_8UC1, cv::Scalar::all(0));
            break;
        case Op::AC4:
            s->src = roi_image(f.width, f.height, CV_32FC4);
            s->dst = cv::Mat(f.height, f.width, CV_8UC4, cv::Scalar::all(0));
            break;
    }
    made.emplace_back(key, s);
    return *s;
}

double bytes_of(Op op, const Frame& f) {
    const double px = double(f.width) * f.height;
    switch (op) {
        case Op::Const:
        case Op::Wrap: return 4 * px + 4.0 * (f.width + 2 * kFrame) * (f.height + 2 * kFrame);
        case Op::C1: return 5 * px;
        case Op::AC4: return 20 * px;
    }
    return 0;
}

void run_cv(Op op, const Setup& s, cv::Mat& dst) {
    switch (op) {
        case Op::Const:
            cv::copyMakeBorder(s.src, dst, kFrame, kFrame, kFrame, kFrame, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
                               cv::Scalar::all(kValue));
            break;
        case Op::Wrap:
            cv::copyMakeBorder(s.src, dst, kFrame, kFrame, kFrame, kFrame, cv::BORDER_WRAP | cv::BORDER_ISOLATED);
            break;
        case Op::C1:
        case Op::AC4: s.src.convertTo(dst, dst.type()); break;
    }
}

void run_orv(Op op, void* fn, const Setup& s, cv::Mat& dst) {
    const OrviSize size{s.src.cols, s.src.rows};
    const OrviSize big{dst.cols, dst.rows};
    const auto* src = s.src.ptr<float>();
    const int ss = int(s.src.step), ds = int(dst.step);
    switch (op) {
        case Op::Const:
            reinterpret_cast<ConstFn*>(fn)(src, ss, size, dst.ptr<float>(), ds, big, kFrame, kFrame, kValue);
            break;
        case Op::Wrap: reinterpret_cast<WrapFn*>(fn)(src, ss, size, dst.ptr<float>(), ds, big, kFrame, kFrame); break;
        case Op::C1: reinterpret_cast<C1Fn*>(fn)(src, ss, dst.ptr<Orv8u>(), ds, size, orvRndNear); break;
        case Op::AC4: reinterpret_cast<AC4Fn*>(fn)(src, ss, dst.ptr<Orv8u>(), ds, size, orvRndNear); break;
    }
}

// Elements that differ from OpenCV's result (AC4: alpha left out).
double mismatches(Op op, const cv::Mat& a, const cv::Mat& b) {
    if (op != Op::AC4) return cv::norm(a, b, cv::NORM_INF);
    std::vector<cv::Mat> pa, pb;
    cv::split(a, pa);
    cv::split(b, pb);
    double worst = 0;
    for (int c = 0; c < 3; ++c) worst = std::max(worst, cv::norm(pa[c], pb[c], cv::NORM_INF));
    return worst;
}

void bench_orv(benchmark::State& state, Op op, void* fn, const Frame& f) {
    const Setup& s = setup(op, f);
    cv::Mat dst = s.dst.clone(), ref = s.dst.clone();
    run_orv(op, fn, s, dst);
    run_cv(op, s, ref);
    if (mismatches(op, dst, ref) != 0) {
        state.SkipWithError("orv disagrees with OpenCV");
        return;
    }
    for (auto _ : state) {
        run_orv(op, fn, s, dst);
        benchmark::ClobberMemory();
    }
    count_bytes(state, bytes_of(op, f));
}

void bench_cv(benchmark::State& state, Op op, const Frame& f) {
    opencv_one_thread();
    const Setup& s = setup(op, f);
    cv::Mat dst = s.dst.clone();
    for (auto _ : state) {
        run_cv(op, s, dst);
        benchmark::ClobberMemory();
    }
    count_bytes(state, bytes_of(op, f));
}

template <class Fn>
void register_op(Op op, const char* label, const char* name, const char* peer) {
    for (const Frame& f : frames()) {
        benchmark::RegisterBenchmark((std::string(label) + "/opencv/" + peer + "/" + f.label).c_str(),
                                     [op, f](benchmark::State& st) { bench_cv(st, op, f); })
            ->Unit(benchmark::kMillisecond);
        for (const auto& t : orv::test::tiers_of<Fn>(name))
            benchmark::RegisterBenchmark((std::string(label) + "/orv/" + t.tier + "/" + f.label).c_str(),
                                         [op, fn = reinterpret_cast<void*>(t.fn), f](benchmark::State& st) {
                                             bench_orv(st, op, fn, f);
                                         })
                ->Unit(benchmark::kMillisecond);
    }
}

[[maybe_unused]] const bool kRegistered = [] {
    register_op<ConstFn>(Op::Const, "border_const", "orviCopyConstBorder_32f_C1R", "copyMakeBorder");
    register_op<WrapFn>(Op::Wrap, "border_wrap", "orviCopyWrapBorder_32f_C1R", "copyMakeBorder");
    register_op<C1Fn>(Op::C1, "convert_32f8u_C1", "orviConvert_32f8u_C1R", "convertTo");
    register_op<AC4Fn>(Op::AC4, "convert_32f8u_AC4", "orviConvert_32f8u_AC4R", "convertTo_4ch");
    return true;
}();

}  // namespace
