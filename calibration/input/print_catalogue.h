// Which prints photographs show, and which point of its print each corner is.
//
// What was printed comes from pattern files, or if there are none, from the readings: the marks say which pattern it
// is, and the grid spacing comes from its information block or from the user.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"
#include "pattern_reader/printed_pattern.h"

namespace calibration {

// What the user says about the prints. Lengths in millimetres; 0 if not given.
struct PrintedTarget {
    // From files. If there are any, patterns that are not among them do not count.
    std::vector<pattern_reader::PrintedPattern> patterns;
    double gridSpacing = 0;  // of patterns that do not say it themselves
    double square = 0;       // side of a plain checkerboard's square
};

class PrintCatalogue {
public:
    // The readings are those of all photographs. Of blocks that contradict each other, the majority counts.
    PrintCatalogue(const PrintedTarget &target, const std::vector<const pattern_reader::PatternReading *> &readings);

    struct Match {
        int print = -1;            // an index of prints(), or -1
        std::vector<int> corners;  // for each corner of the reading, its index in Print::points
        // If there is no print: why, to follow the photograph's name: "shows pattern 7, which is not ...".
        std::string reason;
    };
    Match match(const pattern_reader::PatternReading &reading) const;

    // In the order of the files; without files the patterns of an assembly by number, then all others.
    const std::vector<Print> &prints() const { return printList; }

private:
    void addFromReadings(const PrintedTarget &target,
                         const std::vector<const pattern_reader::PatternReading *> &readings);
    void add(const pattern_reader::PrintedPattern &pattern);

    std::vector<pattern_reader::PrintedPattern> patterns;
    std::vector<Print> printList;
    bool isFromFiles = false;
};

// "pattern 3" of an assembly, "the coded pattern", "the plate" or "the board".
std::string nameOf(pattern_reader::PatternKind kind, int tile);

}  // namespace calibration
