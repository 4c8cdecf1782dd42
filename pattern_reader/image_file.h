// Loads a picture from a file in the form that the reader needs: one channel of 8 bits.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace pattern_reader {

// Loads PNG, JPEG, TIFF, PGM and whatever else OpenCV reads. TIFF pictures are turned upright, because OpenCV does so;
// all others stay as they are stored. If the file cannot be read or the picture is too large, throws std::runtime_error
// with a sentence that names the file.
cv::Mat loadGreyImage(const std::string &path);

// Converts a picture in memory, with 1, 3 (BGR) or 4 (BGRA) channels of any depth, to one channel of 8 bits. If it has
// another number of channels, only the first is used. Colours become grey, transparent parts white. If the depth is not
// 8 bits, the levels are scaled so that only one pixel in 2,000 exceeds 255 (white) and is clipped to 255. This way,
// a few hot pixels do not darken the rest. Negative levels become black.
cv::Mat toGrey(const cv::Mat &picture);

}  // namespace pattern_reader
