// Finds the points that patterns consist of, by the second derivatives of the picture: saddles and dark blobs.
//
// Saddle points: places where four areas meet, dark opposite dark and light opposite light, as at the inner
// corners of a checkerboard.
//
// The measure is the negative determinant of the Hessian of the smoothed image; a candidate must also have its
// stationary point inside the pixel's neighbourhood and look the same after half a turn, which ordinary corners do not.
// It knows nothing about lattices.
//
// Dark blobs: spots that are darker than everything around them, with a radius of one to three pixels of their level.
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

struct DarkBlob {
    cv::Point2f position;  // level coordinates
    float strength = 0;    // square root of the Hessian's determinant, grey levels per pixel²
    float stretch = 1;     // of its second derivatives: about how many times longer than wide it is
};

struct LevelPoints {
    std::vector<SaddlePoint> saddles;
    std::vector<DarkBlob> blobs;
};

// The least strength of points that are searched, in grey levels per pixel².
constexpr float leastSaddleStrength = 1.5F;
constexpr float leastBlobStrength = 5;

// Smooths the level's picture into level.smoothed and finds all of its points, which are at most one for every four
// pixels.
LevelPoints findPoints(ImageLevel &level);

// Walks from near to the closest stationary point of the smoothed level and describes it. False when there is no
// saddle within reach (pixels).
bool locateSaddle(const ImageLevel &level, cv::Point2f near, float reach, SaddlePoint &saddle);

}  // namespace pattern_reader
