/* Executes one instruction group above a tier, so that the driver can check
 * that the emulated processor refuses it: "sse4.1" (PMULLD), "avx" (VADDPS
 * on YMM), "fma" (VFMADD231PS), or "e9", the library's AVX tier through
 * e9_orvsAdd_64f. Exits 0 when the instruction ran. */
#include <stdio.h>
#include <string.h>

#include "orvtiers.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const char* what = argv[1];
    if (strcmp(what, "sse4.1") == 0) {
        __asm__ volatile("pmulld %%xmm1, %%xmm0" ::: "xmm0");
    } else if (strcmp(what, "avx") == 0) {
        __asm__ volatile("vaddps %%ymm1, %%ymm1, %%ymm0\n\tvzeroupper" ::: "xmm0");
    } else if (strcmp(what, "fma") == 0) {
        __asm__ volatile("vfmadd231ps %%xmm1, %%xmm1, %%xmm0" ::: "xmm0");
    } else if (strcmp(what, "e9") == 0) {
        Orv64f a[64], b[64], c[64];
        for (int i = 0; i < 64; ++i) a[i] = (Orv64f)i, b[i] = 1.0;
        if (e9_orvsAdd_64f(a, b, c, 64) != orvStsNoErr || c[63] != 64.0) return 3;
    } else {
        return 2;
    }
    printf("%s ran\n", what);
    return 0;
}
