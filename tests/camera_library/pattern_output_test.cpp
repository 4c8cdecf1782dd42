// Measures what the pattern command prints and previews. Another program renders the printed pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "camera_library/pattern/board_catalogue.h"
#include "tests/camera_library/rendered_page.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

constexpr double mmPerInch = 25.4;
const cv::Point2d middleOfA4(105, 148.5);

class PatternOutput : public SavedPattern {
protected:
    // Returns the points of the description, in millimetres from the pattern's middle. The page has the same middle.
    std::vector<cv::Point2d> points() const {
        const Json &p = first();
        const cv::Point2d topLeft(p["TopLeft"][0].get<double>(), p["TopLeft"][1].get<double>());
        std::vector<cv::Point2d> points;
        for (const Json &point : p["Points"]) {
            points.push_back(cv::Point2d(point[2].get<double>(), point[3].get<double>()) - topLeft - outerSize() / 2);
        }
        return points;
    }
    cv::Point2d outerSize() const {
        return {first()["OuterSize"][0].get<double>(), first()["OuterSize"][1].get<double>()};
    }
    double pitch() const { return first()["LatticePitch"].get<double>(); }
    double quietZone() const { return first()["QuietZone"].get<double>(); }
    bool polarity() const { return first()["Polarity"].get<bool>(); }
    bool isPlate() const { return first()["Kind"] == "RoundMarks"; }

    // Returns the printed picture around a place on an A4 page. `place` is in millimetres from the page's middle. In
    // the picture, the place is at most half a pixel away from the middle, in x and in y. `shift` is set to the vector
    // from the middle to the place, in pixels.
    cv::Mat renderAround(cv::Point2d place, double pixelsPerMm, cv::Size size, cv::Point2d *shift = nullptr) const {
        const cv::Point2d corner = (middleOfA4 + place) * pixelsPerMm - cv::Point2d(size.width, size.height) / 2;
        const cv::Point pixel(cvRound(corner.x), cvRound(corner.y));
        if (shift != nullptr) {
            *shift = corner - cv::Point2d(pixel);
        }
        return renderPage(pdf, 1, pixelsPerMm * mmPerInch, {pixel, size});
    }
};

// Returns the position of the only edge on a line of pixels, computed from the sum of the line's grey values. The line
// extends to `reach` pixels on both sides of the image's middle.
double edgePosition(const cv::Mat &image, int across, int reach, bool isAlongX) {
    const auto grey = [&](int along) {
        return isAlongX ? image.at<uchar>(across, along) : image.at<uchar>(along, across);
    };
    const int middle = (isAlongX ? image.cols : image.rows) / 2;
    double light = 0.0;
    for (int i = middle - reach; i < middle + reach; ++i) {
        light += grey(i) / 255.0;
    }
    return grey(middle - reach) > 127 ? middle - reach + light : middle + reach - light;
}

// Returns the place of a checkerboard's corner near the image's middle, computed from the four edges that meet there.
// Each edge is measured so close to the corner that the marks inside the squares do not disturb.
cv::Point2d measuredCorner(const cv::Mat &image, double side) {
    const int reach = cvRound(side * 0.4);
    const int step = cvRound(side / 4.0);
    const int x = image.cols / 2;
    const int y = image.rows / 2;
    return cv::Point2d(edgePosition(image, y - step, reach, true) + edgePosition(image, y + step, reach, true),
                       edgePosition(image, x - step, reach, false) + edgePosition(image, x + step, reach, false)) /
           2;
}

TEST_F(PatternOutput, placesPointsToAMicrometre) {
    constexpr double pixelsPerMm = 400;
    for (const char *pattern : {R"({"Type": "Flexible", "GridSize": [91, 91], "GridSpacing": 3.3333})",
                                R"({"Type": "Flexible", "GridSize": [20, 31], "GridSpacing": 12.3456789})",
                                R"({"GridSpacing": 3.21, "Encoding": false})"}) {
        savePdf(pattern);
        const std::vector<cv::Point2d> all = points();
        for (std::size_t index = 0; index < all.size(); index += all.size() / 7) {
            const int size = 2 * cvCeil(pitch() * 0.5 * pixelsPerMm);
            cv::Point2d shift;
            const cv::Mat image = renderAround(all[index], pixelsPerMm, {size, size}, &shift);
            const cv::Point2d expected = cv::Point2d(size, size) / 2 + shift;
            cv::Point2d measured;
            if (isPlate()) {
                const cv::Mat within = 255 - image(cv::Rect(size / 6, size / 6, size * 2 / 3, size * 2 / 3));
                const cv::Moments mark = cv::moments(within);
                measured = cv::Point2d(mark.m10, mark.m01) / mark.m00 + cv::Point2d(size / 6 + 0.5, size / 6 + 0.5);
                const double radius = std::sqrt(mark.m00 / 255.0 / CV_PI) / pixelsPerMm;
                EXPECT_NEAR(radius, pitch() / 4.0, 0.0003);
            } else {
                measured = measuredCorner(image, pitch() * pixelsPerMm);
            }
            EXPECT_LT(cv::norm(measured - expected) * 1000.0 / pixelsPerMm, 1.0)
                << "um, point " << index << " of " << pattern;
        }
    }
}

// Preview and PDF are filled by different rasterisers. Each pixel of the preview is compared with the mean of the
// 16 x 16 pixels of the page at the same place. Positions on the page are rounded to whole pixels of the page, so the
// pixel and the mean differ by a few grey levels.
TEST_F(PatternOutput, previewsWhatItPrints) {
    constexpr int times = 16;
    constexpr int imageSize = 200;
    for (const std::string &pattern : allTypes) {
        savePdf(pattern);
        const Binary image = preview(pattern, imageSize);
        const cv::Mat seen(image.height, image.width, CV_8U, const_cast<std::uint8_t *>(image.bytes.data()));
        const double longerSide = std::max(outerSize().x, outerSize().y) + 2.0 * quietZone();
        cv::Mat printed = renderAround({0, 0}, times * imageSize / longerSide, seen.size() * times);
        cv::resize(printed, printed, seen.size(), 0, 0, cv::INTER_AREA);
        EXPECT_LE(cv::norm(seen, printed, cv::NORM_INF), 14.0) << pattern;
        EXPECT_NEAR(cv::sum(seen)[0], cv::sum(printed)[0], 255.0 * imageSize / 10.0) << pattern;
    }
}

// True if a place in the picture is dark. Fails the test if the place is neither dark nor light.
bool isDarkAt(const cv::Mat &picture, cv::Point2d at) {
    const int grey = picture.at<uchar>(cvFloor(at.y), cvFloor(at.x));
    EXPECT_TRUE(grey < 40 || grey > 215) << grey << " at " << at;
    return grey < 128;
}

TEST_F(PatternOutput, drawsTheCellsThatTheDescriptionLists) {
    constexpr double pixelsPerPitch = 200;
    for (const std::string &pattern : allTypes) {
        savePdf(pattern);
        EXPECT_GE(quietZone(), first()["SquareSide"].get<double>() / 2.0);
        const double pixelsPerMm = pixelsPerPitch / pitch();
        const cv::Size size(cvRound(outerSize().x * pixelsPerMm), cvRound(outerSize().y * pixelsPerMm));
        const cv::Mat page = renderAround({0, 0}, pixelsPerMm, size);
        const auto isDark = [&](double x, double y) { return isDarkAt(page, cv::Point2d(x, y) * pixelsPerPitch); };
        const Json &code = first()["Code"];
        EXPECT_EQ(code.is_null(), withoutCode.count(pattern) == 1) << pattern;
        if (code.is_null()) {
            continue;
        }
        for (int row = 0; row < static_cast<int>(code["Cells"].size()); ++row) {
            const auto cells = code["Cells"][static_cast<std::size_t>(row)].get<std::string>();
            for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
                const bool isMarked = cells[static_cast<std::size_t>(column)] == '1';
                SCOPED_TRACE(pattern + " column " + std::to_string(column) + " row " + std::to_string(row));
                if (isPlate()) {
                    // The first dot is not in its cell, because the frame's triangle is there. The dot is between the
                    // first two marks of the top row.
                    const double x = column + row == 0 ? 1.5 : column + 0.5;
                    const double y = column + row == 0 ? 1.0 : row + 0.5;
                    EXPECT_EQ(isDark(x + 0.14, y) == polarity(), isMarked);
                    EXPECT_EQ(isDark(x, y - 0.12) == polarity(), isMarked);
                    EXPECT_NE(isDark(x, y + 0.1), polarity()) << "the dot's light centre";
                    EXPECT_NE(isDark(x + 0.16, y), polarity()) << "around the dot";
                } else {
                    const bool isDarkSquare = ((row + column) % 2 == 0) == polarity();
                    for (const auto &[inside, outside] : {std::array{0.345, 0.32}, std::array{0.655, 0.68}}) {
                        EXPECT_EQ(isDark(column + inside, row + 0.5) != isDarkSquare, isMarked);
                        EXPECT_EQ(isDark(column + 0.5, row + inside) != isDarkSquare, isMarked);
                        EXPECT_EQ(isDark(column + outside, row + 0.5), isDarkSquare);
                        EXPECT_EQ(isDark(column + 0.5, row + outside), isDarkSquare);
                    }
                }
            }
        }
    }
}

TEST_F(PatternOutput, drawsAPlateInProportionToItsGridSpacing) {
    struct Place {
        double x, y;  // in grid spacings
        bool isDark;
    };
    // The frame has a triangle in its top left corner only.
    const Place places[]{
        {0.01, 4.1, true},  {0.24, 4.1, true},   {0.26, 4.1, false}, {7.74, 4.1, false}, {7.76, 4.1, true},  // frame
        {4.1, 0.24, true},  {4.1, 0.26, false},  {4.1, 7.74, false}, {4.1, 7.76, true},                      // frame
        {0.61, 0.62, true}, {0.63, 0.64, false}, {7.6, 0.4, false},  {0.4, 7.6, false},  {7.6, 7.6, false},  // corners
        {4.24, 4.0, true},  {4.26, 4.0, false},  {1.0, 6.76, true},  {7.0, 1.26, false},                     // marks
    };
    constexpr double pixelsPerSpacing = 300;
    for (const bool polarity : {true, false}) {
        savePdf(R"({"GridSpacing": 10, "Encoding": false, "Polarity": )" + std::string(polarity ? "true}" : "false}"));
        const cv::Mat page = renderAround({0, 0}, pixelsPerSpacing / 10, cv::Size(2400, 2400));
        for (const Place &place : places) {
            EXPECT_EQ(isDarkAt(page, cv::Point2d(place.x, place.y) * pixelsPerSpacing) == polarity, place.isDark)
                << place.x << ", " << place.y;
        }
    }
}

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

TEST_F(PatternOutput, isFoundByTheDetectorsOfOpenCv) {
    std::vector<std::string> patterns = allTypes;
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [5, 5], "GridSpacing": 12.5})");
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 20, "Polarity": false})");
    patterns.emplace_back(R"({"Type": "Flexible", "GridSize": [31, 23], "GridSpacing": 8})");
    for (const CatalogueBoard &board : BoardCatalogue()) {
        patterns.push_back(R"({"Type": ")" + std::string(board.type) + "\"}");
    }
    for (const std::string &pattern : patterns) {
        savePdf(pattern);
        const double pixelsPerMm = (isPlate() ? 60.0 : 30.0) / pitch();
        const cv::Mat page = renderPage(pdf, 1, pixelsPerMm * mmPerInch);
        const cv::Size size(first()["LatticeSize"][0].get<int>(), first()["LatticeSize"][1].get<int>());
        std::vector<cv::Point2f> found;
        if (isPlate()) {
            cv::SimpleBlobDetector::Params parameters;
            parameters.blobColor = polarity() ? 0 : 255;
            const auto detector =
                polarity() ? cv::SimpleBlobDetector::create() : cv::SimpleBlobDetector::create(parameters);
            EXPECT_TRUE(cv::findCirclesGrid(page, size, found, cv::CALIB_CB_SYMMETRIC_GRID, detector)) << pattern;
        } else {
            EXPECT_TRUE(cv::findChessboardCorners(page, size, found)) << pattern;
        }
        ASSERT_EQ(static_cast<int>(found.size()), size.area()) << pattern;
        std::vector<cv::Point2d> expected = points();
        for (cv::Point2d &point : expected) {
            point = point * pixelsPerMm + cv::Point2d(page.cols, page.rows) / 2;
        }
        EXPECT_LT(farthestFromExpected(found, expected), 1.0) << pattern;
    }
}

}  // namespace
}  // namespace lmlib64
