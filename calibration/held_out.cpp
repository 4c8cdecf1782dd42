#include "calibration/held_out.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

constexpr int parts = 3;
constexpr size_t leastMoments = 6;
// Squared residuals are limited to this value, in units of the corners' variance. A larger square means that the corner
// is wrong, not the model.
constexpr double greatestSquare = 25;
// A sighting is bad if its mean square is larger than this in every model. Such a sighting says nothing about the
// models.
constexpr double badSighting = 6;
constexpr double robustScale = 6;
// A difference between means counts as clear if it is larger than this many standard errors.
constexpr double clearDifference = 1.5;
constexpr size_t leastPairs = 4;

// Returns for each moment the number of the part to which it belongs, from 0. If takesPart() selects none of a moment's
// sightings, the moment belongs to no part: its number is -1. If fewer than leastMoments moments remain, all numbers
// are -1.
std::vector<int> partsOfMoments(const Observations &observations, const Estimate &estimate) {
    std::set<int> moments;
    for (const Sighting &sighting : observations.sightings) {
        if (takesPart(observations, sighting, estimate)) {
            moments.insert(observations.photographs[size_t(sighting.photograph)].moment);
        }
    }
    std::vector<int> result(size_t(observations.moments), -1);
    int number = 0;
    for (const int moment : moments) {
        result[size_t(moment)] = moments.size() < leastMoments ? -1 : number++ % parts;
    }
    return result;
}

Observations onlyPart(const Observations &observations, const std::vector<int> &partOf, int part, bool isHeldOut) {
    Observations some = observations;
    for (Sighting &sighting : some.sightings) {
        const int moment = some.photographs[size_t(sighting.photograph)].moment;
        sighting.isUsed = sighting.isUsed && (partOf[size_t(moment)] == part) == isHeldOut;
    }
    return some;
}

// Returns an estimate for testing the prediction of `part`. The poses of that part's moments are estimated from its own
// sightings, and everything else from the other parts. Empty if a solve fails.
std::optional<Estimate> trainedWithout(const Observations &observations, const std::vector<int> &partOf, int part,
                                       const Freedom &freedom, const Estimate &estimate) {
    SolveOptions training;
    training.freedom = freedom;
    training.robustScale = robustScale;
    training.iterations = 30;
    training.tolerance = 1e-6;
    training.isNear = true;
    Estimate trained = estimate;
    SolveOptions placing = training;
    placing.freedom = {false, false, false, false, {}, {}};
    const bool isSolved = solveJointly(onlyPart(observations, partOf, part, false), training, trained) &&
                          solveJointly(onlyPart(observations, partOf, part, true), placing, trained);
    return isSolved ? std::optional(trained) : std::nullopt;
}

double errorOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    const SightingResiduals residuals(observations, sighting, 0);
    Eigen::VectorXd values(residuals.rows());
    if (!residuals.evaluate(blocksOf(observations, sighting, estimate), values.data(), nullptr)) {
        return greatestSquare;
    }
    return values.array().square().min(greatestSquare).mean();
}

}  // namespace

std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate) {
    const std::vector<int> partOf = partsOfMoments(observations, estimate);
    std::vector<std::optional<double>> errors(observations.sightings.size());
    for (int part = 0; part < parts; part++) {
        const std::optional<Estimate> trained = trainedWithout(observations, partOf, part, freedom, estimate);
        if (!trained) {
            return std::vector<std::optional<double>>(errors.size());
        }
        for (size_t i = 0; i < errors.size(); i++) {
            const Sighting &sighting = observations.sightings[i];
            const int moment = observations.photographs[size_t(sighting.photograph)].moment;
            if (partOf[size_t(moment)] == part && takesPart(observations, sighting, *trained) &&
                !sighting.corners.empty()) {
                errors[i] = errorOf(observations, sighting, *trained);
            }
        }
    }
    return errors;
}

std::optional<double> meanError(const std::vector<std::optional<double>> &errors, const std::vector<bool> &counts) {
    double sum = 0;
    int count = 0;
    for (size_t i = 0; i < errors.size(); i++) {
        if (errors[i] && counts[i]) {
            sum += *errors[i];
            count++;
        }
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
}

size_t preferredModel(const std::vector<std::vector<std::optional<double>>> &errors, std::vector<bool> counts) {
    for (size_t k = 0; k < counts.size(); k++) {
        const bool isBad = std::all_of(
            errors.begin(), errors.end(),
            [&](const std::vector<std::optional<double>> &one) { return !one[k] || *one[k] > badSighting; });
        counts[k] = counts[k] && !isBad;
    }
    size_t best = 0;
    std::optional<double> least;
    for (size_t i = 0; i < errors.size(); i++) {
        const std::optional<double> mean = meanError(errors[i], counts);
        if (mean && (!least || *mean < *least)) {
            least = mean;
            best = i;
        }
    }
    for (size_t i = 0; i < best; i++) {
        std::vector<double> losses;
        for (size_t k = 0; k < counts.size(); k++) {
            if (counts[k] && errors[i][k] && errors[best][k]) {
                losses.push_back(*errors[i][k] - *errors[best][k]);
            }
        }
        const Eigen::Map<const Eigen::ArrayXd> all(losses.data(), Eigen::Index(losses.size()));
        if (losses.size() >= leastPairs) {
            const double count = double(losses.size());
            const double variance = (all - all.mean()).square().sum() / (count - 1);
            if (all.mean() <= clearDifference * std::sqrt(variance / count)) {
                return i;
            }
        }
    }
    return best;
}

}  // namespace calibration
