// Measures how blurred the edges of the patterns in a picture are.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "viewer/session/session_photograph.h"

// Returns the standard deviation of the blur in pixels, as the median over the edges between neighbouring corners or
// marks. It includes the blur that comes from the area of a pixel. Sharp pictures have 0.4 to 1. Strong blur is
// underestimated: 3 pixels by a quarter. Empty if there are too few edges. grey must have 8 bits.
std::optional<double> edgeBlur(const cv::Mat &grey, const PatternReadings &readings);
