// Draws the light and dark areas of a print, in the picture of a camera or in a view of the scene.
#pragma once

#include <QColor>
#include <QPointF>
#include <functional>
#include <optional>

#include "viewer/session/print_texture.h"

class QPainter;

// Maps points of a print to the painter's coordinates; returns nothing for a point that cannot be seen.
using PlaceOnPicture = std::function<std::optional<QPointF>(const Eigen::Vector3d &)>;

// The greatest number of cells that are drawn in detail. With more cells, it would take longer than 30 ms to draw all
// shapes.
constexpr size_t mostCellsInDetail = 2500;
size_t cellCount(const std::vector<PrintBlock> &blocks);

// Fills the areas of a block, without lines around them. If `inDetail` is false, the block's large shapes are the only
// dark areas. If `light` is not valid, only the dark areas are drawn. If `place` returns nothing for a corner of a dark
// area, all dark areas of the same cell are left out (or, if `inDetail` is false, all dark areas of the block). A light
// area is left out if `place` returns nothing for one of its own corners.
void drawBlock(QPainter &painter, const PrintBlock &block, bool inDetail, const PlaceOnPicture &place,
               const QColor &light, const QColor &dark);

// Returns a function that maps points of a print to pixels of a camera's picture. `camera` and `intrinsics` must
// outlive the function.
PlaceOnPicture seenBy(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                      const calibration::RigidMotion &cameraFromPrint);
