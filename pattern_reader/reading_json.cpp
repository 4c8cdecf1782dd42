#include "pattern_reader/reading_json.h"

#include <cmath>

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

const char *nameOf(PatternKind kind) {
    switch (kind) {
        case PatternKind::Plane:
            return "plane";
        case PatternKind::Tile:
            return "tile";
        default:
            return "plate";
    }
}

}  // namespace

nlohmann::ordered_json toJson(const PatternReading &reading) {
    nlohmann::ordered_json json;
    json["kind"] = nameOf(reading.kind);
    if (reading.kind == PatternKind::Tile) {
        json["tile"] = reading.tile;
    }
    json["quarterTurns"] = reading.quarterTurns;
    json["angle"] = rounded(reading.angle, 0.001);
    if (reading.kind != PatternKind::Plate) {
        json["evenSquaresDark"] = reading.evenSquaresDark;
        json["topLeftSquareDark"] = reading.topLeftSquareDark;
    }
    json["values"] = reading.values ? toJson(*reading.values) : nlohmann::ordered_json();
    json["blockBytes"] = reading.blockBytes;
    json["correctedBits"] = reading.correctedBits;
    json["filledBits"] = reading.filledBits;
    json["squaresCompared"] = reading.squaresCompared;
    json["squaresDiffering"] = reading.squaresDiffering;
    json["confidence"] = reading.confidence;
    json["log10Chance"] = rounded(reading.log10Chance, 0.1);
    json["corners"] = nlohmann::ordered_json::array();
    for (const PatternCorner &corner : reading.corners) {
        nlohmann::ordered_json entry = {{"lattice", {corner.lattice.x, corner.lattice.y}},
                                        {"image", {rounded(corner.image.x, 0.0001), rounded(corner.image.y, 0.0001)}},
                                        {"sigma", rounded(corner.sigma, 0.0001)}};
        if (corner.disturbed) {
            entry["disturbed"] = true;
        }
        json["corners"].push_back(std::move(entry));
    }
    return json;
}

}  // namespace pattern_reader
