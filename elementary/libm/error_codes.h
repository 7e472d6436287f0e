// The code table of the error layer: every code names a function, its
// element type and a condition, and the condition fixes what each reporting
// mode does. Codes run by function, then element type (long double, double,
// float), then condition, so log of zero in double is code 2, log of a
// negative double code 3 and sqrt of a negative double code 49.
//
// The table is expanded at compile time from a short list of function
// groups. Modes other than 3 know the first kModeTableSize codes; mode 3
// knows all kCodeCount.
#pragma once

#include <cstdint>

namespace orv::libm::errors {

// Record type of the hook's exception record.
enum ExcType : uint8_t { kDomain = 1, kSing = 2, kOverflow = 3, kUnderflow = 4, kTLoss = 5, kPLoss = 6 };

// What mode 3 does: set errno 34 or 33, nothing, or errno 34 only when the
// (float, double, long double) result is zero.
enum class C99 : uint8_t { Erange, Edom, Nothing, ErangeIfZeroF, ErangeIfZeroD, ErangeIfZeroL };

// A result a mode may store.
enum class Result : uint8_t { Unchanged, Zero, NegHuge, SignedHuge, NegInf };

enum Elem : uint8_t { kLongDouble = 0, kDouble = 1, kFloat = 2 };

// The behaviour of one condition in every mode.
struct Condition {
    ExcType type;
    C99 c99;
    Result svid;       // mode 0
    Result posix;      // mode 2
    Result other;      // modes other than -1, 0, 2, 3
    uint8_t posixErrno;  // 0: none
    uint8_t hookErrno;   // modes 0 and other, when the hook returns 0
    bool noC99ForLong;   // mode 3 does nothing for the long double variant
};

constexpr uint8_t EDOM_ = 33, ERANGE_ = 34;

namespace cond {
using R = Result;
// log-like functions at zero and below zero.
constexpr Condition LogSing{kSing, C99::Erange, R::NegHuge, R::NegInf, R::NegInf, ERANGE_, EDOM_, false};
constexpr Condition LogDom{kDomain, C99::Edom, R::NegHuge, R::Unchanged, R::NegInf, EDOM_, EDOM_, false};
// Reported as a domain error, but a pole in mode 3 (y0(0), pow(0, negative)).
constexpr Condition DomPole{kDomain, C99::Erange, R::NegHuge, R::NegInf, R::NegInf, ERANGE_, EDOM_, false};
constexpr Condition Dom{kDomain, C99::Edom, R::Zero, R::Unchanged, R::Unchanged, EDOM_, EDOM_, false};
// Reported as a domain error in the old modes only (pow(0, 0), atan2(0, 0)).
constexpr Condition DomOld{kDomain, C99::Nothing, R::Zero, R::Unchanged, R::Unchanged, 0, EDOM_, false};
constexpr Condition Sing{kSing, C99::Erange, R::SignedHuge, R::Unchanged, R::Unchanged, ERANGE_, EDOM_, false};
constexpr Condition Over{kOverflow, C99::Erange, R::SignedHuge, R::Unchanged, R::Unchanged, ERANGE_, ERANGE_,
                         false};
constexpr Condition Under{kUnderflow, C99::ErangeIfZeroD, R::Zero, R::Unchanged, R::Unchanged, ERANGE_, ERANGE_,
                          false};
constexpr Condition UnderNoLong{kUnderflow, C99::ErangeIfZeroD, R::Zero, R::Unchanged, R::Unchanged, ERANGE_,
                                ERANGE_, true};
constexpr Condition TLoss{kTLoss, C99::Nothing, R::Zero, R::Unchanged, R::Unchanged, ERANGE_, ERANGE_, false};
constexpr Condition PLoss{kPLoss, C99::Nothing, R::Unchanged, R::Unchanged, R::Unchanged, 0, ERANGE_, false};
}  // namespace cond

// One condition of a group with its mode-0 message: the long double
// variant's number, the others follow at `stride`; -1 for none.
struct GroupCond {
    Condition c;
    int16_t message;
    uint8_t stride;
};

constexpr int kMaxConds = 5;
struct Group {
    const char* name;
    const char* types;  // element types present, in order: "ldf", "df", "d"
    int count;
    GroupCond conds[kMaxConds];
};

constexpr GroupCond M(Condition c, int message = -1, int stride = 1) {
    return {c, static_cast<int16_t>(message), static_cast<uint8_t>(stride)};
}

using namespace cond;
// clang-format off
constexpr Group kGroups[] = {
    {"log", "ldf", 2, {M(LogSing, 1), M(LogDom, 4)}},
    {"y0", "ldf", 2, {M(DomPole, 7), M(LogDom, 10)}},
    {"y1", "ldf", 2, {M(DomPole, 13), M(LogDom, 16)}},
    {"yn", "ldf", 2, {M(DomPole, 19), M(LogDom, 22)}},
    {"log1p", "ldf", 2, {M(LogSing, 25), M(LogDom, 28)}},
    {"log10", "ldf", 2, {M(LogSing, 31), M(LogDom, 34)}},
    {"log2", "ldf", 2, {M(LogSing, 37), M(LogDom, 40)}},
    {"exp", "ldf", 2, {M(Over), M(Under)}},
    {"sqrt", "ldf", 1, {M(Dom, 55)}},
    {"pow", "ldf", 5, {M(DomOld, 43), M(DomPole, 46), M(Dom, 49), M(Over), M(Under)}},
    {"atan2", "ldf", 1, {M(DomOld, 52)}},
    {"fmod", "ldf", 1, {M(Dom, 58)}},
    {"remainder", "ldf", 1, {M(Dom, 61)}},
    {"acos", "ldf", 1, {M(Dom, 64)}},
    {"asin", "ldf", 1, {M(Dom, 67)}},
    {"acosh", "ldf", 1, {M(Dom, 70)}},
    {"atanh", "ldf", 2, {M(Dom, 73), M(Sing, 76)}},
    {"lgamma", "ldf", 2, {M(Over), M(Sing, 79)}},
    {"gamma", "ldf", 2, {M(Over), M(Sing, 82)}},
    {"tgamma", "ldf", 4, {M(Over), M(Under), M(Sing), M(Dom, 85)}},
    {"j0", "ldf", 1, {M(TLoss, 88, 6)}},
    {"y0", "ldf", 1, {M(TLoss, 89, 6)}},
    {"j1", "ldf", 1, {M(TLoss, 90, 6)}},
    {"y1", "ldf", 1, {M(TLoss, 91, 6)}},
    {"jn", "ldf", 1, {M(TLoss, 92, 6)}},
    {"yn", "ldf", 1, {M(TLoss, 93, 6)}},
    {"acosd", "ldf", 1, {M(Dom, 106)}},
    {"asind", "ldf", 1, {M(Dom, 109)}},
    {"atan2d", "ldf", 1, {M(DomOld, 112)}},
    {"annuity", "ldf", 3, {M(Dom, 115), M(Dom, 118), M(Over)}},
    {"compound", "ldf", 3, {M(Dom, 121), M(Dom, 124), M(Over)}},
    {"erfinv", "ldf", 2, {M(Dom, 127), M(Sing, 130)}},
    {"exp2", "ldf", 2, {M(Over), M(Under)}},
    {"exp10", "ldf", 2, {M(Over), M(Under)}},
    {"pow10", "d", 1, {M(Over)}},
    {"expm1", "ldf", 1, {M(Over)}},
    {"cosh", "ldf", 1, {M(Over)}},
    {"sinh", "ldf", 1, {M(Over)}},
    {"ldexp", "ldf", 2, {M(Over), M(Under)}},
    {"scalb", "ldf", 2, {M(Over), M(Under)}},
    {"scalbn", "ldf", 2, {M(Over), M(Under)}},
    {"scalbln", "ldf", 2, {M(Over), M(Under)}},
    {"nextafter", "ldf", 2, {M(Over), M(Under)}},
    {"nexttoward", "ldf", 2, {M(Over), M(UnderNoLong)}},
    {"erfc", "ldf", 1, {M(Under)}},
    {"hypot", "ldf", 1, {M(Over)}},
    {"drem", "d", 1, {M(Dom)}},
    {"sin", "ldf", 2, {M(Dom), M(PLoss)}},
    {"cos", "ldf", 1, {M(Dom)}},
    {"cos", "df", 1, {M(PLoss)}},
    {"tan", "ldf", 2, {M(Dom), M(PLoss)}},
    {"cot", "ldf", 1, {M(Sing)}},
    {"cotd", "ldf", 1, {M(Sing)}},
    {"tand", "ldf", 1, {M(Sing)}},
    {"logb", "ldf", 1, {M(Sing)}},
    {"fdim", "ldf", 1, {M(Over)}},
    {"fma", "ldf", 1, {M(Over)}},
    {"powr", "ldf", 1, {M(Over)}},
    {"lgamma_r", "ldf", 1, {M(Sing)}},
    {"ilogb", "ldf", 1, {M(Dom)}},
    {"lrint", "ldf", 1, {M(Dom)}},
    {"lround", "ldf", 1, {M(Dom)}},
    {"llrint", "ldf", 1, {M(Dom)}},
    {"llround", "ldf", 1, {M(Dom)}},
    {"sincos", "ldf", 1, {M(Dom)}},
};
// clang-format on

constexpr int kCodeCount = 289;
constexpr int kModeTableSize = 279;

// One expanded code.
struct Row {
    char name[16];  // the function's name with its type suffix
    Elem elem;
    Condition c;
    int16_t message;
};

constexpr Elem elem_of(char t) { return t == 'l' ? kLongDouble : t == 'd' ? kDouble : kFloat; }

struct Table {
    Row rows[kCodeCount];
};

constexpr Table make_table() {
    Table t{};
    int code = 0;
    for (const Group& g : kGroups) {
        for (const char* tp = g.types; *tp; ++tp) {
            Elem e = elem_of(*tp);
            for (int c = 0; c < g.count; ++c) {
                Row& r = t.rows[code++];
                int n = 0;
                for (const char* s = g.name; *s; ++s) r.name[n++] = *s;
                if (e != kDouble) r.name[n++] = e == kFloat ? 'f' : 'l';
                r.elem = e;
                r.c = g.conds[c].c;
                // Underflow tests the zero of its own element type.
                if (r.c.c99 == C99::ErangeIfZeroD)
                    r.c.c99 = e == kFloat ? C99::ErangeIfZeroF : e == kDouble ? C99::ErangeIfZeroD
                                                                               : C99::ErangeIfZeroL;
                if (r.c.noC99ForLong && e == kLongDouble) r.c.c99 = C99::Nothing;
                r.message = g.conds[c].message < 0 ? -1
                                                   : static_cast<int16_t>(g.conds[c].message +
                                                                          g.conds[c].stride * e);
            }
        }
    }
    return t;
}

constexpr int count_code(const Table& t) {
    int n = 0;
    for (const Row& r : t.rows) n += r.name[0] != 0;
    return n;
}
constexpr int count_c99(const Table& t, C99 a) {
    int n = 0;
    for (const Row& r : t.rows) n += r.c.c99 == a;
    return n;
}

}  // namespace orv::libm::errors
