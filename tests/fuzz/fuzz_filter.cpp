// 2-D, row and column filters in every element type and layout, with the
// anchors, kernel sizes, steps and MXCSR rounding modes the input picks. The
// source block holds exactly the pixels the anchor and kernel make the filter
// read (any of them may lie before pSrc), so a read outside faults.
#include "fuzz_common.h"
#include "fuzz_image.h"
#include "orvi.h"

using namespace orvfuzz;

namespace {

enum class Shape { TwoD, Row, Column };

int kernel_side(FuzzedDataProvider& in) {
    switch (in.ConsumeIntegralInRange<int>(0, 15)) {
    case 0: return in.ConsumeIntegralInRange<int>(-2, 0);
    case 1: return in.ConsumeIntegralInRange<int>(17, 40);
    default: return in.ConsumeIntegralInRange<int>(1, 16);
    }
}

// The pixels read, relative to pSrc: columns c0..c1, rows r0..r1.
struct Window {
    long c0, c1, r0, r1;
};

// Source block covering the window with `step` bytes a row; a step below the
// window's width (refused) gets one row of the region's width.
struct Source {
    std::unique_ptr<Block> blk;
    unsigned char* p;
    Source(FuzzedDataProvider& in, const Window& win, int pix, int step, bool valid) {
        const long width = (win.c1 - win.c0 + 1) * pix, rows = win.r1 - win.r0 + 1;
        if (!valid || step < width || width <= 0 || rows <= 0) {
            blk = std::make_unique<Block>(width > 0 ? width : 0);
            p = blk->data();
            blk->fill(in);
            return;
        }
        const bool atStart = in.ConsumeBool();
        blk = std::make_unique<Block>(static_cast<size_t>(step) * (rows - 1) + width, atStart,
                                      Image::unit(pix) * in.ConsumeIntegralInRange<size_t>(0, 7));
        blk->fill(in);
        p = blk->data() - win.r0 * step - win.c0 * pix;  // may point before the block: never read there
    }
};

template <int C, bool AC4, Shape S, class TS, class TD, class K, class A>
void run(OrvStatus (*f)(const TS*, int, TD*, int, OrviSize, const Orv32f*, K, A), const char* n,
         FuzzedDataProvider& in) {
    const int pixS = C * sizeof(TS), pixD = C * sizeof(TD);
    const OrviSize roi = roi_size(in, 64);
    int kw = 1, kh = 1;
    if constexpr (S == Shape::TwoD) {
        kw = kernel_side(in);
        kh = kernel_side(in);
    } else if constexpr (S == Shape::Row) {
        kw = kernel_side(in);
    } else {
        kh = kernel_side(in);
    }
    // Row filters read rows 0 .. h-1, column filters columns 0 .. w-1.
    const int ax = S == Shape::Column ? 0 : in.ConsumeIntegralInRange<int>(-3, kw + 2);
    const int ay = S == Shape::Row ? 0 : in.ConsumeIntegralInRange<int>(-3, kh + 2);
    const bool sizesOk = roi.width >= 1 && roi.height >= 1 && kw >= 1 && kh >= 1;
    Window win{0, 0, 0, 0};
    if (sizesOk) win = {ax - kw + 1, roi.width - 1L + ax, ay - kh + 1, roi.height - 1L + ay};
    const long srcMin = sizesOk ? (win.c1 - win.c0 + 1) * pixS : 0;
    const long dstMin = sizesOk ? static_cast<long>(roi.width) * pixD : 0;

    // Source step: the minimum, with slack, or a refused one.
    int srcStep;
    switch (in.ConsumeIntegralInRange<int>(0, 11)) {
    case 0: srcStep = -in.ConsumeIntegralInRange<int>(0, 64); break;
    case 1: srcStep = static_cast<int>(srcMin) - in.ConsumeIntegralInRange<int>(1, 8); break;
    default: srcStep = static_cast<int>(srcMin) + Image::unit(pixS) * in.ConsumeIntegralInRange<int>(0, 16); break;
    }
    Source src(in, win, pixS, srcStep, sizesOk);
    Image dst = Image::any_step(in, roi.width, roi.height, pixD);
    dst.pattern(0x3C);

    const size_t taps = sizesOk ? static_cast<size_t>(kw) * kh : 1;
    Block ker(taps * sizeof(Orv32f), in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
    for (size_t i = 0; i < taps; ++i) {
        const Orv32f v = in.ConsumeBool() ? static_cast<Orv32f>(in.ConsumeIntegralInRange<int>(-8, 8)) / 4
                                          : value<Orv32f>(in);
        std::memcpy(ker.data() + 4 * i, &v, 4);
    }
    const bool ns = rare(in), nd = rare(in), nk = rare(in);

    static const unsigned kRc[] = {0, 0x2000, 0x4000, 0x6000};
    const unsigned rc = kRc[in.ConsumeIntegralInRange<int>(0, 3)];
    const Orv64u saved = orv_set_rc_ssx(rc);
    const Orv64u before = ps_get_ssx();

    if (std::getenv("ORV_FUZZ_VERBOSE"))
        std::fprintf(stderr, "%s: roi %dx%d kernel %dx%d anchor (%d,%d) srcStep %d (min %ld) dstStep %d nulls %d%d%d rc %x\n",
                     n, roi.width, roi.height, kw, kh, ax, ay, srcStep, srcMin, dst.step, ns, nd, nk, rc);
    Out o(dst.blk);
    const auto* ps = ns ? nullptr : reinterpret_cast<const TS*>(src.p);
    TD* pd = nd ? nullptr : dst.p<TD>();
    const Orv32f* pk = nk ? nullptr : ker.as<Orv32f>();
    OrvStatus s;
    if constexpr (S == Shape::TwoD)
        s = f(ps, srcStep, pd, dst.step, roi, pk, OrviSize{kw, kh}, OrviPoint{ax, ay});
    else if constexpr (S == Shape::Row)
        s = f(ps, srcStep, pd, dst.step, roi, pk, kw, ax);
    else
        s = f(ps, srcStep, pd, dst.step, roi, pk, kh, ay);
    const Orv64u after = ps_get_ssx();
    orv_set_cw_ssx(saved);
    if ((after & 0x6000u) != (before & 0x6000u)) fail("rounding control changed", n);

    const bool widthFirst = S == Shape::Column && (C == 3 || (C == 4 && !AC4));
    expect(s, n, {{widthFirst && roi.width < 1, orvStsSizeErr},
                  {ns || nd || nk, orvStsNullPtrErr},
                  {!sizesOk, orvStsSizeErr},
                  {srcStep < srcMin || dst.step < dstMin, orvStsStepErr}});
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        dst.slack_intact(o.before, n);
        if (AC4) dst.channel_intact(o.before, 4, 3, sizeof(TD), n);
    }
}

#define F2(name, C, AC4) ORV_FUZZ_ROW(name, (run<C, AC4, Shape::TwoD>))
#define FR(name, C, AC4) ORV_FUZZ_ROW(name, (run<C, AC4, Shape::Row>))
#define FC(name, C, AC4) ORV_FUZZ_ROW(name, (run<C, AC4, Shape::Column>))
#define LAYOUTS(M, prefix)                                                                             \
    M(prefix##_C1R, 1, false), M(prefix##_C3R, 3, false), M(prefix##_C4R, 4, false), M(prefix##_AC4R, 4, true)
#define LAYOUTS3(M, prefix) M(prefix##_C1R, 1, false), M(prefix##_C3R, 3, false), M(prefix##_C4R, 4, false)

}  // namespace

static const Row kRows[] = {
    LAYOUTS(F2, orviFilter_32f),
    LAYOUTS(F2, orviFilter32f_8u),
    LAYOUTS(F2, orviFilter32f_16s),
    LAYOUTS(F2, orviFilter32f_16u),
    LAYOUTS3(F2, orviFilter32f_8u16s),
    LAYOUTS3(F2, orviFilter32f_8s16s),
    LAYOUTS3(F2, orviFilter32f_8s),
    LAYOUTS3(F2, orviFilter32f_32s),
    LAYOUTS(FR, orviFilterRow_32f),
    LAYOUTS(FR, orviFilterRow32f_8u),
    LAYOUTS(FR, orviFilterRow32f_16u),
    LAYOUTS(FR, orviFilterRow32f_16s),
    LAYOUTS(FC, orviFilterColumn_32f),
    LAYOUTS(FC, orviFilterColumn32f_8u),
    LAYOUTS(FC, orviFilterColumn32f_16u),
    LAYOUTS(FC, orviFilterColumn32f_16s),
};

ORV_FUZZ_MAIN(kRows)
