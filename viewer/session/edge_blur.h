// How blurred the edges of the patterns in a picture are.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "viewer/session/session_photograph.h"

// The standard deviation of the blur in pixels, the pixel's own area included: the median over edges between
// neighbouring corners or marks. Sharp pictures have 0.4 to 1. Strong blur
// is underestimated, 3 pixels by a quarter. Empty if there are too few edges. grey has 8 bits.
std::optional<double> edgeBlur(const cv::Mat &grey, const PatternReadings &readings);
