#include "pattern_reader/plate_reader.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "pattern_reader/block_reader.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/plate_dots.h"
#include "pattern_reader/plate_frame.h"
#include "pattern_reader/plate_marks.h"
#include "pattern_reader/plate_view.h"

namespace pattern_reader {

namespace {

constexpr int leastChecks = 10;       // of the dots seen, for them to say which way is up
constexpr double leastSpacing = 9.5;  // pixels, for the frame's corners to be told apart without a block

struct Assumption {
    LatticeMotion motion;
    FrameEvidence frame;
};

// The shift under which the frame is where it must be; the turn is left open.
std::optional<Assumption> findShift(const std::vector<ImageLevel> &levels, const MarkLattice &found,
                                    const cv::Matx33d &imageFromCell) {
    const cv::Rect extent = found.lattice.extent();
    std::optional<Assumption> best;
    FrameEvidence second;
    for (int y = 0; y + extent.height <= marksPerSide; y++) {
        for (int x = 0; x + extent.width <= marksPerSide; x++) {
            Assumption assumption;
            assumption.motion.shift = cv::Point(x, y) - extent.tl();
            const PlateView view(levels, found, imageFromCell, assumption.motion);
            assumption.frame = lookForFrame(view);
            if (!best || assumption.frame.passed > best->frame.passed) {
                second = best ? best->frame : second;
                best = assumption;
            } else if (assumption.frame.passed > second.passed) {
                second = assumption.frame;
            }
        }
    }
    // A cover along a side leaves less of the frame's ends to the right shift than to one away from the cover, which in
    // turn misses a side.
    const int margin = best && best->frame.goodSides > second.goodSides ? 4 : 8;
    if (!best || best->frame.goodSides < 2 || best->frame.passed < second.passed + margin ||
        best->frame.passed * 10 < best->frame.looked * 5) {
        return std::nullopt;
    }
    return best;
}

// The whole plate turned: what was corner 0 becomes the corner after `turns` quarter turns clockwise.
LatticeMotion turnPlate(const LatticeMotion &motion, int turns) {
    LatticeMotion turned;
    turned.quarterTurns = turns;
    cv::Point shift = motion.shift;
    for (int i = 0; i < turns; i++) {
        shift = {marksPerSide - 1 - shift.y, shift.x};
    }
    turned.shift = shift;
    return turned;
}

struct Orientation {
    LatticeMotion motion;
    SeenBlock block;
};

// Which corner of the plate is its top-left one: by the triangle, by the dots, or by both.
std::optional<Orientation> findOrientation(const std::vector<ImageLevel> &levels, const MarkLattice &found,
                                           const cv::Matx33d &imageFromCell, const LatticeMotion &placed) {
    // Which corner, in the unturned plate, can be the one with the triangle?
    const PlateView unturned(levels, found, imageFromCell, placed);
    std::array<CornerLook, 4> looks{};
    int triangles = 0;
    for (int corner = 0; corner < 4; corner++) {
        looks[size_t(corner)] = lookAtCorner(unturned, corner);
        triangles += looks[size_t(corner)] == CornerLook::Triangle ? 1 : 0;
    }
    if (triangles > 1) {
        return std::nullopt;
    }
    std::optional<LatticeMotion> motion;
    SeenBlock block;
    int candidates = 0;
    // In how many of them the dots are those of a block: for certain, or as far as they can be seen.
    int readable = 0;
    int possible = 0;
    for (int corner = 0; corner < 4; corner++) {
        if (looks[size_t(corner)] == CornerLook::Plain ||
            (triangles == 1 && looks[size_t(corner)] != CornerLook::Triangle)) {
            continue;
        }
        candidates++;
        // Corner k comes to the top left by 4 - k quarter turns.
        const LatticeMotion turned = turnPlate(placed, (4 - corner) % 4);
        const SeenBlock seen = readDots(found, PlateView(levels, found, imageFromCell, turned));
        PatternReading trial;
        readBlock(seen, pattern_code::BlockCarrier::plate(), trial);
        const bool couldBe = couldBePlateBlock(seen, leastChecks);
        if (trial.values || (readable == 0 && (couldBe || !motion))) {
            motion = turned;
            block = seen;
        }
        readable += trial.values ? 1 : 0;
        possible += couldBe ? 1 : 0;
    }
    // The block, what is seen of it, or the triangle alone says which way is up; for the latter two the picture must be
    // large enough to tell the frame's corners apart.
    const bool large = unturned.sharpSpacingAt({4, 4}) >= leastSpacing;
    if (!motion || readable > 1 || (readable == 0 && !(large && (candidates == 1 || possible == 1)))) {
        return std::nullopt;
    }
    return Orientation{*motion, block};
}

}  // namespace

std::optional<PatternReading> readPlate(const std::vector<ImageLevel> &levels, const MarkLattice &start) {
    MarkLattice found = start;
    cv::Matx33d imageFromCell;
    if (!completeMarks(levels, found, imageFromCell)) {
        return std::nullopt;
    }
    const std::optional<Assumption> placed = findShift(levels, found, imageFromCell);
    if (!placed) {
        return std::nullopt;
    }
    const auto oriented = findOrientation(levels, found, imageFromCell, placed->motion);
    if (!oriented) {
        return std::nullopt;
    }
    PatternReading reading;
    reading.kind = PatternKind::Plate;
    readBlock(oriented->block, pattern_code::BlockCarrier::plate(), reading);
    const PlateView view(levels, found, imageFromCell, oriented->motion);
    const cv::Point2d along = view.toImage({4.5, 4}) - view.toImage({3.5, 4});
    reading.angle = std::atan2(along.y, along.x) * 180 / CV_PI;
    reading.quarterTurns = (int(std::lround(reading.angle / 90)) + 4) % 4;
    addMarks(levels, found, imageFromCell, oriented->motion, reading);
    reading.squaresCompared = placed->frame.looked;
    reading.squaresDiffering = placed->frame.looked - placed->frame.passed;
    // Each look at the frame, and each mark in its place, comes out by chance half of the time at most.
    reading.log10Chance = -0.301 * double(placed->frame.passed + int(found.marks.size()));
    reading.confidence = 1 - std::pow(10.0, reading.log10Chance);
    return reading;
}

}  // namespace pattern_reader
