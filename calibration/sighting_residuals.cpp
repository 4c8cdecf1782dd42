#include "calibration/sighting_residuals.h"

#include <algorithm>
#include <cmath>

namespace calibration {

namespace {

using RowMajor6 = Eigen::Matrix<double, 2, 6, Eigen::RowMajor>;

// A motion with the matrices that its derivatives need, computed once for all corners of a sighting.
struct PreparedMotion {
    Eigen::Matrix3d matrix, jacobian;
    Eigen::Vector3d translation;

    explicit PreparedMotion(const double *six)
        : matrix(rotationMatrix(Eigen::Map<const Eigen::Vector3d>(six))),
          jacobian(leftJacobian(Eigen::Map<const Eigen::Vector3d>(six))),
          translation(Eigen::Map<const Eigen::Vector3d>(six + 3)) {}

    Eigen::Vector3d rotated(const Eigen::Vector3d &p) const { return matrix * p; }

    // The derivative of map * (the moved point) by the six numbers of the motion.
    RowMajor6 derivative(const Eigen::Matrix<double, 2, 3> &map, const Eigen::Vector3d &rotatedPoint) const {
        RowMajor6 derivative;
        derivative.leftCols<3>() = -map * crossMatrix(rotatedPoint) * jacobian;
        derivative.rightCols<3>() = map;
        return derivative;
    }
};

// Cauchy's loss as a factor by which a residual is multiplied. For a squared residual s, the square of the factor is
// loss(s) / s.
struct RobustFactor {
    double factor = 1;
    double slope = 0;  // the derivative of the factor by s

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
    using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const PreparedMotion cameraFromRig(blocks[size_t(Block::CameraFromRig)]);
    const PreparedMotion rigFromWorld(blocks[size_t(Block::RigFromWorld)]);
    const PreparedMotion worldFromPrint(blocks[size_t(Block::WorldFromPrint)]);
    const auto target = [&](Block block, size_t i) {
        const int size = blockSize(block);
        double *all = jacobians == nullptr ? nullptr : jacobians[size_t(block)];
        return Eigen::Map<RowMajor>(all == nullptr ? nullptr : all + 2 * i * size_t(size), all == nullptr ? 0 : 2,
                                    size);
    };
    Projection projection;
    for (size_t i = 0; i < seen.size(); i++) {
        const SeenCorner &corner = *seen[i];
        const PrintedPoint printed =
            printedPoint(blocks[size_t(Block::Shape)], reach, print.points[size_t(corner.point)]);
        const Eigen::Vector3d onPrint = worldFromPrint.rotated(printed.place);
        const Eigen::Vector3d inWorld = rigFromWorld.rotated(onPrint + worldFromPrint.translation);
        const Eigen::Vector3d inRig = cameraFromRig.rotated(inWorld + rigFromWorld.translation);
        if (!project(camera.lens, blocks[size_t(Block::Intrinsics)], inRig + cameraFromRig.translation, projection)) {
            return false;
        }
        const Eigen::Vector2d error = (projection.image - corner.image) / corner.sigma;
        Eigen::Matrix2d weight = Eigen::Matrix2d::Identity() / corner.sigma;
        Eigen::Map<Eigen::Vector2d> residual(residuals + 2 * i);
        residual = error;
        if (robustScale > 0) {
            const RobustFactor robust(error.squaredNorm(), robustScale);
            residual *= robust.factor;
            weight = (robust.factor * Eigen::Matrix2d::Identity() + 2 * robust.slope * error * error.transpose()) /
                     corner.sigma;
        }
        if (jacobians == nullptr) {
            continue;
        }
        if (auto byIntrinsics = target(Block::Intrinsics, i); byIntrinsics.rows() != 0) {
            byIntrinsics.noalias() = weight * projection.byParameters;
        }
        const Eigen::Matrix<double, 2, 3> byCamera = weight * projection.byPoint;
        const Eigen::Matrix<double, 2, 3> byRig = byCamera * cameraFromRig.matrix;
        const Eigen::Matrix<double, 2, 3> byWorld = byRig * rigFromWorld.matrix;
        if (auto byPose = target(Block::CameraFromRig, i); byPose.rows() != 0) {
            byPose = cameraFromRig.derivative(byCamera, inRig);
        }
        if (auto byPose = target(Block::RigFromWorld, i); byPose.rows() != 0) {
            byPose = rigFromWorld.derivative(byRig, inWorld);
        }
        if (auto byPose = target(Block::WorldFromPrint, i); byPose.rows() != 0) {
            byPose = worldFromPrint.derivative(byWorld, onPrint);
        }
        if (auto byShape = target(Block::Shape, i); byShape.rows() != 0) {
            byShape.noalias() = byWorld * worldFromPrint.matrix * printed.byNumbers;
        }
    }
    return true;
}

BlockPointers blocksOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    return {
        estimate.intrinsics[size_t(photograph.camera)].data(), estimate.cameraFromRig[size_t(photograph.camera)].data(),
        estimate.rigFromWorld[size_t(photograph.moment)].data(), estimate.worldFromPrint[size_t(sighting.print)].data(),
        estimate.shapes[size_t(sighting.print)].numbers.data()};
}

}  // namespace calibration
