// The command "GenerateCalibrationPattern" draws patterns as preview images, as files, or as both. pattern_request.h
// describes the parameters. If previews are asked for, the result has one image per pattern below "Patterns". If the
// format has one page per file, the result has the names of all written files below "Files".
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "camera_library/commands/command.h"
#include "camera_library/commands/pattern_request.h"
#include "camera_library/output/document_pages.h"
#include "camera_library/output/file_formats.h"
#include "camera_library/output/preview.h"
#include "file_writing/safe_file.h"

namespace lmlib64 {

// The command table declares and calls this function.
Node generateCalibrationPattern(const Node &parameters);

namespace {

PatternDocument drawn(const PatternRequest &request) {
    PatternDocument document;
    document.encodingParameter = request.encodingParameter;
    document.options = request.options;
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

// Writes the files. Returns their names if the format has one page per file; otherwise the result is empty.
NodeArray save(const PatternDocument &document, const std::string &fileName) {
    try {
        const FileFormat &format = *findFileFormat(fileName);
        file_writing::SafeFiles files;
        NodeArray names;
        if (format.wholeFile != nullptr) {
            files.write(fileName, format.wholeFile(document));
        } else {
            const std::vector<PrintedPage> pages = pagesOf(document);
            const std::vector<std::string> pageNames = pageFileNames(fileName, pages.size());
            for (std::size_t page = 0; page < pages.size(); ++page) {
                files.write(pageNames[page], format.pageFile(pages[page], document));
                names.emplace_back(pageNames[page]);
            }
        }
        files.commit();
        return names;
    } catch (const PatternTooLarge &error) {
        throw CommandFailure{"PatternTooLarge", error.what()};
    } catch (const file_writing::FileWriteError &error) {
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
    // The files are written last, so that they are written only if everything else has succeeded. Nothing may fail
    // after the files are written, so the result's node "Files" is made beforehand.
    if (request.fileName) {
        Node &names = result["Files"];
        NodeArray written = save(document, *request.fileName);
        if (written.empty()) {
            result.erase("Files");
        } else {
            names.value = std::move(written);
        }
    }
    return result;
}

}  // namespace lmlib64
