#include "pattern_reader/plate_reader.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "camera_library/pattern_code/bit_count.h"
#include "pattern_reader/block_reader.h"
#include "pattern_reader/mark_map.h"
#include "pattern_reader/mark_measurement.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/plate_dots.h"
#include "pattern_reader/plate_frame.h"
#include "pattern_reader/plate_marks.h"
#include "pattern_reader/plate_view.h"

namespace pattern_reader {

namespace {

constexpr size_t leastMarks = 9;
// With fewer BlockAgreement::checks, the visible part of a block does not confirm the orientation.
constexpr int leastChecks = 10;
constexpr int leastDots = 6;          // dots that must be seen before the plate counts as having dots
constexpr double leastSpacing = 9.5;  // pixels; with a smaller grid spacing, the frame's corners cannot be told apart

struct Assumption {
    LatticeMotion motion;
    FrameEvidence frame;
};

// Finds the shift of the lattice for which the picture shows a frame where the plate's frame would be. The orientation
// is not determined here.
std::optional<Assumption> findShift(const PlatePicture &picture) {
    const cv::Rect extent = picture.marks.lattice.extent();
    std::optional<Assumption> best;
    FrameEvidence second;
    for (int y = 0; y + extent.height <= marksPerSide; y++) {
        for (int x = 0; x + extent.width <= marksPerSide; x++) {
            Assumption assumption;
            assumption.motion.shift = cv::Point(x, y) - extent.tl();
            assumption.frame = lookForFrame(PlateView(picture, assumption.motion));
            if (!best || assumption.frame.passed > best->frame.passed) {
                second = best ? best->frame : second;
                best = assumption;
            } else if (assumption.frame.passed > second.passed) {
                second = assumption.frame;
            }
        }
    }
    // If one side of the plate is covered, the correct shift may lead the second best by only a few samples. The second
    // best moves the plate away from the covered side. The two sides next to the covered side then still lie on lines
    // of the frame, and fewer of their samples are covered. But the side opposite the covered one does not lie on the
    // frame. So if the best shift has more good sides than the second best, a smaller margin (in samples) is enough.
    const int margin = best && best->frame.goodSides > second.goodSides ? 4 : 8;
    if (!best || best->frame.goodSides < 2 || best->frame.passed < second.passed + margin ||
        best->frame.passed * 10 < best->frame.looked * 5) {
        return std::nullopt;
    }
    return best;
}

// Turns the plate clockwise, so that corner 0 moves to the place of corner number `turns`.
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

// The corners of the unturned plate that can be its top-left corner.
struct TopLefts {
    std::vector<int> corners;
    // True if `corners` holds the only corner that shows a triangle; false if it holds hidden corners or is empty.
    bool showsTriangle = false;
};

// Returns the corner that shows the triangle. If no corner shows a triangle, returns all hidden corners; if several
// corners show one, returns none.
TopLefts possibleTopLefts(const PlateView &unturned) {
    std::vector<int> triangles;
    std::vector<int> hidden;
    for (int corner = 0; corner < 4; corner++) {
        const CornerLook look = lookAtCorner(unturned, corner);
        if (look == CornerLook::Triangle) {
            triangles.push_back(corner);
        } else if (look == CornerLook::Hidden) {
            hidden.push_back(corner);
        }
    }
    if (triangles.size() > 1) {
        return {};
    }
    return triangles.empty() ? TopLefts{hidden, false} : TopLefts{triangles, true};
}

struct Orientation {
    LatticeMotion motion;
    SeenBlock block;
    bool readable = false;  // the dots were decoded as a block
    bool possible = false;  // the visible bits agree with a valid block, and they are enough to confirm the orientation
    BlockAgreement agreement;

    [[nodiscard]] bool showsDots() const { return pattern_code::onesIn(block.bits & ~block.unknown) >= leastDots; }

    // True if the dots rule this orientation out: they agree with no valid block, or they agree better with a valid
    // block if the plate is assumed to be mirrored.
    [[nodiscard]] bool isRefuted() const {
        return !readable && (agreement.wrongBits == BlockAgreement::tooMany ||
                             comparePlateBlock(mirrorPlateBlock(block)).wrongBits < agreement.wrongBits);
    }
};

// Turns the plate so that the given corner is the top-left one, and reads its dots.
Orientation turnToTopLeft(const PlatePicture &picture, const LatticeMotion &placed, int corner) {
    Orientation turned;
    // After 4 - k quarter turns, corner k is at the top left.
    turned.motion = turnPlate(placed, (4 - corner) % 4);
    turned.block = readDots(PlateView(picture, turned.motion));
    PatternReading trial;
    readBlock(turned.block, pattern_code::BlockCarrier::plate(), trial);
    turned.readable = trial.values.has_value();
    turned.agreement = comparePlateBlock(turned.block);
    turned.possible = turned.agreement.wrongBits == 0 && turned.agreement.checks >= leastChecks;
    return turned;
}

// Determines which corner of the plate is the top-left one: by the triangle, by the dots, or by both.
std::optional<Orientation> findOrientation(const PlatePicture &picture, const LatticeMotion &placed) {
    const PlateView unturned(picture, placed);
    const TopLefts topLefts = possibleTopLefts(unturned);
    std::optional<Orientation> best;
    int readable = 0;
    int possible = 0;
    for (const int corner : topLefts.corners) {
        const Orientation turned = turnToTopLeft(picture, placed, corner);
        if (turned.readable || (readable == 0 && (turned.possible || !best))) {
            best = turned;
        }
        readable += turned.readable ? 1 : 0;
        possible += turned.possible ? 1 : 0;
    }
    // The orientation comes from the block, from the part of it that is seen, or from the triangle alone. In the last
    // two cases the picture must be large enough to tell the frame's corners apart. If one corner is hidden and the
    // others are plain, the hidden corner is taken to have the triangle. Dots must then prove that this is one of our
    // plates, because other framed grids have neither a triangle nor dots.
    const bool large = unturned.sharpSpacingAt({4, 4}) >= leastSpacing;
    const bool showsTriangle = topLefts.corners.size() == 1 && (topLefts.showsTriangle || best->showsDots());
    if (readable > 1 || (readable == 0 && !(large && (showsTriangle || possible == 1)))) {
        return std::nullopt;
    }
    // Frame and triangle look the same in a mirror, so only the dots show that a plate is mirrored.
    return best->isRefuted() ? std::nullopt : best;
}

// Returns log10 of the probability that the reading of a plate is wrong.
double chanceOf(const Orientation &oriented, int framePassed, size_t marks) {
    // Each sample of the frame, and each mark in its place, is right by chance with a probability of at most 1/2. The
    // log10 of 1/2 is -0.301.
    const double place = -0.301 * double(framePassed + int(marks));
    if (oriented.readable) {
        return place;
    }
    // Without dots, the plate may be mirrored; only the rarity of mirrored pictures makes that unlikely.
    constexpr double mirrored = -1;
    return std::max(place, oriented.possible ? -0.301 * oriented.agreement.checks : mirrored);
}

// Writes the marks into the reading, sorted by lattice row and column.
void addMarks(const std::vector<MeasuredMark> &marks, const LatticeMotion &motion, PatternReading &reading) {
    for (const MeasuredMark &mark : marks) {
        const cv::Point index = motion.point(mark.cell);
        reading.corners.push_back(
            {cv::Point2f(mark.centre), 2 * (index + cv::Point(1, 1)), float(mark.sigma), mark.disturbed});
    }
    std::sort(reading.corners.begin(), reading.corners.end(), [](const PatternCorner &a, const PatternCorner &b) {
        return a.lattice.y != b.lattice.y ? a.lattice.y < b.lattice.y : a.lattice.x < b.lattice.x;
    });
}

}  // namespace

std::optional<PatternReading> readPlate(const std::vector<ImageLevel> &levels, const MarkLattice &start) {
    MarkLattice found = start;
    MarkMap imageFromCell;
    if (!completeMarks(levels, found, imageFromCell)) {
        return std::nullopt;
    }
    const PlatePicture picture(levels, found, imageFromCell);
    const std::optional<Assumption> placed = findShift(picture);
    if (!placed || isPartOfLargerGrid(PlateView(picture, placed->motion))) {
        return std::nullopt;
    }
    const auto oriented = findOrientation(picture, placed->motion);
    if (!oriented) {
        return std::nullopt;
    }
    PatternReading reading;
    reading.kind = PatternKind::Plate;
    readBlock(oriented->block, pattern_code::BlockCarrier::plate(), reading);
    addMarks(measureMarks(levels, found, markRadius), oriented->motion, reading);
    if (reading.corners.size() < leastMarks) {
        return std::nullopt;
    }
    const PlateView view(picture, oriented->motion);
    const cv::Point2d along = view.toImage({4.5, 4}) - view.toImage({3.5, 4});
    reading.angle = std::atan2(along.y, along.x) * 180 / CV_PI;
    reading.quarterTurns = (int(std::lround(reading.angle / 90)) + 4) % 4;
    reading.squaresCompared = placed->frame.looked;
    reading.squaresDiffering = placed->frame.looked - placed->frame.passed;
    reading.log10Chance = chanceOf(*oriented, placed->frame.passed, found.marks.size());
    reading.confidence = 1 - std::pow(10.0, reading.log10Chance);
    return reading;
}

}  // namespace pattern_reader
