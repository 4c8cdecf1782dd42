#include "pattern_reader/square_marks.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pattern_reader {

namespace {

float sample(const cv::Mat &picture, cv::Point2f p) {
    const int x = int(p.x);
    const int y = int(p.y);
    const float fx = p.x - float(x);
    const float fy = p.y - float(y);
    const uchar *a = picture.ptr(y) + x;
    const uchar *b = picture.ptr(y + 1) + x;
    const float top = float(a[0]) + fx * float(a[1] - a[0]);
    const float bottom = float(b[0]) + fx * float(b[1] - b[0]);
    return top + fy * (bottom - top);
}

// Returns the level at x, from 0 to 1, of a blurred bar that is centred at 0 and has this half width. Lengths are in
// units of the square's side.
float barLevel(float halfWidth, float x, float blur) {
    const float scale = 1 / (std::sqrt(2.0F) * blur);
    return 0.5F * (std::erf((halfWidth - x) * scale) + std::erf((halfWidth + x) * scale));
}

// Returns the level of a checkerboard without marks along one axis: about +1 in this square, and -1 in the next.
float boardLevel(float x, float blur) {
    return 2 * barLevel(0.5F, x, blur) - 1;
}

constexpr float centreReach = 0.11F;  // the centre is sampled at -centreReach, 0 and +centreReach along both axes
constexpr float ringReach = 0.33F;

// Levels in a square along one axis. `board` is the level of the checkerboard and `mark` is the level of a mark, both
// averaged over the samples of the centre. `ring` is the level of the checkerboard at ringReach.
struct AxisProfile {
    float board, mark, ring;
};

AxisProfile profileFor(float blur) {
    blur = std::max(blur, 0.01F);
    const auto average = [&](auto level) { return (level(0.0F) + 2 * level(centreReach)) / 3; };
    return {average([&](float x) { return boardLevel(x, blur); }),
            average([&](float x) { return barLevel(1.0F / 6, x, blur); }), boardLevel(ringReach, blur)};
}

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

// A square's corners are numbered in the order (0, 0), (1, 0), (0, 1), (1, 1). Corner 3 - i is opposite to corner i.
cv::Point cornerOf(cv::Point cell, size_t corner) {
    return cell + cv::Point(int(corner % 2), int(corner / 2));
}

// A square in the picture.
struct Quad {
    std::array<cv::Point2f, 4> corners;
    std::array<bool, 4> known{};  // measured, not predicted from the neighbours
    int measured = 0;
    float middle = 0;  // grey level between light and dark
    float amplitude = 0;
    float blur = 0;

    cv::Point2f at(float u, float v) const {
        return corners[0] * ((1 - u) * (1 - v)) + corners[1] * (u * (1 - v)) + corners[2] * ((1 - u) * v) +
               corners[3] * (u * v);
    }
    float width() const { return length(corners[1] + corners[3] - corners[0] - corners[2]) / 2; }
    float height() const { return length(corners[2] + corners[3] - corners[0] - corners[1]) / 2; }
};

class MarkReader {
public:
    MarkReader(const cv::Mat &image, const CornerLattice &board, const std::vector<CornerFit> &corners)
        : picture(image), lattice(board), fits(corners) {}

    enum class Look { OutOfSight, NoSquare, Square };
    Look look(cv::Point cell, SquareReading &reading) const;

private:
    bool quadAt(cv::Point cell, Quad &quad) const;
    bool predictCorner(cv::Point cell, size_t corner, Quad &quad) const;
    bool inside(const Quad &quad) const;
    float centreGrey(const Quad &quad) const;
    bool hasOwnColour(const Quad &quad, float toLevel, float expected) const;

    const cv::Mat &picture;
    const CornerLattice &lattice;
    const std::vector<CornerFit> &fits;
};

bool MarkReader::quadAt(cv::Point cell, Quad &quad) const {
    for (size_t i = 0; i < 4; i++) {
        const int index = lattice.indexAt(cornerOf(cell, i));
        quad.known[i] = index >= 0;
        if (quad.known[i]) {
            quad.corners[i] = lattice.corners[size_t(index)].position;
            const CornerFit &fit = fits[size_t(index)];
            quad.middle += fit.middle;
            quad.amplitude += std::abs(fit.amplitude);
            quad.blur += fit.blur;
            quad.measured++;
        }
    }
    if (quad.measured == 0) {
        return false;
    }
    quad.middle /= float(quad.measured);
    quad.amplitude /= float(quad.measured);
    quad.blur /= float(quad.measured);
    for (size_t i = 0; i < 4; i++) {
        if (!quad.known[i] && !predictCorner(cell, i, quad)) {
            return false;
        }
    }
    return true;
}

// Predicts, from the rest of the lattice, the position of a corner that was not measured.
bool MarkReader::predictCorner(cv::Point cell, size_t corner, Quad &quad) const {
    const cv::Point here = cornerOf(cell, corner);
    if (lattice.predict(here, quad.corners[corner])) {
        return true;
    }
    // If the corner lies diagonally outside the lattice, its row and its column have no corners from which the lattice
    // could predict it. It is then predicted as the fourth corner of the parallelogram that the square's other three
    // corners form.
    const size_t opposite = 3 - corner;
    const cv::Point there = cornerOf(cell, opposite);
    cv::Point2f a;
    cv::Point2f b;
    if (!quad.known[opposite] || !lattice.predict({here.x, there.y}, a) || !lattice.predict({there.x, here.y}, b)) {
        return false;
    }
    quad.corners[corner] = a + b - quad.corners[opposite];
    return true;
}

bool MarkReader::inside(const Quad &quad) const {
    return std::all_of(quad.corners.begin(), quad.corners.end(), [&](cv::Point2f p) {
        const cv::Point2f q = 0.8F * p + 0.2F * quad.at(0.5F, 0.5F);
        return q.x >= 0 && q.y >= 0 && q.x < float(picture.cols - 1) && q.y < float(picture.rows - 1);
    });
}

float MarkReader::centreGrey(const Quad &quad) const {
    float sum = 0;
    for (const float du : {-centreReach, 0.0F, centreReach}) {
        for (const float dv : {-centreReach, 0.0F, centreReach}) {
            sum += sample(picture, quad.at(0.5F + du, 0.5F + dv));
        }
    }
    return sum / 9;
}

// Checks the colour of the square near the middles of its four sides. The factor `toLevel` converts a difference from
// the middle grey to a level, which is 1 for the square's own colour and -1 for the other colour. `expected` is the
// level, at most 1, that the blurred checkerboard should have at these four places. True if the mean of the four levels
// is high enough and if none is clearly negative. If a corner of the square was predicted, each level must even be
// slightly above 0.
bool MarkReader::hasOwnColour(const Quad &quad, float toLevel, float expected) const {
    const std::array<cv::Point2f, 4> sides{
        {{0.5F - ringReach, 0.5F}, {0.5F + ringReach, 0.5F}, {0.5F, 0.5F - ringReach}, {0.5F, 0.5F + ringReach}}};
    float weakest = 10;
    float mean = 0;
    for (const cv::Point2f &side : sides) {
        const float level = (sample(picture, quad.at(side.x, side.y)) - quad.middle) * toLevel;
        weakest = std::min(weakest, level);
        mean += level / 4;
    }
    const float needed = quad.measured == 4 ? 0.0F : 0.25F;
    return mean >= 0.3F * expected && weakest >= (needed - 0.2F) * expected;
}

MarkReader::Look MarkReader::look(cv::Point cell, SquareReading &reading) const {
    Quad quad;
    if (!quadAt(cell, quad) || !inside(quad)) {
        return Look::OutOfSight;
    }
    reading.cell = cell;
    reading.measuredCorners = quad.measured;
    const float width = quad.width();
    const float height = quad.height();
    if (width < 1.5F || height < 1.5F) {
        return Look::OutOfSight;
    }
    const AxisProfile u = profileFor(quad.blur / width);
    const AxisProfile v = profileFor(quad.blur / height);
    const float toLevel = (lattice.isLight(cell) ? 1.0F : -1.0F) / quad.amplitude;
    // The square's own colour must be visible around its centre. This is not checked if blur leaves too little of the
    // colour.
    const float expectedRing = std::min(u.ring * v.board, v.ring * u.board);
    if (expectedRing > 0.2F && !hasOwnColour(quad, toLevel, expectedRing)) {
        return Look::NoSquare;
    }
    const float centre = (centreGrey(quad) - quad.middle) * toLevel;
    const float without = u.board * v.board;
    const float change = 2 * u.mark * v.mark;
    const float share = (without - centre) / change;  // 0 without a mark, 1 with one
    if (share < -1 || share > 2) {
        return Look::NoSquare;
    }
    reading.marked = share > 0.5F;
    reading.certainty = std::min(1.0F, 2 * std::abs(share - 0.5F));
    return Look::Square;
}

using Look = MarkReader::Look;

// At the edge of the measured area, an object in front of the pattern (a cover) can look like the outer half of a
// square. A cover that is as light as the paper looks like a light square, and one that is as dark as the ink looks
// like a dark square. But a cover cannot look like two neighbouring squares, because one of them is light and the other
// is dark. So a square at this edge is doubtful if at least one of its neighbours at the edge was examined and none of
// those looks like a square.
class EdgeSquares {
public:
    // Squares may lie one step outside the corners' extent.
    explicit EdgeSquares(const cv::Rect &extent)
        : origin(extent.tl() - cv::Point(2, 2)),
          looks(extent.height + 4, extent.width + 4, CV_8U, cv::Scalar(int(Look::OutOfSight))) {}

    void note(const SquareReading &reading, Look look) {
        if (reading.measuredCorners < 4) {
            looks.at<uchar>(reading.cell - origin) = uchar(look);
        }
    }

    bool couldBeCover(const SquareReading &reading) const {
        bool refused = false;
        bool read = false;
        for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
            const auto look = Look(looks.at<uchar>(reading.cell - origin + step));
            refused = refused || look == Look::NoSquare;
            read = read || look == Look::Square;
        }
        return reading.measuredCorners < 4 && refused && !read;
    }

private:
    cv::Point origin;
    cv::Mat looks;
};

}  // namespace

std::vector<SquareReading> readMarks(const cv::Mat &picture, const CornerLattice &lattice,
                                     const std::vector<CornerFit> &fits) {
    std::vector<SquareReading> readings;
    const MarkReader reader(picture, lattice, fits);
    const cv::Rect extent = lattice.extent();
    EdgeSquares edge(extent);
    for (int row = extent.y - 1; row < extent.y + extent.height; row++) {
        for (int column = extent.x - 1; column < extent.x + extent.width; column++) {
            SquareReading reading;
            const Look look = reader.look({column, row}, reading);
            if (look != Look::OutOfSight) {
                edge.note(reading, look);
            }
            if (look == Look::Square) {
                readings.push_back(reading);
            }
        }
    }
    for (SquareReading &reading : readings) {
        reading.maybeCover = edge.couldBeCover(reading);
    }
    return readings;
}

}  // namespace pattern_reader
