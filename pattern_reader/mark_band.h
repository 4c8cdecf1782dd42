// Selects the pixels to which a round mark is fitted. They lie around the mark's border.
#pragma once

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

#include "pattern_reader/mark_fit.h"

namespace pattern_reader {

// The pixels between two ellipses with a mark's shape. They include the pixels that the mark's border affects, and a
// part of the plain area on each side of the border. Pixels farther than 1.75 radii from the centre are left out. The
// plain areas show the slope of the light. If the shorter radius of the mark is at least 5 pixels, the plain areas are
// taken only from every third row.
class MarkBand {
public:
    explicit MarkBand(const MarkFit &fit);

    // True if all points up to `needed` radii from the centre are inside a picture of this size. These points cover the
    // mark, its border and most of the border's blur.
    bool isIn(const cv::Size &size) const;

    // Calls `visit(y, x0, x1)` for every run of selected pixels: columns x0 to x1 of row y. A run is empty if x0 is
    // greater than x1.
    template <class Visit>
    void visitRuns(const cv::Size &size, const Visit &visit) const {
        const double determinant = shape(0, 0) * shape(1, 1) - shape(0, 1) * shape(0, 1);
        const double halfHeight = std::min(widest, 1 + plain) * std::sqrt(shape(0, 0) / determinant);
        const int last = std::min(size.height - 1, int(std::floor(centre.y + halfHeight)));
        for (int y = std::max(0, int(std::ceil(centre.y - halfHeight))); y <= last; y++) {
            const double width = y % rowsPerPlain == 0 ? plain : border;
            const cv::Point2d outer = crossings(y, std::min(widest, 1 + width));
            const cv::Point2d inner = crossings(y, std::max(0.0, 1 - width));
            const int x0 = std::max(0, int(std::ceil(outer.x)));
            const int x1 = std::min(size.width - 1, int(std::floor(outer.y)));
            if (inner.x < inner.y) {
                visit(y, x0, std::min(x1, int(std::floor(inner.x))));
                visit(y, std::max(x0, int(std::ceil(inner.y))), x1);
            } else {
                visit(y, x0, x1);
            }
        }
    }

private:
    // Pixels farther from the centre than this many radii are not used. The dots of a code begin 2.2 radii from a
    // mark's centre.
    static constexpr double widest = 1.75;

    // Returns the x coordinates at which a row enters and leaves the ellipse that is `radii` times as large as the
    // mark. If the row does not meet the ellipse, the first value is greater than the second.
    cv::Point2d crossings(int y, double radii) const;

    cv::Point2d centre;
    cv::Matx22d shape;
    // Distances in radii of the mark. The first two are measured from the mark's border, to both sides: the border
    // affects the pixels up to the distance `border`, and the plain areas extend from there to the distance `plain`.
    // `needed` is measured from the mark's centre: all points up to this distance must be inside the picture.
    double border = 0;
    double plain = 0;
    double needed = 0;
    int rowsPerPlain = 1;
};

}  // namespace pattern_reader
