// Tests how lens models are compared, which prints get a bend, and which sightings count as the same as in an earlier
// result.
#include "calibration/model_choice.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "calibration/held_out.h"
#include "calibration/warm_start.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

using Errors = std::vector<std::optional<double>>;

TEST(PreferredModel, isTheSimplestThatIsNotClearlyWorse) {
    struct Row {
        const char *what;
        std::vector<Errors> errors;  // for each model, the errors of all sightings; the simplest model comes first
        std::vector<bool> counts;    // for each sighting, whether its errors count
        size_t preferred;
    };
    const std::vector<bool> all(6, true);
    for (const Row &row : {
             Row{"clearly better", {{1.5, 1.6, 1.4, 1.5, 1.7, 1.5}, {1.0, 1.1, 0.9, 1.0, 1.2, 1.0}}, all, 1},
             Row{"better by chance", {{1.1, 0.9, 1.3, 0.8, 1.0, 1.2}, {1.0, 1.1, 0.9, 1.0, 1.2, 1.0}}, all, 0},
             Row{"worse", {{1.0, 1.1, 0.9, 1.0, 1.2, 1.0}, {1.5, 1.6, 1.4, 1.5, 1.7, 1.5}}, all, 0},
             Row{"the last of three is not clearly better than the second",
                 {{3, 3.1, 3, 2.9, 3, 3}, {1.0, 1.1, 0.9, 1.0, 1.1, 1.0}, {1.0, 0.9, 1.0, 1.1, 1.0, 1.0}},
                 all,
                 1},
             Row{"one sighting is blurred, so its error is large in every model",
                 {{1.5, 1.6, 1.4, 1.5, 1.7, 7}, {1.0, 1.1, 0.9, 1.0, 1.2, 25}},
                 all,
                 1},
             Row{"only the errors of the first five sightings count",
                 {{1.0, 1.1, 0.9, 1.0, 1.1, 5}, {1.0, 0.9, 1.1, 1.1, 1.0, 1}},
                 {true, true, true, true, true, false},
                 0},
             Row{"the first model has no errors, because its solve failed", {Errors(6), {1, 1, 1, 1, 1, 1}}, all, 1},
         }) {
        EXPECT_EQ(preferredModel(row.errors, row.counts), row.preferred) << row.what;
    }
}

TEST(HeldOutErrors, areThoseOfPhotographsThatWereNotUsedToEstimateTheLens) {
    // Each photograph has only about eight corners. A lens with many coefficients can be fitted well to these few
    // corners, but predicts the corners of other photographs badly.
    Scene scene = makeScene(0.3);
    Observations &observations = scene.observations;
    useFirstCameraOnly(scene);
    observations.cameras[0].lens = LensModel::Pinhole5;
    for (Sighting &sighting : observations.sightings) {
        const int moment = observations.photographs[size_t(sighting.photograph)].moment;
        sighting.isUsed = sighting.isUsed && sighting.print == 0 && moment < 7;
        std::vector<SeenCorner> few;
        for (size_t i = size_t(moment); i < sighting.corners.size(); i += sighting.corners.size() / 8) {
            few.push_back(sighting.corners[i]);
        }
        sighting.corners = few;
    }
    Freedom freedom;
    freedom.shapes = {{}, {}};
    Estimate estimate = scene.truth;
    SolveOptions options;
    options.freedom = freedom;
    ASSERT_TRUE(solveJointly(observations, options, estimate));
    const double factor = covarianceOf(observations, freedom, estimate).value().varianceFactor();
    EXPECT_NEAR(factor, 1, 0.5);
    const Errors errors = heldOutErrors(observations, freedom, estimate);
    const auto mean = meanError(errors, std::vector<bool>(errors.size(), true));
    ASSERT_TRUE(mean);
    EXPECT_GT(*mean, 1.5 * factor);
    // If there are fewer than six moments, none of them is held out.
    for (Sighting &sighting : observations.sightings) {
        sighting.isUsed = sighting.isUsed && observations.photographs[size_t(sighting.photograph)].moment < 5;
    }
    const Errors none = heldOutErrors(observations, freedom, estimate);
    EXPECT_EQ(std::count(none.begin(), none.end(), std::nullopt), std::ptrdiff_t(none.size()));
}

TEST(ChooseBends, givesABendToThePrintThatIsBent) {
    for (const Bend bend : {Bend::Quadratic, Bend::Cubic}) {
        Scene scene = makeScene(0.05);
        scene.truth.shapes[1].numbers = {0, -0.004, 0, 0.6, -0.3, 0.2};
        if (bend == Bend::Cubic) {
            scene.truth.shapes[1].numbers[PrintShape::bend + 3] = 1.2;
            scene.truth.shapes[1].numbers[PrintShape::bend + 5] = -0.8;
        }
        seeAgain(scene, 0.05, 8);
        useFirstCameraOnly(scene);
        Estimate start = scene.truth;
        start.shapes[1].numbers = {};
        EXPECT_EQ(chooseBends(scene.observations, start, {}), (std::vector<Bend>{Bend::Flat, bend}));
    }
}

TEST(SameSightings, haveTheSameCornersOfTheSamePrint) {
    const Scene scene = makeScene(0.1);
    const Observations &before = scene.observations;
    Observations now = before;
    std::reverse(now.sightings.begin(), now.sightings.end());
    const int last = int(before.sightings.size()) - 1;
    now.sightings[0].corners[5].image.x() += 1e-9;  // was measured again
    now.sightings[1].corners[5].point++;            // another corner at the same place
    now.sightings[2].print = 1 - now.sightings[2].print;
    now.sightings[3].corners.pop_back();
    now.sightings[4].isUsed = false;
    now.sightings[4].corners[1].sigma *= 2;
    std::vector<int> expected;
    for (int i = 0; i <= last; i++) {
        expected.push_back(i < 4 ? -1 : last - i);
    }
    EXPECT_EQ(sameSightings(now, before), expected);
}

}  // namespace
}  // namespace calibration
