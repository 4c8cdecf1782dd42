// The picture of one photograph, for display at any size. The picture is shown either unchanged or as a lens without
// distortion would have taken it. load() and undistort() take long, so call them on a background thread.
#pragma once

#include <Eigen/Core>
#include <QImage>
#include <QPointF>
#include <optional>
#include <vector>

#include "calibration/observations.h"

// A pinhole camera without distortion. It looks in the same direction as the real camera. If the real camera has a
// fisheye lens, the focal length of the pinhole camera is 0.6 times that of the fisheye lens, so that the picture shows
// more.
struct StraightLens {
    double focalLength = 0;  // pixels of the photograph
    Eigen::Vector2d centre;  // principal point, pixels of the photograph

    static StraightLens of(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics);
};

// Returns where the undistorted picture shows a pixel of the photograph. Empty if the lens model has no direction of
// view for the pixel, or if this direction is more than 87 degrees from the optical axis. The place can lie outside the
// undistorted picture.
std::optional<QPointF> undistorted(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                                   const QPointF &pixel);

struct PhotographPicture {
    int width = 0;  // pixels of the photograph
    int height = 0;
    // The picture itself, followed by smaller copies, each with half the width and height of the one before. Empty if
    // the file cannot be read.
    std::vector<QImage> levels;

    static PhotographPicture load(const QString &path);
    // Returns the undistorted picture. Its `width` and `height` are those of the photograph, even if its first level is
    // smaller: that level has at most 4 megapixels.
    PhotographPicture undistort(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics) const;
};
