#include "pattern_reader/point_detector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace pattern_reader {

namespace {

constexpr float greyScale = 64;  // units of ImageLevel::smoothed per grey level

constexpr auto saddleThreshold = int32_t(leastSaddleStrength * greyScale * leastSaddleStrength * greyScale);
constexpr auto blobThreshold = int32_t(-leastBlobStrength * greyScale * leastBlobStrength * greyScale);

// Computes the negated determinant of the Hessian of ImageLevel::smoothed along one row. The result is positive at
// saddles and negative at blobs. `worth` is 1 where the result's magnitude is large enough for a saddle or a blob.
// Smoothed values are at most 255 * 64, so the second derivatives fit into 16 bits. With 16 bits, the processor
// computes twice as many determinants at once as with 32 bits.
void respond(const ImageLevel &level, int y, int32_t *out, uchar *worth) {
    const int width = level.smoothed.cols;
    const auto *up = level.smoothed.ptr<int16_t>(y - 1);
    const auto *mid = level.smoothed.ptr<int16_t>(y);
    const auto *down = level.smoothed.ptr<int16_t>(y + 1);
    out[0] = 0;
    out[width - 1] = 0;
    for (int x = 1; x < width - 1; x++) {
        const auto xx = int16_t(mid[x - 1] + mid[x + 1] - 2 * mid[x]);
        const auto yy = int16_t(up[x] + down[x] - 2 * mid[x]);
        const auto xy = int16_t(up[x - 1] + down[x + 1] - up[x + 1] - down[x - 1]);  // four times the derivative
        out[x] = (int32_t(xy) * xy >> 4) - int32_t(xx) * yy;
    }
    for (int x = 0; x < width; x++) {
        worth[x] = uchar(int(out[x] > saddleThreshold) | int(out[x] < blobThreshold));
    }
}

struct Quadratic {
    float gx, gy, xx, yy, xy;
};

// Fits a quadratic function to 3 × 3 pixels by least squares.
Quadratic quadraticAt(const cv::Mat &smoothed, int x, int y) {
    const int16_t *r[3] = {smoothed.ptr<int16_t>(y - 1) + x, smoothed.ptr<int16_t>(y) + x,
                           smoothed.ptr<int16_t>(y + 1) + x};
    float column[3] = {0, 0, 0};
    float row[3] = {0, 0, 0};
    for (int j = 0; j < 3; j++) {
        for (int i = 0; i < 3; i++) {
            const auto value = float(r[j][i - 1]);
            column[i] += value;
            row[j] += value;
        }
    }
    Quadratic q{};
    q.gx = (column[2] - column[0]) / 6;
    q.gy = (row[2] - row[0]) / 6;
    q.xx = (column[0] - 2 * column[1] + column[2]) / 3;
    q.yy = (row[0] - 2 * row[1] + row[2]) / 3;
    q.xy = float(r[0][-1] + r[2][1] - r[0][1] - r[2][-1]) / 4;
    return q;
}

struct Circle {
    static constexpr int count = 16;
    std::array<float, count> x{};
    std::array<float, count> y{};
};

const Circle &unitCircle() {
    static const Circle circle = [] {
        Circle c;
        for (int i = 0; i < Circle::count; i++) {
            const double angle = 2 * CV_PI * i / Circle::count;
            c.x[size_t(i)] = float(std::cos(angle));
            c.y[size_t(i)] = float(std::sin(angle));
        }
        return c;
    }();
    return circle;
}

float sample(const cv::Mat &smoothed, float x, float y) {
    const int ix = int(x);
    const int iy = int(y);
    const float fx = x - float(ix);
    const float fy = y - float(iy);
    const auto *a = smoothed.ptr<int16_t>(iy) + ix;
    const auto *b = smoothed.ptr<int16_t>(iy + 1) + ix;
    const float top = float(a[0]) + fx * float(a[1] - a[0]);
    const float bottom = float(b[0]) + fx * float(b[1] - b[0]);
    return top + fy * (bottom - top);
}

// True if a ring around the point has two light and two dark areas that alternate, and looks nearly the same after half
// a turn. Also determines the opening angle of the light areas. The derivatives at the point do not show this angle,
// because blur makes every angle look like a right angle.
bool looksLikeSaddle(const cv::Mat &smoothed, SaddlePoint &saddle) {
    constexpr float radius = 2;
    const cv::Point2f p = saddle.position;
    if (p.x < radius + 1 || p.y < radius + 1 || p.x > float(smoothed.cols) - radius - 2 ||
        p.y > float(smoothed.rows) - radius - 2) {
        return false;
    }
    const Circle &circle = unitCircle();
    constexpr size_t half = Circle::count / 2;
    std::array<float, Circle::count> ring{};
    for (size_t i = 0; i < ring.size(); i++) {
        ring[i] = sample(smoothed, p.x + radius * circle.x[i], p.y + radius * circle.y[i]);
    }
    float odd = 0;
    cv::Point2f second;
    cv::Point2f fourth;
    for (size_t i = 0; i < half; i++) {
        odd += std::abs(ring[i] - ring[i + half]);
        const float even = ring[i] + ring[i + half];
        second += even * cv::Point2f(circle.x[2 * i], circle.y[2 * i]);
        fourth += even * cv::Point2f(circle.x[4 * i % Circle::count], circle.y[4 * i % Circle::count]);
    }
    // `second` measures the second harmonic of the ring: an amplitude A gives it the length 8 A. `odd` is the sum of
    // the absolute differences between opposite points of the ring. The length of `second` must be more than 1.2
    // times `odd`.
    const float length2 = second.dot(second);
    if (!(length2 > 1.44F * odd * odd)) {
        return false;
    }
    // Two light areas with the opening angle w have a second harmonic of sin w and a fourth harmonic of sin w cos w,
    // both in the direction of the light axis. On this ring in a smoothed picture, only about a fifth of the fourth
    // harmonic remains.
    constexpr float lost = 5;
    const cv::Point2f axis(second.x * second.x - second.y * second.y, 2 * second.x * second.y);
    const float cosine = lost * fourth.dot(axis) / (length2 * std::sqrt(length2));
    saddle.halfOpening = 0.5F * std::acos(std::clamp(cosine, -0.7F, 0.7F));
    return true;
}

bool describe(const Quadratic &q, SaddlePoint &saddle) {
    const float mean = (q.xx + q.yy) / 2;
    const float half = std::hypot((q.xx - q.yy) / 2, q.xy);
    if (half <= std::abs(mean)) {
        return false;
    }
    saddle.brightAxis = 0.5F * std::atan2(2 * q.xy, q.xx - q.yy);
    saddle.strength = std::sqrt(half * half - mean * mean) / greyScale;
    return true;
}

}  // namespace

bool locateSaddle(const ImageLevel &level, cv::Point2f near, float reach, SaddlePoint &saddle) {
    const cv::Mat &smoothed = level.smoothed;
    cv::Point2f p = near;
    for (int step = 0; step < 4; step++) {
        const int x = int(std::lround(p.x));
        const int y = int(std::lround(p.y));
        if (x < 1 || y < 1 || x >= smoothed.cols - 1 || y >= smoothed.rows - 1) {
            return false;
        }
        const Quadratic q = quadraticAt(smoothed, x, y);
        const float determinant = q.xx * q.yy - q.xy * q.xy;
        if (determinant >= 0) {
            return false;
        }
        const float dx = -(q.yy * q.gx - q.xy * q.gy) / determinant;
        const float dy = -(q.xx * q.gy - q.xy * q.gx) / determinant;
        const cv::Point2f next(float(x) + std::clamp(dx, -1.5F, 1.5F), float(y) + std::clamp(dy, -1.5F, 1.5F));
        if (std::hypot(next.x - near.x, next.y - near.y) > reach) {
            return false;
        }
        p = next;
        if (std::abs(dx) <= 0.6F && std::abs(dy) <= 0.6F) {
            saddle.position = p;
            return describe(q, saddle) && looksLikeSaddle(smoothed, saddle);
        }
    }
    return false;
}

namespace {

// The results of respond() for three neighbouring rows.
struct ResponseRows {
    const int32_t *up, *mid, *down;

    bool isPeak(int x) const {
        const int32_t v = mid[x];
        return v >= mid[x - 1] && v > mid[x + 1] && v >= up[x - 1] && v >= up[x] && v >= up[x + 1] && v > down[x - 1] &&
               v > down[x] && v > down[x + 1];
    }
    bool isPit(int x) const {
        const int32_t v = mid[x];
        return v <= mid[x - 1] && v < mid[x + 1] && v <= up[x - 1] && v <= up[x] && v <= up[x + 1] && v < down[x - 1] &&
               v < down[x] && v < down[x + 1];
    }
};

// True if the picture gets lighter in all eight directions, and in each of them by at least 40 % of the average rise.
// The rise is measured at the distances at which a blob of this level can end. A stretched blob may end farther away
// along its long axis, which is given as a unit vector.
bool isAlone(const cv::Mat &smoothed, int x, int y, cv::Point2f longAxis, bool stretched) {
    constexpr int reach = 4;
    if (x < reach || y < reach || x >= smoothed.cols - reach || y >= smoothed.rows - reach) {
        return false;
    }
    const cv::Rect picture({0, 0}, smoothed.size());
    const auto at = [&](int dx, int dy) { return int(smoothed.ptr<int16_t>(y + dy)[x + dx]); };
    const int centre = at(0, 0);
    int least = 1 << 20;
    int sum = 0;
    for (int dy = -1; dy <= 1; dy++) {
        for (int dx = -1; dx <= 1; dx++) {
            if (dx == 0 && dy == 0) {
                continue;
            }
            // Two diagonal steps are about as long as three steps along an axis.
            const bool diagonal = dx != 0 && dy != 0;
            const int near = diagonal ? 2 : 3;
            int rise = std::max(at(dx * near, dy * near), at(dx * (near + 1), dy * (near + 1))) - centre;
            const float along = std::abs(float(dx) * longAxis.x + float(dy) * longAxis.y) * (diagonal ? 0.7F : 1.0F);
            if (stretched && along > 0.75F) {
                for (const int far : {2 * near, 3 * near}) {
                    const bool inside = picture.contains({x + dx * far, y + dy * far});
                    rise = inside ? std::max(rise, at(dx * far, dy * far) - centre) : rise;
                }
            }
            least = std::min(least, rise);
            sum += rise;
        }
    }
    return 8 * least * 5 > sum * 2;
}

// Describes a blob by its second derivatives. False if the picture does not get lighter on all sides, or if the blob is
// almost as narrow as a line.
bool describeBlob(const ImageLevel &level, int x, int y, DarkBlob &blob) {
    const Quadratic q = quadraticAt(level.smoothed, x, y);
    const float mean = (q.xx + q.yy) / 2;
    const float half = std::hypot((q.xx - q.yy) / 2, q.xy);
    if (!(mean > 0) || !(half < 0.85F * mean)) {
        return false;
    }
    blob.position = cv::Point2f(float(x), float(y));
    blob.stretch = std::sqrt((mean + half) / (mean - half));
    // The long axis is the direction with the smallest second derivative.
    const float direction = 0.5F * std::atan2(2 * q.xy, q.xx - q.yy) + float(CV_PI / 2);
    return isAlone(level.smoothed, x, y, {std::cos(direction), std::sin(direction)}, blob.stretch > 1.4F);
}

void collectAt(const ImageLevel &level, const ResponseRows &rows, int x, int y, LevelPoints &points) {
    const int32_t value = rows.mid[x];
    if (value > saddleThreshold) {
        SaddlePoint saddle;
        if (rows.isPeak(x) && locateSaddle(level, cv::Point2f(float(x), float(y)), 1.6F, saddle)) {
            points.saddles.push_back(saddle);
        }
    } else if (value < blobThreshold && rows.isPit(x)) {
        DarkBlob blob;
        if (describeBlob(level, x, y, blob)) {
            blob.strength = std::sqrt(float(-value)) / greyScale;
            points.blobs.push_back(blob);
        }
    }
}

// Most pixels are neither saddles nor blobs, so only those with `worth` 1 are examined.
void collect(const ImageLevel &level, const ResponseRows &rows, const uchar *worth, int y, LevelPoints &points) {
    const uchar *const end = worth + level.smoothed.cols - 1;
    for (const uchar *at = worth + 1; at < end; at++) {
        at = static_cast<const uchar *>(std::memchr(at, 1, size_t(end - at)));
        if (at == nullptr) {
            return;
        }
        collectAt(level, rows, int(at - worth), y, points);
    }
}

}  // namespace

LevelPoints findPoints(ImageLevel &level) {
    smooth(level);
    const int width = level.smoothed.cols;
    const int height = level.smoothed.rows;
    std::array<std::vector<int32_t>, 3> rows;
    for (auto &row : rows) {
        row.assign(size_t(width), 0);
    }
    std::array<std::vector<uchar>, 2> worth;
    for (auto &row : worth) {
        row.assign(size_t(width), 0);
    }
    LevelPoints points;
    for (int y = 1; y < height; y++) {
        std::vector<int32_t> &newest = rows[size_t(y % 3)];
        if (y < height - 1) {
            respond(level, y, newest.data(), worth[size_t(y % 2)].data());
        } else {
            std::fill(newest.begin(), newest.end(), 0);
        }
        if (y > 1) {
            collect(level, {rows[size_t((y + 1) % 3)].data(), rows[size_t((y + 2) % 3)].data(), newest.data()},
                    worth[size_t((y + 1) % 2)].data(), y - 1, points);
        }
    }
    return points;
}

}  // namespace pattern_reader
