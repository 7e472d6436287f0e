// The plain direct linear convolution, compiled -O3 -mavx as the peer of the
// 1-D convolution: one axpy of x per tap, which the compiler vectorises.
#include "peer/conv_direct.h"

template <class T>
static void conv_direct(const T* x, int n, const T* h, int m, T* y) {
    for (int k = 0; k < n + m - 1; ++k) y[k] = 0;
    for (int j = 0; j < m; ++j) {
        const T g = h[j];
        T* __restrict d = y + j;
        for (int i = 0; i < n; ++i) d[i] += x[i] * g;
    }
}

void peer_conv_direct_32f(const float* x, int n, const float* h, int m, float* y) { conv_direct(x, n, h, m, y); }
void peer_conv_direct_64f(const double* x, int n, const double* h, int m, double* y) { conv_direct(x, n, h, m, y); }
