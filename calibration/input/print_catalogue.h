// Finds out which prints the photographs show, and which point of a print each corner is.
//
// The prints come from pattern files. Without pattern files, they come from the readings: each pattern that was read is
// a print. Its grid spacing comes from its information block or from the user; that of a plain board, which has no
// block, is twice the side of a square that the user gives.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"
#include "pattern_reader/printed_pattern.h"

namespace calibration {

// The user's information about the prints. Lengths are in millimetres; 0 if not given.
struct PrintedTarget {
    // The patterns of the given files. If there are any, no other patterns count.
    std::vector<pattern_reader::PrintedPattern> patterns;
    double gridSpacing = 0;  // of patterns that do not encode theirs
    double square = 0;       // side of a plain checkerboard's square
};

class PrintCatalogue {
public:
    // Takes the readings of all photographs. If the information blocks of a print state different grid spacings, the
    // most frequent one counts.
    PrintCatalogue(const PrintedTarget &target, const std::vector<const pattern_reader::PatternReading *> &readings);

    struct Match {
        int print = -1;            // an index of prints(), or -1 if no print or more than one matches
        std::vector<int> corners;  // for each corner of the reading, its index in Print::points
        // If `print` is -1, the reason: "shows pattern 7, which is not ...".
        std::string reason;
    };
    Match match(const pattern_reader::PatternReading &reading) const;

    // Returns the prints in the order of the files. Without files, the patterns of an assembly come first, by number.
    const std::vector<Print> &prints() const { return printList; }

private:
    void addFromReadings(const PrintedTarget &target,
                         const std::vector<const pattern_reader::PatternReading *> &readings);
    void add(const pattern_reader::PrintedPattern &pattern);

    std::vector<pattern_reader::PrintedPattern> patterns;
    std::vector<Print> printList;
    bool isFromFiles = false;
};

// Returns "pattern 3" for a pattern of an assembly (tile number 4), "the coded pattern" for tile number 0, "the
// Flexible pattern", "the plate" or "the board".
std::string nameOf(pattern_reader::PatternKind kind, int tile);

}  // namespace calibration
