// Resolution of names from the loaded orv library and from the C math
// library, and the ulp measure the accuracy tests share.
#include "libm_access.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>

#include "orvcore.h"

namespace orv::test {
namespace {

void* lookup(void* handle, const char* name) {
    void* p = handle ? dlsym(handle, name) : nullptr;
    EXPECT_NE(p, nullptr) << name;
    return p;
}

}  // namespace

void* orv_symbol(const char* name) {
    static void* handle = [] {
        Dl_info info{};
        bool found = dladdr(reinterpret_cast<void*>(&orvGetCpuType), &info) && info.dli_fname;
        return found ? dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD) : nullptr;
    }();
    return lookup(handle, name);
}

void* clibm_symbol(const char* name) {
    static void* handle = dlopen("libm.so.6", RTLD_NOW);
    return lookup(handle, name);
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
