#include "pattern_reader/position_sigma.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace pattern_reader {

namespace {

float medianOf(std::vector<float> &values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The fourth difference of the positions of five consecutive corners on a lattice line. It is 0 if the line is a cubic
// curve. Its variance follows from the fits' standard deviations.
struct FourthDifference {
    cv::Point2f value;
    float variance = 0;
};

std::optional<FourthDifference> fourthDifference(const CornerLattice &lattice, const std::vector<CornerFit> &fits,
                                                 cv::Point middle, cv::Point step) {
    constexpr std::array<float, 5> weights{1, -4, 6, -4, 1};
    FourthDifference difference;
    for (int i = 0; i < 5; i++) {
        const int index = lattice.indexAt(middle + (i - 2) * step);
        if (index < 0 || lattice.corners[size_t(index)].disturbed) {
            return std::nullopt;
        }
        const float weighted = weights[size_t(i)] * fits[size_t(index)].sigma;
        difference.value += weights[size_t(i)] * lattice.corners[size_t(index)].position;
        difference.variance += weighted * weighted;
    }
    return difference;
}

// The perspective, the lens and the shape of the paper change neighbouring rows of corners in the same way, so the
// fourth differences of these rows should be the same. Compares each corner with the corner beside it in the next row:
// takes the fourth difference along the row at both corners. Returns the squared distance between these two fourth
// differences, divided by its expected value, which follows from the fits' standard deviations. Columns are treated in
// the same way.
std::vector<float> excessesInRows(const CornerLattice &lattice, const std::vector<CornerFit> &fits) {
    std::vector<float> excesses;
    for (const LatticeCorner &corner : lattice.corners) {
        for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1)}) {
            const std::optional<FourthDifference> one = fourthDifference(lattice, fits, corner.cell, step);
            const cv::Point next = corner.cell + cv::Point(step.y, step.x);
            const std::optional<FourthDifference> two =
                one ? fourthDifference(lattice, fits, next, step) : std::nullopt;
            if (two) {
                const cv::Point2f unlike = one->value - two->value;
                excesses.push_back(unlike.dot(unlike) / (2 * (one->variance + two->variance)));
            }
        }
    }
    return excesses;
}

// Returns the variance of the errors of a board's corner positions, divided by the variance that the noise of their
// pixels explains. The result can be larger than 1 because compression, colour sensors and print cause errors that are
// alike in neighbouring pixels. The fewer pairs of corners can be compared, the closer the result is kept to 1. With
// fewer than ten pairs, it is 1.
float excessOf(const CornerLattice &lattice, const std::vector<CornerFit> &fits) {
    std::vector<float> excesses = excessesInRows(lattice, fits);
    constexpr size_t least = 10;
    if (excesses.size() < least) {
        return 1;
    }
    // The mean of the squares of two standard normal variables has the median ln 2.
    const float found = medianOf(excesses) / 0.693F;
    const float weight = float(excesses.size()) / (float(excesses.size()) + 20);
    return std::clamp(1 + weight * (found - 1), 0.3F, 100.0F);
}

// Sets `disturbed` for the corners around which the picture differs from the model much more than around most corners.
void markDisturbed(CornerLattice &lattice, const std::vector<CornerFit> &fits) {
    std::vector<float> noises;
    std::vector<float> residuals;
    for (const CornerFit &fit : fits) {
        noises.push_back(fit.noise / std::abs(fit.amplitude));
        residuals.push_back(fit.residual / std::abs(fit.amplitude));
    }
    const float usualNoise = medianOf(noises);
    const float usualResidual = medianOf(residuals);
    for (size_t i = 0; i < fits.size(); i++) {
        const CornerFit &fit = fits[i];
        const float contrast = std::abs(fit.amplitude);
        // The fewer the pixels, the more the measured noise scatters.
        const float ratio = 1.4F + 4 / std::sqrt(float(std::max(1, fit.pixels)));
        lattice.corners[i].disturbed =
            fit.noise > std::max(ratio * usualNoise, usualNoise + 0.01F) * contrast ||
            fit.residual > std::max((ratio + 0.5F) * usualResidual, usualResidual + 0.03F) * contrast;
    }
}

}  // namespace

void estimateSigmas(CornerLattice &lattice, const std::vector<CornerFit> &fits) {
    if (fits.empty()) {
        return;
    }
    markDisturbed(lattice, fits);
    const float excess = std::sqrt(excessOf(lattice, fits));
    for (size_t i = 0; i < fits.size(); i++) {
        LatticeCorner &corner = lattice.corners[i];
        // A disturbance is not noise and does not average out, so the sigma of a disturbed corner is at least tripled.
        corner.sigma = (corner.disturbed ? std::max(3.0F, excess) : excess) * fits[i].sigma;
    }
}

}  // namespace pattern_reader
