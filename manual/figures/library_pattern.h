// A pattern as the camera library makes it: its picture and, from its pattern file, its dimensions. The figures
// of the manual are drawn from nothing else.
//
// Lengths are millimetres; points have the origin at the top-left corner of the outer size, x to the right and
// y down. Library failures are LmLibException; a pattern file that does not say what is read is
// std::runtime_error.
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
    // Number of lattice points along x and along y; the points row by row.
    int columns = 0;
    int rows = 0;
    std::vector<QPointF> points;
    // Index of the point that lies at the pattern's offset.
    int referenceColumn = 0;
    int referenceRow = 0;

    QPointF point(int column, int row) const {
        return points[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                      static_cast<std::size_t>(column)];
    }
    QPointF referencePoint() const { return point(referenceColumn, referenceRow); }
};

// Has the library make one pattern, whose parameters `write` writes below the item it is given, and a picture of
// it whose longer side has so many pixels.
LibraryPattern makeLibraryPattern(const std::function<void(const TreeItem &pattern)> &write, int longerSidePixels);
