// Describes how a print differs from its drawing: in scale, in the ratio of x to y, in shear and in bend.
#pragma once

#include <Eigen/Core>
#include <array>

namespace calibration {

struct PrintShape {
    // The numbers, in the order in which a solver varies them:
    //   0      logarithm of the scale, which is the geometric mean of the scales along x and y
    //   1      logarithm of the ratio of the x scale to the y scale
    //   2      shear: how much x grows per unit of y
    //   3..5   bend in mm: the factors of x^2, xy and y^2, with x and y in units of `reach`
    //   6..9   bend in mm: the factors of x^3, x^2 y, x y^2 and y^3
    static constexpr int scale = 0;
    static constexpr int ratio = 1;
    static constexpr int shear = 2;
    static constexpr int bend = 3;
    static constexpr int count = 10;

    std::array<double, count> numbers{};
    double reach = 1;  // mm: see reachOf(); makes the bends of prints of different sizes comparable
};

// `place` says where a point of the drawing is on the real print, in mm. `byNumbers` has the derivatives of `place`
// with respect to the shape's numbers. x and y are in the plane of the print, and z is the bend.
struct PrintedPoint {
    Eigen::Vector3d place;
    Eigen::Matrix<double, 3, PrintShape::count, Eigen::RowMajor> byNumbers;
};
PrintedPoint printedPoint(const double *numbers, double reach, const Eigen::Vector2d &drawn);

// Computes the same as printedPoint(), but is faster for many points of one print. Keeps a pointer to the shape's
// numbers, which must outlive this object.
class PreparedShape {
public:
    struct Point {
        Eigen::Vector3d place;
        double plainX, byShear;        // mm: x without shear, and how much x grows per unit of shear
        std::array<double, 7> powers;  // x^2, xy, ..., y^3 in units of reach, in the order of the bend's factors
    };

    PreparedShape(const double *numbers, double reach);

    Point at(const Eigen::Vector2d &drawn) const {
        const double x = drawn.x() * inverseReach;
        const double y = drawn.y() * inverseReach;
        const double xx = x * x;
        const double xy = x * y;
        const double yy = y * y;
        Point point{{}, scaleX * drawn.x(), scale * drawn.y(), {xx, xy, yy, x * xx, x * xy, x * yy, y * yy}};
        double bend = 0;
        for (size_t i = 0; i < point.powers.size(); i++) {
            bend += weights[i] * point.powers[i];
        }
        point.place = {point.plainX + shear * point.byShear, scaleY * drawn.y(), bend};
        return point;
    }

    // Writes the derivatives of direction · place with respect to all numbers of the shape to `byNumbers`.
    static void differentiate(const Point &point, double directionX, double directionY, double directionZ,
                              double *byNumbers) {
        const double alongX = directionX * point.plainX;
        const double alongY = directionY * point.place.y();
        byNumbers[PrintShape::scale] = directionX * point.place.x() + alongY;
        byNumbers[PrintShape::ratio] = (alongX - alongY) / 2;
        byNumbers[PrintShape::shear] = directionX * point.byShear;
        for (size_t i = 0; i < point.powers.size(); i++) {
            byNumbers[PrintShape::bend + i] = directionZ * point.powers[i];
        }
    }

private:
    double scale, scaleX, scaleY, shear, inverseReach;
    const double *weights;
};

}  // namespace calibration
