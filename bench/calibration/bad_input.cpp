#include <algorithm>
#include <cmath>
#include <string>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "bench/calibration/simulated_scene.h"

namespace calibration_bench {

using namespace calibration;

namespace {

SceneDraft oneBoard() {
    SceneDraft draft;
    draft.cameras = {pinholeCamera()};
    draft.prints = {{10, 8, 25, {}, {}}};
    draft.moments = 20;
    return draft;
}

SceneDraft twoBoards() {
    SceneDraft draft = oneBoard();
    draft.prints = {{8, 6, 22, {}, {}}, {8, 6, 22, {{0.1, 0.5, 0}, {230, 0, -40}}, {}}};
    draft.reach = 0.5;
    return draft;
}

// Returns the reason why no calibration can be made from these observations; empty if one can be made.
std::string refusal(const Observations &observations) {
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    try {
        calibrate(observations, options);
        return {};
    } catch (const CalibrationImpossible &impossible) {
        return impossible.what();
    }
}

void refused(GoalTable &table, const char *what, const Observations &observations) {
    const std::string sentence = refusal(observations);
    table.holds(what, sentence.empty() ? "A calibration was made." : sentence, !sentence.empty());
}

bool mentions(const std::vector<std::string> &texts, const std::string &word) {
    return std::any_of(texts.begin(), texts.end(),
                       [&](const std::string &text) { return text.find(word) != std::string::npos; });
}

// Prints how many of the sightings [first, last) are left out for the expected reason, and the reason that the
// calibration states for one of them. The goal is met if all of these sightings are left out for that reason, and no
// other sightings are left out.
void leftOut(GoalTable &table, const char *what, const Observations &observations, Misfit expected, int first,
             int last) {
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    const Calibration result = calibrate(observations, options);
    int found = 0;
    int wrong = 0;
    std::string sentence;
    for (const LeftOut &leftOut : result.leftOut) {
        const bool isBad = leftOut.sighting >= first && leftOut.sighting < last;
        found += isBad && leftOut.misfit == expected ? 1 : 0;
        wrong += isBad ? 0 : 1;
        sentence = isBad ? leftOut.reason : sentence;
    }
    table.holds(what,
                std::to_string(found) + " of " + std::to_string(last - first) + " left out for the right reason, " +
                    std::to_string(wrong) + " others left out: " + sentence,
                found == last - first && wrong == 0);
}

void measureOneDirection(GoalTable &table) {
    SceneDraft draft = oneBoard();
    draft.tilt = 0;
    draft.reach = 0;
    SimulatedScene scene = simulate(draft, 9301);
    refused(table, "all photographs from one direction", scene.observations);
}

void measureUnlinked(GoalTable &table) {
    SimulatedScene scene = simulate(twoBoards(), 9302);
    std::vector<Sighting> &sightings = scene.observations.sightings;
    // Each photograph keeps only one of the two prints, so no photograph links them.
    sightings.erase(std::remove_if(sightings.begin(), sightings.end(),
                                   [](const Sighting &sighting) { return sighting.photograph % 2 != sighting.print; }),
                    sightings.end());
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    const Calibration result = calibrate(scene.observations, options);
    const auto found = std::find_if(result.notices.begin(), result.notices.end(), [](const std::string &notice) {
        return notice.find("no photograph") != std::string::npos;
    });
    table.holds("two patterns that are never in the same photograph",
                found == result.notices.end() ? "nothing is said about it" : *found,
                found != result.notices.end() && mentions(result.notices, "1"));
}

void measureMoved(GoalTable &table) {
    // The scene needs a third pattern. With only two, nobody could know which of them moved.
    SceneDraft draft = twoBoards();
    draft.reach = 0.2;
    draft.least = 700;
    draft.prints.push_back({8, 6, 22, {{-0.5, 0.1, 0}, {0, 190, -40}}, {}});
    SimulatedScene scene = simulate(draft, 9303);
    std::mt19937 random(1);
    RigidMotion moved = scene.truth.worldFromPrint[1];
    moved.translation.x() += 15;
    // Print 1 moves before the last three of the 20 photographs. Its sightings in these three are appended to the list,
    // so their indices show which sightings must be left out.
    std::vector<Sighting> &sightings = scene.observations.sightings;
    sightings.erase(
        std::remove_if(sightings.begin(), sightings.end(),
                       [](const Sighting &sighting) { return sighting.photograph >= 17 && sighting.print == 1; }),
        sightings.end());
    const auto first = int(sightings.size());
    for (int photograph = 17; photograph < 20; photograph++) {
        const Sighting sighting = sightingOf(scene, photograph, 1, moved, 0.1, 0.1, random);
        if (sighting.corners.size() >= 12) {
            sightings.push_back(sighting);
        }
    }
    leftOut(table, "one of three patterns moved before the last three of 20 photographs", scene.observations,
            Misfit::Moved, first, int(sightings.size()));
}

void measureZoomed(GoalTable &table) {
    SimulatedScene scene = simulate(oneBoard(), 9304);
    const Eigen::Vector2d centre = scene.truth.intrinsics[0].segment<2>(2);
    for (SeenCorner &corner : scene.observations.sightings[4].corners) {
        corner.image = centre + 0.8 * (corner.image - centre);
    }
    leftOut(table, "a photograph with another zoom", scene.observations, Misfit::AnotherLens, 4, 5);
}

// If one photograph among 50 is bad, no lens parameter may change by more than its standard deviation.
void measureOneBad(GoalTable &table) {
    SceneDraft draft = oneBoard();
    draft.moments = 50;
    SimulatedScene scene = simulate(draft, 9305);
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    const Calibration good = calibrate(scene.observations, options);
    std::mt19937 random(2);
    std::normal_distribution<double> normal;
    for (SeenCorner &corner : scene.observations.sightings[10].corners) {
        corner.image += 8 * Eigen::Vector2d(normal(random), normal(random));
    }
    const Calibration spoilt = calibrate(scene.observations, options);
    double most = 0;
    for (int i = 0; i < int(good.estimate.intrinsics[0].size()); i++) {
        most = std::max(most, std::abs(good.estimate.intrinsics[0][i] - spoilt.estimate.intrinsics[0][i]) /
                                  good.cameras[0].sigmas[size_t(i)]);
    }
    table.atMost("one bad photograph among 50: greatest change of a lens parameter, in standard deviations", most, 1,
                 "");
}

}  // namespace

bool measureBadInput() {
    GoalTable table("Bad input");
    Observations nothing = simulate(oneBoard(), 9300).observations;
    Observations one = nothing;
    nothing.sightings.clear();
    one.sightings.resize(1);
    refused(table, "no photograph with a pattern", nothing);
    refused(table, "one photograph", one);
    measureOneDirection(table);
    measureUnlinked(table);
    measureMoved(table);
    measureZoomed(table);
    measureOneBad(table);
    return !table.isMissed();
}

}  // namespace calibration_bench
