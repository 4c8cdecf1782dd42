#include "bench/reader/scene.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace reader_bench {

namespace {

// If glare or shade leaves less than this share of the contrast, no reader can be expected to see the point.
constexpr double leastShareOfContrast = 0.15;

bool isBehind(const std::vector<cv::Point2d> &outline, const cv::Point2d &p) {
    bool inside = false;
    for (size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
        const cv::Point2d &a = outline[i];
        const cv::Point2d &b = outline[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y)) {
            inside = !inside;
        }
    }
    return inside;
}

bool isSeen(const Scene &scene, const ScenePattern &pattern, const cv::Point2d &onTarget) {
    const Exposure &exposure = scene.exposure;
    return scene.contrastAt(pattern, onTarget) > leastShareOfContrast * double(exposure.paperLevel - exposure.inkLevel);
}

int seenSquares(const Scene &scene, const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    const int columns = int(std::lround(size.width));
    const int rows = int(std::lround(size.height));
    cv::Mat1b seen(rows + 1, columns + 1);
    for (int row = 0; row <= rows; row++) {
        for (int column = 0; column <= columns; column++) {
            seen(row, column) = isSeen(scene, pattern, cv::Point2d(column, row)) ? 1 : 0;
        }
    }
    int squares = 0;
    for (int row = 0; row < rows; row++) {
        for (int column = 0; column < columns; column++) {
            squares += seen(row, column) & seen(row, column + 1) & seen(row + 1, column) & seen(row + 1, column + 1);
        }
    }
    return squares;
}

}  // namespace

cv::Point2d Scene::imageOf(const ScenePattern &pattern, const cv::Point &lattice) const {
    return imageOf(pattern, cv::Point2d(lattice - pattern.coded.origin));
}

cv::Point2d Scene::imageOf(const ScenePattern &pattern, const cv::Point2d &onTarget) const {
    return projectPoint(camera, pattern.placed.pose, onTarget);
}

cv::Matx22d Scene::stepsAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const {
    constexpr double h = 0.02;
    const cv::Point2d x =
        imageOf(pattern, onTarget + cv::Point2d(h, 0)) - imageOf(pattern, onTarget - cv::Point2d(h, 0));
    const cv::Point2d y =
        imageOf(pattern, onTarget + cv::Point2d(0, h)) - imageOf(pattern, onTarget - cv::Point2d(0, h));
    return cv::Matx22d(x.x, y.x, x.y, y.y) * (0.5 / h);
}

double Scene::contrastAt(const ScenePattern &pattern, const cv::Point2d &onTarget) const {
    if (pattern.placed.cover && pattern.placed.cover(onTarget.x, onTarget.y)) {
        return 0;
    }
    const cv::Point2d p = imageOf(pattern, onTarget);
    if (p.x < 0 || p.y < 0 || p.x > image.cols - 1 || p.y > image.rows - 1) {
        return 0;
    }
    for (const Obstacle &obstacle : exposure.obstacles) {
        if (isBehind(obstacle.outline, p)) {
            return 0;
        }
    }
    const Light light = lightAt(exposure, image.size(), p);
    const auto level = [&](double reflectance) {
        return std::min(255.0, exposure.toneGain * (reflectance * light.share + light.reflected));
    };
    return level(double(exposure.paperLevel)) - level(double(exposure.inkLevel));
}

SeenPart seenPartOf(const Scene &scene, const ScenePattern &pattern) {
    const bool plate = pattern.coded.kind == pattern_reader::PatternKind::Plate;
    // How far the surroundings of a point reach, in lattice steps. For a plate, this is the radius of a mark. The
    // surroundings of a checkerboard's corner end just before the marks of the squares, which begin a third of a step
    // away from the corner along both axes.
    const double around = plate ? 0.5 : 0.3;
    SeenPart part;
    for (const cv::Point2d &p : pattern.coded.target->points()) {
        const cv::Point2d places[] = {p, p + cv::Point2d(around, 0), p - cv::Point2d(around, 0),
                                      p + cv::Point2d(0, around), p - cv::Point2d(0, around)};
        if (std::all_of(std::begin(places), std::end(places),
                        [&](const cv::Point2d &place) { return isSeen(scene, pattern, place); })) {
            part.points.push_back(cv::Point(int(std::lround(p.x)), int(std::lround(p.y))) + pattern.coded.origin);
        }
    }
    part.squares = plate ? int(part.points.size()) : seenSquares(scene, pattern);
    return part;
}

}  // namespace reader_bench
