#include "bench/reader/reader_goals.h"

#include <cstdio>
#include <opencv2/core.hpp>

namespace reader_bench {

namespace {

Goal shareGoal(const std::string &what, int part, int of, double least) {
    const double share = of == 0 ? 1 : double(part) / of;
    return {what, cv::format("%d of %d, %.2f %%", part, of, 100 * share), share >= least};
}

Goal noneGoal(const std::string &what, long count, long of) {
    return {what, cv::format("%ld of %ld", count, of), count == 0};
}

// If the value is not known or comes from fewer than 100 patterns, the goal counts as met.
Goal rangeGoal(const std::string &what, double value, int patterns, double least, double greatest) {
    constexpr int enough = 100;
    const bool judged = value > 0 && patterns >= enough;
    return {what, value > 0 ? cv::format("%.2f%s", value, judged ? "" : ", from too few patterns") : "not known",
            !judged || (value >= least && value <= greatest)};
}

// Divides the error of plates by that of boards, separately for each of several conditions. The greatest of these
// ratios decides. A condition does not count if fewer than ten of its plates or fewer than ten of its boards were read.
Goal plateGoal(const std::vector<PictureResult> &results) {
    constexpr double greatestTilt = 70;
    constexpr int enough = 10;
    Goal goal{"plates tilted by at most 70°: median rms error, at most 1.5 times that of boards", "not known", true};
    double worst = 0;
    for (const char *id : {"noise", "dim", "small", "steep", "very-steep", "gradient"}) {
        const auto row = [&](bool plates) {
            return rowOf(results, [&](const PictureResult &picture, const PatternResult &pattern) {
                return conditions()[picture.condition].id == std::string(id) && pattern.plate == plates &&
                       pattern.tiltDegrees <= greatestTilt;
            });
        };
        const Row plates = row(true);
        const Row boards = row(false);
        if (plates.read >= enough && boards.read >= enough && plates.medianRms > worst * boards.medianRms) {
            worst = plates.medianRms / boards.medianRms;
            goal.measured = cv::format("%.2f (%s: %.4f px beside %.4f)", worst, id, plates.medianRms, boards.medianRms);
            goal.met = worst <= 1.5;
        }
    }
    return goal;
}

}  // namespace

std::vector<Goal> readingGoals(const std::vector<PictureResult> &results, const std::vector<EmptyResult> &empty) {
    const auto rowsOf = [&](bool plates, double leastPixels) {
        return rowOf(results, [=](const PictureResult &, const PatternResult &pattern) {
            return pattern.plate == plates && pattern.pixelsPerSquare >= leastPixels;
        });
    };
    const Row boards = rowsOf(false, 0);
    const Row plates = rowsOf(true, 0);
    const Row all = rowOf(results, [](const PictureResult &, const PatternResult &) { return true; });
    constexpr double exactFrom = 8;
    const Row largerBoards = rowsOf(false, exactFrom);
    const Row largerPlates = rowsOf(true, exactFrom);
    std::vector<Goal> goals = {
        shareGoal("boards that must be read because enough of them is visible: 99.5 % are read", boards.askedAndRead,
                  boards.asked, 0.995),
        shareGoal("plates that must be read because enough of them is visible: 99.5 % are read", plates.askedAndRead,
                  plates.asked, 0.995),
        shareGoal("completely visible patterns that must be read and have an information block: 99 % of their blocks "
                  "are read",
                  all.blocksRead, all.blocks, 0.99),
        noneGoal("readings that match no pattern in the picture: none", all.falsePlaces, all.patterns),
        noneGoal("information blocks read with wrong values: none", all.falseValues, all.patterns),
        noneGoal("patterns read with the wrong polarity: none", all.wrongPolarity, all.patterns),
        noneGoal("corners more than a quarter of a square away from the truth: none", all.falseCorners,
                 all.foundPoints),
        noneGoal("patterns reported more than once: none", all.readAgain, all.patterns),
        rangeGoal("boards of at least 8 px per square: error divided by the smallest error that the noise allows, at "
                  "most 1.3",
                  largerBoards.ratioToLeast, largerBoards.read, 0, 1.3),
        rangeGoal("plates of at least 8 px per square: error divided by the smallest error that the noise allows, at "
                  "most 1.3",
                  largerPlates.ratioToLeast, largerPlates.read, 0, 1.3),
        rangeGoal("boards of at least 8 px per square: variance of (error / standard deviation that the reader "
                  "states), 0.8 to 1.25",
                  largerBoards.sigmaVariance, largerBoards.read, 0.8, 1.25),
        rangeGoal("plates of at least 8 px per square: variance of (error / standard deviation that the reader "
                  "states), 0.8 to 1.25",
                  largerPlates.sigmaVariance, largerPlates.read, 0.8, 1.25),
    };
    goals.push_back(plateGoal(results));
    long readings = 0;
    for (const EmptyResult &one : empty) {
        readings += one.readings;
    }
    goals.push_back(noneGoal("patterns reported in pictures without a pattern: none", readings, long(empty.size())));
    return goals;
}

std::vector<Goal> comparisonGoals(const Comparison &comparison) {
    std::vector<Goal> goals;
    for (const DetectorTotals &totals : comparison.detectors) {
        goals.push_back(noneGoal("boards found by " + totals.name + " but missed by the reader: none",
                                 totals.foundButMissed, totals.found));
        goals.push_back(shareGoal(
            "boards found by the reader and by " + totals.name + ": the reader is at least as exact on 99.5 %",
            totals.readerBetter, totals.both, 0.995));
    }
    goals.push_back({"processor time of findChessboardCornersSB divided by the reader's, at least 10",
                     cv::format("%.1f", comparison.medianTimeRatio), comparison.medianTimeRatio >= 10});
    return goals;
}

bool printGoals(const std::vector<Goal> &goals) {
    std::printf("\n| goal | measured | |\n|---|---|---|\n");
    bool met = true;
    for (const Goal &goal : goals) {
        std::printf("| %s | %s | %s |\n", goal.what.c_str(), goal.measured.c_str(), goal.met ? "met" : "**missed**");
        met = met && goal.met;
    }
    return met;
}

}  // namespace reader_bench
