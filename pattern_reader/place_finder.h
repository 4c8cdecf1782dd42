// Finds where a lattice of mark readings lies in the position code: in the plane or in one of the tiles, and in which
// orientation. Returns a place only if chance is very unlikely to explain it.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// A motion from a lattice's own coordinates to the code's lattice: a number of clockwise quarter turns, then a shift.
struct LatticeMotion {
    int quarterTurns = 0;
    cv::Point shift;

    cv::Point point(cv::Point p) const;   // a lattice point
    cv::Point square(cv::Point s) const;  // a square by its top-left corner
};

struct Place {
    static constexpr int plane = -1;

    int tile = plane;  // number of the tile, or `plane`
    LatticeMotion motion;
    int squaresCompared = 0;
    int mismatches = 0;
    // log10 of the number of places in the code that would, on average, match at least as well as this one if the
    // readings were random.
    double log10Chance = 0;
};

// Sets `bit` to the code's bit in a square of the plane or of a tile. False if the square has no position bit.
bool codeBit(int tile, cv::Point square, bool &bit);

// Returns the place at which the readings agree with the code. Empty if the place is not certain.
std::optional<Place> findPlace(const std::vector<SquareReading> &readings);

}  // namespace pattern_reader
