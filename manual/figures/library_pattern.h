// A pattern made by the camera library: its picture, and its dimensions from its pattern file. The manual's figures
// take dimensions from nowhere else.
//
// Lengths are in millimetres. The points' origin is the top-left corner of the pattern's outer edge, with x to the
// right and y down. Failures of the library throw LmLibException. A pattern file without points, or with another number
// of points than its lattice has, throws std::runtime_error.
#pragma once

#include <QImage>
#include <QPointF>
#include <QSizeF>
#include <functional>
#include <vector>

#include "lmlib/tree_item.h"

struct LibraryPattern {
    // The pattern with its quiet zone.
    QImage picture;
    QSizeF outerSize;
    double quietZone = 0.0;
    double gridSpacing = 0.0;
    // The number of lattice points along x and along y, and the points row by row.
    int columns = 0;
    int rows = 0;
    std::vector<QPointF> points;
    // The column and the row of the reference point: the point whose position the pattern's parameter `Offset` gives.
    int referenceColumn = 0;
    int referenceRow = 0;

    QPointF point(int column, int row) const {
        return points[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                      static_cast<std::size_t>(column)];
    }
    QPointF referencePoint() const { return point(referenceColumn, referenceRow); }
};

// Lets the library make a pattern, and a picture of it whose longer side has this number of pixels. `write` must write
// the pattern's parameters below the item that it is given.
LibraryPattern makeLibraryPattern(const std::function<void(const TreeItem &pattern)> &write, int longerSidePixels);
