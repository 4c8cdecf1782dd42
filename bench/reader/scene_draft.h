// Makes the draft of a picture with one pattern, and composes the scene from the draft. Between these two steps, a
// condition (conditions.h) can change the draft's values.
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
    // The pattern's diagonal divided by the focal length, both in pixels. If it is 0, a usual focal length is chosen at
    // random. If `fisheye` is true, 0 is not allowed.
    double viewShare = 0;
    double distortion = 0;  // greatest radial distortion in the pattern, as a share of the distance from the centre
    std::optional<PaperSheet::Form> sheet;
    // The target's motion while the picture is exposed row by row (see TargetPose).
    cv::Vec3d turnPerRow;   // axis times angle in radians
    cv::Vec3d shiftPerRow;  // pixels in the picture

    Exposure exposure;

    bool coverQuarter = false;
    bool cutQuarter = false;
    bool mirrored = false;
    double megapixels = 2;  // the limit of the picture's size; of a larger picture, only the middle is kept
};

// Returns a draft of an easy picture: 8 to 40 pixels per square, a tilt of at most 45°, some noise and blur, and light
// that changes slowly over the picture.
SceneDraft makeDraft(bool plate, Dice &dice);

// The scene before the picture is taken: the camera, the pattern and the size of the picture. Conditions may still
// change `scene.exposure`.
struct ComposedScene {
    Scene scene;
    cv::Size size;
    cv::Rect2d bounds;     // of the pattern in the picture
    double leastStep = 0;  // the least distance between neighbouring lattice lines in the picture, pixels
};
ComposedScene compose(const SceneDraft &draft, Dice &dice);

}  // namespace reader_bench
