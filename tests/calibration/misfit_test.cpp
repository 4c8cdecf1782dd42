// Tests the reasons that are given for sightings that do not fit. Each of these sightings is a changed sighting of the
// computed scene. The calibration is the truth, so nothing has to be solved.
#include "calibration/misfit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>

#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr double noise = 0.05;

class Misfits : public testing::Test {
protected:
    Misfits() {
        for (size_t i = 0; i < scene.observations.prints.size(); i++) {
            scene.observations.prints[i].number = int(i);
        }
        while (scene.observations.sightings[number].print != 1 ||
               scene.observations.photographs[size_t(scene.observations.sightings[number].photograph)].camera != 0) {
            number++;
        }
    }

    // Changes the sighting, leaves it out, and returns the reason that is given for leaving it out.
    LeftOut explained(const std::function<void(Sighting &, Calibration &)> &change) {
        Calibration calibration;
        calibration.observations = scene.observations;
        calibration.estimate = scene.truth;
        change(calibration.observations.sightings[number], calibration);
        const Observations given = calibration.observations;
        calibration.observations.sightings[number].isUsed = false;
        const std::vector<LeftOut> all = findLeftOut(given, calibration, {});
        if (all.empty()) {
            ADD_FAILURE() << "nothing is left out";
            return {};
        }
        EXPECT_EQ(size_t(all[0].sighting), number);
        return all[0];
    }

    Scene scene = makeScene(noise);
    size_t number = 0;  // index of a sighting of print 1 by camera 0
    std::mt19937 random{7};
};

TEST_F(Misfits, areExplained) {
    const Eigen::Vector2d centre(610, 440);  // the principal point of camera 0
    const auto moveBy = [&](const Eigen::Vector3d &motion) {
        return [this, motion](Sighting &one, Calibration &) {
            RigidMotion elsewhere = scene.truth.worldFromPrint[1];
            elsewhere.translation += motion;
            one = see(scene, one.photograph, 1, elsewhere, noise, random);
        };
    };
    const auto zoomBy = [](double factor, const Eigen::Vector2d &fixed) {
        return [=](Sighting &one, Calibration &) {
            for (SeenCorner &corner : one.corners) {
                corner.image = fixed + factor * (corner.image - fixed);
            }
        };
    };
    struct Row {
        std::function<void(Sighting &, Calibration &)> change;
        Misfit misfit;
        std::string reason;
    };
    const std::string moved = ": it moved, or two boards have the same number.";
    const std::string zoom = ": it was taken with another zoom or focus, or it was scaled or cropped.";
    for (const Row &row : {
             Row{[](Sighting &one, Calibration &) { one.corners.resize(5); }, Misfit::NoPose,
                 "Only 5 corners of pattern 1 were found."},
             Row{[](Sighting &one, Calibration &) { one.corners.resize(9); }, Misfit::NoPose,
                 "The corners of pattern 1 lie nearly on one line or do not fit a flat print."},
             Row{moveBy({0, 0, 30}), Misfit::Moved,
                 "Here pattern 1 is 30 mm away from where the other photographs show it" + moved},
             Row{moveBy({-3, 4, 0}), Misfit::Moved,
                 "Here pattern 1 is 5.0 mm away from where the other photographs show it" + moved},
             Row{[](Sighting &one, Calibration &calibration) {
                     // A second board with the same number.
                     Sighting twin = one;
                     calibration.observations.sightings.push_back(twin);
                 },
                 Misfit::Moved, "The photograph shows two copies of pattern 1. Print each pattern only once."},
             Row{[](Sighting &one, Calibration &calibration) {
                     const Photograph &photograph = calibration.observations.photographs[size_t(one.photograph)];
                     calibration.estimate.hasMoment[size_t(photograph.moment)] = false;
                     for (Sighting &other : calibration.observations.sightings) {
                         const auto moment = calibration.observations.photographs[size_t(other.photograph)].moment;
                         other.isUsed = &other == &one || moment != photograph.moment;
                     }
                 },
                 Misfit::Moved,
                 "The photographs that fit do not show where pattern 1 should be in this one: boards or cameras may "
                 "have moved."},
             // Focal lengths are tried in steps of 4 %: 1.04^6 is 1.265, 1.04^-6 is 0.790, and 1.04^-18 is 0.494.
             Row{zoomBy(1.265, centre), Misfit::AnotherLens,
                 "The photograph fits only a focal length that is 27 % longer" + zoom},
             Row{zoomBy(0.79, centre), Misfit::AnotherLens,
                 "The photograph fits only a focal length that is 21 % shorter" + zoom},
             Row{zoomBy(0.5, {0, 0}), Misfit::AnotherLens,
                 "The photograph fits only a focal length that is 51 % shorter" + zoom},
         }) {
        const LeftOut found = explained(row.change);
        EXPECT_EQ(found.misfit, row.misfit);
        EXPECT_EQ(found.reason, row.reason);
    }
}

TEST_F(Misfits, tellHowFarTheCornersOfABlurredPhotographAreFromTheirPlaces) {
    constexpr double blur = 4;  // pixels along each axis
    std::normal_distribution<double> normal(0, blur);
    const LeftOut found = explained([&](Sighting &one, Calibration &) {
        for (SeenCorner &corner : one.corners) {
            corner.image += Eigen::Vector2d{normal(random), normal(random)};
        }
    });
    EXPECT_EQ(found.misfit, Misfit::Unclear);
    double pixels = 0;
    ASSERT_EQ(std::sscanf(found.reason.c_str(),
                          "Even in the pose that fits best, the corners of pattern 1 are %lf px away", &pixels),
              1)
        << found.reason;
    EXPECT_NEAR(pixels, blur * std::sqrt(2), 1.2);
}

TEST_F(Misfits, keepTheReasonsThatAreKnown) {
    Calibration calibration;
    calibration.observations = scene.observations;
    calibration.estimate = scene.truth;
    const Observations given = calibration.observations;
    calibration.observations.sightings[number].isUsed = false;
    const LeftOut known{int(number), Misfit::Unclear, "known before"};
    const std::vector<LeftOut> all = findLeftOut(given, calibration, {{0, Misfit::Moved, "of another"}, known});
    ASSERT_EQ(all.size(), 1U) << "a sighting that is used again needs no reason";
    EXPECT_EQ(all[0].reason, "known before");
}

}  // namespace
}  // namespace calibration
