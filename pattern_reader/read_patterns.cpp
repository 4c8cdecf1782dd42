#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "pattern_reader/board_parts.h"
#include "pattern_reader/board_reader.h"
#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_file.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/lattice_completion.h"
#include "pattern_reader/lattice_search.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/plate_reader.h"
#include "pattern_reader/point_detector.h"

namespace pattern_reader {

namespace {

// This many of a plate's 49 marks must be found before its other marks are searched for.
constexpr size_t leastMarks = 12;

// The approximate areas in which checkerboards were read. Plates are not searched for there, because the dark squares
// and marks of a checkerboard look like round marks. Checkerboard lattices that were found but could not be read are
// not included. They may belong to a plate, because saddles are found not only at the corners of a checkerboard, but
// also between the marks of a plate.
class BoardArea {
public:
    explicit BoardArea(const cv::Size &size)
        : covered(size.height / cell + 1, size.width / cell + 1, CV_8U, cv::Scalar(0)) {}

    void cover(const CornerLattice &lattice) {
        for (const LatticeCorner &corner : lattice.corners) {
            // Every corner covers the squares around it.
            const int radius = int(1.1F * lattice.spacingAt(corner.cell)) / cell + 1;
            const cv::Point middle(int(corner.position.x) / cell, int(corner.position.y) / cell);
            const cv::Rect box(middle - cv::Point(radius, radius), middle + cv::Point(radius + 1, radius + 1));
            covered(box & cv::Rect({0, 0}, covered.size())).setTo(1);
        }
    }

    bool contains(cv::Point2f p) const {
        const int x = std::clamp(int(p.x) / cell, 0, covered.cols - 1);
        const int y = std::clamp(int(p.y) / cell, 0, covered.rows - 1);
        return covered.at<uchar>(y, x) != 0;
    }

private:
    static constexpr int cell = 8;  // pixels
    cv::Mat covered;
};

// True if most marks of the lattice are also marks of this plate, and the plate was read with at least as many marks as
// the lattice has.
bool isRead(const MarkLattice &found, const PatternReading &plate) {
    const auto known = std::count_if(found.marks.begin(), found.marks.end(), [&](const RoundMark &mark) {
        const float reach = 0.5F * std::sqrt(mark.area / float(CV_PI));
        return std::any_of(plate.corners.begin(), plate.corners.end(), [&](const PatternCorner &corner) {
            return std::hypot(corner.image.x - mark.centre.x, corner.image.y - mark.centre.y) < reach;
        });
    });
    return size_t(known) * 2 > found.marks.size() && plate.corners.size() >= found.marks.size();
}

// Reads the plates whose marks are among the dark blobs outside the checkerboards. If a plate is found several times,
// only the best of its readings is returned.
std::vector<PatternReading> readPlates(const std::vector<ImageLevel> &levels, std::vector<LevelPoints> &points,
                                       const BoardArea &boards) {
    std::vector<PatternReading> plates;
    for (size_t i = 0; i < levels.size(); i++) {
        std::vector<DarkBlob> &blobs = points[i].blobs;
        blobs.erase(
            std::remove_if(blobs.begin(), blobs.end(),
                           [&](const DarkBlob &blob) { return boards.contains(levels[i].toImage(blob.position)); }),
            blobs.end());
        for (const MarkLattice &found : findMarkLattices(levels, i, blobs, leastMarks)) {
            // The same marks may be found in two levels.
            const bool read = std::any_of(plates.begin(), plates.end(),
                                          [&](const PatternReading &plate) { return isRead(found, plate); });
            std::optional<PatternReading> plate = read ? std::nullopt : readPlate(levels, found);
            if (!plate) {
                continue;
            }
            const cv::Point2f here = plate->corners[plate->corners.size() / 2].image;
            const auto same = std::find_if(plates.begin(), plates.end(), [&](const PatternReading &other) {
                return std::any_of(other.corners.begin(), other.corners.end(), [&](const PatternCorner &corner) {
                    return std::hypot(corner.image.x - here.x, corner.image.y - here.y) < 2;
                });
            });
            if (same == plates.end()) {
                plates.push_back(std::move(*plate));
            } else if (plate->corners.size() > same->corners.size() || (plate->values && !same->values)) {
                *same = std::move(*plate);
            }
        }
    }
    return plates;
}

std::vector<PatternReading> readGrey(const cv::Mat &image, const ReadingOptions &options) {
    const auto isCancelled = [&] { return options.isCancelled && options.isCancelled(); };
    std::vector<ImageLevel> levels = makePyramid(image);
    std::vector<LevelPoints> points;
    points.reserve(levels.size());
    for (ImageLevel &level : levels) {
        if (isCancelled()) {
            return {};
        }
        points.push_back(findPoints(level));
    }
    std::vector<PatternReading> readings;
    BoardArea boards(image.size());
    for (CornerLattice &lattice : findLattices(levels, points)) {
        if (isCancelled()) {
            return {};
        }
        if (std::optional<PatternReading> reading = readBoard(levels, lattice, options.board)) {
            boards.cover(lattice);
            readings.push_back(std::move(*reading));
        }
    }
    if (isCancelled()) {
        return {};
    }
    joinParts(readings, [&](CornerLattice &lattice) {
        completeLattice(lattice, levels);
        return readBoard(levels, lattice, std::nullopt);
    });
    for (PatternReading &reading : readPlates(levels, points, boards)) {
        readings.push_back(std::move(reading));
    }
    return readings;
}

}  // namespace

std::vector<PatternReading> readPatterns(const cv::Mat &image, const ReadingOptions &options) {
    if (image.empty() || (image.channels() != 1 && image.channels() != 3 && image.channels() != 4)) {
        throw std::invalid_argument("an image with 1, 3 or 4 channels is needed");
    }
    if (image.total() > size_t(maximumPixels)) {
        throw std::invalid_argument("the image has more than " + std::to_string(maximumPixels / 1000000) +
                                    " million pixels");
    }
    if (options.board && std::min(options.board->width, options.board->height) < 3) {
        throw std::invalid_argument("a board needs at least 3 x 3 inner corners");
    }
    const cv::Rect whole({0, 0}, image.size());
    const cv::Rect region = options.region.empty() ? whole : options.region & whole;
    if (region.width < 16 || region.height < 16) {
        return {};
    }
    std::vector<PatternReading> readings = readGrey(toGrey(image(region)), options);
    readings.erase(std::remove_if(readings.begin(), readings.end(),
                                  [&](const PatternReading &one) { return one.confidence < options.leastConfidence; }),
                   readings.end());
    for (PatternReading &reading : readings) {
        for (PatternCorner &corner : reading.corners) {
            corner.image += cv::Point2f(region.tl());
        }
    }
    std::sort(readings.begin(), readings.end(),
              [](const PatternReading &a, const PatternReading &b) { return a.corners.size() > b.corners.size(); });
    return readings;
}

}  // namespace pattern_reader
