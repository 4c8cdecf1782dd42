#include "pattern_reader/plate_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "pattern_reader/block_reader.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

namespace {

// Plate coordinates: grid spacings from the top-left corner of the frame's outer edge; marks at 1 to 7.
constexpr int marksPerSide = 7;
constexpr double frameMiddle = 0.125;
constexpr double markRadius = 0.25;
constexpr int leastChecks = 10;       // of the dots seen, for them to say which way is up
constexpr double leastSpacing = 9.5;  // pixels, for the frame's corners to be told apart without a block

// A plate's picture under one assumption of where in the plate the lattice lies.
class PlateView {
public:
    PlateView(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
              const LatticeMotion &motion);

    cv::Point2d toImage(cv::Point2d plate) const;
    // Grey level relative to the marks around: 0 as dark as a mark, 1 as light as the paper; false outside the picture.
    bool lightAt(cv::Point2d plate, double &light) const;
    // The same from a sharper picture, for the fine lines of the dots, at a shift in the image.
    bool sharpLightAt(cv::Point2d plate, cv::Point2d shift, double &light) const;
    // Pixels of the sharper picture per grid spacing at a point, the geometric mean of both directions.
    double sharpSpacingAt(cv::Point2d plate) const;
    double sharpScale() const { return sharpLevel_->scale(); }
    cv::Point2d toCell(cv::Point2d plate) const;

private:
    // The grey level as a share of the contrast at a place in the image.
    bool relativeToMarks(cv::Point2d image, double grey, double &light) const;

    cv::Matx33d imageFromCell_;
    LatticeMotion motion_;
    const ImageLevel *level_ = nullptr;
    const ImageLevel *sharpLevel_ = nullptr;
    // Dark level and paper level as planes over the image: level = a + b x + c y.
    cv::Vec3d dark_;
    cv::Vec3d paper_;
};

cv::Point2d transform(const cv::Matx33d &h, cv::Point2d p) {
    const cv::Vec3d v = h * cv::Vec3d(p.x, p.y, 1);
    return {v[0] / v[2], v[1] / v[2]};
}

// The finest level in which a radius has at most so many pixels.
const ImageLevel &levelForRadius(const std::vector<ImageLevel> &levels, float radius, float most) {
    size_t number = 0;
    while (number + 1 < levels.size() && radius / levels[number].scale() > most) {
        number++;
    }
    return levels[number];
}

cv::Vec3d fitPlane(const std::vector<RoundMark> &marks, float RoundMark::*value) {
    cv::Matx33d m = cv::Matx33d::zeros();
    cv::Vec3d right(0, 0, 0);
    for (const RoundMark &mark : marks) {
        const cv::Vec3d row(1, mark.centre.x, mark.centre.y);
        m += row * row.t();
        right += row * double(mark.*value);
    }
    cv::Vec3d plane;
    cv::solve(m, right, plane, cv::DECOMP_SVD);
    return plane;
}

PlateView::PlateView(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
                     const LatticeMotion &motion)
    : imageFromCell_(imageFromCell), motion_(motion) {
    std::vector<float> areas;
    for (const RoundMark &mark : found.marks) {
        areas.push_back(mark.area);
    }
    std::nth_element(areas.begin(), areas.begin() + std::ptrdiff_t(areas.size() / 2), areas.end());
    const double spacing = std::sqrt(areas[areas.size() / 2] / CV_PI) / markRadius;
    size_t number = 0;
    while (number + 1 < levels.size() && spacing / levels[number].scale() > 26) {
        number++;
    }
    level_ = &levels[number];
    sharpLevel_ = &levels[number > 0 ? number - 1 : 0];
    dark_ = fitPlane(found.marks, &RoundMark::darkLevel);
    paper_ = fitPlane(found.marks, &RoundMark::lightLevel);
}

cv::Point2d PlateView::toCell(cv::Point2d plate) const {
    cv::Point2d p = plate - cv::Point2d(1, 1) - cv::Point2d(motion_.shift);
    for (int i = 0; i < motion_.quarterTurns; i++) {
        p = {p.y, -p.x};
    }
    return p;
}

cv::Point2d PlateView::toImage(cv::Point2d plate) const {
    return transform(imageFromCell_, toCell(plate));
}

double PlateView::sharpSpacingAt(cv::Point2d plate) const {
    const cv::Point2d a = toImage(plate + cv::Point2d(0.1, 0)) - toImage(plate);
    const cv::Point2d b = toImage(plate + cv::Point2d(0, 0.1)) - toImage(plate);
    return std::sqrt(std::abs(a.cross(b))) * 10 / sharpLevel_->scale();
}

// The value between the four pixels around a point; false outside the picture.
template <typename Pixel>
bool between(const cv::Mat &picture, cv::Point2f p, double &value) {
    if (!(p.x >= 0) || !(p.y >= 0) || p.x >= float(picture.cols - 1) || p.y >= float(picture.rows - 1)) {
        return false;
    }
    const int x = int(p.x);
    const int y = int(p.y);
    const double fx = p.x - float(x);
    const double fy = p.y - float(y);
    const auto *a = picture.ptr<Pixel>(y) + x;
    const auto *b = picture.ptr<Pixel>(y + 1) + x;
    value = (a[0] * (1 - fx) + a[1] * fx) * (1 - fy) + (b[0] * (1 - fx) + b[1] * fx) * fy;
    return true;
}

bool PlateView::relativeToMarks(cv::Point2d image, double grey, double &light) const {
    const cv::Vec3d at(1, image.x, image.y);
    const double dark = dark_.dot(at);
    const double contrast = paper_.dot(at) - dark;
    light = contrast > 5 ? (grey - dark) / contrast : 0.5;
    return contrast > 5;
}

bool PlateView::lightAt(cv::Point2d plate, double &light) const {
    const cv::Point2d image = toImage(plate);
    double value = 0;
    return between<int16_t>(level_->smoothed, level_->fromImage(cv::Point2f(image)), value) &&
           relativeToMarks(image, value / 64, light);
}

bool PlateView::sharpLightAt(cv::Point2d plate, cv::Point2d shift, double &light) const {
    const cv::Point2d image = toImage(plate) + shift;
    double value = 0;
    return between<uchar>(sharpLevel_->picture, sharpLevel_->fromImage(cv::Point2f(image)), value) &&
           relativeToMarks(image, value, light);
}

// Side 0 is the top, then clockwise; along runs from 0 to 8, inward from the outer edge.
cv::Point2d onSide(int side, double along, double inward) {
    switch (side) {
        case 0:
            return {along, inward};
        case 1:
            return {8 - inward, along};
        case 2:
            return {8 - along, 8 - inward};
        default:
            return {inward, 8 - along};
    }
}

struct FrameEvidence {
    int passed = 0;
    int looked = 0;
    int goodSides = 0;
};

FrameEvidence lookForFrame(const PlateView &view) {
    FrameEvidence evidence;
    for (int side = 0; side < 4; side++) {
        int passed = 0;
        int looked = 0;
        for (int i = 0; i < 12; i++) {
            // Clear of the marks, whose rows would pass for a frame, and of the code dots, which stand at the halves.
            const int gap = i / 2;
            const double along = 1.35 + gap + (i % 2) * 0.3;
            double outside = 1;
            double frame = 0;
            double inside = 0;
            if (!view.lightAt(onSide(side, along, frameMiddle), frame) ||
                !view.lightAt(onSide(side, along, 0.37), inside)) {
                continue;
            }
            view.lightAt(onSide(side, along, -0.2), outside);
            looked++;
            passed += std::min(outside, inside) - frame > 0.25 && inside > 0.5 ? 1 : 0;
        }
        evidence.passed += passed;
        evidence.looked += looked;
        evidence.goodSides += looked >= 4 && passed * 10 >= looked * 6 ? 1 : 0;
    }
    return evidence;
}

enum class CornerLook { Hidden, Plain, Triangle };

// Corner 0 is the top-left one, then clockwise.
CornerLook lookAtCorner(const PlateView &view, int corner) {
    const auto at = [&](double x, double y) {
        double light = 0.5;
        // Along the side that starts in this corner and inward from it.
        return view.lightAt(onSide(corner, x, y), light) ? light : 0.5;
    };
    const bool light = at(1.1, 0.42) > 0.6 && at(0.42, 1.1) > 0.6 && at(-0.25, 0.5) > 0.6 && at(0.5, -0.25) > 0.6;
    const bool dark = at(frameMiddle, 0.6) < 0.5 && at(0.6, frameMiddle) < 0.5 && at(frameMiddle, frameMiddle) < 0.5;
    if (!light || !dark) {
        return CornerLook::Hidden;
    }
    const double inside = at(0.37, 0.37);
    return inside < 0.35 ? CornerLook::Triangle : inside > 0.65 ? CornerLook::Plain : CornerLook::Hidden;
}

// What is known of a dot's surroundings by the marks next to it.
struct DotSurroundings {
    // At least half of these marks were found; a blank cover looks like a place without a dot.
    bool inSight = false;
    // How far from where the plate's map has them, in the image: lens distortion, which a map of planes knows nothing
    // of.
    cv::Point2d shift;
};

DotSurroundings lookAround(const MarkLattice &found, const PlateView &view, cv::Point2d dot) {
    // The two columns and rows of marks on either side; those next to the dot say whether it is in sight.
    const cv::Point first(int(std::lround(dot.x - 1.5)), int(std::lround(dot.y - 1.5)));
    cv::Matx33d matrix = cv::Matx33d::zeros();
    cv::Matx<double, 3, 2> right;
    int next = 0;
    int seen = 0;
    for (int y = std::max(1, first.y); y <= std::min(marksPerSide, first.y + 3); y++) {
        for (int x = std::max(1, first.x); x <= std::min(marksPerSide, first.x + 3); x++) {
            const cv::Point2d mark(x, y);
            const bool isNext = std::abs(x - dot.x) < 1 && std::abs(y - dot.y) < 1;
            const cv::Point2d cell = view.toCell(mark);
            const int index = found.lattice.indexAt({int(std::lround(cell.x)), int(std::lround(cell.y))});
            next += isNext ? 1 : 0;
            if (index >= 0) {
                seen += isNext ? 1 : 0;
                const cv::Point2d shift = cv::Point2d(found.marks[size_t(index)].centre) - view.toImage(mark);
                const cv::Vec3d row(1, x - dot.x, y - dot.y);
                matrix += row * row.t();
                right += row * cv::Vec2d(shift.x, shift.y).t();
            }
        }
    }
    DotSurroundings around;
    around.inSight = 2 * seen >= next;
    // A plane through the marks' shifts; their mean where they do not span one.
    if (std::abs(cv::determinant(matrix)) > 0.5) {
        const cv::Matx<double, 3, 2> plane = matrix.inv() * right;
        around.shift = {plane(0, 0), plane(0, 1)};
    } else if (matrix(0, 0) > 0) {
        around.shift = cv::Point2d(right(0, 0), right(0, 1)) / matrix(0, 0);
    }
    return around;
}

// Whether a place is far enough from the frame and the marks to show nothing of them in a blurred picture.
bool isClearOfPrint(cv::Point2d at) {
    constexpr double gap = 0.12;
    const double side = marksPerSide + 1;
    const double fromFrame = std::min({at.x, at.y, side - at.x, side - at.y}) - 2 * frameMiddle;
    const cv::Point2d mark(std::clamp(std::round(at.x), 1.0, double(marksPerSide)),
                           std::clamp(std::round(at.y), 1.0, double(marksPerSide)));
    return fromFrame > gap && std::hypot(at.x - mark.x, at.y - mark.y) - markRadius > gap;
}

// Light on a circle: the mean and the darkest.
struct CircleLight {
    double mean = 0;
    double darkest = 2;
};

// The light on a circle around a dot, where it is not the frame or a mark that darkens it; nothing when a part of it
// is outside the picture.
std::optional<CircleLight> circleLight(const PlateView &view, cv::Point2d at, cv::Point2d shift, double radius) {
    constexpr int points = 12;
    CircleLight circle;
    int used = 0;
    for (int i = 0; i < points; i++) {
        const double angle = 2 * CV_PI * i / points;
        const cv::Point2d here = at + cv::Point2d(std::cos(angle), std::sin(angle)) * radius;
        double one = 0;
        if (!view.sharpLightAt(here, shift, one)) {
            return std::nullopt;
        }
        if (isClearOfPrint(here)) {
            circle.mean += one;
            circle.darkest = std::min(circle.darkest, one);
            used++;
        }
    }
    if (used == 0) {
        return std::nullopt;
    }
    circle.mean /= used;
    return circle;
}

// How much of a dot is seen at a place: 0 paper, 1 as dark as a dot can look there; nothing where that cannot be said.
std::optional<double> dotShare(const PlateView &view, cv::Point2d at, cv::Point2d shift) {
    // A dot is a circle's line, so it is looked for along the line; where that is blurred, so is what is inside it.
    constexpr double lineRadius = (pattern_code::dotRadius + pattern_code::dotHoleRadius) / 2;
    const std::optional<CircleLight> around = circleLight(view, at, shift, 0.23);
    const std::optional<CircleLight> line = circleLight(view, at, shift, lineRadius);
    if (!around || !line || around->darkest < 0.5 || around->mean > 1.3) {
        return std::nullopt;
    }
    const double width = (pattern_code::dotRadius - pattern_code::dotHoleRadius) * view.sharpSpacingAt(at);
    const double blur2 = 0.25 + 0.6 / (view.sharpScale() * view.sharpScale());
    return (around->mean - line->mean) / std::erf(width / std::sqrt(8 * blur2));
}

SeenBlock readDots(const MarkLattice &found, const PlateView &view) {
    std::array<double, pattern_code::blockBitCount> shares{};
    std::vector<double> known;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const pattern_code::DotPosition position = pattern_code::dotPosition(bit);
        const cv::Point2d dot(position.x, position.y);
        const DotSurroundings around = lookAround(found, view, dot);
        const std::optional<double> share = around.inSight ? dotShare(view, dot, around.shift) : std::nullopt;
        shares[size_t(bit)] = share.value_or(-10);
        if (share) {
            known.push_back(*share);
        }
    }
    SeenBlock seen;
    if (known.size() < 16) {
        return seen;
    }
    // What a dot looks like here: about half of all bits are set.
    const auto high = known.begin() + std::ptrdiff_t(known.size() * 3 / 4);
    std::nth_element(known.begin(), high, known.end());
    const double full = *high;
    if (full < 0.3) {
        return seen;
    }
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const double share = shares[size_t(bit)] / full;
        if (share > -0.6 && std::abs(share - 0.5) > 0.15) {
            seen.see(bit, share > 0.5);
        }
    }
    return seen;
}

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

bool mapCells(const MarkLattice &found, cv::Matx33d &imageFromCell) {
    std::vector<cv::Point2f> cells;
    std::vector<cv::Point2f> images;
    for (const LatticeCorner &corner : found.lattice.corners) {
        cells.emplace_back(corner.cell);
        images.push_back(corner.position);
    }
    const cv::Mat h = cv::findHomography(cells, images);
    if (h.empty()) {
        return false;
    }
    imageFromCell = h;
    return true;
}

// Looks for marks wherever the plate can still reach, also behind something that covers a part of it.
bool addMissingMarks(const std::vector<ImageLevel> &levels, const cv::Matx33d &imageFromCell, MarkLattice &found) {
    const cv::Rect extent = found.lattice.extent();
    bool added = false;
    for (int y = extent.br().y - marksPerSide; y < extent.y + marksPerSide; y++) {
        for (int x = extent.br().x - marksPerSide; x < extent.x + marksPerSide; x++) {
            if (found.lattice.indexAt({x, y}) >= 0) {
                continue;
            }
            const cv::Point2d at = transform(imageFromCell, cv::Point2d(x, y));
            const cv::Point2d a = transform(imageFromCell, cv::Point2d(x + 0.5, y)) - at;
            const cv::Point2d b = transform(imageFromCell, cv::Point2d(x, y + 0.5)) - at;
            const double area = CV_PI * markRadius * markRadius * std::abs(a.cross(b)) * 4;
            const auto radius = float(std::sqrt(area / CV_PI));
            const double step = 2 * std::min(std::hypot(a.x, a.y), std::hypot(b.x, b.y));
            if (!(radius > 1) || !(radius < 200)) {
                continue;
            }
            RoundMark mark;
            const ImageLevel &level = levelForRadius(levels, radius, 5);
            if (measureMark(level, cv::Point2f(at), radius, mark) && mark.area < 1.5 * area && area < 1.5 * mark.area &&
                std::hypot(mark.centre.x - at.x, mark.centre.y - at.y) < 0.15 * step &&
                found.lattice.add({{x, y}, mark.centre, 1})) {
                found.marks.push_back(mark);
                added = true;
            }
        }
    }
    return added;
}

// Leaves out what lies outside the 7 × 7 cells with the most marks: something else that looks like a mark there. False
// when that is more than a few.
bool keepOnePlate(MarkLattice &found) {
    const cv::Rect extent = found.lattice.extent();
    if (extent.width <= marksPerSide && extent.height <= marksPerSide) {
        return true;
    }
    std::vector<bool> keep;
    std::ptrdiff_t most = 0;
    for (int y = extent.y; y <= std::max(extent.y, extent.br().y - marksPerSide); y++) {
        for (int x = extent.x; x <= std::max(extent.x, extent.br().x - marksPerSide); x++) {
            const cv::Rect plate(x, y, marksPerSide, marksPerSide);
            std::vector<bool> inside;
            for (const LatticeCorner &corner : found.lattice.corners) {
                inside.push_back(plate.contains(corner.cell));
            }
            const std::ptrdiff_t count = std::count(inside.begin(), inside.end(), true);
            if (count > most) {
                most = count;
                keep = std::move(inside);
            }
        }
    }
    if (size_t(most) * 8 < found.marks.size() * 7) {
        return false;
    }
    std::vector<RoundMark> kept;
    for (size_t i = 0; i < keep.size(); i++) {
        if (keep[i]) {
            kept.push_back(found.marks[i]);
        }
    }
    found.marks = std::move(kept);
    found.lattice.retain(keep);
    return true;
}

// Where the picture of a circle's centre lies from the centre of the circle's picture.
cv::Point2d centreOffset(const cv::Matx33d &h, cv::Point2d centre) {
    const double r = markRadius;
    const cv::Matx33d circle(1, 0, -centre.x, 0, 1, -centre.y, -centre.x, -centre.y,
                             centre.x * centre.x + centre.y * centre.y - r * r);
    const cv::Matx33d inverse = h.inv();
    const cv::Matx33d q = inverse.t() * circle * inverse;
    const double determinant = q(0, 0) * q(1, 1) - q(0, 1) * q(1, 0);
    const cv::Point2d ellipse((q(0, 1) * q(1, 2) - q(1, 1) * q(0, 2)) / determinant,
                              (q(1, 0) * q(0, 2) - q(0, 0) * q(1, 2)) / determinant);
    return transform(h, centre) - ellipse;
}

void addMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
              const LatticeMotion &motion, PatternReading &reading) {
    for (size_t i = 0; i < found.marks.size(); i++) {
        RoundMark mark = found.marks[i];
        const float radius = std::sqrt(mark.area / float(CV_PI));
        measureMark(levelForRadius(levels, radius, 7), mark.centre, radius, mark);
        const cv::Point cell = found.lattice.corners[i].cell;
        const cv::Point index = motion.point(cell);
        const cv::Point2d offset = centreOffset(imageFromCell, cell);
        reading.corners.push_back({mark.centre + cv::Point2f(offset), 2 * (index + cv::Point(1, 1))});
    }
    std::sort(reading.corners.begin(), reading.corners.end(), [](const PatternCorner &a, const PatternCorner &b) {
        return a.lattice.y != b.lattice.y ? a.lattice.y < b.lattice.y : a.lattice.x < b.lattice.x;
    });
}

}  // namespace

std::optional<PatternReading> readPlate(const std::vector<ImageLevel> &levels, const MarkLattice &start) {
    MarkLattice found = start;
    cv::Matx33d imageFromCell;
    // From the nearer marks to the farther ones: each round carries the lattice on by what the last has found.
    for (int round = 0; round < 3; round++) {
        if (!keepOnePlate(found) || !mapCells(found, imageFromCell)) {
            return std::nullopt;
        }
        if (!addMissingMarks(levels, imageFromCell, found)) {
            break;
        }
    }
    if (!keepOnePlate(found)) {
        return std::nullopt;
    }
    const cv::Rect extent = found.lattice.extent();
    if (extent.width < 4 || extent.height < 4 || !mapCells(found, imageFromCell)) {
        return std::nullopt;
    }
    const std::optional<Assumption> placed = findShift(levels, found, imageFromCell);
    if (!placed) {
        return std::nullopt;
    }
    // Which corner, in the unturned plate, can be the one with the triangle?
    const PlateView unturned(levels, found, imageFromCell, placed->motion);
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
        const LatticeMotion turned = turnPlate(placed->motion, (4 - corner) % 4);
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
    PatternReading reading;
    reading.kind = PatternKind::Plate;
    readBlock(block, pattern_code::BlockCarrier::plate(), reading);
    const PlateView view(levels, found, imageFromCell, *motion);
    const cv::Point2d along = view.toImage({4.5, 4}) - view.toImage({3.5, 4});
    reading.angle = std::atan2(along.y, along.x) * 180 / CV_PI;
    reading.quarterTurns = (int(std::lround(reading.angle / 90)) + 4) % 4;
    addMarks(levels, found, imageFromCell, *motion, reading);
    reading.squaresCompared = placed->frame.looked;
    reading.squaresDiffering = placed->frame.looked - placed->frame.passed;
    // Each look at the frame, and each mark in its place, comes out by chance half of the time at most.
    reading.log10Chance = -0.301 * double(placed->frame.passed + int(found.marks.size()));
    reading.confidence = 1 - std::pow(10.0, reading.log10Chance);
    return reading;
}

}  // namespace pattern_reader
