// Scenes whose corners are computed from known cameras and prints, without pictures, so that hundreds of calibrations
// can be compared with their truth. The seed determines everything.
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
    int columns = 14;  // corners
    int rows = 14;
    double pitch = 20;  // mm
    calibration::RigidMotion pose;
    std::array<double, calibration::PrintShape::count> shape{};
};

struct SceneDraft {
    std::vector<CameraDraft> cameras;  // of one rig
    std::vector<PrintDraft> prints;
    int moments = 40;
    double noise = 0.1;      // pixels, standard deviation along one axis
    double saidNoise = 0.1;  // what the corners say that it is
    double least = 500;      // mm, distance from the first camera to the middle of the prints
    double most = 800;
    double reach = 0.7;  // share of the picture, from its middle, that may show the middle of the prints
    double tilt = 0.6;   // radians, standard deviation about each axis
    // The camera is among the prints, near the middle, and looks to all sides; least, most, reach and tilt are not used
    // then.
    bool isInside = false;
    bool wholeOnly = false;  // drops sightings that do not show the whole print
    int fewestCorners = 12;  // of a sighting
};

// A pinhole with five coefficients: 1600 x 1200 pixels, 60 degrees wide, clear barrel distortion.
CameraDraft pinholeCamera();
// 1600 x 1200 pixels and 120 degrees wide.
CameraDraft fisheyeCamera();

SimulatedScene simulate(const SceneDraft &draft, unsigned seed);

// What a photograph shows of a print in any pose.
calibration::Sighting sightingOf(const SimulatedScene &scene, int photograph, int print,
                                 const calibration::RigidMotion &worldFromPrint, double noise, double saidNoise,
                                 std::mt19937 &random);

}  // namespace calibration_bench
