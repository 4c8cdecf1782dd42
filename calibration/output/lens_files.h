// Makes files with cameras in the formats of OpenCV, ROS, mrcal, Kalibr and COLMAP. Each function whose name ends in
// File returns the text of a file. A camera is left out if the format does not have its lens model. If no camera
// remains, the text is empty.
//
// For COLMAP, the centre of the top-left pixel is (0.5, 0.5). For the other programs and for our calibration, it is
// (0, 0). Poses are in metres in the files for mrcal and Kalibr.
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

// NAME.opencv.yaml, for cv::FileStorage. Never empty. The lens model "fisheye" is that of OpenCV's functions in the
// namespace cv::fisheye.
std::string opencvFile(const SolvedCamera &camera);

// NAME.camera_info.yaml, in the format of ROS's camera_calibration_parsers. Empty for a lens with 12 coefficients.
std::string rosFile(const SolvedCamera &camera);

// NAME.cameramodel, for mrcal. Its reference coordinate system is that of the rig. Empty for a fisheye lens.
std::string mrcalFile(const SolvedCamera &camera);

// camchain.yaml, for Kalibr. `cameras` are the cameras of one rig. The file has only those with 4 coefficients or with
// a fisheye lens, because the format has no other lens models. Each pose is relative to the previous camera in the
// file. kalibrHas() returns true if the format has the lens model `lens`.
bool kalibrHas(LensModel lens);
std::string kalibrFile(const std::vector<SolvedCamera> &cameras);

// cameras.txt, for COLMAP: all given cameras except those with 12 coefficients. The file has no poses. colmapHas()
// returns true if the format has the lens model `lens`.
bool colmapHas(LensModel lens);
std::string colmapFile(const std::vector<SolvedCamera> &cameras);

}  // namespace calibration
