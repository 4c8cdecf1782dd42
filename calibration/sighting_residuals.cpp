#include "calibration/sighting_residuals.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace calibration {

namespace {

using Matrix23 = Eigen::Matrix<double, 2, 3>;

// Multiplies without temporaries and function calls, unlike Eigen's own product of small matrices.
Eigen::Vector3d times(const Eigen::Matrix3d &m, const Eigen::Vector3d &v) {
    return m.lazyProduct(v);
}

// A motion with the matrices that its derivatives need, computed once for all corners of a sighting.
struct PreparedMotion {
    Eigen::Matrix3d matrix, jacobian;
    Eigen::Vector3d translation;

    explicit PreparedMotion(const double *six)
        : matrix(rotationMatrix(Eigen::Map<const Eigen::Vector3d>(six))),
          jacobian(leftJacobian(Eigen::Map<const Eigen::Vector3d>(six))),
          translation(Eigen::Map<const Eigen::Vector3d>(six + 3)) {}

    // Let p be a point after this motion (rotation and translation), and `rotated` the same point after the rotation
    // alone. Computes the derivative of `map` * p with respect to the six numbers of the motion. Writes it into `rows`,
    // as two rows of six numbers. Does nothing if `rows` is null.
    void differentiate(const Matrix23 &map, const Eigen::Vector3d &rotated, double *rows) const {
        for (std::ptrdiff_t row = 0; rows != nullptr && row < 2; row++) {
            const double x = map(row, 0);
            const double y = map(row, 1);
            const double z = map(row, 2);
            const double aboutX = rotated.y() * z - rotated.z() * y;
            const double aboutY = rotated.z() * x - rotated.x() * z;
            const double aboutZ = rotated.x() * y - rotated.y() * x;
            double *six = rows + row * 6;
            for (int i = 0; i < 3; i++) {
                six[i] = aboutX * jacobian(0, i) + aboutY * jacobian(1, i) + aboutZ * jacobian(2, i);
            }
            six[3] = x;
            six[4] = y;
            six[5] = z;
        }
    }
};

// The motions on the way from a print to a camera.
struct PreparedMotions {
    PreparedMotion cameraFromRig, rigFromWorld, worldFromPrint;

    explicit PreparedMotions(const BlockPointers &blocks)
        : cameraFromRig(blocks[size_t(Block::CameraFromRig)]),
          rigFromWorld(blocks[size_t(Block::RigFromWorld)]),
          worldFromPrint(blocks[size_t(Block::WorldFromPrint)]) {}
};

// Cauchy's loss as a factor by which a residual is multiplied. For a squared residual s, the square of the factor is
// loss(s) / s.
struct RobustFactor {
    double factor = 1;
    double slope = 0;  // the derivative of the factor with respect to s

    RobustFactor(double s, double scale) {
        const double u = s / (scale * scale);
        if (u < 1e-6) {
            factor = 1 - u / 4;
            slope = -1 / (4 * scale * scale);
            return;
        }
        factor = std::sqrt(std::log1p(u) / u);
        slope = (1 / (1 + u) - factor * factor) / (2 * u * factor) / (scale * scale);
    }
};

}  // namespace

double reachOf(const Print &print) {
    if (print.points.empty()) {
        return 1;
    }
    Eigen::Vector2d low = print.points.front();
    Eigen::Vector2d high = low;
    for (const Eigen::Vector2d &point : print.points) {
        low = low.cwiseMin(point);
        high = high.cwiseMax(point);
    }
    return std::max((high - low).norm() / 2, 1e-9);
}

SightingResiduals::SightingResiduals(const Observations &observations, const Sighting &sighting, double scale)
    : camera(observations.cameras[size_t(observations.photographs[size_t(sighting.photograph)].camera)]),
      print(observations.prints[size_t(sighting.print)]),
      reach(reachOf(print)),
      robustScale(scale) {
    for (const SeenCorner &corner : sighting.corners) {
        if (corner.isUsed) {
            seen.push_back(&corner);
        }
    }
}

int SightingResiduals::blockSize(Block block) const {
    switch (block) {
        case Block::Intrinsics:
            return parameterCount(camera.lens);
        case Block::CameraFromRig:
        case Block::RigFromWorld:
        case Block::WorldFromPrint:
            return 6;
        case Block::Shape:
            return PrintShape::count;
    }
    return 0;
}

bool SightingResiduals::evaluate(const BlockPointers &blocks, double *residuals, double *const *jacobians) const {
    return jacobians == nullptr ? evaluateResiduals(blocks, residuals) : evaluateAll(blocks, residuals, jacobians);
}

bool SightingResiduals::evaluateResiduals(const BlockPointers &blocks, double *residuals) const {
    const PreparedMotions motions(blocks);
    const PreparedShape shape(blocks[size_t(Block::Shape)], reach);
    const Eigen::Matrix3d cameraFromWorld = motions.cameraFromRig.matrix * motions.rigFromWorld.matrix;
    const Eigen::Matrix3d rotation = cameraFromWorld * motions.worldFromPrint.matrix;
    const Eigen::Vector3d translation = cameraFromWorld * motions.worldFromPrint.translation +
                                        motions.cameraFromRig.matrix * motions.rigFromWorld.translation +
                                        motions.cameraFromRig.translation;
    for (size_t i = 0; i < seen.size(); i++) {
        const SeenCorner &corner = *seen[i];
        const Eigen::Vector3d place = shape.at(print.points[size_t(corner.point)]).place;
        Eigen::Vector2d image;
        if (!project(camera.lens, blocks[size_t(Block::Intrinsics)], times(rotation, place) + translation, image)) {
            return false;
        }
        Eigen::Vector2d error = (image - corner.image) / corner.sigma;
        if (robustScale > 0) {
            error *= RobustFactor(error.squaredNorm(), robustScale).factor;
        }
        Eigen::Map<Eigen::Vector2d>(residuals + 2 * i) = error;
    }
    return true;
}

bool SightingResiduals::evaluateAll(const BlockPointers &blocks, double *residuals, double *const *jacobians) const {
    const PreparedMotions motions(blocks);
    const auto &[cameraFromRig, rigFromWorld, worldFromPrint] = motions;
    const PreparedShape shape(blocks[size_t(Block::Shape)], reach);
    // Returns the address at which the two rows of a corner begin in the Jacobian of `block`; null if that Jacobian is
    // not wanted.
    const auto rowsOf = [&](Block block, size_t i) {
        double *all = jacobians[size_t(block)];
        return all == nullptr ? nullptr : all + 2 * i * size_t(blockSize(block));
    };
    Projection projection;
    for (size_t i = 0; i < seen.size(); i++) {
        const PreparedShape::Point printed = shape.at(print.points[size_t(seen[i]->point)]);
        const Eigen::Vector3d onPrint = times(worldFromPrint.matrix, printed.place);
        const Eigen::Vector3d inWorld = times(rigFromWorld.matrix, onPrint + worldFromPrint.translation);
        const Eigen::Vector3d inRig = times(cameraFromRig.matrix, inWorld + rigFromWorld.translation);
        if (!project(camera.lens, blocks[size_t(Block::Intrinsics)], inRig + cameraFromRig.translation, projection)) {
            return false;
        }
        const Eigen::Matrix2d weight = weigh(*seen[i], projection.image, residuals + 2 * i);
        if (double *rows = rowsOf(Block::Intrinsics, i)) {
            using Rows = Eigen::Matrix<double, 2, Eigen::Dynamic, Eigen::RowMajor>;
            Eigen::Map<Rows>(rows, 2, projection.byParameters.cols()) = weight.lazyProduct(projection.byParameters);
        }
        const Matrix23 byCamera = weight.lazyProduct(projection.byPoint);
        const Matrix23 byRig = byCamera.lazyProduct(cameraFromRig.matrix);
        const Matrix23 byWorld = byRig.lazyProduct(rigFromWorld.matrix);
        cameraFromRig.differentiate(byCamera, inRig, rowsOf(Block::CameraFromRig, i));
        rigFromWorld.differentiate(byRig, inWorld, rowsOf(Block::RigFromWorld, i));
        worldFromPrint.differentiate(byWorld, onPrint, rowsOf(Block::WorldFromPrint, i));
        if (double *rows = rowsOf(Block::Shape, i)) {
            const Matrix23 byPlace = byWorld.lazyProduct(worldFromPrint.matrix);
            for (std::ptrdiff_t row = 0; row < 2; row++) {
                PreparedShape::differentiate(printed, byPlace(row, 0), byPlace(row, 1), byPlace(row, 2),
                                             rows + row * PrintShape::count);
            }
        }
    }
    return true;
}

Eigen::Matrix2d SightingResiduals::weigh(const SeenCorner &corner, const Eigen::Vector2d &image,
                                         double *residual) const {
    const Eigen::Vector2d error = (image - corner.image) / corner.sigma;
    Eigen::Map<Eigen::Vector2d> result(residual);
    if (robustScale <= 0) {
        result = error;
        return Eigen::Matrix2d::Identity() / corner.sigma;
    }
    const RobustFactor robust(error.squaredNorm(), robustScale);
    result = robust.factor * error;
    return (robust.factor * Eigen::Matrix2d::Identity() + 2 * robust.slope * error * error.transpose()) / corner.sigma;
}

BlockPointers blocksOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    return {
        estimate.intrinsics[size_t(photograph.camera)].data(), estimate.cameraFromRig[size_t(photograph.camera)].data(),
        estimate.rigFromWorld[size_t(photograph.moment)].data(), estimate.worldFromPrint[size_t(sighting.print)].data(),
        estimate.shapes[size_t(sighting.print)].numbers.data()};
}

}  // namespace calibration
