// Solves equations with small symmetric matrices and computes their eigenvectors. These functions have a file of their
// own because every file that instantiates Eigen's decompositions is slow to compile. With sanitizers, one such file
// takes most of a minute.
#pragma once

#include <Eigen/Core>
#include <optional>

namespace calibration {

// Solves matrix * x = right for a symmetric matrix.
Eigen::MatrixXd solveSymmetric(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right);

// Solves the same equation for a positive definite matrix. Returns nothing if an eigenvalue is negative; a singular
// matrix is not always noticed.
std::optional<Eigen::MatrixXd> solvePositive(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right);

struct Eigensystem {
    Eigen::VectorXd values;   // ascending
    Eigen::MatrixXd vectors;  // one in each column, of unit length
};

// Returns the eigenvalues and eigenvectors of a symmetric matrix; nothing if they cannot be computed.
std::optional<Eigensystem> eigensystemOf(const Eigen::MatrixXd &symmetric);

}  // namespace calibration
