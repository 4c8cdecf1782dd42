// Calibrates one camera from the points of one print. The points come as numpy arrays, which are converted here.
#include "calibration/calibrate.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <map>
#include <string>

namespace lmlib64_python {

namespace py = pybind11;
using Rows = py::array_t<double, py::array::c_style | py::array::forcecast>;

namespace {

// Collects the points of the print, one for each place. indexOf returns the index of the point at a place and adds the
// point if it is new.
class PrintedPoints {
public:
    int indexOf(double x, double y) {
        const auto [place, isNew] = indices.emplace(std::array<double, 2>{x, y}, int(print.points.size()));
        if (isNew) {
            print.points.emplace_back(x, y);
        }
        return place->second;
    }

    calibration::Print print;

private:
    std::map<std::array<double, 2>, int> indices;
};

void requireRows(const Rows &rows, py::ssize_t columns, const char *name) {
    if (rows.ndim() != 2 || rows.shape(1) != columns) {
        throw py::value_error(std::string("Each of ") + name + " must have the shape (N, " + std::to_string(columns) +
                              ").");
    }
}

void addPhotograph(const Rows &object, const Rows &image, const Rows *sigmas, PrintedPoints &points,
                   calibration::Observations &observations) {
    requireRows(object, 3, "object_points");
    requireRows(image, 2, "image_points");
    if (object.shape(0) != image.shape(0) ||
        (sigmas != nullptr && (sigmas->ndim() != 1 || sigmas->shape(0) != image.shape(0)))) {
        throw py::value_error(
            "Every photograph needs one object point for each image point. If sigmas are given, it also needs one "
            "sigma for each image point.");
    }
    const int photograph = int(observations.photographs.size());
    observations.photographs.push_back({"photograph " + std::to_string(photograph), 0, photograph});
    calibration::Sighting &sighting = observations.sightings.emplace_back();
    sighting.photograph = photograph;
    for (py::ssize_t i = 0; i < image.shape(0); ++i) {
        if (object.at(i, 2) != 0.0) {
            throw py::value_error("The third coordinate of every object point must be 0.");
        }
        calibration::SeenCorner corner;
        corner.point = points.indexOf(object.at(i, 0), object.at(i, 1));
        corner.image = {image.at(i, 0), image.at(i, 1)};
        corner.sigma = sigmas == nullptr ? 1.0 : sigmas->at(i);
        sighting.corners.push_back(corner);
    }
}

std::optional<calibration::LensModel> lensNamed(const std::string &name) {
    using calibration::LensModel;
    if (name == "auto") {
        return std::nullopt;
    }
    for (const LensModel lens :
         {LensModel::Pinhole4, LensModel::Pinhole5, LensModel::Pinhole8, LensModel::Pinhole12, LensModel::Fisheye}) {
        if (name == calibration::nameOf(lens)) {
            return lens;
        }
    }
    throw py::value_error("The lens \"" + name +
                          "\" is not known; use auto, pinhole4, pinhole5, pinhole8, pinhole12 or fisheye.");
}

py::array_t<double> arrayOf(const Eigen::VectorXd &numbers) {
    return py::array_t<double>(py::ssize_t(numbers.size()), numbers.data());
}

const char *nameOf(calibration::Grade grade) {
    switch (grade) {
        case calibration::Grade::Good:
            return "good";
        case calibration::Grade::Usable:
            return "usable";
        case calibration::Grade::Poor:
            return "poor";
    }
    return "";
}

// The rotation vector and translation of the print in each photograph; None for a photograph without a pose.
py::list posesOf(const calibration::Calibration &result) {
    py::list poses;
    for (std::size_t moment = 0; moment < result.estimate.rigFromWorld.size(); ++moment) {
        if (!result.estimate.hasMoment[moment]) {
            poses.append(py::none());
            continue;
        }
        const calibration::RigidMotion pose =
            result.estimate.cameraFromRig[0] * result.estimate.rigFromWorld[moment] * result.estimate.worldFromPrint[0];
        poses.append(py::make_tuple(arrayOf(pose.rotation), arrayOf(pose.translation)));
    }
    return poses;
}

py::dict dictionaryOf(const calibration::Calibration &result) {
    const Eigen::VectorXd &lens = result.estimate.intrinsics[0];
    py::array_t<double> matrix({3, 3});
    std::fill_n(matrix.mutable_data(), 9, 0.0);
    matrix.mutable_at(0, 0) = lens[0];
    matrix.mutable_at(1, 1) = lens[1];
    matrix.mutable_at(0, 2) = lens[2];
    matrix.mutable_at(1, 2) = lens[3];
    matrix.mutable_at(2, 2) = 1.0;
    py::dict dictionary;
    dictionary["camera_matrix"] = matrix;
    dictionary["distortion"] = arrayOf(lens.tail(lens.size() - 4));
    dictionary["lens"] = calibration::nameOf(result.observations.cameras[0].lens);
    dictionary["intrinsics_sigmas"] =
        py::array_t<double>(py::ssize_t(result.cameras[0].sigmas.size()), result.cameras[0].sigmas.data());
    dictionary["rms"] = result.cameras[0].rms;
    dictionary["poses"] = posesOf(result);
    dictionary["grade"] = nameOf(result.verdict.grade);
    dictionary["verdict"] = result.verdict.text;
    dictionary["advice"] = result.verdict.advice;
    dictionary["notices"] = result.notices;
    py::list leftOut;
    for (const calibration::LeftOut &each : result.leftOut) {
        leftOut.append(
            py::make_tuple(result.observations.sightings[std::size_t(each.sighting)].photograph, each.reason));
    }
    dictionary["left_out"] = leftOut;
    return dictionary;
}

py::dict calibrate(const std::vector<Rows> &objectPoints, const std::vector<Rows> &imagePoints,
                   std::array<int, 2> imageSize, const std::string &lens,
                   const std::optional<std::vector<Rows>> &sigmas) {
    if (objectPoints.size() != imagePoints.size() || (sigmas && sigmas->size() != imagePoints.size())) {
        throw py::value_error("object_points, image_points and sigmas must have an entry for every photograph.");
    }
    calibration::CalibrateOptions options;
    options.lens = lensNamed(lens);
    calibration::Observations observations;
    observations.cameras.push_back(
        {"camera", imageSize[0], imageSize[1], options.lens.value_or(calibration::LensModel::Pinhole5)});
    PrintedPoints points;
    points.print.name = "target";
    for (std::size_t i = 0; i < imagePoints.size(); ++i) {
        addPhotograph(objectPoints[i], imagePoints[i], sigmas ? &(*sigmas)[i] : nullptr, points, observations);
    }
    observations.prints.push_back(points.print);
    observations.moments = int(observations.photographs.size());
    const calibration::Calibration result = [&] {
        const py::gil_scoped_release released;
        return calibration::calibrate(observations, options);
    }();
    return dictionaryOf(result);
}

}  // namespace

void defineCalibration(py::module_ &module);
void defineCalibration(py::module_ &module) {
    module.def("calibrate", calibrate);
    py::register_exception<calibration::CalibrationImpossible>(module, "CalibrationImpossible", PyExc_ValueError);
}

}  // namespace lmlib64_python
