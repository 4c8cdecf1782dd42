// How far a lens can be trusted over its picture: the uncertainty of where points project, and the difference between
// two lenses.
//
// A lens and the camera's pose are estimated together, and part of a lens's error has the same effect as a small motion
// of the camera. What matters to a user is the rest. So the motion that explains most of the error is fitted over the
// whole picture and subtracted: for the uncertainty weighted by how certain each part of the picture is, for the
// difference with equal weights or those of an uncertainty. For points at infinity the motion is only a rotation.
#pragma once

#include <Eigen/Core>
#include <limits>
#include <optional>
#include <vector>

#include "calibration/calibration_export.h"
#include "calibration/observations.h"

namespace calibration {

constexpr double infinitelyFar = std::numeric_limits<double>::infinity();

// Values at the centres of the cells of a grid over the picture, row after row. A value is empty if the lens has no
// direction for that pixel.
struct CALIBRATION_API PictureMap {
    int columns = 0;
    int rows = 0;
    std::vector<std::optional<double>> values;

    Eigen::Vector2d pixel(const Camera &camera, int column, int row) const;
    std::optional<double> at(int column, int row) const {
        return values[size_t(row) * size_t(columns) + size_t(column)];
    }
    std::optional<double> greatest() const;
};

// Standard deviation in pixels along the worse direction, for points at a distance in mm.
PictureMap projectionUncertainty(const Camera &camera, const Eigen::VectorXd &intrinsics,
                                 const Eigen::MatrixXd &covariance, double distance, int columns, int rows);

// Distance in pixels between the two images of the same point through two lenses of one camera. The uncertainty, of
// the same columns and rows, weights the parts of the picture; without it, all weigh the same, and parts where neither
// lens is known can decide the motion.
PictureMap projectionDifference(const Camera &camera, const Eigen::VectorXd &a, const Eigen::VectorXd &b,
                                double distance, int columns, int rows, const PictureMap *uncertainty = nullptr);

}  // namespace calibration
