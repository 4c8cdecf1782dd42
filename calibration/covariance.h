// Computes how certain a solved estimate is: the covariance of the intrinsics, the poses of cameras and prints, and the
// shapes of prints. Only what the solve varied has a covariance. The covariance follows from the derivatives of the
// residuals at the solution and from the priors.
//
// The poses of the moments are eliminated one moment at a time. Time and memory therefore grow only linearly with the
// number of moments, but the covariance of these poses is not available. The covariance is multiplied by
// varianceFactor(). If all corners' standard deviations are wrong by the same ratio, this multiplication corrects the
// covariance almost completely. Only the weight of the priors relative to the corners stays wrong, because the standard
// deviations of the priors do not have this error.
#pragma once

#include <Eigen/Core>
#include <optional>
#include <vector>

#include "calibration/calibration_export.h"
#include "calibration/joint_solve.h"

namespace calibration {

class CALIBRATION_API Covariance {
public:
    // Returns the variance of (residual / standard deviation of its corner). It is 1 if the corners' standard
    // deviations are right.
    double varianceFactor() const { return factor; }
    int usedCorners() const { return corners; }

    // Return the covariance of one block of parameters; empty if the solve did not vary the block. For a shape, the
    // rows and columns are its free numbers, in the order of Freedom::shapes.
    Eigen::MatrixXd intrinsics(int camera) const { return blockAt(cameras[size_t(camera)].intrinsics); }
    Eigen::MatrixXd cameraFromRig(int camera) const { return blockAt(cameras[size_t(camera)].pose); }
    Eigen::MatrixXd worldFromPrint(int print) const { return blockAt(prints[size_t(print)].pose); }
    Eigen::MatrixXd shape(int print) const { return blockAt(prints[size_t(print)].shape); }
    // Returns the covariance of a print's pose and shape together, pose first.
    Eigen::MatrixXd print(int print) const {
        return blockAt({prints[size_t(print)].pose, prints[size_t(print)].shape});
    }
    // Returns the covariance of a camera's intrinsics and a print's shape together, intrinsics first.
    Eigen::MatrixXd lensAndShape(int camera, int print) const {
        return blockAt({cameras[size_t(camera)].intrinsics, prints[size_t(print)].shape});
    }

private:
    friend class CovarianceSum;

    struct Range {
        int first = 0, size = 0;
    };
    struct CameraRanges {
        Range intrinsics, pose;
    };
    struct PrintRanges {
        Range pose, shape;
    };

    Eigen::MatrixXd blockAt(Range range) const {
        return matrix.block(range.first, range.first, range.size, range.size);
    }
    Eigen::MatrixXd blockAt(const std::vector<Range> &ranges) const;

    std::vector<CameraRanges> cameras;
    std::vector<PrintRanges> prints;
    Eigen::MatrixXd matrix;
    double factor = 1;
    int corners = 0;
};

// Computes the covariance. A combination of parameters that the sightings do not determine gets a huge variance.
// Returns nothing if one of the parameters affects neither a residual nor a prior, or if the residuals do not outnumber
// the unknowns. Also returns nothing if a corner cannot be projected or a number is not finite.
std::optional<Covariance> covarianceOf(const Observations &observations, const Freedom &freedom,
                                       const Estimate &estimate);

}  // namespace calibration
