// The assembly that the example's photographs show: five patterns around a corner of a room. Lengths are in
// millimetres. The world has the axes of pattern 0: x to the right, y down, z into the print. Its origin is the middle
// corner of pattern 0.
#pragma once

#include <array>

namespace example_assembly {

constexpr double gridSpacing = 24;
constexpr int patternCount = 5;

struct Pose {
    std::array<double, 3> rotation;     // axis times angle, radians
    std::array<double, 3> translation;  // of the middle corner
};

constexpr std::array<Pose, patternCount> worldFromPattern{{
    {{0, 0, 0}, {0, 0, 0}},
    {{0.05, 0.55, 0.10}, {245, 15, -70}},
    {{-0.08, -0.50, 0.20}, {-250, -25, -60}},
    {{0.45, 0.04, -1.40}, {30, 265, -60}},
    {{-0.52, 0.10, 0.35}, {-35, -270, -75}},
}};

}  // namespace example_assembly
