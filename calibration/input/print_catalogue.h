// Finds out which prints the photographs show, and which point of a print each corner is.
//
// If the user gives pattern files, the patterns in these files are the prints. Otherwise, each different pattern that
// was read is a print, provided that its grid spacing is known. The grid spacing comes from the first of these sources
// that states it: the print's information blocks, the user, and, for a pattern of an assembly, the blocks of the
// assembly's other patterns. A plain board has no block. Its grid spacing is twice the side of a square, which the user
// gives.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"
#include "pattern_reader/printed_pattern.h"

namespace calibration {

// The user's information about the prints. Lengths are in millimetres; 0 if not given.
struct PrintedTarget {
    // The patterns of the given files. If there are any, other patterns in the photographs are not used.
    std::vector<pattern_reader::PrintedPattern> patterns;
    double gridSpacing = 0;  // of coded patterns whose grid spacing was not read from their own blocks
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
        // If `print` is -1, the reason as the end of a sentence: "shows pattern 7, which is not among ...".
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

// Returns the name of a pattern in texts for the user. Pattern N of an assembly has the tile number N + 1, so tile
// number 4 gives "pattern 3". Tile number 0 gives "the coded pattern". The patterns of other kinds are named "the
// Flexible pattern", "the plate" and "the board".
std::string nameOf(pattern_reader::PatternKind kind, int tile);

}  // namespace calibration
