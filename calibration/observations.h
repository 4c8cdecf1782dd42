// The input and the result of a calibration, as plain values. The input has cameras, photographs, prints and observed
// corners. The result is the estimate of all unknowns.
//
// Prints that are linked by photographs share a coordinate system, which is called their world (see Estimate). The axes
// of a world are those of the drawing of the world's first print: seen from the printed side, x points to the right, y
// points down, and z points into the print. The axes of a rig are those of its first camera. In a camera's axes, x
// points to the right, y points down, and the camera looks along z. Lengths are in millimetres, angles in radians, and
// image coordinates in pixels with the centre of the top-left pixel at (0, 0).
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
    // Photographs with the same moment were taken at the same time by different cameras of a rig.
    int moment = 0;
};

struct Print {
    std::string name;
    int number = -1;                      // the pattern's number in its assembly, from 0; -1 if the print has none
    std::vector<Eigen::Vector2d> points;  // the drawn corners or marks
    // Column and row of each point, as in the pattern file; empty if the points form no grid.
    std::vector<Eigen::Vector2i> cells;
};

struct SeenCorner {
    int point = 0;  // index in Print::points
    Eigen::Vector2d image = Eigen::Vector2d::Zero();
    double sigma = 1;  // pixels, along one axis
    bool isUsed = true;
};

// The corners of one print that one photograph shows.
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

// Returns the first camera of the rig that a camera belongs to. Cameras that took photographs at the same moment belong
// to one rig. Two cameras can belong to one rig without ever having taken a photograph at the same moment, if other
// cameras link them.
int rigOrigin(const Observations &observations, int camera);

// Prints that are linked by photographs, directly or through other prints, form a group. Each group has a world of its
// own, in which the pose of its first print is the identity.
struct Estimate {
    std::vector<Eigen::VectorXd> intrinsics;  // of each camera, in the order of lens_model.h
    std::vector<RigidMotion> cameraFromRig;   // the identity for the first camera of a rig
    std::vector<bool> hasCamera;              // true if the camera's pose in its rig is known
    std::vector<RigidMotion> rigFromWorld;    // of each moment
    std::vector<bool> hasMoment;              // true if the moment's pose is known
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
