#include "camera_library/output/outline_raster.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace lmlib64 {
namespace {

// Heights are counted in finer parts of a pixel, so that many rounded ones along a flat edge still add up.
constexpr std::int32_t partsPerUnit = 256;
constexpr std::int32_t pixelParts = pixelUnits * partsPerUnit;

/// What edges leave in one pixel.
struct Cell {
    std::int32_t column = 0;
    std::int32_t descent = 0;  ///< how far they go down, less how far they go up, in parts
    std::int32_t area = 0;     ///< between them and the pixel's left side, signed likewise, in parts × half units
};

/// The cells of one outline, row by row.
class OutlineCells {
public:
    explicit OutlineCells(std::int32_t rowCount) : rows(static_cast<std::size_t>(rowCount)) {}

    void addEdge(PixelPoint from, PixelPoint to) {
        if (from.y == to.y) {
            return;
        }
        const std::int32_t sign = from.y < to.y ? 1 : -1;
        if (sign < 0) {
            std::swap(from, to);
        }
        // Multiplied with in every row, since a division takes longer than the rest.
        const double slope = static_cast<double>(to.x - from.x) / (to.y - from.y);
        std::int32_t x = from.x;
        for (std::int32_t y = from.y; y < to.y;) {
            const std::int32_t row = y / pixelUnits;
            const std::int32_t end = std::min(to.y, (row + 1) * pixelUnits);
            const std::int32_t xEnd =
                end == to.y ? to.x : from.x + static_cast<std::int32_t>(std::lround(slope * (end - from.y)));
            addPiece(rows[static_cast<std::size_t>(row)], std::min(x, xEnd), std::max(x, xEnd),
                     (end - y) * partsPerUnit, sign);
            y = end;
            x = xEnd;
        }
        top = std::min(top, from.y / pixelUnits);
        bottom = std::max(bottom, (to.y + pixelUnits - 1) / pixelUnits);
    }

    /// Turns the pixels that the outline encloses, and forgets it.
    void turn(std::uint8_t *picture, std::int32_t width) {
        for (std::int32_t row = top; row < bottom; ++row) {
            std::vector<Cell> &cells = rows[static_cast<std::size_t>(row)];
            std::sort(cells.begin(), cells.end(), [](const Cell &a, const Cell &b) { return a.column < b.column; });
            turnRow(cells, picture + std::ptrdiff_t{row} * width, width);
            cells.clear();
        }
        top = static_cast<std::int32_t>(rows.size());
        bottom = 0;
    }

private:
    /// A piece of an edge within one row; whichever way it leans, the areas are the same.
    static void addPiece(std::vector<Cell> &cells, std::int32_t left, std::int32_t right, std::int32_t heightParts,
                         std::int32_t sign) {
        const double partsAlong = right > left ? static_cast<double>(heightParts) / (right - left) : 0.0;
        std::int32_t passed = 0;
        std::int32_t x = left;
        do {
            const std::int32_t start = x / pixelUnits * pixelUnits;
            const std::int32_t end = std::min(right, start + pixelUnits);
            const std::int32_t passedAtEnd =
                end == right ? heightParts : static_cast<std::int32_t>(partsAlong * (end - left));
            const std::int32_t descent = sign * (passedAtEnd - passed);
            cells.push_back({start / pixelUnits, descent, descent * (x - start + end - start)});
            passed = passedAtEnd;
            x = end;
        } while (x < right);
    }

    static void turnRow(const std::vector<Cell> &cells, std::uint8_t *pixels, std::int32_t width);

    std::vector<std::vector<Cell>> rows;
    std::int32_t top = static_cast<std::int32_t>(rows.size());
    std::int32_t bottom = 0;  ///< the row after the last
};

/// The share that is enclosed, in 1/255, of an area in parts × half units. It is signed; what is enclosed twice is not
/// enclosed.
std::int32_t enclosedShare(std::int32_t area) {
    const std::int32_t rest = std::abs(area) / (2 * pixelUnits) % (2 * pixelParts);
    return (std::min(rest, 2 * pixelParts - rest) * 255 + pixelParts / 2) / pixelParts;
}

std::uint8_t turned(std::uint8_t grey, std::int32_t share) {
    return static_cast<std::uint8_t>(grey + ((255 - 2 * grey) * share + (grey < 128 ? 127 : -127)) / 255);
}

void OutlineCells::turnRow(const std::vector<Cell> &cells, std::uint8_t *pixels, std::int32_t width) {
    std::int32_t descent = 0;
    for (std::size_t i = 0; i < cells.size();) {
        const std::int32_t column = cells[i].column;
        std::int32_t area = 0;
        for (; i < cells.size() && cells[i].column == column; ++i) {
            descent += cells[i].descent;
            area += cells[i].area;
        }
        if (column >= width) {
            return;  // edges on the right border
        }
        pixels[column] = turned(pixels[column], enclosedShare(descent * 2 * pixelUnits - area));
        if (i == cells.size() || cells[i].column == column + 1) {
            continue;  // nothing in between
        }
        const std::int32_t share = enclosedShare(descent * 2 * pixelUnits);
        std::uint8_t *const end = pixels + std::min(cells[i].column, width);
        if (share == 255) {
            std::transform(pixels + column + 1, end, pixels + column + 1,
                           [](std::uint8_t grey) { return static_cast<std::uint8_t>(255 - grey); });
        } else if (share > 0) {
            std::transform(pixels + column + 1, end, pixels + column + 1,
                           [share](std::uint8_t grey) { return turned(grey, share); });
        }
    }
}

}  // namespace

std::vector<std::uint8_t> rasterOutlines(const std::vector<PixelOutline> &outlines, std::int32_t width,
                                         std::int32_t height) {
    const auto inPicture = [width, height](const PixelPoint &point) {
        return PixelPoint{std::clamp(point.x, 0, width * pixelUnits), std::clamp(point.y, 0, height * pixelUnits)};
    };
    std::vector<std::uint8_t> picture(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 255);
    OutlineCells cells(height);
    for (const PixelOutline &outline : outlines) {
        for (std::size_t i = 0; i < outline.size(); ++i) {
            cells.addEdge(inPicture(outline[i]), inPicture(outline[(i + 1) % outline.size()]));
        }
        cells.turn(picture.data(), width);
    }
    return picture;
}

}  // namespace lmlib64
