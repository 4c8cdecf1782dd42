// Judges whether one print kept its place relative to another, from single photographs that show both.
#pragma once

#include <vector>

#include "calibration/rigid_motion.h"

namespace calibration {

using Vector6 = Eigen::Matrix<double, 6, 1>;
using Matrix6 = Eigen::Matrix<double, 6, 6>;

// The pose of one print relative to another in one photograph, as the difference from a common reference: a rotation
// vector in radians, then a translation in millimetres.
struct RelativePose {
    Vector6 offset;
    Matrix6 information;  // the inverse of the offset's covariance
    Vector6 byScale;      // the offset's derivative with respect to the logarithm of the second print's scale
};

// Returns the squared Mahalanobis distance between two poses.
double squaredDistance(const RelativePose &a, const RelativePose &b);

// Corrects all poses for an error in the scale of the second print, because a single photograph cannot tell a larger
// print from a nearer one. All poses get the same scale: the one with which they agree best, as far as the prior allows
// it. The poses are given in the order of time.
void agreeOnScale(std::vector<RelativePose> &poses);

// Returns the number of the place that each pose belongs to, from 0. The poses are given in the order of time. They are
// cut into stretches of time without a clear change. Stretches that agree belong to the same place. `excess` is the
// ratio of the true variances to those that the poses state.
std::vector<int> placesOf(const std::vector<RelativePose> &poses, double excess);

}  // namespace calibration
