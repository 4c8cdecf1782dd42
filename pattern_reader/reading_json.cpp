#include "pattern_reader/reading_json.h"

#include <cmath>

#include "pattern_reader/pattern_kind_name.h"

namespace pattern_reader {

namespace {

double rounded(double value, double step) {
    return std::round(value / step) * step;
}

nlohmann::ordered_json toJson(const PatternValues &values) {
    nlohmann::ordered_json json;
    json["version"] = values.version;
    if (values.gridSpacing) {
        json["gridSpacing"] = *values.gridSpacing;
    }
    if (values.thickness) {
        json["thickness"] = *values.thickness;
    }
    if (values.offset) {
        json["offset"] = {values.offset->x, values.offset->y};
    }
    if (values.assemblyPattern) {
        json["assemblyPattern"] = *values.assemblyPattern;
    }
    return json;
}

// Adds the values that the marks encode, and numbers that show how well the marks agree with the pattern's code.
void addCode(const PatternReading &reading, nlohmann::ordered_json &json) {
    if (reading.kind == PatternKind::Board) {
        return;
    }
    json["values"] = reading.values ? toJson(*reading.values) : nlohmann::ordered_json();
    json["blockBytes"] = reading.blockBytes;
    json["correctedBits"] = reading.correctedBits;
    json["filledBits"] = reading.filledBits;
    json["squaresCompared"] = reading.squaresCompared;
    json["squaresDiffering"] = reading.squaresDiffering;
    json["log10Chance"] = rounded(reading.log10Chance, 0.1);
}

nlohmann::ordered_json toJson(const PatternCorner &corner, const cv::Point3d *objectPoint) {
    nlohmann::ordered_json json = {{"lattice", {corner.lattice.x, corner.lattice.y}},
                                   {"image", {rounded(corner.image.x, 0.0001), rounded(corner.image.y, 0.0001)}},
                                   {"sigma", rounded(corner.sigma, 0.0001)}};
    if (objectPoint != nullptr) {
        // Multiplications leave floating-point errors in the last digits of a coordinate. Rounding to nanometres
        // removes these digits.
        json["object"] = {rounded(objectPoint->x, 1e-6), rounded(objectPoint->y, 1e-6), rounded(objectPoint->z, 1e-6)};
    }
    if (corner.disturbed) {
        json["disturbed"] = true;
    }
    return json;
}

}  // namespace

nlohmann::ordered_json toJson(const PatternReading &reading, const std::vector<cv::Point3d> *objectPoints) {
    nlohmann::ordered_json json;
    json["kind"] = nameOf(reading.kind);
    if (reading.kind == PatternKind::Tile) {
        json["tile"] = reading.tile;
    }
    json["quarterTurns"] = reading.quarterTurns;
    json["angle"] = rounded(reading.angle, 0.001);
    if (reading.kind == PatternKind::Board) {
        json["orientations"] = reading.orientations;
    }
    if (reading.kind != PatternKind::Plate) {
        json["evenSquaresDark"] = reading.evenSquaresDark;
        json["topLeftSquareDark"] = reading.topLeftSquareDark;
    }
    addCode(reading, json);
    json["confidence"] = reading.confidence;
    json["corners"] = nlohmann::ordered_json::array();
    for (size_t i = 0; i < reading.corners.size(); i++) {
        json["corners"].push_back(toJson(reading.corners[i], objectPoints != nullptr ? &(*objectPoints)[i] : nullptr));
    }
    return json;
}

}  // namespace pattern_reader
