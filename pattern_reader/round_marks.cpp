#include "pattern_reader/round_marks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace pattern_reader {

namespace {

constexpr int rayCount = 20;
constexpr float rayStep = 0.5F;
constexpr int raySteps = 40;

float greyAt(const cv::Mat &smoothed, cv::Point2f p) {
    const int x = int(p.x);
    const int y = int(p.y);
    const float fx = p.x - float(x);
    const float fy = p.y - float(y);
    const auto *a = smoothed.ptr<int16_t>(y) + x;
    const auto *b = smoothed.ptr<int16_t>(y + 1) + x;
    const float top = float(a[0]) + fx * float(a[1] - a[0]);
    const float bottom = float(b[0]) + fx * float(b[1] - b[0]);
    return (top + fy * (bottom - top)) / 64;
}

const std::array<cv::Point2f, rayCount> &rays() {
    static const std::array<cv::Point2f, rayCount> directions = [] {
        std::array<cv::Point2f, rayCount> all;
        for (int i = 0; i < rayCount; i++) {
            // Steps of 7 directions visit each of the 20 directions once. The first few of these directions already
            // point to all sides, so a point without a border around it is given up early.
            const double angle = 2 * CV_PI * (i * 7 % rayCount) / rayCount;
            all[size_t(i)] = cv::Point2f(float(std::cos(angle)), float(std::sin(angle)));
        }
        return all;
    }();
    return directions;
}

// Finds the first strong rise along a ray: its distance, interpolated between samples, and the grey level behind it.
// False if there is none, or if the ray leaves the picture.
bool findBorder(const cv::Mat &smoothed, cv::Point2f from, cv::Point2f direction, float longest, float &distance,
                float &behind) {
    std::array<float, raySteps + 2> grey{};
    const int count = std::min(raySteps, int(longest / rayStep));
    const cv::Point2f last = from + direction * (rayStep * float(count + 1));
    if (last.x < 0 || last.y < 0 || last.x >= float(smoothed.cols - 1) || last.y >= float(smoothed.rows - 1)) {
        return false;
    }
    // To save time, sampling ends when the rise has fallen below 30 % of the steepest rise. But the three samples that
    // follow the steepest rise are always taken, unless the ray ends before them. If the steepest rise is at most 6
    // grey levels, the whole ray is sampled.
    int sampled = 0;
    const auto sampleTo = [&](int end) {
        for (; sampled <= std::min(end, count + 1); sampled++) {
            grey[size_t(sampled)] = greyAt(smoothed, from + direction * (rayStep * float(sampled)));
        }
    };
    float steepest = 0;
    int at = 0;
    for (int i = 1; i <= count; i++) {
        sampleTo(i + 1);
        const float rise = grey[size_t(i) + 1] - grey[size_t(i) - 1];
        if (rise > steepest) {
            steepest = rise;
            at = i;
        } else if (steepest > 6 && rise < 0.3F * steepest) {
            break;
        }
    }
    sampleTo(at + 3);
    if (at < 2 || steepest < 4 || at >= count) {
        return false;
    }
    const auto k = size_t(at);
    const float before = grey[k] - grey[k - 2];
    const float after = grey[k + 2] - grey[k];
    const float bend = before - 2 * steepest + after;
    const float shift = bend < 0 ? std::clamp(0.5F * (before - after) / bend, -0.7F, 0.7F) : 0;
    distance = rayStep * (float(at) + shift);
    behind = grey[std::min(k + 3, size_t(count + 1))];
    return true;
}

// A border as it is seen from a point that it encloses.
struct Border {
    std::vector<cv::Point2f> points;  // relative to that point
    float lightLevel = 0;             // mean grey level behind the border
};

// Finds the border around a point. False if too many directions show no border.
bool lookAround(const cv::Mat &smoothed, cv::Point2f from, float longest, Border &border) {
    border.points.clear();
    float light = 0;
    int missed = 0;
    for (const cv::Point2f &direction : rays()) {
        float distance = 0;
        float behind = 0;
        if (findBorder(smoothed, from, direction, longest, distance, behind)) {
            border.points.push_back(direction * distance);
            light += behind;
        } else if (++missed * 5 > rayCount) {
            return false;
        }
    }
    border.lightLevel = light / float(border.points.size());
    return true;
}

// a x² + b x y + c y² + d x + e y = 1
struct Conic {
    double a = 0, b = 0, c = 0, d = 0, e = 0;

    // Sets `point` to the middle of the ellipse. False if the conic is not an ellipse.
    bool middle(cv::Point2f &point) const {
        const double determinant = 4 * a * c - b * b;
        if (!(determinant > 0) || !(a > 0)) {
            return false;
        }
        point = cv::Point2f(float((b * e - 2 * c * d) / determinant), float((b * d - 2 * a * e) / determinant));
        return true;
    }
};

// Fits a conic to points around the origin by least squares.
bool fitConic(const std::vector<cv::Point2f> &points, Conic &conic) {
    double m[5][6] = {};
    for (const cv::Point2f &p : points) {
        const double row[6] = {double(p.x) * p.x, double(p.x) * p.y, double(p.y) * p.y, p.x, p.y, 1};
        for (int i = 0; i < 5; i++) {
            for (int j = 0; j < 6; j++) {
                m[i][j] += row[i] * row[j];
            }
        }
    }
    for (int i = 0; i < 5; i++) {
        int pivot = i;
        for (int k = i + 1; k < 5; k++) {
            pivot = std::abs(m[k][i]) > std::abs(m[pivot][i]) ? k : pivot;
        }
        if (std::abs(m[pivot][i]) < 1e-9) {
            return false;
        }
        std::swap(m[i], m[pivot]);
        for (int k = 0; k < 5; k++) {
            if (k != i) {
                const double factor = m[k][i] / m[i][i];
                for (int j = i; j < 6; j++) {
                    m[k][j] -= factor * m[i][j];
                }
            }
        }
    }
    conic = {m[0][5] / m[0][0], m[1][5] / m[1][1], m[2][5] / m[2][2], m[3][5] / m[3][3], m[4][5] / m[4][4]};
    return true;
}

// Sets the mark's shape from an ellipse. `ellipse` and `middle` are in pixels of an image level. Each of these pixels
// is `scale` image pixels wide. False if the ellipse is too flat.
bool takeShape(const Conic &ellipse, cv::Point2f middle, float scale, RoundMark &mark) {
    // If v is measured from the ellipse's middle, the border is vᵀ Q v = 1.
    const double level =
        1 + ellipse.a * middle.x * middle.x + ellipse.b * middle.x * middle.y + ellipse.c * middle.y * middle.y;
    const double scale2 = double(scale) * scale * level;
    const double qa = ellipse.a / scale2;
    const double qb = ellipse.b / (2 * scale2);
    const double qc = ellipse.c / scale2;
    const double root = std::sqrt(qa * qc - qb * qb);
    const double trace = std::sqrt(qa + qc + 2 * root);
    if (!(root > 0) || !(trace > 0) || (qa + qc) / root > 10) {
        return false;
    }
    // The symmetric square root of Q.
    mark.toUnit =
        cv::Matx22f(float((qa + root) / trace), float(qb / trace), float(qb / trace), float((qc + root) / trace));
    mark.area = float(CV_PI / root);
    return true;
}

// True if nearly all points of the border lie on the mark's ellipse.
bool liesOnEllipse(const Border &border, cv::Point2f middle, float scale, const RoundMark &mark) {
    int off = 0;
    for (const cv::Point2f &p : border.points) {
        const cv::Vec2f unit = mark.toUnit * cv::Vec2f((p - middle).x, (p - middle).y) * scale;
        off += std::abs(float(cv::norm(unit)) - 1) > 0.2F ? 1 : 0;
    }
    return off * 8 <= int(border.points.size());
}

}  // namespace

bool measureMark(const ImageLevel &level, cv::Point2f image, float radius, RoundMark &mark) {
    const cv::Mat &smoothed = level.smoothed;
    cv::Point2f centre = level.fromImage(image);
    const float longest = std::min(2.6F * radius / level.scale(), rayStep * raySteps);
    Border border;
    Conic ellipse;
    cv::Point2f middle;
    // The second round starts from the middle that the first round has found.
    for (int round = 0; round < 2; round++) {
        if (centre.x < 1 || centre.y < 1 || centre.x >= float(smoothed.cols - 2) ||
            centre.y >= float(smoothed.rows - 2)) {
            return false;
        }
        if (!lookAround(smoothed, centre, longest, border) || !fitConic(border.points, ellipse) ||
            !ellipse.middle(middle) || std::hypot(middle.x, middle.y) > 0.7F * longest) {
            return false;
        }
        centre += middle;
    }
    if (!takeShape(ellipse, middle, level.scale(), mark)) {
        return false;
    }
    mark.centre = level.toImage(centre);
    mark.darkLevel = greyAt(smoothed, centre);
    mark.lightLevel = border.lightLevel;
    return liesOnEllipse(border, middle, level.scale(), mark) && mark.lightLevel - mark.darkLevel > 10;
}

}  // namespace pattern_reader
