#include "camera_library/output/outline_raster.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "tests/camera_library/pattern_command.h"

namespace lmlib64 {
namespace {

using Pixels = std::vector<std::uint8_t>;

PixelOutline circle(double x, double y, double radius) {
    PixelOutline outline;
    for (int i = 0; i < 400; ++i) {
        const double angle = i * 6.283185307179586 / 400;
        outline.push_back({static_cast<std::int32_t>((x + radius * std::cos(angle)) * 256),
                           static_cast<std::int32_t>((y + radius * std::sin(angle)) * 256)});
    }
    return outline;
}

/// Drawn by Cairo at many times the size, where its own exactness matters little, and averaged.
std::vector<double> averagedCairo(const std::vector<PixelOutline> &outlines, int width, int height) {
    constexpr int times = 32;
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, width * times, height * times), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()), cairo_destroy);
    for (const PixelOutline &outline : outlines) {
        cairo_new_sub_path(context.get());
        for (const PixelPoint &point : outline) {
            cairo_line_to(context.get(), point.x * times / 256.0, point.y * times / 256.0);
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
            const int pixel = y / times * width + x / times;
            greys[static_cast<std::size_t>(pixel)] -= data[y * stride + x] / static_cast<double>(times * times);
        }
    }
    return greys;
}

TEST(OutlineRaster, givesExactShareOfArea) {
    const struct {
        const char *what;
        std::vector<PixelOutline> outlines;
        Pixels expected;
    } cases[] = {
        {"nothing", {}, {255, 255, 255, 255}},
        {"no area", {{{0, 0}, {512, 0}}, {{9, 9}}, {}}, {255, 255, 255, 255}},
        {"diagonal half", {{{0, 0}, {512, 512}, {0, 512}}}, {127, 255, 0, 127}},
        {"the same run the other way", {{{0, 512}, {512, 512}, {0, 0}}}, {127, 255, 0, 127}},
        {"rectangle off the pixels", {{{128, 64}, {512, 64}, {512, 512}, {128, 512}}}, {159, 64, 127, 0}},
        {"hole",
         {{{0, 0}, {512, 0}, {512, 512}, {0, 512}}, {{256, 0}, {512, 0}, {512, 256}, {256, 256}}},
         {0, 255, 0, 0}},
        {"hole in the same pixel",
         {{{64, 0}, {512, 0}, {512, 512}, {64, 512}}, {{128, 0}, {128, 512}, {512, 512}, {512, 0}}},
         {191, 255, 191, 255}},
        {"outline around itself twice",
         {{{0, 0}, {512, 0}, {512, 512}, {0, 512}, {0, 0}, {512, 0}, {512, 512}, {0, 512}}},
         {255, 255, 255, 255}},
        {"beyond the border", {{{-900, -900}, {9000, -900}, {9000, 256}, {-900, 256}}}, {0, 0, 255, 255}},
    };
    for (const auto &[what, outlines, expected] : cases) {
        EXPECT_EQ(rasterOutlines(outlines, 2, 2), expected) << what;
    }
}

TEST(OutlineRaster, equalsCairoWithinOneGreyLevel) {
    constexpr int width = 143;
    constexpr int height = 137;
    std::vector<PixelOutline> outlines{{{0, 0}, {width * 256, 0}, {width * 256, height * 256}, {0, height * 256}},
                                       {{5500, 2500}, {34111, 2577}, {33999, 32555}, {2590, 32571}, {2577, 5600}}};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double x = 29.3 + column * 34.37;
            const double y = 29.7 + row * 33.61;
            outlines.push_back(circle(x, y, 10.3 + row));
            const PixelOutline hole = circle(x, y, 9.6 + row);
            outlines.emplace_back(hole.rbegin(), hole.rend());
            outlines.push_back(circle(x + 16.9, y, 3.1));
            outlines.push_back(circle(x + 16.9, y, 1.4));
        }
    }
    const Pixels pixels = rasterOutlines(outlines, width, height);
    const std::vector<double> expected = averagedCairo(outlines, width, height);
    ASSERT_EQ(pixels.size(), expected.size());
    double greatest = 0.0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        greatest = std::max(greatest, std::abs(pixels[i] - expected[i]));
    }
    EXPECT_LE(greatest, 1.0);
}

// Where the frame, a dot and its hole meet in one pixel.
TEST(OutlineRaster, makesSmallPreviewOfPlateExact) {
    constexpr std::size_t size = 40;
    constexpr std::size_t times = 32;
    for (const char *polarity : {"true", "false"}) {
        const std::string plate = std::string(R"({"GridSpacing": 12.5, "Thickness": 2, "Polarity": )") + polarity + "}";
        const Binary small = preview(plate, int{size});
        const Binary large = preview(plate, int{size * times});
        ASSERT_EQ(small.bytes.size(), size * size);
        std::vector<double> expected(small.bytes.size());
        for (std::size_t i = 0; i < large.bytes.size(); ++i) {
            const std::size_t row = i / (size * times) / times;
            expected[row * size + i % (size * times) / times] += large.bytes[i] / double{times * times};
        }
        double greatest = 0.0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            greatest = std::max(greatest, std::abs(small.bytes[i] - expected[i]));
        }
        EXPECT_LE(greatest, 2.0) << plate;
    }
}

}  // namespace
}  // namespace lmlib64
