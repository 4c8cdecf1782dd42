// What is printed, as outlines to draw in a picture or in a scene: squares, round marks and the code, in the shape that
// the calibration found. The outlines are those that the camera library prints.
#pragma once

#include <Eigen/Core>
#include <QPainterPath>
#include <functional>
#include <optional>
#include <vector>

#include "calibration/observations.h"
#include "viewer/session/session_result.h"

using Outline = std::vector<Eigen::Vector3d>;  // corners in the print's axes, mm

// A piece of the print about as large as one of its squares. It overlaps its neighbours a little.
struct PrintCell {
    Outline whole;                // light
    std::vector<Outline> shapes;  // what lies within an odd number of these is dark
};

// The cells of a print with its quiet zone. None if its kind is not known.
std::vector<PrintCell> textureOf(const SessionResult &result, int print);

// The dark parts of the cell, where `place` puts their corners; empty if it has no place for one of them. Fill it with
// a brush.
QPainterPath darkPartsOf(const PrintCell &cell,
                         const std::function<std::optional<QPointF>(const Eigen::Vector3d &)> &place);

// Puts points of a print into a camera's picture, in pixels; empty for a point that is not in front of the camera. The
// arguments must live as long as the function.
std::function<std::optional<QPointF>(const Eigen::Vector3d &)> seenBy(const calibration::Camera &camera,
                                                                      const Eigen::VectorXd &intrinsics,
                                                                      const calibration::RigidMotion &cameraFromPrint);
