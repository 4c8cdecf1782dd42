// Tests which parameters the pattern command accepts, and how it refuses others.
#include <gtest/gtest.h>

#include <vector>

#include "camera_library/output/file_formats.h"
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
    std::vector<std::string> named;  // what the error text must contain: the parameter, the value, what is allowed
};

std::string onePattern(const std::string &pattern) {
    return R"({"ImageSize": 100, "Patterns": [)" + pattern + "]}";
}

const std::string single = R"({"Type": "SingleCustom", "GridSpacing": 12})";

TEST(PatternParameters, namesParameterValueAndRangeWhenItRefusesAValue) {
    const std::vector<Refusal> refusals{
        {"{}", {"\"Patterns\"", "missing", "1 to 64"}},
        {R"({"ImageSize": 100, "Patterns": []})", {"\"Patterns\"", "1 to 64"}},
        {onePattern(repeated(single, 65)), {"\"Patterns\"", "array of 65", "1 to 64"}},
        {onePattern(single + R"(, {"Type": "SingleCustom"})"), {R"("Patterns"[1]/"GridSpacing")", "missing"}},
        {R"({"Patterns": [)" + single + "]}", {"\"ImageSize\"", "\"Filename\"", "missing"}},
        {R"({"ImageSize": 15, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "15", "16 to 8000"}},
        {R"({"ImageSize": 100.5, "Patterns": [)" + single + "]}", {"\"ImageSize\"", "100.5", "integer"}},
        {R"({"ImageSize": 8000, "Patterns": [)" + repeated(single, 5) + "]}",
         {"\"ImageSize\"", "8000", "5 patterns", "256000000"}},
        {R"({"ImageSize": 100, "Resolution": 19, "Patterns": [)" + single + "]}",
         {"\"Resolution\"", "19", "20 to 4800 dots per inch"}},
        {R"({"ImageSize": 100, "PrintScale": [1, 1.11], "Patterns": [)" + single + "]}",
         {"\"PrintScale\"", "1.11", "0.9 to 1.1"}},
        {R"({"ImageSize": 100, "Paper": "A9", "Patterns": [)" + single + "]}",
         {"\"Paper\"", "A9", "\"Tabloid\"", "5080"}},
        {R"({"ImageSize": 100, "Paper": [210, 149], "Patterns": [)" + single + "]}",
         {"\"Paper\"", "149", "150 to 5080 mm"}},
        {R"({"ImageSize": 100, "Sheets": true, "Patterns": [)" + single + "]}", {"\"Sheets\"", "true", "\"Paper\""}},
        {R"({"ImageSize": 100, "Colour": "red", "Patterns": [)" + single + "]}", {"\"Colour\"", "red", "\"Encoding\""}},
        {R"({"Filename": 3, "Patterns": [)" + single + "]}", {"\"Filename\"", "3", "string"}},
        {onePattern(R"({"Type": "singlecustom", "GridSpacing": 12})"),
         {"\"Type\"", "singlecustom", "\"SingleCustom\""}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 1000.01})"),
         {"\"GridSpacing\"", "1000.01", "0 to 1000 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 1e-300})"),
         {"\"GridSpacing\"", "1e-300", "0.001 to 1000 mm"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": "12"})"), {"\"GridSpacing\"", "\"12\"", "number"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 12, "GridSize": [15, 15]})"),
         {"\"GridSize\"", "[15, 15]", "SingleCustom", "\"Thickness\""}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15, 201]})"),
         {"\"GridSize\"", "201", "2 to 200"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15]})"),
         {"\"GridSize\"", "array of 1", "array of two"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [15, 15.5]})"),
         {"\"GridSize\"", "15.5", "integer"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [9, 6], "Offset": [0, 9999.5]})"),
         {"\"Offset\"", "9999.5", "-9999 to 9999 mm"}},
        {onePattern(R"({"Type": "Assembly", "GridSpacing": 12, "AssemblyPattern": 18})"),
         {"\"AssemblyPattern\"", "18", "0 to 17"}},
        {onePattern(R"({"Type": "Assembly", "GridSpacing": 12, "Offset": [0, 0]})"), {"\"Offset\"", "Assembly"}},
        {onePattern(R"({"GridSpacing": 12, "Encoding": 0})"), {"\"Encoding\"", "0", "true or false"}},
        {onePattern(R"({"Type": "SingleCustom", "GridSpacing": 12.345})"),
         {"\"GridSpacing\"", "12.345", "0.01 mm", "0.01 to 130 mm", "\"Encoding\" is false"}},
        {onePattern(R"({"Type": "Assembly", "GridSpacing": 130.01})"), {"\"GridSpacing\"", "130.01", "130 mm"}},
        {onePattern(R"({"GridSpacing": 12, "Thickness": 1.005})"),
         {"\"Thickness\"", "1.005", "0.01 mm", "0 to 100 mm"}},
        {onePattern(R"({"GridSpacing": 12, "Offset": [12, 13]})"),
         {"\"Offset\"", "[12, 13]", "of 12 mm", "-1536 to 1524 mm"}},
        {onePattern(R"({"GridSpacing": 10, "Offset": [0, 1280]})"), {"\"Offset\"", "[0, 1280]", "-1280 to 1270 mm"}},
        {onePattern(R"({"GridSpacing": 3.8, "Offset": [0, 1]})"), {"\"Offset\"", "from -486.4 to 482.6 mm"}},
        {onePattern(R"({"GridSpacing": 100, "Offset": [0, 1]})"), {"\"Offset\"", "from -9900 to 9900 mm"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 12, "GridSize": [9, 6], "Offset": [0, 6.1]})"),
         {"\"Offset\"", "[0, 6.1]", "6 mm (half the grid spacing)", "\"Encoding\" is false"}},
        {onePattern(R"({"Type": "Flexible", "GridSpacing": 2, "GridSize": [91, 200], "Offset": [90, 36]})"),
         {"\"Offset\"", "[90, 36]", "-90 to 90 mm in x", "-36 to 35 mm in y"}},
        {onePattern(R"({"Type": "Plate12", "GridSpacing": 12.5})"), {"\"GridSpacing\"", "12.5", "12 mm", "Plate12"}},
    };
    for (const Refusal &refusal : refusals) {
        const std::string outcome = outcomeOf(nodeFromJson(refusal.parameters));
        EXPECT_EQ(outcome.rfind("InvalidParameter: ", 0), 0U) << refusal.parameters << "\n" << outcome;
        for (const std::string &name : refusal.named) {
            EXPECT_NE(outcome.find(name), std::string::npos) << refusal.parameters << "\n" << outcome << "\n" << name;
        }
    }
}

TEST(PatternParameters, allowsAPlainPatternToHaveValuesThatNoCodeCanHold) {
    const char *patterns[]{
        R"({"Type": "SingleCustom", "GridSpacing": 12.345})",
        R"({"Type": "Assembly", "GridSpacing": 1000})",
        R"({"GridSpacing": 12, "Offset": [12, 13]})",
        R"({"Type": "Flexible", "GridSpacing": 2, "GridSize": [91, 200], "Offset": [91, 36.7]})",
    };
    for (const char *pattern : patterns) {
        EXPECT_NE(outcomeOf(nodeFromJson(onePattern(pattern))), "") << pattern;
        EXPECT_FALSE(preview(pattern, 100, false).bytes.empty()) << pattern;
    }
    EXPECT_EQ(outcomeOf(nodeFromJson(onePattern(R"({"GridSpacing": 12, "Offset": [1, 2], "Encoding": false})"))), "");
}

TEST(PatternParameters, shortensAndCleansAClientsTextInErrors) {
    NodeObject pattern{{"Type", "\n" + std::string(100000, 'x')}, {"GridSpacing", 12.0}};
    const std::string outcome = outcomeOf(NodeObject{{"ImageSize", 100}, {"Patterns", NodeArray{pattern}}});
    EXPECT_LT(outcome.size(), 500U);
    EXPECT_EQ(outcome.find('\n'), std::string::npos) << outcome;
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
    for (const char *paper : {R"("Paper": "A4")", R"("Paper": "A4", "Sheets": false)"}) {
        Node tooLarge = nodeFromJson(std::string("{") + paper + R"(, "Patterns": [{"GridSpacing": 40}]})");
        std::get<NodeObject>(tooLarge.value)["Filename"] = folder.file("pattern.pdf");
        EXPECT_NE(outcomeOf(tooLarge).find("\"Sheets\" to true"), std::string::npos);
    }
    Node tooManyPixels = nodeFromJson(R"({"Resolution": 4800, "Patterns": [{"GridSpacing": 40}]})");
    std::get<NodeObject>(tooManyPixels.value)["Filename"] = folder.file("pattern.png");
    const std::string complaint = outcomeOf(tooManyPixels);
    EXPECT_EQ(complaint.rfind("PatternTooLarge: ", 0), 0U) << complaint;
    EXPECT_NE(complaint.find("79370"), std::string::npos) << complaint;  // the height of A3 in pixels
    for (const char *name : {"pattern", "pattern.xyz", "pattern.pdf.bak", "pdf", ""}) {
        const std::string outcome = save(single, *name == '\0' ? "" : folder.file(name));
        EXPECT_NE(outcome.find(fileEndings()), std::string::npos) << outcome;
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

}  // namespace
}  // namespace lmlib64
