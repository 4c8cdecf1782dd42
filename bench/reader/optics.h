// Blurs pictures as a lens that is out of focus does, or as motion during the exposure does. Pictures are 32-bit float
// with one channel.
#pragma once

#include <opencv2/core.hpp>

namespace reader_bench {

// Spreads each point to a disc of radius |radius + slope · (p - middle)|, which may change over the picture.
void defocus(cv::Mat &image, double radius, const cv::Point2d &slope);

// Spreads each point to a line with the length and direction of `way`, with the point in its middle.
void moveDuringExposure(cv::Mat &image, const cv::Point2d &way);

}  // namespace reader_bench
