#include "camera_library/output/pattern_text.h"

#include <cmath>

#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

// UTF-8 by its bytes, whatever character set the compiler takes a literal to be in.
constexpr const char *times = " \xc3\x97 ";      // multiplication sign
constexpr const char *separator = " \xc2\xb7 ";  // middle dot

std::string typeText(const PatternDescription &description) {
    return description.kind == PatternKind::Halcon ? "Halcon-style plate" : description.type;
}

// Sizes are products and may carry the last digits of one; whole nanometres are more than can be printed.
std::string sizeText(double mm) {
    return numberText(std::round(mm * 1e6) / 1e6);
}

}  // namespace

std::string libraryName() {
    return "LmLib64 " LMLIB64_VERSION;
}

std::string patternTitle(const PatternDescription &description) {
    std::string title = typeText(description);
    if (description.assemblyNumber) {
        title += " pattern " + std::to_string(*description.assemblyNumber);
    }
    return title + " " + std::to_string(description.gridSize[0]) + times + std::to_string(description.gridSize[1]) +
           ", grid spacing " + numberText(description.gridSpacing) + " mm";
}

std::string patternCaption(const PatternDescription &description, const PatternGeometry &geometry) {
    std::string text = typeText(description) + " " + std::to_string(description.gridSize[0]) + times +
                       std::to_string(description.gridSize[1]);
    text += separator + sizeText(geometry.width) + times + sizeText(geometry.height) + " mm";
    text += separator + ("grid spacing " + numberText(description.gridSpacing)) + " mm";
    text += separator + ("thickness " + numberText(description.thickness)) + " mm";
    text += separator + ("offset (" + numberText(description.offset[0])) + ", " + numberText(description.offset[1]) +
            ") mm";
    text += separator + std::string(description.polarity ? "polarity true" : "polarity false");
    if (description.assemblyNumber) {
        text += separator + ("pattern " + std::to_string(*description.assemblyNumber));
    }
    return text + separator + libraryName();
}

}  // namespace lmlib64
