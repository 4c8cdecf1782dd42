// Measures a round dark mark by fitting an ellipse to the steepest points of its border. The ellipse's shape shows how
// the plate is tilted there, and this tilt shows where the mark's neighbours must be.
#pragma once

#include <opencv2/core.hpp>

#include "pattern_reader/image_level.h"

namespace pattern_reader {

struct RoundMark {
    cv::Point2f centre;    // image coordinates
    cv::Matx22f toUnit;    // maps the border, relative to the centre, onto the unit circle
    float area = 0;        // pixels²
    float darkLevel = 0;   // grey level in the middle
    float lightLevel = 0;  // grey level around the mark
};

// Measures the mark around a point of the image. `radius` is a first guess in image pixels and may be wrong by a factor
// of two. False if there is no closed elliptical border, if the ellipse is too flat, or if the contrast is too low.
bool measureMark(const ImageLevel &level, cv::Point2f image, float radius, RoundMark &mark);

}  // namespace pattern_reader
