#include "viewer/views/photograph_picture.h"

#include <opencv2/imgproc.hpp>

#include "calibration/lens_model.h"
#include "viewer/session/session_photograph.h"

namespace {

constexpr int smallestLevel = 256;  // pixels; the longer side of the smallest level is at most this
constexpr double mostPixels = 4e6;  // of an undistorted picture
// The focal length of an undistorted fisheye picture, as a share of the lens's focal length. With the shorter focal
// length, the picture shows a wider view.
constexpr double fisheyeZoom = 0.6;
constexpr int bandRows = 64;  // rows undistorted at a time, so that the map for cv::remap() needs little memory

cv::Mat matrixOf(QImage &image) {
    return {image.height(), image.width(), CV_8UC1, image.bits(), size_t(image.bytesPerLine())};
}
cv::Mat matrixOf(const QImage &image) {
    return {image.height(), image.width(), CV_8UC1, const_cast<uchar *>(image.constBits()),
            size_t(image.bytesPerLine())};
}

QImage halved(const QImage &image) {
    QImage half(qMax(1, image.width() / 2), qMax(1, image.height() / 2), QImage::Format_Grayscale8);
    cv::Mat target = matrixOf(half);
    cv::resize(matrixOf(image), target, target.size(), 0, 0, cv::INTER_AREA);
    return half;
}

std::vector<QImage> levelsOf(QImage image) {
    std::vector<QImage> levels{std::move(image)};
    while (qMax(levels.back().width(), levels.back().height()) > smallestLevel) {
        levels.push_back(halved(levels.back()));
    }
    return levels;
}

}  // namespace

StraightLens StraightLens::of(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics) {
    const double zoom = camera.lens == calibration::LensModel::Fisheye ? fisheyeZoom : 1;
    return {zoom * (intrinsics[0] + intrinsics[1]) / 2, intrinsics.segment<2>(2)};
}

std::optional<QPointF> undistorted(const calibration::Camera &camera, const Eigen::VectorXd &intrinsics,
                                   const QPointF &pixel) {
    Eigen::Vector3d direction;
    if (!calibration::unproject(camera.lens, intrinsics.data(), {pixel.x(), pixel.y()}, direction) ||
        direction.z() < 0.05) {
        return std::nullopt;
    }
    const StraightLens straight = StraightLens::of(camera, intrinsics);
    const Eigen::Vector2d place = straight.centre + straight.focalLength * direction.head<2>() / direction.z();
    return QPointF(place.x(), place.y());
}

PhotographPicture PhotographPicture::load(const QString &path) {
    QImage image = loadPicture(path);
    if (image.isNull()) {
        return {};
    }
    const QSize size = image.size();
    return {size.width(), size.height(), levelsOf(std::move(image))};
}

PhotographPicture PhotographPicture::undistort(const calibration::Camera &camera,
                                               const Eigen::VectorXd &intrinsics) const {
    size_t level = 0;
    while (level + 1 < levels.size() && double(levels[level].width()) * levels[level].height() > mostPixels) {
        ++level;
    }
    const QImage &source = levels[level];
    const double scale = double(width) / source.width();
    const StraightLens straight = StraightLens::of(camera, intrinsics);
    QImage target(source.size(), QImage::Format_Grayscale8);
    cv::Mat output = matrixOf(target);
    for (int top = 0; top < target.height(); top += bandRows) {
        cv::Mat part = output.rowRange(top, qMin(top + bandRows, target.height()));
        cv::Mat2f map(part.size());
        for (int y = 0; y < map.rows; ++y) {
            for (int x = 0; x < map.cols; ++x) {
                const Eigen::Vector2d pixel((x + 0.5) * scale - 0.5, (top + y + 0.5) * scale - 0.5);
                const Eigen::Vector2d ray = (pixel - straight.centre) / straight.focalLength;
                Eigen::Vector2d image;
                const bool isSeen = calibration::project(camera.lens, intrinsics.data(), {ray.x(), ray.y(), 1}, image);
                map(y, x) =
                    isSeen ? cv::Vec2f(float((image.x() + 0.5) / scale - 0.5), float((image.y() + 0.5) / scale - 0.5))
                           : cv::Vec2f(-10, -10);
            }
        }
        cv::remap(matrixOf(source), part, map, cv::noArray(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, 0);
    }
    return {width, height, levelsOf(std::move(target))};
}
