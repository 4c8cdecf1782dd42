#include "pattern_reader/lattice_measurement.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "pattern_reader/corner_surroundings.h"
#include "pattern_reader/corner_window.h"
#include "pattern_reader/position_sigma.h"

namespace pattern_reader {

namespace {

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

// Returns the radius, in pixels, of a disc around a corner. The disc shows parts of the four squares but none of their
// marks. The marks begin at a third of the lattice step along both axes. The radius is at least 1.8, even if marks
// begin closer to the corner.
float cleanRadius(const CornerBorders &borders) {
    const auto &[step0, step1] = borders.steps;
    const float diagonal = std::min(length(step0 + step1), length(step0 - step1));
    return std::max(std::min(0.42F * std::min(length(step0), length(step1)), 0.9F * diagonal / 3), 1.8F);
}

// Returns, for each border, its distance from the next parallel border, in pixels.
std::array<float, 2> widthsOf(const CornerBorders &borders) {
    const auto &[step0, step1] = borders.steps;
    const float area = std::abs(float(step0.cross(step1)));
    return {area / length(step0), area / length(step1)};
}

// Returns the radius of the disc for refineCorner, in pixels. The disc reaches at most half way to the next corner
// along the borders, and less far if the blur of the next parallel borders would reach into it. In all cases its radius
// is at least 1.8 pixels.
float refinedRadius(const CornerBorders &borders, float blur) {
    const auto &[step0, step1] = borders.steps;
    const std::array<float, 2> widths = widthsOf(borders);
    const float width = std::min(widths[0], widths[1]);
    const float clear = std::clamp(width - 2.5F * blur, 0.35F * width, 0.75F * width);
    return std::max(std::min(clear, 0.5F * std::min(length(step0), length(step1))), 1.8F);
}

float medianOf(std::vector<float> values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Converts a fit from the pixels of a level to those of the image.
CornerFit toImage(const ImageLevel &level, CornerFit fit) {
    const float scale = level.scale();
    fit.position = level.toImage(fit.position);
    // Each pixel of a level is the mean of `scale` × `scale` pixels of the image, which adds to the blur.
    fit.blur = std::sqrt(std::max(0.1F, fit.blur * fit.blur * scale * scale - (scale * scale - 1) / 12));
    fit.sigma *= scale;
    fit.middleSlope /= scale;
    fit.amplitudeSlope /= scale;
    return fit;
}

CornerFit fromImage(const ImageLevel &level, CornerFit fit) {
    const float scale = level.scale();
    fit.position = level.fromImage(fit.position);
    fit.blur = std::sqrt(fit.blur * fit.blur + (scale * scale - 1) / 12) / scale;
    fit.sigma /= scale;
    fit.middleSlope *= scale;
    fit.amplitudeSlope *= scale;
    return fit;
}

CornerBorders fromImage(const ImageLevel &level, CornerBorders borders) {
    const float scale = level.scale();
    for (size_t i = 0; i < 2; i++) {
        borders.steps[i] /= scale;
        borders.bends[i] *= scale;
    }
    const std::array<float, 2> widths = widthsOf(borders);
    borders.marks = {widths[0] / 3, widths[1] / 3};
    return borders;
}

// Returns the radius of the largest disc that is centred on a point and stays inside the picture, but at least 3
// pixels. So a disc close to the border of the picture may leave it.
float roomAround(const ImageLevel &level, cv::Point2f p) {
    const float right = float(level.picture.cols - 1) - p.x;
    const float bottom = float(level.picture.rows - 1) - p.y;
    return std::max(3.0F, std::min({p.x, p.y, right, bottom}) - 1);
}

// Measures the corners of a lattice. The function `measure` shows the order of the steps.
class CornerMeasurement {
public:
    CornerMeasurement(const std::vector<ImageLevel> &pyramid, CornerLattice &board)
        : levels(pyramid),
          lattice(board),
          surroundings(board),
          fits(board.corners.size()),
          good(board.corners.size(), false) {}

    std::vector<CornerFit> measure(std::optional<float> knownBlur);

private:
    // The blur, noise and light of the whole board are measured at about this many corners.
    static constexpr size_t sampleCount = 24;
    static constexpr float searchRadius = 7;   // greatest radius of the disc for fitCorner, in the level's pixels
    static constexpr float leastBlur = 0.36F;  // least blur that a level can show, in the level's pixels

    size_t sampleStride() const { return std::max<size_t>(1, fits.size() / sampleCount); }
    // The typical length of the lattice's steps, pixels.
    float typicalStep() const;
    const ImageLevel &searchLevel() const;
    const ImageLevel &bestLevel(const ImageLevel &search, float blur) const;
    // The blur of the board, measured at a few corners spread over the lattice. If the level's pixels are too large to
    // show the blur, finer levels are used. Empty if no corner can be fitted.
    std::optional<float> blurIn(const ImageLevel &level);
    bool startFromNeighbour(size_t corner);
    bool fitOne(const ImageLevel &level, const LatticeCorner &corner, CornerParameters free, int steps,
                CornerFit &fit) const;
    bool refineOne(const ImageLevel &level, const LatticeCorner &corner, CornerFit &fit) const;
    void fitAll(const ImageLevel &level, float blur);
    void refineAll(const ImageLevel &level);
    void keepGood();
    void measureMissing(const ImageLevel &search, const ImageLevel &best);
    bool findMissing(const ImageLevel &search, const ImageLevel &best, cv::Point cell, const CornerFit &neighbour);

    const std::vector<ImageLevel> &levels;
    CornerLattice &lattice;
    CornerSurroundings surroundings;
    std::vector<CornerFit> fits;  // image coordinates
    std::vector<bool> good;
    float boardBlur = 1;          // image pixels
    float blurTolerance = 0.25F;  // standard deviation of the corners' blur, relative to the board's blur
    float boardNoise = 1;         // standard deviation of one pixel in the best level, grey levels
    // How much the grey levels that were fitted around a corner typically differ from a plane, in grey levels (see
    // CornerSurroundings::lightScatter).
    float lightScatter = 1;
};

float CornerMeasurement::typicalStep() const {
    std::vector<float> steps;
    for (size_t i = 0; i < lattice.corners.size(); i += sampleStride()) {
        steps.push_back(lattice.spacingAt(lattice.corners[i].cell));
    }
    return medianOf(steps);
}

const ImageLevel &CornerMeasurement::searchLevel() const {
    const float step = typicalStep();
    size_t number = 0;
    while (number + 1 < levels.size() && step > 28 * levels[number].scale()) {
        number++;
    }
    return levels[number];
}

// Returns the level in which the corners are refined. `merit` tells how exact a level is: longer borders in the window
// make a corner's position more exact, and blur makes it less exact. In a coarser level, the larger pixels add to the
// blur. If several levels are about as exact as the best one, the coarsest of these is taken, because it is the
// fastest. Apart from the finest level, a level in which the squares or the blur are too small is not taken.
const ImageLevel &CornerMeasurement::bestLevel(const ImageLevel &search, float blur) const {
    const float step = typicalStep();
    const auto merit = [&](const ImageLevel &level) {
        const float scale = level.scale();
        return std::min(0.5F * step, CornerWindow::largestRadius * scale) /
               std::sqrt(blur * blur + (scale * scale - 1) / 12);
    };
    constexpr float leastStep = 9;
    size_t best = 0;
    float highest = merit(levels.front());
    for (size_t i = 1; i < levels.size() && int(i) <= search.number + 1; i++) {
        const ImageLevel &level = levels[i];
        const bool resolved = step > leastStep * level.scale() && blur > leastBlur * level.scale();
        if (resolved && merit(level) > 0.97F * highest) {
            best = i;
            highest = std::max(highest, merit(level));
        }
    }
    return levels[best];
}

bool CornerMeasurement::fitOne(const ImageLevel &level, const LatticeCorner &corner, CornerParameters free, int steps,
                               CornerFit &fit) const {
    const std::optional<CornerBorders> borders = surroundings.bordersOf(corner);
    if (!borders) {
        return false;
    }
    const CornerBorders here = fromImage(level, *borders);
    CornerFit inLevel = fromImage(level, fit);
    const float radius = std::min({cleanRadius(here), searchRadius, roomAround(level, inLevel.position)});
    if (!fitCorner(level.picture, here, radius, free, steps, inLevel)) {
        return false;
    }
    fit = toImage(level, inLevel);
    return true;
}

bool CornerMeasurement::refineOne(const ImageLevel &level, const LatticeCorner &corner, CornerFit &fit) const {
    const std::optional<CornerBorders> borders = surroundings.bordersOf(corner);
    if (!borders) {
        return false;
    }
    CornerFit inLevel = fromImage(level, fit);
    const CornerBorders here = fromImage(level, *borders);
    CornerPrior prior;
    prior.changes = surroundings.lightAround(corner, fits, lightScatter);
    CornerFit board;
    board.blur = boardBlur;
    prior.blur = fromImage(level, board).blur;
    prior.blurDeviation = blurTolerance * prior.blur;
    prior.noise = boardNoise;
    prior.noiseWeight = 30;
    const float radius = std::min(refinedRadius(here, inLevel.blur), roomAround(level, inLevel.position));
    // If the squares are small, noise can pull the fit towards a mark. The position then has a large sigma, and the fit
    // is refused.
    const float mostSigma = 0.1F * std::min(length(here.steps[0]), length(here.steps[1]));
    if (!refineCorner(level.picture, here, radius, prior, 3, inLevel) || !(inLevel.sigma < mostSigma)) {
        return false;
    }
    fit = toImage(level, inLevel);
    return true;
}

std::optional<float> CornerMeasurement::blurIn(const ImageLevel &level) {
    std::vector<float> blurs;
    for (size_t i = 0; i < fits.size(); i += sampleStride()) {
        CornerFit sample;
        sample.position = lattice.corners[i].position;
        sample.blur = level.scale();
        if (!fitOne(level, lattice.corners[i], CornerParameters::PositionAndBlur, 6, sample)) {
            continue;
        }
        for (int finer = level.number - 1; finer >= 0 && sample.blur < leastBlur * levels[size_t(finer) + 1].scale();
             finer--) {
            CornerFit again = sample;
            if (!fitOne(levels[size_t(finer)], lattice.corners[i], CornerParameters::PositionAndBlur, 6, again)) {
                break;
            }
            sample = again;
        }
        blurs.push_back(sample.blur);
    }
    return blurs.empty() ? std::nullopt : std::optional<float>(medianOf(blurs));
}

// Starts with the grey levels of a neighbour, light and dark exchanged. This saves the step that fits only the grey
// levels. False if no neighbour has been fitted.
bool CornerMeasurement::startFromNeighbour(size_t corner) {
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

void CornerMeasurement::fitAll(const ImageLevel &level, float blur) {
    std::vector<float> residuals;
    for (size_t i = 0; i < fits.size(); i++) {
        const LatticeCorner &corner = lattice.corners[i];
        fits[i].position = corner.position;
        fits[i].blur = blur;
        const float sign = lattice.isLight(corner.cell) ? 1.0F : -1.0F;
        const bool started = startFromNeighbour(i);
        good[i] = fitOne(level, corner, CornerParameters::Position, started ? 2 : 3, fits[i]) &&
                  fits[i].amplitude * sign > 1 && fits[i].residual < 0.7F * std::abs(fits[i].amplitude);
        if (good[i]) {
            residuals.push_back(fits[i].residual);
        }
    }
    boardNoise = residuals.empty() ? 1.0F : std::max(0.3F, medianOf(residuals));
    for (size_t i = 0; i < fits.size(); i++) {
        if (good[i]) {
            lattice.corners[i].position = fits[i].position;
        }
    }
}

void CornerMeasurement::refineAll(const ImageLevel &level) {
    lightScatter = surroundings.lightScatter(fits, sampleStride());
    // The noise of the board is measured first, because it determines the weight of each corner's prior.
    std::vector<float> noises;
    for (size_t i = 0; i < fits.size(); i += sampleStride()) {
        CornerFit sample = fits[i];
        if (good[i] && refineOne(level, lattice.corners[i], sample)) {
            noises.push_back(sample.noise);
        }
    }
    if (!noises.empty()) {
        boardNoise = std::max(0.3F, medianOf(noises));
    }
    std::vector<CornerFit> refined = fits;
    for (size_t i = 0; i < fits.size(); i++) {
        good[i] = good[i] && refineOne(level, lattice.corners[i], refined[i]);
    }
    fits = std::move(refined);
    for (size_t i = 0; i < fits.size(); i++) {
        if (good[i]) {
            lattice.corners[i].position = fits[i].position;
        }
    }
}

void CornerMeasurement::keepGood() {
    std::vector<CornerFit> kept;
    for (size_t i = 0; i < fits.size(); i++) {
        if (good[i]) {
            kept.push_back(fits[i]);
        }
    }
    fits = std::move(kept);
    lattice.retain(good);
}

// True if a corner is where its neighbours predict, within a fifth of a step along each axis.
bool liesAt(cv::Point2f expected, const CornerBorders &borders, cv::Point2f position) {
    const cv::Point2f off = position - expected;
    const auto &[step0, step1] = borders.steps;
    const double area = 0.2 * std::abs(step0.cross(step1));
    return std::abs(off.cross(step1)) < area && std::abs(step0.cross(off)) < area;
}

bool CornerMeasurement::findMissing(const ImageLevel &search, const ImageLevel &best, cv::Point cell,
                                    const CornerFit &neighbour) {
    cv::Point2f expected;
    if (lattice.indexAt(cell) >= 0 || !lattice.predict(cell, expected)) {
        return false;
    }
    const LatticeCorner corner{cell, expected};
    const std::optional<CornerBorders> borders = surroundings.bordersByNeighbours(corner);
    CornerFit fit;
    fit.position = expected;
    fit.blur = neighbour.blur;
    if (!borders || !fitOne(search, corner, CornerParameters::Position, 5, fit)) {
        return false;
    }
    const float amplitude = fit.amplitude * (lattice.isLight(cell) ? 1.0F : -1.0F);
    if (!(amplitude > 0.5F * std::abs(neighbour.amplitude) && fit.residual < 0.3F * amplitude) ||
        !refineOne(best, corner, fit) || !liesAt(expected, *borders, fit.position) ||
        !lattice.add({cell, fit.position})) {
        return false;
    }
    fits.push_back(fit);
    return true;
}

// Fits corners at the places that the measured corners predict, until no more are found. Such a corner must be about as
// clear as its neighbours, because nothing else shows that it is a corner.
void CornerMeasurement::measureMissing(const ImageLevel &search, const ImageLevel &best) {
    // findMissing adds to the list during the loop.
    for (size_t i = 0; i < fits.size(); i++) {
        const cv::Point here = lattice.corners[i].cell;
        for (const cv::Point side : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
            findMissing(search, best, here + side, CornerFit(fits[i]));
        }
    }
}

std::vector<CornerFit> CornerMeasurement::measure(std::optional<float> knownBlur) {
    if (lattice.corners.empty()) {
        return {};
    }
    const ImageLevel &search = searchLevel();
    const std::optional<float> blur = knownBlur ? knownBlur : blurIn(search);
    if (!blur) {
        lattice.retain(good);
        return {};
    }
    boardBlur = *blur;
    blurTolerance = knownBlur ? 0.02F : 0.25F;
    const ImageLevel &best = bestLevel(search, boardBlur);
    fitAll(search, boardBlur);
    refineAll(best);
    keepGood();
    measureMissing(search, best);
    estimateSigmas(lattice, fits);
    return std::move(fits);
}

}  // namespace

std::vector<CornerFit> measureCorners(const std::vector<ImageLevel> &levels, CornerLattice &lattice,
                                      std::optional<float> knownBlur) {
    return CornerMeasurement(levels, lattice).measure(knownBlur);
}

}  // namespace pattern_reader
