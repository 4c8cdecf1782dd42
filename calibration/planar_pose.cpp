#include "calibration/planar_pose.h"

#include <Eigen/Geometry>
#include <cmath>
#include <limits>

#include "calibration/dense_solve.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

constexpr size_t leastCorners = 6;

// Returns the transformation that moves the points' mean to the origin and scales them to a size of about 1. With such
// points, the homography is well conditioned.
Eigen::Matrix3d conditioner(const std::vector<Eigen::Vector2d> &points) {
    Eigen::Vector2d mean = Eigen::Vector2d::Zero();
    for (const Eigen::Vector2d &p : points) {
        mean += p / double(points.size());
    }
    double spread = 0;
    for (const Eigen::Vector2d &p : points) {
        spread += (p - mean).squaredNorm() / double(points.size());
    }
    const double scale = 1 / std::max(std::sqrt(spread), 1e-12);
    Eigen::Matrix3d matrix;
    matrix << scale, 0, -scale * mean.x(), 0, scale, -scale * mean.y(), 0, 0, 1;
    return matrix;
}

// Computes a homography by the direct linear transformation (Hartley and Zisserman, "Multiple View Geometry", 4.1).
// Returns nothing if it is not unique.
std::optional<Eigen::Matrix3d> homography(const std::vector<Eigen::Vector2d> &from,
                                          const std::vector<Eigen::Vector2d> &to) {
    const Eigen::Matrix3d fromScale = conditioner(from);
    const Eigen::Matrix3d toScale = conditioner(to);
    Eigen::Matrix<double, 9, 9> normal = Eigen::Matrix<double, 9, 9>::Zero();
    for (size_t i = 0; i < from.size(); i++) {
        const Eigen::Vector3d a = fromScale * from[i].homogeneous();
        const Eigen::Vector3d b = toScale * to[i].homogeneous();
        Eigen::Matrix<double, 2, 9> rows;
        rows << a.transpose(), 0, 0, 0, -b.x() * a.transpose(), 0, 0, 0, a.transpose(), -b.y() * a.transpose();
        normal += rows.transpose().lazyProduct(rows);
    }
    const std::optional<Eigensystem> system = eigensystemOf(normal);
    if (!system || !(system->values(1) > 1e-9 * system->values(8))) {
        return std::nullopt;
    }
    const Eigen::VectorXd h = system->vectors.col(0);
    Eigen::Matrix3d matrix;
    matrix << h(0), h(1), h(2), h(3), h(4), h(5), h(6), h(7), h(8);
    return toScale.inverse() * matrix * fromScale;
}

// Returns the rotation that is nearest to the matrix, by polar decomposition. The matrix must have a positive
// determinant. Returns nothing if it is nearly singular.
std::optional<Eigen::Matrix3d> nearestRotation(const Eigen::Matrix3d &matrix) {
    const std::optional<Eigensystem> system = eigensystemOf(matrix.transpose() * matrix);
    if (!system || !(system->values(0) > 1e-12 * system->values(2))) {
        return std::nullopt;
    }
    const Eigen::VectorXd stretch = system->values.cwiseSqrt().cwiseInverse();
    return matrix * system->vectors * stretch.asDiagonal() * system->vectors.transpose();
}

std::optional<RigidMotion> poseOfHomography(Eigen::Matrix3d h) {
    h *= 2 / (h.col(0).norm() + h.col(1).norm());
    if (h(2, 2) < 0) {
        h = -h;
    }
    Eigen::Matrix3d axes;
    axes << h.col(0), h.col(1), h.col(0).cross(h.col(1));
    const std::optional<Eigen::Matrix3d> rotation = nearestRotation(axes);
    if (!rotation) {
        return std::nullopt;
    }
    return RigidMotion{rotationVector(*rotation), h.col(2)};
}

// Returns the pose in which the normal of the print leans to the other side of the line of sight. The middle of the
// print stays at the same place.
RigidMotion leaningTheOtherWay(const RigidMotion &pose, const Eigen::Vector3d &middle) {
    const Eigen::Matrix3d matrix = rotationMatrix(pose.rotation);
    const Eigen::Vector3d seen = pose * middle;
    const Eigen::Vector3d sight = seen.normalized();
    const Eigen::Vector3d normal = matrix.col(2);
    const Eigen::Vector3d other = 2 * sight.dot(normal) * sight - normal;
    const Eigen::Matrix3d turned = rotationBetween(normal, other) * matrix;
    return {rotationVector(turned), seen - turned * middle};
}

// Improves a pose by the Levenberg-Marquardt method. Only the six numbers of the pose vary.
class PoseFit {
public:
    PoseFit(const SightingResiduals &what, const BlockPointers &where)
        : residualsOf(what), blocks(where), residuals(what.rows()), byPose(what.rows(), 6) {}

    // Returns half the final sum of squares; infinity if the camera cannot see the print in the given pose.
    double improve(RigidMotion &pose) {
        double cost = costAt(pose, true);
        double damping = 1e-4;
        for (int i = 0; i < 40 && std::isfinite(cost); i++) {
            Eigen::Matrix<double, 6, 6> normal = gramMatrix(byPose);
            const Eigen::Matrix<double, 6, 1> gradient = byPose.transpose() * residuals;
            normal.diagonal() *= 1 + damping;
            const Eigen::Matrix<double, 6, 1> step = -solveSymmetric(normal, gradient);
            RigidMotion moved = pose;
            Eigen::Map<Eigen::Matrix<double, 6, 1>>(moved.data()) += step;
            const double movedCost = costAt(moved, false);
            if (!(movedCost < cost)) {
                damping *= 10;
                if (damping > 1e8) {
                    break;
                }
                continue;
            }
            const bool isDone = cost - movedCost < 1e-9 * cost;
            pose = moved;
            cost = costAt(pose, true);
            damping = std::max(damping / 10, 1e-12);
            if (isDone) {
                break;
            }
        }
        return cost;
    }

private:
    double costAt(const RigidMotion &pose, bool withDerivatives) {
        blocks[size_t(Block::RigFromWorld)] = pose.data();
        Eigen::VectorXd values(residualsOf.rows());
        double *jacobians[blockCount] = {};
        jacobians[size_t(Block::RigFromWorld)] = byPose.data();
        if (!residualsOf.evaluate(blocks, values.data(), withDerivatives ? jacobians : nullptr)) {
            return std::numeric_limits<double>::infinity();
        }
        if (withDerivatives) {
            residuals = values;
        }
        return values.squaredNorm() / 2;
    }

    const SightingResiduals &residualsOf;
    BlockPointers blocks;
    Eigen::VectorXd residuals;
    Eigen::Matrix<double, Eigen::Dynamic, 6, Eigen::RowMajor> byPose;
};

}  // namespace

std::optional<PlanarPose> planarPose(const Observations &observations, const Sighting &sighting,
                                     const Eigen::VectorXd &intrinsics, const PrintShape &shape) {
    const Print &print = observations.prints[size_t(sighting.print)];
    const Camera &camera = observations.cameras[size_t(observations.photographs[size_t(sighting.photograph)].camera)];
    std::vector<Eigen::Vector2d> drawn;
    std::vector<Eigen::Vector3d> directions;
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const SeenCorner &corner : sighting.corners) {
        Eigen::Vector3d direction;
        if (corner.isUsed && unproject(camera.lens, intrinsics.data(), corner.image, direction)) {
            drawn.push_back(print.points[size_t(corner.point)]);
            directions.push_back(direction);
            sum += direction;
        }
    }
    if (drawn.size() < leastCorners || !(sum.norm() > 1e-6)) {
        return std::nullopt;
    }
    // The directions are turned so that the print is straight ahead, because a fisheye may see the print far from the
    // optical axis.
    const Eigen::Matrix3d ahead = rotationBetween(sum, Eigen::Vector3d::UnitZ());
    std::vector<Eigen::Vector2d> places;
    for (const Eigen::Vector3d &direction : directions) {
        const Eigen::Vector3d turned = ahead * direction;
        if (!(turned.z() > 0.05)) {
            return std::nullopt;
        }
        places.push_back(turned.hnormalized());
    }
    const std::optional<Eigen::Matrix3d> map = homography(drawn, places);
    const std::optional<RigidMotion> turnedPose = map ? poseOfHomography(*map) : std::nullopt;
    if (!turnedPose) {
        return std::nullopt;
    }
    const RigidMotion back{rotationVector(ahead.transpose()), Eigen::Vector3d::Zero()};
    const RigidMotion first = back * *turnedPose;
    Eigen::Vector2d middle = Eigen::Vector2d::Zero();
    for (const Eigen::Vector2d &p : drawn) {
        middle += p / double(drawn.size());
    }
    const RigidMotion second = leaningTheOtherWay(first, {middle.x(), middle.y(), 0});

    const RigidMotion none;
    const SightingResiduals residuals(observations, sighting, 0);
    PoseFit fit(residuals, {intrinsics.data(), none.data(), none.data(), none.data(), shape.numbers.data()});
    std::optional<PlanarPose> best;
    double bestCost = std::numeric_limits<double>::infinity();
    for (RigidMotion pose : {first, second}) {
        const double cost = fit.improve(pose);
        if (cost < bestCost) {
            bestCost = cost;
            best = PlanarPose{pose, std::sqrt(2 * cost / residuals.rows())};
        }
    }
    return best;
}

}  // namespace calibration
