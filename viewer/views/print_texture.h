// Makes the outlines of everything that is printed (squares, round marks and the code), for drawing it in a picture or
// in a scene. They are the outlines that the camera library prints, in the shape that the calibration found.
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
    Outline whole;                // the outline of the cell, to be filled with the light colour
    std::vector<Outline> shapes;  // what lies within an odd number of these is dark
};

// Returns the cells of a print with its quiet zone; none if the look of the print is not known.
std::vector<PrintCell> textureOf(const SessionResult &result, int print);

// Returns the dark parts of the cell as a path to be filled with a brush. `place` maps the corners of their outlines to
// the path; the path is empty if `place` returns nothing for one of them.
QPainterPath darkPartsOf(const PrintCell &cell,
                         const std::function<std::optional<QPointF>(const Eigen::Vector3d &)> &place);

// Returns a function that maps points of a print to pixels of a camera's picture. The function returns nothing for a
// point that the camera cannot see. The arguments must outlive the function.
std::function<std::optional<QPointF>(const Eigen::Vector3d &)> seenBy(const calibration::Camera &camera,
                                                                      const Eigen::VectorXd &intrinsics,
                                                                      const calibration::RigidMotion &cameraFromPrint);
