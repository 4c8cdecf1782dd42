// Computes the area that a quadrilateral (for example, what one pixel sees of the target) has in common with a shape.
// The areas are exact, so a picture made from them has no sampling error. All functions are pure.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace reader_bench {

// The four corners of a convex quadrilateral, clockwise or counter-clockwise.
using Quad = std::array<cv::Point2d, 4>;

// Areas are never negative, whether the points run clockwise or counter-clockwise.
double areaOf(const Quad &quad);
double areaInRectangle(const Quad &quad, const cv::Rect2d &rectangle);
double areaInCircle(const Quad &quad, const cv::Point2d &centre, double radius);
// `polygon` is convex and has at most ten corners, which may run clockwise or counter-clockwise.
double areaInPolygon(const Quad &quad, const std::vector<cv::Point2d> &polygon);

}  // namespace reader_bench
