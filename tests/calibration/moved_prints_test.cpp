// Tests which sightings are recognised as those of a print that moved. findMoved() gets an estimate with the true
// poses, so the tests do not depend on a solve.
#include "calibration/moved_prints.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr double noise = 0.05;

// Makes a scene in which the first camera sees three flat prints. With two prints, it would not be clear which of them
// moved. `shiftOf` gives the motion of a print at a moment, in mm.
Scene makeScene(const std::function<Eigen::Vector3d(int print, int moment)> &shiftOf) {
    Scene scene = calibration::makeScene(noise);
    Observations &observations = scene.observations;
    Estimate &truth = scene.truth;
    observations.prints.push_back(makePrint());
    truth.worldFromPrint[1] = {{0.02, 0.3, -0.1}, {150, 60, -20}};
    truth.worldFromPrint.push_back({{-0.2, 0.1, 0.1}, {20, 140, 5}});
    truth.groups.push_back(0);
    truth.shapes.assign(3, PrintShape());
    for (PrintShape &shape : truth.shapes) {
        shape.reach = reachOf(observations.prints[0]);
    }
    observations.sightings.clear();
    std::mt19937 random(3);
    for (int moment = 0; moment < observations.moments; moment++) {
        RigidMotion &pose = truth.rigFromWorld[size_t(moment)];
        pose.translation += Eigen::Vector3d(-20, -50, 250);
        for (int print = 0; print < 3; print++) {
            RigidMotion place = truth.worldFromPrint[size_t(print)];
            place.translation += shiftOf(print, moment);
            const Sighting sighting = see(scene, 2 * moment, print, place, noise, random);
            if (sighting.corners.size() >= 12) {
                observations.sightings.push_back(sighting);
            }
        }
    }
    return scene;
}

std::set<std::pair<int, int>> movedOf(const Scene &scene) {
    Freedom freedom;
    freedom.shapes.assign(3, {PrintShape::ratio, PrintShape::shear});
    std::set<std::pair<int, int>> moved;  // print and moment
    for (const size_t i : findMoved(scene.observations, freedom, scene.truth)) {
        const Sighting &sighting = scene.observations.sightings[i];
        moved.emplace(sighting.print, scene.observations.photographs[size_t(sighting.photograph)].moment);
    }
    return moved;
}

TEST(MovedPrints, areThoseThatAreNotAtTheirUsualPlace) {
    const Eigen::Vector3d away(4, -3, 2);
    const Eigen::Vector3d none = Eigen::Vector3d::Zero();
    struct Row {
        const char *what;
        std::function<Eigen::Vector3d(int, int)> shift;
        std::function<bool(int, int)> isMoved;
    };
    for (const Row &row : {
             Row{"nothing moved", [&](int, int) { return none; }, [](int, int) { return false; }},
             Row{"once, late", [&](int print, int moment) { return print == 2 && moment >= 10 ? away : none; },
                 [](int print, int moment) { return print == 2 && moment >= 10; }},
             Row{"once, early: the later place has more photographs",
                 [&](int print, int moment) { return print == 1 && moment < 4 ? away : none; },
                 [](int print, int moment) { return print == 1 && moment < 4; }},
             Row{"once, half way: the earlier place is the usual one",
                 [&](int print, int moment) { return print == 1 && moment >= 7 ? away : none; },
                 [](int print, int moment) { return print == 1 && moment >= 7; }},
             Row{"away and back again: the print is at its usual place before and after",
                 [&](int print, int moment) { return print == 2 && moment >= 5 && moment < 10 ? away : none; },
                 [](int print, int moment) { return print == 2 && moment >= 5 && moment < 10; }},
             Row{"to two other places",
                 [&](int print, int moment) -> Eigen::Vector3d {
                     return print == 1 ? moment >= 11 ? Eigen::Vector3d(2 * away) : moment >= 8 ? away : none : none;
                 },
                 [](int print, int moment) { return print == 1 && moment >= 8; }},
             Row{"two prints at different times",
                 [&](int print, int moment) -> Eigen::Vector3d {
                     return print == 1 && moment >= 9 ? away : print == 2 && moment >= 11 ? -2 * away : none;
                 },
                 [](int print, int moment) { return (print == 1 && moment >= 9) || (print == 2 && moment >= 11); }},
         }) {
        const Scene scene = makeScene(row.shift);
        std::set<std::pair<int, int>> expected;
        for (const Sighting &sighting : scene.observations.sightings) {
            const int moment = scene.observations.photographs[size_t(sighting.photograph)].moment;
            if (row.isMoved(sighting.print, moment)) {
                expected.emplace(sighting.print, moment);
            }
        }
        EXPECT_EQ(movedOf(scene), expected) << row.what;
    }
}

TEST(MovedPrints, doNotIncludeAPrintThatIsLargerThanItsDrawing) {
    // A print that is larger than its drawing seems to be nearer to the camera. The camera is at a different place in
    // each photograph, so the print seems to be at a different place, too.
    Scene scene = makeScene([](int, int) { return Eigen::Vector3d::Zero().eval(); });
    scene.truth.shapes[2].numbers[PrintShape::scale] = 0.006;
    std::mt19937 random(4);
    for (Sighting &sighting : scene.observations.sightings) {
        if (sighting.print == 2) {
            sighting = see(scene, sighting.photograph, 2, scene.truth.worldFromPrint[2], noise, random);
        }
    }
    scene.truth.shapes[2].numbers[PrintShape::scale] = 0;  // not known yet
    EXPECT_EQ(movedOf(scene).size(), 0U);
}

}  // namespace
}  // namespace calibration
