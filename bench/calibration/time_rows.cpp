#include <array>
#include <vector>

#include "bench/calibration/goal_table.h"
#include "bench/calibration/goals.h"
#include "bench/calibration/simulated_scene.h"
#include "bench/measurement.h"

namespace calibration_bench {

using namespace calibration;

namespace {

SimulatedScene views(int count) {
    SceneDraft draft;
    draft.cameras = {pinholeCamera()};
    draft.prints = {PrintDraft()};
    draft.moments = count;
    draft.noise = 0.2;
    draft.saidNoise = 0.2;
    draft.least = 700;
    draft.most = 900;
    draft.reach = 0.35;
    draft.tilt = 0.35;
    return simulate(draft, 8101);
}

Time timeToCalibrate(const Observations &observations, Calibration &result) {
    CalibrateOptions options;
    options.lens = LensModel::Pinhole5;
    return timeOf([&] { result = calibrate(observations, options); });
}

}  // namespace

bool measureTime() {
    GoalTable table("Time");
    Calibration result;
    std::vector<double> perView;
    for (const int count : {100, 200, 500, 2000}) {
        const SimulatedScene scene = views(count);
        // Other programs disturb short measurements most. So calibrations of few photographs are measured twice, and
        // the shorter time counts.
        Time best = timeToCalibrate(scene.observations, result);
        if (count <= 200) {
            const Time again = timeToCalibrate(scene.observations, result);
            best = again.processor < best.processor ? again : best;
        }
        perView.push_back(best.processor / count);
        size_t corners = 0;
        for (const Sighting &sighting : scene.observations.sightings) {
            corners += sighting.corners.size();
        }
        const std::string what = std::to_string(count) + " views, " + std::to_string(corners) + " corners";
        // The goal limits the processor time and not the elapsed time, because other programs lengthen the elapsed
        // time. On an idle machine with several cores, the elapsed time is not longer than the processor time.
        if (count == 200) {
            table.atMost(what + ", processor time", best.processor / 1000, 2, "s");
        } else {
            table.figure(what + ", processor time", best.processor / 1000, "s");
        }
        table.figure(what + ", elapsed time", best.elapsed / 1000, "s");
    }
    table.atMost("processor time per view, 2,000 views against 200", perView[3] / perView[1], 1.15, "");
    const Time map = timeOf([&] {
        projectionUncertainty(result.observations.cameras[0], result.estimate.intrinsics[0],
                              result.covariance.intrinsics(0), 800, 60, 40);
    });
    table.atMost("uncertainty map of 60 x 40 points", map.processor / 1000, 0.5, "s");
    return !table.isMissed();
}

}  // namespace calibration_bench
