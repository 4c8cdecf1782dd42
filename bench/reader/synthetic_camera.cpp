#include "bench/reader/synthetic_camera.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace reader_bench {

namespace {

// Sub-samples per pixel side for the area of a pixel.
constexpr int samples = 5;

cv::Point2d undistort(const CameraModel &camera, const cv::Point2d &pixel) {
    const cv::Point2d distorted((pixel.x - camera.centre.x) / camera.focalLength,
                                (pixel.y - camera.centre.y) / camera.focalLength);
    cv::Point2d point = distorted;
    for (int i = 0; i < 12; i++) {
        const double r2 = point.x * point.x + point.y * point.y;
        const double factor = 1 + camera.k1 * r2 + camera.k2 * r2 * r2;
        point = distorted * (1 / factor);
    }
    return point;
}

// From normalised image coordinates to the target's plane.
cv::Matx33d planeFromRay(const TargetPose &pose) {
    const cv::Matx33d r = pose.rotation;
    const cv::Matx33d rayFromPlane(r(0, 0), r(0, 1), pose.translation[0], r(1, 0), r(1, 1), pose.translation[1],
                                   r(2, 0), r(2, 1), pose.translation[2]);
    return rayFromPlane.inv();
}

cv::Rect imageBounds(const CameraModel &camera, const PlacedTarget &placed, const cv::Size &image) {
    const cv::Size2d size = placed.target->size();
    const double q = placed.quietZone;
    cv::Rect2d bounds;
    bool first = true;
    for (int i = 0; i <= 32; i++) {
        const double t = i / 32.0;
        const double x = -q + t * (size.width + 2 * q);
        const double y = -q + t * (size.height + 2 * q);
        const cv::Point2d border[] = {{x, -q}, {x, size.height + q}, {-q, y}, {size.width + q, y}};
        for (const cv::Point2d &p : border) {
            const cv::Point2d pixel = projectPoint(camera, placed.pose, p);
            const cv::Rect2d one(pixel.x - 2, pixel.y - 2, 4, 4);
            bounds = first ? one : bounds | one;
            first = false;
        }
    }
    bounds &= cv::Rect2d(0, 0, image.width, image.height);
    return {cv::Point(int(bounds.x), int(bounds.y)),
            cv::Point(int(std::ceil(bounds.x + bounds.width)), int(std::ceil(bounds.y + bounds.height)))};
}

void draw(cv::Mat &image, const CameraModel &camera, const PlacedTarget &placed, const Exposure &exposure) {
    const cv::Rect bounds = imageBounds(camera, placed, image.size()) & cv::Rect({0, 0}, image.size());
    const cv::Size2d size = placed.target->size();
    const double q = placed.quietZone;
    const cv::Matx33d toPlane = planeFromRay(placed.pose);
    // The mapping at the pixels' corners; between them it is as good as bilinear.
    std::vector<cv::Point2d> upper(size_t(bounds.width) + 1);
    std::vector<cv::Point2d> lower(size_t(bounds.width) + 1);
    const auto mapRow = [&](int y, std::vector<cv::Point2d> &row) {
        for (size_t i = 0; i < row.size(); i++) {
            const cv::Point2d ray = undistort(camera, {bounds.x + double(i) - 0.5, y - 0.5});
            const cv::Vec3d p = toPlane * cv::Vec3d(ray.x, ray.y, 1);
            row[i] = cv::Point2d(p[0] / p[2], p[1] / p[2]) + placed.pose.anchor;
        }
    };
    mapRow(bounds.y, lower);
    for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
        std::swap(upper, lower);
        mapRow(y + 1, lower);
        auto *row = image.ptr<float>(y);
        for (int i = 0; i < bounds.width; i++) {
            const size_t k = size_t(i);
            if (std::max(std::abs(upper[k].x), std::abs(upper[k].y)) > 1e4) {
                continue;
            }
            float sum = 0;
            for (int s = 0; s < samples * samples; s++) {
                const int line = s / samples;
                const double u = (s % samples + 0.5) / samples;
                const double v = (line + 0.5) / samples;
                const cv::Point2d top = upper[k] * (1 - u) + upper[k + 1] * u;
                const cv::Point2d bottom = lower[k] * (1 - u) + lower[k + 1] * u;
                const cv::Point2d p = top * (1 - v) + bottom * v;
                if (p.x < -q || p.y < -q || p.x > size.width + q || p.y > size.height + q) {
                    sum += row[bounds.x + i];
                } else if (placed.cover && placed.cover(p.x, p.y)) {
                    sum += placed.coverLevel;
                } else {
                    const float ink = placed.target->ink(p.x, p.y);
                    sum += exposure.paperLevel + ink * (exposure.inkLevel - exposure.paperLevel);
                }
            }
            row[bounds.x + i] = sum / float(samples * samples);
        }
    }
}

}  // namespace

cv::Point2d projectPoint(const CameraModel &camera, const TargetPose &pose, const cv::Point2d &point) {
    const cv::Vec3d inPlane(point.x - pose.anchor.x, point.y - pose.anchor.y, 0);
    const cv::Vec3d p = pose.rotation * inPlane + pose.translation;
    const double x = p[0] / p[2];
    const double y = p[1] / p[2];
    const double r2 = x * x + y * y;
    const double factor = 1 + camera.k1 * r2 + camera.k2 * r2 * r2;
    return {camera.centre.x + camera.focalLength * x * factor, camera.centre.y + camera.focalLength * y * factor};
}

cv::Mat photograph(const cv::Mat &background, const CameraModel &camera, const std::vector<PlacedTarget> &targets,
                   const Exposure &exposure, std::mt19937 &random) {
    cv::Mat image = background.clone();
    for (const PlacedTarget &placed : targets) {
        draw(image, camera, placed, exposure);
    }
    return expose(image, exposure, random);
}

cv::Mat expose(const cv::Mat &irradiance, const Exposure &exposure, std::mt19937 &random) {
    cv::Mat image = irradiance.clone();
    const double cx = image.cols / 2.0;
    const double cy = image.rows / 2.0;
    for (int y = 0; y < image.rows; y++) {
        auto *row = image.ptr<float>(y);
        const double v = (y - cy) / image.rows;
        for (int x = 0; x < image.cols; x++) {
            const double u = (x - cx) / image.cols;
            const double light =
                1 + exposure.lightSlope.x * u + exposure.lightSlope.y * v - exposure.vignette * 2 * (u * u + v * v);
            row[x] = float(row[x] * light);
        }
    }
    if (exposure.blurSigma > 0) {
        cv::GaussianBlur(image, image, cv::Size(), exposure.blurSigma, exposure.blurSigma, cv::BORDER_REPLICATE);
    }
    if (exposure.noiseSigma > 0) {
        cv::RNG noiseSource(random());
        cv::Mat noise(image.size(), CV_32F);
        noiseSource.fill(noise, cv::RNG::NORMAL, 0, exposure.noiseSigma);
        image += noise;
    }
    cv::Mat picture;
    image.convertTo(picture, CV_8U);
    if (exposure.jpegQuality > 0) {
        std::vector<uchar> bytes;
        cv::imencode(".jpg", picture, bytes, {cv::IMWRITE_JPEG_QUALITY, exposure.jpegQuality});
        picture = cv::imdecode(bytes, cv::IMREAD_GRAYSCALE);
    }
    return picture;
}

}  // namespace reader_bench
