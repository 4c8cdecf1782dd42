// A connected piece of a checkerboard: corners with their place in a lattice of their own.
//
// Axes: column steps go along axis 0, row steps along axis 1, and turning from axis 0 to axis 1 is clockwise as seen
// in the image (x right, y down), so a lattice is never mirrored. The place of its origin and the directions of its
// axes are arbitrary. Positions are image coordinates.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/lattice_steps.h"

namespace pattern_reader {

struct LatticeCorner {
    cv::Point cell;  // column, row
    cv::Point2f position;
    float strength = 0;
    float sigma = 0;         // standard deviation of a measured position, pixels
    bool disturbed = false;  // measured, but the picture around it does not look like a corner
};

class CornerLattice {
public:
    // Cells run from -reach to reach in both directions: room for the largest pattern, of 271 corners a side, whichever
    // of its corners is the first.
    static constexpr int reach = 300;

    // The square between the corner (0, 0) and (1, 1) is light; colours alternate from there.
    bool originLight = true;
    std::vector<LatticeCorner> corners;

    // Adds a corner. False if its cell is occupied or out of range.
    bool add(const LatticeCorner &corner);
    // The corner's number in `corners`, or -1.
    int indexAt(cv::Point cell) const;
    const LatticeCorner *at(cv::Point cell) const;
    // Removes the corners for which keep is false; one entry for each corner.
    void retain(const std::vector<bool> &keep);
    // The smallest rectangle of cells around all corners.
    cv::Rect extent() const;
    // True if the square whose top-left corner is `cell` is light.
    bool isLight(cv::Point cell) const { return ((cell.x + cell.y) % 2 == 0) == originLight; }
    // Predicts the position of an absent corner from its neighbours. False if they do not determine it.
    bool predict(cv::Point cell, cv::Point2f &position) const;
    // Predicts the position of a present corner from its neighbours on both sides. False if it has no such pair.
    bool interpolate(cv::Point cell, cv::Point2f &position) const;
    // Length of the shorter of the two lattice steps at a corner.
    float spacingAt(cv::Point cell) const;
    // The steps at a cell, occupied or not, from the corners next to it. Empty if these do not determine both.
    std::optional<LatticeSteps> stepsAt(cv::Point cell) const;

private:
    size_t slotOf(cv::Point cell) const;
    bool stepAlong(cv::Point cell, cv::Point step, cv::Point2f &length) const;
    // Enlarges the area so that it contains the cell, and some more so that this is needed less often.
    void cover(cv::Point cell);

    // The corners' numbers by cell, over the cells of covered.
    cv::Rect covered;
    std::vector<int> indices;
};

}  // namespace pattern_reader
