#include "fluid/components/small_systems.hpp"

#include <cmath>
#include <utility>

namespace kvr {

bool solvePositiveDefinite(int count, ComponentMatrix& matrix, Composition& right, double leastPivot) {
    for (int j = 0; j < count; ++j) {
        double pivot = matrix[j][j];
        for (int k = 0; k < j; ++k) pivot -= matrix[j][k] * matrix[j][k];
        if (!(pivot > leastPivot)) return false;
        const double root = std::sqrt(pivot), inverse = 1.0 / root;
        matrix[j][j] = root;
        for (int i = j + 1; i < count; ++i) {
            double sum = matrix[i][j];
            for (int k = 0; k < j; ++k) sum -= matrix[i][k] * matrix[j][k];
            matrix[i][j] = sum * inverse;
        }
    }
    for (int i = 0; i < count; ++i) {
        for (int k = 0; k < i; ++k) right[i] -= matrix[i][k] * right[k];
        right[i] /= matrix[i][i];
    }
    for (int i = count - 1; i >= 0; --i) {
        for (int k = i + 1; k < count; ++k) right[i] -= matrix[k][i] * right[k];
        right[i] /= matrix[i][i];
    }
    return true;
}

bool solveGeneral(int count, ComponentMatrix& matrix, Composition& right) {
    for (int j = 0; j < count; ++j) {
        int largest = j;
        for (int i = j + 1; i < count; ++i)
            if (std::abs(matrix[i][j]) > std::abs(matrix[largest][j])) largest = i;
        if (!(std::abs(matrix[largest][j]) > 0.0)) return false;
        std::swap(matrix[j], matrix[largest]);
        std::swap(right[j], right[largest]);
        for (int i = j + 1; i < count; ++i) {
            const double factor = matrix[i][j] / matrix[j][j];
            for (int k = j; k < count; ++k) matrix[i][k] -= factor * matrix[j][k];
            right[i] -= factor * right[j];
        }
    }
    for (int i = count - 1; i >= 0; --i) {
        for (int k = i + 1; k < count; ++k) right[i] -= matrix[i][k] * right[k];
        right[i] /= matrix[i][i];
    }
    return true;
}

}  // namespace kvr
