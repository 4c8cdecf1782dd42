#include "pattern_reader/printed_pattern.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/pdf_attachment.h"
#include "pattern_reader/plate_view.h"

namespace pattern_reader {

namespace {

using nlohmann::json;

constexpr int middleOfTile = 8;  // a tile's and a plate's middle in lattice coordinates

std::string contentOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("The file \"" + path + "\" cannot be opened.");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

cv::Point pointOf(const json &pair) {
    return {pair.at(0).get<int>(), pair.at(1).get<int>()};
}

// Sets the lattice coordinates of a plate's marks.
void setPlateLattice(PrintedPattern &printed) {
    if (printed.size != cv::Size(marksPerSide, marksPerSide)) {
        throw std::runtime_error("its round marks are not " + std::to_string(marksPerSide) + " x " +
                                 std::to_string(marksPerSide));
    }
    printed.kind = PatternKind::Plate;
    printed.latticeStep = 2;
    printed.firstPoint = {2, 2};
}

// Sets the lattice coordinates of a checkerboard's corners, which depend on the carrier of the code.
void setBoardLattice(const json &code, PrintedPattern &printed) {
    printed.kind = PatternKind::Board;
    printed.firstPoint = {1, 1};
    if (code.is_null()) {
        return;
    }
    const std::string carrier = code.at("Carrier").get<std::string>();
    if (carrier == "Plane") {
        printed.kind = PatternKind::Plane;
        printed.firstPoint = pointOf(code.at("PlaneSquare")) + cv::Point(1, 1);
    } else if (carrier == "Tile") {
        printed.kind = PatternKind::Tile;
        printed.tile = code.at("Tile").get<int>();
    } else {
        throw std::runtime_error("its carrier \"" + carrier + "\" is not known");
    }
}

void setLattice(const json &pattern, PrintedPattern &printed) {
    const std::string kind = pattern.at("Kind").get<std::string>();
    if (kind == "RoundMarks") {
        setPlateLattice(printed);
    } else if (kind == "Checkerboard") {
        setBoardLattice(pattern.at("Code"), printed);
    } else {
        throw std::runtime_error("its kind \"" + kind + "\" is not known");
    }
}

PrintedPattern parsePattern(const json &pattern) {
    PrintedPattern printed;
    const cv::Point size = pointOf(pattern.at("LatticeSize"));
    printed.size = {size.x, size.y};
    setLattice(pattern, printed);
    printed.gridSpacing = pattern.at("LatticePitch").get<double>() * 2 / printed.latticeStep;
    for (const json &point : pattern.at("Points")) {
        printed.points.emplace_back(point.at(2).get<double>(), point.at(3).get<double>());
    }
    if (size.x < 1 || size.y < 1 || printed.points.size() != size_t(size.x) * size_t(size.y)) {
        throw std::runtime_error("the number of its points does not match its lattice size");
    }
    return printed;
}

std::vector<PrintedPattern> parse(const std::string &text) {
    const json document = json::parse(text);
    if (document.at("Format") != "LmLib64Pattern" || document.at("Version") != 1) {
        throw std::runtime_error("its format or version is not known");
    }
    std::vector<PrintedPattern> patterns;
    for (const json &pattern : document.at("Patterns")) {
        patterns.push_back(parsePattern(pattern));
    }
    return patterns;
}

// Returns the index of the point with these lattice coordinates, or -1 if there is no such point.
int pointNumber(const PrintedPattern &pattern, cv::Point lattice) {
    const cv::Point steps = lattice - pattern.firstPoint;
    if (steps.x < 0 || steps.y < 0 || steps.x % pattern.latticeStep != 0 || steps.y % pattern.latticeStep != 0) {
        return -1;
    }
    const cv::Point place = steps / pattern.latticeStep;
    return place.x < pattern.size.width && place.y < pattern.size.height ? place.y * pattern.size.width + place.x : -1;
}

// True if the information block was read and contradicts the pattern.
bool contradicts(const PatternReading &reading, const PrintedPattern &pattern) {
    const double tolerance = 1e-6 * pattern.gridSpacing;
    if (!reading.values) {
        return false;
    }
    if (reading.values->gridSpacing && std::abs(*reading.values->gridSpacing - pattern.gridSpacing) > tolerance) {
        return true;
    }
    // The middle mark of a plate lies at the plate's offset.
    const cv::Point2d middle = pattern.points[pattern.points.size() / 2];
    return reading.kind == PatternKind::Plate && reading.values->offset &&
           cv::norm(cv::Point2d(*reading.values->offset) * pattern.gridSpacing - middle) > tolerance;
}

std::optional<std::vector<cv::Point3d>> pointsOn(const PrintedPattern &pattern, const PatternReading &reading) {
    if (reading.kind != pattern.kind || reading.tile != pattern.tile || contradicts(reading, pattern)) {
        return std::nullopt;
    }
    std::vector<cv::Point3d> points;
    for (const PatternCorner &corner : reading.corners) {
        const int number = pointNumber(pattern, corner.lattice);
        if (number < 0) {
            return std::nullopt;
        }
        const cv::Point2d point = pattern.points[size_t(number)];
        points.emplace_back(point.x, point.y, 0);
    }
    return points;
}

cv::Point originOf(PatternKind kind) {
    switch (kind) {
        case PatternKind::Plane:
            return {pattern_code::planeOrigin, pattern_code::planeOrigin};
        case PatternKind::Tile:
        case PatternKind::Plate:
            return {middleOfTile, middleOfTile};
        case PatternKind::Board:
            return {1, 1};
    }
    return {};
}

}  // namespace

std::vector<PrintedPattern> loadPrintedPatterns(const std::string &path) {
    const std::string content = contentOf(path);
    try {
        const bool isPdf = content.compare(0, 5, "%PDF-") == 0;
        return parse(isPdf ? attachedPattern(content) : content);
    } catch (const std::exception &error) {
        throw std::runtime_error("The file \"" + path + "\" does not describe a pattern: " + error.what() + ".");
    }
}

std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading,
                                                     const std::vector<PrintedPattern> &patterns) {
    std::optional<std::vector<cv::Point3d>> found;
    for (const PrintedPattern &pattern : patterns) {
        std::optional<std::vector<cv::Point3d>> points = pointsOn(pattern, reading);
        if (points && found && *points != *found) {
            return std::nullopt;
        }
        if (points) {
            found = std::move(points);
        }
    }
    return found;
}

std::vector<cv::Point3d> objectPoints(const PatternReading &reading, double gridSpacing) {
    cv::Point2d shift;
    if (reading.kind == PatternKind::Plate && reading.values && reading.values->offset) {
        shift = cv::Point2d(*reading.values->offset) * gridSpacing;
    }
    std::vector<cv::Point3d> points;
    points.reserve(reading.corners.size());
    for (const PatternCorner &corner : reading.corners) {
        const cv::Point2d point = cv::Point2d(corner.lattice - originOf(reading.kind)) * (gridSpacing / 2) + shift;
        points.emplace_back(point.x, point.y, 0);
    }
    return points;
}

}  // namespace pattern_reader
