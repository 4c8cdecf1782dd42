#include "bench/reader/scene_draft.h"

#include <algorithm>
#include <cmath>

#include "bench/reader/scene_parts.h"

namespace reader_bench {

namespace {

constexpr double degree = CV_PI / 180;

CodedTarget makeTarget(const SceneDraft &draft, Dice &dice) {
    if (draft.plate) {
        return makePlate(dice.random, draft.print);
    }
    if (!draft.flexibleCorners.empty()) {
        return makeFlexible(draft.flexibleCorners.width, draft.flexibleCorners.height, dice.random, draft.print);
    }
    return makeTile(dice.chance(0.5) ? 0 : dice.whole(1, 18), dice.random, draft.print);
}

// Returns the approximate length of the pattern's diagonal in pixels, before the pattern is tilted. The tilt
// multiplies one side of each square by the cosine of the tilt angle. `pixelsPerSquare` is the geometric mean of both
// sides after the tilt. So it is the side before the tilt times the square root of the cosine.
double extentOf(const SceneDraft &draft, const SyntheticTarget &target) {
    return std::hypot(target.size().width, target.size().height) * draft.pixelsPerSquare /
           std::sqrt(std::cos(draft.tiltDegrees * degree));
}

CameraModel makeCamera(const SceneDraft &draft, double extent, Dice &dice) {
    CameraModel camera;
    camera.fisheye = draft.fisheye;
    if (draft.fisheye) {
        camera.focalLength = extent / draft.viewShare;
        camera.fisheyeTerms = {dice.real(-0.05, 0.05), dice.real(-0.005, 0.005)};
        return camera;
    }
    // The squares have a given size in pixels, so a longer focal length means a more distant camera. The camera must be
    // so distant that the far side of a steeply tilted pattern does not become too small.
    const double depth = extent * std::sin(draft.tiltDegrees * degree);
    camera.focalLength = std::max({dice.real(900, 2200), 0.9 * extent, dice.real(1.2, 2.5) * depth});
    if (draft.viewShare > 0) {
        camera.focalLength = std::max(extent / draft.viewShare, 1.2 * depth);
    }
    const double farthest = (extent / 2 + 200) / camera.focalLength;
    camera.k1 = draft.distortion / (farthest * farthest);
    return camera;
}

// The side of a square in the pattern's middle, in pixels: the geometric mean of the sides along x and along y.
double middleSquare(const Scene &scene, const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    return std::sqrt(std::abs(cv::determinant(scene.stepsAt(pattern, {size.width / 2, size.height / 2}))));
}

// Returns the greatest angle between the camera's axis and a ray to the paper, in radians; pi if the camera would see
// the back of the paper, or the front at too flat an angle.
double widestAngle(const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    const TargetPose &pose = pattern.placed.pose;
    const double q = pattern.placed.quietZone;
    double widest = 0;
    for (int i = 0; i < 25; i++) {
        const int row = i / 5;
        const cv::Point2d p(-q + i % 5 * (size.width + 2 * q) / 4, -q + row * (size.height + 2 * q) / 4);
        const cv::Vec3d ray = pose.rotation * cv::Vec3d(p.x - pose.anchor.x, p.y - pose.anchor.y, 0) + pose.translation;
        const double facing = ray.dot(pose.rotation * cv::Vec3d(0, 0, 1)) / cv::norm(ray);
        widest = std::max(widest, facing > 0.15 ? std::atan2(std::hypot(ray[0], ray[1]), ray[2]) : CV_PI);
    }
    return widest;
}

// Places the pattern away from the axis of a fisheye lens, but so that all of it is less than 90° from the axis. If no
// such place is found, the pattern is placed on the axis and faces the camera without tilt.
void placeBeforeFisheye(Scene &scene, ScenePattern &pattern, const SceneDraft &draft, Dice &dice) {
    TargetPose &pose = pattern.placed.pose;
    pose.anchor = {pattern.coded.target->size().width / 2, pattern.coded.target->size().height / 2};
    double farthest = 80 * degree;
    for (int attempt = 0; attempt < 60; attempt++) {
        const double offAxis = dice.real(0.3 * farthest, farthest);
        const double towards = dice.real(0, 2 * CV_PI);
        const cv::Vec3d axis(-std::sin(towards), std::cos(towards), 0);
        const cv::Matx33d look = rotationBy(axis * offAxis);
        const double direction = dice.real(0, 2 * CV_PI);
        pose.rotation =
            look * rotationBy(cv::Vec3d(std::cos(direction), std::sin(direction), 0) * (draft.tiltDegrees * degree)) *
            rotationBy({0, 0, dice.real(-CV_PI, CV_PI)});
        double distance = scene.camera.focalLength / draft.pixelsPerSquare;
        for (int i = 0; i < 8; i++) {
            pose.translation = look * cv::Vec3d(0, 0, distance);
            distance *= middleSquare(scene, pattern) / draft.pixelsPerSquare;
        }
        if (widestAngle(pattern) < 90 * degree) {
            return;
        }
        farthest *= 0.95;
    }
    pose.rotation = cv::Matx33d::eye();
    pose.translation = {0, 0, scene.camera.focalLength / draft.pixelsPerSquare};
}

ScenePattern placePattern(Scene &scene, const SceneDraft &draft, CodedTarget coded, Dice &dice) {
    ScenePattern pattern;
    pattern.coded = std::move(coded);
    pattern.pixelsPerSquare = draft.pixelsPerSquare;
    pattern.tiltDegrees = draft.tiltDegrees;
    PlacedTarget &placed = pattern.placed;
    placed.target = pattern.coded.target;
    placed.quietZone = draft.quietZone;
    placed.coverLevel = float(dice.real(10, 230));
    const cv::Point2d at(dice.real(-150, 150), dice.real(-150, 150));
    if (draft.fisheye) {
        placeBeforeFisheye(scene, pattern, draft, dice);
    } else {
        placed.pose =
            makePose(scene.camera, *placed.target, at, draft.pixelsPerSquare, draft.tiltDegrees * degree, dice);
    }
    const cv::Size2d size = placed.target->size();
    if (draft.sheet) {
        placed.pose.sheet = std::make_shared<PaperSheet>(*draft.sheet, std::hypot(size.width, size.height) / 2 + 3);
    }
    placed.pose.middleRow = scene.imageOf(pattern, cv::Point2d(size.width / 2, size.height / 2)).y;
    placed.pose.turnPerRow = draft.turnPerRow;
    placed.pose.shiftPerRow = draft.shiftPerRow * (placed.pose.translation[2] / scene.camera.focalLength);
    return pattern;
}

// Chooses the picture's window: the pattern and some of its surroundings. If the draft says so (`cutQuarter`), the
// window is moved and cuts off about a quarter of the pattern. If the picture would have more pixels than the draft
// allows, only the middle part of the window remains, which may cut the pattern, too.
cv::Rect chooseWindow(const Scene &scene, const ScenePattern &pattern, const SceneDraft &draft, Dice &dice) {
    const cv::Rect2d bounds = boundsOf(scene, pattern);
    const auto border = [&] { return dice.real(4, 20) + dice.real(0, std::min(200.0, 0.3 * bounds.width)); };
    const cv::Point2d before(border(), border());
    const cv::Point2d after(border(), border());
    cv::Rect window(cv::Point(bounds.tl() - before), cv::Point(bounds.br() + after));
    window.width = std::max(window.width, 320);
    window.height = std::max(window.height, 240);
    if (draft.cutQuarter) {
        window += cutQuarter(scene, pattern, window, dice);
    }
    const double shrink = std::sqrt(std::min(1.0, draft.megapixels * 1e6 / (double(window.width) * window.height)));
    const cv::Size size(int(window.width * shrink), int(window.height * shrink));
    window += cv::Point((window.width - size.width) / 2, (window.height - size.height) / 2);
    return {window.tl(), size};
}

// Returns the least distance between neighbouring lattice lines at 25 places on the pattern, in pixels. The result is
// at most the pattern's `pixelsPerSquare`.
double leastStepOf(const Scene &scene, const ScenePattern &pattern) {
    const cv::Size2d size = pattern.coded.target->size();
    double least = pattern.pixelsPerSquare;
    for (int i = 0; i < 25; i++) {
        const int row = i / 5;
        const cv::Matx22d steps = scene.stepsAt(pattern, {i % 5 * size.width / 4, row * size.height / 4});
        const double longest = std::max(std::hypot(steps(0, 0), steps(1, 0)), std::hypot(steps(0, 1), steps(1, 1)));
        least = std::min(least, std::abs(cv::determinant(steps)) / longest);
    }
    return least;
}

}  // namespace

SceneDraft makeDraft(bool plate, Dice &dice) {
    SceneDraft draft;
    draft.plate = plate;
    draft.pixelsPerSquare = dice.logarithmic(8, 40);
    if (!plate && dice.chance(0.5)) {
        const int greatest = std::clamp(int(900 / draft.pixelsPerSquare), 8, 40);
        draft.flexibleCorners = {dice.whole(7, greatest), dice.whole(7, greatest)};
    }
    draft.tiltDegrees = dice.real(0, 45);
    draft.quietZone = dice.real(0.6, 2);
    draft.distortion = dice.real(-0.06, 0.04);
    Exposure &exposure = draft.exposure;
    exposure.paperLevel = float(dice.real(150, 215));
    exposure.inkLevel = float(dice.real(10, 50));
    exposure.blurSigma = dice.real(0.4, 1.0);
    exposure.noiseSigma = dice.real(0.7, 2.5);
    exposure.lightSlope = {dice.real(-0.2, 0.2), dice.real(-0.2, 0.2)};
    exposure.vignette = dice.real(0, 0.2);
    return draft;
}

ComposedScene compose(const SceneDraft &draft, Dice &dice) {
    ComposedScene composed;
    Scene &scene = composed.scene;
    CodedTarget coded = makeTarget(draft, dice);
    scene.camera = makeCamera(draft, extentOf(draft, *coded.target), dice);
    scene.exposure = draft.exposure;
    scene.mirrored = draft.mirrored;
    ScenePattern pattern = placePattern(scene, draft, std::move(coded), dice);
    if (draft.coverQuarter) {
        pattern.placed.cover = coverQuarter(pattern.coded.target->size(), dice);
        pattern.visibility = Visibility::Covered;
    }
    const cv::Rect window = chooseWindow(scene, pattern, draft, dice);
    composed.size = window.size();
    scene.patterns.push_back(pattern);
    moveOrigin(scene, window.tl());
    composed.leastStep = leastStepOf(scene, scene.patterns.front());
    const cv::Rect2d bounds = boundsOf(scene, scene.patterns.front());
    composed.bounds = bounds & cv::Rect2d({0, 0}, cv::Size2d(composed.size));
    if (draft.cutQuarter || composed.bounds.area() < 0.99 * bounds.area()) {
        scene.patterns.front().visibility = Visibility::CutByBorder;
    }
    return composed;
}

}  // namespace reader_bench
