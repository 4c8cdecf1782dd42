#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "calibration/calibrate.h"
#include "calibration/sighting_residuals.h"

namespace calibration_bench {

using namespace calibration;

namespace {

constexpr int columns = 9;
constexpr int rows = 6;
constexpr float square = 25;  // mm

using Corners = std::vector<cv::Point2f>;

struct Pairs {
    cv::Size size;
    std::vector<Corners> left, right;
};

// Finds the corners with the same functions as OpenCV's sample for stereo calibration, but cornerSubPix has a half
// window of 5 pixels instead of 11.
std::optional<Corners> cornersOf(const std::string &path, cv::Size &size) {
    const cv::Mat picture = cv::imread(path, cv::IMREAD_GRAYSCALE);
    Corners corners;
    if (picture.empty() || !cv::findChessboardCorners(picture, {columns, rows}, corners)) {
        return std::nullopt;
    }
    size = picture.size();
    cv::cornerSubPix(picture, corners, {5, 5}, {-1, -1}, {cv::TermCriteria::EPS + cv::TermCriteria::COUNT, 100, 1e-4});
    return corners;
}

Pairs readPairs(const std::string &folder) {
    Pairs pairs;
    for (int number = 1; number <= 14; number++) {
        char name[32];
        std::snprintf(name, sizeof name, "%02d.jpg", number);
        const auto left = cornersOf(folder + "/left" + name, pairs.size);
        const auto right = cornersOf(folder + "/right" + name, pairs.size);
        if (left && right) {
            pairs.left.push_back(*left);
            pairs.right.push_back(*right);
        }
    }
    return pairs;
}

Print board() {
    Print print;
    for (int row = 0; row < rows; row++) {
        for (int column = 0; column < columns; column++) {
            print.points.emplace_back((column - (columns - 1) / 2.0) * double(square),
                                      (row - (rows - 1) / 2.0) * double(square));
        }
    }
    return print;
}

Observations observationsOf(const Pairs &pairs) {
    Observations observations;
    observations.prints = {board()};
    observations.moments = int(pairs.left.size());
    for (const auto &[name, all] : {std::make_pair("left", &pairs.left), std::make_pair("right", &pairs.right)}) {
        const auto camera = int(observations.cameras.size());
        observations.cameras.push_back({name, pairs.size.width, pairs.size.height, LensModel::Pinhole5});
        for (const Corners &corners : *all) {
            const auto photograph = int(observations.photographs.size());
            observations.photographs.push_back({name, camera, photograph % observations.moments});
            Sighting sighting{photograph, 0, true, {}};
            for (const cv::Point2f &corner : corners) {
                sighting.corners.push_back({int(sighting.corners.size()), {corner.x, corner.y}, 0.1, true});
            }
            observations.sightings.push_back(std::move(sighting));
        }
    }
    return observations;
}

// Returns OpenCV's residual in pixels: the root mean square distance between the found and the projected corners of
// both cameras. Sets the baseline in mm.
double residualOfOpenCv(const Pairs &pairs, double &baseline) {
    std::vector<cv::Point3f> drawn;
    for (const Eigen::Vector2d &point : board().points) {
        drawn.emplace_back(float(point.x()), float(point.y()), 0.0F);
    }
    const std::vector<std::vector<cv::Point3f>> objects(pairs.left.size(), drawn);
    cv::Mat lenses[2], coefficients[2], rotation, translation, essential, fundamental;
    std::vector<cv::Mat> rotations, translations;
    const cv::TermCriteria exact(cv::TermCriteria::EPS + cv::TermCriteria::COUNT, 500, 1e-12);
    cv::calibrateCamera(objects, pairs.left, pairs.size, lenses[0], coefficients[0], rotations, translations, 0, exact);
    cv::calibrateCamera(objects, pairs.right, pairs.size, lenses[1], coefficients[1], rotations, translations, 0,
                        exact);
    const double rms = cv::stereoCalibrate(objects, pairs.left, pairs.right, lenses[0], coefficients[0], lenses[1],
                                           coefficients[1], pairs.size, rotation, translation, essential, fundamental,
                                           cv::CALIB_USE_INTRINSIC_GUESS, exact);
    baseline = cv::norm(translation);
    return rms;
}

// Solves with all corners, starting from `start`. Returns the rms residual in pixels, and sets the baseline in mm.
// `shape` lists the indices of the PrintShape numbers that the solve varies; all other numbers are 0. Returns -1 if the
// solve fails.
double residualOfOurs(const Observations &observations, const std::vector<int> &shape, const Calibration &start,
                      double &baseline) {
    SolveOptions options;
    options.freedom.shapes = {shape};
    Estimate estimate = start.estimate;
    for (int number = 0; number < PrintShape::count; number++) {
        if (std::find(shape.begin(), shape.end(), number) == shape.end()) {
            estimate.shapes[0].numbers[size_t(number)] = 0;
        }
    }
    if (!solveJointly(observations, options, estimate)) {
        return -1;
    }
    double squares = 0;
    int corners = 0;
    for (const Sighting &sighting : observations.sightings) {
        const SightingResiduals residuals(observations, sighting, 0);
        Eigen::VectorXd values(residuals.rows());
        residuals.evaluate(blocksOf(observations, sighting, estimate), values.data(), nullptr);
        squares += values.squaredNorm() * 0.1 * 0.1;
        corners += residuals.corners();
    }
    baseline = estimate.cameraFromRig[1].translation.norm();
    return std::sqrt(squares / corners);
}

}  // namespace

bool measurePublicPhotographs(const char *folder) {
    GoalTable table("Public photographs: OpenCV and our calibration, from the same corners");
    const Pairs pairs = readPairs(folder);
    table.atLeast("pairs in which OpenCV finds the corners in both photographs", double(pairs.left.size()), 13, "");
    if (pairs.left.size() < 2) {
        return false;
    }
    const Observations observations = observationsOf(pairs);
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    const Calibration start = calibrate(observations, options);
    double baseline = 0;
    const double theirs = residualOfOpenCv(pairs, baseline);
    table.figure("OpenCV's stereoCalibrate: residual per corner", theirs, "px");
    table.figure("OpenCV's baseline", baseline, "mm");
    constexpr int bend = PrintShape::bend;
    const std::vector<int> quadratic{bend, bend + 1, bend + 2};
    const std::vector<int> cubic{bend, bend + 1, bend + 2, bend + 3, bend + 4, bend + 5, bend + 6};
    const struct {
        const char *what;
        std::vector<int> shape;
        double most;
    } solves[] = {
        {"our calibration, assuming a flat and exact print: residual per corner",
         {},
         theirs + 5e-5},  // the two solvers stop close to the minimum, but not exactly at it
        {"our calibration, estimating only a bend of order 2: residual per corner", quadratic, 0.208},
        {"our calibration, estimating only a bend of order 3: residual per corner", cubic, 0.208},
        {"our calibration, estimating only the ratio of x scale to y scale, and a shear: residual per corner",
         {PrintShape::ratio, PrintShape::shear},
         0},
        {"our calibration, estimating the ratio of x scale to y scale, a shear and a bend of order 2: residual per "
         "corner",
         {PrintShape::ratio, PrintShape::shear, bend, bend + 1, bend + 2},
         0.204},
    };
    for (const auto &solve : solves) {
        const double residual = residualOfOurs(observations, solve.shape, start, baseline);
        if (solve.most > 0) {
            table.atMost(solve.what, residual, solve.most, "px");
        } else {
            table.figure(solve.what, residual, "px");
        }
    }
    table.within("our calibration, estimating the ratio of x scale to y scale, a shear and a bend of order 2: baseline",
                 baseline, 83.10, 83.26, "mm");
    return !table.isMissed();
}

}  // namespace calibration_bench
