// Projects what is printed, so that it can be drawn as a camera sees it or as it looks in a scene.
#pragma once

#include <QPainterPath>
#include <functional>
#include <optional>

#include "viewer/session/print_texture.h"

// Returns the dark parts of the cell as a path to be filled with a brush. `place` maps the corners of the outlines to
// the path. If `place` returns nothing for at least one corner, the path is empty.
QPainterPath darkPartsOf(const PrintCell &cell,
                         const std::function<std::optional<QPointF>(const Eigen::Vector3d &)> &place);

// Returns a function that maps points of a print to pixels of a camera's picture. The function returns nothing for a
// point that the camera cannot see. The arguments must outlive the function.
std::function<std::optional<QPointF>(const Eigen::Vector3d &)> seenBy(const calibration::Camera &camera,
                                                                      const Eigen::VectorXd &intrinsics,
                                                                      const calibration::RigidMotion &cameraFromPrint);
