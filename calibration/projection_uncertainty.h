// How far a lens can be trusted over its picture: the uncertainty of where points project, and the difference between
// two lenses.
//
// A lens and the camera's pose are estimated together, and part of a lens's error only moves and turns the camera. What
// matters to a user is what is left when the camera's motion is fitted away, over the whole picture and weighted by how
// sure each part of it is. For points at infinity only the rotation is.
#pragma once

#include <Eigen/Core>
#include <limits>
#include <optional>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

constexpr double infinitelyFar = std::numeric_limits<double>::infinity();

// Values at the centres of the cells of a grid over the picture, row after row; nothing where the lens has no direction
// for a pixel.
struct PictureMap {
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

// Distance in pixels between where two lenses of one camera put the same points.
PictureMap projectionDifference(const Camera &camera, const Eigen::VectorXd &a, const Eigen::VectorXd &b,
                                double distance, int columns, int rows);

}  // namespace calibration
