#include "pattern_reader/corner_fit.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "pattern_reader/corner_window.h"

namespace pattern_reader {

namespace {

using Window = CornerWindow;
using Step = std::array<double, Window::ParameterCount>;

constexpr std::array<Window::Parameter, 2> levelsOnly{Window::Middle, Window::Amplitude};
constexpr std::array<Window::Parameter, 4> positionOnly{Window::Middle, Window::Amplitude, Window::PositionX,
                                                        Window::PositionY};
constexpr std::array<Window::Parameter, 5> positionAndBlur{Window::Middle, Window::Amplitude, Window::Blur,
                                                           Window::PositionX, Window::PositionY};
constexpr std::array<Window::Parameter, 9> everything{
    Window::Middle,          Window::Amplitude,       Window::Blur,      Window::MiddleSlopeX, Window::MiddleSlopeY,
    Window::AmplitudeSlopeX, Window::AmplitudeSlopeY, Window::PositionX, Window::PositionY};

// The normal equations of one step for `size` of the parameters. The position's two parameters come last. So after the
// elimination, the last two rows tell how well the position is determined if all other parameters are unknown.
template <size_t size>
class NormalEquations {
public:
    NormalEquations(const Window &window, const std::array<Window::Parameter, size> &free) : parameters(free) {
        for (size_t i = 0; i < size; i++) {
            for (size_t j = i; j < size; j++) {
                matrix[i][j] = double(window.sumOfSlopes(free[i], free[j]));
                matrix[j][i] = matrix[i][j];
            }
            right[i] = double(window.sumOfErrors(free[i]));
        }
    }

    // Adds prior knowledge: firstFactor * first + secondFactor * second is less than its expected value by `error`. If
    // `first` and `second` are the same parameter, the knowledge is only about firstFactor * first.
    void add(Window::Parameter first, double firstFactor, Window::Parameter second, double secondFactor, double error,
             double weight) {
        const size_t i = indexOf(first);
        const size_t j = indexOf(second);
        matrix[i][i] += weight * firstFactor * firstFactor;
        right[i] += weight * firstFactor * error;
        if (i != j) {
            matrix[j][j] += weight * secondFactor * secondFactor;
            matrix[i][j] += weight * firstFactor * secondFactor;
            matrix[j][i] = matrix[i][j];
            right[j] += weight * secondFactor * error;
        }
    }

    // Returns the step, with 0 for parameters that are not free. Empty if the parameters are not determined.
    std::optional<Step> solve() {
        for (size_t i = 0; i < size; i++) {
            if (!(matrix[i][i] > 1e-9)) {
                return std::nullopt;
            }
            for (size_t k = i + 1; k < size; k++) {
                const double factor = matrix[k][i] / matrix[i][i];
                for (size_t j = i; j < size; j++) {
                    matrix[k][j] -= factor * matrix[i][j];
                }
                right[k] -= factor * right[i];
            }
        }
        Step step{};
        for (size_t i = size; i-- > 0;) {
            double rest = right[i];
            for (size_t j = i + 1; j < size; j++) {
                rest -= matrix[i][j] * step[parameters[j]];
            }
            step[parameters[i]] = rest / matrix[i][i];
        }
        return step;
    }

    // Returns the mean of the position's two variances, along x and along y, for pixels whose noise has a variance
    // of 1. Call it only after solve.
    double positionVariance() const {
        const double xx = matrix[size - 2][size - 2];
        const double xy = matrix[size - 2][size - 1];
        const double yy = matrix[size - 1][size - 1];  // the information about y if x and all others are unknown
        return 0.5 * (1 / yy + 1 / xx + xy * xy / (xx * xx * yy));
    }

private:
    size_t indexOf(Window::Parameter parameter) const {
        return size_t(std::find(parameters.begin(), parameters.end(), parameter) - parameters.begin());
    }

    std::array<Window::Parameter, size> parameters;
    std::array<std::array<double, size>, size> matrix{};
    std::array<double, size> right{};
};

// Adds a step to the fit and returns the step with its limits applied. The changes of blur and position are limited,
// because the derivatives hold only near the current values.
Step change(CornerFit &fit, Step step) {
    const auto limit = [&](Window::Parameter p, double most) { step[p] = std::clamp(step[p], -most, most); };
    limit(Window::Blur, 0.3);
    limit(Window::PositionX, 0.7);
    limit(Window::PositionY, 0.7);
    fit.middle += float(step[Window::Middle]);
    fit.amplitude += float(step[Window::Amplitude]);
    fit.blur = std::clamp(fit.blur + float(step[Window::Blur]), 0.35F, 6.0F);
    fit.middleSlope += cv::Point2f(float(step[Window::MiddleSlopeX]), float(step[Window::MiddleSlopeY]));
    fit.amplitudeSlope += cv::Point2f(float(step[Window::AmplitudeSlopeX]), float(step[Window::AmplitudeSlopeY]));
    fit.position += cv::Point2f(float(step[Window::PositionX]), float(step[Window::PositionY]));
    return step;
}

bool isSmall(const Step &step, double limit) {
    return std::abs(step[Window::PositionX]) + std::abs(step[Window::PositionY]) < limit &&
           std::abs(step[Window::Blur]) < 2.5 * limit;
}

bool hasLeft(cv::Point2f start, float radius, const CornerFit &fit) {
    const cv::Point2f moved = fit.position - start;
    return !(std::hypot(moved.x, moved.y) < std::max(0.8F, 0.5F * radius));
}

template <size_t size>
std::optional<Step> stepOf(const Window &window, const std::array<Window::Parameter, size> &free) {
    return NormalEquations<size>(window, free).solve();
}

// Adds the prior: the slopes of middle and amplitude should agree with the expected changes over the lattice's steps,
// and the blur should agree with that of the board.
void addPrior(NormalEquations<everything.size()> &equations, const CornerBorders &borders, const CornerPrior &prior,
              const CornerFit &fit) {
    const auto weight = [&](float deviation) { return double(prior.noise * prior.noise / (deviation * deviation)); };
    for (size_t i = 0; i < 2; i++) {
        const cv::Point2f step = borders.steps[i];
        const CornerPrior::Change &expected = prior.changes[i];
        equations.add(Window::MiddleSlopeX, double(step.x), Window::MiddleSlopeY, double(step.y),
                      double(expected.middle - step.dot(fit.middleSlope)), weight(expected.deviation));
        equations.add(Window::AmplitudeSlopeX, double(step.x), Window::AmplitudeSlopeY, double(step.y),
                      double(expected.amplitude - step.dot(fit.amplitudeSlope)), weight(expected.deviation));
    }
    equations.add(Window::Blur, 1, Window::Blur, 1, double(prior.blur - fit.blur), weight(prior.blurDeviation));
}

// Estimates residual, noise and sigma from the errors. Noise and sigma use only the part of the errors that changes
// sign after half a turn, see corner_fit.h. Sigma also uses the prior's noise.
void assess(const Window &window, const CornerPrior &prior, double positionVariance, CornerFit &fit) {
    const size_t pairs = window.count() / 2;
    float odd = 0;
    for (size_t i = 0; i < pairs; i++) {
        const float difference = window.error(i) - window.error(window.count() - 1 - i);
        odd += 0.5F * difference * difference;
    }
    // The degrees of freedom that the fit takes from this part of the errors: two for the position, and only one for
    // the slopes, because the prior restricts the slopes. The other parameters affect only the part that stays the same
    // after half a turn.
    constexpr float fitted = 3;
    const float weight = std::max(1.0F, float(pairs) - fitted);
    fit.residual = std::sqrt(window.sumOfSquares() / float(window.count()));
    fit.noise = std::sqrt(odd / weight);
    fit.pixels = int(window.count());
    const float variance = (odd + prior.noiseWeight * prior.noise * prior.noise) / (weight + prior.noiseWeight);
    fit.sigma = std::sqrt(variance * float(positionVariance));
}

}  // namespace

bool fitCorner(const cv::Mat &picture, const CornerBorders &borders, float radius, CornerParameters free, int steps,
               CornerFit &fit) {
    const cv::Point2f start = fit.position;
    // If the grey levels have no start values, the first step fits only them.
    bool levels = fit.amplitude == 0;
    if (levels) {
        fit.middle = 0;
    }
    // If only the position is fitted in a large window, the fit ends after the first fairly short step. Otherwise it
    // ends only after a very short step. In a small window, ending earlier would more often give a wrong position.
    const double enough = free == CornerParameters::Position && radius > 2.5F ? 0.15 : 0.004;
    Window window;
    Step last{};
    for (int i = 0; i < steps; i++) {
        if (!window.take(picture, borders, fit, radius, 1000)) {
            return false;
        }
        window.compare(borders, fit);
        const std::optional<Step> step = levels                               ? stepOf(window, levelsOnly)
                                         : free == CornerParameters::Position ? stepOf(window, positionOnly)
                                                                              : stepOf(window, positionAndBlur);
        if (!step) {
            return false;
        }
        last = change(fit, *step);
        if (hasLeft(start, radius, fit)) {
            return false;
        }
        if (!levels && isSmall(*step, enough)) {
            break;
        }
        levels = false;
    }
    window.predictErrors(last);
    fit.residual = std::sqrt(window.sumOfSquares() / float(window.count()));
    return true;
}

bool refineCorner(const cv::Mat &picture, const CornerBorders &borders, float radius, const CornerPrior &prior,
                  int steps, CornerFit &fit) {
    const cv::Point2f start = fit.position;
    Window window;
    double variance = 0;
    std::optional<Step> small;
    for (int i = 0; i < steps; i++) {
        if (!window.take(picture, borders, fit, radius, 3 * fit.blur + 1)) {
            return false;
        }
        window.compare(borders, fit);
        NormalEquations<everything.size()> equations(window, everything);
        addPrior(equations, borders, prior, fit);
        const std::optional<Step> step = equations.solve();
        if (!step) {
            return false;
        }
        const Step taken = change(fit, *step);
        variance = equations.positionVariance();
        if (hasLeft(start, radius, fit)) {
            return false;
        }
        // Convergence is quadratic: after a step as small as this, the remaining error is negligible.
        if (isSmall(*step, 0.03)) {
            small = taken;
            break;
        }
    }
    if (small) {
        window.predictErrors(*small);
    } else {
        window.compare(borders, fit);
    }
    assess(window, prior, variance, fit);
    return true;
}

}  // namespace pattern_reader
