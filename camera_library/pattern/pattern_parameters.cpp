#include "camera_library/pattern/pattern_parameters.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "camera_library/commands/command.h"
#include "camera_library/commands/plate_catalogue.h"
#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/number_text.h"
#include "camera_library/pattern/parameter_reader.h"

namespace lmlib64 {

namespace {

constexpr NumberRange imageSizeRange{16, 8000, ""};
constexpr std::int64_t maximumPixels = 256'000'000;
constexpr std::size_t maximumPatterns = 64;
constexpr NumberRange gridSpacingRange{0, 1000, "mm"};
constexpr double smallestExtent = 0.001;
constexpr NumberRange thicknessRange{0, 100, "mm"};
constexpr NumberRange gridSizeRange{2, 200, ""};
constexpr NumberRange offsetRange{-9999, 9999, "mm"};
constexpr NumberRange assemblyRange{0, 17, ""};
constexpr int singleGridSize = 15;
constexpr int marksPerSide = 7;

// A client hands back what the catalogue told it, perhaps by way of a text with fewer digits.
bool equalsCatalogue(double value, double ofPlate) {
    constexpr double tolerance = 1e-6;
    return value - ofPlate < tolerance && ofPlate - value < tolerance;
}

void checkCatalogueValue(const ParameterReader &reader, const char *name, std::optional<double> value, double ofPlate,
                         const std::string &type) {
    if (value && !equalsCatalogue(*value, ofPlate)) {
        reader.failValue(name, numberText(ofPlate) + " mm, as the catalogue has it for \"" + type + '"');
    }
}

PatternDescription readCataloguePlate(const ParameterReader &reader, const CatalogueEntry &plate) {
    PatternDescription description;
    description.kind = PatternKind::Catalogue;
    description.type = plate.type;
    description.gridSize = {plateGridSize, plateGridSize};
    reader.allowOnly({"Type", "GridSpacing", "Thickness", "Polarity"}, "a plate of the catalogue");
    checkCatalogueValue(reader, "GridSpacing", reader.number("GridSpacing", gridSpacingRange), plate.gridSpacing,
                        description.type);
    checkCatalogueValue(reader, "Thickness", reader.number("Thickness", thicknessRange), plate.thickness,
                        description.type);
    description.gridSpacing = plate.gridSpacing;
    description.thickness = plate.thickness;
    return description;
}

PatternDescription readSingle(const ParameterReader &reader) {
    reader.allowOnly({"Type", "GridSpacing", "Thickness", "Polarity"}, "a pattern of type \"SingleCustom\"");
    PatternDescription description;
    description.kind = PatternKind::Single;
    description.gridSize = {singleGridSize, singleGridSize};
    return description;
}

PatternDescription readFlexible(const ParameterReader &reader) {
    reader.allowOnly({"Type", "GridSize", "GridSpacing", "Thickness", "Offset", "Polarity"},
                     "a pattern of type \"Flexible\"");
    PatternDescription description;
    description.kind = PatternKind::Flexible;
    const auto gridSize = reader.integerPair("GridSize", gridSizeRange);
    if (!gridSize) {
        reader.failMissing("GridSize", "an array of two, each " + integerDescription(gridSizeRange));
    }
    description.gridSize = *gridSize;
    description.offset = reader.numberPair("Offset", offsetRange).value_or(description.offset);
    return description;
}

PatternDescription readAssembly(const ParameterReader &reader) {
    reader.allowOnly({"Type", "AssemblyPattern", "GridSpacing", "Thickness", "Polarity"},
                     "a pattern of type \"Assembly\"");
    PatternDescription description;
    description.kind = PatternKind::Assembly;
    description.gridSize = {singleGridSize, singleGridSize};
    description.assemblyNumber = reader.integer("AssemblyPattern", assemblyRange).value_or(0);
    return description;
}

PatternDescription readHalcon(const ParameterReader &reader) {
    reader.allowOnly({"Type", "GridSpacing", "Thickness", "Offset", "Polarity", "Encoding"},
                     "a Halcon-style plate (a pattern without \"Type\")");
    PatternDescription description;
    description.kind = PatternKind::Halcon;
    description.gridSize = {marksPerSide, marksPerSide};
    description.offset = reader.numberPair("Offset", offsetRange).value_or(description.offset);
    description.hasOffset = reader.has("Offset");
    description.encoding = reader.boolean("Encoding").value_or(true);
    return description;
}

// Everything but what all kinds share.
PatternDescription readKind(const ParameterReader &reader) {
    const std::optional<std::string> type = reader.text("Type");
    if (!type) {
        return readHalcon(reader);
    }
    if (*type == "SingleCustom") {
        return readSingle(reader);
    }
    if (*type == "Flexible") {
        return readFlexible(reader);
    }
    if (*type == "Assembly") {
        return readAssembly(reader);
    }
    if (const CatalogueEntry *plate = findPlate(*type)) {
        return readCataloguePlate(reader, *plate);
    }
    reader.failValue("Type",
                     R"("SingleCustom", "Flexible", "Assembly" or the type of a plate that "GetModelInfo" lists)");
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

PatternDescription readPlainPattern(const ParameterReader &reader) {
    PatternDescription description = readKind(reader);
    description.polarity = reader.boolean("Polarity").value_or(true);
    if (description.kind == PatternKind::Catalogue) {
        return description;
    }
    description.type = reader.text("Type").value_or("");
    description.thickness = reader.number("Thickness", thicknessRange).value_or(0.0);
    description.gridSpacing = readGridSpacing(reader);
    return description;
}

PatternDescription readPattern(const Node &pattern, std::size_t index, bool encoding) {
    const ParameterReader reader(pattern, "\"Patterns\"[" + std::to_string(index) + "]");
    PatternDescription description = readPlainPattern(reader);
    description.coded = encoding && description.encoding;
    if (const std::optional<EncodingFault> fault = encodingFault(description)) {
        reader.failValue(fault->parameter, fault->required);
    }
    return description;
}

std::vector<PatternDescription> readPatterns(const ParameterReader &reader, bool encoding) {
    const std::string required = "an array of 1 to " + std::to_string(maximumPatterns) + " patterns";
    const Node *node = reader.find("Patterns");
    if (node == nullptr) {
        reader.failMissing("Patterns", required);
    }
    const auto *elements = std::get_if<NodeArray>(&node->value);
    if (elements == nullptr || elements->empty() || elements->size() > maximumPatterns) {
        reader.failValue("Patterns", required);
    }
    std::vector<PatternDescription> patterns;
    for (std::size_t index = 0; index < elements->size(); ++index) {
        patterns.push_back(readPattern((*elements)[index], index, encoding));
    }
    return patterns;
}

void checkFile(const ParameterReader &reader, const PatternRequest &request) {
    const std::string &name = *request.fileName;
    if (!fileNameEndsIn(name, ".pdf") && !fileNameEndsIn(name, ".json")) {
        reader.failValue("Filename", "a file name that ends in .pdf or .json");
    }
    if (name.find('\0') != std::string::npos) {
        reader.failValue("Filename", "a file name without zero bytes");
    }
    for (std::size_t index = 0; index < request.patterns.size(); ++index) {
        if (!request.patterns[index].hasExtent()) {
            throw CommandFailure{"PatternHasNoExtent",
                                 "Parameter \"Patterns\"[" + std::to_string(index) +
                                     "]/\"GridSpacing\" is 0, so the pattern has no extent and cannot be saved; "
                                     "it must be " +
                                     numberDescription({smallestExtent, gridSpacingRange.maximum, "mm"}) + "."};
        }
    }
}

void checkPixels(const PatternRequest &request) {
    const std::int64_t side = *request.imageSize;
    const auto count = static_cast<std::int64_t>(request.patterns.size());
    if (side * side * count > maximumPixels) {
        throw CommandFailure{"InvalidParameter", "Parameter \"ImageSize\" is " + std::to_string(side) + " for " +
                                                     std::to_string(count) +
                                                     " patterns; the images together may have at most " +
                                                     std::to_string(maximumPixels) + " pixels."};
    }
}

}  // namespace

bool fileNameEndsIn(const std::string &fileName, std::string_view ending) {
    // Not std::tolower, whose answer hangs on the locale.
    const auto sameLetter = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
    return fileName.size() >= ending.size() &&
           std::equal(ending.begin(), ending.end(), fileName.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [&](char expected, char actual) { return sameLetter(actual, expected); });
}

PatternRequest readPatternParameters(const Node &parameters) {
    const ParameterReader reader(parameters, "");
    reader.allowOnly({"Encoding", "ImageSize", "Filename", "Patterns"}, "the command \"GenerateCalibrationPattern\"");
    PatternRequest request;
    request.encoding = reader.boolean("Encoding").value_or(true);
    request.imageSize = reader.integer("ImageSize", imageSizeRange);
    request.fileName = reader.text("Filename");
    request.patterns = readPatterns(reader, request.encoding);
    if (!request.imageSize && !request.fileName) {
        reader.failMissing("ImageSize", integerDescription(imageSizeRange) +
                                            " for a preview, unless \"Filename\" names a .pdf or .json file to write");
    }
    if (request.fileName) {
        checkFile(reader, request);
    }
    if (request.imageSize) {
        checkPixels(request);
    }
    return request;
}

}  // namespace lmlib64
