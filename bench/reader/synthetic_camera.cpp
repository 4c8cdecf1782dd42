#include "bench/reader/synthetic_camera.h"

#include <algorithm>
#include <cmath>

namespace reader_bench {

namespace {

cv::Matx33d rotationBy(const cv::Vec3d &axis) {
    const double angle = cv::norm(axis);
    if (angle == 0) {
        return cv::Matx33d::eye();
    }
    const cv::Vec3d n = axis / angle;
    const cv::Matx33d cross(0, -n[2], n[1], n[2], 0, -n[0], -n[1], n[0], 0);
    return cv::Matx33d::eye() + std::sin(angle) * cross + (1 - std::cos(angle)) * (cross * cross);
}

// The pose of the target at the moment when one row of the picture is read.
struct Moment {
    cv::Matx33d rotation;
    cv::Vec3d translation;
};

Moment momentAt(const TargetPose &pose, double y) {
    const double rows = y - pose.middleRow;
    const cv::Matx33d turn = rotationBy(pose.turnPerRow * rows);
    return {turn * pose.rotation, turn * pose.translation + pose.shiftPerRow * rows};
}

bool isMoving(const TargetPose &pose) {
    return pose.turnPerRow != cv::Vec3d() || pose.shiftPerRow != cv::Vec3d();
}

// Finds the points of the target's plane that are seen in the picture, one row after the other. If the paper is flat
// and a ray does not meet its plane in front of the camera, the coordinates are about `nowhere`.
class PaperFinder {
public:
    PaperFinder(const CameraModel &camera, const TargetPose &pose)
        : lens(camera), targetPose(pose), current(momentAt(pose, pose.middleRow)), moves(isMoving(pose)) {
        prepare();
    }

    // Finds what is seen at (left, y), (left + 1, y) and so on.
    void findRow(double left, double y, std::vector<cv::Point2d> &row) {
        if (moves) {
            current = momentAt(targetPose, y);
            prepare();
        }
        double start = firstStart;
        for (size_t i = 0; i < row.size(); i++) {
            const cv::Vec3d ray = toBoard * rayOf(lens, {left + double(i), y});
            row[i] = targetPose.anchor;
            if (targetPose.sheet) {
                row[i] += targetPose.sheet->hit(origin, ray, start);
                firstStart = i == 0 ? start : firstStart;
            } else {
                const double length = -origin[2] / ray[2];
                row[i] += length > 0 ? cv::Point2d(origin[0] + length * ray[0], origin[1] + length * ray[1])
                                     : cv::Point2d(nowhere, nowhere);
            }
        }
    }

    static constexpr double nowhere = 1e5;

private:
    void prepare() {
        toBoard = current.rotation.t();
        origin = -(toBoard * current.translation);
    }

    const CameraModel &lens;
    const TargetPose &targetPose;
    Moment current;
    bool moves;
    cv::Matx33d toBoard;
    cv::Vec3d origin;
    double firstStart = 0;  // where the search for the first point of the next row starts on a bent sheet
};

cv::Rect imageBounds(const CameraModel &camera, const PlacedTarget &placed, const cv::Size &image) {
    const cv::Size2d size = placed.target->size();
    const double q = placed.quietZone;
    constexpr int steps = 48;
    cv::Rect2d bounds;
    for (int i = 0; i <= steps * 4; i++) {
        const double t = double(i % steps) / steps;
        const double along[] = {t, 1, 1 - t, 0};
        const int side = i / steps % 4;
        const cv::Point2d p(-q + along[side] * (size.width + 2 * q),
                            -q + along[(side + 3) % 4] * (size.height + 2 * q));
        const cv::Point2d pixel = projectPoint(camera, placed.pose, p);
        const cv::Rect2d one(pixel.x - 3, pixel.y - 3, 6, 6);
        bounds = i == 0 ? one : bounds | one;
    }
    // The outline of a bent sheet may bulge beyond the points that were tested.
    const double slack = placed.pose.sheet ? 0.1 * std::max(bounds.width, bounds.height) : 0;
    bounds = cv::Rect2d(bounds.x - slack, bounds.y - slack, bounds.width + 2 * slack, bounds.height + 2 * slack) &
             cv::Rect2d(0, 0, image.width, image.height);
    const cv::Point end(int(std::ceil(bounds.x + bounds.width)), int(std::ceil(bounds.y + bounds.height)));
    return cv::Rect(cv::Point(int(bounds.x), int(bounds.y)), end) & cv::Rect({0, 0}, image);
}

// Returns the covered share of a pixel. Covers are much larger than pixels. So a pixel is taken as completely covered
// if all its corners are covered, and as not covered at all if none of them is. Other pixels are sampled.
double coveredShare(const Cover &cover, const Quad &quad) {
    int covered = 0;
    for (const cv::Point2d &p : quad) {
        covered += cover(p.x, p.y) ? 1 : 0;
    }
    if (covered == 0 || covered == 4) {
        return covered == 0 ? 0.0 : 1.0;
    }
    constexpr int samples = 5;
    covered = 0;
    for (int i = 0; i < samples * samples; i++) {
        const int line = i / samples;
        const double u = (i % samples + 0.5) / samples;
        const double v = (line + 0.5) / samples;
        const cv::Point2d p = (quad[0] * (1 - u) + quad[1] * u) * (1 - v) + (quad[3] * (1 - u) + quad[2] * u) * v;
        covered += cover(p.x, p.y) ? 1 : 0;
    }
    return double(covered) / (samples * samples);
}

float levelOf(const PlacedTarget &placed, const Exposure &exposure, const cv::Rect2d &paper, const Quad &quad,
              float behind) {
    const auto onPaper = [&](const cv::Point2d &p) {
        return p.x >= paper.x && p.y >= paper.y && p.x <= paper.x + paper.width && p.y <= paper.y + paper.height;
    };
    double paperShare = 1;
    if (!std::all_of(quad.begin(), quad.end(), onPaper)) {
        const double area = areaOf(quad);
        paperShare = area > 0 ? std::min(1.0, areaInRectangle(quad, paper) / area) : 0;
        if (paperShare == 0) {
            return behind;
        }
    }
    const double ink = std::min(paperShare, placed.target->inkShare(quad));
    double level = paperShare * exposure.paperLevel + ink * (exposure.inkLevel - exposure.paperLevel);
    if (placed.cover) {
        const double covered = coveredShare(placed.cover, quad) * paperShare;
        level += covered * (placed.coverLevel - level);
    }
    return float(level + (1 - paperShare) * behind);
}

void draw(cv::Mat &image, const CameraModel &camera, const PlacedTarget &placed, const Exposure &exposure) {
    const cv::Rect bounds = imageBounds(camera, placed, image.size());
    const cv::Size2d size = placed.target->size();
    const double q = placed.quietZone;
    const cv::Rect2d paper(-q, -q, size.width + 2 * q, size.height + 2 * q);
    // The points of the target that the corners of the pixels see.
    std::vector<cv::Point2d> upper(size_t(bounds.width) + 1);
    std::vector<cv::Point2d> lower(size_t(bounds.width) + 1);
    PaperFinder finder(camera, placed.pose);
    finder.findRow(bounds.x - 0.5, bounds.y - 0.5, lower);
    for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
        std::swap(upper, lower);
        finder.findRow(bounds.x - 0.5, y + 0.5, lower);
        auto *row = image.ptr<float>(y) + bounds.x;
        for (size_t i = 0; i < size_t(bounds.width); i++) {
            const Quad quad{upper[i], upper[i + 1], lower[i + 1], lower[i]};
            const bool seen = std::all_of(quad.begin(), quad.end(), [](const cv::Point2d &p) {
                return std::abs(p.x) < PaperFinder::nowhere / 2 && std::abs(p.y) < PaperFinder::nowhere / 2;
            });
            if (seen) {
                row[i] = levelOf(placed, exposure, paper, quad, row[i]);
            }
        }
    }
}

}  // namespace

cv::Point2d projectPoint(const CameraModel &camera, const TargetPose &pose, const cv::Point2d &point) {
    const cv::Point2d p = point - pose.anchor;
    const cv::Vec3d onBoard = pose.sheet ? pose.sheet->at(p) : cv::Vec3d(p.x, p.y, 0);
    cv::Point2d pixel = pixelOf(camera, pose.rotation * onBoard + pose.translation);
    if (isMoving(pose)) {
        // The pose depends on the row that sees the point, and the row depends on the pose. So the pixel is found by
        // iteration.
        for (int i = 0; i < 60; i++) {
            const Moment moment = momentAt(pose, pixel.y);
            const cv::Point2d before = pixel;
            pixel = pixelOf(camera, moment.rotation * onBoard + moment.translation);
            if (std::abs(pixel.y - before.y) < 1e-9) {
                break;
            }
        }
    }
    return pixel;
}

cv::Mat photograph(const cv::Mat &background, const CameraModel &camera, const std::vector<PlacedTarget> &targets,
                   const Exposure &exposure, std::mt19937 &random) {
    cv::Mat image = background.clone();
    for (const PlacedTarget &placed : targets) {
        draw(image, camera, placed, exposure);
    }
    return expose(image, exposure, random);
}

}  // namespace reader_bench
