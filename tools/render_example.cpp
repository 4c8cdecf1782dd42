// Renders the viewer's example: twelve photographs of an assembly of five patterns. If COUNT is given, renders
// COUNT colour photographs of 12 megapixels instead, for the viewer's benchmark.
//
//   BUILD/tools/render_example viewer/example
//   BUILD/tools/render_example FOLDER COUNT
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <opencv2/core/affine.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "bench/reader/scene_parts.h"
#include "bench/reader/synthetic_camera.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_types.h"
#include "viewer/example/example_assembly.h"

namespace {

using example_assembly::gridSpacing;
using example_assembly::patternCount;

constexpr double pitch = gridSpacing / 2;  // the side of a square in mm; the synthetic camera's unit of length
constexpr int photographCount = 12;
constexpr int quality = 80;
const cv::Size pictureSize(1440, 1080);
constexpr double enlargement = 4000.0 / 1440;  // from pictureSize to 12 megapixels

reader_bench::CameraModel lens(double scale) {
    reader_bench::CameraModel camera;
    camera.focalLength = 1310 * scale;
    camera.centre = {727.5 * scale, 533.0 * scale};
    camera.k1 = -0.16;
    camera.k2 = 0.035;
    return camera;
}

std::shared_ptr<const reader_bench::SyntheticTarget> makePattern(int number) {
    lmlib64::PatternDescription description;
    description.typeName = "Assembly";
    description.type = lmlib64::findPatternType(description.typeName);
    description.gridSize = description.type->gridSize;
    description.gridSpacing = gridSpacing;
    description.assemblyNumber = number;
    return std::make_shared<reader_bench::SyntheticTarget>(lmlib64::geometryOf(description));
}

// Returns the pose of a camera that looks at a place near the assembly's middle. The camera is `distance` mm from that
// place, in the direction given by the azimuth and the elevation (radians).
cv::Affine3d cameraFromWorld(int photograph) {
    const double azimuth = 0.62 * std::sin(1.9 * photograph);
    const double elevation = 0.50 * std::cos(2.7 * photograph + 0.4);
    const double distance = 800 + 130 * std::sin(1.3 * photograph);
    const double roll = CV_PI / 2 * (photograph % 4) + 0.15 * std::sin(3.1 * photograph);
    const cv::Vec3d aim(210 * std::sin(2.2 * photograph), 160 * std::cos(1.7 * photograph), -40);
    const cv::Vec3d eye = aim + distance * cv::Vec3d(std::sin(azimuth) * std::cos(elevation), std::sin(elevation),
                                                     -std::cos(azimuth) * std::cos(elevation));
    const cv::Vec3d z = cv::normalize(aim - eye);
    const cv::Vec3d x = cv::normalize(cv::Vec3d(0, 1, 0).cross(z));
    const cv::Vec3d y = z.cross(x);
    const cv::Matx33d upright(x[0], x[1], x[2], y[0], y[1], y[2], z[0], z[1], z[2]);
    const cv::Affine3d rotation(reader_bench::rotationBy({0, 0, roll}) * upright, cv::Vec3d());
    return rotation * cv::Affine3d(cv::Matx33d::eye(), -eye);
}

cv::Mat render(int photograph, double scale) {
    std::vector<reader_bench::PlacedTarget> targets;
    for (int number = 0; number < patternCount; number++) {
        const example_assembly::Pose &pose = example_assembly::worldFromPattern[size_t(number)];
        const cv::Affine3d worldFromPattern(cv::Vec3d(pose.rotation.data()), cv::Vec3d(pose.translation.data()));
        const cv::Affine3d cameraFromPattern = cameraFromWorld(photograph) * worldFromPattern;
        reader_bench::PlacedTarget target;
        target.target = makePattern(number);
        target.pose.rotation = cameraFromPattern.rotation();
        target.pose.translation = cameraFromPattern.translation() / pitch;
        target.pose.anchor = cv::Point2d(target.target->size()) / 2;
        targets.push_back(target);
    }
    reader_bench::Dice dice{unsigned(1000 + photograph)};
    const cv::Size size(int(pictureSize.width * scale), int(pictureSize.height * scale));
    cv::Mat background = 0.4 * reader_bench::blobs(size, int(160 * scale), dice) + 60;
    reader_bench::Exposure exposure;
    exposure.noiseSigma = 2.5;
    exposure.vignette = 0.15;
    exposure.lightSlope = {dice.real(-0.15, 0.15), dice.real(-0.15, 0.15)};
    return reader_bench::photograph(background, lens(scale), targets, exposure, dice.random);
}

// Returns the picture in the colours of a camera without white balance.
cv::Mat inColour(const cv::Mat &grey) {
    cv::Mat colour;
    cv::merge(std::vector<cv::Mat>{0.85 * grey, grey, 0.95 * grey}, colour);
    return colour;
}

}  // namespace

int main(int argumentCount, char **arguments) {
    if (argumentCount != 2 && argumentCount != 3) {
        std::fputs("Usage: render_example FOLDER [COUNT]\n", stderr);
        return 2;
    }
    const bool isLarge = argumentCount == 3;
    const int count = isLarge ? std::atoi(arguments[2]) : photographCount;
    for (int photograph = 0; photograph < count; photograph++) {
        char name[32];
        std::snprintf(name, sizeof name, "/photograph-%02d.jpg", photograph + 1);
        const cv::Mat picture = isLarge ? inColour(render(photograph, enlargement)) : render(photograph, 1);
        if (!cv::imwrite(arguments[1] + std::string(name), picture, {cv::IMWRITE_JPEG_QUALITY, quality})) {
            std::fprintf(stderr, "%s%s cannot be written\n", arguments[1], name);
            return 1;
        }
    }
    return 0;
}
