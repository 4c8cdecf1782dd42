// Determines where a lattice lies on a plain checkerboard. Such a board has no marks, but its size is known.
//
// The place is known if the lattice spans the whole board, even if some corners are missing. If the lattice is only a
// part of the board, its place is not known, because the missing lines could be on either side.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

struct BoardPlace {
    // Converts the lattice's own coordinates to the board's, in which the inner corners run from (1, 1) to (columns,
    // rows).
    LatticeMotion motion;
    // The number of orientations in which a board of this size and these colours looks the same: 1, 2 (half turns) or 4
    // (quarter turns).
    int orientations = 1;
};

// Removes the outermost columns and rows of the lattice that have far fewer corners than the others, because the
// corners in them are stray corners beyond the board. Then determines the place of the lattice. `board` is the number
// of columns and rows of inner corners. If the top-left square is dark in some possible orientations and light in
// others, the orientations in which it is light are ruled out. Of the remaining orientations, the one whose x axis
// points most to the right in the image is chosen. Empty if the lattice has another size, or if it has fewer than half
// of the board's corners.
std::optional<BoardPlace> placeOnBoard(CornerLattice &lattice, cv::Size board);

}  // namespace pattern_reader
