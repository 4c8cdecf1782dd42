// Draws the figures of residuals and of the places where corners were seen.
#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/report/camera_figures.h"
#include "calibration/report/corner_residuals.h"
#include "calibration/report/drawing.h"
#include "calibration/report/page_text.h"
#include "calibration/report/picture_frame.h"

namespace calibration {

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

// At most this many arrows are drawn for all cameras together. All cameras get the same share. But if there are so many
// cameras that the share would be less than `fewestArrows`, each camera gets `fewestArrows`.
constexpr size_t arrowsInAll = 6000;
constexpr size_t fewestArrows = 200;

const std::array<Vector3d, 3> countRamp{Vector3d(206, 225, 243), Vector3d(92, 152, 206), Vector3d(16, 66, 120)};

const Camera &cameraOf(const Calibration &calibration, int camera) {
    return calibration.observations.cameras[size_t(camera)];
}

std::vector<CornerResidual> residualsOf(const Calibration &calibration, int camera) {
    std::vector<CornerResidual> result;
    const Observations &observations = calibration.observations;
    for (const Sighting &sighting : observations.sightings) {
        if (observations.photographs[size_t(sighting.photograph)].camera == camera) {
            const std::vector<CornerResidual> more = cornerResiduals(calibration, sighting);
            result.insert(result.end(), more.begin(), more.end());
        }
    }
    return result;
}

// Returns the factor by which arrows are enlarged. It is the greatest round number (..., 0.5, 1, 2, 5, 10, 20, ...) for
// which about nine in ten enlarged arrows are at most `wanted` long. `lengths` and `wanted` have the same unit.
double enlargement(std::vector<double> lengths, double wanted) {
    if (lengths.empty()) {
        return 1;
    }
    const auto most = lengths.begin() + std::ptrdiff_t(lengths.size() * 9 / 10);
    std::nth_element(lengths.begin(), most, lengths.end());
    return niceBelow(wanted / std::max(*most, 1e-9));
}

std::string times(double factor) {
    return factor >= 1 ? count(long(factor)) : number(factor, 3);
}

// Divides the picture into cells that are about square.
struct CellGrid {
    CellGrid(const Camera &picture, int most) : camera(picture) {
        const int longer = std::max(camera.width, camera.height);
        columns = std::max(1, most * camera.width / std::max(longer, 1));
        rows = std::max(1, most * camera.height / std::max(longer, 1));
    }

    size_t size() const { return size_t(columns) * size_t(rows); }
    size_t cellOf(const Vector2d &pixel) const {
        const auto index = [](double at, int extent, int cells) {
            return std::clamp(int((at + 0.5) / std::max(extent, 1) * cells), 0, cells - 1);
        };
        return size_t(index(pixel.y(), camera.height, rows)) * size_t(columns) +
               size_t(index(pixel.x(), camera.width, columns));
    }
    // Returns the pixel of a place in the grid. Whole numbers give the corner of a cell; adding 0.5 to both gives its
    // middle.
    Vector2d at(double column, double row) const {
        return {column * camera.width / columns - 0.5, row * camera.height / rows - 0.5};
    }

    const Camera &camera;
    int columns = 1, rows = 1;
};

}  // namespace

Figure residualFigure(const Calibration &calibration, int camera) {
    const std::vector<CornerResidual> residuals = residualsOf(calibration, camera);
    if (residuals.empty()) {
        return {};
    }
    const PictureFrame frame(cameraOf(calibration, camera));
    std::vector<double> lengths(residuals.size());
    std::transform(residuals.begin(), residuals.end(), lengths.begin(),
                   [](const CornerResidual &residual) { return residual.error.norm(); });
    const double factor = enlargement(lengths, 0.045 * figureWidth / frame.unitsPerPixel());
    const size_t most = std::max(arrowsInAll / calibration.observations.cameras.size(), fewestArrows);
    const size_t step = (residuals.size() + most - 1) / most;
    Path arrows;
    size_t shown = 0;
    for (size_t i = 0; i < residuals.size(); i += step, shown++) {
        const Vector2d from = frame(residuals[i].image);
        arrows.arrow(from, from + residuals[i].error * factor * frame.unitsPerPixel(), 4);
    }
    Figure figure{"Residuals", {}, {}};
    Drawing drawing = frame.start("Residuals over the picture");
    drawing.add("thin", arrows);
    frame.outline(drawing);
    figure.svg = drawing.svg();
    figure.caption =
        "Each arrow starts at a corner seen in a photograph and points towards the place to which the calibration "
        "projects this corner. The length of the arrow is the distance between the corner and this place, enlarged " +
        times(factor) + " times. " +
        (step > 1 ? count(long(shown)) + " of " + count(long(residuals.size())) + " corners are shown. " : "") +
        "The arrows should point in all directions.";
    return figure;
}

Figure meanResidualFigure(const Calibration &calibration, int camera) {
    const PictureFrame frame(cameraOf(calibration, camera));
    const CellGrid grid(cameraOf(calibration, camera), 16);
    std::vector<Vector2d> sums(grid.size(), Vector2d::Zero());
    std::vector<int> counts(grid.size());
    for (const CornerResidual &residual : residualsOf(calibration, camera)) {
        const size_t cell = grid.cellOf(residual.image);
        sums[cell] += residual.error;
        counts[cell]++;
    }
    constexpr int fewest = 4;  // a mean of fewer corners is not shown
    std::vector<double> lengths;
    for (size_t cell = 0; cell < grid.size(); cell++) {
        if (counts[cell] >= fewest) {
            sums[cell] /= counts[cell];
            lengths.push_back(sums[cell].norm());
        }
    }
    if (lengths.empty()) {
        return {};
    }
    const double factor = enlargement(lengths, 0.06 * figureWidth / frame.unitsPerPixel());
    Path arrows;
    Path dots;
    for (size_t cell = 0; cell < grid.size(); cell++) {
        if (counts[cell] >= fewest) {
            const size_t column = cell % size_t(grid.columns);
            const size_t row = cell / size_t(grid.columns);
            const Vector2d from = frame(grid.at(double(column) + 0.5, double(row) + 0.5));
            dots.dot(from, 1.2);
            arrows.arrow(from, from + sums[cell] * factor * frame.unitsPerPixel(), 6);
        }
    }
    Drawing drawing = frame.start("Mean residual of each part of the picture");
    drawing.add("dots", dots);
    drawing.add("strong", arrows);
    frame.outline(drawing);
    return {
        "Mean residuals", drawing.svg(),
        "The mean of the residuals in each part of the picture that has at least " + std::to_string(fewest) +
            " corners, enlarged " + times(factor) +
            " times. If neighbouring arrows point the same way, the lens model does not fit there. Greatest mean: " +
            rounded(*std::max_element(lengths.begin(), lengths.end()), 2) + " px."};
}

Figure coverageFigure(const Calibration &calibration, int camera) {
    const PictureFrame frame(cameraOf(calibration, camera), 44);
    const CellGrid grid(cameraOf(calibration, camera), 24);
    std::vector<int> counts(grid.size());
    for (const CornerResidual &residual : residualsOf(calibration, camera)) {
        counts[grid.cellOf(residual.image)]++;
    }
    constexpr std::array<int, 6> steps{1, 3, 10, 30, 100, 300};
    const double width = frame.size().x() / grid.columns;
    const double height = frame.size().y() / grid.rows;
    std::array<Path, steps.size()> paths;
    size_t empty = 0;
    for (size_t cell = 0; cell < grid.size(); cell++) {
        const auto step = size_t(std::upper_bound(steps.begin(), steps.end(), counts[cell]) - steps.begin());
        if (step == 0) {
            empty++;
        } else {
            const size_t row = cell / size_t(grid.columns);
            const size_t column = cell % size_t(grid.columns);
            paths[step - 1].rectangle(double(column) * width + 0.5, double(row) * height + 0.5, width - 1, height - 1);
        }
    }
    if (empty == grid.size()) {
        return {};
    }
    Drawing drawing = frame.start("Corners in each part of the picture");
    const double scaleWidth = frame.size().x() * 0.96 / double(steps.size());
    for (size_t step = 0; step < steps.size(); step++) {
        const std::string colour = colourAt(countRamp, double(step) / double(steps.size() - 1));
        drawing.fill(colour, paths[step]);
        Path scale;
        const double left = frame.size().x() * 0.02 + double(step) * scaleWidth;
        scale.rectangle(left, frame.size().y() + 12, scaleWidth, 14);
        drawing.fill(colour, scale);
        const std::string from = std::to_string(steps[step]);
        drawing.text(
            "note", {left + scaleWidth / 2, frame.size().y() + 42}, Drawing::Anchor::Middle,
            step + 1 == steps.size() ? from + "+" : from + "\xE2\x80\x93" + std::to_string(steps[step + 1] - 1));
    }
    frame.outline(drawing);
    return {"Coverage", drawing.svg(),
            "The number of used corners in each part of the picture. " +
                number(100.0 * double(grid.size() - empty) / double(grid.size()), 0) +
                " % of the parts have at least one corner."};
}

}  // namespace calibration
