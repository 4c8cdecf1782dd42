// Draws readings into a picture: the corners, each pattern's axes, and a text with what was read.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Returns a colour copy of an image with the readings drawn into it. The image must have one channel of 8 bits.
PATTERN_READER_API cv::Mat drawReadings(const cv::Mat &image, const std::vector<PatternReading> &readings);

}  // namespace pattern_reader
