#include "calibration/held_out.h"

#include <algorithm>
#include <cmath>

#include "calibration/outliers.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

constexpr int parts = 3;
// A larger square means that the corner is wrong, not the model.
constexpr double greatestSquare = 25;  // in units of good corners' variance

int partOf(const Observations &observations, const Sighting &sighting) {
    return observations.photographs[size_t(sighting.photograph)].moment % parts;
}

Observations onlyPart(const Observations &observations, int part, bool isHeldOut) {
    Observations some = observations;
    for (Sighting &sighting : some.sightings) {
        sighting.isUsed = sighting.isUsed && (partOf(observations, sighting) == part) == isHeldOut;
    }
    return some;
}

}  // namespace

std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate) {
    std::vector<std::optional<double>> errors(observations.sightings.size());
    const double scale = residualScale(observations, estimate);
    for (int part = 0; part < parts; part++) {
        SolveOptions training;
        training.freedom = freedom;
        training.iterations = 30;
        Estimate trained = estimate;
        SolveOptions placing;
        placing.freedom = {false, false, false, false, {}};
        placing.iterations = 20;
        const Observations heldOut = onlyPart(observations, part, true);
        if (!solveJointly(onlyPart(observations, part, false), training, trained) ||
            !solveJointly(heldOut, placing, trained)) {
            continue;
        }
        for (size_t i = 0; i < heldOut.sightings.size(); i++) {
            const Sighting &sighting = heldOut.sightings[i];
            const SightingResiduals residuals(heldOut, sighting, 0);
            Eigen::VectorXd values(residuals.rows());
            if (takesPart(heldOut, sighting, trained) && residuals.corners() > 0 &&
                residuals.evaluate(blocksOf(heldOut, sighting, trained), values.data(), nullptr)) {
                errors[i] = (values / scale).array().square().min(greatestSquare).mean();
            }
        }
    }
    return errors;
}

bool predictsBetter(const std::vector<std::optional<double>> &a, const std::vector<std::optional<double>> &b,
                    const std::vector<bool> &counts) {
    std::vector<double> gains;
    for (size_t i = 0; i < a.size(); i++) {
        if (counts[i] && a[i] && b[i]) {
            gains.push_back(*a[i] - *b[i]);
        }
    }
    if (gains.size() < 4) {
        return false;
    }
    double mean = 0;
    for (const double gain : gains) {
        mean += gain / double(gains.size());
    }
    double squares = 0;
    for (const double gain : gains) {
        squares += (gain - mean) * (gain - mean);
    }
    return mean > 2 * std::sqrt(squares / double(gains.size() - 1) / double(gains.size()));
}

}  // namespace calibration
