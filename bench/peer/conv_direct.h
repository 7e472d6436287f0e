// Plain direct convolution (y of n + m - 1 samples), built -O3 -mavx.
#pragma once

void peer_conv_direct_32f(const float* x, int n, const float* h, int m, float* y);
void peer_conv_direct_64f(const double* x, int n, const double* h, int m, double* y);
