#include <Eigen/Core>
#include <algorithm>
#include <array>
#include <cmath>

#include "calibration/report/camera_figures.h"
#include "calibration/report/page_text.h"
#include "calibration/report/sections.h"

namespace calibration {

namespace {

using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr double radian = 57.29577951308232;  // degrees

const char *describe(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
            return "pinhole with 4 distortion coefficients";
        case LensModel::Pinhole5:
            return "pinhole with 5 distortion coefficients";
        case LensModel::Pinhole8:
            return "pinhole with 8 distortion coefficients";
        case LensModel::Pinhole12:
            return "pinhole with 12 distortion coefficients";
        case LensModel::Fisheye:
            return "equidistant fisheye with 4 coefficients";
    }
    return "";
}

const char *parameterName(LensModel lens, int index) {
    constexpr std::array<const char *, greatestParameters> pinhole{"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2",
                                                                   "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4"};
    constexpr std::array<const char *, 8> fisheye{"fx", "fy", "cx", "cy", "k1", "k2", "k3", "k4"};
    return lens == LensModel::Fisheye ? fisheye[size_t(index)] : pinhole[size_t(index)];
}

// Returns the angle between the directions of two pixels as text; a dash if the lens has no direction for a pixel.
std::string angleBetween(const Camera &camera, const Eigen::VectorXd &intrinsics, const Vector2d &a,
                         const Vector2d &b) {
    // The two halves of the angle are added, because the whole angle may exceed 180 degrees.
    const Vector2d middle = (a + b) / 2;
    std::array<Vector3d, 3> directions;
    if (!unproject(camera.lens, intrinsics.data(), a, directions[0]) ||
        !unproject(camera.lens, intrinsics.data(), middle, directions[1]) ||
        !unproject(camera.lens, intrinsics.data(), b, directions[2])) {
        return "\xE2\x80\x93";
    }
    double sum = 0;
    for (size_t i = 0; i < 2; i++) {
        sum += std::acos(std::clamp(directions[i].dot(directions[i + 1]), -1.0, 1.0));
    }
    return number(sum * radian, 1) + "\xC2\xB0";
}

std::string fieldOfView(const Camera &camera, const Eigen::VectorXd &intrinsics) {
    const double right = camera.width - 0.5;
    const double bottom = camera.height - 0.5;
    const Vector2d middle((camera.width - 1) / 2.0, (camera.height - 1) / 2.0);
    return angleBetween(camera, intrinsics, {-0.5, middle.y()}, {right, middle.y()}) + " \xC3\x97 " +
           angleBetween(camera, intrinsics, {middle.x(), -0.5}, {middle.x(), bottom}) + ", diagonal " +
           angleBetween(camera, intrinsics, {-0.5, -0.5}, {right, bottom});
}

std::string parameterTable(const Camera &camera, const Eigen::VectorXd &intrinsics, const CameraTrust &trust) {
    std::string html =
        "<table class=\"compact\"><caption>Lens</caption>" + headings({"Parameter", ">Value", "Unit"}) + "<tbody>";
    for (int i = 0; i < int(intrinsics.size()); i++) {
        const double sigma = size_t(i) < trust.sigmas.size() ? trust.sigmas[size_t(i)] : 0;
        html += "<tr>" + cell(parameterName(camera.lens, i)) + numberCell(withSigma(intrinsics[i], sigma)) +
                cell(i < pinholeParameters ? "px" : "") + "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string trialTable(const CameraTrust &trust, LensModel chosen) {
    if (trust.trials.empty()) {
        return {};
    }
    std::string html =
        "<table class=\"compact\"><caption>How well each model predicts photographs that were not "
        "used to estimate it</caption>" +
        headings({"Model", ">Error"}) + "<tbody>";
    for (const ModelTrial &trial : trust.trials) {
        html += std::string(trial.lens == chosen ? "<tr class=\"chosen\">" : "<tr>") + cell(nameOf(trial.lens)) +
                numberCell(number(trial.heldOutError, 4) + " px") + "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string factRow(const char *what, const std::string &html) {
    return std::string("<div><dt>") + what + "</dt><dd>" + html + "</dd></div>\n";
}

std::string greatestOf(const PictureMap &map) {
    const std::optional<double> value = map.greatest();
    return value ? rounded(*value, 2) + " px" : "\xE2\x80\x93";
}

std::string facts(const Camera &camera, const Eigen::VectorXd &intrinsics, const CameraTrust &trust) {
    return "<dl class=\"facts\">" +
           factRow("Picture", count(camera.width) + " \xC3\x97 " + count(camera.height) + " px") +
           factRow("Model", describe(camera.lens)) + factRow("Field of view", fieldOfView(camera, intrinsics)) +
           factRow("Residual", number(trust.rms, 3) + " px rms per corner") +
           factRow("Used", count(trust.corners) + " corners in " + count(trust.photographs) + " photographs") +
           factRow("Greatest uncertainty", greatestOf(trust.uncertainty) + " at " + rounded(trust.distance, 3) +
                                               " mm, " + greatestOf(trust.uncertaintyAtInfinity) + " at infinity") +
           "</dl>\n";
}

// Cameras that the user has not named are called camera, camera-2 and so on, so their names need no "Camera" before
// them.
std::string headingOf(const std::string &name) {
    return escaped(name.rfind("camera", 0) == 0 ? "C" + name.substr(1) : "Camera " + name);
}

}  // namespace

std::string cameraSection(const Calibration &calibration, int camera) {
    const Camera &what = calibration.observations.cameras[size_t(camera)];
    std::string html = "<section class=\"camera\"><h2>" + headingOf(what.name) + "</h2>\n";
    const Estimate &estimate = calibration.estimate;
    if (size_t(camera) >= calibration.cameras.size() || size_t(camera) >= estimate.intrinsics.size() ||
        !estimate.hasCamera[size_t(camera)] || estimate.intrinsics[size_t(camera)].size() == 0) {
        return html + "<p>This camera is not calibrated: no usable photograph links it to the others.</p></section>\n";
    }
    const CameraTrust &trust = calibration.cameras[size_t(camera)];
    const Eigen::VectorXd &intrinsics = estimate.intrinsics[size_t(camera)];
    html += facts(what, intrinsics, trust);
    html += "<div class=\"figures\">\n";
    html += mapFigure(what, trust.uncertainty, "Uncertainty",
                      "The uncertainty of the projection of a point at " + rounded(trust.distance, 3) +
                          " mm: one standard deviation in px, in the direction in which it is greatest.")
                .html();
    html += mapFigure(what, trust.uncertaintyAtInfinity, "Uncertainty at infinity",
                      "The uncertainty of the projection of a point that is very far away.")
                .html();
    if (trust.halves) {
        html +=
            mapFigure(what, *trust.halves, "Difference between halves",
                      "Each half of the photographs gives a lens of its own. The difference between the two, in px, "
                      "should be about twice the uncertainty.")
                .html();
    }
    html += coverageFigure(calibration, camera).html() + residualFigure(calibration, camera).html() +
            meanResidualFigure(calibration, camera).html() + lensFigure(what, intrinsics).html();
    html += "<div class=\"tables\">\n" + parameterTable(what, intrinsics, trust) + trialTable(trust, what.lens) +
            "</div></div>\n";
    return html + "</section>\n";
}

std::string rigSection(const Calibration &calibration) {
    const Observations &observations = calibration.observations;
    const Estimate &estimate = calibration.estimate;
    std::string rows;
    for (int camera = 0; camera < int(observations.cameras.size()); camera++) {
        const int origin = rigOrigin(observations, camera);
        if (origin == camera || size_t(camera) >= estimate.cameraFromRig.size() ||
            !estimate.hasCamera[size_t(camera)]) {
            continue;
        }
        const RigidMotion &motion = estimate.cameraFromRig[size_t(camera)];
        Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(6, 6);
        if (calibration.covariance.usedCorners() > 0) {
            const Eigen::MatrixXd known = calibration.covariance.cameraFromRig(camera);
            covariance = known.rows() == 6 ? known : covariance;
        }
        const Eigen::VectorXd sigmas = covariance.diagonal().cwiseMax(0).cwiseSqrt();
        const double distance = motion.translation.norm();
        const Vector3d direction = distance > 0 ? Vector3d(motion.translation / distance) : Vector3d::Zero();
        const Eigen::Matrix3d ofTranslation = covariance.bottomRightCorner<3, 3>();
        rows += "<tr>" + cell(escaped(observations.cameras[size_t(camera)].name)) +
                cell(escaped(observations.cameras[size_t(origin)].name)) +
                numberCell(withSigma(distance, std::sqrt(std::max(0.0, direction.dot(ofTranslation * direction)))));
        for (int i = 0; i < 3; i++) {
            rows += numberCell(withSigma(motion.translation[i], sigmas[i + 3]));
        }
        for (int i = 0; i < 3; i++) {
            rows += numberCell(withSigma(motion.rotation[i] * radian, sigmas[i] * radian));
        }
        rows += "</tr>\n";
    }
    if (rows.empty()) {
        return {};
    }
    return "<section><h2>Rig</h2>\n<p>Each row has the motion that takes points from the axes of the rig's first "
           "camera to those of another camera: a rotation, given as a rotation vector, and then a translation. The "
           "baseline is the distance between the two centres of projection.</p>\n"
           "<div class=\"scroll\"><table>" +
           headings({"Camera", "Relative to", ">Baseline, mm", ">X, mm", ">Y, mm", ">Z, mm", ">About x, \xC2\xB0",
                     ">About y, \xC2\xB0", ">About z, \xC2\xB0"}) +
           "<tbody>" + rows + "</tbody></table></div></section>\n";
}

}  // namespace calibration
