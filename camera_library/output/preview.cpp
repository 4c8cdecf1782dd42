#include "camera_library/output/preview.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "camera_library/output/cairo_drawing.h"
#include "camera_library/output/rectangle_raster.h"

namespace lmlib64 {

namespace {

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// How a geometry lies in the picture: its outer size is centred, so both borders share the rounding.
struct Placement {
    double pixelsPerMm = 0.0;
    double left = 0.0;  ///< of the outer size, in pixels
    double top = 0.0;
};

std::vector<std::uint8_t> rasterThroughCairo(const PatternGeometry &geometry, const Placement &placement, int width,
                                             int height) {
    const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_A8, width);
    const auto rowBytes = static_cast<std::size_t>(stride);
    const auto packedRowBytes = static_cast<std::size_t>(width);
    const auto rowCount = static_cast<std::size_t>(height);
    std::vector<std::uint8_t> rows(rowBytes * rowCount);
    {
        // Cairo fills with the dark share as opacity, which it does far quicker than taking light away.
        const CairoSurface surface(
            cairo_image_surface_create_for_data(rows.data(), CAIRO_FORMAT_A8, width, height, stride));
        checkCairo(cairo_surface_status(surface.get()));
        const CairoContext context(cairo_create(surface.get()));
        cairo_translate(context.get(), placement.left, placement.top);
        cairo_scale(context.get(), placement.pixelsPerMm, placement.pixelsPerMm);
        fillDarkShapes(context.get(), geometry);
        checkCairo(cairo_status(context.get()));
        cairo_surface_flush(surface.get());
    }
    // From dark shares to light, and closing the gaps Cairo wants at the ends of rows: every row moves towards
    // the front, in order.
    for (std::size_t row = 0; row < rowCount; ++row) {
        const std::uint8_t *from = rows.data() + row * rowBytes;
        std::uint8_t *to = rows.data() + row * packedRowBytes;
        for (std::size_t x = 0; x < packedRowBytes; ++x) {
            to[x] = static_cast<std::uint8_t>(255 - from[x]);
        }
    }
    rows.resize(packedRowBytes * rowCount);
    return rows;
}

std::vector<std::uint8_t> rasterOfRectangles(const PatternGeometry &geometry, const Placement &placement, int width,
                                             int height) {
    // Rounds, as nothing lies left of the picture or above it.
    const auto units = [&placement](double start, double mm) {
        return static_cast<std::int32_t>((start + mm * placement.pixelsPerMm) * pixelUnits + 0.5);
    };
    std::vector<PixelRectangle> rectangles;
    rectangles.reserve(geometry.rectangles.size());
    for (const Rectangle &rectangle : geometry.rectangles) {
        rectangles.push_back({units(placement.left, rectangle.left), units(placement.top, rectangle.top),
                              units(placement.left, rectangle.right), units(placement.top, rectangle.bottom)});
    }
    return rasterRectangles(std::move(rectangles), width, height);
}

}  // namespace

Binary renderPreview(const PatternGeometry &geometry, int imageSize) {
    Binary image;
    image.timestamp = secondsSince1970();
    if (geometry.width <= 0.0 || geometry.height <= 0.0) {
        return image;
    }
    const double widthMm = geometry.width + 2.0 * geometry.quietZone;
    const double heightMm = geometry.height + 2.0 * geometry.quietZone;
    const double pixelsPerMm = imageSize / std::max(widthMm, heightMm);
    image.width = std::clamp(static_cast<int>(std::lround(widthMm * pixelsPerMm)), 1, imageSize);
    image.height = std::clamp(static_cast<int>(std::lround(heightMm * pixelsPerMm)), 1, imageSize);

    const Placement placement{pixelsPerMm, (image.width - geometry.width * pixelsPerMm) / 2.0,
                              (image.height - geometry.height * pixelsPerMm) / 2.0};
    const bool onlyRectangles = geometry.circles.empty() && geometry.polygons.empty();
    const auto raster = onlyRectangles ? rasterOfRectangles : rasterThroughCairo;
    image.bytes = raster(geometry, placement, image.width, image.height);
    return image;
}

}  // namespace lmlib64
