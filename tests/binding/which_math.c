/* Which cos, sin, log and sqrt a program gets. Built twice: linked with the
 * C math library before orv (EXPECT_ORV 0), the program's own calls must
 * reach the C library's versions; linked with orv first (EXPECT_ORV 1), orv's.
 * Either way dlsym on orv's handle finds orv's own. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "orvcore.h"

typedef double (*Fn)(double);

static int failures;

static void check(int ok, const char* what) {
    if (!ok) {
        printf("FAIL: %s\n", what);
        ++failures;
    }
}

/* The file name of the object that holds p. */
static const char* owner(void* p) {
    Dl_info info;
    return dladdr(p, &info) && info.dli_fname ? info.dli_fname : "?";
}

int main(void) {
    const char* orvPath = owner((void*)&orvGetCpuType);
    void* orv = dlopen(orvPath, RTLD_NOW | RTLD_NOLOAD);
    void* m = dlopen("libm.so.6", RTLD_NOW | RTLD_NOLOAD);
    check(orv && m, "both libraries are loaded");
    if (!orv || !m) return 1;
    const char* names[] = {"cos", "sin", "log", "sqrt"};
    /* Taken through volatile pointers: real calls, not folded builtins. */
    Fn volatile own[] = {cos, sin, log, sqrt};
    for (int i = 0; i < 4; ++i) {
        void* fromOrv = dlsym(orv, names[i]);
        void* fromM = dlsym(m, names[i]);
        check(fromOrv && fromM && fromOrv != fromM, names[i]);
        check(strcmp(owner(fromOrv), orvPath) == 0, "dlsym on orv finds orv's definition");
        check((void*)own[i] == (EXPECT_ORV ? fromOrv : fromM), names[i]);
    }
    /* Behaviour: in orv's silent mode (-1) its log(0) leaves errno alone,
     * while the C library's sets ERANGE. */
    int* mode = (int*)dlsym(orv, "_LIB_VERSIONZMT");
    check(mode != NULL, "_LIB_VERSIONZMT");
    if (mode) *mode = -1;
    errno = 0;
    double r = own[2](0.0);
    check(r == -INFINITY, "log(0)");
    check(errno == (EXPECT_ORV ? 0 : ERANGE), "errno of log(0) tells whose log ran");
    check(own[0](0.0) == 1.0 && own[3](4.0) == 2.0, "values");
    printf("%s\n", failures ? "FAIL" : "ok");
    return failures != 0;
}
