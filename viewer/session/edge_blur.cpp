#include "viewer/session/edge_blur.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

namespace {

// A profile is the series of grey levels along a line across an edge.
constexpr double reach = 0.25;             // how far a profile extends on each side of a square's edge, in edge lengths
constexpr double samplesPerPixel = 4;      // along a profile
constexpr double slopeLength = 0.5;        // pixels over which a slope is measured
constexpr double leastContrast = 20;       // grey levels
constexpr double greatestBlurPerHalf = 2;  // upper limit of blurOf(), as a multiple of its `half`
constexpr size_t leastEdges = 8;
constexpr double gaussianPeak = 0.3989;  // height of the normal distribution with deviation 1

// Returns the interpolated grey level; empty outside the picture.
std::optional<double> greyAt(const cv::Mat &grey, const cv::Point2d &at) {
    const int x = int(std::floor(at.x));
    const int y = int(std::floor(at.y));
    if (x < 0 || y < 0 || x + 1 >= grey.cols || y + 1 >= grey.rows) {
        return std::nullopt;
    }
    const double right = at.x - x;
    const double down = at.y - y;
    const uchar *upper = grey.ptr(y) + x;
    const uchar *lower = grey.ptr(y + 1) + x;
    return (1 - down) * ((1 - right) * upper[0] + right * upper[1]) +
           down * ((1 - right) * lower[0] + right * lower[1]);
}

// Returns the blur of a step. `half` is half the length of the profile, so the profile extends from -half to half
// across the step. `length` is the step's rise in this range, divided by its greatest slope. A blurred step from 0 to 1
// rises by erf(half / (sqrt 2 * blur)) in this range. Its greatest slope is gaussianPeak / blur. As `length` approaches
// 2 * half, the blur would grow without bounds, so the result is limited.
double blurOf(double length, double half) {
    double low = 0;
    double high = greatestBlurPerHalf * half;
    while (high - low > 0.01) {
        const double blur = (low + high) / 2;
        const double quotient = std::erf(half / (M_SQRT2 * blur)) * blur / gaussianPeak;
        (quotient < length ? low : high) = blur;
    }
    return (low + high) / 2;
}

// Returns the blur, in pixels, of the edge that the line between two places crosses. Empty if the line leaves the
// picture or crosses no clear edge.
std::optional<double> blurAlong(const cv::Mat &grey, const cv::Point2d &from, const cv::Point2d &to) {
    const double length = cv::norm(to - from);
    const int steps = int(length * samplesPerPixel);
    const int apart = int(slopeLength * samplesPerPixel);
    std::vector<double> profile;
    for (int i = 0; i <= steps; ++i) {
        const auto value = greyAt(grey, from + (to - from) * (double(i) / std::max(1, steps)));
        if (!value) {
            return std::nullopt;
        }
        profile.push_back(*value);
    }
    double slope = 0;
    for (size_t i = size_t(apart); i < profile.size(); ++i) {
        slope = std::max(slope, std::abs(profile[i] - profile[i - size_t(apart)]) / slopeLength);
    }
    const double contrast = profile.empty() ? 0 : std::abs(profile.back() - profile.front());
    if (contrast < leastContrast || slope <= 0) {
        return std::nullopt;
    }
    return blurOf(contrast / slope, length / 2);
}

void addBlurs(const cv::Mat &grey, const PatternReading &reading, std::vector<double> &blurs) {
    std::map<std::pair<int, int>, cv::Point2d> places;
    for (const auto &corner : reading.corners) {
        places[{corner.lattice.x, corner.lattice.y}] = corner.image;
    }
    const bool hasMarks = reading.kind == PatternKind::Plate;
    const int step = hasMarks ? 2 : 1;
    for (const auto &[cell, place] : places) {
        for (const auto &next :
             {std::pair(cell.first + step, cell.second), std::pair(cell.first, cell.second + step)}) {
            const auto neighbour = places.find(next);
            if (neighbour == places.end()) {
                continue;
            }
            const cv::Point2d way = neighbour->second - place;
            const cv::Point2d middle = place + 0.5 * way;
            // Two neighbouring corners are joined by an edge, so the profile is perpendicular to the line between them.
            // The line between two marks crosses the edge of the first mark, so the profile lies on this line.
            const cv::Point2d across = reach * cv::Point2d(-way.y, way.x);
            const auto blur =
                hasMarks ? blurAlong(grey, place, middle) : blurAlong(grey, middle - across, middle + across);
            if (blur) {
                blurs.push_back(*blur);
            }
        }
    }
}

}  // namespace

std::optional<double> edgeBlur(const cv::Mat &grey, const PatternReadings &readings) {
    std::vector<double> blurs;
    for (const PatternReading &reading : readings) {
        addBlurs(grey, reading, blurs);
    }
    if (blurs.size() < leastEdges) {
        return std::nullopt;
    }
    const auto median = blurs.begin() + long(blurs.size() / 2);
    std::nth_element(blurs.begin(), median, blurs.end());
    return *median;
}
