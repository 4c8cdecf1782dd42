#include "bench/reader/scenes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

namespace reader_bench {

namespace {

class Dice {
public:
    explicit Dice(unsigned seed) : random(seed) {}
    double real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
    bool chance(double probability) { return real(0, 1) < probability; }

    std::mt19937 random;
};

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

// Rolls the target, then tilts it about an axis in the image plane, and stands it where its middle is seen at `at`
// with the given size of a square.
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

// A cover over a quarter of the pattern: a corner, a strip along a side, a strip across, or an ellipse.
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

// The part of the pattern's points that the picture shows.
double shareInside(const Scene &scene, const ScenePattern &pattern, const cv::Size &size) {
    const cv::Size2d extent = pattern.coded.target->size();
    int inside = 0;
    constexpr int steps = 24;
    for (int i = 0; i < steps * steps; i++) {
        const int row = i / steps;
        const cv::Point2d p((i % steps + 0.5) / steps * extent.width, (row + 0.5) / steps * extent.height);
        const cv::Point2d q = projectPoint(scene.camera, pattern.placed.pose, p);
        inside += q.x >= 0 && q.y >= 0 && q.x < size.width && q.y < size.height ? 1 : 0;
    }
    return double(inside) / (steps * steps);
}

cv::Rect2d boundsOf(const Scene &scene, const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    const double q = pattern.placed.quietZone;
    cv::Rect2d bounds;
    for (int i = 0; i <= 10; i++) {
        const double t = i / 10.0;
        const double x = -q + t * (size.width + 2 * q);
        const double y = -q + t * (size.height + 2 * q);
        for (const cv::Point2d &p : {cv::Point2d(x, -q), cv::Point2d(x, size.height + q), cv::Point2d(-q, y),
                                     cv::Point2d(size.width + q, y)}) {
            const cv::Point2d at = projectPoint(scene.camera, pattern.placed.pose, p);
            const cv::Rect2d one(at.x - 1, at.y - 1, 2, 2);
            bounds = bounds.empty() ? one : bounds | one;
        }
    }
    return bounds;
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

// Moves the picture's window over a pattern until a quarter of it is outside.
cv::Point cutQuarter(const Scene &scene, const ScenePattern &pattern, cv::Rect window, Dice &dice) {
    const double direction = dice.real(0, 2 * CV_PI);
    const cv::Point2d step(std::cos(direction), std::sin(direction));
    cv::Point shift;
    for (int i = 0; i < 4000; i++) {
        shift = cv::Point(int(step.x * i), int(step.y * i));
        Scene moved = scene;
        moved.camera.centre -= cv::Point2d(window.tl() + shift);
        if (shareInside(moved, pattern, window.size()) < 0.76) {
            break;
        }
    }
    return shift;
}

void moveCamera(Scene &scene, cv::Point shift) {
    scene.camera.centre -= cv::Point2d(shift);
}

void takePicture(Scene &scene, const cv::Size &size, double pixelsPerSquare, Dice &dice) {
    std::vector<PlacedTarget> placed;
    for (const ScenePattern &pattern : scene.patterns) {
        placed.push_back(pattern.placed);
    }
    scene.image =
        photograph(makeBackground(size, dice), scene.camera, placed, makeExposure(pixelsPerSquare, dice), dice.random);
}

double logUniform(double low, double high, Dice &dice) {
    return std::exp(dice.real(std::log(low), std::log(high)));
}

Scene makeSinglePattern(int type, Dice &dice) {
    Scene scene;
    const double pixelsPerSquare = logUniform(4, 40, dice);
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
    moveCamera(scene, window.tl());
    takePicture(scene, window.size(), pixelsPerSquare, dice);
    return scene;
}

// Two to four patterns beside each other, all seen whole.
Scene makeSeveralPatterns(Dice &dice) {
    Scene scene;
    const double pixelsPerSquare = logUniform(4, 16, dice);
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

cv::Point2d Scene::imageOf(const ScenePattern &pattern, const cv::Point &lattice) const {
    return projectPoint(camera, pattern.placed.pose, cv::Point2d(lattice - pattern.coded.origin));
}

Scene makeScene(unsigned number) {
    Dice dice(number * 7919 + 17);
    static constexpr int types[] = {0, 0, 2, 2, 4, 4, 4, -1, 7, 7};
    const int type = types[number % 10];
    return type < 0 ? makeSeveralPatterns(dice) : makeSinglePattern(type, dice);
}

std::string nameOf(EmptyKind kind) {
    static const char *const names[] = {
        "textures", "text", "plain checkerboards", "random dots", "lines and grids", "boards with random marks"};
    return names[int(kind)];
}

namespace {

cv::Mat board(const cv::Size &size, bool marked, Dice &dice) {
    CameraModel camera;
    camera.focalLength = size.width * dice.real(1.0, 2.0);
    camera.centre = {size.width / 2.0, size.height / 2.0};
    camera.k1 = dice.real(-0.2, 0.1);
    const int columns = dice.whole(6, 40);
    const int rows = dice.whole(6, 40);
    std::vector<int> marks;
    marks.reserve(size_t(columns) * size_t(rows));
    for (int i = 0; i < columns * rows; i++) {
        marks.push_back(marked ? dice.whole(0, 1) : 0);
    }
    PlacedTarget placed;
    placed.target = std::make_shared<CheckerTarget>(columns, rows, marks, dice.chance(0.5));
    const double fit = 0.8 * size.height / std::max(columns, rows);
    const double pixels = std::clamp(dice.real(0.5, 1.2) * fit, 4.0, 40.0);
    placed.pose = makePose(camera, *placed.target, camera.centre, pixels, dice.real(0, 1), dice);
    return photograph(makeBackground(size, dice), camera, {placed}, makeExposure(pixels, dice), dice.random);
}

void writeText(cv::Mat &picture, Dice &dice) {
    picture = dice.real(150, 240);
    const double scale = dice.real(0.3, 1.5);
    double y = 10;
    while (y < picture.rows + 40) {
        std::string line;
        for (int i = 0; i < 120; i++) {
            line += dice.chance(0.15) ? ' ' : char(dice.whole(33, 126));
        }
        cv::putText(picture, line, cv::Point(5, int(y)), dice.whole(0, 3), scale, cv::Scalar(dice.real(0, 60)),
                    dice.whole(1, 2), cv::LINE_AA);
        y += 30 * scale;
    }
}

void drawLattice(cv::Mat &picture, Dice &dice) {
    const double pitch = dice.real(5, 40);
    const double angle = dice.real(0, CV_PI);
    const cv::Point2d u(std::cos(angle) * pitch, std::sin(angle) * pitch);
    const cv::Point2d v(-u.y * dice.real(0.5, 1.2), u.x * dice.real(0.5, 1.2));
    const cv::Scalar level(dice.real(0, 255));
    const bool lines = dice.chance(0.5);
    for (int j = -150; j <= 150; j++) {
        for (int i = -150; i <= 150; i++) {
            const cv::Point2d p = cv::Point2d(picture.cols / 2.0, picture.rows / 2.0) + u * i + v * j;
            if (!cv::Rect2d(-40, -40, picture.cols + 80, picture.rows + 80).contains(p)) {
                continue;
            }
            if (lines) {
                cv::line(picture, cv::Point(p), cv::Point(p + u), level, 2, cv::LINE_AA);
                cv::line(picture, cv::Point(p), cv::Point(p + v), level, 2, cv::LINE_AA);
            } else if (dice.chance(0.7)) {
                cv::circle(picture, cv::Point(p), int(0.3 * pitch), level, cv::FILLED, cv::LINE_AA);
            }
        }
    }
}

}  // namespace

cv::Mat makeEmptyPicture(EmptyKind kind, unsigned number) {
    Dice dice(number * 104729 + unsigned(kind) * 31 + 5);
    const cv::Size size(dice.whole(320, 1000), dice.whole(240, 800));
    cv::Mat picture(size, CV_32F, cv::Scalar(dice.real(60, 220)));
    switch (kind) {
        case EmptyKind::Texture:
            picture =
                blobs(size, dice.real(1, 30), dice) * dice.real(0.2, 0.8) + blobs(size, dice.real(1, 90), dice) * 0.2;
            break;
        case EmptyKind::Text:
            writeText(picture, dice);
            break;
        case EmptyKind::PlainBoard:
        case EmptyKind::RandomMarks:
            return board(size, kind == EmptyKind::RandomMarks, dice);
        case EmptyKind::Dots:
            for (int i = dice.whole(100, 4000); i > 0; i--) {
                cv::circle(picture, {dice.whole(0, size.width), dice.whole(0, size.height)}, dice.whole(1, 12),
                           cv::Scalar(dice.real(0, 255)), cv::FILLED, cv::LINE_AA);
            }
            break;
        case EmptyKind::Lattice:
            drawLattice(picture, dice);
            break;
    }
    return expose(picture, makeExposure(12, dice), dice.random);
}

}  // namespace reader_bench
