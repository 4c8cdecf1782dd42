#include "camera_library/output/file_formats.h"

#include <algorithm>
#include <array>

#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pdf_document.h"

namespace lmlib64 {

namespace {

constexpr std::array formats{
    FileFormat{".pdf", true, patternPdf},
    FileFormat{".json", true, patternJson},
};

bool endsIn(std::string_view fileName, std::string_view ending) {
    // Not std::tolower, whose result depends on the locale.
    const auto sameLetter = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
    return fileName.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), fileName.rbegin(),
                      [&](char expected, char actual) { return sameLetter(actual, expected); });
}

}  // namespace

const FileFormat *FileFormats::begin() const {
    return formats.data();
}

const FileFormat *FileFormats::end() const {
    return formats.data() + formats.size();
}

const FileFormat *findFileFormat(std::string_view fileName) {
    const auto *format = std::find_if(formats.begin(), formats.end(),
                                      [&](const FileFormat &each) { return endsIn(fileName, each.ending); });
    return format == formats.end() ? nullptr : format;
}

std::string fileEndings() {
    std::string text;
    for (std::size_t i = 0; i < formats.size(); ++i) {
        text += i == 0 ? "" : i + 1 < formats.size() ? ", " : " or ";
        text += formats[i].ending;
    }
    return text;
}

}  // namespace lmlib64
