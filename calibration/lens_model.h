// Implements the lens models: projects a point in front of a camera to a pixel, with all derivatives, and finds the
// direction that projects to a pixel.
//
// Parameters, in this order: fx, fy, cx, cy in pixels, then the distortion coefficients in OpenCV's order and meaning.
//   Pinhole4:  k1 k2 p1 p2                             (Brown, "Decentering Distortion of Lenses", 1966)
//   Pinhole5:  ... k3
//   Pinhole8:  ... k4 k5 k6, a rational function of the squared radius
//   Pinhole12: ... s1 s2 s3 s4, the thin prism
//   Fisheye:   k1 k2 k3 k4, equidistant                (Kannala and Brandt, "A Generic Camera Model ...", 2006)
// In a camera's axes, x points to the right, y points down, and the camera looks along z. The centre of the top-left
// pixel is (0, 0). No function throws, allocates memory or keeps state.
#pragma once

#include <Eigen/Core>
#include <string>

#include "calibration/calibration_export.h"

namespace calibration {

enum class LensModel { Pinhole4, Pinhole5, Pinhole8, Pinhole12, Fisheye };

constexpr int pinholeParameters = 4;    // fx, fy, cx, cy
constexpr int greatestParameters = 16;  // the number that the largest model has

// Return the number of distortion coefficients, and the number of all parameters.
CALIBRATION_API int coefficientCount(LensModel lens);
CALIBRATION_API int parameterCount(LensModel lens);

// Returns the name of the model in small letters, such as "pinhole4".
CALIBRATION_API const char *nameOf(LensModel lens);

struct Projection {
    Eigen::Vector2d image;                // pixels
    Eigen::Matrix<double, 2, 3> byPoint;  // pixels per unit of the point
    Eigen::Matrix<double, 2, Eigen::Dynamic, Eigen::RowMajor, 2, greatestParameters> byParameters;
};

// Projects a point given in the camera's axes. Returns false if the camera cannot see the point. A pinhole camera sees
// all points in front of it. A fisheye sees all points but its own centre and those on the optical axis behind it.
CALIBRATION_API bool project(LensModel lens, const double *parameters, const Eigen::Vector3d &point,
                             Projection &projection);
CALIBRATION_API bool project(LensModel lens, const double *parameters, const Eigen::Vector3d &point,
                             Eigen::Vector2d &image);

// Finds the direction that projects to a pixel, as a vector of unit length. Returns false if no direction is found.
// This can happen where the distortion folds the picture over, so that a pixel has no direction or several. For a
// fisheye, only directions up to 3.1 radians from the optical axis are found. Pixels farther out give false.
CALIBRATION_API bool unproject(LensModel lens, const double *parameters, const Eigen::Vector2d &image,
                               Eigen::Vector3d &direction);

}  // namespace calibration
