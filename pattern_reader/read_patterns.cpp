#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/block_reader.h"
#include "pattern_reader/board_measurement.h"
#include "pattern_reader/board_parts.h"
#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_file.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/lattice_completion.h"
#include "pattern_reader/lattice_linking.h"
#include "pattern_reader/lattice_pieces.h"
#include "pattern_reader/lattice_trust.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/plain_board.h"
#include "pattern_reader/plate_reader.h"
#include "pattern_reader/point_detector.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

namespace {

constexpr size_t leastCorners = 9;
constexpr size_t leastMarks = 12;  // of a plate's 49, to look for the others

// Where corners have been taken, so that a coarser or finer level does not give the same lattice twice.
class TakenCorners {
public:
    explicit TakenCorners(const cv::Size &size)
        : columns_(size.width / cell + 1), taken_(size_t(columns_) * size_t(size.height / cell + 1), 0) {}

    // A corner claims its surroundings, up to a third of the way to the next one.
    void take(const CornerLattice &lattice) {
        const int rows = int(taken_.size()) / columns_;
        for (const LatticeCorner &corner : lattice.corners) {
            const float radius = 0.33F * lattice.spacingAt(corner.cell);
            const int x1 = std::min(columns_ - 1, int(corner.position.x + radius) / cell);
            const int y1 = std::min(rows - 1, int(corner.position.y + radius) / cell);
            for (int y = std::max(0, int(corner.position.y - radius) / cell); y <= y1; y++) {
                for (int x = std::max(0, int(corner.position.x - radius) / cell); x <= x1; x++) {
                    taken_[size_t(y) * size_t(columns_) + size_t(x)] = 1;
                }
            }
        }
    }

    // Whether the lattice is, for a good part, one that was taken.
    bool overlaps(const CornerLattice &lattice) const {
        const auto hits = std::count_if(lattice.corners.begin(), lattice.corners.end(),
                                        [&](const LatticeCorner &c) { return taken_[slot(c.position)] != 0; });
        return size_t(hits) * 3 > lattice.corners.size();
    }

private:
    static constexpr int cell = 2;  // pixels
    size_t slot(cv::Point2f p) const {
        const int x = std::clamp(int(p.x) / cell, 0, columns_ - 1);
        const int rows = int(taken_.size()) / columns_;
        const int y = std::clamp(int(p.y) / cell, 0, rows - 1);
        return size_t(y) * size_t(columns_) + size_t(x);
    }

    int columns_;
    std::vector<char> taken_;
};

// Where checkerboards were read, roughly, and so no plates are: their dark squares and marks look like round marks. A
// lattice alone is not enough, as there are saddles between a plate's marks, too.
class BoardArea {
public:
    explicit BoardArea(const cv::Size &size)
        : covered_(size.height / cell + 1, size.width / cell + 1, CV_8U, cv::Scalar(0)) {}

    void cover(const CornerLattice &lattice) {
        for (const LatticeCorner &corner : lattice.corners) {
            // Every corner answers for the squares around it.
            const int radius = int(1.1F * lattice.spacingAt(corner.cell)) / cell + 1;
            const cv::Point middle(int(corner.position.x) / cell, int(corner.position.y) / cell);
            const cv::Rect box(middle - cv::Point(radius, radius), middle + cv::Point(radius + 1, radius + 1));
            covered_(box & cv::Rect({0, 0}, covered_.size())).setTo(1);
        }
    }

    bool contains(cv::Point2f p) const {
        const int x = std::clamp(int(p.x) / cell, 0, covered_.cols - 1);
        const int y = std::clamp(int(p.y) / cell, 0, covered_.rows - 1);
        return covered_.at<uchar>(y, x) != 0;
    }

private:
    static constexpr int cell = 8;  // pixels
    cv::Mat covered_;
};

// All lattices of the image, each once, from large to small.
std::vector<CornerLattice> findLattices(const std::vector<ImageLevel> &levels, const std::vector<LevelPoints> &points,
                                        TakenCorners &taken) {
    std::vector<CornerLattice> pieces;
    for (size_t i = 0; i < levels.size(); i++) {
        for (CornerLattice &lattice : linkLattices(levels[i], points[i].saddles, leastCorners)) {
            pieces.push_back(std::move(lattice));
        }
    }
    std::sort(pieces.begin(), pieces.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    std::vector<CornerLattice> lattices;
    for (CornerLattice &piece : pieces) {
        if (taken.overlaps(piece)) {
            continue;
        }
        completeLattice(piece, levels);
        // A piece that was left over may have grown into what is taken.
        if (piece.corners.size() < leastCorners || taken.overlaps(piece)) {
            continue;
        }
        taken.take(piece);
        lattices.push_back(std::move(piece));
    }
    std::sort(lattices.begin(), lattices.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    joinPieces(lattices, levels);
    return lattices;
}

// What a lattice says once its place is known. squares counts the pattern's columns and rows of squares: the outermost
// lattice lines are its edge and no corners.
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
    // The x axis as a mean of all steps along it.
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
    if (lattice.corners.size() < leastCorners) {
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

// Measures a lattice and says what it is; nothing if it is none of the coded boards and has not the plain board's size.
std::optional<PatternReading> readBoard(const cv::Mat &image, CornerLattice &lattice,
                                        const std::optional<cv::Size> &plainBoard) {
    const MeasuredBoard board = measureBoard(image, lattice);
    if (board.fits.size() < leastCorners) {
        return std::nullopt;
    }
    if (const std::optional<Place> place = findPlace(board.marks)) {
        return readCodedBoard(lattice, board.marks, *place);
    }
    return plainBoard ? readPlainBoard(lattice, *plainBoard) : std::nullopt;
}

// Plates among the blobs that are no part of a checkerboard, each once.
std::vector<PatternReading> readPlates(const std::vector<ImageLevel> &levels, std::vector<LevelPoints> &points,
                                       const BoardArea &boards) {
    std::vector<PatternReading> plates;
    for (size_t i = 0; i < levels.size(); i++) {
        std::vector<DarkBlob> &blobs = points[i].blobs;
        blobs.erase(
            std::remove_if(blobs.begin(), blobs.end(),
                           [&](const DarkBlob &blob) { return boards.contains(levels[i].toImage(blob.position)); }),
            blobs.end());
        for (const MarkLattice &found : findMarkLattices(levels, i, blobs, leastMarks)) {
            std::optional<PatternReading> plate = readPlate(levels, found);
            if (!plate) {
                continue;
            }
            // The same marks may be found in two levels.
            const cv::Point2f here = plate->corners[plate->corners.size() / 2].image;
            const auto same = std::find_if(plates.begin(), plates.end(), [&](const PatternReading &other) {
                return std::any_of(other.corners.begin(), other.corners.end(), [&](const PatternCorner &corner) {
                    return std::hypot(corner.image.x - here.x, corner.image.y - here.y) < 2;
                });
            });
            if (same == plates.end()) {
                plates.push_back(std::move(*plate));
            } else if (plate->corners.size() > same->corners.size() || (plate->values && !same->values)) {
                *same = std::move(*plate);
            }
        }
    }
    return plates;
}

}  // namespace

namespace {

std::vector<PatternReading> readGrey(const cv::Mat &image, const ReadingOptions &options) {
    const auto isCancelled = [&] { return options.isCancelled && options.isCancelled(); };
    std::vector<ImageLevel> levels = makePyramid(image);
    std::vector<LevelPoints> points;
    points.reserve(levels.size());
    for (ImageLevel &level : levels) {
        if (isCancelled()) {
            return {};
        }
        points.push_back(findPoints(level));
    }
    std::vector<PatternReading> readings;
    TakenCorners taken(image.size());
    BoardArea boards(image.size());
    for (CornerLattice &lattice : findLattices(levels, points, taken)) {
        if (isCancelled()) {
            return {};
        }
        if (std::optional<PatternReading> reading = readBoard(image, lattice, options.board)) {
            boards.cover(lattice);
            readings.push_back(std::move(*reading));
        }
    }
    if (isCancelled()) {
        return {};
    }
    joinParts(readings, [&](CornerLattice &lattice) {
        completeLattice(lattice, levels);
        return readBoard(image, lattice, std::nullopt);
    });
    for (PatternReading &reading : readPlates(levels, points, boards)) {
        readings.push_back(std::move(reading));
    }
    return readings;
}

}  // namespace

std::vector<PatternReading> readPatterns(const cv::Mat &image, const ReadingOptions &options) {
    if (image.empty() || (image.channels() != 1 && image.channels() != 3 && image.channels() != 4)) {
        throw std::invalid_argument("an image with 1, 3 or 4 channels is needed");
    }
    if (image.total() > size_t(maximumPixels)) {
        throw std::invalid_argument("the image has more than " + std::to_string(maximumPixels / 1000000) +
                                    " million pixels");
    }
    if (options.board && std::min(options.board->width, options.board->height) < 3) {
        throw std::invalid_argument("a board needs at least 3 x 3 inner corners");
    }
    const cv::Rect whole({0, 0}, image.size());
    const cv::Rect region = options.region.empty() ? whole : options.region & whole;
    if (region.width < 16 || region.height < 16) {
        return {};
    }
    std::vector<PatternReading> readings = readGrey(toGrey(image(region)), options);
    readings.erase(std::remove_if(readings.begin(), readings.end(),
                                  [&](const PatternReading &one) { return one.confidence < options.leastConfidence; }),
                   readings.end());
    for (PatternReading &reading : readings) {
        for (PatternCorner &corner : reading.corners) {
            corner.image += cv::Point2f(region.tl());
        }
    }
    std::sort(readings.begin(), readings.end(),
              [](const PatternReading &a, const PatternReading &b) { return a.corners.size() > b.corners.size(); });
    return readings;
}

}  // namespace pattern_reader
