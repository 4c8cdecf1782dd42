// Tests the file formats that store each page in a file of its own. Other programs render SVG files and read DXF files,
// and OpenCV reads PNG files. The results are compared with the page of the PDF. Other tests compare the PDF with the
// preview and with the stated sizes.
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <vector>

#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

constexpr double mmPerInch = 25.4;
constexpr int resolution = 300;
constexpr double pixelsPerMm = resolution / mmPerInch;

class PageFormats : public SavedPattern {
protected:
    // Saves the pattern as PDF and in the format that the ending selects. Returns the name of the second file.
    std::string saveBoth(const std::string &pattern, const std::string &ending, const NodeObject &options = {}) {
        savePdf(pattern);
        std::string file = folder.file("pattern" + ending);
        Node parameters = nodeFromJson(R"({"Patterns": [)" + pattern + "]}");
        std::get<NodeObject>(parameters.value)["Filename"] = file;
        std::get<NodeObject>(parameters.value).insert(options.begin(), options.end());
        if (const std::string failure = outcomeOf(parameters); !failure.empty()) {
            throw std::runtime_error(pattern + ": " + failure);
        }
        return file;
    }

    // Returns the page of an SVG or PDF file, rendered at this test's resolution.
    cv::Mat rendered(const std::string &file) const {
        if (file.substr(file.size() - 4) == ".pdf") {
            return renderPage(file, 1, resolution);
        }
        outputOf("rsvg-convert -b white -z " + std::to_string(resolution / 96.0) + " -o '" + folder.file("svg.png") +
                 "' '" + file + "'");
        return cv::imread(folder.file("svg.png"), cv::IMREAD_GRAYSCALE);
    }

    // The part of an A4 page that the pattern and its quiet zone cover, in whole pixels.
    cv::Rect patternOnA4() const {
        const auto half = [this](std::size_t i) {
            return cvFloor((first()["OuterSize"][i].get<double>() / 2 + first()["QuietZone"].get<double>()) *
                           pixelsPerMm);
        };
        return {cvRound(105 * pixelsPerMm) - half(0), cvRound(148.5 * pixelsPerMm) - half(1), 2 * half(0), 2 * half(1)};
    }
};

// Returns the greatest difference between two pictures after blocks of 6 x 6 pixels have been averaged. They are
// averaged because programs draw edges in different ways. The pictures' sizes may differ by a pixel.
double difference(const cv::Mat &picture, const cv::Mat &expected) {
    EXPECT_NEAR(picture.cols, expected.cols, 1);
    EXPECT_NEAR(picture.rows, expected.rows, 1);
    const cv::Size small(picture.cols / 6, picture.rows / 6);
    const cv::Rect common(0, 0, small.width * 6, small.height * 6);
    cv::Mat a;
    cv::Mat b;
    cv::resize(picture(common), a, small, 0, 0, cv::INTER_AREA);
    cv::resize(expected(common), b, small, 0, 0, cv::INTER_AREA);
    return cv::norm(a, b, cv::NORM_INF);
}

// A checkerboard, a plate, and a plate with dark and light exchanged.
const std::vector<std::string> samples{single, plate, plateWithOffset};

TEST_F(PageFormats, svgDrawsThePageOfThePdf) {
    for (const std::string &pattern : samples) {
        const std::string svg = saveBoth(pattern, ".svg");
        const std::string text = readBytes(svg);
        EXPECT_NE(text.find(R"(width="210mm" height="297mm" viewBox="0 0 210 297")"), std::string::npos);
        const cv::Mat page = rendered(svg);
        const cv::Mat printed = renderPage(pdf, 1, resolution);
        EXPECT_LT(difference(page(patternOnA4()), printed(patternOnA4())), 25.0) << pattern;
        EXPECT_LT(difference(page, printed), 60.0) << pattern;  // letters are spaced differently
        // The JSON text has no characters that XML must escape, so the SVG contains it unchanged.
        const std::string json = outputOf("qpdf --show-attachment=pattern.json '" + pdf + "'");
        EXPECT_NE(text.find("<metadata id=\"pattern.json\">\n" + json + "</metadata>"), std::string::npos) << pattern;
        EXPECT_EQ(text.find("<path", text.find("<path id=\"check-bars\"") + 1), std::string::npos);
    }
}

TEST_F(PageFormats, pngDrawsThePageOfThePdf) {
    for (const std::string &pattern : samples) {
        const cv::Mat page = cv::imread(saveBoth(pattern, ".png", {{"Resolution", 254}}), cv::IMREAD_UNCHANGED);
        ASSERT_EQ(page.type(), CV_8U);
        EXPECT_EQ(page.size(), cv::Size(2100, 2970));
        EXPECT_LT(difference(page, renderPage(pdf, 1, 254)), 35.0) << pattern;
    }
}

TEST_F(PageFormats, pngIsBlackAndWhiteIfTheSquaresAreWholePixels) {
    constexpr int side = 150;  // 6.35 mm at 600 dots per inch; the marks are 50 pixels wide
    const std::string file =
        saveBoth(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.7})", ".png", {{"Resolution", 600}});
    const cv::Mat page = cv::imread(file, cv::IMREAD_UNCHANGED);
    std::vector<cv::Point> dark;
    cv::findNonZero(page(cv::Rect(1500, 2500, 2000, 2000)) == 0, dark);
    const cv::Point corner = cv::boundingRect(dark).tl() + cv::Point(1500, 2500);
    const cv::Mat pattern = page({corner, cv::Size(10 * side, 7 * side)});
    EXPECT_EQ(cv::countNonZero(pattern == 0) + cv::countNonZero(pattern == 255), pattern.size().area());
    const Binary expected = preview(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.7})", 12 * side);
    const cv::Mat seen(expected.height, expected.width, CV_8U, const_cast<std::uint8_t *>(expected.bytes.data()));
    EXPECT_EQ(cv::norm(seen(cv::Rect(side, side, 10 * side, 7 * side)), pattern, cv::NORM_INF), 0.0);

    const std::string bytes = readBytes(file);
    const std::string perMetre("\0\0\x5c\x46", 4);  // 23622, the highest byte first
    EXPECT_NE(bytes.find("pHYs" + perMetre + perMetre + '\1'), std::string::npos);
    const std::size_t text = bytes.find(std::string("pattern.json\0\1\0\0\0", 17));
    ASSERT_NE(text, std::string::npos);
    std::string json(100000, '\0');
    auto size = static_cast<uLongf>(json.size());
    auto compressed = static_cast<uLong>(bytes.size() - text - 17);
    ASSERT_EQ(uncompress2(reinterpret_cast<Bytef *>(json.data()), &size,
                          reinterpret_cast<const Bytef *>(bytes.data() + text + 17), &compressed),
              Z_OK);
    json.resize(size);
    EXPECT_EQ(parsedJson(json)["Resolution"], 600);
    EXPECT_EQ(parsedJson(json)["Patterns"], description["Patterns"]);
}

// The entities on one layer of a DXF file.
struct DxfShapes {
    std::vector<std::vector<cv::Point2d>> polylines;
    std::vector<cv::Vec3d> circles;
    std::vector<cv::Vec3d> texts;  // position and rotation
};

std::map<std::string, DxfShapes> readDxf(const std::string &file) {
    // The script needs a Python package of the system, which only the system's own interpreter finds.
    std::istringstream lines(outputOf("/usr/bin/python3 '" DXF_SHAPES "' '" + file + "'"));
    std::map<std::string, DxfShapes> layers;
    std::string kind;
    std::string layer;
    std::size_t count = 0;
    while (lines >> kind >> layer >> count) {
        std::vector<double> numbers(count);
        for (double &number : numbers) {
            lines >> number;
        }
        DxfShapes &shapes = layers[layer];
        if (kind == "POLYLINE") {
            std::vector<cv::Point2d> &corners = shapes.polylines.emplace_back();
            for (std::size_t i = 0; i < count; i += 2) {
                corners.emplace_back(numbers[i], numbers[i + 1]);
            }
        } else {
            (kind == "CIRCLE" ? shapes.circles : shapes.texts).emplace_back(numbers[0], numbers[1], numbers[2]);
        }
    }
    return layers;
}

// Returns the picture of an A4 page on which the shapes are filled by the even-odd rule.
cv::Mat drawn(const DxfShapes &shapes) {
    constexpr int shift = 6;
    std::vector<std::vector<cv::Point>> outlines;
    const auto onPage = [](cv::Point2d mm) {
        const cv::Point2d pixels = cv::Point2d(mm.x, 297 - mm.y) * pixelsPerMm - cv::Point2d(0.5, 0.5);
        return cv::Point(cvRound(pixels.x * (1 << shift)), cvRound(pixels.y * (1 << shift)));
    };
    for (const std::vector<cv::Point2d> &polyline : shapes.polylines) {
        std::vector<cv::Point> &outline = outlines.emplace_back();
        std::transform(polyline.begin(), polyline.end(), std::back_inserter(outline), onPage);
    }
    for (const cv::Vec3d &circle : shapes.circles) {
        std::vector<cv::Point> &outline = outlines.emplace_back();
        for (double angle = 0; angle < 2 * CV_PI; angle += CV_PI / 90) {
            outline.push_back(
                onPage(cv::Point2d(circle[0], circle[1]) + circle[2] * cv::Point2d(std::cos(angle), std::sin(angle))));
        }
    }
    cv::Mat page(cvRound(297 * pixelsPerMm), cvRound(210 * pixelsPerMm), CV_8U, cv::Scalar(255));
    cv::fillPoly(page, outlines, cv::Scalar(0), cv::LINE_8, shift);
    return page;
}

double extent(const std::vector<cv::Point2d> &corners, double cv::Point2d::*coordinate) {
    const auto isLess = [&](const cv::Point2d &a, const cv::Point2d &b) { return a.*coordinate < b.*coordinate; };
    const auto [least, greatest] = std::minmax_element(corners.begin(), corners.end(), isLess);
    return (*greatest).*coordinate - (*least).*coordinate;
}

TEST_F(PageFormats, dxfHasTheShapesOfThePdfOnLayers) {
    for (const std::string &pattern : samples) {
        std::map<std::string, DxfShapes> layers = readDxf(saveBoth(pattern, ".dxf"));
        const cv::Mat printed = renderPage(pdf, 1, resolution);
        // fillPoly colours every pixel that an outline touches, so edges are displaced by up to a pixel.
        EXPECT_LT(difference(drawn(layers["DARK"])(patternOnA4()), printed(patternOnA4())), 90.0) << pattern;
        EXPECT_EQ(layers["DARK"].circles.empty(), first()["Kind"] == "Checkerboard");

        ASSERT_EQ(layers["OUTLINE"].polylines.size(), 1U);
        const std::vector<cv::Point2d> &outline = layers["OUTLINE"].polylines[0];
        const cv::Point2d size(first()["OuterSize"][0].get<double>(), first()["OuterSize"][1].get<double>());
        const double zones = 2 * first()["QuietZone"].get<double>();
        EXPECT_NEAR(extent(outline, &cv::Point2d::x), size.x + zones, 2e-5);
        EXPECT_NEAR(extent(outline, &cv::Point2d::y), size.y + zones, 2e-5);
        EXPECT_LT(cv::norm(outline[0] + outline[2] - cv::Point2d(210, 297)), 4e-5);

        const std::vector<std::vector<cv::Point2d>> &bars = layers["BARS"].polylines;
        ASSERT_EQ(bars.size(), 2U);
        EXPECT_NEAR(extent(bars[0], &cv::Point2d::x), 100.0, 1e-9);
        EXPECT_NEAR(extent(bars[1], &cv::Point2d::y), 100.0, 1e-9);
        ASSERT_EQ(layers["CAPTIONS"].texts.size(), 3U);
        EXPECT_EQ(layers["CAPTIONS"].texts[1][2], 90.0);
        EXPECT_EQ(layers.size(), 4U);
    }
}

// Returns the picture as it is printed by a printer that multiplies all lengths by these scales.
cv::Mat printed(const cv::Mat &picture, double scaleX, double scaleY) {
    const cv::Point2d middle(picture.cols / 2.0 - 0.5, picture.rows / 2.0 - 0.5);
    const cv::Matx23d stretch(scaleX, 0, middle.x * (1 - scaleX), 0, scaleY, middle.y * (1 - scaleY));
    cv::Mat result;
    cv::warpAffine(picture, result, stretch, picture.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(255));
    return result;
}

TEST_F(PageFormats, printScaleMakesThePrintTrueToSize) {
    const NodeObject options{{"PrintScale", NodeArray{0.98, 1.02}}, {"Resolution", resolution}};
    const std::string &pattern = plate;
    const std::string svg = saveBoth(pattern, ".svg", options);
    const cv::Mat expected = rendered(pdf)(patternOnA4());
    const auto differenceOfPrint = [&](const cv::Mat &page) {
        return difference(printed(page, 0.98, 1.02)(patternOnA4()), expected);
    };
    EXPECT_LT(differenceOfPrint(rendered(svg)), 40.0) << pattern;
    EXPECT_LT(differenceOfPrint(cv::imread(saveBoth(pattern, ".png", options), cv::IMREAD_GRAYSCALE)), 60.0);
    std::map<std::string, DxfShapes> layers = readDxf(saveBoth(pattern, ".dxf", options));
    EXPECT_LT(differenceOfPrint(drawn(layers["DARK"])), 90.0) << pattern;
    EXPECT_NEAR(extent(layers["BARS"].polylines[0], &cv::Point2d::x), 100 / 0.98, 2e-5);
    EXPECT_NEAR(extent(layers["BARS"].polylines[1], &cv::Point2d::y), 100 / 1.02, 2e-5);
    layers = readDxf(saveBoth(pattern, ".dxf", {{"PrintScale", NodeArray{0.9, 0.9}}}));
    EXPECT_NEAR(layers["DARK"].circles.at(0)[2], 3.125 / 0.9, 2e-5);

    const Json without = description;
    const std::string corrected = saveBoth(pattern, "-corrected.pdf", options);
    EXPECT_LT(differenceOfPrint(rendered(corrected)), 40.0) << pattern;
    EXPECT_NE(outputOf("pdftotext '" + corrected + "' -").find("print scale 0.98 × 1.02"), std::string::npos);
    const Json with = parsedJson(outputOf("qpdf --show-attachment=pattern.json '" + corrected + "'"));
    EXPECT_EQ(with["PrintScale"], parsedJson("[0.98, 1.02]"));
    EXPECT_EQ(with["Patterns"], without["Patterns"]);
}

TEST_F(PageFormats, numbersTheFilesOfSeveralPages) {
    const std::string patterns = assembly + ", " + plate + ", " + assemblyInverted;
    for (const std::string ending : {".svg", ".dxf", ".PNG"}) {
        Node parameters = nodeFromJson(R"({"Resolution": 50, "Patterns": [)" + patterns + "]}");
        std::get<NodeObject>(parameters.value)["Filename"] = folder.file("all.of them" + ending);
        const Node result = generateCalibrationPattern(parameters);
        const auto &files = std::get<NodeArray>(result.find("Files")->value);
        ASSERT_EQ(files.size(), 3U);
        int page = 0;
        for (const std::string &pattern : {assembly, plate, assemblyInverted}) {
            const std::string numbered = folder.file("all.of them-0" + std::to_string(page) + ending);
            EXPECT_EQ(std::get<std::string>(files[static_cast<std::size_t>(page++)].value), numbered);
            parameters = nodeFromJson(R"({"Resolution": 50, "Patterns": [)" + pattern + "]}");
            std::get<NodeObject>(parameters.value)["Filename"] = folder.file("one" + ending);
            EXPECT_EQ(outcomeOf(parameters), "");
            EXPECT_EQ(readBytes(numbered), readBytes(folder.file("one" + ending)));
        }
    }
}

}  // namespace
}  // namespace lmlib64
