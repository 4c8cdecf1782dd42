// Computes the least error that noise allows: the Cramér-Rao bound for the position of a corner or of a round mark in a
// picture with Gaussian blur and white noise.
//
// Let a border between light and dark have the length L, the contrast c and the blur s. Let n be the standard deviation
// of the noise. Then the Fisher information about the border's position, measured at right angles to the border, is
//
//   c² L / (2 sqrt(pi) s n²)
//
// This is the integral of the squared derivative of the grey levels, divided by n². The derivative is a Gaussian of
// width s. A corner consists of two such borders, and a mark has one closed border.
//
// Not only the position is unknown. The grey levels, the blur and the directions of the borders are unknown, too.
// Compare two places at the same distance on opposite sides of the corner or of the mark's centre. A change of the
// levels, the blur or the directions makes both places lighter or darker by the same amount. A shift changes them by
// opposite amounts. So the bound stays the same if these other unknowns are estimated too.
#pragma once

#include <opencv2/core.hpp>

namespace reader_bench {

// How the camera sees the surroundings of a point.
struct LocalView {
    cv::Matx22d steps;    // pixels per lattice step: the x direction in the first column, y in the second
    double contrast = 0;  // grey levels between paper and ink
    // Standard deviation of the Gaussian blur, including the averaging over a pixel's area, pixels.
    double blur = 0;
    double noise = 0;  // standard deviation, grey levels
};

// Returns the least root mean square error, in pixels, that an unbiased measurement of a corner can have. The
// measurement uses the largest disc around the corner that lies within the four squares that meet there and contains no
// part of a mark. The result is 0 if there is no contrast, or if the blur is so large that no usable length of the
// borders is left within the disc.
double leastCornerError(const LocalView &view);
// Returns this least error for the centre of a round mark with a radius of half a lattice step. The measurement uses
// the mark's whole outline. The result is 0 if there is no contrast.
double leastMarkError(const LocalView &view);

}  // namespace reader_bench
