// The scalar layer's functions and data as the library defines them,
// resolved from the loaded library itself, so that the tests reach them
// whatever order the test program was linked in.
#pragma once

#include <cstdint>

namespace orv::test {

using ScalarFn = double (*)(double);
using MatherrFn = int (*)(void*);

struct Libm {
    ScalarFn cos, sin, log, sqrt;
    ScalarFn cosA, cosL, cosN, sinA, sinL, sinN, logA, logL;
    void (*error_support)(const void*, const void*, void*, int);
    void* (*setusermatherr)(MatherrFn);
    void* (*setusermatherrf)(MatherrFn);
    void* (*setusermatherrl)(MatherrFn);
    MatherrFn matherr, matherrf, matherrl;
    int* mode;  // _LIB_VERSIONZMT
    MatherrFn* pmatherr;
    MatherrFn* pmatherrf;
    MatherrFn* pmatherrl;
};

// Resolved once; a missing name fails the calling test.
const Libm& libm();

// The C library's own cos, sin and log (not the process's default binding).
struct CLibm {
    ScalarFn cos, sin, log;
};
const CLibm& clibm();

// The error, in units of the last place of the correctly rounded result, of
// got against a long double reference. NaN against NaN is 0; any other
// mismatch of NaN, infinity or sign is infinite.
double ulp_error(double got, long double ref);

}  // namespace orv::test
