#include <algorithm>
#include <vector>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "bench/calibration/simulated_scene.h"
#include "bench/measurement.h"

namespace calibration_bench {

using namespace calibration;

namespace {

struct Reached {
    double uncertainty = 0;  // pixels, the greatest over the picture
    size_t sightings = 0;
    size_t corners = 0;
};

Reached reach(const SceneDraft &draft, unsigned seed) {
    const SimulatedScene scene = simulate(draft, seed);
    CalibrateOptions options;
    options.lens = draft.cameras.front().camera.lens;
    const Calibration result = calibrate(scene.observations, options);
    Reached reached;
    reached.uncertainty = result.cameras.front().uncertainty.greatest().value_or(0);
    reached.sightings = scene.observations.sightings.size();
    for (const Sighting &sighting : scene.observations.sightings) {
        reached.corners += sighting.corners.size();
    }
    return reached;
}

}  // namespace

bool measurePartialViews() {
    GoalTable table("Partial views");
    for (const CameraDraft &camera : {pinholeCamera(), fisheyeCamera()}) {
        SceneDraft draft;
        draft.cameras = {camera};
        draft.prints = {PrintDraft()};
        draft.least = camera.camera.lens == LensModel::Fisheye ? 250 : 450;
        draft.most = camera.camera.lens == LensModel::Fisheye ? 500 : 800;
        draft.reach = 0.85;
        draft.tilt = 0.4;
        std::vector<double> ratios;
        std::vector<double> whole;
        std::vector<double> all;
        size_t wholeBoards = 0;
        constexpr unsigned runs = 5;
        for (unsigned seed = 9200; seed < 9200 + runs; seed++) {
            draft.wholeOnly = true;
            const Reached stock = reach(draft, seed);
            draft.wholeOnly = false;
            const Reached ours = reach(draft, seed);
            wholeBoards += stock.sightings;
            whole.push_back(stock.uncertainty);
            all.push_back(ours.uncertainty);
            ratios.push_back(stock.uncertainty / ours.uncertainty);
        }
        const std::string lens = nameOf(camera.camera.lens);
        table.figure(lens + ": completely visible boards in 40 photographs", double(wholeBoards) / runs, "");
        table.figure(lens + ": greatest uncertainty if only completely visible boards are used", median(whole), "px");
        table.figure(lens + ": greatest uncertainty if all visible corners are used", median(all), "px");
        table.atLeast(lens + ": ratio of these uncertainties, median of 5 runs", median(ratios), 3, "");
    }
    return !table.isMissed();
}

}  // namespace calibration_bench
