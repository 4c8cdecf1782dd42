#include "camera_library/output/preview.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

#include "camera_library/output/outline_raster.h"
#include "camera_library/output/pixel_outlines.h"
#include "camera_library/output/rectangle_raster.h"

namespace lmlib64 {

namespace {

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::vector<std::uint8_t> rasterOfRectangles(const PatternGeometry &geometry, const PixelScale &scale, int width,
                                             int height) {
    std::vector<PixelRectangle> rectangles;
    rectangles.reserve(geometry.rectangles.size());
    for (const Rectangle &rectangle : geometry.rectangles) {
        rectangles.push_back(
            {scale.x(rectangle.left), scale.y(rectangle.top), scale.x(rectangle.right), scale.y(rectangle.bottom)});
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

    // The picture's size is rounded to whole pixels. The pattern is centred, so that opposite borders stay equally
    // wide.
    const PixelScale scale{
        {(image.width - geometry.width * pixelsPerMm) / 2.0, (image.height - geometry.height * pixelsPerMm) / 2.0},
        {pixelsPerMm, pixelsPerMm}};
    const bool onlyRectangles = geometry.circles.empty() && geometry.polygons.empty();
    image.bytes = onlyRectangles ? rasterOfRectangles(geometry, scale, image.width, image.height)
                                 : rasterOutlines(pixelOutlines(geometry, scale), image.width, image.height);
    return image;
}

}  // namespace lmlib64
