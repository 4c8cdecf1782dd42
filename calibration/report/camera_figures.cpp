#include "calibration/report/camera_figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "calibration/report/corner_residuals.h"
#include "calibration/report/drawing.h"
#include "calibration/report/page_text.h"

namespace calibration {

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr double radian = 57.29577951308232;  // degrees
constexpr double figureWidth = 600;
// Of all cameras together.
constexpr size_t arrowsInAll = 6000;
constexpr size_t fewestArrows = 200;

// A camera's picture, scaled to the figure's width, or to its height if it is much taller than wide.
class Frame {
public:
    explicit Frame(const Camera &camera, double legendHeight = 0)
        : width(std::max(camera.width, 1)), height(std::max(camera.height, 1)), scale(figureWidth / width) {
        scale = std::min(scale, figureWidth / height);
        legend = legendHeight;
    }

    Vector2d operator()(const Vector2d &pixel) const { return (pixel + Vector2d(0.5, 0.5)) * scale; }
    Vector2d size() const { return Vector2d(width, height) * scale; }
    double unitsPerPixel() const { return scale; }

    Drawing start(const std::string &label) const {
        Drawing drawing(size().x(), size().y() + legend, label);
        Path border;
        border.rectangle(0, 0, size().x(), size().y());
        drawing.add("paper", border);
        return drawing;
    }

    void outline(Drawing &drawing) const {
        Path border;
        border.rectangle(0, 0, size().x(), size().y());
        drawing.add("frame", border);
    }

private:
    double width, height, scale, legend = 0;
};

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

// The factor 1, 2 or 5 times a power of ten that makes a typical arrow about as long as asked, in pixels.
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

// The picture in cells that are about square.
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
    // The picture's coordinates of a corner of a cell, or of its middle.
    Vector2d at(double column, double row) const {
        return {column * camera.width / columns - 0.5, row * camera.height / rows - 0.5};
    }

    const Camera &camera;
    int columns = 1, rows = 1;
};

// Colours between the given ones, for shares from 0 to 1.
template <size_t size>
std::string colourAt(const std::array<Vector3d, size> &ramp, double share) {
    const double place = std::clamp(share, 0.0, 1.0) * double(size - 1);
    const size_t first = std::min(size_t(place), size - 2);
    const Vector3d colour = ramp[first] + (place - double(first)) * (ramp[first + 1] - ramp[first]);
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", unsigned(std::lround(colour[0])),
                  unsigned(std::lround(colour[1])), unsigned(std::lround(colour[2])));
    return text.data();
}

// Distinguishable by lightness too, so that the map survives a black-and-white print: from light to dark.
const std::array<Vector3d, 6> mapRamp{Vector3d(226, 240, 217), Vector3d(168, 216, 185), Vector3d(102, 178, 178),
                                      Vector3d(72, 120, 172),  Vector3d(106, 60, 140),  Vector3d(92, 16, 60)};
const std::array<Vector3d, 3> countRamp{Vector3d(206, 225, 243), Vector3d(92, 152, 206), Vector3d(16, 66, 120)};

// The bands' borders in pixels. The same value has the same colour in every report.
constexpr std::array<double, 14> borders{0.005, 0.01, 0.015, 0.02, 0.03, 0.05, 0.07, 0.1, 0.15, 0.2, 0.3, 0.5, 1, 2};

size_t bandOf(double value) {
    return size_t(std::upper_bound(borders.begin(), borders.end(), value) - borders.begin());
}

std::string bandColour(size_t band) {
    return colourAt(mapRamp, double(band) / double(borders.size()));
}

void drawBands(Drawing &drawing, const Frame &frame, const Camera &camera, const PictureMap &map) {
    const double width = frame.size().x() / map.columns;
    const double height = frame.size().y() / map.rows;
    for (size_t band = 0; band <= borders.size(); band++) {
        Path path;
        for (int row = 0; row < map.rows; row++) {
            for (int column = 0; column < map.columns;) {
                int end = column;
                while (end < map.columns && map.at(end, row) && std::isfinite(*map.at(end, row)) &&
                       bandOf(*map.at(end, row)) == band) {
                    end++;
                }
                if (end > column) {
                    // A little overlap, so that no gap shows between the cells.
                    path.rectangle(column * width, row * height, (end - column) * width + 0.4, height + 0.4);
                }
                column = std::max(end, column + 1);
            }
        }
        drawing.fill(bandColour(band), path);
    }
    constexpr int labels = 5;
    for (int i = 0; i < labels * labels; i++) {
        const int column = std::min(map.columns - 1, map.columns * (i % labels * 2 + 1) / (2 * labels));
        const int row = std::min(map.rows - 1, map.rows * (i / labels * 2 + 1) / (2 * labels));
        if (const std::optional<double> value = map.at(column, row); value && std::isfinite(*value)) {
            drawing.text("value", frame(map.pixel(camera, column, row)) + Vector2d(0, 5), Drawing::Anchor::Middle,
                         rounded(*value, 2));
        }
    }
}

void drawScale(Drawing &drawing, const Frame &frame, size_t first, size_t last) {
    first = first > 0 ? first - 1 : first;
    last = std::min(last + 1, borders.size());
    const double top = frame.size().y() + 12;
    const double width = frame.size().x() * 0.96 / double(last - first + 1);
    const double left = frame.size().x() * 0.02;
    for (size_t band = first; band <= last; band++) {
        Path path;
        path.rectangle(left + double(band - first) * width, top, width, 14);
        drawing.fill(bandColour(band), path);
        if (band == last) {
            break;
        }
        // If there are many borders, those between 1, 2 and 5 have no label, nor has the least one, which is next to
        // another that has.
        const bool isLabelled = band > 0 && niceBelow(borders[band] * 1.001) > borders[band] * 0.99;
        if (last - first < 8 || isLabelled) {
            drawing.text("note", {left + double(band - first + 1) * width, top + 30}, Drawing::Anchor::Middle,
                         shortest(borders[band], 3) + (band + 1 == last ? " px" : ""));
        }
    }
}

void drawPolyline(Drawing &drawing, const Frame &frame, const char *styleClass, std::vector<Vector2d> points,
                  bool isClosed) {
    for (Vector2d &point : points) {
        point = frame(point);
    }
    Path path;
    path.polyline(points, isClosed);
    drawing.add(styleClass, path);
}

}  // namespace

std::string Figure::html() const {
    if (svg.empty()) {
        return {};
    }
    return "<figure><h4>" + escaped(title) + "</h4>\n" + svg + "<figcaption>" + escaped(caption) +
           "</figcaption></figure>\n";
}

Figure residualFigure(const Calibration &calibration, int camera) {
    const std::vector<CornerResidual> residuals = residualsOf(calibration, camera);
    if (residuals.empty()) {
        return {};
    }
    const Frame frame(cameraOf(calibration, camera));
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
    figure.caption = "From where a corner was seen to where the calibration puts it, enlarged " + times(factor) +
                     " times. " +
                     (step > 1 ? count(long(shown)) + " of " + count(long(residuals.size())) + " corners. " : "") +
                     "They should point in all directions.";
    return figure;
}

Figure meanResidualFigure(const Calibration &calibration, int camera) {
    const Frame frame(cameraOf(calibration, camera));
    const CellGrid grid(cameraOf(calibration, camera), 16);
    std::vector<Vector2d> sums(grid.size(), Vector2d::Zero());
    std::vector<int> counts(grid.size());
    for (const CornerResidual &residual : residualsOf(calibration, camera)) {
        const size_t cell = grid.cellOf(residual.image);
        sums[cell] += residual.error;
        counts[cell]++;
    }
    constexpr int fewest = 4;  // corners that make a mean
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
    return {"Mean residuals", drawing.svg(),
            "The mean of all residuals in each part of the picture, enlarged " + times(factor) +
                " times. If neighbours point the same way, the lens model does not fit there. Greatest mean: " +
                rounded(*std::max_element(lengths.begin(), lengths.end()), 2) + " px."};
}

Figure coverageFigure(const Calibration &calibration, int camera) {
    const Frame frame(cameraOf(calibration, camera), 44);
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
            "How many corners each part of the picture has. " +
                number(100.0 * double(grid.size() - empty) / double(grid.size()), 0) +
                " % of the picture has at least one."};
}

Figure mapFigure(const Camera &camera, const PictureMap &map, const std::string &title, const std::string &caption) {
    size_t first = borders.size();
    size_t last = 0;
    for (const std::optional<double> &value : map.values) {
        if (value && std::isfinite(*value)) {
            first = std::min(first, bandOf(*value));
            last = std::max(last, bandOf(*value));
        }
    }
    if (map.columns < 1 || map.rows < 1 || first > last) {
        return {};
    }
    const Frame frame(camera, 44);
    Drawing drawing = frame.start(title);
    drawBands(drawing, frame, camera, map);
    frame.outline(drawing);
    drawScale(drawing, frame, first, last);
    return {title, drawing.svg(), caption};
}

Figure lensFigure(const Camera &camera, const Eigen::VectorXd &intrinsics) {
    const Frame frame(camera);
    // The widest angle from the axis, up to which lines are drawn.
    double widest = 0;
    for (int i = 0; i <= 8; i++) {
        for (const Vector2d &pixel :
             {Vector2d(camera.width * i / 8.0, 0), Vector2d(camera.width * i / 8.0, camera.height),
              Vector2d(0, camera.height * i / 8.0), Vector2d(camera.width, camera.height * i / 8.0)}) {
            Vector3d direction;
            if (unproject(camera.lens, intrinsics.data(), pixel, direction)) {
                widest = std::max(widest, std::atan2(direction.head<2>().norm(), direction.z()) * radian);
            }
        }
    }
    if (!(widest > 0)) {
        return {};
    }
    const double limit = std::min(widest, 85.0);
    const double spacing = limit > 40 ? 10 : limit > 16 ? 5 : limit > 7 ? 2 : std::max(niceBelow(limit / 4), 0.01);
    Drawing drawing = frame.start("Straight lines as the lens shows them");
    for (int axis = 0; axis < 2; axis++) {
        for (int line = -int(limit / spacing); line <= int(limit / spacing); line++) {
            std::vector<Vector2d> points;
            const double across = line * spacing / radian;
            for (int i = -24; i <= 24; i++) {
                // Equal steps along the line would crowd far away, so the steps are angles.
                const double along = i / 24.0 * limit / radian;
                Vector3d direction(std::sin(across) * std::cos(along), std::sin(along),
                                   std::cos(across) * std::cos(along));
                if (axis == 1) {
                    std::swap(direction.x(), direction.y());
                }
                // Outside of the picture, the distortion may fold over.
                Vector2d image;
                const double angle = std::acos(std::clamp(direction.z(), -1.0, 1.0)) * radian;
                const bool isSeen =
                    angle <= widest && project(camera.lens, intrinsics.data(), direction, image) && image.allFinite();
                points.push_back(isSeen ? frame(image) : Vector2d::Constant(std::nan("")));
            }
            Path path;
            path.polyline(points, false);
            drawing.add(line == 0 ? "strong" : "thin", path);
        }
    }
    frame.outline(drawing);
    return {"Distortion", drawing.svg(),
            "Lines that are straight in the world, every " + rounded(spacing, 1) +
                " degrees, as this lens shows them. The strong lines cross on the optical axis."};
}

Figure nextPhotographFigure(const Calibration &calibration) {
    if (!calibration.next) {
        return {};
    }
    const NextPhotograph &next = *calibration.next;
    const Camera &camera = cameraOf(calibration, next.camera);
    const Frame frame(camera);
    const Eigen::VectorXd &intrinsics = calibration.estimate.intrinsics[size_t(next.camera)];
    const auto seen = [&](const Vector2d &point) -> Vector2d {
        Vector2d image;
        const bool isSeen =
            project(camera.lens, intrinsics.data(), next.cameraFromPrint * Vector3d(point.x(), point.y(), 0), image);
        return isSeen ? image : Vector2d::Constant(std::nan(""));
    };
    const std::vector<Vector2d> &points = calibration.observations.prints[size_t(next.print)].points;
    if (points.empty()) {
        return {};
    }
    Vector2d least = points.front();
    Vector2d most = points.front();
    for (const Vector2d &point : points) {
        least = least.cwiseMin(point);
        most = most.cwiseMax(point);
    }
    Drawing drawing = frame.start("Where to hold the target");
    constexpr int lines = 8;
    constexpr int steps = 12;
    for (int line = 0; line <= lines; line++) {
        for (int axis = 0; axis < 2; axis++) {
            std::vector<Vector2d> way;
            for (int i = 0; i <= steps; i++) {
                Vector2d share(double(line) / lines, double(i) / steps);
                if (axis == 1) {
                    std::swap(share.x(), share.y());
                }
                way.push_back(seen(least + share.cwiseProduct(most - least)));
            }
            drawPolyline(drawing, frame, line == 0 || line == lines ? "strong" : "thin", way, false);
        }
    }
    drawing.text("value", frame(seen(least)) + Vector2d(0, -4), Drawing::Anchor::Middle, "top left");
    drawing.text("value", frame(seen({most.x(), least.y()})) + Vector2d(0, -4), Drawing::Anchor::Middle, "top right");
    frame.outline(drawing);
    return {"The next photograph", drawing.svg(),
            "Camera \"" + camera.name +
                "\": hold the target so that the picture shows it like this. The greatest "
                "uncertainty falls from " +
                rounded(next.uncertaintyBefore, 2) + " to " + rounded(next.uncertaintyAfter, 2) + " px."};
}

}  // namespace calibration
