// Makes the parts from which pictures are composed.
#pragma once

#include <opencv2/core.hpp>

#include "bench/reader/dice.h"
#include "bench/reader/scene.h"

namespace reader_bench {

// Returns random grey levels that change over a distance of `grain` pixels.
cv::Mat blobs(const cv::Size &size, double grain, Dice &dice);
cv::Mat makeBackground(const cv::Size &size, Dice &dice);

// Returns an exposure with mild blur, noise, light and compression.
Exposure makeExposure(double pixelsPerSquare, Dice &dice);

cv::Matx33d rotationBy(const cv::Vec3d &axis);

// Rolls the target, and tilts it by `tilt` radians about an axis in the image plane. Then places it so that a lens
// without distortion sees its middle at `at`, and a square there has the given size.
TargetPose makePose(const CameraModel &camera, const SyntheticTarget &target, cv::Point2d at, double pixelsPerSquare,
                    double tilt, Dice &dice);

// Returns a cover over a quarter of the pattern: a corner, a strip along a side, a strip across, or an ellipse.
Cover coverQuarter(const cv::Size2d &size, Dice &dice);

// The rectangle of the picture that shows the pattern and its quiet zone.
cv::Rect2d boundsOf(const Scene &scene, const ScenePattern &pattern);

// Returns how far the window must be shifted so that a quarter of the pattern is outside the window.
cv::Point cutQuarter(const Scene &scene, const ScenePattern &pattern, cv::Rect window, Dice &dice);

// Moves the origin of the picture's coordinates to this point.
void moveOrigin(Scene &scene, cv::Point origin);

// Photographs the scene's patterns over the background with the scene's camera and exposure.
void takePicture(Scene &scene, const cv::Mat &background, Dice &dice);

}  // namespace reader_bench
