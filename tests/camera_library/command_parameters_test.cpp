// What the pattern command accepts, and how it refuses the rest.
#include "camera_library/pattern/pattern_parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/camera_library/pattern_command.h"
#include "tests/camera_library/temporary_folder.h"

namespace lmlib64 {
namespace {

std::string repeated(const std::string &element, int count) {
    std::string list;
    for (int i = 0; i < count; ++i) {
        list += (i == 0 ? "" : ", ") + element;
    }
    return list;
}

struct Refusal {
    std::string parameters;
    std::vector<std::string> named;  ///< what the text has to name: parameter, value, what is allowed
};

std::string onePattern(const std::string &pattern) {
    return R"({"ImageSize": 100, "Patterns": [)" + pattern + "]}";
}

const std::string single = R"({"Type": "SingleCustom", "GridSpacing": 12})";

TEST(PatternParameters, refusesWhatIsOutOfRangeNamingParameterValueAndRange) {
    const std::vector<Refusal> refusals{
        {"{}", {"\"Patterns\"", "missing", "1 to 64"}},
        {R"([1])", {"\"Parameters\"", "object"}},
        {R"({"ImageSize": 100, "Patterns": []})", {"\"Patterns\"", "1 to 64"}},
        {R"({"ImageSize": 100, "Patterns": 3})", {"\"Patterns\"", "3", "1 to 64"}},
        {onePattern(repeated(single, 65)), {"\"Patterns\"", "array of 65", "1 to 64"}},
        {onePattern("7"), {"\"Patterns\"[0]", "7", "object"}},
        {onePattern(single + R"(, {"Type": "SingleCustom"})"), {R"("Patterns"[1]/"GridSpacing")", "missing"}},
        {R"({"Patterns": [)" + single + "]}", {"\"ImageSize\"", "\"Filename\"", "missing"}},
        {R"({"ImageSize": 15, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "15", "16 to 8000"}},
        {R"({"ImageSize": 8001, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "8001", "16 to 8000"}},
        {R"({"ImageSize": 100.5, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "100.5", "integer"}},
        {R"({"ImageSize": true, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "true", "integer"}},
        {R"({"ImageSize": 8000, "Patterns": [)" + repeated(single, 5) + "]}",
         {"\"ImageSize\"", "8000", "5 patterns", "256000000"}},
        {R"({"ImageSize": 100, "Encoding": 1, "Patterns": [)" + single + "]}", {"\"Encoding\"", "1", "true or false"}},
        {R"({"ImageSize": 100, "Colour": "red", "Patterns": [)" + single + "]}", {"\"Colour\"", "red", "\"Encoding\""}},
        {R"({"Filename": 3, "Patterns": [)" + single + "]}", {"\"Filename\"", "3", "string"}},
        {onePattern(R"({"Type": "", "GridSpacing": 12})"), {"\"Type\"", "\"\"", "\"Flexible\""}},
        {onePattern(R"({"Type": "singlecustom", "GridSpacing": 12})"),
         {"\"Type\"", "singlecustom", "\"SingleCustom\""}},
        {onePattern(R"({"Type": 1, "GridSpacing": 12})"), {"\"Type\"", "1", "string"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 1000.01})"),
         {"\"GridSpacing\"", "1000.01", "0 to 1000 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": -0.5})"), {"\"GridSpacing\"", "-0.5", "0 to 1000 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 1e-300})"),
         {"\"GridSpacing\"", "1e-300", "0.001 to 1000 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": "12"})"), {"\"GridSpacing\"", "\"12\"", "number"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": null})"), {"\"GridSpacing\"", "null", "number"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 12, "Thickness": 100.5})"),
         {"\"Thickness\"", "100.5", "0 to 100 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 12, "Polarity": "true"})"),
         {"\"Polarity\"", "true or false"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 12, "GridSize": [15, 15]})"),
         {"\"GridSize\"", "[15, 15]", "SingleCustom", "\"Thickness\""}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12})"), {"\"GridSize\"", "missing", "2 to 200"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [1, 15]})"),
         {"\"GridSize\"", "[1, 15]", "2 to 200"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15, 201]})"),
         {"\"GridSize\"", "201", "2 to 200"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15]})"),
         {"\"GridSize\"", "array of 1", "array of two"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15, 15.5]})"),
         {"\"GridSize\"", "15.5", "integer"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [9, 6], "Offset": [0, 9999.5]})"),
         {"\"Offset\"", "9999.5", "-9999 to 9999 mm"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [9, 6], "Encoding": true})"),
         {"\"Encoding\"", "Flexible"}},
        {onePattern(R"({"Type": "Assembly", "GridSpacing": 12, "AssemblyPattern": 18})"),
         {"\"AssemblyPattern\"", "18", "0 to 17"}},
        {onePattern(R"({"Type": "Assembly", "GridSpacing": 12, "Offset": [0, 0]})"), {"\"Offset\"", "Assembly"}},
        {onePattern(R"({"GridSpacing": 12, "AssemblyPattern": 0})"), {"\"AssemblyPattern\"", "Halcon"}},
        {onePattern(R"({"GridSpacing": 12, "Encoding": 0})"), {"\"Encoding\"", "0", "true or false"}},
        {onePattern(R"({"Type": "Plate12", "GridSpacing": 12.5})"), {"\"GridSpacing\"", "12.5", "12 mm", "Plate12"}},
        {onePattern(R"({"Type": "Plate12", "Thickness": 1})"), {"\"Thickness\"", "1", "2 mm", "Plate12"}},
    };
    for (const Refusal &refusal : refusals) {
        const std::string outcome = outcomeOf(nodeFromJson(refusal.parameters));
        EXPECT_EQ(outcome.rfind("InvalidParameter: ", 0), 0U) << refusal.parameters << "\n" << outcome;
        for (const std::string &name : refusal.named) {
            EXPECT_NE(outcome.find(name), std::string::npos) << refusal.parameters << "\n" << outcome << "\n" << name;
        }
        EXPECT_EQ(outcome.find('\n'), std::string::npos) << outcome;
    }
}

TEST(PatternParameters, refusesNumbersThatAreNone) {
    for (const double number : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (const char *name : {"GridSpacing", "Thickness", "Offset"}) {
            NodeObject pattern{{"GridSpacing", 12.0}};
            pattern[name] = std::string(name) == "Offset" ? Node(NodeArray{number, 0.0}) : Node(number);
            NodeObject parameters{{"ImageSize", 100}, {"Patterns", NodeArray{pattern}}};
            EXPECT_NE(outcomeOf(parameters).find(name), std::string::npos) << name << " " << number;
        }
        EXPECT_NE(outcomeOf(NodeObject{{"ImageSize", number}, {"Patterns", NodeArray{nodeFromJson(single)}}})
                      .find("\"ImageSize\""),
                  std::string::npos);
    }
}

TEST(PatternParameters, shortensAndCleansTheTextOfAClient) {
    NodeObject pattern{{"Type", std::string(100000, 'x') + "\n"}, {"GridSpacing", 12.0}};
    const std::string outcome = outcomeOf(NodeObject{{"ImageSize", 100}, {"Patterns", NodeArray{pattern}}});
    EXPECT_LT(outcome.size(), 500U);
}

TEST(PatternParameters, writesNothingWhenAnyParameterIsRefused) {
    const TemporaryFolder folder;
    const std::vector<std::string> patterns{
        single + R"(, {"Type": "Flexible", "GridSize": [300, 3], "GridSpacing": 1})",
        single + R"(, {"Type": "SingleCustom", "GridSpacing": 1000})",  // no PDF page is large enough
        R"({"Type": "SingleCustom", "GridSpacing": 0})",
        R"({"GridSpacing": 0})",
    };
    for (const std::string &pattern : patterns) {
        EXPECT_NE(save(pattern, folder.file("pattern.pdf")), "") << pattern;
    }
    for (const char *name : {"pattern", "pattern.png", "pattern.pdf.bak", "pdf", ""}) {
        const std::string outcome = save(single, *name == '\0' ? "" : folder.file(name));
        EXPECT_NE(outcome.find(".pdf or .json"), std::string::npos) << outcome;
    }
    EXPECT_EQ(folder.entryCount(), 0U);
}

TEST(PatternParameters, acceptsEndingsInUpperAndLowerCase) {
    const TemporaryFolder folder;
    EXPECT_EQ(save(single, folder.file("a.PDF")), "");
    EXPECT_EQ(save(single, folder.file("b.Json")), "");
    EXPECT_EQ(readBytes(folder.file("a.PDF")).substr(0, 5), "%PDF-");
    EXPECT_EQ(readBytes(folder.file("b.Json")).substr(0, 1), "{");
}

TEST(PatternParameters, givesAnEmptyPictureOfAPatternWithoutExtent) {
    for (const char *pattern : {R"({"GridSpacing": 0, "Encoding": false})",
                                R"({"Type": "Flexible", "GridSize": [15, 15], "GridSpacing": 0, "Offset": [0, 0]})"}) {
        const Binary image = preview(pattern, 2000);
        EXPECT_TRUE(image.bytes.empty());
        EXPECT_EQ(image.width, 0);
    }
}

TEST(PatternParameters, fillsInDefaultsOfCatalogueAndParameters) {
    const PatternRequest request = readPatternParameters(nodeFromJson(
        R"({"ImageSize": 100, "Patterns": [{"Type": "Plate24"}, {"Type": "Assembly", "GridSpacing": 8},
            {"GridSpacing": 12.5, "Encoding": false, "Offset": [37.5, -1]}]})"));
    EXPECT_TRUE(request.encoding);
    ASSERT_EQ(request.patterns.size(), 3U);
    EXPECT_EQ(request.patterns[0].gridSpacing, 24.0);
    EXPECT_EQ(request.patterns[0].thickness, 3.0);
    EXPECT_EQ(request.patterns[0].gridSize, (std::array<int, 2>{15, 15}));
    EXPECT_TRUE(request.patterns[0].polarity);
    EXPECT_EQ(request.patterns[1].assemblyNumber, 0);
    EXPECT_EQ(request.patterns[2].kind, PatternKind::Halcon);
    EXPECT_FALSE(request.patterns[2].encoding);
    EXPECT_EQ(request.patterns[2].offset, (std::array<double, 2>{37.5, -1.0}));
}

}  // namespace
}  // namespace lmlib64
