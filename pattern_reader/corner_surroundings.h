// What a lattice tells about one of its corners: the borders' directions and bends, and how the light changes around
// it.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// The levels around a corner as a plane over the lattice.
struct LightPlane {
    bool known = false;
    std::array<float, 2> middle{};     // change over a step along each axis, grey levels
    std::array<float, 2> amplitude{};  // the same change of the amplitude's magnitude
    std::array<float, 2> spread{};     // standard deviation of both changes if that of a level is 1
    float scatter = 0;                 // standard deviation of the levels from the plane, grey levels
};

class CornerSurroundings {
public:
    // Keeps a reference to the lattice, whose corners may move and grow later.
    explicit CornerSurroundings(const CornerLattice &board) : lattice(board) {}

    // The borders through a corner, image pixels. Where it has no neighbour along an axis, the step comes from the
    // plane's map through all corners; nothing if that cannot be told either.
    std::optional<CornerBorders> bordersOf(const LatticeCorner &corner) const;
    // The same from the corner's neighbours alone. The corner itself need not be part of the lattice.
    std::optional<CornerBorders> bordersByNeighbours(const LatticeCorner &corner) const;
    // How much the fitted levels around a corner typically differ from a plane, in grey levels. Only every stride-th
    // corner is examined. fits[i] is the fit of the lattice's corner i.
    float lightScatter(const std::vector<CornerFit> &fits, size_t stride) const;
    // How the levels change over one step along each axis, by the fits around a corner; scatter is the board's.
    std::array<CornerPrior::Change, 2> lightAround(const LatticeCorner &corner, const std::vector<CornerFit> &fits,
                                                   float scatter) const;

private:
    LightPlane planeAround(cv::Point cell, const std::vector<CornerFit> &fits) const;
    bool stepByMap(cv::Point cell, cv::Point step, cv::Point2f &direction) const;
    void fitMap() const;

    const CornerLattice &lattice;
    // Made when it is first needed.
    mutable bool mapTried = false;
    mutable std::optional<cv::Matx33d> imageFromCell;
};

}  // namespace pattern_reader
