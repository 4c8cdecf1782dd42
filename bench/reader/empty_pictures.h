// Makes pictures without any pattern of this system. The number of a picture determines everything in it.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace reader_bench {

enum class EmptyKind {
    Texture,
    Text,
    PlainBoard,
    Dots,
    Lattice,
    RandomMarks,  // boards with marks that are not from the code
    PerforatedSheet,
    Net,
    MarkGrid,  // round marks in rows, some in a frame
    Modules,   // squares that are dark at random
};
constexpr int emptyKindCount = 10;
std::string nameOf(EmptyKind kind);

cv::Mat makeEmptyPicture(EmptyKind kind, unsigned number);

}  // namespace reader_bench
