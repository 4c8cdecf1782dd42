#include "calibration/input/photograph_observations.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "calibration/input/camera_groups.h"
#include "calibration/wording.h"

namespace calibration {

namespace {

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

// Makes a sentence of a reason: "shows pattern 3" becomes "It shows pattern 3."
std::string sentence(const std::string &reason) {
    return "It " + reason + ".";
}

// Returns the reason why no reading of a photograph can be used; empty if there is no such reason.
std::string faultOf(const ReadPhotograph &photograph) {
    if (!photograph.error.empty()) {
        return photograph.error;
    }
    if (photograph.isTruncated) {
        return "The file is cut off before the end of its picture. Copy it again.";
    }
    return photograph.readings.empty() ? "No pattern was found in it." : "";
}

// Returns for each photograph whether the same file was given before.
std::vector<bool> repeatedFiles(const std::vector<ReadPhotograph> &photographs) {
    std::set<std::string> known;
    std::vector<bool> isRepeated;
    for (const ReadPhotograph &photograph : photographs) {
        std::error_code error;
        const auto path = std::filesystem::weakly_canonical(std::filesystem::u8path(photograph.file.path), error);
        isRepeated.push_back(!known.insert(error ? photograph.file.path : path.u8string()).second);
    }
    return isRepeated;
}

CameraGroups groupsOf(const std::vector<ReadPhotograph> &photographs) {
    std::vector<PhotographOrigin> origins;
    origins.reserve(photographs.size());
    for (const ReadPhotograph &photograph : photographs) {
        origins.push_back(
            {photograph.file.path, photograph.file.camera, photograph.exifCamera, photograph.width, photograph.height});
    }
    return groupByCamera(origins);
}

std::vector<int> momentsOf(const std::vector<ReadPhotograph> &photographs, const CameraGroups &groups, bool isRig) {
    std::vector<int> moments(photographs.size());
    if (!isRig) {
        for (size_t i = 0; i < moments.size(); i++) {
            moments[i] = int(i);
        }
        return moments;
    }
    std::vector<std::string> paths;
    paths.reserve(photographs.size());
    for (const ReadPhotograph &photograph : photographs) {
        paths.push_back(photograph.file.path);
    }
    return momentsOfRig(paths, groups.cameraOf);
}

Sighting sightingOf(const PatternReading &reading, const PrintCatalogue::Match &match, int photograph) {
    Sighting sighting;
    sighting.photograph = photograph;
    sighting.print = match.print;
    for (size_t i = 0; i < reading.corners.size(); i++) {
        const pattern_reader::PatternCorner &corner = reading.corners[i];
        if (corner.sigma > 0) {
            sighting.corners.push_back(
                {match.corners[i], {corner.image.x, corner.image.y}, corner.sigma, !corner.disturbed});
        }
    }
    return sighting;
}

// Returns the area of the rectangle around a reading, in square pixels.
double areaOf(const PatternReading &reading) {
    Eigen::Vector2d least(1e9, 1e9);
    Eigen::Vector2d most(-1e9, -1e9);
    for (const pattern_reader::PatternCorner &corner : reading.corners) {
        const Eigen::Vector2d image(corner.image.x, corner.image.y);
        least = least.cwiseMin(image);
        most = most.cwiseMax(image);
    }
    return reading.corners.empty() ? 0 : (most - least).prod();
}

// True if the reading is a plain board that is much smaller than another one in the same photograph. Such a reading
// is treated as texture in the background: because plain boards have no marks, texture can look like a small plain
// board.
bool isTextureBeside(const PatternReading &reading, const ReadPhotograph &photograph) {
    constexpr double timesLarger = 8;
    return reading.kind == PatternKind::Board &&
           std::any_of(photograph.readings.begin(), photograph.readings.end(), [&](const PatternReading &other) {
               return other.kind == PatternKind::Board && areaOf(other) > timesLarger * areaOf(reading);
           });
}

// The prints in one photograph. A print is left out if the photograph shows it more than once, or if none of its
// corners was measured.
struct Shown {
    std::vector<Sighting> sightings;
    // Why readings are not used. Texture, and readings without a measured corner, add no reason.
    std::vector<std::string> reasons;
    std::vector<int> repeated;  // prints that the photograph shows more than once
};

Shown shownBy(const ReadPhotograph &photograph, const PrintCatalogue &catalogue, int index) {
    Shown shown;
    std::map<int, int> counts;
    for (const PatternReading &reading : photograph.readings) {
        if (isTextureBeside(reading, photograph)) {
            continue;
        }
        const PrintCatalogue::Match match = catalogue.match(reading);
        if (match.print < 0) {
            shown.reasons.push_back(match.reason);
            continue;
        }
        counts[match.print]++;
        shown.sightings.push_back(sightingOf(reading, match, index));
    }
    for (const auto &[print, count] : counts) {
        if (count > 1) {
            shown.repeated.push_back(print);
            // This is the first reason, because an unused photograph is named with its first reason only.
            shown.reasons.insert(shown.reasons.begin(), "shows " + catalogue.prints()[size_t(print)].name + " in " +
                                                            std::to_string(count) +
                                                            " places, so it is not known which of them is meant");
        }
    }
    const auto isTwice = [&](const Sighting &sighting) {
        return counts[sighting.print] > 1 || sighting.corners.empty();
    };
    shown.sightings.erase(std::remove_if(shown.sightings.begin(), shown.sightings.end(), isTwice),
                          shown.sightings.end());
    return shown;
}

// Adds a notice for each print that has no sighting and is not in `isSeen`. If there are no sightings at all, the
// calibration itself says so.
void noteUnseenPrints(const Observations &observations, std::vector<bool> isSeen, std::vector<std::string> &notices) {
    for (const Sighting &sighting : observations.sightings) {
        isSeen[size_t(sighting.print)] = true;
    }
    for (size_t i = 0; i < isSeen.size() && !observations.sightings.empty(); i++) {
        if (!isSeen[i]) {
            notices.push_back(capitalised(observations.prints[i].name) + " is in no photograph.");
        }
    }
}

void noteUnseenCameras(const Observations &observations, std::vector<std::string> &notices) {
    for (size_t i = 0; i < observations.cameras.size() && !observations.sightings.empty(); i++) {
        const auto isOfCamera = [&](const Photograph &photograph) { return photograph.camera == int(i); };
        if (std::none_of(observations.photographs.begin(), observations.photographs.end(), isOfCamera)) {
            notices.push_back("No photograph of " + observations.cameras[i].name +
                              " shows a pattern, so this camera is left out.");
        }
    }
}

// Adds a notice if the photographs show a plain board that looks the same after a turn.
void noteAmbiguousBoard(const std::vector<ReadPhotograph> &photographs, std::vector<std::string> &notices) {
    for (const ReadPhotograph &photograph : photographs) {
        for (const PatternReading &reading : photograph.readings) {
            if (reading.kind == PatternKind::Board && reading.orientations > 1) {
                notices.emplace_back(
                    "The board looks the same after a turn, so the photographs do not show which way up it is. It is "
                    "assumed that its rows of corners run from left to right in every photograph. If cameras are fixed "
                    "to each other or the board is bent, this must be true: hold the board the same way up in all "
                    "photographs.");
                return;
            }
        }
    }
}

// Returns the new number of each index: the used ones are numbered from 0 in the same order, and the others get -1.
std::vector<int> renumbering(std::vector<bool> isUsed) {
    std::vector<int> numbers(isUsed.size(), -1);
    int next = 0;
    for (size_t i = 0; i < isUsed.size(); i++) {
        numbers[i] = isUsed[i] ? next++ : -1;
    }
    return numbers;
}

template <typename T>
void keepNumbered(std::vector<T> &list, const std::vector<int> &numbers) {
    std::vector<T> kept;
    for (size_t i = 0; i < list.size(); i++) {
        if (numbers[i] >= 0) {
            kept.push_back(std::move(list[i]));
        }
    }
    list = std::move(kept);
}

}  // namespace

void dropUnseen(Observations &observations) {
    std::vector<bool> cameras(observations.cameras.size(), false);
    std::vector<bool> prints(observations.prints.size(), false);
    std::map<int, int> moments;
    for (const Sighting &sighting : observations.sightings) {
        prints[size_t(sighting.print)] = true;
    }
    for (const Photograph &photograph : observations.photographs) {
        cameras[size_t(photograph.camera)] = true;
        moments.try_emplace(photograph.moment, int(moments.size()));
    }
    const std::vector<int> cameraNumbers = renumbering(cameras);
    const std::vector<int> printNumbers = renumbering(prints);
    keepNumbered(observations.cameras, cameraNumbers);
    keepNumbered(observations.prints, printNumbers);
    for (Sighting &sighting : observations.sightings) {
        sighting.print = printNumbers[size_t(sighting.print)];
    }
    for (Photograph &photograph : observations.photographs) {
        photograph.camera = cameraNumbers[size_t(photograph.camera)];
        photograph.moment = moments[photograph.moment];
    }
    observations.moments = int(moments.size());
}

CollectedObservations collectObservations(const std::vector<ReadPhotograph> &photographs, const PrintedTarget &target,
                                          bool isRig) {
    CollectedObservations collected;
    Observations &observations = collected.observations;
    CameraGroups groups = groupsOf(photographs);
    const std::vector<bool> isRepeated = repeatedFiles(photographs);
    for (size_t i = 0; i < photographs.size(); i++) {
        groups.cameraOf[i] = isRepeated[i] ? -1 : groups.cameraOf[i];
    }
    const std::vector<int> moments = momentsOf(photographs, groups, isRig);
    std::vector<std::string> reasons;
    std::vector<const PatternReading *> readings;
    for (size_t i = 0; i < photographs.size(); i++) {
        reasons.push_back(isRepeated[i] ? "It was given before." : faultOf(photographs[i]));
        if (reasons.back().empty() && !groups.reasons[i].empty()) {
            reasons.back() = sentence(groups.reasons[i]);
        }
        for (const PatternReading &reading : photographs[i].readings) {
            if (reasons.back().empty()) {
                readings.push_back(&reading);
            }
        }
    }
    const PrintCatalogue catalogue(target, readings);
    observations.cameras = groups.cameras;
    observations.prints = catalogue.prints();
    std::vector<bool> isRepeatedPrint(catalogue.prints().size(), false);
    std::map<std::string, int> ignored;  // number of photographs for each reason why readings are ignored
    for (size_t i = 0; i < photographs.size(); i++) {
        if (!reasons[i].empty()) {
            collected.unused.push_back({photographs[i].file.path, reasons[i]});
            continue;
        }
        const Shown shown = shownBy(photographs[i], catalogue, int(observations.photographs.size()));
        for (const int print : shown.repeated) {
            isRepeatedPrint[size_t(print)] = true;
        }
        if (shown.sightings.empty()) {
            const std::string reason = shown.reasons.empty() ? "shows too little of a pattern" : shown.reasons.front();
            collected.unused.push_back({photographs[i].file.path, sentence(reason)});
            continue;
        }
        for (const std::string &reason : std::set<std::string>(shown.reasons.begin(), shown.reasons.end())) {
            ignored[reason]++;
        }
        observations.photographs.push_back({photographs[i].file.path, groups.cameraOf[i], moments[i]});
        observations.sightings.insert(observations.sightings.end(), shown.sightings.begin(), shown.sightings.end());
    }
    for (const auto &[reason, count] : ignored) {
        // Every reason in `ignored` begins with "shows", which has five letters.
        collected.notices.push_back(
            (count == 1 ? "One photograph also shows" : std::to_string(count) + " photographs also show") +
            reason.substr(5) + ". This is ignored.");
    }
    noteUnseenPrints(observations, isRepeatedPrint, collected.notices);
    noteUnseenCameras(observations, collected.notices);
    noteAmbiguousBoard(photographs, collected.notices);
    dropUnseen(observations);
    return collected;
}

}  // namespace calibration
