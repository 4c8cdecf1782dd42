#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "bench/calibration/rendered_scene.h"

namespace calibration_bench {

using namespace calibration;

namespace {

using Eigen::Vector3d;

constexpr int corners = 15;
constexpr double xyError = 0.005;  // the first print of every scene is longer in x than in y by this share

CameraDraft distorted(const char *name) {
    CameraDraft draft{{name, 1640, 1230, LensModel::Pinhole5}, Eigen::VectorXd(9), {}};
    draft.intrinsics << 1390, 1390, 831.3, 602.8, -0.32, 0.14, 0, 0, 0;
    return draft;
}

CameraDraft wide() {
    CameraDraft draft{{"wide", 1640, 1230, LensModel::Fisheye}, Eigen::VectorXd(8), {}};
    draft.intrinsics << 790, 790, 815.6, 621.1, -0.02, 0.003, 0, 0;
    return draft;
}

PrintDraft printAt(const RigidMotion &pose, double ratio = 0) {
    PrintDraft print;
    print.columns = print.rows = corners;
    print.pitch = 12;
    print.pose = pose;
    print.shape[PrintShape::ratio] = ratio;
    return print;
}

SceneDraft singlePrint(const CameraDraft &camera) {
    SceneDraft draft;
    draft.cameras = {camera};
    draft.prints = {printAt({}, xyError)};
    draft.moments = 30;
    draft.least = camera.camera.lens == LensModel::Fisheye ? 160 : 260;
    draft.most = camera.camera.lens == LensModel::Fisheye ? 330 : 480;
    draft.tilt = 0.4;
    return draft;
}

SceneDraft rigOfThree() {
    SceneDraft draft = singlePrint(distorted("a"));
    draft.cameras.push_back(distorted("b"));
    draft.cameras.push_back(distorted("c"));
    draft.cameras[1].fromRig = {{0, 0.2, 0.01}, {-90, 3, 12}};
    draft.cameras[2].fromRig = {{0.02, -0.2, 0}, {85, -4, 15}};
    draft.cameras[2].intrinsics.head<4>() << 1430, 1430, 809, 633;
    draft.moments = 10;
    draft.reach = 0.5;
    draft.least = 320;
    return draft;
}

SceneDraft assemblyOfFive() {
    SceneDraft draft = singlePrint(distorted("camera"));
    draft.prints = {printAt({}, xyError), printAt({{0, 0.6, 0}, {225, 4, -60}}, -xyError),
                    printAt({{0.02, -0.6, 0.03}, {-228, -3, -64}}, 0.002), printAt({{-0.6, 0, 0}, {2, 226, -61}}),
                    printAt({{0.6, 0.03, 0.02}, {-5, -224, -63}}, -0.003)};
    draft.least = 800;
    draft.most = 1100;
    draft.reach = 0.6;
    return draft;
}

// Makes a box, 700 mm wide, with three prints on each wall. The printed sides face inwards.
SceneDraft boxOfEighteen() {
    SceneDraft draft = singlePrint(wide());
    draft.prints.clear();
    constexpr double quarter = 1.5707963267948966;
    const std::vector<Vector3d> walls{{0, 0, 0},        {0, quarter, 0}, {0, 2 * quarter, 0},
                                      {0, -quarter, 0}, {quarter, 0, 0}, {-quarter, 0, 0}};
    const RigidMotion toFirst{{0, 0, 0}, {115, 100, -350}};
    for (size_t wall = 0; wall < walls.size(); wall++) {
        for (int i = 0; i < 3; i++) {
            const Vector3d place(i == 0 ? -115 : i == 1 ? 115 : 8, i == 2 ? 115 : -100, 350);
            const RigidMotion onWall{Vector3d(0.01 * i, 0.02 * int(wall), 0.03 * i), place};
            RigidMotion pose = toFirst * RigidMotion{walls[wall], Vector3d::Zero()} * onWall;
            draft.prints.push_back(printAt(pose, i == 0 ? xyError : -0.002 * i));
        }
    }
    // The world's coordinates are those of the first print.
    const RigidMotion origin = draft.prints.front().pose.inverse();
    for (PrintDraft &print : draft.prints) {
        print.pose = origin * print.pose;
    }
    draft.isInside = true;
    return draft;
}

// Returns the estimated position of a print's corner in the world; NaN if the print has no such corner.
Vector3d estimated(const Calibration &result, int print, int column, int row) {
    const Print &what = result.observations.prints[size_t(print)];
    const PrintShape &shape = result.estimate.shapes[size_t(print)];
    for (size_t i = 0; i < what.points.size(); i++) {
        if (what.cells[i] == Eigen::Vector2i(column, row)) {
            return result.estimate.worldFromPrint[size_t(print)] *
                   printedPoint(shape.numbers.data(), shape.reach, what.points[i]).place;
        }
    }
    return Vector3d::Constant(std::nan(""));
}

struct Deviation {
    double rms = 0, most = 0, ratio = 0;
    size_t prints = 0;
};

// Compares the corners of the result's first group with the truth. The result may have another scale than the truth,
// and other axes. So all estimated corners are first transformed by the similarity that fits those of the first print
// to their true positions. Returns four numbers: the rms and the maximum of the distances that remain, both in mm; the
// greatest relative error of a print's ratio of x scale to y scale; and the number of prints that were compared.
Deviation deviationOf(const RenderedScene &rendered, const Calibration &result) {
    const size_t all = rendered.scene.observations.prints.size();
    std::vector<Vector3d> truth;
    std::vector<Vector3d> found;
    Deviation deviation;
    for (size_t print = 0; print < result.observations.prints.size(); print++) {
        const int number = result.observations.prints[print].number;
        if (number < 0 || size_t(number) >= all || result.estimate.groups[print] != result.firstGroup()) {
            continue;
        }
        deviation.prints++;
        for (int i = 0; i < corners * corners; i++) {
            truth.push_back(rendered.corners[size_t(number)][size_t(i)]);
            found.push_back(estimated(result, int(print), i % corners, i / corners));
        }
        deviation.ratio =
            std::max(deviation.ratio, std::abs(result.estimate.shapes[print].numbers[PrintShape::ratio] -
                                               rendered.scene.truth.shapes[size_t(number)].numbers[PrintShape::ratio]));
    }
    constexpr int first = corners * corners;
    Eigen::Matrix3Xd from(3, first);
    Eigen::Matrix3Xd to(3, first);
    for (int i = 0; i < first; i++) {
        from.col(i) = found[size_t(i)];
        to.col(i) = truth[size_t(i)];
    }
    const Eigen::Matrix4d similarity = Eigen::umeyama(from, to, true);
    for (size_t i = 0; i < truth.size(); i++) {
        const double error = ((similarity * found[i].homogeneous()).head<3>() - truth[i]).norm();
        deviation.rms += error * error / double(truth.size());
        deviation.most = std::max(deviation.most, error);
    }
    deviation.rms = std::sqrt(deviation.rms);
    return deviation;
}

double rmsOf(const PictureMap &map) {
    double squares = 0;
    size_t count = 0;
    for (const std::optional<double> &value : map.values) {
        if (value) {
            squares += *value * *value;
            count++;
        }
    }
    return count == 0 ? 0 : std::sqrt(squares / double(count));
}

void measure(GoalTable &table, const std::string &name, const SceneDraft &draft, double bend, unsigned seed) {
    const RenderedScene rendered = renderAndRead(draft, bend, seed);
    CalibrateOptions options;
    options.lens = draft.cameras.front().camera.lens;
    try {
        const Calibration result = calibrate(rendered.read, options);
        double focal = 0;
        double projection = 0;
        double rms = 0;
        for (size_t camera = 0; camera < draft.cameras.size(); camera++) {
            const Eigen::VectorXd &truth = rendered.scene.truth.intrinsics[camera];
            const Eigen::VectorXd &estimate = result.estimate.intrinsics[camera];
            for (int i = 0; i < 2; i++) {
                focal = std::max(focal, std::abs(estimate[i] / truth[i] - 1));
            }
            projection =
                std::max(projection, rmsOf(projectionDifference(result.observations.cameras[camera], truth, estimate,
                                                                result.cameras[camera].distance, 60, 40)));
            rms = std::max(rms, result.cameras[camera].rms);
        }
        const Deviation deviation = deviationOf(rendered, result);
        table.atLeast(name + ": patterns in the result", double(deviation.prints), double(draft.prints.size()), "");
        table.figure(name + ": residual, rms", rms, "px");
        table.atMost(name + ": greatest error of a focal length", 100 * focal, 0.005, "%");
        table.atMost(name + ": error of the projection over the picture, rms", projection, 0.02, "px");
        table.atMost(name + ": error of the corners' positions, rms", deviation.rms, 0.01, "mm");
        table.atMost(name + ": error of the corners' positions, greatest", deviation.most, 0.02, "mm");
        table.atMost(name + ": greatest error of a print's x:y", 100 * deviation.ratio, 0.005, "%");
    } catch (const CalibrationImpossible &impossible) {
        table.holds(name, impossible.what(), false);
    }
}

}  // namespace

bool measureSyntheticTruth() {
    GoalTable table("Errors against the synthetic truth, from 30 rendered pictures of 2 megapixels");
    measure(table, "strong distortion", singlePrint(distorted("camera")), 0, 11001);
    measure(table, "fisheye, 120 degrees", singlePrint(wide()), 0, 11002);
    measure(table, "print bent by 1 mm", singlePrint(distorted("camera")), 1, 11003);
    measure(table, "rig of three", rigOfThree(), 0, 11004);
    measure(table, "assembly of 5", assemblyOfFive(), 0, 11005);
    measure(table, "18 on the walls of a box", boxOfEighteen(), 0, 11006);
    return !table.isMissed();
}

}  // namespace calibration_bench
