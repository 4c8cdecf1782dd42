#include "viewer/session/common_axes.h"

#include <stdexcept>

using calibration::AssemblyAxes;
using calibration::Calibration;
using calibration::Print;
using calibration::RigidMotion;

namespace {

AssemblyAxes::Corner cornerOf(const Print &print, size_t point) {
    return {print.number, print.cells[point].x(), print.cells[point].y()};
}

// Returns three corners that define axes with the same directions as x and y in `print.points`. The origin of the axes
// is the corner nearest to (0, 0). Empty if the print has no lattice.
std::optional<AssemblyAxes> axesOf(const Print &print) {
    if (print.cells.empty()) {
        return std::nullopt;
    }
    const auto farthest = [&print](const Eigen::Vector2d &weights) {
        size_t best = 0;
        for (size_t i = 1; i < print.points.size(); ++i) {
            best = weights.dot(print.points[i]) > weights.dot(print.points[best]) ? i : best;
        }
        return best;
    };
    size_t origin = 0;
    for (size_t i = 1; i < print.points.size(); ++i) {
        origin = print.points[i].norm() < print.points[origin].norm() ? i : origin;
    }
    const auto onLine = [&](int axis) {
        size_t best = origin;
        for (size_t i = 0; i < print.points.size(); ++i) {
            const bool isOnLine = print.cells[i][1 - axis] == print.cells[origin][1 - axis];
            best = isOnLine && print.cells[i][axis] > print.cells[best][axis] ? i : best;
        }
        return best;
    };
    const size_t x = onLine(0) != origin ? onLine(0) : farthest({1, 0});
    const size_t y = onLine(1) != origin ? onLine(1) : farthest({0, 1});
    return AssemblyAxes{{cornerOf(print, origin), cornerOf(print, x), cornerOf(print, y)}};
}

}  // namespace

std::optional<AssemblyAxes> chosenAxes(const Calibration &calibration, const SessionSettings &settings) {
    if (settings.frame) {
        AssemblyAxes axes;
        for (size_t i = 0; i < 3; ++i) {
            const NamedCorner &corner = (*settings.frame)[i];
            axes.corners[i] = {corner.pattern, corner.column, corner.row};
        }
        return axes;
    }
    for (const Print &print : calibration.observations.prints) {
        if (settings.reference && print.number == *settings.reference) {
            return axesOf(print);
        }
    }
    return std::nullopt;
}

CommonAxes commonAxes(const Calibration &calibration, const SessionSettings &settings) {
    CommonAxes axes;
    try {
        const auto patterns = calibration::assemblyOf(calibration, chosenAxes(calibration, settings));
        if (!patterns.empty()) {
            const RigidMotion fromPrint{calibration::rotationVector(patterns[0].rotation), patterns[0].translation};
            axes.fromWorld = fromPrint * calibration.estimate.worldFromPrint[size_t(patterns[0].print)].inverse();
        }
    } catch (const std::invalid_argument &error) {
        axes.problem = QString::fromStdString(error.what());
    }
    return axes;
}
