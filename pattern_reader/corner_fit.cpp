#include "pattern_reader/corner_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>

namespace pattern_reader {

namespace {

// erf(t / sqrt 2) and its derivative over t, tabulated for |t| up to 4 with linear interpolation between entries.
class EdgeProfile {
public:
    struct Value {
        float level, slope;
    };

    EdgeProfile() {
        for (int i = 0; i <= count + 1; i++) {
            const double t = (double(i) - 0.5 * count) / perUnit;
            values_[size_t(i)] = {float(std::erf(t / std::sqrt(2.0))),
                                  float(std::sqrt(2 / CV_PI) * std::exp(-t * t / 2))};
        }
    }

    Value at(float t) const {
        const float place = std::clamp(t * float(perUnit) + float(count) / 2, 0.0F, float(count));
        const auto i = size_t(int(place));
        const float f = place - float(int(i));
        return {values_[i].level + f * (values_[i + 1].level - values_[i].level),
                values_[i].slope + f * (values_[i + 1].slope - values_[i].slope)};
    }

private:
    static constexpr int perUnit = 64;
    static constexpr int count = 8 * perUnit;
    std::array<Value, size_t(count) + 2> values_{};
};

const EdgeProfile &edgeProfile() {
    static const EdgeProfile profile;
    return profile;
}

constexpr int parameters = 5;  // middle, amplitude, x, y, sigma

// The normal equations of one step.
struct NormalEquations {
    std::array<std::array<double, parameters>, parameters> matrix{};
    std::array<double, parameters> right{};

    // Solves for the first `count` parameters in place of `right`; false when they are not determined.
    bool solve(int count) {
        for (int i = 0; i < count; i++) {
            const auto row = size_t(i);
            if (!(matrix[row][row] > 1e-9)) {
                return false;
            }
            for (int k = i + 1; k < count; k++) {
                const auto below = size_t(k);
                const double factor = matrix[below][row] / matrix[row][row];
                for (int j = i; j < count; j++) {
                    matrix[below][size_t(j)] -= factor * matrix[row][size_t(j)];
                }
                right[below] -= factor * right[row];
            }
        }
        for (int i = count - 1; i >= 0; i--) {
            const auto row = size_t(i);
            for (int j = i + 1; j < count; j++) {
                right[row] -= matrix[row][size_t(j)] * right[size_t(j)];
            }
            right[row] /= matrix[row][row];
        }
        return true;
    }
};

}  // namespace

bool fitCorner(const cv::Mat &picture, cv::Point2f axis0, cv::Point2f axis1, float radius, bool fitSigma, int steps,
               CornerFit &fit) {
    const EdgeProfile &profile = edgeProfile();
    axis0 /= std::hypot(axis0.x, axis0.y);
    axis1 /= std::hypot(axis1.x, axis1.y);
    const cv::Point2f start = fit.position;
    const int count = fitSigma ? 5 : 4;
    const int reach = int(radius);
    const float radius2 = radius * radius;
    bool first = fit.amplitude == 0;
    for (int step = 0; step < steps; step++) {
        const int cx = int(std::lround(fit.position.x));
        const int cy = int(std::lround(fit.position.y));
        if (cx < reach || cy < reach || cx + reach >= picture.cols || cy + reach >= picture.rows) {
            return false;
        }
        NormalEquations equations;
        // Sums in single precision are enough: at most a few hundred pixels of grey levels.
        std::array<float, 21> s{};
        float squares = 0;
        int pixels = 0;
        const float inverse = 1 / fit.sigma;
        const float amplitude = first ? 1 : fit.amplitude;
        for (int y = cy - reach; y <= cy + reach; y++) {
            const uchar *row = picture.ptr(y);
            const float dy = float(y) - fit.position.y;
            const auto width = int(std::sqrt(std::max(0.0F, radius2 - float((y - cy) * (y - cy)))));
            for (int x = cx - width; x <= cx + width; x++) {
                const float dx = float(x) - fit.position.x;
                const float a = (axis0.x * dy - axis0.y * dx) * inverse;
                const float b = (dx * axis1.y - dy * axis1.x) * inverse;
                const EdgeProfile::Value p = profile.at(a);
                const EdgeProfile::Value q = profile.at(b);
                const float shape = p.level * q.level;
                const float pa = p.slope * q.level * inverse * amplitude;
                const float pb = p.level * q.slope * inverse * amplitude;
                const float error = float(row[x]) - (first ? 0 : fit.middle + fit.amplitude * shape);
                const float jx = pa * axis0.y - pb * axis1.y;
                const float jy = -pa * axis0.x + pb * axis1.x;
                const float js = -(pa * a + pb * b);
                s[0] += shape;
                s[1] += jx;
                s[2] += jy;
                s[3] += js;
                s[4] += error;
                s[5] += shape * shape;
                s[6] += shape * jx;
                s[7] += shape * jy;
                s[8] += shape * js;
                s[9] += shape * error;
                s[10] += jx * jx;
                s[11] += jx * jy;
                s[12] += jx * js;
                s[13] += jx * error;
                s[14] += jy * jy;
                s[15] += jy * js;
                s[16] += jy * error;
                s[17] += js * js;
                s[18] += js * error;
                squares += error * error;
                pixels++;
            }
        }
        auto &m = equations.matrix;
        m[0] = {double(pixels), s[0], s[1], s[2], s[3]};
        m[1] = {s[0], s[5], s[6], s[7], s[8]};
        m[2] = {s[1], s[6], s[10], s[11], s[12]};
        m[3] = {s[2], s[7], s[11], s[14], s[15]};
        m[4] = {s[3], s[8], s[12], s[15], s[17]};
        equations.right = {s[4], s[9], s[13], s[16], s[18]};
        // Without a start for the grey levels the first step asks for nothing else.
        if (!equations.solve(first ? 2 : count)) {
            return false;
        }
        const auto &r = equations.right;
        fit.residual = std::sqrt(squares / float(pixels));
        if (first) {
            fit.middle = float(r[0]);
            fit.amplitude = float(r[1]);
            first = false;
            continue;
        }
        fit.middle += float(r[0]);
        fit.amplitude += float(r[1]);
        fit.position += cv::Point2f(float(std::clamp(r[2], -0.7, 0.7)), float(std::clamp(r[3], -0.7, 0.7)));
        if (fitSigma) {
            fit.sigma = std::clamp(fit.sigma + float(std::clamp(r[4], -0.3, 0.3)), 0.35F, 6.0F);
        }
        const cv::Point2f moved = fit.position - start;
        if (!(std::hypot(moved.x, moved.y) < std::max(0.8F, 0.5F * radius))) {
            return false;
        }
        if (std::abs(r[2]) + std::abs(r[3]) < 0.004 && (!fitSigma || std::abs(r[4]) < 0.01)) {
            break;
        }
    }
    return true;
}

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
