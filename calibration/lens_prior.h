// Defines the prior for the parameters of a lens.
#pragma once

#include "calibration/observations.h"

namespace calibration {

// Returns 1 / (standard deviation of the prior) for each intrinsic parameter, or 0 if it has no prior. The mean of
// every prior is 0.
//
// The models with more than five coefficients need a prior if the field of view is narrow, because photographs then do
// not determine all coefficients. The numerator and the denominator of the radial factor can change together so that
// both pass through zero within the picture and nearly cancel there. A shift of the principal point has nearly the same
// effect as a thin prism together with decentering. In either case, wrong values can fit the noise slightly better, and
// then the standard deviation of the principal point is far too small. The priors counteract this: they keep the terms
// of the denominator and of the thin prism small in the whole picture. In the farthest corner of the picture, each term
// of the denominator has a standard deviation of 0.3, and each term of the thin prism has a standard deviation of 0.5 %
// of the squared radius.
Eigen::VectorXd lensPrior(const Camera &camera, const Eigen::VectorXd &intrinsics);

}  // namespace calibration
