// Compares docs/commands.md with the parser: the document must have exactly the parameters that the parser allows, with
// the parser's ranges.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "camera_library/output/file_formats.h"
#include "camera_library/pattern/number_text.h"
#include "camera_library/pattern/pattern_types.h"
#include "tests/camera_library/pattern_command.h"

namespace {

using lmlib64::outcomeOf;
using Names = std::set<std::string>;

std::string document() {
    std::ostringstream text;
    text << std::ifstream(COMMANDS_DOCUMENT).rdbuf();
    return text.str();
}

Names namesIn(const std::string &text, const char *pattern) {
    Names names;
    const std::regex expression(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

// The part of the document from a heading to the next one. Each row of its tables begins with a parameter's name.
std::string section(const std::string &heading) {
    const std::string text = document();
    const std::size_t begin = text.find("\n" + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    return text.substr(begin, text.find("\n#", begin + heading.size()) - begin);
}

// The names that the parser lists as allowed when it refuses a parameter that does not exist.
Names allowed(const std::string &parameters) {
    const std::string text = outcomeOf(lmlib64::nodeFromJson(parameters));
    return namesIn(text.substr(std::min(text.size(), text.find("allowed parameters are"))), "\"([A-Za-z]+)\"");
}

TEST(CommandDocument, hasTheParametersThatTheParserAllows) {
    EXPECT_EQ(namesIn(section("## GenerateCalibrationPattern"), "\n\\| `(\\w+)`"), allowed(R"({"Bogus": [1, 0]})"));

    // The document's table of types has one column for each entry of PatternTypes(), in the same order.
    std::map<std::string, Names> columnsOf;
    std::istringstream lines(section("### A pattern"));
    const std::regex row("\\| `(\\w+)` \\| (yes|no) \\| (yes|no) \\| (yes|no) \\| (yes|no) \\| (yes|no) \\|");
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, row)) {
            for (std::size_t column = 0; column < 5; ++column) {
                if (match[column + 2] == "yes") {
                    columnsOf[std::to_string(column)].insert(match[1]);
                }
            }
        }
    }
    std::size_t column = 0;
    for (const lmlib64::PatternType &type : lmlib64::PatternTypes()) {
        const std::string name =
            type.selectedBy == lmlib64::SelectedBy::CatalogueBoard ? "Plate3" : std::string(type.name);
        const std::string typeText = name.empty() ? "" : R"("Type": ")" + name + R"(", )";
        EXPECT_EQ(columnsOf[std::to_string(column++)], allowed(R"({"Patterns": [{)" + typeText + R"("Bogus": 1}]})"))
            << name;
    }
    EXPECT_EQ(column, columnsOf.size());
}

TEST(CommandDocument, hasTheRangesAndFormatsOfTheParser) {
    const std::string text = document();
    const auto range = [](const lmlib64::NumberRange &each) {
        return lmlib64::numberText(each.minimum) + " to " + lmlib64::numberText(each.maximum);
    };
    const std::pair<const char *, std::string> rows[] = {
        {"GridSize", "two integers, " + range(lmlib64::gridSizeRange)},
        {"AssemblyPattern", "integer, " + range(lmlib64::assemblyPatternRange)},
        {"GridSpacing", "0 or " + range({lmlib64::smallestExtent, lmlib64::gridSpacingRange.maximum, ""})},
        {"Thickness", range(lmlib64::thicknessRange)},
        {"Offset", "two numbers, " + range(lmlib64::offsetRange)},
    };
    for (const auto &[name, values] : rows) {
        EXPECT_NE(text.find("| `" + std::string(name) + "` | " + values), std::string::npos) << name << ": " << values;
    }
    for (const auto &[name, kind] : {std::pair("ImageSize", "integer"), std::pair("Resolution", "integer"),
                                     std::pair("PrintScale", "two numbers")}) {
        const std::string error = outcomeOf(lmlib64::nodeFromJson(
            R"({"Filename": "a.pdf", "Patterns": [{"GridSpacing": 1}], ")" + std::string(name) + R"(": [1, 0]})"));
        std::smatch match;
        ASSERT_TRUE(std::regex_search(error, match, std::regex("from ([0-9.]+ to [0-9]+(\\.[0-9]+)?)"))) << error;
        EXPECT_NE(text.find("| `" + std::string(name) + "` | " + kind + ", " + match[1].str()), std::string::npos)
            << name;
    }
    Names endings;
    for (const lmlib64::FileFormat &format : lmlib64::FileFormats()) {
        endings.insert(std::string(format.ending));
    }
    EXPECT_EQ(namesIn(section("## GenerateCalibrationPattern"), "`(\\.[a-z]+)`"), endings);
}

}  // namespace
