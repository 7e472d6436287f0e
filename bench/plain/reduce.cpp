// Plain loops beside the reductions and the threshold: what a caller would
// write without the library, compiled with the same tier flags.
#include "plain/plain.h"

double PLAIN(sum_64f)(const double* p, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += p[i];
    return s;
}

double PLAIN(sum_32f)(const float* p, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += p[i];
    return s;
}

double PLAIN(dotprod_64f)(const double* a, const double* b, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += a[i] * b[i];
    return s;
}

void PLAIN(threshold_64f)(const double* src, double* dst, int n, double levelLT, double valueLT, double levelGT,
                          double valueGT) {
    for (int i = 0; i < n; ++i) {
        double x = src[i];
        dst[i] = levelGT < x ? valueGT : (levelLT <= x ? x : valueLT);
    }
}
