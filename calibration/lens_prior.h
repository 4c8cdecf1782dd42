// What is known of every lens before any photograph.
#pragma once

#include "calibration/observations.h"

namespace calibration {

// For each intrinsic parameter, 1 / the standard deviation of its value about 0; 0 if nothing is known of it.
//
// The models with more than five coefficients need this in narrow fields, where photographs do not determine them. The
// numerator and the denominator of the rational function can grow together until both pass through zero within the
// picture, where they nearly cancel. A shift of the principal point looks like a thin prism with decentering. Either
// fits the noise slightly better, and what remains looks as if it knew the principal point far better than it does. So
// each term of the denominator is known to be about 0.3 or less in the farthest corner of the picture, and a thin prism
// to be weak: about 0.5 % of the squared radius there.
Eigen::VectorXd lensPrior(const Camera &camera, const Eigen::VectorXd &intrinsics);

}  // namespace calibration
