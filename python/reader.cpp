// Converts the reader's results to dictionaries of numpy arrays.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <optional>
#include <string>

#include "pattern_reader/pattern_kind_name.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/printed_pattern.h"
#include "python/numpy_image.h"

namespace lmlib64_python {

namespace py = pybind11;
using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

namespace {

py::object valuesOf(const PatternReading &reading) {
    if (!reading.values) {
        return py::none();
    }
    py::dict values;
    if (reading.values->gridSpacing) {
        values["grid_spacing"] = *reading.values->gridSpacing;
    }
    if (reading.values->thickness) {
        values["thickness"] = *reading.values->thickness;
    }
    if (reading.values->offset) {
        values["offset"] = py::make_tuple(reading.values->offset->x, reading.values->offset->y);
    }
    if (reading.values->assemblyPattern) {
        values["assembly_pattern"] = *reading.values->assemblyPattern;
    }
    return std::move(values);
}

py::object arrayOf(const std::optional<std::vector<cv::Point3d>> &points) {
    if (!points) {
        return py::none();
    }
    py::array_t<double> array({py::ssize_t(points->size()), py::ssize_t(3)});
    auto rows = array.mutable_unchecked<2>();
    for (py::ssize_t i = 0; i < rows.shape(0); ++i) {
        const cv::Point3d &point = (*points)[size_t(i)];
        rows(i, 0) = point.x;
        rows(i, 1) = point.y;
        rows(i, 2) = point.z;
    }
    return std::move(array);
}

py::dict dictionaryOf(const PatternReading &reading, const std::optional<std::vector<cv::Point3d>> &points) {
    const auto count = py::ssize_t(reading.corners.size());
    py::array_t<double> image({count, py::ssize_t(2)});
    py::array_t<int> lattice({count, py::ssize_t(2)});
    py::array_t<double> sigmas(count);
    py::array_t<bool> disturbed(count);
    for (py::ssize_t i = 0; i < count; ++i) {
        const pattern_reader::PatternCorner &corner = reading.corners[size_t(i)];
        image.mutable_at(i, 0) = corner.image.x;
        image.mutable_at(i, 1) = corner.image.y;
        lattice.mutable_at(i, 0) = corner.lattice.x;
        lattice.mutable_at(i, 1) = corner.lattice.y;
        sigmas.mutable_at(i) = corner.sigma;
        disturbed.mutable_at(i) = corner.disturbed;
    }
    py::dict result;
    result["kind"] = pattern_reader::nameOf(reading.kind);
    result["tile"] = reading.tile >= 0 ? py::object(py::int_(reading.tile)) : py::none();
    result["image_points"] = image;
    result["object_points"] = arrayOf(points);
    result["lattice"] = lattice;
    result["sigmas"] = sigmas;
    result["disturbed"] = disturbed;
    result["angle"] = reading.angle;
    result["orientations"] = reading.orientations;
    result["values"] = valuesOf(reading);
    result["confidence"] = reading.confidence;
    return result;
}

// Returns the object points of a reading. They come from a pattern file if one matches, otherwise from the grid spacing
// in the pattern's information block, otherwise from the caller's grid spacing. A plain board has no information block,
// and its grid spacing is twice the caller's `square`. The result is empty if no pattern file matches and the grid
// spacing is not known. The program read_pattern does the same.
std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading,
                                                     const std::vector<pattern_reader::PrintedPattern> &patterns,
                                                     std::optional<double> gridSpacing, std::optional<double> square) {
    if (auto points = pattern_reader::objectPoints(reading, patterns)) {
        return points;
    }
    if (reading.kind == PatternKind::Board) {
        gridSpacing = square ? std::optional(2 * *square) : std::nullopt;
    } else if (reading.values && reading.values->gridSpacing) {
        gridSpacing = reading.values->gridSpacing;
    }
    return gridSpacing ? std::optional(pattern_reader::objectPoints(reading, *gridSpacing)) : std::nullopt;
}

py::list readPatterns(const py::array &picture, const std::vector<std::string> &patternFiles,
                      std::optional<double> gridSpacing, const std::optional<std::array<int, 2>> &board,
                      std::optional<double> square) {
    const NumpyImage image(picture);
    pattern_reader::ReadingOptions options;
    if (board) {
        options.board = cv::Size((*board)[0], (*board)[1]);
    }
    std::vector<pattern_reader::PrintedPattern> patterns;
    std::vector<PatternReading> readings;
    {
        const py::gil_scoped_release released;
        for (const std::string &file : patternFiles) {
            for (pattern_reader::PrintedPattern &pattern : pattern_reader::loadPrintedPatterns(file)) {
                patterns.push_back(std::move(pattern));
            }
        }
        readings = pattern_reader::readPatterns(image.matrix, options);
    }
    py::list list;
    for (const PatternReading &reading : readings) {
        list.append(dictionaryOf(reading, objectPoints(reading, patterns, gridSpacing, square)));
    }
    return list;
}

}  // namespace

void defineReader(py::module_ &module);
void defineReader(py::module_ &module) {
    module.def("read_patterns", readPatterns);
}

}  // namespace lmlib64_python
