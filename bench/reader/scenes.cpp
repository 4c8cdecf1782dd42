#include "bench/reader/scenes.h"

#include <algorithm>
#include <cmath>

#include "bench/reader/dice.h"
#include "bench/reader/scene_parts.h"

namespace reader_bench {

namespace {

CodedTarget makeTarget(int type, double pixelsPerSquare, Dice &dice) {
    if (type < 2) {
        return makeTile(0, dice.random);
    }
    if (type < 4) {
        return makeTile(dice.whole(1, 18), dice.random);
    }
    if (type < 7) {
        const int greatest = std::clamp(int(1400 / pixelsPerSquare), 7, dice.chance(0.3) ? 91 : 31);
        const int width = dice.whole(5, greatest);
        const int height = dice.whole(5, greatest);
        return makeFlexible(width, height, dice.random);
    }
    return makePlate(dice.random);
}

ScenePattern makePattern(const CameraModel &camera, int type, cv::Point2d at, double pixelsPerSquare, Dice &dice) {
    ScenePattern pattern;
    pattern.pixelsPerSquare = pixelsPerSquare;
    pattern.coded = makeTarget(type, pixelsPerSquare, dice);
    const double tilt = dice.real(0, 60);
    pattern.tiltDegrees = tilt;
    pattern.placed.target = pattern.coded.target;
    pattern.placed.pose = makePose(camera, *pattern.coded.target, at, pixelsPerSquare, tilt * CV_PI / 180, dice);
    pattern.placed.quietZone = dice.real(0.6, 2);
    pattern.placed.coverLevel = float(dice.real(10, 230));
    return pattern;
}

void takePicture(Scene &scene, const cv::Size &size, double pixelsPerSquare, Dice &dice) {
    scene.exposure = makeExposure(pixelsPerSquare, dice);
    takePicture(scene, makeBackground(size, dice), dice);
}

Scene makeSinglePattern(int type, Marks marks, Dice &dice) {
    Scene scene;
    scene.marks = marks;
    const double pixelsPerSquare = dice.logarithmic(4, 40);
    scene.camera.focalLength = dice.real(900, 2200);
    scene.camera.k1 = dice.real(-0.2, 0.1);
    scene.camera.k2 = dice.real(-0.05, 0.05);
    ScenePattern pattern =
        makePattern(scene.camera, type, {dice.real(-150, 150), dice.real(-150, 150)}, pixelsPerSquare, dice);
    const cv::Rect2d bounds = boundsOf(scene, pattern);
    const double border = dice.real(4, 20);
    cv::Rect window(cv::Point(bounds.tl() - cv::Point2d(border + dice.real(0, 200), border + dice.real(0, 200))),
                    cv::Point(bounds.br() + cv::Point2d(border + dice.real(0, 200), border + dice.real(0, 200))));
    window.width = std::max(window.width, 320);
    window.height = std::max(window.height, 240);
    const double part = dice.real(0, 1);
    pattern.visibility = part < 0.4 ? Visibility::Whole : part < 0.8 ? Visibility::Covered : Visibility::CutByBorder;
    if (pattern.visibility == Visibility::Covered) {
        pattern.placed.cover = coverQuarter(pattern.coded.target->size(), dice);
    } else if (pattern.visibility == Visibility::CutByBorder) {
        window += cutQuarter(scene, pattern, window, dice);
    }
    scene.patterns.push_back(pattern);
    moveOrigin(scene, window.tl());
    takePicture(scene, window.size(), pixelsPerSquare, dice);
    return scene;
}

// Makes a picture of up to four patterns beside each other. All of them are completely visible.
Scene makeSeveralPatterns(Dice &dice) {
    Scene scene;
    const double pixelsPerSquare = dice.logarithmic(4, 16);
    const int columns = 2;
    const int rows = dice.whole(1, 2);
    const double cell = pixelsPerSquare * 26;
    const cv::Size size(int(columns * cell * 1.1), int(rows * cell * 1.1));
    scene.camera.focalLength = size.width * dice.real(1.2, 2.0);
    scene.camera.centre = {size.width / 2.0, size.height / 2.0};
    scene.camera.k1 = dice.real(-0.15, 0.1);
    for (int i = 0; i < columns * rows; i++) {
        const int row = i / columns;
        const cv::Point2d at((i % columns + 0.55) * cell, (row + 0.55) * cell);
        static constexpr int types[] = {0, 2, 3, 7};
        ScenePattern pattern =
            makePattern(scene.camera, types[size_t((i + dice.whole(0, 1) * 2) % 4)], at, pixelsPerSquare, dice);
        pattern.tiltDegrees = std::min(pattern.tiltDegrees, 60.0);
        const cv::Rect2d bounds = boundsOf(scene, pattern);
        const bool apart = std::none_of(scene.patterns.begin(), scene.patterns.end(), [&](const ScenePattern &other) {
            return (boundsOf(scene, other) & bounds).area() > 0 ||
                   (other.coded.kind == pattern.coded.kind && other.coded.tile == pattern.coded.tile);
        });
        const cv::Rect2d frame(3, 3, size.width - 6, size.height - 6);
        if (apart && (bounds & frame).area() > bounds.area() - 1) {
            scene.patterns.push_back(pattern);
        }
    }
    takePicture(scene, size, pixelsPerSquare, dice);
    return scene;
}

}  // namespace

Scene makeScene(unsigned number, Marks marks) {
    Dice dice(number * 7919 + 17);
    static constexpr int types[] = {0, 0, 2, 2, 4, 4, 4, -1, 7, 7};
    const int type = types[number % 10];
    return type < 0 ? makeSeveralPatterns(dice) : makeSinglePattern(type, marks, dice);
}

}  // namespace reader_bench
