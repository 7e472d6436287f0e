// The error layer of the scalar functions: the reporting mode
// _LIB_VERSIONZMT, the replaceable matherr hooks, errno, and the per-mode
// code tables that __libm_error_support dispatches through.
#include <cerrno>
#include <cstring>
#include <string_view>

#include "error_codes.h"
#include "libm.h"
#include "orvmath.h"

using MatherrFunction = OrvMatherrFunction;

// The default hooks: they ignore the record and accept the error.
int matherr(void*) { return 1; }
int matherrf(void*) { return 1; }
int matherrl(void*) { return 1; }

// The reporting mode and the hook pointers: plain exported data.
int _LIB_VERSIONZMT = 3;
MatherrFunction __libm_pmatherr = matherr;
MatherrFunction __libm_pmatherrf = matherrf;
MatherrFunction __libm_pmatherrl = matherrl;

namespace {
void* set_hook(MatherrFunction& slot, MatherrFunction fallback, MatherrFunction fn) {
    if (!fn) {
        slot = fallback;
        return reinterpret_cast<void*>(fallback);
    }
    slot = fn;
    return &slot;
}
}  // namespace

void* __libm_setusermatherr(MatherrFunction fn) { return set_hook(__libm_pmatherr, matherr, fn); }
void* __libm_setusermatherrf(MatherrFunction fn) { return set_hook(__libm_pmatherrf, matherrf, fn); }
void* __libm_setusermatherrl(MatherrFunction fn) { return set_hook(__libm_pmatherrl, matherrl, fn); }

// Constant tables: the positive value, then the negative one.
extern "C" {
__attribute__((visibility("hidden"))) extern const uint32_t __libm_float_zero[2] = {0x00000000, 0x80000000};
__attribute__((visibility("hidden"))) extern const uint32_t __libm_float_one[2] = {0x3F800000, 0xBF800000};
__attribute__((visibility("hidden"))) extern const uint32_t __libm_float_inf[2] = {0x7F800000, 0xFF800000};
__attribute__((visibility("hidden"))) extern const uint32_t __libm_float_huge[2] = {0x7F7FFFFF, 0xFF7FFFFF};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_double_zero[2] = {0, 0x8000000000000000};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_double_one[2] = {0x3FF0000000000000,
                                                                                   0xBFF0000000000000};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_double_inf[2] = {0x7FF0000000000000,
                                                                                   0xFFF0000000000000};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_double_huge[2] = {0x7FEFFFFFFFFFFFFF,
                                                                                    0xFFEFFFFFFFFFFFFF};
// x87 extended values in 16-byte slots: mantissa word, then sign and exponent.
__attribute__((visibility("hidden"))) extern const uint64_t __libm_ldouble_zero[4] = {0, 0, 0, 0x8000};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_ldouble_one[4] = {0x8000000000000000, 0x3FFF,
                                                                                    0x8000000000000000, 0xBFFF};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_ldouble_inf[4] = {0x8000000000000000, 0x7FFF,
                                                                                    0x8000000000000000, 0xFFFF};
__attribute__((visibility("hidden"))) extern const uint64_t __libm_ldouble_huge[4] = {
    0xFFFFFFFFFFFFFFFF, 0x7FFE, 0xFFFFFFFFFFFFFFFF, 0xFFFE};
}

extern "C" int write_message(int number);

namespace orv::libm::errors {
namespace {

constexpr Table kTable = make_table();
static_assert(count_code(kTable) == kCodeCount, "every code is defined");
static_assert(count_c99(kTable, C99::Erange) == 121 && count_c99(kTable, C99::Edom) == 97 &&
                  count_c99(kTable, C99::Nothing) == 36 && count_c99(kTable, C99::ErangeIfZeroF) == 12 &&
                  count_c99(kTable, C99::ErangeIfZeroD) == 12 && count_c99(kTable, C99::ErangeIfZeroL) == 11,
              "mode 3 actions");
static_assert(kTable.rows[2].c.type == kSing && kTable.rows[3].c.type == kDomain &&
                  std::string_view(kTable.rows[49].name) == "sqrt",
              "the codes the library itself raises");

// The element type's view of the result and arguments.
template <class T>
struct Elem;
template <>
struct Elem<float> {
    using Exc = OrvMathExceptionF;
    static MatherrFunction hook() { return __libm_pmatherrf; }
    static float huge() { float f; std::memcpy(&f, &__libm_float_huge[0], 4); return f; }
    static float inf() { float f; std::memcpy(&f, &__libm_float_inf[0], 4); return f; }
};
template <>
struct Elem<double> {
    using Exc = OrvMathException;
    static MatherrFunction hook() { return __libm_pmatherr; }
    // HUGE of the old modes is the largest float, also for double results.
    static double huge() { return Elem<float>::huge(); }
    static double inf() { double d; std::memcpy(&d, &__libm_double_inf[0], 8); return d; }
};
template <>
struct Elem<long double> {
    using Exc = OrvMathExceptionL;
    static MatherrFunction hook() { return __libm_pmatherrl; }
    static long double huge() { return Elem<float>::huge(); }
    static long double inf() { return Elem<double>::inf(); }
};

template <class T>
T result_value(Result kind, T current) {
    switch (kind) {
        case Result::Zero: return T(0);
        case Result::NegHuge: return -Elem<T>::huge();
        case Result::SignedHuge: return __builtin_signbit(current) ? -Elem<T>::huge() : Elem<T>::huge();
        case Result::NegInf: return -Elem<T>::inf();
        case Result::Unchanged: break;
    }
    return current;
}

// The hook modes: fill the record, call the hook, take its result back; on a
// 0 from the hook, the message (mode 0 only) and errno.
template <class T>
void through_hook(const Row& row, Result kind, bool withMessage, const void* a1, const void* a2, void* ret) {
    typename Elem<T>::Exc exc;
    std::memcpy(&exc.arg1, a1, sizeof(T));
    std::memcpy(&exc.arg2, a2, sizeof(T));
    T current;
    std::memcpy(&current, ret, sizeof(T));
    exc.type = row.c.type;
    exc.name = row.name;
    exc.retval = result_value(kind, current);
    int handled = Elem<T>::hook()(&exc);
    std::memcpy(ret, &exc.retval, sizeof(T));
    if (!handled) {
        if (withMessage && row.message >= 0) write_message(row.message);
        errno = row.c.hookErrno;
    }
}

template <class T>
void posix(const Row& row, void* ret) {
    T current;
    std::memcpy(&current, ret, sizeof(T));
    T v = result_value(row.c.posix, current);
    std::memcpy(ret, &v, sizeof(T));
    if (row.c.posixErrno) errno = row.c.posixErrno;
}

template <class T>
bool is_zero(const void* p) {
    T v;
    std::memcpy(&v, p, sizeof(T));
    return v == T(0);
}

void c99(const Row& row, const void* ret) {
    switch (row.c.c99) {
        case C99::Erange: errno = ERANGE_; break;
        case C99::Edom: errno = EDOM_; break;
        case C99::Nothing: break;
        case C99::ErangeIfZeroF: if (is_zero<float>(ret)) errno = ERANGE_; break;
        case C99::ErangeIfZeroD: if (is_zero<double>(ret)) errno = ERANGE_; break;
        case C99::ErangeIfZeroL: if (is_zero<long double>(ret)) errno = ERANGE_; break;
    }
}

template <class F>
void by_elem(const Row& row, F&& f) {
    switch (row.elem) {
        case kFloat: f(float{}); break;
        case kDouble: f(double{}); break;
        case kLongDouble: f((long double){}); break;
    }
}

}  // namespace
}  // namespace orv::libm::errors

// Mode -1: nothing. Mode 3 (default): errno only. Mode 2: result and errno.
// Mode 0: the hook, then message and errno. Any other mode: the hook, then
// errno. Codes beyond a mode's table do nothing.
void __libm_error_support(const void* arg1, const void* arg2, void* retval, int code) {
    using namespace orv::libm::errors;
    int mode = _LIB_VERSIONZMT;
    if (mode == -1 || code < 0) return;
    if (mode == 3) {
        if (code < kCodeCount) c99(kTable.rows[code], retval);
        return;
    }
    if (code >= kModeTableSize) return;
    const Row& row = kTable.rows[code];
    by_elem(row, [&](auto zero) {
        using T = decltype(zero);
        if (mode == 2)
            posix<T>(row, retval);
        else if (mode == 0)
            through_hook<T>(row, row.c.svid, true, arg1, arg2, retval);
        else
            through_hook<T>(row, row.c.other, false, arg1, arg2, retval);
    });
}
