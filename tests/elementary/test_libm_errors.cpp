// Special arguments and the error layer: results and errno in every
// reporting mode, the hooks and their records, a hook that replaces the
// result, the shape of the code tables, and the message path with a
// catalogue that cannot be found (in a child process: it changes LANG).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "libm_access.h"
#include "orvmath.h"

namespace orv::test {
namespace {

// The layer's entries and data in orv. Hooks by element type: 0 double,
// 1 float, 2 long double.
struct Layer {
    ScalarFn cos = orv_sym<ScalarFn>("cos"), sin = orv_sym<ScalarFn>("sin"), log = orv_sym<ScalarFn>("log");
    ScalarFn sqrt = orv_sym<ScalarFn>("sqrt"), logA = orv_sym<ScalarFn>("log.A"), logL = orv_sym<ScalarFn>("log.L");
    void (*error_support)(const void*, const void*, void*, int) =
        orv_sym<decltype(error_support)>("__libm_error_support");
    int* mode = orv_sym<int*>("_LIB_VERSIONZMT");
    using Set = void* (*)(OrvMatherrFunction);
    Set set[3] = {orv_sym<Set>("__libm_setusermatherr"), orv_sym<Set>("__libm_setusermatherrf"),
                  orv_sym<Set>("__libm_setusermatherrl")};
    OrvMatherrFunction* hook[3] = {orv_sym<OrvMatherrFunction*>("__libm_pmatherr"),
                                   orv_sym<OrvMatherrFunction*>("__libm_pmatherrf"),
                                   orv_sym<OrvMatherrFunction*>("__libm_pmatherrl")};
    OrvMatherrFunction fallback[3] = {orv_sym<OrvMatherrFunction>("matherr"),
                                      orv_sym<OrvMatherrFunction>("matherrf"),
                                      orv_sym<OrvMatherrFunction>("matherrl")};
};
const Layer& libm() {
    static const Layer l;
    return l;
}

using RecordD = OrvMathException;
using RecordF = OrvMathExceptionF;
using RecordL = OrvMathExceptionL;

// What the last hook call saw, and what the hook does.
struct HookState {
    int calls = 0;
    RecordD seen{};
    int answer = 1;
    bool replace = false;
    double replacement = 0;
};
HookState g_hook;

int recording_hook(void* p) {
    auto* r = static_cast<RecordD*>(p);
    ++g_hook.calls;
    g_hook.seen = *r;
    if (g_hook.replace) r->retval = g_hook.replacement;
    return g_hook.answer;
}

// Every test starts in the default mode with the default hooks.
class LibmErrors : public ::testing::Test {
protected:
    void SetUp() override {
        g_hook = HookState{};
        *libm().mode = 3;
        for (auto set : libm().set) set(nullptr);
    }
    void TearDown() override { SetUp(); }
};

// The result and errno of one call, errno cleared first.
struct Outcome {
    double value;
    int err;
};
Outcome call(ScalarFn f, double x) {
    errno = 0;
    double v = f(x);
    return {v, errno};
}

bool same(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

TEST_F(LibmErrors, SpecialArgumentsWithoutErrors) {
    const Layer& l = libm();
    *l.mode = 1;  // a hook mode: any error call would show in the count
    l.set[0](recording_hook);
    const double inf = INFINITY, nan = NAN;
    struct Case {
        ScalarFn f;
        const char* what;
        double x, expected;
    } cases[] = {
        {l.cos, "cos(0)", 0.0, 1.0},           {l.cos, "cos(-0)", -0.0, 1.0},
        {l.sin, "sin(0)", 0.0, 0.0},           {l.sin, "sin(-0)", -0.0, -0.0},
        {l.sin, "sin(subnormal)", -5e-324, -5e-324},
        {l.sin, "sin(tiny)", 0x1p-300, 0x1p-300}, {l.cos, "cos(tiny)", 0x1p-300, 1.0},
        {l.sin, "sin(inf)", inf, nan},         {l.cos, "cos(-inf)", -inf, nan},
        {l.sin, "sin(nan)", nan, nan},         {l.cos, "cos(nan)", -nan, nan},
        {l.log, "log(1)", 1.0, 0.0},           {l.log, "log(inf)", inf, inf},
        {l.log, "log(nan)", nan, nan},         {l.log, "log(-nan)", -nan, nan},
        {l.sqrt, "sqrt(-0)", -0.0, -0.0},      {l.sqrt, "sqrt(nan)", nan, nan},
        {l.sqrt, "sqrt(-nan)", -nan, nan},     {l.sqrt, "sqrt(inf)", inf, inf},
        {l.sqrt, "sqrt(4)", 4.0, 2.0},         {l.sqrt, "sqrt(2)", 2.0, M_SQRT2},
    };
    for (const Case& c : cases) {
        Outcome o = call(c.f, c.x);
        EXPECT_TRUE(same(o.value, c.expected)) << c.what << " = " << o.value;
        EXPECT_EQ(o.err, 0) << c.what;
    }
    EXPECT_EQ(g_hook.calls, 0);
    EXPECT_NEAR(l.log(5e-324), -744.44007192138126, 1e-12);
}

// log(0), log(-1) and sqrt(-1) in each mode with the default hooks (which
// accept the error, so the hook modes leave errno alone).
TEST_F(LibmErrors, ResultsAndErrnoPerMode) {
    const Layer& l = libm();
    const double inf = INFINITY, nan = NAN, huge = -static_cast<double>(FLT_MAX);
    struct Row {
        int mode;
        Outcome log0, logNeg, sqrtNeg;
    } rows[] = {
        {3, {-inf, 34}, {nan, 33}, {nan, 33}},
        {-1, {-inf, 0}, {nan, 0}, {nan, 0}},
        {2, {-inf, 34}, {nan, 33}, {nan, 33}},
        {0, {huge, 0}, {huge, 0}, {0.0, 0}},
        {1, {-inf, 0}, {-inf, 0}, {nan, 0}},
        {17, {-inf, 0}, {-inf, 0}, {nan, 0}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.mode);
        *l.mode = r.mode;
        for (double zero : {0.0, -0.0}) {
            Outcome o = call(l.log, zero);
            EXPECT_TRUE(same(o.value, r.log0.value)) << o.value;
            EXPECT_EQ(o.err, r.log0.err);
        }
        for (double neg : {-1.0, -double(INFINITY), -5e-324}) {
            Outcome o = call(l.log, neg);
            EXPECT_TRUE(same(o.value, r.logNeg.value)) << o.value;
            EXPECT_EQ(o.err, r.logNeg.err);
        }
        Outcome o = call(l.sqrt, -1.0);
        EXPECT_TRUE(same(o.value, r.sqrtNeg.value)) << o.value;
        EXPECT_EQ(o.err, r.sqrtNeg.err);
        // The bodies report the same way as the entry.
        for (ScalarFn body : {l.logA, l.logL}) {
            Outcome b = call(body, 0.0);
            EXPECT_TRUE(same(b.value, r.log0.value));
            EXPECT_EQ(b.err, r.log0.err);
        }
    }
}

// In a hook mode the hook sees the record; returning 0 sets errno to 33
// (also for the singularity); a hook may replace the result.
TEST_F(LibmErrors, HookRecordsAndReplacedResults) {
    const Layer& l = libm();
    *l.mode = 1;
    EXPECT_EQ(l.set[0](recording_hook), static_cast<void*>(l.hook[0]));
    g_hook.answer = 0;
    struct Case {
        ScalarFn f;
        double x;
        int type;
        const char* name;
        double retval;
    } cases[] = {{l.log, 0.0, 2, "log", -INFINITY}, {l.log, -2.5, 1, "log", -INFINITY},
                 {l.sqrt, -4.0, 1, "sqrt", NAN}};
    for (const Case& c : cases) {
        g_hook.calls = 0;
        Outcome o = call(c.f, c.x);
        ASSERT_EQ(g_hook.calls, 1) << c.name;
        EXPECT_EQ(g_hook.seen.type, c.type);
        EXPECT_STREQ(g_hook.seen.name, c.name);
        EXPECT_TRUE(same(g_hook.seen.arg1, c.x) && same(g_hook.seen.arg2, c.x));
        EXPECT_TRUE(same(g_hook.seen.retval, c.retval));
        EXPECT_EQ(o.err, 33);
    }
    // Mode 0 with a hook that accepts: -HUGE and 0.0 reach the hook, nothing
    // is printed or set. A replacing hook decides the result.
    *l.mode = 0;
    g_hook.answer = 1;
    Outcome o = call(l.log, 0.0);
    EXPECT_EQ(g_hook.seen.retval, -static_cast<double>(FLT_MAX));
    EXPECT_EQ(o.err, 0);
    g_hook.replace = true;
    g_hook.replacement = 42.0;
    for (int mode : {0, 1}) {
        *l.mode = mode;
        EXPECT_EQ(l.log(0.0), 42.0);
        EXPECT_EQ(l.log(-1.0), 42.0);
        EXPECT_EQ(l.sqrt(-1.0), 42.0);
    }
}

TEST_F(LibmErrors, SettingAndRestoringHooks) {
    const Layer& l = libm();
    for (int t = 0; t < 3; ++t) {
        EXPECT_EQ(*l.hook[t], l.fallback[t]);
        EXPECT_EQ(l.set[t](recording_hook), static_cast<void*>(l.hook[t]));
        EXPECT_EQ(*l.hook[t], &recording_hook);
        EXPECT_EQ(l.set[t](nullptr), reinterpret_cast<void*>(l.fallback[t]));
        EXPECT_EQ(*l.hook[t], l.fallback[t]);
        EXPECT_EQ(l.fallback[t](nullptr), 1);
    }
}

int float_hook_calls;
RecordF float_seen;
int float_hook(void* p) {
    ++float_hook_calls;
    float_seen = *static_cast<RecordF*>(p);
    return 1;
}
int long_hook_calls;
RecordL long_seen;
int long_hook(void* p) {
    ++long_hook_calls;
    long_seen = *static_cast<RecordL*>(p);
    return 1;
}

// The code tables: mode 3 splits its 289 codes into the six actions; the
// other modes stop at 279 codes; the float and long double codes of log go
// to their own hooks with their own records.
TEST_F(LibmErrors, CodeTables) {
    const Layer& l = libm();
    alignas(16) unsigned char zero[16] = {}, nonzero[16];
    std::memset(nonzero, 0xFF, sizeof nonzero);  // a NaN in every format
    int counts[2][4] = {};                       // [result zero?][errno 34, 33, untouched, other]
    for (int code = 0; code < 289; ++code) {
        for (int z = 0; z < 2; ++z) {
            alignas(16) unsigned char ret[16];
            std::memcpy(ret, z ? zero : nonzero, 16);
            errno = 0;
            l.error_support(ret, ret, ret, code);
            ++counts[z][errno == 34 ? 0 : errno == 33 ? 1 : errno == 0 ? 2 : 3];
        }
    }
    EXPECT_EQ(counts[0][0], 121);
    EXPECT_EQ(counts[0][1], 97);
    EXPECT_EQ(counts[0][2], 36 + 12 + 12 + 11);
    EXPECT_EQ(counts[1][0], 121 + 12 + 12 + 11);
    EXPECT_EQ(counts[1][1], 97);
    EXPECT_EQ(counts[1][2], 36);
    EXPECT_EQ(counts[0][3] + counts[1][3], 0);
    double x = 1.0, r = 5.0;
    for (int code : {289, 1000, -1}) {
        errno = 0;
        l.error_support(&x, &x, &r, code);
        EXPECT_EQ(errno, 0) << code;
    }
    // Hook modes: 278 reaches a hook, 279 does not.
    *l.mode = 1;
    l.set[0](recording_hook);
    l.set[1](float_hook);
    l.set[2](long_hook);
    int before = g_hook.calls + float_hook_calls + long_hook_calls;
    alignas(16) unsigned char ret[16] = {};
    l.error_support(ret, ret, ret, 278);
    EXPECT_EQ(g_hook.calls + float_hook_calls + long_hook_calls, before + 1);
    l.error_support(ret, ret, ret, 279);
    EXPECT_EQ(g_hook.calls + float_hook_calls + long_hook_calls, before + 1);
    // logf and logl of zero: codes 4 and 0.
    float xf = 0.0f, rf = 0.0f;
    l.error_support(&xf, &xf, &rf, 4);
    EXPECT_EQ(float_hook_calls, 1);
    EXPECT_STREQ(float_seen.name, "logf");
    EXPECT_EQ(float_seen.type, 2);
    EXPECT_EQ(rf, -INFINITY);
    long double xl = -3.0L, rl = 0.0L;
    l.error_support(&xl, &xl, &rl, 1);
    EXPECT_EQ(long_hook_calls, 1);
    EXPECT_STREQ(long_seen.name, "logl");
    EXPECT_EQ(long_seen.arg1, -3.0L);
    EXPECT_EQ(long_seen.type, 1);
}

// Runs fn in a child process and returns what it wrote to stderr; the
// child's exit status must be 0 (its own checks passed).
std::string stderr_of_child(const std::function<int()>& fn) {
    int fds[2];
    if (pipe(fds) != 0) return "pipe failed";
    fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], 2);
        int rc = fn();
        fflush(stderr);
        _exit(rc);
    }
    close(fds[1]);
    std::string out;
    char buf[256];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child status " << status;
    return out;
}

int rejecting_hook(void*) { return 0; }

// Mode 0 with a hook that rejects: the message, and errno 33 even for the
// singularity. The catalogue is not found: LANG is cut at the dot, the
// failure is reported once, and later messages are the default texts.
TEST_F(LibmErrors, MessagesWithAMissingCatalogue) {
    const Layer& l = libm();
    std::string out = stderr_of_child([&] {
        setenv("NLSPATH", "/nonexistent-orv/%N", 1);
        setenv("LANG", "en_US.UTF-8", 1);
        *l.mode = 0;
        l.set[0](rejecting_hook);
        int bad = 0;
        bad |= !(call(l.log, 0.0).err == 33) << 0;
        bad |= !(call(l.log, -1.0).err == 33) << 1;
        Outcome s = call(l.sqrt, -1.0);
        bad |= !(s.err == 33 && s.value == 0.0) << 2;
        const char* lang = getenv("LANG");
        bad |= !(lang && std::strcmp(lang, "en_US") == 0) << 3;
        return bad;
    });
    EXPECT_EQ(out, "Cannot open message catalog libm.cat\n\rlog: SING error\n\rlog: DOMAIN error\n"
                   "\rsqrt: DOMAIN error\n");
    // Without a dot in LANG nothing is reported about the catalogue: the
    // failed descriptor stays and gives the default texts.
    out = stderr_of_child([&] {
        setenv("NLSPATH", "/nonexistent-orv/%N", 1);
        setenv("LANG", "C", 1);
        *l.mode = 0;
        l.set[0](rejecting_hook);
        call(l.log, 0.0);
        call(l.log, 0.0);
        const char* lang = getenv("LANG");
        return lang && std::strcmp(lang, "C") == 0 ? 0 : 1;
    });
    EXPECT_EQ(out, "\rlog: SING error\n\rlog: SING error\n");
}

}  // namespace
}  // namespace orv::test
