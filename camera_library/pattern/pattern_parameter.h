// The parameters that describe one pattern: their names, their order and the ranges of their values. pattern_types.cpp
// lists the parameters of each type of pattern.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace lmlib64 {

// The parameters, in the order in which texts and files list them.
enum class PatternParameter { Type, GridSize, AssemblyPattern, GridSpacing, Thickness, Offset, Polarity, Encoding };

// Returns the name of the parameter in a command's parameters and in the pattern file.
std::string_view nameOf(PatternParameter parameter);

// Some of the parameters, to iterate over.
class PatternParameterList {
public:
    constexpr PatternParameterList(std::initializer_list<PatternParameter> list) {
        for (const PatternParameter parameter : list) {
            parameters[count++] = parameter;
        }
    }
    constexpr const PatternParameter *begin() const { return parameters.data(); }
    constexpr const PatternParameter *end() const { return parameters.data() + count; }

private:
    std::array<PatternParameter, 8> parameters{};  // all lists are constexpr, so a longer one does not compile
    std::size_t count = 0;
};

// An inclusive range and the unit that follows it in texts: "" or "mm".
struct NumberRange {
    double minimum;
    double maximum;
    const char *unit;
};

constexpr NumberRange gridSizeRange{2, 200, ""};  // each of the two numbers
constexpr NumberRange assemblyPatternRange{0, 17, ""};
constexpr NumberRange gridSpacingRange{0, 1000, "mm"};  // 0, or at least smallestExtent
constexpr double smallestExtent = 0.001;                // mm
constexpr NumberRange thicknessRange{0, 100, "mm"};
constexpr NumberRange offsetRange{-9999, 9999, "mm"};  // each of the two numbers

}  // namespace lmlib64
