// Tests complete calibrations. Their corners are computed from a known scene; in some tests, a part of them is then
// made wrong.
#include "calibration/calibrate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <random>

#include "calibration/next_photograph.h"
#include "calibration/sighting_residuals.h"
#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;

// Projects the corners with the result and with the truth, and returns the rms distance between the two projections in
// pixels. Coefficients are not compared, because different ones can give the same projection.
double rmsDifference(const Calibration &result, const Scene &scene) {
    double squares = 0;
    int count = 0;
    for (const Sighting &sighting : scene.observations.sightings) {
        Observations all = scene.observations;
        all.cameras = result.observations.cameras;
        const SightingResiduals residuals(all, sighting, 0);
        const SightingResiduals exact(scene.observations, sighting, 0);
        Eigen::VectorXd found(residuals.rows());
        Eigen::VectorXd expected(residuals.rows());
        if (takesPart(result.observations, sighting, result.estimate) &&
            residuals.evaluate(blocksOf(all, sighting, result.estimate), found.data(), nullptr) &&
            exact.evaluate(blocksOf(all, sighting, scene.truth), expected.data(), nullptr)) {
            // Both residuals contain the same noise, which cancels.
            squares += (found - expected).squaredNorm() * std::pow(sighting.corners.front().sigma, 2);
            count += residuals.corners();
        }
    }
    return std::sqrt(squares / count);
}

void expectTruth(const Calibration &result, const Scene &scene) {
    EXPECT_LT(rmsDifference(result, scene), 0.03);
    EXPECT_LT((result.estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation).norm(), 0.1);
    EXPECT_NEAR(result.estimate.shapes[1].numbers[PrintShape::ratio], -0.004, 3e-4);
    EXPECT_NEAR(result.estimate.shapes[1].numbers[PrintShape::bend], 0.6, 0.03);
}

// Returns a scene that is calibrated faster, because only the first camera sees the prints.
Scene makeSmallScene() {
    Scene scene = makeScene(0.05);
    std::vector<Sighting> &sightings = scene.observations.sightings;
    sightings.erase(std::remove_if(sightings.begin(), sightings.end(),
                                   [&](const Sighting &one) {
                                       return scene.observations.photographs[size_t(one.photograph)].camera != 0;
                                   }),
                    sightings.end());
    return scene;
}

// Returns the truth in the form of a previous result. A calibration that starts from this result keeps its models if
// the options are the default ones and at least two thirds of the photographs show a pattern.
Calibration calibrationOf(const Scene &scene) {
    Calibration result;
    result.observations = scene.observations;
    result.estimate = scene.truth;
    result.freedom.shapes = {{PrintShape::ratio}, {PrintShape::ratio, 3, 4, 5}};
    result.modelOrigin.photographs = int(scene.observations.photographs.size());
    return result;
}

int bendsOfPrint(const Calibration &result, size_t print) {
    const std::vector<int> &free = result.freedom.shapes[print];
    return int(std::count_if(free.begin(), free.end(), [](int number) { return number >= PrintShape::bend; }));
}

TEST(Calibrate, choosesLensModelsAndPrintBendsByPredictionAndJudgesTheResult) {
    const Scene scene = makeScene(0.05, 21);
    const Calibration result = calibrate(scene.observations);
    expectTruth(result, scene);
    EXPECT_TRUE(result.leftOut.empty());
    EXPECT_EQ(bendsOfPrint(result, 0), 0);
    EXPECT_EQ(bendsOfPrint(result, 1), 3);
    EXPECT_NE(result.observations.cameras[0].lens, LensModel::Fisheye);
    EXPECT_EQ(result.observations.cameras[1].lens, LensModel::Fisheye);
    EXPECT_NEAR(result.cameras[0].rms, 0.05 * std::sqrt(2), 0.005);
    EXPECT_EQ(result.cameras[0].photographs, 14);
    ASSERT_TRUE(result.cameras[0].halves);
    EXPECT_TRUE(result.prints[0].isDetermined && result.prints[1].isDetermined);
    EXPECT_EQ(result.prints[0].translationSigma.norm(), 0);
    EXPECT_GT(result.prints[1].translationSigma.norm(), 0.002);
    EXPECT_EQ(result.prints[1].pointSigmas.size(), scene.observations.prints[1].points.size());
    // For held-out corners, the error of the chosen model is about equal to the noise. If the simplest pinhole or the
    // fisheye was not chosen, its error is greater than the noise.
    for (size_t camera = 0; camera < 2; camera++) {
        ASSERT_GE(result.cameras[camera].trials.size(), 5U);
        for (const ModelTrial &trial : result.cameras[camera].trials) {
            if (trial.lens == result.observations.cameras[camera].lens) {
                EXPECT_NEAR(trial.heldOutError, 0.05 * std::sqrt(2), 0.015) << camera;
            } else if (trial.lens == LensModel::Pinhole4 || trial.lens == LensModel::Fisheye) {
                EXPECT_GT(trial.heldOutError, 0.05 * std::sqrt(2)) << camera << " " << nameOf(trial.lens);
            }
        }
    }
    // The grade is not good, because no photograph shows a print in the corners of the fisheye's picture.
    EXPECT_NE(result.verdict.grade, Grade::Good);
    ASSERT_TRUE(result.next);
    EXPECT_EQ(result.next->camera, 1);
    EXPECT_LT(result.next->uncertaintyAfter, result.next->uncertaintyBefore);
    EXPECT_EQ(result.next->text.rfind("Take a photograph", 0), 0U) << result.next->text;

    // If the uncertainty of every lens is far smaller than the error of a single corner, more photographs hardly help.
    Calibration certain = result;
    for (CameraTrust &trust : certain.cameras) {
        EXPECT_FALSE(isLensCertain(certain));
        for (std::optional<double> &value : trust.uncertainty.values) {
            value = value ? std::optional(0.004) : std::nullopt;
        }
    }
    EXPECT_TRUE(isLensCertain(certain));
    const auto next = findNextPhotograph(certain);
    EXPECT_TRUE(next && next->text.rfind("More photographs hardly help", 0) == 0);
}

TEST(Calibrate, leavesOutSightingsThatDoNotFitAndSaysWhy) {
    Scene scene = makeScene(0.05);
    std::vector<Sighting> &sightings = scene.observations.sightings;
    std::mt19937 random(1);
    const auto secondPrintFrom = [&](size_t first) {
        while (sightings[first].print != 1) {
            first++;
        }
        return first;
    };
    const size_t moved = secondPrintFrom(0);
    RigidMotion elsewhere = scene.truth.worldFromPrint[1];
    elsewhere.translation.x() += 5;
    sightings[moved] = see(scene, sightings[moved].photograph, 1, elsewhere, 0.05, random);
    const size_t misread = secondPrintFrom(moved + 3);
    for (size_t i = 0; i < sightings[misread].corners.size(); i++) {
        sightings[misread].corners[i].image += Eigen::Vector2d(double(i * 37 % 11), double(i * 53 % 13));
    }
    const size_t zoomed = secondPrintFrom(misread + 3);
    for (SeenCorner &corner : sightings[zoomed].corners) {
        corner.image *= 0.7;
    }
    const size_t fewCorners = secondPrintFrom(zoomed + 3);
    sightings[fewCorners].corners.resize(3);
    // In each sighting, one corner is displaced. If the other corners fit, only this corner must be left out, not the
    // whole sighting. Most sightings have about sixty corners, so one bad corner is a small share.
    for (Sighting &sighting : sightings) {
        sighting.corners[size_t(sighting.photograph) % sighting.corners.size()].image += Eigen::Vector2d(3, -4);
    }
    CalibrateOptions options;
    options.previous = std::make_shared<Calibration>(calibrationOf(scene));
    const Calibration result = calibrate(scene.observations, options);
    expectTruth(result, scene);
    const std::vector<std::pair<size_t, Misfit>> expected = {{moved, Misfit::Moved},
                                                             {misread, Misfit::Unclear},
                                                             {zoomed, Misfit::AnotherLens},
                                                             {fewCorners, Misfit::NoPose}};
    ASSERT_EQ(result.leftOut.size(), expected.size());
    for (size_t i = 0; i < expected.size(); i++) {
        EXPECT_EQ(size_t(result.leftOut[i].sighting), expected[i].first);
        EXPECT_EQ(result.leftOut[i].misfit, expected[i].second) << result.leftOut[i].reason;
    }
}

TEST(Calibrate, keepsThePlaceThatAPrintHadBeforeItMoved) {
    // There are 14 moments. If the print moves before moment 7, both places are seen equally often.
    for (const int movedAt : {8, 7}) {
        Scene scene = makeSmallScene();
        RigidMotion elsewhere = scene.truth.worldFromPrint[1];
        elsewhere.translation += Eigen::Vector3d(7, -3, 2);
        std::mt19937 random(1);
        for (Sighting &sighting : scene.observations.sightings) {
            if (sighting.print == 1 && scene.observations.photographs[size_t(sighting.photograph)].moment >= movedAt) {
                sighting = see(scene, sighting.photograph, 1, elsewhere, 0.05, random);
            }
        }
        CalibrateOptions options;
        options.lens = LensModel::Pinhole5;
        if (movedAt == 7) {
            Calibration known = calibrationOf(scene);  // no models are chosen, so the test is quick
            known.modelOrigin.lens = options.lens;
            known.modelOrigin.photographs = 14;
            options.previous = std::make_shared<Calibration>(known);
        }
        const Calibration result = calibrate(scene.observations, options);
        const Eigen::Vector3d found = result.estimate.worldFromPrint[1].translation;
        EXPECT_LT((found - scene.truth.worldFromPrint[1].translation).norm(), 0.1) << movedAt;
        // The photographs after the move still count for the other print.
        EXPECT_EQ(int(result.leftOut.size()), 14 - movedAt);
        EXPECT_TRUE(std::all_of(result.leftOut.begin(), result.leftOut.end(), [&](const LeftOut &one) {
            return one.misfit == Misfit::Moved && scene.observations.sightings[size_t(one.sighting)].print == 1;
        }));
        ASSERT_FALSE(result.notices.empty());
        EXPECT_NE(result.notices.front().find("it was moved between photographs"), std::string::npos)
            << result.notices.front();
    }
}

TEST(Calibrate, namesPrintsThatAreInNoPhotographWithTheOthers) {
    Scene scene = makeScene(0.05);
    Observations &observations = scene.observations;
    observations.prints.push_back(makePrint());
    for (size_t i = 0; i < observations.prints.size(); i++) {
        observations.prints[i].number = int(i);
    }
    for (Sighting &sighting : observations.sightings) {
        const bool isFirstHalf = observations.photographs[size_t(sighting.photograph)].moment < 7;
        sighting.isUsed = isFirstHalf || sighting.print == 0;
        sighting.print = isFirstHalf ? sighting.print : 2;
    }
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    options.mayBend = false;
    options.measured = {{2, {1.01, 1.01}}};
    const Calibration result = calibrate(observations, options);
    EXPECT_EQ(result.firstGroup(), result.estimate.groups[1]);
    EXPECT_NE(result.firstGroup(), result.estimate.groups[2]);
    EXPECT_NEAR(result.estimate.shapes[2].numbers[PrintShape::scale], std::log(1.01), 1e-12);
    ASSERT_FALSE(result.notices.empty());
    EXPECT_EQ(result.notices.front().find("Pattern 2 is in no photograph with the others"), 0U)
        << result.notices.front();
}

// Compares the intrinsics and the second print's place in two results. Returns the greatest difference, in standard
// deviations.
double greatestDifference(const Calibration &a, const Calibration &b) {
    double greatest = ((a.estimate.worldFromPrint[1].translation - b.estimate.worldFromPrint[1].translation).array() /
                       b.prints[1].translationSigma.array())
                          .abs()
                          .maxCoeff();
    for (size_t camera = 0; camera < 2; camera++) {
        const std::vector<double> &sigmas = b.cameras[camera].sigmas;
        for (size_t i = 0; i < sigmas.size(); i++) {
            const auto k = Eigen::Index(i);
            greatest = std::max(
                greatest, std::abs(a.estimate.intrinsics[camera](k) - b.estimate.intrinsics[camera](k)) / sigmas[i]);
        }
    }
    return greatest;
}

std::vector<std::pair<int, Misfit>> leftOutOf(const Calibration &result) {
    std::vector<std::pair<int, Misfit>> all;
    for (const LeftOut &one : result.leftOut) {
        all.emplace_back(one.sighting, one.misfit);
    }
    return all;
}

TEST(Calibrate, findsTheSameFromAPreviousResultAsWithoutOne) {
    Scene scene = makeScene(0.05, 33);
    std::vector<Sighting> &sightings = scene.observations.sightings;
    std::mt19937 random(2);
    const auto secondPrintFrom = [&](size_t first) {
        return size_t(std::find_if(sightings.begin() + std::ptrdiff_t(first), sightings.end(),
                                   [](const Sighting &one) { return one.print == 1; }) -
                      sightings.begin());
    };
    const size_t misread = secondPrintFrom(0);
    for (size_t i = 0; i < sightings[misread].corners.size(); i++) {
        sightings[misread].corners[i].image += Eigen::Vector2d(double(i * 37 % 11), double(i * 53 % 13));
    }
    const size_t moved = secondPrintFrom(misread + 5);
    RigidMotion elsewhere = scene.truth.worldFromPrint[1];
    elsewhere.translation.x() += 5;
    sightings[moved] = see(scene, sightings[moved].photograph, 1, elsewhere, 0.05, random);
    for (Sighting &sighting : sightings) {
        sighting.corners[size_t(sighting.photograph) % sighting.corners.size()].image += Eigen::Vector2d(3, -4);
    }
    const auto without = [&](const std::vector<int> &photographs) {
        Observations some = scene.observations;
        for (Sighting &sighting : some.sightings) {
            sighting.isUsed = std::count(photographs.begin(), photographs.end(), sighting.photograph) == 0;
        }
        return some;
    };
    // With these options, a calibration keeps the models and starts from the true lenses. It must find all poses
    // itself, because the previous result has no sightings.
    CalibrateOptions fromNothing;
    Calibration models = calibrationOf(scene);
    models.observations.sightings.clear();
    fromNothing.previous = std::make_shared<Calibration>(models);
    const int bad = sightings[misread].photograph;
    const int shifted = sightings[moved].photograph;
    std::map<std::vector<int>, std::shared_ptr<const Calibration>> results;
    const auto calibrated = [&](const std::vector<int> &photographs) {
        auto &result = results[photographs];
        if (!result) {
            result = std::make_shared<Calibration>(calibrate(without(photographs), fromNothing));
        }
        return result;
    };
    EXPECT_EQ(leftOutOf(*calibrated({})),
              (std::vector<std::pair<int, Misfit>>{{int(misread), Misfit::Unclear}, {int(moved), Misfit::Moved}}));
    // The previous calibration is made without the photographs in `before`, and the next one without those in `after`.
    for (const auto &[before, after] : std::vector<std::pair<std::vector<int>, std::vector<int>>>{
             {{}, {20, 21}}, {{20, 21}, {}}, {{bad}, {}}, {{shifted}, {bad}}}) {
        CalibrateOptions options;
        options.previous = calibrated(before);
        const Calibration warm = calibrate(without(after), options);
        const auto cold = calibrated(after);
        // A corner whose residual is close to the limit may count in one result and not in the other.
        EXPECT_LT(greatestDifference(warm, *cold), 0.2);
        EXPECT_EQ(leftOutOf(warm), leftOutOf(*cold));
        EXPECT_NEAR(warm.cameras[0].rms, cold->cameras[0].rms, 1e-4);
    }
}

TEST(Calibrate, choosesModelsAgainIfAnotherChoiceIsWanted) {
    const Scene scene = makeScene(0.05);
    CalibrateOptions options;
    options.previous = std::make_shared<Calibration>(calibrationOf(scene));
    options.lens = LensModel::Pinhole8;
    options.mayBend = false;
    const Calibration result = calibrate(scene.observations, options);
    EXPECT_EQ(result.observations.cameras[1].lens, LensModel::Pinhole8);
    EXPECT_EQ(bendsOfPrint(result, 1), 0);
}

TEST(Calibrate, choosesModelsAgainOnlyIfThePreviousChoiceIsOutOfDate) {
    struct Row {
        int photographs;  // how many photographs the previous choice was made from; this calibration uses 14
        bool mayBend;
        bool isKept;
    };
    for (const Row &row : {Row{14, true, true}, Row{10, true, true}, Row{21, true, true}, Row{9, true, false},
                           Row{22, true, false}, Row{14, false, false}}) {
        const Scene scene = makeSmallScene();
        Calibration previous = calibrationOf(scene);
        previous.modelOrigin = {LensModel::Pinhole5, true, row.photographs};
        previous.observations.sightings.clear();
        // The corners of the first print do not need this bend. It stays if the previous models are kept, and
        // disappears if models are chosen again.
        previous.freedom.shapes[0] = {PrintShape::ratio, 3, 4, 5};
        CalibrateOptions options;
        options.previous = std::make_shared<Calibration>(previous);
        options.lens = LensModel::Pinhole5;
        options.mayBend = row.mayBend;
        const Calibration result = calibrate(scene.observations, options);
        EXPECT_EQ(bendsOfPrint(result, 0), row.isKept ? 3 : 0) << row.photographs << row.mayBend;
        EXPECT_EQ(result.modelOrigin.photographs, row.isKept ? row.photographs : 14);
    }
}

TEST(Calibrate, reportsItsProgressFromStartToEnd) {
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    options.mayBend = false;
    std::vector<std::pair<Stage, double>> told;
    options.onProgress = [&](Stage stage, double share) { told.emplace_back(stage, share); };
    calibrate(makeSmallScene().observations, options);
    ASSERT_FALSE(told.empty());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.front(), std::pair(Stage::StartValues, 0.0));
    EXPECT_EQ(told.back(), std::pair(Stage::JudgingTrust, 1.0));
    EXPECT_TRUE(std::all_of(told.begin(), told.end(), [](const auto &one) { return one.second >= 0; }));
}

TEST(Calibrate, endsWithinAnIterationOfBeingCancelled) {
    const Scene scene = makeScene(0.05);
    std::atomic<int> asked{0};
    CalibrateOptions options;
    // 60 queries are more than there are stages, but far fewer than a complete calibration makes.
    options.isCancelled = [&]() { return ++asked >= 60; };
    EXPECT_THROW(calibrate(scene.observations, options), Cancelled);
    EXPECT_LT(asked, 60 + 12);  // 12 more, because other threads may still ask
}

TEST(Calibrate, refusesPhotographsThatDetermineNoLens) {
    const Scene scene = makeScene(0.05);
    Observations none = scene.observations;
    none.sightings.clear();
    Observations one = scene.observations;
    one.sightings.resize(1);
    // Every photograph shows the print from the same direction.
    Observations frontal = scene.observations;
    frontal.sightings.clear();
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.1);
    for (int moment = 0; moment < 8; moment++) {
        Sighting sighting{2 * moment, 0, true, {}};
        for (int point = 0; point < columns * rows; point++) {
            const Eigen::Vector2d place = (1.5 + 0.1 * moment) * frontal.prints[0].points[size_t(point)];
            sighting.corners.push_back(
                {point, Eigen::Vector2d(600 + noise(random), 450 + noise(random)) + place, 0.1, true});
        }
        frontal.sightings.push_back(sighting);
    }
    // The same kind of views without noise: the residuals are tiny, but the corners determine no more than with noise.
    Observations exact = frontal;
    for (Sighting &sighting : exact.sightings) {
        for (SeenCorner &corner : sighting.corners) {
            const double distance = 1.5 + 0.05 * sighting.photograph;
            corner.image = Eigen::Vector2d(600, 450) + distance * exact.prints[0].points[size_t(corner.point)];
        }
    }
    for (const auto &[observations, text] :
         std::vector<std::pair<Observations, std::string>>{{none, "No photograph"},
                                                           {one, "Only one photograph"},
                                                           {frontal, "too few directions"},
                                                           {exact, "too few directions"}}) {
        try {
            calibrate(observations);
            ADD_FAILURE() << "not refused: " << text;
        } catch (const CalibrationImpossible &impossible) {
            EXPECT_NE(std::string(impossible.what()).find(text), std::string::npos) << impossible.what();
        }
    }
}

}  // namespace
