// Finds the points that patterns consist of: saddle points and dark blobs. Each point is judged only by the picture in
// its close surroundings. Lattices are not considered here.
//
// Saddle points are places where four areas meet, dark opposite dark and light opposite light, as at the inner
// corners of a checkerboard.
//
// The measure of a saddle point is the negative determinant of the Hessian of the smoothed image. A pixel with a high
// measure must meet two conditions to be a saddle point: a stationary point of the smoothed image lies close to it, and
// a ring around that point has two light and two dark areas that alternate, and looks nearly the same after half a
// turn. The corner of a single square does not meet the second condition.
//
// Dark blobs are spots that are darker than everything around them, with a radius of one to three pixels of the level
// in which they are found.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"

namespace pattern_reader {

struct SaddlePoint {
    cv::Point2f position;   // level coordinates
    float brightAxis = 0;   // direction of the light areas, radians, modulo half a turn
    float halfOpening = 0;  // half the angle of a light area, 0.4 to 1.2; its borders are brightAxis ± halfOpening
    float strength = 0;     // square root of the negative determinant, grey levels per pixel²
};

struct DarkBlob {
    cv::Point2f position;  // level coordinates
    float strength = 0;    // square root of the Hessian's determinant, grey levels per pixel²
    float stretch = 1;     // about how many times longer than wide the blob is
};

struct LevelPoints {
    std::vector<SaddlePoint> saddles;
    std::vector<DarkBlob> blobs;
};

// The least strength of the points that are found, in grey levels per pixel².
constexpr float leastSaddleStrength = 1.5F;
constexpr float leastBlobStrength = 5;

// Smooths the level's picture into level.smoothed and finds all points in it.
LevelPoints findPoints(ImageLevel &level);

// Walks from the point `near` to the closest stationary point of the smoothed level and describes it. Returns false if
// there is no saddle point within `reach` pixels.
bool locateSaddle(const ImageLevel &level, cv::Point2f near, float reach, SaddlePoint &saddle);

}  // namespace pattern_reader
