#include "pattern_reader/lattice_trust.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <type_traits>

namespace pattern_reader {

namespace {

constexpr float leastCertainty = 0.3F;

// True if a square is read as the position code requires: as marked, or as unmarked. Empty if the code has no bit for
// the square, if the reading is not certain, or if the square may be a cover.
std::optional<bool> agreement(const SquareReading &reading, const Place &place) {
    bool expected = false;
    if (reading.certainty < leastCertainty || reading.maybeCover ||
        !codeBit(place.tile, place.motion.square(reading.cell), expected)) {
        return std::nullopt;
    }
    return reading.marked == expected;
}

std::array<cv::Point, 4> cornersOf(cv::Point square) {
    return {square, square + cv::Point(1, 0), square + cv::Point(0, 1), square + cv::Point(1, 1)};
}

// Returns one value for each corner: true if the squares around the corner that agree with the code are more than twice
// as many as those that disagree.
std::vector<bool> agreeingCorners(const CornerLattice &lattice, const std::vector<SquareReading> &marks,
                                  const Place &place) {
    std::vector<int> votes(lattice.corners.size(), 0);
    for (const SquareReading &reading : marks) {
        const std::optional<bool> agrees = agreement(reading, place);
        for (const cv::Point corner : cornersOf(reading.cell)) {
            const int index = lattice.indexAt(corner);
            if (agrees && index >= 0) {
                votes[size_t(index)] += *agrees ? 1 : -2;
            }
        }
    }
    std::vector<bool> agreeing(votes.size());
    std::transform(votes.begin(), votes.end(), agreeing.begin(), [](int one) { return one > 0; });
    return agreeing;
}

// The terms of a polynomial that maps cells to the image. (x, y) is the offset of a cell from the corner that is
// examined.
cv::Vec3d termsAt(double x, double y, std::integral_constant<int, 3>) {
    return {1, x, y};
}

cv::Vec6d termsAt(double x, double y, std::integral_constant<int, 6>) {
    return {1, x, y, x * x, x * y, y * y};
}

// Returns the distance of a corner from its predicted position, in lattice steps. The prediction uses a map from cells
// to the image. The map is fitted to the other trusted corners within `reach` cells. It is affine if `count` is 3, and
// quadratic if `count` is 6. Empty if there are too few trusted corners, or if they are all on one side.
template <int count>
std::optional<float> distanceFromTrusted(const CornerLattice &lattice, const LatticeCorner &corner,
                                         const std::vector<bool> &trusted, int reach) {
    cv::Matx<double, count, count> matrix = cv::Matx<double, count, count>::zeros();
    cv::Matx<double, count, 2> right = cv::Matx<double, count, 2>::zeros();
    int seen = 0;
    for (int y = -reach; y <= reach; y++) {
        for (int x = -reach; x <= reach; x++) {
            const int k = x == 0 && y == 0 ? -1 : lattice.indexAt(corner.cell + cv::Point(x, y));
            if (k >= 0 && trusted[size_t(k)]) {
                const cv::Point2f p = lattice.corners[size_t(k)].position - corner.position;
                const auto terms = termsAt(x, y, std::integral_constant<int, count>());
                matrix += terms * terms.t();
                right += terms * cv::Vec2d(p.x, p.y).t();
                seen++;
            }
        }
    }
    bool solved = false;
    const cv::Matx<double, count, count> inverse = matrix.inv(cv::DECOMP_CHOLESKY, &solved);
    // The inverse's first entry is the ratio of the prediction's variance to the variance of a single corner's
    // position. It is large if all these trusted corners are on one side of the corner.
    if (seen < 2 * count || !solved || !(inverse(0, 0) < 4)) {
        return std::nullopt;
    }
    const cv::Matx<double, count, 2> map = inverse * right;
    const auto row = [&](int i) { return cv::Point2f(float(map(i, 0)), float(map(i, 1))); };
    return LatticeSteps{row(1), row(2)}.count(row(0));
}

// True if a corner is within a fifth of a lattice step of the position that the trusted corners predict. A corner of
// a mark can be mistaken for a corner of the lattice. This limit rejects such a corner, because it is a third of a step
// away from the predicted position along both axes.
bool isInLine(const CornerLattice &lattice, const LatticeCorner &corner, const std::vector<bool> &trusted) {
    constexpr float farthest = 0.2F;
    std::optional<float> distance;
    for (int reach = 2; reach <= 6 && !distance; reach += 2) {
        distance = distanceFromTrusted<3>(lattice, corner, trusted, reach);
    }
    if (distance && !(*distance <= farthest)) {
        // If a lens or the paper bends the lattice, the affine map is not accurate enough.
        distance = distanceFromTrusted<6>(lattice, corner, trusted, 3);
    }
    return distance && *distance <= farthest;
}

void trimToTrusted(CornerLattice &lattice, const std::vector<bool> &trusted) {
    std::vector<bool> keep;
    keep.reserve(lattice.corners.size());
    for (const LatticeCorner &corner : lattice.corners) {
        keep.push_back(isInLine(lattice, corner, trusted));
    }
    lattice.retain(keep);
}

// Numbers the connected pieces of a lattice. Returns, for each corner, the number of its piece, and sets `pieces` to
// the number of pieces.
std::vector<int> numberPieces(const CornerLattice &lattice, int &pieces) {
    std::vector<int> piece(lattice.corners.size(), -1);
    std::vector<size_t> open;
    pieces = 0;
    for (size_t first = 0; first < piece.size(); first++) {
        if (piece[first] >= 0) {
            continue;
        }
        piece[first] = pieces;
        open.push_back(first);
        while (!open.empty()) {
            const cv::Point cell = lattice.corners[open.back()].cell;
            open.pop_back();
            for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
                const int next = lattice.indexAt(cell + step);
                if (next >= 0 && piece[size_t(next)] < 0) {
                    piece[size_t(next)] = pieces;
                    open.push_back(size_t(next));
                }
            }
        }
        pieces++;
    }
    return piece;
}

void dropUnprovenPieces(CornerLattice &lattice, const std::vector<SquareReading> &marks, const Place &place) {
    int pieces = 0;
    const std::vector<int> piece = numberPieces(lattice, pieces);
    if (pieces < 2) {
        return;
    }
    // If a piece is at a wrong place in the lattice, its squares agree with the code only by chance. Then ten squares
    // all agree once in about a thousand cases. A square that disagrees cancels three that agree.
    constexpr int proof = 10;
    std::vector<int> score(size_t(pieces), 0);
    for (const SquareReading &reading : marks) {
        const std::optional<bool> agrees = agreement(reading, place);
        const std::array<cv::Point, 4> corners = cornersOf(reading.cell);
        const auto seen = std::find_if(corners.begin(), corners.end(),
                                       [&](cv::Point corner) { return lattice.indexAt(corner) >= 0; });
        if (agrees && seen != corners.end()) {
            score[size_t(piece[size_t(lattice.indexAt(*seen))])] += *agrees ? 1 : -3;
        }
    }
    std::vector<bool> keep;
    keep.reserve(piece.size());
    for (const int number : piece) {
        keep.push_back(score[size_t(number)] >= proof);
    }
    lattice.retain(keep);
}

}  // namespace

void keepTrustedCorners(CornerLattice &lattice, const std::vector<SquareReading> &marks, const Place &place) {
    trimToTrusted(lattice, agreeingCorners(lattice, marks, place));
    dropUnprovenPieces(lattice, marks, place);
}

}  // namespace pattern_reader
