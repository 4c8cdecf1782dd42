#include "camera_library/output/png_page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/deflater.h"
#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/output/pixel_outlines.h"

namespace lmlib64 {

namespace {

constexpr double mmPerInch = 25.4;

struct PixelSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

PixelSize pixelSizeOf(const PrintedPage &page, int resolution) {
    const double width = std::round(page.paper.width * resolution / mmPerInch);
    const double height = std::round(page.paper.height * resolution / mmPerInch);
    if (std::max(width, height) > largestPngSide) {
        throw PatternTooLarge("The page needs a picture of " + std::to_string(std::llround(width)) + " x " +
                              std::to_string(std::llround(height)) + " pixels at a \"Resolution\" of " +
                              std::to_string(resolution) + " dots per inch; a side can have at most " +
                              std::to_string(largestPngSide) + " pixels.");
    }
    return {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

// Returns the scale that maps millimetres of the page's layout to pixels. The origin is shifted by less than a pixel,
// so that the pattern's corner is on a pixel's corner.
PixelScale scaleOf(const PrintedPage &page, double pixelsPerMm) {
    const Point corner = page.patternPlacement().origin;
    const auto onPixel = [pixelsPerMm](double mm) { return std::round(mm * pixelsPerMm); };
    const Point perMm{pixelsPerMm * page.placement.scale.x, pixelsPerMm * page.placement.scale.y};
    return {{onPixel(corner.x) - page.patternPlace.x * perMm.x, onPixel(corner.y) - page.patternPlace.y * perMm.y},
            perMm};
}

// Converts a text's curves to polygons.
class TextOutlines {
public:
    TextOutlines(const PageText &pageText, const PixelScale &pixelScale) : text(pageText), scale(pixelScale) {}

    void addTo(PixelOutlines &outlines) {
        for (const char character : captionText(text.text)) {
            const auto code = static_cast<unsigned char>(character);
            for (const std::vector<GlyphPoint> &curve : captionGlyph(code)) {
                addCurve(curve, outlines);
            }
            advance += captionWidth({&character, 1}, text.size);
        }
    }

private:
    static Point middle(Point a, Point b) { return {(a.x + b.x) / 2.0, (a.y + b.y) / 2.0}; }
    static Point pointOf(const GlyphPoint &point) {
        return {static_cast<double>(point.x), static_cast<double>(point.y)};
    }

    PixelPoint onPage(Point inGlyph) const {
        const double along = advance + inGlyph.x * text.size / glyphUnitsPerSize;
        const double above = inGlyph.y * text.size / glyphUnitsPerSize;
        return text.isUpwards ? scale.point(text.start.x - above, text.start.y - along)
                              : scale.point(text.start.x + along, text.start.y - above);
    }

    // Every control point, that is, every point off the curve, stands for a piece of the curve. The piece begins at the
    // previous point if that point is on the curve, otherwise in the middle between the previous point and the control
    // point. The piece ends at the next point if that point is on the curve, otherwise in the middle between the
    // control point and the next point.
    void addCurve(const std::vector<GlyphPoint> &curve, PixelOutlines &outlines) const {
        constexpr int steps = 8;
        for (std::size_t i = 0; i < curve.size(); ++i) {
            const Point control = pointOf(curve[i]);
            if (curve[i].isOnCurve) {
                outlines.points.push_back(onPage(control));
                continue;
            }
            const GlyphPoint &before = curve[(i + curve.size() - 1) % curve.size()];
            const GlyphPoint &after = curve[(i + 1) % curve.size()];
            const Point from = before.isOnCurve ? pointOf(before) : middle(pointOf(before), control);
            const Point to = after.isOnCurve ? pointOf(after) : middle(control, pointOf(after));
            for (int step = 1; step <= steps; ++step) {
                const double t = static_cast<double>(step) / steps;
                const double s = 1.0 - t;
                outlines.points.push_back(onPage({s * s * from.x + 2.0 * s * t * control.x + t * t * to.x,
                                                  s * s * from.y + 2.0 * s * t * control.y + t * t * to.y}));
            }
        }
        outlines.close();
    }

    const PageText &text;
    const PixelScale &scale;
    double advance = 0.0;
};

void addOutline(PixelOutlines &outlines, const PixelScale &scale, const Polygon &polygon) {
    for (const Point &point : polygon) {
        outlines.points.push_back(scale.point(point.x, point.y));
    }
    outlines.close();
}

PixelOutlines outlinesOf(const PrintedPage &page, const PixelScale &scale) {
    const Point corner{std::round(scale.pixelsX(page.patternPlace.x)), std::round(scale.pixelsY(page.patternPlace.y))};
    PatternGeometry part;
    PixelOutlines outlines = pixelOutlines(visibleGeometry(page, part), PixelScale(corner, scale.pixelsPerMm()));
    for (const CheckBar &bar : page.bars) {
        addOutline(outlines, scale, checkBarOutline(bar));
        TextOutlines(labelOf(bar), scale).addTo(outlines);
    }
    for (const Rectangle &line : page.lines) {
        addOutline(
            outlines, scale,
            {{line.left, line.top}, {line.right, line.top}, {line.right, line.bottom}, {line.left, line.bottom}});
    }
    for (const PageText &text : page.texts) {
        TextOutlines(text, scale).addTo(outlines);
    }
    return outlines;
}

void appendNumber(std::string &bytes, std::uint32_t number) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        bytes += static_cast<char>(number >> shift & 0xffU);
    }
}

// Starts a chunk with these four letters and returns where it starts. The caller then appends the chunk's data and
// passes the returned position to endChunk.
std::size_t beginChunk(std::string &png, const char *letters) {
    const std::size_t start = png.size();
    appendNumber(png, 0);
    png += letters;
    return start;
}

void endChunk(std::string &png, std::size_t start) {
    std::string length;
    appendNumber(length, static_cast<std::uint32_t>(png.size() - start - 8));
    png.replace(start, length.size(), length);
    const uLong sum = crc32_z(0, reinterpret_cast<const Bytef *>(png.data() + start + 4), png.size() - start - 4);
    appendNumber(png, static_cast<std::uint32_t>(sum));
}

void addHeader(std::string &png, PixelSize size, double pixelsPerMm) {
    std::size_t start = beginChunk(png, "IHDR");
    appendNumber(png, static_cast<std::uint32_t>(size.width));
    appendNumber(png, static_cast<std::uint32_t>(size.height));
    // 8 bits per pixel, grey, compression method 0, filter method 0 (PNG has only these two methods), not interlaced
    png.append({8, 0, 0, 0, 0});
    endChunk(png, start);
    start = beginChunk(png, "pHYs");
    const auto perMetre = static_cast<std::uint32_t>(std::lround(pixelsPerMm * 1000.0));
    appendNumber(png, perMetre);
    appendNumber(png, perMetre);
    png += '\1';  // per metre
    endChunk(png, start);
}

void addText(std::string &png, const char *keyword, const std::string &utf8) {
    const std::size_t start = beginChunk(png, "iTXt");
    png.append(keyword).append({0, 1, 0, 0, 0});  // compressed, in no particular language
    png += Deflater(Repetitions::Anywhere).deflated(utf8);
    endChunk(png, start);
}

// Compresses one row after the other. Most rows equal the row above, so each row is stored as its difference from the
// row above.
class PixelWriter {
public:
    PixelWriter(std::string &bytes, std::int32_t width)
        : png(bytes), above(static_cast<std::size_t>(width)), same(above.size() + 1, '\0') {
        constexpr char differenceFromAbove = 2;
        same.front() = differenceFromAbove;
        difference = same;
    }

    void add(const std::uint8_t *row) {
        if (std::equal(above.begin(), above.end(), row)) {
            deflater.add(same, png);
            return;
        }
        for (std::size_t x = 0; x < above.size(); ++x) {
            difference[x + 1] = static_cast<char>(row[x] - above[x]);
        }
        std::copy(row, row + above.size(), above.begin());
        deflater.add(difference, png);
    }

    void finish() { deflater.finish(png); }

private:
    std::string &png;
    Deflater deflater{Repetitions::OfOneByte};
    std::vector<std::uint8_t> above;  // the previous row; the format prescribes zeros before the first row
    std::string same;
    std::string difference;
};

}  // namespace

std::string pngPage(const PrintedPage &page, const PatternDocument &document) {
    const int resolution = document.options.resolution.value_or(defaultResolution);
    const PixelSize size = pixelSizeOf(page, resolution);
    const double pixelsPerMm = resolution / mmPerInch;
    std::string png = "\x89PNG\r\n\x1a\n";
    addHeader(png, size, pixelsPerMm);
    addText(png, "Title", patternTitle(page.pattern->description));
    addText(png, "Software", libraryName());
    addText(png, "pattern.json", patternJson(document, *page.pattern));

    const std::size_t start = beginChunk(png, "IDAT");
    PixelWriter writer(png, size.width);
    rasterOutlineRows(outlinesOf(page, scaleOf(page, pixelsPerMm)), size.width, size.height,
                      [&writer](const std::uint8_t *row) { writer.add(row); });
    writer.finish();
    endChunk(png, start);
    endChunk(png, beginChunk(png, "IEND"));
    return png;
}

}  // namespace lmlib64
