// Loads a picture from a file in the form that the reader needs: one channel of 8 bits.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace pattern_reader {

// Loads PNG, JPEG, TIFF, PGM and whatever else OpenCV reads. TIFF pictures are turned upright, because OpenCV does so;
// all others stay as they are stored. Throws std::runtime_error with a sentence that names the file if it cannot be
// read or is too large.
cv::Mat loadGreyImage(const std::string &path);

// Converts a picture in memory with 1, 3 (BGR) or 4 (BGRA) channels of any depth. With another number of channels, only
// the first is used. Colours become grey, transparent parts white. Deeper pictures are scaled so that all pixels except
// the lightest, one in 2,000, fit into 8 bits. So a few hot pixels do not darken the rest.
cv::Mat toGrey(const cv::Mat &picture);

}  // namespace pattern_reader
