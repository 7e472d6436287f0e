// Plain loops of the conversions, as a caller would write them, compiled with
// each tier's flags: narrowing with the clamp to +-FLT_MAX, and float to 8u
// rounded by lrintf (the current mode: nearest) or truncated by a cast.
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "plain/plain.h"

void PLAIN(convert_64f32f)(const double* s, float* d, int n) {
    for (int i = 0; i < n; ++i) {
        double x = s[i];
        x = x < FLT_MAX ? x : FLT_MAX;
        x = x > -FLT_MAX ? x : -FLT_MAX;
        d[i] = static_cast<float>(x);
    }
}

void PLAIN(convert_32f8u_near)(const float* s, uint8_t* d, int n) {
    for (int i = 0; i < n; ++i) {
        const float v = s[i] < 255.0f ? s[i] : 255.0f;
        const long r = lrintf(v);
        d[i] = static_cast<uint8_t>(r < 0 ? 0 : r > 255 ? 255 : r);
    }
}

void PLAIN(convert_32f8u_trunc)(const float* s, uint8_t* d, int n) {
    for (int i = 0; i < n; ++i) {
        const float v = s[i] < 255.0f ? s[i] : 255.0f;
        const int r = v > -1.0f ? static_cast<int>(v) : 0;
        d[i] = static_cast<uint8_t>(r);
    }
}
