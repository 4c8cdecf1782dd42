#include "pattern_reader/corner_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pattern_reader {

namespace {

// erf(t / sqrt 2) and its derivative over t, tabulated for |t| up to 4 with linear interpolation between entries.
class EdgeProfile {
public:
    struct Value {
        float level, slope;
    };

    EdgeProfile() {
        for (int i = 0; i <= count + 1; i++) {
            const double t = (double(i) - 0.5 * count) / perUnit;
            values_[size_t(i)] = {float(std::erf(t / std::sqrt(2.0))),
                                  float(std::sqrt(2 / CV_PI) * std::exp(-t * t / 2))};
        }
    }

    Value at(float t) const {
        const float place = std::clamp(t * float(perUnit) + float(count) / 2, 0.0F, float(count));
        const auto i = size_t(int(place));
        const float f = place - float(int(i));
        return {values_[i].level + f * (values_[i + 1].level - values_[i].level),
                values_[i].slope + f * (values_[i + 1].slope - values_[i].slope)};
    }

private:
    static constexpr int perUnit = 64;
    static constexpr int count = 8 * perUnit;
    std::array<Value, size_t(count) + 2> values_{};
};

const EdgeProfile &edgeProfile() {
    static const EdgeProfile profile;
    return profile;
}

constexpr int parameters = 5;  // middle, amplitude, x, y, sigma

// The normal equations of one step.
struct NormalEquations {
    std::array<std::array<double, parameters>, parameters> matrix{};
    std::array<double, parameters> right{};

    // Solves for the first `count` parameters in place of `right`; false when they are not determined.
    bool solve(int count) {
        for (int i = 0; i < count; i++) {
            const auto row = size_t(i);
            if (!(matrix[row][row] > 1e-9)) {
                return false;
            }
            for (int k = i + 1; k < count; k++) {
                const auto below = size_t(k);
                const double factor = matrix[below][row] / matrix[row][row];
                for (int j = i; j < count; j++) {
                    matrix[below][size_t(j)] -= factor * matrix[row][size_t(j)];
                }
                right[below] -= factor * right[row];
            }
        }
        for (int i = count - 1; i >= 0; i--) {
            const auto row = size_t(i);
            for (int j = i + 1; j < count; j++) {
                right[row] -= matrix[row][size_t(j)] * right[size_t(j)];
            }
            right[row] /= matrix[row][row];
        }
        return true;
    }
};

}  // namespace

bool fitCorner(const cv::Mat &picture, cv::Point2f axis0, cv::Point2f axis1, float radius, bool fitSigma, int steps,
               CornerFit &fit) {
    const EdgeProfile &profile = edgeProfile();
    axis0 /= std::hypot(axis0.x, axis0.y);
    axis1 /= std::hypot(axis1.x, axis1.y);
    const cv::Point2f start = fit.position;
    const int count = fitSigma ? 5 : 4;
    const int reach = int(radius);
    const float radius2 = radius * radius;
    bool first = fit.amplitude == 0;
    for (int step = 0; step < steps; step++) {
        const int cx = int(std::lround(fit.position.x));
        const int cy = int(std::lround(fit.position.y));
        if (cx < reach || cy < reach || cx + reach >= picture.cols || cy + reach >= picture.rows) {
            return false;
        }
        NormalEquations equations;
        // Sums in single precision are enough: at most a few hundred pixels of grey levels.
        std::array<float, 21> s{};
        float squares = 0;
        int pixels = 0;
        const float inverse = 1 / fit.sigma;
        const float amplitude = first ? 1 : fit.amplitude;
        for (int y = cy - reach; y <= cy + reach; y++) {
            const uchar *row = picture.ptr(y);
            const float dy = float(y) - fit.position.y;
            const auto width = int(std::sqrt(std::max(0.0F, radius2 - float((y - cy) * (y - cy)))));
            for (int x = cx - width; x <= cx + width; x++) {
                const float dx = float(x) - fit.position.x;
                const float a = (axis0.x * dy - axis0.y * dx) * inverse;
                const float b = (dx * axis1.y - dy * axis1.x) * inverse;
                const EdgeProfile::Value p = profile.at(a);
                const EdgeProfile::Value q = profile.at(b);
                const float shape = p.level * q.level;
                const float pa = p.slope * q.level * inverse * amplitude;
                const float pb = p.level * q.slope * inverse * amplitude;
                const float error = float(row[x]) - (first ? 0 : fit.middle + fit.amplitude * shape);
                const float jx = pa * axis0.y - pb * axis1.y;
                const float jy = -pa * axis0.x + pb * axis1.x;
                const float js = -(pa * a + pb * b);
                s[0] += shape;
                s[1] += jx;
                s[2] += jy;
                s[3] += js;
                s[4] += error;
                s[5] += shape * shape;
                s[6] += shape * jx;
                s[7] += shape * jy;
                s[8] += shape * js;
                s[9] += shape * error;
                s[10] += jx * jx;
                s[11] += jx * jy;
                s[12] += jx * js;
                s[13] += jx * error;
                s[14] += jy * jy;
                s[15] += jy * js;
                s[16] += jy * error;
                s[17] += js * js;
                s[18] += js * error;
                squares += error * error;
                pixels++;
            }
        }
        auto &m = equations.matrix;
        m[0] = {double(pixels), s[0], s[1], s[2], s[3]};
        m[1] = {s[0], s[5], s[6], s[7], s[8]};
        m[2] = {s[1], s[6], s[10], s[11], s[12]};
        m[3] = {s[2], s[7], s[11], s[14], s[15]};
        m[4] = {s[3], s[8], s[12], s[15], s[17]};
        equations.right = {s[4], s[9], s[13], s[16], s[18]};
        // Without a start for the grey levels the first step asks for nothing else.
        if (!equations.solve(first ? 2 : count)) {
            return false;
        }
        const auto &r = equations.right;
        fit.residual = std::sqrt(squares / float(pixels));
        if (first) {
            fit.middle = float(r[0]);
            fit.amplitude = float(r[1]);
            first = false;
            continue;
        }
        fit.middle += float(r[0]);
        fit.amplitude += float(r[1]);
        fit.position += cv::Point2f(float(std::clamp(r[2], -0.7, 0.7)), float(std::clamp(r[3], -0.7, 0.7)));
        if (fitSigma) {
            fit.sigma = std::clamp(fit.sigma + float(std::clamp(r[4], -0.3, 0.3)), 0.35F, 6.0F);
        }
        const cv::Point2f moved = fit.position - start;
        if (!(std::hypot(moved.x, moved.y) < std::max(0.8F, 0.5F * radius))) {
            return false;
        }
        if (std::abs(r[2]) + std::abs(r[3]) < 0.004 && (!fitSigma || std::abs(r[4]) < 0.01)) {
            break;
        }
    }
    return true;
}

}  // namespace pattern_reader
