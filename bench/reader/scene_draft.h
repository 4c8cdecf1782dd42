// Makes the draft of a picture with one pattern, and composes the scene from the draft. In between, a condition can
// change the draft's values.
#pragma once

#include <optional>

#include "bench/reader/dice.h"
#include "bench/reader/scene.h"

namespace reader_bench {

struct SceneDraft {
    bool plate = false;
    cv::Size flexibleCorners;  // of a Flexible pattern; if empty and `plate` is false, the pattern is a tile
    Print print;

    double pixelsPerSquare = 20;
    double tiltDegrees = 0;
    double quietZone = 1;

    bool fisheye = false;
    double viewShare = 0;   // the pattern's diagonal divided by the focal length, both in pixels; 0 for a usual lens
    double distortion = 0;  // greatest radial distortion in the pattern, as a share of the distance from the centre
    std::optional<PaperSheet::Form> sheet;
    cv::Vec3d turnPerRow;   // radians
    cv::Vec3d shiftPerRow;  // pixels in the picture

    Exposure exposure;

    bool coverQuarter = false;
    bool cutQuarter = false;
    bool mirrored = false;
    double megapixels = 2;  // the limit; of a larger picture, only the middle part is used
};

// Returns a draft of a picture with mild conditions: 8 to 40 pixels per square, tilt to 45°, some noise and blur, and
// light that changes slowly over the picture.
SceneDraft makeDraft(bool plate, Dice &dice);

// The scene before the picture is taken: the camera, the pattern and the size of the picture. Conditions may still
// change the exposure.
struct ComposedScene {
    Scene scene;
    cv::Size size;
    // The bounds of the pattern in the picture, and the least distance between neighbouring lattice lines.
    cv::Rect2d bounds;
    double leastStep = 0;
};
ComposedScene compose(const SceneDraft &draft, Dice &dice);

}  // namespace reader_bench
