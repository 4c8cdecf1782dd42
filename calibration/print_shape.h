// Describes how a print differs from its drawing: in scale, in the ratio of x to y, in shear and in bend.
#pragma once

#include <Eigen/Core>
#include <array>

namespace calibration {

struct PrintShape {
    // The numbers, in the order in which a solver varies them:
    //   0      logarithm of the scale, the geometric mean of x and y
    //   1      logarithm of the ratio of the x scale to the y scale
    //   2      shear: x grows by this much per unit of y
    //   3..5   bend in mm: the weights of x^2, xy and y^2, with x and y in units of `reach`
    //   6..9   bend in mm: the weights of x^3, x^2 y, x y^2 and y^3
    static constexpr int scale = 0;
    static constexpr int ratio = 1;
    static constexpr int shear = 2;
    static constexpr int bend = 3;
    static constexpr int count = 10;

    std::array<double, count> numbers{};
    double reach = 1;  // mm: half the diagonal of the drawn points, so that the bends of all prints are comparable
};

// A point of the drawing on the real print, in the print's own axes: x and y are in its plane, z is the bend. All in
// mm, with the derivatives by the shape's numbers.
struct PrintedPoint {
    Eigen::Vector3d place;
    Eigen::Matrix<double, 3, PrintShape::count, Eigen::RowMajor> byNumbers;
};
PrintedPoint printedPoint(const double *numbers, double reach, const Eigen::Vector2d &drawn);

}  // namespace calibration
