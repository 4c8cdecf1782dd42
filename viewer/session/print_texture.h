// Makes the outlines of everything that is printed: squares, round marks and the code. With these outlines, a print can
// be drawn in a picture or in a scene. The camera library provides the flat outlines. They are then scaled and bent
// into the shape that the calibration found for the print. If a code cannot hold the known values of a print, such as
// its grid spacing, the print is drawn without its code.
#pragma once

#include <Eigen/Core>
#include <vector>

#include "calibration/observations.h"
#include "viewer/session/print_look.h"

using Outline = std::vector<Eigen::Vector3d>;  // corners in the print's axes, mm

// A piece of the print, about as large as one square. Neighbouring cells overlap a little.
struct PrintCell {
    Outline whole;                // the outline of the cell, to be filled with the light colour
    std::vector<Outline> shapes;  // what lies within an odd number of these is dark
};

// A piece of the print with up to 8 x 8 cells. If a block is small on the screen, its code cannot be seen. Then only
// its large shapes need to be drawn, which is much faster.
struct PrintBlock {
    Outline whole;  // the outline of the block, to be filled with the light colour
    std::vector<PrintCell> cells;
    std::vector<Outline> largeShapes;  // such as squares; what lies within an odd number of these is dark
};

// Returns the blocks that cover a print and its quiet zone; none if the print has no lattice. Takes about 20 ms for a
// pattern of 91 x 91 points.
std::vector<PrintBlock> textureOf(const calibration::Print &print, const calibration::PrintShape &shape,
                                  const PrintLook &look);
