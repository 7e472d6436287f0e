// 1-D FFT: sizes, specifications in caller and library memory, work-buffer
// sizes, transforms of every kind (Perm and Pack), spectrum products, the
// unpack and repack helpers, and the small kernels.
#include <type_traits>

#include "fuzz_common.h"
#include "orvs.h"

using namespace orvfuzz;

namespace {

// The highest order a transform is run at: tables and data stay small.
constexpr int kMaxRunOrder = 15;

// Everything about one specification kind, resolved in one tier.
template <class T_, class Spec_>
struct Kind {
    using T = T_;
    using Spec = Spec_;
    using GetSize = OrvStatus (*)(int, int, int, int*, int*, int*);
    using Init = OrvStatus (*)(Spec**, int, int, int, Orv8u*, Orv8u*);
    using InitAlloc = OrvStatus (*)(Spec**, int, int, int);
    using GetBuf = OrvStatus (*)(const Spec*, int*);
    using Free = OrvStatus (*)(Spec*);
    using Xform = OrvStatus (*)(const T*, T*, const Spec*, Orv8u*);
};
using KC = Kind<Orv32fc, OrvFFTSpec_C_32fc>;
using KR32 = Kind<Orv32f, OrvFFTSpec_R_32f>;
using KR64 = Kind<Orv64f, OrvFFTSpec_R_64f>;

template <class F>
F in_tier(const std::string& name, const char* tier) {
    for (const TierFn& t : kTierFns)
        if (name == t.name && std::strcmp(t.tier, tier) == 0) return reinterpret_cast<F>(t.fn);
    return nullptr;
}

int pick_flag(FuzzedDataProvider& in) {
    static const int kFlags[] = {OrvFftDivFwd, OrvFftDivInv, OrvFftDivSqrt, OrvFftNoDiv};
    if (in.ConsumeIntegralInRange<int>(0, 15) == 0) return in.ConsumeIntegral<int>();
    return kFlags[in.ConsumeIntegralInRange<int>(0, 3)];
}
bool flag_ok(int flag) { return flag == 1 || flag == 2 || flag == 4 || flag == 8; }

int pick_order(FuzzedDataProvider& in) {
    switch (in.ConsumeIntegralInRange<int>(0, 9)) {
    case 0: return in.ConsumeIntegralInRange<int>(-3, 33);
    case 1: return in.ConsumeIntegral<int>();
    default: return in.ConsumeIntegralInRange<int>(0, kMaxRunOrder);
    }
}

// The whole life of one specification in one tier: GetSize, Init in guarded
// caller memory or InitAlloc, GetBufSize, transforms (with refusals), Free.
// `sfx` names the kind (C_32fc, R_32f, R_64f); the row's name picks the
// transform run most.
template <class K>
void life(const char* sfx, const char* tier, const char* rowName, FuzzedDataProvider& in) {
    const std::string s = sfx;
    auto getSize = in_tier<typename K::GetSize>("orvsFFTGetSize_" + s, tier);
    auto init = in_tier<typename K::Init>("orvsFFTInit_" + s, tier);
    auto initAlloc = in_tier<typename K::InitAlloc>("orvsFFTInitAlloc_" + s, tier);
    auto getBuf = in_tier<typename K::GetBuf>("orvsFFTGetBufSize_" + s, tier);
    auto freeSpec = in_tier<typename K::Free>("orvsFFTFree_" + s, tier);
    std::vector<std::pair<std::string, typename K::Xform>> xforms;
    for (const char* x : {"orvsFFTFwd_CToC_", "orvsFFTInv_CToC_", "orvsFFTFwd_RToPerm_", "orvsFFTInv_PermToR_",
                          "orvsFFTFwd_RToPack_", "orvsFFTInv_PackToR_"})
        if (auto f = in_tier<typename K::Xform>(x + s.substr(2), tier)) xforms.emplace_back(x + s.substr(2), f);
    if (!getSize || !init || !initAlloc || !getBuf || !freeSpec || xforms.empty()) fail("incomplete kind", rowName);

    const int order = pick_order(in), flag = pick_flag(in), hint = in.ConsumeIntegral<int>();

    // GetSize: sizes in guarded words, some null.
    Block sizes(3 * sizeof(int));
    sizes.pattern(0x77);
    bool nul[3];
    for (bool& b : nul) b = in.ConsumeIntegralInRange<int>(0, 15) == 0;
    int* ps = sizes.as<int>();
    Out os(sizes);
    OrvStatus st = getSize(order, flag, hint, nul[0] ? nullptr : ps, nul[1] ? nullptr : ps + 1, nul[2] ? nullptr : ps + 2);
    check_status(st, "orvsFFTGetSize");
    os.unchanged_if_refused(st, "orvsFFTGetSize");
    if (order < 0 || order > 30) {
        if (st != orvStsFftOrderErr) fail("order outside 0..30 not refused first", "orvsFFTGetSize");
        return;
    }
    if (nul[0] || nul[1] || nul[2]) {
        if (st != orvStsNullPtrErr) fail("null size pointer not refused", "orvsFFTGetSize");
        return;
    }
    if (!flag_ok(flag)) {
        if (st != orvStsFftFlagErr) fail("bad flag not refused", "orvsFFTGetSize");
        return;
    }
    if (st < 0) {
        if (st != orvStsFftOrderErr) fail("unexpected refusal", "orvsFFTGetSize");
        return;
    }
    int specSize, initSize, bufSize;
    std::memcpy(&specSize, ps, 4);
    std::memcpy(&initSize, ps + 1, 4);
    std::memcpy(&bufSize, ps + 2, 4);
    if (specSize < 0 || initSize < 0 || bufSize < 0) fail("negative size", "orvsFFTGetSize");
    if (order > kMaxRunOrder) return;

    // Build: in caller memory or the library's.
    typename K::Spec* spec = nullptr;
    std::unique_ptr<Block> memSpec, memInit;
    const bool callerMem = in.ConsumeBool();
    Block pp(sizeof(void*));
    pp.pattern(0x11);
    auto** ppSpec = pp.as<typename K::Spec*>();
    const bool nullPP = in.ConsumeIntegralInRange<int>(0, 31) == 0;
    Out opp(pp);
    if (callerMem) {
        memSpec = std::make_unique<Block>(specSize, in.ConsumeBool(), in.ConsumeIntegralInRange<size_t>(0, 63));
        memInit = std::make_unique<Block>(initSize, in.ConsumeBool(), in.ConsumeIntegralInRange<size_t>(0, 63));
        const bool nullInit = initSize > 0 && in.ConsumeIntegralInRange<int>(0, 15) == 0;
        st = init(nullPP ? nullptr : ppSpec, order, flag, hint, memSpec->data(), nullInit ? nullptr : memInit->data());
        check_status(st, "orvsFFTInit");
        opp.unchanged_if_refused(st, "orvsFFTInit");
        if (nullPP && st != orvStsNullPtrErr) fail("null ppSpec accepted", "orvsFFTInit");
    } else {
        st = initAlloc(nullPP ? nullptr : ppSpec, order, flag, hint);
        check_status(st, "orvsFFTInitAlloc");
        opp.unchanged_if_refused(st, "orvsFFTInitAlloc");
        if (nullPP && st != orvStsNullPtrErr) fail("null ppSpec accepted", "orvsFFTInitAlloc");
    }
    if (st < 0) return;
    if (st > 0) fail("warning from a build", rowName);
    std::memcpy(&spec, ppSpec, sizeof spec);

    // Work buffer size, then transforms.
    Block bs(sizeof(int));
    st = getBuf(spec, bs.as<int>());
    if (st != 0) fail("GetBufSize refused a built spec", rowName);
    int wantBuf;
    std::memcpy(&wantBuf, bs.data(), 4);
    if (wantBuf < 0) fail("negative buffer size", rowName);
    if (getBuf(spec, nullptr) != orvStsNullPtrErr) fail("null size pointer accepted", "orvsFFTGetBufSize");

    const size_t n = size_t(1) << order;
    const int rounds = in.ConsumeIntegralInRange<int>(1, 3);
    for (int r = 0; r < rounds; ++r) {
        // Most rounds run the row's own transform.
        size_t k = in.ConsumeIntegralInRange<size_t>(0, xforms.size());
        if (k == xforms.size()) {
            k = 0;
            for (size_t i = 0; i < xforms.size(); ++i)
                if (xforms[i].first == rowName) k = i;
        }
        const char* xn = xforms[k].first.c_str();
        // Any alignment of whole scalars (no 16- or 32-byte alignment promised).
        constexpr size_t kScalar = std::is_same_v<typename K::T, Orv64f> ? 8 : 4;
        Block src(n * sizeof(typename K::T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
        Block dst(n * sizeof(typename K::T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
        src.fill(in);
        dst.pattern(0x42);
        const bool inPlace = in.ConsumeBool();
        std::unique_ptr<Block> work;
        if (in.ConsumeIntegralInRange<int>(0, 3) != 0)
            work = std::make_unique<Block>(wantBuf, in.ConsumeBool(), in.ConsumeIntegralInRange<size_t>(0, 63));
        const int bad = in.ConsumeIntegralInRange<int>(0, 11);  // 0: null src, 1: null dst, 2: null spec
        auto* ps_ = reinterpret_cast<const typename K::T*>(src.data());
        auto* pd_ = reinterpret_cast<typename K::T*>(inPlace ? src.data() : dst.data());
        const std::vector<unsigned char> srcBefore = src.snapshot();
        Out od(dst);
        st = xforms[k].second(bad == 0 ? nullptr : ps_, bad == 1 ? nullptr : pd_, bad == 2 ? nullptr : spec,
                              work ? work->data() : nullptr);
        check_status(st, xn);
        if (bad <= 2) {
            if (st != orvStsNullPtrErr) fail("null argument not refused", xn);
            if (!src.same(srcBefore)) fail("refused call wrote", xn);
            od.unchanged_if_refused(st, xn);
        } else {
            if (st != 0) fail("transform refused good arguments", xn);
            if (!inPlace && !src.same(srcBefore)) fail("out-of-place transform wrote its source", xn);
        }
    }

    // Retire. A caller-memory spec answers a second Free and GetBufSize with
    // orvStsContextMatchErr; its transforms refuse it too.
    if (freeSpec(spec) != 0) fail("Free refused a built spec", rowName);
    if (callerMem) {
        if (freeSpec(spec) != orvStsContextMatchErr) fail("second Free accepted", rowName);
        int sz = 0;
        if (getBuf(spec, &sz) != orvStsContextMatchErr) fail("GetBufSize of a freed spec", rowName);
        Block a(n * sizeof(typename K::T)), b(n * sizeof(typename K::T));
        Out ob(b);
        st = xforms[0].second(a.as<typename K::T>(), b.as<typename K::T>(), spec, nullptr);
        if (st != orvStsContextMatchErr) fail("transform with a freed spec", xforms[0].first.c_str());
        ob.unchanged_if_refused(st, xforms[0].first.c_str());
    }
}

#define ORV_FFT_ROW(fname, K, sfx)                                                                     \
    {#fname, [](const char* n, FuzzedDataProvider& in) {                                               \
         const Callable& c = callable(n);                                                              \
         if (c.tiers.empty()) return;                                                                  \
         const char* tier = c.tierNames[in.ConsumeIntegralInRange<size_t>(0, c.tiers.size() - 1)];     \
         life<K>(sfx, tier, n, in);                                                                    \
     }}

// Spectrum product in place (src, srcDst, len).
template <class T>
void mul_perm(OrvStatus (*f)(const T*, T*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, 4096);
    Block a(count(len) * sizeof(T), in.ConsumeBool(), sizeof(T) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block sd(count(len) * sizeof(T), in.ConsumeBool(), sizeof(T) * in.ConsumeIntegralInRange<size_t>(0, 7));
    a.fill(in);
    sd.fill(in);
    const bool na = in.ConsumeIntegralInRange<int>(0, 15) == 0, nsd = in.ConsumeIntegralInRange<int>(0, 15) == 0;
    Out o(sd);
    const OrvStatus s = f(na ? nullptr : a.as<T>(), nsd ? nullptr : sd.as<T>(), len);
    check_status(s, n);
    if ((na || nsd) && s != orvStsNullPtrErr) fail("null not refused first", n);
    if (!na && !nsd && len < 1 && s != orvStsSizeErr) fail("length below 1 accepted", n);
    if (!na && !nsd && len >= 1 && s != 0) fail("good arguments refused", n);
    o.unchanged_if_refused(s, n);
}

// Unpack (len reals -> len/2 + 1 complex) and repack; no tier prefix.
template <class TR, class TC>
void unpack(OrvStatus (*f)(const TR*, TC*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, 4096);
    const bool lenOk = len == 1 || (len > 1 && len % 2 == 0);
    Block a(count(len) * sizeof(TR), in.ConsumeBool(), sizeof(TR) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block d(len > 0 ? (count(len) / 2 + 1) * sizeof(TC) : 0);
    a.fill(in);
    d.pattern(5);
    const bool na = in.ConsumeIntegralInRange<int>(0, 15) == 0, nd = in.ConsumeIntegralInRange<int>(0, 15) == 0;
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<TR>(), nd ? nullptr : d.as<TC>(), len);
    check_status(s, n);
    if ((na || nd) && s != orvStsNullPtrErr) fail("null not refused first", n);
    if (!na && !nd && !lenOk && s != orvStsSizeErr) fail("bad length accepted", n);
    if (!na && !nd && lenOk && s != 0) fail("good arguments refused", n);
    o.unchanged_if_refused(s, n);
}
template <class TR, class TC>
void repack(OrvStatus (*f)(const TC*, TR*, int), const char* n, FuzzedDataProvider& in) {
    const int len = length(in, 4096);
    const bool lenOk = len == 1 || (len > 1 && len % 2 == 0);
    Block a(len > 0 ? (count(len) / 2 + 1) * sizeof(TC) : 0, in.ConsumeBool(), sizeof(TR) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block d(count(len) * sizeof(TR));
    a.fill(in);
    d.pattern(5);
    const bool na = in.ConsumeIntegralInRange<int>(0, 15) == 0, nd = in.ConsumeIntegralInRange<int>(0, 15) == 0;
    Out o(d);
    const OrvStatus s = f(na ? nullptr : a.as<TC>(), nd ? nullptr : d.as<TR>(), len);
    check_status(s, n);
    if ((na || nd) && s != orvStsNullPtrErr) fail("null not refused first", n);
    if (!na && !nd && !lenOk && s != orvStsSizeErr) fail("bad length accepted", n);
    if (!na && !nd && lenOk && s != 0) fail("good arguments refused", n);
    o.unchanged_if_refused(s, n);
}
#define ORV_DIRECT_ROW(fname, driver)                                                                  \
    {#fname ":direct", [](const char* n, FuzzedDataProvider& in) { driver(&fname, n, in); }}

// Small kernels: N elements in and out, in place allowed; no checks.
template <int N, class T>
void small(void (*f)(const T*, T*), const char*, FuzzedDataProvider& in) {
    constexpr size_t kScalar = std::is_same_v<T, Orv32fc> ? 4 : std::is_same_v<T, Orv64fc> ? 8 : sizeof(T);
    Block a(N * sizeof(T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block d(N * sizeof(T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
    a.fill(in);
    if (in.ConsumeBool()) f(a.as<T>(), a.as<T>());
    else f(a.as<T>(), d.as<T>());
}
template <int N, class T, class S>
void small(void (*f)(const T*, T*, S), const char*, FuzzedDataProvider& in) {
    constexpr size_t kScalar = std::is_same_v<T, Orv32fc> ? 4 : std::is_same_v<T, Orv64fc> ? 8 : sizeof(T);
    Block a(N * sizeof(T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block d(N * sizeof(T), in.ConsumeBool(), kScalar * in.ConsumeIntegralInRange<size_t>(0, 7));
    a.fill(in);
    const S scale = value<S>(in);
    if (in.ConsumeBool()) f(a.as<T>(), a.as<T>(), scale);
    else f(a.as<T>(), d.as<T>(), scale);
}
// The real kernels hold N reals; the complex ones N complex values.
#define SMALL_C(n)                                                                                     \
    ORV_FUZZ_ROW(orvs_cFFTfwd_##n##_32fc, small<n>), ORV_FUZZ_ROW(orvs_cFFTinv_##n##_32fc, small<n>),   \
        ORV_FUZZ_ROW(orvs_cFFTfwd_##n##_scale_32fc, small<n>),                                         \
        ORV_FUZZ_ROW(orvs_cFFTinv_##n##_scale_32fc, small<n>), ORV_FUZZ_ROW(orvs_cFFTfwd_##n##_64fc, small<n>), \
        ORV_FUZZ_ROW(orvs_cFFTinv_##n##_64fc, small<n>), ORV_FUZZ_ROW(orvs_cFFTfwd_##n##_scale_64fc, small<n>), \
        ORV_FUZZ_ROW(orvs_cFFTinv_##n##_scale_64fc, small<n>)
#define SMALL_R(n)                                                                                     \
    ORV_FUZZ_ROW(orvs_rFFTfwd_##n##_32f, small<n>), ORV_FUZZ_ROW(orvs_rFFTinv_##n##_32f, small<n>),     \
        ORV_FUZZ_ROW(orvs_rFFTfwd_##n##_scale_32f, small<n>), ORV_FUZZ_ROW(orvs_rFFTinv_##n##_scale_32f, small<n>), \
        ORV_FUZZ_ROW(orvs_rFFTfwd_##n##_64f, small<n>), ORV_FUZZ_ROW(orvs_rFFTinv_##n##_64f, small<n>), \
        ORV_FUZZ_ROW(orvs_rFFTfwd_##n##_scale_64f, small<n>), ORV_FUZZ_ROW(orvs_rFFTinv_##n##_scale_64f, small<n>)
#define SMALL_12(k, T, S)                                                                              \
    ORV_FUZZ_ROW(orvs_##k##FFT_1_##T, small<1>), ORV_FUZZ_ROW(orvs_##k##FFT_2_##T, small<2>),           \
        ORV_FUZZ_ROW(orvs_##k##FFT_1_scale_##T, small<1>), ORV_FUZZ_ROW(orvs_##k##FFT_2_scale_##T, small<2>)

}  // namespace

static const Row kRows[] = {
    ORV_FFT_ROW(orvsFFTGetSize_C_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTInit_C_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTInitAlloc_C_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTGetBufSize_C_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTFree_C_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTFwd_CToC_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTInv_CToC_32fc, KC, "C_32fc"),
    ORV_FFT_ROW(orvsFFTGetSize_R_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTInit_R_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTInitAlloc_R_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTGetBufSize_R_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTFree_R_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTFwd_RToPerm_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTInv_PermToR_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTFwd_RToPack_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTInv_PackToR_32f, KR32, "R_32f"),
    ORV_FFT_ROW(orvsFFTGetSize_R_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTInit_R_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTInitAlloc_R_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTGetBufSize_R_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTFree_R_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTFwd_RToPerm_64f, KR64, "R_64f"),
    ORV_FFT_ROW(orvsFFTInv_PermToR_64f, KR64, "R_64f"),
    ORV_FUZZ_ROW(orvsMulPerm_32f_I, mul_perm),
    ORV_FUZZ_ROW(orvsMulPerm_64f_I, mul_perm),
    ORV_DIRECT_ROW(orvsFFTUnpack_Perm_32fc, unpack),
    ORV_DIRECT_ROW(orvsFFTUnpack_Pack_32fc, unpack),
    ORV_DIRECT_ROW(orvsFFTUnpack_Perm_64fc, unpack),
    ORV_DIRECT_ROW(orvsFFTUnpack_Pack_64fc, unpack),
    ORV_DIRECT_ROW(orvsFFTRepack_Perm_32fc, repack),
    ORV_DIRECT_ROW(orvsFFTRepack_Pack_32fc, repack),
    ORV_DIRECT_ROW(orvsFFTRepack_Perm_64fc, repack),
    ORV_DIRECT_ROW(orvsFFTRepack_Pack_64fc, repack),
    SMALL_C(4), SMALL_C(8), SMALL_C(16), SMALL_C(32), SMALL_C(64),
    SMALL_R(4), SMALL_R(8), SMALL_R(16), SMALL_R(32),
    SMALL_12(c, 32fc, Orv32f), SMALL_12(c, 64fc, Orv64f), SMALL_12(r, 32f, Orv32f), SMALL_12(r, 64f, Orv64f),
};

ORV_FUZZ_MAIN(kRows)
