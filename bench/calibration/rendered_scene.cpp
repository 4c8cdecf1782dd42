#include "bench/calibration/rendered_scene.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "bench/reader/synthetic_camera.h"
#include "bench/reader/threads.h"
#include "calibration/input/photograph_observations.h"
#include "camera_library/pattern/pattern_types.h"
#include "pattern_reader/pattern_reader.h"

namespace calibration_bench {

using namespace calibration;

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr int corners = 15;  // along a side of an assembly's pattern

struct Target {
    std::shared_ptr<const reader_bench::SyntheticTarget> drawn;
    cv::Point2d middle;  // the origin of the print's coordinates, in pitches from the pattern's top-left corner
    std::shared_ptr<const reader_bench::PaperSheet> sheet;  // null if the print is flat
    double pitch = 1;                                       // mm
};

Target targetOf(const PrintDraft &print, int number, double bend) {
    lmlib64::PatternDescription description;
    description.typeName = "Assembly";
    description.type = lmlib64::findPatternType(description.typeName);
    description.gridSize = description.type->gridSize;
    description.gridSpacing = 2 * print.pitch;
    description.assemblyNumber = number;
    lmlib64::PatternGeometry geometry = lmlib64::geometryOf(description);
    const double half = std::exp(print.shape[PrintShape::ratio] / 2);
    const double x = std::exp(print.shape[PrintShape::scale]) * half;
    const double y = std::exp(print.shape[PrintShape::scale]) / half;
    for (lmlib64::Rectangle &rectangle : geometry.rectangles) {
        rectangle = {rectangle.left * x, rectangle.top * y, rectangle.right * x, rectangle.bottom * y};
    }
    for (lmlib64::Polygon &polygon : geometry.polygons) {
        for (lmlib64::Point &point : polygon) {
            point = {point.x * x, point.y * y};
        }
    }
    geometry.width *= x;
    geometry.height *= y;
    const lmlib64::Point middle = geometry.lattice.at(corners / 2, corners / 2);
    Target target;
    target.pitch = print.pitch;
    target.middle = {middle.x * x / print.pitch, middle.y * y / print.pitch};
    target.drawn = std::make_shared<reader_bench::SyntheticTarget>(geometry);
    if (bend != 0) {
        // `bend` is the height of the arc over its chord in mm, and `edge` is half the chord in pitches. For a flat
        // arc, the curvature is 2 * height / (half chord)^2.
        const double edge = corners / 2.0;
        reader_bench::PaperSheet::Form form;
        form.curvature = 2 * bend / print.pitch / (edge * edge);
        target.sheet = std::make_shared<reader_bench::PaperSheet>(form, corners);
    }
    return target;
}

Vector3d placeOnPrint(const Target &target, const PrintShape &shape, const Vector2d &drawn) {
    Vector3d flat = printedPoint(shape.numbers.data(), shape.reach, drawn).place;
    if (!target.sheet) {
        return flat;
    }
    const cv::Vec3d bent = target.sheet->at({flat.x() / target.pitch, flat.y() / target.pitch});
    return Vector3d(bent[0], bent[1], bent[2]) * target.pitch;
}

reader_bench::CameraModel lensOf(const CameraDraft &camera) {
    reader_bench::CameraModel lens;
    lens.focalLength = camera.intrinsics[0];
    lens.centre = {camera.intrinsics[2], camera.intrinsics[3]};
    lens.fisheye = camera.camera.lens == LensModel::Fisheye;
    if (lens.fisheye) {
        lens.fisheyeTerms = {camera.intrinsics[4], camera.intrinsics[5]};
    } else {
        lens.k1 = camera.intrinsics[4];
        lens.k2 = camera.intrinsics[5];
    }
    return lens;
}

// Returns the prints whose corners are all more than four pitches in front of the camera.
std::vector<reader_bench::PlacedTarget> placedTargets(const RenderedScene &rendered, const std::vector<Target> &targets,
                                                      const Photograph &shot) {
    const Estimate &truth = rendered.scene.truth;
    const RigidMotion cameraFromWorld =
        truth.cameraFromRig[size_t(shot.camera)] * truth.rigFromWorld[size_t(shot.moment)];
    std::vector<reader_bench::PlacedTarget> placed;
    for (size_t i = 0; i < targets.size(); i++) {
        const bool isInFront =
            std::all_of(rendered.corners[i].begin(), rendered.corners[i].end(),
                        [&](const Vector3d &corner) { return (cameraFromWorld * corner).z() > 4 * targets[i].pitch; });
        if (!isInFront) {
            continue;
        }
        const RigidMotion pose = cameraFromWorld * truth.worldFromPrint[i];
        const Eigen::Matrix3d rotation = rotationMatrix(pose.rotation);
        reader_bench::PlacedTarget target;
        target.target = targets[i].drawn;
        for (int row = 0; row < 3; row++) {
            for (int column = 0; column < 3; column++) {
                target.pose.rotation(row, column) = rotation(row, column);
            }
            target.pose.translation[row] = pose.translation[row] / targets[i].pitch;
        }
        target.pose.anchor = targets[i].middle;
        target.pose.sheet = targets[i].sheet;
        placed.push_back(target);
    }
    return placed;
}

}  // namespace

RenderedScene renderAndRead(const SceneDraft &draft, double bend, unsigned seed) {
    RenderedScene rendered;
    rendered.scene = simulate(draft, seed);
    const Observations &drawn = rendered.scene.observations;
    std::vector<Target> targets;
    for (size_t i = 0; i < draft.prints.size(); i++) {
        targets.push_back(targetOf(draft.prints[i], int(i), i == 0 ? bend : 0));
        rendered.corners.emplace_back();
        for (const Vector2d &point : drawn.prints[i].points) {
            rendered.corners.back().push_back(rendered.scene.truth.worldFromPrint[i] *
                                              placeOnPrint(targets[i], rendered.scene.truth.shapes[i], point));
        }
    }
    std::vector<ReadPhotograph> photographs(drawn.photographs.size());
    reader_bench::inThreads(2, photographs.size(), [&](size_t index) {
        const Photograph &shot = drawn.photographs[index];
        const Camera &camera = drawn.cameras[size_t(shot.camera)];
        std::mt19937 random(seed + unsigned(index));
        const cv::Mat background(camera.height, camera.width, CV_32F, cv::Scalar(110));
        const cv::Mat image = reader_bench::photograph(background, lensOf(draft.cameras[size_t(shot.camera)]),
                                                       placedTargets(rendered, targets, shot), {}, random);
        ReadPhotograph &photograph = photographs[index];
        photograph.file = {camera.name + "/" + std::to_string(1000 + shot.moment) + ".png", camera.name};
        photograph.width = camera.width;
        photograph.height = camera.height;
        photograph.readings = pattern_reader::readPatterns(image);
    });
    PrintedTarget printed;
    printed.gridSpacing = 2 * draft.prints.front().pitch;
    rendered.read = collectObservations(photographs, printed, draft.cameras.size() > 1).observations;
    return rendered;
}

}  // namespace calibration_bench
