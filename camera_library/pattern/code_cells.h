// The code of one pattern: which squares of a checkerboard carry a mark, or which dots a plate has, and what they
// encode. It takes a checked description and does not know where and how marks and dots are drawn.
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

// The cells are the squares of a checkerboard, or the 8 x 8 dots of a plate in the order of pattern_code::blockCell,
// row by row.
struct CodeCells {
    bool at(int column, int row) const {
        const int index = row * columns + column;
        return cells[static_cast<std::size_t>(index)] != 0;
    }

    CodeCarrier carrier = CodeCarrier::Tile;
    int columns = 0;
    int rows = 0;
    std::vector<std::uint8_t> cells;  // 1: a mark or dot

    int tile = 0;                                       // of a Tile
    pattern_code::Square planeSquare;                   // of a Plane: the plane's square at the pattern's top left
    std::array<int, 2> offset{};                        // of a Plane: in half grid spacings from the plane's origin
    std::optional<pattern_code::BlockContent> content;  // of all but a Plane
    std::uint64_t block = 0;                            // the content's bits
};

// The code of the pattern; empty if it is plain or has no extent. The description must have no encodingFault.
std::optional<CodeCells> codeCellsOf(const PatternDescription &description);

// A parameter whose value the code cannot hold.
struct EncodingFault {
    std::string parameter;
    std::string required;  // completes the sentence "it must be ..."
};

// Empty if the code can hold the description, or if the pattern carries no code.
std::optional<EncodingFault> encodingFault(const PatternDescription &description);

}  // namespace lmlib64
