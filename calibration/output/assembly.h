// The prints of a calibration in their common coordinate system, with every corner on the bent surface.
// Lengths are millimetres.
#pragma once

#include <Eigen/Core>
#include <array>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// Three corners that define the common coordinate system: the first is its origin, the x axis goes through the second,
// and the third lies on the side of the positive y axis. Without them it is that of the first print's file.
struct AssemblyAxes {
    struct Corner {
        int pattern = 0;  // Print::number; any value if there is only one print
        int column = 0;   // as in the pattern file
        int row = 0;
    };
    std::array<Corner, 3> corners;
};

struct AssemblyPoint {
    Eigen::Vector2i cell;  // column and row in the pattern file
    Eigen::Vector3d place;
    double sigma = 0;  // along the worst direction, in the first print's coordinate system
};

struct AssemblyPattern {
    int print = 0;
    // From the print's own axes to the common ones.
    Eigen::Matrix3d rotation;
    Eigen::Vector3d translation;
    Eigen::Vector2d scale;              // of the print in x and y, relative to its drawing
    std::vector<AssemblyPoint> points;  // every corner of the print, seen or not
};

// The prints that photographs link with the first one. Throws std::invalid_argument with a sentence for the user if a
// corner of `axes` does not exist or if the three lie on one line.
std::vector<AssemblyPattern> assemblyOf(const Calibration &calibration, const std::optional<AssemblyAxes> &axes);

}  // namespace calibration
