// Measures a lattice's corners and reads the marks of its squares.
//
// If squares are only a few pixels large, the pixels around a corner hardly distinguish strong blur with strong
// contrast from weak blur with weak contrast, so the measured blur may be wrong. If it is wrong, nearly all squares
// look marked, or nearly all look unmarked, although a code marks about half of them. If this happens, several blurs
// are tried. The blur that divides the squares most evenly into marked and unmarked ones is used.
#pragma once

#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

struct MeasuredBoard {
    std::vector<CornerFit> fits;  // one for each of the lattice's corners
    std::vector<SquareReading> marks;
};

// Moves the lattice's corners to their measured positions, and removes and adds corners as measureCorners does.
MeasuredBoard measureBoard(const std::vector<ImageLevel> &levels, CornerLattice &lattice);

}  // namespace pattern_reader
