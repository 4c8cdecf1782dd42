#include "pattern_reader/corner_window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace pattern_reader {

namespace {

struct EdgeValue {
    float level, slope;
};

// erf(t / sqrt 2) and its derivative, with an error of about 1e-5. There are no branches or tables, so that loops that
// call this function can be vectorised.
inline EdgeValue edgeAt(float t) {
    // Half of the smaller of t² and 21. Limiting t² to 21 does no harm: if |t| is more than 4.6, the root of 21, the
    // function is constant to within the error above.
    const float square = 0.25F * (t * t + 21 - std::abs(t * t - 21));
    // exp(-t²/2) as the sixteenth power of a short series.
    const float u = square * (1.0F / 16);
    float bell = 1 - u * (1 - u * (0.5F - u * (1.0F / 6 - u * (1.0F / 24 - u * (1.0F / 120)))));
    bell *= bell;
    bell *= bell;
    bell *= bell;
    bell *= bell;
    // Abramowitz and Stegun, Handbook of Mathematical Functions, 7.1.26.
    const float k = 1 / (1 + 0.3275911F * 0.70710678F * std::abs(t));
    const float tail =
        k * (0.254829592F + k * (-0.284496736F + k * (1.421413741F + k * (-1.453152027F + k * 1.061405429F))));
    return {std::copysign(1 - tail * bell, t), 0.79788456F * bell};
}

cv::Point2f unit(cv::Point2f v) {
    return v / std::hypot(v.x, v.y);
}

// The model of corner_fit.h, evaluated at a pixel. (dx, dy) leads from the corner to the pixel.
struct Model {
    explicit Model(const CornerBorders &borders, const CornerFit &start)
        : axis0(unit(borders.steps[0])),
          axis1(unit(borders.steps[1])),
          bend0(borders.bends[0]),
          bend1(borders.bends[1]),
          inverse(1 / start.blur),
          fit(start) {}

    // Distances from the borders, in units of the blur.
    float across0(float dx, float dy) const {
        const float along = axis0.x * dx + axis0.y * dy;
        return (axis0.x * dy - axis0.y * dx - bend0 * along * along) * inverse;
    }
    float across1(float dx, float dy) const {
        const float along = axis1.x * dx + axis1.y * dy;
        return (dx * axis1.y - dy * axis1.x - bend1 * along * along) * inverse;
    }
    float middle(float dx, float dy) const { return fit.middle + fit.middleSlope.x * dx + fit.middleSlope.y * dy; }
    float amplitude(float dx, float dy) const {
        return fit.amplitude + fit.amplitudeSlope.x * dx + fit.amplitudeSlope.y * dy;
    }

    cv::Point2f axis0, axis1;
    float bend0, bend1;
    float inverse;  // of the blur
    CornerFit fit;
};

cv::Point pixelAt(cv::Point2f p) {
    return {int(std::lround(p.x)), int(std::lround(p.y))};
}

// Decides which pixels of a disc are taken: those that are at most `reach` pixels from one of the two borders, and
// whose grey level is not affected by the mark of a square.
class PixelChoice {
public:
    PixelChoice(const CornerBorders &borders, float blur, float greatestDistance)
        : axis0(unit(borders.steps[0])),
          axis1(unit(borders.steps[1])),
          mark0(borders.marks[0]),
          mark1(borders.marks[1]),
          reach(greatestDistance) {
        // Four squares meet at the fitted corner. If a square has a mark, the part of the mark that is nearest to the
        // fitted corner affects pixels up to a distance of about twice the blur. In small squares, too few pixels would
        // remain if all affected pixels were left out, so some of them are taken.
        const float glow = std::min(2 * blur, 0.6F * std::min(mark0, mark1));
        squaredGlow = 4 * glow * glow;
    }

    // Sets `taken` for `count` pixels of a row, from (dx, dy) on: 1 for those that are taken, 0 for the others. There
    // are no branches, so that the compiler can vectorise the loop.
    void inRow(int dx, int dy, int count, int *taken) const {
        const float from0 = axis0.x * float(dy);
        const float from1 = axis1.x * float(dy);
        for (int i = 0; i < count; i++) {
            const auto along = float(dx + i);
            const float across0 = std::abs(from0 - axis0.y * along);
            const float across1 = std::abs(from1 - axis1.y * along);
            // For each border, the distance from the pixel to the line where the marks begin, measured at right angles
            // to the border; 0 if the pixel is beyond that line. All of this is doubled: v + |v| is twice v, or 0,
            // without a branch.
            const float free0 = mark0 - across0 + std::abs(mark0 - across0);
            const float free1 = mark1 - across1 + std::abs(mark1 - across1);
            taken[i] =
                int(free0 * free0 + free1 * free1 >= squaredGlow) & (int(across0 <= reach) | int(across1 <= reach));
        }
    }

private:
    cv::Point2f axis0, axis1;
    float mark0, mark1;
    float reach;
    float squaredGlow = 0;  // the square of twice the glow
};

}  // namespace

bool CornerWindow::take(const cv::Mat &picture, const CornerBorders &borders, const CornerFit &fit, float radius,
                        float reach) {
    radius = std::min(radius, largestRadius);
    const cv::Point middle = pixelAt(fit.position);
    const int side = int(radius);
    if (middle.x < side || middle.y < side || middle.x + side >= picture.cols || middle.y + side >= picture.rows) {
        return false;
    }
    while (!gather(picture, borders, fit, radius, reach)) {
        radius *= 0.9F;
    }
    // The lists are padded after the last pixel, because the loops process `lanes` pixels at a time.
    filled = (pixelCount + lanes - 1) / lanes * lanes;
    for (std::size_t i = pixelCount; i < filled; i++) {
        x[i] = fit.position.x;
        y[i] = fit.position.y;
        grey[i] = 0;
    }
    return true;
}

bool CornerWindow::gather(const cv::Mat &picture, const CornerBorders &borders, const CornerFit &fit, float radius,
                          float reach) {
    const PixelChoice choice(borders, fit.blur, reach);
    const cv::Point middle = pixelAt(fit.position);
    const int side = int(radius);
    // The number of pixels that inRow processes is rounded up to a multiple of this, so that every step of inRow's
    // vectorised loop is full.
    constexpr size_t together = 4;
    constexpr size_t longestRow = 2 * size_t(largestRadius) + 1;
    std::array<int, (longestRow + together - 1) / together * together> taken{};
    pixelCount = 0;
    for (int dy = -side; dy <= side; dy++) {
        const auto width = int(std::sqrt(std::max(0.0F, radius * radius - float(dy * dy))));
        if (pixelCount + size_t(2 * width + 1) > capacity) {
            return false;
        }
        choice.inRow(-width, dy, (2 * width / int(together) + 1) * int(together), taken.data());
        const uchar *pixels = picture.ptr(middle.y + dy) + middle.x - width;
        for (int i = 0; i <= 2 * width; i++) {
            // Every pixel is written, without a branch. The next pixel overwrites a pixel that is not taken.
            x[pixelCount] = float(middle.x - width + i);
            y[pixelCount] = float(middle.y + dy);
            grey[pixelCount] = float(pixels[i]);
            pixelCount += size_t(taken[size_t(i)]);
        }
    }
    return true;
}

void CornerWindow::compare(const CornerBorders &borders, const CornerFit &fit) {
    const Model model(borders, fit);
    for (std::size_t i = 0; i < filled; i++) {
        const float dx = x[i] - model.fit.position.x;
        const float dy = y[i] - model.fit.position.y;
        const float a = model.across0(dx, dy);
        const float b = model.across1(dx, dy);
        const EdgeValue p = edgeAt(a);
        const EdgeValue q = edgeAt(b);
        const float shape = p.level * q.level;
        const float amplitude = model.amplitude(dx, dy);
        const float pa = p.slope * q.level * model.inverse * amplitude;
        const float pb = p.level * q.slope * model.inverse * amplitude;
        errors[i] = grey[i] - (model.middle(dx, dy) + amplitude * shape);
        slopes[Middle][i] = 1;
        slopes[Amplitude][i] = shape;
        slopes[Blur][i] = -(pa * a + pb * b);
        slopes[MiddleSlopeX][i] = dx;
        slopes[MiddleSlopeY][i] = dy;
        slopes[AmplitudeSlopeX][i] = dx * shape;
        slopes[AmplitudeSlopeY][i] = dy * shape;
        slopes[PositionX][i] =
            pa * model.axis0.y - pb * model.axis1.y - model.fit.middleSlope.x - model.fit.amplitudeSlope.x * shape;
        slopes[PositionY][i] =
            pb * model.axis1.x - pa * model.axis0.x - model.fit.middleSlope.y - model.fit.amplitudeSlope.y * shape;
    }
    for (List &list : slopes) {
        std::fill(list.begin() + std::ptrdiff_t(pixelCount), list.begin() + std::ptrdiff_t(filled), 0.0F);
    }
    std::fill(errors.begin() + std::ptrdiff_t(pixelCount), errors.begin() + std::ptrdiff_t(filled), 0.0F);
}

void CornerWindow::predictErrors(const std::array<double, ParameterCount> &step) {
    for (std::size_t p = 0; p < ParameterCount; p++) {
        const auto change = float(step[p]);
        for (std::size_t i = 0; i < filled; i++) {
            errors[i] -= change * slopes[p][i];
        }
    }
}

// Single precision is enough, because at most a thousand pixels are added, in separate sums for each lane.
float CornerWindow::sum(const List &a, const List &b) const {
    std::array<float, lanes> sums{};
    for (std::size_t i = 0; i < filled; i += lanes) {
        for (std::size_t lane = 0; lane < lanes; lane++) {
            sums[lane] += a[i + lane] * b[i + lane];
        }
    }
    float total = 0;
    for (const float one : sums) {
        total += one;
    }
    return total;
}

}  // namespace pattern_reader
