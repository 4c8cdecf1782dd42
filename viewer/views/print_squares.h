// The squares of a print, to draw it in a picture or in a scene.
#pragma once

#include <Eigen/Core>
#include <QPolygonF>
#include <array>
#include <vector>

#include "calibration/observations.h"

struct PrintSquare {
    std::array<Eigen::Vector3d, 4> corners;  // in the print's axes, mm, around the square
    bool isDark = false;
};

// One square between every four neighbouring points; none if the print has no grid. The shape may bend them.
std::vector<PrintSquare> squaresOf(const calibration::Print &print, const calibration::PrintShape &shape);

// The square as a camera sees it, in pixels; empty if not all of it is in front of the camera.
QPolygonF seenBy(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                 const calibration::RigidMotion &cameraFromPrint, const PrintSquare &square);
