#include "pattern_reader/mark_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "pattern_reader/cholesky.h"
#include "pattern_reader/edge_profile.h"
#include "pattern_reader/mark_band.h"

namespace pattern_reader {

namespace {

// The unknowns before `plainUnknowns` belong to every fit. The others are added for a fit with a reflection.
enum Unknown : size_t {
    light,
    dark,
    slopeX,
    slopeY,
    centreX,
    centreY,
    shapeXX,
    shapeXY,
    shapeYY,
    blurWidth,
    plainUnknowns,
    reflectedX = plainUnknowns,
    reflectedY,
    reflectedXX,
    reflectedXY,
    reflectedYY,
    allUnknowns
};

// Computes the derivatives and errors of a fit, and sums their products over all pixels. Pixels are processed in
// blocks. Most loops over a block have no branches, so that the compiler can vectorise them.
template <size_t unknowns>
class PixelSums {
public:
    // One column for the derivative with respect to each unknown, and a last one for the error.
    static constexpr size_t columns = unknowns + 1;

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
          inverseBlur(float(1 / fit.blur)) {
        for (size_t i = 0; i < reflection.size(); i++) {
            reflection[i] = float(fit.reflection[i]);
        }
    }

    // Adds the pixels x0 to x1 of a row.
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

    // Adds the pixels that are still in the block to the sums. Must be called after the last run.
    void flush() {
        pixels += filled;
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
        filled = 0;
    }

    double of(size_t i, size_t j) const { return i < j ? products[i][j] : products[j][i]; }
    size_t count() const { return pixels; }

private:
    static constexpr size_t blockSize = 256;
    static constexpr size_t lanes = 8;
    static constexpr float lightest = 254;
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
            // The gradient of r. It is at a right angle to the border and points outwards.
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
        if constexpr (unknowns > plainUnknowns) {
            addReflection();
        }
    }

    // Adds the reflection to the model. Then leaves out each saturated pixel (at least `lightest`) for which the model
    // also expects at least `lightest`.
    void addReflection() {
        for (size_t k = 0; k < filled; k++) {
            const float x = dx[k];
            const float y = dy[k];
            const float added =
                x * (reflection[0] + reflection[2] * x + reflection[3] * y) + y * (reflection[1] + reflection[4] * y);
            block[reflectedX][k] = x;
            block[reflectedY][k] = y;
            block[reflectedXX][k] = x * x;
            block[reflectedXY][k] = x * y;
            block[reflectedYY][k] = y * y;
            block[unknowns][k] -= added;
        }
        for (size_t k = 0; k < filled; k++) {
            if (grey[k] >= lightest && grey[k] - block[unknowns][k] >= lightest) {
                for (Column &column : block) {
                    column[k] = 0;
                }
                pixels--;
            }
        }
    }

    const EdgeProfile &profile = EdgeProfile::shared();
    double cx, cy;
    float xx, xy, yy;
    float darkLevel, contrast;
    float gx, gy;
    float inverseBlur;
    std::array<float, allUnknowns - plainUnknowns> reflection{};

    // The pixels of the block, and their columns of derivatives and errors. dx and dy are relative to the mark's
    // centre.
    Column dx{}, dy{}, grey{};
    std::array<Column, columns> block{};
    size_t filled = 0;

    std::array<std::array<double, columns>, columns> products{};
    size_t pixels = 0;
};

// Computes one Gauss-Newton step. Sets fit.residual to the root mean square of the errors that remain after the step,
// and fit.sigma to the standard deviation of the centre. False if the pixels do not determine the unknowns.
template <size_t unknowns>
bool solveStep(const PixelSums<unknowns> &sums, typename Cholesky<unknowns>::Vector &step, MarkFit &fit) {
    using Equations = Cholesky<unknowns>;
    using Vector = typename Equations::Vector;
    // The unknowns differ by orders of magnitude, so they are scaled to make every diagonal entry of the matrix 1.
    Vector scale{};
    typename Equations::Matrix matrix{};
    Vector right{};
    for (size_t i = 0; i < unknowns; i++) {
        if (!(sums.of(i, i) > 0)) {
            return false;
        }
        scale[i] = 1 / std::sqrt(sums.of(i, i));
    }
    // A little damping is needed, because the size, contrast and blur of a small mark can hardly be told apart.
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
    const double noise2 = squares / std::max(1.0, double(sums.count()) - double(unknowns));
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

// Adds a step to the fit. The changes of the centre, the shape and the blur are limited, because the derivatives are
// about right only in a small range. The slope is limited, too.
template <class Vector>
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
    for (size_t i = plainUnknowns; i < step.size(); i++) {
        fit.reflection[i - plainUnknowns] += step[i];
    }
    fit.blur = std::max(0.3, fit.blur + std::clamp(step[blurWidth], -0.4 * fit.blur, 0.4 * fit.blur));
}

bool isEllipse(const MarkFit &fit) {
    const double determinant = cv::determinant(fit.toUnit);
    return determinant > 0 && fit.toUnit(0, 0) > 0 && fit.shortRadius() > 0.7;
}

// Fits the mark in at most `steps` steps. False in the same cases as fitMark (see mark_fit.h).
template <size_t unknowns>
bool fitUnknowns(const cv::Mat &picture, int steps, MarkFit &fit) {
    const cv::Point2d start = fit.centre;
    const double reach = fit.longRadius();
    for (int i = 0; i < steps; i++) {
        const MarkBand band(fit);
        if (!band.isIn(picture.size())) {
            return false;
        }
        PixelSums<unknowns> sums(fit);
        band.visitRuns(picture.size(), [&](int y, int x0, int x1) { sums.addRun(picture.ptr(y), y, x0, x1); });
        sums.flush();
        typename Cholesky<unknowns>::Vector step{};
        if (sums.count() < 2 * unknowns || !solveStep(sums, step, fit)) {
            return false;
        }
        fit.pixels = sums.count();
        change(fit, step);
        const cv::Point2d moved = fit.centre - start;
        if (!isEllipse(fit) || !(std::hypot(moved.x, moved.y) < reach) || fit.blur > 2 * fit.longRadius()) {
            return false;
        }
        // Convergence is quadratic: if this step is a small fraction of the blur, the next step would be about the same
        // small fraction of this step. So no further step is needed if this step is much shorter than the blur.
        if (std::hypot(step[centreX], step[centreY]) < 0.03 * fit.blur && std::abs(step[blurWidth]) < 0.1 * fit.blur) {
            break;
        }
    }
    return fit.light - fit.dark > 4;
}

// Sets start values for the grey levels: dark is taken from the middle of the mark, and light from four places well
// outside it.
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
    return fitUnknowns<plainUnknowns>(picture, steps, fit);
}

void fitReflection(const cv::Mat &picture, int steps, MarkFit &fit) {
    MarkFit lit = fit;
    if (!fitUnknowns<allUnknowns>(picture, steps, lit)) {
        return;
    }
    // Schwarz's criterion (BIC) decides whether the additional unknowns are justified.
    const auto pixels = double(lit.pixels);
    constexpr auto added = double(allUnknowns - plainUnknowns);
    if (2 * pixels * std::log(fit.residual / std::max(1e-3, lit.residual)) > added * std::log(pixels)) {
        fit = lit;
    }
}

}  // namespace pattern_reader
