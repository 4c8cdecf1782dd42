// Makes pictures in which the reader, without options, must not read anything. The kind and the number of a picture
// determine everything in it.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace reader_bench {

enum class EmptyKind {
    Texture,
    Text,
    PlainBoard,
    Dots,
    Lattice,      // lines or shapes at the points of a regular grid
    RandomMarks,  // boards with random marks, which are not taken from the position code
    PerforatedSheet,
    Net,
    MarkGrid,  // round marks in rows; some pictures have a frame around all marks
    Modules,   // squares that are dark at random
};
constexpr int emptyKindCount = 10;
std::string nameOf(EmptyKind kind);

cv::Mat makeEmptyPicture(EmptyKind kind, unsigned number);

}  // namespace reader_bench
