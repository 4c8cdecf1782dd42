// The squares of a print, for drawing it in a picture or in a scene.
#pragma once

#include <Eigen/Core>
#include <QPolygonF>
#include <array>
#include <vector>

#include "calibration/observations.h"

struct PrintSquare {
    std::array<Eigen::Vector3d, 4> corners;  // mm, in the print's axes; in order around the square
    bool isDark = false;
};

// Returns a square for every four neighbouring points, bent as the shape says; empty if the print has no grid.
std::vector<PrintSquare> squaresOf(const calibration::Print &print, const calibration::PrintShape &shape);

// The square as a camera sees it, in pixels; empty if the camera cannot see one of its corners.
QPolygonF seenBy(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                 const calibration::RigidMotion &cameraFromPrint, const PrintSquare &square);
