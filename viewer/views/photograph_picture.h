// The picture of one photograph for showing it at any size, as it is or as a lens without distortion would have taken
// it. Loading and undistorting take long and belong on a background thread.
#pragma once

#include <Eigen/Core>
#include <QImage>
#include <QPointF>
#include <optional>
#include <vector>

#include "calibration/observations.h"

// A pinhole camera without distortion that looks the same way as a real one.
struct StraightLens {
    double focalLength = 0;  // pixels of the photograph
    Eigen::Vector2d centre;

    static StraightLens of(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics);
};

// Where a pixel of the photograph is in the undistorted picture; empty if it has no place there.
std::optional<QPointF> undistorted(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                                   const QPointF &pixel);

struct PhotographPicture {
    int width = 0;  // pixels of the photograph
    int height = 0;
    // The picture itself, and each half as large as the one before. Empty if the file cannot be read.
    std::vector<QImage> levels;

    static PhotographPicture load(const QString &path);
    // The same size as the photograph, but with at most 4 megapixels.
    PhotographPicture undistort(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics) const;
};
