// Makes the parts from which pictures are composed.
#pragma once

#include <opencv2/core.hpp>

#include "bench/reader/dice.h"
#include "bench/reader/scene.h"

namespace reader_bench {

// Returns random grey levels that change over a distance of `grain` pixels.
cv::Mat blobs(const cv::Size &size, double grain, Dice &dice);
cv::Mat makeBackground(const cv::Size &size, Dice &dice);

// Returns a random exposure with mild blur and noise, mildly uneven light and, in some pictures, JPEG compression.
Exposure makeExposure(double pixelsPerSquare, Dice &dice);

// Returns the rotation about this axis by an angle that is the axis's length, in radians.
cv::Matx33d rotationBy(const cv::Vec3d &axis);

// Turns the target in its plane by a random angle, and then tilts it by `tilt` radians about a random axis that is
// parallel to the image plane. Places it so that a lens without distortion shows the target's middle at `at`, and shows
// a square there with an area of about pixelsPerSquare² pixels.
TargetPose makePose(const CameraModel &camera, const SyntheticTarget &target, cv::Point2d at, double pixelsPerSquare,
                    double tilt, Dice &dice);

// Returns a random cover over a quarter of the pattern: a corner, a strip along a side, a strip that crosses the
// pattern, or an ellipse.
Cover coverQuarter(const cv::Size2d &size, Dice &dice);

// The rectangle of the picture that shows the pattern and its quiet zone.
cv::Rect2d boundsOf(const Scene &scene, const ScenePattern &pattern);

// `window` is the part of the scene that the picture would show. Returns how far it must be shifted, in a random
// direction, so that about a quarter of the pattern is outside.
cv::Point cutQuarter(const Scene &scene, const ScenePattern &pattern, cv::Rect window, Dice &dice);

// Moves the origin of the image coordinates to this point of the picture. This changes camera.centre and the
// middleRow of each pattern's pose, but not the exposure.
void moveOrigin(Scene &scene, cv::Point origin);

// Photographs the scene's patterns over the background with the scene's camera and exposure. Sets scene.image, and
// scene.colour if the camera has colours. If scene.marks is Marks::LeftOut, checkerboards are drawn without their
// marks. If scene.mirrored is true, the picture is mirrored.
void takePicture(Scene &scene, const cv::Mat &background, Dice &dice);

}  // namespace reader_bench
