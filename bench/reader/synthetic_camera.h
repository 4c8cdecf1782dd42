// A camera that photographs flat targets: true perspective, radial distortion, the pixel's area, blur, uneven light,
// noise, JPEG. What it knows of its own geometry is the truth the reader is measured against.
//
// Image coordinates: the centre of the top-left pixel is (0, 0), x to the right, y down. Everything random comes from
// the caller's generator, so that a seed fixes an image.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "bench/reader/synthetic_target.h"

namespace reader_bench {

struct CameraModel {
    double focalLength = 1000;  // pixels
    cv::Point2d centre;         // principal point, pixels
    double k1 = 0;              // radial distortion of normalised coordinates: r' = r (1 + k1 r² + k2 r⁴)
    double k2 = 0;
};

// Where a target stands before the camera: point p of the target's plane is at rotation · (p - anchor, 0) · pitch +
// translation.
struct TargetPose {
    cv::Matx33d rotation = cv::Matx33d::eye();
    cv::Vec3d translation{0, 0, 1};
    cv::Point2d anchor;
};

// Something in front of a target, in the target's own coordinates: covers every point for which it is true.
using Cover = std::function<bool(double x, double y)>;

struct PlacedTarget {
    std::shared_ptr<const SyntheticTarget> target;
    TargetPose pose;
    double quietZone = 1;  // pitches of paper around the pattern
    Cover cover;           // may be empty
    float coverLevel = 90;
};

struct Exposure {
    float paperLevel = 220;
    float inkLevel = 30;
    double blurSigma = 0.6;  // pixels, on top of the pixel's own area
    double noiseSigma = 2;   // grey levels
    cv::Point2d lightSlope;  // relative change of light over the whole image
    double vignette = 0;     // relative loss in the corners
    int jpegQuality = 0;     // 0: none
};

cv::Point2d projectPoint(const CameraModel &camera, const TargetPose &pose, const cv::Point2d &point);

// Takes the picture over the given background (32-bit float grey levels), which sets the size.
cv::Mat photograph(const cv::Mat &background, const CameraModel &camera, const std::vector<PlacedTarget> &targets,
                   const Exposure &exposure, std::mt19937 &random);

// Light, blur, noise and compression alone.
cv::Mat expose(const cv::Mat &irradiance, const Exposure &exposure, std::mt19937 &random);

}  // namespace reader_bench
