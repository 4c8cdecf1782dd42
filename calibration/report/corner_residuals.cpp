#include "calibration/report/corner_residuals.h"

#include <cmath>

#include "calibration/joint_solve.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

std::vector<CornerResidual> cornerResiduals(const Calibration &calibration, const Sighting &sighting) {
    const Observations &observations = calibration.observations;
    if (!takesPart(observations, sighting, calibration.estimate)) {
        return {};
    }
    const SightingResiduals residuals(observations, sighting, 0);
    std::vector<double> errors(static_cast<size_t>(residuals.rows()));
    if (!residuals.evaluate(blocksOf(observations, sighting, calibration.estimate), errors.data(), nullptr)) {
        return {};
    }
    std::vector<CornerResidual> result;
    result.reserve(size_t(residuals.corners()));
    for (const SeenCorner &corner : sighting.corners) {
        if (corner.isUsed) {
            const size_t row = 2 * result.size();
            result.push_back({corner.image, Eigen::Vector2d(errors[row], errors[row + 1]) * corner.sigma});
        }
    }
    return result;
}

double PhotographSummary::rms() const {
    return used == 0 ? 0 : std::sqrt(sumOfSquares / used);
}

std::vector<PhotographSummary> summariseEach(const Calibration &calibration) {
    std::vector<PhotographSummary> result(calibration.observations.photographs.size());
    for (const Sighting &sighting : calibration.observations.sightings) {
        PhotographSummary &summary = result[size_t(sighting.photograph)];
        summary.seen += int(sighting.corners.size());
        summary.prints.push_back(sighting.print);
        for (const CornerResidual &residual : cornerResiduals(calibration, sighting)) {
            summary.used++;
            summary.sumOfSquares += residual.error.squaredNorm();
        }
    }
    for (const LeftOut &leftOut : calibration.leftOut) {
        const Sighting &sighting = calibration.observations.sightings[size_t(leftOut.sighting)];
        result[size_t(sighting.photograph)].reasons.push_back(leftOut.reason);
    }
    return result;
}

}  // namespace calibration
