#include "calibration/rigid_motion.h"

#include <Eigen/Geometry>
#include <cmath>

namespace calibration {

Eigen::Matrix3d crossMatrix(const Eigen::Vector3d &v) {
    Eigen::Matrix3d matrix;
    matrix << 0, -v.z(), v.y(), v.z(), 0, -v.x(), -v.y(), v.x(), 0;
    return matrix;
}

Eigen::Matrix3d rotationMatrix(const Eigen::Vector3d &rotation) {
    const double angle2 = rotation.squaredNorm();
    const double angle = std::sqrt(angle2);
    // Below this angle, the first terms of the series are exact to the last digit.
    const bool isSmall = angle < 1e-4;
    const double a = isSmall ? 1 - angle2 / 6 : std::sin(angle) / angle;
    const double b = isSmall ? 0.5 - angle2 / 24 : (1 - std::cos(angle)) / angle2;
    const Eigen::Matrix3d cross = crossMatrix(rotation);
    return Eigen::Matrix3d::Identity() + a * cross + b * cross * cross;
}

Eigen::Vector3d rotationVector(const Eigen::Matrix3d &matrix) {
    const Eigen::AngleAxisd angleAxis(matrix);
    return angleAxis.angle() * angleAxis.axis();
}

Eigen::Matrix3d leftJacobian(const Eigen::Vector3d &rotation) {
    const double angle2 = rotation.squaredNorm();
    const double angle = std::sqrt(angle2);
    const bool isSmall = angle < 1e-3;
    const double b = isSmall ? 0.5 - angle2 / 24 : (1 - std::cos(angle)) / angle2;
    const double c = isSmall ? 1.0 / 6 - angle2 / 120 : (angle - std::sin(angle)) / (angle2 * angle);
    const Eigen::Matrix3d cross = crossMatrix(rotation);
    return Eigen::Matrix3d::Identity() + b * cross + c * cross * cross;
}

Eigen::Matrix3d rotationBetween(const Eigen::Vector3d &from, const Eigen::Vector3d &to) {
    Eigen::Vector3d axis = from.cross(to);
    const double angle = std::atan2(axis.norm(), from.dot(to));
    if (!(axis.norm() > 1e-12 * from.norm() * to.norm())) {
        axis = from.unitOrthogonal();
    }
    return rotationMatrix(angle * axis.normalized());
}

RigidMotion RigidMotion::operator*(const RigidMotion &first) const {
    const Eigen::Matrix3d matrix = rotationMatrix(rotation);
    return {rotationVector(matrix * rotationMatrix(first.rotation)), matrix * first.translation + translation};
}

RigidMotion RigidMotion::inverse() const {
    return {-rotation, -(rotationMatrix(rotation).transpose() * translation)};
}

}  // namespace calibration
