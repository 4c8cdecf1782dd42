#include "viewer/session/session_result.h"

#include <algorithm>
#include <cmath>

using calibration::Calibration;
using calibration::Sighting;

namespace {

using Images = std::vector<std::optional<Eigen::Vector2d>>;

Images estimatedImages(const Calibration &calibration, const Sighting &sighting) {
    Images images(sighting.corners.size());
    const auto pose = cameraFromPrint(calibration, sighting.photograph, sighting.print);
    if (!pose) {
        return images;
    }
    const auto &observations = calibration.observations;
    const int camera = observations.photographs[size_t(sighting.photograph)].camera;
    const auto &shape = calibration.estimate.shapes[size_t(sighting.print)];
    const Eigen::Matrix3d rotation = calibration::rotationMatrix(pose->rotation);
    for (size_t i = 0; i < images.size(); ++i) {
        const Eigen::Vector2d &drawn =
            observations.prints[size_t(sighting.print)].points[size_t(sighting.corners[i].point)];
        const Eigen::Vector3d place = calibration::printedPoint(shape.numbers.data(), shape.reach, drawn).place;
        Eigen::Vector2d image;
        if (calibration::project(observations.cameras[size_t(camera)].lens,
                                 calibration.estimate.intrinsics[size_t(camera)].data(),
                                 rotation * place + pose->translation, image)) {
            images[i] = image;
        }
    }
    return images;
}

void addSighting(const Sighting &sighting, const Images &estimated, PhotographFit &fit, double &squares) {
    for (size_t i = 0; i < estimated.size(); ++i) {
        if (!sighting.isUsed || !sighting.corners[i].isUsed || !estimated[i]) {
            continue;
        }
        const double distance = (sighting.corners[i].image - *estimated[i]).norm();
        squares += distance * distance;
        fit.worst = std::max(fit.worst, distance);
        ++fit.corners;
    }
}

}  // namespace

int SessionResult::indexOf(int photographId) const {
    const auto found = std::find(photographIds.begin(), photographIds.end(), photographId);
    return found == photographIds.end() ? -1 : int(found - photographIds.begin());
}

const std::vector<PrintBlock> &SessionResult::textureOf(int print) const {
    static const std::vector<PrintBlock> none;
    return size_t(print) < textures.size() ? textures[size_t(print)] : none;
}

std::optional<calibration::RigidMotion> cameraFromPrint(const Calibration &calibration, int photograph, int print) {
    const calibration::Photograph &shot = calibration.observations.photographs[size_t(photograph)];
    const calibration::Estimate &estimate = calibration.estimate;
    if (!estimate.hasCamera[size_t(shot.camera)] || !estimate.hasMoment[size_t(shot.moment)] ||
        estimate.groups[size_t(print)] < 0) {
        return std::nullopt;
    }
    return estimate.cameraFromRig[size_t(shot.camera)] * estimate.rigFromWorld[size_t(shot.moment)] *
           estimate.worldFromPrint[size_t(print)];
}

std::optional<NamedCorner> cornerAt(const SessionResult &result, int photographId, const Eigen::Vector2d &pixel) {
    const calibration::Observations &observations = result.calibration->observations;
    const int index = result.indexOf(photographId);
    for (const Sighting &sighting : observations.sightings) {
        const calibration::Print &print = observations.prints[size_t(sighting.print)];
        if (sighting.photograph != index || print.cells.empty()) {
            continue;
        }
        for (const calibration::SeenCorner &corner : sighting.corners) {
            if ((corner.image - pixel).norm() < 1) {
                const Eigen::Vector2i &cell = print.cells[size_t(corner.point)];
                return NamedCorner{print.number, cell.x(), cell.y()};
            }
        }
    }
    return std::nullopt;
}

void describeFits(SessionResult &result) {
    const Calibration &calibration = *result.calibration;
    const auto &sightings = calibration.observations.sightings;
    std::vector<double> squares(result.photographIds.size());
    result.estimated.clear();
    for (const Sighting &sighting : sightings) {
        result.estimated.push_back(estimatedImages(calibration, sighting));
        addSighting(sighting, result.estimated.back(), result.fits[result.photographIds[size_t(sighting.photograph)]],
                    squares[size_t(sighting.photograph)]);
    }
    for (size_t i = 0; i < squares.size(); ++i) {
        PhotographFit &fit = result.fits[result.photographIds[i]];
        if (fit.corners > 0) {
            fit.rms = std::sqrt(squares[i] / fit.corners);
        }
    }
    for (const calibration::LeftOut &leftOut : calibration.leftOut) {
        const int photograph = sightings[size_t(leftOut.sighting)].photograph;
        QString &reason = result.fits[result.photographIds[size_t(photograph)]].reason;
        reason += (reason.isEmpty() ? "" : " ") + QString::fromStdString(leftOut.reason);
    }
}
