#include "pattern_reader/round_marks.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pattern_reader {

namespace {

constexpr int rayCount = 20;
constexpr float rayStep = 0.5F;
constexpr int raySteps = 24;

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
            // Steps of 7 in 20 visit every direction once, and all sides early.
            const double angle = 2 * CV_PI * (i * 7 % rayCount) / rayCount;
            all[size_t(i)] = cv::Point2f(float(std::cos(angle)), float(std::sin(angle)));
        }
        return all;
    }();
    return directions;
}

// The first strong rise along a ray: its place, between samples, and the level behind it.
bool findBorder(const cv::Mat &smoothed, cv::Point2f from, cv::Point2f direction, float longest, float &distance,
                float &behind) {
    std::array<float, raySteps + 2> grey{};
    const int count = std::min(raySteps, int(longest / rayStep));
    const cv::Point2f last = from + direction * (rayStep * float(count + 1));
    if (last.x < 0 || last.y < 0 || last.x >= float(smoothed.cols - 1) || last.y >= float(smoothed.rows - 1)) {
        return false;
    }
    // Sampled only as far as the border, and three samples beyond it.
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

// Least-squares conic a x² + b x y + c y² + d x + e y = 1 through points around the origin.
bool fitConic(const std::vector<cv::Point2f> &points, std::array<double, 5> &conic) {
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
    for (int i = 0; i < 5; i++) {
        conic[size_t(i)] = m[i][5] / m[i][i];
    }
    return true;
}

}  // namespace

bool measureMark(const ImageLevel &level, cv::Point2f image, float radius, RoundMark &mark) {
    const cv::Mat &smoothed = level.smoothed;
    cv::Point2f centre = level.fromImage(image);
    const float longest = std::min(2.6F * radius / level.scale(), rayStep * raySteps);
    std::array<double, 5> conic{};
    cv::Point2f middle;
    std::vector<cv::Point2f> points;
    float light = 0;
    // The second round starts from the middle that the first has found.
    for (int round = 0; round < 2; round++) {
        if (centre.x < 1 || centre.y < 1 || centre.x >= float(smoothed.cols - 2) ||
            centre.y >= float(smoothed.rows - 2)) {
            return false;
        }
        points.clear();
        light = 0;
        int missed = 0;
        for (int i = 0; i < rayCount; i++) {
            const cv::Point2f direction = rays()[size_t(i)];
            float distance = 0;
            float behind = 0;
            if (findBorder(smoothed, centre, direction, longest, distance, behind)) {
                points.push_back(direction * distance);
                light += behind;
            } else if (++missed * 5 > rayCount) {
                return false;
            }
        }
        if (!fitConic(points, conic)) {
            return false;
        }
        const double determinant = 4 * conic[0] * conic[2] - conic[1] * conic[1];
        if (!(determinant > 0) || !(conic[0] > 0)) {
            return false;
        }
        middle = cv::Point2f(float((conic[1] * conic[4] - 2 * conic[2] * conic[3]) / determinant),
                             float((conic[1] * conic[3] - 2 * conic[0] * conic[4]) / determinant));
        if (std::hypot(middle.x, middle.y) > 0.7F * longest) {
            return false;
        }
        centre += middle;
    }
    // Around its own middle the border is vᵀ Q v = 1.
    const double level0 =
        1 + conic[0] * middle.x * middle.x + conic[1] * middle.x * middle.y + conic[2] * middle.y * middle.y;
    const double scale2 = double(level.scale()) * level.scale() * level0;
    const double qa = conic[0] / scale2;
    const double qb = conic[1] / (2 * scale2);
    const double qc = conic[2] / scale2;
    const double root = std::sqrt(qa * qc - qb * qb);
    const double trace = std::sqrt(qa + qc + 2 * root);
    if (!(root > 0) || !(trace > 0) || (qa + qc) / root > 10) {
        return false;
    }
    // The symmetric square root of Q.
    mark.toUnit =
        cv::Matx22f(float((qa + root) / trace), float(qb / trace), float(qb / trace), float((qc + root) / trace));
    mark.area = float(CV_PI / root);
    mark.centre = level.toImage(centre);
    mark.darkLevel = greyAt(smoothed, centre);
    mark.lightLevel = light / float(points.size());
    int off = 0;
    for (const cv::Point2f &p : points) {
        const cv::Vec2f unit = mark.toUnit * cv::Vec2f((p - middle).x, (p - middle).y) * level.scale();
        off += std::abs(float(cv::norm(unit)) - 1) > 0.2F ? 1 : 0;
    }
    return off * 8 <= int(points.size()) && mark.lightLevel - mark.darkLevel > 10;
}

namespace {

constexpr float pitchInRadii = 4;

class MarkGrid {
public:
    MarkGrid(const std::vector<RoundMark> &marks, const cv::Size &image) : marks_(marks), used_(marks.size(), false) {
        columns_ = image.width / cell + 1;
        rows_ = image.height / cell + 1;
        first_.assign(size_t(columns_) * size_t(rows_), -1);
        next_.assign(marks.size(), -1);
        for (size_t i = 0; i < marks.size(); i++) {
            int &head = first_[slot(marks[i].centre)];
            next_[i] = head;
            head = int(i);
        }
    }

    // The unused mark closest to a point, within reach and of about the area; -1 when there is none.
    int closest(cv::Point2f p, float reach, float area) const {
        int best = -1;
        float distance = reach;
        for (int y = clampRow(p.y - reach); y <= clampRow(p.y + reach); y++) {
            for (int x = clampColumn(p.x - reach); x <= clampColumn(p.x + reach); x++) {
                for (int k = first_[slotAt(x, y)]; k >= 0; k = next_[size_t(k)]) {
                    const RoundMark &mark = marks_[size_t(k)];
                    const float d = std::hypot(mark.centre.x - p.x, mark.centre.y - p.y);
                    if (!used_[size_t(k)] && d < distance && mark.area < 1.8F * area && area < 1.8F * mark.area) {
                        distance = d;
                        best = k;
                    }
                }
            }
        }
        return best;
    }

    void use(int k) { used_[size_t(k)] = true; }
    bool used(int k) const { return used_[size_t(k)]; }

private:
    static constexpr int cell = 32;
    int clampRow(float y) const { return std::clamp(int(y) / cell, 0, rows_ - 1); }
    int clampColumn(float x) const { return std::clamp(int(x) / cell, 0, columns_ - 1); }
    size_t slotAt(int x, int y) const { return size_t(y) * size_t(columns_) + size_t(x); }
    size_t slot(cv::Point2f p) const { return slotAt(clampColumn(p.x), clampRow(p.y)); }

    const std::vector<RoundMark> &marks_;
    std::vector<bool> used_;
    std::vector<int> first_;
    std::vector<int> next_;
    int columns_ = 0;
    int rows_ = 0;
};

cv::Point2f apply(const cv::Matx22f &m, cv::Point2f v) {
    const cv::Vec2f r = m * cv::Vec2f(v.x, v.y);
    return {r[0], r[1]};
}

// The first neighbour of a seed: a mark whose distance, seen through the seed's ellipse, is the pitch.
bool findAxes(const std::vector<RoundMark> &marks, size_t seed, cv::Point2f &a, cv::Point2f &b) {
    const RoundMark &here = marks[seed];
    const cv::Matx22f fromUnit = here.toUnit.inv();
    for (const RoundMark &there : marks) {
        const cv::Point2f d = there.centre - here.centre;
        const cv::Point2f unit = apply(here.toUnit, d);
        const float distance = std::hypot(unit.x, unit.y);
        if (distance > 0.85F * pitchInRadii && distance < 1.15F * pitchInRadii && there.area < 1.6F * here.area &&
            here.area < 1.6F * there.area) {
            a = d;
            b = apply(fromUnit, {-unit.y, unit.x});
            return true;
        }
    }
    return false;
}

MarkLattice growMarks(const std::vector<RoundMark> &marks, MarkGrid &grid, size_t seed) {
    MarkLattice found;
    cv::Point2f a;
    cv::Point2f b;
    if (!findAxes(marks, seed, a, b)) {
        return found;
    }
    const auto add = [&](cv::Point cell, size_t k) {
        found.lattice.add({cell, marks[k].centre, 1});
        found.marks.push_back(marks[k]);
        grid.use(int(k));
    };
    add({0, 0}, seed);
    for (size_t done = 0; done < found.marks.size(); done++) {
        const LatticeCorner from = found.lattice.corners[done];
        const RoundMark here = found.marks[done];
        for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)}) {
            const cv::Point cell = from.cell + step;
            if (found.lattice.indexAt(cell) >= 0) {
                continue;
            }
            const cv::Point2f stride = a * float(step.x) + b * float(step.y);
            cv::Point2f expected = from.position + stride;
            const bool told = found.lattice.predict(cell, expected);
            const float reach = (told ? 0.2F : 0.3F) * std::hypot(stride.x, stride.y);
            const int k = grid.closest(expected, reach, here.area);
            if (k >= 0 && std::abs(cell.x) < 8 && std::abs(cell.y) < 8) {
                add(cell, size_t(k));
            }
        }
    }
    return found;
}

}  // namespace

std::vector<MarkLattice> findMarkLattices(const std::vector<ImageLevel> &levels, size_t number,
                                          const std::vector<DarkBlob> &blobs, size_t leastMarks) {
    std::vector<MarkLattice> lattices;
    if (blobs.size() < leastMarks) {
        return lattices;
    }
    const ImageLevel &level = levels[number];
    // One level finer the border is twice as many pixels away.
    const ImageLevel &finer = levels[number == 0 ? 0 : number - 1];
    std::vector<RoundMark> marks;
    for (const DarkBlob &blob : blobs) {
        RoundMark mark;
        if (measureMark(finer, level.toImage(blob.position), 2.4F * level.scale(), mark)) {
            marks.push_back(mark);
        }
    }
    if (marks.size() < leastMarks) {
        return lattices;
    }
    MarkGrid grid(marks, levels.front().picture.size());
    for (size_t seed = 0; seed < marks.size(); seed++) {
        if (grid.used(int(seed))) {
            continue;
        }
        MarkLattice found = growMarks(marks, grid, seed);
        if (found.marks.size() >= leastMarks) {
            lattices.push_back(std::move(found));
        }
    }
    std::sort(lattices.begin(), lattices.end(),
              [](const MarkLattice &x, const MarkLattice &y) { return x.marks.size() > y.marks.size(); });
    return lattices;
}

}  // namespace pattern_reader
