#include "camera_library/output/pattern_text.h"

#include "camera_library/lmlib64.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

// UTF-8 as bytes, so that the character set of the compiler does not matter.
constexpr const char *times = " \xc3\x97 ";      // multiplication sign
constexpr const char *separator = " \xc2\xb7 ";  // middle dot

std::string typeText(const PatternDescription &description) {
    return description.type->title.empty() ? description.typeName : std::string(description.type->title);
}

}  // namespace

std::string libraryName() {
    return "LmLib64 " LMLIB_VERSION;
}

std::string patternTitle(const PatternDescription &description) {
    std::string title = typeText(description);
    if (description.assemblyNumber) {
        title += " pattern " + std::to_string(*description.assemblyNumber);
    }
    return title + " " + std::to_string(description.gridSize[0]) + times + std::to_string(description.gridSize[1]) +
           ", grid spacing " + numberText(description.gridSpacing) + " mm";
}

std::string patternCaption(const PatternDescription &description, const PatternGeometry &geometry,
                           std::optional<std::array<double, 2>> printScale) {
    std::string text = typeText(description) + " " + std::to_string(description.gridSize[0]) + times +
                       std::to_string(description.gridSize[1]);
    text += separator + numberText(wholeNanometres(geometry.width)) + times +
            numberText(wholeNanometres(geometry.height)) + " mm";
    text += separator + ("grid spacing " + numberText(description.gridSpacing)) + " mm";
    text += separator + ("thickness " + numberText(description.thickness)) + " mm";
    const auto [offsetX, offsetY] = description.referencePosition();
    text += separator + ("offset (" + numberText(offsetX)) + ", " + numberText(offsetY) + ") mm";
    text += separator + std::string(description.polarity ? "polarity true" : "polarity false");
    if (description.assemblyNumber) {
        text += separator + ("pattern " + std::to_string(*description.assemblyNumber));
    }
    if (printScale) {
        text += separator + ("print scale " + numberText((*printScale)[0])) + times + numberText((*printScale)[1]);
    }
    return text + separator + libraryName();
}

}  // namespace lmlib64
