// Results with numbers that were chosen by hand, so that a test knows what a view must show.
#pragma once

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "viewer/session/session_result.h"

namespace known_result {

constexpr int firstId = 10;  // the session's id of photograph 0; the ids of the others follow

// `seen` is where a corner was seen. `residual` is this place minus the place that the estimate predicts. Both are in
// pixels.
struct Corner {
    Eigen::Vector2d seen;
    Eigen::Vector2d residual;
};

// A print of 9 x 7 corners with a pitch of 20 mm. Its four outermost corners are 100 mm from its middle.
inline calibration::Print makePrint(int number) {
    calibration::Print print;
    print.name = "pattern " + std::to_string(number);
    print.number = number;
    for (int row = 0; row < 7; ++row) {
        for (int column = 0; column < 9; ++column) {
            print.points.emplace_back(20.0 * (column - 4), 20.0 * (row - 3));
            print.cells.emplace_back(column, row);
        }
    }
    return print;
}

// Two cameras, patterns 4 and 7, and four photographs without corners; add() adds corners. The first camera takes the
// first three photographs. The photographs are taken from 500, 550, 600 and 650 mm in front of pattern 4. Pattern 7 is
// 300 mm to the right of pattern 4, 10 mm below it and 200 mm nearer to the cameras. It is turned by 30 degrees and
// bent by 0.64 mm towards the cameras. Compared with its drawing, it is 0.2 % larger in x and 0.1 % larger in y.
struct Builder {
    std::shared_ptr<calibration::Calibration> calibration = std::make_shared<calibration::Calibration>();
    SessionResult result;

    Builder() {
        using calibration::PrintShape;
        auto &observations = calibration->observations;
        observations.cameras = {{"left", 1200, 900, calibration::LensModel::Pinhole5},
                                {"right", 800, 600, calibration::LensModel::Fisheye}};
        observations.prints = {makePrint(4), makePrint(7)};
        observations.moments = 4;
        auto &estimate = calibration->estimate;
        estimate.intrinsics = {Eigen::VectorXd(9), Eigen::VectorXd(8)};
        estimate.intrinsics[0] << 1100, 1100, 599.5, 449.5, -0.2, 0.08, 0.001, -0.0005, 0.01;
        estimate.intrinsics[1] << 400, 400, 399.5, 299.5, -0.02, 0, 0, 0;
        estimate.cameraFromRig.resize(2);
        estimate.hasCamera = {true, true};
        estimate.groups = {0, 0};
        estimate.worldFromPrint = {{}, {{0, -M_PI / 6, 0}, {300, 10, -200}}};
        estimate.shapes.resize(2);
        estimate.shapes[0].reach = estimate.shapes[1].reach = 100;
        estimate.shapes[1].numbers[PrintShape::scale] = (std::log(1.002) + std::log(1.001)) / 2;
        estimate.shapes[1].numbers[PrintShape::ratio] = std::log(1.002) - std::log(1.001);
        estimate.shapes[1].numbers[PrintShape::bend] = -1;
        for (int i = 0; i < 4; ++i) {
            observations.photographs.push_back({"/shots/" + std::to_string(i) + ".jpg", i < 3 ? 0 : 1, i});
            estimate.rigFromWorld.push_back({Eigen::Vector3d::Zero(), {0, 0, 500 + 50.0 * i}});
            estimate.hasMoment.push_back(true);
            result.photographIds.push_back(firstId + i);
            result.fits[firstId + i] = {};
        }
        calibration->cameras.resize(2);
        calibration->prints.resize(2);
        PrintLook look;
        look.kind = pattern_reader::PatternKind::Plane;
        for (const size_t print : {0U, 1U}) {
            result.textures.push_back(textureOf(observations.prints[print], estimate.shapes[print], look));
        }
    }

    void add(int photograph, int print, bool isUsed, const std::vector<Corner> &corners) {
        calibration::Sighting sighting{photograph, print, isUsed, {}};
        result.estimated.emplace_back();
        for (const Corner &corner : corners) {
            sighting.corners.push_back({0, corner.seen, 1, true});
            result.estimated.back().emplace_back(corner.seen - corner.residual);
        }
        calibration->observations.sightings.push_back(std::move(sighting));
    }

    std::shared_ptr<const SessionResult> make() {
        result.calibration = calibration;
        return std::make_shared<const SessionResult>(result);
    }
};

}  // namespace known_result
