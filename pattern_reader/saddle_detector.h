// Finds saddle points: places where four areas meet, dark opposite dark and light opposite light, as at the inner
// corners of a checkerboard.
//
// The measure is the negative determinant of the Hessian of the smoothed image; a candidate must also have its
// stationary point inside the pixel's neighbourhood and look the same after half a turn, which ordinary corners do not.
// Knows nothing of lattices.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"

namespace pattern_reader {

struct SaddlePoint {
    cv::Point2f position;   // level coordinates
    float brightAxis = 0;   // direction of the light areas, radians, modulo half a turn
    float halfOpening = 0;  // half the angle a light area spans, 0 to pi/2; its borders are brightAxis ± halfOpening
    float strength = 0;     // square root of the negative determinant, grey levels per pixel²
};

// Smooths the level's picture into level.smoothed and finds the saddles stronger than leastStrength. When there are
// more than limit the strongest are kept.
std::vector<SaddlePoint> findSaddles(ImageLevel &level, float leastStrength, size_t limit);

// Walks from near to the closest stationary point of the smoothed level and describes it. False when there is no
// saddle within reach (pixels).
bool locateSaddle(const ImageLevel &level, cv::Point2f near, float reach, SaddlePoint &saddle);

}  // namespace pattern_reader
