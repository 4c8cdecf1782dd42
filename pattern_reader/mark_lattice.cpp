#include "pattern_reader/mark_lattice.h"

#include <algorithm>
#include <cmath>

#include "pattern_reader/point_grid.h"

namespace pattern_reader {

namespace {

constexpr float pitchInRadii = 4;

cv::Point2f apply(const cv::Matx22f &m, cv::Point2f v) {
    const cv::Vec2f r = m * cv::Vec2f(v.x, v.y);
    return {r[0], r[1]};
}

// Returns the distance on the plate between two points of the picture, in radii of a mark. The conversion accounts for
// the plate's tilt, which the mark's ellipse shows.
float radiiBetween(const RoundMark &mark, cv::Point2f p, cv::Point2f q) {
    const cv::Point2f unit = apply(mark.toUnit, p - q);
    return std::hypot(unit.x, unit.y);
}

// Returns an upper bound of a mark's longest radius in pixels. The bound holds because the Frobenius norm of a matrix
// is at least its greatest stretch.
float longestRadius(const RoundMark &mark) {
    return float(cv::norm(mark.toUnit.inv()));
}

// Finds the marks near a position. Marks that are not yet part of a lattice are called free.
class FreeMarks {
public:
    FreeMarks(const std::vector<RoundMark> &all, const cv::Size &image)
        : marks(all), grid(image, gridCell), taken(all.size(), false) {
        for (const RoundMark &mark : marks) {
            grid.add(mark.centre);
        }
    }

    // Returns the index of the free mark that is closest to a point, has about the same area as `like`, and is less
    // than `reach` away (in radii of `like`). Returns -1 if there is no such mark.
    int closest(cv::Point2f p, float reach, const RoundMark &like) const {
        int best = -1;
        float distance = reach;
        grid.visitAround(p, reach * longestRadius(like), [&](size_t k) {
            const RoundMark &mark = marks[k];
            const float d = radiiBetween(like, mark.centre, p);
            if (!taken[k] && d < distance && mark.area < 1.8F * like.area && like.area < 1.8F * mark.area) {
                distance = d;
                best = int(k);
            }
        });
        return best;
    }

    // Calls `visit` with the index of every mark within `reach` pixels of a point, and of some marks farther away.
    // Marks that are part of a lattice are included.
    template <class Visit>
    void visitAround(cv::Point2f p, float reach, const Visit &visit) const {
        grid.visitAround(p, reach, visit);
    }

    void use(size_t k) { taken[k] = true; }
    bool used(size_t k) const { return taken[k]; }

private:
    static constexpr int gridCell = 32;  // pixels

    const std::vector<RoundMark> &marks;
    PointGrid grid;
    std::vector<bool> taken;
};

// Sets `a` and `b` to the steps, in pixels, from a seed to the next marks along both axes. Step `a` leads to a mark of
// similar size whose distance on the plate is about the pitch. Returns false if there is no such mark. Step `b` is
// computed: on the plate, it is as long as step `a` and at a right angle to step `a`.
bool findAxes(const std::vector<RoundMark> &marks, const FreeMarks &freeMarks, size_t seed, cv::Point2f &a,
              cv::Point2f &b) {
    const RoundMark &here = marks[seed];
    const cv::Matx22f fromUnit = here.toUnit.inv();
    constexpr float farthest = 1.15F * pitchInRadii;
    const float reach = longestRadius(here) * farthest;
    size_t first = marks.size();
    freeMarks.visitAround(here.centre, reach, [&](size_t k) {
        const RoundMark &there = marks[k];
        const cv::Point2f unit = apply(here.toUnit, there.centre - here.centre);
        const float distance = std::hypot(unit.x, unit.y);
        if (k < first && distance > 0.85F * pitchInRadii && distance < farthest && there.area < 1.6F * here.area &&
            here.area < 1.6F * there.area) {
            first = k;
            a = there.centre - here.centre;
            b = apply(fromUnit, {-unit.y, unit.x});
        }
    });
    return first < marks.size();
}

MarkLattice growMarks(const std::vector<RoundMark> &marks, FreeMarks &freeMarks, size_t seed) {
    MarkLattice found;
    cv::Point2f a;
    cv::Point2f b;
    if (!findAxes(marks, freeMarks, seed, a, b)) {
        return found;
    }
    const auto add = [&](cv::Point cell, size_t k) {
        found.lattice.add({cell, marks[k].centre, 1});
        found.marks.push_back(marks[k]);
        freeMarks.use(k);
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
            const int k = freeMarks.closest(expected, (told ? 0.2F : 0.3F) * pitchInRadii, here);
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
    // Marks are measured in the next finer level, in which their radius has twice as many pixels. The marks of the
    // finest level are measured in that level itself.
    const ImageLevel &finer = levels[number == 0 ? 0 : number - 1];
    std::vector<RoundMark> marks;
    for (const DarkBlob &blob : blobs) {
        RoundMark mark;
        if (measureMark(finer, level.toImage(blob.position), 2.4F * std::max(1.0F, 0.8F * blob.stretch) * level.scale(),
                        mark)) {
            marks.push_back(mark);
        }
    }
    if (marks.size() < leastMarks) {
        return lattices;
    }
    FreeMarks freeMarks(marks, levels.front().picture.size());
    for (size_t seed = 0; seed < marks.size(); seed++) {
        if (freeMarks.used(seed)) {
            continue;
        }
        MarkLattice found = growMarks(marks, freeMarks, seed);
        if (found.marks.size() >= leastMarks) {
            lattices.push_back(std::move(found));
        }
    }
    std::sort(lattices.begin(), lattices.end(),
              [](const MarkLattice &x, const MarkLattice &y) { return x.marks.size() > y.marks.size(); });
    return lattices;
}

}  // namespace pattern_reader
