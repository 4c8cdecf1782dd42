#include <Eigen/Core>
#include <cmath>
#include <nlohmann/json.hpp>

#include "calibration/output/json_layout.h"
#include "calibration/output/number_text.h"
#include "calibration/output/result_files.h"

namespace calibration {

namespace {

using nlohmann::ordered_json;

constexpr int formatVersion = 1;
constexpr int mapDigits = 5;  // decimal places of lengths in pixels: the values in maps and the residuals of sightings

const char *nameOf(Grade grade) {
    switch (grade) {
        case Grade::Good:
            return "good";
        case Grade::Usable:
            return "usable";
        case Grade::Poor:
            return "poor";
    }
    return "";
}

const char *nameOf(Misfit misfit) {
    switch (misfit) {
        case Misfit::NoPose:
            return "no pose";
        case Misfit::Moved:
            return "moved";
        case Misfit::AnotherLens:
            return "another lens";
        case Misfit::Unclear:
            return "unclear";
    }
    return "";
}

template <typename Vector>
ordered_json listOf(const Vector &numbers) {
    ordered_json list = ordered_json::array();
    for (long i = 0; i < long(numbers.size()); i++) {
        list.push_back(double(numbers[size_t(i)]));
    }
    return list;
}

ordered_json listOf(const Eigen::VectorXd &numbers) {
    return listOf(std::vector<double>(numbers.data(), numbers.data() + numbers.size()));
}

ordered_json rowsOf(const Eigen::MatrixXd &matrix) {
    ordered_json rows = ordered_json::array();
    for (long row = 0; row < matrix.rows(); row++) {
        rows.push_back(listOf(Eigen::VectorXd(matrix.row(row))));
    }
    return rows;
}

// Returns one array for each row of the map. A value is null if the map has none there.
ordered_json mapJson(const PictureMap &map) {
    ordered_json rows = ordered_json::array();
    for (int row = 0; row < map.rows; row++) {
        ordered_json values = ordered_json::array();
        for (int column = 0; column < map.columns; column++) {
            const std::optional<double> value = map.at(column, row);
            values.push_back(value ? ordered_json(rounded(*value, mapDigits)) : ordered_json());
        }
        rows.push_back(std::move(values));
    }
    return rows;
}

void addPose(const RigidMotion &pose, ordered_json &json) {
    json["Rotation"] = rowsOf(rotationMatrix(pose.rotation));
    json["Translation"] = listOf(Eigen::VectorXd(pose.translation));
}

void addTrust(const CameraTrust &trust, const Calibration &calibration, size_t camera, ordered_json &json) {
    json["Sigmas"] = listOf(trust.sigmas);
    json["Covariance"] = rowsOf(calibration.covariance.intrinsics(int(camera)));
    json["ResidualRms"] = trust.rms;
    json["Corners"] = trust.corners;
    json["Photographs"] = trust.photographs;
    json["Distance"] = trust.distance;
    json["Uncertainty"] = mapJson(trust.uncertainty);
    json["UncertaintyAtInfinity"] = mapJson(trust.uncertaintyAtInfinity);
    json["HalvesDifference"] = trust.halves ? mapJson(*trust.halves) : ordered_json();
    ordered_json trials = ordered_json::array();
    for (const ModelTrial &trial : trust.trials) {
        trials.push_back({{"Model", nameOf(trial.lens)}, {"HeldOutError", trial.heldOutError}});
    }
    json["Trials"] = std::move(trials);
}

ordered_json cameraJson(const Calibration &calibration, size_t index) {
    const Camera &camera = calibration.observations.cameras[index];
    const Eigen::VectorXd &intrinsics = calibration.estimate.intrinsics[index];
    ordered_json json;
    json["Name"] = camera.name;
    json["ImageSize"] = {camera.width, camera.height};
    json["Model"] = nameOf(camera.lens);
    json["IsCalibrated"] = calibration.cameras[index].corners > 0;
    if (calibration.cameras[index].corners == 0) {
        return json;
    }
    json["FocalLength"] = {intrinsics[0], intrinsics[1]};
    json["PrincipalPoint"] = {intrinsics[2], intrinsics[3]};
    json["Distortion"] = listOf(Eigen::VectorXd(intrinsics.tail(intrinsics.size() - pinholeParameters)));
    json["RigOrigin"] = calibration.observations.cameras[size_t(rigOrigin(calibration.observations, int(index)))].name;
    addPose(calibration.estimate.cameraFromRig[index], json);
    json["PoseCovariance"] = rowsOf(calibration.covariance.cameraFromRig(int(index)));
    addTrust(calibration.cameras[index], calibration, index, json);
    return json;
}

ordered_json printJson(const Calibration &calibration, size_t index) {
    const Print &print = calibration.observations.prints[index];
    const PrintShape &shape = calibration.estimate.shapes[index];
    const PrintTrust &trust = calibration.prints[index];
    const double halfRatio = shape.numbers[PrintShape::ratio] / 2;
    ordered_json json;
    json["Name"] = print.name;
    json["Number"] = print.number < 0 ? ordered_json() : ordered_json(print.number);
    json["Points"] = print.points.size();
    json["Group"] = calibration.estimate.groups[index];
    if (calibration.estimate.groups[index] < 0) {
        return json;
    }
    addPose(calibration.estimate.worldFromPrint[index], json);
    json["RotationSigma"] = listOf(Eigen::VectorXd(trust.rotationSigma));
    json["TranslationSigma"] = listOf(Eigen::VectorXd(trust.translationSigma));
    json["Scale"] = {std::exp(shape.numbers[PrintShape::scale] + halfRatio),
                     std::exp(shape.numbers[PrintShape::scale] - halfRatio)};
    json["Shear"] = shape.numbers[PrintShape::shear];
    json["Bend"] = listOf(std::vector<double>(shape.numbers.begin() + PrintShape::bend, shape.numbers.end()));
    json["BendReach"] = shape.reach;
    json["ShapeFreedom"] = index < calibration.freedom.shapes.size() ? ordered_json(calibration.freedom.shapes[index])
                                                                     : ordered_json::array();
    json["ShapeCovariance"] = rowsOf(calibration.covariance.shape(int(index)));
    json["IsMeasured"] = trust.isMeasured;
    json["IsDetermined"] = trust.isDetermined;
    return json;
}

// Returns the rms residual of a sighting's corners that are marked as used, in pixels, even if the calibration does not
// use the sighting itself. Null if no corner is marked as used, if one of these corners cannot be projected, or if a
// pose is unknown.
ordered_json residualOf(const Calibration &calibration, const Sighting &sighting) {
    const Observations &observations = calibration.observations;
    const Estimate &estimate = calibration.estimate;
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    const size_t camera = size_t(photograph.camera);
    if (!hasPose(observations, sighting, estimate)) {
        return {};
    }
    const RigidMotion cameraFromPrint = estimate.cameraFromRig[camera] *
                                        estimate.rigFromWorld[size_t(photograph.moment)] *
                                        estimate.worldFromPrint[size_t(sighting.print)];
    const PrintShape &shape = estimate.shapes[size_t(sighting.print)];
    double sum = 0;
    int count = 0;
    for (const SeenCorner &corner : sighting.corners) {
        const Eigen::Vector2d drawn = observations.prints[size_t(sighting.print)].points[size_t(corner.point)];
        const Eigen::Vector3d place = printedPoint(shape.numbers.data(), shape.reach, drawn).place;
        Eigen::Vector2d image;
        if (!corner.isUsed) {
            continue;
        }
        if (!project(observations.cameras[camera].lens, estimate.intrinsics[camera].data(), cameraFromPrint * place,
                     image)) {
            return {};
        }
        sum += (corner.image - image).squaredNorm();
        count++;
    }
    return count > 0 ? ordered_json(rounded(std::sqrt(sum / count), mapDigits)) : ordered_json();
}

ordered_json sightingJson(const Calibration &calibration, size_t index) {
    const Sighting &sighting = calibration.observations.sightings[index];
    long used = 0;
    for (const SeenCorner &corner : sighting.corners) {
        used += corner.isUsed ? 1 : 0;
    }
    ordered_json json;
    json["Print"] = calibration.observations.prints[size_t(sighting.print)].name;
    json["Corners"] = sighting.corners.size();
    json["Used"] = sighting.isUsed ? used : 0;
    json["ResidualRms"] = residualOf(calibration, sighting);
    for (const LeftOut &leftOut : calibration.leftOut) {
        if (leftOut.sighting == int(index)) {
            json["LeftOut"] = nameOf(leftOut.misfit);
            json["Reason"] = leftOut.reason;
        }
    }
    return json;
}

ordered_json photographsJson(const Calibration &calibration) {
    const Observations &observations = calibration.observations;
    ordered_json list = ordered_json::array();
    for (const Photograph &photograph : observations.photographs) {
        ordered_json json;
        json["File"] = photograph.name;
        json["Camera"] = observations.cameras[size_t(photograph.camera)].name;
        json["Moment"] = photograph.moment;
        if (calibration.estimate.hasMoment[size_t(photograph.moment)] &&
            calibration.estimate.hasCamera[size_t(photograph.camera)]) {
            addPose(calibration.estimate.cameraFromRig[size_t(photograph.camera)] *
                        calibration.estimate.rigFromWorld[size_t(photograph.moment)],
                    json);
        }
        json["Sightings"] = ordered_json::array();
        list.push_back(std::move(json));
    }
    for (size_t i = 0; i < observations.sightings.size(); i++) {
        list[size_t(observations.sightings[i].photograph)]["Sightings"].push_back(sightingJson(calibration, i));
    }
    return list;
}

ordered_json nextJson(const Calibration &calibration) {
    if (!calibration.next) {
        return {};
    }
    const NextPhotograph &next = *calibration.next;
    ordered_json json;
    json["Camera"] = calibration.observations.cameras[size_t(next.camera)].name;
    json["Print"] = calibration.observations.prints[size_t(next.print)].name;
    addPose(next.cameraFromPrint, json);
    json["UncertaintyBefore"] = next.uncertaintyBefore;
    json["UncertaintyAfter"] = next.uncertaintyAfter;
    json["Text"] = next.text;
    return json;
}

}  // namespace

std::string calibrationJson(const Calibration &calibration, const ResultNotes &notes) {
    ordered_json json;
    json["Format"] = "LmCalTabCalibration";
    json["Version"] = formatVersion;
    json["Program"] = notes.program;
    json["Unit"] = "mm";
    json["Verdict"] = {{"Grade", nameOf(calibration.verdict.grade)},
                       {"Text", calibration.verdict.text},
                       {"Advice", calibration.verdict.advice}};
    ordered_json notices = calibration.notices;
    for (const std::string &notice : notes.notices) {
        notices.push_back(notice);
    }
    json["Notices"] = std::move(notices);
    json["VarianceFactor"] = calibration.covariance.varianceFactor();
    for (size_t i = 0; i < calibration.observations.cameras.size(); i++) {
        json["Cameras"].push_back(cameraJson(calibration, i));
    }
    for (size_t i = 0; i < calibration.observations.prints.size(); i++) {
        json["Prints"].push_back(printJson(calibration, i));
    }
    json["Photographs"] = photographsJson(calibration);
    json["UnusedPhotographs"] = ordered_json::array();
    for (const UnusedPhotograph &unused : notes.unused) {
        json["UnusedPhotographs"].push_back({{"File", unused.name}, {"Reason", unused.reason}});
    }
    json["NextPhotograph"] = nextJson(calibration);
    return layOut(json);
}

}  // namespace calibration
