// Uses the written files as another program would: places and projects points with nothing but the files' numbers and
// OpenCV. The results must agree with the corners in the photographs or with the calibration. Also tests what the files
// say in words, and which cameras they leave out.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <sstream>

#include "calibration/output/result_files.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

using nlohmann::json;

constexpr double noise = 0.1;

// Three cameras of one rig see two prints. No photograph links a third print with these two, and a fourth camera took
// no photograph.
Calibration makeRig() {
    Scene scene = makeScene(noise);
    Observations &observations = scene.observations;
    observations.cameras[0].lens = LensModel::Pinhole4;
    observations.cameras.push_back({"c \"right\"", 800, 600, LensModel::Pinhole4});
    Estimate &truth = scene.truth;
    truth.intrinsics[0] = truth.intrinsics[0].head(8).eval();
    truth.intrinsics.emplace_back(8);
    truth.intrinsics[2] << 700, 705, 410, 290, -0.1, 0.02, -0.0004, 0.0008;
    truth.cameraFromRig.push_back({{-0.05, 0.35, 0.02}, {120, -6, 15}});
    truth.hasCamera.push_back(true);
    observations.sightings.clear();
    std::mt19937 random(5);
    for (int moment = 0; moment < observations.moments; moment++) {
        observations.photographs.push_back({"", 2, moment});
    }
    for (int photograph = 0; photograph < int(observations.photographs.size()); photograph++) {
        for (int print = 0; print < 2; print++) {
            Sighting sighting = see(scene, photograph, print, truth.worldFromPrint[size_t(print)], noise, random);
            if (sighting.corners.size() >= 12) {
                observations.sightings.push_back(sighting);
            }
        }
    }
    Calibration calibration;
    calibration.freedom.shapes = {{1, 2}, {0, 1, 2, 3, 4, 5}};
    calibration.observations = observations;
    calibration.estimate = truth;
    calibration.observations.cameras[0].name = "a";
    calibration.observations.cameras.push_back({"unseen", 640, 480, LensModel::Pinhole5});
    calibration.estimate.intrinsics.emplace_back();
    calibration.estimate.cameraFromRig.emplace_back();
    calibration.estimate.hasCamera.push_back(false);
    calibration.observations.prints.push_back(makePrint());
    calibration.estimate.worldFromPrint.emplace_back();
    calibration.estimate.groups.push_back(1);
    calibration.estimate.shapes.emplace_back();
    calibration.freedom.shapes.emplace_back();
    calibration.covariance = covarianceOf(calibration.observations, calibration.freedom, calibration.estimate).value();
    calibration.cameras.resize(4);
    calibration.prints.resize(3);
    for (size_t print = 0; print < 3; print++) {
        calibration.observations.prints[print].name = "pattern " + std::to_string(print);
        calibration.observations.prints[print].number = int(print);
        for (int i = 0; i < columns * rows; i++) {
            calibration.observations.prints[print].cells.emplace_back(i % columns, i / columns);
        }
        calibration.prints[print].pointSigmas.assign(size_t(columns * rows), 0.01 * double(print + 1));
    }
    for (size_t camera = 0; camera < 3; camera++) {
        calibration.cameras[camera].corners = 100;
        calibration.cameras[camera].uncertainty = {2, 1, {0.25, std::nullopt}};
        calibration.cameras[camera].uncertaintyAtInfinity = {1, 2, {0.5, 0.75}};
    }
    return calibration;
}

// A motion read from a file, in OpenCV's types.
struct Motion {
    cv::Matx33d rotation = cv::Matx33d::eye();
    cv::Vec3d translation;

    cv::Vec3d operator*(const cv::Vec3d &point) const { return rotation * point + translation; }
};

Motion motionOf(const json &node) {
    Motion motion;
    for (int row = 0; row < 3; row++) {
        for (int column = 0; column < 3; column++) {
            motion.rotation(row, column) = node["Rotation"][size_t(row)][size_t(column)];
        }
        motion.translation[row] = node["Translation"][size_t(row)];
    }
    return motion;
}

cv::Vec3d vectorOf(const Eigen::Vector3d &v) {
    return {v.x(), v.y(), v.z()};
}

// Places a drawn point on the print by the formulas of docs/calibration-file.md.
cv::Vec3d printedBy(const json &print, double x, double y) {
    const double scaleX = print["Scale"][0];
    const double scaleY = print["Scale"][1];
    const double reach = print["BendReach"];
    const double u = x / reach;
    const double v = y / reach;
    const double powers[] = {u * u, u * v, v * v, u * u * u, u * u * v, u * v * v, v * v * v};
    double bend = 0;
    for (size_t i = 0; i < 7; i++) {
        bend += print["Bend"][i].get<double>() * powers[i];
    }
    return {scaleX * x + std::sqrt(scaleX * scaleY) * print["Shear"].get<double>() * y, scaleY * y, bend};
}

cv::Point2d projectBy(const json &camera, const cv::Vec3d &point) {
    const cv::Matx33d matrix(camera["FocalLength"][0], 0, camera["PrincipalPoint"][0], 0, camera["FocalLength"][1],
                             camera["PrincipalPoint"][1], 0, 0, 1);
    const auto distortion = camera["Distortion"].get<std::vector<double>>();
    const std::vector<cv::Point3d> object{cv::Point3d(point)};
    std::vector<cv::Point2d> image;
    if (camera["Model"] == "fisheye") {
        cv::fisheye::projectPoints(object, image, cv::Vec3d(), cv::Vec3d(), matrix, distortion);
    } else {
        cv::projectPoints(object, cv::Vec3d(), cv::Vec3d(), matrix, distortion, image);
    }
    return image[0];
}

std::string fileOf(const ResultFiles &files, const std::string &name) {
    const auto found =
        std::find_if(files.files.begin(), files.files.end(), [&](const ResultFile &file) { return file.name == name; });
    return found == files.files.end() ? std::string() : found->content;
}

// Reads YAML that lacks the first lines that OpenCV expects.
cv::FileStorage yaml(const std::string &text) {
    return {"%YAML:1.0\n---\n" + text, cv::FileStorage::READ | cv::FileStorage::MEMORY};
}

TEST(CalibrationFile, projectsEveryCornerWhereItWasSeen) {
    const Calibration calibration = makeRig();
    const json file = json::parse(calibrationJson(calibration, {}));
    EXPECT_EQ(file["Prints"][1]["BendReach"], 100) << "half the diagonal of 160 x 120 mm";
    const Observations &observations = calibration.observations;
    std::vector<size_t> sightings(observations.photographs.size(), 0);
    for (const Sighting &sighting : observations.sightings) {
        const auto number = size_t(sighting.photograph);
        const json &photograph = file["Photographs"][number];
        const json &camera = file["Cameras"][size_t(observations.photographs[number].camera)];
        const json &print = file["Prints"][size_t(sighting.print)];
        EXPECT_EQ(photograph["Camera"], camera["Name"]);
        const Motion cameraFromWorld = motionOf(photograph);
        const Motion worldFromPrint = motionOf(print);
        double squares = 0;
        for (const SeenCorner &corner : sighting.corners) {
            const double x = (corner.point % columns - columns / 2) * pitch;
            const double y = (corner.point / columns - rows / 2) * pitch;
            const cv::Point2d image = projectBy(camera, cameraFromWorld * (worldFromPrint * printedBy(print, x, y)));
            squares += std::pow(image.x - corner.image.x(), 2) + std::pow(image.y - corner.image.y(), 2);
        }
        const double rms = std::sqrt(squares / double(sighting.corners.size()));
        EXPECT_NEAR(rms, noise * std::sqrt(2), 0.07) << "photograph " << number;
        const json &shown = photograph["Sightings"][sightings[number]++];
        EXPECT_NEAR(shown["ResidualRms"].get<double>(), rms, 1e-5);
        EXPECT_EQ(shown["Print"], print["Name"]);
        EXPECT_EQ(shown["Used"], sighting.corners.size());
    }
}

TEST(CalibrationFile, givesThePosesOfARigRelativeToItsFirstCamera) {
    const json file = json::parse(calibrationJson(makeRig(), {}));
    const cv::Vec3d point(30, -20, 10);
    for (size_t camera = 0; camera < 3; camera++) {
        EXPECT_EQ(file["Cameras"][camera]["RigOrigin"], "a");
        const Motion cameraFromRig = motionOf(file["Cameras"][camera]);
        // First come the photographs of cameras a and b: two for each of the 14 moments. Then come the 14 of camera c.
        // Here, the three photographs of moment 3 are compared.
        const Motion rigFromWorld = motionOf(file["Photographs"][6]);
        const Motion cameraFromWorld = motionOf(file["Photographs"][camera == 2 ? 28 + 3 : 6 + camera]);
        EXPECT_LT(cv::norm(cameraFromRig * (rigFromWorld * point), cameraFromWorld * point), 1e-9) << camera;
    }
    EXPECT_EQ(file["Cameras"][3], json::parse(R"({"Name": "unseen", "ImageSize": [640, 480], "Model": "pinhole5",
                                                 "IsCalibrated": false})"));
}

TEST(CalibrationFile, keepsEachUncertaintyWithItsCamera) {
    const Calibration calibration = makeRig();
    const json file = json::parse(calibrationJson(calibration, {}));
    for (size_t camera = 0; camera < 3; camera++) {
        const json &node = file["Cameras"][camera];
        const Eigen::MatrixXd expected = calibration.covariance.intrinsics(int(camera));
        ASSERT_EQ(node["Covariance"].size(), size_t(expected.rows()));
        for (Eigen::Index i = 0; i < expected.rows(); i++) {
            EXPECT_EQ(node["Covariance"][size_t(i)][0].get<double>(), expected(i, 0)) << camera;
        }
        EXPECT_EQ(node["PoseCovariance"].size(), camera == 0 ? 0U : 6U);
        EXPECT_EQ(node["Uncertainty"], json::parse("[[0.25, null]]"));
        EXPECT_EQ(node["UncertaintyAtInfinity"], json::parse("[[0.5], [0.75]]"));
    }
    EXPECT_EQ(file["Prints"][1]["ShapeFreedom"], json::parse("[0, 1, 2, 3, 4, 5]"));
    EXPECT_EQ(file["Prints"][1]["ShapeCovariance"][3][3].get<double>(), calibration.covariance.shape(1)(3, 3));
}

TEST(CalibrationFile, repeatsTheVerdictTheNoticesAndTheAdvice) {
    Calibration calibration = makeRig();
    const int out = 4;
    calibration.observations.sightings[out].isUsed = false;
    calibration.leftOut = {{out, Misfit::AnotherLens, "It was zoomed."}};
    calibration.notices = {"One."};
    calibration.next = NextPhotograph{1, 0, {{0, 0, 0.5}, {1, 2, 300}}, 0.9, 0.4, "Hold it there."};
    for (const auto &[grade, name] :
         {std::pair(Grade::Good, "good"), std::pair(Grade::Usable, "usable"), std::pair(Grade::Poor, "poor")}) {
        calibration.verdict = {grade, "Text.", {"Advice."}};
        const json file = json::parse(calibrationJson(calibration, {{}, {"Two."}, {}, "program 1"}));
        EXPECT_EQ(file["Verdict"], json({{"Grade", name}, {"Text", "Text."}, {"Advice", json::array({"Advice."})}}));
        EXPECT_EQ(file["Notices"], json::parse(R"(["One.", "Two."])"));
        const json &next = file["NextPhotograph"];
        EXPECT_EQ(next["Camera"], "b");
        EXPECT_EQ(next["Print"], "pattern 0");
        EXPECT_EQ(next["UncertaintyBefore"], 0.9);
        EXPECT_EQ(next["UncertaintyAfter"], 0.4);
        const cv::Vec3d quarter = motionOf(next) * cv::Vec3d(1, 0, 0);
        EXPECT_NEAR(quarter[1], 2 + std::sin(0.5), 1e-12) << "the print is turned clockwise, from x to y";
        const int photograph = calibration.observations.sightings[out].photograph;
        const json &sightings = file["Photographs"][size_t(photograph)]["Sightings"];
        const auto shown =
            std::find_if(sightings.begin(), sightings.end(), [](const json &one) { return one.contains("LeftOut"); });
        ASSERT_NE(shown, sightings.end());
        EXPECT_EQ((*shown)["LeftOut"], "another lens");
        EXPECT_EQ((*shown)["Used"], 0);
        EXPECT_EQ((*shown)["Corners"], calibration.observations.sightings[out].corners.size());
    }
}

TEST(RigFiles, transformAPointFromTheRigToEachCamera) {
    Calibration calibration = makeRig();
    calibration.observations.cameras[2].name = "c-right";
    const ResultFiles files = resultFiles(calibration, {});
    cv::FileStorage chain = yaml(fileOf(files, "camchain.yaml"));
    const cv::Vec3d inRig(0.12, -0.04, 0.7);  // metres
    cv::Vec3d inCamera = inRig;
    const std::vector<std::string> names{"a", "b", "c-right"};
    for (size_t camera = 0; camera < 3; camera++) {
        const cv::Vec3d expected =
            vectorOf(calibration.estimate.cameraFromRig[camera] * Eigen::Vector3d(120, -40, 700)) / 1000;
        const Camera &seen = calibration.observations.cameras[camera];
        const cv::FileNode node = chain["cam" + std::to_string(camera)];
        if (camera > 0) {
            Motion fromBefore;
            for (int row = 0; row < 3; row++) {
                for (int column = 0; column < 3; column++) {
                    fromBefore.rotation(row, column) = double(node["T_cn_cnm1"][row][column]);
                }
                fromBefore.translation[row] = double(node["T_cn_cnm1"][row][3]);
            }
            inCamera = fromBefore * inCamera;
            EXPECT_NEAR(cv::determinant(fromBefore.rotation), 1, 1e-9);
        }
        EXPECT_LT(cv::norm(inCamera, expected), 1e-9) << "Kalibr, camera " << camera;
        EXPECT_EQ(int(node["resolution"][0]), seen.width);
        EXPECT_EQ(int(node["resolution"][1]), seen.height);
        EXPECT_EQ(double(node["intrinsics"][2]), calibration.estimate.intrinsics[camera](2));

        const std::string mrcal = fileOf(files, names[camera] + ".cameramodel");
        if (!mrcal.empty()) {
            std::string list = mrcal.substr(mrcal.find('[', mrcal.find("'extrinsics'")) + 1);
            std::replace(list.begin(), list.end(), ',', ' ');
            std::istringstream numbers(list);
            cv::Vec3d rotation;
            Motion motion;
            numbers >> rotation[0] >> rotation[1] >> rotation[2];
            numbers >> motion.translation[0] >> motion.translation[1] >> motion.translation[2];
            cv::Rodrigues(rotation, motion.rotation);
            EXPECT_LT(cv::norm(motion * inRig, expected), 1e-9) << "mrcal, camera " << camera;
        }
        cv::FileStorage ros = yaml(fileOf(files, names[camera] + ".camera_info.yaml"));
        EXPECT_EQ(ros["camera_name"].string(), names[camera]);
        EXPECT_EQ(int(ros["image_width"]), seen.width);
        std::vector<double> matrix;
        std::vector<double> projection;
        ros["camera_matrix"]["data"] >> matrix;
        ros["projection_matrix"]["data"] >> projection;
        ASSERT_EQ(projection.size(), 12U);
        for (size_t i = 0; i < 12; i++) {
            EXPECT_EQ(projection[i], i % 4 == 3 ? 0 : matrix[i / 4 * 3 + i % 4])
                << "without rectification, this matrix is the camera matrix with a column of zeros";
        }
    }
}

TEST(RigFiles, numberTheCamerasOfColmapWithoutGaps) {
    Calibration calibration = makeRig();
    calibration.observations.cameras[2].name = "c";
    calibration.observations.cameras[0].lens = LensModel::Pinhole12;
    calibration.estimate.intrinsics[0].conservativeResizeLike(Eigen::VectorXd::Zero(16));
    const ResultFiles files = resultFiles(calibration, {});
    std::istringstream lines(fileOf(files, "cameras.txt"));
    std::vector<std::string> starts;
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '#') {
            std::istringstream words(line);
            std::string number, model, width, height;
            words >> number >> model >> width >> height;
            starts.push_back(number + " " + model + " " + width + " " + height);
        }
    }
    EXPECT_EQ(starts, (std::vector<std::string>{"1 OPENCV_FISHEYE 1000 800", "2 OPENCV 800 600"}));
    const auto says = [&](const std::string &text) {
        return std::count(files.omissions.begin(), files.omissions.end(), text) == 1;
    };
    EXPECT_TRUE(says("unseen could not be calibrated."));
    EXPECT_TRUE(says("a is not in cameras.txt, because this file format has no lens model pinhole12."));
}

TEST(RigFiles, leaveACameraOfAnotherRigOutOfTheChain) {
    Calibration calibration = makeRig();
    calibration.observations.cameras[2].name = "c";
    for (Photograph &photograph : calibration.observations.photographs) {
        photograph.moment += photograph.camera == 2 ? calibration.observations.moments : 0;
    }
    calibration.observations.moments *= 2;
    Estimate &estimate = calibration.estimate;
    estimate.rigFromWorld.insert(estimate.rigFromWorld.end(), estimate.rigFromWorld.begin(),
                                 estimate.rigFromWorld.begin() + 14);
    estimate.hasMoment.resize(28, true);
    const ResultFiles files = resultFiles(calibration, {});
    const std::string chain = fileOf(files, "camchain.yaml");
    EXPECT_NE(chain.find("cam1:"), std::string::npos);
    EXPECT_EQ(chain.find("cam2:"), std::string::npos);
    EXPECT_EQ(std::count(files.omissions.begin(), files.omissions.end(),
                         "c is not in camchain.yaml, because its place in the rig of the first camera is not known."),
              1);
}

TEST(CameraNames, mustBeFileNamesOnEverySystem) {
    for (const char *good : {"left", "a.b", "cam-2_x"}) {
        EXPECT_EQ(cameraNameFault(good), "");
    }
    for (const std::string &bad : {std::string(), std::string(".hidden"), std::string("a/b"), std::string("a b"),
                                   std::string("a:b"), std::string("\xC3\xA4"), std::string(101, 'a')}) {
        EXPECT_NE(cameraNameFault(bad), "") << bad;
    }
    EXPECT_THROW(resultFiles(makeRig(), {}), std::runtime_error) << "the name of a camera has a space and quotes";
}

TEST(AssemblyFile, placesEveryCornerInTheAxesThatThreeCornersDefine) {
    const Calibration calibration = makeRig();
    ResultNotes notes;
    notes.axes = AssemblyAxes{{{{1, 2, 1}, {1, 7, 1}, {0, 4, 5}}}};
    const json file = json::parse(assemblyJson(calibration, notes));
    ASSERT_EQ(file["Patterns"].size(), 2U);
    EXPECT_EQ(file["NotLinked"], json::parse(R"(["pattern 2"])"));
    const auto onPrintOf = [&](size_t print, int corner) {
        const PrintShape &shape = calibration.estimate.shapes[print];
        const Eigen::Vector2d drawn = calibration.observations.prints[print].points[size_t(corner)];
        return printedPoint(shape.numbers.data(), shape.reach, drawn).place;
    };
    const Eigen::Vector3d origin = calibration.estimate.worldFromPrint[1] * onPrintOf(1, 1 * columns + 2);
    for (size_t print = 0; print < 2; print++) {
        const json &pattern = file["Patterns"][print];
        const Motion commonFromPrint = motionOf(pattern);
        EXPECT_NEAR(cv::determinant(commonFromPrint.rotation), 1, 1e-9) << "right-handed";
        const RigidMotion &world = calibration.estimate.worldFromPrint[print];
        for (const json &point : pattern["Points"]) {
            const int i = point[1].get<int>() * columns + point[0].get<int>();
            const Eigen::Vector3d onPrint = onPrintOf(print, i);
            const cv::Vec3d place(point[2], point[3], point[4]);
            EXPECT_LT(cv::norm(commonFromPrint * vectorOf(onPrint), place), 5e-6);
            EXPECT_EQ(point[5], 0.01 * double(print + 1));
            // The new axes do not change the distance between a corner and the corner that is the origin.
            EXPECT_NEAR(cv::norm(place), ((world * onPrint) - origin).norm(), 5e-6);
        }
    }
    notes.axes = AssemblyAxes{{{{0, 2, 1}, {0, 7, 1}, {0, 3, 1}}}};
    EXPECT_THROW(assemblyJson(calibration, notes), std::invalid_argument) << "three corners on one line define no axes";
}

TEST(AssemblyFile, hasAMeshWhoseFaceNormalsPointOutOfThePrintedSides) {
    Calibration calibration = makeRig();
    calibration.observations.cameras[2].name = "c";
    std::istringstream ply(fileOf(resultFiles(calibration, {}), "assembly.ply"));
    size_t vertexCount = 0;
    size_t faceCount = 0;
    for (std::string line; std::getline(ply, line) && line != "end_header";) {
        std::istringstream words(line);
        std::string first, second;
        size_t number = 0;
        words >> first >> second >> number;
        vertexCount = second == "vertex" ? number : vertexCount;
        faceCount = second == "face" ? number : faceCount;
    }
    ASSERT_EQ(vertexCount, size_t(2 * columns * rows));
    ASSERT_EQ(faceCount, size_t(2 * (columns - 1) * (rows - 1)));
    struct Vertex {
        cv::Vec3d place;
        double sigma = 0;
        int print = 0;
    };
    std::vector<Vertex> vertices(vertexCount);
    for (Vertex &vertex : vertices) {
        ply >> vertex.place[0] >> vertex.place[1] >> vertex.place[2] >> vertex.sigma >> vertex.print;
        EXPECT_EQ(vertex.sigma, 0.01 * (vertex.print + 1));
    }
    for (size_t face = 0; face < faceCount; face++) {
        size_t corners = 0;
        size_t i[4] = {};
        ply >> corners >> i[0] >> i[1] >> i[2] >> i[3];
        ASSERT_EQ(corners, 4U);
        ASSERT_LT(*std::max_element(i, i + 4), vertexCount);
        const int print = vertices[i[0]].print;
        EXPECT_EQ(print, face < faceCount / 2 ? 0 : 1);
        const cv::Vec3d along = vertices[i[1]].place - vertices[i[0]].place;
        const cv::Vec3d onwards = vertices[i[2]].place - vertices[i[1]].place;
        EXPECT_NEAR(cv::norm(along), pitch, 0.5);
        EXPECT_NEAR(cv::norm(onwards), pitch, 0.5);
        // z points into the print, so a face whose vertices are counter-clockwise as seen from the printed side has its
        // normal along -z.
        const Eigen::Vector3d into = rotationMatrix(calibration.estimate.worldFromPrint[size_t(print)].rotation).col(2);
        EXPECT_LT(along.cross(onwards).dot(vectorOf(into)), -0.9 * pitch * pitch);
    }
    ASSERT_TRUE(ply);
}

}  // namespace
}  // namespace calibration
