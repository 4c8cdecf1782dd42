// Computes the poses of prints, and the places of all their corners, in a common coordinate system. This is done for
// the first print that has a pose and for all prints that photographs link with it. If a print is bent, its corners are
// on the bent surface. Lengths are in millimetres.
#pragma once

#include <Eigen/Core>
#include <array>
#include <optional>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// Three corners that define the common coordinate system. The first corner is the origin, the x axis goes through the
// second, and the third is on the side of the positive y axis. If no corners are given, the common coordinate system is
// that of the first print that has a pose, with the origin and the axes of its pattern file.
struct AssemblyAxes {
    struct Corner {
        int pattern = 0;  // Print::number; has no effect if assemblyOf() returns only one print
        int column = 0;   // as in the pattern file
        int row = 0;
    };
    std::array<Corner, 3> corners;
};

struct AssemblyPoint {
    Eigen::Vector2i cell;  // column and row in the pattern file
    Eigen::Vector3d place;
    // The standard deviation of the place, in the direction in which it is greatest. The pose of the first print counts
    // as exact.
    double sigma = 0;
};

struct AssemblyPattern {
    int print = 0;
    // Rotation and translation take points from the print's own axes to the common ones.
    Eigen::Matrix3d rotation;
    Eigen::Vector3d translation;
    Eigen::Vector2d scale;              // the size of the print divided by that of its drawing, along x and along y
    std::vector<AssemblyPoint> points;  // every corner of the print, seen or not
};

// Returns the first print that has a pose and all prints that photographs link with it; none if no print has a pose.
// Throws std::invalid_argument with a sentence for the user if a corner of `axes` is not in these prints or if the
// three corners lie on one line.
std::vector<AssemblyPattern> assemblyOf(const Calibration &calibration, const std::optional<AssemblyAxes> &axes);

}  // namespace calibration
