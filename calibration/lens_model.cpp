#include "calibration/lens_model.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace calibration {

namespace {

constexpr int greatestCoefficients = greatestParameters - pinholeParameters;

// A distorted point on the image plane at distance 1, and its derivatives.
struct Distorted {
    Eigen::Vector2d place;
    Eigen::Matrix<double, 2, 3> byPoint;
    // The derivatives of x and of y with respect to the coefficients that the model has.
    std::array<double, greatestCoefficients> xByCoefficients, yByCoefficients;
};

// Returns all coefficients; those that the model lacks are zero.
std::array<double, greatestCoefficients> pinholeCoefficients(int count, const double *coefficients) {
    std::array<double, greatestCoefficients> all{};
    std::copy_n(coefficients, count, all.begin());
    return all;
}

struct Radial {
    double factor, slope;  // the slope is the factor's derivative with respect to the squared radius
    double numerator, denominator;
};

Radial radialOf(const std::array<double, greatestCoefficients> &k, double r2) {
    const double numerator = 1 + r2 * (k[0] + r2 * (k[1] + r2 * k[4]));
    const double denominator = 1 + r2 * (k[5] + r2 * (k[6] + r2 * k[7]));
    const double numeratorSlope = k[0] + r2 * (2 * k[1] + 3 * r2 * k[4]);
    const double denominatorSlope = k[5] + r2 * (2 * k[6] + 3 * r2 * k[7]);
    const double factor = numerator / denominator;
    return {factor, (numeratorSlope - factor * denominatorSlope) / denominator, numerator, denominator};
}

Eigen::Vector2d distortPinhole(const std::array<double, greatestCoefficients> &k, double x, double y,
                               const Radial &radial) {
    const double r2 = x * x + y * y;
    return {x * radial.factor + 2 * k[2] * x * y + k[3] * (r2 + 2 * x * x) + r2 * (k[8] + r2 * k[9]),
            y * radial.factor + k[2] * (r2 + 2 * y * y) + 2 * k[3] * x * y + r2 * (k[10] + r2 * k[11])};
}

void differentiateByCoefficients(int count, double x, double y, const Radial &radial, Distorted &result) {
    const double r2 = x * x + y * y;
    const double r4 = r2 * r2;
    const double r6 = r4 * r2;
    const double up = 1 / radial.denominator;
    const std::array<double, 5> polynomial = {r2 * up, r4 * up, 0, 0, r6 * up};
    for (size_t i = 0; i < polynomial.size(); i++) {
        result.xByCoefficients[i] = x * polynomial[i];
        result.yByCoefficients[i] = y * polynomial[i];
    }
    result.xByCoefficients[2] = result.yByCoefficients[3] = 2 * x * y;
    result.xByCoefficients[3] = r2 + 2 * x * x;
    result.yByCoefficients[2] = r2 + 2 * y * y;
    if (count > 5) {
        const double down = -radial.factor * up;
        const std::array<double, 3> rational = {r2 * down, r4 * down, r6 * down};
        for (size_t i = 0; i < rational.size(); i++) {
            result.xByCoefficients[5 + i] = x * rational[i];
            result.yByCoefficients[5 + i] = y * rational[i];
        }
        const std::array<double, 4> prismX = {r2, r4, 0, 0};
        const std::array<double, 4> prismY = {0, 0, r2, r4};
        std::copy(prismX.begin(), prismX.end(), result.xByCoefficients.begin() + 8);
        std::copy(prismY.begin(), prismY.end(), result.yByCoefficients.begin() + 8);
    }
}

void differentiatePinhole(const std::array<double, greatestCoefficients> &k, int count, double x, double y,
                          double inverseZ, const Radial &radial, Distorted &result) {
    const double r2 = x * x + y * y;
    const double prismX = k[8] + 2 * r2 * k[9];
    const double prismY = k[10] + 2 * r2 * k[11];
    const double mixed = 2 * (x * y * radial.slope + k[2] * x + k[3] * y);
    const double xByX = radial.factor + 2 * (x * x * radial.slope + k[2] * y + 3 * k[3] * x + x * prismX);
    const double xByY = mixed + 2 * y * prismX;
    const double yByX = mixed + 2 * x * prismY;
    const double yByY = radial.factor + 2 * (y * y * radial.slope + 3 * k[2] * y + k[3] * x + y * prismY);
    result.byPoint << xByX * inverseZ, xByY * inverseZ, -(x * xByX + y * xByY) * inverseZ,  //
        yByX * inverseZ, yByY * inverseZ, -(x * yByX + y * yByY) * inverseZ;
    differentiateByCoefficients(count, x, y, radial, result);
}

// Distorts an angle that is measured from the optical axis. Computes the derivative of the distorted angle, too.
void distortAngle(const double *k, double angle, double &distorted, double &slope) {
    const double a2 = angle * angle;
    distorted = angle * (1 + a2 * (k[0] + a2 * (k[1] + a2 * (k[2] + a2 * k[3]))));
    slope = 1 + a2 * (3 * k[0] + a2 * (5 * k[1] + a2 * (7 * k[2] + 9 * a2 * k[3])));
}

// The formulas of the fisheye divide by the distance of a point from the optical axis. If this distance, divided by the
// point's distance from the camera, is below this limit, the formulas of a pinhole are used instead.
constexpr double nearAxis = 1e-9;

bool distortFisheye(const double *k, const Eigen::Vector3d &point, Distorted &result) {
    const double radius = std::hypot(point.x(), point.y());
    const double distance2 = point.squaredNorm();
    if (!(distance2 > 0)) {
        return false;
    }
    if (radius * radius < nearAxis * nearAxis * distance2) {
        if (point.z() <= 0) {
            return false;
        }
        result.place = point.head<2>() / point.z();
        result.byPoint << 1 / point.z(), 0, 0, 0, 1 / point.z(), 0;
        result.xByCoefficients.fill(0);
        result.yByCoefficients.fill(0);
        return true;
    }
    const double angle = std::atan2(radius, point.z());
    double distorted = 0;
    double slope = 0;
    distortAngle(k, angle, distorted, slope);
    const Eigen::Vector2d direction = point.head<2>() / radius;
    result.place = distorted * direction;
    const Eigen::Vector3d angleByPoint(point.z() * direction.x() / distance2, point.z() * direction.y() / distance2,
                                       -radius / distance2);
    const Eigen::Vector2d across(-direction.y(), direction.x());
    result.byPoint = direction * slope * angleByPoint.transpose();
    result.byPoint.leftCols<2>() += across * (distorted / radius) * across.transpose();
    const double a2 = angle * angle;
    const double a3 = angle * a2;
    const std::array<double, 4> powers = {a3, a3 * a2, a3 * a2 * a2, a3 * a2 * a2 * a2};
    for (size_t i = 0; i < powers.size(); i++) {
        result.xByCoefficients[i] = direction.x() * powers[i];
        result.yByCoefficients[i] = direction.y() * powers[i];
    }
    return true;
}

// Distorts a point. The derivatives are computed only if `differentiates` is true or the lens is a fisheye.
bool distort(LensModel lens, const double *coefficients, const Eigen::Vector3d &point, bool differentiates,
             Distorted &result) {
    if (lens == LensModel::Fisheye) {
        return distortFisheye(coefficients, point, result);
    }
    if (!(point.z() > 1e-9 * point.norm())) {
        return false;
    }
    const int count = coefficientCount(lens);
    const std::array<double, greatestCoefficients> k = pinholeCoefficients(count, coefficients);
    const double inverseZ = 1 / point.z();
    const double x = point.x() * inverseZ;
    const double y = point.y() * inverseZ;
    const Radial radial = radialOf(k, x * x + y * y);
    result.place = distortPinhole(k, x, y, radial);
    if (differentiates) {
        differentiatePinhole(k, count, x, y, inverseZ, radial, result);
    }
    return true;
}

bool directionOfFisheye(const double *k, const Eigen::Vector2d &place, Eigen::Vector3d &direction) {
    const double wanted = place.norm();
    double angle = std::min(wanted, 3.0);
    for (int i = 0; i < 50; i++) {
        double distorted = 0;
        double slope = 0;
        distortAngle(k, angle, distorted, slope);
        if (!(slope > 1e-6)) {
            return false;
        }
        const double step = (wanted - distorted) / slope;
        angle = std::clamp(angle + step, 0.0, 3.1);
        if (std::abs(step) < 1e-13) {
            break;
        }
    }
    double distorted = 0;
    double slope = 0;
    distortAngle(k, angle, distorted, slope);
    const double sine = std::sin(angle);
    const Eigen::Vector2d across = wanted > nearAxis ? Eigen::Vector2d(place / wanted) : Eigen::Vector2d(1, 0);
    direction = {across.x() * sine, across.y() * sine, std::cos(angle)};
    return std::abs(distorted - wanted) < 1e-9;
}

// Uses Newton's method in the plane at distance 1, with steps of limited length. Returns false if the start or a later
// guess is at a place where the distortion folds over, or nearly does. Also returns false if 50 steps are not enough.
bool directionOfPinhole(LensModel lens, const double *coefficients, const Eigen::Vector2d &place,
                        Eigen::Vector3d &direction) {
    Eigen::Vector2d guess = place;
    Distorted distorted;
    for (int i = 0; i < 50; i++) {
        if (!distort(lens, coefficients, {guess.x(), guess.y(), 1}, true, distorted)) {
            return false;
        }
        const Eigen::Matrix2d slope = distorted.byPoint.leftCols<2>();
        const double determinant = slope(0, 0) * slope(1, 1) - slope(0, 1) * slope(1, 0);
        if (!(determinant > 1e-6)) {
            return false;
        }
        const Eigen::Vector2d error = place - distorted.place;
        Eigen::Vector2d step((slope(1, 1) * error.x() - slope(0, 1) * error.y()) / determinant,
                             (slope(0, 0) * error.y() - slope(1, 0) * error.x()) / determinant);
        const double limit = 0.5 * (1 + guess.norm());
        step *= std::min(1.0, limit / std::max(step.norm(), 1e-300));
        guess += step;
        if (step.norm() < 1e-13 * (1 + guess.norm())) {
            direction = Eigen::Vector3d(guess.x(), guess.y(), 1).normalized();
            return true;
        }
    }
    return false;
}

}  // namespace

int coefficientCount(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
        case LensModel::Fisheye:
            return 4;
        case LensModel::Pinhole5:
            return 5;
        case LensModel::Pinhole8:
            return 8;
        case LensModel::Pinhole12:
            return 12;
    }
    return 0;
}

int parameterCount(LensModel lens) {
    return pinholeParameters + coefficientCount(lens);
}

const char *nameOf(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
            return "pinhole4";
        case LensModel::Pinhole5:
            return "pinhole5";
        case LensModel::Pinhole8:
            return "pinhole8";
        case LensModel::Pinhole12:
            return "pinhole12";
        case LensModel::Fisheye:
            return "fisheye";
    }
    return "";
}

bool project(LensModel lens, const double *parameters, const Eigen::Vector3d &point, Projection &projection) {
    Distorted distorted;
    if (!distort(lens, parameters + pinholeParameters, point, true, distorted)) {
        return false;
    }
    const double focalX = parameters[0];
    const double focalY = parameters[1];
    projection.image = {focalX * distorted.place.x() + parameters[2], focalY * distorted.place.y() + parameters[3]};
    projection.byPoint.row(0) = focalX * distorted.byPoint.row(0);
    projection.byPoint.row(1) = focalY * distorted.byPoint.row(1);
    const int coefficients = coefficientCount(lens);
    projection.byParameters.resize(2, pinholeParameters + coefficients);
    projection.byParameters.leftCols<pinholeParameters>() << distorted.place.x(), 0, 1, 0, 0, distorted.place.y(), 0, 1;
    for (int i = 0; i < coefficients; i++) {
        projection.byParameters(0, pinholeParameters + i) = focalX * distorted.xByCoefficients[size_t(i)];
        projection.byParameters(1, pinholeParameters + i) = focalY * distorted.yByCoefficients[size_t(i)];
    }
    return projection.image.allFinite();
}

bool project(LensModel lens, const double *parameters, const Eigen::Vector3d &point, Eigen::Vector2d &image) {
    Distorted distorted;
    if (!distort(lens, parameters + pinholeParameters, point, false, distorted)) {
        return false;
    }
    image = {parameters[0] * distorted.place.x() + parameters[2], parameters[1] * distorted.place.y() + parameters[3]};
    return image.allFinite();
}

bool unproject(LensModel lens, const double *parameters, const Eigen::Vector2d &image, Eigen::Vector3d &direction) {
    const Eigen::Vector2d place((image.x() - parameters[2]) / parameters[0],
                                (image.y() - parameters[3]) / parameters[1]);
    const double *coefficients = parameters + pinholeParameters;
    return lens == LensModel::Fisheye ? directionOfFisheye(coefficients, place, direction)
                                      : directionOfPinhole(lens, coefficients, place, direction);
}

}  // namespace calibration
