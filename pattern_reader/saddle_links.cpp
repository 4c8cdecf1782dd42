#include "pattern_reader/saddle_links.h"

#include <algorithm>
#include <cmath>

#include "pattern_reader/point_grid.h"

namespace pattern_reader {

namespace {

constexpr float farthestLink = 22;  // pixels of the level; longer links are found in the next coarser level
constexpr float shortestLink = 2.2F;
constexpr int gridCell = 8;

float cross(cv::Point2f a, cv::Point2f b) {
    return a.x * b.y - a.y * b.x;
}

std::vector<LinkedSaddle> withBorders(const std::vector<SaddlePoint> &saddles) {
    std::vector<LinkedSaddle> all;
    all.reserve(saddles.size());
    for (const SaddlePoint &saddle : saddles) {
        LinkedSaddle linked;
        linked.position = saddle.position;
        linked.strength = saddle.strength;
        for (size_t i = 0; i < 2; i++) {
            const float angle = saddle.brightAxis + (i == 0 ? -saddle.halfOpening : saddle.halfOpening);
            linked.border[i] = {std::cos(angle), std::sin(angle)};
        }
        all.push_back(linked);
    }
    return all;
}

// True if two saddles have a similar strength, and the same borders with light and dark exchanged.
bool alternate(const LinkedSaddle &p, const LinkedSaddle &q) {
    constexpr float tolerance = 0.36F;  // sine of the angle between two borders
    return std::abs(cross(p.border[0], q.border[1])) < tolerance &&
           std::abs(cross(p.border[1], q.border[0])) < tolerance && q.strength < 4 * p.strength &&
           p.strength < 4 * q.strength;
}

// Links a saddle to others. In each of the two directions along each of its two borders, the saddle is linked to the
// closest saddle for which alternate() is true.
void linkToClosest(std::vector<LinkedSaddle> &saddles, const PointGrid &grid, size_t number) {
    LinkedSaddle &p = saddles[number];
    std::array<float, 4> closest{};
    closest.fill(farthestLink * farthestLink);
    grid.visitAround(p.position, farthestLink, [&](size_t k) {
        const LinkedSaddle &q = saddles[k];
        const cv::Point2f d = q.position - p.position;
        // Lengths are compared by their squares, which is faster. This test rejects most pairs.
        const float distance = d.dot(d);
        if (distance < shortestLink * shortestLink || distance >= farthestLink * farthestLink) {
            return;
        }
        for (size_t axis = 0; axis < 2; axis++) {
            const float aside = cross(p.border[axis], d);
            if (aside * aside > 0.26F * 0.26F * distance) {
                continue;
            }
            const size_t slot = p.border[axis].dot(d) > 0 ? axis : axis + 2;
            if (distance < closest[slot] && alternate(p, q)) {
                closest[slot] = distance;
                p.links[slot] = int(k);
            }
        }
    });
}

// Keeps only the links that exist in both directions.
void keepMutual(std::vector<LinkedSaddle> &saddles) {
    std::vector<std::array<int, 4>> mutual(saddles.size());
    for (size_t i = 0; i < saddles.size(); i++) {
        for (size_t slot = 0; slot < 4; slot++) {
            const int k = saddles[i].links[slot];
            mutual[i][slot] = -1;
            if (k >= 0) {
                const auto &back = saddles[size_t(k)].links;
                if (std::find(back.begin(), back.end(), int(i)) != back.end()) {
                    mutual[i][slot] = k;
                }
            }
        }
    }
    for (size_t i = 0; i < saddles.size(); i++) {
        saddles[i].links = mutual[i];
    }
}

}  // namespace

std::vector<LinkedSaddle> linkSaddles(const std::vector<SaddlePoint> &saddles, const cv::Size &level) {
    std::vector<LinkedSaddle> linked = withBorders(saddles);
    PointGrid grid(level, gridCell);
    for (const LinkedSaddle &saddle : linked) {
        grid.add(saddle.position);
    }
    for (size_t i = 0; i < linked.size(); i++) {
        linkToClosest(linked, grid, i);
    }
    keepMutual(linked);
    return linked;
}

}  // namespace pattern_reader
