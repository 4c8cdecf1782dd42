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

constexpr size_t piecesTried = 16;       // only this many of the largest lattices are tried
constexpr size_t leastBase = 12;         // fewest corners of a lattice that is extrapolated
constexpr size_t cornersCarriedOn = 80;  // a lattice is extrapolated from at most this many of its corners
constexpr float latticeReach = 0.4F;     // greatest distance of a corner from its lattice point, lattice steps

cv::Point2d transform(const cv::Matx33d &h, cv::Point2f p) {
    const cv::Vec3d v = h * cv::Vec3d(p.x, p.y, 1);
    return {v[0] / v[2], v[1] / v[2]};
}

cv::Point2f middleOf(const std::vector<LatticeCorner> &corners) {
    cv::Point2f sum;
    for (const LatticeCorner &corner : corners) {
        sum += corner.position;
    }
    return sum / float(corners.size());
}

// Returns the corners of a lattice that are closest to a place, in no particular order. Their number is `wanted`. If
// the lattice has fewer corners, all are returned.
std::vector<LatticeCorner> closestTo(cv::Point2f where, const CornerLattice &lattice, size_t wanted) {
    std::vector<LatticeCorner> closest = lattice.corners;
    if (closest.size() > wanted) {
        std::nth_element(closest.begin(), closest.begin() + std::ptrdiff_t(wanted), closest.end(),
                         [&](const LatticeCorner &a, const LatticeCorner &b) {
                             const cv::Point2f da = a.position - where;
                             const cv::Point2f db = b.position - where;
                             return da.dot(da) < db.dot(db);
                         });
        closest.resize(wanted);
    }
    return closest;
}

// Returns the homography that maps the positions of these corners in the image to their cells.
std::optional<cv::Matx33d> cellsFromImage(const std::vector<LatticeCorner> &corners) {
    std::vector<cv::Point2f> images;
    std::vector<cv::Point2f> cells;
    for (const LatticeCorner &corner : corners) {
        images.push_back(corner.position);
        cells.emplace_back(corner.cell);
    }
    const cv::Mat h = cv::findHomography(images, cells);
    return h.empty() ? std::nullopt : std::optional<cv::Matx33d>(h);
}

// Returns the motion that maps the piece's cells to the base's. Empty if the piece does not continue the base.
std::optional<LatticeMotion> continuation(const CornerLattice &base, const CornerLattice &piece) {
    const std::optional<cv::Matx33d> map = cellsFromImage(closestTo(middleOf(piece.corners), base, cornersCarriedOn));
    if (!map) {
        return std::nullopt;
    }
    const cv::Matx33d &cellFromImage = *map;
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
        // A corner that both lattices contain needs no special treatment. Its position is about the same in both, so it
        // lies close to a lattice point of the base.
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

bool continues(const CornerLattice &base, const CornerLattice &piece) {
    const std::vector<LatticeCorner> near = closestTo(middleOf(piece.corners), base, cornersCarriedOn);
    const std::optional<cv::Matx33d> cellFromImage = cellsFromImage(near);
    if (!cellFromImage) {
        return false;
    }
    CornerLattice shown;
    for (const LatticeCorner &corner : near) {
        shown.add(corner);
    }
    const cv::Rect extent = shown.extent();
    constexpr size_t compared = 20;
    const std::vector<LatticeCorner> others = closestTo(middleOf(near), piece, compared);
    const auto fits = std::count_if(others.begin(), others.end(), [&](const LatticeCorner &corner) {
        // How many cells the corner lies outside `extent` along each axis; zero or negative if it is inside. `extent`
        // contains the corners from which the base is extrapolated.
        const int across = std::max(extent.x - corner.cell.x, corner.cell.x - extent.br().x + 1);
        const int down = std::max(extent.y - corner.cell.y, corner.cell.y - extent.br().y + 1);
        const double allowed = 0.4 + 0.06 * std::max({across, down, 0});
        const cv::Point2d d = transform(*cellFromImage, corner.position) - cv::Point2d(corner.cell);
        return std::max(std::abs(d.x), std::abs(d.y)) <= allowed;
    });
    return size_t(fits) * 4 >= others.size() * 3;
}

}  // namespace pattern_reader
