#include "camera_library/output/rectangle_raster.h"

#include <algorithm>
#include <array>

namespace lmlib64 {
namespace {

// Returns the y coordinates of all horizontal edges within the picture, from top to bottom. The first is the top of the
// picture, and the last is its bottom. Between two consecutive coordinates, all horizontal lines through the picture
// look the same.
std::vector<std::int32_t> horizontalEdges(const std::vector<PixelRectangle> &rectangles, std::int32_t height) {
    std::vector<std::int32_t> edges{0, height};
    const auto add = [&edges, height](std::int32_t y, std::int32_t &last) {
        // The squares in a row of a board have the same top and bottom. Skipping repeated values leaves less to sort.
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

// Sorts values that usually consist of two sorted runs: first the edges of a row's squares, then the edges of their
// marks. `room` is working memory. The caller keeps it between calls, so that it need not be allocated each time.
void sortRuns(std::vector<std::int32_t> &values, std::vector<std::int32_t> &room) {
    const auto secondRun = std::is_sorted_until(values.begin(), values.end());
    if (secondRun == values.end()) {
        return;
    }
    if (!std::is_sorted(secondRun, values.end())) {
        std::sort(secondRun, values.end());
    }
    room.resize(values.size());
    std::merge(values.begin(), secondRun, secondRun, values.end(), room.begin());
    values.swap(room);
}

std::uint8_t greyOf(std::int32_t covered) {
    return static_cast<std::uint8_t>(255 - ((covered * 255 + pixelUnits / 2) / pixelUnits));
}

// Draws a row that is covered between the first and the second crossing, between the third and the fourth, and so on.
void drawRow(const std::vector<std::int32_t> &crossings, std::vector<std::uint8_t> &greys) {
    std::fill(greys.begin(), greys.end(), static_cast<std::uint8_t>(255));
    const auto width = static_cast<std::int32_t>(greys.size());
    std::uint8_t *const pixels = greys.data();
    // The pixel that contains the last crossing so far, and the share of this pixel that is covered so far, in 1/256.
    std::int32_t pixel = 0;
    std::int32_t covered = 0;
    const auto settle = [&] {
        if (pixel < width) {
            pixels[pixel] = greyOf(covered);
        }
    };
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        const std::int32_t first = crossings[i] / pixelUnits;
        const std::int32_t last = crossings[i + 1] / pixelUnits;
        if (first != pixel) {
            settle();
            pixel = first;
            covered = 0;
        }
        covered -= crossings[i] - first * pixelUnits;
        if (last != first) {
            covered += pixelUnits;
            settle();
            std::fill(pixels + first + 1, pixels + last, static_cast<std::uint8_t>(0));
            pixel = last;
            covered = 0;
        }
        covered += crossings[i + 1] - last * pixelUnits;
    }
    settle();
}

// A band of the picture in which all horizontal lines look the same, with the crossings from which it is drawn. Its
// height need not be a whole number of pixels.
struct Band {
    std::vector<std::int32_t> crossings;
    std::vector<std::uint8_t> greys;
};

// Adds bands to the picture, from the top.
class RowWriter {
public:
    RowWriter(std::int32_t width, std::int32_t height) : sum(static_cast<std::size_t>(width)) {
        picture.reserve(sum.size() * static_cast<std::size_t>(height));
    }

    // Gives these greys to a band that begins where the previous call ended and ends at `y`, in 1/256 pixel. The greys
    // must not change before the next call has returned.
    void fillDownTo(std::int32_t y, const std::vector<std::uint8_t> &greys) {
        while (position < y) {
            const std::int32_t start = position % pixelUnits;
            if (start == 0 && y - position >= pixelUnits) {
                picture.insert(picture.end(), greys.begin(), greys.end());
                position += pixelUnits;
                continue;
            }
            const std::int32_t share = std::min(y - position, pixelUnits - start);
            if (start == 0) {
                beginRow(static_cast<std::uint16_t>(share), greys.data());
            } else if (start + share < pixelUnits) {
                continueRow(static_cast<std::uint16_t>(share), greys.data());
            } else {
                endRow(static_cast<std::uint16_t>(share), greys.data());
            }
            position += share;
        }
    }

    std::vector<std::uint8_t> take() { return std::move(picture); }

private:
    // If several bands share a row of pixels, the row is the sum of their greys, weighted by their shares of the row's
    // height in 1/256. The shares add up to 256. So the sum fits into 16 bits, even with 128 added for rounding, and
    // the vectorised loops handle more pixels at once than with 32 bits. Usually only two bands share a row. So
    // beginRow does not add the first band yet, and endRow adds both bands in one loop.
    void beginRow(std::uint16_t share, const std::uint8_t *greys) {
        firstShare = share;
        firstGreys = greys;
    }

    void continueRow(std::uint16_t share, const std::uint8_t *greys) {
        addFirstBand();
        std::uint16_t *const to = sum.data();
        for (std::size_t x = 0; x < sum.size(); ++x) {
            to[x] = static_cast<std::uint16_t>(to[x] + share * greys[x]);
        }
    }

    void endRow(std::uint16_t share, const std::uint8_t *greys) {
        const std::size_t width = sum.size();
        const std::size_t rowStart = picture.size();
        picture.resize(rowStart + width);
        std::uint8_t *const to = picture.data() + rowStart;
        if (firstGreys != nullptr) {
            std::transform(firstGreys, firstGreys + width, greys, to,
                           [first = firstShare, share](std::uint8_t firstGrey, std::uint8_t grey) {
                               const auto both = static_cast<std::uint16_t>(first * firstGrey + share * grey + 128);
                               return static_cast<std::uint8_t>(both >> 8U);
                           });
            firstGreys = nullptr;
            return;
        }
        std::transform(sum.begin(), sum.end(), greys, to, [share](std::uint16_t before, std::uint8_t grey) {
            return static_cast<std::uint8_t>(static_cast<std::uint16_t>(before + share * grey) >> 8U);
        });
    }

    void addFirstBand() {
        if (firstGreys != nullptr) {
            std::transform(firstGreys, firstGreys + sum.size(), sum.begin(), [share = firstShare](std::uint8_t grey) {
                return static_cast<std::uint16_t>(share * grey + 128);
            });
            firstGreys = nullptr;
        }
    }

    const std::uint8_t *firstGreys = nullptr;  // of the first band of the unfinished row; null once it is in `sum`
    std::uint16_t firstShare = 0;
    std::int32_t position = 0;          // all rows above are finished
    std::vector<std::uint16_t> sum;     // greys of the unfinished row, in 1/256
    std::vector<std::uint8_t> picture;  // grows by whole rows
};

// Moves down through the rectangles, which are sorted by their tops, and keeps those at the current height.
class Sweep {
public:
    Sweep(const std::vector<PixelRectangle> &rectangles, std::int32_t width)
        : next(rectangles.cbegin()), end(rectangles.cend()), right(width * pixelUnits) {}

    // Returns the x coordinates at which a row just below this height enters or leaves a rectangle, from left to right.
    const std::vector<std::int32_t> &crossingsBelow(std::int32_t edge) {
        for (; next != end && next->top <= edge; ++next) {
            active.push_back(&*next);
        }
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [edge](const PixelRectangle *rectangle) { return rectangle->bottom <= edge; }),
                     active.end());
        crossings.resize(2 * active.size());
        std::int32_t *crossing = crossings.data();
        for (const PixelRectangle *rectangle : active) {
            *crossing++ = std::clamp(rectangle->left, 0, right);
            *crossing++ = std::clamp(rectangle->right, 0, right);
        }
        sortRuns(crossings, room);
        return crossings;
    }

private:
    std::vector<PixelRectangle>::const_iterator next;
    std::vector<PixelRectangle>::const_iterator end;
    std::int32_t right;
    std::vector<const PixelRectangle *> active;
    std::vector<std::int32_t> crossings;
    std::vector<std::int32_t> room;  // for sorting the crossings
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
    // The bands that were used last, the latest first. They are kept because the same bands occur again: in a row of
    // squares, the band above the marks looks like the band below the marks, and both of them look like the bands above
    // and below the marks in the next row but one.
    std::array<Band, 4> bands;
    bands.fill({{}, std::vector<std::uint8_t>(static_cast<std::size_t>(width), 255)});
    for (std::size_t edge = 0; edge + 1 < edges.size(); ++edge) {
        const std::vector<std::int32_t> &crossings = sweep.crossingsBelow(edges[edge]);
        const auto known = std::find_if(bands.begin(), bands.end() - 1,
                                        [&crossings](const Band &band) { return band.crossings == crossings; });
        std::rotate(bands.begin(), known, known + 1);
        Band &band = bands.front();
        if (band.crossings != crossings) {
            band.crossings = crossings;
            drawRow(crossings, band.greys);
        }
        writer.fillDownTo(edges[edge + 1], band.greys);
    }
    return writer.take();
}

}  // namespace lmlib64
