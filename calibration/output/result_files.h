// All files of a calibration, in memory first and then on the disk, all or none. docs/calibration-file.md and
// docs/assembly-file.md describe our own forms.
//
// The same calibration gives the same bytes. No file ever has a number that is not finite: std::runtime_error is thrown
// instead, as it is for a camera name that cannot be a file name.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/output/assembly.h"
#include "calibration/unused_photograph.h"

namespace calibration {

// What the files say besides the calibration itself.
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
    // Sentences that name the files that could not be made, because their form has no such lens.
    std::vector<std::string> omissions;
};

ResultFiles resultFiles(const Calibration &calibration, const ResultNotes &notes);

// calibration.json and assembly.json alone.
std::string calibrationJson(const Calibration &calibration, const ResultNotes &notes);
std::string assemblyJson(const Calibration &calibration, const ResultNotes &notes);

// True if files can be named after the camera: letters, digits, "-", "_" and ".", not first.
bool isCameraName(const std::string &name);

// Writes the files to a folder, which is made if it is absent; names with a path of their own are relative to the
// current folder if they start with "./" or are absolute. All are complete on the disk before the first replaces an
// older one. Throws std::runtime_error with a sentence that names what could not be written; nothing is changed then,
// unless the system fails in the middle of renaming. Paths are in the system's narrow encoding.
void writeResultFiles(const std::string &folder, const std::vector<ResultFile> &files);

}  // namespace calibration
