// The decompositions and large products of matrices that the calibration needs. They have a file of their own because
// every file that instantiates them is slow to compile. With sanitizers, one such file takes most of a minute.
#pragma once

#include <Eigen/Core>
#include <optional>

namespace calibration {

// Solves matrix * x = right for an invertible matrix.
Eigen::MatrixXd solve(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right);

// Solves matrix * x = right for an invertible symmetric matrix.
Eigen::MatrixXd solveSymmetric(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right);

// Solves matrix * x = right for a positive definite matrix. Returns nothing if an eigenvalue is negative; a singular
// matrix is not always noticed.
std::optional<Eigen::MatrixXd> solvePositive(const Eigen::MatrixXd &matrix, const Eigen::MatrixXd &right);

// Returns the residuals of the equations matrix * x = right in their least-squares solution. The matrix may have
// dependent columns.
Eigen::VectorXd leastSquaresResiduals(const Eigen::MatrixXd &matrix, const Eigen::VectorXd &right);

// Projects the columns of `matrix` onto the space that is orthogonal to the columns of `removed`, which must be
// independent. The result is in coordinates of an orthonormal basis of this space, so it has removed.cols() rows fewer
// than the matrix.
Eigen::MatrixXd orthogonalPart(Eigen::MatrixXd matrix, const Eigen::MatrixXd &removed);

// Returns matrix^T * matrix.
Eigen::MatrixXd gramMatrix(const Eigen::MatrixXd &matrix);

// Returns derivatives * covariance * derivatives^T. If `covariance` is the covariance of some parameters, and each row
// of `derivatives` has the derivatives of one value with respect to these parameters, the result is the covariance of
// the values.
Eigen::MatrixXd propagated(const Eigen::MatrixXd &covariance, const Eigen::MatrixXd &derivatives);

struct Eigensystem {
    Eigen::VectorXd values;   // ascending
    Eigen::MatrixXd vectors;  // one in each column, of unit length
};

// Returns the eigenvalues and eigenvectors of a symmetric matrix; nothing if they cannot be computed.
std::optional<Eigensystem> eigensystemOf(const Eigen::MatrixXd &symmetric);

}  // namespace calibration
