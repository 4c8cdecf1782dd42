// What the pattern command prints, rendered by another program and measured.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "camera_library/commands/plate_catalogue.h"
#include "camera_library/output/page_layout.h"
#include "camera_library/pattern/checkerboard.h"
#include "tests/camera_library/rendered_page.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

class PatternOutput : public SavedPattern {
protected:
    // The points of the description on the page, in millimetres: the pattern is centred on it.
    std::vector<cv::Point2d> pointsOnPage(double pageWidth, double pageHeight) const {
        const Json &p = first();
        const double left = (pageWidth - p["OuterSize"][0].get<double>()) / 2.0 - p["TopLeft"][0].get<double>();
        const double top = (pageHeight - p["OuterSize"][1].get<double>()) / 2.0 - p["TopLeft"][1].get<double>();
        std::vector<cv::Point2d> points;
        for (const Json &point : p["Points"]) {
            points.emplace_back(point[2].get<double>() + left, point[3].get<double>() + top);
        }
        return points;
    }

    bool isPlate() const { return first()["Kind"] == "RoundMarks"; }
};

// Where along a line of pixels it turns from one colour to the other, from the light it has in all: the line
// starts `reach` pixels before `expected`, ends as far behind it and holds one edge.
double edgePosition(const cv::Mat &image, double expected, int across, double reach, bool isAlongX) {
    const int from = cvRound(expected - reach);
    const int to = cvRound(expected + reach);
    double light = 0.0;
    for (int i = from; i < to; ++i) {
        light += (isAlongX ? image.at<uchar>(across, i) : image.at<uchar>(i, across)) / 255.0;
    }
    const bool startsLight = (isAlongX ? image.at<uchar>(across, from) : image.at<uchar>(from, across)) > 127;
    return startsLight ? from + light : to - light;
}

// A checkerboard's corner, from the four edges that meet there, each measured between the corner and the marks.
cv::Point2d measuredCorner(const cv::Mat &image, cv::Point2d expected, double side) {
    const double reach = side * 0.4;
    const int above = cvRound(expected.y - side / 4.0);
    const int below = cvRound(expected.y + side / 4.0);
    const int before = cvRound(expected.x - side / 4.0);
    const int behind = cvRound(expected.x + side / 4.0);
    return {
        (edgePosition(image, expected.x, above, reach, true) + edgePosition(image, expected.x, below, reach, true)) /
            2.0,
        (edgePosition(image, expected.y, before, reach, false) +
         edgePosition(image, expected.y, behind, reach, false)) /
            2.0};
}

// A mark's centre: the centre of gravity of what differs from its surroundings.
cv::Point2d measuredMark(const cv::Mat &image, cv::Point2d expected, double pitch) {
    const int reach = cvFloor(pitch * 0.33);  // short of triangle and dots
    const cv::Rect field(cvRound(expected.x) - reach, cvRound(expected.y) - reach, 2 * reach + 1, 2 * reach + 1);
    cv::Mat mark = image(field).clone();
    if (mark.at<uchar>(0, 0) > 127) {
        mark = 255 - mark;
    }
    const cv::Moments moments = cv::moments(mark);
    return {field.x + moments.m10 / moments.m00 + 0.5, field.y + moments.m01 / moments.m00 + 0.5};
}

double spread(const std::vector<double> &values) {
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    return *greatest - *least;
}

constexpr double mmPerInch = 25.4;

TEST_F(PatternOutput, printsEveryPointWhereTheDescriptionSays) {
    constexpr int dotsPerInch = 600;
    constexpr double pixelsPerMm = dotsPerInch / mmPerInch;
    double worst = 0.0;
    for (const std::string &pattern : allTypes) {
        savePdf(pattern);
        const cv::Mat page = renderPage(pdf, 1, dotsPerInch);
        const double pitch = first()["LatticePitch"].get<double>() * pixelsPerMm;
        std::vector<double> errorsX;
        std::vector<double> errorsY;
        for (const cv::Point2d &point : pointsOnPage(210, 297)) {
            const cv::Point2d expected = point * pixelsPerMm;
            const cv::Point2d measured =
                isPlate() ? measuredMark(page, expected, pitch) : measuredCorner(page, expected, pitch);
            errorsX.push_back(measured.x - expected.x);
            errorsY.push_back(measured.y - expected.y);
        }
        // The greatest error of the distance of any two points, along x and y.
        worst = std::max({worst, spread(errorsX), spread(errorsY)});
        EXPECT_LT(spread(errorsX), 1.0) << pattern;
        EXPECT_LT(spread(errorsY), 1.0) << pattern;
        EXPECT_LT(std::abs(errorsX.front()), 1.0) << pattern;
        EXPECT_LT(std::abs(errorsY.front()), 1.0) << pattern;

        // Nothing but light in the quiet zone.
        const double quietZone = first()["QuietZone"].get<double>();
        EXPECT_GE(quietZone, first()["SquareSide"].get<double>() / 2.0);
        const double width = first()["OuterSize"][0].get<double>();
        const double height = first()["OuterSize"][1].get<double>();
        const auto zone = [&](double left, double top, double right, double bottom) {
            const cv::Rect pixels(
                cv::Point(cvCeil((105 + left) * pixelsPerMm) + 1, cvCeil((148.5 + top) * pixelsPerMm) + 1),
                cv::Point(cvFloor((105 + right) * pixelsPerMm) - 1, cvFloor((148.5 + bottom) * pixelsPerMm) - 1));
            double darkest = 0.0;
            cv::minMaxLoc(page(pixels), &darkest);
            return darkest;
        };
        const double x = width / 2.0;
        const double y = height / 2.0;
        EXPECT_EQ(zone(-x - quietZone, -y - quietZone, -x, y + quietZone), 255) << pattern;
        EXPECT_EQ(zone(x, -y - quietZone, x + quietZone, y + quietZone), 255) << pattern;
        EXPECT_EQ(zone(-x - quietZone, -y - quietZone, x + quietZone, -y), 255) << pattern;
        EXPECT_EQ(zone(-x - quietZone, y, x + quietZone, y + quietZone), 255) << pattern;
    }
    std::printf("greatest error of a distance: %.3f pixel at %d dpi\n", worst, dotsPerInch);
}

// Preview and PDF are filled by different rasters.
TEST_F(PatternOutput, printsWhatThePreviewShows) {
    constexpr double pixelsPerMm = 600 / mmPerInch;
    for (const std::string &pattern : allTypes) {
        savePdf(pattern);
        const cv::Mat page = renderPage(pdf, 1, 600);
        const Binary seen = preview(pattern, 1000);
        const cv::Mat picture(seen.height, seen.width, CV_8U, const_cast<std::uint8_t *>(seen.bytes.data()));
        cv::Mat darkest;
        cv::Mat lightest;
        cv::erode(picture, darkest, {});
        cv::dilate(picture, lightest, {});
        const auto width = first()["OuterSize"][0].get<double>();
        const auto height = first()["OuterSize"][1].get<double>();
        const double scale = 1000 / (std::max(width, height) + 2.0 * first()["QuietZone"].get<double>());
        int compared = 0;
        int different = 0;
        for (int y = 1; y + 1 < picture.rows; ++y) {
            for (int x = 1; x + 1 < picture.cols; ++x) {
                const cv::Point2d mm((x + 0.5 - picture.cols / 2.0) / scale, (y + 0.5 - picture.rows / 2.0) / scale);
                const int grey = picture.at<uchar>(y, x);
                const bool isAtEdge = darkest.at<uchar>(y, x) != lightest.at<uchar>(y, x);
                if (isAtEdge || std::abs(mm.x) > width / 2.0 || std::abs(mm.y) > height / 2.0) {
                    continue;
                }
                const int printed =
                    page.at<uchar>(cvFloor((148.5 + mm.y) * pixelsPerMm), cvFloor((105.0 + mm.x) * pixelsPerMm));
                ++compared;
                different += printed == grey ? 0 : 1;
            }
        }
        EXPECT_GT(compared, 350000) << pattern;
        EXPECT_EQ(different, 0) << pattern;
    }
}

TEST_F(PatternOutput, placesCornersToAMicrometre) {
    constexpr int dotsPerInch = 10160;  // 2.5 um to the pixel
    constexpr double pixelsPerMm = dotsPerInch / mmPerInch;
    for (const char *pattern : {R"({"Type": "Flexible", "GridSize": [91, 91], "GridSpacing": 3.3333})",
                                R"({"Type": "Flexible", "GridSize": [20, 31], "GridSpacing": 12.3456789})"}) {
        savePdf(pattern);
        const double pitch = first()["LatticePitch"].get<double>() * pixelsPerMm;
        const std::vector<cv::Point2d> points = pointsOnPage(210, 297);
        for (std::size_t index = 0; index < points.size(); index += points.size() / 7) {
            const cv::Point2d expected = points[index] * pixelsPerMm;
            const int reach = cvCeil(pitch);
            const cv::Point origin(cvRound(expected.x) - reach, cvRound(expected.y) - reach);
            const cv::Mat crop = renderPage(pdf, 1, dotsPerInch, cv::Rect(origin, cv::Size(2 * reach, 2 * reach)));
            const cv::Point2d measured = measuredCorner(crop, expected - cv::Point2d(origin), pitch);
            const cv::Point2d error = (measured + cv::Point2d(origin) - expected) * (1000.0 / pixelsPerMm);
            EXPECT_LT(std::hypot(error.x, error.y), 1.0) << "um, point " << index << " of " << pattern;
        }
    }
}

// Pixels of found points to those of the description, one to one; the greatest distance.
double farthestFromExpected(const std::vector<cv::Point2f> &found, const std::vector<cv::Point2d> &expected) {
    double farthest = 0.0;
    for (const cv::Point2d &point : expected) {
        double nearest = 1e9;
        for (const cv::Point2f &candidate : found) {
            nearest = std::min(nearest, cv::norm(cv::Point2d(candidate) + cv::Point2d(0.5, 0.5) - point));
        }
        farthest = std::max(farthest, nearest);
    }
    return farthest;
}

TEST_F(PatternOutput, isFoundByStockDetectors) {
    std::vector<std::string> patterns = allTypes;
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [5, 5], "GridSpacing": 12.5})");
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 20, "Polarity": false})");
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [6, 10], "GridSpacing": 10})");
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [31, 23], "GridSpacing": 8})");
    for (const std::string &pattern : patterns) {
        savePdf(pattern);
        const double pitch = first()["LatticePitch"].get<double>();
        const int dotsPerInch = cvRound((isPlate() ? 60.0 : 30.0) / pitch * mmPerInch);
        const cv::Mat page = renderPage(pdf, 1, dotsPerInch);
        const cv::Size size(first()["LatticeSize"][0].get<int>(), first()["LatticeSize"][1].get<int>());
        std::vector<cv::Point2f> found;
        if (isPlate()) {
            cv::SimpleBlobDetector::Params parameters;
            parameters.blobColor = first()["Polarity"].get<bool>() ? 0 : 255;
            const auto detector = first()["Polarity"].get<bool>() ? cv::SimpleBlobDetector::create()
                                                                  : cv::SimpleBlobDetector::create(parameters);
            EXPECT_TRUE(cv::findCirclesGrid(page, size, found, cv::CALIB_CB_SYMMETRIC_GRID, detector)) << pattern;
        } else {
            EXPECT_TRUE(cv::findChessboardCorners(page, size, found)) << pattern;
        }
        ASSERT_EQ(static_cast<int>(found.size()), size.area()) << pattern;
        std::vector<cv::Point2d> expected = pointsOnPage(210, 297);
        for (cv::Point2d &point : expected) {
            point *= dotsPerInch / mmPerInch;
        }
        EXPECT_LT(farthestFromExpected(found, expected), 1.0) << pattern;
    }
}

// Whether a place is dark on the page, and not grey.
bool isDarkOnPage(const cv::Mat &page, cv::Point2d at) {
    const int grey = page.at<uchar>(cvFloor(at.y), cvFloor(at.x));
    EXPECT_TRUE(grey < 40 || grey > 215) << grey << " at " << at;
    return grey < 128;
}

TEST_F(PatternOutput, drawsTheCellsThatTheDescriptionLists) {
    constexpr int dotsPerInch = 600;
    constexpr double pixelsPerMm = dotsPerInch / mmPerInch;
    for (const std::string &pattern : allTypes) {
        savePdf(pattern);
        const cv::Mat page = renderPage(pdf, 1, dotsPerInch);
        const double pitch = first()["LatticePitch"].get<double>();
        // The outer size's corner; the plate's first mark is a grid spacing from it, as the first corner is a square.
        const cv::Point2d origin = pointsOnPage(210, 297).front() - cv::Point2d(pitch, pitch);
        const auto isDark = [&](double x, double y) {
            return isDarkOnPage(page, (origin + cv::Point2d(x, y) * pitch) * pixelsPerMm);
        };
        const Json &code = first()["Code"];
        if (code.is_null()) {
            EXPECT_EQ(pattern, plateInverted);
            continue;
        }
        for (int row = 0; row < static_cast<int>(code["Cells"].size()); ++row) {
            const auto cells = code["Cells"][static_cast<std::size_t>(row)].get<std::string>();
            for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
                const bool isMarked = cells[static_cast<std::size_t>(column)] == '1';
                SCOPED_TRACE(pattern + " column " + std::to_string(column) + " row " + std::to_string(row));
                if (isPlate()) {
                    const bool polarity = first()["Polarity"].get<bool>();
                    const double x = column + row == 0 ? 1.5 : column + 0.5;
                    const double y = column + row == 0 ? 1.0 : row + 0.5;
                    EXPECT_EQ(isDark(x + 0.13, y) == polarity, isMarked);
                    EXPECT_EQ(isDark(x, y - 0.13) == polarity, isMarked);
                    EXPECT_NE(isDark(x, y), polarity) << "the hole";
                    EXPECT_NE(isDark(x + 0.17, y), polarity) << "around the dot";
                } else {
                    const bool square = isDark(column + 0.3, row + 0.3);
                    EXPECT_EQ(isDark(column + 0.5, row + 0.5) != square, isMarked);
                    EXPECT_EQ(isDark(column + 0.36, row + 0.64) != square, isMarked);
                    EXPECT_EQ(isDark(column + 0.7, row + 0.5), square);
                }
            }
        }
    }
}

TEST_F(PatternOutput, drawsEveryPlateOfTheCatalogue) {
    for (const CatalogueEntry &entry : Catalogue()) {
        savePdf(R"({"Type": ")" + std::string(entry.type) + "\"}");
        EXPECT_EQ(first()["OuterSize"][0], 8.0 * entry.gridSpacing);
        EXPECT_EQ(first()["Parameters"]["Thickness"], entry.thickness);
        const int dotsPerInch = cvRound(20.0 / (entry.gridSpacing / 2.0) * mmPerInch);
        std::vector<cv::Point2f> found;
        EXPECT_TRUE(cv::findChessboardCorners(renderPage(pdf, 1, dotsPerInch), {15, 15}, found)) << entry.type;
    }
}

}  // namespace
}  // namespace lmlib64
