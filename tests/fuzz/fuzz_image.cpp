// Image functions: copy, set, add, transpose, border copies, conversions,
// the 2-D FFT with its spectrum product and strip helpers, and the valid 2-D
// convolution.
#include "fuzz_common.h"
#include "fuzz_image.h"
#include "orvi.h"

using namespace orvfuzz;

namespace {

// ---- Region operations (steps unchecked: always at least a row) -------------------

void copy(OrvStatus (*f)(const Orv32f*, int, Orv32f*, int, OrviSize), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 96);
    Image a = Image::dense_or_slack(in, roi.width, roi.height, 4), d = Image::dense_or_slack(in, roi.width, roi.height, 4);
    a.fill(in);
    d.pattern(1);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, nd ? nullptr : d.p<Orv32f>(), d.step, roi);
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {roi.width < 1 || roi.height < 1, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        d.slack_intact(o.before, n);
        for (int y = 0; y < roi.height; ++y)
            if (std::memcmp(a.row(y), d.row(y), 4 * count(roi.width))) fail("copy differs", n);
    }
}
void set(OrvStatus (*f)(Orv32f*, int, OrviSize, Orv32f), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 96);
    const Orv32f v = value<Orv32f>(in);
    Image d = Image::dense_or_slack(in, roi.width, roi.height, 4);
    d.pattern(2);
    const bool nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(nd ? nullptr : d.p<Orv32f>(), d.step, roi, v);
    expect(s, n, {{nd, orvStsNullPtrErr}, {roi.width < 1 || roi.height < 1, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        d.slack_intact(o.before, n);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                if (std::memcmp(d.row(y) + 4 * x, &v, 4)) fail("wrong value", n);
    }
}
void add(OrvStatus (*f)(const Orv32f*, int, Orv32f*, int, OrviSize), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 96);
    Image a = Image::dense_or_slack(in, roi.width, roi.height, 4), d = Image::dense_or_slack(in, roi.width, roi.height, 4);
    a.fill(in);
    d.fill(in);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, nd ? nullptr : d.p<Orv32f>(), d.step, roi);
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {roi.width < 1 || roi.height < 1, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) d.slack_intact(o.before, n);
}
template <class T>
void transpose(OrvStatus (*f)(const T*, int, T*, int, OrviSize), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 200);
    Image a = Image::dense_or_slack(in, roi.width, roi.height, sizeof(T));
    Image d = Image::dense_or_slack(in, roi.height, roi.width, sizeof(T));
    a.fill(in);
    d.pattern(3);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<T>(), a.step, nd ? nullptr : d.p<T>(), d.step, roi);
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {roi.width < 1 || roi.height < 1, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        d.slack_intact(o.before, n);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                if (std::memcmp(a.row(y) + sizeof(T) * x, d.row(x) + sizeof(T) * y, sizeof(T))) fail("wrong element", n);
    }
}

// ---- Border copies (steps and sizes checked) ------------------------------------------

template <class T, class... V>
void border(OrvStatus (*f)(const T*, int, OrviSize, T*, int, OrviSize, int, int, V...), const char* n,
            FuzzedDataProvider& in) {
    const OrviSize ss = roi_size(in, 48);
    const int top = in.ConsumeIntegralInRange<int>(-2, 40), left = in.ConsumeIntegralInRange<int>(-2, 40);
    auto base = [](int v) { return v > 0 ? v : 0; };
    OrviSize ds = {base(ss.width) + left + in.ConsumeIntegralInRange<int>(-3, 40),
                   base(ss.height) + top + in.ConsumeIntegralInRange<int>(-3, 40)};
    Image a = Image::any_step(in, ss.width, ss.height, sizeof(T));
    Image d = Image::any_step(in, ds.width, ds.height, sizeof(T));
    a.fill(in);
    d.pattern(4);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const T v = value<T>(in);
    OrvStatus s;
    if constexpr (sizeof...(V) == 1)
        s = f(na ? nullptr : a.p<T>(), a.step, ss, nd ? nullptr : d.p<T>(), d.step, ds, top, left, v);
    else
        s = f(na ? nullptr : a.p<T>(), a.step, ss, nd ? nullptr : d.p<T>(), d.step, ds, top, left);
    (void)v;
    const bool bad = ss.width < 1 || ss.height < 1 || ds.width < 1 || ds.height < 1 || top < 0 || left < 0 ||
                     ds.width < static_cast<long>(ss.width) + left || ds.height < static_cast<long>(ss.height) + top;
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {a.step < 1 || d.step < 1, orvStsStepErr}, {bad, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) d.slack_intact(o.before, n);
}

// ---- Conversions --------------------------------------------------------------------------

// C1 or AC4 (channels 4, the fourth left as it was).
template <int C, class TD>
void convert(OrvStatus (*f)(const Orv32f*, int, TD*, int, OrviSize, int), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 64);
    const int rnd = in.ConsumeIntegralInRange<int>(-1, 3);
    Image a = Image::any_step(in, roi.width, roi.height, 4 * C);
    Image d = Image::any_step(in, roi.width, roi.height, sizeof(TD) * C);
    a.fill(in);
    d.pattern(5);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const unsigned mx = ps_get_ssx();
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, nd ? nullptr : d.p<TD>(), d.step, roi, rnd);
    if ((ps_get_ssx() & 0x6000u) != (mx & 0x6000u)) fail("rounding control not restored", n);
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {roi.width < 1 || roi.height < 1, orvStsSizeErr},
                  {a.step < 1 || d.step < 1, orvStsStepErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        d.slack_intact(o.before, n);
        if (C == 4) d.channel_intact(o.before, 4, 3, sizeof(TD), n);
    }
}

// ---- 2-D FFT -------------------------------------------------------------------------------

template <class F>
F in_tier(const char* name, const char* tier) {
    for (const TierFn& t : kTierFns)
        if (std::strcmp(name, t.name) == 0 && std::strcmp(t.tier, tier) == 0) return reinterpret_cast<F>(t.fn);
    return nullptr;
}

void fft2d(const char* tier, const char* rowName, FuzzedDataProvider& in) {
    auto initAlloc = in_tier<decltype(&orviFFTInitAlloc_R_32f)>("orviFFTInitAlloc_R_32f", tier);
    auto freeSpec = in_tier<decltype(&orviFFTFree_R_32f)>("orviFFTFree_R_32f", tier);
    auto getBuf = in_tier<decltype(&orviFFTGetBufSize_R_32f)>("orviFFTGetBufSize_R_32f", tier);
    auto fwd = in_tier<decltype(&orviFFTFwd_RToPack_32f_C1R)>("orviFFTFwd_RToPack_32f_C1R", tier);
    auto inv = in_tier<decltype(&orviFFTInv_PackToR_32f_C1R)>("orviFFTInv_PackToR_32f_C1R", tier);
    if (!initAlloc || !freeSpec || !getBuf || !fwd || !inv) fail("incomplete 2-D FFT", rowName);
    static const int kFlags[] = {OrvFftDivFwd, OrvFftDivInv, OrvFftDivSqrt, OrvFftNoDiv, 0, 3, -1};
    auto ord = [&] { return in.ConsumeIntegralInRange<int>(0, 15) == 0 ? in.ConsumeIntegralInRange<int>(-2, 32)
                                                                     : in.ConsumeIntegralInRange<int>(0, 9); };
    const int ox = ord(), oy = ord();
    const int flag = kFlags[in.ConsumeIntegralInRange<int>(0, 6)];
    OrviFFTSpec_R_32f* spec = nullptr;
    const bool nullPP = rare(in);
    const bool big = ox > 9 || oy > 9 || ox + oy > 14;
    if (big && ox >= 0 && ox <= 30 && oy >= 0 && oy <= 30) return;  // valid but too large to run
    OrvStatus s = initAlloc(nullPP ? nullptr : &spec, ox, oy, flag, in.ConsumeIntegral<int>());
    expect(s, "orviFFTInitAlloc_R_32f",
           {{nullPP, orvStsNullPtrErr}, {ox < 0 || ox > 30 || oy < 0 || oy > 30, orvStsFftOrderErr},
            {!(flag == 1 || flag == 2 || flag == 4 || flag == 8), orvStsFftFlagErr}});
    if (s != 0) {
        if (spec) fail("spec stored by a refused build", rowName);
        return;
    }
    int bufSize = -1;
    if (getBuf(spec, &bufSize) != 0 || bufSize < 0) fail("GetBufSize", rowName);
    if (getBuf(spec, nullptr) != orvStsNullPtrErr) fail("null size pointer accepted", "orviFFTGetBufSize_R_32f");
    if (getBuf(nullptr, &bufSize) != orvStsNullPtrErr) fail("null spec accepted", "orviFFTGetBufSize_R_32f");
    const int w = 1 << ox, h = 1 << oy;
    const int rounds = in.ConsumeIntegralInRange<int>(1, 3);
    for (int r = 0; r < rounds; ++r) {
        const bool forward = in.ConsumeBool();
        const char* xn = forward ? "orviFFTFwd_RToPack_32f_C1R" : "orviFFTInv_PackToR_32f_C1R";
        Image a = Image::any_step(in, w, h, 4);
        const bool inPlace = a.step >= 4 * w && in.ConsumeBool();
        Image d = Image::any_step(in, w, h, 4);
        a.fill(in);
        d.pattern(6);
        std::unique_ptr<Block> work;
        if (in.ConsumeBool()) work = std::make_unique<Block>(bufSize, in.ConsumeBool(), in.ConsumeIntegralInRange<size_t>(0, 31));
        const int bad = in.ConsumeIntegralInRange<int>(0, 15);  // 0 null spec, 1 null src, 2 null dst
        const std::vector<unsigned char> srcBefore = a.blk.snapshot();
        Out o(d.blk);
        auto xf = forward ? fwd : inv;
        s = xf(bad == 1 ? nullptr : a.p<Orv32f>(), a.step, bad == 2 ? nullptr : inPlace ? a.p<Orv32f>() : d.p<Orv32f>(),
               inPlace ? a.step : d.step, bad == 0 ? nullptr : spec, work ? work->data() : nullptr);
        expect(s, xn, {{bad <= 2, orvStsNullPtrErr}, {a.step < 1 || (!inPlace && d.step < 1), orvStsStepErr}});
        if (!inPlace) {
            o.unchanged_if_refused(s, xn);
            if (!a.blk.same(srcBefore)) fail("source written", xn);
            if (s == 0) d.slack_intact(o.before, xn);
        }
    }
    if (freeSpec(nullptr) != orvStsNullPtrErr) fail("null spec accepted", "orviFFTFree_R_32f");
    if (freeSpec(spec) != 0) fail("Free refused a built spec", rowName);
}

#define FFT2_ROW(fname)                                                                                \
    {#fname, [](const char* n, FuzzedDataProvider& in) {                                               \
         const Callable& c = callable(n);                                                              \
         if (c.tiers.empty()) return;                                                                  \
         fft2d(c.tierNames[in.ConsumeIntegralInRange<size_t>(0, c.tiers.size() - 1)], n, in);          \
     }}

void mul_pack(OrvStatus (*f)(const Orv32f*, int, Orv32f*, int, OrviSize), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 80);
    Image a = Image::any_step(in, roi.width, roi.height, 4), d = Image::any_step(in, roi.width, roi.height, 4);
    a.fill(in);
    d.fill(in);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, nd ? nullptr : d.p<Orv32f>(), d.step, roi);
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {a.step < 1 || d.step < 1, orvStsStepErr},
                  {roi.width < 1 || roi.height < 1, orvStsSizeErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) d.slack_intact(o.before, n);
}

// Strip of 8 complex columns (64 bytes a row) against 8 arrays of height values.
void merge(void (*f)(const Orv32f*, int, Orv32f*, int), const char*, FuzzedDataProvider& in) {
    const int h = in.ConsumeIntegralInRange<int>(1, 64);
    Image strip = Image::dense_or_slack(in, 16, h, 4);
    Block buf(16 * sizeof(Orv32f) * h, in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
    strip.fill(in);
    f(strip.p<Orv32f>(), strip.step, buf.as<Orv32f>(), h);
}
void split(void (*f)(Orv32f*, int, const Orv32f*, int), const char* n, FuzzedDataProvider& in) {
    const int h = in.ConsumeIntegralInRange<int>(1, 64);
    Image strip = Image::dense_or_slack(in, 16, h, 4);
    Block buf(16 * sizeof(Orv32f) * h, in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
    buf.fill(in);
    strip.pattern(9);
    const std::vector<unsigned char> before = strip.blk.snapshot();
    f(strip.p<Orv32f>(), strip.step, buf.as<Orv32f>(), h);
    strip.slack_intact(before, n);
}

// The 2-D Pack spectrum as H x (W/2 + 1) complex values; compiled once.
void unpack2d(OrvStatus (*f)(const Orv32f*, int, Orv32fc*, int, OrviSize), const char* n, FuzzedDataProvider& in) {
    const OrviSize roi = roi_size(in, 64);
    const int cw = roi.width > 0 ? roi.width / 2 + 1 : 0;
    Image a = Image::any_step(in, roi.width, roi.height, 4), d = Image::any_step(in, cw, roi.height, 8);
    a.fill(in);
    d.pattern(8);
    const bool na = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, nd ? nullptr : d.p<Orv32fc>(), d.step, roi);
    auto pow2 = [](int v) { return v > 0 && (v & (v - 1)) == 0; };
    expect(s, n, {{na || nd, orvStsNullPtrErr}, {!pow2(roi.width) || !pow2(roi.height), orvStsSizeErr},
                  {a.step < 4L * roi.width || d.step < 8L * cw, orvStsStepErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) d.slack_intact(o.before, n);
}

// Valid convolution: the result is (Aw - Bw + 1) x (Ah - Bh + 1) of the larger.
void conv_valid(OrvStatus (*f)(const Orv32f*, int, OrviSize, const Orv32f*, int, OrviSize, Orv32f*, int),
                const char* n, FuzzedDataProvider& in) {
    const OrviSize s1 = roi_size(in, 96), s2 = roi_size(in, in.ConsumeBool() ? 20 : 96);
    const bool swap = s1.width < s2.width || s1.height < s2.height;
    const OrviSize A = swap ? s2 : s1, B = swap ? s1 : s2;
    const bool sizesOk = s1.width >= 1 && s1.height >= 1 && s2.width >= 1 && s2.height >= 1;
    const int ow = sizesOk ? A.width - B.width + 1 : 0, oh = sizesOk ? A.height - B.height + 1 : 0;
    Image a = Image::any_step(in, s1.width, s1.height, 4), b = Image::any_step(in, s2.width, s2.height, 4);
    Image d = Image::any_step(in, ow > 0 ? ow : 0, oh > 0 ? oh : 0, 4);
    a.fill(in);
    b.fill(in);
    d.pattern(7);
    const bool na = rare(in), nb = rare(in), nd = rare(in);
    Out o(d.blk);
    const OrvStatus s = f(na ? nullptr : a.p<Orv32f>(), a.step, s1, nb ? nullptr : b.p<Orv32f>(), b.step, s2,
                          nd ? nullptr : d.p<Orv32f>(), d.step);
    expect(s, n, {{na || nb || nd, orvStsNullPtrErr},
                  {s1.width < 1 || s1.height < 1 || s2.width < 1 || s2.height < 1, orvStsSizeErr},
                  {a.step < 1 || b.step < 1 || d.step < 1, orvStsStepErr},
                  {ow < 1 || oh < 1, orvStsSizeErr}},
           // Steps of less than a row reach the filters' step check.
           a.step < 4L * s1.width || b.step < 4L * s2.width || d.step < 4L * ow ? orvStsStepErr : orvStsMemAllocErr);
    o.unchanged_if_refused(s, n);
    if (s == 0 && d.step >= 4 * ow) d.slack_intact(o.before, n);
}

}  // namespace

static const Row kRows[] = {
    ORV_FUZZ_ROW(orviCopy_32f_C1R, copy),
    ORV_FUZZ_ROW(orviSet_32f_C1R, set),
    ORV_FUZZ_ROW(orviAdd_32f_C1IR, add),
    ORV_FUZZ_ROW(orviTranspose_32f_C1R, transpose),
    ORV_FUZZ_ROW(orviTranspose_32s_C1R, transpose),
    ORV_FUZZ_ROW(orviCopyConstBorder_32f_C1R, border),
    ORV_FUZZ_ROW(orviCopyConstBorder_32s_C1R, border),
    ORV_FUZZ_ROW(orviCopyWrapBorder_32f_C1R, border),
    ORV_FUZZ_ROW(orviCopyWrapBorder_32s_C1R, border),
    ORV_FUZZ_ROW(orviConvert_32f8u_C1R, convert<1>),
    ORV_FUZZ_ROW(orviConvert_32f8u_AC4R, convert<4>),
    ORV_FUZZ_ROW(orviConvert_32f16s_AC4R, convert<4>),
    ORV_FUZZ_ROW(orviConvert_32f16u_AC4R, convert<4>),
    FFT2_ROW(orviFFTInitAlloc_R_32f),
    FFT2_ROW(orviFFTFree_R_32f),
    FFT2_ROW(orviFFTGetBufSize_R_32f),
    FFT2_ROW(orviFFTFwd_RToPack_32f_C1R),
    FFT2_ROW(orviFFTInv_PackToR_32f_C1R),
    ORV_FUZZ_ROW(orviMulPack_32f_C1IR, mul_pack),
    ORV_FUZZ_ROW(orvi_cDftMerge_32fc, merge),
    ORV_FUZZ_ROW(orvi_cDftSplit_32fc, split),
    {"orviFFTUnpack_Pack_32fc:direct",
     [](const char* n, FuzzedDataProvider& in) { unpack2d(&orviFFTUnpack_Pack_32fc, n, in); }},
    ORV_FUZZ_ROW(orviConvValid_32f_C1R, conv_valid),
};

ORV_FUZZ_MAIN(kRows)
