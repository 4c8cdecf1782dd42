#include "camera_library/output/outline_raster.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace lmlib64 {
namespace {

// Heights are counted in parts. A unit (a fraction of a pixel, pixel_units.h) has partsPerUnit parts. This number is
// chosen so that the area of a pixel is 2^31, half of the range of 32-bit numbers. So the area of a pixel that is
// enclosed twice overflows to 0, as the even-odd rule requires.
constexpr std::uint32_t partsPerUnit = 1U << 14U;
constexpr std::uint32_t pixelArea = partsPerUnit * pixelUnits * 2U * pixelUnits;  // in parts × half units
static_assert(pixelArea == 1U << 31U);

// Returns the grey value of a pixel with this enclosed area.
std::uint8_t greyOf(std::uint32_t area) {
    const std::uint64_t enclosed = std::min(area, 0U - area);
    return static_cast<std::uint8_t>(255U - (enclosed * 255U + pixelArea / 2U) / pixelArea);
}

// An edge stores its slopes so that they are not computed again in every row of pixels. The division for a slope takes
// longer than all other work on the edge in one row.
struct Edge {
    PixelPoint top;
    PixelPoint bottom;
    std::int64_t asidePerUnitDown = 0;  // units to the right per unit down, times slopeGrain
    // Parts of height per unit to the side, times slopeGrain; never negative. This slope is not used for a vertical
    // edge.
    std::int64_t partsPerUnitAside = 0;
};
constexpr std::int64_t slopeGrain = std::int64_t{1} << 24U;

Edge edgeBetween(const PixelPoint &top, const PixelPoint &bottom) {
    const double aside = bottom.x - top.x;
    const double down = bottom.y - top.y;
    Edge edge{top, bottom, static_cast<std::int64_t>(aside / down * slopeGrain), 0};
    if (bottom.x != top.x) {
        edge.partsPerUnitAside = static_cast<std::int64_t>(std::abs(down / aside) * partsPerUnit * slopeGrain);
    }
    return edge;
}

// A chain consists of consecutive edges of an outline that all go down or all go up. The edges are sorted from top to
// bottom.
class Chain {
public:
    Chain(const Edge *firstEdge, const Edge *endEdge, bool goesDown)
        : edge(firstEdge), end(endEdge), sign(goesDown ? 1U : 0U - 1U), position(firstEdge->top) {}

    std::int32_t top() const { return position.y; }
    bool isDone() const { return edge == end; }

    // Adds the chain's changes in one row of pixels to those already in `changes`. A change is the enclosed area of a
    // pixel minus that of the pixel to its left. `rowEnd` is the y of the row's lower edge. The next call continues
    // there.
    void addRow(std::int32_t rowEnd, std::uint32_t *changes) {
        std::int32_t left = position.x;
        std::int32_t right = position.x;
        do {
            const bool ends = edge->bottom.y <= rowEnd;
            const PixelPoint to = ends ? edge->bottom : PixelPoint{xAt(rowEnd), rowEnd};
            addPiece(std::min(position.x, to.x), std::max(position.x, to.x),
                     static_cast<std::uint32_t>(to.y - position.y) * partsPerUnit, changes);
            left = std::min(left, to.x);
            right = std::max(right, to.x);
            position = to;
            edge += ends ? 1 : 0;
        } while (position.y < rowEnd && edge != end);
        first = static_cast<std::uint32_t>(left) / pixelUnits;
        last = static_cast<std::uint32_t>(right) / pixelUnits + 1;
    }

    // The first and the last column that the most recent call of addRow has changed.
    std::uint32_t firstColumn() const { return first; }
    std::uint32_t lastColumn() const { return last; }

private:
    std::int32_t xAt(std::int32_t y) const {
        const std::int64_t x = edge->top.x * slopeGrain + edge->asidePerUnitDown * (y - edge->top.y) + slopeGrain / 2;
        return static_cast<std::int32_t>(static_cast<std::uint64_t>(x) / slopeGrain);
    }

    // Adds the changes of area that a piece of the edge within the row causes. The piece reaches from `left` to `right`
    // and is `height` parts high. The changes do not depend on whether its upper end is the left or the right one.
    void addPiece(std::int32_t left, std::int32_t right, std::uint32_t height, std::uint32_t *changes) const {
        const std::uint32_t column = static_cast<std::uint32_t>(left) / pixelUnits;
        auto start = static_cast<std::int32_t>(column * pixelUnits);
        changes += column;
        std::int32_t x = left;
        std::uint32_t passed = 0;
        for (; start + pixelUnits < right; start = x) {
            x = start + pixelUnits;
            const auto passedAtEnd = static_cast<std::uint64_t>(edge->partsPerUnitAside * (x - left)) / slopeGrain;
            addWithinPixel(std::max(left, start) + x - 2 * start, static_cast<std::uint32_t>(passedAtEnd) - passed,
                           changes++);
            passed = static_cast<std::uint32_t>(passedAtEnd);
        }
        addWithinPixel(x + right - 2 * start, height - passed, changes);
    }

    // `bothEnds` is the sum of the distances of the piece's two ends from the left side of the pixel. The product of
    // this sum and the height is twice the area to the left of the piece.
    void addWithinPixel(std::int32_t bothEnds, std::uint32_t height, std::uint32_t *changes) const {
        const std::uint32_t descent = sign * height;
        const std::uint32_t areaToTheLeft = descent * static_cast<std::uint32_t>(bothEnds);
        changes[0] += descent * 2U * pixelUnits - areaToTheLeft;
        changes[1] += areaToTheLeft;
    }

    const Edge *edge;
    const Edge *end;
    std::uint32_t sign;  // 1 if the edges go down, -1 if they go up
    PixelPoint position;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

// Splits outlines into chains, and owns the chains' edges.
class ChainList {
public:
    ChainList(const PixelOutlines &outlines, std::int32_t width, std::int32_t height)
        : right(width * pixelUnits), bottom(height * pixelUnits) {
        edges.reserve(outlines.points.size());  // chains point to the edges, which therefore must not move in memory
        std::size_t start = 0;
        for (const std::size_t end : outlines.ends) {
            if (start < end) {
                add(outlines.points.data() + start, outlines.points.data() + end);
            }
            start = end;
        }
        std::sort(chains.begin(), chains.end(), [](const Chain &a, const Chain &b) { return a.top() < b.top(); });
    }

    const std::vector<Chain> &fromTheTop() const { return chains; }

private:
    PixelPoint inPicture(const PixelPoint &point) const {
        return {std::clamp(point.x, 0, right), std::clamp(point.y, 0, bottom)};
    }

    void add(const PixelPoint *begin, const PixelPoint *end) {
        std::size_t first = edges.size();
        int direction = 0;
        PixelPoint from = inPicture(*(end - 1));
        for (const PixelPoint *point = begin; point != end; ++point) {
            const PixelPoint to = inPicture(*point);
            const int newDirection = (from.y < to.y ? 1 : 0) - (from.y > to.y ? 1 : 0);
            if (newDirection != direction) {
                addChain(first, direction);
                first = edges.size();
                direction = newDirection;
            }
            if (direction != 0) {  // a horizontal edge has no height
                edges.push_back(direction > 0 ? edgeBetween(from, to) : edgeBetween(to, from));
            }
            from = to;
        }
        addChain(first, direction);
    }

    void addChain(std::size_t first, int direction) {
        if (direction < 0) {
            std::reverse(edges.begin() + static_cast<std::ptrdiff_t>(first), edges.end());
        }
        if (direction != 0) {
            chains.emplace_back(edges.data() + first, edges.data() + edges.size(), direction > 0);
        }
    }

    std::int32_t right;
    std::int32_t bottom;
    std::vector<Edge> edges;
    std::vector<Chain> chains;
};

// Draws one row after the other and keeps only the current row.
class RowDrawing {
public:
    explicit RowDrawing(std::int32_t rowWidth)
        : width(static_cast<std::uint32_t>(rowWidth)), greys(width + spare), changes(width + spare) {}

    std::uint32_t *areaChanges() { return changes.data(); }

    // Draws the row from the changes that these chains have added. The chains are sorted from left to right.
    const std::vector<std::uint8_t> &draw(const std::vector<Chain> &chains) {
        std::fill(greys.begin(), greys.end(), static_cast<std::uint8_t>(255));
        std::uint32_t area = 0;
        std::uint32_t column = 0;
        for (const Chain &chain : chains) {
            fillUpTo(chain.firstColumn(), column, greyOf(area));
            while (column <= chain.lastColumn()) {
                for (std::uint32_t i = 0; i < step; ++i, ++column) {
                    area += changes[column];
                    changes[column] = 0;
                    greys[column] = greyOf(area);
                }
            }
        }
        fillUpTo(width, column, greyOf(area));
        return greys;
    }

private:
    void fillUpTo(std::uint32_t end, std::uint32_t &column, std::uint8_t grey) {
        if (grey < 255 && column < end) {
            std::fill(greys.data() + column, greys.data() + end, grey);
        }
        column = std::max(column, end);
    }

    // Most chains have changes in two or three columns. Handling columns three at a time avoids branches that the
    // processor would mispredict.
    static constexpr std::uint32_t step = 3;
    // A chain on the right border has changes in two columns to the right of the picture. A step of draw() may begin in
    // the second of them.
    static constexpr std::uint32_t spare = step + 1;
    std::uint32_t width;
    std::vector<std::uint8_t> greys;
    std::vector<std::uint32_t> changes;  // the enclosed area of each pixel minus that of the pixel to its left
};

}  // namespace

void rasterOutlineRows(const PixelOutlines &outlines, std::int32_t width, std::int32_t height,
                       const std::function<void(const std::uint8_t *pixels)> &takeRow) {
    const ChainList chains(outlines, width, height);
    auto next = chains.fromTheTop().begin();
    std::vector<Chain> active;
    RowDrawing drawing(width);
    for (std::int32_t rowEnd = pixelUnits; rowEnd <= height * pixelUnits; rowEnd += pixelUnits) {
        active.erase(std::remove_if(active.begin(), active.end(), [](const Chain &chain) { return chain.isDone(); }),
                     active.end());
        for (; next != chains.fromTheTop().end() && next->top() < rowEnd; ++next) {
            active.push_back(*next);
        }
        for (Chain &chain : active) {
            chain.addRow(rowEnd, drawing.areaChanges());
        }
        const auto isLeftOf = [](const Chain &a, const Chain &b) { return a.firstColumn() < b.firstColumn(); };
        if (!std::is_sorted(active.begin(), active.end(), isLeftOf)) {
            std::sort(active.begin(), active.end(), isLeftOf);
        }
        takeRow(drawing.draw(active).data());
    }
}

std::vector<std::uint8_t> rasterOutlines(const PixelOutlines &outlines, std::int32_t width, std::int32_t height) {
    std::vector<std::uint8_t> picture;
    picture.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    rasterOutlineRows(outlines, width, height,
                      [&](const std::uint8_t *row) { picture.insert(picture.end(), row, row + width); });
    return picture;
}

}  // namespace lmlib64
