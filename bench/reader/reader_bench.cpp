// Measures the pattern reader with a synthetic camera and prints tables in Markdown: one row for each condition, then
// the goals and whether they are met.
//
//   reader_bench [OPTIONS]
//     --first N        number at which the pictures with patterns start. The pictures without patterns and the
//                      comparison start at this number, too
//     --count N        number of pictures with patterns
//     --empty N        number of pictures without patterns
//     --condition ID   makes the pictures with patterns under this condition only. Then --empty and --compare are 0
//                      unless they are given. An ID that does not exist, such as "list", lists all conditions
//     --compare N      number of boards on which the reader is compared with OpenCV's detectors
//     --times          makes --compare measure only processor times
//     --threads N      number of threads
//     --list           lists every failure. A reading in a picture without patterns is a failure, too
//     --check          exits with 1 if a goal is missed
//     --save FOLDER    writes the pictures with patterns, and the truth about them. With --list, writes only
//                      the pictures that have a failure. These can be pictures without patterns, too
//
// Picture n is the same in every run, whatever the number of threads. Pictures with numbers below 100,000 are for
// tuning, and the others are for measuring.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/reader/comparison.h"
#include "bench/reader/condition_table.h"
#include "bench/reader/conditions.h"
#include "bench/reader/empty_pictures.h"
#include "bench/reader/picture_files.h"
#include "bench/reader/reader_goals.h"
#include "bench/reader/threads.h"
#include "pattern_reader/pattern_reader.h"

namespace {

using namespace reader_bench;

struct Options {
    unsigned first = 0;
    unsigned count = 1000;
    unsigned empty = 1000;
    unsigned compare = 150;
    unsigned threads = 1;
    bool check = false;
    bool list = false;
    bool timesOnly = false;
    std::string condition;
    std::string save;
};

PictureResult measure(unsigned number, const Options &options) {
    const double start = threadSeconds();
    const Scene scene = makeConditionScene(number);
    const double rendered = threadSeconds();
    const auto readings = pattern_reader::readPatterns(scene.image);
    const double read = threadSeconds();
    PictureResult result = resultOf(number, scene, readings);
    result.renderSeconds = rendered - start;
    result.readSeconds = read - rendered;
    const std::vector<std::string> failures = result.failures();
    if (options.list) {
        for (const std::string &line : failures) {
            std::printf("  picture %u (%s): %s\n", number, conditions()[result.condition].id, line.c_str());
        }
    }
    if (!options.save.empty() && (!options.list || !failures.empty())) {
        savePicture(options.save, number, scene);
    }
    return result;
}

EmptyResult measureEmpty(unsigned number, const Options &options) {
    EmptyResult result;
    result.number = number;
    result.kind = int(number % emptyKindCount);
    const cv::Mat picture = makeEmptyPicture(EmptyKind(result.kind), number);
    result.readings = int(pattern_reader::readPatterns(picture).size());
    if (result.readings > 0 && options.list) {
        std::printf("  empty picture %u (%s): %d readings\n", number, nameOf(EmptyKind(result.kind)).c_str(),
                    result.readings);
        if (!options.save.empty()) {
            cv::imwrite(options.save + "/empty" + std::to_string(number) + ".png", picture);
        }
    }
    return result;
}

std::vector<unsigned> pictureNumbers(const Options &options) {
    std::vector<unsigned> numbers;
    for (unsigned number = options.first; numbers.size() < options.count; number++) {
        if (options.condition.empty() || conditions()[conditionOf(number)].id == options.condition) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

void printTimes(const std::vector<PictureResult> &results) {
    double rendering = 0;
    double reading = 0;
    double megapixels = 0;
    for (const PictureResult &result : results) {
        rendering += result.renderSeconds;
        reading += result.readSeconds;
        megapixels += result.megapixels;
    }
    std::printf("\n%zu pictures, %.0f megapixels: rendering %.1f s, reading %.1f s of processor time\n", results.size(),
                megapixels, rendering, reading);
}

void printEmpty(const std::vector<EmptyResult> &results) {
    for (int kind = 0; kind < emptyKindCount; kind++) {
        int pictures = 0;
        int readings = 0;
        for (const EmptyResult &result : results) {
            pictures += result.kind == kind ? 1 : 0;
            readings += result.kind == kind ? result.readings : 0;
        }
        std::printf("- %d pictures of %s, without a pattern: %d readings\n", pictures, nameOf(EmptyKind(kind)).c_str(),
                    readings);
    }
}

void printComparison(const Comparison &comparison) {
    std::printf(
        "\n%d boards that are completely visible: the reader reads %d of them, %d with every corner. On the same "
        "boards without marks, if it is told their size, it finds every corner of %d boards. The median of the rms "
        "errors of these boards is %.4f px.\n\n",
        comparison.boards, comparison.readByReader, comparison.completeByReader, comparison.plainFound,
        comparison.plainMedianError);
    std::printf(
        "| OpenCV's detector | boards that it finds | of these, boards that the reader misses | of these, boards that "
        "the reader reads, but not with every corner | its error in px on the boards that both find: (1) rms weighted "
        "by corners, (2) median of the boards' rms | the reader's error in px on the same boards: (1) rms weighted by "
        "corners, (2) median of the boards' rms | boards on which the reader is at least as exact, of those that both "
        "find |\n"
        "|---|---|---|---|---|---|---|\n");
    for (const DetectorTotals &totals : comparison.detectors) {
        std::printf("| %s | %d | %d | %d | %.4f, %.4f | %.4f, %.4f | %d/%d |\n", totals.name.c_str(), totals.found,
                    totals.foundButMissed, totals.foundMoreCorners, totals.ownError, totals.ownMedian,
                    totals.readerError, totals.readerMedian, totals.readerBetter, totals.both);
    }
    std::printf("\nmedian processor time: findChessboardCornersSB %.2f ms, reader %.2f ms, ratio %.1f\n",
                comparison.medianSectorBasedMs, comparison.medianReaderMs, comparison.medianTimeRatio);
}

bool parse(int count, char **arguments, Options &options) {
    const std::map<std::string, unsigned *> numbers = {{"--first", &options.first},
                                                       {"--count", &options.count},
                                                       {"--empty", &options.empty},
                                                       {"--compare", &options.compare},
                                                       {"--threads", &options.threads}};
    // With `--condition`, the defaults for `--empty` and `--compare` are 0.
    if (std::find(arguments, arguments + count, std::string("--condition")) != arguments + count) {
        options.empty = 0;
        options.compare = 0;
    }
    const std::map<std::string, bool *> flags = {
        {"--check", &options.check}, {"--list", &options.list}, {"--times", &options.timesOnly}};
    const std::map<std::string, std::string *> texts = {{"--condition", &options.condition}, {"--save", &options.save}};
    for (int i = 1; i < count; i++) {
        const std::string name = arguments[i];
        const bool hasValue = i + 1 < count;
        if (flags.count(name) != 0) {
            *flags.at(name) = true;
        } else if (hasValue && texts.count(name) != 0) {
            *texts.at(name) = arguments[++i];
        } else if (hasValue && numbers.count(name) != 0) {
            *numbers.at(name) = unsigned(std::max(0, std::atoi(arguments[++i])));
        } else {
            std::fprintf(stderr, "%s is not an option, or its value is missing\n", name.c_str());
            return false;
        }
    }
    if (!options.condition.empty() && !conditionNamed(options.condition)) {
        for (const Condition &condition : conditions()) {
            std::fprintf(stderr, "%-16s %s\n", condition.id, condition.text);
        }
        return false;
    }
    return true;
}

bool run(const Options &options) {
    const std::vector<unsigned> numbers = pictureNumbers(options);
    std::vector<PictureResult> results(numbers.size());
    inThreads(options.threads, numbers.size(), [&](size_t i) { results[i] = measure(numbers[i], options); });
    std::vector<EmptyResult> empty(options.empty);
    inThreads(options.threads, empty.size(),
              [&](size_t i) { empty[i] = measureEmpty(options.first + unsigned(i), options); });
    std::vector<Goal> goals;
    if (!results.empty() || !empty.empty()) {
        printConditionTables(results);
        std::printf("\n");
        printEmpty(empty);
        printTimes(results);
        goals = readingGoals(results, empty);
    }
    if (options.compare > 0) {
        const Comparison comparison =
            compareWithStock(options.first, options.compare, options.threads, options.timesOnly);
        printComparison(comparison);
        for (const Goal &goal : comparisonGoals(comparison)) {
            goals.push_back(goal);
        }
    }
    return printGoals(goals);
}

}  // namespace

int main(int argumentCount, char **arguments) {
    Options options;
    if (!parse(argumentCount, arguments, options)) {
        return 2;
    }
    cv::setNumThreads(1);
    std::setvbuf(stdout, nullptr, _IOLBF, 1 << 12);
    try {
        return !run(options) && options.check ? 1 : 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
