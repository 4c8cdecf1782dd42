// Makes targets for the synthetic camera, and states what a reader should report about them. The targets are this
// project's coded patterns: tiles, Flexible patterns and plates. Their shapes come from the functions with which
// LmLib64 draws a user's patterns.
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
    int tile = -1;  // -1 if the target is not a tile
    // The coordinates of a point in the reader's lattice minus its coordinates on the target. The coordinates on the
    // target are in pitches and are counted from the pattern's top-left outer corner.
    cv::Point origin;
    bool topLeftDark = true;
    // The values in the information block; a value that the block does not have is empty.
    pattern_reader::PatternValues values;
    bool hasBlock = false;
};

// Makes a tile with a random grid spacing. Tile 0 is a single pattern, whose information block has the grid spacing and
// a thickness. Tiles 1 to 18 are the patterns of an assembly; their blocks have the grid spacing and the pattern's
// number.
CodedTarget makeTile(int tile, std::mt19937 &random, const Print &print = {});
// Makes a Flexible pattern with width × height corners. The pattern is cut out of the large code plane (see
// position_code.h) at a random offset. It has no information block.
CodedTarget makeFlexible(int width, int height, std::mt19937 &random, const Print &print = {});
// Makes a plate. At random, its information block has an offset, or the grid spacing and a thickness.
CodedTarget makePlate(std::mt19937 &random, const Print &print = {});

}  // namespace reader_bench
