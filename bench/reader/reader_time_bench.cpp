// Measures how the reader's time grows with the picture's size, with the number of corners and with the number of
// patterns.
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <vector>

#include "bench/measurement.h"
#include "bench/reader/coded_targets.h"
#include "bench/reader/empty_pictures.h"
#include "bench/reader/scenes.h"
#include "bench/reader/synthetic_camera.h"
#include "pattern_reader/pattern_reader.h"

namespace {

using namespace reader_bench;

constexpr double pixelsPerSquare = 10;
constexpr double megapixel = 1e6;
constexpr int rounds = 15;

Time readingTime(const cv::Mat &picture) {
    return timeOf([&] { pattern_reader::readPatterns(picture); });
}

// Returns a picture with a target in the middle. The target is slightly tilted and rolled.
cv::Mat photographOf(const CodedTarget &coded, const cv::Size &size) {
    CameraModel camera;
    camera.focalLength = 1.5 * size.width;
    camera.centre = {size.width / 2.0, size.height / 2.0};
    const double roll = 0.1;
    const double tilt = 0.2;
    PlacedTarget placed;
    placed.target = coded.target;
    placed.pose.rotation = cv::Matx33d(1, 0, 0, 0, std::cos(tilt), -std::sin(tilt), 0, std::sin(tilt), std::cos(tilt)) *
                           cv::Matx33d(std::cos(roll), -std::sin(roll), 0, std::sin(roll), std::cos(roll), 0, 0, 0, 1);
    placed.pose.anchor = {coded.target->size().width / 2, coded.target->size().height / 2};
    placed.pose.translation = {0, 0, camera.focalLength / pixelsPerSquare};
    std::mt19937 random(3);
    return photograph(cv::Mat(size, CV_32F, cv::Scalar(120)), camera, {placed}, Exposure(), random);
}

// Returns a picture that repeats one picture of this kind, so that larger pictures contain more of the same.
cv::Mat repeated(EmptyKind kind, const cv::Size &size) {
    const cv::Mat one = makeEmptyPicture(kind, 6);
    cv::Mat all;
    cv::repeat(one, size.height / one.rows + 1, size.width / one.cols + 1, all);
    return all(cv::Rect({0, 0}, size)).clone();
}

cv::Mat inLargerPicture(const cv::Mat &picture, int factor, bool textured) {
    const cv::Size size(picture.cols * factor, picture.rows * factor);
    cv::Mat larger = textured ? repeated(EmptyKind::Texture, size) : cv::Mat(size, CV_8U, cv::Scalar(120));
    picture.copyTo(larger(cv::Rect({0, 0}, picture.size())));
    return larger;
}

// Measures the time for pictures full of shapes that look like corners or marks.
void benchLookalikes(Table &table) {
    for (const EmptyKind kind : {EmptyKind::Text, EmptyKind::Dots, EmptyKind::PerforatedSheet, EmptyKind::Net}) {
        const cv::Mat one = repeated(kind, {1000, 1000});
        const cv::Mat sixteen = repeated(kind, {4000, 4000});
        const auto times =
            measureAlternately(7, {[&] { return readingTime(sixteen) / 16; }, [&] { return readingTime(one); }});
        table.row(nameOf(kind) + " in 16 megapixels", times[0], "ms per megapixel", "1 megapixel", times[1], 2.0);
    }
}

void benchMegapixels(Table &table) {
    std::mt19937 random(1);
    const cv::Mat picture = photographOf(makeTile(0, random), {1000, 1000});
    const auto row = [&](const std::string &what, const cv::Mat &larger) {
        const double share = double(larger.total()) / megapixel;
        const auto times = measureAlternately(
            rounds, {[&] { return readingTime(larger) / share; }, [&] { return readingTime(picture); }});
        table.row(what, times[0], "ms per megapixel", "1 megapixel", times[1], 2.0);
    };
    for (const int factor : {2, 4}) {
        const std::string size = std::to_string(factor * factor) + " megapixels";
        cv::Mat enlarged;
        cv::resize(picture, enlarged, {}, factor, factor, cv::INTER_CUBIC);
        row("one pattern enlarged to " + size, enlarged);
        row("one pattern in " + size + " of plain grey", inLargerPicture(picture, factor, false));
        row("one pattern in " + size + " of texture", inLargerPicture(picture, factor, true));
    }
}

// A picture and the number of its items. The items are patterns, or corners counted in thousands. The time for an empty
// picture of the same size is subtracted from the time for this picture. The rest is divided by the number of items.
// The table compares this time per item with that of the first subject.
struct Subject {
    std::string what;
    cv::Mat picture;
    double items;
};

void benchPerItem(Table &table, const std::vector<Subject> &subjects, const char *unit, const std::string &reference) {
    const auto costOf = [&](const Subject &subject) {
        const cv::Mat empty(subject.picture.size(), CV_8U, cv::Scalar(120));
        const Time time = (readingTime(subject.picture) - readingTime(empty)) / subject.items;
        return Time{time.processor, 0.0};
    };
    for (const Subject &subject : subjects) {
        const auto times =
            measureAlternately(rounds, {[&] { return costOf(subject); }, [&] { return costOf(subjects.front()); }});
        table.row(subject.what, times[0], unit, reference, times[1], 2.0);
    }
}

void benchCorners(Table &table) {
    std::vector<Subject> subjects;
    for (const int side : {15, 31, 61, 91, 200}) {
        std::mt19937 random(1);
        const std::string size = std::to_string(side) + " x " + std::to_string(side);
        const cv::Size picture = side <= 91 ? cv::Size(1100, 1100) : cv::Size(2300, 2300);
        subjects.push_back({"a pattern of " + size + " corners",
                            photographOf(makeFlexible(side, side, random), picture), side * side / 1000.0});
    }
    benchPerItem(table, subjects, "ms per 1000 corners", "15 x 15");
}

void benchPatterns(Table &table) {
    constexpr int places = 5;
    constexpr int placeSide = 220;
    std::mt19937 random(1);
    const cv::Mat pattern = photographOf(makeTile(0, random), {placeSide, placeSide});
    std::vector<Subject> subjects;
    for (const int side : {1, 2, 3, 5}) {
        cv::Mat picture(places * placeSide, places * placeSide, CV_8U, cv::Scalar(120));
        for (int i = 0; i < side * side; i++) {
            pattern.copyTo(picture(cv::Rect({i % side * placeSide, i / side * placeSide}, pattern.size())));
        }
        const int count = side * side;
        subjects.push_back({std::to_string(count) + (count == 1 ? " pattern" : " patterns") + " of 15 x 15 corners",
                            picture, double(count)});
    }
    benchPerItem(table, subjects, "ms per pattern", "1 pattern");
}

}  // namespace

int main() {
    cv::setNumThreads(1);
    Table table("Reading time, and how it grows");
    benchMegapixels(table);
    benchCorners(table);
    benchPatterns(table);
    benchLookalikes(table);
    return table.exitCode();
}
