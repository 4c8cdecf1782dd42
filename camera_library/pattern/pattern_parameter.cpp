#include "camera_library/pattern/pattern_parameter.h"

namespace lmlib64 {

std::string_view nameOf(PatternParameter parameter) {
    switch (parameter) {
        case PatternParameter::Type:
            return "Type";
        case PatternParameter::GridSize:
            return "GridSize";
        case PatternParameter::AssemblyPattern:
            return "AssemblyPattern";
        case PatternParameter::GridSpacing:
            return "GridSpacing";
        case PatternParameter::Thickness:
            return "Thickness";
        case PatternParameter::Offset:
            return "Offset";
        case PatternParameter::Polarity:
            return "Polarity";
        case PatternParameter::Encoding:
            return "Encoding";
    }
    return "";
}

}  // namespace lmlib64
