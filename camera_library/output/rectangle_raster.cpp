#include "camera_library/output/rectangle_raster.h"

#include <algorithm>

namespace lmlib64 {
namespace {

/// The share of each pixel of a row that is covered, in 1/256.
using CoverageRow = std::vector<std::uint16_t>;

/// Where rows change, from top to bottom, inside the picture and with both its ends.
std::vector<std::int32_t> horizontalEdges(const std::vector<PixelRectangle> &rectangles, std::int32_t height) {
    std::vector<std::int32_t> edges{0, height};
    const auto add = [&edges, height](std::int32_t y, std::int32_t &last) {
        // Neighbours in a row of squares share their edges; leaving those out keeps the sort short.
        if (y != last && y > 0 && y < height) {
            edges.push_back(y);
        }
        last = y;
    };
    std::int32_t lastTop = 0;
    std::int32_t lastBottom = 0;
    for (const PixelRectangle &rectangle : rectangles) {
        add(rectangle.top, lastTop);
        add(rectangle.bottom, lastBottom);
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

/// Sorts what is usually two sorted runs: the squares of a row and the marks in them.
void sortRuns(std::vector<std::int32_t> &values) {
    const auto secondRun = std::is_sorted_until(values.begin(), values.end());
    if (!std::is_sorted(secondRun, values.end())) {
        std::sort(secondRun, values.end());
    }
    std::inplace_merge(values.begin(), secondRun, values.end());
}

/// Adds the interval from a to b, both inside the row.
void cover(CoverageRow &row, std::int32_t a, std::int32_t b) {
    const std::int32_t first = a / pixelUnits;
    const std::int32_t last = b / pixelUnits;
    std::uint16_t *const pixels = row.data();
    if (first == last) {
        pixels[first] = static_cast<std::uint16_t>(pixels[first] + (b - a));
        return;
    }
    pixels[first] = static_cast<std::uint16_t>(pixels[first] + (first + 1) * pixelUnits - a);
    std::fill(pixels + first + 1, pixels + last, static_cast<std::uint16_t>(pixelUnits));
    pixels[last] = static_cast<std::uint16_t>(pixels[last] + b - last * pixelUnits);
}

/// Sends rows to the picture from the top, in heights that need not be whole pixels.
class RowWriter {
public:
    RowWriter(std::int32_t width, std::int32_t height)
        : sum(static_cast<std::size_t>(width)), bytes(static_cast<std::size_t>(width)) {
        picture.reserve(bytes.size() * static_cast<std::size_t>(height));
    }

    /// All rows from where the last call ended down to y, in 1/256 pixel, look like this one.
    void fillDownTo(std::int32_t y, const CoverageRow &row) {
        while (position < y) {
            const std::int32_t wholeRows = position % pixelUnits == 0 ? (y - position) / pixelUnits : 0;
            if (wholeRows > 0) {
                appendRows(wholeRows, row);
                position += wholeRows * pixelUnits;
                continue;
            }
            const std::int32_t rowEnd = (position / pixelUnits + 1) * pixelUnits;
            addShare(static_cast<std::uint32_t>(std::min(y, rowEnd) - position), row);
            position = std::min(y, rowEnd);
            if (position == rowEnd) {
                appendSum();
            }
        }
    }

    std::vector<std::uint8_t> take() { return std::move(picture); }

private:
    void addShare(std::uint32_t share, const CoverageRow &row) {
        const std::uint16_t *from = row.data();
        std::uint32_t *to = sum.data();
        for (std::size_t x = 0; x < bytes.size(); ++x) {
            to[x] += share * from[x];
        }
    }

    void appendSum() {
        constexpr std::uint32_t full = pixelUnits * pixelUnits;
        std::transform(sum.begin(), sum.end(), bytes.begin(), [](std::uint32_t covered) {
            return static_cast<std::uint8_t>(255U - (255U * covered + full / 2) / full);
        });
        std::fill(sum.begin(), sum.end(), 0U);
        picture.insert(picture.end(), bytes.begin(), bytes.end());
    }

    void appendRows(std::int32_t count, const CoverageRow &row) {
        // 255 × 256 + 128 still fits 16 bits, which keeps this loop in the narrow registers.
        std::transform(row.begin(), row.end() - 1, bytes.begin(), [](std::uint16_t covered) {
            const auto scaled = static_cast<std::uint16_t>(covered * 255U + 128U);
            return static_cast<std::uint8_t>(255U - (scaled >> 8U));
        });
        for (std::int32_t i = 0; i < count; ++i) {
            picture.insert(picture.end(), bytes.begin(), bytes.end());
        }
    }

    std::int32_t position = 0;          // rows above it are settled
    std::vector<std::uint32_t> sum;     // covered shares, in 1/65536, of the row that position lies in
    std::vector<std::uint8_t> bytes;    // one row's greys
    std::vector<std::uint8_t> picture;  // grows by whole rows, so that no byte is written twice
};

}  // namespace

std::vector<std::uint8_t> rasterRectangles(std::vector<PixelRectangle> rectangles, std::int32_t width,
                                           std::int32_t height) {
    const auto startsHigher = [](const PixelRectangle &a, const PixelRectangle &b) { return a.top < b.top; };
    if (!std::is_sorted(rectangles.begin(), rectangles.end(), startsHigher)) {
        std::stable_sort(rectangles.begin(), rectangles.end(), startsHigher);
    }
    const std::vector<std::int32_t> edges = horizontalEdges(rectangles, height * pixelUnits);

    RowWriter writer(width, height);
    CoverageRow row(static_cast<std::size_t>(width) + 1);  // one more, for intervals that end at the border
    std::vector<std::int32_t> crossings;
    std::vector<const PixelRectangle *> active;
    auto next = rectangles.cbegin();
    for (std::size_t band = 0; band + 1 < edges.size(); ++band) {
        const std::int32_t top = edges[band];
        for (; next != rectangles.cend() && next->top <= top; ++next) {
            active.push_back(&*next);
        }
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [top](const PixelRectangle *rectangle) { return rectangle->bottom <= top; }),
                     active.end());

        crossings.clear();
        for (const PixelRectangle *rectangle : active) {
            crossings.push_back(std::clamp(rectangle->left, 0, width * pixelUnits));
            crossings.push_back(std::clamp(rectangle->right, 0, width * pixelUnits));
        }
        sortRuns(crossings);

        std::fill(row.begin(), row.end(), static_cast<std::uint16_t>(0));
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            cover(row, crossings[i], crossings[i + 1]);
        }
        writer.fillDownTo(edges[band + 1], row);
    }
    return writer.take();
}

}  // namespace lmlib64
