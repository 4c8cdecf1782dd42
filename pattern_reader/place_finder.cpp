#include "pattern_reader/place_finder.h"

#include <algorithm>
#include <iterator>

#include "pattern_reader/position_index.h"

namespace pattern_reader {

namespace {

using pattern_code::planeSide;
using pattern_code::tileSide;

constexpr float leastCertainty = 0.3F;  // squares whose reading is less certain are not used
constexpr double log10Doubt = -5;       // a place is accepted only if its Location::chanceLog10 is less than this
constexpr int leastReadings = 36;       // with fewer readings, no place can be certain enough
constexpr double greatestMismatchShare = 0.16;

cv::Point turned(cv::Point p, int quarterTurns) {
    switch (quarterTurns & 3) {
        case 0:
            return p;
        case 1:
            return {-p.y, p.x};
        case 2:
            return {-p.x, -p.y};
        default:
            return {p.y, -p.x};
    }
}

// Returns the readings in the form that the index searches for. Sets `origin` to the lattice cell that becomes (0, 0).
SeenCells seenCells(const std::vector<SquareReading> &readings, cv::Point &origin) {
    cv::Rect extent;
    for (const SquareReading &reading : readings) {
        extent |= cv::Rect(reading.cell, cv::Size(1, 1));
    }
    origin = extent.tl();
    SeenCells seen(extent.width, extent.height);
    for (const SquareReading &reading : readings) {
        seen.at(reading.cell.x - origin.x, reading.cell.y - origin.y) = reading.marked ? 1 : 0;
    }
    return seen;
}

// True if enough of the readings were compared with the code at this location, if enough of the compared readings agree
// with the code, and if random readings would be unlikely to match the code equally well at any place. Squares outside
// the code, or in a tile's information block, are not compared.
bool isAccepted(const Location &location, int readings) {
    const int compared = location.agreeing + location.disagreeing;
    const int leastCompared = readings * (location.place.tile == Place::plane ? 6 : 4);
    return compared * 10 >= leastCompared && location.disagreeing <= greatestMismatchShare * compared &&
           location.chanceLog10 < log10Doubt;
}

}  // namespace

cv::Point LatticeMotion::point(cv::Point p) const {
    return turned(p, quarterTurns) + shift;
}

cv::Point LatticeMotion::square(cv::Point s) const {
    // Turns the centre of the square, which is half a step away from its top-left corner.
    const cv::Point twice = turned(2 * s + cv::Point(1, 1), quarterTurns) - cv::Point(1, 1);
    return cv::Point(twice.x / 2, twice.y / 2) + shift;
}

bool codeBit(int tile, cv::Point square, bool &bit) {
    const int side = tile == Place::plane ? planeSide : tileSide;
    if (square.x < 0 || square.y < 0 || square.x >= side || square.y >= side ||
        (tile != Place::plane && !pattern_code::carriesPosition(square.x, square.y))) {
        return false;
    }
    bit = tile == Place::plane ? pattern_code::planeBit(square.x, square.y)
                               : pattern_code::tileBit(tile, square.x, square.y);
    return true;
}

std::optional<Place> findPlace(const std::vector<SquareReading> &readings) {
    std::vector<SquareReading> certain;
    std::copy_if(readings.begin(), readings.end(), std::back_inserter(certain), [](const SquareReading &reading) {
        return reading.certainty >= leastCertainty && !reading.maybeCover;
    });
    const int known = int(certain.size());
    const int marked =
        int(std::count_if(certain.begin(), certain.end(), [](const SquareReading &one) { return one.marked; }));
    // A search is pointless for a board with too few readings, and for a plain board, on which nearly all readings are
    // alike.
    if (known < leastReadings || marked * 8 < known || marked * 8 > known * 7) {
        return std::nullopt;
    }
    cv::Point first;
    const auto location = PositionIndex::shared().locate(seenCells(certain, first));
    if (!location || !isAccepted(*location, known)) {
        return std::nullopt;
    }
    Place place;
    place.tile = location->place.tile;
    place.motion.quarterTurns = location->place.turns;
    const pattern_code::Square origin = location->place.origin;
    place.motion.shift = cv::Point(origin.column, origin.row) - place.motion.square(first);
    place.squaresCompared = location->agreeing + location->disagreeing;
    place.mismatches = location->disagreeing;
    place.log10Chance = location->chanceLog10;
    return place;
}

}  // namespace pattern_reader
