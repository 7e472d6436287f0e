// The documented sizes of FFT specifications and the per-tier thresholds
// behind them, written out independently of the library's own tables: the
// expected GetSize figures of every kind, tier and order.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orv::test::fftspec {

// ---- The documented sizes, per element type and tier ----------------------
struct Run {
    int from, to, value;
};
struct TierRow {
    int realSmall, cplxSmall, largeFrom, highestReal, twoLevel, blockOrder, orderBlk;
    std::vector<Run> blk, buf;
};
inline const TierRow& row(bool dbl, const std::string& t) {
    static const std::map<std::string, TierRow> f32 = {
        {"e9", {4, 6, 19, 29, 19, 6, 19, {{19, 22, 4}, {23, 30, 8}}, {{19, 22, 10}, {23, 30, 14}}}},
        {"y8", {4, 5, 18, 29, 21, 6, 19, {{18, 19, 4}, {20, 30, 8}}, {{18, 19, 10}, {20, 30, 14}}}},
        {"n8", {4, 5, 16, 29, 18, 5, 17, {{16, 18, 4}, {19, 20, 6}, {21, 30, 8}}, {{16, 18, 10}, {19, 30, 14}}}},
        {"m7", {4, 5, 17, 29, 19, 6, 20, {{17, 20, 4}, {21, 21, 6}, {22, 30, 8}},
                {{17, 17, 9}, {18, 20, 10}, {21, 21, 13}, {22, 30, 15}}}},
    };
    static const std::map<std::string, TierRow> f64 = {
        {"e9", {4, 6, 18, 28, 17, 5, 18, {{18, 21, 4}, {22, 30, 8}}, {{18, 21, 9}, {22, 30, 13}}}},
        {"y8", {5, 5, 17, 28, 19, 5, 18, {{17, 18, 6}, {19, 30, 8}}, {{17, 18, 10}, {19, 30, 13}}}},
        {"n8", {5, 5, 13, 27, 18, 5, 14, {{14, 14, 4}, {15, 18, 6}, {19, 19, 4}, {20, 30, 6}},
                {{14, 21, 10}, {22, 30, 12}}}},
        {"u8", {5, 5, 17, 28, 17, 5, 18, {{17, 19, 6}, {20, 20, 7}, {21, 30, 8}},
                {{17, 19, 10}, {20, 20, 11}, {21, 30, 13}}}},
        {"m7", {5, 5, 15, 28, 18, 6, 19, {{15, 18, 4}, {19, 20, 6}, {21, 30, 8}},
                {{15, 15, 8}, {16, 18, 10}, {19, 20, 13}, {21, 30, 14}}}},
    };
    const auto it = (dbl ? f64 : f32).find(t);
    if (it == (dbl ? f64 : f32).end()) throw std::runtime_error("no row for tier " + t);
    return it->second;
}
inline int lookup(const std::vector<Run>& runs, int order) {
    for (const Run& r : runs)
        if (order >= r.from && order <= r.to) return r.value;
    return 0;
}
inline long long L(long long x) { return x & ~31LL; }

struct Sizes {
    long long spec, init, work;
    bool operator==(const Sizes&) const = default;
};

// Twiddle and work bytes of a large complex transform of order m.
inline void large(const TierRow& r, bool dbl, const std::string& tier, int m, long long& twd, long long& work) {
    const long long E = dbl ? 16 : 8, Q = 1LL << (m - 2);
    const int blk = lookup(r.blk, m);
    if (blk == 0) {
        const long long C = dbl ? 1 << 18
                                : tier == "e9" ? 1 << 21 : tier == "y8" ? 1 << 20 : tier == "n8" ? 1 << 18 : 1 << 19;
        twd = L(E * Q + 31) + C + 32, work = C;
    } else {
        std::function<void(int)> level = [&](int o) {
            const int sub = o - lookup(r.blk, o);
            if (sub < r.largeFrom) twd = L(E * (1LL << sub) + E + 31), work = L(E * (1LL << sub) + 31);
            else level(sub);
            twd += E << (o - 1);
            work = std::max(work, E << lookup(r.buf, o));
        };
        level(m);
    }
    if (m < r.orderBlk) {
        twd += L(4 * Q + 35);
    } else {
        twd += r.blockOrder == 6 ? (4LL << (m - 12)) + 4128 : (4LL << (m - 10)) + 1056;
        const long long least = dbl ? (r.blockOrder == 6 ? 0x20000 : 0x8000) : (r.blockOrder == 6 ? 0x10000 : 0x4000);
        work = std::max(work, least);
    }
}

// Bytes of each recombination table of a real order.
inline long long rec_bytes(bool dbl, const std::string& tier, int order) {
    const long long Q = 1LL << (order - 2);
    if (order < row(dbl, tier).twoLevel) return dbl ? L(16 * Q + 31) : L(8 * Q + 31);
    return dbl ? L(16 * (1LL << (order - 11)) + 8223) : L(8 * (1LL << (order - 12)) + 8223);
}

enum Kind { C32, R32, R64 };
const char* const kKindName[] = {"C32fc", "R32f", "R64f"};

inline Sizes expected(Kind kind, const std::string& tier, int order) {
    const bool dbl = kind == R64;
    const TierRow& r = row(dbl, tier);
    const long long N = 1LL << order, Q = N / 4, E = dbl ? 16 : 8;
    long long twd = 0, work = 0, spec;
    if (kind == C32) {
        if (order <= r.cplxSmall) return {168, 0, 0};
        if (order < r.largeFrom) twd = L(8 * N + 39) + L(4 * Q + 35), work = L(8 * N + 31);
        else large(r, false, tier, order, twd, work);
        spec = twd + 192;
    } else {
        if (order <= r.realSmall) return {168, 0, 0};
        const long long H = N / 2;
        if (order - 1 > r.cplxSmall) {
            if (order - 1 < r.largeFrom) twd = L(E * H + E + 31) + L(4 * (H / 4) + 35), work = L(E * H + 31);
            else large(r, dbl, tier, order - 1, twd, work);
        }
        spec = twd + 2 * rec_bytes(dbl, tier, order) + 192;
    }
    const long long init = order < 11 ? 0 : dbl ? L(8 * Q + 39) + 32 : L(4 * Q + 35) + 32;
    return {spec, init, work > 0 ? work + 32 : 0};
}

inline int highest(Kind kind, const std::string& tier) { return kind == C32 ? 28 : row(kind == R64, tier).highestReal; }
inline int small_limit(Kind kind, const std::string& tier) {
    const TierRow& r = row(kind == R64, tier);
    return kind == C32 ? r.cplxSmall : r.realSmall;
}

}  // namespace orv::test::fftspec
