// Joins coded boards that were read in parts. A board is read in parts if something in front of it divides it, or if
// two levels of the pyramid show different corners of it. Two prints of the same pattern stay separate, because they
// show the same lattice points at different places.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Reads a lattice: removes and adds corners, and determines which board it is. Empty if it is not a coded board.
using ReadLattice = std::function<std::optional<PatternReading>(CornerLattice &lattice)>;

// Joins the readings that are parts of the same board, two at a time, by calling `read` with the corners of both parts.
// If `read` fails, gives a different board, or gives fewer corners than the larger part has, the reading of the larger
// part is kept, and the corners that only the smaller part has are added to it. The result contains a lattice point
// only once, even if several parts have it.
void joinParts(std::vector<PatternReading> &readings, const ReadLattice &read);

}  // namespace pattern_reader
