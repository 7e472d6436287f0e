// The scalar layer's functions and data as the library defines them,
// resolved from the loaded library itself, so that the tests reach them
// whatever order the test program was linked in; and the ulp measure.
#pragma once

namespace orv::test {

using ScalarFn = double (*)(double);

// The address of a name in orv, or in the C math library; a missing name
// fails the calling test.
void* orv_symbol(const char* name);
void* clibm_symbol(const char* name);
template <class T>
T orv_sym(const char* name) {
    return reinterpret_cast<T>(orv_symbol(name));
}

// The error, in units of the last place of the correctly rounded result, of
// got against a long double reference. NaN against NaN is 0; any other
// mismatch of NaN, infinity or sign is infinite.
double ulp_error(double got, long double ref);

}  // namespace orv::test
