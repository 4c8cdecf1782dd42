#include "camera_library/pattern/code_cells.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern/number_text.h"
#include "camera_library/pattern/pattern_parameter.h"

namespace lmlib64 {

namespace {

using pattern_code::BlockContent;
using pattern_code::BlockKind;

// Clients send offsets that they rounded to hundredths of a millimetre.
constexpr double offsetTolerance = 0.005 + 1e-6;

// Returns the offset in multiples of the unit; empty if it differs from a whole multiple by more than the tolerance.
std::optional<int> wholeUnits(double offset, double unit) {
    const double count = std::round(offset / unit);
    const bool isWhole = std::abs(count) < 1e6 && std::abs(offset - count * unit) <= offsetTolerance;
    return isWhole ? std::optional(static_cast<int>(count)) : std::nullopt;
}

std::optional<std::array<int, 2>> wholeOffset(const PatternDescription &description, double unit) {
    const std::optional<int> x = wholeUnits((*description.offset)[0], unit);
    const std::optional<int> y = wholeUnits((*description.offset)[1], unit);
    return x && y ? std::optional(std::array<int, 2>{*x, *y}) : std::nullopt;
}

bool blockHoldsOffset(const PatternDescription &description) {
    return description.type->codeCarrier == CodeCarrier::Plate && description.offset;
}

// Returns the content of the pattern's information block. For a plate with an offset, this is the offset. Otherwise it
// is the grid spacing and a second value: the pattern's number for an Assembly pattern, the thickness for all others.
// Empty if one of these lengths is not a whole multiple of the unit that the block uses. For an Assembly pattern, the
// thickness is checked, too, although the block does not hold the thickness.
std::optional<BlockContent> contentOf(const PatternDescription &description) {
    BlockContent content;
    if (blockHoldsOffset(description)) {
        const auto offset = wholeOffset(description, description.gridSpacing);
        if (!offset) {
            return std::nullopt;
        }
        content.kind = BlockKind::Offset;
        content.offsetX = (*offset)[0];
        content.offsetY = (*offset)[1];
        return content;
    }
    const auto gridSpacing = pattern_code::hundredthsOfMillimetre(description.gridSpacing);
    const auto thickness = pattern_code::hundredthsOfMillimetre(description.thickness);
    if (!gridSpacing || !thickness) {
        return std::nullopt;
    }
    content.gridSpacing = *gridSpacing;
    if (description.assemblyNumber) {
        content.kind = BlockKind::Assembly;
        content.assemblyPattern = *description.assemblyNumber;
    } else {
        content.thickness = *thickness;
    }
    return content;
}

CodeCells emptyCells(CodeCarrier carrier, int columns, int rows) {
    CodeCells code;
    code.carrier = carrier;
    code.columns = columns;
    code.rows = rows;
    code.cells.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    return code;
}

template <typename Bit>
void fillCells(CodeCells &code, const Bit &bit) {
    std::size_t index = 0;
    for (int row = 0; row < code.rows; ++row) {
        for (int column = 0; column < code.columns; ++column) {
            code.cells[index++] = bit(column, row) ? 1 : 0;
        }
    }
}

CodeCells planeCells(const PatternDescription &description) {
    const auto [width, height] = description.gridSize;
    CodeCells code = emptyCells(CodeCarrier::Plane, width + 1, height + 1);
    code.offset = *wholeOffset(description, description.gridSpacing / 2.0);
    code.planeSquare = *pattern_code::planeWindowForPattern(width, height, code.offset[0], code.offset[1]);
    fillCells(code, [&code](int column, int row) {
        return pattern_code::planeBit(code.planeSquare.column + column, code.planeSquare.row + row);
    });
    return code;
}

// Encodes the content and puts its bits into the cells. The columns and rows of the block are `step` cells apart.
void addBlock(CodeCells &code, const BlockContent &content, int step) {
    code.content = content;
    code.block = pattern_code::encodeBlock(content);
    for (int bit = 0; bit < pattern_code::blockBitCount; ++bit) {
        const pattern_code::BlockCell cell = pattern_code::blockCell(bit);
        const int index = cell.row * step * code.columns + cell.column * step;
        code.cells[static_cast<std::size_t>(index)] =
            static_cast<std::uint8_t>(code.block >> (pattern_code::blockBitCount - 1 - bit) & 1U);
    }
}

CodeCells tileCells(const PatternDescription &description) {
    CodeCells code = emptyCells(CodeCarrier::Tile, pattern_code::tileSide, pattern_code::tileSide);
    code.tile = description.assemblyNumber ? pattern_code::tileOfAssemblyPattern(*description.assemblyNumber)
                                           : pattern_code::singleTile;
    fillCells(code, [&code](int column, int row) {
        return pattern_code::carriesPosition(column, row) && pattern_code::tileBit(code.tile, column, row);
    });
    addBlock(code, *contentOf(description), 2);
    return code;
}

CodeCells plateCells(const PatternDescription &description) {
    constexpr int side = 8;
    CodeCells code = emptyCells(CodeCarrier::Plate, side, side);
    addBlock(code, *contentOf(description), 1);
    return code;
}

std::string unlessPlain(const std::string &required) {
    return required + R"(, unless "Encoding" is false)";
}

std::string hundredthsUpTo(int least, int greatest) {
    return "a multiple of 0.01 mm from " + numberText(least / 100.0) + " to " + numberText(greatest / 100.0) + " mm";
}

// Returns "from -540 to 540 mm" for the unit 6 mm and the multiples -90 to 90. Multiples outside the range of the
// parameter "Offset" are left out.
std::string rangeText(double unit, int least, int greatest) {
    const double from = std::max<double>(least, std::ceil(offsetRange.minimum / unit)) * unit;
    const double to = std::min<double>(greatest, std::floor(offsetRange.maximum / unit)) * unit;
    return "from " + numberText(wholeNanometres(from)) + " to " + numberText(wholeNanometres(to)) + " mm";
}

std::optional<EncodingFault> planeFault(const PatternDescription &description) {
    const double unit = description.gridSpacing / 2.0;
    const pattern_code::OffsetRange x = pattern_code::offsetRangeForCorners(description.gridSize[0]);
    const pattern_code::OffsetRange y = pattern_code::offsetRangeForCorners(description.gridSize[1]);
    const auto offset = wholeOffset(description, unit);
    if (offset && pattern_code::planeWindowForPattern(description.gridSize[0], description.gridSize[1], (*offset)[0],
                                                      (*offset)[1])) {
        return std::nullopt;
    }
    return EncodingFault{"Offset", unlessPlain("a multiple of " + numberText(unit) + " mm (half the grid spacing) " +
                                               rangeText(unit, x.least, x.greatest) + " in x and " +
                                               rangeText(unit, y.least, y.greatest) + " in y")};
}

std::optional<EncodingFault> blockFault(const PatternDescription &description) {
    const std::optional<BlockContent> content = contentOf(description);
    if (content && pattern_code::isEncodable(*content)) {
        return std::nullopt;
    }
    if (blockHoldsOffset(description)) {
        return EncodingFault{
            "Offset", unlessPlain("a multiple of " + numberText(description.gridSpacing) + " mm (the grid spacing) " +
                                  rangeText(description.gridSpacing, pattern_code::leastBlockOffset,
                                            pattern_code::greatestBlockOffset))};
    }
    PatternDescription withoutThickness = description;
    withoutThickness.thickness = 0.0;
    const std::optional<BlockContent> spacingAlone = contentOf(withoutThickness);
    if (spacingAlone && pattern_code::isEncodable(*spacingAlone)) {
        return EncodingFault{"Thickness", unlessPlain(hundredthsUpTo(0, pattern_code::greatestBlockThickness))};
    }
    return EncodingFault{"GridSpacing", unlessPlain(hundredthsUpTo(pattern_code::leastBlockSpacing,
                                                                   pattern_code::greatestBlockSpacing))};
}

bool carriesCode(const PatternDescription &description) {
    return description.isCoded && description.hasExtent();
}

}  // namespace

std::optional<CodeCells> codeCellsOf(const PatternDescription &description) {
    if (!carriesCode(description)) {
        return std::nullopt;
    }
    switch (description.type->codeCarrier) {
        case CodeCarrier::Plane:
            return planeCells(description);
        case CodeCarrier::Tile:
            return tileCells(description);
        case CodeCarrier::Plate:
            return plateCells(description);
    }
    return std::nullopt;
}

std::optional<EncodingFault> encodingFault(const PatternDescription &description) {
    if (!carriesCode(description)) {
        return std::nullopt;
    }
    switch (description.type->codeCarrier) {
        case CodeCarrier::Plane:
            return planeFault(description);
        case CodeCarrier::Tile:
        case CodeCarrier::Plate:
            return blockFault(description);
    }
    return std::nullopt;
}

}  // namespace lmlib64
