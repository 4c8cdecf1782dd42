// Reads and decodes a pattern's information block, which consists of marks or dots.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "camera_library/pattern_code/information_block.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// The block's bits as they were seen, before any repair. A bit is set in `unknown` if it was not seen clearly.
struct SeenBlock {
    std::uint64_t bits = 0;
    std::uint64_t unknown = ~std::uint64_t(0);

    void see(int bit, bool set);
};

// Returns the block that the marks in the squares of a tile encode.
SeenBlock blockOfTile(const std::vector<SquareReading> &readings, const LatticeMotion &motion);

// Decodes the block and writes it to reading.values, blockBytes, correctedBits and filledBits. Leaves these unchanged
// if the block cannot be read with certainty.
void readBlock(const SeenBlock &seen, pattern_code::BlockCarrier carrier, PatternReading &reading);

// How well the visible bits of a plate's block agree with the most similar valid block. Plates have two kinds of valid
// blocks: with spacing and thickness, and with an offset. In the valid blocks of one kind, some of the visible bits can
// have any values, and these values determine the other visible bits. Blocks whose values are out of range
// (information_block.h) count as valid here. `checks` is the number of visible bits that are determined in this way, in
// the kind of the most similar block. If the visible bits were random, the probability that they agree completely with
// a valid block of this kind would be 2^-checks.
struct BlockAgreement {
    static constexpr int tooMany = 5;

    int wrongBits = tooMany;  // number of visible bits that differ: 0 to 4, or tooMany
    int checks = 0;
};

BlockAgreement comparePlateBlock(const SeenBlock &seen);

// Returns the block as it would have been seen if the plate were mirrored across the diagonal through the corner with
// the triangle. Bit 0 becomes unknown: its dot does not lie in the grid of the other dots, so its mirror image is not
// the place of any dot.
SeenBlock mirrorPlateBlock(const SeenBlock &seen);

}  // namespace pattern_reader
