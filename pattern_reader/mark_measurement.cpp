#include "pattern_reader/mark_measurement.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "pattern_reader/mark_fit.h"
#include "pattern_reader/mark_map.h"

namespace pattern_reader {

namespace {

struct FittedMark {
    cv::Point cell;
    MarkFit fit;       // in image coordinates
    size_t level = 0;  // level in which the mark was fitted
    // The rms residual divided by the contrast, times the level's scale, so that marks fitted in different levels can
    // be compared.
    double noise = 0;
    bool disturbed = false;
};

double quantileOf(std::vector<double> values, double share) {
    const auto place = values.begin() + std::ptrdiff_t(share * double(values.size()));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

double medianOf(std::vector<double> values) {
    return quantileOf(std::move(values), 0.5);
}

// Converts a fit to the pixels of another level. The grey levels are unchanged.
MarkFit rescale(const MarkFit &fit, const ImageLevel &from, const ImageLevel &to) {
    const double factor = from.scale() / to.scale();
    MarkFit scaled = fit;
    scaled.centre = (fit.centre + cv::Point2d(0.5, 0.5)) * factor - cv::Point2d(0.5, 0.5);
    scaled.toUnit = fit.toUnit * (1 / factor);
    scaled.slope = fit.slope * (1 / factor);
    for (size_t i = 0; i < scaled.reflection.size(); i++) {
        scaled.reflection[i] /= i < 2 ? factor : factor * factor;
    }
    scaled.blur = fit.blur * factor;
    scaled.sigma = fit.sigma * factor;
    return scaled;
}

// Fits a mark first in a level in which it is small, and then in finer ones as long as these add information.
bool fitThroughLevels(const std::vector<ImageLevel> &levels, double usualBlur, FittedMark &mark) {
    constexpr double smallRadius = 14;  // pixels
    constexpr double soft = 1.4;        // pixels; with more blur, a finer level shows nothing new
    size_t number = 0;
    const double radius = std::sqrt(mark.fit.shortRadius() * mark.fit.longRadius());
    while (number + 1 < levels.size() && radius > smallRadius * levels[number].scale()) {
        number++;
    }
    MarkFit fit = rescale(mark.fit, levels.front(), levels[number]);
    fit.blur = number == 0 && usualBlur > 0 ? usualBlur : 0.7;
    for (;; number--) {
        const bool last = number == 0;
        if (!fitMark(levels[number].picture, last ? 6 : 4, fit)) {
            return false;
        }
        if (last || fit.blur > soft) {
            break;
        }
        fit = rescale(fit, levels[number], levels[number - 1]);
        // rescale() has doubled the blur in pixels. The real blur in the finer level is smaller than that. A part of
        // the blur comes from the averaging over a pixel's area, and this part is the same number of pixels in every
        // level.
        fit.blur = std::max(0.5, 0.8 * fit.blur);
    }
    mark.level = number;
    mark.fit = rescale(fit, levels[number], levels.front());
    return true;
}

// For each mark, true if it may be in a reflection. A reflection adds the same light to mark and paper, so it raises
// the ratio of the dark level to the light level. If more than a quarter of the marks may be in a reflection, the
// reflection probably reaches all marks. The result is then true for every mark.
std::vector<bool> inReflection(const std::vector<FittedMark> &marks) {
    std::vector<double> shares;
    std::vector<double> scatters;
    for (const FittedMark &mark : marks) {
        shares.push_back(mark.fit.dark / mark.fit.light);
        scatters.push_back(mark.fit.residual / mark.fit.light);
    }
    const double most = quantileOf(shares, 0.1) + 0.01 + 0.2 * medianOf(scatters);
    std::vector<bool> raised;
    raised.reserve(shares.size());
    for (const double share : shares) {
        raised.push_back(share > most);
    }
    if (size_t(std::count(raised.begin(), raised.end(), true)) * 4 > marks.size()) {
        raised.assign(marks.size(), true);
    }
    return raised;
}

// Fits a reflection to the marks that may be in one. If a mark's residual is still clearly greater than those of the
// best quarter of the marks, the cause is something else, such as a shadow or a cover. The fit without a reflection is
// then kept.
void fitReflections(const std::vector<ImageLevel> &levels, std::vector<FittedMark> &marks) {
    const std::vector<bool> raised = inReflection(marks);
    std::vector<MarkFit> lit;
    std::vector<double> residuals;
    for (size_t i = 0; i < marks.size(); i++) {
        lit.push_back(marks[i].fit);
        if (raised[i]) {
            const ImageLevel &level = levels[marks[i].level];
            MarkFit fit = rescale(marks[i].fit, levels.front(), level);
            fitReflection(level.picture, 6, fit);
            lit.back() = rescale(fit, level, levels.front());
        }
        residuals.push_back(lit.back().residual);
    }
    const double most = 1.3 * quantileOf(residuals, 0.25);
    for (size_t i = 0; i < marks.size(); i++) {
        marks[i].fit = lit[i].residual < most ? lit[i] : marks[i].fit;
    }
}

std::vector<FittedMark> fitAll(const std::vector<ImageLevel> &levels, const MarkLattice &found) {
    std::vector<FittedMark> fitted;
    double usualBlur = 0;
    for (size_t i = 0; i < found.marks.size(); i++) {
        FittedMark mark;
        mark.cell = found.lattice.corners[i].cell;
        mark.fit.centre = found.marks[i].centre;
        mark.fit.toUnit = found.marks[i].toUnit;
        mark.fit.light = double(found.marks[i].lightLevel);
        mark.fit.dark = double(found.marks[i].darkLevel);
        if (fitThroughLevels(levels, usualBlur, mark)) {
            fitted.push_back(mark);
            usualBlur = mark.fit.blur;
        }
    }
    if (!fitted.empty()) {
        fitReflections(levels, fitted);
    }
    for (FittedMark &mark : fitted) {
        mark.noise = mark.fit.residual / (mark.fit.light - mark.fit.dark) * double(levels[mark.level].scale());
    }
    return fitted;
}

// Removes the marks that do not look like marks, and sets `disturbed` for those that look worse than the others.
void judgeLooks(std::vector<FittedMark> &marks) {
    std::vector<double> noises;
    noises.reserve(marks.size());
    for (const FittedMark &mark : marks) {
        noises.push_back(mark.noise);
    }
    const double usual = medianOf(noises);
    for (FittedMark &mark : marks) {
        mark.disturbed = mark.noise > 1.6 * usual + 0.01;
    }
    marks.erase(std::remove_if(marks.begin(), marks.end(),
                               [&](const FittedMark &mark) { return mark.noise > 3 * usual + 0.08; }),
                marks.end());
}

// Fits a map to the undisturbed marks, or to all marks if there are too few undisturbed ones. Disturbed marks are left
// out because the map could follow their errors. For example, a cover that hides a part of each mark in a row displaces
// all their centres in the same direction.
MarkMap mapOf(const std::vector<FittedMark> &marks) {
    std::vector<MappedMark> clear;
    std::vector<MappedMark> all;
    for (const FittedMark &mark : marks) {
        all.push_back({mark.cell, mark.fit.centre});
        if (!mark.disturbed) {
            clear.push_back(all.back());
        }
    }
    MarkMap map(clear);
    return map.isKnown() || clear.size() == all.size() ? map : MarkMap(all);
}

// The radius of the marks as they are seen, in cells. It differs a little from the drawn radius, because ink spreads.
double seenRadius(const std::vector<FittedMark> &marks, const MarkMap &map, double drawn) {
    std::vector<double> radii;
    radii.reserve(marks.size());
    for (const FittedMark &mark : marks) {
        radii.push_back(1 / std::sqrt(std::abs(cv::determinant(mark.fit.toUnit * map.stepsAt(mark.cell)))));
    }
    return std::clamp(medianOf(radii), 0.85 * drawn, 1.2 * drawn);
}

// Compares a mark's shape with a circle that is mapped to the picture. In each direction, the longer of their two radii
// is divided by the shorter one. Returns the greatest of these ratios.
double shapeError(const FittedMark &mark, const cv::Matx22d &fromUnit) {
    const cv::Matx22d m = mark.fit.toUnit * fromUnit;
    const cv::Matx22d square = m.t() * m;
    const double half = (square(0, 0) + square(1, 1)) / 2;
    const double root = std::hypot((square(0, 0) - square(1, 1)) / 2, square(0, 1));
    return std::sqrt(std::max(half + root, 1 / std::max(1e-6, half - root)));
}

// Removes the marks whose place or shape is not what their neighbours predict. True if any were removed.
bool judgeNeighbourhood(const MarkMap &map, double radius, std::vector<FittedMark> &marks) {
    std::vector<double> offs;
    for (const FittedMark &mark : marks) {
        const cv::Matx22d steps = map.stepsAt(mark.cell);
        const cv::Point2d off = mark.fit.centre - map.at(mark.cell);
        offs.push_back(cv::norm(steps.inv() * cv::Vec2d(off.x, off.y)));
    }
    const double usualOff = medianOf(offs);
    std::vector<FittedMark> kept;
    for (size_t i = 0; i < marks.size(); i++) {
        const cv::Matx22d fromUnit = map.stepsAt(marks[i].cell) * radius;
        const double looseness = 1 + 1 / marks[i].fit.shortRadius();
        const double most =
            marks[i].disturbed ? std::min(0.02, 4 * usualOff + 0.004) : std::min(0.05, 8 * usualOff + 0.01);
        if (offs[i] < most && shapeError(marks[i], fromUnit) < (marks[i].disturbed ? 1.1 : 1.2) * looseness) {
            kept.push_back(marks[i]);
        }
    }
    const bool any = kept.size() < marks.size();
    marks = std::move(kept);
    return any;
}

// For the marks in and around a cell: returns the mean squared distance from their places in the map, in pixels². The
// part that the marks' noise explains is subtracted. Disturbed marks do not count.
double unexplained(const std::vector<FittedMark> &marks, const MarkMap &map, cv::Point cell) {
    // The map is fitted to these marks and partly follows the noise of each, so only this share of the noise's variance
    // is left in the distances.
    constexpr double left = 0.4;
    double sum = 0;
    int count = 0;
    for (const FittedMark &mark : marks) {
        const cv::Point d = mark.cell - cell;
        if (std::max(std::abs(d.x), std::abs(d.y)) <= 1 && !mark.disturbed) {
            const cv::Point2d off = mark.fit.centre - map.at(mark.cell);
            sum += off.dot(off) - 2 * left * mark.fit.sigma * mark.fit.sigma;
            count++;
        }
    }
    return count > 0 ? std::max(0.0, sum / count) : 0;
}

// The standard deviation of a mark's position. It consists of the standard deviation of the fit and of errors that
// noise does not explain:
// - The model is not exactly what a camera sees.
// - The bend that a lens or curved paper causes moves the image of the mark's centre away from the centre of the
//   fitted ellipse. This offset is known to about seven per cent.
// - Where waves or creases bend the paper more than the map can follow, the marks lie away from their places in the
//   map. The offset is then wrong by about a quarter of this distance.
// - A disturbed mark may be wrong by its distance from the position that its neighbours predict.
double sigmaOf(const FittedMark &mark, const std::vector<FittedMark> &marks, const MarkMap &map, double radius) {
    constexpr double model = 0.001;  // pixels
    constexpr double share = 0.07;
    constexpr double followed = 0.25;
    const double bent = cv::norm(map.bentOffset(mark.cell, radius));
    const double off = mark.disturbed ? cv::norm(mark.fit.centre - map.at(mark.cell)) : 0;
    return std::sqrt(mark.fit.sigma * mark.fit.sigma + model * model + share * share * bent * bent + off * off +
                     followed * followed * unexplained(marks, map, mark.cell));
}

}  // namespace

std::vector<MeasuredMark> measureMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found,
                                       double drawnRadius) {
    std::vector<FittedMark> marks = fitAll(levels, found);
    if (marks.empty()) {
        return {};
    }
    judgeLooks(marks);
    MarkMap map = mapOf(marks);
    if (!map.isKnown()) {
        return {};
    }
    const double radius = seenRadius(marks, map, drawnRadius);
    if (judgeNeighbourhood(map, radius, marks)) {
        map = mapOf(marks);
    }
    if (!map.isKnown()) {
        return {};
    }
    std::vector<MeasuredMark> measured;
    measured.reserve(marks.size());
    for (const FittedMark &mark : marks) {
        measured.push_back({mark.cell, mark.fit.centre + map.centreOffset(mark.cell, radius),
                            sigmaOf(mark, marks, map, radius), mark.disturbed});
    }
    return measured;
}

}  // namespace pattern_reader
