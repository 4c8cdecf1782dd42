// Links saddles that look like neighbouring corners of a checkerboard. In a linked pair, each saddle lies in the
// direction of a border of the other saddle. The borders of both saddles have nearly the same directions, but where one
// saddle is light, the other is dark. The strengths of both saddles are similar.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/point_detector.h"

namespace pattern_reader {

struct LinkedSaddle {
    cv::Point2f position;               // level coordinates
    std::array<cv::Point2f, 2> border;  // directions of the light areas' borders
    float strength = 0;
    // The neighbours' indices along +border 0, +border 1, -border 0, -border 1; -1 if there is none.
    std::array<int, 4> links{-1, -1, -1, -1};
};

// Returns the given saddles with their links, in the same order. `level` is the size of the saddles' level. If p is
// linked to q, then q is linked to p. The link from q to p can have any index in `links`, because the order and the
// signs of the borders can differ from saddle to saddle.
std::vector<LinkedSaddle> linkSaddles(const std::vector<SaddlePoint> &saddles, const cv::Size &level);

}  // namespace pattern_reader
