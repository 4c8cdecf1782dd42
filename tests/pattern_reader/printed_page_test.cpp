// Tests the whole way from the parameters of a pattern to a reading. The parameters are those that LmCalTab writes. The
// camera library makes a PDF from them, and another program renders its pages. A simulated camera photographs each page
// from the side, and the reader reads the photographs. The expected values and corners are derived only from the
// parameters and the constant planeOrigin, not from the library's output.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "camera_library/lmlib64.h"
#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/printed_pattern.h"
#include "tests/camera_library/rendered_page.h"

namespace {

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;
using pattern_reader::PatternValues;

// How a page is rendered, and from which direction it is photographed. Angles are in degrees.
struct View {
    int dotsPerInch;
    double tilt;
    double tiltAxis;  // angle in the page from the x axis to the axis of the tilt, positive towards y
    double roll;      // clockwise, about the line of sight
};

struct PrintedPattern {
    const char *name;
    const char *parameters;  // an element of "Patterns", as LmCalTab writes it
    View view;
    PatternKind kind;
    double gridSpacing;  // in millimetres, from the parameters; the pattern's information block need not contain it
    bool polarity = true;
    cv::Size corners{15, 15};  // number of corners or marks in x and y
    int tile = -1;             // number of the tile that the reader must find; -1 if the pattern is no tile
    cv::Point cornerOffset{};  // offset of a Flexible pattern, in half grid spacings
    std::optional<PatternValues> values{};
};

void PrintTo(const PrintedPattern &pattern, std::ostream *stream) {
    *stream << pattern.name;
}

PatternValues spacingAndThickness(double gridSpacing, double thickness) {
    PatternValues values;
    values.gridSpacing = gridSpacing;
    values.thickness = thickness;
    return values;
}

PatternValues offsetInSpacings(int x, int y) {
    PatternValues values;
    values.offset = cv::Point(x, y);
    return values;
}

// Saves patterns through the interface that LmCalTab uses. `patterns` are the elements of "Patterns".
void savePatterns(const std::string &patterns, const std::string &fileName) {
    std::int32_t result = 0;
    const std::string slot = lmLibMakeUniqueItem(&result, "/Execute", "PrintedPage");
    lmLibSetJson(&result, (slot + "/Parameters").c_str(), (R"({"Patterns": [)" + patterns + "]}").c_str());
    ASSERT_EQ(result, LmLibResultOperationSucceeded) << patterns;
    lmLibSetString(&result, (slot + "/Parameters/Filename").c_str(), fileName.c_str());
    lmLibSetString(&result, (slot + "/Command").c_str(), "GenerateCalibrationPattern");
    lmLibWaitForType(&result, (slot + "/Command").c_str(), LmLibTypeNull, 1);
    ASSERT_EQ(result, LmLibResultOperationSucceeded);
    const char *error = lmLibGetString(&result, (slot + "/Result/ErrorText").c_str());
    ASSERT_NE(result, LmLibResultOperationSucceeded) << error;
    lmLibErase(&result, slot.c_str());
}

// Returns the map from the page's pixels to a picture of the same size, taken by a pinhole camera that looks at the
// page's middle.
cv::Matx33d homographyOf(const View &view, cv::Size page) {
    const cv::Point2d middle((page.width - 1) / 2.0, (page.height - 1) / 2.0);
    const double focalLength = 1.5 * page.height;
    const double axis = view.tiltAxis * CV_PI / 180;
    cv::Matx33d tilt;
    cv::Rodrigues(cv::Vec3d(std::cos(axis), std::sin(axis), 0) * (view.tilt * CV_PI / 180), tilt);
    cv::Matx33d roll;
    cv::Rodrigues(cv::Vec3d(0, 0, view.roll * CV_PI / 180), roll);
    const cv::Matx33d rotation = roll * tilt;
    const cv::Matx33d camera(focalLength, 0, middle.x, 0, focalLength, middle.y, 0, 0, 1);
    const cv::Matx33d pose(rotation(0, 0), rotation(0, 1), 0, rotation(1, 0), rotation(1, 1), 0, rotation(2, 0),
                           rotation(2, 1), focalLength);
    return camera * pose * cv::Matx33d(1, 0, -middle.x, 0, 1, -middle.y, 0, 0, 1);
}

// Returns a picture of the page on a grey table, slightly out of focus.
cv::Mat photographOf(const cv::Mat &page, const cv::Matx33d &homography) {
    cv::Mat picture;
    cv::warpPerspective(page, picture, homography, page.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(110));
    cv::GaussianBlur(picture, picture, {}, 0.7);
    return picture;
}

// Returns the lattice coordinate of the pattern's middle along one axis. The page has the same middle. In tiles and
// plates, the middle is at 8. A Flexible pattern has a corner at planeOrigin + offset. If the number of corners is odd,
// this corner is in the middle. If the number is even, the middle is half a step farther along the axis.
double middleInLattice(PatternKind kind, int corners, int offset) {
    if (kind != PatternKind::Plane) {
        return 8;
    }
    return pattern_code::planeOrigin + offset + (corners % 2 == 0 ? 0.5 : 0.0);
}

void expectCorners(const PrintedPattern &asked, const PatternReading &reading, const cv::Matx33d &homography,
                   cv::Size page) {
    const cv::Point2d middle(middleInLattice(asked.kind, asked.corners.width, asked.cornerOffset.x),
                             middleInLattice(asked.kind, asked.corners.height, asked.cornerOffset.y));
    const double pixelsPerStep = asked.gridSpacing / 2 * asked.view.dotsPerInch / 25.4;
    std::set<std::pair<int, int>> seen;
    double farthest = 0;
    for (const pattern_reader::PatternCorner &corner : reading.corners) {
        seen.emplace(corner.lattice.x, corner.lattice.y);
        const cv::Vec3d onPage((page.width - 1) / 2.0 + (corner.lattice.x - middle.x) * pixelsPerStep,
                               (page.height - 1) / 2.0 + (corner.lattice.y - middle.y) * pixelsPerStep, 1);
        const cv::Vec3d expected = homography * onPage;
        farthest = std::max(farthest, std::hypot(expected[0] / expected[2] - double(corner.image.x),
                                                 expected[1] / expected[2] - double(corner.image.y)));
    }
    EXPECT_EQ(seen.size(), reading.corners.size());
    EXPECT_EQ(reading.corners.size(), static_cast<std::size_t>(asked.corners.area()));
    // The page is rounded to whole pixels, so its middle is known only to half a pixel in x and y.
    EXPECT_LT(farthest, 1.0);
    testing::Test::RecordProperty("farthestCorner", std::to_string(farthest));
}

void expectSameLength(std::optional<double> actual, std::optional<double> expected) {
    ASSERT_EQ(actual.has_value(), expected.has_value());
    if (expected) {
        EXPECT_NEAR(*actual, *expected, 1e-9);
    }
}

void expectValues(const std::optional<PatternValues> &actual, const std::optional<PatternValues> &expected) {
    ASSERT_EQ(actual.has_value(), expected.has_value());
    if (expected) {
        expectSameLength(actual->gridSpacing, expected->gridSpacing);
        expectSameLength(actual->thickness, expected->thickness);
        EXPECT_EQ(actual->offset, expected->offset);
        EXPECT_EQ(actual->assemblyPattern, expected->assemblyPattern);
    }
}

// Expects the correct coordinates of the corners in millimetres, both from the PDF and from the grid spacing alone.
void expectMillimetres(const PrintedPattern &asked, const PatternReading &reading, const std::string &pdf) {
    const auto fromFile = pattern_reader::objectPoints(reading, pattern_reader::loadPrintedPatterns(pdf));
    ASSERT_TRUE(fromFile);
    const std::vector<cv::Point3d> fromSpacing = pattern_reader::objectPoints(reading, asked.gridSpacing);
    ASSERT_EQ(fromFile->size(), reading.corners.size());
    ASSERT_EQ(fromSpacing.size(), reading.corners.size());
    const double origin = asked.kind == PatternKind::Plane ? pattern_code::planeOrigin : 8;
    const cv::Point offset = asked.values && asked.values->offset ? 2 * *asked.values->offset : cv::Point();
    for (std::size_t i = 0; i < reading.corners.size(); i++) {
        const cv::Point2d steps = cv::Point2d(reading.corners[i].lattice + offset) - cv::Point2d(origin, origin);
        const cv::Point3d expected(steps.x * asked.gridSpacing / 2, steps.y * asked.gridSpacing / 2, 0);
        EXPECT_LT(cv::norm(fromSpacing[i] - expected), 1e-6);
        // LmCalTab's form rounds the offset of a Flexible pattern to hundredths of a millimetre.
        EXPECT_LT(cv::norm((*fromFile)[i] - expected), asked.kind == PatternKind::Plane ? 0.01 : 2e-6);
    }
}

void expectPage(const PrintedPattern &asked, const std::string &pdf, int number) {
    const cv::Mat page = renderPage(pdf, number, asked.view.dotsPerInch);
    ASSERT_FALSE(page.empty());
    const cv::Matx33d homography = homographyOf(asked.view, page.size());
    const std::vector<PatternReading> readings = pattern_reader::readPatterns(photographOf(page, homography));
    ASSERT_EQ(readings.size(), 1U);
    const PatternReading &reading = readings.front();
    EXPECT_EQ(reading.kind, asked.kind);
    EXPECT_EQ(reading.tile, asked.tile);
    expectValues(reading.values, asked.values);
    expectCorners(asked, reading, homography, page.size());
    expectMillimetres(asked, reading, pdf);
    if (asked.kind != PatternKind::Plate) {
        EXPECT_EQ(reading.topLeftSquareDark, asked.polarity);
    }
    if (asked.kind == PatternKind::Tile) {
        EXPECT_EQ(reading.evenSquaresDark, asked.polarity);
    }
}

std::string pageCount(const std::string &pdf) {
    return outputOf("pdfinfo '" + pdf + "' | sed -n 's/^Pages: *//p'");
}

// LmCalTab's form rounds the lengths that it computes to hundredths of a millimetre, and writes the rounded values. So
// they are rounded here, too.
const PrintedPattern printedPatterns[] = {
    {"Official",
     R"({"Type": "Plate24", "GridSpacing": 24.0, "Thickness": 3.0, "Polarity": true})",
     View{60, 30, 20, 15},
     PatternKind::Tile,
     24,
     true,
     {15, 15},
     0,
     {},
     spacingAndThickness(24, 3)},
    {"Single",
     R"({"Type": "SingleCustom", "GridSpacing": 12.0, "Thickness": 5.0, "Polarity": true})",
     View{90, 35, -60, -100},
     PatternKind::Tile,
     12,
     true,
     {15, 15},
     0,
     {},
     spacingAndThickness(12, 5)},
    {"SingleInverted",
     R"({"Type": "SingleCustom", "GridSpacing": 16.0, "Thickness": 0.0, "Polarity": false})",
     View{70, 25, 80, 170},
     PatternKind::Tile,
     16,
     false,
     {15, 15},
     0,
     {},
     spacingAndThickness(16, 0)},
    {"Flexible",
     R"({"Type": "Flexible", "GridSize": [11, 20], "GridSpacing": 12.5, "Offset": [-25.0, 256.25], "Polarity": true})",
     View{80, 30, 45, 40},
     PatternKind::Plane,
     12.5,
     true,
     {11, 20},
     -1,
     {-4, 41}},
    {"FlexibleInverted",
     R"({"Type": "Flexible", "GridSize": [8, 7], "GridSpacing": 23.33, "Offset": [11.67, -1049.85],
         "Polarity": false})",
     View{60, 20, 110, -75},
     PatternKind::Plane,
     23.33,
     false,
     {8, 7},
     -1,
     {1, -90}},
    {"FlexibleWithoutOffset",
     R"({"Type": "Flexible", "GridSize": [31, 14], "GridSpacing": 11.1, "Offset": [0.0, 0.0], "Polarity": true})",
     View{100, 15, 0, 5},
     PatternKind::Plane,
     11.1,
     true,
     {31, 14}},
    {"PlateWithThickness",
     R"({"GridSpacing": 12.56, "Thickness": 1.25, "Encoding": true})",
     View{100, 25, 30, 65},
     PatternKind::Plate,
     12.56,
     true,
     {7, 7},
     -1,
     {},
     spacingAndThickness(12.56, 1.25)},
    {"PlateWithOffset",
     R"({"GridSpacing": 18.75, "Offset": [-56.25, 2381.25], "Encoding": true})",
     View{80, 20, -35, -150},
     PatternKind::Plate,
     18.75,
     true,
     {7, 7},
     -1,
     {},
     offsetInSpacings(-3, 127)},
};

class PrintedPage : public testing::TestWithParam<PrintedPattern> {};

TEST_P(PrintedPage, readsBackWhatWasAskedFor) {
    const TemporaryFolder folder;
    const std::string pdf = folder.file("pattern.pdf");
    ASSERT_NO_FATAL_FAILURE(savePatterns(GetParam().parameters, pdf));
    EXPECT_EQ(pageCount(pdf), "1\n");
    expectPage(GetParam(), pdf, 1);
}

INSTANTIATE_TEST_SUITE_P(Types, PrintedPage, testing::ValuesIn(printedPatterns),
                         [](const auto &each) { return std::string(each.param.name); });

TEST(PrintedAssembly, readsEveryPatternOfOneFileFromItsOwnPage) {
    constexpr int patternCount = 18;
    for (const bool polarity : {true, false}) {
        std::string patterns;
        for (int number = 0; number < patternCount; ++number) {
            patterns += number == 0 ? "" : ", ";
            patterns += R"({"Type": "Assembly", "GridSpacing": 16.0, "AssemblyPattern": )" + std::to_string(number);
            patterns += polarity ? R"(, "Polarity": true})" : R"(, "Polarity": false})";
        }
        const TemporaryFolder folder;
        const std::string pdf = folder.file("assembly.pdf");
        ASSERT_NO_FATAL_FAILURE(savePatterns(patterns, pdf));
        EXPECT_EQ(pageCount(pdf), "18\n");
        for (int number = 0; number < patternCount; ++number) {
            SCOPED_TRACE("pattern " + std::to_string(number) + (polarity ? "" : ", inverted"));
            PatternValues values;
            values.gridSpacing = 16;
            values.assemblyPattern = number;
            const View view{75, 25, 40.0 * number, 20.0 * number};
            expectPage({"Assembly", "", view, PatternKind::Tile, 16, polarity, {15, 15}, number + 1, {}, values}, pdf,
                       number + 1);
        }
    }
}

}  // namespace
