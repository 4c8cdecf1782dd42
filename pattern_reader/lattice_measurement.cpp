#include "pattern_reader/lattice_measurement.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <optional>

namespace pattern_reader {

namespace {

// The lattice's steps where a corner has no neighbours to take them from: by a plane's map through all corners.
class MappedSteps {
public:
    explicit MappedSteps(const CornerLattice &lattice) : lattice_(lattice) {}

    bool at(cv::Point cell, cv::Point step, cv::Point2f &direction) {
        if (!tried_) {
            tried_ = true;
            fit();
        }
        if (!known_) {
            return false;
        }
        direction = (project(cell + step) - project(cell - step)) / 2;
        return std::isfinite(direction.x) && std::isfinite(direction.y) && direction.dot(direction) > 1;
    }

private:
    void fit() {
        constexpr size_t wanted = 100;
        std::vector<cv::Point2f> cells;
        std::vector<cv::Point2f> images;
        for (size_t i = 0; i < lattice_.corners.size(); i += lattice_.corners.size() / wanted + 1) {
            cells.emplace_back(lattice_.corners[i].cell);
            images.push_back(lattice_.corners[i].position);
        }
        const cv::Mat map = cells.size() < 4 ? cv::Mat() : cv::findHomography(cells, images);
        known_ = !map.empty();
        if (known_) {
            imageFromCell_ = map;
        }
    }

    cv::Point2f project(cv::Point cell) const {
        const cv::Vec3d v = imageFromCell_ * cv::Vec3d(cell.x, cell.y, 1);
        return {float(v[0] / v[2]), float(v[1] / v[2])};
    }

    const CornerLattice &lattice_;
    cv::Matx33d imageFromCell_;
    bool tried_ = false;
    bool known_ = false;
};

// The lattice step through a corner along one axis, from its neighbours on either side or on one.
bool stepThrough(const CornerLattice &lattice, const LatticeCorner &corner, cv::Point step, cv::Point2f &direction) {
    const LatticeCorner *before = lattice.at(corner.cell - step);
    const LatticeCorner *after = lattice.at(corner.cell + step);
    if (before == nullptr && after == nullptr) {
        return false;
    }
    const cv::Point2f from = before != nullptr ? before->position : corner.position;
    const cv::Point2f to = after != nullptr ? after->position : corner.position;
    direction = to - from;
    if (before != nullptr && after != nullptr) {
        direction /= 2;
    }
    return true;
}

// Inside this radius there are four areas and nothing else: the squares' marks begin a third of the way along both
// axes.
float cleanRadius(cv::Point2f step0, cv::Point2f step1) {
    const auto length = [](cv::Point2f v) { return std::hypot(v.x, v.y); };
    const float diagonal = std::min(length(step0 + step1), length(step0 - step1));
    const float shortest = std::min(length(step0), length(step1));
    return std::clamp(std::min(0.42F * shortest, 0.9F * diagonal / 3), 1.8F, 7.0F);
}

float medianOf(std::vector<float> values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Fits the corners that a lattice has.
class CornerMeasurement {
public:
    CornerMeasurement(const cv::Mat &picture, CornerLattice &lattice)
        : picture_(picture),
          lattice_(lattice),
          mapped_(lattice),
          fits_(lattice.corners.size()),
          good_(lattice.corners.size(), false) {}

    // The blur of the whole from a few corners spread over the lattice; nothing when none of them can be fitted.
    std::optional<float> blur();
    // Fits all of them with this blur and moves them to where they were found.
    void fitAll(float blur);
    // Once more with directions from the measured neighbours.
    void fitAgain();
    // Leaves only the measured corners in the lattice and gives their fits.
    std::vector<CornerFit> keepGood();

private:
    bool fitOne(const LatticeCorner &corner, bool fitBlur, int steps, CornerFit &fit);
    bool startFromNeighbour(size_t corner);
    void moveGood();

    const cv::Mat &picture_;
    CornerLattice &lattice_;
    MappedSteps mapped_;
    std::vector<CornerFit> fits_;
    std::vector<bool> good_;
};

bool CornerMeasurement::fitOne(const LatticeCorner &corner, bool fitBlur, int steps, CornerFit &fit) {
    const auto step = [&](cv::Point along, cv::Point2f &direction) {
        return stepThrough(lattice_, corner, along, direction) || mapped_.at(corner.cell, along, direction);
    };
    cv::Point2f step0;
    cv::Point2f step1;
    return step({1, 0}, step0) && step({0, 1}, step1) &&
           fitCorner(picture_, step0, step1, cleanRadius(step0, step1), fitBlur, steps, fit);
}

std::optional<float> CornerMeasurement::blur() {
    constexpr size_t samples = 24;
    const size_t count = fits_.size();
    std::vector<float> blurs;
    for (size_t i = 0; i < count; i += std::max<size_t>(1, count / samples)) {
        CornerFit sample;
        sample.position = lattice_.corners[i].position;
        if (fitOne(lattice_.corners[i], true, 6, sample)) {
            blurs.push_back(sample.blur);
        }
    }
    return blurs.empty() ? std::nullopt : std::optional<float>(medianOf(blurs));
}

// A neighbour's grey levels, light and dark exchanged, spare the step that asks for nothing else. False without one.
bool CornerMeasurement::startFromNeighbour(size_t corner) {
    for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
        const int k = lattice_.indexAt(lattice_.corners[corner].cell + step);
        if (k >= 0 && size_t(k) < corner && good_[size_t(k)]) {
            fits_[corner].middle = fits_[size_t(k)].middle;
            fits_[corner].amplitude = -fits_[size_t(k)].amplitude;
            return true;
        }
    }
    return false;
}

void CornerMeasurement::fitAll(float blur) {
    for (size_t i = 0; i < fits_.size(); i++) {
        const LatticeCorner &corner = lattice_.corners[i];
        fits_[i].position = corner.position;
        fits_[i].blur = blur;
        const float sign = lattice_.isLight(corner.cell) ? 1.0F : -1.0F;
        const bool started = startFromNeighbour(i);
        good_[i] = fitOne(corner, false, started ? 2 : 3, fits_[i]) && fits_[i].amplitude * sign > 1 &&
                   fits_[i].residual < 0.7F * std::abs(fits_[i].amplitude);
    }
    moveGood();
}

void CornerMeasurement::fitAgain() {
    for (size_t i = 0; i < fits_.size(); i++) {
        good_[i] = good_[i] && fitOne(lattice_.corners[i], false, 2, fits_[i]);
    }
    moveGood();
}

void CornerMeasurement::moveGood() {
    for (size_t i = 0; i < fits_.size(); i++) {
        if (good_[i]) {
            lattice_.corners[i].position = fits_[i].position;
            lattice_.corners[i].sigma = fits_[i].sigma;
        }
    }
}

std::vector<CornerFit> CornerMeasurement::keepGood() {
    std::vector<CornerFit> kept;
    for (size_t i = 0; i < fits_.size(); i++) {
        if (good_[i]) {
            kept.push_back(fits_[i]);
        }
    }
    lattice_.retain(good_);
    return kept;
}

// Fits corners where the measured ones around them say there must be some, until there are no more. What is seen there
// must be as clear as the neighbours are: nothing else says that these are corners.
void measureMissing(const cv::Mat &picture, CornerLattice &lattice, std::vector<CornerFit> &fits) {
    const auto tryCell = [&](cv::Point cell, const CornerFit &neighbour) {
        cv::Point2f expected;
        if (lattice.indexAt(cell) >= 0 || !lattice.predict(cell, expected)) {
            return;
        }
        const LatticeCorner corner{cell, expected, 0};
        cv::Point2f step0;
        cv::Point2f step1;
        if (!stepThrough(lattice, corner, {1, 0}, step0) || !stepThrough(lattice, corner, {0, 1}, step1)) {
            return;
        }
        CornerFit fit;
        fit.position = expected;
        fit.blur = neighbour.blur;
        if (!fitCorner(picture, step0, step1, cleanRadius(step0, step1), false, 5, fit)) {
            return;
        }
        const float shortest = std::sqrt(std::min(step0.dot(step0), step1.dot(step1)));
        const cv::Point2f off = fit.position - expected;
        const float amplitude = fit.amplitude * (lattice.isLight(cell) ? 1.0F : -1.0F);
        if (amplitude > 0.5F * std::abs(neighbour.amplitude) && fit.residual < 0.3F * amplitude &&
            off.dot(off) < 0.04F * shortest * shortest && lattice.add({cell, fit.position, 0, fit.sigma})) {
            fits.push_back(fit);
        }
    };
    // The list grows as it is gone through.
    for (size_t i = 0; i < fits.size(); i++) {
        const cv::Point here = lattice.corners[i].cell;
        for (const cv::Point side : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
            tryCell(here + side, CornerFit(fits[i]));
        }
    }
}

}  // namespace

std::vector<CornerFit> measureCorners(const cv::Mat &picture, CornerLattice &lattice, std::optional<float> knownBlur) {
    CornerMeasurement measurement(picture, lattice);
    if (const std::optional<float> blur = knownBlur ? knownBlur : measurement.blur()) {
        measurement.fitAll(*blur);
        measurement.fitAgain();
    }
    std::vector<CornerFit> fits = measurement.keepGood();
    measureMissing(picture, lattice, fits);
    return fits;
}

}  // namespace pattern_reader
