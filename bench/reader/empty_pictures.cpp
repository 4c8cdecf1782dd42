#include "bench/reader/empty_pictures.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "bench/reader/dice.h"
#include "bench/reader/scene_parts.h"
#include "bench/reader/unrelated_targets.h"

namespace reader_bench {

std::string nameOf(EmptyKind kind) {
    static const char *const names[emptyKindCount] = {"textures",
                                                      "text",
                                                      "plain checkerboards",
                                                      "random dots",
                                                      "lines and grids",
                                                      "boards with random marks",
                                                      "perforated sheets",
                                                      "nets",
                                                      "grids of round marks",
                                                      "random squares"};
    return names[int(kind)];
}

namespace {

// Returns the exposure from makeExposure with further random faults: JPEG compression, sharpening, a changed tone
// curve, motion blur, defocus and strong noise. JPEG compression has a probability of 30 %, and each of the other
// faults has a probability of 20 %. So about a quarter of the pictures get none of these further faults.
Exposure anyExposure(double pixels, Dice &dice) {
    Exposure exposure = makeExposure(pixels, dice);
    if (dice.chance(0.3)) {
        exposure.jpegQuality = dice.whole(5, 95);
    }
    if (dice.chance(0.2)) {
        exposure.sharpening = dice.real(0.5, 2.5);
    }
    if (dice.chance(0.2)) {
        exposure.toneGain = dice.real(0.5, 2);
        exposure.toneGamma = dice.real(1.4, 2.6);
    }
    if (dice.chance(0.2)) {
        exposure.motion = {dice.real(-0.3, 0.3) * pixels, dice.real(-0.3, 0.3) * pixels};
    }
    if (dice.chance(0.2)) {
        exposure.defocusRadius = dice.real(0, 0.3) * pixels;
    }
    if (dice.chance(0.2)) {
        exposure.noiseSigma = dice.real(5, 15);
    }
    return exposure;
}

cv::Mat photographOf(const Target &target, const cv::Size &size, Dice &dice) {
    Scene scene;
    scene.camera.focalLength = size.width * dice.real(1.0, 2.0);
    scene.camera.centre = {size.width / 2.0, size.height / 2.0};
    scene.camera.k1 = dice.real(-0.2, 0.1);
    ScenePattern pattern;
    pattern.placed.target = target;
    const double fit = 0.8 * size.height / std::max(target->size().width, target->size().height);
    const double pixels = std::clamp(dice.real(0.5, 1.2) * fit, 4.0, 40.0);
    pattern.placed.pose = makePose(scene.camera, *target, scene.camera.centre, pixels, dice.real(0, 1), dice);
    scene.exposure = anyExposure(pixels, dice);
    scene.patterns.push_back(pattern);
    const cv::Mat background = makeBackground(size, dice);
    takePicture(scene, background, dice);
    return scene.image;
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
    // Along each side, a perforated sheet has at most this many holes, and a net has at most this many openings.
    constexpr int most = 60;
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
            return photographOf(makeBoard(kind == EmptyKind::RandomMarks, dice), size, dice);
        case EmptyKind::PerforatedSheet:
            return photographOf(makePerforatedSheet(most, dice), size, dice);
        case EmptyKind::Net:
            return photographOf(makeNet(most, dice), size, dice);
        case EmptyKind::MarkGrid:
            return photographOf(makeMarkGrid(dice), size, dice);
        case EmptyKind::Modules:
            return photographOf(makeModules(dice), size, dice);
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
    return expose(picture, anyExposure(12, dice), dice.random);
}

}  // namespace reader_bench
