// The time-stamp counter, its rate, and the inert thread-count functions.
#include <cmath>
#include <ctime>

#include "orvcore.h"
#include "state.h"

ORV_FRAME_API Orv64u orvGetCpuClocks(void) { return orv_get_tessera_counter(); }

// Three rounds, each spanning one whole second boundary; the first only
// warms up. The two others are summed in single precision, as the result is
// defined, so it is exact only to about 1 in 10^7.
ORV_FRAME_API OrvStatus orvGetCpuFreqMhz(int* pMhz) {
    if (!pMhz) return orvStsNullPtrErr;
    Orv64u ticks[3];
    for (auto& t : ticks) {
        Orv64u start = orv_get_tessera_counter();
        time_t now = std::time(nullptr);
        while (std::time(nullptr) == now) {
        }
        t = orv_get_tessera_counter() - start;
    }
    float sum = static_cast<float>(ticks[1]) + static_cast<float>(ticks[2]);
    double mhz = static_cast<double>(sum) / 1000000.0 * 0.5;
    *pMhz = static_cast<int>(std::nearbyint(mhz));  // current rounding mode
    return orvStsNoErr;
}

ORV_FRAME_API OrvStatus orvSetNumThreads(int) { return orvStsNoOperation; }

// No null test, as documented.
ORV_FRAME_API OrvStatus orvGetNumThreads(int* pNumThreads) {
    *pNumThreads = 1;
    return orvStsNoOperation;
}
