// The input of a calibration, as plain values: cameras, photographs, prints and the corners seen; and its output, the
// estimate of everything that was unknown.
//
// Axes. World: those of the first print's drawing, x to the right, y down as seen on the printed side, z into the
// plate. Rig: those of the first camera. Camera: x to the right, y down, z along the line of sight. Lengths are
// millimetres, angles radians, image coordinates pixels with the centre of the top-left pixel at (0, 0).
#pragma once

#include <Eigen/Core>
#include <optional>
#include <string>
#include <vector>

#include "calibration/lens_model.h"
#include "calibration/print_shape.h"
#include "calibration/rigid_motion.h"

namespace calibration {

struct Camera {
    std::string name;
    int width = 0;  // pixels
    int height = 0;
    LensModel lens = LensModel::Pinhole5;
};

struct Photograph {
    std::string name;
    int camera = 0;
    // Photographs of one moment were taken at the same time, each by another camera of the rig.
    int moment = 0;
};

struct Print {
    std::string name;
    int number = -1;                      // of the pattern of an assembly, from 0; -1 if it has none
    std::vector<Eigen::Vector2d> points;  // the drawn corners or marks
    // Column and row of each point in the pattern's file; empty if there is no such grid.
    std::vector<Eigen::Vector2i> cells;
};

struct SeenCorner {
    int point = 0;  // in Print::points
    Eigen::Vector2d image = Eigen::Vector2d::Zero();
    double sigma = 1;  // pixels, along one axis
    bool isUsed = true;
};

// What one photograph shows of one print.
struct Sighting {
    int photograph = 0;
    int print = 0;
    bool isUsed = true;
    std::vector<SeenCorner> corners;
};

struct Observations {
    std::vector<Camera> cameras;
    std::vector<Photograph> photographs;
    std::vector<Print> prints;
    std::vector<Sighting> sightings;
    int moments = 0;
};

// The first camera of the rig that a camera belongs to: cameras that took photographs at one moment form a rig.
int rigOrigin(const Observations &observations, int camera);

// Prints that photographs link with each other form a group, and each group has a world of its own: that of its first
// print, whose pose is the identity.
struct Estimate {
    std::vector<Eigen::VectorXd> intrinsics;  // of each camera, as lens_model.h orders them
    std::vector<RigidMotion> cameraFromRig;   // the identity for the first camera of a rig
    std::vector<bool> hasCamera;
    std::vector<RigidMotion> rigFromWorld;  // of each moment
    std::vector<bool> hasMoment;
    std::vector<RigidMotion> worldFromPrint;
    std::vector<int> groups;  // of each print; -1 if its pose is not known
    std::vector<PrintShape> shapes;

    bool isOrigin(int print) const {
        const int group = groups[size_t(print)];
        for (int i = 0; i < print; i++) {
            if (groups[size_t(i)] == group) {
                return false;
            }
        }
        return true;
    }
};

}  // namespace calibration
