#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "bench/calibration/simulated_scene.h"

namespace calibration_bench {

using namespace calibration;

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

// Errors divided by their standard deviations.
class Normalised {
public:
    void add(double error, double sigma) {
        if (sigma > 0) {
            values.push_back(error / sigma);
        }
    }

    void report(GoalTable &table, const std::string &what) const {
        double squares = 0;
        for (const double value : values) {
            squares += value * value;
        }
        const auto inside =
            std::count_if(values.begin(), values.end(), [](double value) { return std::abs(value) <= 1.959964; });
        table.within(what + ": variance of the normalised errors", squares / double(values.size()), 0.9, 1.1, "");
        table.within(what + ": within the 95 % interval", 100.0 * double(inside) / double(values.size()), 93, 97, "%");
    }

private:
    std::vector<double> values;
};

struct Errors {
    Normalised focalLengths, centres, rotations, translations, projections;
};

void addLens(const SimulatedScene &scene, const Calibration &result, int camera, Errors &errors) {
    const Eigen::VectorXd &truth = scene.truth.intrinsics[size_t(camera)];
    const Eigen::VectorXd &estimate = result.estimate.intrinsics[size_t(camera)];
    const std::vector<double> &sigmas = result.cameras[size_t(camera)].sigmas;
    for (int i = 0; i < 2; i++) {
        errors.focalLengths.add(estimate[i] - truth[i], sigmas[size_t(i)]);
        errors.centres.add(estimate[i + 2] - truth[i + 2], sigmas[size_t(i) + 2]);
    }
    // Compares the estimated lens with the true lens at nine pixels in the part of the picture in which corners were
    // seen. The true lens gives the direction of each pixel. Both lenses then project this direction, and the error is
    // the difference between the two projections.
    const Camera &what = scene.observations.cameras[size_t(camera)];
    const Eigen::MatrixXd covariance = result.covariance.intrinsics(camera);
    for (const double x : {0.15, 0.5, 0.85}) {
        for (const double y : {0.15, 0.5, 0.85}) {
            Vector3d direction;
            Projection projection;
            Vector2d seen;
            if (unproject(what.lens, truth.data(), {x * what.width, y * what.height}, direction) &&
                project(what.lens, estimate.data(), direction, projection) &&
                project(what.lens, truth.data(), direction, seen)) {
                const Eigen::Matrix2d spread =
                    projection.byParameters * covariance * projection.byParameters.transpose();
                errors.projections.add(projection.image.x() - seen.x(), std::sqrt(spread(0, 0)));
                errors.projections.add(projection.image.y() - seen.y(), std::sqrt(spread(1, 1)));
            }
        }
    }
}

void addPose(const SimulatedScene &scene, const Calibration &result, int print, Errors &errors) {
    const RigidMotion &truth = scene.truth.worldFromPrint[size_t(print)];
    const RigidMotion &estimate = result.estimate.worldFromPrint[size_t(print)];
    const PrintTrust &trust = result.prints[size_t(print)];
    constexpr double radian = 57.29577951308232;
    const Vector3d turn =
        rotationVector(rotationMatrix(estimate.rotation) * rotationMatrix(truth.rotation).transpose()) * radian;
    for (int i = 0; i < 3; i++) {
        errors.rotations.add(turn[i], trust.rotationSigma[i]);
        errors.translations.add(estimate.translation[i] - truth.translation[i], trust.translationSigma[i]);
    }
}

SceneDraft draftOf() {
    SceneDraft draft;
    CameraDraft second = pinholeCamera();
    second.camera.name = "second";
    second.intrinsics[0] = 1420;
    second.intrinsics[1] = 1417;
    second.fromRig = {{0.01, 0.25, -0.02}, {-140, 4, 18}};
    draft.cameras = {pinholeCamera(), second};
    const std::array<double, PrintShape::count> stretched{0, 0.003};
    const std::array<double, PrintShape::count> other{0.002, -0.002, 0.0005};
    draft.prints = {{8, 6, 24, {}, stretched},
                    {8, 6, 24, {{0.1, 0.7, -0.05}, {205, 10, -70}}, other},
                    {8, 6, 24, {{-0.6, 0.05, 0.1}, {5, 170, -60}}, {}}};
    draft.moments = 14;
    // The calibration is given only half of the corners' true standard deviation. It must find the factor of 2 from the
    // residuals.
    draft.noise = 0.1;
    draft.saidNoise = 0.05;
    draft.reach = 0.5;
    draft.tilt = 0.35;
    return draft;
}

}  // namespace

bool measureTrueSigmas(int runs) {
    constexpr unsigned firstSeed = 70000;
    Errors errors;
    const SceneDraft draft = draftOf();
    int done = 0;
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    for (int run = 0; run < runs; run++) {
        const SimulatedScene scene = simulate(draft, firstSeed + unsigned(run));
        try {
            const Calibration result = calibrate(scene.observations, options);
            done++;
            for (int camera = 0; camera < 2; camera++) {
                addLens(scene, result, camera, errors);
            }
            for (int print = 1; print < 3; print++) {
                addPose(scene, result, print, errors);
            }
        } catch (const CalibrationImpossible &impossible) {
            std::printf("run %d: %s\n", run, impossible.what());
        }
    }
    GoalTable table("The standard deviations of the results agree with their errors");
    table.atLeast("simulated calibrations", done, runs, "");
    errors.focalLengths.report(table, "focal lengths");
    errors.centres.report(table, "principal points");
    errors.rotations.report(table, "rotations of patterns");
    errors.translations.report(table, "positions of patterns");
    errors.projections.report(table, "projected points");
    return !table.isMissed();
}

}  // namespace calibration_bench
