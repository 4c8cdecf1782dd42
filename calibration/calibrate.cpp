#include "calibration/calibrate.h"

#include <algorithm>
#include <cmath>

#include "calibration/interruption.h"
#include "calibration/misfit.h"
#include "calibration/model_choice.h"
#include "calibration/moved_prints.h"
#include "calibration/next_photograph.h"
#include "calibration/outliers.h"
#include "calibration/print_freedom.h"
#include "calibration/start_values.h"
#include "calibration/trust.h"
#include "calibration/verdict.h"
#include "calibration/warm_start.h"

namespace calibration {

namespace {

// A focal length counts as unknown if its standard deviation is more than this share of the focal length.
constexpr double greatestFocalSigma = 0.02;

// An earlier choice of models is kept only if the number of photographs has not grown or shrunk by more than this
// factor since then.
constexpr double similarCount = 1.5;

// In the check of the focal lengths, the standard deviations of the corners count as at least this many pixels.
// Simulated corners can be exact. Without this limit, even a focal length that they do not determine would seem
// certain.
constexpr double leastNoise = 0.01;

class Calibrator {
public:
    Calibrator(const Observations &seen, const CalibrateOptions &how) : given(seen), good(seen), options(how) {
        bends.assign(seen.prints.size(), Bend::Flat);
    }

    Calibration run() {
        checkInput();
        if (keepsModels()) {
            startFromPrevious();
        } else {
            startFromNothing();
        }
        const std::optional<Covariance> covariance = covarianceOf(result.observations, result.freedom, result.estimate);
        if (!covariance) {
            throw CalibrationImpossible(
                "The photographs do not determine the calibration: show the target from more directions and places.");
        }
        result.covariance = *covariance;
        checkFocalLengths();
        enter(Stage::JudgingTrust, 0);
        result.leftOut = findLeftOut(given, result, knownLeftOut);
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
    // True if the models of the previous result are kept. `lens` and `mayBend` must be the same as in the previous
    // call. If these options leave a choice of models, the earlier choice must come from a similar number of
    // photographs.
    bool keepsModels() const {
        if (!options.previous) {
            return false;
        }
        const ModelOrigin &origin = options.previous->modelOrigin;
        const bool isChosen = !options.lens || options.mayBend;
        const double before = origin.photographs;
        return origin.lens == options.lens && origin.mayBend == options.mayBend &&
               (!isChosen || (photographs <= similarCount * before && before <= similarCount * photographs));
    }

    void startFromNothing() {
        result.modelOrigin = {options.lens, options.mayBend, photographs};
        enter(Stage::StartValues, 0);
        findStart();
        enter(Stage::ChoosingModels, 0);
        chooseModels();
        search();
    }

    // Solves, and leaves out the sightings that do not fit. Chooses the models again if these sightings may have spoilt
    // the choice.
    void search() {
        enter(Stage::Solving, 0);
        solve();
        if (leaveOutMoved()) {
            enter(Stage::ChoosingModels, 0);
            chooseModels();
            enter(Stage::Solving, 0.3);
            solve();
        }
        if (leaveOut()) {
            enter(Stage::ChoosingModels, 0);
            chooseModels();
            enter(Stage::Solving, 0.5);
            solve();
        }
    }

    void enter(Stage stage, double share) const {
        Interruption::check();
        if (options.onProgress) {
            options.onProgress(stage, share);
        }
    }

    void checkInput() {
        std::vector<bool> shows(given.photographs.size(), false);
        for (const Sighting &sighting : given.sightings) {
            if (sighting.isUsed && !sighting.corners.empty()) {
                shows[size_t(sighting.photograph)] = true;
            }
        }
        photographs = int(std::count(shows.begin(), shows.end(), true));
        if (photographs == 0) {
            throw CalibrationImpossible("No photograph shows a pattern.");
        }
        if (photographs == 1) {
            throw CalibrationImpossible(
                "Only one photograph shows a pattern, and one is not enough: take at least ten, with the target tilted "
                "to all sides and in all parts of the picture.");
        }
    }

    void findStart() {
        trials.resize(given.cameras.size());
        chosen.resize(given.cameras.size());
        starts.resize(given.cameras.size());
        for (size_t camera = 0; camera < given.cameras.size(); camera++) {
            starts[camera] = startLenses(given, int(camera), options.lens);
            if (!starts[camera].empty()) {
                chosen[camera] = starts[camera].front();
            }
            enter(Stage::StartValues, double(camera + 1) / double(given.cameras.size()));
        }
        place();
    }

    void startFromPrevious() {
        enter(Stage::StartValues, 0);
        const Calibration &previous = *options.previous;
        hasModels = true;
        result.modelOrigin = previous.modelOrigin;
        for (const CameraTrust &camera : previous.cameras) {
            trials.push_back(camera.trials);
        }
        trials.resize(given.cameras.size());
        for (size_t camera = 0; camera < given.cameras.size(); camera++) {
            chosen.push_back({previous.observations.cameras[camera].lens, previous.estimate.intrinsics[camera], 0});
        }
        bends = bendsOf(previous.freedom);
        const std::vector<int> same = sameSightings(given, previous.observations);
        enter(Stage::Solving, 0);
        if (solveFromPrevious(given, previous, same, options, result)) {
            for (const LeftOut &one : previous.leftOut) {
                const auto now = std::find(same.begin(), same.end(), one.sighting);
                if (now != same.end()) {
                    knownLeftOut.push_back({int(now - same.begin()), one.misfit, one.reason});
                }
            }
            return;
        }
        place();
        search();
    }

    // Computes start values of all poses and of the prints' shapes, for the chosen lenses and bends.
    void place() {
        result.observations = good;
        std::vector<Eigen::VectorXd> lenses;
        for (size_t camera = 0; camera < given.cameras.size(); camera++) {
            result.observations.cameras[camera].lens = chosen[camera].lens;
            lenses.push_back(chosen[camera].intrinsics);
        }
        result.estimate = startPoses(result.observations, std::move(lenses));
        setShapes(result.observations, bends, options.measured, result.estimate, result.freedom);
    }

    // The choice of a lens can be wrong while bent prints are assumed to be flat, and the choice of a bend can be wrong
    // while the lens is wrong. So lenses and bends are chosen in turn until they no longer change, in at most three
    // rounds.
    void chooseModels() {
        if (hasModels || (options.lens && !options.mayBend)) {
            return;
        }
        constexpr int rounds = 3;
        for (int round = 0; round < rounds; round++) {
            const bool changed = !options.lens && chooseLenses(double(round) / rounds);
            if (round > 0 && !changed) {
                break;
            }
            if (!options.mayBend) {
                break;
            }
            enter(Stage::ChoosingModels, (round + 0.5) / rounds);
            const std::vector<Bend> before = bends;
            bends = chooseBends(result.observations, result.estimate, options.measured);
            if (bends == before) {
                break;
            }
            place();
        }
    }

    // Chooses the lens of each camera. Returns true if a camera got another model.
    bool chooseLenses(double share) {
        bool changed = false;
        for (size_t camera = 0; camera < given.cameras.size(); camera++) {
            enter(Stage::ChoosingModels, share);
            if (!starts[camera].empty()) {
                LensChoice choice = chooseLens(good, int(camera), starts[camera], bends, options.measured);
                changed = changed || choice.chosen.lens != chosen[camera].lens;
                chosen[camera] = std::move(choice.chosen);
                trials[camera] = std::move(choice.trials);
            }
        }
        place();
        return changed;
    }

    void solve() {
        if (!solveWithoutOutliers(given, result.observations, result.freedom, result.estimate)) {
            throw CalibrationImpossible(
                "The corners in the photographs do not fit together: check that the sizes of "
                "the prints and the numbers of corners are right.");
        }
    }

    // Finds the sightings in which a print has moved. If there are any, the solve should have left out exactly these.
    // If it still uses one of them, or has left out any other sighting as well, it may have settled between two places
    // of a print. In that case, this function leaves out the sightings in which a print has moved, computes new start
    // values and returns true.
    bool leaveOutMoved() {
        Observations all = given;
        all.cameras = result.observations.cameras;
        const std::vector<size_t> moved = findMoved(all, result.freedom, result.estimate);
        std::vector<bool> isMoved(given.sightings.size(), false);
        bool isNew = false;
        for (const size_t i : moved) {
            isMoved[i] = true;
            isNew = isNew || result.observations.sightings[i].isUsed;
        }
        for (size_t i = 0; i < isMoved.size(); i++) {
            const bool isLeftOut = given.sightings[i].isUsed && !result.observations.sightings[i].isUsed;
            isNew = isNew || (!moved.empty() && isLeftOut && !isMoved[i]);
        }
        if (!isNew) {
            return false;
        }
        for (const size_t i : moved) {
            good.sightings[i].isUsed = false;
        }
        place();
        return true;
    }

    // Marks the sightings that the solve left out, so that the choice of models ignores them. Returns true if there are
    // such sightings and the models must be chosen, because neither the options nor the previous result give them.
    bool leaveOut() {
        bool isAny = false;
        for (size_t i = 0; i < good.sightings.size(); i++) {
            const bool isLeftOut = good.sightings[i].isUsed && !result.observations.sightings[i].isUsed;
            good.sightings[i].isUsed = good.sightings[i].isUsed && !isLeftOut;
            isAny = isAny || isLeftOut;
        }
        return isAny && !hasModels && (!options.lens || options.mayBend);
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

    // Finds the least certain corner in the camera's used sightings. Returns its standard deviation along one axis, in
    // pixels, multiplied by the square root of the variance factor, so that it agrees with the residuals. The result is
    // never 0, because the caller divides by it.
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
    Observations good;  // the given observations, in which the sightings that were left out are marked as not used
    const CalibrateOptions &options;
    Calibration result;
    int photographs = 0;     // the number of photographs that show a pattern
    bool hasModels = false;  // true if the models of the previous result are kept
    std::vector<LeftOut> knownLeftOut;
    // One entry for each camera:
    std::vector<std::vector<LensStart>> starts;
    std::vector<LensStart> chosen;
    std::vector<std::vector<ModelTrial>> trials;
    std::vector<Bend> bends;  // of each print
};

}  // namespace

int Calibration::firstGroup() const {
    const auto known = std::find_if(estimate.groups.begin(), estimate.groups.end(), [](int one) { return one >= 0; });
    return known == estimate.groups.end() ? -1 : *known;
}

Calibration calibrate(const Observations &observations, const CalibrateOptions &options) {
    const Interruption interruption(options.isCancelled);
    return Calibrator(observations, options).run();
}

}  // namespace calibration
