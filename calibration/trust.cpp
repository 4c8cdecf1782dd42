#include "calibration/trust.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <future>
#include <set>

#include "calibration/dense_solve.h"
#include "calibration/interruption.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

constexpr int mapColumns = 60;
constexpr int mapRows = 40;
// The moments are divided into two halves, and each lens is estimated once from each half. A half determines a lens if
// the standard deviation of the focal length is less than this share of the focal length.
constexpr double greatestFocalSigma = 0.02;
// A print's scale is not determined if its standard deviation is at least this share of the prior's standard deviation.
// The same holds for the ratio of the print's x scale to its y scale.
constexpr double undeterminedShare = 0.7;

// Sums over the used sightings of one camera.
struct CameraSum {
    double squares = 0;
    int corners = 0;
    std::set<int> photographs;
    std::vector<double> distances;

    void add(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
        const SightingResiduals residuals(observations, sighting, 0);
        Eigen::VectorXd values(residuals.rows());
        const BlockPointers blocks = blocksOf(observations, sighting, estimate);
        if (residuals.corners() == 0 || !residuals.evaluate(blocks, values.data(), nullptr)) {
            return;
        }
        const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
        const RigidMotion cameraFromPrint = estimate.cameraFromRig[size_t(photograph.camera)] *
                                            estimate.rigFromWorld[size_t(photograph.moment)] *
                                            estimate.worldFromPrint[size_t(sighting.print)];
        Eigen::Vector2d middle = Eigen::Vector2d::Zero();
        Eigen::Index row = 0;
        for (const SeenCorner &corner : sighting.corners) {
            if (corner.isUsed) {
                squares += values.segment<2>(row).squaredNorm() * corner.sigma * corner.sigma;
                middle += observations.prints[size_t(sighting.print)].points[size_t(corner.point)];
                row += 2;
            }
        }
        middle /= residuals.corners();
        corners += residuals.corners();
        photographs.insert(sighting.photograph);
        distances.push_back((cameraFromPrint * Eigen::Vector3d(middle.x(), middle.y(), 0)).norm());
    }
};

void judgeCamera(const Calibration &calibration, const CameraSum &sum, size_t camera, CameraTrust &trust) {
    trust.corners = sum.corners;
    trust.photographs = int(sum.photographs.size());
    if (sum.corners == 0) {
        return;
    }
    trust.rms = std::sqrt(sum.squares / sum.corners);
    std::vector<double> distances = sum.distances;
    const auto middle = distances.begin() + std::ptrdiff_t(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    trust.distance = *middle;
    const Eigen::MatrixXd covariance = calibration.covariance.intrinsics(int(camera));
    const Eigen::VectorXd sigmas = covariance.diagonal().cwiseSqrt();
    trust.sigmas.assign(sigmas.begin(), sigmas.end());
    const Camera &what = calibration.observations.cameras[camera];
    const Eigen::VectorXd &lens = calibration.estimate.intrinsics[camera];
    trust.uncertainty = projectionUncertainty(what, lens, covariance, trust.distance, mapColumns, mapRows);
    trust.uncertaintyAtInfinity = projectionUncertainty(what, lens, covariance, infinitelyFar, mapColumns, mapRows);
}

void judgePrint(const Calibration &calibration, size_t print, PrintTrust &trust) {
    const Estimate &estimate = calibration.estimate;
    const Covariance &covariance = calibration.covariance;
    const std::vector<int> &free = calibration.freedom.shapes[print];
    const RigidMotion &pose = estimate.worldFromPrint[print];
    const Eigen::Matrix3d rotation = rotationMatrix(pose.rotation);
    const Eigen::Matrix3d jacobian = leftJacobian(pose.rotation);
    const Eigen::MatrixXd poseCovariance = covariance.worldFromPrint(int(print));
    const bool moves = poseCovariance.size() > 0;
    if (moves) {
        const Eigen::Matrix3d turned = jacobian * poseCovariance.topLeftCorner<3, 3>() * jacobian.transpose();
        trust.rotationSigma = turned.diagonal().cwiseSqrt() * 180 / std::acos(-1.0);
        trust.translationSigma = poseCovariance.diagonal().tail<3>().cwiseSqrt();
    }
    const Eigen::MatrixXd shape = covariance.shape(int(print));
    for (Eigen::Index i = 0; i < shape.rows(); i++) {
        const auto number = size_t(free[size_t(i)]);
        if (number == PrintShape::scale || number == PrintShape::ratio) {
            const double prior = calibration.freedom.priorOf(int(print)).sigma[number];
            trust.isDetermined = trust.isDetermined && std::sqrt(shape(i, i)) < undeterminedShare * prior;
        }
    }
    const Eigen::MatrixXd all = covariance.print(int(print));
    const PrintShape &numbers = estimate.shapes[print];
    Eigen::Matrix<double, 3, Eigen::Dynamic> byAll(3, all.rows());
    for (const Eigen::Vector2d &drawn : calibration.observations.prints[print].points) {
        const PrintedPoint point = printedPoint(numbers.numbers.data(), numbers.reach, drawn);
        if (moves) {
            byAll.leftCols<3>() = -crossMatrix(rotation * point.place) * jacobian;
            byAll.middleCols<3>(3).setIdentity();
        }
        for (Eigen::Index i = 0; i < shape.rows(); i++) {
            byAll.col((moves ? 6 : 0) + i) = rotation * point.byNumbers.col(free[size_t(i)]);
        }
        const std::optional<Eigensystem> spread = eigensystemOf(propagated(all, byAll));
        trust.pointSigmas.push_back(spread ? std::sqrt(std::max(spread->values(2), 0.0)) : 0);
    }
}

// Returns the lens of each camera, estimated from half of the used moments: those at even positions if `half` is 0,
// those at odd positions if it is 1. A lens is empty if these moments do not determine it.
std::vector<std::optional<Eigen::VectorXd>> lensesOfHalf(const Calibration &calibration, int half) {
    Observations some = calibration.observations;
    std::set<int> moments;
    for (const Sighting &sighting : some.sightings) {
        if (takesPart(some, sighting, calibration.estimate)) {
            moments.insert(some.photographs[size_t(sighting.photograph)].moment);
        }
    }
    for (Sighting &sighting : some.sightings) {
        const auto found = moments.find(some.photographs[size_t(sighting.photograph)].moment);
        sighting.isUsed = sighting.isUsed && std::distance(moments.begin(), found) % 2 == half;
    }
    std::vector<std::optional<Eigen::VectorXd>> lenses(some.cameras.size());
    Estimate estimate = calibration.estimate;
    SolveOptions options;
    options.freedom = calibration.freedom;
    options.isNear = true;
    if (!solveJointly(some, options, estimate)) {
        return lenses;
    }
    const std::optional<Covariance> covariance = covarianceOf(some, options.freedom, estimate);
    for (size_t camera = 0; covariance && camera < lenses.size(); camera++) {
        const Eigen::MatrixXd one = covariance->intrinsics(int(camera));
        const Eigen::VectorXd &lens = estimate.intrinsics[camera];
        if (one.size() > 0 && std::sqrt(one(0, 0)) < greatestFocalSigma * lens(0)) {
            lenses[camera] = lens;
        }
    }
    return lenses;
}

void compareHalves(Calibration &calibration) {
    // The lenses of the two halves are computed at the same time. Neither computation uses the other's results, so it
    // does not matter which of them ends first.
    auto second = std::async(std::launch::async, [&calibration, isCancelled = Interruption::current()]() {
        const Interruption interruption(isCancelled);
        return lensesOfHalf(calibration, 1);
    });
    const auto a = lensesOfHalf(calibration, 0);
    const auto b = second.get();
    for (size_t camera = 0; camera < a.size(); camera++) {
        CameraTrust &trust = calibration.cameras[camera];
        if (a[camera] && b[camera]) {
            trust.halves = projectionDifference(calibration.observations.cameras[camera], *a[camera], *b[camera],
                                                trust.distance, mapColumns, mapRows, &trust.uncertainty);
        }
    }
}

}  // namespace

void judgeTrust(Calibration &calibration) {
    const Observations &observations = calibration.observations;
    calibration.cameras.assign(observations.cameras.size(), {});
    calibration.prints.assign(observations.prints.size(), {});
    std::vector<CameraSum> sums(observations.cameras.size());
    for (const Sighting &sighting : observations.sightings) {
        if (takesPart(observations, sighting, calibration.estimate)) {
            const int camera = observations.photographs[size_t(sighting.photograph)].camera;
            sums[size_t(camera)].add(observations, sighting, calibration.estimate);
        }
    }
    for (size_t camera = 0; camera < sums.size(); camera++) {
        judgeCamera(calibration, sums[camera], camera, calibration.cameras[camera]);
    }
    for (size_t print = 0; print < observations.prints.size(); print++) {
        if (calibration.estimate.groups[print] >= 0) {
            judgePrint(calibration, print, calibration.prints[print]);
        }
    }
    compareHalves(calibration);
}

}  // namespace calibration
