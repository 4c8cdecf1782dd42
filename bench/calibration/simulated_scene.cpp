#include "bench/calibration/simulated_scene.h"

#include <Eigen/Geometry>
#include <algorithm>

#include "calibration/sighting_residuals.h"

namespace calibration_bench {

using namespace calibration;

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

Print printOf(const PrintDraft &draft, int number) {
    Print print;
    print.name = "pattern " + std::to_string(number);
    print.number = number;
    for (int row = 0; row < draft.rows; row++) {
        for (int column = 0; column < draft.columns; column++) {
            print.points.emplace_back((column - (draft.columns - 1) / 2.0) * draft.pitch,
                                      (row - (draft.rows - 1) / 2.0) * draft.pitch);
            print.cells.emplace_back(column, row);
        }
    }
    return print;
}

Vector3d middleOf(const std::vector<PrintDraft> &prints) {
    Vector3d sum = Vector3d::Zero();
    for (const PrintDraft &print : prints) {
        sum += print.pose.translation;
    }
    return sum / double(prints.size());
}

// Returns a view for a scene in which the prints surround the camera. The camera is near the mean position of the
// prints and looks in a random direction.
RigidMotion viewFromInside(const SceneDraft &draft, std::mt19937 &random) {
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> even(-1, 1);
    const Vector3d axis = Vector3d(normal(random), normal(random), normal(random)).normalized();
    RigidMotion view{axis * (even(random) + 1) * 1.5, Vector3d::Zero()};
    const Vector3d place = middleOf(draft.prints) + 120 * Vector3d(even(random), even(random), even(random));
    view.translation = -(rotationMatrix(view.rotation) * place);
    return view;
}

// Returns a view in which the mean position of the prints is at a random place of the first camera's picture.
RigidMotion randomView(const SceneDraft &draft, std::mt19937 &random) {
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> even(-1, 1);
    const CameraDraft &first = draft.cameras.front();
    const Vector2d share(even(random), even(random));
    const Vector2d pixel =
        Vector2d(first.camera.width, first.camera.height).cwiseProduct(share * draft.reach + Vector2d(1, 1)) / 2;
    Vector3d direction(0, 0, 1);
    unproject(first.camera.lens, first.intrinsics.data(), pixel, direction);
    const double distance = draft.least + (draft.most - draft.least) * (even(random) + 1) / 2;
    const Vector3d turn = Vector3d(draft.tilt * normal(random), draft.tilt * normal(random), 0.3 * normal(random));
    // `face` alone would make the print face the camera, wherever the print is in the picture. `turn` then tilts the
    // print.
    const Vector3d facing = Vector3d::UnitZ().cross(direction);
    const RigidMotion face{facing.norm() > 1e-9
                               ? Vector3d(facing.normalized() * std::asin(std::min(1.0, facing.norm())))
                               : Vector3d::Zero(),
                           Vector3d::Zero()};
    RigidMotion view = face * RigidMotion{turn, Vector3d::Zero()};
    view.translation = direction * distance - rotationMatrix(view.rotation) * middleOf(draft.prints);
    return view;
}

}  // namespace

CameraDraft pinholeCamera() {
    CameraDraft draft{{"camera", 1600, 1200, LensModel::Pinhole5}, Eigen::VectorXd(9), {}};
    draft.intrinsics << 1390, 1386, 812, 591, -0.24, 0.11, 0.0008, -0.0005, -0.02;
    return draft;
}

CameraDraft fisheyeCamera() {
    CameraDraft draft{{"wide", 1600, 1200, LensModel::Fisheye}, Eigen::VectorXd(8), {}};
    draft.intrinsics << 765, 763, 806, 596, -0.018, 0.004, -0.001, 0.0002;
    return draft;
}

Sighting sightingOf(const SimulatedScene &scene, int photograph, int print, const RigidMotion &worldFromPrint,
                    double noise, double saidNoise, std::mt19937 &random) {
    std::normal_distribution<double> normal;
    const Photograph &shot = scene.observations.photographs[size_t(photograph)];
    const Camera &camera = scene.observations.cameras[size_t(shot.camera)];
    const PrintShape &shape = scene.truth.shapes[size_t(print)];
    const RigidMotion cameraFromPrint =
        scene.truth.cameraFromRig[size_t(shot.camera)] * scene.truth.rigFromWorld[size_t(shot.moment)] * worldFromPrint;
    const Eigen::Matrix3d rotation = rotationMatrix(cameraFromPrint.rotation);
    const std::vector<Vector2d> &points = scene.observations.prints[size_t(print)].points;
    Sighting sighting{photograph, print, true, {}};
    for (size_t point = 0; point < points.size(); point++) {
        const Vector3d place = printedPoint(shape.numbers.data(), shape.reach, points[point]).place;
        const Vector3d seen = rotation * place + cameraFromPrint.translation;
        Vector2d image;
        // Noise is drawn for every corner, even for corners outside the picture. So the noise of a corner does not
        // depend on which other corners the picture shows.
        const Vector2d error(noise * normal(random), noise * normal(random));
        constexpr double margin = 5;  // pixels that a detector needs around a corner
        if (seen.z() > 1 && project(camera.lens, scene.truth.intrinsics[size_t(shot.camera)].data(), seen, image) &&
            image.x() > margin && image.y() > margin && image.x() < camera.width - margin &&
            image.y() < camera.height - margin) {
            sighting.corners.push_back({int(point), image + error, saidNoise, true});
        }
    }
    return sighting;
}

SimulatedScene simulate(const SceneDraft &draft, unsigned seed) {
    std::mt19937 random(seed);
    SimulatedScene scene;
    Estimate &truth = scene.truth;
    for (const CameraDraft &camera : draft.cameras) {
        scene.observations.cameras.push_back(camera.camera);
        truth.intrinsics.push_back(camera.intrinsics);
        truth.cameraFromRig.push_back(camera.fromRig);
        truth.hasCamera.push_back(true);
    }
    for (const PrintDraft &print : draft.prints) {
        scene.observations.prints.push_back(printOf(print, int(scene.observations.prints.size())));
        truth.worldFromPrint.push_back(print.pose);
        truth.groups.push_back(0);
        truth.shapes.push_back({print.shape, reachOf(scene.observations.prints.back())});
    }
    scene.observations.moments = draft.moments;
    for (int moment = 0; moment < draft.moments; moment++) {
        truth.rigFromWorld.push_back(draft.isInside ? viewFromInside(draft, random) : randomView(draft, random));
        truth.hasMoment.push_back(true);
        for (size_t camera = 0; camera < draft.cameras.size(); camera++) {
            const auto photograph = int(scene.observations.photographs.size());
            scene.observations.photographs.push_back(
                {draft.cameras[camera].camera.name + "-" + std::to_string(moment) + ".jpg", int(camera), moment});
            for (size_t print = 0; print < draft.prints.size(); print++) {
                Sighting sighting = sightingOf(scene, photograph, int(print), truth.worldFromPrint[print], draft.noise,
                                               draft.saidNoise, random);
                const size_t all = scene.observations.prints[print].points.size();
                const size_t needed = draft.wholeOnly ? all : size_t(draft.fewestCorners);
                if (sighting.corners.size() >= needed) {
                    scene.observations.sightings.push_back(std::move(sighting));
                }
            }
        }
    }
    return scene;
}

}  // namespace calibration_bench
