// Determines from a lattice the directions and bends of the borders at one of its corners, and how the light changes
// around the corner.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// The levels `middle` and `amplitude` of the corners around a corner (see CornerFit), as linear functions of column and
// row.
struct LightPlane {
    bool known = false;
    std::array<float, 2> middle{};     // change over one step along each axis, grey levels
    std::array<float, 2> amplitude{};  // change of the amplitude's magnitude, grey levels
    std::array<float, 2> spread{};     // standard deviation of each change, divided by that of a level
    float scatter = 0;                 // standard deviation of the levels from the plane, grey levels
};

class CornerSurroundings {
public:
    // Keeps a reference to the lattice. Corners of the lattice may later be moved or added.
    explicit CornerSurroundings(const CornerLattice &board) : lattice(board) {}

    // The borders through a corner, in image pixels. If the corner has no neighbour along an axis, the border's step
    // along this axis is computed from a homography, which is fitted to up to 100 corners spread over the lattice.
    // Empty if the homography does not give a step either.
    std::optional<CornerBorders> bordersOf(const LatticeCorner &corner) const;
    // Like bordersOf, but empty if the corner has no neighbour along an axis. The corner itself need not be part of the
    // lattice.
    std::optional<CornerBorders> bordersByNeighbours(const LatticeCorner &corner) const;
    // Returns how much the fitted levels around a corner typically differ from a plane, in grey levels. This is the
    // median over every stride-th corner of the lattice, but at least 0.05. It is 1 if none of these corners has enough
    // fits around it. fits[i] is the fit of the lattice's corner i.
    float lightScatter(const std::vector<CornerFit> &fits, size_t stride) const;
    // Estimates, from the fits around a corner, how much the levels change over one step along each axis. If there are
    // too few fits, the changes are 0 with a large deviation. `scatter` is the result of lightScatter.
    std::array<CornerPrior::Change, 2> lightAround(const LatticeCorner &corner, const std::vector<CornerFit> &fits,
                                                   float scatter) const;

private:
    LightPlane planeAround(cv::Point cell, const std::vector<CornerFit> &fits) const;
    bool stepByMap(cv::Point cell, cv::Point step, cv::Point2f &direction) const;
    void fitMap() const;

    const CornerLattice &lattice;
    // The homography is fitted when it is first needed.
    mutable bool mapTried = false;
    mutable std::optional<cv::Matx33d> imageFromCell;
};

}  // namespace pattern_reader
