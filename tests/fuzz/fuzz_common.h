// Shared machinery of the libFuzzer harnesses.
//
// Each harness holds a table of rows {public name, driver}; the driver knows
// the signature shape of the name. The input picks the row, the tier among
// those that export the name (plus the unprefixed stub where there is one,
// reached through a jump index the input picks), then sizes, steps, flags and
// data. Every array handed to the library lies flush against an inaccessible
// page, so an access outside it faults; outputs of a refused call must be
// unchanged, and every status must be one of the library's codes.
#pragma once

#include <dlfcn.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "orvcore.h"
#include "orvstatus.h"
#include "orvtiers.h"

namespace orvfuzz {

[[noreturn]] inline void fail(const char* what, const char* name) {
    std::fprintf(stderr, "orv fuzz failure: %s (%s)\n", what, name ? name : "?");
    std::fflush(stderr);
    __builtin_trap();
}

// ---- Tiered entry points -----------------------------------------------------

struct TierFn {
    const char* tier;
    const char* name;
    void* fn;
};

#define ORV_TIER_DECL(tier, name) {#tier, #name, reinterpret_cast<void*>(&tier##_##name)},
inline const TierFn kTierFns[] = {
#include "orvtiers.inc"
};
#undef ORV_TIER_DECL

inline bool tier_runs(const char* tier) {
    if (std::strcmp(tier, "e9") == 0) return __builtin_cpu_supports("avx");
    if (std::strcmp(tier, "y8") == 0) return __builtin_cpu_supports("sse4.1");
    if (std::strcmp(tier, "m7") == 0) return __builtin_cpu_supports("sse3");
    return __builtin_cpu_supports("ssse3");
}

// The callable forms of one name: its tier entries the processor runs, and the
// unprefixed stub when the name has one (found in the dynamic symbol table).
struct Callable {
    std::vector<void*> tiers;
    std::vector<const char*> tierNames;
    void* stub = nullptr;
};

inline const Callable& callable(const char* name) {
    static std::vector<std::pair<std::string, Callable>> cache;
    for (auto& e : cache)
        if (e.first == name) return e.second;
    Callable c;
    for (const TierFn& t : kTierFns)
        if (std::strcmp(t.name, name) == 0 && tier_runs(t.tier)) {
            c.tiers.push_back(t.fn);
            c.tierNames.push_back(t.tier);
        }
    c.stub = dlsym(RTLD_DEFAULT, name);
    cache.emplace_back(name, c);
    return cache.back().second;
}

// Highest jump index the processor may use: 0..5 -> m7 m7 u8 n8 y8 e9.
inline unsigned max_jump_index() {
    if (__builtin_cpu_supports("avx")) return 5;
    if (__builtin_cpu_supports("sse4.1")) return 4;
    return 3;
}

// Picks a tier entry or the stub; selects the stub's tier through the jump
// index, which the caller restores with JumpIndexGuard.
struct JumpIndexGuard {
    Orv32u saved = orvJumpIndexForMergedLibs;
    ~JumpIndexGuard() { orvJumpIndexForMergedLibs = saved; }
};

template <class F>
F pick(const char* name, FuzzedDataProvider& in) {
    const Callable& c = callable(name);
    const size_t n = c.tiers.size() + (c.stub ? 1 : 0);
    if (n == 0) return nullptr;
    const size_t k = in.ConsumeIntegralInRange<size_t>(0, n - 1);
    if (k < c.tiers.size()) return reinterpret_cast<F>(c.tiers[k]);
    orvJumpIndexForMergedLibs = in.ConsumeIntegralInRange<unsigned>(0, max_jump_index());
    return reinterpret_cast<F>(c.stub);
}

// ---- Statuses ------------------------------------------------------------------

inline void check_status(OrvStatus s, const char* name) {
    static const std::string unknown = orvGetStatusString(orvStsUnknownStatusCodeErr);
    if (s != orvStsUnknownStatusCodeErr && unknown == orvGetStatusString(s)) fail("undocumented status", name);
}

// ---- Guarded memory ------------------------------------------------------------

// `bytes` bytes between two inaccessible pages: flush against the page after
// (the default) or, with `atStart`, `misalign` bytes after the page before.
class Block {
public:
    Block(size_t bytes, bool atStart = false, size_t misalign = 0) : bytes_(bytes) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        if (!atStart) misalign = 0;
        const size_t body = (bytes + misalign + page - 1) / page * page;
        mapBytes_ = body + 2 * page;
        void* m = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) fail("mmap", nullptr);
        map_ = static_cast<unsigned char*>(m);
        mprotect(map_, page, PROT_NONE);
        mprotect(map_ + page + body, page, PROT_NONE);
        data_ = atStart ? map_ + page + misalign : map_ + page + body - bytes;
    }
    ~Block() { munmap(map_, mapBytes_); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    unsigned char* data() const { return data_; }
    size_t size() const { return bytes_; }
    template <class T>
    T* as() const { return reinterpret_cast<T*>(data_); }

    void fill(FuzzedDataProvider& in) {
        const std::vector<uint8_t> b = in.ConsumeBytes<uint8_t>(bytes_);
        if (!b.empty()) std::memcpy(data_, b.data(), b.size());
        for (size_t i = b.size(); i < bytes_; ++i) data_[i] = static_cast<unsigned char>(i * 37u + 11u);
    }
    void pattern(unsigned char seed) {
        for (size_t i = 0; i < bytes_; ++i) data_[i] = static_cast<unsigned char>(seed + i * 131u);
    }
    std::vector<unsigned char> snapshot() const { return {data_, data_ + bytes_}; }
    bool same(const std::vector<unsigned char>& s) const {
        return bytes_ == 0 || std::memcmp(s.data(), data_, bytes_) == 0;
    }

private:
    unsigned char* map_ = nullptr;
    size_t mapBytes_ = 0;
    unsigned char* data_ = nullptr;
    size_t bytes_ = 0;
};

// A guarded block with its contents before the call; `check` enforces the
// rule that a refused call writes nothing.
struct Out {
    Block& b;
    std::vector<unsigned char> before;
    explicit Out(Block& blk) : b(blk), before(blk.snapshot()) {}
    void unchanged_if_refused(OrvStatus s, const char* name) const {
        if (s < 0 && !b.same(before)) fail("refused call wrote its output", name);
    }
};

// ---- Sizes -----------------------------------------------------------------------

// A length that is mostly small and valid, sometimes zero or negative, and
// never large enough to allocate much.
inline int length(FuzzedDataProvider& in, int maxLen) {
    switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0: return -in.ConsumeIntegralInRange<int>(0, 3) - (in.ConsumeBool() ? 0 : 0x7FFFFFF0);
    case 1: return 0;
    case 2: return in.ConsumeIntegralInRange<int>(1, 8);
    default: return in.ConsumeIntegralInRange<int>(1, maxLen);
    }
}

inline size_t count(int len) { return len > 0 ? static_cast<size_t>(len) : 0; }

// Floating-point values the input spells out, with the specials reachable.
template <class T>
T value(FuzzedDataProvider& in) {
    switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0: return T(0);
    case 1: return T(1);
    case 2: return T(-1.5);
    case 3: return static_cast<T>(in.ConsumeIntegralInRange<int>(-300, 300));
    default: {
        T v;
        const std::vector<uint8_t> b = in.ConsumeBytes<uint8_t>(sizeof(T));
        std::memset(&v, 0, sizeof v);
        if (!b.empty()) std::memcpy(&v, b.data(), b.size());
        return v;
    }
    }
}

// ---- Tables of rows ----------------------------------------------------------------

struct Row {
    const char* name;
    void (*drive)(const char* name, FuzzedDataProvider& in);
};

// ROW(name, driver): the driver template is instantiated on the name's own
// function type, so a shape that does not fit the signature does not compile.
#define ORV_FUZZ_ROW(fname, driver)                                                               \
    {#fname, [](const char* n, FuzzedDataProvider& in) {                                          \
         using F = decltype(&fname);                                                              \
         if (F f = ::orvfuzz::pick<F>(n, in)) driver(f, n, in);                                   \
     }}

// Lists the table (one name a line) when ORV_FUZZ_LIST is set, so that a
// script can check every exported name has a row; exits.
inline void maybe_list(const Row* rows, size_t n) {
    if (!std::getenv("ORV_FUZZ_LIST")) return;
    for (size_t i = 0; i < n; ++i) std::printf("%s\n", rows[i].name);
    std::exit(0);
}

inline void check_table(const Row* rows, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (std::strchr(rows[i].name, ':')) continue;  // a row of functions outside the tables
        const Callable& c = callable(rows[i].name);
        if (c.tiers.empty() && !c.stub) fail("row without an entry point", rows[i].name);
    }
}

inline int run_one(const Row* rows, size_t n, const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const Row& r = rows[in.ConsumeIntegralInRange<size_t>(0, n - 1)];
    JumpIndexGuard jg;
    r.drive(r.name, in);
    return 0;
}

}  // namespace orvfuzz

#define ORV_FUZZ_MAIN(rows)                                                                       \
    extern "C" int LLVMFuzzerInitialize(int*, char***) {                                          \
        ::orvfuzz::maybe_list(rows, sizeof(rows) / sizeof(rows[0]));                              \
        orvStaticInit();                                                                          \
        ::orvfuzz::check_table(rows, sizeof(rows) / sizeof(rows[0]));                             \
        return 0;                                                                                 \
    }                                                                                             \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {                     \
        return ::orvfuzz::run_one(rows, sizeof(rows) / sizeof(rows[0]), data, size);              \
    }
