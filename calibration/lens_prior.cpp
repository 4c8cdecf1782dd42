#include "calibration/lens_prior.h"

#include <algorithm>
#include <cmath>

namespace calibration {

Eigen::VectorXd lensPrior(const Camera &camera, const Eigen::VectorXd &intrinsics) {
    constexpr Eigen::Index firstOfDenominator = pinholeParameters + 5;
    constexpr Eigen::Index firstOfPrism = pinholeParameters + 8;
    // The standard deviations of the prior in the farthest corner of the picture; lens_prior.h gives the reasons.
    constexpr double greatestTerm = 0.3;     // of each term of the denominator
    constexpr double greatestPrism = 0.005;  // of each term of the thin prism, as a share of the squared radius
    Eigen::VectorXd weights = Eigen::VectorXd::Zero(intrinsics.size());
    if (camera.lens != LensModel::Pinhole8 && camera.lens != LensModel::Pinhole12) {
        return weights;
    }
    const double x = std::max(intrinsics(2), camera.width - intrinsics(2)) / intrinsics(0);
    const double y = std::max(intrinsics(3), camera.height - intrinsics(3)) / intrinsics(1);
    const double r2 = x * x + y * y;
    weights.segment<3>(firstOfDenominator) << r2 / greatestTerm, r2 * r2 / greatestTerm, r2 * r2 * r2 / greatestTerm;
    if (camera.lens == LensModel::Pinhole12) {
        weights.segment<4>(firstOfPrism) << 1 / greatestPrism, r2 / greatestPrism, 1 / greatestPrism,
            r2 / greatestPrism;
    }
    return weights;
}

}  // namespace calibration
