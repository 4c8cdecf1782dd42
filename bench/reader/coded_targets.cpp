#include "bench/reader/coded_targets.h"

#include "camera_library/pattern_code/information_block.h"
#include "camera_library/pattern_code/position_code.h"

namespace reader_bench {

namespace {

using pattern_reader::PatternKind;

int pick(std::mt19937 &random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

bool bitOf(std::uint64_t block, int bit) {
    return (block >> (pattern_code::blockBitCount - 1 - bit) & 1) != 0;
}

std::uint64_t encode(const pattern_code::BlockContent &content, CodedTarget &target) {
    using pattern_code::BlockKind;
    target.hasBlock = true;
    if (content.kind == BlockKind::Offset) {
        target.values.offset = cv::Point(content.offsetX, content.offsetY);
    } else {
        target.values.gridSpacing = content.gridSpacing / 100.0;
    }
    if (content.kind == BlockKind::SpacingAndThickness) {
        target.values.thickness = content.thickness / 100.0;
    }
    if (content.kind == BlockKind::Assembly) {
        target.values.assemblyPattern = content.assemblyPattern;
    }
    return pattern_code::encodeBlock(content);
}

}  // namespace

CodedTarget makeTile(int tile, std::mt19937 &random) {
    CodedTarget coded;
    coded.kind = PatternKind::Tile;
    coded.tile = tile;
    coded.topLeftDark = pick(random, 0, 1) != 0;
    pattern_code::BlockContent content;
    content.gridSpacing = pick(random, 100, 9600);
    if (tile == pattern_code::singleTile) {
        content.kind = pattern_code::BlockKind::SpacingAndThickness;
        content.thickness = pick(random, 0, 1000);
    } else {
        content.kind = pattern_code::BlockKind::Assembly;
        content.assemblyPattern = tile - 1;
    }
    const std::uint64_t block = encode(content, coded);
    constexpr int side = pattern_code::tileSide;
    std::vector<int> marks(size_t(side * side));
    for (int row = 0; row < side; row++) {
        for (int column = 0; column < side; column++) {
            if (pattern_code::carriesPosition(column, row)) {
                marks[size_t(row) * size_t(side) + size_t(column)] = pattern_code::tileBit(tile, column, row) ? 1 : 0;
            }
        }
    }
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const pattern_code::BlockCell square = pattern_code::blockSquare(bit);
        marks[size_t(square.row) * size_t(side) + size_t(square.column)] = bitOf(block, bit) ? 1 : 0;
    }
    coded.target = std::make_shared<CheckerTarget>(side, side, marks, coded.topLeftDark);
    return coded;
}

CodedTarget makeFlexible(int width, int height, std::mt19937 &random) {
    CodedTarget coded;
    coded.kind = PatternKind::Plane;
    coded.topLeftDark = pick(random, 0, 1) != 0;
    const auto window =
        pattern_code::planeWindowForPattern(width, height, pick(random, -90, 90), pick(random, -90, 90));
    coded.origin = {window->column, window->row};
    std::vector<int> marks;
    for (int row = 0; row <= height; row++) {
        for (int column = 0; column <= width; column++) {
            marks.push_back(pattern_code::planeBit(window->column + column, window->row + row) ? 1 : 0);
        }
    }
    coded.target = std::make_shared<CheckerTarget>(width + 1, height + 1, marks, coded.topLeftDark);
    return coded;
}

CodedTarget makePlate(std::mt19937 &random) {
    CodedTarget coded;
    coded.kind = PatternKind::Plate;
    pattern_code::BlockContent content;
    if (pick(random, 0, 1) == 0) {
        content.kind = pattern_code::BlockKind::SpacingAndThickness;
        content.gridSpacing = pick(random, 100, 12500);
        content.thickness = pick(random, 0, 1000);
    } else {
        content.kind = pattern_code::BlockKind::Offset;
        content.offsetX = pick(random, -128, 127);
        content.offsetY = pick(random, -128, 127);
    }
    const std::uint64_t block = encode(content, coded);
    std::vector<InkDisc> dots;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        if (bitOf(block, bit)) {
            const pattern_code::DotPosition p = pattern_code::dotPosition(bit);
            dots.push_back({{2 * p.x, 2 * p.y}, 2 * pattern_code::dotRadius, 2 * pattern_code::dotHoleRadius});
        }
    }
    coded.target = std::make_shared<PlateTarget>(dots, std::vector<cv::Point2d>{{0.5, 0.5}, {2, 0.5}, {0.5, 2}});
    return coded;
}

}  // namespace reader_bench
