// How certain a solved estimate is: the covariance of all parameters that the solve varied, from the normal equations
// at the solution.
//
// Moments are eliminated one by one (the Schur complement), so time and memory grow only linearly with their number.
// The covariance is scaled by the residuals' own variance, so only the ratios of the corners' standard deviations need
// to be right.
#pragma once

#include <Eigen/Core>
#include <optional>
#include <vector>

#include "calibration/calibration_export.h"
#include "calibration/joint_solve.h"

namespace calibration {

class CALIBRATION_API Covariance {
public:
    // The variance of the residuals after division by the corners' standard deviations: 1 if these are right.
    double varianceFactor() const { return factor; }
    int usedCorners() const { return corners; }

    // The covariance of one block; empty if the solve did not vary it. The rows of a shape are its free numbers, in the
    // order of Freedom::shapes.
    Eigen::MatrixXd intrinsics(int camera) const { return blockAt(cameras[size_t(camera)].intrinsics); }
    Eigen::MatrixXd cameraFromRig(int camera) const { return blockAt(cameras[size_t(camera)].pose); }
    Eigen::MatrixXd worldFromPrint(int print) const { return blockAt(prints[size_t(print)].pose); }
    Eigen::MatrixXd shape(int print) const { return blockAt(prints[size_t(print)].shape); }
    // The covariance of a print's pose and shape together, pose first.
    Eigen::MatrixXd print(int print) const {
        return blockAt({prints[size_t(print)].pose, prints[size_t(print)].shape});
    }
    // The covariance of a camera's intrinsics and a print's shape together, intrinsics first.
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

// Nothing if the sightings do not determine everything that varies.
std::optional<Covariance> covarianceOf(const Observations &observations, const Freedom &freedom,
                                       const Estimate &estimate);

}  // namespace calibration
