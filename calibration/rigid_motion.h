// A rotation followed by a translation, as six numbers that a solver can vary.
#pragma once

#include <Eigen/Core>

#include "calibration/calibration_export.h"

namespace calibration {

// Returns the rotation matrix of a rotation vector. The vector's direction is the axis, and its length is the angle in
// radians.
CALIBRATION_API Eigen::Matrix3d rotationMatrix(const Eigen::Vector3d &rotation);

// Returns the rotation vector of a rotation matrix. The vector's length is at most pi.
CALIBRATION_API Eigen::Vector3d rotationVector(const Eigen::Matrix3d &matrix);

// Returns the matrix J for which rotationMatrix(rotation + d) = rotationMatrix(J d) * rotationMatrix(rotation) for a
// small d.
Eigen::Matrix3d leftJacobian(const Eigen::Vector3d &rotation);

Eigen::Matrix3d crossMatrix(const Eigen::Vector3d &v);

// Returns the rotation by the smallest angle that turns one direction into another. If the directions are opposite,
// this is half a turn about some axis perpendicular to them.
Eigen::Matrix3d rotationBetween(const Eigen::Vector3d &from, const Eigen::Vector3d &to);

// Maps p to rotationMatrix(rotation) * p + translation. A motion from coordinates b to coordinates a is named "aFromB".
struct CALIBRATION_API RigidMotion {
    Eigen::Vector3d rotation = Eigen::Vector3d::Zero();
    Eigen::Vector3d translation = Eigen::Vector3d::Zero();

    Eigen::Vector3d operator*(const Eigen::Vector3d &p) const { return rotationMatrix(rotation) * p + translation; }
    // Returns the motion that applies `first`, then this one.
    RigidMotion operator*(const RigidMotion &first) const;
    RigidMotion inverse() const;

    // Returns a pointer to the six numbers, rotation first.
    double *data() { return rotation.data(); }
    const double *data() const { return rotation.data(); }
};

static_assert(sizeof(RigidMotion) == 6 * sizeof(double), "a solver varies the six numbers in place");

}  // namespace calibration
