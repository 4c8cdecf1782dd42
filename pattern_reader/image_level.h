// One level of the image pyramid: the image halved `number` times, and a lightly smoothed copy of the halved image.
//
// Level coordinates count the level's own pixels, and the centre of the top-left pixel is (0, 0). A point p of level n
// is at (p + 0.5) * 2^n - 0.5 in the image.
#pragma once

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace pattern_reader {

struct ImageLevel {
    int number = 0;
    cv::Mat picture;   // 8 bits
    cv::Mat smoothed;  // 16 bits signed, grey level * 64, after a binomial filter of five pixels

    float scale() const { return std::ldexp(1.0F, number); }
    cv::Point2f toImage(cv::Point2f p) const {
        return (p + cv::Point2f(0.5F, 0.5F)) * scale() - cv::Point2f(0.5F, 0.5F);
    }
    cv::Point2f fromImage(cv::Point2f p) const {
        return (p + cv::Point2f(0.5F, 0.5F)) * (1 / scale()) - cv::Point2f(0.5F, 0.5F);
    }
};

// Returns the levels from the full image down to the last one whose shorter side has at least 24 pixels, so that
// squares of any size are small in one of them. The `smoothed` pictures are left empty.
std::vector<ImageLevel> makePyramid(const cv::Mat &image);

// Makes level.smoothed from level.picture.
void smooth(ImageLevel &level);

}  // namespace pattern_reader
