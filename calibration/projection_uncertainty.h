// Computes how far a lens can be trusted in each part of its picture: the uncertainty of projected points, and the
// difference between two lenses.
//
// A lens and the camera's pose are estimated together, and part of a lens's error has the same effect as a small motion
// of the camera. Only the rest matters to a user. So a motion is fitted to the error over the whole picture and
// subtracted. In this fit, each part of the picture has a weight. For the uncertainty, the weight follows from the
// part's own uncertainty. For the difference, all weights are equal, or they follow from a given uncertainty. For
// points at infinity, the motion is only a rotation.
#pragma once

#include <Eigen/Core>
#include <limits>
#include <optional>
#include <vector>

#include "calibration/calibration_export.h"
#include "calibration/observations.h"

namespace calibration {

constexpr double infinitelyFar = std::numeric_limits<double>::infinity();

// Values at the centres of the cells of a grid over the picture, row by row. A value is empty if no direction is found
// that the lens projects to the centre of the cell. In a map that compares two lenses, this is the first lens. The
// direction gives a point, and the value is also empty if the second lens cannot project this point.
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

// Returns the standard deviation of projected points in pixels, along the direction in which it is greatest.
// `covariance` is that of the intrinsics, and `distance` is the points' distance in mm.
PictureMap projectionUncertainty(const Camera &camera, const Eigen::VectorXd &intrinsics,
                                 const Eigen::MatrixXd &covariance, double distance, int columns, int rows);

// `a` and `b` are the intrinsics of two lenses that are compared for one camera. Returns the distance in pixels between
// the projections of the same point through both lenses. `uncertainty` has the same columns and rows, and determines
// the weight of each part of the picture. Without it, all parts have the same weight. The fitted motion may then depend
// on parts of the picture in which the intrinsics of both lenses are inaccurate.
PictureMap projectionDifference(const Camera &camera, const Eigen::VectorXd &a, const Eigen::VectorXd &b,
                                double distance, int columns, int rows, const PictureMap *uncertainty = nullptr);

}  // namespace calibration
