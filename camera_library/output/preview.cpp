#include "camera_library/output/preview.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <vector>

#include "camera_library/output/cairo_drawing.h"

namespace lmlib64 {

namespace {

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Draws onto light rows that are `stride` bytes apart.
void drawDark(const PatternGeometry &geometry, double pixelsPerMm, std::uint8_t *rows, int width, int height,
              int stride) {
    // Cairo sees the light of a pixel as its opacity, and takes away the dark share of it.
    const CairoSurface surface(cairo_image_surface_create_for_data(rows, CAIRO_FORMAT_A8, width, height, stride));
    checkCairo(cairo_surface_status(surface.get()));
    const CairoContext context(cairo_create(surface.get()));
    cairo_set_operator(context.get(), CAIRO_OPERATOR_DEST_OUT);
    cairo_translate(context.get(), (width - geometry.width * pixelsPerMm) / 2.0,
                    (height - geometry.height * pixelsPerMm) / 2.0);
    cairo_scale(context.get(), pixelsPerMm, pixelsPerMm);
    fillDarkShapes(context.get(), geometry);
    checkCairo(cairo_status(context.get()));
    cairo_surface_flush(surface.get());
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

    const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_A8, image.width);
    const auto rowBytes = static_cast<std::size_t>(stride);
    const auto packedRowBytes = static_cast<std::size_t>(image.width);
    const auto rowCount = static_cast<std::size_t>(image.height);
    image.bytes.assign(rowBytes * rowCount, 255);
    drawDark(geometry, pixelsPerMm, image.bytes.data(), image.width, image.height, stride);
    // Closing the gaps Cairo wants at the ends of rows: every row moves towards the front, in order.
    for (std::size_t row = 1; rowBytes != packedRowBytes && row < rowCount; ++row) {
        std::copy_n(image.bytes.data() + row * rowBytes, packedRowBytes, image.bytes.data() + row * packedRowBytes);
    }
    image.bytes.resize(packedRowBytes * rowCount);
    return image;
}

}  // namespace lmlib64
