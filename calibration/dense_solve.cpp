#include "calibration/dense_solve.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

namespace calibration {

Eigen::MatrixXd solveSymmetric(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right) {
    return Eigen::LDLT<Eigen::MatrixXd>(matrix).solve(right);
}

std::optional<Eigen::MatrixXd> solvePositive(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right) {
    const Eigen::LDLT<Eigen::MatrixXd> factors(matrix);
    if (factors.info() != Eigen::Success || !factors.isPositive()) {
        return std::nullopt;
    }
    return factors.solve(right);
}

std::optional<Eigensystem> eigensystemOf(const Eigen::MatrixXd &symmetric) {
    if (symmetric.rows() == 0) {
        return Eigensystem{};
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(symmetric);
    if (solver.info() != Eigen::Success) {
        return std::nullopt;
    }
    return Eigensystem{solver.eigenvalues(), solver.eigenvectors()};
}

}  // namespace calibration
