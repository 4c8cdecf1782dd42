#include "pattern_reader/mark_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "pattern_reader/cholesky.h"
#include "pattern_reader/edge_profile.h"

namespace pattern_reader {

namespace {

enum Unknown : size_t { light, dark, slopeX, slopeY, centreX, centreY, shapeXX, shapeXY, shapeYY, blurWidth, unknowns };

using Equations = Cholesky<unknowns>;
using Vector = Equations::Vector;

// The derivatives by the unknowns and, in the last column, the error of one pixel.
constexpr size_t columns = unknowns + 1;

// Sums of products of the columns over pixels, for the picture that a fit describes. Pixels are taken a block at a time
// in loops without branches, so that the compiler can vectorise them.
class PixelSums {
public:
    explicit PixelSums(const MarkFit &fit)
        : cx(fit.centre.x),
          cy(fit.centre.y),
          xx(float(fit.toUnit(0, 0))),
          xy(float(fit.toUnit(0, 1))),
          yy(float(fit.toUnit(1, 1))),
          darkLevel(float(fit.dark)),
          contrast(float(fit.light - fit.dark)),
          gx(float(fit.slope[0])),
          gy(float(fit.slope[1])),
          inverseBlur(float(1 / fit.blur)) {}

    // Pixels x0 to x1 of a row.
    void addRun(const uchar *row, int y, int x0, int x1) {
        for (int x = x0; x <= x1; x++) {
            dx[filled] = float(x - cx);
            dy[filled] = float(y - cy);
            grey[filled] = float(row[x]);
            if (++filled == blockSize) {
                flush();
            }
        }
    }

    // To be called after the last run.
    void flush() {
        evaluate();
        const size_t used = (filled + lanes - 1) / lanes * lanes;
        for (Column &column : block) {
            std::fill(column.begin() + std::ptrdiff_t(filled), column.begin() + std::ptrdiff_t(used), 0.0F);
        }
        for (size_t i = 0; i < columns; i++) {
            for (size_t j = i; j < columns; j++) {
                products[i][j] += double(product(block[i], block[j], used));
            }
        }
        pixels += filled;
        filled = 0;
    }

    double of(size_t i, size_t j) const { return i < j ? products[i][j] : products[j][i]; }
    double count() const { return double(pixels); }

private:
    static constexpr size_t blockSize = 256;
    static constexpr size_t lanes = 8;
    using Column = std::array<float, blockSize>;

    static float product(const Column &a, const Column &b, size_t used) {
        std::array<float, lanes> sums{};
        for (size_t k = 0; k < used; k += lanes) {
            for (size_t lane = 0; lane < lanes; lane++) {
                sums[lane] += a[k + lane] * b[k + lane];
            }
        }
        return ((sums[0] + sums[4]) + (sums[1] + sums[5])) + ((sums[2] + sums[6]) + (sums[3] + sums[7]));
    }

    void evaluate() {
        Column u;
        Column v;
        Column inverse;
        Column normalX;
        Column normalY;
        Column pixelsPerUnit;
        Column t;
        for (size_t k = 0; k < filled; k++) {
            u[k] = xx * dx[k] + xy * dy[k];
            v[k] = xy * dx[k] + yy * dy[k];
            const float r = std::sqrt(u[k] * u[k] + v[k] * v[k] + 1e-6F);
            inverse[k] = 1 / r;
            // The gradient of r; across the border it points outwards.
            const float nx = (xx * u[k] + xy * v[k]) * inverse[k];
            const float ny = (xy * u[k] + yy * v[k]) * inverse[k];
            pixelsPerUnit[k] = 1 / std::sqrt(nx * nx + ny * ny);
            normalX[k] = nx * pixelsPerUnit[k];
            normalY[k] = ny * pixelsPerUnit[k];
            t[k] = (r - 1) * pixelsPerUnit[k] * inverseBlur;
        }
        Column level;
        Column slope;
        for (size_t k = 0; k < filled; k++) {
            const EdgeProfile::Value p = profile.at(t[k]);
            level[k] = p.level;
            slope[k] = p.slope;
        }
        for (size_t k = 0; k < filled; k++) {
            const float lit = 1 + gx * dx[k] + gy * dy[k];
            const float base = darkLevel + contrast * level[k];
            // Grey levels per pixel of distance from the border.
            const float rise = lit * contrast * slope[k] * inverseBlur;
            const float perShape = rise * pixelsPerUnit[k] * inverse[k];
            block[light][k] = lit * level[k];
            block[dark][k] = lit * (1 - level[k]);
            block[slopeX][k] = base * dx[k];
            block[slopeY][k] = base * dy[k];
            block[centreX][k] = -rise * normalX[k];
            block[centreY][k] = -rise * normalY[k];
            block[shapeXX][k] = perShape * u[k] * dx[k];
            block[shapeXY][k] = perShape * (u[k] * dy[k] + v[k] * dx[k]);
            block[shapeYY][k] = perShape * v[k] * dy[k];
            block[blurWidth][k] = -rise * t[k];
            block[unknowns][k] = grey[k] - lit * base;
        }
    }

    const EdgeProfile &profile = EdgeProfile::shared();
    double cx, cy;
    float xx, xy, yy;
    float darkLevel, contrast;
    float gx, gy;
    float inverseBlur;

    // The pixels of the block, from the centre, and their columns.
    Column dx{}, dy{}, grey{};
    std::array<Column, columns> block{};
    size_t filled = 0;

    std::array<std::array<double, columns>, columns> products{};
    size_t pixels = 0;
};

// The pixels between two ellipses with a mark's shape: those that its border affects, and some of the plain areas on
// both sides, which show the slope of the light. The latter are taken from every third row only, if the mark has enough
// rows.
class Band {
public:
    explicit Band(const MarkFit &fit) : centre(fit.centre), shape(fit.toUnit.t() * fit.toUnit) {
        const double radius = fit.shortRadius();
        border = std::max(1.7, 2.5 * fit.blur) / radius;
        plain = std::max(4.0, 6 * fit.blur) / radius;
        rowsPerPlain = radius < 5 ? 1 : 3;
        needed = std::min(widest, 1 + 1.5 * fit.blur / radius);
    }

    // True if all that the border affects lies in a picture of this size.
    bool isIn(const cv::Size &size) const {
        const double determinant = shape(0, 0) * shape(1, 1) - shape(0, 1) * shape(0, 1);
        const double halfWidth = needed * std::sqrt(shape(1, 1) / determinant);
        const double halfHeight = needed * std::sqrt(shape(0, 0) / determinant);
        return centre.x - halfWidth >= 0 && centre.y - halfHeight >= 0 && centre.x + halfWidth <= size.width - 1 &&
               centre.y + halfHeight <= size.height - 1;
    }

    // Calls visit(y, x0, x1) for every run of pixels.
    template <class Visit>
    void visitRuns(const cv::Size &size, const Visit &visit) const {
        const double determinant = shape(0, 0) * shape(1, 1) - shape(0, 1) * shape(0, 1);
        const double halfHeight = std::min(widest, 1 + plain) * std::sqrt(shape(0, 0) / determinant);
        const int last = std::min(size.height - 1, int(std::floor(centre.y + halfHeight)));
        for (int y = std::max(0, int(std::ceil(centre.y - halfHeight))); y <= last; y++) {
            const double width = y % rowsPerPlain == 0 ? plain : border;
            const cv::Point2d outer = crossings(y, std::min(widest, 1 + width));
            const cv::Point2d inner = crossings(y, std::max(0.0, 1 - width));
            const int x0 = std::max(0, int(std::ceil(outer.x)));
            const int x1 = std::min(size.width - 1, int(std::floor(outer.y)));
            if (inner.x < inner.y) {
                visit(y, x0, std::min(x1, int(std::floor(inner.x))));
                visit(y, std::max(x0, int(std::ceil(inner.y))), x1);
            } else {
                visit(y, x0, x1);
            }
        }
    }

private:
    // The dots of a code begin 2.2 radii from a mark's centre.
    static constexpr double widest = 1.75;

    // Where a row enters and leaves the ellipse that is `radii` times as large as the mark. If it does not meet the
    // ellipse, the first value is the greater one.
    cv::Point2d crossings(int y, double radii) const {
        const double dy = y - centre.y;
        const double half = shape(0, 1) * dy;
        const double rest = shape(1, 1) * dy * dy - radii * radii;
        const double root2 = half * half - shape(0, 0) * rest;
        if (root2 <= 0) {
            return {1, 0};
        }
        const double root = std::sqrt(root2);
        return {centre.x + (-half - root) / shape(0, 0), centre.x + (-half + root) / shape(0, 0)};
    }

    cv::Point2d centre;
    cv::Matx22d shape;
    // Widths on either side of the border, and how far out the picture must reach, in radii.
    double border = 0;
    double plain = 0;
    double needed = 0;
    int rowsPerPlain = 1;
};

// One step of Gauss and Newton, and what it leaves: the errors' root mean square and the centre's deviation. False when
// the pixels do not determine the unknowns.
bool solveStep(const PixelSums &sums, Vector &step, MarkFit &fit) {
    // The unknowns' own scales differ by orders of magnitude.
    Vector scale{};
    Equations::Matrix matrix{};
    Vector right{};
    for (size_t i = 0; i < unknowns; i++) {
        if (!(sums.of(i, i) > 0)) {
            return false;
        }
        scale[i] = 1 / std::sqrt(sums.of(i, i));
    }
    // A little damping, because size, contrast and blur of a small mark can hardly be told apart.
    constexpr double damping = 1e-4;
    for (size_t i = 0; i < unknowns; i++) {
        for (size_t j = 0; j <= i; j++) {
            matrix[i][j] = sums.of(i, j) * scale[i] * scale[j] + (i == j ? damping : 0);
        }
        right[i] = sums.of(i, unknowns) * scale[i];
    }
    Equations equations;
    if (!equations.decompose(matrix)) {
        return false;
    }
    step = equations.solve(right);
    double squares = sums.of(unknowns, unknowns);
    for (size_t i = 0; i < unknowns; i++) {
        squares -= right[i] * step[i];
        step[i] *= scale[i];
    }
    squares = std::max(0.0, squares);
    const double noise2 = squares / std::max(1.0, sums.count() - double(unknowns));
    double variance = 0;
    for (const size_t axis : {centreX, centreY}) {
        Vector unit{};
        unit[axis] = 1;
        variance += equations.solve(unit)[axis] * scale[axis] * scale[axis] * noise2 / 2;
    }
    fit.residual = std::sqrt(noise2);
    fit.sigma = std::sqrt(variance);
    return true;
}

// Takes a step, shortened if it leaves the range in which the derivatives are about right.
void change(MarkFit &fit, const Vector &step) {
    const double reach = std::max(0.7 * fit.blur, 0.1 * fit.shortRadius());
    const double length = std::hypot(step[centreX], step[centreY]);
    const double share = length > reach ? reach / length : 1;
    fit.centre += cv::Point2d(step[centreX], step[centreY]) * share;
    const double most = 0.25 / fit.longRadius();
    fit.toUnit(0, 0) += std::clamp(step[shapeXX], -0.25 * fit.toUnit(0, 0), 0.25 * fit.toUnit(0, 0));
    fit.toUnit(1, 1) += std::clamp(step[shapeYY], -0.25 * fit.toUnit(1, 1), 0.25 * fit.toUnit(1, 1));
    fit.toUnit(0, 1) += std::clamp(step[shapeXY], -most, most);
    fit.toUnit(1, 0) = fit.toUnit(0, 1);
    fit.light += step[light];
    fit.dark += step[dark];
    fit.slope += cv::Vec2d(step[slopeX], step[slopeY]);
    const double steepest = 0.4 / fit.longRadius();
    const double steepness = cv::norm(fit.slope);
    if (steepness > steepest) {
        fit.slope *= steepest / steepness;
    }
    fit.blur = std::max(0.3, fit.blur + std::clamp(step[blurWidth], -0.4 * fit.blur, 0.4 * fit.blur));
}

bool isEllipse(const MarkFit &fit) {
    const double determinant = cv::determinant(fit.toUnit);
    return determinant > 0 && fit.toUnit(0, 0) > 0 && fit.shortRadius() > 0.7;
}

// Start values for the grey levels: those of the middle and of places well outside the mark.
void guessLevels(const cv::Mat &picture, MarkFit &fit) {
    const cv::Matx22d fromUnit = fit.toUnit.inv();
    const auto at = [&](double x, double y) {
        const cv::Vec2d d = fromUnit * cv::Vec2d(x, y);
        const int column = std::clamp(int(std::lround(fit.centre.x + d[0])), 0, picture.cols - 1);
        const int row = std::clamp(int(std::lround(fit.centre.y + d[1])), 0, picture.rows - 1);
        return double(picture.ptr(row)[column]);
    };
    fit.dark = at(0, 0);
    fit.light = 0.25 * (at(1.6, 0) + at(-1.6, 0) + at(0, 1.6) + at(0, -1.6));
}

}  // namespace

double MarkFit::shortRadius() const {
    const double half = (toUnit(0, 0) - toUnit(1, 1)) / 2;
    return 1 / ((toUnit(0, 0) + toUnit(1, 1)) / 2 + std::hypot(half, toUnit(0, 1)));
}

double MarkFit::longRadius() const {
    const double half = (toUnit(0, 0) - toUnit(1, 1)) / 2;
    return 1 / std::max(1e-9, (toUnit(0, 0) + toUnit(1, 1)) / 2 - std::hypot(half, toUnit(0, 1)));
}

bool fitMark(const cv::Mat &picture, int steps, MarkFit &fit) {
    if (fit.light == fit.dark) {
        guessLevels(picture, fit);
    }
    const cv::Point2d start = fit.centre;
    const double reach = fit.longRadius();
    for (int i = 0; i < steps; i++) {
        const Band band(fit);
        if (!band.isIn(picture.size())) {
            return false;
        }
        PixelSums sums(fit);
        band.visitRuns(picture.size(), [&](int y, int x0, int x1) { sums.addRun(picture.ptr(y), y, x0, x1); });
        sums.flush();
        Vector step{};
        if (sums.count() < 2 * unknowns || !solveStep(sums, step, fit)) {
            return false;
        }
        change(fit, step);
        const cv::Point2d moved = fit.centre - start;
        if (!isEllipse(fit) || !(std::hypot(moved.x, moved.y) < reach) || fit.blur > 2 * fit.longRadius()) {
            return false;
        }
        // Convergence is quadratic: the next step would be shorter than this one by the factor step / blur.
        if (std::hypot(step[centreX], step[centreY]) < 0.03 * fit.blur && std::abs(step[blurWidth]) < 0.1 * fit.blur) {
            break;
        }
    }
    return fit.light - fit.dark > 4;
}

}  // namespace pattern_reader
