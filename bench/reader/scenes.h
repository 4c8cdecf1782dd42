// The pictures of the benchmark: a number fixes a picture and everything that is true of it.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "bench/reader/coded_targets.h"
#include "bench/reader/synthetic_camera.h"

namespace reader_bench {

enum class Visibility { Whole, Covered, CutByBorder };

struct ScenePattern {
    CodedTarget coded;
    PlacedTarget placed;
    // Side of a square in the pattern's middle, the geometric mean of both directions, pixels.
    double pixelsPerSquare = 0;
    double tiltDegrees = 0;
    // Which part of the pattern is not in the picture: nothing, or a quarter.
    Visibility visibility = Visibility::Whole;
};

struct Scene {
    cv::Mat image;
    CameraModel camera;
    std::vector<ScenePattern> patterns;

    // Where a point of a pattern, in the reader's lattice coordinates, is in the picture.
    cv::Point2d imageOf(const ScenePattern &pattern, const cv::Point &lattice) const;
};

// Pictures with one to four patterns: all types, both polarities, tilts to 60°, 4 to 40 pixels per square.
Scene makeScene(unsigned number);

enum class EmptyKind { Texture, Text, PlainBoard, Dots, Lattice, RandomMarks };
constexpr int emptyKindCount = 6;
std::string nameOf(EmptyKind kind);

// Pictures without any pattern of this system. RandomMarks are boards with marks that are not from the code.
cv::Mat makeEmptyPicture(EmptyKind kind, unsigned number);

}  // namespace reader_bench
