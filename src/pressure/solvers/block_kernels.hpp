#pragma once

#include <algorithm>
#include <cmath>

namespace kvr {

/// Kernels on dense N x N blocks, row-major, and on N-vectors. Nothing is checked.

/// y += A x
template <int N>
inline void addBlockTimes(const double* a, const double* x, double* y) {
    for (int e = 0; e < N; ++e) {
        double sum = y[e];
        for (int u = 0; u < N; ++u) sum += a[e * N + u] * x[u];
        y[e] = sum;
    }
}

/// y -= A x
template <int N>
inline void subtractBlockTimes(const double* a, const double* x, double* y) {
    for (int e = 0; e < N; ++e) {
        double sum = y[e];
        for (int u = 0; u < N; ++u) sum -= a[e * N + u] * x[u];
        y[e] = sum;
    }
}

/// y = A x; x and y are different vectors.
template <int N>
inline void setBlockTimes(const double* a, const double* x, double* y) {
    for (int e = 0; e < N; ++e) {
        double sum = 0.0;
        for (int u = 0; u < N; ++u) sum += a[e * N + u] * x[u];
        y[e] = sum;
    }
}

/// C = A B; C is none of the two.
template <int N>
inline void setBlockProduct(const double* a, const double* b, double* c) {
    for (int e = 0; e < N; ++e) {
        for (int u = 0; u < N; ++u) {
            double sum = 0.0;
            for (int k = 0; k < N; ++k) sum += a[e * N + k] * b[k * N + u];
            c[e * N + u] = sum;
        }
    }
}

/// C -= A B
template <int N>
inline void subtractBlockProduct(const double* a, const double* b, double* c) {
    for (int e = 0; e < N; ++e) {
        for (int u = 0; u < N; ++u) {
            double sum = c[e * N + u];
            for (int k = 0; k < N; ++k) sum -= a[e * N + k] * b[k * N + u];
            c[e * N + u] = sum;
        }
    }
}

/// A determinant below this share of the product of the row lengths has cancelled away.
inline constexpr double VanishedDeterminant = 1e-13;

template <int N>
inline double rowLengths(const double* a) {
    double product = 1.0;
    for (int e = 0; e < N; ++e) {
        double longest = 0.0;
        for (int u = 0; u < N; ++u) longest = std::max(longest, std::abs(a[e * N + u]));
        product *= longest;
    }
    return product;
}

/// Inverse by cofactors. False, and nothing written, for a block that is singular to working accuracy or
/// not finite; rows and columns of the block must be scaled to comparable sizes.
template <int N>
bool invertBlock(const double* a, double* inverse);

template <>
inline bool invertBlock<2>(const double* a, double* inverse) {
    const double determinant = a[0] * a[3] - a[1] * a[2];
    if (!(std::abs(determinant) > VanishedDeterminant * rowLengths<2>(a))) return false;
    const double scale = 1.0 / determinant;
    inverse[0] = a[3] * scale;
    inverse[1] = -a[1] * scale;
    inverse[2] = -a[2] * scale;
    inverse[3] = a[0] * scale;
    return true;
}

template <>
inline bool invertBlock<3>(const double* a, double* inverse) {
    const double c0 = a[4] * a[8] - a[5] * a[7];
    const double c1 = a[5] * a[6] - a[3] * a[8];
    const double c2 = a[3] * a[7] - a[4] * a[6];
    const double determinant = a[0] * c0 + a[1] * c1 + a[2] * c2;
    if (!(std::abs(determinant) > VanishedDeterminant * rowLengths<3>(a))) return false;
    const double scale = 1.0 / determinant;
    inverse[0] = c0 * scale;
    inverse[1] = (a[2] * a[7] - a[1] * a[8]) * scale;
    inverse[2] = (a[1] * a[5] - a[2] * a[4]) * scale;
    inverse[3] = c1 * scale;
    inverse[4] = (a[0] * a[8] - a[2] * a[6]) * scale;
    inverse[5] = (a[2] * a[3] - a[0] * a[5]) * scale;
    inverse[6] = c2 * scale;
    inverse[7] = (a[1] * a[6] - a[0] * a[7]) * scale;
    inverse[8] = (a[0] * a[4] - a[1] * a[3]) * scale;
    return true;
}

}  // namespace kvr
