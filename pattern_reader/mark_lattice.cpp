#include "pattern_reader/mark_lattice.h"

#include <algorithm>
#include <cmath>

namespace pattern_reader {

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
