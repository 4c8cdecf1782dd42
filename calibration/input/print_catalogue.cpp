#include "calibration/input/print_catalogue.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

namespace calibration {

namespace {

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;
using pattern_reader::PrintedPattern;

constexpr int cornersOfTile = 15;
constexpr int marksOfPlate = 7;
constexpr int noOffset = -10000;  // no plate has this offset

// Identifies a print if there are no pattern files. In the order of keys, the patterns of an assembly come first, by
// number.
struct Key {
    bool isAlone = false;  // true if the print is not a pattern of an assembly
    PatternKind kind = PatternKind::Tile;
    int tile = -1;
    int offsetX = noOffset;
    int offsetY = noOffset;

    bool operator<(const Key &other) const {
        return std::tie(isAlone, kind, tile, offsetX, offsetY) <
               std::tie(other.isAlone, other.kind, other.tile, other.offsetX, other.offsetY);
    }
};

Key keyOf(const PatternReading &reading) {
    Key key{reading.kind != PatternKind::Tile || reading.tile == 0, reading.kind, reading.tile};
    if (reading.kind == PatternKind::Plate && reading.values && reading.values->offset) {
        key.offsetX = reading.values->offset->x;
        key.offsetY = reading.values->offset->y;
    }
    return key;
}

// The combined information of all readings of one print.
struct Sighted {
    std::map<double, int> spacings;     // each grid spacing with the number of information blocks that state it
    cv::Point least{1 << 20, 1 << 20};  // the smallest and the largest lattice coordinates that were seen
    cv::Point most{-(1 << 20), -(1 << 20)};

    void add(const PatternReading &reading) {
        if (reading.values && reading.values->gridSpacing) {
            spacings[*reading.values->gridSpacing]++;
        }
        for (const auto &corner : reading.corners) {
            least = {std::min(least.x, corner.lattice.x), std::min(least.y, corner.lattice.y)};
            most = {std::max(most.x, corner.lattice.x), std::max(most.y, corner.lattice.y)};
        }
    }
};

// Returns the value with the highest count; 0 if there is no value.
double majority(const std::map<double, int> &counts) {
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto &a, const auto &b) { return a.second < b.second; });
    return most == counts.end() ? 0 : most->first;
}

PrintedPattern makePattern(const Key &key, const Sighted &sighted, double gridSpacing) {
    PrintedPattern pattern;
    pattern.kind = key.kind;
    pattern.tile = key.tile;
    pattern.gridSpacing = gridSpacing;
    pattern.firstPoint = {1, 1};
    switch (key.kind) {
        case PatternKind::Tile:
            pattern.size = {cornersOfTile, cornersOfTile};
            break;
        case PatternKind::Plate:
            pattern.size = {marksOfPlate, marksOfPlate};
            pattern.latticeStep = 2;
            pattern.firstPoint = {2, 2};
            break;
        case PatternKind::Plane:
        case PatternKind::Board:
            // The size of the print is not known, so the pattern consists of all lattice points in the smallest
            // rectangle that contains every corner that was seen.
            pattern.firstPoint = sighted.least;
            pattern.size = sighted.most - sighted.least + cv::Point(1, 1);
            break;
    }
    PatternReading whole;
    whole.kind = key.kind;
    if (key.offsetX != noOffset) {
        whole.values.emplace();
        whole.values->offset = cv::Point(key.offsetX, key.offsetY);
    }
    for (int row = 0; row < pattern.size.height; row++) {
        for (int column = 0; column < pattern.size.width; column++) {
            whole.corners.push_back({{}, pattern.firstPoint + pattern.latticeStep * cv::Point(column, row)});
        }
    }
    for (const cv::Point3d &point : pattern_reader::objectPoints(whole, gridSpacing)) {
        pattern.points.emplace_back(point.x, point.y);
    }
    return pattern;
}

Print printOf(const PrintedPattern &pattern) {
    Print print;
    print.name = nameOf(pattern.kind, pattern.tile);
    print.number = pattern.kind == PatternKind::Tile && pattern.tile > 0 ? pattern.tile - 1 : -1;
    for (size_t i = 0; i < pattern.points.size(); i++) {
        print.points.emplace_back(pattern.points[i].x, pattern.points[i].y);
        print.cells.emplace_back(int(i) % pattern.size.width, int(i) / pattern.size.width);
    }
    return print;
}

bool areSame(const PrintedPattern &a, const PrintedPattern &b) {
    return a.kind == b.kind && a.tile == b.tile && a.firstPoint == b.firstPoint && a.size == b.size &&
           a.points == b.points;
}

std::string spacingText(double spacing) {
    std::string text = std::to_string(spacing);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
        text.pop_back();
    }
    return text + " mm";
}

}  // namespace

std::string nameOf(PatternKind kind, int tile) {
    switch (kind) {
        case PatternKind::Plane:
            return "the Flexible pattern";
        case PatternKind::Tile:
            return tile > 0 ? "pattern " + std::to_string(tile - 1) : "the coded pattern";
        case PatternKind::Plate:
            return "the plate";
        case PatternKind::Board:
            return "the board";
    }
    return {};
}

PrintCatalogue::PrintCatalogue(const PrintedTarget &target, const std::vector<const PatternReading *> &readings)
    : isFromFiles(!target.patterns.empty()) {
    if (!isFromFiles) {
        addFromReadings(target, readings);
    }
    for (const PrintedPattern &pattern : target.patterns) {
        const auto isKnown = [&](const PrintedPattern &known) { return areSame(known, pattern); };
        if (std::none_of(patterns.begin(), patterns.end(), isKnown)) {
            add(pattern);
        }
    }
}

void PrintCatalogue::add(const PrintedPattern &pattern) {
    patterns.push_back(pattern);
    printList.push_back(printOf(pattern));
    // Several plates or several Flexible patterns would otherwise have the same name.
    const std::string name = printList.back().name;
    const auto sameKind = std::count_if(patterns.begin(), patterns.end(), [&](const PrintedPattern &known) {
        return nameOf(known.kind, known.tile) == name;
    });
    if (sameKind > 1) {
        printList.back().name += " (" + std::to_string(sameKind) + ")";
    }
}

void PrintCatalogue::addFromReadings(const PrintedTarget &target, const std::vector<const PatternReading *> &readings) {
    std::map<Key, Sighted> sighted;
    std::map<double, int> ofAssembly;
    for (const PatternReading *reading : readings) {
        const Key key = keyOf(*reading);
        sighted[key].add(*reading);
        if (!key.isAlone && reading->values && reading->values->gridSpacing) {
            ofAssembly[*reading->values->gridSpacing]++;
        }
    }
    for (const auto &[key, seen] : sighted) {
        double spacing = majority(seen.spacings);
        if (spacing == 0) {
            spacing = key.kind == PatternKind::Board ? 2 * target.square : target.gridSpacing;
        }
        if (spacing == 0 && !key.isAlone) {
            spacing = majority(ofAssembly);  // the patterns of an assembly have the same grid spacing
        }
        // All readings of plates that state no offset share one key. If none of them states a grid spacing either, no
        // information block was read in them. If another reading states the offset of a plate, the readings without a
        // block are assumed to show that plate, so no print is added for them.
        const bool isUnreadPlate = key.kind == PatternKind::Plate && key.offsetX == noOffset;
        const bool hasOtherPlate = std::any_of(sighted.begin(), sighted.end(), [](const auto &other) {
            return other.first.kind == PatternKind::Plate && other.first.offsetX != noOffset;
        });
        if (spacing > 0 && !(isUnreadPlate && hasOtherPlate && seen.spacings.empty())) {
            add(makePattern(key, seen, spacing));
        }
    }
}

PrintCatalogue::Match PrintCatalogue::match(const PatternReading &reading) const {
    const std::string name = nameOf(reading.kind, reading.tile);
    Match match;
    std::optional<double> otherSpacing;
    for (size_t i = 0; i < patterns.size(); i++) {
        const PrintedPattern &pattern = patterns[i];
        if (pattern.kind != reading.kind || pattern.tile != reading.tile) {
            continue;
        }
        if (!pattern_reader::objectPoints(reading, {pattern})) {
            otherSpacing = pattern.gridSpacing;
        } else if (match.print >= 0) {
            return {-1, {}, "shows " + name + ", which fits more than one of the patterns"};
        } else {
            match.print = int(i);
        }
    }
    if (match.print < 0) {
        const bool isOther = otherSpacing && reading.values && reading.values->gridSpacing &&
                             *reading.values->gridSpacing != *otherSpacing;
        match.reason = "shows " + name;
        if (isOther) {
            match.reason += " with a grid spacing of " + spacingText(*reading.values->gridSpacing) + " instead of " +
                            spacingText(*otherSpacing);
        } else if (isFromFiles) {
            match.reason += ", which is not among the given patterns";
        } else if (reading.kind == PatternKind::Board) {
            match.reason += ", but the side of its squares is not known";
        } else {
            match.reason += ", but its grid spacing is not known";
        }
        return match;
    }
    const PrintedPattern &pattern = patterns[size_t(match.print)];
    for (const auto &corner : reading.corners) {
        const cv::Point cell = (corner.lattice - pattern.firstPoint) / pattern.latticeStep;
        match.corners.push_back(cell.y * pattern.size.width + cell.x);
    }
    return match;
}

}  // namespace calibration
