#include "calibration/print_shape.h"

#include <cmath>

namespace calibration {

PrintedPoint printedPoint(const double *numbers, double reach, const Eigen::Vector2d &drawn) {
    const double scale = std::exp(numbers[PrintShape::scale]);
    const double stretch = std::exp(numbers[PrintShape::ratio] / 2);
    const double plainX = scale * stretch * drawn.x();
    const double shearX = scale * numbers[PrintShape::shear] * drawn.y();
    const double plainY = scale / stretch * drawn.y();
    const double x = drawn.x() / reach;
    const double y = drawn.y() / reach;
    Eigen::Matrix<double, 7, 1> powers;
    powers << x * x, x * y, y * y, x * x * x, x * x * y, x * y * y, y * y * y;
    const Eigen::Map<const Eigen::Matrix<double, 7, 1>> weights(numbers + PrintShape::bend);

    PrintedPoint point;
    point.place = {plainX + shearX, plainY, powers.dot(weights)};
    point.byNumbers.setZero();
    point.byNumbers.col(PrintShape::scale) << plainX + shearX, plainY, 0;
    point.byNumbers.col(PrintShape::ratio) << plainX / 2, -plainY / 2, 0;
    point.byNumbers(0, PrintShape::shear) = scale * drawn.y();
    point.byNumbers.block<1, 7>(2, PrintShape::bend) = powers.transpose();
    return point;
}

}  // namespace calibration
