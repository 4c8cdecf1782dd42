#include "pattern_reader/plate_view.h"

#include <algorithm>
#include <cmath>

namespace pattern_reader {

namespace {

cv::Vec3d fitPlane(const std::vector<RoundMark> &marks, float RoundMark::*value) {
    cv::Matx33d m = cv::Matx33d::zeros();
    cv::Vec3d right(0, 0, 0);
    for (const RoundMark &mark : marks) {
        const cv::Vec3d row(1, mark.centre.x, mark.centre.y);
        m += row * row.t();
        right += row * double(mark.*value);
    }
    cv::Vec3d plane;
    cv::solve(m, right, plane, cv::DECOMP_SVD);
    return plane;
}

// The value between the four pixels around a point; false outside the picture.
template <typename Pixel>
bool between(const cv::Mat &picture, cv::Point2f p, double &value) {
    if (!(p.x >= 0) || !(p.y >= 0) || p.x >= float(picture.cols - 1) || p.y >= float(picture.rows - 1)) {
        return false;
    }
    const int x = int(p.x);
    const int y = int(p.y);
    const double fx = p.x - float(x);
    const double fy = p.y - float(y);
    const auto *a = picture.ptr<Pixel>(y) + x;
    const auto *b = picture.ptr<Pixel>(y + 1) + x;
    value = (a[0] * (1 - fx) + a[1] * fx) * (1 - fy) + (b[0] * (1 - fx) + b[1] * fx) * fy;
    return true;
}

}  // namespace

cv::Point2d transform(const cv::Matx33d &map, cv::Point2d point) {
    const cv::Vec3d v = map * cv::Vec3d(point.x, point.y, 1);
    return {v[0] / v[2], v[1] / v[2]};
}

PlateView::PlateView(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
                     const LatticeMotion &motion)
    : imageFromCell_(imageFromCell), motion_(motion) {
    std::vector<float> areas;
    for (const RoundMark &mark : found.marks) {
        areas.push_back(mark.area);
    }
    std::nth_element(areas.begin(), areas.begin() + std::ptrdiff_t(areas.size() / 2), areas.end());
    const double spacing = std::sqrt(areas[areas.size() / 2] / CV_PI) / markRadius;
    size_t number = 0;
    while (number + 1 < levels.size() && spacing / levels[number].scale() > 26) {
        number++;
    }
    level_ = &levels[number];
    sharpLevel_ = &levels[number > 0 ? number - 1 : 0];
    dark_ = fitPlane(found.marks, &RoundMark::darkLevel);
    paper_ = fitPlane(found.marks, &RoundMark::lightLevel);
}

cv::Point2d PlateView::toCell(cv::Point2d plate) const {
    cv::Point2d p = plate - cv::Point2d(1, 1) - cv::Point2d(motion_.shift);
    for (int i = 0; i < motion_.quarterTurns; i++) {
        p = {p.y, -p.x};
    }
    return p;
}

cv::Point2d PlateView::toImage(cv::Point2d plate) const {
    return transform(imageFromCell_, toCell(plate));
}

double PlateView::sharpSpacingAt(cv::Point2d plate) const {
    const cv::Point2d a = toImage(plate + cv::Point2d(0.1, 0)) - toImage(plate);
    const cv::Point2d b = toImage(plate + cv::Point2d(0, 0.1)) - toImage(plate);
    return std::sqrt(std::abs(a.cross(b))) * 10 / sharpLevel_->scale();
}

bool PlateView::relativeToMarks(cv::Point2d image, double grey, double &light) const {
    const cv::Vec3d at(1, image.x, image.y);
    const double dark = dark_.dot(at);
    const double contrast = paper_.dot(at) - dark;
    light = contrast > 5 ? (grey - dark) / contrast : 0.5;
    return contrast > 5;
}

bool PlateView::lightAt(cv::Point2d plate, double &light) const {
    const cv::Point2d image = toImage(plate);
    double value = 0;
    return between<int16_t>(level_->smoothed, level_->fromImage(cv::Point2f(image)), value) &&
           relativeToMarks(image, value / 64, light);
}

bool PlateView::sharpLightAt(cv::Point2d plate, cv::Point2d shift, double &light) const {
    const cv::Point2d image = toImage(plate) + shift;
    double value = 0;
    return between<uchar>(sharpLevel_->picture, sharpLevel_->fromImage(cv::Point2f(image)), value) &&
           relativeToMarks(image, value, light);
}

}  // namespace pattern_reader
