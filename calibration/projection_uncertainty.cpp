#include "calibration/projection_uncertainty.h"

#include <algorithm>
#include <cmath>

#include "calibration/dense_solve.h"

namespace calibration {

namespace {

// One cell of the grid, with the derivatives of its pixel with respect to the lens and to the camera's motion.
struct Cell {
    Eigen::Vector3d point;
    Eigen::Matrix<double, 2, Eigen::Dynamic> byLens;
    Eigen::Matrix<double, 2, 6> byMotion;
    double weight = 1;
};

// The cells of a grid over the picture, for points at one distance from the camera. If this distance is infinite,
// the grid has points at distance 1 instead, and the camera's motion is only a rotation.
class Grid {
public:
    Grid(const Camera &camera, const Eigen::VectorXd &intrinsics, double distance, int columns, int rows)
        : map{columns, rows, {}}, isFar(std::isinf(distance)) {
        map.values.resize(size_t(columns) * size_t(rows));
        for (int row = 0; row < rows; row++) {
            for (int column = 0; column < columns; column++) {
                Eigen::Vector3d direction;
                const bool isSeen =
                    unproject(camera.lens, intrinsics.data(), map.pixel(camera, column, row), direction);
                cells.push_back(isSeen ? cellAt(camera, intrinsics, direction * (isFar ? 1 : distance))
                                       : std::optional<Cell>());
            }
        }
    }

    int motionSize() const { return isFar ? 3 : 6; }

    PictureMap map;
    bool isFar;
    std::vector<std::optional<Cell>> cells;

private:
    static std::optional<Cell> cellAt(const Camera &camera, const Eigen::VectorXd &intrinsics,
                                      const Eigen::Vector3d &point) {
        Projection projection;
        if (!project(camera.lens, intrinsics.data(), point, projection)) {
            return std::nullopt;
        }
        Cell cell;
        cell.point = point;
        cell.byLens = projection.byParameters;
        cell.byMotion.leftCols<3>() = -projection.byPoint * crossMatrix(point);
        cell.byMotion.rightCols<3>() = projection.byPoint;
        return cell;
    }
};

// Returns a matrix that maps an error of the lens parameters to a motion of the camera. Both the error and the motion
// shift the pixels. The matrix gives the motion whose shifts are closest to those of the error: the weighted sum of the
// squared differences is the smallest.
Eigen::MatrixXd bestMotion(const Grid &grid, Eigen::Index lensSize) {
    const int size = grid.motionSize();
    Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(size, size);
    Eigen::MatrixXd right = Eigen::MatrixXd::Zero(size, lensSize);
    for (const std::optional<Cell> &cell : grid.cells) {
        if (cell) {
            const auto byMotion = cell->byMotion.leftCols(size);
            normal += cell->weight * byMotion.transpose() * byMotion;
            right += cell->weight * byMotion.transpose() * cell->byLens;
        }
    }
    // In a narrow field of view, rotation and translation look nearly alike. The diagonal is made slightly larger, so
    // that the matrix is not singular.
    normal.diagonal() *= 1 + 1e-12;
    return solveSymmetric(normal, right);
}

double worseSigma(const Eigen::Matrix2d &covariance) {
    const double mean = covariance.trace() / 2;
    const double half = std::hypot((covariance(0, 0) - covariance(1, 1)) / 2, covariance(0, 1));
    return std::sqrt(std::max(mean + half, 0.0));
}

}  // namespace

Eigen::Vector2d PictureMap::pixel(const Camera &camera, int column, int row) const {
    return {(column + 0.5) * camera.width / columns - 0.5, (row + 0.5) * camera.height / rows - 0.5};
}

std::optional<double> PictureMap::greatest() const {
    std::optional<double> result;
    for (const std::optional<double> &value : values) {
        if (value && (!result || *value > *result)) {
            result = value;
        }
    }
    return result;
}

PictureMap projectionUncertainty(const Camera &camera, const Eigen::VectorXd &intrinsics,
                                 const Eigen::MatrixXd &covariance, double distance, int columns, int rows) {
    Grid grid(camera, intrinsics, distance, columns, rows);
    // The first weights come from the uncertainty before a motion is subtracted. If all first weights were equal, the
    // parts of the picture that are far less certain than others would decide the motion, and later rounds would not
    // correct this.
    for (std::optional<Cell> &cell : grid.cells) {
        if (cell) {
            const double sigma = worseSigma(propagated(covariance, cell->byLens));
            cell->weight = 1 / std::max(sigma * sigma, 1e-18);
        }
    }
    // In each round, the weight of a cell is the inverse of the variance from the previous round.
    constexpr int rounds = 4;
    for (int round = 0; round < rounds; round++) {
        const Eigen::MatrixXd motion = bestMotion(grid, intrinsics.size());
        for (size_t i = 0; i < grid.cells.size(); i++) {
            if (std::optional<Cell> &cell = grid.cells[i]) {
                const Eigen::MatrixXd left = cell->byLens - cell->byMotion.leftCols(grid.motionSize()) * motion;
                const double sigma = worseSigma(propagated(covariance, left));
                grid.map.values[i] = sigma;
                cell->weight = 1 / std::max(sigma * sigma, 1e-18);
            }
        }
    }
    return grid.map;
}

PictureMap projectionDifference(const Camera &camera, const Eigen::VectorXd &a, const Eigen::VectorXd &b,
                                double distance, int columns, int rows, const PictureMap *uncertainty) {
    Grid grid(camera, a, distance, columns, rows);
    for (size_t i = 0; uncertainty != nullptr && i < grid.cells.size(); i++) {
        if (std::optional<Cell> &cell = grid.cells[i]) {
            const double sigma = uncertainty->values[i].value_or(std::numeric_limits<double>::infinity());
            cell->weight = 1 / std::max(sigma * sigma, 1e-18);
        }
    }
    RigidMotion motion;  // from the axes of the camera with lens a to those of the camera with lens b
    constexpr int rounds = 8;
    const int size = grid.motionSize();
    for (int round = 0; round < rounds; round++) {
        Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(size, size);
        Eigen::VectorXd right = Eigen::VectorXd::Zero(size);
        for (size_t i = 0; i < grid.cells.size(); i++) {
            const std::optional<Cell> &cell = grid.cells[i];
            Projection projection;
            if (!cell || !project(camera.lens, b.data(), motion * cell->point, projection)) {
                grid.map.values[i].reset();
                continue;
            }
            Eigen::Matrix<double, 2, 6> byMotion;
            byMotion << -projection.byPoint * crossMatrix(motion * cell->point), projection.byPoint;
            const Eigen::Vector2d seen = grid.map.pixel(camera, int(i) % columns, int(i) / columns);
            const Eigen::Vector2d error = projection.image - seen;
            grid.map.values[i] = error.norm();
            normal += cell->weight * byMotion.leftCols(size).transpose() * byMotion.leftCols(size);
            right += cell->weight * byMotion.leftCols(size).transpose() * error;
        }
        if (round + 1 == rounds) {
            break;
        }
        normal.diagonal() *= 1 + 1e-12;
        Eigen::Matrix<double, 6, 1> step = Eigen::Matrix<double, 6, 1>::Zero();
        step.head(size) = -solveSymmetric(normal, right);
        motion = RigidMotion{step.head<3>(), step.tail<3>()} * motion;
    }
    return grid.map;
}

}  // namespace calibration
