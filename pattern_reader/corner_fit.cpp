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

constexpr size_t parameters = 5;  // middle, amplitude, x, y, blur

// The borders' directions, of unit length.
struct Borders {
    cv::Point2f axis0, axis1;

    Borders(cv::Point2f along0, cv::Point2f along1)
        : axis0(along0 / std::hypot(along0.x, along0.y)), axis1(along1 / std::hypot(along1.x, along1.y)) {}
};

// The picture that a fit describes.
class CornerModel {
public:
    struct Value {
        float grey;
        std::array<float, parameters> slopes;  // over the parameters
    };

    CornerModel(const Borders &borders, const CornerFit &fit)
        : profile_(edgeProfile()), borders_(borders), fit_(fit), inverse_(1 / fit.blur) {}

    cv::Point2f corner() const { return fit_.position; }

    Value at(int x, int y) const {
        const float dx = float(x) - fit_.position.x;
        const float dy = float(y) - fit_.position.y;
        const float a = (borders_.axis0.x * dy - borders_.axis0.y * dx) * inverse_;
        const float b = (dx * borders_.axis1.y - dy * borders_.axis1.x) * inverse_;
        const EdgeProfile::Value p = profile_.at(a);
        const EdgeProfile::Value q = profile_.at(b);
        const float shape = p.level * q.level;
        const float pa = p.slope * q.level * inverse_ * fit_.amplitude;
        const float pb = p.level * q.slope * inverse_ * fit_.amplitude;
        return {fit_.middle + fit_.amplitude * shape,
                {1, shape, pa * borders_.axis0.y - pb * borders_.axis1.y,
                 -pa * borders_.axis0.x + pb * borders_.axis1.x, -(pa * a + pb * b)}};
    }

private:
    const EdgeProfile &profile_;
    Borders borders_;
    CornerFit fit_;
    float inverse_;  // of the blur
};

// Sums over pixels. Single precision is enough: at most a few hundred pixels of grey levels.
struct PixelSums {
    std::array<std::array<float, parameters>, parameters> products{};  // of two slopes; the upper right triangle
    std::array<float, parameters> errors{};                            // times each slope
    float squares = 0;                                                 // of the errors

    void add(const std::array<float, parameters> &slopes, float error) {
        for (size_t i = 0; i < parameters; i++) {
            for (size_t j = i; j < parameters; j++) {
                products[i][j] += slopes[i] * slopes[j];
            }
            errors[i] += slopes[i] * error;
        }
        squares += error * error;
    }

    // The middle's slope is 1, so its square counts the pixels.
    float rootMeanSquare() const { return std::sqrt(squares / products[0][0]); }

    // The position's standard deviation along one axis, by the noise that the errors show.
    float positionSigma() const {
        const float xx = products[2][2];
        const float yy = products[3][3];
        const float determinant = xx * yy - products[2][3] * products[2][3];
        const float variance = squares / std::max(1.0F, products[0][0] - float(parameters));
        return std::sqrt(variance * 0.5F * (xx + yy) / determinant);
    }
};

// The normal equations of one step.
struct NormalEquations {
    std::array<std::array<double, parameters>, parameters> matrix{};
    std::array<double, parameters> right{};

    explicit NormalEquations(const PixelSums &sums) {
        for (size_t i = 0; i < parameters; i++) {
            for (size_t j = i; j < parameters; j++) {
                matrix[i][j] = sums.products[i][j];
                matrix[j][i] = sums.products[i][j];
            }
            right[i] = sums.errors[i];
        }
    }

    // Solves for the first `count` parameters in place of `right`; false when they are not determined.
    bool solve(size_t count) {
        for (size_t i = 0; i < count; i++) {
            if (!(matrix[i][i] > 1e-9)) {
                return false;
            }
            for (size_t k = i + 1; k < count; k++) {
                const double factor = matrix[k][i] / matrix[i][i];
                for (size_t j = i; j < count; j++) {
                    matrix[k][j] -= factor * matrix[i][j];
                }
                right[k] -= factor * right[i];
            }
        }
        for (size_t i = count; i-- > 0;) {
            for (size_t j = i + 1; j < count; j++) {
                right[i] -= matrix[i][j] * right[j];
            }
            right[i] /= matrix[i][i];
        }
        return true;
    }
};

// Holds the model against the disc around its corner; false when the disc leaves the picture.
bool compare(const cv::Mat &picture, const CornerModel &model, float radius, PixelSums &sums) {
    const int reach = int(radius);
    const int cx = int(std::lround(model.corner().x));
    const int cy = int(std::lround(model.corner().y));
    if (cx < reach || cy < reach || cx + reach >= picture.cols || cy + reach >= picture.rows) {
        return false;
    }
    for (int y = cy - reach; y <= cy + reach; y++) {
        const uchar *row = picture.ptr(y);
        const auto width = int(std::sqrt(std::max(0.0F, radius * radius - float((y - cy) * (y - cy)))));
        for (int x = cx - width; x <= cx + width; x++) {
            const CornerModel::Value expected = model.at(x, y);
            sums.add(expected.slopes, float(row[x]) - expected.grey);
        }
    }
    return true;
}

// Takes a step, but none so long that it leaves what the slopes can tell.
void change(CornerFit &fit, const std::array<double, parameters> &step, bool fitBlur) {
    fit.middle += float(step[0]);
    fit.amplitude += float(step[1]);
    fit.position += cv::Point2f(float(std::clamp(step[2], -0.7, 0.7)), float(std::clamp(step[3], -0.7, 0.7)));
    if (fitBlur) {
        fit.blur = std::clamp(fit.blur + float(std::clamp(step[4], -0.3, 0.3)), 0.35F, 6.0F);
    }
}

bool isSmall(const std::array<double, parameters> &step, bool fitBlur) {
    return std::abs(step[2]) + std::abs(step[3]) < 0.004 && (!fitBlur || std::abs(step[4]) < 0.01);
}

}  // namespace

bool fitCorner(const cv::Mat &picture, cv::Point2f axis0, cv::Point2f axis1, float radius, bool fitBlur, int steps,
               CornerFit &fit) {
    const Borders borders(axis0, axis1);
    const cv::Point2f start = fit.position;
    // Without a start for the grey levels the first step asks for nothing else.
    bool levelsOnly = fit.amplitude == 0;
    if (levelsOnly) {
        fit.middle = 0;
    }
    for (int i = 0; i < steps; i++) {
        PixelSums sums;
        if (!compare(picture, CornerModel(borders, fit), radius, sums)) {
            return false;
        }
        NormalEquations equations(sums);
        if (!equations.solve(levelsOnly ? 2 : fitBlur ? 5 : 4)) {
            return false;
        }
        const std::array<double, parameters> &step = equations.right;
        fit.residual = sums.rootMeanSquare();
        fit.sigma = sums.positionSigma();
        if (levelsOnly) {
            fit.middle = float(step[0]);
            fit.amplitude = float(step[1]);
            levelsOnly = false;
            continue;
        }
        change(fit, step, fitBlur);
        const cv::Point2f moved = fit.position - start;
        if (!(std::hypot(moved.x, moved.y) < std::max(0.8F, 0.5F * radius))) {
            return false;
        }
        if (isSmall(step, fitBlur)) {
            break;
        }
    }
    return true;
}

}  // namespace pattern_reader
