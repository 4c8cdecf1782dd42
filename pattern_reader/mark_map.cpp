#include "pattern_reader/mark_map.h"

#include <algorithm>
#include <cmath>

#include "pattern_reader/cholesky.h"

namespace pattern_reader {

namespace {

constexpr int reach = 2;  // how far a neighbourhood extends from its middle, in cells

// Returns the marks within `reach` cells of a cell. This distance is enlarged, up to `longest`, until there are 18
// marks that span at least three columns and three rows.
std::vector<MappedMark> marksAround(const std::vector<MappedMark> &marks, cv::Point middle, int longest) {
    std::vector<MappedMark> near;
    for (int distance = reach; distance <= longest; distance++) {
        near.clear();
        cv::Rect extent;
        for (const MappedMark &mark : marks) {
            const cv::Point d = mark.cell - middle;
            if (std::max(std::abs(d.x), std::abs(d.y)) <= distance) {
                near.push_back(mark);
                extent |= cv::Rect(mark.cell, cv::Size(1, 1));
            }
        }
        if (near.size() >= 18 && extent.width >= 3 && extent.height >= 3) {
            break;
        }
    }
    return near;
}

// Sets weights that suppress outliers: 1/4 for three times the median error, and almost 0 for much larger errors.
void reweigh(const std::vector<double> &errors, std::vector<double> &weights) {
    std::vector<double> sorted = errors;
    const auto middle = sorted.begin() + std::ptrdiff_t(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    const double usual = std::max(1e-3, *middle);
    for (size_t i = 0; i < errors.size(); i++) {
        const double share = errors[i] / (3 * usual);
        weights[i] = 1 / ((1 + share * share) * (1 + share * share));
    }
}

cv::Point2d project(const cv::Matx33d &map, cv::Point2d p) {
    const cv::Vec3d v = map * cv::Vec3d(p.x, p.y, 1);
    return {v[0] / v[2], v[1] / v[2]};
}

// The bend is a polynomial with the terms x^i y^j. There, x and y are distances from the neighbourhood's middle,
// divided by this unit (in cells), so that all terms have about the same size in a neighbourhood.
constexpr double unit = reach;

// Returns the values of the bend's terms x^i y^j at `p`, sorted by i + j. If byX or byY is above 0, every term is first
// differentiated: byX times with respect to x and byY times with respect to y. `p` is in cells; x and y are in the unit
// above.
MarkMap::Terms derivatives(cv::Point2d p, int byX, int byY) {
    const auto powers = [](double v, int times) {
        std::array<double, MarkMap::bendOrder + 1> all{};
        double power = 1;
        for (int i = times; i <= MarkMap::bendOrder; i++) {
            all[size_t(i)] = power * (times == 0 ? 1 : times == 1 ? i : i * (i - 1));
            power *= v;
        }
        return all;
    };
    const auto x = powers(p.x / unit, byX);
    const auto y = powers(p.y / unit, byY);
    MarkMap::Terms terms{};
    size_t k = 0;
    for (size_t order = 0; order <= size_t(MarkMap::bendOrder); order++) {
        for (size_t j = 0; j <= order; j++) {
            terms[k++] = x[order - j] * y[j];
        }
    }
    return terms;
}

cv::Vec2d sumOf(const std::array<cv::Vec2d, MarkMap::bendTerms> &factors, const MarkMap::Terms &terms) {
    cv::Vec2d sum(0, 0);
    for (size_t i = 0; i < terms.size(); i++) {
        sum += factors[i] * terms[i];
    }
    return sum;
}

// Returns the number of the bend's terms that can be determined from this number of marks.
size_t termsFor(size_t marks) {
    return marks >= 23 ? 15 : marks >= 16 ? 10 : 6;
}

}  // namespace

cv::Point2d MarkMap::Neighbourhood::at(cv::Point2d cell) const {
    const cv::Point2d p = cell - middle;
    const cv::Point2d image = project(plane, p);
    const cv::Vec2d bent = sumOf(bend, derivatives(p, 0, 0));
    return image + cv::Point2d(bent[0], bent[1]);
}

std::array<cv::Vec2d, 3> MarkMap::Neighbourhood::curvatureAt(cv::Point2d cell) const {
    const cv::Point2d p = cell - middle;
    constexpr double scale = 1 / (unit * unit);
    return {sumOf(bend, derivatives(p, 2, 0)) * scale, sumOf(bend, derivatives(p, 1, 1)) * scale,
            sumOf(bend, derivatives(p, 0, 2)) * scale};
}

// Fits the homography of a plane by weighted least squares, in a few rounds. In each round, a mark's weight depends on
// its error in the previous round. The linear equations contain a mark's error in pixels multiplied by the mark's
// depth, which is 1 at the middle. So the weight is also divided by the square of the depth, as known from the previous
// round. The errors whose squares are minimised are then in pixels.
bool MarkMap::fitPlane(const std::vector<MappedMark> &marks, std::vector<double> &weights, Neighbourhood &here) {
    const cv::Point2d origin = marks.front().image;
    cv::Matx33d map;
    std::vector<double> depths(marks.size(), 1);
    for (int round = 0; round < 3; round++) {
        Cholesky<8>::Matrix m{};
        Cholesky<8>::Vector right{};
        for (size_t i = 0; i < marks.size(); i++) {
            const cv::Point2d c = cv::Point2d(marks[i].cell) - here.middle;
            const cv::Point2d p = marks[i].image - origin;
            const double w = weights[i] / (depths[i] * depths[i]);
            const std::array<double, 8> rows[] = {{c.x, c.y, 1, 0, 0, 0, -c.x * p.x, -c.y * p.x},
                                                  {0, 0, 0, c.x, c.y, 1, -c.x * p.y, -c.y * p.y}};
            for (const auto &row : rows) {
                for (size_t j = 0; j < 8; j++) {
                    for (size_t k = 0; k <= j; k++) {
                        m[j][k] += w * row[j] * row[k];
                    }
                    right[j] += w * row[j] * (&row == rows ? p.x : p.y);
                }
            }
        }
        Cholesky<8> equations;
        if (!equations.decompose(m)) {
            return false;
        }
        const Cholesky<8>::Vector h = equations.solve(right);
        map = cv::Matx33d(h[0], h[1], h[2], h[3], h[4], h[5], h[6], h[7], 1);
        std::vector<double> errors;
        for (size_t i = 0; i < marks.size(); i++) {
            const cv::Point2d c = cv::Point2d(marks[i].cell) - here.middle;
            depths[i] = h[6] * c.x + h[7] * c.y + 1;
            if (!(depths[i] > 0.05)) {
                return false;
            }
            const cv::Point2d off = project(map, c) - (marks[i].image - origin);
            errors.push_back(std::hypot(off.x, off.y));
        }
        reweigh(errors, weights);
    }
    here.plane = cv::Matx33d(1, 0, origin.x, 0, 1, origin.y, 0, 0, 1) * map;
    return true;
}

void MarkMap::fitBend(const std::vector<MappedMark> &marks, const std::vector<double> &weights, Neighbourhood &here) {
    const size_t terms = termsFor(marks.size());
    Cholesky<bendTerms>::Matrix m{};
    Cholesky<bendTerms>::Vector rightX{};
    Cholesky<bendTerms>::Vector rightY{};
    // The small numbers on the diagonal pull all terms towards 0. So terms that the marks do not determine stay near 0.
    for (size_t j = 0; j < bendTerms; j++) {
        m[j][j] = 0.01;
    }
    for (size_t i = 0; i < marks.size(); i++) {
        const cv::Point2d c = cv::Point2d(marks[i].cell) - here.middle;
        const cv::Point2d rest = marks[i].image - project(here.plane, c);
        const Terms row = derivatives(c, 0, 0);
        for (size_t j = 0; j < terms; j++) {
            for (size_t k = 0; k <= j; k++) {
                m[j][k] += weights[i] * row[j] * row[k];
            }
            rightX[j] += weights[i] * row[j] * rest.x;
            rightY[j] += weights[i] * row[j] * rest.y;
        }
    }
    Cholesky<bendTerms> equations;
    if (equations.decompose(m)) {
        const Cholesky<bendTerms>::Vector x = equations.solve(rightX);
        const Cholesky<bendTerms>::Vector y = equations.solve(rightY);
        for (size_t j = 0; j < bendTerms; j++) {
            here.bend[j] = {x[j], y[j]};
        }
    }
}

bool MarkMap::fit(const std::vector<MappedMark> &marks, cv::Point middle, Neighbourhood &here) {
    if (marks.size() < 6) {
        return false;
    }
    here.middle = middle;
    std::vector<double> weights(marks.size(), 1);
    if (!fitPlane(marks, weights, here)) {
        return false;
    }
    if (marks.size() >= 10) {
        fitBend(marks, weights, here);
        std::vector<double> errors;
        for (const MappedMark &mark : marks) {
            const cv::Point2d off = here.at(mark.cell) - mark.image;
            errors.push_back(std::hypot(off.x, off.y));
        }
        reweigh(errors, weights);
        fitBend(marks, weights, here);
    }
    return true;
}

MarkMap::MarkMap(const std::vector<MappedMark> &marks) {
    cv::Rect extent;
    for (const MappedMark &mark : marks) {
        extent |= cv::Rect(mark.cell, cv::Size(1, 1));
    }
    // If the lattice is wide enough, every neighbourhood lies wholly inside it.
    const cv::Point first(extent.x + std::min(reach, extent.width / 2), extent.y + std::min(reach, extent.height / 2));
    middles = cv::Rect(first, cv::Size(std::max(1, extent.width - 2 * reach), std::max(1, extent.height - 2 * reach)));
    const int longest = std::max(extent.width, extent.height);
    for (int i = 0; i < middles.area(); i++) {
        const cv::Point middle = middles.tl() + cv::Point(i % middles.width, i / middles.width);
        Neighbourhood here;
        if (!fit(marksAround(marks, middle, longest), middle, here)) {
            neighbourhoods.clear();
            return;
        }
        neighbourhoods.push_back(here);
    }
}

const MarkMap::Neighbourhood &MarkMap::around(cv::Point2d cell) const {
    const int x = std::clamp(int(std::lround(cell.x)) - middles.x, 0, middles.width - 1);
    const int y = std::clamp(int(std::lround(cell.y)) - middles.y, 0, middles.height - 1);
    return neighbourhoods[size_t(y) * size_t(middles.width) + size_t(x)];
}

cv::Point2d MarkMap::at(cv::Point2d cell) const {
    return around(cell).at(cell);
}

cv::Matx22d MarkMap::stepsAt(cv::Point2d cell) const {
    constexpr double h = 0.05;
    const Neighbourhood &here = around(cell);
    const cv::Point2d a = (here.at(cell + cv::Point2d(h, 0)) - here.at(cell - cv::Point2d(h, 0))) / (2 * h);
    const cv::Point2d b = (here.at(cell + cv::Point2d(0, h)) - here.at(cell - cv::Point2d(0, h))) / (2 * h);
    return {a.x, b.x, a.y, b.y};
}

cv::Point2d MarkMap::centreOffset(cv::Point2d cell, double radius) const {
    const Neighbourhood &here = around(cell);
    const cv::Point2d c = cell - here.middle;
    // The circle's conic, and the conic q to which the plane's homography maps it.
    const cv::Matx33d circle(1, 0, -c.x, 0, 1, -c.y, -c.x, -c.y, c.x * c.x + c.y * c.y - radius * radius);
    const cv::Matx33d inverse = here.plane.inv();
    const cv::Matx33d q = inverse.t() * circle * inverse;
    const double determinant = q(0, 0) * q(1, 1) - q(0, 1) * q(1, 0);
    const cv::Point2d ellipse((q(0, 1) * q(1, 2) - q(1, 1) * q(0, 2)) / determinant,
                              (q(1, 0) * q(0, 2) - q(0, 0) * q(1, 2)) / determinant);
    return project(here.plane, c) - ellipse + bentOffset(cell, radius);
}

cv::Point2d MarkMap::bentOffset(cv::Point2d cell, double radius) const {
    const Neighbourhood &here = around(cell);
    // The computation uses units in which the linear part of the map at the cell is the identity. In these units, the
    // quadratic part of the bend moves the circle's point at the angle t by radius² · (constant + cosine · cos(2t) +
    // sine · sin(2t)). The vectors `constant`, `cosine` and `sine` (below) follow from the bend's second derivatives
    // xx, xy and yy. Only the outward component of the point's shift, that is, its component in the direction t,
    // changes the outline. `moved`, times radius², is the shift of the ellipse that fits the moved outline best.
    // `moved` is computed from those terms of the outward component that are proportional to cos t and sin t.
    const cv::Matx22d steps = stepsAt(cell);
    const cv::Matx22d toCells = steps.inv();
    const std::array<cv::Vec2d, 3> curvature = here.curvatureAt(cell);
    const cv::Vec2d xx = toCells * curvature[0];
    const cv::Vec2d xy = toCells * curvature[1];
    const cv::Vec2d yy = toCells * curvature[2];
    const cv::Vec2d constant = 0.25 * (xx + yy);
    const cv::Vec2d cosine = 0.25 * (xx - yy);
    const cv::Vec2d sine = 0.5 * xy;
    const cv::Vec2d moved = constant + 0.5 * cv::Vec2d(cosine[0] + sine[1], sine[0] - cosine[1]);
    const cv::Vec2d bent = steps * moved * (radius * radius);
    return {-bent[0], -bent[1]};
}

}  // namespace pattern_reader
