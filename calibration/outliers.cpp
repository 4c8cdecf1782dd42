#include "calibration/outliers.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace calibration {

namespace {

constexpr int rounds = 6;
constexpr int exactRounds = 3;
// The median length of a vector whose two components are normally distributed with variance 1.
constexpr double medianLength = 1.17741;
constexpr double leastScale = 1e-6;
// Scales of the robust loss, in standard deviations. Before the first solve, bad sightings distort the whole estimate,
// so good corners can have large residuals too. The first scale is wide, so that these corners still count.
constexpr double firstRobustScale = 20;
constexpr double robustScale = 6;
// The tolerance of the robust solves, which need not be exact.
constexpr double roughTolerance = 1e-5;
// A sighting is left out if it has fewer good corners than leastCorners, or if their share is smaller than leastShare.
constexpr int leastCorners = 6;
constexpr double leastShare = 0.5;

int cameraOf(const Observations &observations, const Sighting &sighting) {
    return observations.photographs[size_t(sighting.photograph)].camera;
}

// Makes the corners' standard deviations agree with the residuals. Returns the factor of each camera.
std::vector<double> agreeWithResiduals(Observations &observations, const Estimate &estimate) {
    std::vector<double> scales = residualScales(observations, estimate);
    scaleDeviations(observations, scales);
    return scales;
}

bool solveRoughly(const Observations &observations, const Freedom &freedom, double scale, Estimate &estimate) {
    SolveOptions options;
    options.freedom = freedom;
    options.robustScale = scale;
    options.tolerance = roughTolerance;
    options.isNear = scale < firstRobustScale;
    return solveJointly(observations, options, estimate).has_value();
}

bool decide(const Observations &observations, const Sighting &all, const Estimate &estimate, Sighting &sighting) {
    const std::vector<double> lengths =
        residualLengths(observations, sighting, blocksOf(observations, sighting, estimate));
    std::vector<bool> isGood;
    int good = 0;
    for (size_t k = 0; k < lengths.size(); k++) {
        isGood.push_back(lengths[k] < greatestLength && all.corners[k].isUsed);
        good += isGood.back() ? 1 : 0;
    }
    const bool fits = good >= leastCorners && good >= leastShare * double(lengths.size());
    bool changed = fits != sighting.isUsed;
    sighting.isUsed = fits;
    for (size_t k = 0; k < sighting.corners.size(); k++) {
        // If a sighting is left out, its corners get back the `isUsed` that they have in the input.
        const bool isUsed = fits ? isGood[k] : all.corners[k].isUsed;
        changed = changed || (fits && isUsed != sighting.corners[k].isUsed);
        sighting.corners[k].isUsed = isUsed;
    }
    return changed;
}

}  // namespace

std::vector<double> residualLengths(const Observations &observations, const Sighting &sighting,
                                    const BlockPointers &blocks) {
    Sighting all = sighting;
    for (SeenCorner &corner : all.corners) {
        corner.isUsed = true;
    }
    const SightingResiduals residuals(observations, all, 0);
    Eigen::VectorXd values(residuals.rows());
    if (!residuals.evaluate(blocks, values.data(), nullptr)) {
        return {};
    }
    std::vector<double> lengths(static_cast<size_t>(residuals.corners()));
    for (size_t i = 0; i < lengths.size(); i++) {
        lengths[i] = values.segment<2>(2 * Eigen::Index(i)).norm();
    }
    return lengths;
}

double scaleOfLengths(std::vector<double> lengths) {
    if (lengths.empty()) {
        return 1;
    }
    const auto middle = lengths.begin() + std::ptrdiff_t(lengths.size() / 2);
    std::nth_element(lengths.begin(), middle, lengths.end());
    return std::max(*middle / medianLength, leastScale);
}

std::vector<double> residualScales(const Observations &observations, const Estimate &estimate) {
    std::vector<std::vector<double>> lengths(observations.cameras.size());
    for (const Sighting &sighting : observations.sightings) {
        if (takesPart(observations, sighting, estimate)) {
            const std::vector<double> some =
                residualLengths(observations, sighting, blocksOf(observations, sighting, estimate));
            std::vector<double> &all = lengths[size_t(cameraOf(observations, sighting))];
            all.insert(all.end(), some.begin(), some.end());
        }
    }
    std::vector<double> scales;
    scales.reserve(lengths.size());
    for (std::vector<double> &some : lengths) {
        scales.push_back(scaleOfLengths(std::move(some)));
    }
    return scales;
}

void scaleDeviations(Observations &observations, const std::vector<double> &factors) {
    for (Sighting &sighting : observations.sightings) {
        const double factor = factors[size_t(cameraOf(observations, sighting))];
        for (SeenCorner &corner : sighting.corners) {
            corner.sigma *= factor;
        }
    }
}

std::optional<std::vector<double>> solveRobustly(Observations &observations, const Freedom &freedom,
                                                 Estimate &estimate) {
    std::vector<double> factors(observations.cameras.size(), 1.0);
    // The last scale, 0, stands for no solve. It only makes the standard deviations agree with the residuals of the
    // second solve.
    for (const double scale : {firstRobustScale, robustScale, 0.0}) {
        const std::vector<double> more = agreeWithResiduals(observations, estimate);
        std::transform(factors.begin(), factors.end(), more.begin(), factors.begin(), std::multiplies<>());
        if (scale > 0 && !solveRoughly(observations, freedom, scale, estimate)) {
            return std::nullopt;
        }
    }
    return factors;
}

bool decideOutliers(const Observations &given, Observations &observations, const Estimate &estimate) {
    agreeWithResiduals(observations, estimate);
    bool changed = false;
    for (size_t i = 0; i < observations.sightings.size(); i++) {
        if (given.sightings[i].isUsed && hasPose(observations, observations.sightings[i], estimate)) {
            changed = decide(observations, given.sightings[i], estimate, observations.sightings[i]) || changed;
        }
    }
    return changed;
}

bool solveWithoutOutliers(const Observations &given, Observations &observations, const Freedom &freedom,
                          Estimate &estimate) {
    if (!solveRobustly(observations, freedom, estimate)) {
        return false;
    }
    for (int round = 0; round < rounds && decideOutliers(given, observations, estimate); round++) {
        if (!solveRoughly(observations, freedom, robustScale, estimate)) {
            return false;
        }
    }
    SolveOptions exact;
    exact.freedom = freedom;
    exact.isNear = true;
    if (!solveJointly(observations, exact, estimate)) {
        return false;
    }
    // The last solve changes the estimate a little, so a few good corners can have become bad, and a few bad ones good.
    for (int round = 0; round < exactRounds && decideOutliers(given, observations, estimate); round++) {
        if (!solveJointly(observations, exact, estimate)) {
            return false;
        }
    }
    return true;
}

}  // namespace calibration
