#include "calibration/output/assembly.h"

#include <Eigen/Geometry>
#include <cmath>
#include <stdexcept>
#include <string>

namespace calibration {

namespace {

AssemblyPattern patternOf(const Calibration &calibration, int print) {
    const Print &drawing = calibration.observations.prints[size_t(print)];
    const PrintShape &shape = calibration.estimate.shapes[size_t(print)];
    const RigidMotion &pose = calibration.estimate.worldFromPrint[size_t(print)];
    const std::vector<double> &sigmas = calibration.prints[size_t(print)].pointSigmas;
    AssemblyPattern pattern;
    pattern.print = print;
    pattern.rotation = rotationMatrix(pose.rotation);
    pattern.translation = pose.translation;
    const double scale = shape.numbers[PrintShape::scale];
    const double halfRatio = shape.numbers[PrintShape::ratio] / 2;
    pattern.scale = {std::exp(scale + halfRatio), std::exp(scale - halfRatio)};
    for (size_t i = 0; i < drawing.points.size(); i++) {
        const Eigen::Vector2i cell = i < drawing.cells.size() ? drawing.cells[i] : Eigen::Vector2i(int(i), 0);
        const Eigen::Vector3d onPrint = printedPoint(shape.numbers.data(), shape.reach, drawing.points[i]).place;
        pattern.points.push_back({cell, pose * onPrint, i < sigmas.size() ? sigmas[i] : 0});
    }
    return pattern;
}

// Returns the place of a corner. If there is only one pattern, `corner.pattern` does not have to be its number.
Eigen::Vector3d placeOf(const AssemblyAxes::Corner &corner, const Calibration &calibration,
                        const std::vector<AssemblyPattern> &patterns) {
    for (const AssemblyPattern &pattern : patterns) {
        if (patterns.size() > 1 && calibration.observations.prints[size_t(pattern.print)].number != corner.pattern) {
            continue;
        }
        for (const AssemblyPoint &point : pattern.points) {
            if (point.cell == Eigen::Vector2i(corner.column, corner.row)) {
                return point.place;
            }
        }
    }
    throw std::invalid_argument("The coordinate system cannot be made: pattern " + std::to_string(corner.pattern) +
                                " is not in the photographs, is not linked with the other patterns, or has no corner "
                                "in column " +
                                std::to_string(corner.column) + ", row " + std::to_string(corner.row) + ".");
}

// Converts the patterns from the first print's coordinate system to that of the three corners.
void changeAxes(const AssemblyAxes &axes, const Calibration &calibration, std::vector<AssemblyPattern> &patterns) {
    std::array<Eigen::Vector3d, 3> corners;
    for (size_t i = 0; i < corners.size(); i++) {
        corners[i] = placeOf(axes.corners[i], calibration, patterns);
    }
    const Eigen::Vector3d along = corners[1] - corners[0];
    const Eigen::Vector3d aside = corners[2] - corners[0];
    const Eigen::Vector3d normal = along.cross(aside);
    if (!(normal.norm() > 1e-6 * along.norm() * aside.norm())) {
        throw std::invalid_argument("The coordinate system cannot be made: its three corners lie on one line.");
    }
    Eigen::Matrix3d turn;
    turn.row(0) = along.normalized();
    turn.row(2) = normal.normalized();
    turn.row(1) = normal.cross(along).normalized();
    for (AssemblyPattern &pattern : patterns) {
        pattern.rotation = turn * pattern.rotation;
        pattern.translation = turn * (pattern.translation - corners[0]);
        for (AssemblyPoint &point : pattern.points) {
            point.place = turn * (point.place - corners[0]);
        }
    }
}

}  // namespace

std::vector<AssemblyPattern> assemblyOf(const Calibration &calibration, const std::optional<AssemblyAxes> &axes) {
    std::vector<AssemblyPattern> patterns;
    const int group = calibration.firstGroup();
    for (size_t print = 0; group >= 0 && print < calibration.observations.prints.size(); print++) {
        if (calibration.estimate.groups[print] == group) {
            patterns.push_back(patternOf(calibration, int(print)));
        }
    }
    if (axes) {
        changeAxes(*axes, calibration, patterns);
    }
    return patterns;
}

}  // namespace calibration
