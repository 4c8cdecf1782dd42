// The corners of a checkerboard or of a part of one, each with its column and row in a lattice.
//
// Axes: column steps go along axis 0, and row steps go along axis 1. In the image (x right, y down), the turn from axis
// 0 to axis 1 is always clockwise, even if the image shows the board mirrored. Apart from this rule, the origin and the
// directions of the axes are arbitrary. Positions are image coordinates.
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
    // Cells run from `-reach` to `reach` in both directions. That is enough for all 271 x 271 corners of the position
    // code's plane, whichever of these corners has the cell (0, 0).
    static constexpr int reach = 300;

    // True if the square between the corners (0, 0) and (1, 1) is light. Colours alternate from there.
    bool originLight = true;
    std::vector<LatticeCorner> corners;

    // Adds a corner. False if its cell is occupied or out of range.
    bool add(const LatticeCorner &corner);
    // The index in `corners` of the corner at a cell, or -1.
    int indexAt(cv::Point cell) const;
    const LatticeCorner *at(cv::Point cell) const;
    // Removes the corners for which `keep` is false. `keep` has one entry for each corner.
    void retain(const std::vector<bool> &keep);
    // The smallest rectangle of cells around all corners.
    cv::Rect extent() const;
    // True if the square whose top-left corner is `cell` is light.
    bool isLight(cv::Point cell) const { return ((cell.x + cell.y) % 2 == 0) == originLight; }
    // Predicts, from the corners around a cell, the position of a corner that the lattice lacks. False if these corners
    // do not determine the position.
    bool predict(cv::Point cell, cv::Point2f &position) const;
    // Predicts, from pairs of neighbours on opposite sides, the position of a corner that the lattice has. False if
    // there is no such pair.
    bool interpolate(cv::Point cell, cv::Point2f &position) const;
    // The length of the shortest lattice step at a cell, in pixels. If the cell has a corner, the steps from this
    // corner to its neighbours are compared. If the cell has no corner, the steps from its neighbours to the corners
    // one cell farther out are compared. 0 if there are no such steps.
    float spacingAt(cv::Point cell) const;
    // Estimates the column step and the row step at a cell from the corners around it. The cell itself may lack a
    // corner. Empty if the corners do not determine both steps.
    std::optional<LatticeSteps> stepsAt(cv::Point cell) const;

private:
    size_t slotOf(cv::Point cell) const;
    bool stepAlong(cv::Point cell, cv::Point step, cv::Point2f &length) const;
    // Enlarges `covered` so that it contains the cell. `covered` grows by more than needed, so that it has to be
    // enlarged less often.
    void cover(cv::Point cell);

    // `indices` has one entry for each cell of the rectangle `covered`, row by row: the index of the corner there, or
    // -1.
    cv::Rect covered;
    std::vector<int> indices;
};

}  // namespace pattern_reader
