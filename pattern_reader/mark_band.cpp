#include "pattern_reader/mark_band.h"

namespace pattern_reader {

MarkBand::MarkBand(const MarkFit &fit) : centre(fit.centre), shape(fit.toUnit.t() * fit.toUnit) {
    const double radius = fit.shortRadius();
    border = std::max(1.7, 2.5 * fit.blur) / radius;
    plain = std::max(4.0, 6 * fit.blur) / radius;
    rowsPerPlain = radius < 5 ? 1 : 3;
    needed = std::min(widest, 1 + 1.5 * fit.blur / radius);
}

bool MarkBand::isIn(const cv::Size &size) const {
    const double determinant = shape(0, 0) * shape(1, 1) - shape(0, 1) * shape(0, 1);
    const double halfWidth = needed * std::sqrt(shape(1, 1) / determinant);
    const double halfHeight = needed * std::sqrt(shape(0, 0) / determinant);
    return centre.x - halfWidth >= 0 && centre.y - halfHeight >= 0 && centre.x + halfWidth <= size.width - 1 &&
           centre.y + halfHeight <= size.height - 1;
}

cv::Point2d MarkBand::crossings(int y, double radii) const {
    const double dy = y - centre.y;
    const double half = shape(0, 1) * dy;
    const double rest = shape(1, 1) * dy * dy - radii * radii;
    const double root2 = half * half - shape(0, 0) * rest;
    if (root2 <= 0) {
        return {1, 0};
    }
    const double root = std::sqrt(root2);
    return {centre.x + (-half - root) / shape(0, 0), centre.x + (-half + root) / shape(0, 0)};
}

}  // namespace pattern_reader
