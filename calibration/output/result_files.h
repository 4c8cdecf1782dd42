// Makes all files of a calibration in memory, and writes them to the disk, all or none. docs/calibration-file.md and
// docs/assembly-file.md describe our own formats.
//
// The same calibration and notes give the same bytes. std::runtime_error is thrown if the name of a camera cannot be
// part of a file name, or if a number is not finite. std::invalid_argument is thrown if `axes` cannot be used (see
// assembly.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/output/assembly.h"
#include "calibration/unused_photograph.h"

namespace calibration {

// Additional information for the files.
struct ResultNotes {
    std::vector<UnusedPhotograph> unused;
    std::vector<std::string> notices;  // sentences about the input
    std::optional<AssemblyAxes> axes;
    std::string program;  // name and version of the program that made the result
};

struct ResultFile {
    std::string name;
    std::string content;
};

struct ResultFiles {
    std::vector<ResultFile> files;
    // Sentences about what is missing. A camera may be uncalibrated or absent from a file, and a file may be absent
    // because its format lacks the lens model.
    std::vector<std::string> omissions;
};

ResultFiles resultFiles(const Calibration &calibration, const ResultNotes &notes);

// Return the contents of calibration.json and of assembly.json.
std::string calibrationJson(const Calibration &calibration, const ResultNotes &notes);
std::string assemblyJson(const Calibration &calibration, const ResultNotes &notes);

// Returns an empty text if files can be named after the camera; otherwise a sentence that says which names are allowed.
std::string cameraNameFault(const std::string &name);

// Writes the files to `folder`, which is made if it is absent. If a file's name contains a folder itself, as in
// "./report.html", the name is the file's whole path, and `folder` is not put before it. All files are complete on the
// disk before the first one replaces an older file. If `folder` cannot be made or a file cannot be written, throws
// std::runtime_error with a sentence that names the folder or the file. In this case, no file has changed, apart from
// the exceptions that file_writing/safe_file.h lists. Paths are in the system's narrow encoding.
void writeResultFiles(const std::string &folder, const std::vector<ResultFile> &files);

}  // namespace calibration
