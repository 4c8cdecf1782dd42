#include "pattern_reader/lattice_pieces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <optional>

#include "pattern_reader/lattice_completion.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

namespace {

constexpr size_t piecesTried = 16;
constexpr size_t leastBase = 12;      // corners of the piece that is carried on
constexpr float latticeReach = 0.3F;  // how far from a lattice point a corner may be, lattice steps

cv::Point2d transform(const cv::Matx33d &h, cv::Point2f p) {
    const cv::Vec3d v = h * cv::Vec3d(p.x, p.y, 1);
    return {v[0] / v[2], v[1] / v[2]};
}

cv::Point2f middleOf(const CornerLattice &lattice) {
    cv::Point2f sum;
    for (const LatticeCorner &corner : lattice.corners) {
        sum += corner.position;
    }
    return sum / float(lattice.corners.size());
}

// From the image to the base's cells, by its corners closest to where the other piece is.
bool cellsAround(const CornerLattice &base, cv::Point2f where, cv::Matx33d &cellFromImage) {
    std::vector<const LatticeCorner *> closest;
    for (const LatticeCorner &corner : base.corners) {
        closest.push_back(&corner);
    }
    constexpr size_t wanted = 80;
    if (closest.size() > wanted) {
        std::nth_element(closest.begin(), closest.begin() + wanted, closest.end(),
                         [&](const LatticeCorner *a, const LatticeCorner *b) {
                             const cv::Point2f da = a->position - where;
                             const cv::Point2f db = b->position - where;
                             return da.dot(da) < db.dot(db);
                         });
        closest.resize(wanted);
    }
    std::vector<cv::Point2f> images;
    std::vector<cv::Point2f> cells;
    for (const LatticeCorner *corner : closest) {
        images.push_back(corner->position);
        cells.emplace_back(corner->cell);
    }
    const cv::Mat h = cv::findHomography(images, cells);
    if (h.empty()) {
        return false;
    }
    cellFromImage = h;
    return true;
}

// How the piece's cells become the base's, if the piece continues the base.
std::optional<LatticeMotion> continuation(const CornerLattice &base, const CornerLattice &piece) {
    cv::Matx33d cellFromImage;
    if (!cellsAround(base, middleOf(piece), cellFromImage)) {
        return std::nullopt;
    }
    std::array<int, 4> votes{};
    for (const LatticeCorner &corner : piece.corners) {
        const LatticeCorner *next = piece.at(corner.cell + cv::Point(1, 0));
        if (next != nullptr) {
            const cv::Point2d d = transform(cellFromImage, next->position) - transform(cellFromImage, corner.position);
            const int turns = int(std::lround(std::atan2(d.y, d.x) / (CV_PI / 2)));
            votes[size_t(turns + 4) % 4]++;
        }
    }
    LatticeMotion motion;
    motion.quarterTurns = int(std::max_element(votes.begin(), votes.end()) - votes.begin());
    cv::Point2d sum;
    for (const LatticeCorner &corner : piece.corners) {
        sum += transform(cellFromImage, corner.position) - cv::Point2d(motion.point(corner.cell));
    }
    sum /= double(piece.corners.size());
    if (!(std::abs(sum.x) < 1000) || !(std::abs(sum.y) < 1000)) {
        return std::nullopt;
    }
    motion.shift = {int(std::lround(sum.x)), int(std::lround(sum.y))};
    size_t off = 0;
    for (const LatticeCorner &corner : piece.corners) {
        // A corner that the base has as well is no reason against: both were found at the same place.
        const cv::Point2d d = transform(cellFromImage, corner.position) - cv::Point2d(motion.point(corner.cell));
        off += std::max(std::abs(d.x), std::abs(d.y)) > latticeReach ? 1U : 0U;
    }
    const cv::Point any = piece.corners.front().cell;
    if (off * 8 > piece.corners.size() || base.isLight(motion.square(any)) != piece.isLight(any)) {
        return std::nullopt;
    }
    return motion;
}

bool joinPiece(CornerLattice &base, const CornerLattice &piece) {
    const std::optional<LatticeMotion> motion = continuation(base, piece);
    if (!motion) {
        return false;
    }
    for (LatticeCorner corner : piece.corners) {
        corner.cell = motion->point(corner.cell);
        base.add(corner);
    }
    return true;
}

}  // namespace

void joinPieces(std::vector<CornerLattice> &lattices, const std::vector<ImageLevel> &levels) {
    for (size_t i = 0; i < lattices.size() && i < piecesTried; i++) {
        if (lattices[i].corners.size() < leastBase) {
            break;
        }
        bool joined = false;
        for (size_t k = i + 1; k < lattices.size() && k < piecesTried;) {
            if (joinPiece(lattices[i], lattices[k])) {
                lattices.erase(lattices.begin() + std::ptrdiff_t(k));
                joined = true;
            } else {
                k++;
            }
        }
        if (joined) {
            completeLattice(lattices[i], levels);
        }
    }
}

}  // namespace pattern_reader
