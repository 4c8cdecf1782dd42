// The least error that noise allows: the Cramér-Rao bound for the place of a corner or of a round mark, from a picture
// with Gaussian blur and white noise.
//
// A border between light and dark of length L, seen with contrast c and blur s in noise of standard deviation n, holds
// the Fisher information c² L / (2 sqrt(pi) s n²) about its place across: the integral of the squared derivative of its
// grey levels, a Gaussian of width s, over n². A corner is two such borders, a mark one that is closed. All other
// unknowns (levels, blur, directions) change the picture alike on both sides of the point, and a shift changes it
// oppositely, so that they cost nothing.
#pragma once

#include <opencv2/core.hpp>

namespace reader_bench {

// How the camera sees the surroundings of a point.
struct LocalView {
    cv::Matx22d steps;    // pixels per lattice step: the x direction in the first column, y in the second
    double contrast = 0;  // grey levels between paper and ink
    double blur = 0;      // standard deviation of the Gaussian blur with the pixel's own area, pixels
    double noise = 0;     // standard deviation, grey levels
};

// The root mean square distance, in pixels, that no unbiased measurement stays below; 0 if the window holds nothing.
// A corner's window is the disc that reaches to the nearest mark or border of a neighbouring square.
double leastCornerError(const LocalView &view);
// Of a mark with the radius of half a lattice step, measured along its whole outline.
double leastMarkError(const LocalView &view);

}  // namespace reader_bench
