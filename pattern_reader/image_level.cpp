#include "pattern_reader/image_level.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace pattern_reader {

namespace {

// Computes the binomial sums (1 4 6 4 1) along a row. Beyond its ends, the outermost pixels are repeated.
void sumAlongRow(const uchar *in, int width, uint16_t *out) {
    const auto at = [&](int x) { return int(in[std::clamp(x, 0, width - 1)]); };
    const auto sum = [&](int x) { return uint16_t(at(x - 2) + 4 * at(x - 1) + 6 * at(x) + 4 * at(x + 1) + at(x + 2)); };
    for (const int x : {0, 1, width - 2, width - 1}) {
        out[x] = sum(x);
    }
    for (int x = 2; x < width - 2; x++) {
        out[x] = uint16_t(in[x - 2] + 4 * (in[x - 1] + in[x + 1]) + 6 * in[x] + in[x + 2]);
    }
}

}  // namespace

std::vector<ImageLevel> makePyramid(const cv::Mat &image) {
    constexpr int shortestSide = 24;
    std::vector<ImageLevel> levels;
    for (int number = 0;; number++) {
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

void smooth(ImageLevel &level) {
    const cv::Mat &picture = level.picture;
    const int width = picture.cols;
    const int height = picture.rows;
    level.smoothed.create(height, width, CV_16S);
    std::array<std::vector<uint16_t>, 5> rows;
    for (auto &row : rows) {
        row.resize(size_t(width));
    }
    const auto slot = [](int y) { return size_t((y + 10) % 5); };
    const auto fill = [&](int y) {
        sumAlongRow(picture.ptr(std::clamp(y, 0, height - 1)), width, rows[slot(y)].data());
    };
    for (int y = -2; y < 2; y++) {
        fill(y);
    }
    for (int y = 0; y < height; y++) {
        fill(y + 2);
        const uint16_t *a = rows[slot(y - 2)].data();
        const uint16_t *b = rows[slot(y - 1)].data();
        const uint16_t *c = rows[slot(y)].data();
        const uint16_t *d = rows[slot(y + 1)].data();
        const uint16_t *e = rows[slot(y + 2)].data();
        auto *out = level.smoothed.ptr<int16_t>(y);
        for (int x = 0; x < width; x++) {
            const auto sum = uint16_t(a[x] + e[x] + 4 * (b[x] + d[x]) + 6 * c[x]);
            out[x] = int16_t(sum >> 2);
        }
    }
}

}  // namespace pattern_reader
