#include "bench/reader/coded_targets.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_types.h"
#include "camera_library/pattern_code/position_code.h"

namespace reader_bench {

namespace {

using lmlib64::PatternDescription;
using pattern_reader::PatternKind;

int pick(std::mt19937 &random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

// Returns the description of a pattern. `typeName` is the value of the parameter "Type", which selects the pattern's
// type. Without a type name, the pattern is a plate.
PatternDescription describe(const std::optional<std::string> &typeName) {
    PatternDescription description;
    description.type = lmlib64::findPatternType(typeName);
    description.typeName = typeName.value_or("");
    description.gridSize = description.type->gridSize;
    return description;
}

CodedTarget printed(const PatternDescription &description, const Print &print) {
    CodedTarget coded;
    coded.topLeftDark = description.polarity;
    coded.target = std::make_shared<SyntheticTarget>(lmlib64::geometryOf(description), print);
    return coded;
}

}  // namespace

CodedTarget makeTile(int tile, std::mt19937 &random, const Print &print) {
    PatternDescription description = describe(tile == pattern_code::singleTile ? "SingleCustom" : "Assembly");
    description.polarity = pick(random, 0, 1) != 0;
    description.gridSpacing = pick(random, 100, 9600) / 100.0;
    if (tile == pattern_code::singleTile) {
        description.thickness = pick(random, 0, 1000) / 100.0;
    } else {
        description.assemblyNumber = tile - 1;
    }
    CodedTarget coded = printed(description, print);
    coded.kind = PatternKind::Tile;
    coded.tile = tile;
    coded.hasBlock = true;
    coded.values.gridSpacing = description.gridSpacing;
    if (tile == pattern_code::singleTile) {
        coded.values.thickness = description.thickness;
    } else {
        coded.values.assemblyPattern = tile - 1;
    }
    return coded;
}

CodedTarget makeFlexible(int width, int height, std::mt19937 &random, const Print &print) {
    PatternDescription description = describe("Flexible");
    description.gridSpacing = 2;
    description.gridSize = {width, height};
    description.polarity = pick(random, 0, 1) != 0;
    const auto offset = [&](int corners) {
        const pattern_code::OffsetRange range = pattern_code::offsetRangeForCorners(corners);
        return pick(random, std::max(-90, range.least), std::min(90, range.greatest));
    };
    const int x = offset(width);
    const int y = offset(height);
    description.offset = std::array<double, 2>{double(x), double(y)};
    CodedTarget coded = printed(description, print);
    coded.kind = PatternKind::Plane;
    const auto window = pattern_code::planeWindowForPattern(width, height, x, y);
    coded.origin = {window->column, window->row};
    return coded;
}

CodedTarget makePlate(std::mt19937 &random, const Print &print) {
    PatternDescription description = describe(std::nullopt);
    std::optional<cv::Point> offset;
    description.gridSpacing = 10;
    if (pick(random, 0, 1) != 0) {
        const int x = pick(random, -128, 127);
        const int y = pick(random, -128, 127);
        offset = cv::Point(x, y);
        description.offset = std::array<double, 2>{x * description.gridSpacing, y * description.gridSpacing};
    } else {
        description.gridSpacing = pick(random, 100, 12500) / 100.0;
        description.thickness = pick(random, 0, 1000) / 100.0;
    }
    CodedTarget coded = printed(description, print);
    coded.kind = PatternKind::Plate;
    coded.hasBlock = true;
    if (offset) {
        coded.values.offset = offset;
    } else {
        coded.values.gridSpacing = description.gridSpacing;
        coded.values.thickness = description.thickness;
    }
    return coded;
}

}  // namespace reader_bench
