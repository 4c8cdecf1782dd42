#include "camera_library/commands/pattern_request.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "camera_library/commands/command.h"
#include "camera_library/commands/parameter_reader.h"
#include "camera_library/commands/pattern_description_reader.h"
#include "camera_library/output/file_formats.h"

namespace lmlib64 {

namespace {

constexpr NumberRange imageSizeRange{16, 8000, ""};
constexpr NumberRange printScaleRange{0.9, 1.1, ""};
constexpr NumberRange paperSideRange{150, largestPageSide, "mm"};
constexpr NumberRange resolutionRange{20, 4800, "dots per inch"};
constexpr std::int64_t maximumPixels = 256'000'000;
constexpr std::size_t maximumPatterns = 64;

std::vector<PatternDescription> readPatterns(const ParameterReader &reader, bool encodingParameter) {
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
        const ParameterReader pattern((*elements)[index], "\"Patterns\"[" + std::to_string(index) + "]");
        patterns.push_back(readPatternDescription(pattern, encodingParameter));
    }
    return patterns;
}

constexpr std::array papers{
    std::pair{"A4", PageSize{210, 297}},        std::pair{"A3", PageSize{297, 420}},
    std::pair{"A2", PageSize{420, 594}},        std::pair{"A1", PageSize{594, 841}},
    std::pair{"A0", PageSize{841, 1189}},       std::pair{"Letter", PageSize{215.9, 279.4}},
    std::pair{"Legal", PageSize{215.9, 355.6}}, std::pair{"Tabloid", PageSize{279.4, 431.8}},
};

Paper readPaper(const ParameterReader &reader) {
    const Node &node = *reader.find("Paper");
    if (node.type() == LmLibTypeArray) {
        const std::array<double, 2> size = *reader.numberPair("Paper", paperSideRange);
        return {"", {size[0], size[1]}};
    }
    std::string names;
    for (const auto &[name, size] : papers) {
        if (const auto *text = std::get_if<std::string>(&node.value); text != nullptr && *text == name) {
            return {name, size};
        }
        names += std::string("\"") + name + "\", ";
    }
    reader.failValue("Paper", names + "or an array of width and height, each " + numberDescription(paperSideRange));
}

DrawingOptions readDrawingOptions(const ParameterReader &reader) {
    DrawingOptions options;
    options.resolution = reader.integer("Resolution", resolutionRange);
    options.printScale = reader.numberPair("PrintScale", printScaleRange);
    if (reader.has("Paper")) {
        options.paper = readPaper(reader);
    }
    options.sheets = reader.boolean("Sheets");
    if (options.sheets.value_or(false) && !options.paper) {
        reader.failValue("Sheets", "false unless \"Paper\" is given");
    }
    return options;
}

void checkFile(const ParameterReader &reader, const PatternRequest &request) {
    const std::string &name = *request.fileName;
    if (findFileFormat(name) == nullptr) {
        reader.failValue("Filename", "a file name that ends in " + fileEndings());
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

PatternRequest readPatternRequest(const Node &parameters) {
    const ParameterReader reader(parameters, "");
    reader.allowOnly({"Encoding", "ImageSize", "Filename", "Resolution", "PrintScale", "Paper", "Sheets", "Patterns"},
                     "the command \"GenerateCalibrationPattern\"");
    PatternRequest request;
    request.encodingParameter = reader.boolean("Encoding").value_or(true);
    request.imageSize = reader.integer("ImageSize", imageSizeRange);
    request.fileName = reader.text("Filename");
    request.options = readDrawingOptions(reader);
    request.patterns = readPatterns(reader, request.encodingParameter);
    if (!request.imageSize && !request.fileName) {
        reader.failMissing("ImageSize", integerDescription(imageSizeRange) +
                                            " for a preview, unless \"Filename\" names a " + fileEndings() +
                                            " file to write");
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
