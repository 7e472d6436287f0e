// Vector functions: fill and copy, arithmetic, reductions, conversions,
// threshold, exponential, reciprocal, Gaussian generator, memory and version,
// 1-D convolution, and the scalar math layer.
#include <cmath>

#include "fuzz_common.h"
#include "orvmath.h"
#include "orvs.h"

using namespace orvfuzz;

namespace {

constexpr int kMaxLen = 3000;

bool null_arg(FuzzedDataProvider& in) { return in.ConsumeIntegralInRange<int>(0, 23) == 0; }

// Element-aligned offset from the guard page before, or flush with the one after.
template <class T>
Block make(FuzzedDataProvider& in, int len) {
    const bool atStart = in.ConsumeBool();
    return Block(count(len) * sizeof(T), atStart, sizeof(T) * in.ConsumeIntegralInRange<size_t>(0, 7));
}

// Null pointers first, then a length below 1; both bad: either code (tiers
// differ in the order for some members).
void expect_checks(OrvStatus s, bool anyNull, bool badLen, const char* n) {
    check_status(s, n);
    if (anyNull && badLen) {
        if (s != orvStsNullPtrErr && s != orvStsSizeErr) fail("null and bad length: wrong status", n);
    } else if (anyNull) {
        if (s != orvStsNullPtrErr) fail("null pointer not refused first", n);
    } else if (badLen) {
        if (s != orvStsSizeErr) fail("length below 1 not refused", n);
    }
}

template <class T>
bool same_value(T a, T b) {
    return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

// ---- Shapes ----------------------------------------------------------------------

// (src, dst, len); Op checks each element when non-null.
template <class TS, class TD>
void src_dst(OrvStatus (*f)(const TS*, TD*, int), const char* n, FuzzedDataProvider& in,
             bool (*op)(TS, TD) = nullptr) {
    const int len = length(in, kMaxLen);
    Block src = make<TS>(in, len), dst = make<TD>(in, len);
    src.fill(in);
    dst.pattern(0x5A);
    const bool ns = null_arg(in), nd = null_arg(in);
    Out o(dst);
    const OrvStatus s = f(ns ? nullptr : src.as<TS>(), nd ? nullptr : dst.as<TD>(), len);
    expect_checks(s, ns || nd, len < 1, n);
    o.unchanged_if_refused(s, n);
    if (s == 0 && op)
        for (size_t i = 0; i < count(len); ++i)
            if (!op(src.as<TS>()[i], dst.as<TD>()[i])) {
                std::fprintf(stderr, "element %zu of %d: %.17g -> %.17g\n", i, len, double(src.as<TS>()[i]),
                             double(dst.as<TD>()[i]));
                fail("wrong element", n);
            }
}
template <class T>
void copy(OrvStatus (*f)(const T*, T*, int), const char* n, FuzzedDataProvider& in) {
    src_dst<T, T>(f, n, in, [](T a, T b) { return std::memcmp(&a, &b, sizeof a) == 0; });
}
void widen(OrvStatus (*f)(const Orv32f*, Orv64f*, int), const char* n, FuzzedDataProvider& in) {
    src_dst<Orv32f, Orv64f>(f, n, in, [](Orv32f a, Orv64f b) { return same_value<double>(a, b); });
}
void narrow(OrvStatus (*f)(const Orv64f*, Orv32f*, int), const char* n, FuzzedDataProvider& in) {
    // Limited to the largest finite single value first; a NaN becomes that
    // value or stays a NaN, by tier.
    src_dst<Orv64f, Orv32f>(f, n, in, [](Orv64f a, Orv32f b) {
        constexpr double kMax = 3.4028234663852886e38;
        if (std::isnan(a)) return std::isnan(b) || b == static_cast<float>(kMax);
        return same_value<float>(static_cast<float>(a > kMax ? kMax : a < -kMax ? -kMax : a), b);
    });
}
template <class TS, class TD>
void plain(OrvStatus (*f)(const TS*, TD*, int), const char* n, FuzzedDataProvider& in) {
    src_dst<TS, TD>(f, n, in);
}

// (src, dst, len, rndMode, scaleFactor): saturated integer results.
template <class TD>
void convert_sfs(OrvStatus (*f)(const Orv32f*, TD*, int, int, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const int rnd = in.ConsumeIntegralInRange<int>(-1, 3);
    const int sf = in.ConsumeBool() ? in.ConsumeIntegralInRange<int>(-20, 20) : in.ConsumeIntegral<int>();
    Block src = make<Orv32f>(in, len), dst = make<TD>(in, len);
    src.fill(in);
    dst.pattern(0x33);
    const bool ns = null_arg(in), nd = null_arg(in);
    Out o(dst);
    const unsigned mx = ps_get_ssx();
    const OrvStatus s = f(ns ? nullptr : src.as<Orv32f>(), nd ? nullptr : dst.as<TD>(), len, rnd, sf);
    if ((ps_get_ssx() & 0x6000u) != (mx & 0x6000u)) fail("rounding control not restored", n);
    expect_checks(s, ns || nd, len < 1, n);
    o.unchanged_if_refused(s, n);
}

// (srcDst, len) in place.
template <class T>
void in_place(OrvStatus (*f)(T*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block sd = make<T>(in, len);
    sd.fill(in);
    const bool nn = null_arg(in);
    Out o(sd);
    const OrvStatus s = f(nn ? nullptr : sd.as<T>(), len);
    expect_checks(s, nn, len < 1, n);
    o.unchanged_if_refused(s, n);
}
void sqr(OrvStatus (*f)(Orv64f*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block sd = make<Orv64f>(in, len);
    sd.fill(in);
    const std::vector<unsigned char> before = sd.snapshot();
    const OrvStatus s = f(sd.as<Orv64f>(), len);
    expect_checks(s, false, len < 1, n);
    if (s < 0 && !sd.same(before)) fail("refused call wrote", n);
    if (s == 0)
        for (size_t i = 0; i < count(len); ++i) {
            Orv64f x;
            std::memcpy(&x, before.data() + i * 8, 8);
            if (!same_value(x * x, sd.as<Orv64f>()[i])) fail("wrong square", n);
        }
}

// (val, srcDst, len) and (val, dst, len).
template <class T>
void val_in_place(OrvStatus (*f)(T, T*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const T v = value<T>(in);
    Block sd = make<T>(in, len);
    sd.fill(in);
    const bool nn = null_arg(in);
    Out o(sd);
    const OrvStatus s = f(v, nn ? nullptr : sd.as<T>(), len);
    expect_checks(s, nn, len < 1, n);
    o.unchanged_if_refused(s, n);
}
template <class T>
void set(OrvStatus (*f)(T, T*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const T v = value<T>(in);
    Block d = make<T>(in, len);
    d.pattern(1);
    const bool nn = null_arg(in);
    Out o(d);
    const OrvStatus s = f(v, nn ? nullptr : d.as<T>(), len);
    expect_checks(s, nn, len < 1, n);
    o.unchanged_if_refused(s, n);
    if (s == 0)
        for (size_t i = 0; i < count(len); ++i)
            if (std::memcmp(&d.as<T>()[i], &v, sizeof v) != 0) fail("wrong fill", n);
}
template <class T>
void zero(OrvStatus (*f)(T*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block d = make<T>(in, len);
    d.pattern(7);
    const bool nn = null_arg(in);
    Out o(d);
    const OrvStatus s = f(nn ? nullptr : d.as<T>(), len);
    expect_checks(s, nn, len < 1, n);
    o.unchanged_if_refused(s, n);
    if (s == 0)
        for (size_t i = 0; i < d.size(); ++i)
            if (d.data()[i] != 0) fail("not zeroed", n);
}

// Element-wise binary operations, each checked against the plain operation.
enum class Bin { Add, Sub, Mul };
template <Bin op>
Orv64f apply(Orv64f a, Orv64f b) {  // a: the array operand, b: the other
    return op == Bin::Add ? b + a : op == Bin::Sub ? b - a : b * a;
}
// (src, srcDst, len): srcDst = srcDst op src.
template <Bin op>
void bin_in_place(OrvStatus (*f)(const Orv64f*, Orv64f*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<Orv64f>(in, len), sd = make<Orv64f>(in, len);
    a.fill(in);
    sd.fill(in);
    const bool na = null_arg(in), nsd = null_arg(in);
    const std::vector<unsigned char> before = sd.snapshot();
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), nsd ? nullptr : sd.as<Orv64f>(), len);
    expect_checks(s, na || nsd, len < 1, n);
    if (s < 0 && !sd.same(before)) fail("refused call wrote", n);
    if (s == 0)
        for (size_t i = 0; i < count(len); ++i) {
            Orv64f x;
            std::memcpy(&x, before.data() + i * 8, 8);
            if (!same_value(apply<op>(a.as<Orv64f>()[i], x), sd.as<Orv64f>()[i])) fail("wrong element", n);
        }
}
// (src1, src2, dst, len): Add s1 + s2, Sub s2 - s1.
template <Bin op>
void bin(OrvStatus (*f)(const Orv64f*, const Orv64f*, Orv64f*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<Orv64f>(in, len), b = make<Orv64f>(in, len), d = make<Orv64f>(in, len);
    a.fill(in);
    b.fill(in);
    d.pattern(9);
    const bool na = null_arg(in), nb = null_arg(in), nd = null_arg(in);
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), nb ? nullptr : b.as<Orv64f>(), nd ? nullptr : d.as<Orv64f>(), len);
    expect_checks(s, na || nb || nd, len < 1, n);
    o.unchanged_if_refused(s, n);
    if (s == 0)
        for (size_t i = 0; i < count(len); ++i)
            if (!same_value(apply<op>(a.as<Orv64f>()[i], b.as<Orv64f>()[i]), d.as<Orv64f>()[i])) fail("wrong element", n);
}
// (src, val, dst, len).
void src_val_dst(OrvStatus (*f)(const Orv64f*, Orv64f, Orv64f*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const Orv64f v = value<Orv64f>(in);
    Block a = make<Orv64f>(in, len), d = make<Orv64f>(in, len);
    a.fill(in);
    d.pattern(3);
    const bool na = null_arg(in), nd = null_arg(in);
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), v, nd ? nullptr : d.as<Orv64f>(), len);
    expect_checks(s, na || nd, len < 1, n);
    o.unchanged_if_refused(s, n);
}

// Reductions: (src, len, out...) with the outputs in a guarded block.
template <class T, class R>
void reduce(OrvStatus (*f)(const T*, int, R*), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<T>(in, len), r(sizeof(R));
    a.fill(in);
    r.pattern(4);
    const bool na = null_arg(in), nr = null_arg(in);
    Out o(r);
    const OrvStatus s = f(na ? nullptr : a.as<T>(), len, nr ? nullptr : r.as<R>());
    expect_checks(s, na || nr, len < 1, n);
    o.unchanged_if_refused(s, n);
}
void sum32(OrvStatus (*f)(const Orv32f*, int, Orv32f*, OrvHintAlgorithm), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const OrvHintAlgorithm hint = in.ConsumeIntegralInRange<int>(-1, 3);
    Block a = make<Orv32f>(in, len), r(sizeof(Orv32f));
    a.fill(in);
    r.pattern(4);
    const bool na = null_arg(in), nr = null_arg(in);
    Out o(r);
    const OrvStatus s = f(na ? nullptr : a.as<Orv32f>(), len, nr ? nullptr : r.as<Orv32f>(), hint);
    expect_checks(s, na || nr, len < 1, n);
    o.unchanged_if_refused(s, n);
}
void minmax(OrvStatus (*f)(const Orv64f*, int, Orv64f*, Orv64f*), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<Orv64f>(in, len), r(2 * sizeof(Orv64f));
    a.fill(in);
    r.pattern(4);
    const bool na = null_arg(in), n1 = null_arg(in), n2 = null_arg(in);
    Out o(r);
    Orv64f* p = r.as<Orv64f>();
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), len, n1 ? nullptr : p, n2 ? nullptr : p + 1);
    expect_checks(s, na || n1 || n2, len < 1, n);
    o.unchanged_if_refused(s, n);
}
void max_indx(OrvStatus (*f)(const Orv64f*, int, Orv64f*, int*), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<Orv64f>(in, len), r(sizeof(Orv64f) + sizeof(int));
    a.fill(in);
    r.pattern(4);
    const bool na = null_arg(in), n1 = null_arg(in), ni = null_arg(in);
    Out o(r);
    int* pi = reinterpret_cast<int*>(r.data() + 8);
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), len, n1 ? nullptr : r.as<Orv64f>(), ni ? nullptr : pi);
    expect_checks(s, na || n1, len < 1, n);  // a null index pointer is no error
    o.unchanged_if_refused(s, n);
    if (s == 0 && !ni) {
        int k;
        std::memcpy(&k, pi, sizeof k);
        if (k < 0 || k >= len) fail("index outside the array", n);
    }
}
void minmax_indx(OrvStatus (*f)(const Orv64f*, int, Orv64f*, int*, Orv64f*, int*), const char* n,
                 FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<Orv64f>(in, len), r(2 * sizeof(Orv64f) + 2 * sizeof(int));
    a.fill(in);
    r.pattern(4);
    bool nul[5];
    bool any = false;
    for (bool& b : nul) any |= (b = null_arg(in));
    Out o(r);
    Orv64f* pv = r.as<Orv64f>();
    int* pi = reinterpret_cast<int*>(r.data() + 16);
    const OrvStatus s = f(nul[0] ? nullptr : a.as<Orv64f>(), len, nul[1] ? nullptr : pv, nul[2] ? nullptr : pi,
                          nul[3] ? nullptr : pv + 1, nul[4] ? nullptr : pi + 1);
    expect_checks(s, any, len < 1, n);
    o.unchanged_if_refused(s, n);
    if (s == 0) {
        int k[2];
        std::memcpy(k, pi, sizeof k);
        if (k[0] < 0 || k[0] >= len || k[1] < 0 || k[1] >= len) fail("index outside the array", n);
    }
}
template <class T>
void dot(OrvStatus (*f)(const T*, const T*, int, Orv64f*), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    Block a = make<T>(in, len), b = make<T>(in, len), r(sizeof(Orv64f));
    a.fill(in);
    b.fill(in);
    r.pattern(4);
    const bool na = null_arg(in), nb = null_arg(in), nr = null_arg(in);
    Out o(r);
    const OrvStatus s = f(na ? nullptr : a.as<T>(), nb ? nullptr : b.as<T>(), len, nr ? nullptr : r.as<Orv64f>());
    expect_checks(s, na || nb || nr, len < 1, n);
    o.unchanged_if_refused(s, n);
}

void threshold(OrvStatus (*f)(const Orv64f*, Orv64f*, int, Orv64f, Orv64f, Orv64f, Orv64f), const char* n,
               FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const Orv64f lt = value<Orv64f>(in), vlt = value<Orv64f>(in), gt = value<Orv64f>(in), vgt = value<Orv64f>(in);
    Block a = make<Orv64f>(in, len), d = make<Orv64f>(in, len);
    a.fill(in);
    d.pattern(2);
    const bool na = null_arg(in), nd = null_arg(in);
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<Orv64f>(), nd ? nullptr : d.as<Orv64f>(), len, lt, vlt, gt, vgt);
    expect_checks(s, na || nd, len < 1, n);
    if (!na && !nd && len >= 1 && lt > gt && s != orvStsThresholdErr) fail("levels out of order accepted", n);
    o.unchanged_if_refused(s, n);
}

void gauss(OrvStatus (*f)(Orv64f*, int, Orv64f, Orv64f, unsigned*), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, kMaxLen);
    const Orv64f mean = value<Orv64f>(in), sd = value<Orv64f>(in);
    Block d = make<Orv64f>(in, len), seed(sizeof(unsigned));
    d.pattern(2);
    seed.fill(in);
    const bool nd = null_arg(in), ns = null_arg(in);
    Out o(d), os(seed);
    const OrvStatus s = f(nd ? nullptr : d.as<Orv64f>(), len, mean, sd, ns ? nullptr : seed.as<unsigned>());
    expect_checks(s, nd || ns, len < 1, n);
    o.unchanged_if_refused(s, n);
    os.unchanged_if_refused(s, n);
}

// 1-D full convolution: dst holds src1Len + src2Len - 1 elements.
template <class T>
void conv(OrvStatus (*f)(const T*, int, const T*, int, T*), const char* n, FuzzedDataProvider& in) {
    const int l1 = length(in, 1200), l2 = length(in, in.ConsumeBool() ? 70 : 1200);
    const int ld = l1 > 0 && l2 > 0 ? l1 + l2 - 1 : 0;
    Block a = make<T>(in, l1), b = make<T>(in, l2), d = make<T>(in, ld);
    a.fill(in);
    b.fill(in);
    d.pattern(6);
    const bool na = null_arg(in), nb = null_arg(in), nd = null_arg(in);
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<T>(), l1, nb ? nullptr : b.as<T>(), l2, nd ? nullptr : d.as<T>());
    expect_checks(s, na || nb || nd, l1 < 1 || l2 < 1, n);
    o.unchanged_if_refused(s, n);
}

// Memory: a block of len elements is writable whole, aligned to 32, and freed.
template <class T>
void malloc_free(T* (*f)(int), const char* n, FuzzedDataProvider& in) {
    const int len = in.ConsumeBool() ? in.ConsumeIntegralInRange<int>(-4, 5000) : in.ConsumeIntegral<int>() >> 8;
    T* p = f(len);
    if (len < 1 && p) fail("block for a length below 1", n);
    if (p) {
        if (reinterpret_cast<uintptr_t>(p) % 32) fail("block not aligned to 32", n);
        std::memset(p, 0xCD, count(len) * sizeof(T));
    }
    orvsFree(p);
}
void free_fn(void (*f)(void*), const char*, FuzzedDataProvider& in) {
    f(nullptr);
    const int len = in.ConsumeIntegralInRange<int>(1, 4096);
    void* p = orvMalloc(len);
    if (p) std::memset(p, 1, static_cast<size_t>(len));
    f(p);
}
void version(const OrvLibVersion* (*f)(void), const char* n, FuzzedDataProvider&) {
    const OrvLibVersion* v = f();
    if (!v) fail("no version record", n);
}

// The scalar math layer, its error path with each library version setting.
void scalar(const char* n, FuzzedDataProvider& in) {
    static const int kVersions[] = {3, -1, 2, 0, 1};
    const int saved = _LIB_VERSIONZMT;
    _LIB_VERSIONZMT = kVersions[in.ConsumeIntegralInRange<int>(0, 4)];
    const double x = value<Orv64f>(in);
    const int which = in.ConsumeIntegralInRange<int>(0, 3);
    double r = which == 0 ? std::cos(x) : which == 1 ? std::sin(x) : which == 2 ? std::log(x) : std::sqrt(x);
    (void)r;
    _LIB_VERSIONZMT = saved;
    (void)n;
}

}  // namespace

static const Row kRows[] = {
    ORV_FUZZ_ROW(orvsCopy_8u, copy),
    ORV_FUZZ_ROW(orvsCopy_32f, copy),
    ORV_FUZZ_ROW(orvsCopy_64f, copy),
    ORV_FUZZ_ROW(orvsZero_8u, zero),
    ORV_FUZZ_ROW(orvsZero_32f, zero),
    ORV_FUZZ_ROW(orvsZero_64f, zero),
    ORV_FUZZ_ROW(orvsSet_32f, set),
    ORV_FUZZ_ROW(orvsSet_64f, set),
    ORV_FUZZ_ROW(orvsAdd_64f, bin<Bin::Add>),
    ORV_FUZZ_ROW(orvsSub_64f, bin<Bin::Sub>),
    ORV_FUZZ_ROW(orvsAdd_64f_I, bin_in_place<Bin::Add>),
    ORV_FUZZ_ROW(orvsSub_64f_I, bin_in_place<Bin::Sub>),
    ORV_FUZZ_ROW(orvsMul_64f_I, bin_in_place<Bin::Mul>),
    ORV_FUZZ_ROW(orvsAddC_64f_I, val_in_place),
    ORV_FUZZ_ROW(orvsSubC_64f_I, val_in_place),
    ORV_FUZZ_ROW(orvsMulC_64f_I, val_in_place),
    ORV_FUZZ_ROW(orvsMulC_32f_I, val_in_place),
    ORV_FUZZ_ROW(orvsSubCRev_64f, src_val_dst),
    ORV_FUZZ_ROW(orvsMulC_64f, src_val_dst),
    ORV_FUZZ_ROW(orvsSqr_64f_I, sqr),
    ORV_FUZZ_ROW(orvsExp_64f_I, in_place),
    ORV_FUZZ_ROW(orvsExp_64f, plain),
    ORV_FUZZ_ROW(orvsInv_64f_A26, plain),
    ORV_FUZZ_ROW(orvsConvert_32f64f, widen),
    ORV_FUZZ_ROW(orvsConvert_64f32f, narrow),
    ORV_FUZZ_ROW(orvsConvert_32f8u_Sfs, convert_sfs),
    ORV_FUZZ_ROW(orvsConvert_32f16s_Sfs, convert_sfs),
    ORV_FUZZ_ROW(orvsConvert_32f16u_Sfs, convert_sfs),
    ORV_FUZZ_ROW(orvsThreshold_LTValGTVal_64f, threshold),
    ORV_FUZZ_ROW(orvsSum_32f, sum32),
    ORV_FUZZ_ROW(orvsSum_64f, reduce),
    ORV_FUZZ_ROW(orvsMean_64f, reduce),
    ORV_FUZZ_ROW(orvsMax_64f, reduce),
    ORV_FUZZ_ROW(orvsMinMax_64f, minmax),
    ORV_FUZZ_ROW(orvsMaxIndx_64f, max_indx),
    ORV_FUZZ_ROW(orvsMinMaxIndx_64f, minmax_indx),
    ORV_FUZZ_ROW(orvsDotProd_64f, dot),
    ORV_FUZZ_ROW(orvsDotProd_32f64f, dot),
    ORV_FUZZ_ROW(orvsRandGauss_Direct_64f, gauss),
    ORV_FUZZ_ROW(orvsConv_32f, conv),
    ORV_FUZZ_ROW(orvsConv_64f, conv),
    ORV_FUZZ_ROW(orvsMalloc_8u, malloc_free),
    ORV_FUZZ_ROW(orvsMalloc_32f, malloc_free),
    ORV_FUZZ_ROW(orvsMalloc_64f, malloc_free),
    ORV_FUZZ_ROW(orvsFree, free_fn),
    ORV_FUZZ_ROW(orvsGetLibVersion, version),
    ORV_FUZZ_ROW(orviGetLibVersion, version),
    {"scalar:cos,sin,log,sqrt", scalar},
};

ORV_FUZZ_MAIN(kRows)
