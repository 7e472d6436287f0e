// Region copy, fill and in-place addition of 32FC1 images beside OpenCV, on
// the two frame sizes, every tier: orviCopy_32f_C1R against Mat::copyTo from
// one ROI into another, orviSet_32f_C1R against setTo on a ROI,
// orviAdd_32f_C1IR against cv::add(dst, src, dst) (in place, as orv). Rows
// are ROIs of larger images, so neither side fuses them. memcpy and memset
// of the same bytes in one dense run give the machine's bandwidth beside
// them. Before timing, each tier's result is compared with OpenCV's. Counter
// "GB/s": bytes read plus written.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "image_common.h"
#include "orvi.h"

namespace {

using namespace orv::bench;
using CopyFn = decltype(orviCopy_32f_C1R);
using SetFn = decltype(orviSet_32f_C1R);
using AddFn = decltype(orviAdd_32f_C1IR);

constexpr float kValue = 0.75f;

// Source and destination ROIs of one frame size, made once.
struct Pair {
    cv::Mat src, dst;
};
Pair& images(const Frame& f) {
    static std::map<std::string, Pair> made;
    auto [it, fresh] = made.try_emplace(f.label);
    if (fresh) it->second = {roi_image(f.width, f.height, CV_32FC1), roi_image(f.width, f.height, CV_32FC1)};
    return it->second;
}

OrviSize size_of(const cv::Mat& m) { return {m.cols, m.rows}; }
int step_of(const cv::Mat& m) { return static_cast<int>(m.step[0]); }

enum class Op { Copy, Set, Add };
const char* name_of(Op op) { return op == Op::Copy ? "Copy" : op == Op::Set ? "Set" : "Add"; }
const char* function_of(Op op) {
    return op == Op::Copy ? "orviCopy_32f_C1R" : op == Op::Set ? "orviSet_32f_C1R" : "orviAdd_32f_C1IR";
}
// Bytes read plus written per pixel.
double bytes_per_pixel(Op op) { return op == Op::Copy ? 8 : op == Op::Set ? 4 : 12; }

void run_orv(Op op, const std::string& tier, cv::Mat& src, cv::Mat& dst) {
    switch (op) {
        case Op::Copy:
            tier_fn<CopyFn>(function_of(op), tier)(src.ptr<float>(), step_of(src), dst.ptr<float>(), step_of(dst),
                                                     size_of(dst));
            break;
        case Op::Set: tier_fn<SetFn>(function_of(op), tier)(dst.ptr<float>(), step_of(dst), size_of(dst), kValue); break;
        case Op::Add:
            tier_fn<AddFn>(function_of(op), tier)(src.ptr<float>(), step_of(src), dst.ptr<float>(), step_of(dst),
                                                    size_of(dst));
            break;
    }
}

void run_cv(Op op, cv::Mat& src, cv::Mat& dst) {
    switch (op) {
        case Op::Copy: src.copyTo(dst); break;
        case Op::Set: dst.setTo(cv::Scalar::all(kValue)); break;
        case Op::Add: cv::add(dst, src, dst); break;
    }
}

// orv's result against OpenCV's from the same start.
bool agrees(Op op, const std::string& tier, Pair& p) {
    cv::Mat start = p.dst.clone(), want = p.dst.clone();
    run_cv(op, p.src, want);
    run_orv(op, tier, p.src, p.dst);
    const bool same = cv::norm(p.dst, want, cv::NORM_INF) == 0;
    start.copyTo(p.dst);
    return same;
}

void bench_op(benchmark::State& state, Op op, const std::string& who, const Frame& f) {
    opencv_one_thread();
    Pair& p = images(f);
    if (who != "opencv" && !agrees(op, who, p)) {
        state.SkipWithError("result differs from OpenCV's");
        return;
    }
    for (auto _ : state) {
        if (who == "opencv") run_cv(op, p.src, p.dst);
        else run_orv(op, who, p.src, p.dst);
        benchmark::ClobberMemory();
    }
    count_bytes(state, bytes_per_pixel(op) * f.width * f.height);
}

// The C library on the same bytes as one dense run: memcpy for Copy (read
// and written), memset for Set.
void bench_libc(benchmark::State& state, Op op, const Frame& f) {
    const size_t bytes = size_t(4) * f.width * f.height;
    std::vector<char> a(bytes, 1), b(bytes, 2);
    for (auto _ : state) {
        if (op == Op::Copy) std::memcpy(b.data(), a.data(), bytes);
        else std::memset(b.data(), 3, bytes);
        benchmark::ClobberMemory();
    }
    count_bytes(state, op == Op::Copy ? 2.0 * bytes : double(bytes));
}

const bool registered = [] {
    for (const Frame& f : frames())
        for (Op op : {Op::Copy, Op::Set, Op::Add}) {
            const std::string base = std::string("Region/") + name_of(op) + "/";
            for (const std::string& t : tiers())
                if (tier_fn<void()>(function_of(op), t))
                    benchmark::RegisterBenchmark((base + "orv/" + t + "/" + f.label).c_str(),
                                                 [op, t, f](benchmark::State& s) { bench_op(s, op, t, f); });
            benchmark::RegisterBenchmark((base + "opencv/" + f.label).c_str(),
                                         [op, f](benchmark::State& s) { bench_op(s, op, "opencv", f); });
            if (op != Op::Add)
                benchmark::RegisterBenchmark((base + (op == Op::Copy ? "memcpy/" : "memset/") + f.label).c_str(),
                                             [op, f](benchmark::State& s) { bench_libc(s, op, f); });
        }
    return true;
}();

}  // namespace
