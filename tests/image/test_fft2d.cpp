// The 2-D real FFT of every tier against one long double reference: the 2-D
// Pack layout built from the reference half spectrum for orders 0..10 in each
// direction (single rows and columns, W == H and W != H, the 8-column strips
// of 512 x 512 and above), the inverse and the round trip under every scale
// flag, identical bits in place, with wide steps and with a caller buffer of
// exactly the asked size at any alignment; the Pack product against products
// of full spectra and against the layout rules for any width and height; the
// strip gather and scatter in both forms; the unpacking to the half spectrum;
// statuses in order with nothing written, failed allocations without leaks.
#include <fftw3.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "fft/fft_ref.h"
#include "orvi.h"
#include "orvsfft.h"
#include "support/alloc_spy.h"
#include "support/guarded.h"
#include "support/guarded_image.h"
#include "support/tier_registry.h"

namespace {

using orv::test::AllocSpy;
using orv::test::expect_close_real;
using orv::test::Flush;
using orv::test::GuardedImage;
using LD = long double;
using Img = GuardedImage<Orv32f>;

// One tier's functions.
struct Fft2d {
    std::string tier;
    decltype(&orviFFTInitAlloc_R_32f) init;
    decltype(&orviFFTFree_R_32f) free;
    decltype(&orviFFTGetBufSize_R_32f) bufSize;
    decltype(&orviFFTFwd_RToPack_32f_C1R) fwd;
    decltype(&orviFFTInv_PackToR_32f_C1R) inv;
    decltype(&orviMulPack_32f_C1IR) mul;
    decltype(&orvi_cDftMerge_32fc) merge;
    decltype(&orvi_cDftSplit_32fc) split;
};
void PrintTo(const Fft2d& f, std::ostream* os) { *os << f.tier; }

std::vector<Fft2d> tiers() {
#define FN(name) orv::test::tier_fn<decltype(name)>(#name, t.tier)
    std::vector<Fft2d> out;
    for (const auto& t : orv::test::tiers_of<decltype(orviFFTInitAlloc_R_32f)>("orviFFTInitAlloc_R_32f"))
        out.push_back({t.tier, t.fn, FN(orviFFTFree_R_32f), FN(orviFFTGetBufSize_R_32f), FN(orviFFTFwd_RToPack_32f_C1R),
                       FN(orviFFTInv_PackToR_32f_C1R), FN(orviMulPack_32f_C1IR), FN(orvi_cDftMerge_32fc),
                       FN(orvi_cDftSplit_32fc)});
#undef FN
    return out;
}

// A built specification, freed at scope end.
struct Spec {
    const Fft2d& f;
    OrviFFTSpec_R_32f* p = nullptr;
    Spec(const Fft2d& fns, int ox, int oy, int flag) : f(fns) { EXPECT_EQ(f.init(&p, ox, oy, flag, 0), orvStsNoErr); }
    ~Spec() {
        if (p) {
            EXPECT_EQ(f.free(p), orvStsNoErr);
        }
    }
    int buf_size() const {
        int n = 0;
        EXPECT_EQ(f.bufSize(p, &n), orvStsNoErr);
        return n;
    }
};

std::vector<float> random_image(int w, int h, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> u(-1.0f, 1.0f);
    std::vector<float> v(static_cast<size_t>(w) * h);
    for (auto& x : v) x = u(rng);
    return v;
}

// Dense image <-> guarded image.
void put(Img& img, const std::vector<float>& v) {
    img.fill([&](int x, int y, int) { return v[static_cast<size_t>(y) * img.width() + x]; });
}
std::vector<float> dense(const Img& img) {
    std::vector<float> v(static_cast<size_t>(img.width()) * img.height());
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) v[static_cast<size_t>(y) * img.width() + x] = img.get(x, y);
    return v;
}

// Reference half spectrum F[v][u], u = 0..W/2, of a real image, in long double.
using Half = std::vector<std::complex<LD>>;
Half half_spectrum(const std::vector<float>& x, int w, int h) {
    const int hw = w / 2 + 1;
    auto* in = static_cast<LD*>(fftwl_malloc(sizeof(LD) * x.size()));
    auto* out = static_cast<fftwl_complex*>(fftwl_malloc(sizeof(fftwl_complex) * h * hw));
    fftwl_plan p = fftwl_plan_dft_r2c_2d(h, w, in, out, FFTW_ESTIMATE);
    for (size_t i = 0; i < x.size(); ++i) in[i] = x[i];
    fftwl_execute(p);
    Half f(static_cast<size_t>(h) * hw);
    for (size_t i = 0; i < f.size(); ++i) f[i] = {out[i][0], out[i][1]};
    fftwl_destroy_plan(p);
    fftwl_free(in);
    fftwl_free(out);
    return f;
}

// The 2-D Pack layout of a half spectrum, from its definition: columns 0 and
// W-1 hold F[.][0] and F[.][W/2] in 1-D Pack order down the column, column
// pair (2k-1, 2k) holds F[v][k] in row v.
std::vector<LD> pack_of(const Half& f, int w, int h) {
    const int hw = w / 2 + 1;
    std::vector<LD> p(static_cast<size_t>(w) * h);
    auto at = [&](int v, int u) -> LD& { return p[static_cast<size_t>(v) * w + u]; };
    auto col = [&](int u, int pc) {
        at(0, pc) = f[u].real();
        if (h > 1) at(h - 1, pc) = f[static_cast<size_t>(h / 2) * hw + u].real();
        for (int l = 1; l < h / 2; ++l)
            at(2 * l - 1, pc) = f[static_cast<size_t>(l) * hw + u].real(),
                          at(2 * l, pc) = f[static_cast<size_t>(l) * hw + u].imag();
    };
    col(0, 0);
    if (w > 1) col(w / 2, w - 1);
    for (int v = 0; v < h; ++v)
        for (int k = 1; k < w / 2; ++k)
            at(v, 2 * k - 1) = f[static_cast<size_t>(v) * hw + k].real(),
                          at(v, 2 * k) = f[static_cast<size_t>(v) * hw + k].imag();
    return p;
}

struct Size {
    int ox, oy;
};
// Single rows and columns, W == H and W != H, strips of 4 and of 1 column,
// and both sides above 450 (strips of 8 columns, then 4, then single ones).
const Size kSizes[] = {{0, 0}, {1, 0}, {0, 1}, {6, 0}, {0, 6},  {10, 0}, {0, 10}, {1, 1},  {2, 1},
                       {1, 2}, {2, 2}, {3, 3}, {4, 2}, {2, 7},  {5, 5},  {7, 4},  {3, 10}, {10, 3},
                       {8, 8}, {9, 8}, {8, 9}, {9, 9}, {10, 9}, {9, 10}, {10, 10}};

struct Reference {
    std::vector<float> x;
    std::vector<LD> pack;  // of x, unscaled
};
const Reference& reference(int ox, int oy) {
    static std::map<std::pair<int, int>, Reference> cache;
    auto it = cache.find({ox, oy});
    if (it != cache.end()) return it->second;
    const int w = 1 << ox, h = 1 << oy;
    Reference r{random_image(w, h, 17u * ox + oy), {}};
    r.pack = pack_of(half_spectrum(r.x, w, h), w, h);
    return cache[{ox, oy}] = std::move(r);
}

class Fft2dTiers : public ::testing::TestWithParam<Fft2d> {};

// Forward against the reference Pack, inverse of the rounded reference Pack
// against W H x, each within bounds growing with log2(W H); the unpacked
// forward result against the reference half spectrum.
TEST_P(Fft2dTiers, ForwardAndInverseAgainstReference) {
    const Fft2d& f = GetParam();
    for (const Size s : kSizes) {
        const int w = 1 << s.ox, h = 1 << s.oy, m = s.ox + s.oy;
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        const Reference& ref = reference(s.ox, s.oy);
        Spec spec(f, s.ox, s.oy, OrvFftNoDiv);
        Img src(w, h, 1, 4 * w), dst(w, h, 1, 4 * w);
        put(src, ref.x);
        ASSERT_EQ(f.fwd(src.data(), src.step(), dst.data(), dst.step(), spec.p, nullptr), orvStsNoErr);
        const std::vector<float> y = dense(dst);
        expect_close_real(y.data(), ref.pack, m, "forward");

        // The unpacked spectrum is the reference's half spectrum.
        const int hw = w / 2 + 1;
        std::vector<Orv32fc> half(static_cast<size_t>(h) * hw);
        ASSERT_EQ(orviFFTUnpack_Pack_32fc(y.data(), 4 * w, half.data(), 8 * hw, {w, h}), orvStsNoErr);
        const Half fr = half_spectrum(ref.x, w, h);
        const auto e = orv::test::fft_error(half.data(), std::vector<orv::test::cld>(fr.begin(), fr.end()));
        EXPECT_LE(e.rms, orv::test::rms_bound(FLT_EPSILON, m));

        std::vector<float> packed(ref.pack.begin(), ref.pack.end());
        Img in(w, h, 1, 4 * w), out(w, h, 1, 4 * w);
        put(in, packed);
        ASSERT_EQ(f.inv(in.data(), in.step(), out.data(), out.step(), spec.p, nullptr), orvStsNoErr);
        expect_close_real(dense(out).data(), std::vector<LD>(ref.x.begin(), ref.x.end()), m, "inverse", 1, LD(w) * h);
        EXPECT_EQ(dense(in), packed) << "inverse changed its source";
    }
}

// Forward then inverse returns the image times the product of the flag's
// factors: 1 for DivInv, DivFwd and DivSqrt, W H for NoDiv.
TEST_P(Fft2dTiers, RoundTripUnderEveryFlag) {
    const Fft2d& f = GetParam();
    const Size sizes[] = {{0, 0}, {3, 0}, {0, 3}, {1, 1}, {4, 6}, {6, 4}, {9, 9}};
    const std::pair<int, LD> flags[] = {{OrvFftDivInv, 1}, {OrvFftDivFwd, 1}, {OrvFftDivSqrt, 1}, {OrvFftNoDiv, 0}};
    for (const Size s : sizes)
        for (const auto& [flag, factor] : flags) {
            const int w = 1 << s.ox, h = 1 << s.oy, m = s.ox + s.oy;
            SCOPED_TRACE(testing::Message() << w << " x " << h << " flag " << flag);
            const std::vector<float> x = random_image(w, h, 5);
            Spec spec(f, s.ox, s.oy, flag);
            std::vector<float> p(x.size()), y(x.size());
            ASSERT_EQ(f.fwd(x.data(), 4 * w, p.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
            ASSERT_EQ(f.inv(p.data(), 4 * w, y.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
            expect_close_real(y.data(), std::vector<LD>(x.begin(), x.end()), m, "round trip", 2,
                              factor ? factor : LD(w) * h);
        }
}

// In place, steps wider than the row (slack untouched), and a caller buffer of
// exactly the asked size at any alignment all give the bits of the plain
// out-of-place call without a buffer; the inverse leaves its source alone.
TEST_P(Fft2dTiers, SameBitsInPlaceWideStepsAndCallerBuffers) {
    const Fft2d& f = GetParam();
    const Size sizes[] = {{0, 4}, {4, 0}, {2, 2}, {5, 3}, {3, 6}, {9, 9}};
    for (const Size s : sizes) {
        const int w = 1 << s.ox, h = 1 << s.oy;
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        const std::vector<float> x = random_image(w, h, 9);
        Spec spec(f, s.ox, s.oy, OrvFftDivInv);
        std::vector<float> pack(x.size()), back(x.size());
        ASSERT_EQ(f.fwd(x.data(), 4 * w, pack.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
        ASSERT_EQ(f.inv(pack.data(), 4 * w, back.data(), 4 * w, spec.p, nullptr), orvStsNoErr);

        for (int bufOffset : {0, 1, 7, 12}) {
            const int wide = 4 * w + 4 * (bufOffset + 1);  // 4 bytes apart from the 16-byte grid too
            orv::test::GuardedBytes buf(spec.buf_size(), Flush::End, bufOffset);
            Img a(w, h, 1, wide, Flush::End, 4 * bufOffset), b(w, h, 1, wide + 32);
            put(a, x);
            ASSERT_EQ(f.fwd(a.data(), a.step(), b.data(), b.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(b), pack);
            EXPECT_TRUE(b.slack_intact());
            // Strips on 16 bytes with a step of whole 16 bytes: the fast gathers.
            Img e(w, h, 1, 4 * w + 16, Flush::Start, 12), g(w, h, 1, 4 * w + 16, Flush::Start, 12);
            ASSERT_EQ(f.fwd(a.data(), a.step(), e.data(), e.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(e), pack);
            ASSERT_EQ(f.inv(e.data(), e.step(), g.data(), g.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(g), back);

            ASSERT_EQ(f.fwd(a.data(), a.step(), a.data(), a.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(a), pack) << "forward in place";
            EXPECT_TRUE(a.slack_intact());

            Img c(w, h, 1, wide + 16), d(w, h, 1, wide);
            put(c, pack);
            const std::vector<unsigned char> before(c.bytes(), c.bytes() + c.size_bytes());
            ASSERT_EQ(f.inv(c.data(), c.step(), d.data(), d.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(d), back);
            EXPECT_TRUE(d.slack_intact());
            EXPECT_TRUE(c.unchanged_since(before.data()));
            ASSERT_EQ(f.inv(c.data(), c.step(), c.data(), c.step(), spec.p, buf.data()), orvStsNoErr);
            EXPECT_EQ(dense(c), back) << "inverse in place";
        }
    }
}

// The Pack product on the rules of the layout: reals at the ends of row 0
// and the last row of even H, complex values down the end columns across row
// pairs, complex pairs along the rows. The product is exact in both forms.
std::vector<float> mul_model(const std::vector<float>& a, const std::vector<float>& b, int w, int h) {
    std::vector<float> d = b;
    auto cm = [&](size_t re, size_t im) {
        const float dr = d[re], di = d[im], sr = a[re], si = a[im];
        d[re] = dr * sr - di * si, d[im] = dr * si + di * sr;
    };
    const bool endCol = w % 2 == 0 && w > 1;
    for (int v = 0; v < h; ++v) {
        const bool realRow = v == 0 || (h % 2 == 0 && v == h - 1);
        const size_t r = static_cast<size_t>(v) * w;
        if (realRow) {
            d[r] *= a[r];
            if (endCol) d[r + w - 1] *= a[r + w - 1];
        } else if (v % 2 == 1) {
            cm(r, r + w);
            if (endCol) cm(r + w - 1, r + 2 * w - 1);
        }
        for (int k = 0; k < (w - 1) / 2; ++k) cm(r + 2 * k + 1, r + 2 * k + 2);
    }
    return d;
}

TEST_P(Fft2dTiers, MulPackFollowsTheLayoutForAnySize) {
    const Fft2d& f = GetParam();
    const std::pair<int, int> sizes[] = {{1, 1}, {2, 1}, {1, 2}, {2, 2},  {3, 1},   {1, 3},  {3, 3}, {5, 4},
                                         {4, 5}, {7, 6}, {8, 2}, {17, 9}, {18, 10}, {33, 3}, {64, 7}};
    for (const auto& [w, h] : sizes)
        for (int pad : {0, 5}) {
            SCOPED_TRACE(testing::Message() << w << " x " << h << " pad " << pad);
            const std::vector<float> a = random_image(w, h, 1), b = random_image(w, h, 2);
            Img s(w, h, 1, 4 * (w + pad), Flush::End, 4 * pad), d(w, h, 1, 4 * (w + pad) + 4);
            put(s, a), put(d, b);
            ASSERT_EQ(f.mul(s.data(), s.step(), d.data(), d.step(), {w, h}), orvStsNoErr);
            EXPECT_EQ(dense(d), mul_model(a, b, w, h));
            EXPECT_TRUE(d.slack_intact());
            EXPECT_EQ(dense(s), a);
        }
}

// On transformed images the Pack product is the product of the spectra.
TEST_P(Fft2dTiers, MulPackIsTheProductOfFullSpectra) {
    const Fft2d& f = GetParam();
    const Size sizes[] = {{0, 0}, {3, 0}, {0, 3}, {1, 1}, {2, 3}, {5, 2}, {4, 4}};
    for (const Size s : sizes) {
        const int w = 1 << s.ox, h = 1 << s.oy, hw = w / 2 + 1;
        Spec spec(f, s.ox, s.oy, OrvFftNoDiv);
        std::vector<float> a = random_image(w, h, 3), b = random_image(w, h, 4);
        ASSERT_EQ(f.fwd(a.data(), 4 * w, a.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
        ASSERT_EQ(f.fwd(b.data(), 4 * w, b.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
        std::vector<Orv32fc> fa(static_cast<size_t>(h) * hw), fb(fa.size()), fp(fa.size());
        orviFFTUnpack_Pack_32fc(a.data(), 4 * w, fa.data(), 8 * hw, {w, h});
        orviFFTUnpack_Pack_32fc(b.data(), 4 * w, fb.data(), 8 * hw, {w, h});
        ASSERT_EQ(f.mul(a.data(), 4 * w, b.data(), 4 * w, {w, h}), orvStsNoErr);
        orviFFTUnpack_Pack_32fc(b.data(), 4 * w, fp.data(), 8 * hw, {w, h});
        for (size_t i = 0; i < fp.size(); ++i) {
            const Orv32fc x = fa[i], y = fb[i];
            ASSERT_EQ(fp[i].re, y.re * x.re - y.im * x.im) << w << " x " << h << " at " << i;
            ASSERT_EQ(fp[i].im, y.re * x.im + y.im * x.re) << w << " x " << h << " at " << i;
        }
    }
}

// Gather and scatter against the index formula, value k of strip row r at
// complex element k * height + r, in the fast form and with each of its
// conditions missed.
TEST_P(Fft2dTiers, StripGatherAndScatter) {
    const Fft2d& f = GetParam();
    struct Form {
        int stripOff, bufOff, stepExtra, height;
    };
    const Form forms[] = {{0, 0, 0, 6}, {0, 0, 16, 2}, {4, 0, 0, 6},   {0, 8, 0, 6},
                          {0, 0, 4, 6}, {0, 0, 0, 5},  {12, 4, 20, 1}, {0, 0, 0, 64}};
    for (const Form& fm : forms) {
        SCOPED_TRACE(testing::Message() << fm.stripOff << " " << fm.bufOff << " " << fm.stepExtra << " " << fm.height);
        const int step = 64 + 16 + fm.stepExtra, h = fm.height;
        std::vector<float> img = random_image(step / 4 * h + 32, 1, 8);
        char* base = reinterpret_cast<char*>(img.data());
        base += (64 - reinterpret_cast<uintptr_t>(base) % 64) % 64;
        Orv32f* strip = reinterpret_cast<Orv32f*>(base + fm.stripOff);
        orv::test::Guarded<Orv32f> buf(16 * h, Flush::End, 0), buf2(16 * h, Flush::Start, fm.bufOff);
        Orv32f* b = fm.bufOff ? buf2.data() : buf.data();
        auto px = [&](int r, int k, int c) {
            return reinterpret_cast<const float*>(reinterpret_cast<const char*>(strip) + step * r)[2 * k + c];
        };
        const std::vector<float> before = img;
        f.merge(strip, step, b, h);
        EXPECT_EQ(img, before);
        for (int r = 0; r < h; ++r)
            for (int k = 0; k < 8; ++k)
                for (int c = 0; c < 2; ++c) ASSERT_EQ(b[2 * (k * h + r) + c], px(r, k, c));
        for (int i = 0; i < 16 * h; ++i) b[i] = static_cast<float>(i);
        f.split(strip, step, b, h);
        for (int r = 0; r < h; ++r)
            for (int k = 0; k < 8; ++k)
                for (int c = 0; c < 2; ++c) ASSERT_EQ(px(r, k, c), static_cast<float>(2 * (k * h + r) + c));
        // Outside the strips nothing moved.
        const char* lo = reinterpret_cast<const char*>(strip);
        for (size_t i = 0; i < img.size(); ++i) {
            const char* e = reinterpret_cast<const char*>(&img[i]);
            const long off = e - lo;
            const bool inStrip = off >= 0 && off / step < h && off % step < 64;
            if (!inStrip) {
                ASSERT_EQ(img[i], before[i]) << i;
            }
        }
    }
}

// Statuses in order; nothing written when a check fails.
TEST_P(Fft2dTiers, StatusesInOrder) {
    const Fft2d& f = GetParam();
    OrviFFTSpec_R_32f* sentinel = reinterpret_cast<OrviFFTSpec_R_32f*>(uintptr_t{0x1234});
    OrviFFTSpec_R_32f* p = sentinel;
    EXPECT_EQ(f.init(nullptr, 31, 0, 0, 0), orvStsNullPtrErr);
    EXPECT_EQ(f.init(&p, -1, 2, OrvFftNoDiv, 0), orvStsFftOrderErr);
    EXPECT_EQ(f.init(&p, 2, 31, OrvFftNoDiv, 0), orvStsFftOrderErr);
    EXPECT_EQ(f.init(&p, 2, 2, 3, 0), orvStsFftFlagErr);
    EXPECT_EQ(f.init(&p, 30, 2, OrvFftNoDiv, 0), orvStsFftOrderErr);  // above the 1-D real range
    EXPECT_EQ(p, sentinel);

    Spec spec(f, 2, 3, OrvFftNoDiv);
    int size = -5;
    EXPECT_EQ(f.bufSize(nullptr, &size), orvStsNullPtrErr);
    EXPECT_EQ(f.bufSize(spec.p, nullptr), orvStsNullPtrErr);
    alignas(16) unsigned char dead[64] = {};
    auto* fake = reinterpret_cast<OrviFFTSpec_R_32f*>(dead);
    EXPECT_EQ(f.bufSize(fake, &size), orvStsContextMatchErr);
    EXPECT_EQ(size, -5);
    EXPECT_EQ(f.free(nullptr), orvStsNullPtrErr);
    EXPECT_EQ(f.free(fake), orvStsContextMatchErr);

    std::vector<float> src(32, 1.0f), dst(32, 7.0f);
    for (auto fn : {f.fwd, f.inv}) {
        EXPECT_EQ(fn(nullptr, 0, nullptr, 0, nullptr, nullptr), orvStsNullPtrErr);
        EXPECT_EQ(fn(nullptr, 0, nullptr, 0, fake, nullptr), orvStsContextMatchErr);
        EXPECT_EQ(fn(nullptr, 16, dst.data(), 16, spec.p, nullptr), orvStsNullPtrErr);
        EXPECT_EQ(fn(src.data(), 16, nullptr, 16, spec.p, nullptr), orvStsNullPtrErr);
        EXPECT_EQ(fn(src.data(), 0, dst.data(), 16, spec.p, nullptr), orvStsStepErr);
        EXPECT_EQ(fn(src.data(), 16, dst.data(), -4, spec.p, nullptr), orvStsStepErr);
    }
    EXPECT_EQ(f.mul(nullptr, 0, dst.data(), 0, {0, 0}), orvStsNullPtrErr);
    EXPECT_EQ(f.mul(src.data(), 0, nullptr, 0, {0, 0}), orvStsNullPtrErr);
    EXPECT_EQ(f.mul(src.data(), 0, dst.data(), 16, {0, 0}), orvStsStepErr);
    EXPECT_EQ(f.mul(src.data(), 16, dst.data(), 0, {4, 8}), orvStsStepErr);
    EXPECT_EQ(f.mul(src.data(), 16, dst.data(), 16, {0, 8}), orvStsSizeErr);
    EXPECT_EQ(f.mul(src.data(), 16, dst.data(), 16, {4, -1}), orvStsSizeErr);
    EXPECT_EQ(dst, std::vector<float>(32, 7.0f));
}

// Every allocation of creation and of a transform without a buffer failing in
// turn: orvStsMemAllocErr, nothing leaked, nothing written.
TEST_P(Fft2dTiers, FailedAllocationsLeakNothing) {
    const Fft2d& f = GetParam();
    for (const Size s : {Size{3, 3}, Size{4, 2}, Size{0, 3}}) {
        int made = 0;
        {
            AllocSpy spy;
            OrviFFTSpec_R_32f* p = nullptr;
            ASSERT_EQ(f.init(&p, s.ox, s.oy, OrvFftNoDiv, 0), orvStsNoErr);
            made = AllocSpy::mallocs;
            ASSERT_EQ(f.free(p), orvStsNoErr);
            EXPECT_EQ(AllocSpy::frees, made);
        }
        for (int k = 1; k <= made; ++k) {
            AllocSpy spy(k);
            OrviFFTSpec_R_32f* p = nullptr;
            EXPECT_EQ(f.init(&p, s.ox, s.oy, OrvFftNoDiv, 0), orvStsMemAllocErr) << k;
            EXPECT_EQ(p, nullptr);
            EXPECT_EQ(AllocSpy::frees, AllocSpy::mallocs - 1) << k;  // all but the failed one
        }
        const int w = 1 << s.ox, h = 1 << s.oy;
        Spec spec(f, s.ox, s.oy, OrvFftNoDiv);
        std::vector<float> x = random_image(w, h, 6), y(x.size(), 3.0f);
        for (auto fn : {f.fwd, f.inv}) {
            {
                AllocSpy spy;
                ASSERT_EQ(fn(x.data(), 4 * w, y.data(), 4 * w, spec.p, nullptr), orvStsNoErr);
                EXPECT_EQ(AllocSpy::mallocs, 1);
                EXPECT_EQ(AllocSpy::frees, 1);
            }
            std::fill(y.begin(), y.end(), 3.0f);
            AllocSpy spy(1);
            EXPECT_EQ(fn(x.data(), 4 * w, y.data(), 4 * w, spec.p, nullptr), orvStsMemAllocErr);
            EXPECT_EQ(AllocSpy::frees, 0);
            EXPECT_EQ(y, std::vector<float>(x.size(), 3.0f));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Tiers, Fft2dTiers, ::testing::ValuesIn(tiers()),
                         [](const auto& info) { return info.param.tier; });

// The unpacking (checked against the reference half spectrum above) moves
// the same numbers with wide steps, single rows and columns included, and
// writes nothing between rows; statuses in order.
TEST(Fft2dUnpack, WideStepsAndStatuses) {
    for (const Size s : {Size{0, 0}, Size{3, 0}, Size{0, 3}, Size{1, 1}, Size{2, 3}, Size{4, 1}}) {
        const int w = 1 << s.ox, h = 1 << s.oy, hw = w / 2 + 1;
        const std::vector<float> pack = random_image(w, h, 11);
        std::vector<Orv32fc> dense(static_cast<size_t>(h) * hw);
        ASSERT_EQ(orviFFTUnpack_Pack_32fc(pack.data(), 4 * w, dense.data(), 8 * hw, {w, h}), orvStsNoErr);
        Img src(w, h, 1, 4 * w + 12);
        put(src, pack);
        GuardedImage<Orv32fc> dst(hw, h, 1, 8 * hw + 8);
        ASSERT_EQ(orviFFTUnpack_Pack_32fc(src.data(), src.step(), dst.data(), dst.step(), {w, h}), orvStsNoErr);
        for (int v = 0; v < h; ++v)
            for (int u = 0; u < hw; ++u)
                EXPECT_EQ(std::memcmp(&dense[static_cast<size_t>(v) * hw + u], dst.row(v) + u, 8), 0) << u << "," << v;
        EXPECT_TRUE(dst.slack_intact());
    }
    std::vector<float> p(16);
    std::vector<Orv32fc> c(16);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(nullptr, 16, c.data(), 24, {4, 4}), orvStsNullPtrErr);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(p.data(), 16, nullptr, 24, {4, 4}), orvStsNullPtrErr);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(p.data(), 16, c.data(), 24, {3, 4}), orvStsSizeErr);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(p.data(), 16, c.data(), 24, {4, 0}), orvStsSizeErr);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(p.data(), 12, c.data(), 24, {4, 4}), orvStsStepErr);
    EXPECT_EQ(orviFFTUnpack_Pack_32fc(p.data(), 16, c.data(), 16, {4, 4}), orvStsStepErr);
}

}  // namespace
