// "GenerateCalibrationPattern": the preview images of patterns, a file of them, or both. pattern_request.h describes
// the parameters. If images are asked for, the result has one per pattern below "Patterns".
#include <memory>

#include "camera_library/commands/command.h"
#include "camera_library/commands/pattern_request.h"
#include "camera_library/output/file_formats.h"
#include "camera_library/output/preview.h"
#include "camera_library/output/safe_file.h"

namespace lmlib64 {

// Called through the command table, which declares it.
Node generateCalibrationPattern(const Node &parameters);

namespace {

PatternDocument drawn(const PatternRequest &request) {
    PatternDocument document;
    document.encodingParameter = request.encodingParameter;
    for (const PatternDescription &pattern : request.patterns) {
        document.patterns.push_back({pattern, geometryOf(pattern)});
    }
    return document;
}

NodeArray previewsOf(const PatternDocument &document, int imageSize) {
    NodeArray images;
    for (const DrawnPattern &pattern : document.patterns) {
        images.emplace_back(std::make_shared<const Binary>(renderPreview(pattern.geometry, imageSize)));
    }
    return images;
}

void save(const PatternDocument &document, const std::string &fileName) {
    try {
        writeFileSafely(fileName, findFileFormat(fileName)->contents(document));
    } catch (const PatternTooLarge &error) {
        throw CommandFailure{"PatternTooLarge", error.what()};
    } catch (const FileWriteError &error) {
        throw CommandFailure{"FileNotWritten", error.what()};
    }
}

}  // namespace

Node generateCalibrationPattern(const Node &parameters) {
    const PatternRequest request = readPatternRequest(parameters);
    const PatternDocument document = drawn(request);
    NodeObject result;
    if (request.imageSize) {
        result.emplace("Patterns", previewsOf(document, *request.imageSize));
    }
    // Last, so that the file is written only if everything else has succeeded.
    if (request.fileName) {
        save(document, *request.fileName);
    }
    return result;
}

}  // namespace lmlib64
