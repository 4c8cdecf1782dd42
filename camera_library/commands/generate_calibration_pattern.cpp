// "GenerateCalibrationPattern": the preview images of patterns, a file of them, or both. The parameters are
// described in pattern/pattern_parameters.h. The result has one image per pattern below "Patterns" where images
// were asked for.
#include <cstddef>
#include <memory>

#include "camera_library/commands/command.h"
#include "camera_library/output/page_layout.h"
#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/output/pdf_document.h"
#include "camera_library/output/preview.h"
#include "camera_library/output/safe_file.h"
#include "camera_library/pattern/number_text.h"
#include "camera_library/pattern/pattern_parameters.h"

namespace lmlib64 {

// Called through the command table, which declares it.
Node generateCalibrationPattern(const Node &parameters);

namespace {

std::vector<PatternGeometry> geometriesOf(const PatternRequest &request) {
    std::vector<PatternGeometry> geometries;
    for (const PatternDescription &pattern : request.patterns) {
        geometries.push_back(geometryOf(pattern));
    }
    return geometries;
}

PrintedPage printedPage(const PatternRequest &request, const std::vector<PatternGeometry> &geometries,
                        std::size_t index) {
    const PatternGeometry &geometry = geometries[index];
    const std::optional<PageLayout> layout = layOutPage(geometry);
    if (!layout) {
        throw CommandFailure{"PatternTooLarge",
                             "The pattern \"Patterns\"[" + std::to_string(index) + "] is " +
                                 numberText(geometry.width) + " mm x " + numberText(geometry.height) +
                                 " mm and needs a page larger than a PDF can have; with its quiet zone, check bars and "
                                 "margins it must fit on a page of " +
                                 numberText(largestPageSide) + " mm x " + numberText(largestPageSide) + " mm."};
    }
    return {geometry, *layout, patternCaption(request.patterns[index], geometry)};
}

std::string documentTitle(const PatternRequest &request) {
    const std::string first = patternTitle(request.patterns.front());
    const std::size_t others = request.patterns.size() - 1;
    return others == 0 ? first : first + " and " + std::to_string(others) + " more";
}

std::string fileContents(const PatternRequest &request, const std::vector<PatternGeometry> &geometries) {
    std::string json = patternJson(request, geometries);
    if (fileNameEndsIn(*request.fileName, ".json")) {
        return json;
    }
    std::vector<PrintedPage> pages;
    for (std::size_t index = 0; index < geometries.size(); ++index) {
        pages.push_back(printedPage(request, geometries, index));
    }
    return makePdf(pages, documentTitle(request), json);
}

NodeArray previewsOf(const std::vector<PatternGeometry> &geometries, int imageSize) {
    NodeArray images;
    for (const PatternGeometry &geometry : geometries) {
        images.emplace_back(std::make_shared<const Binary>(renderPreview(geometry, imageSize)));
    }
    return images;
}

}  // namespace

Node generateCalibrationPattern(const Node &parameters) {
    const PatternRequest request = readPatternParameters(parameters);
    const std::vector<PatternGeometry> geometries = geometriesOf(request);
    NodeObject result;
    if (request.imageSize) {
        result.emplace("Patterns", previewsOf(geometries, *request.imageSize));
    }
    // Last, so that the file is written only where everything else has succeeded.
    if (request.fileName) {
        const std::string contents = fileContents(request, geometries);
        try {
            writeFileSafely(*request.fileName, contents);
        } catch (const FileWriteError &error) {
            throw CommandFailure{"FileNotWritten", error.what()};
        }
    }
    return result;
}

}  // namespace lmlib64
