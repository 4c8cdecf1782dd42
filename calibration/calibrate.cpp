#include "calibration/calibrate.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/held_out.h"
#include "calibration/sighting_residuals.h"
#include "calibration/start_values.h"

namespace calibration {

namespace {

constexpr int mapColumns = 12;
constexpr int mapRows = 9;

// With a larger standard deviation a focal length counts as unknown: the photographs show the prints from too few
// directions.
constexpr double greatestFocalSigma = 0.02;  // of the focal length

// True if the solve does not vary a print's scale, because it was measured or because the print is its group's origin.
bool isScaleKnown(const Observations &observations, const Estimate &estimate, size_t print) {
    if (observations.prints[print].measuredScale) {
        return true;
    }
    // If another print of the group was measured, that print determines the scale, not the group's origin.
    for (size_t other = 0; other < observations.prints.size(); other++) {
        if (estimate.groups[other] == estimate.groups[print] && observations.prints[other].measuredScale) {
            return false;
        }
    }
    return estimate.isOrigin(int(print));
}

std::vector<int> freeNumbers(const Observations &observations, const Estimate &estimate, size_t print, Bend bend) {
    std::vector<int> numbers;
    if (!isScaleKnown(observations, estimate, print)) {
        numbers.push_back(PrintShape::scale);
    }
    if (!observations.prints[print].measuredScale) {
        numbers.push_back(PrintShape::ratio);
    }
    numbers.push_back(PrintShape::shear);
    for (int i = 0; i < bendNumbers(bend); i++) {
        numbers.push_back(PrintShape::bend + i);
    }
    return numbers;
}

void setShapes(const Observations &observations, const std::vector<Bend> &bends, Estimate &estimate, Freedom &freedom) {
    freedom.shapes.clear();
    for (size_t print = 0; print < observations.prints.size(); print++) {
        PrintShape &shape = estimate.shapes[print];
        shape.reach = reachOf(observations.prints[print]);
        if (const auto measured = observations.prints[print].measuredScale) {
            shape.numbers[PrintShape::scale] = std::log(measured->x() * measured->y()) / 2;
            shape.numbers[PrintShape::ratio] = std::log(measured->x() / measured->y());
        }
        freedom.shapes.push_back(freeNumbers(observations, estimate, print, bends[print]));
    }
}

class Calibrator {
public:
    Calibrator(Observations seen, const CalibrateOptions &how) : options(how) {
        result.observations = std::move(seen);
        bends.assign(result.observations.prints.size(), Bend::Flat);
    }

    Calibration run() {
        startFromCorners();
        solve();
        if (options.mayBend) {
            chooseBends();
        }
        if (!options.lens) {
            chooseLenses();
        }
        const std::optional<Covariance> covariance = covarianceOf(result.observations, result.freedom, result.estimate);
        if (!covariance) {
            throw CalibrationImpossible(
                "The photographs do not determine the calibration: show the target from more directions and places.");
        }
        result.covariance = *covariance;
        checkFocalLengths();
        nameUndeterminedPrints();
        nameLeftOut();
        compareHalves();
        return std::move(result);
    }

private:
    void startFromCorners() {
        if (result.observations.sightings.empty()) {
            throw CalibrationImpossible("No photograph shows a pattern.");
        }
        std::vector<Eigen::VectorXd> lenses(result.observations.cameras.size());
        for (size_t camera = 0; camera < lenses.size(); camera++) {
            startCamera(int(camera), lenses[camera]);
        }
        result.estimate = startPoses(result.observations, std::move(lenses));
        setShapes(result.observations, bends, result.estimate, result.freedom);
    }

    // Starts with the lens model that was asked for, otherwise with a pinhole or a fisheye, whichever fits better.
    void startCamera(int camera, Eigen::VectorXd &lens) {
        std::optional<double> best;
        const std::vector<LensModel> models = options.lens
                                                  ? std::vector<LensModel>{*options.lens}
                                                  : std::vector<LensModel>{LensModel::Pinhole5, LensModel::Fisheye};
        LensModel chosen = models.front();
        for (const LensModel model : models) {
            result.observations.cameras[size_t(camera)].lens = model;
            Eigen::VectorXd tried;
            const std::optional<double> rms = startLens(result.observations, camera, tried);
            if (rms && (!best || *rms < *best)) {
                best = rms;
                chosen = model;
                lens = tried;
            }
        }
        result.observations.cameras[size_t(camera)].lens = chosen;
    }

    void solve() {
        if (!solveWithoutOutliers(result.observations, result.freedom, result.estimate)) {
            throw CalibrationImpossible("The corners of the photographs do not fit together.");
        }
    }

    // Starts with flat prints, and gives each print more bend as long as that predicts its own sightings better.
    void chooseBends() {
        std::vector<std::optional<double>> before = heldOutErrors(result.observations, result.freedom, result.estimate);
        for (const Bend more : {Bend::Quadratic, Bend::Cubic}) {
            std::vector<Bend> tried = bends;
            for (Bend &bend : tried) {
                bend = int(bend) + 1 == int(more) ? more : bend;
            }
            Estimate estimate = result.estimate;
            Freedom freedom = result.freedom;
            setShapes(result.observations, tried, estimate, freedom);
            const auto after = heldOutErrors(result.observations, freedom, estimate);
            bool isAny = false;
            for (size_t print = 0; print < bends.size(); print++) {
                std::vector<bool> counts;
                for (const Sighting &sighting : result.observations.sightings) {
                    counts.push_back(size_t(sighting.print) == print);
                }
                if (tried[print] == more && predictsBetter(before, after, counts)) {
                    bends[print] = more;
                    isAny = true;
                }
            }
            if (!isAny) {
                break;
            }
            setShapes(result.observations, bends, result.estimate, result.freedom);
            solve();
            before = heldOutErrors(result.observations, result.freedom, result.estimate);
        }
    }

    // Chooses the simplest pinhole model, unless one with more coefficients predicts clearly better.
    void chooseLenses() {
        for (size_t camera = 0; camera < result.observations.cameras.size(); camera++) {
            if (result.observations.cameras[camera].lens == LensModel::Fisheye || !isSeen(int(camera))) {
                continue;
            }
            std::vector<bool> counts;
            for (const Sighting &sighting : result.observations.sightings) {
                const Photograph &photograph = result.observations.photographs[size_t(sighting.photograph)];
                counts.push_back(size_t(photograph.camera) == camera);
            }
            Calibration best = withLens(camera, LensModel::Pinhole4);
            auto errors = heldOutErrors(best.observations, best.freedom, best.estimate);
            for (const LensModel lens : {LensModel::Pinhole5, LensModel::Pinhole8, LensModel::Pinhole12}) {
                Calibration tried = withLens(camera, lens);
                const auto triedErrors = heldOutErrors(tried.observations, tried.freedom, tried.estimate);
                if (predictsBetter(errors, triedErrors, counts)) {
                    best = std::move(tried);
                    errors = triedErrors;
                }
            }
            result = std::move(best);
            solve();
        }
    }

    // The result so far with another lens model for one camera, solved again.
    Calibration withLens(size_t camera, LensModel lens) const {
        Calibration other = result;
        other.observations.cameras[camera].lens = lens;
        Eigen::VectorXd &intrinsics = other.estimate.intrinsics[camera];
        const Eigen::Index kept = std::min<Eigen::Index>(intrinsics.size(), parameterCount(lens));
        Eigen::VectorXd resized = Eigen::VectorXd::Zero(parameterCount(lens));
        resized.head(kept) = intrinsics.head(kept);
        intrinsics = resized;
        SolveOptions how;
        how.freedom = other.freedom;
        solveJointly(other.observations, how, other.estimate);
        return other;
    }

    bool isSeen(int camera) const {
        return std::any_of(result.observations.sightings.begin(), result.observations.sightings.end(),
                           [&](const Sighting &sighting) {
                               const auto photograph = size_t(sighting.photograph);
                               return takesPart(result.observations, sighting, result.estimate) &&
                                      result.observations.photographs[photograph].camera == camera;
                           });
    }

    void checkFocalLengths() const {
        for (size_t camera = 0; camera < result.observations.cameras.size(); camera++) {
            const Eigen::MatrixXd covariance = result.covariance.intrinsics(int(camera));
            const double focal = covariance.size() > 0 ? result.estimate.intrinsics[camera](0) : 1;
            if (covariance.size() > 0 &&
                !(std::sqrt(covariance(0, 0)) < greatestFocalSigma * focal && std::isfinite(focal) && focal > 0)) {
                throw CalibrationImpossible("The focal length of camera \"" + result.observations.cameras[camera].name +
                                            "\" cannot be known from these photographs: they show the target from too "
                                            "few directions. Tilt the target by 30 to 45 degrees, to all sides.");
            }
        }
    }

    void nameLeftOut() {
        for (size_t i = 0; i < result.observations.sightings.size(); i++) {
            const Sighting &sighting = result.observations.sightings[i];
            if (!takesPart(result.observations, sighting, result.estimate)) {
                result.leftOut.push_back({int(i), misfitOf(result.observations, sighting, result.estimate)});
            }
        }
    }

    void nameUndeterminedPrints() {
        for (size_t print = 0; print < result.observations.prints.size(); print++) {
            const Eigen::MatrixXd covariance = result.covariance.shape(int(print));
            const std::vector<int> &free = result.freedom.shapes[print];
            for (Eigen::Index i = 0; i < covariance.rows(); i++) {
                if (free[size_t(i)] != PrintShape::shear && free[size_t(i)] < PrintShape::bend &&
                    std::sqrt(covariance(i, i)) > 0.7 * printPrior) {
                    result.undeterminedPrints.push_back(int(print));
                    break;
                }
            }
        }
    }

    void compareHalves() {
        std::array<Estimate, 2> halves{result.estimate, result.estimate};
        std::array<bool, 2> isSolved{};
        for (size_t half = 0; half < 2; half++) {
            Observations some = result.observations;
            for (Sighting &sighting : some.sightings) {
                const int moment = some.photographs[size_t(sighting.photograph)].moment;
                sighting.isUsed = sighting.isUsed && size_t(moment % 2) == half;
            }
            SolveOptions how;
            how.freedom = result.freedom;
            isSolved[half] = solveJointly(some, how, halves[half]).has_value();
        }
        for (size_t camera = 0; camera < result.observations.cameras.size(); camera++) {
            if (isSolved[0] && isSolved[1] && isSeen(int(camera))) {
                result.halves.emplace_back(
                    projectionDifference(result.observations.cameras[camera], halves[0].intrinsics[camera],
                                         halves[1].intrinsics[camera], infinitelyFar, mapColumns, mapRows));
            } else {
                result.halves.emplace_back();
            }
        }
    }

    const CalibrateOptions &options;
    Calibration result;
    std::vector<Bend> bends;
};

}  // namespace

double Calibration::rms() const {
    double squares = 0;
    int corners = 0;
    for (const Sighting &sighting : observations.sightings) {
        const SightingResiduals residuals(observations, sighting, 0);
        Eigen::VectorXd values(residuals.rows());
        if (!takesPart(observations, sighting, estimate) ||
            !residuals.evaluate(blocksOf(observations, sighting, estimate), values.data(), nullptr)) {
            continue;
        }
        int row = 0;
        for (const SeenCorner &corner : sighting.corners) {
            if (corner.isUsed) {
                squares += values.segment<2>(2 * row++).squaredNorm() * corner.sigma * corner.sigma;
                corners++;
            }
        }
    }
    return corners > 0 ? std::sqrt(squares / corners) : 0;
}

Calibration calibrate(Observations observations, const CalibrateOptions &options) {
    return Calibrator(std::move(observations), options).run();
}

}  // namespace calibration
