// Measures how blurred the edges of the patterns in a picture are.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "viewer/session/session_photograph.h"

// Returns the standard deviation of the blur, in pixels. It is the median over the edges of all squares or round marks.
// The result includes the blur that the area of a pixel causes. In sharp pictures, the result is 0.4 to 1. Strong blur
// is underestimated: for a blur of 3 pixels, the result is a quarter too small. Empty if there are too few edges. The
// picture `grey` must have 8 bits.
std::optional<double> edgeBlur(const cv::Mat &grey, const PatternReadings &readings);
