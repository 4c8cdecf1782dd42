// Tests the PDF and JSON files of the pattern command as documents: their properties, contents and size.
#include "camera_library/output/caption_font.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

using PatternFile = SavedPattern;

// Returns the first error in the PDF's table of objects; empty if there is none. Each entry must be 20 bytes long and
// state the position of its object. Most programs that read PDF files do not report a wrong entry but search the file
// for the object.
std::string complaintAboutTable(const std::string &bytes) {
    const std::size_t start = std::stoul(bytes.substr(bytes.rfind("startxref\n") + 10));
    const std::size_t first = bytes.find("0000000000 65535 f \n", start);
    const int count = std::stoi(bytes.substr(start + std::string("xref\n0 ").size()));
    if (bytes.compare(start, 7, "xref\n0 ") != 0 || first == std::string::npos) {
        return "no table";
    }
    for (int number = 1; number < count; ++number) {
        const std::string entry = bytes.substr(first + static_cast<std::size_t>(number) * 20, 20);
        const std::string object = std::to_string(number) + " 0 obj\n";
        if (entry.substr(10) != " 00000 n \n" || bytes.compare(std::stoul(entry), object.size(), object) != 0) {
            return "no object " + std::to_string(number) + " at " + entry;
        }
    }
    return "";
}

TEST_F(PatternFile, isAValidPdfThatSaysWhatItIsAndPrintsUnscaled) {
    for (const std::string &pattern : allTypes) {
        SCOPED_TRACE(pattern);
        savePdf(pattern);
        EXPECT_NE(outputOf("qpdf --check '" + pdf + "'").find("No syntax or stream encoding errors"),
                  std::string::npos);
        EXPECT_EQ(complaintAboutTable(readBytes(pdf)), "");
        EXPECT_EQ(outputOf("pdfimages -list '" + pdf + "' | tail -n +3"), "");  // vector only
        EXPECT_LT(std::filesystem::file_size(pdf), 60000U);
        const std::string information = outputOf("pdfinfo '" + pdf + "'");
        EXPECT_NE(information.find("595.276 x 841.89 pts (A4)"), std::string::npos) << information;
        EXPECT_NE(information.find("Title: "), std::string::npos);
        EXPECT_NE(information.find("Creator:         LmLib64 "), std::string::npos) << information;
        EXPECT_EQ(information.find("CreationDate"), std::string::npos);
        EXPECT_NE(outputOf("pdffonts '" + pdf + "'").find("TrueType          WinAnsi          yes yes"),
                  std::string::npos);

        const Json objects = parsedJson(outputOf("qpdf --json=1 '" + pdf + "'")).at("objects");
        const Json &trailer = objects.at("trailer");
        EXPECT_EQ(trailer.at("/ID").size(), 2U);
        EXPECT_EQ(objects.at(trailer.at("/Root").get<std::string>()).at("/ViewerPreferences"),
                  parsedJson(R"({"/PrintScaling": "/None", "/PickTrayByPDFSize": true, "/DisplayDocTitle": true})"));
        const std::size_t jsonSize = outputOf("qpdf --show-attachment=pattern.json '" + pdf + "'").size();
        for (const std::string &entry : {std::string(R"("/Encoding":"/WinAnsiEncoding",)"),
                                         R"("/Length1":)" + std::to_string(captionFontFile().size()) + "}",
                                         R"("/Params":{"/Size":)" + std::to_string(jsonSize) + "}"}) {
            EXPECT_NE(objects.dump().find(entry), std::string::npos) << entry;
        }
    }
    savePdf(plateWithOffset);
    EXPECT_NE(outputOf("pdfinfo '" + pdf + "'").find("Title:           Halcon-style plate 7 × 7, grid spacing 10 mm\n"),
              std::string::npos);
}

TEST_F(PatternFile, attachesWhatTheJsonFileHolds) {
    savePdf(flexible);
    const std::string json = folder.file("pattern.json");
    ASSERT_EQ(save(flexible, json), "");
    EXPECT_EQ(outputOf("qpdf --show-attachment=pattern.json '" + pdf + "'"), readBytes(json));
    EXPECT_EQ(description["Format"], "LmLib64Pattern");
    EXPECT_EQ(description["Version"], 1);
    const Json &p = first();
    EXPECT_EQ(p["Points"].size(), 11U * 20U);
    // With 11 columns and 20 rows, the reference point is in column 5 and row 9. It lies at the offset.
    EXPECT_EQ(p["ReferenceIndex"], parsedJson("[5, 9]"));
    EXPECT_EQ(p["Points"][9 * 11 + 5], parsedJson("[5, 9, 20.055, -6.685]"));
    EXPECT_EQ(p["Points"][9 * 11 + 6], parsedJson("[6, 9, 26.74, -6.685]"));
    // The command makes the same file again from the parameters in the description.
    ASSERT_EQ(save(p["Parameters"].dump(), folder.file("again.pdf")), "");
    EXPECT_EQ(readBytes(folder.file("again.pdf")), readBytes(pdf));
}

// A client may round an offset to hundredths of a millimetre. The pattern's code then holds the closest whole number of
// grid spacings (plate) or of half grid spacings (Flexible).
TEST_F(PatternFile, listsWhatTheCodeHolds) {
    const struct {
        const char *pattern;
        const char *member;  // of "Code"
        const char *value;
    } cases[]{
        {R"({"Type": "Plate24"})", "/Block/Thickness", "3"},
        {R"({"GridSpacing": 0.63, "Thickness": 100})", "/Block/Thickness", "100"},
        {R"({"GridSpacing": 0.63, "Offset": [4.41, 0]})", "/Block/Spacings", "[7, 0]"},
        {R"({"GridSpacing": 1.13, "Offset": [-144.64, 143.51]})", "/Block/Spacings", "[-128, 127]"},
        {R"({"Type": "Assembly", "GridSpacing": 96, "AssemblyPattern": 17})", "/Block/AssemblyPattern", "17"},
        {R"({"Type": "Assembly", "GridSpacing": 96, "AssemblyPattern": 17})", "/Tile", "18"},
        {R"({"Type": "Flexible", "GridSpacing": 12.5, "GridSize": [15, 15], "Offset": [18.75, -6.25]})", "/PlaneSquare",
         "[131, 127]"},
        // 7 times 6.165 mm is 43.155 mm, which a form with two decimals shows as 43.15 or 43.16.
        {R"({"Type": "Flexible", "GridSpacing": 12.33, "GridSize": [4, 5], "Offset": [43.16, 43.15]})", "/HalfSpacings",
         "[7, 7]"},
    };
    for (const auto &[pattern, member, value] : cases) {
        savePdf(pattern);
        EXPECT_EQ(first()["Code"].at(Json::json_pointer(member)), parsedJson(value)) << pattern;
    }
}

}  // namespace
}  // namespace lmlib64
