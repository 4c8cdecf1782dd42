// Measures a checkerboard corner by fitting a model of four blurred areas to the grey levels around it:
//
//   grey = M(d) + A(d) * erf(a / (sqrt 2 * blur)) * erf(b / (sqrt 2 * blur))
//
// a and b are the signed distances from the two borders, and d is the vector from the corner. M, the middle grey, and
// A, the amplitude, are linear functions of d, because the light changes about linearly. The caller passes the
// directions and bends of the borders, because the lattice determines them far better than a few pixels can.
//
// An error of the model that stays the same after half a turn about the corner does not move the fitted position. The
// position is therefore right for any blur with this symmetry, such as the disc of a defocused lens. Errors of the
// model with this symmetry are not noise, so noise is estimated only from the part of the errors that changes sign
// after half a turn.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace pattern_reader {

// The two borders that cross in a corner. In the image (x right, y down) axis 1 is clockwise of axis 0.
struct CornerBorders {
    std::array<cv::Point2f, 2> steps;  // to the next corner along each axis, pixels
    // Half the curvature of each border, per pixel; positive if the border bends to the side to which the other axis
    // points.
    std::array<float, 2> bends{0, 0};
    // The distance from each border at which the marks of the squares may begin, in pixels. Pixels that see a mark are
    // left out.
    std::array<float, 2> marks{1000, 1000};
};

struct CornerFit {
    cv::Point2f position;
    float middle = 0;
    float amplitude = 0;         // positive if the area between axis 0 and axis 1 is light
    float blur = 1;              // standard deviation in pixels, including the averaging over a pixel's area
    cv::Point2f middleSlope;     // grey levels per pixel
    cv::Point2f amplitudeSlope;  // grey levels per pixel
    float residual = 0;          // root mean square of all errors, grey levels
    float noise = 0;             // standard deviation of a pixel, estimated as described above, grey levels
    float sigma = 0;             // standard deviation of the position along one axis, pixels
    int pixels = 0;              // number of pixels in the window
};

// The light and blur of a corner as its surroundings predict them.
struct CornerPrior {
    struct Change {
        float middle = 0;
        float amplitude = 0;
        float deviation = 0;  // standard deviation of both
    };
    std::array<Change, 2> changes;  // change of the levels over one step along each axis, grey levels
    float blur = 1;                 // pixels
    float blurDeviation = 0;        // standard deviation of `blur`, pixels
    float noise = 1;                // standard deviation of a pixel, grey levels
    float noiseWeight = 0;          // `noise` counts as if it had this many degrees of freedom
};

enum class CornerParameters { Position, PositionAndBlur };

// Fits the model to a disc of pixels around the corner, in at most `steps` iterations. The light is taken to be
// uniform: M and A do not change with d. Fits M, A and the parameters that `free` names, and sets
// `residual`. `radius` is in pixels. The fit starts from the values in `fit`. If the amplitude there is 0, the first
// iteration finds start values for the grey levels. False if the position moves away from the start by more than 0.8
// pixels and by more than half the radius, if the parameters are not determined, or if the disc leaves the picture.
bool fitCorner(const cv::Mat &picture, const CornerBorders &borders, float radius, CornerParameters free, int steps,
               CornerFit &fit);

// Improves a fit that is nearly right. Fits position, blur, levels and the levels' slopes, as far as the prior allows,
// and sets residual, noise and sigma. False in the same cases as fitCorner.
bool refineCorner(const cv::Mat &picture, const CornerBorders &borders, float radius, const CornerPrior &prior,
                  int steps, CornerFit &fit);

}  // namespace pattern_reader
