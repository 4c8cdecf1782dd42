// Judges whether one print kept its place relative to another, from single photographs that show both.
#pragma once

#include <vector>

#include "calibration/rigid_motion.h"

namespace calibration {

using Vector6 = Eigen::Matrix<double, 6, 1>;
using Matrix6 = Eigen::Matrix<double, 6, 6>;

// The pose of a second print relative to a first print in one photograph. It is given as the difference from a
// reference pose that is the same for all photographs: a rotation vector in radians, then a translation in millimetres.
struct RelativePose {
    Vector6 offset;
    Matrix6 information;  // the inverse of the offset's covariance
    Vector6 byScale;      // the offset's derivative with respect to the logarithm of the second print's scale
};

// Returns the squared Mahalanobis distance between two poses.
double squaredDistance(const RelativePose &a, const RelativePose &b);

// Corrects all poses for an error in the scale of the second print, because a single photograph cannot tell a larger
// print from a nearer one. All poses get the same scale. Each pair of successive poses suggests the scale with which
// the two agree best, and the prior (printPrior) suggests no change. The weighted median of these suggestions is taken.
// The poses are given in the order of time.
void agreeOnScale(std::vector<RelativePose> &poses);

// Returns, for each pose, the number of the place that it belongs to, counted from 0. The poses are given in the order
// of time. They are cut into stretches of time in which the print did not clearly move. Stretches that agree belong to
// the same place. `excess` is the ratio of the true variances of the poses to those that `information` states.
std::vector<int> placesOf(const std::vector<RelativePose> &poses, double excess);

}  // namespace calibration
