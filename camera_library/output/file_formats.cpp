#include "camera_library/output/file_formats.h"

#include <algorithm>
#include <array>

#include "camera_library/output/dxf_page.h"
#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pdf_document.h"
#include "camera_library/output/png_page.h"
#include "camera_library/output/svg_page.h"

namespace lmlib64 {

namespace {

constexpr std::array formats{
    FileFormat{".pdf", patternPdf, nullptr},
    FileFormat{".json", static_cast<std::string (*)(const PatternDocument &)>(patternJson), nullptr},
    FileFormat{".svg", nullptr, svgPage},
    FileFormat{".png", nullptr, pngPage},
    FileFormat{".dxf", nullptr, dxfPage},
};

bool endsIn(std::string_view fileName, std::string_view ending) {
    // std::tolower is not used, because its result depends on the locale.
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
    for (const FileFormat &format : formats) {
        if (endsIn(fileName, format.ending)) {
            return &format;
        }
    }
    return nullptr;
}

std::string fileEndings() {
    std::string text;
    for (std::size_t i = 0; i < formats.size(); ++i) {
        text += i == 0 ? "" : i + 1 < formats.size() ? ", " : " or ";
        text += formats[i].ending;
    }
    return text;
}

std::vector<std::string> pageFileNames(const std::string &fileName, std::size_t count) {
    if (count == 1) {
        return {fileName};
    }
    const std::size_t dot = fileName.rfind('.');
    const std::size_t digits = std::max<std::size_t>(2, std::to_string(count - 1).size());
    std::vector<std::string> names;
    names.reserve(count);
    for (std::size_t page = 0; page < count; ++page) {
        const std::string number = std::to_string(page);
        names.push_back(fileName.substr(0, dot) + '-' + std::string(digits - number.size(), '0') + number +
                        fileName.substr(dot));
    }
    return names;
}

}  // namespace lmlib64
