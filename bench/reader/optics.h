// Blurs pictures like a lens that is out of focus, or like motion during the exposure. Pictures are 32-bit float with
// one channel.
#pragma once

#include <opencv2/core.hpp>

namespace reader_bench {

// A point becomes a disc of radius |radius + slope · (p - middle)|, which may change over the picture.
void defocus(cv::Mat &image, double radius, const cv::Point2d &slope);

// A point becomes a line of the given length and direction, with the point in its middle.
void moveDuringExposure(cv::Mat &image, const cv::Point2d &way);

}  // namespace reader_bench
