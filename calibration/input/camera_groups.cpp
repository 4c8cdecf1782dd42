#include "calibration/input/camera_groups.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <tuple>

namespace calibration {

namespace {

constexpr size_t fewPhotographs = 3;
constexpr size_t manyTimes = 5;

using Size = std::pair<int, int>;

struct Group {
    std::string name;  // the user's name for the camera, or empty
    std::string exifCamera;
    Size size;
    std::vector<size_t> photographs;
};

std::string textOf(const Size &size) {
    return std::to_string(size.first) + " x " + std::to_string(size.second) + " pixels";
}

// Makes one group for each combination of the user's name for the camera, the camera's name in EXIF, and the size of
// the photographs. The groups are in the order in which their first photographs were given. If the user has named the
// camera of a photograph, its name in EXIF does not count. Photographs that could not be loaded are in no group.
std::vector<Group> groupsOf(const std::vector<PhotographOrigin> &photographs) {
    std::vector<Group> groups;
    std::map<std::tuple<std::string, std::string, Size>, size_t> known;
    for (size_t i = 0; i < photographs.size(); i++) {
        const PhotographOrigin &photograph = photographs[i];
        if (photograph.width <= 0) {
            continue;
        }
        const std::string exif = photograph.camera.empty() ? photograph.exifCamera : "";
        const Size size(photograph.width, photograph.height);
        const auto [place, isNew] = known.try_emplace({photograph.camera, exif, size}, groups.size());
        if (isNew) {
            groups.push_back({photograph.camera, exif, size, {}});
        }
        groups[place->second].photographs.push_back(i);
    }
    return groups;
}

// Returns the reason why the photographs of a group are left out; empty if the group is a camera. Of the groups to
// which the user gave the same name, only the one with the most photographs is a camera. If several have the most, it
// is the first of these. A group without a name is not a camera if it has at most three photographs and another group
// without a name has at least five times as many photographs.
std::string reasonAgainst(const Group &group, const std::vector<Group> &groups) {
    for (const Group &other : groups) {
        const size_t count = group.photographs.size();
        if (&other == &group || other.name != group.name) {
            continue;
        }
        if (!group.name.empty()) {
            const bool isLater = &other < &group;
            if (other.photographs.size() > count || (other.photographs.size() == count && isLater)) {
                return "has " + textOf(group.size) + ", but the camera " + group.name + " has " + textOf(other.size) +
                       ": it is scaled, cropped or from another camera";
            }
        } else if (count <= fewPhotographs && other.photographs.size() >= manyTimes * count) {
            const std::string others = std::to_string(other.photographs.size()) + " others";
            return group.size != other.size ? "has " + textOf(group.size) + ", but " + others + " have " +
                                                  textOf(other.size) + ": it is scaled, cropped or from another camera"
                                            : "is not from the camera that took " + others;
        }
    }
    return {};
}

// Returns the first of the names "camera", "camera-2" and so on that neither the user nor an earlier call has used.
std::string nextName(const std::vector<Group> &groups, std::set<std::string> &taken) {
    for (int number = 1;; number++) {
        std::string name = number == 1 ? "camera" : "camera-" + std::to_string(number);
        const bool isGiven =
            std::any_of(groups.begin(), groups.end(), [&](const Group &group) { return group.name == name; });
        if (!isGiven && taken.insert(name).second) {
            return name;
        }
    }
}

std::string stemOf(const std::string &path) {
    return std::filesystem::u8path(path).stem().u8string();
}

// Returns the last number in the file name, without leading zeros; empty if the name has no number.
std::string lastNumber(const std::string &path) {
    const std::string stem = stemOf(path);
    const auto isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    const auto end = std::find_if(stem.rbegin(), stem.rend(), isDigit).base();
    const auto begin = std::find_if_not(std::make_reverse_iterator(end), stem.rend(), isDigit).base();
    std::string number(begin, end);
    const size_t first = number.find_first_not_of('0');
    return number.empty() || first == std::string::npos ? number.substr(0, 1) : number.substr(first);
}

using KeyOf = std::function<std::string(const std::string &)>;

// Returns the moment of each photograph; photographs with the same key belong to the same moment. Photographs without a
// camera are not examined. Returns no moments if a photograph has no key or if two photographs of one camera have the
// same key. Also returns no moments if a camera other than the first shares fewer than half of its photographs' keys
// with other cameras.
std::optional<std::vector<int>> momentsByKey(const std::vector<std::string> &paths, const std::vector<int> &cameraOf,
                                             const KeyOf &keyOf) {
    std::map<std::string, std::set<int>> camerasOf;
    std::map<int, std::vector<std::string>> keysOf;
    for (size_t i = 0; i < paths.size(); i++) {
        const std::string key = keyOf(paths[i]);
        if (cameraOf[i] >= 0) {
            if (key.empty() || !camerasOf[key].insert(cameraOf[i]).second) {
                return std::nullopt;
            }
            keysOf[cameraOf[i]].push_back(key);
        }
    }
    for (const auto &[camera, keys] : keysOf) {
        const auto shared =
            std::count_if(keys.begin(), keys.end(), [&](const std::string &key) { return camerasOf[key].size() > 1; });
        if (camera != keysOf.begin()->first && 2 * size_t(shared) < keys.size()) {
            return std::nullopt;
        }
    }
    std::map<std::string, int> numbers;
    std::vector<int> moments;
    moments.reserve(paths.size());
    for (const std::string &path : paths) {
        moments.push_back(numbers.try_emplace(keyOf(path), int(numbers.size())).first->second);
    }
    return moments;
}

}  // namespace

CameraGroups groupByCamera(const std::vector<PhotographOrigin> &photographs) {
    CameraGroups result;
    result.cameraOf.assign(photographs.size(), -1);
    result.reasons.resize(photographs.size());
    const std::vector<Group> groups = groupsOf(photographs);
    std::set<std::string> taken;
    for (const Group &group : groups) {
        const std::string reason = reasonAgainst(group, groups);
        if (reason.empty()) {
            Camera camera;
            camera.name = group.name.empty() ? nextName(groups, taken) : group.name;
            camera.width = group.size.first;
            camera.height = group.size.second;
            result.cameras.push_back(camera);
        }
        for (const size_t photograph : group.photographs) {
            result.reasons[photograph] = reason;
            result.cameraOf[photograph] = reason.empty() ? int(result.cameras.size()) - 1 : -1;
        }
    }
    // A photograph whose camera the user has named belongs to that camera even if it is left out or could not be
    // loaded.
    for (size_t i = 0; i < photographs.size(); i++) {
        for (size_t camera = 0; camera < result.cameras.size(); camera++) {
            if (!photographs[i].camera.empty() && photographs[i].camera == result.cameras[camera].name) {
                result.cameraOf[i] = int(camera);
            }
        }
    }
    return result;
}

std::vector<int> momentsOfRig(const std::vector<std::string> &paths, const std::vector<int> &cameraOf) {
    for (const KeyOf &key : {KeyOf(stemOf), KeyOf(lastNumber)}) {
        if (const auto moments = momentsByKey(paths, cameraOf, key)) {
            return *moments;
        }
    }
    // Neither the names nor the numbers in them match, so the first photographs of all cameras belong to one moment,
    // the second ones to the next moment, and so on.
    std::map<int, int> counts;
    std::vector<int> moments;
    for (size_t i = 0; i < paths.size(); i++) {
        moments.push_back(cameraOf[i] < 0 ? 0 : counts[cameraOf[i]]++);
    }
    for (const auto &[camera, count] : counts) {
        if (count != counts.begin()->second) {
            throw std::runtime_error(
                "It is not clear which photographs of the rig were taken at the same moment: the cameras have "
                "different numbers of photographs, and the file names of the photographs do not match.");
        }
    }
    return moments;
}

}  // namespace calibration
