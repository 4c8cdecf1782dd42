// Makes files with cameras in the formats of OpenCV, ROS, mrcal, Kalibr and COLMAP. Each function returns the text of a
// file, or an empty text if the format has no such lens model.
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

// NAME.opencv.yaml, for cv::FileStorage. The file can have every lens model. The model "fisheye" is the one of
// cv::fisheye.
std::string opencvFile(const SolvedCamera &camera);

// NAME.camera_info.yaml, in the format of ROS's camera_calibration_parsers. Empty for a lens with 12 coefficients.
std::string rosFile(const SolvedCamera &camera);

// NAME.cameramodel, for mrcal. Its reference coordinate system is that of the rig. Empty for a fisheye lens.
std::string mrcalFile(const SolvedCamera &camera);

// camchain.yaml, for Kalibr: those cameras of one rig that the format can express (pinholes with 4 coefficients, and
// fisheye lenses). Each pose is relative to the previous camera in the file. kalibrHas() says whether the format can
// express a lens model.
bool kalibrHas(LensModel lens);
std::string kalibrFile(const std::vector<SolvedCamera> &cameras);

// cameras.txt, for COLMAP: all cameras except those with 12 coefficients. colmapHas() says whether the format can
// express a lens model.
bool colmapHas(LensModel lens);
std::string colmapFile(const std::vector<SolvedCamera> &cameras);

}  // namespace calibration
