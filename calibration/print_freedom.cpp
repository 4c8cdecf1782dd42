#include "calibration/print_freedom.h"

#include <algorithm>
#include <cmath>

#include "calibration/calibrate.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

// The standard deviation of the ratio of two lengths of about 100 mm that were measured with a caliper.
constexpr double measuredRatioSigma = 0.001;

int bendNumbers(Bend bend) {
    switch (bend) {
        case Bend::Flat:
            return 0;
        case Bend::Quadratic:
            return 3;
        case Bend::Cubic:
            return 7;
    }
    return 0;
}

const MeasuredPrint *measurementOf(const std::vector<MeasuredPrint> &measured, size_t print) {
    const auto found = std::find_if(measured.begin(), measured.end(),
                                    [&](const MeasuredPrint &one) { return one.print == int(print); });
    return found == measured.end() ? nullptr : &*found;
}

bool isGroupMeasured(const Estimate &estimate, const std::vector<MeasuredPrint> &measured, size_t print) {
    return std::any_of(measured.begin(), measured.end(), [&](const MeasuredPrint &one) {
        return estimate.groups[size_t(one.print)] == estimate.groups[print];
    });
}

}  // namespace

void setShapes(const Observations &observations, const std::vector<Bend> &bends,
               const std::vector<MeasuredPrint> &measured, Estimate &estimate, Freedom &freedom) {
    freedom.shapes.assign(bends.size(), {});
    freedom.priors.assign(bends.size(), {});
    for (size_t print = 0; print < bends.size(); print++) {
        PrintShape &shape = estimate.shapes[print];
        shape.reach = reachOf(observations.prints[print]);
        std::vector<int> &free = freedom.shapes[print];
        if (const MeasuredPrint *known = measurementOf(measured, print)) {
            shape.numbers[PrintShape::scale] = std::log(known->ratio.x() * known->ratio.y()) / 2;
            const double ratio = std::log(known->ratio.x() / known->ratio.y());
            freedom.priors[print].mean[PrintShape::ratio] = ratio;
            freedom.priors[print].sigma[PrintShape::ratio] = measuredRatioSigma;
        } else if (estimate.isOrigin(int(print)) && !isGroupMeasured(estimate, measured, print)) {
            shape.numbers[PrintShape::scale] = 0;
        } else {
            free.push_back(PrintShape::scale);
        }
        free.push_back(PrintShape::ratio);
        free.push_back(PrintShape::shear);
        const int bent = bendNumbers(bends[print]);
        for (int i = PrintShape::bend; i < PrintShape::count; i++) {
            if (i < PrintShape::bend + bent) {
                free.push_back(i);
            } else {
                shape.numbers[size_t(i)] = 0;
            }
        }
    }
}

std::vector<Bend> bendsOf(const Freedom &freedom) {
    std::vector<Bend> bends;
    for (const std::vector<int> &free : freedom.shapes) {
        const auto bent =
            std::count_if(free.begin(), free.end(), [](int number) { return number >= PrintShape::bend; });
        bends.push_back(bent == 0 ? Bend::Flat : bent == bendNumbers(Bend::Quadratic) ? Bend::Quadratic : Bend::Cubic);
    }
    return bends;
}

}  // namespace calibration
