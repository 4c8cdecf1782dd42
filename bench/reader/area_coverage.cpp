#include "bench/reader/area_coverage.h"

#include <algorithm>
#include <cmath>

namespace reader_bench {

namespace {

// A convex polygon that is cut by half planes. Every cut adds at most one point, and there is room for `limit` points.
// That is enough for a quadrilateral and ten cuts.
class Clipped {
public:
    explicit Clipped(const Quad &quad) {
        for (const cv::Point2d &p : quad) {
            add(p);
        }
    }

    // Keeps the points where normal · p >= offset.
    void cut(const cv::Point2d &normal, double offset) {
        Clipped kept;
        for (int i = 0; i < count && kept.count + 2 < limit; i++) {
            const cv::Point2d &a = points[size_t(i)];
            const cv::Point2d &b = points[size_t(i + 1 == count ? 0 : i + 1)];
            const double da = normal.dot(a) - offset;
            const double db = normal.dot(b) - offset;
            if (da >= 0) {
                kept.add(a);
            }
            if ((da >= 0) != (db >= 0)) {
                kept.add(a + (b - a) * (da / (da - db)));
            }
        }
        *this = kept;
    }

    double area() const {
        double sum = 0;
        for (int i = 1; i + 1 < count; i++) {
            const cv::Point2d u = points[size_t(i)] - points[0];
            const cv::Point2d v = points[size_t(i) + 1] - points[0];
            sum += u.x * v.y - u.y * v.x;
        }
        return std::abs(sum) / 2;
    }

private:
    static constexpr int limit = 16;

    Clipped() = default;
    void add(const cv::Point2d &p) { points[size_t(count++)] = p; }

    std::array<cv::Point2d, limit> points;
    int count = 0;
};

struct Bounds {
    double left, top, right, bottom;
};

Bounds boundsOf(const Quad &q) {
    return {std::min(std::min(q[0].x, q[1].x), std::min(q[2].x, q[3].x)),
            std::min(std::min(q[0].y, q[1].y), std::min(q[2].y, q[3].y)),
            std::max(std::max(q[0].x, q[1].x), std::max(q[2].x, q[3].x)),
            std::max(std::max(q[0].y, q[1].y), std::max(q[2].y, q[3].y))};
}

// Returns the area that a triangle and a circle have in common. The triangle has the corners O = (0, 0), a and b, and
// the circle has its centre at O. The area has the sign of the angle from a to b (positive from x towards y). So the
// areas for all sides of a polygon can be added up: the absolute value of the sum is the area that the polygon and the
// circle have in common, even if O is outside the polygon.
double sector(const cv::Point2d &a, const cv::Point2d &b, double radius) {
    const auto angle = [](const cv::Point2d &u, const cv::Point2d &v) {
        return std::atan2(u.x * v.y - u.y * v.x, u.dot(v));
    };
    const double r2 = radius * radius;
    const cv::Point2d d = b - a;
    const double dd = d.dot(d);
    const double ad = a.dot(d);
    const double root = ad * ad - dd * (a.dot(a) - r2);
    if (dd == 0 || root <= 0) {
        return r2 * angle(a, b) / 2;
    }
    // The segment from a to b is inside the circle from `enter` to `leave`, which are fractions of its length.
    const double enter = std::clamp((-ad - std::sqrt(root)) / dd, 0.0, 1.0);
    const double leave = std::clamp((-ad + std::sqrt(root)) / dd, 0.0, 1.0);
    const cv::Point2d p = a + d * enter;
    const cv::Point2d q = a + d * leave;
    return (r2 * (angle(a, p) + angle(q, b)) + p.x * q.y - p.y * q.x) / 2;
}

}  // namespace

double areaOf(const Quad &quad) {
    const cv::Point2d u = quad[2] - quad[0];
    const cv::Point2d v = quad[3] - quad[1];
    return std::abs(u.x * v.y - u.y * v.x) / 2;
}

double areaInRectangle(const Quad &quad, const cv::Rect2d &rectangle) {
    const Bounds b = boundsOf(quad);
    const double right = rectangle.x + rectangle.width;
    const double bottom = rectangle.y + rectangle.height;
    if (b.right <= rectangle.x || b.left >= right || b.bottom <= rectangle.y || b.top >= bottom) {
        return 0;
    }
    Clipped clipped(quad);
    if (b.left < rectangle.x) {
        clipped.cut({1, 0}, rectangle.x);
    }
    if (b.right > right) {
        clipped.cut({-1, 0}, -right);
    }
    if (b.top < rectangle.y) {
        clipped.cut({0, 1}, rectangle.y);
    }
    if (b.bottom > bottom) {
        clipped.cut({0, -1}, -bottom);
    }
    return clipped.area();
}

double areaInCircle(const Quad &quad, const cv::Point2d &centre, double radius) {
    const Bounds b = boundsOf(quad);
    const double dx = std::max({b.left - centre.x, centre.x - b.right, 0.0});
    const double dy = std::max({b.top - centre.y, centre.y - b.bottom, 0.0});
    if (dx * dx + dy * dy >= radius * radius) {
        return 0;
    }
    const double fx = std::max(centre.x - b.left, b.right - centre.x);
    const double fy = std::max(centre.y - b.top, b.bottom - centre.y);
    if (fx * fx + fy * fy <= radius * radius) {
        return areaOf(quad);
    }
    double sum = 0;
    for (size_t i = 0; i < quad.size(); i++) {
        sum += sector(quad[i] - centre, quad[(i + 1) % quad.size()] - centre, radius);
    }
    return std::abs(sum);
}

double areaInPolygon(const Quad &quad, const std::vector<cv::Point2d> &polygon) {
    Clipped clipped(quad);
    cv::Point2d inside;
    for (const cv::Point2d &p : polygon) {
        inside += p * (1.0 / double(polygon.size()));
    }
    for (size_t i = 0; i < polygon.size(); i++) {
        const cv::Point2d along = polygon[(i + 1) % polygon.size()] - polygon[i];
        cv::Point2d normal(-along.y, along.x);
        if (normal.dot(inside - polygon[i]) < 0) {
            normal = -normal;
        }
        clipped.cut(normal, normal.dot(polygon[i]));
    }
    return clipped.area();
}

}  // namespace reader_bench
