#include "bench/reader/empty_pictures.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "bench/reader/dice.h"
#include "bench/reader/scene_parts.h"

namespace reader_bench {

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
