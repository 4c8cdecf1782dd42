// Describes a picture of the benchmark and the truth about everything in it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "bench/reader/coded_targets.h"
#include "bench/reader/synthetic_camera.h"

namespace reader_bench {

// Says whether the squares of checkerboards are drawn with their marks. Everything else in the picture is the same in
// both cases.
enum class Marks { Drawn, LeftOut };

enum class Visibility { Whole, Covered, CutByBorder };

struct ScenePattern {
    CodedTarget coded;
    PlacedTarget placed;
    // Side of a square in the pattern's middle, in pixels: the geometric mean of the sides along x and along y.
    double pixelsPerSquare = 0;
    double tiltDegrees = 0;
    // Whole if nothing hides the pattern, Covered if a cover hides a quarter of it, CutByBorder if a part of it is
    // outside the picture. Shadows and obstacles, which belong to the exposure, do not count.
    Visibility visibility = Visibility::Whole;
};

struct Scene {
    cv::Mat image;   // 8 bits, one channel
    cv::Mat colour;  // the picture in colour; empty if the camera is grey
    CameraModel camera;
    Exposure exposure;
    std::vector<ScenePattern> patterns;
    // True if the picture was mirrored after it was taken. Then every reading of a pattern counts as false.
    bool mirrored = false;
    Marks marks = Marks::Drawn;

    // The position of a pattern's point in the picture, before it was mirrored. The point is given in the reader's
    // lattice coordinates or in the target's own coordinates.
    cv::Point2d imageOf(const ScenePattern &pattern, const cv::Point &lattice) const;
    cv::Point2d imageOf(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
    // The derivatives of the image point with respect to the target's coordinates: by x in the first column, by y in
    // the second.
    cv::Matx22d stepsAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
    // The difference in grey level between paper and ink at a point, after clipping; 0 if the point is covered or
    // outside the picture.
    double contrastAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const;
};

// The part of a pattern that the picture shows.
struct SeenPart {
    // The corners or marks whose surroundings can be seen, in the reader's lattice coordinates.
    std::vector<cv::Point> points;
    // The number of squares of which all four corners can be seen; for a plate, the number of marks in `points`.
    int squares = 0;
};
SeenPart seenPartOf(const Scene &scene, const ScenePattern &pattern);

}  // namespace reader_bench
