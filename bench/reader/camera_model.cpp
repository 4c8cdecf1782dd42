#include "bench/reader/camera_model.h"

#include <algorithm>
#include <cmath>

namespace reader_bench {

namespace {

// Solves r (1 + a r² + b r⁴) = distorted for r.
double undistorted(double distorted, double a, double b) {
    double r = distorted;
    for (int i = 0; i < 20; i++) {
        const double r2 = r * r;
        const double error = r * (1 + r2 * (a + r2 * b)) - distorted;
        const double step = error / (1 + r2 * (3 * a + r2 * 5 * b));
        r -= step;
        if (std::abs(step) < 1e-12) {
            break;
        }
    }
    return r;
}

// Half the width of a crease, in pitches.
constexpr double creaseWidth = 0.15;

double slopeAt(const PaperSheet::Form &form, double s) {
    double slope = form.curvature * s;
    if (form.waveSlope != 0) {
        slope += form.waveSlope * std::sin(2 * CV_PI * s / form.waveLength + form.wavePhase);
    }
    for (const auto &[place, angle] : form.creases) {
        const double t = std::clamp((s - place) / creaseWidth, -1.0, 1.0);
        slope += angle * (t * (3 - t * t) / 4);
    }
    return slope;
}

}  // namespace

cv::Point2d pixelOf(const CameraModel &camera, const cv::Vec3d &ray) {
    const double across = std::hypot(ray[0], ray[1]);
    double scale = 0;
    if (camera.fisheye) {
        const double t = std::atan2(across, ray[2]);
        const double t2 = t * t;
        const double r = t * (1 + t2 * (camera.fisheyeTerms[0] + t2 * camera.fisheyeTerms[1]));
        scale = across > 0 ? r / across : 0;
    } else {
        const double r2 = (across / ray[2]) * (across / ray[2]);
        scale = (1 + r2 * (camera.k1 + r2 * camera.k2)) / ray[2];
    }
    return camera.centre + cv::Point2d(ray[0], ray[1]) * (camera.focalLength * scale);
}

cv::Vec3d rayOf(const CameraModel &camera, const cv::Point2d &pixel) {
    const cv::Point2d d = (pixel - camera.centre) / camera.focalLength;
    if (!camera.fisheye && camera.k1 == 0 && camera.k2 == 0) {
        return {d.x, d.y, 1};
    }
    const double r = std::sqrt(d.dot(d));
    if (r < 1e-12) {
        return {0, 0, 1};
    }
    if (camera.fisheye) {
        const double t = undistorted(r, camera.fisheyeTerms[0], camera.fisheyeTerms[1]);
        const double sine = std::sin(t) / r;
        return {d.x * sine, d.y * sine, std::cos(t)};
    }
    const double scale = undistorted(r, camera.k1, camera.k2) / r;
    return {d.x * scale, d.y * scale, 1};
}

PaperSheet::PaperSheet(const Form &form, double reach)
    : acrossAxis(std::cos(form.direction), std::sin(form.direction)), formReach(reach), stationStep(0.02) {
    const int half = int(std::ceil(reach / stationStep));
    formReach = half * stationStep;
    stations.resize(2 * size_t(half) + 1);
    // Integrates from the middle outwards, so that the middle is the origin. Each step uses two-point Gauss quadrature.
    const auto fill = [&](int sign) {
        Station here{0, 0, std::cos(slopeAt(form, 0)), std::sin(slopeAt(form, 0))};
        stations[size_t(half)] = here;
        for (int i = 1; i <= half; i++) {
            const double from = sign * (i - 1) * stationStep;
            for (const double t : {0.5 - std::sqrt(1 / 12.0), 0.5 + std::sqrt(1 / 12.0)}) {
                const double slope = slopeAt(form, from + sign * t * stationStep);
                here.x += sign * stationStep / 2 * std::cos(slope);
                here.z += sign * stationStep / 2 * std::sin(slope);
            }
            here.cosine = std::cos(slopeAt(form, sign * i * stationStep));
            here.sine = std::sin(slopeAt(form, sign * i * stationStep));
            const int place = half + sign * i;
            stations[size_t(place)] = here;
        }
    };
    fill(1);
    fill(-1);
}

// Returns the point of the cross section at the distance s from the middle, by cubic Hermite interpolation between the
// stored points (`stations`). Beyond formReach the sheet is straight.
PaperSheet::Station PaperSheet::station(double s) const {
    const double at = (std::clamp(s, -formReach, formReach) + formReach) / stationStep;
    const size_t i = std::min(size_t(at), stations.size() - 2);
    const double t = at - double(i);
    const Station &a = stations[i];
    const Station &b = stations[i + 1];
    const double u = 1 - t;
    const double ha = u * u * (1 + 2 * t);
    const double ta = t * u * u * stationStep;
    const double tb = -t * t * u * stationStep;
    Station result{ha * a.x + (1 - ha) * b.x + ta * a.cosine + tb * b.cosine,
                   ha * a.z + (1 - ha) * b.z + ta * a.sine + tb * b.sine, u * a.cosine + t * b.cosine,
                   u * a.sine + t * b.sine};
    const double beyond = std::abs(s) > formReach ? s - std::copysign(formReach, s) : 0;
    result.x += beyond * result.cosine;
    result.z += beyond * result.sine;
    return result;
}

cv::Vec3d PaperSheet::at(const cv::Point2d &onPaper) const {
    const Station c = station(onPaper.dot(acrossAxis));
    const double along = acrossAxis.cross(onPaper);
    return {c.x * acrossAxis.x - along * acrossAxis.y, c.x * acrossAxis.y + along * acrossAxis.x, c.z};
}

cv::Point2d PaperSheet::hit(const cv::Vec3d &origin, const cv::Vec3d &direction, double &start) const {
    const double ox = origin[0] * acrossAxis.x + origin[1] * acrossAxis.y;
    const double dx = direction[0] * acrossAxis.x + direction[1] * acrossAxis.y;
    double s = start;
    Station c = station(s);
    for (int i = 0; i < 30; i++) {
        const double error = (c.x - ox) * direction[2] - (c.z - origin[2]) * dx;
        const double slope = c.cosine * direction[2] - c.sine * dx;
        const double change = slope != 0 ? std::clamp(error / slope, -3.0, 3.0) : 0;
        s -= change;
        c = station(s);
        if (std::abs(change) < 1e-7) {
            break;
        }
    }
    start = s;
    const double length = std::abs(direction[2]) > std::abs(dx) ? (c.z - origin[2]) / direction[2] : (c.x - ox) / dx;
    const double along =
        acrossAxis.x * (origin[1] + length * direction[1]) - acrossAxis.y * (origin[0] + length * direction[0]);
    return {s * acrossAxis.x - along * acrossAxis.y, s * acrossAxis.y + along * acrossAxis.x};
}

}  // namespace reader_bench
