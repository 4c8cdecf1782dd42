// Whether one print kept its place relative to another, judged from single photographs that show both.
#pragma once

#include <vector>

#include "calibration/rigid_motion.h"

namespace calibration {

using Vector6 = Eigen::Matrix<double, 6, 1>;
using Matrix6 = Eigen::Matrix<double, 6, 6>;

// How a photograph's relative pose differs from a common reference: a rotation vector in radians, then a translation in
// millimetres.
struct RelativePose {
    Vector6 offset;
    Matrix6 information;  // the inverse of the offset's covariance
    Vector6 byScale;      // derivative of the offset by the logarithm of the second print's scale
};

// The square of the distance of two poses in standard deviations.
double squaredDistance(const RelativePose &a, const RelativePose &b);

// Corrects the poses by the scale of the second print with which they agree best, as far as it is plausible. From one
// photograph, nobody can tell a larger print from a nearer one. The poses are given in the order of time.
void agreeOnScale(std::vector<RelativePose> &poses);

// The number of the place that each pose belongs to, from 0. The poses are given in the order of time. They are cut
// into stretches of time without a clear change; stretches that agree are the same place. `excess`: the factor by which
// variances are larger than the poses claim.
std::vector<int> placesOf(const std::vector<RelativePose> &poses, double excess);

}  // namespace calibration
