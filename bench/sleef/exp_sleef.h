// The peer exponential loop, present when the bench was built with SLEEF.
#pragma once

void sleef_exp_avx(const double* src, double* dst, int len);
