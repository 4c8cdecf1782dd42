#include "calibration/print_shape.h"

#include <cmath>

namespace calibration {

PreparedShape::PreparedShape(const double *numbers, double reach)
    : scale(std::exp(numbers[PrintShape::scale])),
      shear(numbers[PrintShape::shear]),
      inverseReach(1 / reach),
      weights(numbers + PrintShape::bend) {
    const double stretch = std::exp(numbers[PrintShape::ratio] / 2);
    scaleX = scale * stretch;
    scaleY = scale / stretch;
}

PrintedPoint printedPoint(const double *numbers, double reach, const Eigen::Vector2d &drawn) {
    const PreparedShape::Point point = PreparedShape(numbers, reach).at(drawn);
    PrintedPoint result;
    result.place = point.place;
    PreparedShape::differentiate(point, 1, 0, 0, result.byNumbers.row(0).data());
    PreparedShape::differentiate(point, 0, 1, 0, result.byNumbers.row(1).data());
    PreparedShape::differentiate(point, 0, 0, 1, result.byNumbers.row(2).data());
    return result;
}

}  // namespace calibration
