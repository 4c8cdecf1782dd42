// Which camera took which photograph, and which photographs were taken at the same moment.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// What is known about the origin of a photograph.
struct PhotographOrigin {
    std::string path;
    std::string camera;  // the user's name for the camera, or empty
    std::string exifCamera;
    int width = 0;  // pixels; 0 if the photograph could not be loaded
    int height = 0;
};

struct CameraGroups {
    std::vector<Camera> cameras;
    // Of each photograph; -1 if it is not known. Photographs that are left out may have one.
    std::vector<int> cameraOf;
    std::vector<std::string> reasons;  // of each photograph: why it is left out, to follow its name; else empty
};

// Photographs with a name of the user's belong to that camera. All others are grouped by size and EXIF name; the groups
// are called camera, camera-2 and so on in the order of their first photographs. A few photographs that differ from
// many others in this are left out, as are those of a named camera whose size is not that of most.
CameraGroups groupByCamera(const std::vector<PhotographOrigin> &photographs);

// The moment of each photograph, from 0: photographs of different cameras with the same file name were taken at the
// same moment. If the names have nothing in common, the last number in the name decides (left01.jpg and right01.jpg),
// and if that does not fit either, the position among the camera's photographs. Throws std::runtime_error if the
// cameras have different numbers of photographs then. `cameraOf` is -1 for photographs that do not count.
std::vector<int> momentsOfRig(const std::vector<std::string> &paths, const std::vector<int> &cameraOf);

}  // namespace calibration
