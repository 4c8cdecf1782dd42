#include "camera_library/commands/pattern_description_reader.h"

#include <cstddef>
#include <vector>

#include "camera_library/pattern/board_catalogue.h"
#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

const PatternType &readType(const ParameterReader &reader) {
    const PatternType *type = findPatternType(reader.text("Type"));
    if (type == nullptr) {
        std::string names;
        for (const PatternType &each : PatternTypes()) {
            if (each.selectedBy == SelectedBy::Name) {
                names += (names.empty() ? "\"" : ", \"") + std::string(each.name) + '"';
            }
        }
        reader.failValue("Type", names + R"(, or the type of a plate in the list that "GetModelInfo" returns)");
    }
    return *type;
}

void allowParametersOf(const PatternType &type, const ParameterReader &reader) {
    std::vector<std::string_view> names;
    for (const PatternParameter parameter : type.parameters) {
        names.push_back(nameOf(parameter));
    }
    reader.allowOnly(names, type.errorName);
}

std::array<int, 2> readGridSize(const ParameterReader &reader) {
    const auto gridSize = reader.integerPair("GridSize", gridSizeRange);
    if (!gridSize) {
        reader.failMissing("GridSize", "an array of two elements, each " + integerDescription(gridSizeRange));
    }
    return *gridSize;
}

double readGridSpacing(const ParameterReader &reader) {
    const std::optional<double> gridSpacing = reader.number("GridSpacing", gridSpacingRange);
    if (!gridSpacing) {
        reader.failMissing("GridSpacing", numberDescription(gridSpacingRange));
    }
    if (*gridSpacing > 0.0 && *gridSpacing < smallestExtent) {
        reader.failValue("GridSpacing", "0 or " + numberDescription({smallestExtent, gridSpacingRange.maximum, "mm"}));
    }
    return *gridSpacing;
}

// True if a value equals that of a board of the catalogue. A small difference is allowed, because a client may have
// converted the catalogue's value to a text with fewer digits.
bool equalsCatalogue(double value, double ofBoard) {
    constexpr double tolerance = 1e-6;
    return value - ofBoard < tolerance && ofBoard - value < tolerance;
}

// Returns the board's own value. Throws CommandFailure if the parameter is given and has another value.
double readBoardValue(const ParameterReader &reader, PatternParameter parameter, NumberRange range, double ofBoard,
                      const CatalogueBoard &board) {
    const std::string_view name = nameOf(parameter);
    const std::optional<double> value = reader.number(name, range);
    if (value && !equalsCatalogue(*value, ofBoard)) {
        reader.failValue(
            name, numberText(ofBoard) + " mm, the value of \"" + std::string(board.type) + "\" in the catalogue");
    }
    return ofBoard;
}

// Reads the parameter into the description. `board` is null unless the pattern is a board of the catalogue.
void readParameter(const ParameterReader &reader, PatternParameter parameter, const CatalogueBoard *board,
                   PatternDescription &description) {
    switch (parameter) {
        case PatternParameter::Type:
            description.typeName = reader.text("Type").value_or("");
            break;
        case PatternParameter::GridSize:
            description.gridSize = readGridSize(reader);
            break;
        case PatternParameter::AssemblyPattern:
            description.assemblyNumber = reader.integer("AssemblyPattern", assemblyPatternRange).value_or(0);
            break;
        case PatternParameter::GridSpacing:
            description.gridSpacing =
                board == nullptr ? readGridSpacing(reader)
                                 : readBoardValue(reader, parameter, gridSpacingRange, board->gridSpacing, *board);
            break;
        case PatternParameter::Thickness:
            description.thickness = board == nullptr
                                        ? reader.number("Thickness", thicknessRange).value_or(0.0)
                                        : readBoardValue(reader, parameter, thicknessRange, board->thickness, *board);
            break;
        case PatternParameter::Offset:
            description.offset = reader.numberPair("Offset", offsetRange);
            break;
        case PatternParameter::Polarity:
            description.polarity = reader.boolean("Polarity").value_or(true);
            break;
        case PatternParameter::Encoding:
            description.encodingParameter = reader.boolean("Encoding").value_or(true);
            break;
    }
}

}  // namespace

PatternDescription readPatternDescription(const ParameterReader &reader, bool encodingParameter) {
    PatternDescription description;
    const PatternType &type = readType(reader);
    allowParametersOf(type, reader);
    description.type = &type;
    description.gridSize = type.gridSize;
    const CatalogueBoard *board =
        type.selectedBy == SelectedBy::CatalogueBoard ? findBoard(*reader.text("Type")) : nullptr;
    for (const PatternParameter parameter : type.parameters) {
        readParameter(reader, parameter, board, description);
    }
    // A pattern that is cut out of the plane of the position code needs an offset, which states where it is cut out. So
    // an absent "Offset" means 0, 0. The code of a plate holds an offset only if "Offset" is given, and holds other
    // values otherwise. So an absent "Offset" of a plate stays absent.
    if (type.codeCarrier == CodeCarrier::Plane && !description.offset) {
        description.offset = {0.0, 0.0};
    }
    description.isCoded = encodingParameter && description.encodingParameter;
    if (const std::optional<EncodingFault> fault = encodingFault(description)) {
        reader.failValue(fault->parameter, fault->required);
    }
    return description;
}

}  // namespace lmlib64
