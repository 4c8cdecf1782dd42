#include "camera_library/output/pattern_json.h"

#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>

#include "camera_library/output/pattern_text.h"

namespace lmlib64 {

namespace {

using Json = nlohmann::ordered_json;

constexpr int formatVersion = 1;

// Products of the grid spacing, freed of the last digits that rounding left in them: whole nanometres.
double length(double mm) {
    return std::round(mm * 1e6) / 1e6 + 0.0;  // + 0.0: no negative zero
}

Json parametersOf(const PatternDescription &description) {
    Json parameters = Json::object();
    if (!description.type.empty()) {
        parameters["Type"] = description.type;
    }
    if (description.kind == PatternKind::Flexible) {
        parameters["GridSize"] = description.gridSize;
    }
    if (description.assemblyNumber) {
        parameters["AssemblyPattern"] = *description.assemblyNumber;
    }
    parameters["GridSpacing"] = description.gridSpacing;
    parameters["Thickness"] = description.thickness;
    if (description.kind == PatternKind::Flexible || description.kind == PatternKind::Halcon) {
        parameters["Offset"] = description.offset;
    }
    parameters["Polarity"] = description.polarity;
    if (description.kind == PatternKind::Halcon) {
        parameters["Encoding"] = description.encoding;
    }
    return parameters;
}

// The lattice point that lies at the offset, in drawing coordinates.
Point referencePoint(const Lattice &lattice) {
    return lattice.at(lattice.referenceColumn(), lattice.referenceRow());
}

Json pointsOf(const PatternDescription &description, const Lattice &lattice) {
    const Point reference = referencePoint(lattice);
    Json points = Json::array();
    for (int row = 0; row < lattice.rows; ++row) {
        for (int column = 0; column < lattice.columns; ++column) {
            const Point point = lattice.at(column, row);
            points.push_back({column, row, length(point.x - reference.x + description.offset[0]),
                              length(point.y - reference.y + description.offset[1])});
        }
    }
    return points;
}

Json patternOf(const PatternDescription &description, const PatternGeometry &geometry) {
    const Lattice &lattice = geometry.lattice;
    const Point reference = referencePoint(lattice);
    Json pattern;
    pattern["Kind"] = description.kind == PatternKind::Halcon ? "RoundMarks" : "Checkerboard";
    pattern["Parameters"] = parametersOf(description);
    pattern["Polarity"] = description.polarity;
    pattern["OuterSize"] = {length(geometry.width), length(geometry.height)};
    pattern["QuietZone"] = length(geometry.quietZone);
    pattern["SquareSide"] = length(geometry.squareSide);
    pattern["TopLeft"] = {length(description.offset[0] - reference.x), length(description.offset[1] - reference.y)};
    pattern["LatticeSize"] = {lattice.columns, lattice.rows};
    pattern["LatticePitch"] = length(lattice.pitch);
    pattern["ReferenceIndex"] = {lattice.referenceColumn(), lattice.referenceRow()};
    pattern["Points"] = pointsOf(description, lattice);
    return pattern;
}

bool isLeafOrRow(const Json &value) {
    if (!value.is_array()) {
        return !value.is_object();
    }
    for (const Json &element : value) {
        if (element.is_structured()) {
            return false;
        }
    }
    return true;
}

// Like dump with an indentation, but arrays of plain values stay on one line: a point per line, not four.
void writeIndented(std::string &text, const Json &value, std::size_t depth) {
    if (isLeafOrRow(value) || value.empty()) {
        text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return;
    }
    const bool isObject = value.is_object();
    text += isObject ? "{" : "[";
    bool isFirst = true;
    for (const auto &item : value.items()) {
        text += isFirst ? "\n" : ",\n";
        isFirst = false;
        text.append(2 * (depth + 1), ' ');
        if (isObject) {
            text += '"' + item.key() + "\": ";
        }
        writeIndented(text, item.value(), depth + 1);
    }
    text += '\n';
    text.append(2 * depth, ' ');
    text += isObject ? "}" : "]";
}

}  // namespace

std::string patternJson(const PatternRequest &request, const std::vector<PatternGeometry> &geometries) {
    Json document;
    document["Format"] = "LmLib64Pattern";
    document["Version"] = formatVersion;
    document["Library"] = libraryName();
    document["Unit"] = "mm";
    document["Axes"] =
        "x to the right, y down, as seen on the printed side; the reference point lies at the offset, 0 where a "
        "pattern has none";
    document["PointColumns"] = {"Column", "Row", "X", "Y"};
    document["Encoding"] = request.encoding;
    document["Patterns"] = Json::array();
    for (std::size_t index = 0; index < request.patterns.size(); ++index) {
        document["Patterns"].push_back(patternOf(request.patterns[index], geometries[index]));
    }
    std::string text;
    writeIndented(text, document, 0);
    return text + '\n';
}

}  // namespace lmlib64
