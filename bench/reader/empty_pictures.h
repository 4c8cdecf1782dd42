// Pictures without any pattern of this system. A number fixes a picture.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace reader_bench {

// RandomMarks are boards with marks that are not from the code.
enum class EmptyKind { Texture, Text, PlainBoard, Dots, Lattice, RandomMarks };
constexpr int emptyKindCount = 6;
std::string nameOf(EmptyKind kind);

cv::Mat makeEmptyPicture(EmptyKind kind, unsigned number);

}  // namespace reader_bench
