#include <nlohmann/json.hpp>

#include "calibration/output/assembly.h"
#include "calibration/output/json_layout.h"
#include "calibration/output/number_text.h"
#include "calibration/output/result_files.h"

namespace calibration {

namespace {

using nlohmann::ordered_json;

constexpr int formatVersion = 1;
constexpr int nanometres = 6;  // decimal places of a length in mm that is rounded to nanometres

ordered_json numberOf(const Print &print) {
    return print.number < 0 ? ordered_json() : ordered_json(print.number);
}

ordered_json rowsOf(const Eigen::Matrix3d &matrix) {
    ordered_json rows = ordered_json::array();
    for (int row = 0; row < 3; row++) {
        rows.push_back({matrix(row, 0) + 0.0, matrix(row, 1) + 0.0, matrix(row, 2) + 0.0});
    }
    return rows;
}

ordered_json patternJson(const AssemblyPattern &pattern, const Calibration &calibration) {
    ordered_json json;
    json["Number"] = numberOf(calibration.observations.prints[size_t(pattern.print)]);
    json["Name"] = calibration.observations.prints[size_t(pattern.print)].name;
    json["Rotation"] = rowsOf(pattern.rotation);
    json["Translation"] = {rounded(pattern.translation.x(), nanometres), rounded(pattern.translation.y(), nanometres),
                           rounded(pattern.translation.z(), nanometres)};
    json["PrintScale"] = {pattern.scale.x(), pattern.scale.y()};
    ordered_json points = ordered_json::array();
    for (const AssemblyPoint &point : pattern.points) {
        points.push_back({point.cell.x(), point.cell.y(), rounded(point.place.x(), nanometres),
                          rounded(point.place.y(), nanometres), rounded(point.place.z(), nanometres),
                          rounded(point.sigma, nanometres)});
    }
    json["Points"] = std::move(points);
    return json;
}

}  // namespace

std::string assemblyJson(const Calibration &calibration, const ResultNotes &notes) {
    ordered_json json;
    json["Format"] = "LmCalTabAssembly";
    json["Version"] = formatVersion;
    json["Program"] = notes.program;
    json["Unit"] = "mm";
    json["Axes"] = notes.axes ? "defined by three corners: origin, x axis, positive y side"
                              : "those of the first pattern's file: x to the right, y down as seen on the printed "
                                "side, z into the plate";
    json["PointColumns"] = {"Column", "Row", "X", "Y", "Z", "Sigma"};
    ordered_json patterns = ordered_json::array();
    for (const AssemblyPattern &pattern : assemblyOf(calibration, notes.axes)) {
        patterns.push_back(patternJson(pattern, calibration));
    }
    json["Patterns"] = std::move(patterns);
    const int group = calibration.firstGroup();
    ordered_json others = ordered_json::array();
    for (size_t print = 0; print < calibration.observations.prints.size(); print++) {
        if (calibration.estimate.groups[print] != group) {
            others.push_back(calibration.observations.prints[print].name);
        }
    }
    json["NotLinked"] = std::move(others);
    return layOut(json);
}

}  // namespace calibration
