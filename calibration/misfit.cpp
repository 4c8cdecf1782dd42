#include "calibration/misfit.h"

#include <algorithm>
#include <cmath>

#include "calibration/interruption.h"
#include "calibration/outliers.h"
#include "calibration/planar_pose.h"
#include "calibration/sighting_residuals.h"
#include "calibration/wording.h"

namespace calibration {

namespace {

// No pose explains a sighting if its residuals are too large even in the pose that fits best. This is the limit for the
// standard deviation of these residuals (scaleOfLengths()), in standard deviations of good corners.
constexpr double greatestScaleAlone = 3;
// The same limit while focal lengths are tried in steps of 4 %. It is higher than greatestScaleAlone, because the exact
// focal length may lie between two steps.
constexpr double coarseScale = 12;
constexpr size_t leastCorners = 6;

// The pose that fits a sighting best, and how well it fits.
struct Alone {
    RigidMotion cameraFromPrint;
    double scale = 0;  // scaleOfLengths() of the residuals, in standard deviations of good corners
};

std::optional<Alone> fitAlone(const Observations &observations, Sighting sighting, const Eigen::VectorXd &lens,
                              const PrintShape &shape) {
    const RigidMotion none;
    std::optional<Alone> best;
    // Each fit leaves out the corners that did not fit well in the fit before.
    constexpr int fits = 3;
    for (int fit = 0; fit < fits; fit++) {
        const std::optional<PlanarPose> pose = planarPose(observations, sighting, lens, shape);
        if (!pose) {
            break;
        }
        const std::vector<double> lengths = residualLengths(
            observations, sighting,
            {lens.data(), none.data(), pose->cameraFromPrint.data(), none.data(), shape.numbers.data()});
        if (lengths.empty()) {
            break;
        }
        best = Alone{pose->cameraFromPrint, scaleOfLengths(lengths)};
        for (size_t i = 0; i < lengths.size(); i++) {
            sighting.corners[i].isUsed = lengths[i] < greatestLength * best->scale;
        }
    }
    return best;
}

class MisfitSearch {
public:
    MisfitSearch(const Calibration &what, int number)
        : calibration(what),
          observations(what.observations),
          sighting(observations.sightings[size_t(number)]),
          photograph(observations.photographs[size_t(sighting.photograph)]),
          lens(what.estimate.intrinsics[size_t(photograph.camera)]),
          shape(what.estimate.shapes[size_t(sighting.print)]),
          result{number, Misfit::Unclear, ""} {}

    LeftOut run() {
        const std::string print = namesOf(observations, {sighting.print});
        const std::optional<Alone> alone =
            lens.size() > 0 ? fitAlone(observations, sighting, lens, shape) : std::optional<Alone>();
        if (!alone) {
            result.misfit = Misfit::NoPose;
            result.reason = sighting.corners.size() < leastCorners
                                ? "Only " + counted(std::ptrdiff_t(sighting.corners.size()), "corner") + " of " +
                                      print + (sighting.corners.size() == 1 ? " was found." : " were found.")
                                : "The corners of " + print + " lie nearly on one line or do not fit a flat print.";
        } else if (alone->scale < greatestScaleAlone) {
            result.misfit = Misfit::Moved;
            result.reason = movedReason(*alone, print);
        } else if (const std::optional<double> factor = otherFocalLength(alone->scale)) {
            result.misfit = Misfit::AnotherLens;
            result.reason = "The photograph fits only a focal length that is " + rounded(std::abs(*factor - 1) * 100) +
                            " % " + (*factor > 1 ? "longer" : "shorter") +
                            ": it was taken with another zoom or focus, or it was scaled or cropped.";
        } else {
            result.reason = "Even in the pose that fits best, the corners of " + print + " are " +
                            rounded(lengthInPixels(alone->scale)) +
                            " px away from where they should be: the photograph is blurred or disturbed, or the print "
                            "bends.";
        }
        return result;
    }

private:
    double lengthInPixels(double scale) const {
        return sighting.corners.empty() ? 0 : scale * std::sqrt(2.0) * sighting.corners.front().sigma;
    }

    std::string movedReason(const Alone &alone, const std::string &print) const {
        const auto isTwin = [&](const Sighting &other) {
            return &other != &sighting && other.photograph == sighting.photograph && other.print == sighting.print;
        };
        if (std::any_of(observations.sightings.begin(), observations.sightings.end(), isTwin)) {
            return "The photograph shows two copies of " + print + ". Print each pattern only once.";
        }
        if (!hasPose(observations, sighting, calibration.estimate)) {
            return "The photographs that fit do not show where " + print +
                   " should be in this one: boards or cameras may have moved.";
        }
        const RigidMotion expected = calibration.estimate.cameraFromRig[size_t(photograph.camera)] *
                                     calibration.estimate.rigFromWorld[size_t(photograph.moment)] *
                                     calibration.estimate.worldFromPrint[size_t(sighting.print)];
        const double distance = (expected.translation - alone.cameraFromPrint.translation).norm();
        return "Here " + print + " is " + rounded(distance) +
               " mm away from where the other photographs show it: it moved, or two boards have the same number.";
    }

    // Returns the factor by which the focal length must change so that the sighting fits; empty if there is none. The
    // principal point is either kept, as with another zoom, or scaled too, as in a scaled picture.
    std::optional<double> otherFocalLength(double scale) const {
        std::optional<double> best;
        for (const Eigen::Index scaled : {2, 4}) {
            for (int step = -23; step <= 23; step++) {
                const double factor = std::pow(1.04, step);  // 0.4 to 2.5
                Eigen::VectorXd other = lens;
                other.head(scaled) *= factor;
                const std::optional<Alone> alone = fitAlone(observations, sighting, other, shape);
                // The residuals must be less than half as large as with the estimated lens, because a slightly
                // different focal length makes even a disturbed photograph fit a little better. A later step only has
                // to fit better than the best one so far.
                if (alone && alone->scale < coarseScale && alone->scale < scale / 2) {
                    scale = alone->scale * 2;
                    best = factor;
                }
            }
        }
        return best;
    }

    const Calibration &calibration;
    const Observations &observations;
    const Sighting &sighting;
    const Photograph &photograph;
    const Eigen::VectorXd &lens;
    const PrintShape &shape;
    LeftOut result;
};

}  // namespace

std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration,
                                 const std::vector<LeftOut> &known) {
    std::vector<LeftOut> result;
    for (size_t i = 0; i < given.sightings.size(); i++) {
        const Sighting &sighting = calibration.observations.sightings[i];
        if (given.sightings[i].isUsed && !takesPart(calibration.observations, sighting, calibration.estimate)) {
            Interruption::check();
            const auto same =
                std::find_if(known.begin(), known.end(), [&](const LeftOut &one) { return one.sighting == int(i); });
            result.push_back(same != known.end() ? *same : MisfitSearch(calibration, int(i)).run());
        }
    }
    return result;
}

}  // namespace calibration
