// Makes targets for the synthetic camera. They resemble this project's patterns, but none of them is such a pattern.
// The reader should find nothing in their pictures.
#pragma once

#include <memory>

#include "bench/reader/dice.h"
#include "bench/reader/synthetic_target.h"

namespace reader_bench {

using Target = std::shared_ptr<const SyntheticTarget>;

// A checkerboard, plain or with marks that are random and not taken from the position code.
Target makeBoard(bool marked, Dice &dice);
// Round holes in straight or shifted rows, up to `most` on a side.
Target makePerforatedSheet(int most, Dice &dice);
// Crossing bars that leave up to `most` rectangular openings on a side.
Target makeNet(int most, Dice &dice);
// Round marks in rows, sometimes in a frame, as on other makers' plates. Nothing on such a grid shows which way is up.
Target makeMarkGrid(Dice &dice);
// Squares that are dark at random, as in a two-dimensional bar code.
Target makeModules(Dice &dice);

}  // namespace reader_bench
