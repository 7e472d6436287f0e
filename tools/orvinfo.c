/* orvinfo: what the library sees on this machine and which tier serves each
 * jump index. */
#include <stdio.h>

#include "orvi.h"
#include "orvs.h"

static const char* const kTierOfIndex[6] = {"m7", "m7", "u8", "n8", "y8", "e9"};

int main(void) {
    Orv64u features = 0;
    OrvStatus st = orvGetCpuFeatures(&features, NULL);
    printf("cpu features      0x%llx  (%s)\n", (unsigned long long)features, orvGetStatusString(st));
    printf("cpu type          %d\n", orvGetCpuType());

    OrvStatus init = orvInit();
    unsigned index = orvJumpIndexForMergedLibs;
    printf("selection         %s\n", orvGetStatusString(init));
    printf("tier              %s  (jump index %u, LP %u)\n", index < 6 ? kTierOfIndex[index] : "?", index,
           orvJumpIndexForMergedLibsLP);
    printf("enabled mask      0x%llx\n", (unsigned long long)orvGetEnabledCpuFeatures());

    int cache = 0;
    st = orvGetMaxCacheSizeB(&cache);
    printf("max cache         %d bytes  (%s)\n", cache, orvGetStatusString(st));
    printf("cores on die      %d\n", orvGetNumCoresOnDie());

    printf("\nversion record reached by each jump index:\n");
    for (unsigned i = 0; i < 6; ++i) {
        orvJumpIndexForMergedLibs = i; /* forced directly: index 0 has no type code */
        const OrvLibVersion* s = orvsGetLibVersion();
        const OrvLibVersion* v = orviGetLibVersion();
        printf("  index %u  tier %-3s %-13s %-13s %s %s\n", i, s->tierCode, s->libName, v->libName, s->versionText,
               s->buildDate);
    }
    orvInit();
    return 0;
}
