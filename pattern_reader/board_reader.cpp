#include "pattern_reader/board_reader.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/block_reader.h"
#include "pattern_reader/board_measurement.h"
#include "pattern_reader/lattice_search.h"
#include "pattern_reader/lattice_trust.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/plain_board.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

namespace {

// Returns the reading of a lattice whose place is known. `squares` is the size of the pattern in squares. The outermost
// lattice lines are the pattern's edge and have no corners.
PatternReading describe(const CornerLattice &lattice, const LatticeMotion &motion, cv::Size squares) {
    PatternReading reading;
    const cv::Rect inside(1, 1, squares.width - 1, squares.height - 1);
    for (const LatticeCorner &corner : lattice.corners) {
        const cv::Point p = motion.point(corner.cell);
        if (inside.contains(p)) {
            reading.corners.push_back({corner.position, p, corner.sigma, corner.disturbed});
        }
    }
    std::sort(reading.corners.begin(), reading.corners.end(), [](const PatternCorner &a, const PatternCorner &b) {
        return a.lattice.y != b.lattice.y ? a.lattice.y < b.lattice.y : a.lattice.x < b.lattice.x;
    });
    // Adds up the steps in the image from each corner to its neighbour in the direction of x. The direction of the sum
    // is taken as the direction of the x axis.
    cv::Point2f along;
    cv::Point low(1 << 20, 1 << 20);
    for (size_t i = 0; i < reading.corners.size(); i++) {
        low = {std::min(low.x, reading.corners[i].lattice.x), std::min(low.y, reading.corners[i].lattice.y)};
        if (i > 0 && reading.corners[i].lattice - reading.corners[i - 1].lattice == cv::Point(1, 0)) {
            along += reading.corners[i].image - reading.corners[i - 1].image;
        }
    }
    reading.angle = std::atan2(along.y, along.x) * 180 / CV_PI;
    reading.quarterTurns = (int(std::lround(reading.angle / 90)) + 4) % 4;
    const LatticeCorner &any = lattice.corners.front();
    const cv::Point square = motion.square(any.cell);
    const bool even = (square.x + square.y) % 2 == 0;
    reading.evenSquaresDark = lattice.isLight(any.cell) != even;
    reading.topLeftSquareDark = ((low.x + low.y) % 2 == 0) == reading.evenSquaresDark;
    return reading;
}

std::optional<PatternReading> readCodedBoard(CornerLattice &lattice, const std::vector<SquareReading> &marks,
                                             const Place &place) {
    keepTrustedCorners(lattice, marks, place);
    if (lattice.corners.size() < leastLatticeCorners) {
        return std::nullopt;
    }
    const bool isPlane = place.tile == Place::plane;
    const int side = isPlane ? pattern_code::planeSide : pattern_code::tileSide;
    PatternReading reading = describe(lattice, place.motion, {side, side});
    reading.kind = isPlane ? PatternKind::Plane : PatternKind::Tile;
    reading.tile = place.tile;
    reading.squaresCompared = place.squaresCompared;
    reading.squaresDiffering = place.mismatches;
    reading.log10Chance = place.log10Chance;
    reading.confidence = 1 - std::pow(10.0, place.log10Chance);
    if (!isPlane) {
        readBlock(blockOfTile(marks, place.motion), pattern_code::BlockCarrier::tile(place.tile), reading);
    }
    return reading;
}

std::optional<PatternReading> readPlainBoard(CornerLattice &lattice, cv::Size board) {
    const std::optional<BoardPlace> place = placeOnBoard(lattice, board);
    if (!place) {
        return std::nullopt;
    }
    PatternReading reading = describe(lattice, place->motion, board + cv::Size(1, 1));
    reading.kind = PatternKind::Board;
    reading.orientations = place->orientations;
    reading.confidence = double(reading.corners.size()) / board.area();
    return reading;
}

}  // namespace

std::optional<PatternReading> readBoard(const std::vector<ImageLevel> &levels, CornerLattice &lattice,
                                        const std::optional<cv::Size> &plainBoard) {
    const MeasuredBoard board = measureBoard(levels, lattice);
    if (board.fits.size() < leastLatticeCorners) {
        return std::nullopt;
    }
    if (const std::optional<Place> place = findPlace(board.marks)) {
        return readCodedBoard(lattice, board.marks, *place);
    }
    return plainBoard ? readPlainBoard(lattice, *plainBoard) : std::nullopt;
}

}  // namespace pattern_reader
