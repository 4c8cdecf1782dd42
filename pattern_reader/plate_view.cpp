#include "pattern_reader/plate_view.h"

#include <algorithm>
#include <cmath>

namespace pattern_reader {

namespace {

// Interpolates between the four pixels around a point; false outside the picture.
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

// Returns the number of the finest level in which a grid spacing has at most 26 pixels; the coarsest level if there is
// none. The grid spacing is estimated from the median area of the marks.
size_t levelForLooks(const std::vector<ImageLevel> &levels, const std::vector<RoundMark> &marks) {
    constexpr double mostPixels = 26;
    std::vector<float> areas;
    areas.reserve(marks.size());
    for (const RoundMark &mark : marks) {
        areas.push_back(mark.area);
    }
    const auto middle = areas.begin() + std::ptrdiff_t(areas.size() / 2);
    std::nth_element(areas.begin(), middle, areas.end());
    const double spacing = std::sqrt(*middle / CV_PI) / markRadius;
    size_t number = 0;
    while (number + 1 < levels.size() && spacing > mostPixels * levels[number].scale()) {
        number++;
    }
    return number;
}

}  // namespace

PlatePicture::PlatePicture(const std::vector<ImageLevel> &levels, const MarkLattice &found,
                           const MarkMap &imageFromCell)
    : marks(found), map(imageFromCell), extent(found.lattice.extent()) {
    const size_t number = levelForLooks(levels, marks.marks);
    level = &levels[number];
    sharpLevel = &levels[number > 0 ? number - 1 : 0];
    // Each cell gets a weighted mean of the grey levels of all marks. The nearest marks weigh most, so a cell without a
    // mark gets about the levels of its neighbours.
    for (int i = 0; i < extent.area(); i++) {
        const cv::Point cell = extent.tl() + cv::Point(i % extent.width, i / extent.width);
        double weights = 0;
        Contrast sum;
        for (size_t k = 0; k < marks.marks.size(); k++) {
            const cv::Point d = marks.lattice.corners[k].cell - cell;
            const double distance2 = d.dot(d);
            const double weight = 1 / (0.05 + distance2 * distance2);
            sum.dark += weight * double(marks.marks[k].darkLevel);
            sum.paper += weight * double(marks.marks[k].lightLevel);
            weights += weight;
        }
        contrasts.push_back({sum.dark / weights, sum.paper / weights});
    }
    std::vector<double> differences;
    differences.reserve(contrasts.size());
    for (const Contrast &one : contrasts) {
        differences.push_back(one.paper - one.dark);
    }
    const auto high = differences.begin() + std::ptrdiff_t(differences.size() * 3 / 4);
    std::nth_element(differences.begin(), high, differences.end());
    usual = *high;
}

PlatePicture::Contrast PlatePicture::contrastAt(cv::Point2d cell) const {
    const double x = std::clamp(cell.x - extent.x, 0.0, extent.width - 1.001);
    const double y = std::clamp(cell.y - extent.y, 0.0, extent.height - 1.001);
    const double fx = x - int(x);
    const double fy = y - int(y);
    Contrast sum;
    for (int corner = 0; corner < 4; corner++) {
        const int column = int(x) + corner % 2;
        const int row = int(y) + corner / 2;
        const double weight = (corner % 2 == 0 ? 1 - fx : fx) * (corner / 2 == 0 ? 1 - fy : fy);
        const Contrast &one = contrasts[size_t(row) * size_t(extent.width) + size_t(column)];
        sum.dark += weight * one.dark;
        sum.paper += weight * one.paper;
    }
    return sum;
}

cv::Point2d PlateView::toCell(cv::Point2d plate) const {
    cv::Point2d p = plate - cv::Point2d(1, 1) - cv::Point2d(motion.shift);
    for (int i = 0; i < motion.quarterTurns; i++) {
        p = {p.y, -p.x};
    }
    return p;
}

bool PlateView::hasMark(cv::Point plate) const {
    const cv::Point2d cell = toCell(plate);
    return picture.marks.lattice.indexAt({int(std::lround(cell.x)), int(std::lround(cell.y))}) >= 0;
}

bool PlateView::isBleached(cv::Point2d plate) const {
    const PlatePicture::Contrast here = picture.contrastAt(toCell(plate));
    return here.paper > 245 && here.paper - here.dark < 0.85 * picture.fullContrast();
}

double PlateView::sharpSpacingAt(cv::Point2d plate) const {
    return std::sqrt(std::abs(cv::determinant(picture.map.stepsAt(toCell(plate))))) / picture.sharpLevel->scale();
}

bool PlateView::relativeToMarks(cv::Point2d cell, double grey, double &light) const {
    const PlatePicture::Contrast here = picture.contrastAt(cell);
    const double contrast = here.paper - here.dark;
    light = contrast > 5 ? (grey - here.dark) / contrast : 0.5;
    return contrast > 5;
}

bool PlateView::lightAt(cv::Point2d plate, double &light) const {
    const cv::Point2d cell = toCell(plate);
    double value = 0;
    return between<int16_t>(picture.level->smoothed, picture.level->fromImage(cv::Point2f(picture.map.at(cell))),
                            value) &&
           relativeToMarks(cell, value / 64, light);
}

bool PlateView::sharpLightAt(cv::Point2d plate, double &light) const {
    const cv::Point2d cell = toCell(plate);
    double value = 0;
    return between<uchar>(picture.sharpLevel->picture, picture.sharpLevel->fromImage(cv::Point2f(picture.map.at(cell))),
                          value) &&
           relativeToMarks(cell, value, light);
}

}  // namespace pattern_reader
