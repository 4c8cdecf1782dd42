// Boards that were read in parts, because something in front of them cuts them apart or because two levels of the
// pyramid showed different corners of them. Two boards of the same number stay two: they show the same lattice points
// at different places.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Reads a lattice: drops and adds corners and says what it is; nothing if it is no coded board.
using ReadLattice = std::function<std::optional<PatternReading>(CornerLattice &lattice)>;

// Makes one reading of those that are parts of one board, by reading their corners together. A lattice point that
// several of them have is in it once.
void joinParts(std::vector<PatternReading> &readings, const ReadLattice &read);

}  // namespace pattern_reader
