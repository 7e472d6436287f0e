// Plain loops that the elementary functions are measured against: the C
// library's exp element by element, and a division per element.
#include <cmath>

#include "plain/plain.h"

void PLAIN(exp_64f)(const double* src, double* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = std::exp(src[i]);
}

void PLAIN(inv_64f)(const double* src, double* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = 1.0 / src[i];
}
