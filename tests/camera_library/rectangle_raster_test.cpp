#include "camera_library/output/rectangle_raster.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

namespace lmlib64 {
namespace {

using Pixels = std::vector<std::uint8_t>;

Pixels drawnByCairo(const std::vector<PixelRectangle> &rectangles, int width, int height) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, width, height), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()), cairo_destroy);
    cairo_scale(context.get(), 1.0 / pixelUnits, 1.0 / pixelUnits);
    for (const PixelRectangle &r : rectangles) {
        cairo_rectangle(context.get(), r.left, r.top, r.right - r.left, r.bottom - r.top);
    }
    cairo_set_fill_rule(context.get(), CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(context.get());
    cairo_surface_flush(surface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    const unsigned char *data = cairo_image_surface_get_data(surface.get());
    Pixels pixels;
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
            pixels.push_back(static_cast<std::uint8_t>(255 - data[y * stride + x]));
        }
    }
    return pixels;
}

int greatestDifference(const Pixels &a, const Pixels &b) {
    int greatest = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        greatest = std::max(greatest, std::abs(a[i] - b[i]));
    }
    return greatest;
}

/// A checkerboard with marks in half of its squares, one square inside the picture's borders.
std::vector<PixelRectangle> markedBoard(int squares, double side, std::uint32_t seed) {
    std::mt19937 random(seed);
    const auto rectangle = [side](double x, double y, double size) {
        const auto unit = [side](double value) { return static_cast<std::int32_t>(value * side * pixelUnits + 0.5); };
        return PixelRectangle{unit(x), unit(y), unit(x + size), unit(y + size)};
    };
    std::vector<PixelRectangle> rectangles;
    for (int row = 0; row < squares; ++row) {
        for (int column = 0; column < squares; ++column) {
            if ((row + column) % 2 == 0) {
                rectangles.push_back(rectangle(column + 1, row + 1, 1.0));
            }
        }
        for (int column = 0; column < squares; ++column) {
            if ((random() & 1U) != 0) {
                rectangles.push_back(rectangle(column + 1 + 1.0 / 3, row + 1 + 1.0 / 3, 1.0 / 3));
            }
        }
    }
    return rectangles;
}

TEST(RectangleRaster, givesExactShareOfArea) {
    // Half a pixel on the left and a quarter on top: shares 1/2, 3/4, 3/8 and 1.
    const Pixels pixels = rasterRectangles({{128, 64, 512, 512}}, 3, 2);
    EXPECT_EQ(pixels, (Pixels{159, 64, 255, 127, 0, 255}));
}

TEST(RectangleRaster, drawsNothingWithoutRectangles) {
    EXPECT_EQ(rasterRectangles({}, 2, 2), Pixels(4, 255));
}

TEST(RectangleRaster, leavesHolesAndCutsAtTheBorder) {
    const Pixels pixels = rasterRectangles({{-999, -999, 9999, 9999}, {256, 256, 512, 512}}, 3, 3);
    EXPECT_EQ(pixels, (Pixels{0, 0, 0, 0, 255, 0, 0, 0, 0}));
}

TEST(RectangleRaster, doesNotDependOnTheOrder) {
    std::vector<PixelRectangle> rectangles = markedBoard(9, 11.3, 7);
    const Pixels inOrder = rasterRectangles(rectangles, 125, 125);
    std::shuffle(rectangles.begin(), rectangles.end(), std::mt19937(3));
    EXPECT_EQ(rasterRectangles(rectangles, 125, 125), inOrder);
}

TEST(RectangleRaster, equalsCairoWithinOneGreyLevel) {
    const struct {
        int squares;
        double side;
        int width, height;
    } boards[] = {{6, 250.1, 2000, 2000},   {16, 111.11, 2000, 1999}, {46, 41.67, 2000, 2000},
                  {92, 21.277, 2000, 2000}, {30, 0.9, 29, 29},        {4, 7.4, 60, 20}};
    for (const auto &board : boards) {
        const auto rectangles = markedBoard(board.squares, board.side, 1);
        EXPECT_LE(greatestDifference(rasterRectangles(rectangles, board.width, board.height),
                                     drawnByCairo(rectangles, board.width, board.height)),
                  1)
            << board.squares << " squares of " << board.side << " pixels";
    }
}

}  // namespace
}  // namespace lmlib64
