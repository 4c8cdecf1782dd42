#include "calibration/calibrate.h"

#include <algorithm>
#include <cmath>

#include "calibration/misfit.h"
#include "calibration/model_choice.h"
#include "calibration/next_photograph.h"
#include "calibration/outliers.h"
#include "calibration/print_freedom.h"
#include "calibration/start_values.h"
#include "calibration/trust.h"
#include "calibration/verdict.h"

namespace calibration {

namespace {

// With a larger standard deviation, as a share of it, a focal length counts as unknown.
constexpr double greatestFocalSigma = 0.02;

// Computed corners can be exact, and then even what is undetermined seems certain. Corners of photographs are never
// found better than this; pixels.
constexpr double leastNoise = 0.01;

class Calibrator {
public:
    Calibrator(const Observations &seen, const CalibrateOptions &how) : given(seen), options(how) {
        result.observations = seen;
        bends.assign(seen.prints.size(), Bend::Flat);
    }

    Calibration run() {
        checkInput();
        enter(Stage::StartValues, 0);
        findStart();
        enter(Stage::ChoosingModels, 0);
        if (!options.previous) {
            chooseModels();
        }
        enter(Stage::Solving, 0);
        solve();
        const std::optional<Covariance> covariance = covarianceOf(result.observations, result.freedom, result.estimate);
        if (!covariance) {
            throw CalibrationImpossible(
                "The photographs do not determine the calibration: show the target from more directions and places.");
        }
        result.covariance = *covariance;
        checkFocalLengths();
        enter(Stage::JudgingTrust, 0);
        result.leftOut = findLeftOut(given, result);
        judgeTrust(result);
        for (const MeasuredPrint &measured : options.measured) {
            result.prints[size_t(measured.print)].isMeasured = true;
        }
        for (size_t camera = 0; camera < trials.size(); camera++) {
            result.cameras[camera].trials = trials[camera];
        }
        enter(Stage::JudgingTrust, 0.7);
        result.next = findNextPhotograph(result);
        giveVerdict(result, options.lens.has_value());
        enter(Stage::JudgingTrust, 1);
        return std::move(result);
    }

private:
    void enter(Stage stage, double share) const {
        if (options.isCancelled && options.isCancelled()) {
            throw Cancelled();
        }
        if (options.onProgress) {
            options.onProgress(stage, share);
        }
    }

    void checkInput() const {
        std::vector<bool> shows(given.photographs.size(), false);
        for (const Sighting &sighting : given.sightings) {
            if (sighting.isUsed && !sighting.corners.empty()) {
                shows[size_t(sighting.photograph)] = true;
            }
        }
        const auto count = std::count(shows.begin(), shows.end(), true);
        if (count == 0) {
            throw CalibrationImpossible("No photograph shows a pattern.");
        }
        if (count == 1) {
            throw CalibrationImpossible(
                "Only one photograph shows a pattern, and one is not enough: take at least ten, with the target tilted "
                "to all sides and in all parts of the picture.");
        }
    }

    void findStart() {
        std::vector<Eigen::VectorXd> lenses(given.cameras.size());
        for (size_t camera = 0; camera < lenses.size(); camera++) {
            if (options.previous) {
                lenses[camera] = options.previous->estimate.intrinsics[camera];
                result.observations.cameras[camera].lens = options.previous->observations.cameras[camera].lens;
            } else {
                result.observations.cameras[camera].lens =
                    startCamera(result.observations, int(camera), options.lens, lenses[camera]);
            }
            enter(Stage::StartValues, double(camera + 1) / double(lenses.size()));
        }
        result.estimate = startPoses(result.observations, std::move(lenses));
        if (options.previous) {
            const Calibration &previous = *options.previous;
            const size_t known = std::min(bends.size(), previous.estimate.shapes.size());
            std::copy_n(previous.estimate.shapes.begin(), known, result.estimate.shapes.begin());
            const std::vector<Bend> before = bendsOf(previous.freedom);
            std::copy_n(before.begin(), known, bends.begin());
        }
        setShapes(result.observations, bends, options.measured, result.estimate, result.freedom);
    }

    void chooseModels() { trials.resize(given.cameras.size()); }

    void solve() {
        if (!solveWithoutOutliers(given, result.observations, result.freedom, result.estimate)) {
            throw CalibrationImpossible(
                "The corners in the photographs do not fit together: check that the sizes of "
                "the prints and the numbers of corners are right.");
        }
    }

    void checkFocalLengths() const {
        for (size_t camera = 0; camera < given.cameras.size(); camera++) {
            const Eigen::MatrixXd covariance = result.covariance.intrinsics(int(camera));
            if (covariance.size() == 0) {
                continue;
            }
            const double focal = result.estimate.intrinsics[camera](0);
            const double sigma = std::sqrt(covariance(0, 0)) * std::max(1.0, leastNoise / noiseOf(int(camera)));
            if (!(focal > 0 && sigma < greatestFocalSigma * focal)) {
                throw CalibrationImpossible("The focal length of camera \"" + given.cameras[camera].name +
                                            "\" cannot be known from these photographs: they show the target from too "
                                            "few directions. Tilt the target by 30 to 45 degrees, to all sides.");
            }
        }
    }

    // Standard deviation of a camera's corners along one axis, in pixels.
    double noiseOf(int camera) const {
        double greatest = 0;
        for (const Sighting &sighting : result.observations.sightings) {
            if (takesPart(result.observations, sighting, result.estimate) &&
                given.photographs[size_t(sighting.photograph)].camera == camera) {
                for (const SeenCorner &corner : sighting.corners) {
                    greatest = std::max(greatest, corner.sigma);
                }
            }
        }
        return std::max(greatest * std::sqrt(result.covariance.varianceFactor()), 1e-100);
    }

    const Observations &given;
    const CalibrateOptions &options;
    Calibration result;
    std::vector<Bend> bends;
    std::vector<std::vector<ModelTrial>> trials;
};

}  // namespace

int Calibration::firstGroup() const {
    const auto known = std::find_if(estimate.groups.begin(), estimate.groups.end(), [](int one) { return one >= 0; });
    return known == estimate.groups.end() ? -1 : *known;
}

Calibration calibrate(const Observations &observations, const CalibrateOptions &options) {
    return Calibrator(observations, options).run();
}

}  // namespace calibration
