#include "calibration/report/camera_figures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/report/drawing.h"
#include "calibration/report/page_text.h"
#include "calibration/report/picture_frame.h"

namespace calibration {

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr double radian = 57.29577951308232;  // degrees

// The colours go from light to dark, so that they can also be told apart in a black-and-white print.
const std::array<Vector3d, 6> mapRamp{Vector3d(226, 240, 217), Vector3d(168, 216, 185), Vector3d(102, 178, 178),
                                      Vector3d(72, 120, 172),  Vector3d(106, 60, 140),  Vector3d(92, 16, 60)};
// The values of a map, in pixels, at which the colour changes. They are fixed, so that a value has the same colour in
// every report.
constexpr std::array<double, 14> borders{0.005, 0.01, 0.015, 0.02, 0.03, 0.05, 0.07, 0.1, 0.15, 0.2, 0.3, 0.5, 1, 2};

size_t bandOf(double value) {
    return size_t(std::upper_bound(borders.begin(), borders.end(), value) - borders.begin());
}

std::string bandColour(size_t band) {
    return colourAt(mapRamp, double(band) / double(borders.size()));
}

void drawBands(Drawing &drawing, const PictureFrame &frame, const Camera &camera, const PictureMap &map) {
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
                    // The cells overlap a little, so that no gaps are visible between them.
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

void drawScale(Drawing &drawing, const PictureFrame &frame, size_t first, size_t last) {
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
        // If there are many borders, only those at 1, 2 or 5 times a power of ten have a label. In that case, the
        // lowest border (0.005) has none, because the label of the next border (0.01) would be too near.
        const bool isLabelled = band > 0 && niceBelow(borders[band] * 1.001) > borders[band] * 0.99;
        if (last - first < 8 || isLabelled) {
            drawing.text("note", {left + double(band - first + 1) * width, top + 30}, Drawing::Anchor::Middle,
                         shortest(borders[band], 3) + (band + 1 == last ? " px" : ""));
        }
    }
}

void drawPolyline(Drawing &drawing, const PictureFrame &frame, const char *styleClass, std::vector<Vector2d> points,
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
    const PictureFrame frame(camera, 44);
    Drawing drawing = frame.start(title);
    drawBands(drawing, frame, camera, map);
    frame.outline(drawing);
    drawScale(drawing, frame, first, last);
    return {title, drawing.svg(), caption};
}

Figure lensFigure(const Camera &camera, const Eigen::VectorXd &intrinsics) {
    const PictureFrame frame(camera);
    // The greatest angle from the axis that the picture shows, in degrees. Nothing is drawn beyond it.
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
                // The angle between neighbouring points is always the same. Points at equal distances along a straight
                // line would be crowded far from the axis.
                const double along = i / 24.0 * limit / radian;
                Vector3d direction(std::sin(across) * std::cos(along), std::sin(along),
                                   std::cos(across) * std::cos(along));
                if (axis == 1) {
                    std::swap(direction.x(), direction.y());
                }
                // Points at greater angles than the picture shows are left out, because the model of the distortion may
                // bring them back into the picture.
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
            "Straight lines of the world, drawn every " + rounded(spacing, 1) +
                " degrees, as this lens shows them. The strong lines cross on the optical axis."};
}

Figure nextPhotographFigure(const Calibration &calibration) {
    if (!calibration.next) {
        return {};
    }
    const NextPhotograph &next = *calibration.next;
    const Camera &camera = calibration.observations.cameras[size_t(next.camera)];
    const PictureFrame frame(camera);
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
