// Makes the patterns of this system as targets for the synthetic camera, and states what a reader should report about
// them. The shapes come from the code with which LmLib64 draws a user's patterns.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <random>

#include "bench/reader/synthetic_target.h"
#include "pattern_reader/pattern_reader.h"

namespace reader_bench {

struct CodedTarget {
    std::shared_ptr<const SyntheticTarget> target;
    pattern_reader::PatternKind kind = pattern_reader::PatternKind::Tile;
    int tile = -1;
    // The reader's lattice coordinates of a point minus the point's coordinates on the target.
    cv::Point origin;
    bool topLeftDark = true;
    // The values in the information block; fields that it does not have are empty.
    pattern_reader::PatternValues values;
    bool hasBlock = false;
};

// Makes a tile. The information block of tile 0 has the grid spacing and the thickness. The other tiles are the
// patterns of an assembly.
CodedTarget makeTile(int tile, std::mt19937 &random, const Print &print = {});
// Makes a Flexible pattern with width × height corners, cut from the plane at a random offset.
CodedTarget makeFlexible(int width, int height, std::mt19937 &random, const Print &print = {});
CodedTarget makePlate(std::mt19937 &random, const Print &print = {});

}  // namespace reader_bench
