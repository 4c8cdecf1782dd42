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

/// From covered shares to greys. 255 × 256 + 128 still fits 16 bits, which keeps the loop in the narrow registers.
void makeGreys(const CoverageRow &coverage, std::vector<std::uint8_t> &greys) {
    std::transform(coverage.begin(), coverage.end() - 1, greys.begin(), [](std::uint16_t covered) {
        const auto scaled = static_cast<std::uint16_t>(covered * 255U + 128U);
        return static_cast<std::uint8_t>(255U - (scaled >> 8U));
    });
}

/// Rows that look the same, and the crossings they were made from.
struct Band {
    std::vector<std::int32_t> crossings;
    std::vector<std::uint8_t> greys;
};

/// Sends rows to the picture from the top, in heights that need not be whole pixels.
class RowWriter {
public:
    RowWriter(std::int32_t width, std::int32_t height)
        : sum(static_cast<std::size_t>(width)), mixed(static_cast<std::size_t>(width)) {
        picture.reserve(mixed.size() * static_cast<std::size_t>(height));
    }

    /// All rows from where the last call ended down to y, in 1/256 pixel, have these greys.
    void fillDownTo(std::int32_t y, const std::vector<std::uint8_t> &greys) {
        while (position < y) {
            const std::int32_t wholeRows = position % pixelUnits == 0 ? (y - position) / pixelUnits : 0;
            if (wholeRows > 0) {
                for (std::int32_t i = 0; i < wholeRows; ++i) {
                    picture.insert(picture.end(), greys.begin(), greys.end());
                }
                position += wholeRows * pixelUnits;
                continue;
            }
            const std::int32_t rowEnd = (position / pixelUnits + 1) * pixelUnits;
            const std::int32_t end = std::min(y, rowEnd);
            addShare(static_cast<std::uint16_t>(end - position), greys);
            position = end;
            if (position == rowEnd) {
                appendSum();
            }
        }
    }

    std::vector<std::uint8_t> take() { return std::move(picture); }

private:
    /// The shares of one row make 256 together, and 256 × 255 fits 16 bits.
    void addShare(std::uint16_t share, const std::vector<std::uint8_t> &greys) {
        const std::uint8_t *from = greys.data();
        std::uint16_t *to = sum.data();
        for (std::size_t x = 0; x < mixed.size(); ++x) {
            to[x] = static_cast<std::uint16_t>(to[x] + share * from[x]);
        }
    }

    void appendSum() {
        std::transform(sum.begin(), sum.end(), mixed.begin(), [](std::uint16_t grey) {
            return static_cast<std::uint8_t>(static_cast<std::uint16_t>(grey + 128U) >> 8U);
        });
        std::fill(sum.begin(), sum.end(), static_cast<std::uint16_t>(0));
        picture.insert(picture.end(), mixed.begin(), mixed.end());
    }

    std::int32_t position = 0;          // rows above it are settled
    std::vector<std::uint16_t> sum;     // greys, in 1/256, of the row that position lies in
    std::vector<std::uint8_t> mixed;    // one row's greys
    std::vector<std::uint8_t> picture;  // grows by whole rows, so that no byte is written twice
};

/// Walks down the rectangles, which are sorted by their tops, and keeps those that it stands in.
class Sweep {
public:
    Sweep(const std::vector<PixelRectangle> &rectangles, std::int32_t width)
        : next(rectangles.cbegin()), end(rectangles.cend()), right(width * pixelUnits) {}

    /// The places, from left to right, where a row below the edge enters or leaves a rectangle.
    const std::vector<std::int32_t> &crossingsBelow(std::int32_t edge) {
        for (; next != end && next->top <= edge; ++next) {
            active.push_back(&*next);
        }
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [edge](const PixelRectangle *rectangle) { return rectangle->bottom <= edge; }),
                     active.end());
        crossings.clear();
        for (const PixelRectangle *rectangle : active) {
            crossings.push_back(std::clamp(rectangle->left, 0, right));
            crossings.push_back(std::clamp(rectangle->right, 0, right));
        }
        sortRuns(crossings);
        return crossings;
    }

private:
    std::vector<PixelRectangle>::const_iterator next;
    std::vector<PixelRectangle>::const_iterator end;
    std::int32_t right;
    std::vector<const PixelRectangle *> active;
    std::vector<std::int32_t> crossings;
};

}  // namespace

std::vector<std::uint8_t> rasterRectangles(std::vector<PixelRectangle> rectangles, std::int32_t width,
                                           std::int32_t height) {
    const auto startsHigher = [](const PixelRectangle &a, const PixelRectangle &b) { return a.top < b.top; };
    if (!std::is_sorted(rectangles.begin(), rectangles.end(), startsHigher)) {
        std::stable_sort(rectangles.begin(), rectangles.end(), startsHigher);
    }
    const std::vector<std::int32_t> edges = horizontalEdges(rectangles, height * pixelUnits);

    Sweep sweep(rectangles, width);
    RowWriter writer(width, height);
    CoverageRow coverage(static_cast<std::size_t>(width) + 1);  // one more, for intervals that end at the border
    // What is above and below the marks of a row of squares looks the same, so a band often equals the last but one.
    Band band{{}, std::vector<std::uint8_t>(static_cast<std::size_t>(width), 255)};
    Band previous = band;
    for (std::size_t edge = 0; edge + 1 < edges.size(); ++edge) {
        const std::vector<std::int32_t> &crossings = sweep.crossingsBelow(edges[edge]);
        std::swap(band, previous);
        if (band.crossings != crossings) {
            band.crossings = crossings;
            std::fill(coverage.begin(), coverage.end(), static_cast<std::uint16_t>(0));
            for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
                cover(coverage, crossings[i], crossings[i + 1]);
            }
            makeGreys(coverage, band.greys);
        }
        writer.fillDownTo(edges[edge + 1], band.greys);
    }
    return writer.take();
}

}  // namespace lmlib64
