// The files in which other programs expect cameras: OpenCV, ROS, mrcal, Kalibr and COLMAP. Each function gives the text
// of a file, or an empty text if the file's form has no such lens model.
//
// All of these programs but COLMAP have the centre of the top-left pixel at (0, 0), as we do; COLMAP has it at
// (0.5, 0.5). ROS, mrcal and Kalibr measure in metres.
#pragma once

#include <string>
#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// A camera of the calibration, with its solved parameters.
struct SolvedCamera {
    const Camera &camera;
    const Eigen::VectorXd &intrinsics;
    const RigidMotion &cameraFromRig;
};

// NAME.opencv.yaml, for cv::FileStorage. Has every model; "fisheye" stands for the namespace cv::fisheye.
std::string opencvFile(const SolvedCamera &camera);

// NAME.camera_info.yaml of camera_calibration_parsers. Not for 12 coefficients.
std::string rosFile(const SolvedCamera &camera);

// NAME.cameramodel. Its reference coordinate system is the rig. Not for fisheye lenses.
std::string mrcalFile(const SolvedCamera &camera);

// camchain.yaml: all cameras of one rig that the form can express, which are pinhole cameras with 4 coefficients and
// fisheye lenses; each pose is relative to the camera before.
bool kalibrHas(LensModel lens);
std::string kalibrFile(const std::vector<SolvedCamera> &cameras);

// cameras.txt: all cameras that the form can express. Not for 12 coefficients.
bool colmapHas(LensModel lens);
std::string colmapFile(const std::vector<SolvedCamera> &cameras);

}  // namespace calibration
