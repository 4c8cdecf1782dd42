#include "pattern_reader/lattice_measurement.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

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

// A neighbour's grey levels, light and dark exchanged, spare the step that asks for nothing else. False without one.
bool startFromNeighbour(const CornerLattice &lattice, const std::vector<bool> &good, std::vector<CornerFit> &fits,
                        size_t corner) {
    for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
        const int k = lattice.indexAt(lattice.corners[corner].cell + step);
        if (k >= 0 && size_t(k) < corner && good[size_t(k)]) {
            fits[corner].middle = fits[size_t(k)].middle;
            fits[corner].amplitude = -fits[size_t(k)].amplitude;
            return true;
        }
    }
    return false;
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
        fit.sigma = neighbour.sigma;
        if (!fitCorner(picture, step0, step1, cleanRadius(step0, step1), false, 5, fit)) {
            return;
        }
        const float shortest = std::sqrt(std::min(step0.dot(step0), step1.dot(step1)));
        const cv::Point2f off = fit.position - expected;
        const float amplitude = fit.amplitude * (lattice.isLight(cell) ? 1.0F : -1.0F);
        if (amplitude > 0.5F * std::abs(neighbour.amplitude) && fit.residual < 0.3F * amplitude &&
            off.dot(off) < 0.04F * shortest * shortest && lattice.add({cell, fit.position, 0})) {
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

std::vector<CornerFit> measureCorners(const cv::Mat &picture, CornerLattice &lattice) {
    const size_t count = lattice.corners.size();
    std::vector<CornerFit> fits(count);
    std::vector<bool> good(count, false);
    MappedSteps mapped(lattice);
    const auto step = [&](const LatticeCorner &corner, cv::Point along, cv::Point2f &direction) {
        return stepThrough(lattice, corner, along, direction) || mapped.at(corner.cell, along, direction);
    };
    const auto fitOne = [&](size_t i, bool fitSigma, int steps) {
        const LatticeCorner &corner = lattice.corners[i];
        cv::Point2f step0;
        cv::Point2f step1;
        return step(corner, {1, 0}, step0) && step(corner, {0, 1}, step1) &&
               fitCorner(picture, step0, step1, cleanRadius(step0, step1), fitSigma, steps, fits[i]);
    };
    // The blur of the whole from a few corners spread over the lattice.
    constexpr size_t samples = 24;
    std::vector<float> sigmas;
    for (size_t i = 0; i < count; i += std::max<size_t>(1, count / samples)) {
        fits[i].position = lattice.corners[i].position;
        if (fitOne(i, true, 6)) {
            sigmas.push_back(fits[i].sigma);
        }
    }
    if (sigmas.empty()) {
        lattice.retain(std::vector<bool>(count, false));
        return {};
    }
    const float sigma = medianOf(sigmas);
    for (size_t i = 0; i < count; i++) {
        fits[i] = {};
        fits[i].position = lattice.corners[i].position;
        fits[i].sigma = sigma;
        const float sign = lattice.isLight(lattice.corners[i].cell) ? 1.0F : -1.0F;
        const bool started = startFromNeighbour(lattice, good, fits, i);
        good[i] = fitOne(i, false, started ? 2 : 3) && fits[i].amplitude * sign > 1 &&
                  fits[i].residual < 0.7F * std::abs(fits[i].amplitude);
    }
    // Once more with directions from the measured neighbours.
    for (size_t i = 0; i < count; i++) {
        if (good[i]) {
            lattice.corners[i].position = fits[i].position;
        }
    }
    for (size_t i = 0; i < count; i++) {
        good[i] = good[i] && fitOne(i, false, 2);
    }
    std::vector<CornerFit> kept;
    for (size_t i = 0; i < count; i++) {
        if (good[i]) {
            lattice.corners[i].position = fits[i].position;
            kept.push_back(fits[i]);
        }
    }
    lattice.retain(good);
    measureMissing(picture, lattice, kept);
    return kept;
}

}  // namespace pattern_reader
