// Writes docs/images/pattern-code.svg to standard output. This is the figure of docs/pattern-code.md. The bits in the
// figure come from the functions with which the library makes the code. The left part shows a Custom pattern with a
// grid spacing of 12 mm. The middle part shows a plate with a grid spacing of 12.5 mm and a thickness of 3.25 mm. Both
// parts show the number of every bit of the information block. The right part shows how a Flexible pattern is cut out
// of the plane.
#include <cstdint>
#include <cstdio>

#include "camera_library/pattern_code/information_block.h"
#include "camera_library/pattern_code/position_code.h"

namespace {

using namespace pattern_code;

// One colour for each byte of the block.
const char *const byteColours[blockByteCount] = {"#e6550d", "#31a354", "#756bb1", "#3182bd",
                                                 "#c51b8a", "#8c6d31", "#17a2b8", "#d62728"};

bool bitOf(std::uint64_t block, int bit) {
    return (block >> (blockBitCount - 1 - bit) & 1U) != 0;
}

void rectangle(double x, double y, double width, double height, const char *fill) {
    std::printf("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"%s\"/>\n", x, y, width, height, fill);
}

void frame(double x, double y, double width, double height, const char *colour, double lineWidth) {
    std::printf(
        "<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"none\" stroke=\"%s\" stroke-width=\"%g\"/>\n", x, y,
        width, height, colour, lineWidth);
}

void circle(double x, double y, double radius, const char *fill) {
    std::printf("<circle cx=\"%g\" cy=\"%g\" r=\"%g\" fill=\"%s\"/>\n", x, y, radius, fill);
}

void text(double x, double y, double size, const char *colour, const char *anchor, const char *words) {
    std::printf(
        "<text x=\"%g\" y=\"%g\" font-size=\"%g\" fill=\"%s\" text-anchor=\"%s\" "
        "font-family=\"sans-serif\">%s</text>\n",
        x, y, size, colour, anchor, words);
}

void number(double x, double y, double size, int value, const char *colour) {
    char words[12];
    std::snprintf(words, sizeof words, "%d", value);
    text(x, y, size, colour, "middle", words);
}

void drawTile(double left, double top) {
    constexpr double side = 24;
    const std::uint64_t block = encodeBlock({BlockKind::SpacingAndThickness, 1200, 0, 0, 0, 0});
    const auto draw = [&](int column, int row, bool isMarked) {
        const bool isDark = (column + row) % 2 == 0;
        const double x = left + column * side;
        const double y = top + row * side;
        rectangle(x, y, side, side, isDark ? "#222" : "#fff");
        if (isMarked) {
            rectangle(x + side / 3, y + side / 3, side / 3, side / 3, isDark ? "#fff" : "#222");
        }
    };
    for (int row = 0; row < tileSide; ++row) {
        for (int column = 0; column < tileSide; ++column) {
            draw(column, row, carriesPosition(column, row) && tileBit(singleTile, column, row));
        }
    }
    for (int bit = 0; bit < blockBitCount; ++bit) {
        const BlockCell square = blockSquare(bit);
        const char *colour = byteColours[bit / 8];
        draw(square.column, square.row, bitOf(block, bit));
        const double x = left + square.column * side;
        const double y = top + square.row * side;
        frame(x + 1, y + 1, side - 2, side - 2, colour, 2);
        number(x + 8, y + 8.5, 7, bit, "#fff");
    }
    frame(left, top, tileSide * side, tileSide * side, "#222", 1);
    text(left, top + tileSide * side + 22, 13, "#222", "start",
         "Tile 0 with the block 75136A8807FF389A: columns and rows");
    text(left, top + tileSide * side + 38, 13, "#222", "start",
         "0 to 15; framed squares carry the block, one colour per byte");
}

void drawPlate(double left, double top) {
    constexpr double s = 48;  // the grid spacing
    const std::uint64_t block = encodeBlock({BlockKind::SpacingAndThickness, 1250, 325, 0, 0, 0});
    rectangle(left, top, 8 * s, 8 * s, "#222");
    rectangle(left + s / 4, top + s / 4, 7.5 * s, 7.5 * s, "#fff");
    std::printf("<path d=\"M%g %gh%gL%g %gz\" fill=\"#222\"/>\n", left + s / 4, top + s / 4, 0.75 * s, left + s / 4,
                top + s);
    for (int row = 1; row <= 7; ++row) {
        for (int column = 1; column <= 7; ++column) {
            circle(left + column * s, top + row * s, s / 4, "#222");
        }
    }
    for (int bit = 0; bit < blockBitCount; ++bit) {
        const DotPosition at = dotPosition(bit);
        const double x = left + at.x * s;
        const double y = top + at.y * s;
        const bool isSet = bitOf(block, bit);
        circle(x, y, dotRadius * s, isSet ? "#222" : "#ddd");
        circle(x, y, dotHoleRadius * s, "#fff");
        number(x, y + 2.4, 7, bit, byteColours[bit / 8]);
    }
    text(left, top + 8 * s + 22, 13, "#222", "start", "Plate with the block 780A6BCD9ED570DA: black rings are dots;");
    text(left, top + 8 * s + 38, 13, "#222", "start", "pale rings are bits that are 0, which are not printed");
}

void drawPlane(double left, double top) {
    constexpr double side = 1.25;
    constexpr int corners = 91;
    const Square window = *planeWindowForPattern(corners, corners, 60, -40);
    rectangle(left, top, planeSide * side, planeSide * side, "#eee");
    // The bits are drawn as one path, whose unit of length is the side of a square. Only the bits within the pattern
    // are drawn, because all bits of the plane would make the file large.
    std::printf("<path transform=\"translate(%g %g) scale(%g)\" fill=\"#3182bd\" d=\"", left, top, side);
    for (int row = window.row; row <= window.row + corners; ++row) {
        for (int column = window.column; column <= window.column + corners; ++column) {
            if (planeBit(column, row)) {
                std::printf("M%d %dh1v1h-1z", column, row);
            }
        }
    }
    std::printf("\"/>\n");
    frame(left, top, planeSide * side, planeSide * side, "#222", 1);
    frame(left + window.column * side, top + window.row * side, (corners + 1) * side, (corners + 1) * side, "#08519c",
          2);
    const double origin = planeOrigin * side;
    circle(left + origin, top + origin, 4, "#d62728");
    circle(left + origin + 60 * side, top + origin - 40 * side, 4, "#08519c");
    std::printf("<path d=\"M%g %gh%gv%g\" fill=\"none\" stroke=\"#d62728\" stroke-width=\"2\"/>\n", left + origin,
                top + origin, 60 * side, -40 * side);
    text(left, top + planeSide * side + 22, 13, "#222", "start", "The plane, 272 x 272. Red: its origin (136, 136).");
    text(left, top + planeSide * side + 38, 13, "#222", "start", "Blue: a 91 x 91 pattern with the offset (60, -40)");
}

}  // namespace

int main() {
    std::printf("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1210 450\" width=\"1210\" height=\"450\">\n");
    rectangle(0, 0, 1210, 450, "#fff");
    drawTile(10, 10);
    drawPlate(420, 10);
    drawPlane(840, 10);
    std::printf("</svg>\n");
    return 0;
}
