// Maps the cells of a lattice of marks to the picture, near the marks and a little beyond them. Every neighbourhood of
// 5 × 5 cells (more where marks are missing) has its own map: the homography of a plane, plus the bend that a lens or
// curved paper causes there.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace pattern_reader {

struct MappedMark {
    cv::Point cell;
    cv::Point2d image;
};

class MarkMap {
public:
    static constexpr int bendOrder = 4;
    static constexpr size_t bendTerms = size_t((bendOrder + 1) * (bendOrder + 2) / 2);
    using Terms = std::array<double, bendTerms>;

    MarkMap() = default;
    explicit MarkMap(const std::vector<MappedMark> &marks);

    // False if the marks do not determine the map, for example because they are too few or all lie on one line.
    bool isKnown() const { return !neighbourhoods.empty(); }
    cv::Point2d at(cv::Point2d cell) const;
    // Returns the vectors in the picture, in pixels, that belong to a step of one cell. Column 0 of the matrix is for a
    // step along the lattice's x axis, and column 1 for a step along its y axis.
    cv::Matx22d stepsAt(cv::Point2d cell) const;
    // A circle around a cell, with its radius in cells, appears as an ellipse in the picture. Returns the vector, in
    // pixels, from the centre of the ellipse to the place where the circle's centre appears.
    cv::Point2d centreOffset(cv::Point2d cell, double radius) const;
    // The part of centreOffset that the bend causes. It is known less well than the part that the plane causes.
    cv::Point2d bentOffset(cv::Point2d cell, double radius) const;

private:
    struct Neighbourhood {
        cv::Point2d middle;                       // cell
        cv::Matx33d plane;                        // homography from cells, relative to the middle, to pixels
        std::array<cv::Vec2d, bendTerms> bend{};  // coefficients of a polynomial, in pixels

        cv::Point2d at(cv::Point2d cell) const;
        // The bend's second derivatives xx, xy and yy, in pixels per cell².
        std::array<cv::Vec2d, 3> curvatureAt(cv::Point2d cell) const;
    };

    static bool fitPlane(const std::vector<MappedMark> &marks, std::vector<double> &weights, Neighbourhood &here);
    static void fitBend(const std::vector<MappedMark> &marks, const std::vector<double> &weights, Neighbourhood &here);
    static bool fit(const std::vector<MappedMark> &marks, cv::Point middle, Neighbourhood &here);
    const Neighbourhood &around(cv::Point2d cell) const;

    cv::Rect middles;  // the cells that are the middle of a neighbourhood
    std::vector<Neighbourhood> neighbourhoods;
};

}  // namespace pattern_reader
