// Makes a scene of two cameras and two prints, and computes the corners that its photographs would show.
#pragma once

#include <random>

#include "calibration/observations.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

constexpr int columns = 9;
constexpr int rows = 7;
constexpr double pitch = 20;  // mm

struct Scene {
    Observations observations;
    Estimate truth;
};

inline Print makePrint() {
    Print print;
    for (int y = 0; y < rows; y++) {
        for (int x = 0; x < columns; x++) {
            print.points.emplace_back((x - columns / 2) * pitch, (y - rows / 2) * pitch);
        }
    }
    return print;
}

// Returns those corners of a print that a photograph shows if the print has this pose. `noise` is the standard
// deviation of each image coordinate in pixels.
inline Sighting see(const Scene &scene, int photograph, int print, const RigidMotion &worldFromPrint, double noise,
                    std::mt19937 &random) {
    // Vectors of random numbers are made with braces, which fix the order of the calls. With parentheses, each compiler
    // could choose the order, and so make another scene.
    std::normal_distribution<double> normal;
    const Photograph &shot = scene.observations.photographs[size_t(photograph)];
    const Camera &camera = scene.observations.cameras[size_t(shot.camera)];
    const PrintShape &shape = scene.truth.shapes[size_t(print)];
    Sighting sighting{photograph, print, true, {}};
    for (int point = 0; point < columns * rows; point++) {
        const Eigen::Vector2d drawn = scene.observations.prints[size_t(print)].points[size_t(point)];
        const Eigen::Vector3d onPrint = printedPoint(shape.numbers.data(), shape.reach, drawn).place;
        const Eigen::Vector3d seen = scene.truth.cameraFromRig[size_t(shot.camera)] *
                                     (scene.truth.rigFromWorld[size_t(shot.moment)] * (worldFromPrint * onPrint));
        Eigen::Vector2d image;
        if (project(camera.lens, scene.truth.intrinsics[size_t(shot.camera)].data(), seen, image) && image.x() > 0 &&
            image.y() > 0 && image.x() < camera.width && image.y() < camera.height) {
            image += noise * Eigen::Vector2d{normal(random), normal(random)};
            sighting.corners.push_back({point, image, noise, true});
        }
    }
    return sighting;
}

// Makes a scene in which a rig of a pinhole and a fisheye camera looks at two prints. The prints are at an angle to
// each other. In both prints, the scale in x differs from that in y. The second print also has another scale, is
// sheared and is bent. Only the noise depends on the seed.
inline Scene makeScene(double noise, unsigned seed = 3) {
    Scene scene;
    scene.observations.cameras = {{"a", 1200, 900, LensModel::Pinhole5}, {"b", 1000, 800, LensModel::Fisheye}};
    scene.observations.prints = {makePrint(), makePrint()};
    Estimate &truth = scene.truth;
    truth.intrinsics = {Eigen::VectorXd(9), Eigen::VectorXd(8)};
    truth.intrinsics[0] << 1100, 1090, 610, 440, -0.2, 0.08, 0.001, -0.0005, 0.01;
    truth.intrinsics[1] << 420, 422, 505, 390, -0.02, 0.005, -0.001, 0.0002;
    truth.cameraFromRig = {{}, {{0.02, -0.3, 0.01}, {-110, 5, 8}}};
    truth.hasCamera = {true, true};
    truth.worldFromPrint = {{}, {{0.05, 0.9, -0.1}, {170, 10, -60}}};
    truth.groups = {0, 0};
    truth.shapes.resize(2);
    for (PrintShape &shape : truth.shapes) {
        shape.reach = reachOf(scene.observations.prints[0]);
    }
    truth.shapes[0].numbers[PrintShape::ratio] = 0.002;
    truth.shapes[1].numbers = {0.001, -0.004, 0.0005, 0.6, -0.3, 0.2};
    std::mt19937 random(3);
    std::mt19937 noiseRandom(seed);
    std::normal_distribution<double> normal;
    for (int moment = 0; moment < 14; moment++) {
        const Eigen::Vector3d turn{0.35 * normal(random), 0.35 * normal(random), 0.5 * normal(random)};
        const Eigen::Vector3d middle{-70 + 30 * normal(random), 20 * normal(random), 520 + 60 * normal(random)};
        truth.rigFromWorld.push_back({turn, middle});
        truth.hasMoment.push_back(true);
        for (int camera = 0; camera < 2; camera++) {
            scene.observations.photographs.push_back({"", camera, moment});
            for (int print = 0; print < 2; print++) {
                const Sighting sighting = see(scene, int(scene.observations.photographs.size()) - 1, print,
                                              truth.worldFromPrint[size_t(print)], noise, noiseRandom);
                if (sighting.corners.size() >= 12) {
                    scene.observations.sightings.push_back(sighting);
                }
            }
        }
    }
    scene.observations.moments = 14;
    return scene;
}

// Computes all corners again, after a change of the truth, and again leaves out sightings with few corners.
inline void seeAgain(Scene &scene, double noise, unsigned seed = 3) {
    std::mt19937 random(seed);
    Observations &observations = scene.observations;
    observations.sightings.clear();
    for (int photograph = 0; photograph < int(observations.photographs.size()); photograph++) {
        for (int print = 0; print < int(observations.prints.size()); print++) {
            const Sighting sighting =
                see(scene, photograph, print, scene.truth.worldFromPrint[size_t(print)], noise, random);
            if (sighting.corners.size() >= 12) {
                observations.sightings.push_back(sighting);
            }
        }
    }
}

// Marks the sightings by all cameras except the first as unused.
inline void useFirstCameraOnly(Scene &scene) {
    for (Sighting &sighting : scene.observations.sightings) {
        sighting.isUsed = scene.observations.photographs[size_t(sighting.photograph)].camera == 0;
    }
}

}  // namespace calibration
