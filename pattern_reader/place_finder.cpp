#include "pattern_reader/place_finder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "camera_library/pattern_code/position_code.h"

namespace pattern_reader {

namespace {

using pattern_code::planeSide;
using pattern_code::tileCount;
using pattern_code::tileSide;

constexpr int windowSide = 5;           // smallest window that is unique in the plane
constexpr float leastCertainty = 0.3F;  // of a reading that takes part
constexpr size_t windowLimit = 300;
// Accepted is what chance would show once in this many lattices of random marks, as a power of ten.
constexpr double log10Doubt = -5;
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

// From the 25 bits of a window, row by row, to the window's place in the plane.
class PlaneWindows {
public:
    PlaneWindows() : keys_(capacity, absent), places_(capacity) {
        for (int row = 0; row < planeSide; row++) {
            for (int column = 0; column < planeSide; column++) {
                bits_[slotOfSquare(column, row)] = pattern_code::planeBit(column, row) ? 1 : 0;
            }
        }
        for (int row = 0; row + windowSide <= planeSide; row++) {
            for (int column = 0; column + windowSide <= planeSide; column++) {
                uint32_t key = 0;
                for (int k = 0; k < windowSide * windowSide; k++) {
                    key = key << 1 | uint32_t(bit(column + k % windowSide, row + k / windowSide));
                }
                size_t slot = slotOf(key);
                while (keys_[slot] != absent) {
                    slot = (slot + 1) % capacity;
                }
                keys_[slot] = key;
                places_[slot] = cv::Point(column, row);
            }
        }
    }

    const cv::Point *find(uint32_t key) const {
        size_t slot = slotOf(key);
        while (keys_[slot] != absent && keys_[slot] != key) {
            slot = (slot + 1) % capacity;
        }
        return keys_[slot] == absent ? nullptr : &places_[slot];
    }

    int bit(int column, int row) const { return bits_[slotOfSquare(column, row)]; }

private:
    static constexpr size_t capacity = size_t(1) << 18;
    static constexpr uint32_t absent = ~uint32_t(0);
    static size_t slotOfSquare(int column, int row) { return size_t(row) * planeSide + size_t(column); }
    static size_t slotOf(uint32_t key) { return (key * 2654435761U) >> 14; }

    std::vector<uint32_t> keys_;
    std::vector<cv::Point> places_;
    std::vector<uint8_t> bits_ = std::vector<uint8_t>(size_t(planeSide) * planeSide);
};

const PlaneWindows &planeWindows() {
    static const PlaneWindows windows;
    return windows;
}

// log10 of the probability that at most `mismatches` of `count` fair coins fall on one side.
double log10Tail(int count, int mismatches) {
    double term = -double(count) * std::log(2.0);
    double sum = term;
    for (int i = 1; i <= mismatches; i++) {
        term += std::log(double(count - i + 1) / i);
        sum = std::max(sum, term) + std::log1p(std::exp(-std::abs(sum - term)));
    }
    return sum / std::log(10.0);
}

// Positions and orientations there are to choose from.
const double log10Places = std::log10(4.0 * (planeSide * planeSide + tileCount * tileSide * tileSide));

// The readings as a grid, one per orientation.
struct ReadingGrid {
    int quarterTurns = 0;
    cv::Point origin;  // of the grid, in turned squares
    int width = 0;
    int height = 0;
    std::vector<int8_t> marks;  // 0, 1, or -1 where nothing was read
    std::vector<cv::Point> squares;
    std::vector<int8_t> bits;

    size_t slot(cv::Point square) const { return size_t(square.y) * size_t(width) + size_t(square.x); }
};

cv::Point turnedSquare(cv::Point square, int quarterTurns) {
    LatticeMotion motion;
    motion.quarterTurns = quarterTurns;
    return motion.square(square);
}

ReadingGrid makeGrid(const std::vector<SquareReading> &readings, int quarterTurns) {
    ReadingGrid grid;
    grid.quarterTurns = quarterTurns;
    cv::Point low(1 << 20, 1 << 20);
    cv::Point high = -low;
    for (const SquareReading &reading : readings) {
        if (reading.certainty < leastCertainty) {
            continue;
        }
        const cv::Point s = turnedSquare(reading.cell, quarterTurns);
        low = {std::min(low.x, s.x), std::min(low.y, s.y)};
        high = {std::max(high.x, s.x), std::max(high.y, s.y)};
        grid.squares.push_back(s);
        grid.bits.push_back(reading.marked ? 1 : 0);
    }
    if (grid.squares.empty()) {
        return grid;
    }
    grid.origin = low;
    grid.width = high.x - low.x + 1;
    grid.height = high.y - low.y + 1;
    grid.marks.assign(size_t(grid.width) * size_t(grid.height), -1);
    for (size_t i = 0; i < grid.squares.size(); i++) {
        grid.squares[i] -= low;
        grid.marks[grid.slot(grid.squares[i])] = grid.bits[i];
    }
    return grid;
}

struct Agreement {
    int compared = 0;
    int mismatches = 0;

    double log10Chance() const { return log10Tail(compared, mismatches) + log10Places; }
    // Squares that lie outside the code speak against a place as well, but corners of something beside the pattern
    // may have been taken along.
    bool accepted(size_t readings) const {
        return compared * 10 >= int(readings) * 6 && mismatches <= greatestMismatchShare * compared &&
               log10Chance() < log10Doubt;
    }
};

Agreement compareWithPlane(const ReadingGrid &grid, cv::Point at) {
    const PlaneWindows &plane = planeWindows();
    Agreement agreement;
    for (size_t i = 0; i < grid.squares.size(); i++) {
        const cv::Point s = grid.squares[i] + at;
        if (s.x >= 0 && s.y >= 0 && s.x < planeSide && s.y < planeSide) {
            agreement.compared++;
            agreement.mismatches += plane.bit(s.x, s.y) != grid.bits[i] ? 1 : 0;
        }
    }
    return agreement;
}

Place makePlace(int tile, const ReadingGrid &grid, cv::Point at, const Agreement &agreement) {
    Place place;
    place.tile = tile;
    place.motion.quarterTurns = grid.quarterTurns;
    place.motion.shift = at - grid.origin;
    place.squaresCompared = agreement.compared;
    place.mismatches = agreement.mismatches;
    place.log10Chance = agreement.log10Chance();
    return place;
}

std::optional<Place> findInPlane(const std::array<ReadingGrid, 4> &grids, size_t &windows) {
    // The windows of the unturned grid, spread over it, are looked up in every orientation; what one finds, all
    // readings judge.
    const size_t places =
        size_t(std::max(0, grids[0].width - windowSide + 1)) * size_t(std::max(0, grids[0].height - windowSide + 1));
    const size_t stride = std::max<size_t>(1, places / windowLimit);
    for (const ReadingGrid &grid : grids) {
        const int across = grid.width - windowSide + 1;
        std::vector<cv::Point> rejected;
        for (size_t w = 0; w < places; w += stride) {
            const cv::Point corner(int(w) % across, int(w) / across);
            uint32_t key = 0;
            bool known = true;
            for (int k = 0; k < windowSide * windowSide && known; k++) {
                const int8_t mark = grid.marks[grid.slot(corner + cv::Point(k % windowSide, k / windowSide))];
                known = mark >= 0;
                key = key << 1 | uint32_t(mark & 1);
            }
            windows += known ? 1 : 0;
            const cv::Point *found = known ? planeWindows().find(key) : nullptr;
            if (found == nullptr) {
                continue;
            }
            const cv::Point at = *found - corner;
            if (std::find(rejected.begin(), rejected.end(), at) != rejected.end()) {
                continue;
            }
            const Agreement agreement = compareWithPlane(grid, at);
            if (agreement.accepted(grid.squares.size())) {
                return makePlace(Place::plane, grid, at, agreement);
            }
            rejected.push_back(at);
        }
    }
    return std::nullopt;
}

// Where the readings have no whole window, being too narrow or full of holes, every place is tried.
std::optional<Place> tryWholePlane(const std::array<ReadingGrid, 4> &grids) {
    constexpr size_t screened = 80;  // readings that a place must agree with before all are asked
    constexpr double mismatchShare = 0.08;
    const PlaneWindows &plane = planeWindows();
    std::optional<Place> best;
    for (const ReadingGrid &grid : grids) {
        const size_t stride = std::max<size_t>(1, grid.squares.size() / screened);
        std::vector<cv::Point> squares;
        std::vector<int8_t> bits;
        for (size_t i = 0; i < grid.squares.size(); i += stride) {
            squares.push_back(grid.squares[i]);
            bits.push_back(grid.bits[i]);
        }
        const int limit = int(mismatchShare * double(squares.size()));
        for (int y = 0; y + grid.height <= planeSide; y++) {
            for (int x = 0; x + grid.width <= planeSide; x++) {
                int mismatches = 0;
                for (size_t i = 0; i < squares.size() && mismatches <= limit; i++) {
                    mismatches += plane.bit(squares[i].x + x, squares[i].y + y) != bits[i] ? 1 : 0;
                }
                if (mismatches > limit) {
                    continue;
                }
                const Agreement agreement = compareWithPlane(grid, {x, y});
                if (agreement.accepted(grid.squares.size()) && (!best || agreement.log10Chance() < best->log10Chance)) {
                    best = makePlace(Place::plane, grid, {x, y}, agreement);
                }
            }
        }
    }
    return best;
}

// The bits of a tile's squares: 0, 1, or -1 where it carries none of position.
using TileBits = std::array<int8_t, size_t(tileSide) * tileSide>;

const std::array<TileBits, tileCount> &tileBits() {
    static const std::array<TileBits, tileCount> bits = [] {
        std::array<TileBits, tileCount> all{};
        for (int tile = 0; tile < tileCount; tile++) {
            for (int row = 0; row < tileSide; row++) {
                for (int column = 0; column < tileSide; column++) {
                    int8_t &bit = all[size_t(tile)][size_t(row) * tileSide + size_t(column)];
                    bit = int8_t(!pattern_code::carriesPosition(column, row) ? -1
                                 : pattern_code::tileBit(tile, column, row)  ? 1
                                                                             : 0);
                }
            }
        }
        return all;
    }();
    return bits;
}

Agreement compareWithTile(int tile, const ReadingGrid &grid, cv::Point at, int mismatchLimit) {
    const TileBits &bits = tileBits()[size_t(tile)];
    Agreement agreement;
    for (size_t i = 0; i < grid.squares.size() && agreement.mismatches <= mismatchLimit; i++) {
        const cv::Point s = grid.squares[i] + at;
        if (s.x < 0 || s.y < 0 || s.x >= tileSide || s.y >= tileSide) {
            continue;
        }
        const int8_t bit = bits[size_t(s.y) * tileSide + size_t(s.x)];
        if (bit >= 0) {
            agreement.compared++;
            agreement.mismatches += bit != grid.bits[i] ? 1 : 0;
        }
    }
    return agreement;
}

std::optional<Place> findInTiles(const std::array<ReadingGrid, 4> &grids) {
    std::optional<Place> best;
    for (const ReadingGrid &grid : grids) {
        const int readings = int(grid.squares.size());
        const int mismatchLimit = int(greatestMismatchShare * std::min(readings, tileSide * tileSide));
        // The grid may reach over the tile by a few squares that do not belong to it.
        const int slackX = std::max(2, grid.width - tileSide + 2);
        const int slackY = std::max(2, grid.height - tileSide + 2);
        for (int tile = 0; tile < tileCount; tile++) {
            for (int y = -slackY; y <= tileSide - grid.height + slackY; y++) {
                for (int x = -slackX; x <= tileSide - grid.width + slackX; x++) {
                    const Agreement agreement = compareWithTile(tile, grid, {x, y}, mismatchLimit);
                    if (agreement.mismatches > mismatchLimit || agreement.compared * 10 < readings * 4 ||
                        agreement.mismatches > greatestMismatchShare * agreement.compared) {
                        continue;
                    }
                    const double chance = agreement.log10Chance();
                    if (chance < log10Doubt && (!best || chance < best->log10Chance)) {
                        best = makePlace(tile, grid, {x, y}, agreement);
                    }
                }
            }
        }
    }
    return best;
}

}  // namespace

cv::Point LatticeMotion::point(cv::Point p) const {
    return turned(p, quarterTurns) + shift;
}

cv::Point LatticeMotion::square(cv::Point s) const {
    // The square's centre is turned, and half a step on the way there and back.
    const cv::Point twice = turned(2 * s + cv::Point(1, 1), quarterTurns) - cv::Point(1, 1);
    return cv::Point(twice.x / 2, twice.y / 2) + shift;
}

bool codeBit(int tile, cv::Point square, bool &bit) {
    const int side = tile == Place::plane ? planeSide : tileSide;
    if (square.x < 0 || square.y < 0 || square.x >= side || square.y >= side ||
        (tile != Place::plane && !pattern_code::carriesPosition(square.x, square.y))) {
        return false;
    }
    bit = tile == Place::plane ? planeWindows().bit(square.x, square.y) != 0
                               : pattern_code::tileBit(tile, square.x, square.y);
    return true;
}

std::optional<Place> findPlace(const std::vector<SquareReading> &readings) {
    int known = 0;
    int marked = 0;
    for (const SquareReading &reading : readings) {
        if (reading.certainty >= leastCertainty) {
            known++;
            marked += reading.marked ? 1 : 0;
        }
    }
    // Plain boards, and readings too few to tell anything, are not worth a search.
    if (log10Tail(known, 0) + log10Places > log10Doubt || marked * 8 < known || marked * 8 > known * 7) {
        return std::nullopt;
    }
    std::array<ReadingGrid, 4> grids;
    for (int turns = 0; turns < 4; turns++) {
        grids[size_t(turns)] = makeGrid(readings, turns);
    }
    size_t windows = 0;
    std::optional<Place> place = findInPlane(grids, windows);
    if (!place) {
        place = findInTiles(grids);
    }
    constexpr size_t enoughWindows = 12;  // three, in four orientations
    if (!place && windows < enoughWindows) {
        place = tryWholePlane(grids);
    }
    return place;
}

}  // namespace pattern_reader
