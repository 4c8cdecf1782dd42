#include "pattern_reader/board_measurement.h"

#include <algorithm>
#include <array>
#include <optional>

#include "pattern_reader/lattice_measurement.h"

namespace pattern_reader {

namespace {

constexpr float largestDoubtful = 7;    // pixels; the blur may be misjudged if squares are smaller
constexpr size_t leastCorners = 25;     // with fewer corners, too few squares show whether the blur is right
constexpr int windowSide = 14;          // blurs are tried on a part of the lattice with at most 14 x 14 corners
constexpr float leastCertainty = 0.3F;  // a square's reading counts as certain if it has at least this certainty

MeasuredBoard measureWith(const std::vector<ImageLevel> &levels, CornerLattice &lattice, std::optional<float> blur) {
    MeasuredBoard board;
    board.fits = measureCorners(levels, lattice, blur);
    if (!board.fits.empty()) {
        board.marks = readMarks(levels.front().picture, lattice, board.fits);
    }
    return board;
}

float medianSpacing(const CornerLattice &lattice) {
    std::vector<float> spacings;
    for (size_t i = 0; i < lattice.corners.size(); i += lattice.corners.size() / 50 + 1) {
        spacings.push_back(lattice.spacingAt(lattice.corners[i].cell));
    }
    const auto middle = spacings.begin() + std::ptrdiff_t(spacings.size() / 2);
    std::nth_element(spacings.begin(), middle, spacings.end());
    return *middle;
}

// Returns the number of squares that are certainly marked or the number that are certainly unmarked, whichever is
// smaller.
int rarerKind(const std::vector<SquareReading> &marks) {
    int marked = 0;
    int unmarked = 0;
    for (const SquareReading &mark : marks) {
        if (mark.certainty >= leastCertainty) {
            (mark.marked ? marked : unmarked)++;
        }
    }
    return std::min(marked, unmarked);
}

// About half of the squares of a coded pattern are marked. If at least three in ten squares are certainly marked, and
// at least three in ten certainly unmarked, the blur is taken to be right.
bool isDivided(const std::vector<SquareReading> &marks) {
    return rarerKind(marks) * 10 >= int(marks.size()) * 3;
}

// Returns the corners in the middle part of a lattice.
CornerLattice middlePart(const CornerLattice &lattice) {
    const cv::Rect extent = lattice.extent();
    const cv::Point middle = (extent.tl() + extent.br()) / 2;
    const cv::Rect window(middle - cv::Point(windowSide / 2, windowSide / 2), cv::Size(windowSide, windowSide));
    CornerLattice part;
    part.originLight = lattice.originLight;
    for (const LatticeCorner &corner : lattice.corners) {
        if (window.contains(corner.cell)) {
            part.add(corner);
        }
    }
    return part;
}

// Tries several blurs on the middle part of the lattice, and returns the blur with the greatest rarerKind(). Empty
// if rarerKind() is less than `leastRarer` with every blur.
std::optional<float> dividingBlur(const std::vector<ImageLevel> &levels, const CornerLattice &lattice) {
    constexpr std::array<float, 6> blurs{0.45F, 0.55F, 0.7F, 0.85F, 1.05F, 1.3F};  // pixels
    constexpr int leastRarer = 4;
    const CornerLattice part = middlePart(lattice);
    std::optional<float> best;
    int most = leastRarer - 1;
    for (const float blur : blurs) {
        CornerLattice trial = part;
        const int rarer = rarerKind(measureWith(levels, trial, blur).marks);
        if (rarer > most) {
            most = rarer;
            best = blur;
        }
    }
    return best;
}

}  // namespace

MeasuredBoard measureBoard(const std::vector<ImageLevel> &levels, CornerLattice &lattice) {
    const bool doubtful = lattice.corners.size() >= leastCorners && medianSpacing(lattice) < largestDoubtful;
    const CornerLattice found = doubtful ? lattice : CornerLattice();
    MeasuredBoard board = measureWith(levels, lattice, std::nullopt);
    if (!doubtful || isDivided(board.marks)) {
        return board;
    }
    const std::optional<float> blur = dividingBlur(levels, found);
    if (!blur) {
        return board;
    }
    CornerLattice again = found;
    MeasuredBoard second = measureWith(levels, again, blur);
    if (rarerKind(second.marks) > rarerKind(board.marks)) {
        lattice = std::move(again);
        return second;
    }
    return board;
}

}  // namespace pattern_reader
