// Makes scenes whose corners are computed from known cameras and prints. No pictures are rendered, so there is time to
// compare hundreds of calibrations with the truth. A draft and a seed determine the scene.
#pragma once

#include <array>
#include <random>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration_bench {

struct SimulatedScene {
    calibration::Observations observations;
    calibration::Estimate truth;
};

struct CameraDraft {
    calibration::Camera camera;
    Eigen::VectorXd intrinsics;
    calibration::RigidMotion fromRig;
};

struct PrintDraft {
    int columns = 14;  // number of corners
    int rows = 14;
    double pitch = 20;              // mm
    calibration::RigidMotion pose;  // worldFromPrint
    std::array<double, calibration::PrintShape::count> shape{};
};

struct SceneDraft {
    std::vector<CameraDraft> cameras;  // of one rig
    std::vector<PrintDraft> prints;
    int moments = 40;
    double noise = 0.1;      // pixels, standard deviation along one axis
    double saidNoise = 0.1;  // pixels, the standard deviation that is given to the calibration; may be wrong
    double least = 500;      // mm, distance from the first camera to the middle of the prints
    double most = 800;
    // The first camera sees the middle of the prints within this central share of its picture's width and height.
    double reach = 0.7;
    double tilt = 0.6;  // radians, standard deviation about x and about y; about z it is 0.3
    // True if the camera is among the prints, near their middle, and looks in random directions. Then `least`, `most`,
    // `reach` and `tilt` are not used.
    bool isInside = false;
    bool wholeOnly = false;  // drops sightings in which a corner of the print is not visible
    int fewestCorners = 12;  // sightings with fewer corners are dropped
};

// A pinhole camera with five distortion coefficients, 1600 x 1200 pixels and a horizontal field of view of 60 degrees.
// Its barrel distortion is strong.
CameraDraft pinholeCamera();
// A fisheye camera with 1600 x 1200 pixels and a horizontal field of view of 120 degrees.
CameraDraft fisheyeCamera();

SimulatedScene simulate(const SceneDraft &draft, unsigned seed);

// Returns the corners that the photograph would show if the print had the pose `worldFromPrint`. `noise` and
// `saidNoise` mean the same as in SceneDraft.
calibration::Sighting sightingOf(const SimulatedScene &scene, int photograph, int print,
                                 const calibration::RigidMotion &worldFromPrint, double noise, double saidNoise,
                                 std::mt19937 &random);

}  // namespace calibration_bench
