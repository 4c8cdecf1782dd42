// Blurs pictures as a lens that is out of focus does, or as motion during the exposure does. Pictures are 32-bit float
// with one channel.
#pragma once

#include <opencv2/core.hpp>

namespace reader_bench {

// Spreads each point p to a disc. The disc's radius in pixels is |radius + slope · (p - m)|, where m is the middle of
// the picture.
void defocus(cv::Mat &image, double radius, const cv::Point2d &slope);

// Spreads each point to a line with the length (in pixels) and the direction of `way`. The point is the line's middle.
void moveDuringExposure(cv::Mat &image, const cv::Point2d &way);

}  // namespace reader_bench
