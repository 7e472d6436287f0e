// FFT kernels and table builders (tier-prefixed, unchecked). Builders write
// into blocks of exactly their documented reservation; the radix core and the
// bit reversals run on tables those builders made, at the tier's medium
// orders; the blocked large-transform kernels (Large, Fact, BlkMerge/Split,
// block bit reversal, the large table builders) run inside a transform of the
// tier's first large order, and BlkMerge/Split also directly.
#include <cstring>
#include <cmath>

#include "fuzz_common.h"
#include "orvs.h"

using namespace orvfuzz;

namespace {

int tier_index(const char* t) {
    static const char* kT[] = {"m7", "u8", "n8", "y8", "e9"};
    for (int i = 0; i < 5; ++i)
        if (std::strcmp(kT[i], t) == 0) return i;
    fail("unknown tier", t);
}

// Orders of the radix-4 core, per tier (m7 u8 n8 y8 e9), capped at 12 to
// keep runs short; the first large order of each tier.
struct Orders {
    int lo, hi, large;
};
constexpr Orders k32f[5] = {{6, 12, 17}, {0, -1, 0}, {6, 12, 16}, {6, 12, 18}, {7, 12, 19}};
constexpr Orders k64f[5] = {{6, 12, 15}, {6, 12, 17}, {6, 12, 13}, {6, 12, 17}, {7, 12, 18}};

// Picks a tier of the row's name and returns its index; F from that tier.
template <class F>
F fn_in(const char* name, const char* tier) {
    for (const TierFn& t : kTierFns)
        if (std::strcmp(name, t.name) == 0 && std::strcmp(t.tier, tier) == 0) return reinterpret_cast<F>(t.fn);
    return nullptr;
}
const char* pick_tier(const char* name, FuzzedDataProvider& in) {
    const Callable& c = callable(name);
    if (c.tiers.empty()) return nullptr;
    return c.tierNames[in.ConsumeIntegralInRange<size_t>(0, c.tiers.size() - 1)];
}

// 32-byte aligned guarded block (the kernels' work areas must be).
struct Aligned {
    Block b;
    explicit Aligned(size_t bytes) : b((bytes + 31) / 32 * 32, true, 0) {}
    Orv8u* data() const { return b.data(); }
};

// The tables of one medium order in one tier, built by that tier's builders.
template <class E>
struct Tables {
    int order;
    size_t n;
    std::unique_ptr<Block> base, norm, swap, twd;
    Tables(const char* tier, int ord, bool is64) : order(ord), n(size_t(1) << ord) {
        const size_t q = n / 4;
        const int baseOrder = ord > 10 ? ord : 10;
        const size_t bq = (size_t(1) << baseOrder) / 4;
        base = std::make_unique<Block>((bq + 1) * sizeof(E));
        norm = std::make_unique<Block>((q + 1) * 4);
        swap = std::make_unique<Block>((q + 1) * 4);
        twd = std::make_unique<Block>((is64 ? 16 : 8) * n, true, 0);  // the builders' reservation
        if constexpr (sizeof(E) == 4) {
            fn_in<decltype(&orvs_initTabTwdBase_32f)>("orvs_initTabTwdBase_32f", tier)(baseOrder, base->as<Orv32f>());
            fn_in<decltype(&orvs_initTabTwd_L1_32f)>("orvs_initTabTwd_L1_32f", tier)(ord, base->as<Orv32f>(),
                                                                                      baseOrder, twd->data());
        } else {
            fn_in<decltype(&orvs_initTabTwdBase_64f)>("orvs_initTabTwdBase_64f", tier)(baseOrder, base->as<Orv64f>());
            fn_in<decltype(&orvs_initTabTwd_L1_64f)>("orvs_initTabTwd_L1_64f", tier)(ord, base->as<Orv64f>(),
                                                                                      baseOrder, twd->data());
        }
        fn_in<decltype(&orvs_initTabBitRevNorm)>("orvs_initTabBitRevNorm", tier)(ord, norm->as<Orv32u>());
        fn_in<decltype(&orvs_initTabBitRev)>("orvs_initTabBitRev", tier)(ord, swap->as<Orv32u>());
    }
};

template <class E>
bool medium(const char* tier, FuzzedDataProvider& in, int& order) {
    const Orders& o = (sizeof(E) == 4 ? k32f : k64f)[tier_index(tier)];
    if (o.hi < o.lo) return false;
    order = in.ConsumeIntegralInRange<int>(o.lo, o.hi);
    return true;
}

// ---- Builders ------------------------------------------------------------------------

// Each writes within its reservation (the block ends at a guard page) and
// returns an address at most 31 bytes past it.
void end_within(const void* start, const Orv8u* ret, size_t reserve, const char* n) {
    const auto s = reinterpret_cast<uintptr_t>(start), r = reinterpret_cast<uintptr_t>(ret);
    if (r < s || r > s + reserve + 31) fail("builder's end outside its reservation", n);
}
template <class E>
void base_table(Orv8u* (*f)(int, E*), const char* n, FuzzedDataProvider& in) {
    const int order = in.ConsumeIntegralInRange<int>(2, 16);
    const size_t q = (size_t(1) << order) / 4;
    Block b((q + 1) * sizeof(E), true, 0);
    end_within(b.data(), f(order, b.as<E>()), b.size(), n);
    E last;
    std::memcpy(&last, b.data() + q * sizeof(E), sizeof(E));
    if (last != E(1)) fail("last base entry is not 1", n);
}
void bitrev_table(Orv8u* (*f)(int, Orv32u*), const char* n, FuzzedDataProvider& in) {
    const int order = in.ConsumeIntegralInRange<int>(0, 18);
    const size_t q = order >= 2 ? (size_t(1) << order) / 4 : 0;
    Block b((q + 1) * 4, true, 0);
    end_within(b.data(), f(order, b.as<Orv32u>()), b.size(), n);
}
void bitrev_large(Orv8u* (*f)(int, int, Orv32u*), const char* n, FuzzedDataProvider& in) {
    const int blk = in.ConsumeBool() ? 5 : 6;
    const int order = in.ConsumeIntegralInRange<int>(2 * blk, 2 * blk + 8);
    const size_t r = size_t(1) << (order - 2 * blk), q = (size_t(1) << (2 * blk)) / 4;
    const size_t reserve = (r * 4 + 31) / 32 * 32 + (q + 1) * 4;
    Block b(reserve, true, 0);
    end_within(b.data(), f(order, blk, b.as<Orv32u>()), b.size(), n);
}
template <class E>
void l1_table(Orv8u* (*f)(int, const E*, int, Orv8u*), const char* n, FuzzedDataProvider& in) {
    const int order = in.ConsumeIntegralInRange<int>(2, 14);
    const int baseOrder = in.ConsumeIntegralInRange<int>(order > 10 ? order : 10, 14);
    Block base(((size_t(1) << baseOrder) / 4 + 1) * sizeof(E));
    std::vector<E> tmp((size_t(1) << baseOrder) / 4 + 1);
    for (size_t k = 0; k < tmp.size(); ++k) tmp[k] = E(std::sin(6.283185307179586 * k / (1 << baseOrder)));
    std::memcpy(base.data(), tmp.data(), base.size());
    const size_t reserve = sizeof(E) * 2 * (size_t(1) << order);
    Block t(reserve, true, 0);
    end_within(t.data(), f(order, base.as<E>(), baseOrder, t.data()), reserve, n);
}
// Recombination tables: Q pairs, 2 below N = 9, or the fine and coarse levels.
template <class E>
void rec_table(Orv8u* (*f)(int, const E*, int, E*), const char* n, FuzzedDataProvider& in) {
    const int order = in.ConsumeIntegralInRange<int>(2, 16);
    const int baseOrder = in.ConsumeIntegralInRange<int>(order > 10 ? order : 10, 16);
    std::vector<E> base((size_t(1) << baseOrder) / 4 + 1);
    for (size_t k = 0; k < base.size(); ++k) base[k] = E(std::sin(6.283185307179586 * k / (1 << baseOrder)));
    Block b(base.size() * sizeof(E));
    std::memcpy(b.data(), base.data(), b.size());
    const size_t q = (size_t(1) << order) / 4;
    const size_t fine = sizeof(E) == 4 ? 1024 : 512;
    size_t pairs = q < 2 ? 2 : q;
    if (q > fine) pairs = fine + q / fine;
    const size_t reserve = pairs > q ? pairs * 2 * sizeof(E) : q * 2 * sizeof(E);
    Block t(reserve + 2 * fine * sizeof(E), true, 0);  // either arrangement fits
    end_within(t.data(), f(order, b.as<E>(), baseOrder, t.as<E>()), t.size(), n);
}
void sizes_large(void (*f)(int, int*, int*, int*), const char* n, FuzzedDataProvider& in) {
    // The library asks for 64f large tables up to order 27 only (its largest
    // double transform, the real one of order 28, is complex of order 27);
    // at order 28 the 64f twiddle bytes no longer fit an int.
    const bool dbl = std::strstr(n, "_64f") != nullptr;
    const int order = in.ConsumeIntegralInRange<int>(13, dbl ? 27 : 28);
    Block out(3 * sizeof(int));
    int* p = out.as<int>();
    f(order, p, p + 1, p + 2);
    if (p[0] <= 0 || p[1] < 0 || p[2] < 0) fail("size out of range", n);
}

// ---- Radix core and bit reversal on the builders' tables --------------------------------------

template <class C>
using NormF = void (*)(const C*, C*, int, const void*, const Orv32u*, Orv8u*);
template <class C>
void core_norm(NormF<C> f, const char* n, FuzzedDataProvider& in, const char* tier) {
    using E = decltype(C::re);
    int order;
    if (!medium<E>(tier, in, order)) return;
    Tables<E> t(tier, order, sizeof(E) == 8);
    Block src(t.n * sizeof(C), in.ConsumeBool(), sizeof(E) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Block dst(t.n * sizeof(C), in.ConsumeBool(), sizeof(E) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Aligned work((sizeof(E) == 8 ? 16 : 8) * t.n);
    src.fill(in);
    const bool inPlace = in.ConsumeBool();
    const auto before = src.snapshot();
    f(src.as<C>(), inPlace ? src.as<C>() : dst.as<C>(), static_cast<int>(t.n), t.twd->data(), t.norm->template as<Orv32u>(),
      work.data());
    if (!inPlace && !src.same(before)) fail("source written", n);
}
template <class C>
void core_plain(void (*f)(C*, int, const void*, Orv8u*, int), const char*, FuzzedDataProvider& in, const char* tier) {
    using E = decltype(C::re);
    int order;
    if (!medium<E>(tier, in, order)) return;
    Tables<E> t(tier, order, sizeof(E) == 8);
    Block d(t.n * sizeof(C), in.ConsumeBool(), sizeof(E) * in.ConsumeIntegralInRange<size_t>(0, 7));
    Aligned work((sizeof(E) == 8 ? 16 : 8) * t.n);
    d.fill(in);
    f(d.as<C>(), static_cast<int>(t.n), t.twd->data(), work.data(), in.ConsumeBool() ? 1 : 0);
}
template <class E>
void cr_norm(void (*f)(const E*, const E*, E*, E*, int, const void*, const Orv32u*, Orv8u*), const char*,
             FuzzedDataProvider& in, const char* tier) {
    int order;
    if (!medium<E>(tier, in, order)) return;
    Tables<E> t(tier, order, sizeof(E) == 8);
    Block a(t.n * sizeof(E)), b(t.n * sizeof(E)), c(t.n * sizeof(E)), d(t.n * sizeof(E));
    a.fill(in);
    b.fill(in);
    Aligned work((sizeof(E) == 8 ? 16 : 8) * t.n);
    f(a.as<E>(), b.as<E>(), c.as<E>(), d.as<E>(), static_cast<int>(t.n), t.twd->data(), t.norm->template as<Orv32u>(),
      work.data());
}
template <class E>
void cr_plain(void (*f)(E*, E*, int, const void*, Orv8u*, int), const char*, FuzzedDataProvider& in, const char* tier) {
    int order;
    if (!medium<E>(tier, in, order)) return;
    Tables<E> t(tier, order, sizeof(E) == 8);
    Block a(t.n * sizeof(E)), b(t.n * sizeof(E));
    a.fill(in);
    b.fill(in);
    Aligned work((sizeof(E) == 8 ? 16 : 8) * t.n);
    f(a.as<E>(), b.as<E>(), static_cast<int>(t.n), t.twd->data(), work.data(), in.ConsumeBool() ? 1 : 0);
}

// Bit reversal of N = 2^order elements of `Bytes` bytes, in place or not,
// through the swap list (4, 8, 16, Blk) or the Norm table (S, C, D, Z).
template <size_t Bytes, bool Norm>
struct Rev {
    template <class P>
    static void one(void (*f)(P*, int, const Orv32u*), const char*, FuzzedDataProvider& in, const char* tier) {
        const int order = in.ConsumeIntegralInRange<int>(3, 14);
        Block d((size_t(1) << order) * Bytes, in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
        d.fill(in);
        Block tab(((size_t(1) << order) / 4 + 1) * 4);
        auto build = fn_in<decltype(&orvs_initTabBitRev)>(Norm ? "orvs_initTabBitRevNorm" : "orvs_initTabBitRev", tier);
        build(order, tab.as<Orv32u>());
        f(reinterpret_cast<P*>(d.data()), 1 << order, tab.as<Orv32u>());
    }
    template <class P>
    static void two(void (*f)(const P*, P*, int, const Orv32u*), const char* n, FuzzedDataProvider& in,
                    const char* tier) {
        const int order = in.ConsumeIntegralInRange<int>(3, 14);
        Block s((size_t(1) << order) * Bytes, in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
        Block d((size_t(1) << order) * Bytes, in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
        s.fill(in);
        Block tab(((size_t(1) << order) / 4 + 1) * 4);
        auto build = fn_in<decltype(&orvs_initTabBitRev)>(Norm ? "orvs_initTabBitRevNorm" : "orvs_initTabBitRev", tier);
        build(order, tab.as<Orv32u>());
        const auto before = s.snapshot();
        f(reinterpret_cast<const P*>(s.data()), reinterpret_cast<P*>(d.data()), 1 << order, tab.as<Orv32u>());
        if (!s.same(before)) fail("source written", n);
    }
};

// ---- Blocked kernels --------------------------------------------------------------------------

// rows rows of cols elements, stride elements apart, against a dense buffer;
// a row moves in units of 64 bytes.
template <class C>
void blk_merge(void (*f)(const C*, C*, int, int, int), const char*, FuzzedDataProvider& in, const char*) {
    const int unit = 64 / sizeof(C);
    const int rows = in.ConsumeIntegralInRange<int>(1, 64), cols = unit * in.ConsumeIntegralInRange<int>(1, 8);
    const int stride = cols + unit * in.ConsumeIntegralInRange<int>(0, 8);
    Block s((static_cast<size_t>(rows - 1) * stride + cols) * sizeof(C)), b(static_cast<size_t>(rows) * cols * sizeof(C), true, 0);
    s.fill(in);
    f(s.as<C>(), b.as<C>(), stride, rows, cols);
}
template <class C>
void blk_split(void (*f)(C*, const C*, int, int, int, int), const char*, FuzzedDataProvider& in, const char*) {
    const int unit = 64 / sizeof(C);
    const int rows = in.ConsumeIntegralInRange<int>(1, 64), cols = unit * in.ConsumeIntegralInRange<int>(1, 8);
    const int stride = cols + unit * in.ConsumeIntegralInRange<int>(0, 8);
    Block d((static_cast<size_t>(rows - 1) * stride + cols) * sizeof(C)), b(static_cast<size_t>(rows) * cols * sizeof(C), true, 0);
    b.fill(in);
    f(d.as<C>(), b.as<C>(), stride, rows, cols, in.ConsumeBool() ? 1 : 0);
}
template <class E>
void cr_merge(void (*f)(const E*, const E*, Orv8u*, int, int, int), const char*, FuzzedDataProvider& in, const char*) {
    const int unit = 64 / sizeof(E);
    const int rows = in.ConsumeIntegralInRange<int>(1, 64), cols = unit * in.ConsumeIntegralInRange<int>(1, 8);
    const int stride = cols + unit * in.ConsumeIntegralInRange<int>(0, 8);
    const size_t span = (static_cast<size_t>(rows - 1) * stride + cols) * sizeof(E);
    Block re(span), im(span), b(static_cast<size_t>(rows) * cols * 2 * sizeof(E), true, 0);
    re.fill(in);
    im.fill(in);
    f(re.as<E>(), im.as<E>(), b.data(), stride, rows, cols);
}
template <class E>
void cr_split(void (*f)(E*, E*, const Orv8u*, int, int, int), const char*, FuzzedDataProvider& in, const char*) {
    const int unit = 64 / sizeof(E);
    const int rows = in.ConsumeIntegralInRange<int>(1, 64), cols = unit * in.ConsumeIntegralInRange<int>(1, 8);
    const int stride = cols + unit * in.ConsumeIntegralInRange<int>(0, 8);
    const size_t span = (static_cast<size_t>(rows - 1) * stride + cols) * sizeof(E);
    Block re(span), im(span), b(static_cast<size_t>(rows) * cols * 2 * sizeof(E), true, 0);
    b.fill(in);
    f(re.as<E>(), im.as<E>(), b.data(), stride, rows, cols);
}

// Recombination of H = halfLen complex values with the tier's table of the
// real order log2(2H), H at least 8.
template <class E>
void recombine(void (*f)(E*, int, int, const void*), const char*, FuzzedDataProvider& in, const char* tier) {
    const int order = in.ConsumeIntegralInRange<int>(4, 14);
    const int h = 1 << (order - 1);
    const int baseOrder = order > 10 ? order : 10;
    Block base(((size_t(1) << baseOrder) / 4 + 1) * sizeof(E)), rec(size_t(1) << (order + 4));
    std::vector<E> tmp((size_t(1) << baseOrder) / 4 + 1);
    for (size_t k = 0; k < tmp.size(); ++k) tmp[k] = E(std::sin(6.283185307179586 * k / (1 << baseOrder)));
    std::memcpy(base.data(), tmp.data(), base.size());
    if constexpr (sizeof(E) == 4)
        fn_in<decltype(&orvs_initTabTwdRealRec_32f)>("orvs_initTabTwdRealRec_32f", tier)(order, base.as<E>(), baseOrder, rec.as<E>());
    else
        fn_in<decltype(&orvs_initTabTwdRealRec_64f)>("orvs_initTabTwdRealRec_64f", tier)(order, base.as<E>(), baseOrder, rec.as<E>());
    Block d(2 * static_cast<size_t>(h) * sizeof(E));
    d.fill(in);
    f(d.as<E>(), h, in.ConsumeBool() ? 1 : -1, rec.data());
}
template <class E>
void ccs_recombine(void (*f)(const E*, E*, int, int, const void*), const char*, FuzzedDataProvider& in, const char* tier) {
    const int order = in.ConsumeIntegralInRange<int>(4, 14);
    const int h = 1 << (order - 1);
    const int baseOrder = order > 10 ? order : 10;
    Block base(((size_t(1) << baseOrder) / 4 + 1) * sizeof(E)), rec(size_t(1) << (order + 4));
    std::vector<E> tmp((size_t(1) << baseOrder) / 4 + 1);
    for (size_t k = 0; k < tmp.size(); ++k) tmp[k] = E(std::sin(6.283185307179586 * k / (1 << baseOrder)));
    std::memcpy(base.data(), tmp.data(), base.size());
    if constexpr (sizeof(E) == 4)
        fn_in<decltype(&orvs_initTabTwdCcsRec_32f)>("orvs_initTabTwdCcsRec_32f", tier)(order, base.as<E>(), baseOrder, rec.as<E>());
    else
        fn_in<decltype(&orvs_initTabTwdCcsRec_64f)>("orvs_initTabTwdCcsRec_64f", tier)(order, base.as<E>(), baseOrder, rec.as<E>());
    Block s(2 * static_cast<size_t>(h) * sizeof(E)), d(2 * static_cast<size_t>(h) * sizeof(E));
    s.fill(in);
    const bool inPlace = in.ConsumeBool();
    f(s.as<E>(), inPlace ? s.as<E>() : d.as<E>(), h, in.ConsumeBool() ? 1 : -1, rec.data());
}

// The large path as its transforms use it: a complex (32f) or real (64f)
// transform of the tier's first large order, both directions, with and
// without a buffer. Reaches Large, Fact4/8/_Last, BlkMerge/Split, the block
// bit reversals and the large table builders of that tier.
template <class E>
void via_large(const char* tier, FuzzedDataProvider& in) {
    const Orders& o = (sizeof(E) == 4 ? k32f : k64f)[tier_index(tier)];
    if (o.large == 0 || in.ConsumeIntegralInRange<int>(0, 7) != 0) return;  // slow: one input in eight
    const int order = sizeof(E) == 4 ? o.large : o.large + 1;  // 64f: the real order above the complex one
    if constexpr (sizeof(E) == 4) {
        auto ia = fn_in<decltype(&orvsFFTInitAlloc_C_32fc)>("orvsFFTInitAlloc_C_32fc", tier);
        auto fw = fn_in<decltype(&orvsFFTFwd_CToC_32fc)>("orvsFFTFwd_CToC_32fc", tier);
        auto iv = fn_in<decltype(&orvsFFTInv_CToC_32fc)>("orvsFFTInv_CToC_32fc", tier);
        auto fr = fn_in<decltype(&orvsFFTFree_C_32fc)>("orvsFFTFree_C_32fc", tier);
        if (!ia) return;
        OrvFFTSpec_C_32fc* spec = nullptr;
        if (ia(&spec, order, OrvFftDivInv, 0) != 0) fail("large build refused", tier);
        Block a((size_t(1) << order) * sizeof(Orv32fc), in.ConsumeBool(), 4 * in.ConsumeIntegralInRange<size_t>(0, 7));
        a.fill(in);
        if (fw(a.as<Orv32fc>(), a.as<Orv32fc>(), spec, nullptr) != 0) fail("large forward refused", tier);
        if (iv(a.as<Orv32fc>(), a.as<Orv32fc>(), spec, nullptr) != 0) fail("large inverse refused", tier);
        fr(spec);
    } else {
        auto ia = fn_in<decltype(&orvsFFTInitAlloc_R_64f)>("orvsFFTInitAlloc_R_64f", tier);
        auto fw = fn_in<decltype(&orvsFFTFwd_RToPerm_64f)>("orvsFFTFwd_RToPerm_64f", tier);
        auto iv = fn_in<decltype(&orvsFFTInv_PermToR_64f)>("orvsFFTInv_PermToR_64f", tier);
        auto fr = fn_in<decltype(&orvsFFTFree_R_64f)>("orvsFFTFree_R_64f", tier);
        if (!ia) return;
        OrvFFTSpec_R_64f* spec = nullptr;
        if (ia(&spec, order, OrvFftDivInv, 0) != 0) fail("large build refused", tier);
        Block a((size_t(1) << order) * sizeof(Orv64f), in.ConsumeBool(), 8 * in.ConsumeIntegralInRange<size_t>(0, 7));
        a.fill(in);
        if (fw(a.as<Orv64f>(), a.as<Orv64f>(), spec, nullptr) != 0) fail("large forward refused", tier);
        if (iv(a.as<Orv64f>(), a.as<Orv64f>(), spec, nullptr) != 0) fail("large inverse refused", tier);
        fr(spec);
    }
}

#define TIER_ROW(fname, driver)                                                                        \
    {#fname, [](const char* n, FuzzedDataProvider& in) {                                               \
         if (const char* tier = pick_tier(n, in)) driver(fn_in<decltype(&fname)>(n, tier), n, in, tier); \
     }}
#define LARGE_ROW(fname, E)                                                                            \
    {#fname ":via-transform", [](const char*, FuzzedDataProvider& in) {                                \
         if (const char* tier = pick_tier(#fname, in)) via_large<E>(tier, in);                          \
     }}
#define DIRECT_ROW(fname, driver)                                                                      \
    {#fname, [](const char* n, FuzzedDataProvider& in) {                                               \
         if (const char* tier = pick_tier(n, in)) driver(fn_in<decltype(&fname)>(n, tier), n, in);     \
     }}

}  // namespace

static const Row kRows[] = {
    DIRECT_ROW(orvs_initTabTwdBase_32f, base_table),
    DIRECT_ROW(orvs_initTabTwdBase_64f, base_table),
    DIRECT_ROW(orvs_initTabBitRevNorm, bitrev_table),
    DIRECT_ROW(orvs_initTabBitRev, bitrev_table),
    DIRECT_ROW(orvs_initTabBitRevLarge, bitrev_large),
    DIRECT_ROW(orvs_initTabTwd_L1_32f, l1_table),
    DIRECT_ROW(orvs_initTabTwd_L1_64f, l1_table),
    DIRECT_ROW(orvs_initTabTwdRealRec_32f, rec_table),
    DIRECT_ROW(orvs_initTabTwdCcsRec_32f, rec_table),
    DIRECT_ROW(orvs_initTabTwdRealRec_64f, rec_table),
    DIRECT_ROW(orvs_initTabTwdCcsRec_64f, rec_table),
    DIRECT_ROW(orvs_getSizesTwd_Large_32f, sizes_large),
    DIRECT_ROW(orvs_getSizeTwd_Large_64f, sizes_large),
    TIER_ROW(orvs_cRadix4FwdNorm_32fc, core_norm),
    TIER_ROW(orvs_cRadix4InvNorm_32fc, core_norm),
    TIER_ROW(orvs_cRadix4FwdNorm_64fc, core_norm),
    TIER_ROW(orvs_cRadix4InvNorm_64fc, core_norm),
    TIER_ROW(orvs_cFftFwd_CoreMT_32fc, core_norm),
    TIER_ROW(orvs_cFftInv_CoreMT_32fc, core_norm),
    TIER_ROW(orvs_cFftFwd_CoreMT_64fc, core_norm),
    TIER_ROW(orvs_cFftInv_CoreMT_64fc, core_norm),
    TIER_ROW(orvs_cRadix4Fwd_32fc, core_plain),
    TIER_ROW(orvs_cRadix4Inv_32fc, core_plain),
    TIER_ROW(orvs_cRadix4Fwd_64fc, core_plain),
    TIER_ROW(orvs_cRadix4Inv_64fc, core_plain),
    TIER_ROW(orvs_crRadix4FwdNorm_32f, cr_norm),
    TIER_ROW(orvs_crRadix4InvNorm_32f, cr_norm),
    TIER_ROW(orvs_crRadix4FwdNorm_64f, cr_norm),
    TIER_ROW(orvs_crRadix4InvNorm_64f, cr_norm),
    TIER_ROW(orvs_crFftFwd_CoreMT_32f, cr_norm),
    TIER_ROW(orvs_crFftInv_CoreMT_32f, cr_norm),
    TIER_ROW(orvs_crFftFwd_CoreMT_64f, cr_norm),
    TIER_ROW(orvs_crFftInv_CoreMT_64f, cr_norm),
    TIER_ROW(orvs_crRadix4Fwd_32f, cr_plain),
    TIER_ROW(orvs_crRadix4Inv_32f, cr_plain),
    TIER_ROW(orvs_crRadix4Fwd_64f, cr_plain),
    TIER_ROW(orvs_crRadix4Inv_64f, cr_plain),
    TIER_ROW(orvs_BitRev1_4, (Rev<4, false>::one)),
    TIER_ROW(orvs_BitRev1_8, (Rev<8, false>::one)),
    TIER_ROW(orvs_BitRev1_16, (Rev<16, false>::one)),
    TIER_ROW(orvs_BitRev2_4, (Rev<4, false>::two)),
    TIER_ROW(orvs_BitRev2_8, (Rev<8, false>::two)),
    TIER_ROW(orvs_BitRev2_16, (Rev<16, false>::two)),
    TIER_ROW(orvs_BitRev1_S, (Rev<4, true>::one)),
    TIER_ROW(orvs_BitRev1_C, (Rev<8, true>::one)),
    TIER_ROW(orvs_BitRev1_D, (Rev<8, true>::one)),
    TIER_ROW(orvs_BitRev1_Z, (Rev<16, true>::one)),
    TIER_ROW(orvs_BitRev2_S, (Rev<4, true>::two)),
    TIER_ROW(orvs_BitRev2_C, (Rev<8, true>::two)),
    TIER_ROW(orvs_BitRev2_D, (Rev<8, true>::two)),
    TIER_ROW(orvs_BitRev2_Z, (Rev<16, true>::two)),
    TIER_ROW(orvs_cFft_BlkMerge_32fc, blk_merge),
    TIER_ROW(orvs_cFft_BlkMerge_64fc, blk_merge),
    TIER_ROW(orvs_cFft_BlkSplit_32fc, blk_split),
    TIER_ROW(orvs_cFft_BlkSplit_64fc, blk_split),
    TIER_ROW(orvs_crFft_BlkMerge_32f, cr_merge),
    TIER_ROW(orvs_crFft_BlkMerge_64f, cr_merge),
    TIER_ROW(orvs_crFft_BlkSplit_32f, cr_split),
    TIER_ROW(orvs_crFft_BlkSplit_64f, cr_split),
    TIER_ROW(orvs_cRealRecombine_32f, recombine),
    TIER_ROW(orvs_cRealRecombine_64f, recombine),
    TIER_ROW(orvs_cCcsRecombine_32f, ccs_recombine),
    TIER_ROW(orvs_cCcsRecombine_64f, ccs_recombine),
    LARGE_ROW(orvs_cFftFwd_Large_32fc, float),
    LARGE_ROW(orvs_cFftInv_Large_32fc, float),
    LARGE_ROW(orvs_cFftFwd_Large_64fc, double),
    LARGE_ROW(orvs_cFftInv_Large_64fc, double),
    LARGE_ROW(orvs_cFftFwd_Fact4_32fc, float),
    LARGE_ROW(orvs_cFftInv_Fact4_32fc, float),
    LARGE_ROW(orvs_cFftFwd_Fact8_32fc, float),
    LARGE_ROW(orvs_cFftInv_Fact8_32fc, float),
    LARGE_ROW(orvs_cFftFwd_Fact4_64fc, double),
    LARGE_ROW(orvs_cFftInv_Fact4_64fc, double),
    LARGE_ROW(orvs_cFftFwd_Fact8_64fc, double),
    LARGE_ROW(orvs_cFftInv_Fact8_64fc, double),
    LARGE_ROW(orvs_cFftFwd_Fact8_Last_32fc, float),
    LARGE_ROW(orvs_cFftInv_Fact8_Last_32fc, float),
    LARGE_ROW(orvs_cFftFwd_Fact8_Last_64fc, double),
    LARGE_ROW(orvs_cFftInv_Fact8_Last_64fc, double),
    LARGE_ROW(orvs_crFftFwd_Fact8_Last_32f, float),
    LARGE_ROW(orvs_crFftInv_Fact8_Last_32f, float),
    LARGE_ROW(orvs_crFftFwd_Fact8_Last_64f, double),
    LARGE_ROW(orvs_crFftInv_Fact8_Last_64f, double),
    LARGE_ROW(orvs_sBitRev1_Blk, float),
    LARGE_ROW(orvs_cBitRev1_Blk, float),
    LARGE_ROW(orvs_dBitRev1_Blk, double),
    LARGE_ROW(orvs_zBitRev1_Blk, double),
    LARGE_ROW(orvs_initTabTwd_Large_32f, float),
    LARGE_ROW(orvs_initTabTwd_Large_64f, double),
};

ORV_FUZZ_MAIN(kRows)
