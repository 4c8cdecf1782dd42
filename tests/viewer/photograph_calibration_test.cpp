// Tests how a result is made from settings and from photographs that have been read. The corners are computed from
// known poses.
#include "viewer/session/photograph_calibration.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/calibration/computed_scene.h"

namespace {

using calibration::LensModel;
using calibration::PrintShape;
using calibration::RigidMotion;
using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

constexpr int photographCount = 8;
constexpr double distanceMm = 600;  // from the camera to the patterns; the true distances differ by up to 10 %

// How a pattern was printed.
struct Printed {
    // Pattern n of an assembly has the tile number n + 1. In this test, 0 means a plain board, and -1 a Flexible
    // pattern.
    int tile = 1;
    double gridSpacing = 24;      // mm
    Eigen::Vector2d scale{1, 1};  // length in the print divided by nominal length, in x and y
    RigidMotion worldFromPrint;
};

RigidMotion cameraFromWorld(int photograph) {
    return {{0.5 * std::cos(1.3 * photograph), 0.5 * std::sin(2.1 * photograph), 0.1 * photograph},
            {-60 + 20 * std::cos(photograph), 15 * std::sin(photograph), distanceMm + 50 * std::sin(3.0 * photograph)}};
}

// Returns a reading of the pattern with 25 of its corners.
PatternReading readingOf(const Printed &printed, const RigidMotion &cameraFromWorld) {
    Eigen::VectorXd intrinsics(8);
    intrinsics << 1100, 1090, 610, 440, -0.1, 0.02, 0.001, -0.0005;
    PatternReading reading;
    reading.kind = printed.tile > 0 ? PatternKind::Tile : printed.tile == 0 ? PatternKind::Board : PatternKind::Plane;
    reading.tile = std::max(printed.tile, 0);
    for (int row = 2; row <= 14; row += 3) {
        for (int column = 2; column <= 14; column += 3) {
            const Eigen::Vector2d drawn = printed.gridSpacing / 2 * Eigen::Vector2d(column - 8, row - 8);
            const Eigen::Vector3d place(printed.scale.x() * drawn.x(), printed.scale.y() * drawn.y(), 0);
            Eigen::Vector2d image;
            EXPECT_TRUE(project(LensModel::Pinhole4, intrinsics.data(),
                                cameraFromWorld * (printed.worldFromPrint * place), image));
            reading.corners.push_back({{float(image.x()), float(image.y())}, {column, row}, 0.02F, false});
        }
    }
    return reading;
}

// Returns the photographs that one camera takes of the prints. The folder also serves as the name of the camera in the
// EXIF data, so photographs from different folders belong to different cameras.
QVector<SessionPhotograph> photographsOf(const std::vector<Printed> &prints, const QString &folder = "/shots",
                                         const RigidMotion &cameraFromRig = {}) {
    QVector<SessionPhotograph> photographs;
    for (int i = 0; i < photographCount; ++i) {
        auto readings = std::make_shared<PatternReadings>();
        for (const Printed &printed : prints) {
            readings->push_back(readingOf(printed, cameraFromRig * cameraFromWorld(i)));
        }
        SessionPhotograph photograph;
        photograph.id = 100 + i;
        photograph.path = QString("%1/%2.jpg").arg(folder).arg(i);
        photograph.exifCamera = folder.toStdString();
        photograph.state = PhotographState::Read;
        photograph.width = 1200;
        photograph.height = 900;
        photograph.readings = readings;
        photographs.append(photograph);
    }
    return photographs;
}

SessionSettings fixedModels() {
    SessionSettings settings;
    settings.lens = LensModel::Pinhole4;
    settings.mayBend = false;
    settings.gridSpacing = 24;
    return settings;
}

SessionResult resultOf(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings) {
    SessionResult result = calibratePhotographs(photographs, settings, {});
    EXPECT_TRUE(result.calibration) << result.problem.toStdString();
    return result;
}

TEST(PhotographCalibration, usesWhatTheUserMeasured) {
    // Pattern 0 is printed too large, and pattern 1 too wide and not high enough. Only pattern 1 was measured, so its
    // measured size determines all lengths. If the measurement were ignored, the size of pattern 0 would count as
    // exact, and all lengths would be wrong.
    Printed first;
    Printed second;
    second.tile = 2;
    second.scale = {1.004, 0.998};
    second.worldFromPrint = {{0, 0.3, 0}, {190, 0, 0}};
    first.scale = {1.001, 1.001};
    SessionSettings settings = fixedModels();
    settings.arrangement = Arrangement::Assembly;
    settings.measured[1] = {1.004, 0.998};
    settings.measured[9] = {0.9, 0.9};  // this pattern is not in the photographs
    const SessionResult result = resultOf(photographsOf({first, second}), settings);
    ASSERT_EQ(result.calibration->estimate.shapes.size(), 2U);
    for (const size_t print : {0U, 1U}) {
        const auto &numbers = result.calibration->estimate.shapes[print].numbers;
        const Eigen::Vector2d expected = print == 0 ? first.scale : second.scale;
        EXPECT_NEAR(std::exp(numbers[PrintShape::scale] + numbers[PrintShape::ratio] / 2), expected.x(), 2e-4);
        EXPECT_NEAR(std::exp(numbers[PrintShape::scale] - numbers[PrintShape::ratio] / 2), expected.y(), 2e-4);
    }
    // The corners alone determine the ratio of width to height, too, so the estimate does not show whether the measured
    // ratio was used. The prior shows it.
    EXPECT_NEAR(result.calibration->freedom.priors[1].mean[PrintShape::ratio], std::log(1.004 / 0.998), 1e-9);
}

TEST(PhotographCalibration, usesAMeasurementOnlyIfItClearlyBelongsToOnePrint) {
    Printed board;
    board.tile = 0;
    Printed flexible;
    flexible.tile = -1;
    flexible.worldFromPrint = {{0, 0.3, 0}, {190, 0, 0}};
    SessionSettings settings = fixedModels();
    settings.arrangement = Arrangement::Assembly;
    settings.board = QSize(5, 5);
    settings.boardSquare = 36;
    settings.measured[-1] = {1.004, 0.998};
    const SessionResult both = resultOf(photographsOf({board, flexible}), settings);
    ASSERT_EQ(both.calibration->prints.size(), 2U);
    EXPECT_FALSE(both.calibration->prints[0].isMeasured || both.calibration->prints[1].isMeasured);
    EXPECT_NE(both.calibration->notices.back().find("are not used"), std::string::npos);
    const SessionResult alone = resultOf(photographsOf({flexible}), settings);
    EXPECT_TRUE(alone.calibration->prints[0].isMeasured);
}

TEST(PhotographCalibration, leavesOutAPhotographWhoseFileIsIncomplete) {
    QVector<SessionPhotograph> photographs = photographsOf({Printed()});
    photographs[2].isTruncated = true;
    const SessionResult result = resultOf(photographs, fixedModels());
    EXPECT_EQ(result.photographIds, (std::vector<int>{100, 101, 103, 104, 105, 106, 107}));
    EXPECT_TRUE(result.fits.value(102).reason.contains("cut off"));
}

TEST(PhotographCalibration, takesLengthsFromTheSettings) {
    const struct {
        const char *what;
        int tile;
        double gridSpacing;
        double boardSquare;
        double distance;
    } cases[] = {{"grid spacing", 1, 24, 0, distanceMm},
                 {"twice the grid spacing", 1, 48, 0, 2 * distanceMm},
                 {"board", 0, 0, 12, distanceMm}};
    for (const auto &one : cases) {
        Printed printed;
        printed.tile = one.tile;
        SessionSettings settings = fixedModels();
        settings.gridSpacing = one.gridSpacing;
        settings.boardSquare = one.boardSquare;
        const SessionResult result = resultOf(photographsOf({printed}), settings);
        EXPECT_NEAR(result.calibration->cameras[0].distance / one.distance, 1, 0.1) << one.what;
    }
}

TEST(PhotographCalibration, tellsThatABoardLooksTheSameAfterATurn) {
    Printed board;
    board.tile = 0;
    QVector<SessionPhotograph> photographs = photographsOf({board});
    PatternReadings turned = *photographs[3].readings;
    turned[0].orientations = 2;
    photographs[3].readings = std::make_shared<PatternReadings>(turned);
    SessionSettings settings = fixedModels();
    settings.boardSquare = 12;
    const auto notices = resultOf(photographs, settings).calibration->notices;
    EXPECT_TRUE(std::any_of(notices.begin(), notices.end(), [](const std::string &notice) {
        return notice.find("same after a turn") != std::string::npos;
    }));
}

TEST(PhotographCalibration, givesReasonsForUselessPhotographsButNotForThoseTakenOut) {
    QVector<SessionPhotograph> photographs = photographsOf({Printed()});
    photographs[1].isIncluded = false;
    photographs[2].state = PhotographState::Waiting;
    photographs[3].state = PhotographState::Unreadable;
    photographs[3].readings = nullptr;
    photographs[3].problem = "It is torn.";
    photographs[5].width = 640;
    const SessionResult result = resultOf(photographs, fixedModels());
    EXPECT_FALSE(result.calibration->modelOrigin.mayBend);
    EXPECT_EQ(result.photographIds, (std::vector<int>{100, 104, 106, 107}));
    EXPECT_EQ(result.indexOf(106), 2);
    EXPECT_EQ(result.fits[103].reason, "It is torn.");
    EXPECT_TRUE(result.fits[105].reason.contains("640")) << result.fits[105].reason.toStdString();
    EXPECT_FALSE(result.fits.contains(101));
    for (const int id : result.photographIds) {
        EXPECT_EQ(result.fits[id].corners, 25);
        EXPECT_LT(result.fits[id].rms.value_or(1), 0.01);
    }
}

TEST(PhotographCalibration, findsTheRigOnlyIfTheSettingsSayThatThereIsOne) {
    const RigidMotion secondFromFirst{{0, 0.1, 0}, {-80, 0, 5}};
    QVector<SessionPhotograph> photographs = photographsOf({Printed()}, "/left");
    for (SessionPhotograph photograph : photographsOf({Printed()}, "/right", secondFromFirst)) {
        photograph.id += 100;
        photographs.append(photograph);
    }
    SessionSettings settings = fixedModels();
    EXPECT_EQ(resultOf(photographs, settings).calibration->observations.moments, 2 * photographCount);
    settings.arrangement = Arrangement::Rig;
    const SessionResult result = resultOf(photographs, settings);
    EXPECT_EQ(result.calibration->observations.moments, photographCount);
    const RigidMotion found = result.calibration->estimate.cameraFromRig[1];
    EXPECT_LT((found.translation - secondFromFirst.translation).norm(), 0.5);
    EXPECT_LT((found.rotation - secondFromFirst.rotation).norm(), 0.001);
}

// The fit of a photograph is computed only from the corners that the calibration used.
TEST(SessionResult, describesFitsByTheCornersThatCount) {
    const calibration::Scene scene = calibration::makeScene(0);
    auto calibration = std::make_shared<calibration::Calibration>();
    calibration->observations = scene.observations;
    calibration->estimate = scene.truth;
    auto &observations = calibration->observations;
    // The first photograph: 10 corners of one print are moved by 0.5 px. An eleventh is moved by 50 px, but it is not
    // used. The other print is left out.
    ASSERT_EQ(observations.sightings[0].photograph, observations.sightings[1].photograph);
    calibration::Sighting &moved = observations.sightings[0];
    for (size_t i = 0; i < 10; ++i) {
        moved.corners[i].image += Eigen::Vector2d(0.3, -0.4);
    }
    moved.corners[10].image += Eigen::Vector2d(50, 0);
    moved.corners[10].isUsed = false;
    observations.sightings[1].isUsed = false;
    observations.sightings[1].corners[0].image.x() += 20;
    const int lastSighting = int(observations.sightings.size()) - 1;
    calibration->leftOut = {{1, calibration::Misfit::Moved, "It moved."},
                            {lastSighting, calibration::Misfit::Unclear, "It is unclear."}};
    SessionResult result;
    for (size_t i = 0; i < observations.photographs.size(); ++i) {
        result.photographIds.push_back(int(100 + i));
    }
    result.fits[100].reason = "Said before.";
    result.calibration = calibration;
    describeFits(result);

    const int counted = int(moved.corners.size()) - 1;
    const PhotographFit &fit = result.fits[100];
    EXPECT_EQ(fit.corners, counted);
    EXPECT_NEAR(fit.rms.value_or(0), std::sqrt(10 * 0.25 / counted), 1e-6);
    EXPECT_NEAR(fit.worst, 0.5, 1e-6);
    EXPECT_EQ(fit.reason, "Said before. It moved.");
    const int last = observations.sightings.back().photograph;
    EXPECT_EQ(result.fits[100 + last].reason, "It is unclear.");
    for (size_t i = 1; i < result.photographIds.size(); ++i) {
        EXPECT_LT(result.fits[int(100 + i)].rms.value_or(0), 1e-6) << i;
    }
}

TEST(SessionResult, namesTheCornerAtAPixel) {
    const calibration::Scene scene = calibration::makeScene(0);
    auto calibration = std::make_shared<calibration::Calibration>();
    calibration->observations = scene.observations;
    for (calibration::Print &print : calibration->observations.prints) {
        print.number = 6;
        for (int i = 0; i < calibration::columns * calibration::rows; ++i) {
            print.cells.emplace_back(i % calibration::columns, i / calibration::columns);
        }
    }
    SessionResult result;
    for (size_t i = 0; i < scene.observations.photographs.size(); ++i) {
        result.photographIds.push_back(int(100 + i));
    }
    result.calibration = calibration;
    const calibration::Sighting &sighting = scene.observations.sightings[0];
    const calibration::SeenCorner &corner = sighting.corners[12];
    const auto found = cornerAt(result, 100 + sighting.photograph, corner.image + Eigen::Vector2d(0.5, 0.5));
    ASSERT_TRUE(found);
    EXPECT_TRUE(*found == (NamedCorner{6, corner.point % calibration::columns, corner.point / calibration::columns}));
    EXPECT_FALSE(cornerAt(result, 100 + sighting.photograph, corner.image + Eigen::Vector2d(5, 5)));
    EXPECT_FALSE(cornerAt(result, 7, corner.image));
}

}  // namespace
