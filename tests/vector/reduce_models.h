// Scalar models of the documented orders of the reductions, lane by lane,
// for the tiers whose order is fixed: the 128-bit bodies of m7, u8, n8 and
// y8, and n8's scalar dot products. They take the values and the address the
// library saw, since the lead-in depends on the address.
#pragma once

#include <cstdint>
#include <vector>

namespace orv::test::reduce {

using Pair = double[2];

// Packed maximum and minimum: the second operand unless the first wins.
inline double pmax(double a, double b) { return a > b ? a : b; }
inline double pmin(double a, double b) { return a < b ? a : b; }

inline double model_sum_64f(const std::vector<double>& x, uintptr_t a) {
    int n = static_cast<int>(x.size()), i = 0;
    double acc[4][2] = {};
    if (a & 8) acc[0][0] = x[i++];
    for (; n - i >= 8; i += 8)
        for (int k = 0; k < 4; ++k)
            for (int j = 0; j < 2; ++j) acc[k][j] += x[i + 2 * k + j];
    double r[2];
    for (int j = 0; j < 2; ++j) r[j] = (acc[0][j] + acc[1][j]) + (acc[2][j] + acc[3][j]);
    for (; n - i >= 2; i += 2)
        for (int j = 0; j < 2; ++j) r[j] += x[i + j];
    if (i < n) r[0] += x[i];
    return r[1] + r[0];
}

// One single-precision block: four accumulators of four floats.
inline void model_block_32f(const float* x, int n, double out[2]) {
    float acc[4][4] = {};
    int i = 0;
    for (; n - i >= 16; i += 16)
        for (int k = 0; k < 4; ++k)
            for (int l = 0; l < 4; ++l) acc[k][l] += x[i + 4 * k + l];
    float r[4];
    for (int l = 0; l < 4; ++l) r[l] = (acc[0][l] + acc[2][l]) + (acc[1][l] + acc[3][l]);
    for (; n - i >= 4; i += 4)
        for (int l = 0; l < 4; ++l) r[l] += x[i + l];
    if (n - i >= 2) {
        r[0] += x[i];
        r[1] += x[i + 1];
        i += 2;
    }
    if (i < n) r[0] += x[i];
    out[0] = static_cast<float>(r[0] + r[2]);
    out[1] = static_cast<float>(r[1] + r[3]);
}

inline double model_sum_32f_fast(const std::vector<float>& x, uintptr_t a) {
    int n = static_cast<int>(x.size()), i = 0;
    double d[2] = {0.0, 0.0};
    for (; (a + 4 * i) & 12; ++i) {
        if (i == n) return d[0] + d[1];
        d[0] += x[i];
    }
    do {
        int b = n - i < 32768 ? n - i : 32768;
        double s[2];
        model_block_32f(x.data() + i, b, s);
        d[0] += s[0];
        d[1] += s[1];
        i += b;
    } while (i < n);
    return d[0] + d[1];
}

inline double model_sum_32f_accur(const std::vector<float>& x, uintptr_t a) {
    int n = static_cast<int>(x.size()), i = 0;
    double acc[4][2] = {};
    if (a & 4) acc[0][0] = x[i++];
    for (; n - i >= 8; i += 8)
        for (int k = 0; k < 4; ++k)
            for (int j = 0; j < 2; ++j) acc[k][j] += x[i + 2 * k + j];
    for (int j = 0; j < 2; ++j) {
        acc[0][j] += acc[2][j];
        acc[1][j] += acc[3][j];
    }
    if (n - i >= 4) {
        for (int j = 0; j < 2; ++j) {
            acc[0][j] += x[i + j];
            acc[1][j] += x[i + 2 + j];
        }
        i += 4;
    }
    if (n - i >= 2) {
        for (int j = 0; j < 2; ++j) acc[0][j] += x[i + j];
        i += 2;
    }
    if (i < n) acc[0][0] += x[i];
    return (acc[0][0] + acc[1][0]) + (acc[0][1] + acc[1][1]);
}

inline double model_dot_64f(std::vector<double> x, std::vector<double> y, uintptr_t ax, uintptr_t ay) {
    int n = static_cast<int>(x.size()), i = 0;
    double acc[4][2] = {};
    auto prod = [&](int k) { return x[k] * y[k]; };
    if ((ax | ay) & 15) {
        if ((ay & 7) && !(ax & 7)) {
            std::swap(x, y);
            std::swap(ax, ay);
        }
        for (; (ay + 8 * i) & 15;) {
            acc[0][0] += prod(i++);
            if (i == n) goto fold;
        }
        if ((ax + 8 * i) & 15) {
            for (; n - i >= 6; i += 6)
                for (int k = 0; k < 3; ++k)
                    for (int j = 0; j < 2; ++j) acc[k][j] += prod(i + 2 * k + j);
            for (; i < n; ++i) acc[0][0] += prod(i);
            goto fold;
        }
    }
    for (; n - i >= 8; i += 8)
        for (int k = 0; k < 4; ++k)
            for (int j = 0; j < 2; ++j) acc[k][j] += prod(i + 2 * k + j);
    for (; n - i >= 2; i += 2)
        for (int j = 0; j < 2; ++j) acc[0][j] += prod(i + j);
    if (i < n) acc[0][0] += prod(i);
fold:
    double t[2];
    for (int j = 0; j < 2; ++j) t[j] = (acc[0][j] + acc[1][j]) + (acc[2][j] + acc[3][j]);
    return t[1] + t[0];
}

// n8: four scalar accumulators, element k of each group to accumulator
// k mod 4, groups of 8, then 4, 2, 1.
template <class T>
double model_dot_scalar(const std::vector<T>& x, const std::vector<T>& y) {
    int n = static_cast<int>(x.size()), i = 0;
    double s[4] = {};
    auto prod = [&](int k) { return static_cast<double>(x[k]) * static_cast<double>(y[k]); };
    for (; n - i >= 8; i += 8)
        for (int k = 0; k < 8; ++k) s[k % 4] += prod(i + k);
    for (int g : {4, 2, 1})
        if (n - i >= g) {
            for (int k = 0; k < g; ++k) s[k] += prod(i + k);
            i += g;
        }
    return (s[0] + s[1]) + (s[2] + s[3]);
}

inline double model_dot_32f64f(const std::vector<float>& x, const std::vector<float>& y) {
    int n = static_cast<int>(x.size()), i = 0;
    double acc[2][2] = {};
    auto prod = [&](int k) { return static_cast<double>(x[k]) * static_cast<double>(y[k]); };
    for (; n - i >= 6; i += 6)
        for (int k = 0; k < 3; ++k)
            for (int j = 0; j < 2; ++j) acc[k % 2][j] += prod(i + 2 * k + j);
    for (; i < n; ++i) acc[1][0] += prod(i);
    return (acc[0][1] + acc[1][1]) + (acc[0][0] + acc[1][0]);
}

inline double model_max_64f(const std::vector<double>& x, uintptr_t a) {
    int n = static_cast<int>(x.size()), i = 0;
    double acc[4][2];
    for (auto& k : acc) k[0] = k[1] = x[0];
    if (a & 8) i = 1;
    for (; n - i >= 8; i += 8)
        for (int k = 0; k < 4; ++k)
            for (int j = 0; j < 2; ++j) acc[k][j] = pmax(acc[k][j], x[i + 2 * k + j]);
    double r[2];
    for (int j = 0; j < 2; ++j) r[j] = pmax(pmax(acc[0][j], acc[1][j]), pmax(acc[2][j], acc[3][j]));
    for (; n - i >= 2; i += 2)
        for (int j = 0; j < 2; ++j) r[j] = pmax(r[j], x[i + j]);
    if (i < n) r[0] = pmax(r[0], x[i]);
    return pmax(r[0], r[1]);
}

inline void model_minmax_64f(const std::vector<double>& x, double& mn, double& mx) {
    int n = static_cast<int>(x.size()), i = 0;
    double lo[2] = {x[0], x[0]}, hi[2] = {x[0], x[0]};
    for (; n - i >= 4; i += 4)
        for (int k = 0; k < 2; ++k)
            for (int j = 0; j < 2; ++j) {
                hi[j] = pmax(hi[j], x[i + 2 * k + j]);
                lo[j] = pmin(lo[j], x[i + 2 * k + j]);
            }
    for (; i < n; ++i) {
        hi[0] = pmax(hi[0], x[i]);
        lo[0] = pmin(lo[0], x[i]);
    }
    mx = pmax(hi[0], hi[1]);
    mn = pmin(lo[0], lo[1]);
}

}  // namespace orv::test::reduce
