// Measures the pattern reader with a synthetic camera and prints a table.
//
//   reader_bench [--first N] [--images N] [--empty N] [--compare N] [--threads N] [--check] [--list] [--times]
//                [--save FOLDER]
//
// --first is the number of the first picture of either kind; the comparison always begins at 0. --check ends with 1
// when a goal is not met; --list names every pattern that was not read and --save keeps its picture. --times leaves
// out findChessboardCorners, which takes most of the comparison and whose time is not compared. Seeds are fixed:
// picture n is the same in every run.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>
#include <vector>

#include "bench/reader/comparison.h"
#include "bench/reader/scenes.h"
#include "bench/reader/scoring.h"
#include "pattern_reader/pattern_reader.h"

namespace {

using namespace reader_bench;
using pattern_reader::PatternKind;

// The boards compared are the first suitable ones of so many pictures.
constexpr unsigned comparedScenes = 1000;

struct Options {
    unsigned first = 0;
    unsigned images = 1000;
    unsigned empty = 1000;
    unsigned compare = 150;
    unsigned threads = 1;
    bool check = false;
    bool list = false;
    bool timesOnly = false;
    std::string save;
};

struct Tally {
    int patterns = 0;
    int placed = 0;
    int values = 0;
    int withBlock = 0;

    double placedShare() const { return patterns == 0 ? 1 : double(placed) / patterns; }
    double valuesShare() const { return withBlock == 0 ? 1 : double(values) / withBlock; }
    void add(const PatternScore &score) {
        patterns++;
        placed += score.placed ? 1 : 0;
        withBlock += score.pattern->coded.hasBlock ? 1 : 0;
        values += score.valuesRead ? 1 : 0;
    }
};

enum class Group { Tile, Flexible, SmallFlexible, Plate };
constexpr int groups = 4;
const char *const groupNames[groups] = {"tiles (Official, Single, Assembly)", "Flexible, 7 and more corners a side",
                                        "Flexible, 5 or 6 corners on a side", "plates"};

Group groupOf(const ScenePattern &pattern) {
    if (pattern.coded.kind == PatternKind::Plate) {
        return Group::Plate;
    }
    if (pattern.coded.kind == PatternKind::Tile) {
        return Group::Tile;
    }
    const cv::Size2d size = pattern.coded.target->size();
    return std::min(size.width, size.height) < 8 ? Group::SmallFlexible : Group::Flexible;
}

struct Results {
    // By goal (easy: at least 6 pixels per square and tilt to 45°), group and visibility.
    Tally tallies[2][groups][3];
    int falsePlaces = 0;
    int falseValues = 0;
    int strayCorners = 0;
    int corners = 0;
    int wrongPolarity = 0;
    int corrected = 0;
    int emptyFalsePlaces[emptyKindCount] = {};
    int emptyPictures[emptyKindCount] = {};
    std::mutex mutex;

    Tally sum(bool easy, int group, int visibility) const {
        Tally total;
        for (int g = 0; g < groups; g++) {
            for (int v = 0; v < 3; v++) {
                if ((group < 0 || g == group) && (visibility < 0 || v == visibility)) {
                    const Tally &one = tallies[easy ? 1 : 0][g][v];
                    total.patterns += one.patterns;
                    total.placed += one.placed;
                    total.values += one.values;
                    total.withBlock += one.withBlock;
                }
            }
        }
        return total;
    }
};

void list(unsigned number, const PatternScore &score) {
    const ScenePattern &p = *score.pattern;
    const cv::Size2d size = p.coded.target->size();
    std::printf("  picture %u: %s tile %d, %gx%g, %.1f px, tilt %.0f, visibility %d: placed %d values %d corners %d\n",
                number, groupNames[int(groupOf(p))], p.coded.tile, size.width, size.height, p.pixelsPerSquare,
                p.tiltDegrees, int(p.visibility), score.placed, score.valuesRead, score.corners);
}

void runScene(unsigned number, const Options &options, Results &results) {
    const Scene scene = makeScene(number);
    const PictureScore score = scorePicture(scene, pattern_reader::readPatterns(scene.image));
    const std::lock_guard<std::mutex> lock(results.mutex);
    results.falsePlaces += score.falsePlaces;
    results.falseValues += score.falseValues;
    bool missed = score.falsePlaces + score.falseValues > 0;
    for (const PatternScore &one : score.patterns) {
        const ScenePattern &pattern = *one.pattern;
        const bool easy = pattern.pixelsPerSquare >= 6 && pattern.tiltDegrees <= 45;
        results.tallies[easy ? 1 : 0][int(groupOf(pattern))][int(pattern.visibility)].add(one);
        results.strayCorners += one.strayCorners;
        results.corners += one.corners;
        results.wrongPolarity += one.polarityRight ? 0 : 1;
        results.corrected += one.correctedBits > 0 ? 1 : 0;
        const bool wanted = pattern.coded.hasBlock && pattern.visibility == Visibility::Whole;
        if (easy && (!one.placed || (wanted && !one.valuesRead))) {
            missed = true;
            if (options.list) {
                list(number, one);
            }
        }
    }
    if (score.falsePlaces + score.falseValues > 0 && options.list) {
        std::printf("  picture %u: %d false places, %d false values\n", number, score.falsePlaces, score.falseValues);
    }
    if (missed && !options.save.empty()) {
        cv::imwrite(options.save + "/" + std::to_string(number) + ".png", scene.image);
    }
}

void runEmpty(unsigned number, const Options &options, Results &results) {
    const int kind = int(number % emptyKindCount);
    const auto readings = pattern_reader::readPatterns(makeEmptyPicture(EmptyKind(kind), number));
    const std::lock_guard<std::mutex> lock(results.mutex);
    results.emptyPictures[kind]++;
    results.emptyFalsePlaces[kind] += int(readings.size());
    if (!readings.empty() && options.list) {
        std::printf("  empty picture %u: %zu readings\n", number, readings.size());
    }
}

void printTable(const Results &results) {
    static const char *const visibilities[] = {"whole", "a quarter covered", "a quarter cut off"};
    std::printf(
        "\n| pattern | seen | 6 px and more, to 45°: place | values | all: place | values "
        "|\n|---|---|---|---|---|---|\n");
    const auto cell = [](int part, int of) {
        return of == 0 ? std::string("–")
                       : std::to_string(part) + "/" + std::to_string(of) + cv::format(" (%.1f %%)", 100.0 * part / of);
    };
    for (int g = -1; g < groups; g++) {
        for (int v = 0; v < 3; v++) {
            const Tally easy = results.sum(true, g, v);
            Tally all = results.sum(false, g, v);
            all.patterns += easy.patterns;
            all.placed += easy.placed;
            all.values += easy.values;
            all.withBlock += easy.withBlock;
            std::printf("| %s | %s | %s | %s | %s | %s |\n", g < 0 ? "**all**" : groupNames[g], visibilities[v],
                        cell(easy.placed, easy.patterns).c_str(), cell(easy.values, easy.withBlock).c_str(),
                        cell(all.placed, all.patterns).c_str(), cell(all.values, all.withBlock).c_str());
        }
    }
    std::printf(
        "\nfalse places %d, false values %d, wrong polarity %d, stray corners %d of %d, blocks with corrected bits "
        "%d\n",
        results.falsePlaces, results.falseValues, results.wrongPolarity, results.strayCorners, results.corners,
        results.corrected);
    for (int kind = 0; kind < emptyKindCount; kind++) {
        std::printf("without a pattern: %d %s: %d false places\n", results.emptyPictures[kind],
                    nameOf(EmptyKind(kind)).c_str(), results.emptyFalsePlaces[kind]);
    }
}

void printComparison(const Comparison &comparison) {
    std::printf("\n%d boards seen whole: reader reads %d, %d with every corner\n\n", comparison.pictures,
                comparison.readByReader, comparison.completeByReader);
    std::printf(
        "| stock detector | finds | of these the reader misses | reads with fewer corners | its rms error, px | "
        "reader's on the same boards | reader more exact on |\n|---|---|---|---|---|---|---|\n");
    for (const DetectorTotals *totals : {&comparison.classic, &comparison.sectorBased}) {
        std::printf("| %s | %d | %d | %d | %.4f | %.4f | %d/%d |\n", totals->name.c_str(), totals->found,
                    totals->foundButMissed, totals->foundMoreCorners, totals->ownError, totals->readerError,
                    totals->readerBetter, totals->both);
    }
    std::printf("\ntime, median: findChessboardCornersSB %.2f ms, reader %.2f ms, ratio %.1f\n",
                comparison.medianSectorBasedMs, comparison.medianReaderMs, comparison.medianTimeRatio);
}

// The goals; each unmet one is named.
bool meetsGoals(const Results &results, const Comparison &comparison, const Options &options) {
    bool met = true;
    const auto goal = [&](bool reached, const char *what) {
        if (!reached) {
            std::printf("NOT MET: %s\n", what);
            met = false;
        }
    };
    goal(results.sum(true, -1, -1).placedShare() >= 0.99, "99 % read with the right place");
    goal(results.sum(true, -1, 0).valuesShare() >= 0.99, "99 % of those seen whole with the right values");
    goal(results.falsePlaces == 0 && results.falseValues == 0, "no false place and no false value");
    goal(results.wrongPolarity == 0, "no wrong polarity");
    for (const int count : results.emptyFalsePlaces) {
        goal(count == 0, "nothing read where there is nothing");
    }
    if (options.compare > 0) {
        for (const DetectorTotals *totals : {&comparison.classic, &comparison.sectorBased}) {
            goal(totals->foundButMissed == 0, "no board missed that a stock detector finds");
            goal(totals->readerError <= totals->ownError, "corners as exact as a stock detector's");
        }
        goal(comparison.medianTimeRatio >= 10, "ten times faster than findChessboardCornersSB");
    }
    return met;
}

bool parse(int count, char **arguments, Options &options) {
    const std::map<std::string, unsigned *> numbers = {{"--first", &options.first},
                                                       {"--images", &options.images},
                                                       {"--empty", &options.empty},
                                                       {"--compare", &options.compare},
                                                       {"--threads", &options.threads}};
    for (int i = 1; i < count; i++) {
        const std::string name = arguments[i];
        if (name == "--check") {
            options.check = true;
        } else if (name == "--list") {
            options.list = true;
        } else if (name == "--times") {
            options.timesOnly = true;
        } else if (i + 1 < count && name == "--save") {
            options.save = arguments[++i];
        } else if (i + 1 < count && numbers.count(name) != 0) {
            *numbers.at(name) = unsigned(std::max(0, std::atoi(arguments[++i])));
        } else {
            std::fprintf(stderr, "unknown argument %s\n", name.c_str());
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argumentCount, char **arguments) {
    Options options;
    if (!parse(argumentCount, arguments, options)) {
        return 2;
    }
    cv::setNumThreads(1);
    std::setvbuf(stdout, nullptr, _IOLBF, 1 << 12);
    Results results;
    std::atomic<unsigned> next{0};
    const auto work = [&] {
        for (unsigned number = next++; number < options.images + options.empty; number = next++) {
            if (number < options.images) {
                runScene(options.first + number, options, results);
            } else {
                runEmpty(options.first + number - options.images, options, results);
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, options.threads); i++) {
        threads.emplace_back(work);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    if (options.images + options.empty > 0) {
        printTable(results);
    }
    Comparison comparison;
    if (options.compare > 0) {
        comparison = compareWithStock(comparedScenes, options.compare, !options.timesOnly);
        printComparison(comparison);
    }
    return options.check && !meetsGoals(results, comparison, options) ? 1 : 0;
}
