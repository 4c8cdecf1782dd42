// Tests the layout of a printed page: its size, its check bars with their labels, and its caption.
#include "camera_library/output/page_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <opencv2/core.hpp>
#include <sstream>

#include "camera_library/pattern/checkerboard.h"
#include "tests/camera_library/rendered_page.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

bool isInside(const Rectangle &inner, const Rectangle &outer) {
    constexpr double tolerance = 1e-6;
    return inner.left >= outer.left - tolerance && inner.top >= outer.top - tolerance &&
           inner.right <= outer.right + tolerance && inner.bottom <= outer.bottom + tolerance;
}

bool isApart(const Rectangle &a, const Rectangle &b) {
    return a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top;
}

Rectangle extentOf(const CheckBar &bar) {
    Rectangle extent{bar.start.x, bar.start.y, bar.start.x, bar.start.y};
    for (const Rectangle &shape : checkBarShapes(bar)) {
        extent = {std::min(extent.left, shape.left), std::min(extent.top, shape.top),
                  std::max(extent.right, shape.right), std::max(extent.bottom, shape.bottom)};
    }
    return extent;
}

TEST(PageLayout, keepsEverythingApartAndWithinTheMarginsForEverySize) {
    int pages = 0;
    for (const int columns : {2, 5, 15, 40, 91, 200}) {
        for (const int rows : {2, 6, 15, 37, 91, 200}) {
            for (int step = 0; step < 70; ++step) {
                const double spacing = 0.5 * std::pow(1.07, step);
                const PatternGeometry board = checkerboard({columns, rows}, spacing, true);
                const std::optional<PageLayout> layout = layOutPage(board);
                if (!layout) {
                    EXPECT_GT(std::max(board.width, board.height), 4900.0);
                    continue;
                }
                ++pages;
                const Rectangle block{layout->pattern.x - board.quietZone, layout->pattern.y - board.quietZone,
                                      layout->pattern.x + board.width + board.quietZone,
                                      layout->pattern.y + board.height + board.quietZone};
                const Rectangle printable{5.0, 5.0, layout->area.width - 5.0, layout->area.height - 5.0};
                const Rectangle barX = extentOf(layout->barAlongX);
                const Rectangle barY = extentOf(layout->barAlongY);
                const Rectangle caption{5.0, layout->caption.y - 2.5, 5.0 + layout->captionWidth,
                                        layout->caption.y + 0.6};
                SCOPED_TRACE(std::to_string(columns) + " x " + std::to_string(rows) + " at " + std::to_string(spacing));
                for (const Rectangle &part : {block, barX, barY, caption}) {
                    EXPECT_TRUE(isInside(part, printable));
                }
                for (const Rectangle &part : {barX, barY, caption}) {
                    EXPECT_TRUE(isApart(part, block));
                }
                EXPECT_TRUE(isApart(barX, barY) && isApart(barX, caption) && isApart(barY, caption));
                EXPECT_NEAR(barX.right - barX.left, 100.0, 1e-9);
                const double lengthY = barY.bottom - barY.top;
                EXPECT_NEAR(lengthY, std::round(lengthY / 10.0) * 10.0, 1e-9);
                EXPECT_GE(lengthY, 9.9);
                EXPECT_NEAR(layout->pattern.x + board.width / 2.0, layout->area.width / 2.0, 1e-9);
                EXPECT_NEAR(layout->pattern.y + board.height / 2.0, layout->area.height / 2.0, 1e-9);
            }
        }
    }
    EXPECT_GT(pages, 1500);
}

TEST(PageLayout, takesTheSmallestPageThatHoldsThePattern) {
    struct Case {
        int columns, rows;
        double spacing;
        double width, height;
    };
    // A standard page must be at least 10 mm wider and 31 mm higher than the pattern with its quiet zone: all margins
    // are 5 mm, and the pattern is centred between two strips that are 10.5 mm high. A pattern that is too large for
    // all standard pages gets a custom page. It is 20 mm wider than the pattern with its quiet zone, because it has
    // room for a bar beside the pattern.
    const Case cases[]{
        {15, 15, 22.2, 210, 297}, {15, 15, 22.3, 297, 420}, {29, 15, 16, 297, 210}, {29, 15, 24, 420, 297},
        {15, 15, 45, 420, 594},   {29, 15, 35, 594, 420},   {15, 15, 64, 594, 841}, {29, 15, 50, 841, 594},
        {15, 15, 92, 841, 1189},  {29, 15, 70, 1189, 841},  {15, 15, 96, 884, 895},
    };
    for (const Case &test : cases) {
        const std::optional<PageLayout> layout =
            layOutPage(checkerboard({test.columns, test.rows}, test.spacing, true));
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->area.width, test.width) << test.columns << " x " << test.rows << " at " << test.spacing;
        EXPECT_EQ(layout->area.height, test.height) << test.columns << " x " << test.rows << " at " << test.spacing;
    }
    EXPECT_FALSE(layOutPage(checkerboard({15, 15}, 700, true)));
    // A printer that shrinks pages needs a larger drawing and may need larger paper. A printer that enlarges them still
    // gets the same paper.
    const PatternGeometry fitting = checkerboard({15, 15}, 22.2, true);
    EXPECT_EQ(layOutPage(fitting, {0.99, 1.0})->paper.width, 297);
    EXPECT_EQ(layOutPage(fitting, {1.02, 1.02})->paper.width, 210);
    EXPECT_EQ(layOutPage(fitting, {1.02, 1.02})->area.width, 210);
}

using PrintedLayout = SavedPattern;

TEST_F(PrintedLayout, captionSaysAllThatThePrintDependsOn) {
    savePdf(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.123456789, "Thickness": 1.5,
                "Offset": [18.19, -6.06], "Polarity": false})");
    const std::string caption = outputOf("pdftotext -layout '" + pdf + "' -");
    for (const char *part : {"Flexible 9 × 6", "60.617284 × 42.432099 mm", "12.123456789 mm", "1.5 mm", "18.19",
                             "-6.06", "false", "LmLib64 "}) {
        EXPECT_NE(caption.find(part), std::string::npos) << part << "\n" << caption;
    }
    savePdf(assembly);
    EXPECT_NE(outputOf("pdftotext -layout '" + pdf + "' -").find("pattern 3 "), std::string::npos);
}

constexpr double mmPerInch = 25.4;

// Returns the length, in pixels, of the dark line through `place` that is parallel to the y axis or, if `isAlongY` is
// false, to the x axis. The line ends at a white pixel on either side.
double lineLength(const cv::Mat &page, cv::Point2d place, bool isAlongY) {
    const cv::Point step = isAlongY ? cv::Point(0, 1) : cv::Point(1, 0);
    cv::Point at(cvRound(place.x), cvRound(place.y));
    while (page.at<uchar>(at) < 255) {
        at -= step;
    }
    double length = 0.0;
    for (at += step; page.at<uchar>(at) < 255; at += step) {
        length += (255 - page.at<uchar>(at)) / 255.0;
    }
    return length;
}

TEST_F(PrintedLayout, drawsCheckBarsOfTheLengthTheySay) {
    constexpr double pixelsPerMm = 600 / mmPerInch;
    struct Case {
        const char *pattern;
        double gridSpacing;
        double lengthAlongY;
    };
    // The second pattern leaves no room for a bar at its sides. So both bars are below the pattern, and the bar along y
    // is shorter.
    for (const Case &test : {Case{R"({"Type": "SingleCustom", "GridSpacing": 12.5})", 12.5, 100.0},
                             Case{R"({"Type": "SingleCustom", "GridSpacing": 22})", 22.0, 30.0}}) {
        savePdf(test.pattern);
        const PageLayout layout = *layOutPage(checkerboard({15, 15}, test.gridSpacing, true));
        const cv::Mat page = renderPage(pdf, 1, 600);
        const cv::Point2d x(layout.barAlongX.start.x + 15.0, layout.barAlongX.start.y + 0.1);
        const cv::Point2d y(layout.barAlongY.start.x + 0.1, layout.barAlongY.start.y + 15.0);
        EXPECT_NEAR(lineLength(page, x * pixelsPerMm, false), 100.0 * pixelsPerMm, 0.5);
        EXPECT_NEAR(lineLength(page, y * pixelsPerMm, true), test.lengthAlongY * pixelsPerMm, 0.5);
    }
}

struct Word {
    std::string text;
    Rectangle box;  // in millimetres
};

std::vector<Word> wordsOf(const std::string &pdf) {
    const std::string page = outputOf("pdftotext -bbox '" + pdf + "' -");
    std::vector<Word> words;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
        double box[4];
        char text[256];
        if (std::sscanf(line.c_str(), R"( <word xMin="%lf" yMin="%lf" xMax="%lf" yMax="%lf">%255[^<])", &box[0],
                        &box[1], &box[2], &box[3], text) == 5) {
            const auto mm = [&](std::size_t side) { return box[side] * mmPerInch / 72.0; };
            words.push_back({text, {mm(0), mm(1), mm(2), mm(3)}});
        }
    }
    return words;
}

TEST_F(PrintedLayout, centresItsCaptionWithinTheMarginsAndLabelsBothBars) {
    struct Case {
        const char *pattern;
        bool isShrunk;  // true if the caption is too long for the width of the page
    };
    for (const Case &test :
         {Case{R"({"Type": "SingleCustom", "GridSpacing": 12.5})", false},
          Case{R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.123456789, "Thickness": 1.23456789,
                   "Offset": [12.123456789, -24.246913578]})",
               true}}) {
        savePdf(test.pattern);
        const std::vector<Word> words = wordsOf(pdf);
        double captionTop = 0.0;
        for (const Word &word : words) {
            captionTop = std::max(captionTop, word.box.top - 0.5);
        }
        double left = 210.0;
        double right = 0.0;
        int labels = 0;
        int uprightLabels = 0;
        for (const Word &word : words) {
            const bool isCaption = word.box.top >= captionTop;
            left = isCaption ? std::min(left, word.box.left) : left;
            right = isCaption ? std::max(right, word.box.right) : right;
            const bool isLabel = !isCaption && word.text == "100";
            labels += isLabel ? 1 : 0;
            uprightLabels += isLabel && word.box.bottom - word.box.top > word.box.right - word.box.left ? 1 : 0;
        }
        EXPECT_NEAR(left + right, 210.0, 0.6);
        EXPECT_GE(left, 5.0 - 0.05);
        EXPECT_EQ(left < 5.6, test.isShrunk) << left;
        EXPECT_EQ(labels, 2);
        EXPECT_EQ(uprightLabels, 1);
    }
}

}  // namespace
}  // namespace lmlib64
