// Plain loops the vector benchmarks compare each tier with: what the
// compiler makes of the obvious code under the same tier flags. Fill and
// copy keep their loops (no rewriting into library calls), so that memcpy
// and memset stand apart as their own peers.
#include "plain/plain.h"

#define ORV_PLAIN_LOOP extern "C" __attribute__((optimize("no-tree-loop-distribute-patterns")))

ORV_PLAIN_LOOP void PLAIN(add_64f)(const double* a, const double* b, double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = a[i] + b[i];
}
ORV_PLAIN_LOOP void PLAIN(addc_64f_I)(double v, double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] += v;
}
ORV_PLAIN_LOOP void PLAIN(mulc_64f)(const double* a, double v, double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = a[i] * v;
}
ORV_PLAIN_LOOP void PLAIN(copy_64f)(const double* a, double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = a[i];
}
ORV_PLAIN_LOOP void PLAIN(set_64f)(double v, double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = v;
}
ORV_PLAIN_LOOP void PLAIN(zero_64f)(double* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = 0.0;
}
