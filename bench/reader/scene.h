// A picture of the benchmark, and the whole truth about it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "bench/reader/coded_targets.h"
#include "bench/reader/synthetic_camera.h"

namespace reader_bench {

// Whether a checkerboard's squares have their marks in the picture. Everything else is the same in both cases.
enum class Marks { Drawn, LeftOut };

enum class Visibility { Whole, Covered, CutByBorder };

struct ScenePattern {
    CodedTarget coded;
    PlacedTarget placed;
    // Side of a square in the pattern's middle, the geometric mean of both directions, pixels.
    double pixelsPerSquare = 0;
    double tiltDegrees = 0;
    // Whether the whole pattern is visible, or a quarter or more of it is covered or outside the picture.
    Visibility visibility = Visibility::Whole;
};

struct Scene {
    cv::Mat image;   // 8 bits, one channel
    cv::Mat colour;  // the same in colour; empty if the camera is grey
    CameraModel camera;
    Exposure exposure;
    std::vector<ScenePattern> patterns;
    // The picture was mirrored after it was taken, so nothing in it must be read.
    bool mirrored = false;
    Marks marks = Marks::Drawn;

    // Where a point of a pattern, in the reader's lattice coordinates or in the target's own, is in the picture.
    cv::Point2d imageOf(const ScenePattern &pattern, const cv::Point &lattice) const;
    cv::Point2d imageOf(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
    // The derivatives of the image point: the target's x direction in the first column, y in the second.
    cv::Matx22d stepsAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
    // Grey levels between paper and ink as seen at a point, after clipping; 0 where something is in front.
    double contrastAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
};

// What the picture shows of a pattern.
struct SeenPart {
    std::vector<cv::Point> points;  // corners or marks whose surroundings can be seen; the reader's lattice coordinates
    int squares = 0;                // squares of which all four corners can be seen; of a plate: marks
};
SeenPart seenPartOf(const Scene &scene, const ScenePattern &pattern);

}  // namespace reader_bench
