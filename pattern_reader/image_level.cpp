#include "pattern_reader/image_level.h"

#include <opencv2/imgproc.hpp>

namespace pattern_reader {

std::vector<ImageLevel> makePyramid(const cv::Mat &image, int levelLimit) {
    constexpr int shortestSide = 24;
    std::vector<ImageLevel> levels;
    for (int number = 0; number < levelLimit; number++) {
        ImageLevel level;
        level.number = number;
        if (number == 0) {
            level.picture = image;
        } else {
            const cv::Mat &finer = levels.back().picture;
            // An even crop keeps the halving exact: every pixel is the mean of four.
            const cv::Rect even(0, 0, finer.cols / 2 * 2, finer.rows / 2 * 2);
            if (even.width / 2 < shortestSide || even.height / 2 < shortestSide) {
                break;
            }
            cv::resize(finer(even), level.picture, cv::Size(even.width / 2, even.height / 2), 0, 0, cv::INTER_AREA);
        }
        levels.push_back(level);
    }
    return levels;
}

}  // namespace pattern_reader
