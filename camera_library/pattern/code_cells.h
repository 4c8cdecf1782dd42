// Makes the code of one pattern. The code states which squares of a checkerboard carry a mark, or which dots a plate
// has, and what the marks or dots encode. Every value of a given PatternDescription must be in the range that its
// parameter allows. Marks and dots are not drawn here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern_code/information_block.h"
#include "camera_library/pattern_code/position_code.h"

namespace lmlib64 {

// The cells are the squares of a checkerboard, or the 8 x 8 places for dots on a plate. On a plate,
// pattern_code::blockCell states the cell of each bit. Cells are stored row by row.
struct CodeCells {
    bool at(int column, int row) const {
        const int index = row * columns + column;
        return cells[static_cast<std::size_t>(index)] != 0;
    }

    CodeCarrier carrier = CodeCarrier::Tile;
    int columns = 0;
    int rows = 0;
    std::vector<std::uint8_t> cells;  // 1: a mark or dot

    int tile = 0;                                       // Tile: the number of the tile
    pattern_code::Square planeSquare;                   // Plane: the plane's square at the pattern's top left
    std::array<int, 2> offset{};                        // Plane: the pattern's offset in half grid spacings
    std::optional<pattern_code::BlockContent> content;  // Tile and Plate; empty for a Plane
    std::uint64_t block = 0;                            // the information block with this content; 0 for a Plane
};

// Returns the code of the pattern; empty if the pattern is plain or its grid spacing is 0. encodingFault() must have
// found no fault in the description.
std::optional<CodeCells> codeCellsOf(const PatternDescription &description);

// A parameter whose value the code cannot hold.
struct EncodingFault {
    std::string parameter;
    std::string required;  // completes the sentence "it must be ..."
};

// Returns the first parameter whose value the code cannot hold; empty if there is none or if the pattern carries no
// code.
std::optional<EncodingFault> encodingFault(const PatternDescription &description);

}  // namespace lmlib64
