// Loads a picture from a file as the reader wants it: one channel of 8 bits.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace pattern_reader {

// PNG, JPEG, TIFF, PGM and whatever else OpenCV reads. Colours become grey; deeper pictures are scaled so that their
// lightest pixel is 255. Pixels stay where they are in the file: a camera's note on its orientation is not obeyed.
// Throws std::runtime_error with a sentence that names the file when it cannot be read or is too large.
cv::Mat loadGreyImage(const std::string &path);

// The same from a picture in memory, of any depth and channel count.
cv::Mat toGrey(const cv::Mat &picture);

}  // namespace pattern_reader
