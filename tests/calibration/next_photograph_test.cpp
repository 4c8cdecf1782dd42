// Tests the advice about the next photograph: that the words describe the pose, and that the photograph helps as much
// as promised if it is really taken.
#include "calibration/next_photograph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "calibration/projection_uncertainty.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr double noise = 0.1;
constexpr int mapColumns = 12;  // as coarse as the map by which the advice is chosen
constexpr int mapRows = 9;

PictureMap uncertaintyOf(const Calibration &calibration, const Covariance &covariance, int camera) {
    return projectionUncertainty(calibration.observations.cameras[size_t(camera)],
                                 calibration.estimate.intrinsics[size_t(camera)], covariance.intrinsics(camera),
                                 calibration.cameras[size_t(camera)].distance, mapColumns, mapRows);
}

// Makes a calibration from the sightings of the scene that are in use. Its estimate is the truth.
Calibration calibrationOf(const Scene &scene) {
    Calibration calibration;
    calibration.observations = scene.observations;
    calibration.estimate = scene.truth;
    calibration.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2}};
    calibration.covariance = covarianceOf(scene.observations, calibration.freedom, scene.truth).value();
    calibration.cameras.resize(2);
    for (int camera = 0; camera < 2; camera++) {
        if (calibration.covariance.intrinsics(camera).size() > 0) {
            calibration.cameras[size_t(camera)].distance = 500;
            calibration.cameras[size_t(camera)].uncertainty =
                uncertaintyOf(calibration, calibration.covariance, camera);
        }
    }
    return calibration;
}

// Of one camera's sightings, uses only the 60 % that lie farthest towards `direction` in the picture (x to the right, y
// down). The other camera's sightings are not used.
void keepSide(Scene &scene, int camera, const Eigen::Vector2d &direction) {
    std::vector<std::pair<double, Sighting *>> places;
    for (Sighting &sighting : scene.observations.sightings) {
        sighting.isUsed = false;
        if (scene.observations.photographs[size_t(sighting.photograph)].camera == camera) {
            Eigen::Vector2d middle = Eigen::Vector2d::Zero();
            for (const SeenCorner &corner : sighting.corners) {
                middle += corner.image / double(sighting.corners.size());
            }
            places.emplace_back(-middle.dot(direction), &sighting);
        }
    }
    std::sort(places.begin(), places.end());
    for (size_t i = 0; i < places.size() * 6 / 10; i++) {
        places[i].second->isUsed = true;
    }
}

bool says(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

// Compares the text with the pose: where the middle of the print is in the picture, and which side is nearest.
void expectWordsFit(const Calibration &calibration, const NextPhotograph &next) {
    const std::string &text = next.text;
    const Camera &camera = calibration.observations.cameras[size_t(next.camera)];
    EXPECT_TRUE(says(text, "with camera \"" + camera.name + "\"")) << text;
    cv::Matx33d rotation;
    const Eigen::Vector3d &vector = next.cameraFromPrint.rotation;
    cv::Rodrigues(cv::Vec3d(vector.x(), vector.y(), vector.z()), rotation);
    const Eigen::Vector3d &translation = next.cameraFromPrint.translation;  // to the print's middle
    const double distance = translation.norm();
    EXPECT_NEAR(std::stod(text.substr(text.find(" mm away") - 3)), distance, 1) << text;
    Eigen::Vector2d image;
    ASSERT_TRUE(project(camera.lens, calibration.estimate.intrinsics[size_t(next.camera)].data(), translation, image));
    const double x = image.x() / camera.width;
    const double y = image.y() / camera.height;
    EXPECT_EQ(says(text, " left edge") || says(text, " left corner"), x < 0.3) << text << x;
    EXPECT_EQ(says(text, " right edge") || says(text, " right corner"), x > 0.7) << text << x;
    EXPECT_EQ(says(text, "upper left corner") || says(text, "upper right corner") || says(text, "upper edge"), y < 0.3)
        << text << y;
    EXPECT_EQ(says(text, "lower left corner") || says(text, "lower right corner") || says(text, "lower edge"), y > 0.7)
        << text << y;
    // The distances from the camera to the four sides of the print.
    const auto distanceOf = [&](double column, double row) {
        const cv::Vec3d turned = rotation * cv::Vec3d(column * pitch, row * pitch, 0);
        return (Eigen::Vector3d(turned[0], turned[1], turned[2]) + translation).norm();
    };
    const std::pair<const char *, double> sides[] = {{"upper", distanceOf(0, -3)},
                                                     {"lower", distanceOf(0, 3)},
                                                     {"left", distanceOf(-3, 0)},
                                                     {"right", distanceOf(3, 0)}};
    const auto nearest = std::min_element(std::begin(sides), std::end(sides),
                                          [](const auto &a, const auto &b) { return a.second < b.second; });
    if (says(text, "tilted")) {
        EXPECT_TRUE(says(text, "so that its " + std::string(nearest->first) + " side in the picture is nearer"))
            << text << " " << nearest->first;
    }
}

TEST(NextPhotograph, textFitsThePoseAndUncertaintyFallsAsPredicted) {
    struct Row {
        int camera;
        Eigen::Vector2d direction;
    };
    std::vector<std::string> texts;
    for (const Row &row : {Row{0, {1, 0}}, Row{0, {-1, 0}}, Row{0, {0, 1}}, Row{0, {0, -1}}, Row{0, {1, 1}},
                           Row{1, {1, 0}}, Row{1, {-1, 0}}, Row{1, {0, 1}}, Row{1, {0, -1}}}) {
        SCOPED_TRACE(testing::Message() << "camera " << row.camera << ", " << row.direction.transpose());
        Scene scene = makeScene(noise);
        keepSide(scene, row.camera, row.direction);
        Calibration calibration = calibrationOf(scene);
        const std::optional<NextPhotograph> next = findNextPhotograph(calibration);
        ASSERT_TRUE(next);
        EXPECT_EQ(next->camera, row.camera);
        expectWordsFit(calibration, *next);
        texts.push_back(next->text);

        // Takes the photograph.
        scene.observations.photographs.push_back({"", row.camera, scene.observations.moments++});
        scene.truth.rigFromWorld.push_back(scene.truth.cameraFromRig[size_t(row.camera)].inverse() *
                                           next->cameraFromPrint *
                                           scene.truth.worldFromPrint[size_t(next->print)].inverse());
        scene.truth.hasMoment.push_back(true);
        std::mt19937 random(1);
        scene.observations.sightings.push_back(see(scene, int(scene.observations.photographs.size()) - 1, next->print,
                                                   scene.truth.worldFromPrint[size_t(next->print)], 0, random));
        for (SeenCorner &corner : scene.observations.sightings.back().corners) {
            corner.sigma = noise;
        }
        EXPECT_GT(scene.observations.sightings.back().corners.size(), size_t(0.3 * columns * rows));
        const std::optional<Covariance> covariance = covarianceOf(scene.observations, calibration.freedom, scene.truth);
        ASSERT_TRUE(covariance);
        // The added corners have no noise, so they lower the variance of all residuals a little. `factor` corrects
        // this.
        const double factor = std::sqrt(calibration.covariance.varianceFactor() / covariance->varianceFactor());
        const double before = *uncertaintyOf(calibration, calibration.covariance, row.camera).greatest();
        const double after = *uncertaintyOf(calibration, *covariance, row.camera).greatest() * factor;
        EXPECT_NEAR(next->uncertaintyBefore / before, 1, 1e-6);
        // The prediction assumes that the corners' standard deviations are right. This is only approximately so here,
        // because the variance factor is not exactly 1.
        EXPECT_NEAR(next->uncertaintyAfter / after, 1, 0.1) << before;
        EXPECT_LT(next->uncertaintyAfter, 0.95 * next->uncertaintyBefore);
    }
    // The rows must not all give the same advice.
    std::sort(texts.begin(), texts.end());
    EXPECT_GE(std::unique(texts.begin(), texts.end()) - texts.begin(), 4);
}

TEST(NextPhotograph, isForTheCameraWithTheGreatestUncertaintyAndThePrintThatItSeesMost) {
    const Scene scene = makeScene(noise);
    Calibration calibration = calibrationOf(scene);
    const double a = *calibration.cameras[0].uncertainty.greatest();
    const double b = *calibration.cameras[1].uncertainty.greatest();
    ASSERT_TRUE(findNextPhotograph(calibration));
    EXPECT_EQ(findNextPhotograph(calibration)->camera, a > b ? 0 : 1);
    for (PictureMap *map : {&calibration.cameras[0].uncertainty, &calibration.cameras[1].uncertainty}) {
        for (std::optional<double> &value : map->values) {
            value = *value * (map == &calibration.cameras[0].uncertainty ? 2 * b / a : 1);
        }
    }
    EXPECT_EQ(findNextPhotograph(calibration)->camera, 0);
    for (int print = 0; print < 2; print++) {
        Calibration one = calibration;
        for (Sighting &sighting : one.observations.sightings) {
            sighting.corners.resize(sighting.print == print ? sighting.corners.size() : 6);
        }
        EXPECT_EQ(findNextPhotograph(one)->print, print);
    }
}

TEST(NextPhotograph, isNotAdvisedIfItHardlyHelps) {
    Scene scene = makeScene(noise);
    // The next photograph's corners are expected to be as exact as those of the sightings. These are now a million
    // times less exact than when the covariance was computed, so the next photograph would be useless.
    Calibration calibration = calibrationOf(scene);
    for (Sighting &sighting : calibration.observations.sightings) {
        for (SeenCorner &corner : sighting.corners) {
            corner.sigma *= 1e6;
        }
    }
    EXPECT_FALSE(findNextPhotograph(calibration));
    calibration.cameras.assign(2, CameraTrust());
    EXPECT_FALSE(findNextPhotograph(calibration)) << "no advice can be given if no camera has a result";
}

}  // namespace
}  // namespace calibration
