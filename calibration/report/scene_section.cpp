#include <Eigen/Core>
#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "calibration/joint_solve.h"
#include "calibration/report/drawing.h"
#include "calibration/report/page_text.h"
#include "calibration/report/sections.h"

namespace calibration {

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr size_t mostCameras = 200;
constexpr size_t mostPrints = 200;
constexpr size_t mostLabels = 40;
constexpr int styles = 6;  // the style classes of cameras are "camera0" to "camera5"

// A camera at one moment: its pose, and the directions of the corners of its picture.
struct Viewpoint {
    int camera = 0;
    RigidMotion worldFromCamera;
    std::array<Vector3d, 4> corners;
};

struct Outline {
    std::string name;
    std::vector<Vector3d> border;
};

std::array<Vector3d, 4> pictureCorners(const Camera &camera, const Eigen::VectorXd &intrinsics) {
    std::array<Vector3d, 4> result;
    const std::array<Vector2d, 4> pixels{Vector2d(0, 0), Vector2d(camera.width, 0),
                                         Vector2d(camera.width, camera.height), Vector2d(0, camera.height)};
    for (size_t i = 0; i < pixels.size(); i++) {
        Vector3d direction;
        const bool isSeen = unproject(camera.lens, intrinsics.data(), pixels[i], direction);
        // A camera is drawn as a pyramid. Directions more than about 66 degrees from the axis would make the pyramid
        // nearly flat. Such directions, and those that are not found, are replaced by the directions of a pinhole
        // camera whose focal length is the picture's width.
        const Vector2d fallback = pixels[i] / camera.width - Vector2d(0.5, 0.5 * camera.height / camera.width);
        const Vector2d across =
            isSeen && direction.z() > 0.4 ? Vector2d(direction.head<2>() / direction.z()) : fallback;
        result[i] = Vector3d(across.x(), across.y(), 1);
    }
    return result;
}

std::vector<Viewpoint> viewpointsOf(const Calibration &calibration, int group) {
    const Observations &observations = calibration.observations;
    const Estimate &estimate = calibration.estimate;
    std::set<int> photographs;
    for (const Sighting &sighting : observations.sightings) {
        if (estimate.groups[size_t(sighting.print)] == group && takesPart(observations, sighting, estimate)) {
            photographs.insert(sighting.photograph);
        }
    }
    std::vector<Viewpoint> result;
    const size_t step = (photographs.size() + mostCameras - 1) / mostCameras;
    size_t index = 0;
    for (const int photograph : photographs) {
        if (index++ % step == 0) {
            const Photograph &shot = observations.photographs[size_t(photograph)];
            const auto camera = size_t(shot.camera);
            const RigidMotion cameraFromWorld =
                estimate.cameraFromRig[camera] * estimate.rigFromWorld[size_t(shot.moment)];
            result.push_back({shot.camera, cameraFromWorld.inverse(),
                              pictureCorners(observations.cameras[camera], estimate.intrinsics[camera])});
        }
    }
    return result;
}

Outline outlineOf(const Calibration &calibration, int index) {
    const Print &print = calibration.observations.prints[size_t(index)];
    const PrintShape &shape = calibration.estimate.shapes[size_t(index)];
    Outline outline{print.number >= 0 ? std::to_string(print.number) : print.name, {}};
    if (print.points.empty()) {
        return outline;
    }
    Vector2d least = print.points.front();
    Vector2d most = least;
    for (const Vector2d &point : print.points) {
        least = least.cwiseMin(point);
        most = most.cwiseMax(point);
    }
    constexpr int steps = 6;  // points along each side, because prints may be bent
    const std::array<Vector2d, 5> shares{Vector2d(0, 0), Vector2d(1, 0), Vector2d(1, 1), Vector2d(0, 1),
                                         Vector2d(0, 0)};
    for (size_t side = 0; side < 4; side++) {
        for (int i = 0; i < steps; i++) {
            const Vector2d share = shares[side] + (shares[side + 1] - shares[side]) * i / steps;
            const Vector2d drawn = least + share.cwiseProduct(most - least);
            outline.border.push_back(calibration.estimate.worldFromPrint[size_t(index)] *
                                     printedPoint(shape.numbers.data(), shape.reach, drawn).place);
        }
    }
    return outline;
}

std::vector<Outline> outlinesOf(const Calibration &calibration, int group) {
    std::vector<Outline> result;
    for (size_t print = 0; print < calibration.observations.prints.size() && result.size() < mostPrints; print++) {
        if (calibration.estimate.groups[print] == group) {
            result.push_back(outlineOf(calibration, int(print)));
        }
    }
    return result;
}

// The direction from which a figure shows the scene. `right` and `down` are the world directions that point right and
// down in the figure.
struct Side {
    const char *title;
    Vector3d right, down;
    const char *caption;

    Vector2d operator()(const Vector3d &point) const { return {right.dot(point), down.dot(point)}; }
};

class SceneView {
public:
    SceneView(const Side &from, const std::vector<Viewpoint> &viewpoints, const std::vector<Outline> &outlines)
        : side(from) {
        for (const Outline &outline : outlines) {
            for (const Vector3d &point : outline.border) {
                include(point);
            }
        }
        for (const Viewpoint &viewpoint : viewpoints) {
            include(viewpoint.worldFromCamera.translation);
        }
        const Vector2d size = (most - least).cwiseMax(1e-6);
        pyramid = 0.05 * size.maxCoeff();
        least -= Vector2d::Constant(1.6 * pyramid);
        most += Vector2d::Constant(1.6 * pyramid);
        scale = width / std::max(most.x() - least.x(), (most.y() - least.y()) * width / greatestHeight);
    }

    std::string draw(const std::vector<Viewpoint> &viewpoints, const std::vector<Outline> &outlines) const {
        const double height = (most.y() - least.y()) * scale;
        Drawing drawing(width, height + 30, std::string("The scene ") + side.title);
        for (const Viewpoint &viewpoint : viewpoints) {
            drawCamera(drawing, viewpoint);
        }
        for (const Outline &outline : outlines) {
            drawPrint(drawing, outline, outlines.size() <= mostLabels);
        }
        drawScale(drawing, height);
        return drawing.svg();
    }

private:
    static constexpr double width = 600;
    static constexpr double greatestHeight = 560;

    void include(const Vector3d &point) {
        if (point.allFinite()) {
            least = least.cwiseMin(side(point));
            most = most.cwiseMax(side(point));
        }
    }

    Vector2d place(const Vector3d &point) const {
        const double margin = (width - (most.x() - least.x()) * scale) / 2;
        return (side(point) - least) * scale + Vector2d(margin, 0);
    }

    void drawCamera(Drawing &drawing, const Viewpoint &viewpoint) const {
        Path path;
        std::vector<Vector2d> base;
        for (const Vector3d &corner : viewpoint.corners) {
            base.push_back(place(viewpoint.worldFromCamera * (corner * pyramid)));
            path.line(place(viewpoint.worldFromCamera.translation), base.back());
        }
        path.polyline(base, true);
        drawing.add(("camera" + std::to_string(viewpoint.camera % styles)).c_str(), path);
    }

    void drawPrint(Drawing &drawing, const Outline &outline, bool isLabelled) const {
        std::vector<Vector2d> border;
        Vector3d middle = Vector3d::Zero();
        for (const Vector3d &point : outline.border) {
            border.push_back(place(point));
            middle += point / double(outline.border.size());
        }
        Path path;
        path.polyline(border, true);
        drawing.add("print", path, outline.name);
        if (isLabelled && !border.empty()) {
            drawing.text("value", place(middle) + Vector2d(0, 5), Drawing::Anchor::Middle, outline.name);
        }
    }

    void drawScale(Drawing &drawing, double height) const {
        const double length = niceBelow(0.3 * width / scale);
        Path bar;
        const Vector2d left(12, height + 14);
        bar.line(left, left + Vector2d(length * scale, 0));
        bar.line(left + Vector2d(0, -5), left + Vector2d(0, 5));
        bar.line(left + Vector2d(length * scale, -5), left + Vector2d(length * scale, 5));
        drawing.add("frame", bar);
        drawing.text("note", left + Vector2d(length * scale + 10, 5), Drawing::Anchor::Start,
                     length >= 1000 ? rounded(length / 1000, 1) + " m" : rounded(length, 1) + " mm");
    }

    const Side &side;
    Vector2d least = Vector2d::Constant(std::numeric_limits<double>::max());
    Vector2d most = Vector2d::Constant(std::numeric_limits<double>::lowest());
    double pyramid = 1;  // height of a camera's pyramid, mm
    double scale = 1;    // units of the figure per mm
};

std::string legend(const Observations &observations) {
    if (observations.cameras.size() < 2) {
        return {};
    }
    std::string html = "<p class=\"legend\">";
    for (size_t i = 0; i < observations.cameras.size(); i++) {
        html += "<span class=\"key camera" + std::to_string(i % styles) + "\">" +
                escaped(observations.cameras[i].name) + "</span> ";
    }
    return html + "</p>\n";
}

}  // namespace

std::string sceneSection(const Calibration &calibration) {
    const std::vector<int> &groups = calibration.estimate.groups;
    if (std::all_of(groups.begin(), groups.end(), [](int group) { return group < 0; })) {
        return {};
    }
    const int group = calibration.firstGroup();
    const std::vector<Viewpoint> viewpoints = viewpointsOf(calibration, group);
    const std::vector<Outline> outlines = outlinesOf(calibration, group);
    const std::array<Side, 2> sides{
        Side{"from above", Vector3d::UnitX(), -Vector3d::UnitZ(), "x to the right, z upwards."},
        Side{"from the right", Vector3d::UnitZ(), Vector3d::UnitY(), "z to the right, y downwards."}};
    std::string html =
        "<section><h2>Scene</h2>\n<p>The figures show the patterns (filled) and the cameras (pyramids) in the "
        "coordinate system of the first pattern. So if the camera stood still and the pattern was moved, the "
        "camera seems to move.</p>\n" +
        legend(calibration.observations) + "<div class=\"figures two\">\n";
    for (const Side &side : sides) {
        const SceneView view(side, viewpoints, outlines);
        html += std::string("<figure><h4>Seen ") + side.title + "</h4>\n" + view.draw(viewpoints, outlines) +
                "<figcaption>" + side.caption + "</figcaption></figure>\n";
    }
    return html + "</div></section>\n";
}

}  // namespace calibration
