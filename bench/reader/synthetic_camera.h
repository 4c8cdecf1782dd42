// Renders photographs of printed targets, as a synthetic camera would take them: with the true perspective, a
// distorting lens, bent paper and a rolling shutter. Each pixel is the exact average over its area. The only exceptions
// are pixels at the edge of an object that covers a target (see Cover); their covered share is estimated from samples.
// The known geometry is the truth with which the reader's results are compared. The scene is first rendered under even
// light. exposure.h then turns the result into a photograph.
//
// In image coordinates, the centre of the top-left pixel is (0, 0), x points to the right, and y points down.
// Everything random comes from the caller's generator, so a seed determines an image.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "bench/reader/camera_model.h"
#include "bench/reader/exposure.h"
#include "bench/reader/synthetic_target.h"

namespace reader_bench {

// The pose of a target in front of the camera. In camera coordinates, in pitches, point p of the target's plane is at
// rotation · (p - anchor, 0) + translation. On a bent sheet, the point is at
// rotation · sheet->at(p - anchor) + translation.
struct TargetPose {
    cv::Matx33d rotation = cv::Matx33d::eye();
    cv::Vec3d translation{0, 0, 1};
    cv::Point2d anchor;
    std::shared_ptr<const PaperSheet> sheet;  // flat if empty
    // The movement between camera and target while the rows of the picture are read one after the other. At row y, the
    // target has been turned about the camera's centre by (y - middleRow) · turnPerRow (axis times angle, in radians),
    // and then shifted by (y - middleRow) · shiftPerRow.
    cv::Vec3d turnPerRow;
    cv::Vec3d shiftPerRow;
    double middleRow = 0;
};

// An object in front of a target. The function returns true for every point of the target that the object covers. The
// point is given in the target's own coordinates.
using Cover = std::function<bool(double x, double y)>;

struct PlacedTarget {
    std::shared_ptr<const SyntheticTarget> target;
    TargetPose pose;
    double quietZone = 1;   // width of the paper around the pattern, in pitches (synthetic_target.h)
    Cover cover;            // may be empty
    float coverLevel = 90;  // grey level of the cover
};

// Returns where the camera sees a point of the target, in image coordinates.
cv::Point2d projectPoint(const CameraModel &camera, const TargetPose &pose, const cv::Point2d &point);

// Takes a picture of the targets in front of the background (32-bit float grey levels). The picture has the
// background's size.
cv::Mat photograph(const cv::Mat &background, const CameraModel &camera, const std::vector<PlacedTarget> &targets,
                   const Exposure &exposure, std::mt19937 &random);

}  // namespace reader_bench
