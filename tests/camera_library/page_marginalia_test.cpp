// What stands on a printed page beside the pattern: its check bars, their labels and the caption.
#include <gtest/gtest.h>

#include <array>
#include <opencv2/imgproc.hpp>

#include "camera_library/output/page_layout.h"
#include "camera_library/pattern/checkerboard.h"
#include "tests/camera_library/rendered_page.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

using PageMarginalia = SavedPattern;

constexpr double mmPerInch = 25.4;

TEST_F(PageMarginalia, captionSaysAllThatThePrintDependsOn) {
    savePdf(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.123456789, "Thickness": 1.5,
                "Offset": [18.19, -6.06], "Polarity": false})");
    const std::string caption = outputOf("pdftotext -layout '" + pdf + "' -");
    for (const char *part : {"Flexible 9 × 6", "60.617284 × 42.432099 mm", "12.123456789 mm", "1.5 mm", "18.19",
                             "-6.06", "false", "LmLib64 "}) {
        EXPECT_NE(caption.find(part), std::string::npos) << part << "\n" << caption;
    }
}

// The length of the dark line through the pixel, along x or y, in pixels; ends at full light.
double lineLength(const cv::Mat &page, cv::Point within, bool isAlongX) {
    double length = 0.0;
    for (const int direction : {-1, 1}) {
        for (int i = direction < 0 ? 0 : 1;; ++i) {
            const cv::Point at = within + (isAlongX ? cv::Point(direction * i, 0) : cv::Point(0, direction * i));
            const uchar grey = page.at<uchar>(at);
            if (grey == 255) {
                break;
            }
            length += (255 - grey) / 255.0;
        }
    }
    return length;
}

TEST_F(PageMarginalia, drawsCheckBarsOfTheLengthTheySay) {
    constexpr int dotsPerInch = 600;
    constexpr double pixelsPerMm = dotsPerInch / mmPerInch;
    struct Case {
        const char *pattern;
        double gridSpacing;
        double lengthAlongY;
    };
    // The second leaves no room beside it, so that a shorter bar stands below it.
    for (const Case &test : {Case{R"({"Type": "SingleCustom", "GridSpacing": 12.5})", 12.5, 100.0},
                             Case{R"({"Type": "SingleCustom", "GridSpacing": 22})", 22.0, 30.0}}) {
        savePdf(test.pattern);
        const PageLayout layout = *layOutPage(checkerboard({15, 15}, test.gridSpacing, true));
        const cv::Mat page = renderPage(pdf, 1, dotsPerInch);
        const auto pixel = [&](const CheckBar &bar) {
            const double along = 15.0;
            const double across = 0.1;
            return bar.isAlongY ? cv::Point(cvRound((bar.start.x + across) * pixelsPerMm),
                                            cvRound((bar.start.y + along) * pixelsPerMm))
                                : cv::Point(cvRound((bar.start.x + along) * pixelsPerMm),
                                            cvRound((bar.start.y + across) * pixelsPerMm));
        };
        EXPECT_NEAR(lineLength(page, pixel(layout.barAlongX), true), 100.0 * pixelsPerMm, 0.5);
        EXPECT_NEAR(lineLength(page, pixel(layout.barAlongY), false), test.lengthAlongY * pixelsPerMm, 0.5);
        const std::string text = outputOf("pdftotext -layout '" + pdf + "' -");
        EXPECT_NE(text.find("100 mm"), std::string::npos) << text;
        EXPECT_NE(outputOf("pdftotext -bbox '" + pdf + "' - | grep -c '>mm<'"), "0\n");
    }
}

// The box in millimetres around what is dark in a field of a page.
cv::Rect2d inkWithin(const cv::Mat &page, double pixelsPerMm, const cv::Rect2d &field) {
    const cv::Point corner(cvRound(field.x * pixelsPerMm), cvRound(field.y * pixelsPerMm));
    const cv::Size size(cvRound(field.width * pixelsPerMm), cvRound(field.height * pixelsPerMm));
    const cv::Rect ink = cv::boundingRect(page(cv::Rect(corner, size)) < 128);
    return {(corner.x + ink.x) / pixelsPerMm, (corner.y + ink.y) / pixelsPerMm, ink.width / pixelsPerMm,
            ink.height / pixelsPerMm};
}

TEST_F(PageMarginalia, setsItsTextsUprightAndItsCaptionWithinTheMargins) {
    constexpr int dotsPerInch = 300;
    struct Case {
        const char *pattern;
        std::array<int, 2> size;
        double gridSpacing;
        bool isShrunk;  ///< since it is longer than the page is wide
    };
    for (const Case &test :
         {Case{R"({"Type": "SingleCustom", "GridSpacing": 12.5})", {15, 15}, 12.5, false},
          Case{R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.123456789, "Thickness": 1.23456789,
                   "Offset": [12.123456789, -24.246913578]})",
               {9, 6},
               12.123456789,
               true}}) {
        savePdf(test.pattern);
        const cv::Mat page = renderPage(pdf, 1, dotsPerInch);
        const PageLayout layout = *layOutPage(checkerboard(test.size, test.gridSpacing, true));
        const auto ink = [&](double left, double top, double width, double height) {
            return inkWithin(page, dotsPerInch / mmPerInch, {left, top, width, height});
        };

        const cv::Rect2d caption = ink(0.0, layout.caption.y - 2.8, layout.width, 4.8);
        EXPECT_NEAR(caption.x + caption.width / 2.0, layout.caption.x, 0.3);
        EXPECT_LT(caption.width, layout.captionWidth);
        EXPECT_EQ(caption.width > layout.captionWidth - 0.6, test.isShrunk);
        // Letters rise by three quarters of the size and hang by a quarter of it.
        EXPECT_NEAR((layout.caption.y - caption.y) / caption.height, 0.78, 0.1);

        // Along x the letters of "100 mm" rise, along y they rise to the left; none of them hang.
        const Point &right = layout.barAlongX.label;
        const cv::Rect2d alongX = ink(right.x, right.y - 2.5, 12.0, 3.2);
        EXPECT_NEAR(alongX.y + alongX.height, right.y, 0.15);
        EXPECT_NEAR(alongX.height, 1.7, 0.2);
        const Point &up = layout.barAlongY.label;
        const cv::Rect2d alongY = ink(up.x - 2.5, up.y - 12.0, 5.0, 12.0);
        EXPECT_NEAR(alongY.x + alongY.width, up.x, 0.15);
        EXPECT_NEAR(alongY.width, 1.7, 0.2);
        EXPECT_NEAR(alongY.height, alongX.width, 0.1);
        EXPECT_NEAR(alongY.y + alongY.height, up.y, 0.5);
    }
}

}  // namespace
}  // namespace lmlib64
