/* A stub called before the library's initialiser has run: from the program's
 * pre-initialisers, which run before any shared object's. The index is still
 * 0, so the call lands in m7 and works. */
#include <stdio.h>
#include <string.h>

#include "orvs.h"

static const OrvLibVersion* early_version;
static Orv32u early_index = 99;
static int early_alloc_ok;

static void before_libraries(int argc, char** argv, char** envp) {
    (void)argc; (void)argv; (void)envp;
    early_index = orvJumpIndexForMergedLibs;
    early_version = orvsGetLibVersion();
    Orv64f* p = orvsMalloc_64f(100);
    early_alloc_ok = p != NULL && ((__SIZE_TYPE__)p % 32) == 0;
    if (p) p[99] = 1.0;
    orvsFree(p);
}

__attribute__((section(".preinit_array"), used)) static void (*const preinit)(int, char**, char**) = before_libraries;

int main(void) {
    int ok = early_index == 0 && early_version != NULL && strcmp(early_version->tierCode, "m7") == 0 &&
             early_alloc_ok;
    /* After the library's initialiser the index matches the processor. */
    ok = ok && orvJumpIndexForMergedLibs >= 1;
    printf("early call: index %u, tier %s, alloc %s: %s\n", early_index,
           early_version ? early_version->tierCode : "-", early_alloc_ok ? "ok" : "failed", ok ? "ok" : "FAIL");
    return ok ? 0 : 1;
}
