#include "calibration/input/corner_list.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "calibration/input/camera_groups.h"
#include "calibration/wording.h"
#include "pattern_reader/picture_header.h"

namespace calibration {

namespace {

constexpr int greatestLevel = 20;

[[noreturn]] void fail(const std::string &path, int line, const std::string &problem) {
    throw std::runtime_error("The corner list \"" + path + "\" is wrong in line " + std::to_string(line) + ": " +
                             problem + ".");
}

// Converts the text to a number, independently of the locale. Returns false unless the whole text is one finite number.
bool parse(const std::string &text, double &value) {
    const char *end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end && std::isfinite(value);
}

// Reads the columns x, y and level, of which the last may be absent. The corner is not seen if one of these columns is
// "-".
ListedCorner cornerOf(const std::vector<std::string> &columns, const std::string &path, int line) {
    ListedCorner corner;
    if (columns[1] == "-" || columns[2] == "-" || (columns.size() > 3 && columns[3] == "-")) {
        return corner;
    }
    double level = 0;
    if (!parse(columns[1], corner.image.x()) || !parse(columns[2], corner.image.y()) ||
        (columns.size() > 3 && !parse(columns[3], level))) {
        fail(path, line, "x, y and level must be numbers or \"-\"");
    }
    // Some detectors write a negative level for a corner that does not count.
    corner.isSeen = level >= 0 && level <= greatestLevel;
    corner.level = corner.isSeen ? int(level) : 0;
    return corner;
}

// Returns the words of a line, without its comment.
std::vector<std::string> columnsOf(const std::string &line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::vector<std::string> columns;
    for (std::string word; words >> word;) {
        columns.push_back(word);
    }
    return columns;
}

Print boardPrint(const ListedBoard &board) {
    Print print;
    print.name = "the board";
    for (int row = 0; row < board.rows; row++) {
        for (int column = 0; column < board.columns; column++) {
            print.points.emplace_back(column * board.square, row * board.square);
            print.cells.emplace_back(column, row);
        }
    }
    return print;
}

std::vector<SeenCorner> seenCorners(const ListedPhotograph &photograph) {
    std::vector<SeenCorner> corners;
    for (size_t i = 0; i < photograph.corners.size(); i++) {
        const ListedCorner &corner = photograph.corners[i];
        if (corner.isSeen) {
            corners.push_back({int(i), corner.image, listedSigma * std::exp2(corner.level), true});
        }
    }
    return corners;
}

// Returns the reason why a photograph cannot be used; empty if it can.
std::string faultOf(const ListedPhotograph &photograph, const Print &board) {
    const std::vector<SeenCorner> corners = seenCorners(photograph);
    if (corners.empty()) {
        return "No board was found in it.";
    }
    if (photograph.corners.size() != board.points.size()) {
        return "It has " + counted(std::ptrdiff_t(photograph.corners.size()), "corner") +
               " in the list, but the board has " + std::to_string(board.points.size()) + ".";
    }
    for (const SeenCorner &corner : corners) {
        if (corner.image.minCoeff() < -1 || corner.image.x() > photograph.width ||
            corner.image.y() > photograph.height) {
            return "A corner lies outside the picture of " + std::to_string(photograph.width) + " x " +
                   std::to_string(photograph.height) + " pixels.";
        }
    }
    return {};
}

}  // namespace

std::vector<ListedPhotograph> loadCornerList(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("The corner list \"" + path + "\" cannot be opened.");
    }
    std::vector<ListedPhotograph> photographs;
    std::map<std::string, size_t> known;
    std::string text;
    for (int line = 1; std::getline(file, text); line++) {
        const std::vector<std::string> columns = columnsOf(text);
        if (columns.empty()) {
            continue;
        }
        if (columns.size() < 3 || columns.size() > 4) {
            fail(path, line, "the columns must be filename, x, y and, optionally, level");
        }
        const auto [place, isNew] = known.try_emplace(columns[0], photographs.size());
        if (isNew) {
            photographs.emplace_back();
            photographs.back().name = columns[0];
        }
        photographs[place->second].corners.push_back(cornerOf(columns, path, line));
    }
    if (photographs.empty()) {
        throw std::runtime_error("The corner list \"" + path + "\" has no corners.");
    }
    return photographs;
}

void findPictureSize(ListedPhotograph &photograph, const std::string &listPath) {
    const std::filesystem::path name = std::filesystem::u8path(photograph.name);
    const std::filesystem::path folder = std::filesystem::u8path(listPath).parent_path();
    for (const auto &path : {name, folder / name, folder / name.filename()}) {
        std::ifstream file(path, std::ios::binary);
        const auto size = file ? pattern_reader::declaredSize(file) : std::nullopt;
        if (size && !size->exceeds(pattern_reader::maximumPixels)) {
            photograph.width = int(size->width);
            photograph.height = int(size->height);
            return;
        }
    }
}

CollectedObservations collectObservations(const std::vector<ListedPhotograph> &photographs, const ListedBoard &board,
                                          bool isRig) {
    CollectedObservations collected;
    Observations &observations = collected.observations;
    std::vector<PhotographOrigin> origins;
    std::vector<std::string> paths;
    for (const ListedPhotograph &photograph : photographs) {
        origins.push_back({photograph.name, photograph.camera, "", photograph.width, photograph.height});
        paths.push_back(photograph.name);
    }
    const CameraGroups groups = groupByCamera(origins);
    const std::vector<int> moments = isRig ? momentsOfRig(paths, groups.cameraOf) : std::vector<int>();
    observations.cameras = groups.cameras;
    observations.prints = {boardPrint(board)};
    for (size_t i = 0; i < photographs.size(); i++) {
        std::string reason = groups.reasons[i].empty() ? "" : "It " + groups.reasons[i] + ".";
        if (reason.empty()) {
            reason = photographs[i].width <= 0 ? "The size of its picture is not known."
                                               : faultOf(photographs[i], observations.prints.front());
        }
        if (!reason.empty()) {
            collected.unused.push_back({photographs[i].name, reason});
            continue;
        }
        const int moment = isRig ? moments[i] : int(i);
        observations.photographs.push_back({photographs[i].name, groups.cameraOf[i], moment});
        observations.sightings.push_back(
            {int(observations.photographs.size()) - 1, 0, true, seenCorners(photographs[i])});
    }
    dropUnseen(observations);
    return collected;
}

}  // namespace calibration
