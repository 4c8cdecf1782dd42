#include "calibration/outliers.h"

#include <algorithm>
#include <cmath>

#include "calibration/planar_pose.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

constexpr double greatestDeviation = 4;  // of a corner, in standard deviations
constexpr int rounds = 6;
// The median length of a vector of two normal numbers of variance 1, divided by the square root of 2.
constexpr double medianLength = 0.8326;

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The distances of all corners, used or not, from where the blocks put them, in standard deviations per axis. Empty if
// one of them cannot be projected.
std::vector<double> deviations(const Observations &observations, const Sighting &sighting,
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
    std::vector<double> result;
    for (int i = 0; i < residuals.corners(); i++) {
        result.push_back(values.segment<2>(2 * i).norm() / std::sqrt(2.0));
    }
    return result;
}

std::vector<double> deviations(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    return deviations(observations, sighting, blocksOf(observations, sighting, estimate));
}

// The rms of the corners' residuals, in standard deviations per axis, in the pose that fits a sighting best by itself
// with this lens. Corners with much larger residuals than the others are left out. Empty if there is no pose.
std::optional<double> rmsAlone(const Observations &observations, Sighting sighting, const Eigen::VectorXd &lens,
                               const PrintShape &shape) {
    const RigidMotion none;
    std::optional<double> rms;
    constexpr int fits = 3;
    for (int fit = 0; fit < fits; fit++) {
        const std::optional<PlanarPose> pose = planarPose(observations, sighting, lens, shape);
        if (!pose) {
            return rms;
        }
        rms = pose->rms;
        const RigidMotion &seen = pose->cameraFromPrint;
        const std::vector<double> all = deviations(
            observations, sighting, {lens.data(), none.data(), seen.data(), none.data(), shape.numbers.data()});
        const double limit = all.empty() ? 0 : greatestDeviation * medianOf(all) / medianLength;
        for (size_t i = 0; i < all.size(); i++) {
            sighting.corners[i].isUsed = all[i] < limit;
        }
    }
    return rms;
}

// True if the sighting fits a lens that differs from the estimated one only in its focal length.
bool fitsAnotherLens(const Observations &observations, const Sighting &sighting, const Estimate &estimate,
                     double limit) {
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    for (double factor = 0.5; factor <= 2.01; factor *= 1.05) {
        Eigen::VectorXd lens = estimate.intrinsics[size_t(photograph.camera)];
        lens.head<2>() *= factor;
        const auto rms = rmsAlone(observations, sighting, lens, estimate.shapes[size_t(sighting.print)]);
        if (rms && *rms < limit && std::abs(factor - 1) > 0.02) {
            return true;
        }
    }
    return false;
}

class OutlierSearch {
public:
    OutlierSearch(Observations &seen, const Freedom &free, Estimate &unknown)
        : observations(seen), freedom(free), estimate(unknown) {}

    bool run() {
        // The scale is wide at first, while bad sightings still distort the whole estimate.
        for (const double robustScale : {20.0, 6.0}) {
            if (!solve(robustScale)) {
                return false;
            }
        }
        for (int round = 0; round < rounds; round++) {
            const bool changed = decideSightings() || decideCorners();
            if (!solve(round + 1 < rounds ? 6.0 : 0.0)) {
                return false;
            }
            if (!changed) {
                break;
            }
        }
        return solve(0);
    }

private:
    bool solve(double robustScale) {
        SolveOptions options;
        options.freedom = freedom;
        options.robustScale = robustScale * (robustScale > 0 ? residualScale(observations, estimate) : 1);
        return solveJointly(observations, options, estimate).has_value();
    }

    bool fits(const Sighting &sighting, double scale) const {
        const std::vector<double> all = deviations(observations, sighting, estimate);
        return !all.empty() && medianOf(all) < greatestDeviation * scale;
    }

    // Leaves out sightings that do not fit, and uses those again that fit after others have been left out.
    bool decideSightings() {
        const double scale = residualScale(observations, estimate);
        bool changed = false;
        for (Sighting &sighting : observations.sightings) {
            if (hasPose(observations, sighting, estimate) && fits(sighting, scale) != sighting.isUsed) {
                sighting.isUsed = !sighting.isUsed;
                changed = true;
            }
        }
        return changed;
    }

    // Decides again for every corner of the sightings in use whether it is used.
    bool decideCorners() {
        const double scale = residualScale(observations, estimate);
        bool changed = false;
        for (Sighting &sighting : observations.sightings) {
            if (!takesPart(observations, sighting, estimate)) {
                continue;
            }
            const std::vector<double> all = deviations(observations, sighting, estimate);
            for (size_t i = 0; i < all.size(); i++) {
                const bool isGood = all[i] < greatestDeviation * scale;
                changed = changed || isGood != sighting.corners[i].isUsed;
                sighting.corners[i].isUsed = isGood;
            }
        }
        return changed;
    }

    Observations &observations;
    const Freedom &freedom;
    Estimate &estimate;
};

}  // namespace

double residualScale(const Observations &observations, const Estimate &estimate) {
    std::vector<double> all;
    for (const Sighting &sighting : observations.sightings) {
        if (takesPart(observations, sighting, estimate)) {
            const std::vector<double> some = deviations(observations, sighting, estimate);
            all.insert(all.end(), some.begin(), some.end());
        }
    }
    return all.empty() ? 1 : std::max(medianOf(std::move(all)) / medianLength, 1e-6);
}

Misfit misfitOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    const auto alone = rmsAlone(observations, sighting, estimate.intrinsics[size_t(photograph.camera)],
                                estimate.shapes[size_t(sighting.print)]);
    if (!alone) {
        return Misfit::NoPose;
    }
    const double limit = 3 * residualScale(observations, estimate);
    if (*alone < limit) {
        return Misfit::Moved;
    }
    return fitsAnotherLens(observations, sighting, estimate, limit) ? Misfit::AnotherLens : Misfit::Unclear;
}

bool solveWithoutOutliers(Observations &observations, const Freedom &freedom, Estimate &estimate) {
    return OutlierSearch(observations, freedom, estimate).run();
}

}  // namespace calibration
