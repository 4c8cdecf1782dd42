#include "bench/reader/scene_parts.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

namespace reader_bench {

cv::Mat blobs(const cv::Size &size, double grain, Dice &dice) {
    const cv::Size coarse(std::max(2, int(size.width / grain)), std::max(2, int(size.height / grain)));
    cv::Mat noise(coarse, CV_32F);
    cv::RNG source(dice.random());
    source.fill(noise, cv::RNG::UNIFORM, 0, 255);
    cv::resize(noise, noise, size, 0, 0, cv::INTER_CUBIC);
    return noise;
}

cv::Mat makeBackground(const cv::Size &size, Dice &dice) {
    cv::Mat picture(size, CV_32F, cv::Scalar(dice.real(40, 200)));
    switch (dice.whole(0, 3)) {
        case 0:
            break;
        case 1:
            picture = 0.7 * picture + 0.3 * blobs(size, dice.real(2, 60), dice);
            break;
        case 2:
            for (int i = dice.whole(5, 60); i > 0; i--) {
                const cv::Point a(dice.whole(-100, size.width), dice.whole(-100, size.height));
                const cv::Rect box(a, cv::Size(dice.whole(5, 300), dice.whole(5, 300)));
                cv::rectangle(picture, box, cv::Scalar(dice.real(10, 240)), cv::FILLED);
            }
            break;
        default:
            for (int i = dice.whole(5, 80); i > 0; i--) {
                const cv::Point a(dice.whole(0, size.width), dice.whole(0, size.height));
                const cv::Point b(dice.whole(0, size.width), dice.whole(0, size.height));
                cv::line(picture, a, b, cv::Scalar(dice.real(10, 240)), dice.whole(1, 8), cv::LINE_AA);
            }
    }
    return picture;
}

Exposure makeExposure(double pixelsPerSquare, Dice &dice) {
    Exposure exposure;
    exposure.paperLevel = float(dice.real(130, 225));
    exposure.inkLevel = float(dice.real(10, 60));
    exposure.blurSigma = dice.real(0.3, std::clamp(0.12 * pixelsPerSquare, 0.7, 2.0));
    exposure.noiseSigma = dice.real(0, 5);
    exposure.lightSlope = {dice.real(-0.4, 0.4), dice.real(-0.4, 0.4)};
    exposure.vignette = dice.real(0, 0.3);
    exposure.jpegQuality = dice.chance(0.4) ? dice.whole(60, 95) : 0;
    return exposure;
}

cv::Matx33d rotationBy(const cv::Vec3d &axis) {
    cv::Matx33d rotation;
    cv::Rodrigues(axis, rotation);
    return rotation;
}

TargetPose makePose(const CameraModel &camera, const SyntheticTarget &target, cv::Point2d at, double pixelsPerSquare,
                    double tilt, Dice &dice) {
    TargetPose pose;
    const double direction = dice.real(0, 2 * CV_PI);
    pose.rotation = rotationBy(cv::Vec3d(std::cos(direction), std::sin(direction), 0) * tilt) *
                    rotationBy({0, 0, dice.real(-CV_PI, CV_PI)});
    pose.anchor = {target.size().width / 2, target.size().height / 2};
    const double depth = camera.focalLength / (pixelsPerSquare / std::sqrt(std::cos(tilt)));
    pose.translation =
        cv::Vec3d((at.x - camera.centre.x) / camera.focalLength, (at.y - camera.centre.y) / camera.focalLength, 1) *
        depth;
    return pose;
}

Cover coverQuarter(const cv::Size2d &size, Dice &dice) {
    const double w = size.width;
    const double h = size.height;
    switch (dice.whole(0, 3)) {
        case 0: {
            const double share = dice.real(0.3, 0.8);
            const double cw = share * w;
            const double ch = 0.25 / share * h;
            const bool right = dice.chance(0.5);
            const bool low = dice.chance(0.5);
            return [=](double x, double y) { return (right ? w - x : x) < cw && (low ? h - y : y) < ch; };
        }
        case 1: {
            const int edge = dice.whole(0, 3);
            return [=](double x, double y) {
                const double d[] = {x / w, 1 - x / w, y / h, 1 - y / h};
                return d[edge] < 0.25;
            };
        }
        case 2: {
            const double from = dice.real(0.1, 0.65);
            const bool across = dice.chance(0.5);
            return [=](double x, double y) {
                const double d = across ? x / w : y / h;
                return d >= from && d < from + 0.25;
            };
        }
        default: {
            const double stretch = dice.real(0.7, 1.4);
            const double a = std::sqrt(0.25 / CV_PI) * stretch;
            const double b = std::sqrt(0.25 / CV_PI) / stretch;
            const cv::Point2d c(dice.real(a, 1 - a), dice.real(b, 1 - b));
            return [=](double x, double y) {
                const double u = (x / w - c.x) / a;
                const double v = (y / h - c.y) / b;
                return u * u + v * v < 1;
            };
        }
    }
}

namespace {

// Returns the share of the pattern's area that would be in the picture if the picture showed the window.
double shareInside(const Scene &scene, const ScenePattern &pattern, const cv::Rect &window) {
    const cv::Size2d extent = pattern.coded.target->size();
    int inside = 0;
    constexpr int steps = 24;
    for (int i = 0; i < steps * steps; i++) {
        const int row = i / steps;
        const cv::Point2d p((i % steps + 0.5) / steps * extent.width, (row + 0.5) / steps * extent.height);
        const cv::Point2d q = scene.imageOf(pattern, p);
        inside += cv::Rect2d(window).contains(q) ? 1 : 0;
    }
    return double(inside) / (steps * steps);
}

}  // namespace

cv::Rect2d boundsOf(const Scene &scene, const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    const double q = pattern.placed.quietZone;
    // Points between the edges are included too. If the paper is bent, such a point may lie beyond the edges in the
    // picture.
    constexpr int steps = 16;
    cv::Rect2d bounds;
    for (int row = 0; row <= steps; row++) {
        for (int column = 0; column <= steps; column++) {
            const cv::Point2d p(-q + column * (size.width + 2 * q) / steps, -q + row * (size.height + 2 * q) / steps);
            const cv::Point2d at = scene.imageOf(pattern, p);
            const cv::Rect2d one(at.x - 1, at.y - 1, 2, 2);
            bounds = bounds.empty() ? one : bounds | one;
        }
    }
    return bounds;
}

cv::Point cutQuarter(const Scene &scene, const ScenePattern &pattern, cv::Rect window, Dice &dice) {
    const double direction = dice.real(0, 2 * CV_PI);
    const cv::Point2d step(std::cos(direction), std::sin(direction));
    cv::Point shift;
    for (int i = 0; i < 4000; i++) {
        shift = cv::Point(int(step.x * i), int(step.y * i));
        if (shareInside(scene, pattern, window + shift) < 0.76) {
            break;
        }
    }
    return shift;
}

void moveOrigin(Scene &scene, cv::Point origin) {
    scene.camera.centre -= cv::Point2d(origin);
    for (ScenePattern &pattern : scene.patterns) {
        pattern.placed.pose.middleRow -= origin.y;
    }
}

namespace {

std::shared_ptr<const SyntheticTarget> withoutMarks(const CodedTarget &coded) {
    if (coded.kind == pattern_reader::PatternKind::Plate) {
        return coded.target;
    }
    const cv::Size2d size = coded.target->size();
    return std::make_shared<CheckerTarget>(int(std::lround(size.width)), int(std::lround(size.height)),
                                           std::vector<int>(), coded.topLeftDark, coded.target->print());
}

}  // namespace

void takePicture(Scene &scene, const cv::Mat &background, Dice &dice) {
    std::vector<PlacedTarget> placed;
    for (const ScenePattern &pattern : scene.patterns) {
        placed.push_back(pattern.placed);
        if (scene.marks == Marks::LeftOut) {
            placed.back().target = withoutMarks(pattern.coded);
        }
    }
    scene.image = photograph(background, scene.camera, placed, scene.exposure, dice.random);
    if (scene.mirrored) {
        cv::flip(scene.image, scene.image, 1);
    }
    if (scene.image.channels() == 3) {
        scene.colour = scene.image;
        cv::cvtColor(scene.colour, scene.image, cv::COLOR_BGR2GRAY);
    }
}

}  // namespace reader_bench
