#include "pattern_reader/reading_picture.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <string>

#include "pattern_reader/pattern_kind_name.h"

namespace pattern_reader {

namespace {

const cv::Scalar cornerColour(0, 140, 255);
const cv::Scalar xColour(40, 40, 230);
const cv::Scalar yColour(40, 180, 40);
const cv::Scalar textColour(230, 60, 160);

std::string nameOf(const PatternReading &reading) {
    const std::string kind = nameOf(reading.kind);
    return reading.kind == PatternKind::Tile ? kind + " " + std::to_string(reading.tile) : kind;
}

std::string words(const PatternReading &reading) {
    std::string text = nameOf(reading);
    if (reading.kind == PatternKind::Plane && !reading.corners.empty()) {
        const cv::Point p = reading.corners.front().lattice;
        text += cv::format(" from (%d, %d)", p.x, p.y);
    }
    if (!reading.values) {
        return text;
    }
    if (reading.values->gridSpacing) {
        text += cv::format(", %g mm", *reading.values->gridSpacing);
    }
    if (reading.values->thickness) {
        text += cv::format(", %g mm thick", *reading.values->thickness);
    }
    if (reading.values->offset) {
        text += cv::format(", offset (%d, %d)", reading.values->offset->x, reading.values->offset->y);
    }
    return text;
}

// Finds two corners of the reading that are `step` apart, to draw an axis between them. Returns false if there are no
// such corners.
bool axisFrom(const PatternReading &reading, cv::Point step, cv::Point2f &from, cv::Point2f &to) {
    for (const PatternCorner &a : reading.corners) {
        for (const PatternCorner &b : reading.corners) {
            if (b.lattice == a.lattice + step) {
                from = a.image;
                to = b.image;
                return true;
            }
        }
    }
    return false;
}

}  // namespace

cv::Mat drawReadings(const cv::Mat &image, const std::vector<PatternReading> &readings) {
    cv::Mat picture;
    cv::cvtColor(image, picture, cv::COLOR_GRAY2BGR);
    // OpenCV's drawing functions get the coordinates in sixteenths of a pixel.
    constexpr int shift = 4;
    const auto fixed = [](cv::Point2f p) {
        return cv::Point(cvRound(p.x * (1 << shift)), cvRound(p.y * (1 << shift)));
    };
    for (const PatternReading &reading : readings) {
        for (const PatternCorner &corner : reading.corners) {
            cv::circle(picture, fixed(corner.image), 2 << shift, cornerColour, 1, cv::LINE_AA, shift);
        }
        const int stepLength = reading.kind == PatternKind::Plate ? 4 : 3;
        cv::Point2f from;
        cv::Point2f to;
        if (axisFrom(reading, {stepLength, 0}, from, to)) {
            cv::arrowedLine(picture, fixed(from), fixed(to), xColour, 2, cv::LINE_AA, shift);
        }
        if (axisFrom(reading, {0, stepLength}, from, to)) {
            cv::arrowedLine(picture, fixed(from), fixed(to), yColour, 2, cv::LINE_AA, shift);
        }
        if (!reading.corners.empty()) {
            const cv::Point at(cvRound(reading.corners.front().image.x), cvRound(reading.corners.front().image.y) - 8);
            cv::putText(picture, words(reading), at, cv::FONT_HERSHEY_SIMPLEX, 0.5, cv::Scalar(255, 255, 255), 3,
                        cv::LINE_AA);
            cv::putText(picture, words(reading), at, cv::FONT_HERSHEY_SIMPLEX, 0.5, textColour, 1, cv::LINE_AA);
        }
    }
    return picture;
}

}  // namespace pattern_reader
