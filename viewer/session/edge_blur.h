// Measures how blurred the edges of the patterns in a picture are.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "viewer/session/session_photograph.h"

// Returns the standard deviation of the blur in pixels: the median over the edges of the squares or round marks. The
// blur that comes from the area of a pixel is included. Sharp pictures have 0.4 to 1 pixel. Strong blur is
// underestimated: a blur of 3 pixels is measured a quarter too small. Empty if there are too few edges. The picture
// `grey` must have 8 bits.
std::optional<double> edgeBlur(const cv::Mat &grey, const PatternReadings &readings);
