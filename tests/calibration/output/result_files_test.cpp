// Parses the texts of the result files, with OpenCV or with code of this test. The numbers in the files must project
// points to the same pixels as the calibration does, and must put the corners in the same places.
#include "calibration/output/result_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <sstream>

#include "tests/calibration/computed_scene.h"
#include "tests/camera_library/temporary_folder.h"

namespace calibration {
namespace {

using nlohmann::json;

// Returns a finished calibration of the computed scene, in which the first camera has the given lens model.
Calibration makeCalibration(LensModel lens) {
    const Scene scene = makeScene(0.1);
    Calibration calibration;
    calibration.observations = scene.observations;
    calibration.estimate = scene.truth;
    Observations &observations = calibration.observations;
    observations.cameras[0] = {"left", 1200, 900, lens};
    observations.cameras[1].name = "right";
    Eigen::VectorXd &intrinsics = calibration.estimate.intrinsics[0];
    if (lens == LensModel::Fisheye) {
        intrinsics = calibration.estimate.intrinsics[1];
    }
    Eigen::VectorXd all(16);
    all << 1100, 1090.5, 610, 440, -0.2, 0.08, 0.001, -0.0005, 1e-5, 0.02, -0.01, 0.003, 0.0004, -0.0002, 0.0003, 1e-4;
    if (lens != LensModel::Fisheye) {
        intrinsics = all.head(parameterCount(lens));
    }
    for (int print = 0; print < 2; print++) {
        Print &printed = observations.prints[size_t(print)];
        printed.name = "pattern " + std::to_string(print);
        printed.number = print;
        for (int i = 0; i < columns * rows; i++) {
            printed.cells.emplace_back(i % columns, i / columns);
        }
        calibration.prints.emplace_back();
        calibration.prints.back().pointSigmas.assign(printed.points.size(), 0.01);
    }
    calibration.freedom.shapes = {{0, 1}, {0, 1, 3, 4, 5}};
    // The files need a covariance, but these tests do not check its values.
    calibration.covariance = covarianceOf(scene.observations, calibration.freedom, scene.truth).value();
    calibration.cameras.resize(2);
    for (CameraTrust &trust : calibration.cameras) {
        trust.corners = 100;
        trust.uncertainty = {2, 1, {0.25, std::nullopt}};
    }
    calibration.leftOut = {{3, Misfit::Moved, "It moved."}};
    return calibration;
}

// True if a number has an exponent but no decimal point. A YAML 1.1 parser reads such a number as a string.
bool hasExponentWithoutPoint(const std::string &yaml) {
    for (const char *at = yaml.c_str(); (at = std::strpbrk(at, " [")) != nullptr;) {
        ++at;
        const char *digits = *at == '-' ? at + 1 : at;
        const char *exponent = digits + std::strspn(digits, "0123456789");
        if (exponent != digits && *exponent == 'e' && std::strpbrk(exponent + 1, "0123456789+-") == exponent + 1) {
            return true;
        }
    }
    return false;
}

std::string fileOf(const ResultFiles &files, const std::string &name) {
    for (const ResultFile &file : files.files) {
        if (file.name == name) {
            return file.content;
        }
    }
    return {};
}

// Returns points in front of the camera that appear in all parts of its picture.
std::vector<cv::Point3d> pointsInView() {
    std::vector<cv::Point3d> points;
    for (double x = -0.4; x < 0.5; x += 0.2) {
        for (double y = -0.3; y < 0.4; y += 0.15) {
            points.emplace_back(400 * x + 10, 400 * y, 400);
        }
    }
    return points;
}

// Projects points twice: with the calibration, and with OpenCV from the numbers in a file. Returns the greatest
// distance in pixels between the two projections of a point.
double projectionError(const Calibration &calibration, const cv::Mat &matrix, const cv::Mat &coefficients,
                       bool isFisheye) {
    const std::vector<cv::Point3d> points = pointsInView();
    std::vector<cv::Point2d> images;
    const cv::Vec3d none;
    if (isFisheye) {
        cv::fisheye::projectPoints(points, images, none, none, matrix, coefficients);
    } else {
        cv::projectPoints(points, none, none, matrix, coefficients, images);
    }
    double greatest = 0;
    for (size_t i = 0; i < points.size(); i++) {
        Eigen::Vector2d ours;
        EXPECT_TRUE(project(calibration.observations.cameras[0].lens, calibration.estimate.intrinsics[0].data(),
                            {points[i].x, points[i].y, points[i].z}, ours));
        greatest = std::max(greatest, std::hypot(images[i].x - ours.x(), images[i].y - ours.y()));
    }
    return greatest;
}

// `shift` is the coordinate of the centre of the top-left pixel: 0 in OpenCV and most formats, 0.5 in COLMAP.
cv::Mat cameraMatrix(const std::vector<double> &pinhole, double shift = 0) {
    return (cv::Mat_<double>(3, 3) << pinhole[0], 0, pinhole[2] - shift, 0, pinhole[1], pinhole[3] - shift, 0, 0, 1);
}

cv::Mat rowOf(std::vector<double> numbers, size_t first) {
    return cv::Mat(std::vector<double>(numbers.begin() + long(first), numbers.end()), true).t();
}

// Returns the numbers in the brackets after a key.
std::vector<double> listAfter(const std::string &text, const std::string &key) {
    const size_t start = text.find('[', text.find(key)) + 1;
    std::string list = text.substr(start, text.find(']', start) - start);
    std::replace(list.begin(), list.end(), ',', ' ');
    std::istringstream stream(list);
    return {std::istream_iterator<double>(stream), {}};
}

// `ros`, `mrcal` and `colmap` are the names of the lens model in these formats; null if a format has no such model.
struct Row {
    LensModel lens;
    const char *ros;
    const char *mrcal;
    bool hasKalibr;
    const char *colmap;
};

class LensFiles : public testing::TestWithParam<Row> {};

TEST_P(LensFiles, projectAsTheCalibrationDoes) {
    const Row &row = GetParam();
    const bool isFisheye = row.lens == LensModel::Fisheye;
    const Calibration calibration = makeCalibration(row.lens);
    const ResultFiles files = resultFiles(calibration, {});
    const size_t omitted = size_t(row.ros == nullptr) + size_t(row.mrcal == nullptr) + size_t(!row.hasKalibr) +
                           size_t(row.colmap == nullptr);
    EXPECT_EQ(files.omissions.size(), omitted + 1)
        << "one more omission: the right camera has a fisheye lens, and the format of mrcal has no model for it";

    cv::FileStorage opencv(fileOf(files, "left.opencv.yaml"), cv::FileStorage::READ | cv::FileStorage::MEMORY);
    cv::Mat matrix;
    cv::Mat coefficients;
    opencv["camera_matrix"] >> matrix;
    opencv["distortion_coefficients"] >> coefficients;
    EXPECT_EQ(int(opencv["image_width"]), 1200);
    EXPECT_EQ(int(opencv["image_height"]), 900);
    EXPECT_EQ(opencv["distortion_model"].string() == "fisheye", isFisheye);
    EXPECT_LT(projectionError(calibration, matrix, coefficients, isFisheye), 1e-9);

    // The other YAML files lack the two header lines that OpenCV expects. The tests add these lines, so that OpenCV can
    // read the files.
    const std::string ros = fileOf(files, "left.camera_info.yaml");
    ASSERT_EQ(ros.empty(), row.ros == nullptr);
    if (!ros.empty()) {
        cv::FileStorage storage("%YAML:1.0\n---\n" + ros, cv::FileStorage::READ | cv::FileStorage::MEMORY);
        std::vector<double> k;
        std::vector<double> d;
        std::vector<double> p;
        storage["camera_matrix"]["data"] >> k;
        storage["distortion_coefficients"]["data"] >> d;
        storage["projection_matrix"]["data"] >> p;
        EXPECT_EQ(storage["distortion_model"].string(), row.ros);
        EXPECT_EQ(int(d.size()), int(storage["distortion_coefficients"]["cols"]));
        EXPECT_EQ(p.size(), 12U);
        EXPECT_LT(projectionError(calibration, cv::Mat(k, true).reshape(1, 3), rowOf(d, 0), isFisheye), 1e-9);
    }
    const std::string mrcal = fileOf(files, "left.cameramodel");
    ASSERT_EQ(mrcal.empty(), row.mrcal == nullptr);
    if (!mrcal.empty()) {
        EXPECT_NE(mrcal.find("'lensmodel':  '" + std::string(row.mrcal) + "'"), std::string::npos);
        const std::vector<double> all = listAfter(mrcal, "'intrinsics'");
        EXPECT_LT(projectionError(calibration, cameraMatrix(all), rowOf(all, 4), false), 1e-9);
        EXPECT_EQ(listAfter(mrcal, "'imagersize'"), (std::vector<double>{1200, 900}));
    }
    const std::string colmap = fileOf(files, "cameras.txt");
    ASSERT_EQ(colmap.find("is left") == std::string::npos, row.colmap == nullptr);
    if (row.colmap != nullptr) {
        std::istringstream line(colmap.substr(colmap.find("\n1 ") + 1));
        std::string number;
        std::string model;
        double width = 0;
        double height = 0;
        line >> number >> model >> width >> height;
        EXPECT_EQ(model, row.colmap);
        std::string rest;
        std::getline(line, rest);
        std::istringstream numbers(rest);
        const std::vector<double> all{std::istream_iterator<double>(numbers), {}};
        EXPECT_EQ(all.size(), model == "FULL_OPENCV" ? 12U : 8U);
        EXPECT_LT(projectionError(calibration, cameraMatrix(all, 0.5), rowOf(all, 4), isFisheye), 1e-9);
    }
    for (const ResultFile &file : files.files) {
        const bool isYaml = file.name.find(".yaml") != std::string::npos;
        EXPECT_FALSE(isYaml && hasExponentWithoutPoint(file.content)) << file.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Models, LensFiles,
    testing::Values(Row{LensModel::Pinhole4, "plumb_bob", "LENSMODEL_OPENCV4", true, "OPENCV"},
                    Row{LensModel::Pinhole5, "plumb_bob", "LENSMODEL_OPENCV5", false, "FULL_OPENCV"},
                    Row{LensModel::Pinhole8, "rational_polynomial", "LENSMODEL_OPENCV8", false, "FULL_OPENCV"},
                    Row{LensModel::Pinhole12, nullptr, "LENSMODEL_OPENCV12", false, nullptr},
                    Row{LensModel::Fisheye, "equidistant", nullptr, true, "OPENCV_FISHEYE"}));

TEST(ResultFiles, giveTheRigInMetres) {
    const Calibration calibration = makeCalibration(LensModel::Pinhole4);
    const std::string chain = fileOf(resultFiles(calibration, {}), "camchain.yaml");
    cv::FileStorage storage("%YAML:1.0\n---\n" + chain, cv::FileStorage::READ | cv::FileStorage::MEMORY);
    EXPECT_EQ(storage["cam0"]["distortion_model"].string(), "radtan");
    EXPECT_EQ(storage["cam1"]["distortion_model"].string(), "equidistant");
    const Eigen::Vector3d point(120, -40, 700);
    const Eigen::Vector3d inSecond = calibration.estimate.cameraFromRig[1] * point;
    const cv::FileNode rows = storage["cam1"]["T_cn_cnm1"];
    ASSERT_EQ(rows.size(), 4U);
    for (int row = 0; row < 3; row++) {
        double sum = double(rows[row][3]);
        for (int column = 0; column < 3; column++) {
            sum += double(rows[row][column]) * point[column] / 1000;
        }
        EXPECT_NEAR(sum, inSecond[row] / 1000, 1e-12);
    }
}

TEST(ResultFiles, placeEveryCornerOfTheAssembly) {
    const Calibration calibration = makeCalibration(LensModel::Pinhole5);
    const json assembly = json::parse(assemblyJson(calibration, {}));
    ASSERT_EQ(assembly["Patterns"].size(), 2U);
    const json &pattern = assembly["Patterns"][1];
    EXPECT_EQ(pattern["Number"], 1);
    ASSERT_EQ(pattern["Points"].size(), size_t(columns * rows));
    // The expected places are computed here from the formulas in docs/calibration-file.md.
    const auto &numbers = calibration.estimate.shapes[1].numbers;
    const double reach = calibration.estimate.shapes[1].reach;
    const double scaleX = pattern["PrintScale"][0];
    const double scaleY = pattern["PrintScale"][1];
    for (const json &point : pattern["Points"]) {
        const double x = (point[0].get<int>() - columns / 2) * pitch;
        const double y = (point[1].get<int>() - rows / 2) * pitch;
        const Eigen::Vector3d printed(scaleX * x + std::sqrt(scaleX * scaleY) * numbers[2] * y, scaleY * y,
                                      (numbers[3] * x * x + numbers[4] * x * y + numbers[5] * y * y) / (reach * reach));
        for (int row = 0; row < 3; row++) {
            double place = pattern["Translation"][size_t(row)];
            for (int column = 0; column < 3; column++) {
                place += pattern["Rotation"][size_t(row)][size_t(column)].get<double>() * printed[column];
            }
            EXPECT_NEAR(point[size_t(2 + row)].get<double>(), place, 3e-6);
        }
    }
}

TEST(ResultFiles, takeTheAxesFromThreeCorners) {
    const Calibration calibration = makeCalibration(LensModel::Pinhole5);
    ResultNotes notes;
    notes.axes = AssemblyAxes{{{{1, 2, 1}, {1, 7, 1}, {0, 4, 5}}}};
    const json points = json::parse(assemblyJson(calibration, notes))["Patterns"];
    const auto at = [&](size_t pattern, int column, int row, size_t axis) {
        return points[pattern]["Points"][size_t(row * columns + column)][2 + axis].get<double>();
    };
    for (size_t axis = 0; axis < 3; axis++) {
        EXPECT_NEAR(at(1, 2, 1, axis), 0, 2e-6);
    }
    EXPECT_NEAR(at(1, 7, 1, 0), 5 * pitch, 1);
    EXPECT_NEAR(at(1, 7, 1, 1), 0, 2e-6);
    EXPECT_NEAR(at(0, 4, 5, 2), 0, 2e-6);
    EXPECT_GT(at(0, 4, 5, 1), 0);
    notes.axes->corners[2] = {1, 4, 70};
    EXPECT_THROW(assemblyJson(calibration, notes), std::invalid_argument);
}

TEST(ResultFiles, tellWhichPhotographsAndSightingsWereLeftOutAndWhy) {
    const Calibration calibration = makeCalibration(LensModel::Pinhole5);
    const json document =
        json::parse(calibrationJson(calibration, {{{"b.jpg", "No pattern was found in it."}}, {}, {}, "test"}));
    EXPECT_EQ(document["UnusedPhotographs"][0]["Reason"], "No pattern was found in it.");
    const int photograph = calibration.observations.sightings[3].photograph;
    const json &sightings = document["Photographs"][size_t(photograph)]["Sightings"];
    EXPECT_EQ(sightings.back()["Reason"], "It moved.");
    EXPECT_NEAR(document["Photographs"][0]["Sightings"][0]["ResidualRms"].get<double>(), 0.14, 0.03);
    EXPECT_EQ(document["Cameras"][0]["Uncertainty"], json::parse("[[0.25, null]]"));
}

TEST(ResultFiles, haveOnlyFiniteNumbers) {
    Calibration calibration = makeCalibration(LensModel::Pinhole5);
    calibration.cameras[1].rms = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(resultFiles(calibration, {}), std::runtime_error);
    calibration = makeCalibration(LensModel::Pinhole5);
    calibration.estimate.intrinsics[0][2] = std::numeric_limits<double>::infinity();
    EXPECT_THROW(resultFiles(calibration, {}), std::runtime_error);
}

TEST(ResultFiles, areAllWrittenOrNone) {
    const TemporaryFolder folder;
    const std::string results = folder.file("new/results");
    writeResultFiles(results, {{"a", "old"}});
    std::filesystem::create_directory(results + "/c");
    EXPECT_THROW(writeResultFiles(results, {{"a", "new"}, {"b", "new"}, {"c", "new"}}), std::runtime_error);
    EXPECT_EQ(readBytes(results + "/a"), "old");
    EXPECT_FALSE(std::filesystem::exists(results + "/b"));
    writeResultFiles(results, {{"a", "new"}, {folder.file("report.html"), "page"}});
    EXPECT_EQ(readBytes(results + "/a"), "new");
    EXPECT_EQ(readBytes(folder.file("report.html")), "page");
    writeBytes(folder.file("file"), "");
    EXPECT_THROW(writeResultFiles(folder.file("file"), {{"a", "new"}}), std::runtime_error);
}

}  // namespace
}  // namespace calibration
