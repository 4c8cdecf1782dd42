// Shapes, page layout and preview pixels, each measured against the sizes a pattern has to have.
#include "camera_library/pattern/pattern_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>

#include "camera_library/output/page_layout.h"
#include "camera_library/output/preview.h"
#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/halcon_plate.h"
#include "tests/camera_library/pattern_command.h"

namespace lmlib64 {
namespace {

// Whether the point is dark, by the rule the geometry states.
bool isDark(const PatternGeometry &geometry, double x, double y) {
    int shapes = 0;
    for (const Rectangle &r : geometry.rectangles) {
        shapes += r.left < x && x < r.right && r.top < y && y < r.bottom ? 1 : 0;
    }
    for (const Circle &c : geometry.circles) {
        shapes += std::hypot(x - c.centre.x, y - c.centre.y) < c.radius ? 1 : 0;
    }
    for (const Polygon &polygon : geometry.polygons) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point a = polygon[i];
            const Point b = polygon[(i + 1) % polygon.size()];
            shapes += (a.y < y) != (b.y < y) && x < a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y) ? 1 : 0;
        }
    }
    return shapes % 2 == 1;
}

TEST(PatternGeometry, checkerboardAlternatesFromTheTopLeftSquare) {
    for (const bool polarity : {true, false}) {
        const PatternGeometry board = checkerboard({9, 6}, 12.5, polarity);
        EXPECT_DOUBLE_EQ(board.width, 62.5);
        EXPECT_DOUBLE_EQ(board.height, 43.75);
        EXPECT_GE(board.quietZone, 6.25 / 2);
        for (int row = 0; row < 7; ++row) {
            for (int column = 0; column < 10; ++column) {
                EXPECT_EQ(isDark(board, (column + 0.5) * 6.25, (row + 0.5) * 6.25),
                          ((row + column) % 2 == 0) == polarity);
            }
        }
        EXPECT_EQ(board.lattice.columns, 9);
        EXPECT_EQ(board.lattice.rows, 6);
        EXPECT_DOUBLE_EQ(board.lattice.at(8, 5).x, 56.25);
        EXPECT_DOUBLE_EQ(board.lattice.at(8, 5).y, 37.5);
        EXPECT_EQ(board.lattice.referenceColumn(), 4);
        EXPECT_EQ(board.lattice.referenceRow(), 2);
    }
}

TEST(PatternGeometry, squareWithACellOfOneCarriesAMark) {
    PatternDescription description;
    description.kind = PatternKind::Single;
    description.type = "SingleCustom";
    description.gridSize = {15, 15};
    description.gridSpacing = 12.0;
    description.thickness = 2.0;
    for (const bool polarity : {true, false}) {
        description.polarity = polarity;
        description.coded = true;
        const PatternGeometry coded = geometryOf(description);
        const CodeCells code = *codeCellsOf(description);
        ASSERT_EQ(code.columns, 16);
        for (int row = 0; row < 16; ++row) {
            for (int column = 0; column < 16; ++column) {
                const bool isDarkSquare = ((row + column) % 2 == 0) == polarity;
                // A mark goes from 2 to 4 mm of the square's 6.
                for (const double within : {2.01, 3.0, 3.99}) {
                    EXPECT_EQ(isDark(coded, column * 6 + within, row * 6 + 3.1), isDarkSquare != code.at(column, row));
                    EXPECT_EQ(isDark(coded, column * 6 + 3.1, row * 6 + within), isDarkSquare != code.at(column, row));
                }
                for (const double outside : {0.01, 1.99, 4.01, 5.99}) {
                    EXPECT_EQ(isDark(coded, column * 6 + outside, row * 6 + 3.1), isDarkSquare);
                    EXPECT_EQ(isDark(coded, column * 6 + 3.1, row * 6 + outside), isDarkSquare);
                }
            }
        }
        description.coded = false;
        EXPECT_EQ(geometryOf(description).rectangles.size(), 128U);
        EXPECT_FALSE(codeCellsOf(description));
    }
}

TEST(PatternGeometry, plateHasFrameMarksAndOneCorner) {
    for (const bool polarity : {true, false}) {
        const double s = 10.0;
        const PatternGeometry plate = halconPlate(s, polarity);
        EXPECT_DOUBLE_EQ(plate.width, 80.0);
        EXPECT_DOUBLE_EQ(plate.height, 80.0);
        const auto expectDark = [&](double x, double y, bool dark) {
            EXPECT_EQ(isDark(plate, x, y), dark == polarity) << x << " " << y;
        };
        for (const double a : {0.01, 2.49, 77.51, 79.99}) {  // the frame, s/4 wide, on all sides
            expectDark(a, 41.0, true);
            expectDark(41.0, a, true);
        }
        expectDark(2.51, 41.0, false);
        expectDark(77.49, 41.0, false);
        for (int row = 0; row < 7; ++row) {
            for (int column = 0; column < 7; ++column) {  // marks of radius s/4 at pitch s
                const double x = (column + 1) * s;
                const double y = (row + 1) * s;
                for (const double direction : {0.0, 0.9, 2.2, 3.9}) {
                    expectDark(x + 2.49 * std::cos(direction), y + 2.49 * std::sin(direction), true);
                    expectDark(x + 2.51 * std::cos(direction), y + 2.51 * std::sin(direction), false);
                }
            }
        }
        expectDark(4.0, 4.0, true);  // the mark of orientation is in the top-left corner alone
        expectDark(76.0, 4.0, false);
        expectDark(4.0, 76.0, false);
        expectDark(76.0, 76.0, false);
    }
}

int greyAt(const Binary &image, int x, int y) {
    const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width);
    return image.bytes[row + static_cast<std::size_t>(x)];
}

// The grey values of an image row or column, as the position of the edge between two pixels of full grey.
double edgeFrom(const Binary &image, int x, int y, int dx, int dy, int count) {
    double light = 0.0;
    for (int i = 0; i < count; ++i) {
        light += greyAt(image, x + i * dx, y + i * dy) / 255.0;
    }
    return light;
}

TEST(Preview, coversEachPixelByItsShareOfTheArea) {
    struct Case {
        const char *pattern;
        int imageSize;
        int width;
        int height;
        double squares;  ///< along the longer side, quiet zone included
    };
    const Case cases[]{
        {R"({"Type": "SingleCustom", "GridSpacing": 12})", 2000, 2000, 2000, 18},
        {R"({"Type": "Flexible", "GridSize": [9, 6], "GridSpacing": 12.34})", 1999, 1999, 1499, 12},
        {R"({"Type": "Flexible", "GridSize": [6, 9], "GridSpacing": 3.3})", 1001, 751, 1001, 12},
        {R"({"Type": "Flexible", "GridSize": [91, 91], "GridSpacing": 1})", 2000, 2000, 2000, 94},
        {R"({"Type": "Assembly", "GridSpacing": 12})", 517, 517, 517, 18},
    };
    for (const Case &test : cases) {
        const Binary image = preview(test.pattern, test.imageSize, false);
        ASSERT_EQ(image.width, test.width) << test.pattern;
        ASSERT_EQ(image.height, test.height);
        ASSERT_EQ(image.bytes.size(), static_cast<std::size_t>(test.width * test.height));
        EXPECT_EQ(image.channelCount, 1);
        EXPECT_EQ(image.bytesPerElement, 1);
        const double side = test.imageSize / test.squares;
        // The rounding of the shorter side is shared by both its borders.
        const double left = side + (image.width - std::round(image.width / side) * side) / 2.0;
        const double top = side + (image.height - std::round(image.height / side) * side) / 2.0;
        const int middle = static_cast<int>(side / 2.0);
        // Light from the border to the first dark square is the first edge, along x and along y.
        const int reachX = static_cast<int>(left) + middle;
        const int reachY = static_cast<int>(top) + middle;
        EXPECT_NEAR(edgeFrom(image, 0, reachY, 1, 0, reachX), left, 0.01) << test.pattern;
        EXPECT_NEAR(edgeFrom(image, reachX, 0, 0, 1, reachY), top, 0.01) << test.pattern;
        // From the middle of the first dark square to that of the third square there are a side of light and the edges.
        const int span = static_cast<int>(2.0 * side);
        EXPECT_NEAR(edgeFrom(image, reachX, reachY, 1, 0, span), side, 0.02) << test.pattern;
        EXPECT_EQ(greyAt(image, reachX, reachY), 0);
        EXPECT_EQ(greyAt(image, 0, 0), 255);
    }
}

TEST(Preview, showsAPlatesMarksWithTheirArea) {
    const Binary image = preview(R"({"GridSpacing": 12.5})", 1800, false);  // 9 grid spacings, 200 pixels each
    double dark = 0.0;
    for (int y = 400; y < 500; ++y) {
        for (int x = 400; x < 600; ++x) {  // the upper half of the field around mark (1, 1), whose centre is (500, 500)
            dark += (255 - greyAt(image, x, y)) / 255.0;
        }
    }
    EXPECT_NEAR(dark, 3.14159265 * 50.0 * 50.0 / 2.0, 3.0);
}

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
                const Rectangle printable{5.0, 5.0, layout->width - 5.0, layout->height - 5.0};
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
                EXPECT_NEAR(layout->pattern.x + board.width / 2.0, layout->width / 2.0, 1e-9);
                EXPECT_NEAR(layout->pattern.y + board.height / 2.0, layout->height / 2.0, 1e-9);
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
    // Wide enough: block + 10 mm; high enough: block + 10 mm + two strips of 10.5 mm, as the pattern is centred.
    const Case cases[]{
        {15, 15, 12.5, 210, 297},  {15, 15, 22.2, 210, 297}, {15, 15, 22.3, 297, 420}, {29, 15, 16, 297, 210},
        {15, 15, 31.8, 297, 420},  {29, 15, 24, 420, 297},   {15, 15, 45, 420, 594},   {29, 15, 35, 594, 420},
        {15, 15, 64, 594, 841},    {29, 15, 50, 841, 594},   {15, 15, 92, 841, 1189},  {29, 15, 70, 1189, 841},
        {91, 91, 12.5, 841, 1189}, {15, 15, 96, 884, 895},
    };
    for (const Case &test : cases) {
        const std::optional<PageLayout> layout =
            layOutPage(checkerboard({test.columns, test.rows}, test.spacing, true));
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->width, test.width) << test.columns << " x " << test.rows << " at " << test.spacing;
        EXPECT_EQ(layout->height, test.height) << test.columns << " x " << test.rows << " at " << test.spacing;
    }
    EXPECT_FALSE(layOutPage(checkerboard({15, 15}, 700, true)));
}

}  // namespace
}  // namespace lmlib64
