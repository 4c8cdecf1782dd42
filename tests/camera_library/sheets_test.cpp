// Tests patterns that are split over sheets. The rendered sheets are put together at the cuts and compared with the
// picture of the whole pattern.
#include "camera_library/output/sheets.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/halcon_plate.h"
#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {
namespace {

constexpr int pixelsPerMm = 10;
constexpr int resolution = 254;

const Paper a4{"A4", {210, 297}};

class Sheets : public SavedPattern {
protected:
    Node parametersFor(const std::string &pattern, const std::string &fileName) const {
        Node parameters = nodeFromJson(R"({"Resolution": 254, "Patterns": [)" + pattern + "]}");
        std::get<NodeObject>(parameters.value)["Filename"] = folder.file(fileName);
        return parameters;
    }
    void saveSheets(const std::string &pattern, const std::string &fileName) const {
        Node parameters = parametersFor(pattern, fileName);
        std::get<NodeObject>(parameters.value)["Paper"] = "A4";
        std::get<NodeObject>(parameters.value)["Sheets"] = true;
        ASSERT_EQ(outcomeOf(parameters), "");
    }
    // The pattern with its quiet zone, in one picture.
    cv::Mat whole(const std::string &pattern, const SheetPlan &plan) const {
        EXPECT_EQ(outcomeOf(parametersFor(pattern, "whole.png")), "");
        const cv::Mat page = cv::imread(folder.file("whole.png"), cv::IMREAD_GRAYSCALE);
        return page({(page.cols - lengthX(plan)) / 2, (page.rows - lengthY(plan)) / 2, lengthX(plan), lengthY(plan)});
    }
    static int lengthX(const SheetPlan &plan) { return pixels(plan.cutsX.back() - plan.cutsX.front()); }
    static int lengthY(const SheetPlan &plan) { return pixels(plan.cutsY.back() - plan.cutsY.front()); }
    static int pixels(double mm) { return cvRound(mm * pixelsPerMm); }

    // Cuts each sheet at its left and its upper cut, and lays it onto the earlier sheets. Where sheets overlap, the
    // later one is visible. `pageOf` returns the picture of a page; page 0 is the plan.
    template <typename PageOf>
    static cv::Mat putTogether(const SheetPlan &plan, PageOf pageOf) {
        cv::Mat board(lengthY(plan), lengthX(plan), CV_8U, cv::Scalar(255));
        for (std::size_t row = 0; row < plan.rows(); ++row) {
            for (std::size_t column = 0; column < plan.columns(); ++column) {
                const cv::Mat page = pageOf(static_cast<int>(plan.number(column, row)));
                EXPECT_NEAR(page.cols, pixels(plan.paper.width), 1);
                EXPECT_NEAR(page.rows, pixels(plan.paper.height), 1);
                const Rectangle window = plan.window(column, row);
                const int left = pixels(window.left - plan.cutsX.front());
                const int top = pixels(window.top - plan.cutsY.front());
                const int width = pixels(window.right - window.left);
                const int height = pixels(window.bottom - window.top);
                const cv::Rect onPage((pixels(plan.paper.width) - width) / 2, (pixels(plan.paper.height) - height) / 2,
                                      width, height);
                const cv::Mat printed = page(onPage);
                expectMarks(page, plan, column, row, onPage);
                const int cutX = column == 0 ? 0 : pixels(sheetOverlap);
                const int cutY = row == 0 ? 0 : pixels(sheetOverlap);
                printed(cv::Rect(cutX, cutY, width - cutX, height - cutY))
                    .copyTo(board({left + cutX, top + cutY, width - cutX, height - cutY}));
            }
        }
        return board;
    }

    // Expects marks at the cuts, and nothing else, within 1.9 mm above, below and beside the printed part.
    static void expectMarks(const cv::Mat &page, const SheetPlan &plan, std::size_t column, std::size_t row,
                            cv::Rect onPage) {
        const int gap = 19;
        const auto marks = [&](cv::Rect strip, bool isAlongY) {
            cv::Mat dark;
            cv::reduce(255 - page(strip), dark, isAlongY ? 1 : 0, cv::REDUCE_AVG);
            std::vector<int> found;
            const int last = static_cast<int>(dark.total()) - 1;
            for (int i = 1; i <= last; ++i) {
                if (dark.at<uchar>(i) > 60 && dark.at<uchar>(i - 1) > 60) {
                    found.push_back(i);  // the middle of a mark of two pixels
                }
            }
            return found;
        };
        const auto expected = [](std::size_t place, std::size_t count, int length) {
            std::vector<int> cuts;
            if (place > 0) {
                cuts.push_back(pixels(sheetOverlap));
            }
            if (place + 1 < count) {
                cuts.push_back(length - pixels(sheetOverlap));
            }
            return cuts;
        };
        const std::vector<int> cutsX = expected(column, plan.columns(), onPage.width);
        const std::vector<int> cutsY = expected(row, plan.rows(), onPage.height);
        EXPECT_EQ(marks({onPage.x, onPage.y - gap, onPage.width, gap}, false), cutsX);
        EXPECT_EQ(marks({onPage.x, onPage.br().y + 1, onPage.width, gap - 1}, false), cutsX);
        EXPECT_EQ(marks({onPage.x - gap, onPage.y, gap, onPage.height}, true), cutsY);
        EXPECT_EQ(marks({onPage.br().x + 1, onPage.y, gap - 1, onPage.height}, true), cutsY);
    }
};

// The squares' sides and the sheets' positions are whole numbers of pixels, so not a single pixel may differ.
TEST_F(Sheets, giveTheWholeBoardWhenTheyArePutTogether) {
    const std::string pattern = R"({"Type": "Flexible", "GridSize": [15, 11], "GridSpacing": 48})";
    const SheetPlan plan = planSheets(checkerboard({15, 11}, 48, true), a4, {1, 1}).value();
    EXPECT_EQ(plan.count(), 4U);
    for (const double cut : {plan.cutsX[1], plan.cutsY[1]}) {
        EXPECT_EQ(std::fmod(cut, 24.0), 0.0) << "the cut is not between squares";
    }
    const cv::Mat expected = whole(pattern, plan);
    saveSheets(pattern, "sheet.png");
    const auto page = [&](int number) {
        return cv::imread(folder.file("sheet-0" + std::to_string(number) + ".png"), cv::IMREAD_GRAYSCALE);
    };
    EXPECT_EQ(cv::norm(putTogether(plan, page), expected, cv::NORM_INF), 0.0);
    EXPECT_EQ(folder.entryCount(), 1 + plan.count() + 1);  // the whole pattern, the sheets and their plan
}

TEST_F(Sheets, ofAPdfGiveTheWholePlate) {
    const std::string pattern = R"({"GridSpacing": 40, "Thickness": 2, "Polarity": false})";
    const SheetPlan plan = planSheets(halconPlate(40, false), a4, {1, 1}).value();
    const cv::Mat expected = whole(pattern, plan);
    saveSheets(pattern, "sheets.pdf");
    const std::string file = folder.file("sheets.pdf");
    EXPECT_NE(outputOf("qpdf --check '" + file + "'").find("No syntax"), std::string::npos);
    const cv::Mat board = putTogether(plan, [&](int number) { return renderPage(file, number + 1, resolution); });
    cv::Mat difference;
    cv::absdiff(board, expected, difference);
    // The library, which drew the PNG, and the program that rendered the PDF draw edges differently. But in every block
    // of 2 x 2 pixels, at least one pixel agrees.
    cv::erode(difference > 100, difference, cv::Mat::ones(2, 2, CV_8U));
    EXPECT_EQ(cv::countNonZero(difference), 0);

    // The text on the plan says that it is the plan. The text on a sheet has the number of the sheet.
    const std::string plannedText = outputOf("pdftotext -l 1 '" + file + "' -");
    EXPECT_NE(plannedText.find("Plan of " + std::to_string(plan.count()) + " sheets"), std::string::npos);
    EXPECT_NE(outputOf("pdftotext -f 3 -l 3 '" + file + "' -").find("sheet 2 of " + std::to_string(plan.count())),
              std::string::npos);
    const Json json = parsedJson(outputOf("qpdf --show-attachment=pattern.json '" + file + "'"));
    EXPECT_EQ(json["Paper"], "A4");
    EXPECT_EQ(json["Sheets"], true);
}

// In every plan, the sheets fit onto the paper and every sheet has a part of the pattern. No vertical cut goes through
// a board's square or a plate's mark.
TEST(SheetPlan, fitsEveryPaper) {
    for (const double spacing : {5.0, 23.7, 60.0, 140.0}) {
        for (const PatternGeometry &geometry : {checkerboard({91, 20}, spacing, true),
                                                checkerboard({4, 90}, spacing, false), halconPlate(spacing, true)}) {
            for (const Paper &paper : {a4, Paper{"", {420, 297}}, Paper{"", {900, 240}}}) {
                const std::optional<SheetPlan> plan = planSheets(geometry, paper, {0.98, 1.0});
                ASSERT_TRUE(plan) << spacing;
                const PageSize most = largestBlock(plan->paper, {0.98, 1.0});
                for (std::size_t row = 0; row < plan->rows(); ++row) {
                    for (std::size_t column = 0; column < plan->columns(); ++column) {
                        const Rectangle window = plan->window(column, row);
                        EXPECT_LE(window.right - window.left, most.width + 1e-9);
                        EXPECT_LE(window.bottom - window.top, most.height + 1e-9);
                        EXPECT_FALSE(clippedTo(window, geometry).rectangles.empty() &&
                                     clippedTo(window, geometry).circles.empty());
                    }
                }
                for (std::size_t i = 1; i < plan->columns(); ++i) {
                    const double cut = plan->cutsX[i];
                    for (const Rectangle &square : geometry.rectangles) {
                        const bool isPlate = !geometry.circles.empty();
                        EXPECT_TRUE(isPlate || square.right <= cut + 1e-9 || square.left >= cut - 1e-9);
                    }
                    for (const Circle &mark : geometry.circles) {
                        EXPECT_GT(std::abs(mark.centre.x - cut), mark.radius);
                    }
                }
            }
        }
    }
    // Squares of 200 mm are too large for A4: a sheet with one of them and the overlaps at its two cuts would be wider
    // than the paper.
    EXPECT_FALSE(planSheets(checkerboard({9, 9}, 400, true), a4, {1, 1}));
}

}  // namespace
}  // namespace lmlib64
