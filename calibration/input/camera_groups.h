// Finds out which camera took each photograph, and which photographs were taken at the same moment.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// The information about the origin of a photograph.
struct PhotographOrigin {
    std::string path;
    std::string camera;  // the user's name for the camera, or empty
    std::string exifCamera;
    int width = 0;  // pixels; 0 if the photograph could not be loaded
    int height = 0;
};

struct CameraGroups {
    std::vector<Camera> cameras;
    // The camera of each photograph, as an index of `cameras`; -1 if it is not known. A photograph that is left out may
    // have a camera, too.
    std::vector<int> cameraOf;
    // The reason why each photograph is left out, such as "has 320 x 240 pixels, ..."; empty if the photograph is used.
    std::vector<std::string> reasons;
};

// Photographs for which the user names a camera belong to that camera. All others are grouped by size and by the
// camera's name in EXIF. These groups are named "camera", "camera-2" and so on, in the order of their first
// photographs. A small group is left out if another of them is much larger. Of the photographs of a named camera, only
// those of the most frequent size are kept.
CameraGroups groupByCamera(const std::vector<PhotographOrigin> &photographs);

// Returns the moment of each photograph, counted from 0. Photographs of different cameras count as taken at the same
// moment if their file names (without endings) are equal. If too few names match, the last number in each name is
// compared instead (left01.jpg and right01.jpg). If too few of these numbers match either, the position among the
// camera's photographs decides. In that case, std::runtime_error is thrown if the cameras have different numbers of
// photographs. `cameraOf` is -1 for photographs that do not count.
std::vector<int> momentsOfRig(const std::vector<std::string> &paths, const std::vector<int> &cameraOf);

}  // namespace calibration
