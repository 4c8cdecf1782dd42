// From the marks or dots of an information block to what it says.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "camera_library/pattern_code/information_block.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// The block's bits as they were seen, before any repair. Bits in `unknown` were not seen clearly.
struct SeenBlock {
    std::uint64_t bits = 0;
    std::uint64_t unknown = ~std::uint64_t(0);

    void see(int bit, bool set);
};

// The block in the squares of a tile.
SeenBlock blockOfTile(const std::vector<SquareReading> &readings, const LatticeMotion &motion);

// Decodes the block and writes it into reading.values, blockBytes and correctedBits; leaves them alone when the block
// cannot be read beyond doubt.
void readBlock(const SeenBlock &seen, pattern_code::BlockCarrier carrier, PatternReading &reading);

// How well what was seen of a plate's block goes with the block that it goes with best. Random bits agree without an
// exception once in 2^checks.
struct BlockAgreement {
    static constexpr int tooMany = 5;

    int wrongBits = tooMany;  // 0 to 4, or tooMany
    int checks = 0;
};

BlockAgreement comparePlateBlock(const SeenBlock &seen);

// What would have been seen if the picture of the plate were the mirror image of one with the same triangle.
SeenBlock mirrorPlateBlock(const SeenBlock &seen);

}  // namespace pattern_reader
