/* Every public header, compiled as strict C99 and linked through pkg-config. */
#include <orvcore.h>
#include <orvi.h>
#include <orvmath.h>
#include <orvs.h>
#include <orvstatus.h>
#include <orvtiers.h>
#include <orvtypes.h>
#include <stdio.h>
#include <string.h>

int main(void) {
    Orv64f* p = orvsMalloc_64f(16);
    const OrvLibVersion* v = orvsGetLibVersion();
    int ok = p != NULL && ((Orv64u)(__SIZE_TYPE__)p % 32) == 0 && v->buildNumber == 1067 &&
             strcmp(m7_orvsGetLibVersion()->tierCode, "m7") == 0 &&
             strcmp(orvGetStatusString(orvStsNoErr), "orvStsNoErr: No error, it's OK") == 0;
    orvsFree(p);
    if (!ok) fputs("C99 use of the public headers failed\n", stderr);
    return ok ? 0 : 1;
}
