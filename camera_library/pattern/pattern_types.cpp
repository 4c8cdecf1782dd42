#include "camera_library/pattern/pattern_types.h"

#include <algorithm>

#include "camera_library/pattern/board_catalogue.h"
#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/halcon_plate.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern_code/position_code.h"

namespace lmlib64 {

namespace {

using P = PatternParameter;

// Columns and rows of the inner corners of a board that shows one tile of the position code.
constexpr std::array<int, 2> tileCorners{pattern_code::tileSide - 1, pattern_code::tileSide - 1};

PatternGeometry drawCheckerboard(const PatternDescription &description, const CodeCells *code) {
    return checkerboard(description.gridSize, description.gridSpacing, description.polarity, code);
}

PatternGeometry drawHalconPlate(const PatternDescription &description, const CodeCells *code) {
    return halconPlate(description.gridSpacing, description.polarity, code);
}

constexpr std::array types{
    PatternType{
        SelectedBy::CatalogueBoard,
        "",
        "a plate of the catalogue",
        "",
        "Checkerboard",
        {P::Type, P::GridSpacing, P::Thickness, P::Polarity},
        tileCorners,
        CodeCarrier::Tile,
        drawCheckerboard,
    },
    PatternType{
        SelectedBy::Name,
        "SingleCustom",
        "a pattern of type \"SingleCustom\"",
        "",
        "Checkerboard",
        {P::Type, P::GridSpacing, P::Thickness, P::Polarity},
        tileCorners,
        CodeCarrier::Tile,
        drawCheckerboard,
    },
    PatternType{
        SelectedBy::Name,
        "Flexible",
        "a pattern of type \"Flexible\"",
        "",
        "Checkerboard",
        {P::Type, P::GridSize, P::GridSpacing, P::Thickness, P::Offset, P::Polarity},
        {},
        CodeCarrier::Plane,
        drawCheckerboard,
    },
    PatternType{
        SelectedBy::Name,
        "Assembly",
        "a pattern of type \"Assembly\"",
        "",
        "Checkerboard",
        {P::Type, P::AssemblyPattern, P::GridSpacing, P::Thickness, P::Polarity},
        tileCorners,
        CodeCarrier::Tile,
        drawCheckerboard,
    },
    PatternType{
        SelectedBy::NoType,
        "",
        "a Halcon-style plate (a pattern without \"Type\")",
        "Halcon-style plate",
        "RoundMarks",
        {P::Type, P::GridSpacing, P::Thickness, P::Offset, P::Polarity, P::Encoding},
        {halconMarksPerSide, halconMarksPerSide},
        CodeCarrier::Plate,
        drawHalconPlate,
    },
};

constexpr bool hasPoints(const PatternType &type) {
    for (const PatternParameter parameter : type.parameters) {
        if (parameter == P::GridSize) {
            return true;
        }
    }
    return type.gridSize[0] >= gridSizeRange.minimum && type.gridSize[1] >= gridSizeRange.minimum;
}

constexpr bool allHavePoints() {
    for (const PatternType &type : types) {
        if (!hasPoints(type)) {
            return false;
        }
    }
    return true;
}

static_assert(allHavePoints(), "a type without the parameter \"GridSize\" needs at least 2 x 2 points in its entry");

bool isSelected(const PatternType &type, const std::optional<std::string> &typeName) {
    switch (type.selectedBy) {
        case SelectedBy::Name:
            return typeName == type.name;
        case SelectedBy::CatalogueBoard:
            return typeName && findBoard(*typeName) != nullptr;
        case SelectedBy::NoType:
            return !typeName;
    }
    return false;
}

}  // namespace

const PatternType *PatternTypes::begin() const {
    return types.data();
}

const PatternType *PatternTypes::end() const {
    return types.data() + types.size();
}

const PatternType *findPatternType(const std::optional<std::string> &typeName) {
    const auto *type =
        std::find_if(types.begin(), types.end(), [&](const PatternType &each) { return isSelected(each, typeName); });
    return type == types.end() ? nullptr : type;
}

bool hasParameter(const PatternType &type, PatternParameter parameter) {
    return std::find(type.parameters.begin(), type.parameters.end(), parameter) != type.parameters.end();
}

}  // namespace lmlib64
