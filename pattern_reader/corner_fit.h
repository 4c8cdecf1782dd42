// Measures a checkerboard corner by fitting the blurred picture of four areas to the grey levels around it:
//
//   grey = middle + amplitude * erf(a / (sqrt 2 * blur)) * erf(b / (sqrt 2 * blur))
//
// a and b being the distances from the two borders. The borders' directions are the caller's, who knows them from the
// lattice far better than a few pixels can say; blur is one value for a picture and can be held fixed.
#pragma once

#include <opencv2/core.hpp>

namespace pattern_reader {

struct CornerFit {
    cv::Point2f position;
    float middle = 0;
    float amplitude = 0;  // positive when the area between axis 0 and axis 1 is light
    float blur = 1;       // standard deviation in pixels, the pixel's own area included
    float residual = 0;   // root mean square, grey levels
    float sigma = 0;      // standard deviation of the position along one axis, pixels
};

// Improves fit (position and blur are the start) over a disc of the given radius in pixels. axis0 and axis1 are the
// directions of the borders, of any length, axis1 clockwise of axis0. False when the fit does not settle within half
// the radius, or the disc leaves the picture.
bool fitCorner(const cv::Mat &picture, cv::Point2f axis0, cv::Point2f axis1, float radius, bool fitBlur, int steps,
               CornerFit &fit);

}  // namespace pattern_reader
