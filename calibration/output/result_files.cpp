#include "calibration/output/result_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>

#include "calibration/output/assembly_ply.h"
#include "calibration/output/lens_files.h"
#include "file_writing/safe_file.h"

namespace calibration {

namespace {

namespace fs = std::filesystem;

bool isCalibrated(const Calibration &calibration, size_t camera) {
    return calibration.cameras[camera].corners > 0;
}

SolvedCamera solvedCamera(const Calibration &calibration, size_t camera) {
    return {calibration.observations.cameras[camera], calibration.estimate.intrinsics[camera],
            calibration.estimate.cameraFromRig[camera]};
}

// Adds a file. If the content is empty, adds an omission instead.
void add(ResultFiles &result, const std::string &name, std::string content, const SolvedCamera &camera) {
    if (content.empty()) {
        result.omissions.push_back("There is no " + name + ", because this file format has no lens model " +
                                   nameOf(camera.camera.lens) + ".");
    } else {
        result.files.push_back({name, std::move(content)});
    }
}

void addCamera(ResultFiles &result, const SolvedCamera &camera) {
    const std::string &name = camera.camera.name;
    const std::string fault = cameraNameFault(name);
    if (!fault.empty()) {
        throw std::runtime_error(fault);
    }
    add(result, name + ".opencv.yaml", opencvFile(camera), camera);
    add(result, name + ".camera_info.yaml", rosFile(camera), camera);
    add(result, name + ".cameramodel", mrcalFile(camera), camera);
}

// Adds an omission for each camera whose lens model the file's format cannot express. The file leaves out these
// cameras.
void noteMissing(ResultFiles &result, const std::string &file, const std::vector<SolvedCamera> &cameras,
                 bool (*has)(LensModel)) {
    for (const SolvedCamera &camera : cameras) {
        if (!has(camera.camera.lens)) {
            result.omissions.push_back(camera.camera.name + " is not in " + file +
                                       ", because this file format has no lens model " + nameOf(camera.camera.lens) +
                                       ".");
        }
    }
}

// Adds the files that hold several cameras: camchain.yaml has those of the first camera's rig, and cameras.txt has all,
// as far as the formats can express their lenses.
void addTogether(ResultFiles &result, const Calibration &calibration, const std::vector<size_t> &numbers) {
    std::vector<SolvedCamera> all;
    std::vector<SolvedCamera> rig;
    for (const size_t camera : numbers) {
        all.push_back(solvedCamera(calibration, camera));
        const int origin = rigOrigin(calibration.observations, int(camera));
        if (origin == rigOrigin(calibration.observations, int(numbers.front())) &&
            calibration.estimate.hasCamera[camera]) {
            rig.push_back(all.back());
        } else {
            result.omissions.push_back(all.back().camera.name + " is not in camchain.yaml, because its place in the " +
                                       "rig of the first camera is not known.");
        }
    }
    noteMissing(result, "camchain.yaml", rig, kalibrHas);
    noteMissing(result, "cameras.txt", all, colmapHas);
    for (ResultFile file : {ResultFile{"camchain.yaml", kalibrFile(rig)}, {"cameras.txt", colmapFile(all)}}) {
        if (!file.content.empty()) {
            result.files.push_back(std::move(file));
        }
    }
}

// Returns the path of a file. If the file's name contains a folder, the path is the name itself. Otherwise, the file is
// in `folder`. On Windows, names are UTF-8, as the programs' manifest demands, but the constructor of fs::path assumes
// another encoding. So fs::u8path is used.
fs::path targetOf(const std::string &folder, const std::string &name) {
    return fs::u8path(name).has_parent_path() ? fs::u8path(name) : fs::u8path(folder) / name;
}

void makeFolder(const std::string &folder) {
    std::error_code error;
    fs::create_directories(fs::u8path(folder), error);
    if (!fs::is_directory(fs::u8path(folder))) {
        throw std::runtime_error("The folder \"" + folder + "\" cannot be made" +
                                 (error ? ": " + error.message() : std::string()) + ".");
    }
}

}  // namespace

std::string cameraNameFault(const std::string &name) {
    const auto isPlain = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' || c == '.';
    };
    if (!name.empty() && name.size() <= 100 && name.front() != '.' && std::all_of(name.begin(), name.end(), isPlain)) {
        return {};
    }
    return "\"" + name +
           "\" cannot be a camera's name, because files are named after it. Use at most 100 characters: A to Z, a to "
           "z, "
           "0 to 9, \"-\", \"_\" and \".\". The first must not be \".\".";
}

ResultFiles resultFiles(const Calibration &calibration, const ResultNotes &notes) {
    ResultFiles result;
    result.files.push_back({"calibration.json", calibrationJson(calibration, notes)});
    result.files.push_back({"assembly.json", assemblyJson(calibration, notes)});
    result.files.push_back({"assembly.ply", assemblyPly(assemblyOf(calibration, notes.axes))});
    std::vector<size_t> cameras;
    for (size_t camera = 0; camera < calibration.observations.cameras.size(); camera++) {
        if (isCalibrated(calibration, camera)) {
            cameras.push_back(camera);
            addCamera(result, solvedCamera(calibration, camera));
        } else {
            result.omissions.push_back(calibration.observations.cameras[camera].name + " could not be calibrated.");
        }
    }
    if (!cameras.empty()) {
        addTogether(result, calibration, cameras);
    }
    return result;
}

void writeResultFiles(const std::string &folder, const std::vector<ResultFile> &files) {
    makeFolder(folder);
    file_writing::SafeFiles written;
    for (const ResultFile &file : files) {
        written.write(targetOf(folder, file.name).u8string(), file.content);
    }
    written.commit();
}

}  // namespace calibration
