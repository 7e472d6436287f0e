// Resolution of the scalar layer's names from the loaded library and of the
// C library's, and the ulp measure the accuracy tests share.
#include "libm_access.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>

#include "orvcore.h"

namespace orv::test {
namespace {

void* handle_of_orv() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&orvGetCpuType), &info) || !info.dli_fname) return nullptr;
    return dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
}

template <class T>
T sym(void* h, const char* name) {
    void* p = h ? dlsym(h, name) : nullptr;
    EXPECT_NE(p, nullptr) << name;
    return reinterpret_cast<T>(p);
}

}  // namespace

const Libm& libm() {
    static const Libm l = [] {
        void* h = handle_of_orv();
        Libm r{};
        r.cos = sym<ScalarFn>(h, "cos");
        r.sin = sym<ScalarFn>(h, "sin");
        r.log = sym<ScalarFn>(h, "log");
        r.sqrt = sym<ScalarFn>(h, "sqrt");
        r.cosA = sym<ScalarFn>(h, "cos.A");
        r.cosL = sym<ScalarFn>(h, "cos.L");
        r.cosN = sym<ScalarFn>(h, "cos.N");
        r.sinA = sym<ScalarFn>(h, "sin.A");
        r.sinL = sym<ScalarFn>(h, "sin.L");
        r.sinN = sym<ScalarFn>(h, "sin.N");
        r.logA = sym<ScalarFn>(h, "log.A");
        r.logL = sym<ScalarFn>(h, "log.L");
        r.error_support = sym<decltype(r.error_support)>(h, "__libm_error_support");
        r.setusermatherr = sym<decltype(r.setusermatherr)>(h, "__libm_setusermatherr");
        r.setusermatherrf = sym<decltype(r.setusermatherrf)>(h, "__libm_setusermatherrf");
        r.setusermatherrl = sym<decltype(r.setusermatherrl)>(h, "__libm_setusermatherrl");
        r.matherr = sym<MatherrFn>(h, "matherr");
        r.matherrf = sym<MatherrFn>(h, "matherrf");
        r.matherrl = sym<MatherrFn>(h, "matherrl");
        r.mode = sym<int*>(h, "_LIB_VERSIONZMT");
        r.pmatherr = sym<MatherrFn*>(h, "__libm_pmatherr");
        r.pmatherrf = sym<MatherrFn*>(h, "__libm_pmatherrf");
        r.pmatherrl = sym<MatherrFn*>(h, "__libm_pmatherrl");
        return r;
    }();
    return l;
}

const CLibm& clibm() {
    static const CLibm c = [] {
        void* h = dlopen("libm.so.6", RTLD_NOW);
        return CLibm{sym<ScalarFn>(h, "cos"), sym<ScalarFn>(h, "sin"), sym<ScalarFn>(h, "log")};
    }();
    return c;
}

double ulp_error(double got, long double ref) {
    double r = static_cast<double>(ref);
    if (std::isnan(got) || std::isnan(r)) return std::isnan(got) && std::isnan(r) ? 0.0 : INFINITY;
    if (std::isinf(r) || std::isinf(got)) return got == r ? 0.0 : INFINITY;
    if (got != 0 && ref != 0 && std::signbit(got) != std::signbit(r)) return INFINITY;
    int e = 0;
    std::frexp(std::fabs(r) > 0 ? r : 0x1p-1074, &e);
    long double ulp = std::ldexp(1.0L, std::max(e - 53, -1074));
    return static_cast<double>(std::fabs(static_cast<long double>(got) - ref) / ulp);
}

}  // namespace orv::test
