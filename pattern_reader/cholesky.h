// Solves small systems of normal equations without allocating memory. The number of unknowns is known at compile time.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace pattern_reader {

template <size_t size>
class Cholesky {
public:
    using Vector = std::array<double, size>;
    using Matrix = std::array<Vector, size>;

    // Factors a symmetric matrix, of which only the lower left triangle is read. False if the matrix is not positive
    // definite or is nearly singular.
    bool decompose(const Matrix &matrix) {
        lower = matrix;
        for (size_t i = 0; i < size; i++) {
            for (size_t j = 0; j <= i; j++) {
                double sum = lower[i][j];
                for (size_t k = 0; k < j; k++) {
                    sum -= lower[i][k] * lower[j][k];
                }
                if (i != j) {
                    lower[i][j] = sum * inverse[j];
                } else if (sum > 1e-12 * matrix[i][i]) {
                    inverse[i] = 1 / std::sqrt(sum);
                } else {
                    return false;
                }
            }
        }
        return true;
    }

    [[nodiscard]] Vector solve(Vector right) const {
        for (size_t i = 0; i < size; i++) {
            for (size_t k = 0; k < i; k++) {
                right[i] -= lower[i][k] * right[k];
            }
            right[i] *= inverse[i];
        }
        for (size_t i = size; i-- > 0;) {
            for (size_t k = i + 1; k < size; k++) {
                right[i] -= lower[k][i] * right[k];
            }
            right[i] *= inverse[i];
        }
        return right;
    }

private:
    Matrix lower{};  // without the diagonal, whose inverse is stored separately
    Vector inverse{};
};

}  // namespace pattern_reader
