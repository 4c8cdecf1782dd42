#include "calibration/dense_solve.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <Eigen/LU>
#include <Eigen/QR>

namespace calibration {

Eigen::MatrixXd solve(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right) {
    return Eigen::PartialPivLU<Eigen::MatrixXd>(matrix).solve(right);
}

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

Eigen::VectorXd leastSquaresResiduals(const Eigen::MatrixXd &matrix, const Eigen::VectorXd &right) {
    const Eigen::VectorXd solution = Eigen::ColPivHouseholderQR<Eigen::MatrixXd>(matrix).solve(right);
    return right - matrix * solution;
}

Eigen::MatrixXd orthogonalPart(Eigen::MatrixXd matrix, const Eigen::MatrixXd &removed) {
    const Eigen::HouseholderQR<Eigen::MatrixXd> factors(removed);
    matrix.applyOnTheLeft(factors.householderQ().adjoint());
    return matrix.bottomRows(matrix.rows() - removed.cols());
}

Eigen::MatrixXd gramMatrix(const Eigen::MatrixXd &matrix) {
    return matrix.transpose() * matrix;
}

Eigen::MatrixXd propagated(const Eigen::MatrixXd &covariance, const Eigen::MatrixXd &derivatives) {
    return derivatives * covariance * derivatives.transpose();
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
