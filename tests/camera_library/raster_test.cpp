// Checks the pictures of the preview's two rasterisers against grey levels that follow from exact areas, and against
// Cairo's pictures of the same shapes. Also compares small previews with large previews of the same pattern.
#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "camera_library/output/outline_raster.h"
#include "camera_library/output/preview.h"
#include "camera_library/output/rectangle_raster.h"
#include "camera_library/pattern/halcon_plate.h"

namespace lmlib64 {
namespace {

using Pixels = std::vector<std::uint8_t>;

using PixelOutline = std::vector<PixelPoint>;

PixelOutlines listed(const std::vector<PixelOutline> &outlines) {
    PixelOutlines list;
    for (const PixelOutline &outline : outlines) {
        list.points.insert(list.points.end(), outline.begin(), outline.end());
        list.close();
    }
    return list;
}

std::vector<PixelOutline> outlinesOf(const std::vector<PixelRectangle> &rectangles) {
    std::vector<PixelOutline> outlines;
    for (const PixelRectangle &r : rectangles) {
        outlines.push_back({{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}});
    }
    return outlines;
}

// Returns the grey levels of Cairo's picture. In a small picture, Cairo's round shapes are not exact. So Cairo draws
// the picture `times` times as wide and as high, and the pixels are averaged.
std::vector<double> drawnByCairo(const std::vector<PixelOutline> &outlines, int width, int height, int times) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, width * times, height * times), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()), cairo_destroy);
    for (const PixelOutline &outline : outlines) {
        cairo_new_sub_path(context.get());
        for (const PixelPoint &point : outline) {
            cairo_line_to(context.get(), point.x * times / double{pixelUnits}, point.y * times / double{pixelUnits});
        }
        cairo_close_path(context.get());
    }
    cairo_set_fill_rule(context.get(), CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(context.get());
    cairo_surface_flush(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    const unsigned char *data = cairo_image_surface_get_data(surface.get());
    std::vector<double> greys(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 255.0);
    for (int y = 0; y < height * times; ++y) {
        for (int x = 0; x < width * times; ++x) {
            greys[static_cast<std::size_t>(y / times * width + x / times)] -=
                data[y * stride + x] / double(times * times);
        }
    }
    return greys;
}

double greatestDifference(const Pixels &pixels, const std::vector<double> &expected) {
    EXPECT_EQ(pixels.size(), expected.size());
    double greatest = 0.0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        greatest = std::max(greatest, std::abs(pixels[i] - expected[i]));
    }
    return greatest;
}

TEST(Raster, givesEachPixelTheShareOfItsAreaThatIsCovered) {
    const struct {
        const char *what;
        std::vector<PixelRectangle> rectangles;
        Pixels expected;
    } cases[] = {
        {"nothing", {}, {255, 255, 255, 255}},
        {"edges within pixels", {{128, 64, 512, 512}}, {159, 64, 127, 0}},
        {"hole", {{0, 0, 512, 512}, {256, 0, 512, 256}}, {0, 255, 0, 0}},
        {"beyond the border", {{-900, -900, 9000, 256}}, {0, 0, 255, 255}},
    };
    for (const auto &[what, rectangles, expected] : cases) {
        EXPECT_EQ(rasterRectangles(rectangles, 2, 2), expected) << what;
        EXPECT_EQ(rasterOutlines(listed(outlinesOf(rectangles)), 2, 2), expected) << what;
    }
}

TEST(Raster, takesOutlinesOfEveryShapeAndDirection) {
    const struct {
        const char *what;
        std::vector<PixelOutline> outlines;
        Pixels expected;
    } cases[] = {
        {"no area", {{{0, 0}, {512, 0}}, {{9, 9}}, {}}, {255, 255, 255, 255}},
        {"diagonal half", {{{0, 0}, {512, 512}, {0, 512}}}, {127, 255, 0, 127}},
        {"diagonal half, opposite direction", {{{0, 512}, {512, 512}, {0, 0}}}, {127, 255, 0, 127}},
        {"edges of an outline and of its hole in the same pixel",
         {{{64, 0}, {512, 0}, {512, 512}, {64, 512}}, {{128, 0}, {128, 512}, {512, 512}, {512, 0}}},
         {191, 255, 191, 255}},
        {"outline that runs around the same square twice",
         {{{0, 0}, {512, 0}, {512, 512}, {0, 512}, {0, 0}, {512, 0}, {512, 512}, {0, 512}}},
         {255, 255, 255, 255}},
    };
    for (const auto &[what, outlines, expected] : cases) {
        EXPECT_EQ(rasterOutlines(listed(outlines), 2, 2), expected) << what;
    }
}

// Returns a checkerboard that begins one square from the picture's left and top borders. About half of its squares,
// chosen at random, have marks.
std::vector<PixelRectangle> markedBoard(int squares, double side) {
    std::mt19937 random(1);
    std::vector<PixelRectangle> rectangles;
    const auto add = [&](double x, double y, double size) {
        const auto unit = [side](double value) { return static_cast<std::int32_t>(value * side * pixelUnits + 0.5); };
        rectangles.push_back({unit(x), unit(y), unit(x + size), unit(y + size)});
    };
    for (int row = 0; row < squares; ++row) {
        for (int column = 0; column < squares; ++column) {
            if ((row + column) % 2 == 0) {
                add(column + 1, row + 1, 1.0);
            }
            if ((random() & 1U) != 0) {
                add(column + 1 + 1.0 / 3, row + 1 + 1.0 / 3, 1.0 / 3);
            }
        }
    }
    return rectangles;
}

TEST(Raster, drawsBoardsLikeCairoWhateverTheOrderOfTheirRectangles) {
    const struct {
        int squares;
        double side;
        int width, height;
    } boards[] = {{6, 250.1, 2000, 2000}, {92, 21.277, 2000, 1999}, {30, 0.9, 29, 29}, {4, 7.4, 60, 20}};
    for (const auto &board : boards) {
        std::vector<PixelRectangle> rectangles = markedBoard(board.squares, board.side);
        const Pixels pixels = rasterRectangles(rectangles, board.width, board.height);
        EXPECT_LE(greatestDifference(pixels, drawnByCairo(outlinesOf(rectangles), board.width, board.height, 1)), 1.0)
            << board.squares << " squares of " << board.side << " pixels";
        std::shuffle(rectangles.begin(), rectangles.end(), std::mt19937(3));
        EXPECT_EQ(rasterRectangles(rectangles, board.width, board.height), pixels);
    }
}

PixelOutline circle(double x, double y, double radius) {
    PixelOutline outline;
    for (int i = 0; i < 400; ++i) {
        const double angle = i * 6.283185307179586 / 400;
        outline.push_back({static_cast<std::int32_t>((x + radius * std::cos(angle)) * pixelUnits),
                           static_cast<std::int32_t>((y + radius * std::sin(angle)) * pixelUnits)});
    }
    return outline;
}

TEST(Raster, drawsRoundShapesAsCairoDoes) {
    constexpr int width = 137;
    constexpr int height = 143;
    std::vector<PixelOutline> outlines = outlinesOf({{0, 0, width * pixelUnits, height * pixelUnits}});
    outlines.push_back({{5500, 2500}, {34111, 2577}, {33999, 32555}, {2590, 32571}, {2577, 5600}});
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double x = 29.3 + column * 34.37;
            const double y = 29.7 + row * 33.61;
            outlines.push_back(circle(x, y, 10.3 + row));
            const PixelOutline hole = circle(x, y, 9.6 + row);
            outlines.emplace_back(hole.rbegin(), hole.rend());
            outlines.push_back(circle(x + 16.9, y, 3.1));
        }
    }
    EXPECT_LE(
        greatestDifference(rasterOutlines(listed(outlines), width, height), drawnByCairo(outlines, width, height, 32)),
        1.0);
}

// A plate without a frame and with light marks on a dark ground. One of the marks contains a ring.
PatternGeometry invertedGrid() {
    PatternGeometry geometry;
    geometry.width = 5.0;
    geometry.height = 5.0;
    geometry.circles = {{{1.3, 1.2}, 0.7}, {{1.3, 1.2}, 0.35}, {{1.3, 1.2}, 0.3}, {{3.1, 1.2}, 0.6}, {{2.0, 3.0}, 0.9}};
    geometry.rectangles = {{0.0, 0.0, 5.0, 5.0}};
    geometry.quietZone = 0.5;
    return geometry;
}

// A pixel that several outlines cross is exact only if each outline runs in the opposite direction to the outline
// around it. So the direction in which the preview draws a shape must depend on the shapes around it.
TEST(Preview, isExactHoweverTheShapesNest) {
    constexpr std::size_t times = 32;
    for (const PatternGeometry &geometry : {halconPlate(12.5, true), halconPlate(12.5, false), invertedGrid()}) {
        const Binary small = renderPreview(geometry, 40);
        const Binary large = renderPreview(geometry, 40 * int{times});
        const auto width = static_cast<std::size_t>(small.width);
        ASSERT_EQ(large.bytes.size(), small.bytes.size() * times * times);
        std::vector<double> expected(small.bytes.size());
        for (std::size_t i = 0; i < large.bytes.size(); ++i) {
            expected[i / (width * times * times) * width + i % (width * times) / times] +=
                large.bytes[i] / double{times * times};
        }
        EXPECT_LE(greatestDifference(small.bytes, expected), 2.0);
    }
}

}  // namespace
}  // namespace lmlib64
